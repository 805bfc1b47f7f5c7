// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/Execute.h"

#include <QtTest>
#include <QtWidgets>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <memory>
#include <vector>

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/AnsweringUser.h"

namespace {

// As long as an object of this class exists, the process runs as a user who can have only a limited number of
// processes.
class ProcessLimit
{
public:
    explicit ProcessLimit(rlim_t processes)
    {
        getrlimit(RLIMIT_NPROC, &saved);
        rlimit limit = saved;
        limit.rlim_cur = processes;
        if (setrlimit(RLIMIT_NPROC, &limit) != 0) {
            qFatal("setrlimit: %s", strerror(errno));
        }
        // RLIMIT_NPROC does not limit root, so the process becomes another user.
        if (getuid() == 0 && setresuid(65533, 65533, 0) != 0) {
            qFatal("setresuid: %s", strerror(errno));
        }
    }
    ~ProcessLimit()
    {
        uid_t real;
        uid_t effective;
        uid_t kept;
        getresuid(&real, &effective, &kept);
        if (kept == 0 && setresuid(0, 0, 0) != 0) {
            qFatal("setresuid: %s", strerror(errno));
        }
        setrlimit(RLIMIT_NPROC, &saved);
    }
    Q_DISABLE_COPY(ProcessLimit)

private:
    rlimit saved;
};

// Until an object of this class is destroyed, it collects the text that this process and its children write
// to standard error.
class StandardError
{
public:
    StandardError() : saved(dup(STDERR_FILENO))
    {
        if (!file.open()) {
            qFatal("the temporary file cannot be created");
        }
        fchmod(file.handle(), 0666);
        dup2(file.handle(), STDERR_FILENO);
    }
    ~StandardError()
    {
        dup2(saved, STDERR_FILENO);
        close(saved);
    }
    Q_DISABLE_COPY(StandardError)

    QString text() const
    {
        QFile written(file.fileName());
        return written.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(written.readAll()) : QString();
    }

private:
    QTemporaryFile file;
    int saved;
};

// A system call filter makes close_range() fail, as on a kernel without this call.
void withoutCloseRange()
{
    sock_filter filter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_close_range, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    sock_fprog program{sizeof filter / sizeof filter[0], filter};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program, 0, 0) != 0 ||
        syscall(SYS_close_range, 3, 3, 0) == 0) {
        _exit(2);
    }
}

} // namespace

class ExecuteTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void theStartedProgramGetsItsArguments();
    void theCallerDoesNotWaitForTheStartedProgram();
    void theStartedProgramIsNoChildOfThisProcess();
    void theStartedProgramHasASessionOfItsOwn();
    void theStartedProgramInheritsOnlyTheStandardDescriptors_data();
    void theStartedProgramInheritsOnlyTheStandardDescriptors();
    void startedProgramsWriteToTheSavedStandardStreams();
    void theStartedProgramDoesNotInheritBlockedSignals();
    void theStartedProgramDoesNotInheritIgnoredSignals();
    void startingAProgramKeepsTheSignalSettingsOfThisProcess();
    void aMissingProgramIsReportedOnStandardError();
    void aFailedForkCausesAMessageBox();
    void aFailedSecondForkIsReportedOnStandardError();

private:
    // Runs a shell script with arguments.
    void run(const QByteArray& script, const QList<QByteArray>& arguments = {}) const
    {
        QList<QByteArray> all{"/bin/sh", "-c", script, "script"};
        all += arguments;
        std::vector<char*> argv;
        for (QByteArray& each : all) {
            argv.push_back(each.data());
        }
        argv.push_back(nullptr);
        Execute::execute(window.get(), argv.data());
    }
    QString path(const char* name) const { return directory->filePath(QLatin1String(name)); }
    QByteArray quoted(const char* name) const { return '\'' + QFile::encodeName(path(name)) + '\''; }
    // Waits until the started program has completed a file, and returns the contents of this file.
    QByteArray read(const char* name) const
    {
        QFile file(path(name));
        return QTest::qWaitFor([&file] { return file.exists(); }) && file.open(QIODevice::ReadOnly)
                   ? file.readAll()
                   : QByteArray("(not written)");
    }

    std::unique_ptr<QTemporaryDir> directory;
    std::unique_ptr<QWidget> window;
};

void ExecuteTest::init()
{
    directory = std::make_unique<QTemporaryDir>();
    window = std::make_unique<QWidget>();
    window->show();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
}

void ExecuteTest::cleanup()
{
    window.reset();
    directory.reset();
}

void ExecuteTest::theStartedProgramGetsItsArguments()
{
    run("printf '%s\\n' \"$@\" > " + quoted("part") + " && mv " + quoted("part") + ' ' + quoted("whole"),
        {"one", "two words", "", "$three; 'four'"});
    QCOMPARE(read("whole"), QByteArray("one\ntwo words\n\n$three; 'four'\n"));
}

