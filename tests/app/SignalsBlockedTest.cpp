// SPDX-License-Identifier: GPL-2.0-or-later

#include <csignal>
#include <thread>

#include <QtTest>

#include "app/base/SignalsBlocked.h"

namespace {

bool isBlocked(int number)
{
    sigset_t blocked;
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    return sigismember(&blocked, number) == 1;
}

} // namespace

class SignalsBlockedTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void signalsAreBlockedUntilTheEndOfTheScope()
    {
        QVERIFY(!isBlocked(SIGTERM));
        {
            const SignalsBlocked signalsBlocked;
            QVERIFY(isBlocked(SIGTERM));
            QVERIFY(isBlocked(SIGCHLD));
        }
        QVERIFY(!isBlocked(SIGTERM));
        QVERIFY(!isBlocked(SIGCHLD));
    }

    void signalsThatWereBlockedBeforeRemainBlocked()
    {
        sigset_t user;
        sigset_t before;
        sigemptyset(&user);
        sigaddset(&user, SIGUSR1);
        pthread_sigmask(SIG_BLOCK, &user, &before);
        {
            const SignalsBlocked signalsBlocked;
        }
        const bool blocked = isBlocked(SIGUSR1);
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
        QVERIFY(blocked);
    }

    void aThreadOfTheScopeInheritsTheBlockedSignals()
    {
        bool blocked = false;
        std::thread thread;
        {
            const SignalsBlocked signalsBlocked;
            thread = std::thread([&blocked] { blocked = isBlocked(SIGTERM); });
        }
        thread.join();
        QVERIFY(blocked);
    }
};

QTEST_GUILESS_MAIN(SignalsBlockedTest)
#include "SignalsBlockedTest.moc"
