// SPDX-License-Identifier: GPL-2.0-or-later

#include <QSignalSpy>
#include <QtTest>

#include "tests/services/ShownBars.h"

// Tests of the total bar and the item bar. A part of the total belongs to one item, or is divided into acts.
// Each item of a divided part covers some of the acts.
class ProgressStepsTest : public ShownBars
{
    Q_OBJECT

private Q_SLOTS:
    void theArgumentTypesOfTheSignalsAreRegisteredUnderTheirNames();
    void aCopyOfTheDownloadStatesIsIndependentOfTheOriginal();
    void theBarsAreIdleBeforeAndAfterTheLifeOfAProgressObject();
    void startingTheTotalEnablesOnlyTheTotalBar();
    void eachItemUsesTheNextPartOfTheTotalBar();
    void aNewActivityOfAnItemChangesOnlyTheText();
    void aTotalValueAboveTheOldMaximumIsReducedIfTheMaximumChanges();
    void aTotalValueBelowTheOldMaximumIsKeptIfTheMaximumChanges();
    void allActsTogetherFillTheirPartOfTheTotalBar();
    void oneItemCanCoverSeveralActs();
    void anItemWithTooManyActsFillsOnlyTheRemainingPart();
    void endItemActsFillsAPartOfTheTotalBarThatHasNoActs();
    void endingTheActsMovesTheTotalBarToTheEndOfAllActs();
    void theValueOfTheTotalBarIsComputedAgainIfTheNumberOfActsChanges();
    void theTotalBarMovesToTheEndOfTheActsIfTheirNumberBecomesZero();
    void changeItemActStepsSetsTheValueAndTheMaximumOfTheItemBar();
    void changeItemActStepsEmitsOnlyTheSignalWithThreeArguments();
    void anItemFillsItsPartOfTheTotalBarIfTheItemMaximumIsZero();
    void anItemValueAboveTheMaximumIsReducedToTheMaximum();
    void theValuesAreScaledIfAMaximumIsBeyondTheRangeOfABar();
    void theValuesAreNotScaledIfAMaximumIsWithinTheRangeOfABar();
};

void ProgressStepsTest::theArgumentTypesOfTheSignalsAreRegisteredUnderTheirNames()
{
    Progress::Object progress(total, item);
    QCOMPARE(QMetaType::type("Steps"), static_cast<int>(QMetaType::ULongLong));
    QVERIFY(QMetaType::type("ThreadsState") != QMetaType::UnknownType);
    QCOMPARE(sizeof(Steps), static_cast<size_t>(8));
}

void ProgressStepsTest::aCopyOfTheDownloadStatesIsIndependentOfTheOriginal()
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

void ProgressStepsTest::theBarsAreIdleBeforeAndAfterTheLifeOfAProgressObject()
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

void ProgressStepsTest::startingTheTotalEnablesOnlyTheTotalBar()
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

void ProgressStepsTest::eachItemUsesTheNextPartOfTheTotalBar()
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

void ProgressStepsTest::aNewActivityOfAnItemChangesOnlyTheText()
{
    Progress::Object progress(total, item);
    progress.startTotal("Collecting", 100);
    progress.startItem("first", 30, 10);
    progress.changeItemActSteps(5, 10);
    progress.changeItemActivity("renamed");
    QCOMPARE(item->text(), QString("renamed (50%)"));
    QCOMPARE(total->value(), 15);
}

void ProgressStepsTest::aTotalValueAboveTheOldMaximumIsReducedIfTheMaximumChanges()
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

void ProgressStepsTest::aTotalValueBelowTheOldMaximumIsKeptIfTheMaximumChanges()
{
    Progress::Object progress(total, item);
    progress.startTotal("Collecting", 100);
    progress.startItem("first", 40, 1);
    progress.startItem("second", 40, 1);
    progress.changeTotal(200);
    QCOMPARE(total->maximum(), 200);
    QCOMPARE(total->value(), 40);
}

void ProgressStepsTest::allActsTogetherFillTheirPartOfTheTotalBar()
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

void ProgressStepsTest::oneItemCanCoverSeveralActs()
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

void ProgressStepsTest::theValuesAreScaledIfAMaximumIsBeyondTheRangeOfABar()
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
    // The item bar and the total bar are scaled separately.
    progress.changeItemActSteps(3 * gigabyte, 4 * gigabyte);
    QCOMPARE(item->maximum(), 1 << 30);
    QCOMPARE(item->value(), 3 << 28);
    QCOMPARE(item->text(), QString("Downloading (75%)"));
    QCOMPARE(total->maximum(), 3 << 29);
    QCOMPARE(total->value(), 750 >> 2);

    // A maximum within the range of a bar is not scaled.
    progress.changeTotal(1500);
    QCOMPARE(total->maximum(), 1500);
    QCOMPARE(total->value(), 750);
    progress.startItem("small", 10, 20);
    waitForInterval();
    progress.setItemValue(7);
    QCOMPARE(item->maximum(), 20);
    QCOMPARE(item->value(), 7);
}

void ProgressStepsTest::theValuesAreNotScaledIfAMaximumIsWithinTheRangeOfABar()
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

void ProgressStepsTest::anItemWithTooManyActsFillsOnlyTheRemainingPart()
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

void ProgressStepsTest::endItemActsFillsAPartOfTheTotalBarThatHasNoActs()
{
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 1000);
    progress.setupItemActs(100, 0);
    progress.startItemAct("nothing", 10, 1);
    QCOMPARE(total->value(), 0);
    progress.endItemActs();
    QCOMPARE(total->value(), 100);
}

void ProgressStepsTest::endingTheActsMovesTheTotalBarToTheEndOfAllActs()
{
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 1000);
    progress.startItem("before", 50, 1);
    progress.setupItemActs(100, 4);
    progress.startItemAct("one", 10, 1);
    progress.endItemActs();
    QCOMPARE(total->value(), 150);
    // After the end of the acts, no act is left, so later steps do not move the total bar.
    progress.changeItemActSteps(10, 10);
    QCOMPARE(total->value(), 150);
}

void ProgressStepsTest::theValueOfTheTotalBarIsComputedAgainIfTheNumberOfActsChanges()
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

void ProgressStepsTest::theTotalBarMovesToTheEndOfTheActsIfTheirNumberBecomesZero()
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

void ProgressStepsTest::changeItemActStepsSetsTheValueAndTheMaximumOfTheItemBar()
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

void ProgressStepsTest::changeItemActStepsEmitsOnlyTheSignalWithThreeArguments()
{
    Progress::Object progress(total, item);
    QSignalSpy two(&progress, SIGNAL(changeItemActStepsSig(Steps, Steps)));
    QSignalSpy three(&progress, SIGNAL(changeItemActStepsSig(Steps, Steps, Steps)));
    progress.startItem("item", 10, 10);
    progress.changeItemActSteps(1, 2);
    QCOMPARE(two.count(), 0);
    QCOMPARE(three.count(), 1);
}

void ProgressStepsTest::anItemFillsItsPartOfTheTotalBarIfTheItemMaximumIsZero()
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

void ProgressStepsTest::anItemValueAboveTheMaximumIsReducedToTheMaximum()
{
    Progress::Object progress(total, item);
    progress.startTotal("Reading", 100);
    progress.startItem("item", 40, 10);
    waitForInterval();
    progress.setItemValue(11);
    QCOMPARE(item->value(), 10);
    QCOMPARE(total->value(), 40);
}

QTEST_MAIN(ProgressStepsTest)
#include "ProgressStepsTest.moc"
