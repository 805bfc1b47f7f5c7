#include "services/Progress.h"

#include <functional>
#include <limits>
#include <memory>

#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QPointer>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QVBoxLayout>

#include "services/HProgressBar.h"
#include "widgets/GeneralTip.h"

namespace {

// The throttle lets a report through when more than this many milliseconds have passed.
const int interval = 9;

void waitForInterval()
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() <= interval + 1) {
        QThread::yieldCurrentThread();
    }
}

Progress::ThreadsState downloads(const QVariant& argument)
{
    return *static_cast<const Progress::ThreadsState*>(argument.constData());
}

GeneralTip* currentTip()
{
    for (QWidget* widget : QApplication::allWidgets()) {
        GeneralTip* tip = qobject_cast<GeneralTip*>(widget);
        if (tip != nullptr && tip->isVisible()) {
            return tip;
        }
    }
    return nullptr;
}

QLabel* cell(const GeneralTip* tip, int row, int column)
{
    const QGridLayout* grid = qobject_cast<QGridLayout*>(tip->layout());
    QLayoutItem* item = grid->itemAtPosition(row, column);
    return item != nullptr ? qobject_cast<QLabel*>(item->widget()) : nullptr;
}

// The rows of the tip, each as "name: state".
QStringList tipRows()
{
    QStringList rows;
    const GeneralTip* tip = currentTip();
    for (int row = 0; tip != nullptr && cell(tip, row, 0) != nullptr; ++row) {
        rows.append(cell(tip, row, 0)->text() + ": " + cell(tip, row, 1)->text());
    }
    return rows;
}

} // namespace

class ProgressTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void typesAreRegisteredUnderTheirNames();
    void threadsStateIsAValue();
    void constructionAndDestructionLeaveTheBarsIdle();
    void startTotalEnablesTheTotalBarOnly();
    void startItemCoversTheNextStretch();
    void changeItemActivityChangesTheTextOnly();
    void changeTotalPullsTheValueDownToTheOldMaximum();
    void changeTotalKeepsASmallerValue();
    void actsShareTheStretchWithoutRoundingErrors();
    void itemMayCoverSeveralActs();
    void actBeyondTheLastCoversOnlyUpToTheLast();
    void noActsAtAllTakeTheWholeStretch();
    void endItemActsGoesToTheEndOfAllActs();
    void changeItemActsMovesToTheNewShare();
    void changeItemActsToZeroGoesToTheEndOfTheActs();
    void changeItemActStepsSetsValueAndMaximum();
    void twoArgumentFormOfChangeItemActStepsIsNeverSent();
    void itemMaximumOfZeroFillsTheStretch();
    void itemValueIsClamped();
    void bytesBeyondTheRangeOfABarAreScaled();
    void largestMaximumOfABarIsExact();
    void secondItemValueWithinTheIntervalIsKeptButNotSent();
    void finalItemValueIsNotForcedThrough();
    void itemValueSoonAfterAChangeOfTheStepsIsNotSent();
    void itemValueBeforeAnyStartIsNotSent();
    void totalValueWithinTheIntervalIsDropped();
    void totalMaximumIsSentOnceWithinTheInterval();
    void totalAndItemValueShareTheInterval();
    void downloadsAddUpToTheItemValue();
    void downloadsReserveAllActsButTheLast();
    void onlyDownloadNamesTheActivity();
    void retryTakesTheContributionOff();
    void retryOfAClampedSumStaysAtZero();
    void indexBeyondTheDownloadsIsIgnored();
    void resetForgetsTheDownloads();
    void displayStaysAliveDuringASynchronousOperation();
    void workerReportsAreDeliveredInOrder();
    void reportsOfManyDownloadsDoNotPileUp();
    void userFillsAndEmptiesTheSlot();

    void hoveringShowsNothingWithoutDownloads();
    void hoveringShowsTheDownloads();
    void tipShowsEveryState();
    void tipNamesAreNoMarkup();
    void twentyCompleteDownloadsAreListed();
    void twentyOneCompleteDownloadsAreOneRow();
    void labelsHaveTheirColours();
    void tipGoesWithTheOperation();

private:
    void setState(Progress::Object& progress, unsigned int index, quint32 state);
    void hover();

    std::unique_ptr<QWidget> window;
    HProgressBar* total = nullptr;
    HProgressBar* item = nullptr;
};

