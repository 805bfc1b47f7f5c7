// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <sys/stat.h>

#include "tests/repo/ScratchConfiguration.h"

// Tests of the text that YumConfIO writes, and of the file to which it writes this text.
class YumConfIOWriteTest : public ScratchConfiguration
{
    Q_OBJECT

private Q_SLOTS:
    void sectionsAreWrittenInTheStandardForm();
    void unspecifiedValuesAreNotWritten();
    void writingMovesCommentsToTheEndOfTheirSection();
    void writingKeepsBlankLinesOnlyInTheMainSection();
    void theMainFileIsRewrittenWithItsRepositories();
    void theMainFileIsWrittenEvenIfItHasNoRepositories();
    void aNewRepositoryGetsItsOwnFile();
    void aRelativePathIsResolvedInTheFirstDirectory();
    void aRelativePathIsNotChangedIfNoDirectoryIsConfigured();
    void thePositionDeterminesTheOrderOfSectionsInAFile();
    void newRepositoriesWithEqualPositionsAreWrittenInListOrder();
    void aRepositoryWithANewFileNameMovesToThisFile();
    void removingTheLastRepositoryOfAFileRemovesTheFile();
    void writingRemovesARepositoryFileThatHasOnlyComments();
    void writingKeepsDirectoriesAndFilesThatAreNoRepositoryFiles();
    void aByteBeyondAsciiIsReadAsOneCharacterAndWrittenInUtf8();
    void aFileWithoutEditsKeepsItsExactBytes();
    void theTargetOfASymbolicLinkIsWritten();
};

void YumConfIOWriteTest::sectionsAreWrittenInTheStandardForm()
{
    putRepo(QStringLiteral("f.repo"), "# lost\n"
                                      "[x]\n"
                                      "gpgkey : file:///k\n"
                                      "gpgcheck = no\n"
                                      "enabled : 0\n"
                                      "\n"
                                      "mirrorlist\t=http://m/\n"
                                      "baseurl= http://a/ http://b/\n"
                                      "name: The X\n"
                                      "\n"
                                      "\n"
                                      "[y]\n"
                                      "name=The Y\n");
    QVERIFY(conf->read(window.get()));
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("f.repo")), QByteArray("[x]\n"
                                                           "name=The X\n"
                                                           "baseurl=http://a/\n"
                                                           "        http://b/\n"
                                                           "mirrorlist=http://m/\n"
                                                           "enabled=0\n"
                                                           "gpgcheck=1\n"
                                                           "gpgkey : file:///k\n"
                                                           "\n"
                                                           "[y]\n"
                                                           "name=The Y\n"));
}

void YumConfIOWriteTest::unspecifiedValuesAreNotWritten()
{
    putRepo(QStringLiteral("f.repo"), "[x]\nname=\nbaseurl=\nmirrorlist=\n");
    QVERIFY(conf->read(window.get()));
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("f.repo")), QByteArray("[x]\n"));
    entry(QStringLiteral("x")).enabled = Qt::Checked;
    entry(QStringLiteral("x")).gpgcheck = Qt::Unchecked;
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("f.repo")), QByteArray("[x]\nenabled=1\ngpgcheck=0\n"));
}

void YumConfIOWriteTest::writingMovesCommentsToTheEndOfTheirSection()
{
    putRepo(QStringLiteral("f.repo"), "# above\n[x]\n# inside\n\nname=a\n; also inside\nenabled=1\n");
    QVERIFY(conf->read(window.get()));
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("f.repo")),
             QByteArray("[x]\nname=a\nenabled=1\n# inside\n; also inside\n"));
}

void YumConfIOWriteTest::writingKeepsBlankLinesOnlyInTheMainSection()
{
    putMain("\n# top\n\n[main]\n\nretries=1\n\n\n[x]\n\nname=a\n\n");
    QVERIFY(conf->read(window.get()));
    QVERIFY(conf->write(window.get()));
    QCOMPARE(get(mainPath()), QByteArray("\n# top\n\n[main]\n\nretries=1\n\n\n[x]\nname=a\n"));
}

void YumConfIOWriteTest::theMainFileIsRewrittenWithItsRepositories()
{
    putMain("[main]\nretries=1\n[a]\n[b]\n[c]");
    QVERIFY(conf->read(window.get()));
    QVERIFY(conf->write(window.get()));
    // A blank line precedes each repository section except the first one.
    QCOMPARE(get(mainPath()), QByteArray("[main]\nretries=1\n[a]\n\n[b]\n\n[c]\n"));
}

void YumConfIOWriteTest::theMainFileIsWrittenEvenIfItHasNoRepositories()
{
    putMain("[main]\nretries=1");
    putRepo(QStringLiteral("f.repo"), "[x]\n");
    QVERIFY(conf->read(window.get()));
    QVERIFY(conf->write(window.get()));
    QCOMPARE(get(mainPath()), QByteArray("[main]\nretries=1\n"));

    conf->mainText.clear();
    QVERIFY(conf->write(window.get()));
    QCOMPARE(get(mainPath()), QByteArray());
}

