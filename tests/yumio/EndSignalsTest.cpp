// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/EndSignals.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include "yumio/SignalRecorder.h"

namespace {

// Returns the next signal number in the child's pipe, or 0 if none arrives within 20 seconds.
int nextOf(int descriptor)
{
    pollfd polled = {descriptor, POLLIN, 0};
    int number = 0;
    return poll(&polled, 1, 20000) == 1 && read(descriptor, &number, sizeof number) == sizeof number ? number
                                                                                                     : 0;
}

// Runs the function in a child process, in which signals become requests to end. The function gets the
// descriptor from which it can read the requests. Returns the child's exit status, or the signal that ended
// the child.
template <typename Function> QString inChild(const Function& function)
{
    const pid_t child = fork();
    if (child == 0) {
        // The test framework has installed handlers, which the child inherits.
        for (int number = 1; number <= SIGRTMAX; ++number) {
            if (EndSignals::endsProcess(number)) {
                std::signal(number, SIG_DFL);
            }
        }
        alarm(60);
        int ends[2];
        if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
            _exit(99);
        }
        EndSignals::install(ends[1]);
        _exit(function(ends[0]));
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? QStringLiteral("signal %1").arg(WTERMSIG(status))
                               : QStringLiteral("status %1").arg(WEXITSTATUS(status));
}

QString writeLock(const QTemporaryDir& directory, const QByteArray& text)
{
    const QString path = directory.filePath(QStringLiteral("lock.pid"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size()) {
        return QString();
    }
    return path;
}

// Writes a lock file with the number of the calling process.
bool writeOwnLock(const QByteArray& path)
{
    const int file = open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const QByteArray text = QByteArray::number(getpid());
    const bool good = file >= 0 && write(file, text.constData(), size_t(text.size())) == text.size();
    close(file);
    EndSignals::setLockFile(path.constData());
    return good;
}

} // namespace

class EndSignalsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Finds the expected value by experiment: sends each signal to a child without handlers, and checks
    // whether the child ends.
    void theProgramKnowsWhichSignalsEndAProcess_data()
    {
        QTest::addColumn<int>("number");
        for (int number = 1; number <= SIGRTMAX; ++number) {
            const bool ofTheLibrary = number > SIGSYS && number < SIGRTMIN;
            if (number != SIGKILL && number != SIGSTOP && !ofTheLibrary) {
                QTest::newRow(qPrintable(QString::number(number))) << number;
            }
        }
    }

    void theProgramKnowsWhichSignalsEndAProcess()
    {
        QFETCH(int, number);
        const pid_t child = fork();
        if (child == 0) {
            // SIGTSTP stops no process of an orphaned process group, so the child gets its own group.
            setpgid(0, 0);
            std::signal(number, SIG_DFL);
            raise(number);
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, WUNTRACED);
        if (WIFSTOPPED(status)) {
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
        }
        QCOMPARE(EndSignals::endsProcess(number), bool(WIFSIGNALED(status)));
    }

    void aTerminationSignalBecomesARequestToEnd_data()
    {
        QTest::addColumn<int>("number");
        for (int number : {SIGTERM, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2, SIGALRM, SIGSEGV, SIGFPE, SIGXCPU,
                           SIGIO, SIGABRT, SIGRTMIN, SIGRTMAX}) {
            QTest::newRow(strsignal(number)) << number;
        }
    }

    void aTerminationSignalBecomesARequestToEnd()
    {
        QFETCH(int, number);
        QCOMPARE(inChild([number](int requests) {
                     kill(getpid(), number);
                     return nextOf(requests);
                 }),
                 QStringLiteral("status %1").arg(number));
    }

    void renewingTheHandlersRestoresTheHandlerOfSIGINT()
    {
        QCOMPARE(inChild([](int) {
                     kill(getpid(), SIGINT);
                     return 0;
                 }),
                 QStringLiteral("signal %1").arg(SIGINT));
        QCOMPARE(inChild([](int requests) {
                     EndSignals::renew();
                     kill(getpid(), SIGINT);
                     return nextOf(requests);
                 }),
                 QStringLiteral("status %1").arg(SIGINT));
    }

