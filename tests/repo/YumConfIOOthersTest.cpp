// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <fcntl.h>
#include <sys/stat.h>

#include "tests/repo/ScratchConfiguration.h"

// Tests that VYRE does not overwrite the changes that other programs make.
class YumConfIOOthersTest : public ScratchConfiguration
{
    Q_OBJECT

private Q_SLOTS:
    void noFileIsOverwrittenIfAnotherProgramHasChangedAnEditedFile_data();
    void noFileIsOverwrittenIfAnotherProgramHasChangedAnEditedFile();
    void changesByOtherProgramsAreReadIfTheUserAgrees();
    void writingKeepsTheChangesOfOtherProgramsToUneditedFiles();
    void writingKeepsFilesThatOtherProgramsHaveCreated();
    void aNewRepositoryDoesNotOverwriteAFileOfAnotherProgram();
    void filesThatVyreWritesDoNotCountAsChangedByOtherPrograms();
    void nothingIsWrittenIfAMainFileOfHigherPrecedenceAppears();
    void noFileWithUnreadSectionsIsOverwrittenAfterAFailedRead();
    void nothingIsWrittenIfADirectoryHasReplacedAFile();
    void aDirectoryThatAnotherProgramHasRemovedIsNotCreatedAgain();
    void readingWarnsAboutTheLeftoversOfAKilledProgram();
};

void YumConfIOOthersTest::noFileIsOverwrittenIfAnotherProgramHasChangedAnEditedFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("removed");
    QTest::newRow("a repository is edited") << QStringLiteral("etc/yum.repos.d/a.repo") << false;
    QTest::newRow("a repository is removed") << QStringLiteral("etc/yum.repos.d/a.repo") << true;
    QTest::newRow("a repository of the main file is edited") << QStringLiteral("etc/yum.conf") << false;
    QTest::newRow("a repository of the main file is removed") << QStringLiteral("etc/yum.conf") << true;
}

void YumConfIOOthersTest::noFileIsOverwrittenIfAnotherProgramHasChangedAnEditedFile()
{
    QFETCH(QString, name);
    QFETCH(bool, removed);
    const QString file = path(name);
    put(file, "[a]\nname=one\n");
    putRepo(QStringLiteral("b.repo"), "[b]\nname=b\n");
    putRepo(QStringLiteral("comments.repo"), "# only\n");
    QVERIFY(conf->read(window.get()));
    // The change by the other program keeps the size of the file, and utimensat() sets an old modification
    // time. VYRE notices the change, because it compares the contents.
    const struct timespec times[] = {{1700000000, 0}, {1700000000, 0}};
    put(file, "[a]\nname=two\n");
    QCOMPARE(utimensat(AT_FDCWD, QFile::encodeName(file).constData(), times, 0), 0);
    if (removed) {
        conf->entries.removeAll(made(QStringLiteral("a")));
    } else {
        entry(QStringLiteral("a")).name = QStringLiteral("mine");
    }
    entry(QStringLiteral("b")).name = QStringLiteral("mine");
    const auto before = snapshot();
    QVERIFY(!conf->write(window.get()));
    compareNothingIsWritten({file});
    QVERIFY(!conf->readAgainWanted);
    QCOMPARE(snapshot(), before);
    // The failed write keeps the user's edits in the list.
    QCOMPARE(entry(QStringLiteral("b")).name, QStringLiteral("mine"));
    QCOMPARE(conf->entries.size(), removed ? 1 : 2);
    // If another program makes a new file with the text that VYRE has read, this does not count as a change.
    QVERIFY(QFile::remove(file));
    put(file, "[a]\nname=one\n");
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("b.repo")), QByteArray("[b]\nname=mine\n"));
    QVERIFY(!get(file).contains("one"));
}