void ProgressTest::init()
{
    window = std::make_unique<QWidget>();
    QVBoxLayout* layout = new QVBoxLayout(window.get());
    total = new HProgressBar(window.get());
    item = new HProgressBar(window.get());
    layout->addWidget(total);
    layout->addWidget(item);
    window->resize(400, 100);
    window->show();
    QVERIFY(QTest::qWaitForWindowActive(window.get(), 30000));
}

void ProgressTest::cleanup()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    window.reset();
    delete currentTip();
}

void ProgressTest::typesAreRegisteredUnderTheirNames()
{
    Progress::Object progress(total, item);
    QCOMPARE(QMetaType::type("Steps"), static_cast<int>(QMetaType::ULongLong));
    QVERIFY(QMetaType::type("ThreadsState") != QMetaType::UnknownType);
    QCOMPARE(sizeof(Steps), static_cast<size_t>(8));
}

void ProgressTest::threadsStateIsAValue()
{
    const Progress::ThreadState fresh;
    QVERIFY(fresh.name.isEmpty());

    Progress::ThreadsState none;
    QCOMPARE(none.count(), 0u);

    Progress::ThreadsState three(3);
    QCOMPARE(three.count(), 3u);
    for (quint32 i = 0; i < 3; ++i) {
        QCOMPARE(three[i].name, QString());
        QCOMPARE(three[i].value, Q_UINT64_C(0));
        QCOMPARE(three[i].max, Q_UINT64_C(1));
        QCOMPARE(three[i].state, 0u);
    }
    three[1].name = "one";
    three[1].value = 17;

    Progress::ThreadsState copy(three);
    three[1].name = "changed";
    QCOMPARE(copy.count(), 3u);
    QCOMPARE(copy[1].name, QString("one"));
    QCOMPARE(copy[1].value, Q_UINT64_C(17));

    Progress::ThreadsState assigned(7);
    assigned = copy;
    copy[1].value = 18;
    QCOMPARE(assigned.count(), 3u);
    QCOMPARE(assigned[1].value, Q_UINT64_C(17));
    const Progress::ThreadsState& self = assigned;
    assigned = self;
    QCOMPARE(assigned.count(), 3u);
    QCOMPARE(assigned[1].name, QString("one"));
    assigned = none;
    QCOMPARE(assigned.count(), 0u);
    const Progress::ThreadsState emptyCopy(assigned);
    QCOMPARE(emptyCopy.count(), 0u);
}

void ProgressTest::constructionAndDestructionLeaveTheBarsIdle()
{
    const auto idle = [](HProgressBar* bar) {
        return bar->minimum() == 0 && bar->maximum() == 1 && bar->value() == -1 && bar->text().isEmpty() &&
               !bar->isEnabled();
    };
    total->setRange(5, 50);
    item->setActivity("left over");
    {
        Progress::Object progress(total, item);
        QVERIFY(idle(total));
        QVERIFY(idle(item));
        progress.startTotal("Collecting", 100);
        progress.startItem("Reading", 50, 10);
        QVERIFY(!idle(total));
        QVERIFY(!idle(item));
    }
    QVERIFY(idle(total));
    QVERIFY(idle(item));
}

void ProgressTest::startTotalEnablesTheTotalBarOnly()
{
    Progress::Object progress(total, item);
    QSignalSpy spy(&progress, SIGNAL(startTotalSig(QString, Steps)));
    progress.startItem("old item", 1, 1);
    progress.startTotal("Collecting", 100);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(total->text(), QString("Collecting (0%)"));
    QCOMPARE(total->maximum(), 100);
    QVERIFY(total->isEnabled());
    QCOMPARE(item->text(), QString());
    QVERIFY(!item->isEnabled());
}

void ProgressTest::startItemCoversTheNextStretch()
{
    Progress::Object progress(total, item);
    progress.startTotal("Collecting", 100);
    progress.startItem("first", 30, 7);
    QCOMPARE(total->value(), 0);
    QCOMPARE(item->text(), QString("first (0%)"));
    QCOMPARE(item->maximum(), 7);
    QVERIFY(item->isEnabled());
    progress.startItem("second", 20, 8);
    QCOMPARE(total->value(), 30);
    QCOMPARE(item->maximum(), 8);
    QCOMPARE(item->value(), 0);
    progress.startItem("third", 20, 8);
    QCOMPARE(total->value(), 50);
}

