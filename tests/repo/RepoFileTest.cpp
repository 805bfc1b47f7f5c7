// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <QTemporaryDir>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "app/base/RepositoryFileLimit.h"
#include "repo/RepoFile.h"

using Repo::File;

Q_DECLARE_METATYPE(Repo::File::State)

class RepoFileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void theTextAndThePropertiesOfAFileAreRead_data();
    void theTextAndThePropertiesOfAFileAreRead();
    void aFileKeepsItsTextIfItIsReadAndThenWritten_data() { theTextAndThePropertiesOfAFileAreRead_data(); }
    void aFileKeepsItsTextIfItIsReadAndThenWritten();
    void aFileMayBeAsLargeAsTheLimit();
    void aRepositoryMayBeAsLargeAsTheLimit();
    void readingAnUnreadableFileReturnsTheReason();
    void readingAPipeDoesNotBlock();
    void aLinkToAFileHasTheFileNumberOfTheFile();
    void pathsAreMadeCanonical_data();
    void pathsAreMadeCanonical();

private:
    QString path(const char* name) const { return root->filePath(QLatin1String(name)); }
    QByteArray localPath(const char* name) const { return QFile::encodeName(path(name)); }
    void put(const QByteArray& contents) const
    {
        QFile file(path("x"));
        if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size()) {
            qFatal("the file cannot be written");
        }
    }

    QScopedPointer<QTemporaryDir> root;
};

void RepoFileTest::init()
{
    root.reset(new QTemporaryDir);
    QVERIFY(root->isValid());
}

void RepoFileTest::theTextAndThePropertiesOfAFileAreRead_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<QString>("text");
    // Each letter stands for one property of the file: M has a byte order mark, R has carriage returns, A is
    // ASCII, P is plain text.
    QTest::addColumn<QString>("kind");
    QTest::newRow("empty file") << QByteArray("") << QString("") << QString("AP");
    QTest::newRow("lines") << QByteArray("a\nb\n") << QString("a\nb\n") << QString("AP");
    QTest::newRow("no line feed at the end") << QByteArray("a\nb") << QString("a\nb") << QString("AP");
    QTest::newRow("carriage returns") << QByteArray("a\r\nb\r\n") << QString("a\nb\n") << QString("RA");
    QTest::newRow("carriage returns except in the last line")
        << QByteArray("a\r\nb") << QString("a\nb") << QString("RA");
    QTest::newRow("a carriage return in the first line only")
        << QByteArray("a\r\nb\n") << QString("a\nb\n") << QString("A");
    QTest::newRow("a carriage return in the last line only")
        << QByteArray("a\nb\r\n") << QString("a\nb\n") << QString("A");
    QTest::newRow("carriage return at the end of the file")
        << QByteArray("a\r") << QString("a") << QString("RA");
    QTest::newRow("carriage return within a line")
        << QByteArray("a\rb\n") << QString("a\rb\n") << QString("AP");
    QTest::newRow("a byte order mark") << QByteArray("\xEF\xBB\xBF"
                                                     "a\n")
                                       << QString("a\n") << QString("MA");
    QTest::newRow("only a byte order mark") << QByteArray("\xEF\xBB\xBF") << QString("") << QString("MA");
    QTest::newRow("two byte order marks")
        << QByteArray("\xEF\xBB\xBF\xEF\xBB\xBF") << QString::fromLatin1("\xEF\xBB\xBF") << QString("M");
    QTest::newRow("a byte order mark and carriage returns") << QByteArray("\xEF\xBB\xBF"
                                                                          "a\r\n")
                                                            << QString("a\n") << QString("MRA");
    QTest::newRow("letters beyond ASCII")
        << QByteArray("\xE9\xC3\xA9\n") << QString::fromLatin1("\xE9\xC3\xA9\n") << QString("");
    QTest::newRow("control characters")
        << QByteArray("\x1B\f\x7F\n") << QString("\x1B\f\x7F\n") << QString("AP");
}