void ExecuteTest::theCallerDoesNotWaitForTheStartedProgram()
{
    // The program waits for "gate", which this test opens only after execute() has returned.
    QCOMPARE(mkfifo(QFile::encodeName(path("gate")).constData(), 0600), 0);
    run("read line < " + quoted("gate") + "; echo \"$line\" > " + quoted("part") + " && mv " +
        quoted("part") + ' ' + quoted("whole"));
    QVERIFY(!QFile::exists(path("whole")));
    const int gate = open(QFile::encodeName(path("gate")).constData(), O_WRONLY);
    QVERIFY(gate >= 0);
    QCOMPARE(write(gate, "go\n", 3), ssize_t(3));
    close(gate);
    QCOMPARE(read("whole"), QByteArray("go\n"));
}

void ExecuteTest::theStartedProgramIsNoChildOfThisProcess()
{
    QCOMPARE(mkfifo(QFile::encodeName(path("gate")).constData(), 0600), 0);
    run("echo $PPID > " + quoted("part") + " && mv " + quoted("part") + ' ' + quoted("parent") +
        "; read line < " + quoted("gate"));
    const QByteArray parent = read("parent").trimmed();
    QVERIFY(parent.toInt() > 0);
    QVERIFY(parent.toInt() != int(getpid()));
    // This process has no child: neither a running one nor a zombie.
    QCOMPARE(waitpid(-1, nullptr, WNOHANG), pid_t(-1));
    QCOMPARE(errno, ECHILD);
    const int gate = open(QFile::encodeName(path("gate")).constData(), O_WRONLY);
    close(gate);
}

void ExecuteTest::theStartedProgramHasASessionOfItsOwn()
{
    // The sixth field of /proc/PID/stat is the session. The second field, the name "cut", has no blanks that
    // would change the number of fields.
    run("cut -d' ' -f6 /proc/self/stat > " + quoted("part") + "; mv " + quoted("part") + ' ' +
        quoted("whole"));
    const int session = read("whole").trimmed().toInt();
    QVERIFY(session > 0);
    QVERIFY(session != int(getsid(0)));
}

void ExecuteTest::theStartedProgramInheritsOnlyTheStandardDescriptors_data()
{
    QTest::addColumn<bool>("oldSystem");
    QTest::newRow("close_range() exists") << false;
    QTest::newRow("close_range() is missing") << true;
}

void ExecuteTest::theStartedProgramInheritsOnlyTheStandardDescriptors()
{
    QFETCH(bool, oldSystem);
    // These descriptors lack FD_CLOEXEC, so only execute() can close them. Some of their numbers are low, and
    // one is high.
    const int low = open("/dev/null", O_RDONLY);
    const int high = fcntl(low, F_DUPFD, 900);
    int pipeEnds[2];
    QCOMPARE(pipe(pipeEnds), 0);
    // ls also lists descriptor 3, through which it reads the directory.
    const QByteArray listing = "exec ls /proc/self/fd > " + quoted("list");
    if (oldSystem) {
        // A process cannot remove its own system call filter, so a child process calls execute().
        const pid_t child = fork();
        if (child == 0) {
            withoutCloseRange();
            run(listing);
            _exit(0);
        }
        int status = -1;
        QCOMPARE(waitpid(child, &status, 0), child);
        QCOMPARE(status, 0);
    } else {
        run(listing);
    }
    const bool rightOnes = QTest::qWaitFor([this] { return read("list") == "0\n1\n2\n3\n"; });
    for (const int fd : {low, high, pipeEnds[0], pipeEnds[1]}) {
        QVERIFY(fd > STDERR_FILENO);
        QCOMPARE(close(fd), 0);
    }
    QVERIFY2(rightOnes, read("list").constData());
}

// A process cannot undo keepOutput(), so a child process calls it.
void ExecuteTest::startedProgramsWriteToTheSavedStandardStreams()
{
    const auto redirect = [this](const char* name) {
        const int fd = open(QFile::encodeName(path(name)).constData(), O_WRONLY | O_CREAT, 0600);
        dup2(fd, STDOUT_FILENO);
        dup2(fd, STDERR_FILENO);
        close(fd);
    };
    const pid_t child = fork();
    if (child == 0) {
        redirect("kept");
        Execute::keepOutput();
        redirect("later");
        run("echo out; echo err >&2; touch " + quoted("whole"));
        QByteArray program = QFile::encodeName(path("missing"));
        char* const argv[] = {program.data(), nullptr};
        Execute::execute(nullptr, argv);
        _exit(0);
    }
    int status = -1;
    QCOMPARE(waitpid(child, &status, 0), child);
    QCOMPARE(status, 0);
    read("whole");
    QTRY_VERIFY(read("kept").contains("execv("));
    // The output of the shell script and the error about the missing program arrive at the same time, in any
    // order.
    QVERIFY(read("kept").contains("out\n") && read("kept").contains("err\n"));
    QCOMPARE(read("later"), QByteArray());
}

