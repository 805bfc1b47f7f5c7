// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/PackedTexts.h"

#include <QHash>
#include <QtTest>

namespace {

void add(TextPacker& packer, PackedText& target, const QByteArray& text)
{
    packer.add(target, text.constData(), static_cast<size_t>(text.size()));
}

// A text that cannot be compressed.
QByteArray noise(int size)
{
    QByteArray text;
    quint32 state = 1;
    for (int i = 0; i < size; ++i) {
        state = state * 1664525 + 1013904223;
        text += static_cast<char>(state >> 24);
    }
    return text;
}

// Returns a text as a block contains it.
QByteArray inBlock(const char* text)
{
    const auto length = static_cast<qint32>(qstrlen(text));
    return QByteArray(reinterpret_cast<const char*>(&length), sizeof length) + text + '\0';
}

} // namespace

class PackedTextsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aNewPackedTextIsNull()
    {
        const PackedText none;
        QVERIFY(none.isNull());
        QVERIFY(none.text().isNull());
        QVERIFY(none.blockAddress() == nullptr);
        QVERIFY(PackedText(QByteArray()).isNull());
        TextUnpacker unpacker;
        QCOMPARE(unpacker.text(none), QByteArray(""));
        TextPacker().finish(); // packs nothing
    }

    void unpackingAPackedTextReturnsTheOriginalText_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("short") << QByteArray("/usr/bin/needle");
        QTest::newRow("zero bytes") << QByteArray("one\0two\0\0", 9);
        QTest::newRow("longer than a block") << QByteArray(1000000, 'x');
        QTest::newRow("impossible to compress") << noise(200000);
    }

    void unpackingAPackedTextReturnsTheOriginalText()
    {
        QFETCH(QByteArray, text);
        const PackedText packed(text);
        QVERIFY(!packed.isNull());
        QVERIFY(packed.text() == text);
        PackedText before;
        PackedText middle;
        PackedText after;
        TextPacker packer;
        add(packer, before, "before");
        add(packer, middle, text);
        add(packer, after, "after");
        packer.finish();
        TextUnpacker unpacker;
        for (int round = 0; round < 2; ++round) {
            QCOMPARE(unpacker.text(after), QByteArray("after"));
            QVERIFY(unpacker.text(middle) == text);
            QCOMPARE(unpacker.text(middle).constData()[text.size()], '\0');
            QCOMPARE(unpacker.text(before), QByteArray("before"));
        }
    }

    void consecutivePackedTextsShareABlock()
    {
        std::vector<PackedText> texts(5000);
        TextPacker packer;
        const auto expected = [](size_t i) {
            return QByteArray::number(static_cast<int>(i)) + QByteArray(100, '-');
        };
        for (size_t i = 0; i < texts.size(); ++i) {
            add(packer, texts[i], expected(i));
        }
        packer.finish();
        QHash<const char*, int> blocks;
        int changes = 0;
        TextUnpacker unpacker;
        for (size_t i = 0; i < texts.size(); ++i) {
            changes += i > 0 && texts[i].blockAddress() != texts[i - 1].blockAddress() ? 1 : 0;
            ++blocks[texts[i].blockAddress()];
            QCOMPARE(unpacker.text(texts[i]), expected(i));
        }
        QVERIFY(blocks.count() > 1);
        QVERIFY(blocks.count() < 20);
        QCOMPARE(changes, blocks.count() - 1);
        // The order of the texts does not matter.
        for (size_t i = 0; i < texts.size(); ++i) {
            const size_t place = i * 1777 % texts.size();
            QCOMPARE(unpacker.text(texts[place]), expected(place));
        }
    }

    void theUnpackerReturnsAllTextsOfABlock()
    {
        PackedText first;
        PackedText second;
        PackedText other(QByteArray("other"));
        TextPacker packer;
        add(packer, first, "first");
        add(packer, second, "second");
        packer.finish();
        TextUnpacker unpacker;
        for (int round = 0; round < 2; ++round) {
            QCOMPARE(unpacker.texts(second), inBlock("first") + inBlock("second"));
            QCOMPARE(unpacker.text(first), QByteArray("first"));
            QCOMPARE(unpacker.texts(other), inBlock("other"));
        }
    }

    void aPackedTextExistsAsLongAsOneOfItsCopiesExists()
    {
        PackedText copy;
        TextUnpacker unpacker;
        {
            PackedText packed;
            PackedText other;
            TextPacker packer;
            add(packer, packed, "kept");
            add(packer, other, "other");
            packer.finish();
            QCOMPARE(unpacker.text(other), QByteArray("other"));
            copy = packed;
        }
        QCOMPARE(unpacker.text(copy), QByteArray("kept"));
        // The unpacker never returns a text from an earlier block.
        for (int i = 0; i < 100; ++i) {
            copy = PackedText(QByteArray::number(i));
            QCOMPARE(unpacker.text(copy), QByteArray::number(i));
        }
    }

    void aNewTextReplacesTheFormerTextOfAPackedText()
    {
        PackedText target;
        TextPacker packer;
        add(packer, target, "first");
        add(packer, target, "second");
        packer.finish();
        QCOMPARE(target.text(), QByteArray("second"));
        add(packer, target, "third");
        QCOMPARE(target.text(), QByteArray("second"));
        packer.finish();
        QCOMPARE(target.text(), QByteArray("third"));
    }
};

QTEST_GUILESS_MAIN(PackedTextsTest)
#include "PackedTextsTest.moc"
