// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/SignalRecorder.h"

#include <sys/wait.h>
#include <unistd.h>

#include <QtTest>

namespace {

// Runs the function in a child process, with a descriptor for output. Returns the lines of this output,
// followed by the child's exit status, or by the signal that ended the child.
template <typename Function> QStringList inChild(const Function& function)
{
    int ends[2];
    if (pipe(ends) != 0) {
        return QStringList("no pipe");
    }
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        // The test framework has installed handlers, which the child inherits.
        for (int number = 1; number <= SIGRTMAX; ++number) {
            std::signal(number, SIG_DFL);
        }
        alarm(60);
        function(ends[1]);
        _exit(0);
    }
    close(ends[1]);
    QByteArray written;
    char buffer[256];
    for (ssize_t count = 0; (count = read(ends[0], buffer, sizeof buffer)) > 0;) {
        written.append(buffer, static_cast<int>(count));
    }
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    QStringList result = QString::fromLatin1(written).split('\n', Qt::SkipEmptyParts);
    result.append(WIFSIGNALED(status) ? QString("signal %1").arg(WTERMSIG(status))
                                      : QString("status %1").arg(WEXITSTATUS(status)));
    return result;
}

void say(int descriptor, const char* text)
{
    const QByteArray line = QByteArray(text) + '\n';
    QCOMPARE(write(descriptor, line.constData(), static_cast<size_t>(line.size())), ssize_t(line.size()));
}

} // namespace

class SignalRecorderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aRecordedSignalIsDeliveredAtTheEndOfTheScope_data()
    {
        QTest::addColumn<int>("number");
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGHUP") << SIGHUP;
        QTest::newRow("SIGQUIT") << SIGQUIT;
        QTest::newRow("SIGUSR1") << SIGUSR1;
        QTest::newRow("SIGUSR2") << SIGUSR2;
        QTest::newRow("SIGALRM") << SIGALRM;
        QTest::newRow("SIGXCPU") << SIGXCPU;
        QTest::newRow("SIGIO") << SIGIO;
        QTest::newRow("SIGABRT") << SIGABRT;
        QTest::newRow("SIGSEGV, sent") << SIGSEGV;
        QTest::newRow("SIGRTMIN") << SIGRTMIN;
    }

    void aRecordedSignalIsDeliveredAtTheEndOfTheScope()
    {
        QFETCH(int, number);
        QCOMPARE(inChild([number](int out) {
                     {
                         SignalRecorder recorder;
                         kill(getpid(), number);
                         say(out, "still here");
                     }
                     say(out, "not any more");
                 }),
                 QStringList({"still here", QString("signal %1").arg(number)}));
    }

    void aSignalForAProgramErrorEndsTheProcessAtOnce()
    {
        QCOMPARE(inChild([](int out) {
                     SignalRecorder recorder;
                     say(out, "here");
                     int* volatile nowhere = nullptr;
                     *nowhere = 1;
                     say(out, "not any more");
                 }),
                 QStringList({"here", QString("signal %1").arg(SIGSEGV)}));
        QCOMPARE(inChild([](int out) {
                     SignalRecorder recorder;
                     say(out, "here");
                     std::abort();
                 }),
                 QStringList({"here", QString("signal %1").arg(SIGABRT)}));
    }

    void onlyTheFirstOfSeveralRecordedSignalsIsDelivered()
    {
        QCOMPARE(inChild([](int out) {
                     SignalRecorder recorder;
                     kill(getpid(), SIGHUP);
                     kill(getpid(), SIGTERM);
                     kill(getpid(), SIGINT);
                     say(out, "still here");
                     recorder.~SignalRecorder();
                 }),
                 QStringList({"still here", QString("signal %1").arg(SIGHUP)}));
    }

    void theRecorderRestoresTheFormerSignalHandlersIfNoSignalArrives()
    {
        QCOMPARE(inChild([](int out) {
                     for (int i = 0; i < 2; ++i) {
                         SignalRecorder recorder;
                     }
                     say(out, "after");
                     kill(getpid(), SIGTERM);
                     say(out, "not any more");
                 }),
                 QStringList({"after", QString("signal %1").arg(SIGTERM)}));
    }

    void theRecorderDoesNotRecordSignalsThatTheProgramIgnores()
    {
        QCOMPARE(inChild([](int out) {
                     std::signal(SIGHUP, SIG_IGN);
                     {
                         SignalRecorder recorder;
                         kill(getpid(), SIGHUP);
                     }
                     kill(getpid(), SIGHUP);
                     say(out, "after");
                 }),
                 QStringList({"after", "status 0"}));
    }

    void programsThatAreStartedInTheScopeHandleSignalsAsUsual()
    {
        QCOMPARE(inChild([](int out) {
                     SignalRecorder recorder;
                     const pid_t program = fork();
                     if (program == 0) {
                         execl("/bin/sh", "sh", "-c", "kill -TERM $$; exit 3", nullptr);
                         _exit(4);
                     }
                     int status = 0;
                     waitpid(program, &status, 0);
                     say(out, WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM ? "ended" : "went on");
                 }),
                 QStringList({"ended", "status 0"}));
    }

    void readingContinuesAfterARecordedSignal()
    {
        QCOMPARE(inChild([](int out) {
                     int ends[2];
                     if (pipe(ends) != 0) {
                         _exit(5);
                     }
                     const pid_t reader = fork();
                     if (reader == 0) {
                         SignalRecorder recorder;
                         say(out, "ready");
                         char letter = 0;
                         say(out, read(ends[0], &letter, 1) == 1 ? "read" : "cut off");
                         recorder.~SignalRecorder();
                         _exit(0);
                     }
                     usleep(200000);
                     kill(reader, SIGINT);
                     usleep(50000);
                     if (write(ends[1], "x", 1) != 1) {
                         _exit(6);
                     }
                     int status = 0;
                     waitpid(reader, &status, 0);
                     say(out, WIFSIGNALED(status) && WTERMSIG(status) == SIGINT ? "ended" : "went on");
                 }),
                 QStringList({"ready", "read", "ended", "status 0"}));
    }
};

QTEST_GUILESS_MAIN(SignalRecorderTest)
#include "SignalRecorderTest.moc"
