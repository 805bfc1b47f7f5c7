// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

#include "tests/repo/ScratchConfiguration.h"
#include "tests/repo/SmallDisk.h"

// Tests that VYRE reports each failure to read or write a file, and loses no data.
class YumConfIOFailuresTest : public ScratchConfiguration
{
    Q_OBJECT

private Q_SLOTS:
    void onlyASuccessfulReadEmitsTheChangedSignal();
    void aSuccessfulWriteDoesNotEmitTheChangedSignal();
    void anUnreadableMainFileIsReported();
    void aMissingMainFileIsReported();
    void anErrorIsReportedIfARepositoryFileCannotBeExamined();
    void anUnreadableRepositoryFileIsReported();
    void aReadErrorOfTheMainFileIsReported();
    void aReadErrorOfARepositoryFileIsReported();
    void aMalformedHeaderIsReported_data();
    void aMalformedHeaderIsReported();
    void aMalformedHeaderIsReportedWithoutPasswords();
    void aMalformedHeaderOfTheMainFileIsReported();
    void markupFromAFileIsShownAsPlainText();
    void aFailedReadKeepsTheRepositoriesReadBeforeTheError();
    void aFailedReadDoesNotAffectTheNextAttempt();
    void anErrorIsReportedIfARepositoryFileCannotBeCreated();
    void anErrorIsReportedIfTheMainFileCannotBeWritten();
    void anErrorIsShownAndNoFileIsChangedIfTheDiskIsFull();
    void theOldFileOfAMovedRepositoryIsKeptIfTheNewFileCannotBeCreated();
    void theOldFileOfAMovedRepositoryIsKeptIfTheNewFileCannotBeOverwritten_data();
    void theOldFileOfAMovedRepositoryIsKeptIfTheNewFileCannotBeOverwritten();
    void anErrorIsReportedIfAFileCannotBeRemoved();
    void anErrorIsShownOverTheGivenWindow();
};

void YumConfIOFailuresTest::onlyASuccessfulReadEmitsTheChangedSignal()
{
    QSignalSpy changed(conf.get(), SIGNAL(changed()));
    QVERIFY(conf->read(window.get()));
    QCOMPARE(changed.size(), 1);
    putRepo(QStringLiteral("f.repo"), "[x\n");
    QVERIFY(!conf->read(window.get()));
    compareError(withErrno(QStringLiteral("Malformed section name in line: [x"), 0));
    QCOMPARE(changed.size(), 1);
}

void YumConfIOFailuresTest::aSuccessfulWriteDoesNotEmitTheChangedSignal()
{
    putRepo(QStringLiteral("f.repo"), "[x]\nname=a\n");
    QVERIFY(conf->read(window.get()));
    QSignalSpy changed(conf.get(), SIGNAL(changed()));
    entry(QStringLiteral("x")).name = QStringLiteral("b");
    QVERIFY(conf->write(window.get()));
    QCOMPARE(changed.size(), 0);
    QCOMPARE(conf->entries.value(0).name, QStringLiteral("b"));
    QCOMPARE(getRepo(QStringLiteral("f.repo")), QByteArray("[x]\nname=b\n"));
}

void YumConfIOFailuresTest::aMissingMainFileIsReported()
{
    QVERIFY(QFile::remove(mainPath()));
    QVERIFY(!conf->read(window.get()));
    compareError(withErrno(QStringLiteral("Unable to read yum configuration file ") + mainPath(), ENOENT));
}

void YumConfIOFailuresTest::anUnreadableMainFileIsReported()
{
    QCOMPARE(chmod(QFile::encodeName(root->path()).constData(), 0755), 0);
    QCOMPARE(chmod(QFile::encodeName(mainPath()).constData(), 0), 0);
    {
        const OrdinaryUser unprivileged;
        QVERIFY(!conf->read(window.get()));
    }
    compareError(withErrno(QStringLiteral("Unable to read yum configuration file ") + mainPath(), EACCES));
}

void YumConfIOFailuresTest::anErrorIsReportedIfARepositoryFileCannotBeExamined()
{
    QCOMPARE(chmod(QFile::encodeName(root->path()).constData(), 0755), 0);
    QVERIFY(QDir(root->path()).mkpath(QStringLiteral("private")));
    put(path(QStringLiteral("private/real")), "[x]\n");
    linkTo(path(QStringLiteral("private/real")), repoPath(QStringLiteral("x.repo")));
    QCOMPARE(chmod(QFile::encodeName(path(QStringLiteral("private"))).constData(), 0700), 0);
    {
        const OrdinaryUser unprivileged;
        QVERIFY(!conf->read(window.get()));
    }
    compareError(withErrno(QStringLiteral("Unable to stat repository configuration file ") +
                               repoPath(QStringLiteral("x.repo")),
                           EACCES));
}