void ProgressTest::changeItemActivityChangesTheTextOnly()
{
    Progress::Object progress(total, item);
    progress.startTotal("Collecting", 100);
    progress.startItem("first", 30, 10);
    progress.changeItemActSteps(5, 10);
    progress.changeItemActivity("renamed");
    QCOMPARE(item->text(), QString("renamed (50%)"));
    QCOMPARE(total->value(), 15);
}

void ProgressTest::changeTotalPullsTheValueDownToTheOldMaximum()
{
    Progress::Object progress(total, item);
    QSignalSpy spy(&progress, SIGNAL(changeTotalSig(Steps, Steps)));
    progress.startTotal("Collecting", 100);
    progress.startItem("beyond the end", 150, 1);
    progress.startItem("next", 10, 1);
    progress.changeTotal(50);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toULongLong(), Q_UINT64_C(100));
    QCOMPARE(spy.at(0).at(1).toULongLong(), Q_UINT64_C(50));
    QCOMPARE(total->maximum(), 50);
}

void ProgressTest::changeTotalKeepsASmallerValue()
{
    Progress::Object progress(total, item);
    progress.startTotal("Collecting", 100);
    progress.startItem("first", 40, 1);
    progress.startItem("second", 40, 1);
    progress.changeTotal(200);
    QCOMPARE(total->maximum(), 200);
    QCOMPARE(total->value(), 40);
}

void ProgressTest::actsShareTheStretchWithoutRoundingErrors()
{
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 1000);
    progress.startItem("before", 17, 1);
    progress.setupItemActs(100, 7);
    QCOMPARE(total->value(), 0);
    for (Steps act = 1; act <= 7; ++act) {
        progress.startItemAct("act", 10, act);
        QCOMPARE(total->value(), static_cast<int>(17 + (act - 1) * 100 / 7));
    }
    progress.endItemActs();
    QCOMPARE(total->value(), 117);
    progress.startItem("after", 10, 1);
    QCOMPARE(total->value(), 117);
}

void ProgressTest::itemMayCoverSeveralActs()
{
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 100);
    progress.setupItemActs(100, 10);
    progress.startItemAct("first three", 4, 3);
    QCOMPARE(total->value(), 0);
    progress.changeItemActSteps(2, 4);
    QCOMPARE(total->value(), 15);
    progress.startItemAct("next four", 4, 7);
    QCOMPARE(total->value(), 30);
    progress.changeItemActSteps(4, 4);
    QCOMPARE(total->value(), 70);
}

void ProgressTest::bytesBeyondTheRangeOfABarAreScaled()
{
    const Steps gigabyte = Q_UINT64_C(1) << 30;
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 6 * gigabyte);
    QCOMPARE(total->maximum(), 3 << 29);
    progress.setTotalValue(6 * gigabyte);
    QCOMPARE(total->text(), QString("Applying (100%)"));

    progress.startItem("Downloading", 1000, 8 * gigabyte);
    QCOMPARE(item->maximum(), 1 << 30);
    waitForInterval();
    progress.setItemValue(2 * gigabyte);
    QCOMPARE(item->value(), 1 << 28);
    QCOMPARE(item->text(), QString("Downloading (25%)"));
    // Each bar has a scale of its own.
    progress.changeItemActSteps(3 * gigabyte, 4 * gigabyte);
    QCOMPARE(item->maximum(), 1 << 30);
    QCOMPARE(item->value(), 3 << 28);
    QCOMPARE(item->text(), QString("Downloading (75%)"));
    QCOMPARE(total->maximum(), 3 << 29);
    QCOMPARE(total->value(), 750 >> 2);

    // And it goes with the maximum that wanted it.
    progress.changeTotal(1500);
    QCOMPARE(total->maximum(), 1500);
    QCOMPARE(total->value(), 750);
    progress.startItem("small", 10, 20);
    waitForInterval();
    progress.setItemValue(7);
    QCOMPARE(item->maximum(), 20);
    QCOMPARE(item->value(), 7);
}

void ProgressTest::largestMaximumOfABarIsExact()
{
    const Steps largest = std::numeric_limits<int>::max();
    Progress::Object progress(total, item);
    progress.startTotal("Applying", largest);
    QCOMPARE(total->maximum(), int(largest));
    progress.startItem("one more", 1, largest + 1);
    QCOMPARE(item->maximum(), 1 << 30);
    waitForInterval();
    progress.setItemValue(largest + 1);
    QCOMPARE(item->value(), 1 << 30);
    progress.startItem("all bits", 1, std::numeric_limits<Steps>::max());
    QCOMPARE(item->maximum(), int(largest));
    progress.reset();
    progress.startItem("after", 1, largest);
    QCOMPARE(item->maximum(), int(largest));
}