void YumConfIOOthersTest::changesByOtherProgramsAreReadIfTheUserAgrees()
{
    putRepo(QStringLiteral("a.repo"), "[a]\n");
    QVERIFY(conf->read(window.get()));
    putRepo(QStringLiteral("a.repo"), "[a]\nname=theirs\n");
    entry(QStringLiteral("a")).name = QStringLiteral("mine");
    user->answer = AnsweringUser::click(QMessageBox::Yes);
    QVERIFY(!conf->write(window.get()));
    compareNothingIsWritten({repoPath(QStringLiteral("a.repo"))});
    QVERIFY(conf->readAgainWanted);
    QCOMPARE(entry(QStringLiteral("a")).name, QStringLiteral("mine"));
    QVERIFY(conf->read(window.get()));
    QVERIFY(!conf->readAgainWanted);
    QCOMPARE(entry(QStringLiteral("a")).name, QStringLiteral("theirs"));
    entry(QStringLiteral("a")).name = QStringLiteral("mine");
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("a.repo")), QByteArray("[a]\nname=mine\n"));
}

void YumConfIOOthersTest::writingKeepsTheChangesOfOtherProgramsToUneditedFiles()
{
    putRepo(QStringLiteral("a.repo"), "[a]\n");
    putRepo(QStringLiteral("b.repo"), "[b]\n");
    putRepo(QStringLiteral("gone.repo"), "[gone]\n");
    putRepo(QStringLiteral("comments.repo"), "# only\n");
    QVERIFY(conf->read(window.get()));
    putMain("[main]\nretries=9\n");
    putRepo(QStringLiteral("b.repo"), "[b]\n\nname=theirs\n");
    putRepo(QStringLiteral("comments.repo"), "[new]\n");
    QVERIFY(QFile::remove(repoPath(QStringLiteral("gone.repo"))));
    entry(QStringLiteral("a")).name = QStringLiteral("mine");
    QVERIFY(conf->write(window.get()));
    QCOMPARE(user->seen.size(), 1);
    const ShownBox box = user->seen.takeFirst();
    QCOMPARE(box.text,
             QStringLiteral("Other programs have changed these files since VYRE last read them. You have not "
                            "edited these files, and VYRE has not changed them.\n") +
                 QStringList(
                     {repoPath(QStringLiteral("b.repo")), repoPath(QStringLiteral("gone.repo")), mainPath()})
                     .join(QLatin1Char('\n')));
    QCOMPARE(box.icon, QMessageBox::Information);
    QCOMPARE(box.labelFormat, Qt::PlainText);
    QVERIFY(conf->outdated);
    QCOMPARE(getRepo(QStringLiteral("a.repo")), QByteArray("[a]\nname=mine\n"));
    QCOMPARE(getRepo(QStringLiteral("b.repo")), QByteArray("[b]\n\nname=theirs\n"));
    QCOMPARE(getRepo(QStringLiteral("comments.repo")), QByteArray("[new]\n"));
    QCOMPARE(get(mainPath()), QByteArray("[main]\nretries=9\n"));
    QVERIFY(!QFile::exists(repoPath(QStringLiteral("gone.repo"))));
}

void YumConfIOOthersTest::writingKeepsFilesThatOtherProgramsHaveCreated()
{
    putRepo(QStringLiteral("a.repo"), "[a]\n");
    QVERIFY(conf->read(window.get()));
    putRepo(QStringLiteral("b.repo"), "[b]\n");
    QVERIFY(QDir(root->path()).mkpath(QStringLiteral("etc/yum/repos.d")));
    put(path(QStringLiteral("etc/yum/repos.d/c.repo")), "[c]\n");
    entry(QStringLiteral("a")).name = QStringLiteral("A");
    QVERIFY(conf->write(window.get()));
    conf->entries.clear();
    QVERIFY(conf->write(window.get()));
    QVERIFY(!QFile::exists(repoPath(QStringLiteral("a.repo"))));
    QCOMPARE(getRepo(QStringLiteral("b.repo")), QByteArray("[b]\n"));
    QCOMPARE(get(path(QStringLiteral("etc/yum/repos.d/c.repo"))), QByteArray("[c]\n"));
}