void YumConfIOFailuresTest::anUnreadableRepositoryFileIsReported()
{
    QCOMPARE(chmod(QFile::encodeName(root->path()).constData(), 0755), 0);
    putRepo(QStringLiteral("s.repo"), "[s]\n");
    QCOMPARE(chmod(QFile::encodeName(repoPath(QStringLiteral("s.repo"))).constData(), 0), 0);
    {
        const OrdinaryUser unprivileged;
        QVERIFY(!conf->read(window.get()));
    }
    compareError(withErrno(QStringLiteral("Unable to read repository configuration file ") +
                               repoPath(QStringLiteral("s.repo")),
                           EACCES));
}

void YumConfIOFailuresTest::aReadErrorOfTheMainFileIsReported()
{
    QVERIFY(QFile::remove(mainPath()));
    QVERIFY(QDir().mkdir(mainPath()));
    QVERIFY(!conf->read(window.get()));
    compareError(
        withErrno(QStringLiteral("Error reading repository configuration file ") + mainPath(), EISDIR));
}

void YumConfIOFailuresTest::aReadErrorOfARepositoryFileIsReported()
{
    // Reading /proc/self/mem fails, because no memory is mapped at address 0.
    linkTo(QStringLiteral("/proc/self/mem"), repoPath(QStringLiteral("m.repo")));
    QVERIFY(!conf->read(window.get()));
    compareError(withErrno(QStringLiteral("Error reading repository configuration file ") +
                               repoPath(QStringLiteral("m.repo")),
                           EIO));
}

void YumConfIOFailuresTest::aMalformedHeaderIsReported_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::newRow("no closing bracket") << QByteArray("[foo");
    QTest::newRow("only an opening bracket") << QByteArray("[");
    QTest::newRow("a blank after the closing bracket") << QByteArray("[foo] ");
    QTest::newRow("a comment after the closing bracket") << QByteArray("[foo] # bar");
    QTest::newRow("a continuation line") << QByteArray("[foo]\n  bar");
}

void YumConfIOFailuresTest::aMalformedHeaderIsReported()
{
    QFETCH(QByteArray, header);
    putRepo(QStringLiteral("f.repo"), "[x]\n" + header + "\n[y]\n");
    QVERIFY(!conf->read(window.get()));
    compareError(
        withErrno(QStringLiteral("Malformed section name in line: ") + QString::fromLatin1(header), 0));
}

void YumConfIOFailuresTest::aMalformedHeaderIsReportedWithoutPasswords()
{
    putRepo(QStringLiteral("f.repo"), "[x\n  baseurl=http://me:secret@h/\n  password = secret\n");
    QVERIFY(!conf->read(window.get()));
    compareError(withErrno(QStringLiteral("Malformed section name in line: ") +
                               QString::fromUtf8("[x\n  baseurl=http://me:●●●@h/\n  password = ●●●"),
                           0));
}

void YumConfIOFailuresTest::aMalformedHeaderOfTheMainFileIsReported()
{
    putMain("[main]\n[foo\nname=a\n");
    QVERIFY(!conf->read(window.get()));
    compareError(withErrno(QStringLiteral("Malformed section name in line: [foo"), 0));
}

void YumConfIOFailuresTest::markupFromAFileIsShownAsPlainText()
{
    putRepo(QStringLiteral("f.repo"), "[<b>foo</b><img src='/etc/hostname'> %1 %2\n");
    QVERIFY(!conf->read(window.get()));
    // compareError() also checks that the label shows plain text.
    compareError(withErrno(
        QStringLiteral("Malformed section name in line: [<b>foo</b><img src='/etc/hostname'> %1 %2"), 0));

    user->answer = AnsweringUser::click(QMessageBox::No);
    conf->entries = {made(QStringLiteral("<b>%2</b>")), made(QStringLiteral("<b>%2</b>"))};
    QVERIFY(!conf->write(window.get()));
    QCOMPARE(user->seen.size(), 1);
    const ShownBox box = user->seen.takeFirst();
    QVERIFY(box.text.contains(QStringLiteral("<b>%2</b>")));
    QCOMPARE(box.labelFormat, Qt::PlainText);
}

void YumConfIOFailuresTest::aFailedReadKeepsTheRepositoriesReadBeforeTheError()
{
    putMain("[main]\n[a]\n[b]\nname=kept\n[c]\n[d\n[e]\n");
    putRepo(QStringLiteral("f.repo"), "[f]\n");
    QVERIFY(!conf->read(window.get()));
    compareError(withErrno(QStringLiteral("Malformed section name in line: [d"), 0));
    QCOMPARE(ids(), QStringList({QStringLiteral("a"), QStringLiteral("b")}));
    QCOMPARE(conf->entries.at(1).name, QStringLiteral("kept"));
}

