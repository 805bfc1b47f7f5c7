// SPDX-License-Identifier: GPL-2.0-or-later

#include <QTimer>
#include <QtTest>

#include "tests/yumio/ApplyFixture.h"

// Tests of the commands that clean the cache.
class YumIOCleanTest : public ApplyFixture
{
    Q_OBJECT

private Q_SLOTS:
    void cleaningTheCacheReportsItsResult_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<QString>("label");
        QTest::newRow("dbcache") << "cleanDbcache"
                                 << "dbcache";
        QTest::newRow("packages") << "cleanPackages"
                                  << "Packages";
        QTest::newRow("metadata") << "cleanMetadata"
                                  << "Metadata";
        QTest::newRow("all") << "cleanAll"
                             << "All";
    }

    void cleaningTheCacheReportsItsResult()
    {
        QFETCH(QString, method);
        QFETCH(QString, label);
        const auto clean = [this, method] {
            return method == "cleanDbcache"    ? yumIO().cleanDbcache()
                   : method == "cleanPackages" ? yumIO().cleanPackages()
                   : method == "cleanMetadata" ? yumIO().cleanMetadata()
                                               : yumIO().cleanAll();
        };
        const int before = logLength();
        QVERIFY(clean());
        QCOMPARE(backEnd->text("it.calls"), "[('" + method + "',)]");
        QCOMPARE(backEnd->log(before), QStringList("4 0 Cleaning " + label));
        backEnd->run("it.raises['" + method + "'] = OSError(13, 'Permission denied')");
        QVERIFY(!clean());
        QCOMPARE(errors(), QStringList({generic, "Internal error: cannot clean " + label}));
        // If the script's method returns None, it has succeeded.
        backEnd->run("it.raises.clear()\nit.does['" + method + "'] = lambda: None");
        QVERIFY(clean());
    }

    void theItemBarShowsWhyTheCleaningOfTheCacheWaits()
    {
        backEnd->run("import threading\nworkers = []\n"
                     "def clean():\n"
                     "    workers.append(threading.current_thread() is not threading.main_thread())\n"
                     "    seen.append(look())\n"
                     "    seen.append([waitForLock('Waiting for x'), look()[1]])\n"
                     "    seen.append([waitForLock(None), look()[1]])\n"
                     "    return True\n"
                     "seen = []\nit.does['cleanAll'] = clean");
        QVERIFY(yumIO().cleanAll());
        QCOMPARE(backEnd->text("workers"), QString("[True]"));
        QCOMPARE(backEnd->text("seen"),
                 QString("[['Cleaning All (0%) 0/1', 'Preparing (0%) 0/1'], "
                         "[True, 'Waiting for x 0/0'], [True, 'Preparing (0%) 0/1']]"));
        QCOMPARE(errors(), QStringList());
    }

    void theUserCanStopCleaningWhileItWaits()
    {
        QTimer timer;
        bool ended = false;
        connect(&timer, &QTimer::timeout, &timer, [&] {
            if (yumIO().stopState() == StopRequest::State::Possible) {
                ended = yumIO().stop();
            }
        });
        timer.start(10);
        backEnd->run("import time\n"
                     "def clean():\n"
                     "    while waitForLock('Waiting for x'):\n        time.sleep(0.01)\n"
                     "    waitForLock(None)\n"
                     "    raise dnf.exceptions.LockError('The wait was ended')\n"
                     "it.does['cleanAll'] = clean");
        const int before = logLength();
        QVERIFY(!yumIO().cleanAll());
        QVERIFY(ended);
        QVERIFY(yumIO().wasStopped());
        QCOMPARE(backEnd->answers.take().count(), 0);
        QCOMPARE(backEnd->log(before),
                 QStringList({"4 0 Cleaning All", "0 3 The wait was ended", "4 0 Stopped."}));
    }

    void cleaningReportsThatAnotherProcessHoldsTheLock()
    {
        backEnd->run("it.raises['cleanAll'] = dnf.exceptions.LockError('RPMDB already locked by 17')");
        QVERIFY(!yumIO().cleanAll());
        const auto shown = backEnd->answers.take();
        QCOMPARE(shown.count(), 1);
        QCOMPARE(shown[0].text, QString("RPMDB already locked by 17\nUnable to obtain yum lock"));
    }
};

QTEST_MAIN(YumIOCleanTest)
#include "YumIOCleanTest.moc"