void ProgressTest::actBeyondTheLastCoversOnlyUpToTheLast()
{
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 1000);
    progress.setupItemActs(100, 4);
    progress.startItemAct("one", 1, 1);
    progress.startItemAct("far", 10, 99);
    QCOMPARE(total->value(), 25);
    progress.changeItemActSteps(10, 10);
    QCOMPARE(total->value(), 100);
    progress.startItemAct("nothing left", 10, 100);
    progress.changeItemActSteps(10, 10);
    QCOMPARE(total->value(), 100);
}

void ProgressTest::noActsAtAllTakeTheWholeStretch()
{
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 1000);
    progress.setupItemActs(100, 0);
    progress.startItemAct("nothing", 10, 1);
    QCOMPARE(total->value(), 0);
    progress.endItemActs();
    QCOMPARE(total->value(), 100);
}

void ProgressTest::endItemActsGoesToTheEndOfAllActs()
{
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 1000);
    progress.startItem("before", 50, 1);
    progress.setupItemActs(100, 4);
    progress.startItemAct("one", 10, 1);
    progress.endItemActs();
    QCOMPARE(total->value(), 150);
    // The item covers nothing any more.
    progress.changeItemActSteps(10, 10);
    QCOMPARE(total->value(), 150);
}

void ProgressTest::changeItemActsMovesToTheNewShare()
{
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 1000);
    progress.startItem("before", 50, 1);
    progress.setupItemActs(100, 4);
    progress.startItemAct("one", 10, 1);
    progress.startItemAct("two", 10, 2);
    progress.changeItemActs(8);
    QCOMPARE(total->value(), 75);
    progress.startItemAct("three", 10, 3);
    QCOMPARE(total->value(), 75);
    progress.changeItemActSteps(10, 10);
    QCOMPARE(total->value(), 87);
}

void ProgressTest::changeItemActsToZeroGoesToTheEndOfTheActs()
{
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 1000);
    progress.startItem("before", 50, 1);
    progress.setupItemActs(100, 4);
    progress.startItemAct("one", 10, 1);
    progress.changeItemActs(0);
    QCOMPARE(total->value(), 150);
    progress.startItem("after", 10, 1);
    QCOMPARE(total->value(), 150);
}

void ProgressTest::changeItemActStepsSetsValueAndMaximum()
{
    Progress::Object progress(total, item);
    progress.startTotal("Reading", 100);
    progress.startItem("metadata", 40, 1);
    progress.changeItemActSteps(3, 12);
    QCOMPARE(item->maximum(), 12);
    QCOMPARE(item->value(), 3);
    QCOMPARE(total->value(), 10);
    progress.changeItemActSteps(30, 12);
    QCOMPARE(item->value(), 12);
    QCOMPARE(total->value(), 40);
}

void ProgressTest::twoArgumentFormOfChangeItemActStepsIsNeverSent()
{
    Progress::Object progress(total, item);
    QSignalSpy two(&progress, SIGNAL(changeItemActStepsSig(Steps, Steps)));
    QSignalSpy three(&progress, SIGNAL(changeItemActStepsSig(Steps, Steps, Steps)));
    progress.startItem("item", 10, 10);
    progress.changeItemActSteps(1, 2);
    QCOMPARE(two.count(), 0);
    QCOMPARE(three.count(), 1);
}

void ProgressTest::itemMaximumOfZeroFillsTheStretch()
{
    Progress::Object progress(total, item);
    progress.startTotal("Reading", 100);
    progress.startItem("nothing to count", 40, 0);
    waitForInterval();
    progress.setItemValue(0);
    QCOMPARE(total->value(), 40);
    progress.startItem("next", 40, 5);
    progress.changeItemActSteps(0, 0);
    QCOMPARE(total->value(), 80);
}

void ProgressTest::itemValueIsClamped()
{
    Progress::Object progress(total, item);
    progress.startTotal("Reading", 100);
    progress.startItem("item", 40, 10);
    waitForInterval();
    progress.setItemValue(11);
    QCOMPARE(item->value(), 10);
    QCOMPARE(total->value(), 40);
}