void RepoFileTest::theTextAndThePropertiesOfAFileAreRead()
{
    QFETCH(QByteArray, contents);
    put(contents);
    const File file = File::read(path("x"));
    QCOMPARE(int(file.state), int(File::Text));
    QCOMPARE(file.bytes, contents);
    QTEST(file.text, "text");
    QTEST(QString(file.hasMark ? "M" : "") + (file.hasCarriageReturns ? "R" : "") +
              (file.isAscii ? "A" : "") + (file.isPlain ? "P" : ""),
          "kind");
}

void RepoFileTest::aFileKeepsItsTextIfItIsReadAndThenWritten()
{
    QFETCH(QByteArray, contents);
    QFETCH(QString, text);
    put(contents);
    const File file = File::read(path("x"));
    put(file.encoded(text));
    const File again = File::read(path("x"));
    QCOMPARE(again.text, file.isAscii ? text : QString::fromLatin1(text.toUtf8()));
    QCOMPARE(again.hasMark, file.hasMark);
    QCOMPARE(again.hasCarriageReturns, file.hasCarriageReturns && text.contains('\n'));
}

void RepoFileTest::aFileMayBeAsLargeAsTheLimit()
{
    put(QByteArray(repositoryFileLimit, '#'));
    QCOMPARE(int(File::read(path("x")).state), int(File::Text));
    put(QByteArray(repositoryFileLimit + 1, '#'));
    QCOMPARE(int(File::read(path("x")).state), int(File::LeftAlone));
}

void RepoFileTest::aRepositoryMayBeAsLargeAsTheLimit()
{
    const QByteArray whole = "[x]" + QByteArray(repositorySectionLimit - 4, '#') + '\n';
    const auto stateOf = [this](const QByteArray& contents) {
        put(contents);
        return int(File::read(path("x")).state);
    };
    QCOMPARE(stateOf(whole), int(File::Text));
    QCOMPARE(stateOf('#' + whole + whole), int(File::Text));
    QCOMPARE(stateOf(whole + whole), int(File::Text));
    QCOMPARE(stateOf(whole + '#'), int(File::LeftAlone));
    QCOMPARE(stateOf(whole + '#' + whole), int(File::LeftAlone));
    QCOMPARE(stateOf("[a]\n" + whole + "\n[b]\n"), int(File::LeftAlone));
    // The size limit of a repository does not include the text above the first repository section.
    QCOMPARE(stateOf("#" + whole + '#'), int(File::Text));
    QCOMPARE(stateOf("[main]\n#" + whole), int(File::Text));
    QCOMPARE(stateOf("#\n[main]\n[main]\n#" + whole + "[main]\n"), int(File::Text));
    QCOMPARE(stateOf("[main]#" + whole), int(File::LeftAlone));
    QCOMPARE(stateOf("[a]\n[main]\n#" + whole), int(File::LeftAlone));
}

void RepoFileTest::readingAnUnreadableFileReturnsTheReason()
{
    QCOMPARE(int(File::read(path("x")).state), int(File::Missing));
    QCOMPARE(int(File::read(path("none/x")).state), int(File::Missing));
    QCOMPARE(int(File::read(root->path()).state), int(File::Directory));
    put("");
    QCOMPARE(int(File::read(path("x/y")).state), int(File::NoStatus));
    QCOMPARE(File::read(path("x/y")).failure, ENOTDIR);
    for (const char* target : {"/nowhere", "link"}) {
        QCOMPARE(symlink(target, localPath("link").constData()), 0);
        const File file = File::read(path("link"));
        QCOMPARE(int(file.state), int(File::LeftAlone));
        QCOMPARE(file.reason, path("link") + QStringLiteral(" is left alone: it is a broken link."));
        QCOMPARE(unlink(localPath("link").constData()), 0);
    }
    for (const char* target : {"/dev/null", "/dev/zero", "/dev/full"}) {
        QCOMPARE(symlink(target, localPath("link").constData()), 0);
        const File file = File::read(path("link"));
        QCOMPARE(int(file.state), int(File::LeftAlone));
        QCOMPARE(file.reason, path("link") + QStringLiteral(" is left alone: it is not a regular file."));
        QCOMPARE(unlink(localPath("link").constData()), 0);
    }
    // stat() reports the files of /proc as regular files, but reading /proc/self/mem fails.
    QCOMPARE(int(File::read(QStringLiteral("/proc/self/mem")).state), int(File::Unreadable));
    QCOMPARE(File::read(QStringLiteral("/proc/self/mem")).failure, EIO);
    QVERIFY(!File::read(QStringLiteral("/proc/self/stat")).bytes.isEmpty());
}