void YumConfIOFailuresTest::aFailedReadDoesNotAffectTheNextAttempt()
{
    putMain("[main]\n[d\n[e]\nname=x\n");
    QVERIFY(!conf->read(window.get()));
    compareError(withErrno(QStringLiteral("Malformed section name in line: [d"), 0));
    QVERIFY(!conf->pendingLines.isEmpty());
    putMain("[main]\ngpgcheck=1\n");
    putRepo(QStringLiteral("f.repo"), "[f]\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->mainText, QStringLiteral("[main]\ngpgcheck=1\n"));
    QCOMPARE(ids(), QStringList(QStringLiteral("f")));
    QVERIFY(conf->pendingLines.isEmpty());
}

void YumConfIOFailuresTest::anErrorIsReportedIfARepositoryFileCannotBeCreated()
{
    putMain("[main]\nretries=1\n");
    putRepo(QStringLiteral("a.repo"), "[a]\n");
    putRepo(QStringLiteral("unused.repo"), "[u]\n");
    QVERIFY(conf->read(window.get()));
    QVERIFY(QDir().mkdir(repoPath(QStringLiteral("b.repo"))));
    conf->entries.removeAll(made(QStringLiteral("u")));
    entry(QStringLiteral("a")).name = QStringLiteral("new");
    conf->entries.append(made(QStringLiteral("b")));
    conf->mainText = QStringLiteral("[main]\nretries=2\n");
    QVERIFY(!conf->write(window.get()));
    compareError(withErrno(QStringLiteral("Unable to write repository configuration file ") +
                               repoPath(QStringLiteral("b.repo")),
                           EISDIR));
    QCOMPARE(getRepo(QStringLiteral("a.repo")), QByteArray("[a]\n"));
    QCOMPARE(get(mainPath()), QByteArray("[main]\nretries=1\n"));
    QCOMPARE(getRepo(QStringLiteral("unused.repo")), QByteArray("[u]\n"));
}

void YumConfIOFailuresTest::anErrorIsReportedIfTheMainFileCannotBeWritten()
{
    QVERIFY(conf->read(window.get()));
    QCOMPARE(chmod(QFile::encodeName(root->path()).constData(), 0755), 0);
    conf->mainText += QStringLiteral("retries=1\n");
    {
        const OrdinaryUser unprivileged;
        QVERIFY(!conf->write(window.get()));
    }
    compareError(
        withErrno(QStringLiteral("Unable to write repository configuration file ") + mainPath(), EACCES));
    QCOMPARE(get(mainPath()), QByteArray("[main]\n"));
}

void YumConfIOFailuresTest::anErrorIsShownAndNoFileIsChangedIfTheDiskIsFull()
{
    if (!SmallDisk::possible()) {
        QSKIP("only root can mount a small file system, and only where \"/\" is a mount point");
    }
    const SmallDisk disk(path(QStringLiteral("etc/yum.repos.d")));
    QByteArray text;
    for (const char* name : {"a", "b"}) {
        text = QByteArray("[") + name + "]\n#" + QByteArray(3 * SmallDisk::blockSize, '#') + '\n';
        putRepo(QLatin1String(name) + QStringLiteral(".repo"), text);
    }
    QVERIFY(conf->read(window.get()));
    entry(QStringLiteral("a")).name = QStringLiteral("new");
    entry(QStringLiteral("b")).name = QStringLiteral("new");
    conf->mainText = QStringLiteral("[main]\nretries=1\n");
    disk.leave(5);
    QVERIFY(!conf->write(window.get()));
    compareError(withErrno(QStringLiteral("Unable to write repository configuration file ") +
                               repoPath(QStringLiteral("b.repo")),
                           ENOSPC));
    // The disk had space for only one of the two files, so VYRE has changed neither file, and has left no
    // copies.
    QVERIFY(getRepo(QStringLiteral("a.repo")).startsWith("[a]\n#"));
    QCOMPARE(getRepo(QStringLiteral("b.repo")), text);
    QCOMPARE(get(mainPath()), QByteArray("[main]\n"));
    QCOMPARE(QDir(path(QStringLiteral("etc/yum.repos.d")))
                 .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name),
             QStringList({QStringLiteral("a.repo"), QStringLiteral("b.repo"), QStringLiteral("filler")}));
    // When the disk has enough space, VYRE writes both files.
    QVERIFY(QFile::remove(repoPath(QStringLiteral("filler"))));
    QVERIFY(conf->write(window.get()));
    QVERIFY(getRepo(QStringLiteral("a.repo")).startsWith("[a]\nname=new\n#"));
    QVERIFY(getRepo(QStringLiteral("b.repo")).startsWith("[b]\nname=new\n#"));
    QCOMPARE(get(mainPath()), QByteArray("[main]\nretries=1\n"));
}