void ProgressTest::secondItemValueWithinTheIntervalIsKeptButNotSent()
{
    Progress::Object progress(total, item);
    QSignalSpy spy(&progress, SIGNAL(setItemValueSig(Steps, Steps)));
    progress.startTotal("Reading", 100);
    progress.startItem("item", 40, 100);
    QElapsedTimer timer;
    do {
        // Again when something else had the processor for longer than the interval.
        waitForInterval();
        timer.start();
        spy.clear();
        progress.setItemValue(10);
        QCOMPARE(spy.count(), 1);
        progress.setItemValue(50);
    } while (timer.elapsed() > interval);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(item->value(), 10);

    // The value was kept, and with it the place on the total bar.
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

void ProgressTest::finalItemValueIsNotForcedThrough()
{
    Progress::Object progress(total, item);
    QSignalSpy spy(&progress, SIGNAL(setItemValueSig(Steps, Steps)));
    QElapsedTimer timer;
    do {
        spy.clear();
        timer.start();
        progress.startTotal("Reading", 100);
        progress.startItem("item", 40, 10);
        progress.setItemValue(10);
    } while (timer.elapsed() > interval);
    QCOMPARE(spy.count(), 0);
    QCOMPARE(item->value(), 0);
    progress.startItem("next", 10, 10);
    QCOMPARE(item->value(), 0);
}

void ProgressTest::itemValueSoonAfterAChangeOfTheStepsIsNotSent()
{
    Progress::Object progress(total, item);
    QSignalSpy spy(&progress, SIGNAL(setItemValueSig(Steps, Steps)));
    progress.startTotal("Reading", 100);
    progress.startItem("item", 40, 10);
    QElapsedTimer timer;
    do {
        waitForInterval();
        spy.clear();
        timer.start();
        progress.changeItemActSteps(0, 10);
        progress.setItemValue(5);
    } while (timer.elapsed() > interval);
    QCOMPARE(spy.count(), 0);
    waitForInterval();
    progress.setItemValue(6);
    QCOMPARE(spy.count(), 1);
}

void ProgressTest::itemValueBeforeAnyStartIsNotSent()
{
    Progress::Object progress(total, item);
    QSignalSpy itemSpy(&progress, SIGNAL(setItemValueSig(Steps, Steps)));
    waitForInterval();
    progress.setItemValue(1);
    QCOMPARE(itemSpy.count(), 0);
}

void ProgressTest::totalValueWithinTheIntervalIsDropped()
{
    Progress::Object progress(total, item);
    QSignalSpy spy(&progress, SIGNAL(setTotalValueSig(Steps)));
    progress.startTotal("Reading", 100);
    progress.startItem("item", 40, 10);
    QElapsedTimer timer;
    do {
        waitForInterval();
        spy.clear();
        timer.start();
        progress.setTotalValue(20);
        progress.setTotalValue(30);
    } while (timer.elapsed() > interval);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(total->value(), 20);
    // The dropped value was not stored either.
    progress.changeTotal(200);
    QCOMPARE(total->value(), 20);
    waitForInterval();
    progress.setTotalValue(30);
    QCOMPARE(total->value(), 30);
}

void ProgressTest::totalMaximumIsSentOnceWithinTheInterval()
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

void ProgressTest::totalAndItemValueShareTheInterval()
{
    Progress::Object progress(total, item);
    QSignalSpy totalSpy(&progress, SIGNAL(setTotalValueSig(Steps)));
    QSignalSpy itemSpy(&progress, SIGNAL(setItemValueSig(Steps, Steps)));
    progress.startTotal("Reading", 100);
    progress.startItem("item", 40, 10);
    QElapsedTimer timer;
    do {
        waitForInterval();
        totalSpy.clear();
        itemSpy.clear();
        timer.start();
        progress.setItemValue(5);
        progress.setTotalValue(30);
    } while (timer.elapsed() > interval);
    QCOMPARE(itemSpy.count(), 1);
    QCOMPARE(totalSpy.count(), 0);
}

void ProgressTest::downloadsAddUpToTheItemValue()
{
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 1000);
    progress.setupItemActs(100, 1000);
    progress.setupItemActsThreads("Downloading 2 packages", 0, 1001, 2, 1000);
    QCOMPARE(item->text(), QString("Downloading 2 packages (0%)"));
    QCOMPARE(item->maximum(), 1000);
    progress.startItemActThread("one", 0, 600);
    progress.startItemActThread("two", 1, 400);
    QCOMPARE(item->text(), QString("Downloading 2 packages (0%)"));
    progress.setItemActsThreadValue(0, 100);
    progress.setItemActsThreadValue(1, 50);
    waitForInterval();
    progress.setItemActsThreadValue(0, 300);
    QCOMPARE(item->value(), 350);
    QCOMPARE(total->value(), 35);
    waitForInterval();
    progress.setItemActsThreadValue(1, 20);
    QCOMPARE(item->value(), 320);
}