void YumConfIOOthersTest::aNewRepositoryDoesNotOverwriteAFileOfAnotherProgram()
{
    QVERIFY(conf->read(window.get()));
    putRepo(QStringLiteral("x.repo"), "[theirs]\n");
    put(path(QStringLiteral("passwd")), "root\n");
    Repo::Entry elsewhere = made(QStringLiteral("y"));
    elsewhere.file = path(QStringLiteral("passwd"));
    conf->entries = {made(QStringLiteral("x")), elsewhere};
    QVERIFY(!conf->write(window.get()));
    compareNothingIsWritten({repoPath(QStringLiteral("x.repo")), path(QStringLiteral("passwd"))});
    QCOMPARE(getRepo(QStringLiteral("x.repo")), QByteArray("[theirs]\n"));
    QCOMPARE(get(path(QStringLiteral("passwd"))), QByteArray("root\n"));
}

void YumConfIOOthersTest::filesThatVyreWritesDoNotCountAsChangedByOtherPrograms()
{
    putRepo(QStringLiteral("a.repo"), "[a]\n[b]\n");
    QVERIFY(conf->read(window.get()));
    for (int i = 0; i < 3; ++i) {
        entry(QStringLiteral("a")).name = QString::fromUtf8("é%1").arg(i);
        conf->entries.append(made(QStringLiteral("new%1").arg(i)));
        QVERIFY(conf->write(window.get()));
        QVERIFY(getRepo(QStringLiteral("a.repo")).contains(QByteArray::number(i)));
    }
    conf->entries.removeAll(made(QStringLiteral("new0")));
    conf->entries.removeAll(made(QStringLiteral("a")));
    conf->entries.removeAll(made(QStringLiteral("b")));
    QVERIFY(conf->write(window.get()));
    QVERIFY(!QFile::exists(repoPath(QStringLiteral("new0.repo"))));
    QVERIFY(!QFile::exists(repoPath(QStringLiteral("a.repo"))));
    // VYRE does not take its own removal of the file for a change by another program.
    conf->entries.append(made(QStringLiteral("new0")));
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("new0.repo")), QByteArray("[new0]\n"));
}

void YumConfIOOthersTest::nothingIsWrittenIfAMainFileOfHigherPrecedenceAppears()
{
    putMain("[main]\n[a]\n");
    QVERIFY(conf->read(window.get()));
    QVERIFY(QDir(root->path()).mkpath(QStringLiteral("etc/yum")));
    const QString first = path(QStringLiteral("etc/yum/yum.conf"));
    put(first, "[main]\nretries=1\n");
    entry(QStringLiteral("a")).name = QStringLiteral("A");
    QVERIFY(!conf->write(window.get()));
    compareNothingIsWritten({first});
    QCOMPARE(get(first), QByteArray("[main]\nretries=1\n"));
    QCOMPARE(get(mainPath()), QByteArray("[main]\n[a]\n"));
}

void YumConfIOOthersTest::noFileWithUnreadSectionsIsOverwrittenAfterAFailedRead()
{
    putMain("[main]\nretries=1\n[m]\n");
    putRepo(QStringLiteral("a.repo"), "[a]\n[x]\n[b\n[c]\n");
    putRepo(QStringLiteral("d.repo"), "[d]\n[y]\n[e\n");
    QVERIFY(!conf->read(window.get()));
    user->seen.clear();
    const auto before = snapshot();
    // The read stopped at the error in one of the two repository files. VYRE has read the first section of
    // this file, but nothing of the other file.
    QCOMPARE(conf->entries.size(), 2);
    entry(QStringLiteral("m")).name = QStringLiteral("M");
    QVERIFY(!conf->write(window.get()));
    compareNothingIsWritten({conf->entries.last().file});
    QCOMPARE(snapshot(), before);
    conf->entries.removeLast();
    QVERIFY(conf->write(window.get()));
    QCOMPARE(get(mainPath()), QByteArray("[main]\nretries=1\n[m]\nname=M\n"));
    QCOMPARE(getRepo(QStringLiteral("a.repo")), QByteArray("[a]\n[x]\n[b\n[c]\n"));
    QCOMPARE(getRepo(QStringLiteral("d.repo")), QByteArray("[d]\n[y]\n[e\n"));

    putMain("[main]\nretries=1\n[m\n");
    QVERIFY(!conf->read(window.get()));
    user->seen.clear();
    QVERIFY(conf->write(window.get()));
    QCOMPARE(get(mainPath()), QByteArray("[main]\nretries=1\n[m\n"));
}

