// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <archive.h>
#include <archive_entry.h>

#include "yumio/UnpackedFile.h"

// Tests of reading compressed files.
class UnpackedFileTest : public QObject
{
    Q_OBJECT

    QTemporaryDir directory;

    QString write(const QByteArray& content, const char* name = "file")
    {
        const QString path = directory.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
            qFatal("cannot write %s", qPrintable(path));
        }
        return path;
    }

    QByteArray gzip(const QByteArray& content)
    {
        const QString path = directory.filePath("packed");
        archive* packed = archive_write_new();
        archive_write_add_filter_gzip(packed);
        archive_write_set_format_raw(packed);
        archive_write_open_filename(packed, qPrintable(path));
        archive_entry* entry = archive_entry_new();
        archive_entry_set_filetype(entry, AE_IFREG);
        archive_write_header(packed, entry);
        archive_write_data(packed, content.constData(), static_cast<size_t>(content.size()));
        archive_entry_free(entry);
        archive_write_free(packed);
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    // A long content that can hardly be compressed.
    static QByteArray random(int size)
    {
        QByteArray content(size, '\0');
        quint32 state = 1;
        for (char& each : content) {
            state = state * 1664525 + 1013904223;
            each = static_cast<char>(state >> 24);
        }
        return content;
    }

    // Returns the content of the file, read in blocks of this size. `problem` gets the text of an error.
    static QByteArray contentOf(const QString& path, QString& problem, int blockSize = 100000)
    {
        UnpackedFile file(path);
        QByteArray content;
        QByteArray block(blockSize, '\0');
        for (;;) {
            const int count = file.read(block.data(), blockSize);
            problem = file.problem();
            if (count <= 0) {
                return count < 0 && problem.isEmpty() ? QByteArray("an error without a text") : content;
            }
            content.append(block.constData(), count);
        }
    }

private Q_SLOTS:
    void aGzipFileIsUnpacked_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("blockSize");
        QTest::newRow("empty content") << 0 << 1000;
        QTest::newRow("one byte") << 1 << 1000;
        QTest::newRow("content of exactly one block") << 1000 << 1000;
        QTest::newRow("long content, small blocks") << 700000 << 999;
        QTest::newRow("long content, large blocks") << 700000 << 300000;
    }

    void aGzipFileIsUnpacked()
    {
        QFETCH(int, size);
        QFETCH(int, blockSize);
        const QByteArray content = random(size);
        QString problem;
        QCOMPARE(contentOf(write(gzip(content)), problem, blockSize), content);
        QCOMPARE(problem, QString());
    }

    void anUncompressedFileIsReadUnchanged()
    {
        QString problem;
        QCOMPARE(contentOf(write("plain text"), problem), QByteArray("plain text"));
        QCOMPARE(problem, QString());
    }

    void allStreamsOfAGzipFileAreUnpacked()
    {
        const QByteArray first = random(400000);
        QString problem;
        QCOMPARE(contentOf(write(gzip(first) + gzip("second")), problem), first + "second");
        QCOMPARE(problem, QString());
    }

    void aTruncatedGzipFileIsAnError()
    {
        const QByteArray content = random(700000);
        QString problem;
        const QByteArray packed = gzip(content);
        const QByteArray found = contentOf(write(packed.left(packed.size() / 2)), problem);
        QCOMPARE(problem, QString("truncated gzip input"));
        QVERIFY(found.size() > 100000);
        QCOMPARE(found, content.left(found.size()));
    }

    void aFileThatOnlyBeginsLikeAGzipFileIsReadUnchanged()
    {
        QString problem;
        const QByteArray content = "\x1f\x8b is no header";
        QCOMPARE(contentOf(write(content), problem), content);
        QCOMPARE(problem, QString());
    }

    void aMissingFileIsAnError()
    {
        QString problem;
        QCOMPARE(contentOf(directory.filePath("missing"), problem), QByteArray());
        QVERIFY2(problem.contains("missing"), qPrintable(problem));
    }
};

QTEST_GUILESS_MAIN(UnpackedFileTest)
#include "UnpackedFileTest.moc"
