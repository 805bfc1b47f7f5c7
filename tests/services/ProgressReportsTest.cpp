// SPDX-License-Identifier: GPL-2.0-or-later

#include <QSignalSpy>
#include <QtTest>

#include <memory>

#include "tests/services/ShownBars.h"

// Tests of the reports that a worker sends: they arrive in order, and a worker sends at most one report in an
// interval.
class ProgressReportsTest : public ShownBars
{
    Q_OBJECT

private Q_SLOTS:
    void aSecondItemValueWithinTheIntervalIsStoredButNotSent();
    void theFinalItemValueIsNotSentIfItArrivesWithinTheInterval();
    void anItemValueWithinTheIntervalAfterChangeItemActStepsIsNotSent();
    void anItemValueIsNotSentIfNoItemHasStarted();
    void aTotalValueWithinTheIntervalIsDropped();
    void aTotalValueThatReachesTheMaximumIsSentOnlyOnceInAnInterval();
    void aTotalValueWithinTheIntervalAfterAnItemValueIsNotSent();
    void aChangeOfTheActivityProcessesPendingEvents();
    void reportsOfAWorkerAreDeliveredInOrder();
    void aProgressUserSetsTheGivenPointerAndItsDestructorClearsThePointer();
};

void ProgressReportsTest::aSecondItemValueWithinTheIntervalIsStoredButNotSent()
{
    Progress::Object progress(total, item);
    QSignalSpy spy(&progress, SIGNAL(setItemValueSig(Steps, Steps)));
    progress.startTotal("Reading", 100);
    progress.startItem("item", 40, 100);
    int first = 0;
    withinTheInterval([&] { waitForInterval(); },
                      [&] {
                          spy.clear();
                          progress.setItemValue(10);
                          first = spy.count();
                          progress.setItemValue(50);
                      });
    QCOMPARE(first, 1);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(item->value(), 10);

    // The second value is stored nevertheless: the total bar uses this value when the total changes.
    QCOMPARE(total->value(), 4);
    progress.changeTotal(100);
    QCOMPARE(total->value(), 20);

    waitForInterval();
    spy.clear();
    progress.setItemValue(60);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toULongLong(), Q_UINT64_C(24));
    QCOMPARE(spy.at(0).at(1).toULongLong(), Q_UINT64_C(60));
    QCOMPARE(item->value(), 60);
}

void ProgressReportsTest::theFinalItemValueIsNotSentIfItArrivesWithinTheInterval()
{
    Progress::Object progress(total, item);
    QSignalSpy spy(&progress, SIGNAL(setItemValueSig(Steps, Steps)));
    withinTheInterval([&] { spy.clear(); },
                      [&] {
                          progress.startTotal("Reading", 100);
                          progress.startItem("item", 40, 10);
                          progress.setItemValue(10);
                      });
    QCOMPARE(spy.count(), 0);
    QCOMPARE(item->value(), 0);
    progress.startItem("next", 10, 10);
    QCOMPARE(item->value(), 0);
}

void ProgressReportsTest::anItemValueWithinTheIntervalAfterChangeItemActStepsIsNotSent()
{
    Progress::Object progress(total, item);
    QSignalSpy spy(&progress, SIGNAL(setItemValueSig(Steps, Steps)));
    progress.startTotal("Reading", 100);
    progress.startItem("item", 40, 10);
    withinTheInterval(
        [&] {
            waitForInterval();
            spy.clear();
        },
        [&] {
            progress.changeItemActSteps(0, 10);
            progress.setItemValue(5);
        });
    QCOMPARE(spy.count(), 0);
    waitForInterval();
    progress.setItemValue(6);
    QCOMPARE(spy.count(), 1);
}

void ProgressReportsTest::anItemValueIsNotSentIfNoItemHasStarted()
{
    Progress::Object progress(total, item);
    QSignalSpy itemSpy(&progress, SIGNAL(setItemValueSig(Steps, Steps)));
    waitForInterval();
    progress.setItemValue(1);
    QCOMPARE(itemSpy.count(), 0);
}

void ProgressReportsTest::aTotalValueWithinTheIntervalIsDropped()
{
    Progress::Object progress(total, item);
    QSignalSpy spy(&progress, SIGNAL(setTotalValueSig(Steps)));
    progress.startTotal("Reading", 100);
    progress.startItem("item", 40, 10);
    withinTheInterval(
        [&] {
            waitForInterval();
            spy.clear();
        },
        [&] {
            progress.setTotalValue(20);
            progress.setTotalValue(30);
        });
    QCOMPARE(spy.count(), 1);
    QCOMPARE(total->value(), 20);
    // VYRE has not stored the dropped value.
    progress.changeTotal(200);
    QCOMPARE(total->value(), 20);
    waitForInterval();
    progress.setTotalValue(30);
    QCOMPARE(total->value(), 30);
}

