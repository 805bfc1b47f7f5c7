// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/Metadata.h"

#include <memory>

#include <archive.h>
#include <archive_entry.h>

#include <QTemporaryDir>
#include <QtTest>

#include "tests/support/TimeZone.h"

namespace {

const char* const header = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

QByteArray fileLists(const QByteArray& packages)
{
    return header +
           QByteArray("<filelists xmlns=\"http://linux.duke.edu/metadata/filelists\" packages=\"1\">\n") +
           packages + "</filelists>\n";
}

QByteArray otherData(const QByteArray& packages)
{
    return header +
           QByteArray("<otherdata xmlns=\"http://linux.duke.edu/metadata/other\" packages=\"1\">\n") +
           packages + "</otherdata>\n";
}

QByteArray package(const QByteArray& id, const QByteArray& contents)
{
    return "<package pkgid=\"" + id + "\" name=\"" + id + "\" arch=\"noarch\">\n" +
           "  <version epoch=\"0\" ver=\"1.0\" rel=\"1\"/>\n" + contents + "</package>\n";
}

QByteArray file(const QByteArray& path)
{
    return "  <file>" + path + "</file>\n";
}

// Stores each text at its index.
Metadata::Take into(std::vector<QByteArray>& texts)
{
    return [&texts](int index, const std::string& text) {
        texts[static_cast<size_t>(index)] = QByteArray(text.data(), static_cast<int>(text.size()));
    };
}

} // namespace

class MetadataTest : public QObject
{
    Q_OBJECT

private:
    // Writes a file and returns its path. If `filter` names a filter of libarchive, this filter compresses
    // the content.
    QString write(const QByteArray& content, const char* filter = nullptr)
    {
        const QString path = directory.filePath(QString("file%1").arg(++number));
        archive* writer = archive_write_new();
        bool fine = filter == nullptr || archive_write_add_filter_by_name(writer, filter) == ARCHIVE_OK;
        fine = fine && archive_write_set_format_raw(writer) == ARCHIVE_OK &&
               archive_write_open_filename(writer, path.toLocal8Bit().constData()) == ARCHIVE_OK;
        archive_entry* entry = archive_entry_new();
        archive_entry_set_pathname(entry, "data");
        archive_entry_set_filetype(entry, AE_IFREG);
        fine = fine && archive_write_header(writer, entry) == ARCHIVE_OK &&
               archive_write_data(writer, content.constData(), static_cast<size_t>(content.size())) ==
                   content.size();
        archive_entry_free(entry);
        fine = archive_write_close(writer) == ARCHIVE_OK && fine;
        archive_write_free(writer);
        if (!fine) {
            QTest::qFail(filter, __FILE__, __LINE__);
        }
        return path;
    }

    QString writePlain(const QByteArray& content)
    {
        QFile plain(directory.filePath(QString("file%1").arg(++number)));
        if (!plain.open(QIODevice::WriteOnly) || plain.write(content) != content.size()) {
            QTest::qFail("the file cannot be written", __FILE__, __LINE__);
        }
        return plain.fileName();
    }

    // The text that readFileLists() finds for the only wanted package, "one"; null if it finds none.
    QByteArray filesOfOne(const QByteArray& contents)
    {
        std::vector<QByteArray> texts(1);
        QString problem;
        if (!Metadata::readFileLists(writePlain(fileLists(package("one", contents))), {{"one", 0}},
                                     into(texts), problem)) {
            QTest::qFail(qPrintable(problem), __FILE__, __LINE__);
        }
        return texts[0];
    }

    QByteArray changeLogOfOne(const QByteArray& contents)
    {
        std::vector<QByteArray> texts(1);
        QString problem;
        if (!Metadata::readChangeLogs(writePlain(otherData(package("one", contents))), {{"one", 0}},
                                      into(texts), problem)) {
            QTest::qFail(qPrintable(problem), __FILE__, __LINE__);
        }
        return texts[0];
    }