    void renewingTheHandlersChangesNothingIfNoHandlersAreInstalled()
    {
        struct sigaction before = {};
        struct sigaction after = {};
        sigaction(SIGINT, nullptr, &before);
        EndSignals::renew();
        sigaction(SIGINT, nullptr, &after);
        QVERIFY(before.sa_handler == after.sa_handler);
    }

    void aSignalForAProgramErrorEndsTheProcess()
    {
        QTemporaryDir directory;
        const QByteArray lock = QFile::encodeName(directory.filePath(QStringLiteral("lock.pid")));
        QCOMPARE(inChild([&lock](int) {
                     if (!writeOwnLock(lock)) {
                         return 98;
                     }
                     int* volatile nowhere = nullptr;
                     return *nowhere;
                 }),
                 QStringLiteral("signal %1").arg(SIGSEGV));
        QVERIFY(!QFile::exists(QFile::decodeName(lock)));
        QCOMPARE(inChild([&lock](int) {
                     if (!writeOwnLock(lock)) {
                         return 98;
                     }
                     std::abort();
                 }),
                 QStringLiteral("signal %1").arg(SIGABRT));
        QVERIFY(!QFile::exists(QFile::decodeName(lock)));
    }

    void theLockFileOfAnotherProcessIsKeptIfThisProcessDies()
    {
        QTemporaryDir directory;
        const QString path = writeLock(directory, "1");
        const QByteArray lock = QFile::encodeName(path);
        QCOMPARE(inChild([&lock](int) {
                     EndSignals::setLockFile(lock.constData());
                     int* volatile nowhere = nullptr;
                     return *nowhere;
                 }),
                 QStringLiteral("signal %1").arg(SIGSEGV));
        QVERIFY(QFile::exists(path));
    }

    void aSignalToAChildProcessEndsTheChildWithoutARequestToEnd()
    {
        QCOMPARE(inChild([](int requests) {
                     const pid_t child = fork();
                     if (child == 0) {
                         kill(getpid(), SIGTERM);
                         _exit(0);
                     }
                     int status = 0;
                     waitpid(child, &status, 0);
                     pollfd polled = {requests, POLLIN, 0};
                     return WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM && poll(&polled, 1, 100) == 0
                                ? 7
                                : 8;
                 }),
                 QStringLiteral("status 7"));
    }

    void aSignalThatTheRecorderDeliversBecomesARequestToEnd()
    {
        for (int number : {SIGTERM, SIGABRT, SIGUSR1, SIGSEGV}) {
            QCOMPARE(inChild([number](int requests) {
                         {
                             SignalRecorder recorder;
                             kill(getpid(), number);
                             pollfd polled = {requests, POLLIN, 0};
                             if (poll(&polled, 1, 100) != 0) {
                                 return 9;
                             }
                         }
                         return nextOf(requests);
                     }),
                     QStringLiteral("status %1").arg(number));
        }
    }

    void anIgnoredSignalDoesNotRequestTheEndOfTheProcess()
    {
        QCOMPARE(inChild([](int requests) {
                     std::signal(SIGHUP, SIG_IGN);
                     int ends[2];
                     if (pipe(ends) != 0) {
                         return 97;
                     }
                     EndSignals::install(ends[1]);
                     kill(getpid(), SIGHUP);
                     pollfd polled[] = {{requests, POLLIN, 0}, {ends[0], POLLIN, 0}};
                     return poll(polled, 2, 100) == 0 ? 7 : 8;
                 }),
                 QStringLiteral("status 7"));
    }

    void theProcessCanEndItselfWithAGivenSignal()
    {
        QCOMPARE(inChild([](int) {
                     sigset_t all;
                     sigfillset(&all);
                     sigprocmask(SIG_SETMASK, &all, nullptr);
                     EndSignals::endBy(SIGUSR2);
                     return 0;
                 }),
                 QStringLiteral("signal %1").arg(SIGUSR2));
    }
};

QTEST_GUILESS_MAIN(EndSignalsTest)
#include "EndSignalsTest.moc"