void ProgressReportsTest::aTotalValueThatReachesTheMaximumIsSentOnlyOnceInAnInterval()
{
    QElapsedTimer timer;
    int first = 0;
    int both = 0;
    do {
        Progress::Object progress(total, item);
        QSignalSpy spy(&progress, SIGNAL(setTotalValueSig(Steps)));
        progress.startTotal("Reading", 100);
        progress.startItem("item", 40, 10);
        waitForInterval();
        timer.start();
        progress.setTotalValue(20);
        spy.clear();
        progress.setTotalValue(1000);
        first = spy.count();
        progress.setTotalValue(1000);
        both = spy.count();
    } while (timer.elapsed() > interval);
    QCOMPARE(first, 1);
    QCOMPARE(both, 1);

    Progress::Object progress(total, item);
    progress.startTotal("Reading", 100);
    progress.setTotalValue(1000);
    QCOMPARE(total->value(), 100);
}

void ProgressReportsTest::aTotalValueWithinTheIntervalAfterAnItemValueIsNotSent()
{
    Progress::Object progress(total, item);
    QSignalSpy totalSpy(&progress, SIGNAL(setTotalValueSig(Steps)));
    QSignalSpy itemSpy(&progress, SIGNAL(setItemValueSig(Steps, Steps)));
    progress.startTotal("Reading", 100);
    progress.startItem("item", 40, 10);
    withinTheInterval(
        [&] {
            waitForInterval();
            totalSpy.clear();
            itemSpy.clear();
        },
        [&] {
            progress.setItemValue(5);
            progress.setTotalValue(30);
        });
    QCOMPARE(itemSpy.count(), 1);
    QCOMPARE(totalSpy.count(), 0);
}

void ProgressReportsTest::aChangeOfTheActivityProcessesPendingEvents()
{
    Progress::Object progress(total, item);
    bool processed = false;
    progress.startTotal("Reading", 100);
    QMetaObject::invokeMethod(
        this, [&] { processed = true; }, Qt::QueuedConnection);
    waitForInterval();
    progress.changeItemActivity("still reading");
    QVERIFY(processed);

    // Events are processed at most once in an interval.
    withinTheInterval(
        [&] {
            waitForInterval();
            progress.changeItemActivity("again");
        },
        [&] {
            processed = false;
            QMetaObject::invokeMethod(
                this, [&] { processed = true; }, Qt::QueuedConnection);
            progress.changeItemActivity("at once");
        });
    QVERIFY(!processed);
    QCoreApplication::processEvents();
    QVERIFY(processed);
}

void ProgressReportsTest::reportsOfAWorkerAreDeliveredInOrder()
{
    QStringList activities;
    const auto record = [&] {
        if (activities.isEmpty() || activities.last() != item->text()) {
            activities.append(item->text());
        }
    };
    connect(item, &QProgressBar::valueChanged, this, record);
    QWidget* const painted = item;
    bool barTouchedByWorker = false;
    connect(
        item, &QProgressBar::valueChanged, painted,
        [&] { barTouchedByWorker = barTouchedByWorker || QThread::currentThread() != painted->thread(); },
        Qt::DirectConnection);

    Progress::Object* slot = nullptr;
    std::unique_ptr<QThread> worker(QThread::create([&] {
        Progress::User user(slot, total, item);
        slot->startTotal("Applying", 100);
        slot->startItem("first", 10, 4);
        slot->changeItemActSteps(1, 4);
        slot->setupItemActs(90, 2);
        slot->setupItemActsThreads("Downloading", 0, 2, 2, 10);
        slot->startItemActThread("one", 0, 10);
        slot->changeItemActSteps(5, 10);
        slot->endItemActs();
    }));
    QEventLoop loop;
    connect(worker.get(), SIGNAL(finished()), &loop, SLOT(quit()));
    worker->start();
    loop.exec();
    worker->wait();
    loop.processEvents();
    QVERIFY(!barTouchedByWorker);
    QVERIFY2(activities.contains("first (25%)"), qPrintable(activities.join('|')));
    QVERIFY2(activities.contains("Downloading (50%)"), qPrintable(activities.join('|')));
    QVERIFY(activities.indexOf("first (25%)") < activities.indexOf("Downloading (50%)"));
    QCOMPARE(item->text(), QString());
    QVERIFY(!item->isEnabled());
    QVERIFY(!total->isEnabled());
    disconnect(item, nullptr, this, nullptr);
}

void ProgressReportsTest::aProgressUserSetsTheGivenPointerAndItsDestructorClearsThePointer()
{
    Progress::Object* slot = nullptr;
    QPointer<Progress::Object> object;
    {
        Progress::User user(slot, total, item);
        QVERIFY(slot != nullptr);
        object = slot;
    }
    QVERIFY(slot == nullptr);
    QVERIFY(object.isNull());

    {
        Progress::User user(slot, total, item);
        delete slot;
        slot = nullptr;
    }
    QVERIFY(slot == nullptr);
}

QTEST_MAIN(ProgressReportsTest)
#include "ProgressReportsTest.moc"