    QTemporaryDir directory;
    int number = 0;

private Q_SLOTS:
    void metadataWithEverySupportedCompressionAreRead_data()
    {
        QTest::addColumn<QByteArray>("filter");
        QTest::newRow("plain") << QByteArray();
        for (const char* filter : {"gzip", "xz", "zstd", "bzip2"}) {
            QTest::newRow(filter) << QByteArray(filter);
        }
    }

    void metadataWithEverySupportedCompressionAreRead()
    {
        QFETCH(QByteArray, filter);
        const char* name = filter.isEmpty() ? nullptr : filter.constData();
        // The file is too long for a single read.
        QByteArray many;
        QByteArray expected;
        for (int i = 0; i < 40000; ++i) {
            const QByteArray path = "/usr/share/many/" + QByteArray::number(100000 + i);
            many += file(path);
            expected += (i == 0 ? "" : "\n") + path;
        }
        std::vector<QByteArray> texts(3);
        QString problem;
        const QString path = write(fileLists(package("one", file("/a")) + package("two", many)), name);
        QVERIFY2(Metadata::readFileLists(path, {{"one", 2}, {"two", 0}}, into(texts), problem),
                 qPrintable(problem));
        QCOMPARE(problem, QString());
        QCOMPARE(texts[2], QByteArray("/a"));
        QVERIFY(texts[0] == expected);
        QVERIFY(texts[1].isNull());

        std::vector<QByteArray> logs(1);
        QVERIFY(Metadata::readChangeLogs(
            write(otherData(package("one", "<changelog author=\"A\" date=\"0\">text</changelog>")), name),
            {{"one", 0}}, into(logs), problem));
        QCOMPARE(logs[0], QByteArray("* Thu Jan 1 1970 A\ntext"));
    }

    void unwantedPackagesAreSkipped()
    {
        const QString path = writePlain(fileLists(
            package("one", file("/one")) + package("two", file("/two")) + "<package name=\"nameless\">" +
            file("/nameless") + "</package>" + package("three", file("/three"))));
        std::vector<QByteArray> texts(2);
        texts[1] = "before";
        QString problem;
        QVERIFY(Metadata::readFileLists(path, {{"three", 0}, {"elsewhere", 1}}, into(texts), problem));
        QCOMPARE(texts[0], QByteArray("/three"));
        QCOMPARE(texts[1], QByteArray("before"));
        QVERIFY(Metadata::readFileLists(path, {}, into(texts), problem));
        QCOMPARE(texts[0], QByteArray("/three"));
        QCOMPARE(problem, QString());
    }

    void thePathsOfAPackageAreSortedWithoutDuplicates()
    {
        QCOMPARE(filesOfOne(file("/usr/z") + file("/usr/a") + file("/usr/z") + file("/Usr") + file("/usr/a")),
                 QByteArray("/Usr\n/usr/a\n/usr/z"));
        // These packages list their paths in order, in reverse order, or as two sorted sequences.
        QCOMPARE(filesOfOne(file("/a") + file("/b") + file("/b") + file("/c")), QByteArray("/a\n/b\n/c"));
        QCOMPARE(filesOfOne(file("/c") + file("/b") + file("/b") + file("/a")), QByteArray("/a\n/b\n/c"));
        QCOMPARE(filesOfOne(file("/b") + file("/d") + file("/a") + file("/c")), QByteArray("/a\n/b\n/c\n/d"));
        QCOMPARE(filesOfOne(file("/é") + file("/z") + file("/a")), QString::fromUtf8("/a\n/z\n/é").toUtf8());
    }

    void aTextContainsNoCharactersOfOtherElements()
    {
        // A text has no characters of another element, even if the elements are nested.
        QCOMPARE(
            filesOfOne("x" + file("/b") + "y<other>/c</other>" + file("/a<inner>/d</inner>/e") + file("/f")),
            QByteArray("/b\n/f"));
        QCOMPARE(changeLogOfOne("<changelog author=\"A\" date=\"0\">a<inner>b</inner>c</changelog>"
                                "<changelog author=\"B\" date=\"0\">d</changelog>"),
                 QByteArray("* Thu Jan 1 1970 B\nd"));
    }

