// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <QDir>
#include <QTemporaryDir>

#include <cerrno>
#include <csignal>
#include <functional>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "repo/SafeFile.h"
#include "tests/repo/SmallDisk.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/Files.h"

using Files::get;
using Files::put;

namespace {

const QByteArray oldText("old text\n");
const QByteArray newText("a new text that is longer\n");

bool replaceNow(const QString& path, const QByteArray& expected, const QByteArray& text, bool others = true)
{
    SafeFile file;
    return file.replace(path, expected, text, others) && file.commit();
}

bool createNow(const QString& path, const QByteArray& text, mode_t mode = 0666)
{
    SafeFile file;
    return file.create(path, text, mode) && file.commit();
}

// Runs `work` in a traced child process, which stops at the beginning and at the end of each system call.
// Counts these stops, and kills the child at the stop with the number `stop`. Appends the numbers of the
// system calls to `calls`. Returns true if `work` ends before this stop.
bool runUntil(int stop, const std::function<void()>& work, QList<quint64>* calls = nullptr)
{
    const pid_t child = fork();
    if (child == 0) {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        work();
        _exit(0);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFSTOPPED(status) ||
        ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) != 0) {
        qFatal("a process cannot be traced: %s", std::strerror(errno));
    }
    for (int stops = 0;;) {
        if (stops == stop) {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            return false;
        }
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        if (waitpid(child, &status, 0) != child || WIFEXITED(status) || WIFSIGNALED(status)) {
            return true;
        }
        if (WIFSTOPPED(status) && WSTOPSIG(status) == (SIGTRAP | 0x80)) {
            ++stops;
            __ptrace_syscall_info info;
            if (calls != nullptr && ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info) > 0 &&
                info.op == PTRACE_SYSCALL_INFO_ENTRY) {
                calls->append(info.entry.nr);
            }
        }
    }
}

} // namespace

class SafeFileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void replacingAFileWritesTheNewText();
    void aNewFileIsCreated();
    void aReplacedFileKeepsItsOwnerItsModeAndItsAttributes();
    void replacingAFileCanRemoveTheRightsOfOtherUsers();
    void theTargetOfALinkIsReplacedAndNotTheLink();
    void allHardLinksOfAFileGetTheNewText();
    void aFileInAReadOnlyDirectoryIsReplaced();
    void aFileIsNotOverwrittenIfAnotherProgramHasChangedIt();
    void aFileIsNotOverwrittenIfItChangesDuringTheReplacement();
    void aFileIsNotOverwrittenIfAnotherProgramHasCreatedIt();
    void aNewFileIsRemovedIfItIsNotCommitted();
    void theNewTextIsOnTheDiskBeforeTheTemporaryFileIsRenamed();
    void theOldTextIsKeptIfTheDiskIsFull_data();
    void theOldTextIsKeptIfTheDiskIsFull();
    void theFileHasEitherTheOldOrTheNewTextIfTheProgramIsKilled_data();
    void theFileHasEitherTheOldOrTheNewTextIfTheProgramIsKilled();
    void theNewFileIsEitherMissingOrCompleteIfTheProgramIsKilled();
    void leftoversOfRunningProgramsAndOfOtherUsersAreKept();
    void leftoversAreNotReadAsRepositoryFiles();

private:
    QString path(const QString& name) const { return root->filePath(name); }
    QStringList names(const QString& directory = QString()) const;
    static struct stat statusOf(const QString& absolute);

    QScopedPointer<QTemporaryDir> root;
    EnvironmentVariable managedRoot{"VYREROOT"};
};