void YumConfIOOthersTest::nothingIsWrittenIfADirectoryHasReplacedAFile()
{
    putRepo(QStringLiteral("a.repo"), "[a]\n");
    putRepo(QStringLiteral("b.repo"), "[b]\n");
    QVERIFY(conf->read(window.get()));
    for (const char* name : {"a.repo", "b.repo"}) {
        QVERIFY(QFile::remove(repoPath(QLatin1String(name))));
        QVERIFY(QDir().mkdir(repoPath(QLatin1String(name))));
    }
    entry(QStringLiteral("a")).name = QStringLiteral("A");
    conf->entries.removeAll(made(QStringLiteral("b")));
    QVERIFY(!conf->write(window.get()));
    compareNothingIsWritten({repoPath(QStringLiteral("a.repo")), repoPath(QStringLiteral("b.repo"))});
    QVERIFY(QFileInfo(repoPath(QStringLiteral("b.repo"))).isDir());
}

void YumConfIOOthersTest::aDirectoryThatAnotherProgramHasRemovedIsNotCreatedAgain()
{
    QVERIFY(QDir(root->path()).mkpath(QStringLiteral("etc/yum/repos.d")));
    const QString file = path(QStringLiteral("etc/yum/repos.d/a.repo"));
    put(file, "[a]\n");
    putRepo(QStringLiteral("b.repo"), "[b]\n");
    QVERIFY(conf->read(window.get()));
    QVERIFY(QDir(path(QStringLiteral("etc/yum"))).removeRecursively());
    entry(QStringLiteral("b")).name = QStringLiteral("B");
    QVERIFY(conf->write(window.get()));
    QCOMPARE(user->seen.size(), 1);
    QVERIFY(user->seen.takeFirst().text.endsWith(QLatin1Char('\n') + file));
    QCOMPARE(getRepo(QStringLiteral("b.repo")), QByteArray("[b]\nname=B\n"));
    entry(QStringLiteral("a")).name = QStringLiteral("A");
    QVERIFY(!conf->write(window.get()));
    compareNothingIsWritten({file});
    // If the user removes the repository "a", VYRE does not need the missing directory of a.repo any more,
    // and writes the other files.
    conf->entries.removeAll(made(QStringLiteral("a")));
    QVERIFY(conf->write(window.get()));
    QVERIFY(!QFile::exists(path(QStringLiteral("etc/yum"))));
}

void YumConfIOOthersTest::readingWarnsAboutTheLeftoversOfAKilledProgram()
{
    putRepo(QStringLiteral("a.repo"), "[a]\n");
    const QString temporary = repoPath(QStringLiteral(".a.repo.vyre-abcdef"));
    const QString copy = repoPath(QStringLiteral(".a.repo.vyre-old-abcdef"));
    const QString mainCopy = path(QStringLiteral("etc/.yum.conf.vyre-old-abcdef"));
    put(temporary, "[a]\nna");
    put(copy, "[a]\nname=before\n");
    put(mainCopy, "[main]\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(ids(), QStringList(QStringLiteral("a")));
    const QString text =
        QStringLiteral("VYRE was interrupted while it wrote a configuration file. The previous "
                       "text is in ");
    QCOMPARE(conf->warnings, QStringList({text + mainCopy, text + copy}));
    QVERIFY(QFile::exists(temporary));
    QVERIFY(conf->write(window.get()));
    QVERIFY(!QFile::exists(temporary));
    QCOMPARE(get(copy), QByteArray("[a]\nname=before\n"));
    QCOMPARE(get(mainCopy), QByteArray("[main]\n"));
}

QTEST_MAIN(YumConfIOOthersTest)
#include "YumConfIOOthersTest.moc"