    void theFileListAlsoContainsDirectoriesAndGhostFiles()
    {
        QCOMPARE(
            filesOfOne("  <file type=\"dir\">/var/lib/x</file>\n  <file type=\"ghost\">/var/log/x</file>\n" +
                       file("/usr/x")),
            QByteArray("/usr/x\n/var/lib/x\n/var/log/x"));
    }

    void theTextOfAPackageWithoutFilesIsEmptyButNotNull()
    {
        const QByteArray text = filesOfOne("");
        QVERIFY(!text.isNull());
        QVERIFY(text.isEmpty());
    }

    void xmlEntitiesAreReplacedByTheirCharacters()
    {
        QCOMPARE(filesOfOne(file("/a &amp; b/&lt;c&gt;/&quot;&apos;&#x20AC;&#233;")),
                 QString::fromUtf8("/a & b/<c>/\"'€é").toUtf8());
        QCOMPARE(filesOfOne(file("/<![CDATA[a & <b>]]>/c")), QByteArray("/a & <b>/c"));
    }

    void aPathThatIsSplitBetweenTwoReadsIsComplete()
    {
        // The file consists almost only of paths, so nearly every read ends inside a path.
        const QByteArray part(1000, 'x');
        QByteArray many;
        QByteArray expected;
        for (int i = 0; i < 1500; ++i) {
            const QByteArray path = "/" + QByteArray::number(10000 + i) + "/" + part + "&amp;é";
            many += file(path);
            expected += (i == 0 ? "" : "\n") + QByteArray(path).replace("&amp;", "&");
        }
        QVERIFY(filesOfOne(many) == expected);
    }

    void pathsBeyondAsciiAreSortedLikeQStrings()
    {
        // QString stores characters beyond U+FFFF as surrogates. So the program sorts them before some
        // characters that come earlier in byte order.
        const QStringList paths{QString::fromUtf8("/ﬁ"),
                                QString::fromUtf8("/🌧"),
                                QString::fromUtf8("/é"),
                                "/z",
                                QString::fromUtf8("/€"),
                                QString::fromUtf8("/\xee\x80\x80"),
                                "/A"};
        for (int count = 1; count <= paths.count(); ++count) {
            QStringList sorted = paths.mid(0, count);
            QByteArray contents;
            for (const QString& path : qAsConst(sorted)) {
                contents += file(path.toUtf8());
            }
            std::sort(sorted.begin(), sorted.end());
            QCOMPARE(QString::fromUtf8(filesOfOne(contents)), sorted.join('\n'));
        }
        // For these two paths, the program's order and the byte order differ.
        QVERIFY(paths[0] > paths[1]);
        QVERIFY(paths[0].toUtf8() < paths[1].toUtf8());
    }

    void theNewestChangeComesFirst()
    {
        QCOMPARE(
            changeLogOfOne("<changelog author=\"Ann &lt;a@b&gt; - 1.0-1\" date=\"1693656000\">- one\n- two"
                           "</changelog>\n"
                           "<changelog author=\"Bob\" date=\"1708430400\">- &lt;three&gt;</changelog>\n"),
            QByteArray(
                "* Tue Feb 20 2024 Bob\n- <three>\n\n* Sat Sep 2 2023 Ann <a@b> - 1.0-1\n- one\n- two"));
    }

    void changeLogDatesAreInUniversalTime()
    {
        for (const char* name : {"UTC", "Pacific/Kiritimati", "Pacific/Pago_Pago"}) {
            const TimeZone zone(name);
            // Noon of 29 February in a leap year, and the last second of that day.
            QCOMPARE(changeLogOfOne("<changelog author=\"A\" date=\"1709208000\">x</changelog>"),
                     QByteArray("* Thu Feb 29 2024 A\nx"));
            QCOMPARE(changeLogOfOne("<changelog author=\"A\" date=\"1709251199\">x</changelog>"),
                     QByteArray("* Thu Feb 29 2024 A\nx"));
        }
    }