void ProgressTest::downloadsReserveAllActsButTheLast()
{
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 1000);
    progress.setupItemActs(100, 10);
    progress.startItemAct("one", 1, 2);
    progress.setupItemActsThreads("Downloading", 2, 8, 3, 10);
    QCOMPARE(total->value(), 20);
    progress.changeItemActSteps(10, 10);
    QCOMPARE(total->value(), 70);
    progress.startItemAct("next", 1, 8);
    QCOMPARE(total->value(), 70);
    progress.changeItemActSteps(1, 1);
    QCOMPARE(total->value(), 80);
}

void ProgressTest::onlyDownloadNamesTheActivity()
{
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 1000);
    progress.setupItemActs(100, 10);
    progress.setupItemActsThreads("Downloading 1 packages", 0, 11, 1, 10);
    progress.startItemActThread("Downloading vim", 0, 10);
    QCOMPARE(item->text(), QString("Downloading vim (0%)"));
}

void ProgressTest::retryTakesTheContributionOff()
{
    Progress::Object progress(total, item);
    QSignalSpy spy(&progress, SIGNAL(updateThreadsStateSig(const ThreadsState&)));
    progress.startTotal("Applying", 1000);
    progress.setupItemActs(100, 1000);
    progress.setupItemActsThreads("Downloading", 0, 1001, 2, 1000);
    progress.startItemActThread("one", 0, 600);
    progress.startItemActThread("two", 1, 400);
    progress.setItemActsThreadValue(0, 500);
    progress.setItemActsThreadValue(1, 100);
    waitForInterval();
    progress.retryItemActThread(0);
    QCOMPARE(item->value(), 100);
    const Progress::ThreadsState state = downloads(spy.last().at(0));
    QCOMPARE(state[0].state, 1u);
    QCOMPARE(state[0].value, Q_UINT64_C(0));
    QCOMPARE(state[1].state, 2u);
    QCOMPARE(state[1].value, Q_UINT64_C(100));
    // Started again, it counts from nothing.
    progress.startItemActThread("one", 0, 600);
    waitForInterval();
    progress.setItemActsThreadValue(0, 10);
    QCOMPARE(item->value(), 110);
}

void ProgressTest::retryOfAClampedSumStaysAtZero()
{
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 1000);
    progress.setupItemActs(100, 100);
    progress.setupItemActsThreads("Downloading", 0, 101, 2, 100);
    progress.startItemActThread("one", 0, 80);
    progress.startItemActThread("two", 1, 80);
    progress.setItemActsThreadValue(0, 80);
    progress.setItemActsThreadValue(1, 80);
    progress.retryItemActThread(0);
    waitForInterval();
    progress.retryItemActThread(1);
    QCOMPARE(item->value(), 0);
}

void ProgressTest::indexBeyondTheDownloadsIsIgnored()
{
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 1000);
    progress.setupItemActs(100, 100);
    progress.setupItemActsThreads("Downloading", 0, 101, 2, 100);
    progress.endItemActsThreads();
    QSignalSpy spy(&progress, SIGNAL(updateThreadsStateSig(const ThreadsState&)));
    progress.startItemActThread("late", 0, 80);
    progress.setItemActsThreadValue(1, 80);
    progress.endItemActThread(0);
    progress.retryItemActThread(1);
    QCOMPARE(spy.count(), 0);
}

void ProgressTest::resetForgetsTheDownloads()
{
    Progress::Object progress(total, item);
    progress.setupItemActsThreads("Downloading", 0, 1, 3, 100);
    QSignalSpy spy(&progress, SIGNAL(updateThreadsStateSig(const ThreadsState&)));
    progress.reset();
    QCOMPARE(spy.count(), 1);
    QCOMPARE(downloads(spy.at(0).at(0)).count(), 0u);
    QVERIFY(!total->isEnabled());
    QVERIFY(!item->isEnabled());
    // The next operation starts at the beginning.
    progress.startTotal("Again", 10);
    progress.startItem("first", 5, 1);
    QCOMPARE(total->value(), 0);
}

