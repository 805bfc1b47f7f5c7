// SPDX-License-Identifier: GPL-2.0-or-later

#include <QGridLayout>
#include <QLabel>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

#include "tests/services/ShownBars.h"

// Tests of parallel downloads. The item bar shows the sum of all downloads, and a tip at the pointer lists
// the downloads.
class ProgressDownloadsTest : public ShownBars
{
    Q_OBJECT

private Q_SLOTS:
    void theValueOfTheItemBarIsTheSumOfAllDownloads();
    void theTotalBarReachesTheStartOfTheLastActWhenAllDownloadsAreComplete();
    void theActivityIsTheNameOfTheDownloadIfOnlyOneDownloadRuns();
    void aRetryOfADownloadSubtractsItsValueFromTheSum();
    void aRetryOfADownloadNeverMakesTheSumNegative();
    void aReportWithATooLargeDownloadIndexIsIgnored();
    void aResetRemovesTheDownloads();
    void atMostOneEventIsQueuedForReportsAboutDownloads();
    void hoveringShowsNoTipIfNoDownloadRuns();
    void hoveringOverTheItemBarShowsATipWithTheDownloads();
    void theTipShowsTheStateOfEachDownload();
    void theTipShowsDownloadNamesAsPlainText();
    void theTipListsUpToTwentyCompleteDownloads();
    void theTipShowsMoreThanTwentyCompleteDownloadsInOneRow();
    void theLabelsInTheTipHaveTheExpectedColours();
    void theTipDisappearsAtTheEndOfTheOperation();
};

void ProgressDownloadsTest::theValueOfTheItemBarIsTheSumOfAllDownloads()
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

void ProgressDownloadsTest::theTotalBarReachesTheStartOfTheLastActWhenAllDownloadsAreComplete()
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

void ProgressDownloadsTest::theActivityIsTheNameOfTheDownloadIfOnlyOneDownloadRuns()
{
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 1000);
    progress.setupItemActs(100, 10);
    progress.setupItemActsThreads("Downloading 1 packages", 0, 11, 1, 10);
    progress.startItemActThread("Downloading vim", 0, 10);
    QCOMPARE(item->text(), QString("Downloading vim (0%)"));
}

void ProgressDownloadsTest::aRetryOfADownloadSubtractsItsValueFromTheSum()
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
    // A download that starts again begins at zero.
    progress.startItemActThread("one", 0, 600);
    waitForInterval();
    progress.setItemActsThreadValue(0, 10);
    QCOMPARE(item->value(), 110);
}

void ProgressDownloadsTest::aRetryOfADownloadNeverMakesTheSumNegative()
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

void ProgressDownloadsTest::aReportWithATooLargeDownloadIndexIsIgnored()
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

void ProgressDownloadsTest::aResetRemovesTheDownloads()
{
    Progress::Object progress(total, item);
    progress.setupItemActsThreads("Downloading", 0, 1, 3, 100);
    QSignalSpy spy(&progress, SIGNAL(updateThreadsStateSig(const ThreadsState&)));
    progress.reset();
    QCOMPARE(spy.count(), 1);
    QCOMPARE(downloads(spy.at(0).at(0)).count(), 0u);
    QVERIFY(!total->isEnabled());
    QVERIFY(!item->isEnabled());
    // After reset(), the next operation starts at zero.
    progress.startTotal("Again", 10);
    progress.startItem("first", 5, 1);
    QCOMPARE(total->value(), 0);
}

void ProgressDownloadsTest::atMostOneEventIsQueuedForReportsAboutDownloads()
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
    // Blocks the graphical thread while the worker reports, so that no event is processed.
    done.acquire();
    QVERIFY2(reports <= 1, qPrintable(QString::number(reports)));
    // The bars show the last state, although the worker sends no further report.
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

void ProgressDownloadsTest::hoveringShowsNoTipIfNoDownloadRuns()
{
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 100);
    progress.startItem("item", 10, 10);
    QSignalSpy spy(item, SIGNAL(toolTip(const QPoint&)));
    hover();
    QTRY_COMPARE(spy.count(), 1);
    QVERIFY(currentTip() == nullptr);
}

void ProgressDownloadsTest::hoveringOverTheItemBarShowsATipWithTheDownloads()
{
    Progress::Object progress(total, item);
    progress.startTotal("Applying", 100);
    progress.setupItemActs(100, 10);
    progress.setupItemActsThreads("Downloading", 0, 11, 2, 10);
    progress.startItemActThread("vim", 0, 1);
    // The window manager may hide the tip at once. In this case, the loop moves the pointer again, as a user
    // does.
    for (int attempt = 0; attempt < 10 && currentTip() == nullptr; ++attempt) {
        hover();
        (void)QTest::qWaitFor([] { return currentTip() != nullptr; });
    }
    QCOMPARE(tipRows(), QStringList({"vim: In Progress", "1 downloads: Not Started Yet"}));
    // A click hides the tip.
    QTest::mouseClick(item, Qt::LeftButton);
    QVERIFY(currentTip() == nullptr);
}

void ProgressDownloadsTest::theTipShowsTheStateOfEachDownload()
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

void ProgressDownloadsTest::theTipShowsDownloadNamesAsPlainText()
{
    Progress::Object progress(total, item);
    progress.setupItemActsThreads("Downloading", 0, 1, 1, 10);
    progress.startItemActThread("<b>vim</b>", 0, 1);
    Q_EMIT item->toolTip(QPoint(5, 5));
    QCOMPARE(cell(currentTip(), 0, 0)->textFormat(), Qt::PlainText);
    QCOMPARE(cell(currentTip(), 0, 0)->text(), QString("<b>vim</b>"));
}

void ProgressDownloadsTest::theTipListsUpToTwentyCompleteDownloads()
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

void ProgressDownloadsTest::theTipShowsMoreThanTwentyCompleteDownloadsInOneRow()
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

void ProgressDownloadsTest::theLabelsInTheTipHaveTheExpectedColours()
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

void ProgressDownloadsTest::theTipDisappearsAtTheEndOfTheOperation()
{
    {
        Progress::Object progress(total, item);
        progress.setupItemActsThreads("Downloading", 0, 1, 4, 10);
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    Q_EMIT item->toolTip(QPoint(5, 5));
    QVERIFY(currentTip() == nullptr);
}

QTEST_MAIN(ProgressDownloadsTest)
#include "ProgressDownloadsTest.moc"