QStringList SafeFileTest::names(const QString& directory) const
{
    return QDir(path(directory))
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

struct stat SafeFileTest::statusOf(const QString& absolute)
{
    struct stat status;
    if (lstat(QFile::encodeName(absolute).constData(), &status) != 0) {
        qFatal("the file %s is missing", qPrintable(absolute));
    }
    return status;
}

void SafeFileTest::init()
{
    root.reset(new QTemporaryDir);
    QVERIFY(root->isValid());
    QCOMPARE(chmod(QFile::encodeName(root->path()).constData(), 0755), 0);
    managedRoot.set(QFile::encodeName(root->path()));
    umask(022);
    put(path(QStringLiteral("x.repo")), oldText);
}

void SafeFileTest::replacingAFileWritesTheNewText()
{
    const QString file = path(QStringLiteral("x.repo"));
    for (const QByteArray& text : {newText, QByteArray(), QByteArray(300000, 'x'), oldText}) {
        QVERIFY(replaceNow(file, get(file), text));
        QCOMPARE(get(file), text);
        QCOMPARE(names(), QStringList(QStringLiteral("x.repo")));
    }
}

void SafeFileTest::aNewFileIsCreated()
{
    QVERIFY(createNow(path(QStringLiteral("y.repo")), newText));
    QCOMPARE(get(path(QStringLiteral("y.repo"))), newText);
    QCOMPARE(int(statusOf(path(QStringLiteral("y.repo"))).st_mode & 07777), 0644);
    QVERIFY(createNow(path(QStringLiteral("z.repo")), newText, 0600));
    QCOMPARE(int(statusOf(path(QStringLiteral("z.repo"))).st_mode & 07777), 0600);
    QVERIFY(!createNow(path(QStringLiteral("none/z.repo")), newText));
    QCOMPARE(errno, ENOENT);
    QCOMPARE(names(),
             QStringList({QStringLiteral("x.repo"), QStringLiteral("y.repo"), QStringLiteral("z.repo")}));
}

void SafeFileTest::aReplacedFileKeepsItsOwnerItsModeAndItsAttributes()
{
    const QString file = path(QStringLiteral("x.repo"));
    const QByteArray name = QFile::encodeName(file);
    const uid_t owner = geteuid() == 0 ? 1234 : geteuid();
    const gid_t group = geteuid() == 0 ? 2345 : getegid();
    QCOMPARE(chown(name.constData(), owner, group), 0);
    QCOMPARE(chmod(name.constData(), 0664), 0);
    const bool hasAttributes = setxattr(name.constData(), "user.vyre", "kept", 4, 0) == 0;
    const ino_t before = statusOf(file).st_ino;
    QVERIFY(replaceNow(file, oldText, newText));
    const struct stat status = statusOf(file);
    QVERIFY(status.st_ino !=
            before); // the path now names a new file, with the owner and the mode of the old file
    QCOMPARE(status.st_uid, owner);
    QCOMPARE(status.st_gid, group);
    QCOMPARE(int(status.st_mode & 07777), 0664);
    if (!hasAttributes) {
        QSKIP("no extended attributes in this file system");
    }
    char value[8];
    QCOMPARE(getxattr(name.constData(), "user.vyre", value, sizeof value), ssize_t(4));
    QCOMPARE(QByteArray(value, 4), QByteArray("kept"));
}

void SafeFileTest::replacingAFileCanRemoveTheRightsOfOtherUsers()
{
    const QString file = path(QStringLiteral("x.repo"));
    SafeFile safe;
    QVERIFY(safe.replace(file, oldText, newText, false) && safe.commit());
    QVERIFY(safe.hasRemovedRights());
    QCOMPARE(int(statusOf(file).st_mode & 07777), 0640);
    SafeFile again;
    QVERIFY(again.replace(file, newText, oldText, false) && again.commit());
    QVERIFY(!again.hasRemovedRights());
    // A file with two names is overwritten in place. Even then, other users lose their rights to the file.
    QCOMPARE(chmod(QFile::encodeName(file).constData(), 0604), 0);
    QVERIFY(QFile::exists(file));
    QCOMPARE(
        link(QFile::encodeName(file).constData(), QFile::encodeName(path(QStringLiteral("b"))).constData()),
        0);
    SafeFile inPlace;
    QVERIFY(inPlace.replace(file, oldText, newText, false) && inPlace.commit());
    QCOMPARE(int(statusOf(file).st_mode & 07777), 0600);
}

void SafeFileTest::theTargetOfALinkIsReplacedAndNotTheLink()
{
    QVERIFY(QDir(root->path()).mkpath(QStringLiteral("elsewhere")));
    put(path(QStringLiteral("elsewhere/real")), oldText);
    QVERIFY(QFile::link(QStringLiteral("elsewhere/real"), path(QStringLiteral("y.repo"))));
    QVERIFY(QFile::link(path(QStringLiteral("y.repo")), path(QStringLiteral("z.repo"))));
    QVERIFY(replaceNow(path(QStringLiteral("z.repo")), oldText, newText));
    QCOMPARE(get(path(QStringLiteral("elsewhere/real"))), newText);
    QVERIFY(S_ISREG(statusOf(path(QStringLiteral("elsewhere/real"))).st_mode));
    QVERIFY(S_ISLNK(statusOf(path(QStringLiteral("y.repo"))).st_mode));
    QVERIFY(S_ISLNK(statusOf(path(QStringLiteral("z.repo"))).st_mode));
}

void SafeFileTest::allHardLinksOfAFileGetTheNewText()
{
    const QByteArray other = QFile::encodeName(path(QStringLiteral("other")));
    QCOMPARE(link(QFile::encodeName(path(QStringLiteral("x.repo"))).constData(), other.constData()), 0);
    QVERIFY(replaceNow(path(QStringLiteral("x.repo")), oldText, newText));
    QCOMPARE(get(path(QStringLiteral("other"))), newText);
    QCOMPARE(statusOf(path(QStringLiteral("other"))).st_ino, statusOf(path(QStringLiteral("x.repo"))).st_ino);
    // SafeFile copies the old text before it overwrites the file in place, and removes the copy afterwards.
    QCOMPARE(names(), QStringList({QStringLiteral("other"), QStringLiteral("x.repo")}));
}

void SafeFileTest::aFileInAReadOnlyDirectoryIsReplaced()
{
    if (geteuid() != 0) {
        QSKIP("only root can act as another user");
    }
    QVERIFY(QDir(root->path()).mkpath(QStringLiteral("var/tmp")));
    QCOMPARE(chmod(QFile::encodeName(path(QStringLiteral("var/tmp"))).constData(), 01777), 0);
    QCOMPARE(chmod(QFile::encodeName(path(QStringLiteral("x.repo"))).constData(), 0666), 0);
    QCOMPARE(seteuid(65534), 0);
    const bool good = replaceNow(path(QStringLiteral("x.repo")), oldText, newText);
    // If no directory for the copy of the old text exists, SafeFile does not overwrite the file.
    managedRoot.set("/nowhere");
    const EnvironmentVariable temporary("TMPDIR", "/nowhere");
    const bool unsafe = replaceNow(path(QStringLiteral("x.repo")), newText, oldText);
    QCOMPARE(seteuid(0), 0);
    QVERIFY(good);
    QVERIFY(!unsafe);
    QCOMPARE(get(path(QStringLiteral("x.repo"))), newText);
    QCOMPARE(names(QStringLiteral("var/tmp")), QStringList());
    QCOMPARE(names(), QStringList({QStringLiteral("var"), QStringLiteral("x.repo")}));
}

void SafeFileTest::aFileIsNotOverwrittenIfAnotherProgramHasChangedIt()
{
    SafeFile file;
    QVERIFY(!file.replace(path(QStringLiteral("x.repo")), "another text", newText));
    QCOMPARE(errno, ESTALE);
    QVERIFY(!file.replace(path(QStringLiteral("none.repo")), oldText, newText));
    QCOMPARE(errno, ESTALE);
    QCOMPARE(get(path(QStringLiteral("x.repo"))), oldText);
}

void SafeFileTest::aFileIsNotOverwrittenIfItChangesDuringTheReplacement()
{
    SafeFile file;
    QVERIFY(file.replace(path(QStringLiteral("x.repo")), oldText, newText));
    put(path(QStringLiteral("x.repo")), "of others");
    QVERIFY(!file.commit());
    QCOMPARE(errno, ESTALE);
    QCOMPARE(get(path(QStringLiteral("x.repo"))), QByteArray("of others"));
}

void SafeFileTest::aFileIsNotOverwrittenIfAnotherProgramHasCreatedIt()
{
    {
        SafeFile file;
        QVERIFY(!file.create(path(QStringLiteral("x.repo")), newText, 0666));
        QCOMPARE(errno, EEXIST);
        QVERIFY(!file.create(root->path(), newText, 0666));
        QCOMPARE(errno, EISDIR);
    }
    SafeFile file;
    QVERIFY(file.create(path(QStringLiteral("y.repo")), newText, 0666));
    put(path(QStringLiteral("y.repo")), "of others");
    QVERIFY(!file.commit());
    QCOMPARE(errno, EEXIST);
    QCOMPARE(get(path(QStringLiteral("y.repo"))), QByteArray("of others"));
    QCOMPARE(get(path(QStringLiteral("x.repo"))), oldText);
}

void SafeFileTest::aNewFileIsRemovedIfItIsNotCommitted()
{
    {
        SafeFile replaced;
        SafeFile made;
        QVERIFY(replaced.replace(path(QStringLiteral("x.repo")), oldText, newText));
        QVERIFY(made.create(path(QStringLiteral("y.repo")), newText, 0666));
        QCOMPARE(names().size(), 3);
    }
    QCOMPARE(names(), QStringList(QStringLiteral("x.repo")));
    QCOMPARE(get(path(QStringLiteral("x.repo"))), oldText);
}

void SafeFileTest::theNewTextIsOnTheDiskBeforeTheTemporaryFileIsRenamed()
{
    const QString file = path(QStringLiteral("x.repo"));
    QList<quint64> calls;
    QVERIFY(runUntil(
        -1,
        [&file] {
            replaceNow(file, oldText, newText);
            SafeFile::syncDirectories({file.section(QLatin1Char('/'), 0, -2)});
        },
        &calls));
    QCOMPARE(get(file), newText);
    const int written = calls.indexOf(SYS_pwrite64);
    const int synced = calls.indexOf(SYS_fsync);
    const int renamed = calls.indexOf(SYS_renameat);
    QVERIFY(written >= 0 && written < synced && synced < renamed);
    QVERIFY(calls.lastIndexOf(SYS_fsync) > renamed); // fsync() of the directory follows the renaming

    // If many files change, SafeFile calls syncfs() once instead of fsync() for each file.
    calls.clear();
    QVERIFY(runUntil(
        -1,
        [this] {
            std::vector<std::unique_ptr<SafeFile>> files;
            for (int i = 0; i < 20; ++i) {
                files.push_back(std::make_unique<SafeFile>());
                files.back()->create(path(QString::number(i)), newText, 0666);
            }
            SafeFile::sync(files);
            for (const auto& each : files) {
                each->commit();
            }
        },
        &calls));
    QCOMPARE(names().size(), 21);
    QCOMPARE(calls.count(SYS_syncfs), 1);
    QCOMPARE(calls.count(SYS_fsync), 0);
    QVERIFY(calls.lastIndexOf(SYS_pwrite64) < calls.indexOf(SYS_syncfs));
    QVERIFY(calls.indexOf(SYS_syncfs) < calls.indexOf(SYS_renameat2));
}

void SafeFileTest::theOldTextIsKeptIfTheDiskIsFull_data()
{
    QTest::addColumn<bool>("inPlace");
    QTest::newRow("a new file replaces the old file") << false;
    QTest::newRow("the old file is overwritten") << true;
}

void SafeFileTest::theOldTextIsKeptIfTheDiskIsFull()
{
    if (!SmallDisk::possible()) {
        QSKIP("only root can mount a small file system, and only where \"/\" is a mount point");
    }
    QFETCH(bool, inPlace);
    const QByteArray small(SmallDisk::blockSize, 'o');
    const QByteArray large(4 * SmallDisk::blockSize, 'n');
    const SmallDisk disk(root->path());
    const QString file = path(QStringLiteral("x.repo"));
    int failures = 0;
    int successes = 0;
    for (int blocks = 0; blocks < 8; ++blocks) {
        QFile::remove(path(QStringLiteral("filler")));
        QFile::remove(file);
        QFile::remove(path(QStringLiteral("other")));
        put(file, small);
        if (inPlace) {
            QCOMPARE(link(QFile::encodeName(file).constData(),
                          QFile::encodeName(path(QStringLiteral("other"))).constData()),
                     0);
        }
        disk.leave(blocks);
        const bool good = replaceNow(file, small, large);
        if (!good) {
            QCOMPARE(errno, ENOSPC);
        }
        QCOMPARE(get(file) == large, good);
        QCOMPARE(get(file) == small, !good);
        ++(good ? successes : failures);
        QCOMPARE(names().size(), inPlace ? 3 : 2);
    }
    // The test must see both results: writes that fail because the disk is full, and writes that succeed.
    QVERIFY2(failures >= 4 && successes >= 2, QByteArray::number(failures));
}

void SafeFileTest::theFileHasEitherTheOldOrTheNewTextIfTheProgramIsKilled_data()
{
    QTest::addColumn<bool>("inPlace");
    QTest::newRow("a new file replaces the old file") << false;
    QTest::newRow("the old file is overwritten") << true;
}

void SafeFileTest::theFileHasEitherTheOldOrTheNewTextIfTheProgramIsKilled()
{
    QFETCH(bool, inPlace);
    const QString file = path(QStringLiteral("x.repo"));
    int before = 0;
    int after = 0;
    int copies = 0;
    int leftovers = 0;
    for (int stop = 1;; ++stop) {
        for (const QString& each : names()) {
            QFile::remove(path(each));
        }
        put(file, oldText);
        if (inPlace) {
            QCOMPARE(link(QFile::encodeName(file).constData(),
                          QFile::encodeName(path(QStringLiteral("other"))).constData()),
                     0);
        }
        const bool ended = runUntil(stop, [&file] { replaceNow(file, oldText, newText); });
        const QByteArray found = get(file);
        const QStringList left = SafeFile::leftoverCopies(root->path());
        if (found == oldText) {
            ++before;
        } else if (found == newText) {
            ++after;
        } else {
            QVERIFY2(inPlace, found.constData());
        }
        if (!left.isEmpty()) {
            ++copies;
        }
        if (inPlace && found != newText && found != oldText) {
            QCOMPARE(left.size(), 1);
            QCOMPARE(get(left.first()), oldText);
        }
        leftovers += names().size() > (inPlace ? 2 : 1) ? 1 : 0;
        // Even if leftovers of the killed program exist, VYRE can write the file.
        SafeFile::removeLeftovers(root->path());
        QCOMPARE(names().size(), (inPlace ? 2 : 1) + left.size());
        QVERIFY(replaceNow(file, found, QByteArray("the next\n")));
        QCOMPARE(get(file), QByteArray("the next\n"));
        if (ended) {
            QCOMPARE(found, newText);
            QVERIFY(left.isEmpty());
            break;
        }
    }
    QVERIFY2(before > 5 && after > 1 && leftovers > 5,
             qPrintable(QStringLiteral("%1 %2").arg(before).arg(after)));
    QCOMPARE(copies > 0, inPlace);
}

void SafeFileTest::theNewFileIsEitherMissingOrCompleteIfTheProgramIsKilled()
{
    const QString file = path(QStringLiteral("y.repo"));
    int before = 0;
    for (int stop = 1;; ++stop) {
        QFile::remove(file);
        const bool ended = runUntil(stop, [&file] { createNow(file, newText); });
        if (QFile::exists(file)) {
            QCOMPARE(get(file), newText);
        } else {
            ++before;
        }
        SafeFile::removeLeftovers(root->path());
        QCOMPARE(names().size(), QFile::exists(file) ? 2 : 1);
        if (ended) {
            QVERIFY(QFile::exists(file));
            break;
        }
    }
    QVERIFY(before > 5);
}

void SafeFileTest::leftoversOfRunningProgramsAndOfOtherUsersAreKept()
{
    SafeFile living;
    QVERIFY(living.replace(path(QStringLiteral("x.repo")), oldText, newText));
    put(path(QStringLiteral(".x.repo.vyre-abcdef")), "dead");
    put(path(QStringLiteral(".x.repo.vyre-other-abcdef")), "not ours");
    put(path(QStringLiteral("x.repo.vyre-abcdef")), "not ours");
    put(path(QStringLiteral(".x.repo.vyre-old-abcdef")), "a copy");
    QVERIFY(QFile::link(path(QStringLiteral("x.repo")), path(QStringLiteral(".l.repo.vyre-abcdef"))));
    int others = 0;
    if (geteuid() == 0) {
        const QString foreign = path(QStringLiteral(".y.repo.vyre-abcdef"));
        put(foreign, "of somebody else");
        QCOMPARE(chown(QFile::encodeName(foreign).constData(), 1234, 1234), 0);
        put(path(QStringLiteral(".y.repo.vyre-old-abcdef")), "of somebody else");
        QCOMPARE(
            chown(QFile::encodeName(path(QStringLiteral(".y.repo.vyre-old-abcdef"))).constData(), 1234, 1),
            0);
        others = 2;
    }
    const int before = names().size();
    SafeFile::removeLeftovers(root->path());
    QCOMPARE(names().size(), before - 1);
    QVERIFY(!QFile::exists(path(QStringLiteral(".x.repo.vyre-abcdef"))));
    QCOMPARE(SafeFile::leftoverCopies(root->path()),
             QStringList(path(QStringLiteral(".x.repo.vyre-old-abcdef"))));
    QVERIFY(living.commit());
    QCOMPARE(get(path(QStringLiteral("x.repo"))), newText);
    QCOMPARE(names().size(), 5 + others);
}

void SafeFileTest::leftoversAreNotReadAsRepositoryFiles()
{
    SafeFile file;
    QVERIFY(file.replace(path(QStringLiteral("x.repo")), oldText, newText));
    QStringList made = names();
    made.removeAll(QStringLiteral("x.repo"));
    QCOMPARE(made.size(), 1);
    QVERIFY(!made.first().endsWith(QStringLiteral(".repo")));
    QVERIFY(made.first().startsWith(QLatin1Char('.')));
    QCOMPARE(int(statusOf(path(made.first())).st_mode & 07777),
             int(statusOf(path(QStringLiteral("x.repo"))).st_mode) & 07777);
}

QTEST_GUILESS_MAIN(SafeFileTest)
#include "SafeFileTest.moc"