void ExecuteTest::theStartedProgramDoesNotInheritIgnoredSignals()
{
    struct sigaction ignored
    {
    };
    ignored.sa_handler = SIG_IGN;
    const QList<int> numbers{SIGPIPE, SIGHUP, SIGCHLD, SIGINT, SIGTSTP, SIGRTMIN + 3};
    QVector<struct sigaction> before(numbers.count());
    for (int i = 0; i < numbers.count(); ++i) {
        QCOMPARE(sigaction(numbers.at(i), &ignored, &before[i]), 0);
    }
    run("grep SigIgn /proc/self/status > " + quoted("part") + "; mv " + quoted("part") + ' ' +
        quoted("whole"));
    for (int i = 0; i < numbers.count(); ++i) {
        QCOMPARE(sigaction(numbers.at(i), &before[i], nullptr), 0);
    }
    QCOMPARE(read("whole").simplified(), QByteArray("SigIgn: 0000000000000000"));
}

void ExecuteTest::startingAProgramKeepsTheSignalSettingsOfThisProcess()
{
    sigset_t blocked;
    sigset_t saved;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &blocked, &saved);
    struct sigaction ignored
    {
    };
    ignored.sa_handler = SIG_IGN;
    struct sigaction before
    {
    };
    sigaction(SIGUSR2, &ignored, &before);
    run("exit 0");
    sigset_t after;
    struct sigaction disposition
    {
    };
    sigaction(SIGUSR2, &before, &disposition);
    pthread_sigmask(SIG_SETMASK, &saved, &after);
    QCOMPARE(sigismember(&after, SIGUSR1), 1);
    QCOMPARE(sigismember(&after, SIGTERM), sigismember(&saved, SIGTERM));
    QVERIFY(disposition.sa_handler == SIG_IGN);
}

void ExecuteTest::theStartedProgramDoesNotInheritBlockedSignals()
{
    sigset_t blocked;
    sigset_t saved;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGCHLD);
    sigaddset(&blocked, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &blocked, &saved);
    run("grep SigBlk /proc/self/status > " + quoted("part") + "; mv " + quoted("part") + ' ' +
        quoted("whole"));
    pthread_sigmask(SIG_SETMASK, &saved, nullptr);
    QCOMPARE(read("whole").simplified(), QByteArray("SigBlk: 0000000000000000"));
}

void ExecuteTest::aMissingProgramIsReportedOnStandardError()
{
    QByteArray program = QFile::encodeName(path("missing"));
    char* const argv[] = {program.data(), nullptr};
    const StandardError errors;
    Execute::execute(window.get(), argv);
    const QString expected =
        QStringLiteral("execv(\"%1\", ...) failed; errno = 2 (No such file or directory)\n")
            .arg(path("missing"));
    QTRY_COMPARE(errors.text(), expected);
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void ExecuteTest::aFailedForkCausesAMessageBox()
{
    const AnsweringUser user(AnsweringUser::click(QMessageBox::Ok));
    {
        const ProcessLimit limit(0);
        run("exit 0");
    }
    // The message box opens only after execute() has returned.
    QVERIFY(user.seen.isEmpty());
    QTRY_COMPARE(user.titles(), QStringList{QStringLiteral("Help")});
    const ShownBox box = user.seen.first();
    QCOMPARE(box.text, QStringLiteral("fork() failed; errno = %1 (%2)").arg(EAGAIN).arg(strerror(EAGAIN)));
    QCOMPARE(box.parent, window.get());
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
}

void ExecuteTest::aFailedSecondForkIsReportedOnStandardError()
{
    const QString expected =
        QStringLiteral("second fork() failed; errno = %1 (%2)\n").arg(EAGAIN).arg(strerror(EAGAIN));
    // RLIMIT_NPROC also counts the threads of this program. The test increases the limit until the first
    // fork() succeeds and the second fork() fails.
    QString text;
    for (rlim_t processes = 1; processes < 200 && text.isEmpty(); ++processes) {
        const StandardError errors;
        {
            const ProcessLimit limit(processes);
            run("exit 0");
        }
        bool shown = false;
        for (QWidget* each : QApplication::topLevelWidgets()) {
            if (qobject_cast<QMessageBox*>(each) != nullptr && each->isVisible()) {
                shown = true;
                each->close();
            }
        }
        if (!shown) {
            // No box was shown, so the first fork() has succeeded. The child of this fork() has written the
            // error and has ended.
            text = errors.text();
            break;
        }
    }
    QCOMPARE(text, expected);
}

QTEST_MAIN(ExecuteTest)
#include "ExecuteTest.moc"
