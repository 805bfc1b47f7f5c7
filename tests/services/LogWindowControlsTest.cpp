// SPDX-License-Identifier: GPL-2.0-or-later

#include <QLabel>
#include <QLineEdit>

#include "tests/services/ShownLog.h"
#include "widgets/FindBar.h"

// Tests of the keys and buttons, and of opening and hiding the window.
class LogWindowControlsTest : public ShownLog
{
    Q_OBJECT

private Q_SLOTS:
    void theWindowHasTheExpectedTextsAndRanges();
    void theLogWindowHasNoParent();
    void escapeHidesTheWindow_data();
    void escapeHidesTheWindow();
    void keysOtherThanEscapeDoNotHideTheWindow();
    void theCloseButtonHidesTheWindow();
    void theWindowIsHiddenIfTheWindowManagerClosesIt();
    void aHiddenWindowHasNoText();
    void openingTheWindowAgainShowsAllEntries();
    void tabMovesTheFocusOutOfThePane();
    void theFindBarFindsTextInTheLog();
    void escapeInTheFindBarDoesNotHideTheWindow();
};

void LogWindowControlsTest::theWindowHasTheExpectedTextsAndRanges()
{
    QCOMPARE(window->windowTitle(), QString("VYRE Log"));
    QCOMPARE(window->findChild<QLabel*>()->text(), QString("Detail level"));
    QCOMPARE(level->minimum(), 0);
    QCOMPARE(level->maximum(), 10);
    QCOMPARE(level->value(), 2);
    QCOMPARE(level->toolTip(), QString("Threshold beyond which more detailed log messages are omitted.\n"
                                       "Higher levels show more detail.\n"
                                       "The valid range is 0 .. 10.\n"
                                       "The default is 2.\n"
                                       "Higher levels contain debug information.\n"
                                       "This corresponds to yum's debuglevel (-d) option."));
    QPushButton* close = button("&Close");
    QCOMPARE(close->text(), QString("&Close"));
    QCOMPARE(close->toolTip(), QString("Close the Log Window"));
    QVERIFY(pane->isReadOnly());
    QCOMPARE(pane->lineWrapMode(), QTextEdit::NoWrap);
    QCOMPARE(pane->wordWrapMode(), QTextOption::NoWrap);
    const int frame = 2 * pane->frameWidth();
    QCOMPARE(pane->sizeHint(), QSize(frame + 100 * pane->fontMetrics().horizontalAdvance(QLatin1Char('n')),
                                     frame + 24 * pane->fontMetrics().lineSpacing()));
    // Below the pane, the label and the number are on the left, and the Close button is on the right.
    open();
    const QRect label = window->findChild<QLabel*>()->geometry();
    QVERIFY(label.top() > pane->geometry().bottom());
    QVERIFY(label.right() < level->x());
    QVERIFY(level->geometry().right() + window->width() / 3 < close->x());
}

void LogWindowControlsTest::theLogWindowHasNoParent()
{
    QWidget main;
    Log::Window other(*entries, &main);
    QVERIFY(other.parent() == nullptr);
    QVERIFY(other.isWindow());
}

void LogWindowControlsTest::escapeHidesTheWindow_data()
{
    QTest::addColumn<QString>("focus");
    QTest::newRow("pane") << "pane";
    QTest::newRow("spin box") << "level";
    QTest::newRow("button") << "close";
}

void LogWindowControlsTest::escapeHidesTheWindow()
{
    QFETCH(QString, focus);
    open();
    QWidget* widget = pane;
    if (focus == "level") {
        widget = level;
    } else if (focus == "close") {
        widget = button("&Close");
    }
    widget->setFocus();
    QTRY_VERIFY(widget->hasFocus());
    QTest::keyClick(widget, Qt::Key_Escape);
    QVERIFY(!window->isVisible());
}

void LogWindowControlsTest::keysOtherThanEscapeDoNotHideTheWindow()
{
    open();
    QTest::keyClick(window.get(), Qt::Key_A);
    QTest::keyClick(pane, Qt::Key_Return);
    QVERIFY(window->isVisible());
}

void LogWindowControlsTest::theCloseButtonHidesTheWindow()
{
    open();
    QTest::mouseClick(button("&Close"), Qt::LeftButton);
    QVERIFY(!window->isVisible());
    open();
    QTest::keyClick(window.get(), Qt::Key_C, Qt::AltModifier);
    QTRY_VERIFY(!window->isVisible());
}

void LogWindowControlsTest::theWindowIsHiddenIfTheWindowManagerClosesIt()
{
    log(Log::Info, 0, "text");
    open();
    window->close();
    QVERIFY(!window->isVisible());
    QCOMPARE(pane->toPlainText(), QString());
    open();
    QCOMPARE(lines(), QStringList({"text"}));
}

void LogWindowControlsTest::aHiddenWindowHasNoText()
{
    log(Log::Info, 0, "before");
    QCOMPARE(pane->toPlainText(), QString());
    open();
    QCOMPARE(lines(), QStringList({"before"}));
    window->hide();
    QCOMPARE(pane->toPlainText(), QString());
    log(Log::Info, 0, "while hidden");
    QCOMPARE(pane->toPlainText(), QString());
    open();
    QCOMPARE(lines(), QStringList({"before", "while hidden"}));
}

void LogWindowControlsTest::openingTheWindowAgainShowsAllEntries()
{
    log(Log::Info, 0, "one");
    open();
    QTest::keyClick(window.get(), Qt::Key_Escape);
    QVERIFY(!window->isVisible());
    level->setValue(5);
    log(Log::Info, 5, "two");
    open();
    QCOMPARE(lines(), QStringList({"one", "two"}));
    log(Log::Info, 0, "three");
    QCOMPARE(lines(), QStringList({"one", "two", "three"}));
}

void LogWindowControlsTest::tabMovesTheFocusOutOfThePane()
{
    open();
    pane->setFocus();
    QTRY_VERIFY(pane->hasFocus());
    QTest::keyClick(pane, Qt::Key_Tab);
    QVERIFY(level->hasFocus());
}

void LogWindowControlsTest::theFindBarFindsTextInTheLog()
{
    for (int i = 0; i < 300; ++i) {
        log(Log::Info, 0, QString("line %1 of many").arg(i));
    }
    open();
    QTest::keyClick(window.get(), Qt::Key_F, Qt::ControlModifier);
    auto* field = window->findChild<FindBar*>()->findChild<QLineEdit*>();
    QTRY_VERIFY(field->hasFocus());
    QTest::keyClicks(field, "LINE 17 ");
    QCOMPARE(pane->textCursor().selectedText(), QString("line 17 "));
    QVERIFY(pane->viewport()->rect().contains(pane->cursorRect().center()));
}

void LogWindowControlsTest::escapeInTheFindBarDoesNotHideTheWindow()
{
    open();
    auto* bar = window->findChild<FindBar*>();
    button("&Find...")->click();
    QTRY_VERIFY(bar->isVisible());
    QTest::keyClick(bar->findChild<QLineEdit*>(), Qt::Key_Escape);
    QVERIFY(!bar->isVisible());
    QVERIFY(window->isVisible());
}

QTEST_MAIN(LogWindowControlsTest)
#include "LogWindowControlsTest.moc"