void ProgressTest::displayStaysAliveDuringASynchronousOperation()
{
    Progress::Object progress(total, item);
    bool processed = false;
    progress.startTotal("Reading", 100);
    QMetaObject::invokeMethod(
        this, [&] { processed = true; }, Qt::QueuedConnection);
    waitForInterval();
    progress.changeItemActivity("still reading");
    QVERIFY(processed);

    // At most once in an interval.
    QElapsedTimer timer;
    do {
        waitForInterval();
        progress.changeItemActivity("again");
        timer.start();
        processed = false;
        QMetaObject::invokeMethod(
            this, [&] { processed = true; }, Qt::QueuedConnection);
        progress.changeItemActivity("at once");
    } while (timer.elapsed() > interval);
    QVERIFY(!processed);
    QCoreApplication::processEvents();
    QVERIFY(processed);
}

void ProgressTest::workerReportsAreDeliveredInOrder()
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

void ProgressTest::reportsOfManyDownloadsDoNotPileUp()
{
    const unsigned int count = 3000;
    int reports = 0;
    Progress::Object* progress = nullptr;
    QSemaphore done;
    QSemaphore goOn;
    std::unique_ptr<QThread> worker(QThread::create([&] {
        progress = new Progress::Object(total, item);
        connect(
            progress, &Progress::Object::updateThreadsStateSig, progress, [&reports] { ++reports; },
            Qt::DirectConnection);
        progress->startTotal("Applying", 100);
        progress->setupItemActs(100, count);
        progress->setupItemActsThreads("Downloading", 0, count, count, 10 * count);
        for (unsigned int i = 0; i < count; ++i) {
            progress->startItemActThread(QString::number(i), i, 10);
            progress->setItemActsThreadValue(i, 10);
            if (i > 0) {
                progress->endItemActThread(i);
            }
        }
        done.release();
        goOn.acquire();
        delete progress;
    }));
    worker->start();
    // This thread serves nothing meanwhile.
    done.acquire();
    QVERIFY2(reports <= 1, qPrintable(QString::number(reports)));
    // It gets the last state all the same, although nothing follows.
    QCoreApplication::processEvents();
    Q_EMIT item->toolTip(QPoint(5, 5));
    QCOMPARE(tipRows(),
             QStringList({QStringLiteral("%1 downloads: Complete").arg(count - 1), "0: 10 / 10 (100.0%)"}));
    QTest::mouseClick(item, Qt::LeftButton);
    goOn.release();
    worker->wait();
    QCoreApplication::processEvents();
    Q_EMIT item->toolTip(QPoint(5, 5));
    QVERIFY(currentTip() == nullptr);
}

void ProgressTest::userFillsAndEmptiesTheSlot()
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

void ProgressTest::setState(Progress::Object& progress, unsigned int index, quint32 state)
{
    if (state != Progress::ThreadState::NotStarted) {
        progress.startItemActThread(QString("package-%1").arg(index), index, 20480);
    }
    if (state == Progress::ThreadState::Retrying) {
        progress.retryItemActThread(index);
    } else if (state == Progress::ThreadState::Complete) {
        progress.endItemActThread(index);
    }
}

void ProgressTest::hover()
{
    QTest::mouseMove(window.get(), QPoint(1, 1));
    QTest::mouseMove(item, item->rect().center());
}

void ProgressTest::hoveringShowsNothingWithoutDownloads()
{
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 100);
    progress.startItem("item", 10, 10);
    QSignalSpy spy(item, SIGNAL(toolTip(const QPoint&)));
    hover();
    QTRY_COMPARE(spy.count(), 1);
    QVERIFY(currentTip() == nullptr);
}

void ProgressTest::hoveringShowsTheDownloads()
{
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 100);
    progress.setupItemActs(100, 10);
    progress.setupItemActsThreads("Downloading", 0, 11, 2, 10);
    progress.startItemActThread("vim", 0, 1);
    // Like a user, tries again when the window manager's own doings have hidden the tip at once.
    for (int attempt = 0; attempt < 10 && currentTip() == nullptr; ++attempt) {
        hover();
        (void)QTest::qWaitFor([] { return currentTip() != nullptr; });
    }
    QCOMPARE(tipRows(), QStringList({"vim: In Progress", "1 downloads: Not Started Yet"}));
    // It goes away as soon as the user does something.
    QTest::mouseClick(item, Qt::LeftButton);
    QVERIFY(currentTip() == nullptr);
}