void YumConfIOFailuresTest::theOldFileOfAMovedRepositoryIsKeptIfTheNewFileCannotBeCreated()
{
    putRepo(QStringLiteral("a.repo"), "[a]\n\n[moved]\n");
    QVERIFY(conf->read(window.get()));
    const QString place = repoPath(QStringLiteral("b.repo"));
    QVERIFY(QDir().mkdir(place));
    entry(QStringLiteral("moved")).file = place;
    QVERIFY(!conf->write(window.get()));
    compareError(withErrno(QStringLiteral("Unable to write repository configuration file ") + place, EISDIR));
    QCOMPARE(getRepo(QStringLiteral("a.repo")), QByteArray("[a]\n\n[moved]\n"));
    QVERIFY(QDir().rmdir(place));
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("a.repo")), QByteArray("[a]\n"));
    QCOMPARE(getRepo(QStringLiteral("b.repo")), QByteArray("[moved]\n"));
}

// The new file has two names, so VYRE overwrites it in place. Only then does VYRE notice that it cannot write
// the file.
void YumConfIOFailuresTest::theOldFileOfAMovedRepositoryIsKeptIfTheNewFileCannotBeOverwritten_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    QTest::newRow("move to a later file") << "a.repo"
                                          << "b.repo";
    QTest::newRow("move to an earlier file") << "b.repo"
                                             << "a.repo";
}

void YumConfIOFailuresTest::theOldFileOfAMovedRepositoryIsKeptIfTheNewFileCannotBeOverwritten()
{
    QFETCH(QString, from);
    QFETCH(QString, to);
    putRepo(from, "[stays]\n\n[moved]\n");
    putRepo(to, "[there]\n");
    putRepo(QStringLiteral("0.repo"), "[0]\n");
    const QByteArray place = QFile::encodeName(repoPath(to));
    QCOMPARE(link(place.constData(), QFile::encodeName(path(QStringLiteral("other name"))).constData()), 0);
    QCOMPARE(chmod(place.constData(), 0444), 0);
    for (const QString& writable : {repoPath(from), repoPath(QStringLiteral("0.repo"))}) {
        QCOMPARE(chmod(QFile::encodeName(writable).constData(), 0666), 0);
    }
    QCOMPARE(chmod(QFile::encodeName(root->path()).constData(), 0755), 0);
    QCOMPARE(chmod(QFile::encodeName(path(QStringLiteral("etc/yum.repos.d"))).constData(), 0777), 0);
    QVERIFY(conf->read(window.get()));
    entry(QStringLiteral("moved")).file = repoPath(to);
    entry(QStringLiteral("0")).name = QStringLiteral("new");
    {
        const OrdinaryUser unprivileged;
        QVERIFY(!conf->write(window.get()));
    }
    compareError(
        withErrno(QStringLiteral("Unable to write repository configuration file ") + repoPath(to), EACCES));
    QCOMPARE(getRepo(from), QByteArray("[stays]\n\n[moved]\n"));
    QCOMPARE(getRepo(to), QByteArray("[there]\n"));
    QCOMPARE(getRepo(QStringLiteral("0.repo")), QByteArray("[0]\n"));
}

void YumConfIOFailuresTest::anErrorIsReportedIfAFileCannotBeRemoved()
{
    putRepo(QStringLiteral("u.repo"), "[u]\n");
    QVERIFY(conf->read(window.get()));
    conf->entries.clear();
    QCOMPARE(chmod(QFile::encodeName(root->path()).constData(), 0755), 0);
    QCOMPARE(chmod(QFile::encodeName(mainPath()).constData(), 0666), 0);
    const QByteArray directory = QFile::encodeName(path(QStringLiteral("etc/yum.repos.d")));
    QCOMPARE(chmod(directory.constData(), 0555), 0);
    {
        const OrdinaryUser unprivileged;
        QVERIFY(!conf->write(window.get()));
    }
    QCOMPARE(chmod(directory.constData(), 0755), 0);
    compareError(withErrno(QStringLiteral("Unable to unlink repository configuration file ") +
                               repoPath(QStringLiteral("u.repo")),
                           EACCES));
    QCOMPARE(getRepo(QStringLiteral("u.repo")), QByteArray("[u]\n"));
}

void YumConfIOFailuresTest::anErrorIsShownOverTheGivenWindow()
{
    putRepo(QStringLiteral("f.repo"), "[x\n");
    QWidget other;
    other.show();
    QVERIFY(!conf->read(&other));
    QCOMPARE(conf->parent, &other);
    QCOMPARE(user->seen.takeFirst().parent, &other);
    conf->entries = {made(QString())};
    QVERIFY(!conf->write(window.get()));
    QCOMPARE(conf->parent, window.get());
    QCOMPARE(user->seen.takeFirst().parent, window.get());
}

QTEST_MAIN(YumConfIOFailuresTest)
#include "YumConfIOFailuresTest.moc"