void YumConfIOWriteTest::aNewRepositoryGetsItsOwnFile()
{
    QVERIFY(conf->read(window.get()));
    conf->entries.append(made(QStringLiteral("x")));
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("x.repo")), QByteArray("[x]\n"));
    QCOMPARE(conf->entries.first().file, repoPath(QStringLiteral("x.repo")));
}

void YumConfIOWriteTest::aRelativePathIsResolvedInTheFirstDirectory()
{
    QVERIFY(conf->read(window.get()));
    Repo::Entry inside = made(QStringLiteral("x"));
    inside.file = QStringLiteral("other.repo");
    Repo::Entry outside = made(QStringLiteral("y"));
    outside.file = path(QStringLiteral("elsewhere.conf"));
    conf->entries = {inside, outside};
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("other.repo")), QByteArray("[x]\n"));
    QCOMPARE(conf->entries.at(0).file, repoPath(QStringLiteral("other.repo")));
    QCOMPARE(get(path(QStringLiteral("elsewhere.conf"))), QByteArray("[y]\n"));
    QCOMPARE(conf->entries.at(1).file, path(QStringLiteral("elsewhere.conf")));
}

void YumConfIOWriteTest::aRelativePathIsNotChangedIfNoDirectoryIsConfigured()
{
    putMain("[main]\nreposdir=\n");
    QVERIFY(conf->read(window.get()));
    conf->entries.append(made(QStringLiteral("x")));
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(root->path()));
    const bool good = conf->write(window.get());
    QVERIFY(QDir::setCurrent(before));
    QVERIFY(good);
    QCOMPARE(conf->entries.first().file, QStringLiteral("x.repo"));
    QCOMPARE(get(path(QStringLiteral("x.repo"))), QByteArray("[x]\n"));
}

void YumConfIOWriteTest::thePositionDeterminesTheOrderOfSectionsInAFile()
{
    putRepo(QStringLiteral("f.repo"), "[a]\n[b]\n[c]\n");
    QVERIFY(conf->read(window.get()));
    Repo::Entry between = made(QStringLiteral("between"));
    between.file = repoPath(QStringLiteral("f.repo"));
    between.position = 1.5;
    conf->entries.append(between);
    entry(QStringLiteral("c")).position = 0.5;
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("f.repo")), QByteArray("[c]\n\n[a]\n\n[between]\n\n[b]\n"));
    // Writing sorts the sections in the file, but not the list of entries.
    QCOMPARE(ids(), QStringList({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"),
                                 QStringLiteral("between")}));
}

void YumConfIOWriteTest::newRepositoriesWithEqualPositionsAreWrittenInListOrder()
{
    QVERIFY(conf->read(window.get()));
    QByteArray expected;
    for (int i = 0; i < 50; ++i) {
        Repo::Entry next = made(QString::number((i * 7) % 50));
        next.file = QStringLiteral("f.repo");
        conf->entries.append(next);
        expected += (i == 0 ? "[" : "\n[") + next.id.toLatin1() + "]\n";
    }
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("f.repo")), expected);
}

void YumConfIOWriteTest::aRepositoryWithANewFileNameMovesToThisFile()
{
    putRepo(QStringLiteral("a.repo"), "[a]\n[b]\n");
    putRepo(QStringLiteral("c.repo"), "[c]\n");
    QVERIFY(conf->read(window.get()));
    entry(QStringLiteral("a")).file = repoPath(QStringLiteral("c.repo"));
    entry(QStringLiteral("b")).file = mainPath();
    QVERIFY(conf->write(window.get()));
    QVERIFY(!QFile::exists(repoPath(QStringLiteral("a.repo"))));
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->entries.size(), 3);
    QCOMPARE(entry(QStringLiteral("a")).file, repoPath(QStringLiteral("c.repo")));
    QCOMPARE(entry(QStringLiteral("b")).file, mainPath());
    QCOMPARE(get(mainPath()), QByteArray("[main]\n[b]\n"));
}

void YumConfIOWriteTest::removingTheLastRepositoryOfAFileRemovesTheFile()
{
    putRepo(QStringLiteral("a.repo"), "[a]\n");
    putRepo(QStringLiteral("b.repo"), "[b]\n");
    QVERIFY(conf->read(window.get()));
    conf->entries.removeAll(made(QStringLiteral("a")));
    QVERIFY(conf->write(window.get()));
    QVERIFY(!QFile::exists(repoPath(QStringLiteral("a.repo"))));
    QCOMPARE(getRepo(QStringLiteral("b.repo")), QByteArray("[b]\n"));
}

void YumConfIOWriteTest::writingRemovesARepositoryFileThatHasOnlyComments()
{
    putRepo(QStringLiteral("comments.repo"), "# nothing here\n");
    QVERIFY(conf->read(window.get()));
    QVERIFY(QFile::exists(repoPath(QStringLiteral("comments.repo"))));
    QVERIFY(conf->write(window.get()));
    QVERIFY(!QFile::exists(repoPath(QStringLiteral("comments.repo"))));
}