void ProgressTest::tipShowsEveryState()
{
    Progress::Object progress(total, item);
    progress.setupItemActs(100, 10);
    progress.setupItemActsThreads("Downloading", 0, 11, 7, 10);
    setState(progress, 1, Progress::ThreadState::Retrying);
    setState(progress, 2, Progress::ThreadState::InProgress);
    progress.setItemActsThreadValue(2, 6844);
    progress.startItemActThread("unknown size", 3, 1);
    setState(progress, 4, Progress::ThreadState::Complete);
    Q_EMIT item->toolTip(QPoint(5, 5));
    QCOMPARE(tipRows(), QStringList({"package-1: Retrying", "package-2: 6844 / 20480 (33.4%)",
                                     "unknown size: In Progress", "package-4: Complete",
                                     "3 downloads: Not Started Yet"}));
    QCOMPARE(qobject_cast<QGridLayout*>(currentTip()->layout())->contentsMargins(), QMargins(4, 4, 4, 4));
}

void ProgressTest::tipNamesAreNoMarkup()
{
    Progress::Object progress(total, item);
    progress.setupItemActsThreads("Downloading", 0, 1, 1, 10);
    progress.startItemActThread("<b>vim</b>", 0, 1);
    Q_EMIT item->toolTip(QPoint(5, 5));
    QCOMPARE(cell(currentTip(), 0, 0)->textFormat(), Qt::PlainText);
    QCOMPARE(cell(currentTip(), 0, 0)->text(), QString("<b>vim</b>"));
}

void ProgressTest::twentyCompleteDownloadsAreListed()
{
    Progress::Object progress(total, item);
    progress.setupItemActsThreads("Downloading", 0, 1, 20, 10);
    QStringList expected;
    for (unsigned int i = 0; i < 20; ++i) {
        setState(progress, i, Progress::ThreadState::Complete);
        expected.append(QString("package-%1: Complete").arg(i));
    }
    Q_EMIT item->toolTip(QPoint(5, 5));
    QCOMPARE(tipRows(), expected);
}

void ProgressTest::twentyOneCompleteDownloadsAreOneRow()
{
    Progress::Object progress(total, item);
    progress.setupItemActsThreads("Downloading", 0, 1, 23, 10);
    for (unsigned int i = 0; i < 21; ++i) {
        setState(progress, i, Progress::ThreadState::Complete);
    }
    setState(progress, 21, Progress::ThreadState::Retrying);
    Q_EMIT item->toolTip(QPoint(5, 5));
    QCOMPARE(tipRows(),
             QStringList({"21 downloads: Complete", "package-21: Retrying", "1 downloads: Not Started Yet"}));
}

void ProgressTest::labelsHaveTheirColours()
{
    Progress::Object progress(total, item);
    progress.setupItemActsThreads("Downloading", 0, 1, 4, 10);
    setState(progress, 0, Progress::ThreadState::Retrying);
    setState(progress, 1, Progress::ThreadState::InProgress);
    setState(progress, 2, Progress::ThreadState::Complete);
    Q_EMIT item->toolTip(QPoint(5, 5));
    const GeneralTip* tip = currentTip();
    const QColor colours[] = {QColor(255, 140, 0), QColor(255, 255, 0), QColor(144, 238, 144),
                              QColor(255, 140, 0)};
    const int styles[] = {QFrame::Box, QFrame::StyledPanel | QFrame::Plain, QFrame::Box,
                          QFrame::StyledPanel | QFrame::Plain};
    for (int row = 0; row < 4; ++row) {
        const QLabel* label = cell(tip, row, 1);
        QCOMPARE(label->palette().color(QPalette::Window), colours[row]);
        QCOMPARE(label->palette().color(QPalette::WindowText), QColor(Qt::black));
        QVERIFY(label->autoFillBackground());
        QCOMPARE(label->frameStyle(), styles[row]);
    }
}

void ProgressTest::tipGoesWithTheOperation()
{
    {
        Progress::Object progress(total, item);
        progress.setupItemActsThreads("Downloading", 0, 1, 4, 10);
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    Q_EMIT item->toolTip(QPoint(5, 5));
    QVERIFY(currentTip() == nullptr);
}

QTEST_MAIN(ProgressTest)
#include "ProgressTest.moc"