    void changesWithInvalidDatesAreShown()
    {
        QCOMPARE(changeLogOfOne("<changelog>x</changelog>"), QByteArray("* Thu Jan 1 1970 \nx"));
        QCOMPARE(changeLogOfOne("<changelog author=\"A\" date=\"-86400\"></changelog>"),
                 QByteArray("* Wed Dec 31 1969 A\n"));
        QVERIFY(changeLogOfOne("<changelog author=\"A\" date=\"9223372036854775807\">x</changelog>")
                    .endsWith(" A\nx"));
    }

    void theTextOfAPackageWithoutChangesIsEmptyButNotNull()
    {
        const QByteArray text = changeLogOfOne("");
        QVERIFY(!text.isNull());
        QVERIFY(text.isEmpty());
    }

    void theTextOfAPackageContainsNoPartsOfAnotherPackage()
    {
        std::vector<QByteArray> texts(2);
        QString problem;
        QVERIFY(Metadata::readChangeLogs(
            writePlain(otherData(package("one", "<changelog author=\"A\" date=\"0\">x</changelog>") +
                                 package("two", "<changelog author=\"B\" date=\"0\">y</changelog>"))),
            {{"one", 0}, {"two", 1}}, into(texts), problem));
        QCOMPARE(texts[0], QByteArray("* Thu Jan 1 1970 A\nx"));
        QCOMPARE(texts[1], QByteArray("* Thu Jan 1 1970 B\ny"));
    }

    void damagedFilesAreReported_data()
    {
        QTest::addColumn<QByteArray>("filter");
        QTest::addColumn<QString>("damage");
        for (const char* filter : {"", "gzip", "xz", "zstd"}) {
            for (const char* damage : {"cut off", "nonsense inside", "empty"}) {
                QTest::newRow(qPrintable(QString("%1, %2").arg(*filter != 0 ? filter : "plain", damage)))
                    << QByteArray(filter) << QString(damage);
            }
        }
    }

    void damagedFilesAreReported()
    {
        QFETCH(QByteArray, filter);
        QFETCH(QString, damage);
        // The random numbers in the paths can hardly be compressed. So they fill most of the file, and the
        // damage in the middle of the file hits them.
        QByteArray many;
        quint32 state = 1;
        for (int i = 0; i < 60000; ++i) {
            state = state * 1664525 + 1013904223;
            many += file("/" + QByteArray::number(state, 16));
        }
        const QString path = write(fileLists(package("one", file("/a")) + package("two", many)),
                                   filter.isEmpty() ? nullptr : filter.constData());
        QFile damaged(path);
        QVERIFY(damaged.open(QIODevice::ReadWrite));
        if (damage == "cut off") {
            QVERIFY(damaged.resize(damaged.size() * 2 / 3));
        } else if (damage == "empty") {
            QVERIFY(damaged.resize(0));
        } else {
            QVERIFY(damaged.seek(damaged.size() / 2));
            QCOMPARE(damaged.write(QByteArray(2000, '<')), qint64(2000));
        }
        damaged.close();
        std::vector<QByteArray> texts(2);
        QString problem;
        QVERIFY(!Metadata::readFileLists(path, {{"one", 0}, {"two", 1}}, into(texts), problem));
        QVERIFY(!problem.isEmpty());
        // The damaged package has no text, because an incomplete text would be wrong.
        QVERIFY(texts[1].isNull());
        problem.clear();
        QVERIFY(!Metadata::readChangeLogs(path, {{"two", 1}}, into(texts), problem));
        QVERIFY(!problem.isEmpty());
        QVERIFY(texts[1].isNull());
    }

    void theReaderReturnsThePackagesBeforeTheDamageInAFile()
    {
        std::vector<QByteArray> texts(2);
        QString problem;
        QVERIFY(!Metadata::readFileLists(
            writePlain(fileLists(package("one", file("/a")) + "<package pkgid=\"two\"><file>/b</oops>")),
            {{"one", 0}, {"two", 1}}, into(texts), problem));
        QCOMPARE(texts[0], QByteArray("/a"));
        QVERIFY(texts[1].isNull());
        QCOMPARE(problem, QString("mismatched tag"));
    }

