// SPDX-License-Identifier: GPL-2.0-or-later

#include <memory>
#include <vector>

#include <QtTest>

#include "packagetable/SearchedTexts.h"
#include "widgets/CaselessPattern.h"
#include "widgets/Expression.h"
#include "yumio/Package.h"

using PackageTable::SearchedTexts;

class SearchedTextsTest : public QObject
{
    Q_OBJECT

private:
    // Each of the fields ends with a zero byte. All texts of one kind are in the same block.
    void add(const QByteArray& fields, const QByteArray& files, const QByteArray& changeLog,
             Package::Kind kind = Package::Ordinary)
    {
        records.push_back(std::make_unique<Package::Entry>());
        Package::Entry& record = *records.back();
        record.kind = kind;
        fieldPacker->add(record.searchTexts, fields.constData(), static_cast<size_t>(fields.size()));
        filePacker->add(record.searchFiles, files.constData(), static_cast<size_t>(files.size()));
        changeLogPacker->add(record.searchChangeLog, changeLog.constData(),
                             static_cast<size_t>(changeLog.size()));
    }
    // `caseless` is the expression for matchesIgnoringCase(). Without it, the function must not be called.
    void make(const QString& caseless = QString())
    {
        fieldPacker->finish();
        filePacker->finish();
        changeLogPacker->finish();
        QVector<const Package::Entry*> all;
        for (const auto& record : records) {
            all.append(record.get());
        }
        texts = std::make_unique<SearchedTexts>(
            all, caseless.isNull() ? nullptr : std::make_shared<CaselessPattern>(caseless));
    }
    // Compares all blocks with the expression. Returns the indexes of the records that match.
    QVector<int> search(const QString& expression)
    {
        Expression pattern;
        pattern.compile(expression);
        for (size_t block = 0; block < texts->blockCount(); ++block) {
            texts->match(pattern, block);
        }
        QVector<int> found;
        for (int record = 0; record < static_cast<int>(records.size()); ++record) {
            if (texts->isFound(record)) {
                found.append(record);
            }
        }
        return found;
    }

    std::vector<std::unique_ptr<Package::Entry>> records;
    std::unique_ptr<TextPacker> fieldPacker;
    std::unique_ptr<TextPacker> filePacker;
    std::unique_ptr<TextPacker> changeLogPacker;
    std::unique_ptr<SearchedTexts> texts;

private Q_SLOTS:
    void init()
    {
        fieldPacker = std::make_unique<TextPacker>();
        filePacker = std::make_unique<TextPacker>();
        changeLogPacker = std::make_unique<TextPacker>();
    }

    void cleanup()
    {
        texts.reset();
        records.clear();
    }

    void recordsAreFoundByAnyKindOfText()
    {
        add(QByteArray("anvil\0heavy\0", 12), "/usr/bin/anvil", "- first");
        add(QByteArray("bellows\0", 8), "/usr/bin/heavy", "- second");
        add(QByteArray("crane\0", 6), "/usr/bin/crane", "- less heavy");
        add(QByteArray("drill\0", 6), "/usr/bin/drill", "- third");
        make();
        QCOMPARE(search("heavy"), (QVector<int>{0, 1, 2}));
    }

    void eachFieldIsComparedSeparately()
    {
        add(QByteArray("anvil\0heavy\0", 12), "", "");
        make();
        QCOMPARE(search("^heavy$"), (QVector<int>{0}));
        texts.reset();
        make();
        QCOMPARE(search("anvil.*heavy"), QVector<int>());
    }

    void theFilesAndTheChangeLogOfAGroupAreNotCompared()
    {
        add(QByteArray("tools\0", 6), "/usr/bin/anvil", "- anvil", Package::Group);
        make();
        QCOMPARE(search("anvil"), QVector<int>());
        QCOMPARE(search("tools"), (QVector<int>{0}));
    }

    void recordsWithoutTextsMatchAnEmptyText()
    {
        records.push_back(std::make_unique<Package::Entry>());
        records.back()->kind = Package::Ordinary;
        make();
        QCOMPARE(search("anvil"), QVector<int>());
        QCOMPARE(search("^$"), (QVector<int>{0}));
    }

    void withoutRecordsNoBlockIsCompared()
    {
        make();
        QCOMPARE(texts->blockCount(), size_t(0));
    }

    void aBlockIsComparedOnce()
    {
        constexpr int count = 100;
        for (int i = 0; i < count; ++i) {
            add("name" + QByteArray::number(i) + '\0', "/file" + QByteArray::number(i),
                "- change " + QByteArray::number(i));
        }
        make();
        QCOMPARE(texts->blockCount(), size_t(SearchedTexts::KindCount));
        QCOMPARE(search("e42$"), (QVector<int>{42}));
    }