void YumConfIOWriteTest::writingKeepsDirectoriesAndFilesThatAreNoRepositoryFiles()
{
    putRepo(QStringLiteral("a.repo.rpmsave"), "[a]\n");
    put(path(QStringLiteral("elsewhere.repo")), "[b]\n");
    QVERIFY(QDir().mkdir(repoPath(QStringLiteral("directory.repo"))));
    QVERIFY(conf->read(window.get()));
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("a.repo.rpmsave")), QByteArray("[a]\n"));
    QCOMPARE(get(path(QStringLiteral("elsewhere.repo"))), QByteArray("[b]\n"));
    QVERIFY(QFileInfo(repoPath(QStringLiteral("directory.repo"))).isDir());
}

void YumConfIOWriteTest::aByteBeyondAsciiIsReadAsOneCharacterAndWrittenInUtf8()
{
    putMain("[main]\n# \xE9\n[m]\n");
    putRepo(QStringLiteral("f.repo"), "[x]\nname=\xC3\xA9\nexclude=\xE9\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->entries.value(1).name, QString::fromLatin1("\xC3\xA9"));
    entry(QStringLiteral("x")).mirrorlist = QStringLiteral("a");
    entry(QStringLiteral("m")).name = QStringLiteral("a");
    QVERIFY(conf->write(window.get()));
    QCOMPARE(get(mainPath()), QByteArray("[main]\n# \xC3\xA9\n[m]\nname=a\n"));
    QCOMPARE(getRepo(QStringLiteral("f.repo")),
             QByteArray("[x]\nname=\xC3\x83\xC2\xA9\nmirrorlist=a\nexclude=\xC3\xA9\n"));
    QVERIFY(conf->read(window.get()));
    QCOMPARE(entry(QStringLiteral("x")).options, QString::fromLatin1("exclude=\xC3\xA9\n"));
    entry(QStringLiteral("m")).name = QStringLiteral("b");
    QVERIFY(conf->write(window.get()));
    QCOMPARE(get(mainPath()), QByteArray("[main]\n# \xC3\x83\xC2\xA9\n[m]\nname=b\n"));
    // VYRE writes a typed "é" as two bytes in UTF-8, and would read these bytes as two characters.
    entry(QStringLiteral("x")).name = QString::fromUtf8("é");
    QVERIFY(conf->write(window.get()));
    QVERIFY(getRepo(QStringLiteral("f.repo")).contains("\nname=\xC3\xA9\n"));
}

void YumConfIOWriteTest::aFileWithoutEditsKeepsItsExactBytes()
{
    const QByteArray mainText("# \xC3\xA9\n[main]\n");
    const QByteArray utf8("# \xC3\xA9\n[x]\n\nname : \xC3\xA9\n");
    const QByteArray latin1("[y]\n\nname : \xE9\n");
    const QByteArray comments("# \xE9\n");
    putMain(mainText);
    putRepo(QStringLiteral("x.repo"), utf8);
    putRepo(QStringLiteral("y.repo"), latin1);
    putRepo(QStringLiteral("c.repo"), comments);
    putRepo(QStringLiteral("z.repo"), "[z]\n");
    QVERIFY(conf->read(window.get()));
    entry(QStringLiteral("z")).name = QStringLiteral("Z");
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("z.repo")), QByteArray("[z]\nname=Z\n"));
    QCOMPARE(getRepo(QStringLiteral("x.repo")), utf8);
    QCOMPARE(getRepo(QStringLiteral("y.repo")), latin1);
    QCOMPARE(getRepo(QStringLiteral("c.repo")), comments);
    QCOMPARE(get(mainPath()), mainText);
}

void YumConfIOWriteTest::theTargetOfASymbolicLinkIsWritten()
{
    const QString realMain = path(QStringLiteral("real.conf"));
    const QString realRepo = path(QStringLiteral("real.txt"));
    QVERIFY(QFile::rename(mainPath(), realMain));
    linkTo(realMain, mainPath());
    put(realRepo, "[x]\n");
    linkTo(realRepo, repoPath(QStringLiteral("x.repo")));
    QVERIFY(conf->read(window.get()));
    conf->mainText += QStringLiteral("retries=1\n");
    entry(QStringLiteral("x")).name = QStringLiteral("a");
    QVERIFY(conf->write(window.get()));
    QCOMPARE(QFile::symLinkTarget(mainPath()), realMain);
    QCOMPARE(QFile::symLinkTarget(repoPath(QStringLiteral("x.repo"))), realRepo);
    QCOMPARE(get(realMain), QByteArray("[main]\nretries=1\n"));
    QCOMPARE(get(realRepo), QByteArray("[x]\nname=a\n"));
}

QTEST_MAIN(YumConfIOWriteTest)
#include "YumConfIOWriteTest.moc"
