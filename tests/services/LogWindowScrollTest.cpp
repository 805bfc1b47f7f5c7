// SPDX-License-Identifier: GPL-2.0-or-later

#include <QCheckBox>
#include <QScrollBar>

#include "tests/services/ShownLog.h"

// Tests of the part of the log that the window shows.
class LogWindowScrollTest : public ShownLog
{
    Q_OBJECT

private Q_SLOTS:
    void anOpenedWindowShowsAllEntriesAndIsScrolledToTheEnd();
    void theWindowScrollsToARequestedEntry();
    void theTopEntryStaysAtTheTopIfTheDetailLevelOrTheTimesBoxChanges();
    void theViewStaysAtTheEndIfTheDetailLevelOrTheTimesBoxChanges();
    void thePaneScrollsToNewEntriesUnlessTheUserHasScrolledUp();
};

void LogWindowScrollTest::anOpenedWindowShowsAllEntriesAndIsScrolledToTheEnd()
{
    for (int i = 0; i < 500; ++i) {
        log(Log::Info, static_cast<unsigned int>(i % 5), QString("message %1").arg(i));
    }
    open();
    QStringList expected;
    for (int i = 0; i < 500; ++i) {
        if (i % 5 <= 2) {
            expected.append(QString("message %1").arg(i));
        }
    }
    QCOMPARE(lines(), expected);
    QScrollBar* scrollBar = pane->verticalScrollBar();
    QVERIFY(scrollBar->maximum() > 0);
    QCOMPARE(scrollBar->value(), scrollBar->maximum());
}

void LogWindowScrollTest::theWindowScrollsToARequestedEntry()
{
    for (int i = 0; i < 200; ++i) {
        log(Log::Info, i % 2 == 0 ? 0 : 5, QString("line %1").arg(i));
    }
    log(Log::Action, 0, "Begin");
    for (int i = 0; i < 200; ++i) {
        log(Log::Info, 0, QString("later %1").arg(i));
    }
    open();
    QVERIFY(topLine().startsWith("later"));
    window->showFrom(200);
    QCOMPARE(topLine(), QString("Begin"));
    QCOMPARE(pane->textCursor().block().text(), QString("Begin"));
    QVERIFY(pane->hasFocus());
    // At a higher detail level, the window shows more lines above this entry.
    level->setValue(5);
    window->showFrom(200);
    QCOMPARE(topLine(), QString("Begin"));
    // If the entry is hidden, the window scrolls to the next visible entry.
    level->setValue(2);
    window->showFrom(41);
    QCOMPARE(topLine(), QString("line 42"));
    window->showFrom(0);
    QCOMPARE(topLine(), QString("line 0"));
    window->showFrom(100000); // the log has no such entry
    QCOMPARE(topLine(), QString("line 0"));
}

void LogWindowScrollTest::theTopEntryStaysAtTheTopIfTheDetailLevelOrTheTimesBoxChanges()
{
    for (int i = 0; i < 400; ++i) {
        log(Log::Info, i % 2 == 0 ? 0 : 5, QString("line %1").arg(i));
    }
    open();
    window->showFrom(200);
    QCOMPARE(topLine(), QString("line 200"));
    auto* box = window->findChild<QCheckBox*>();
    box->setFocus();
    box->click();
    QVERIFY2(topLine().endsWith("  line 200"), qPrintable(topLine()));
    QVERIFY(box->hasFocus());
    box->click();
    QCOMPARE(topLine(), QString("line 200"));
    level->setValue(5);
    QCOMPARE(topLine(), QString("line 200"));
    QScrollBar* scrollBar = pane->verticalScrollBar();
    while (topLine() != "line 251") {
        QVERIFY(scrollBar->value() < scrollBar->maximum());
        scrollBar->setValue(scrollBar->value() + 1);
    }
    // At the lower detail level, the window does not show the entry "line 251". So the next entry is at the
    // top.
    level->setValue(2);
    QCOMPARE(topLine(), QString("line 252"));
    window->hide();
    open();
    QCOMPARE(scrollBar->value(), scrollBar->maximum());
}

void LogWindowScrollTest::theViewStaysAtTheEndIfTheDetailLevelOrTheTimesBoxChanges()
{
    for (int i = 0; i < 400; ++i) {
        log(Log::Info, i % 2 == 0 ? 0 : 5, QString("line %1").arg(i));
    }
    open();
    QScrollBar* scrollBar = pane->verticalScrollBar();
    const int before = scrollBar->maximum();
    window->findChild<QCheckBox*>()->click();
    QCOMPARE(scrollBar->value(), scrollBar->maximum());
    level->setValue(5);
    QVERIFY(scrollBar->maximum() > before);
    QCOMPARE(scrollBar->value(), scrollBar->maximum());
}

void LogWindowScrollTest::thePaneScrollsToNewEntriesUnlessTheUserHasScrolledUp()
{
    for (int i = 0; i < 200; ++i) {
        log(Log::Info, 0, "history");
    }
    open();
    QScrollBar* scrollBar = pane->verticalScrollBar();
    const int before = scrollBar->maximum();
    log(Log::Info, 0, "new");
    QVERIFY(scrollBar->maximum() > before);
    QCOMPARE(scrollBar->value(), scrollBar->maximum());

    pane->setFocus();
    QTest::keyClick(pane, Qt::Key_PageUp);
    const int position = scrollBar->value();
    QVERIFY(position < scrollBar->maximum());
    log(Log::Info, 0, "newer");
    QCOMPARE(scrollBar->value(), position);
}

QTEST_MAIN(LogWindowScrollTest)
#include "LogWindowScrollTest.moc"