    void aFileOfTheWrongKindYieldsNoTexts()
    {
        // The files for change logs and for file lists name the same packages. If the program reads one
        // file instead of the other, it must not conclude that the packages have no files or no changes.
        const QByteArray packages = package("one", "") + package("two", "");
        const auto read = [this](const QByteArray& content, bool changeLogs) {
            std::vector<QByteArray> texts(2);
            QString problem;
            const bool fine = (changeLogs ? Metadata::readChangeLogs : Metadata::readFileLists)(
                writePlain(content), {{"one", 0}, {"two", 1}}, into(texts), problem, {});
            if (fine || !texts[0].isNull() || !texts[1].isNull()) {
                QTest::qFail(content.constData(), __FILE__, __LINE__);
            }
            return problem;
        };
        QCOMPARE(read(otherData(packages), false), QString("\"otherdata\" where \"filelists\" is expected"));
        QCOMPARE(read(fileLists(packages), true), QString("\"filelists\" where \"otherdata\" is expected"));
        QCOMPARE(read("<html><filelists>" + packages + "</filelists></html>", false),
                 QString("\"html\" where \"filelists\" is expected"));
        QCOMPARE(read("<package pkgid=\"one\"/>", true),
                 QString("\"package\" where \"otherdata\" is expected"));
    }

    void aCompleteDocumentHasNoError()
    {
        QString problem;
        const QByteArray two = package("one", file("/a")) + package("two", file("/b"));
        QVERIFY(Metadata::check(write(fileLists(two), "gzip"), "filelists", problem));
        QVERIFY(Metadata::check(write(otherData(two)), "otherdata", problem));
        QVERIFY(Metadata::check(write("<metadata packages=\"0\"/>", "xz"), "metadata", problem));
        QVERIFY(Metadata::check(write("<metadata>" + two + "</metadata>", "zstd"), "metadata", problem));
        QCOMPARE(problem, QString());
    }

    void anInvalidDocumentHasAnError_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("expected");
        const QByteArray one = package("one", "");
        QTest::newRow("cut off within an element") << "<metadata packages=\"2\">" + one + "<pack"
                                                   << "unclosed token";
        QTest::newRow("cut off between packages") << "<metadata packages=\"2\">" + one << "no element found";
        QTest::newRow("empty") << QByteArray() << "Unrecognized archive format";
        QTest::newRow("document without metadata")
            << QByteArray("<html><p>Log in</p></html>") << "\"html\" where \"metadata\" is expected";
        QTest::newRow("no XML") << QByteArray("Log in") << "syntax error";
        QTest::newRow("too few packages") << "<metadata packages=\"3\">" + one + one + "</metadata>"
                                          << "2 packages instead of 3";
    }

    void anInvalidDocumentHasAnError()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, expected);
        QString problem;
        QVERIFY(!Metadata::check(writePlain(content), "metadata", problem));
        QCOMPARE(problem, expected);
    }

    void anErrorIsReturnedForAMissingFileAndForADirectory()
    {
        for (const QString& path : {directory.filePath("nothing"), directory.path()}) {
            std::vector<QByteArray> texts(1);
            QString problem;
            QVERIFY(!Metadata::readFileLists(path, {{"one", 0}}, into(texts), problem));
            QVERIFY(!problem.isEmpty());
            QVERIFY(texts[0].isNull());
        }
    }

    void aMetadataFileWithCharactersBeyondAsciiInItsPathIsRead()
    {
        const QString path = directory.filePath(QString::fromUtf8("dépôt 🌧.xml"));
        QVERIFY(QFile::rename(writePlain(fileLists(package("one", file("/a")))), path));
        std::vector<QByteArray> texts(1);
        QString problem;
        QVERIFY2(Metadata::readFileLists(path, {{"one", 0}}, into(texts), problem), qPrintable(problem));
        QCOMPARE(texts[0], QByteArray("/a"));
    }
};

QTEST_GUILESS_MAIN(MetadataTest)
#include "MetadataTest.moc"