void RepoFileTest::readingAPipeDoesNotBlock()
{
    QCOMPARE(mkfifo(localPath("pipe").constData(), 0644), 0);
    QCOMPARE(int(File::read(path("pipe")).state), int(File::LeftAlone));
    // read() gets the status of a regular file, as if a pipe had replaced this file after stat(). read() must
    // not block, with or without a writer at the other end of the pipe.
    put("");
    struct stat status;
    QCOMPARE(stat(localPath("x").constData(), &status), 0);
    QCOMPARE(int(File::read(path("pipe"), status).state), int(File::LeftAlone));
    const int writer = open(localPath("pipe").constData(), O_RDWR | O_CLOEXEC);
    QCOMPARE(int(File::read(path("pipe"), status).state), int(File::LeftAlone));
    close(writer);
}

void RepoFileTest::aLinkToAFileHasTheFileNumberOfTheFile()
{
    put("a");
    QCOMPARE(symlink("x", localPath("y").constData()), 0);
    QCOMPARE(link(localPath("x").constData(), localPath("z").constData()), 0);
    QCOMPARE(File::read(path("x")).number, File::read(path("y")).number);
    QCOMPARE(File::read(path("x")).number, File::read(path("z")).number);
    QCOMPARE(rename(localPath("z").constData(), localPath("a").constData()), 0);
    QVERIFY(QFile::remove(path("x")));
    put("a");
    QVERIFY(File::read(path("x")).number != File::read(path("a")).number);
}

void RepoFileTest::pathsAreMadeCanonical_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("expected");
    QTest::newRow("plain") << "/real/x"
                           << "/real/x";
    QTest::newRow("dots and slashes") << "//real/.//../real/./x"
                                      << "/real/x";
    QTest::newRow("a link") << "/link/x"
                            << "/real/x";
    QTest::newRow("a file behind a link") << "/deep/../x"
                                          << "/real/x";
    QTest::newRow("a directory") << "/link/"
                                 << "/real";
    QTest::newRow("a new file") << "/link/new"
                                << "/real/new";
    QTest::newRow("a broken link") << "/link/dangling"
                                   << "/real/dangling";
    QTest::newRow("no directory") << "/none/new"
                                  << "/none/new";
    QTest::newRow("no name") << "/none/"
                             << "/none/";
    QTest::newRow("dots instead of a name") << "/none/.."
                                            << "/none/..";
}

void RepoFileTest::pathsAreMadeCanonical()
{
    QFETCH(QString, given);
    QFETCH(QString, expected);
    const QString place = QFileInfo(root->path()).canonicalFilePath();
    QVERIFY(QDir(place).mkpath(QStringLiteral("real/below")));
    QVERIFY(QFile::link(QStringLiteral("real"), path("link")));
    QVERIFY(QFile::link(QStringLiteral("real/below"), path("deep")));
    QVERIFY(QFile::link(QStringLiteral("nowhere"), path("real/dangling")));
    QFile file(path("real/x"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(Repo::canonicalPath(place + given), place + expected);
    QCOMPARE(Repo::canonicalPath(QStringLiteral("/none")), QStringLiteral("/none"));
}

QTEST_GUILESS_MAIN(RepoFileTest)
#include "RepoFileTest.moc"