    void theRecordsMayHaveAnotherOrderThanTheirBlocks()
    {
        constexpr int count = 9;
        TextPacker otherPacker;
        for (int i = 0; i < count; ++i) {
            // Two blocks have the fields by turns. The file lists are in the first of these blocks.
            const QByteArray fields = "name" + QByteArray::number(i) + '\0';
            const QByteArray files = "/file" + QByteArray::number(i);
            records.push_back(std::make_unique<Package::Entry>());
            Package::Entry& record = *records.back();
            record.kind = i == 4 ? Package::Group : Package::Ordinary;
            (i % 2 == 0 ? *fieldPacker : otherPacker)
                .add(record.searchTexts, fields.constData(), static_cast<size_t>(fields.size()));
            fieldPacker->add(record.searchFiles, files.constData(), static_cast<size_t>(files.size()));
        }
        otherPacker.finish();
        fieldPacker->finish();
        for (int i = 0; i < count; ++i) {
            make();
            QCOMPARE(texts->blockCount(), size_t(4)); // the records without a change log have an empty block
            QCOMPARE(search(QString("name%1").arg(i)), (QVector<int>{i}));
            make();
            QCOMPARE(search(QString("/file%1").arg(i)), i == 4 ? QVector<int>() : QVector<int>{i});
        }
        make();
        QCOMPARE(search("[02468]"), (QVector<int>{0, 2, 4, 6, 8}));
    }

    void matchReturnsWhetherTheBlockHasANewMatch()
    {
        add(QByteArray("anvil\0", 6), "/usr/bin/anvil", "");
        make();
        Expression pattern;
        pattern.compile("anvil");
        QVERIFY(texts->match(pattern, 0));
        QVERIFY(!texts->match(pattern, 1)); // the field of the record has already matched
    }

    void aSearchWithoutRegardToTheLetterCaseFindsABlock()
    {
        add(QByteArray("Anvil\0", 6), "/usr/bin/x", "");
        make("aNVIL");
        for (int round = 0; round < 2; ++round) {
            QVERIFY(texts->matchesIgnoringCase(0));
            QVERIFY(!texts->matchesIgnoringCase(1));
            QVERIFY(!texts->isFound(0));
            QCOMPARE(search("aNVIL"), QVector<int>()); // the first search precedes the second round
        }
    }

    void aMatchMustNotContainTheLengthOfAText()
    {
        // The block contains these lengths before the texts.
        add(QByteArray(0x7a7a, 'a'), "", "");
        make("ZZ");
        QCOMPARE(search("ZZ"), QVector<int>());
        QVERIFY(!texts->matchesIgnoringCase(0));
        QCOMPARE(search("aa"), (QVector<int>{0}));
    }

    // In these two tests, the two expressions are different, so that the result shows which blocks were
    // compared with the case-sensitive expression.

    void beforeTheFirstMatchABlockIsComparedOnlyIfItMayMatchWithoutRegardToTheLetterCase()
    {
        add(QByteArray("anvil\0", 6), "/usr/bin/crane", "- Heavy");
        make("hEAVY");
        QCOMPARE(search("anvil|crane"), QVector<int>());
        QCOMPARE(search("- "), (QVector<int>{0}));
        QVERIFY(texts->matchesIgnoringCase(2));
    }

    void afterTheFirstMatchEachBlockIsCompared()
    {
        add(QByteArray("heavy\0", 6), "/usr/bin/x", "");
        add(QByteArray("anvil\0", 6), "/usr/bin/crane", "");
        make("HEAVY");
        QCOMPARE(search("heavy|crane"), (QVector<int>{0, 1}));
    }

    void recordsWithoutTextsNeverMatchAFixedText()
    {
        records.push_back(std::make_unique<Package::Entry>());
        records.back()->kind = Package::Ordinary;
        make("anvil");
        QCOMPARE(search("anvil"), QVector<int>());
        QVERIFY(!texts->matchesIgnoringCase(0));
    }

    void afterAStopNoTextIsCompared()
    {
        add(QByteArray("anvil\0", 6), "/usr/bin/anvil", "- anvil");
        make("anvil");
        texts->stop();
        QCOMPARE(search("anvil"), QVector<int>());
        QVERIFY(!texts->matchesIgnoringCase(0));
    }

    void theTextsRemainAfterTheDeletionOfTheRecords()
    {
        add(QByteArray("anvil\0", 6), "/usr/bin/anvil", "");
        make();
        records.clear();
        Expression pattern;
        pattern.compile("anvil");
        QVERIFY(texts->match(pattern, 0));
        QVERIFY(texts->isFound(0));
    }
};

QTEST_GUILESS_MAIN(SearchedTextsTest)
#include "SearchedTextsTest.moc"
