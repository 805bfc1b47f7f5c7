// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/LogWindow.h"

#include <memory>

#include <QCheckBox>
#include <QDateTime>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMutexLocker>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QThread>

#include "tests/support/Buttons.h"
#include "widgets/Colors.h"
#include "widgets/FindBar.h"
#include "widgets/HTextEdit.h"
#include "widgets/Metrics.h"

namespace {

// Whenever the window connects or disconnects, this log records whether the log is locked.
class WatchedEntries : public Log::EntryList
{
public:
    int listeners() const { return receivers(SIGNAL(appended())); }

    QList<bool> locked;

protected:
    void connectNotify(const QMetaMethod&) override { note(); }
    void disconnectNotify(const QMetaMethod&) override { note(); }

private:
    void note()
    {
        const bool gotIt = tryLock();
        if (gotIt) {
            unlock();
        }
        locked.append(!gotIt);
    }
};

} // namespace

class LogWindowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void theWindowHasTheExpectedTextsAndRanges();
    void theLogWindowHasNoParent();
    void anOpenedWindowShowsAllEntriesAndIsScrolledToTheEnd();
    void theWindowScrollsToARequestedEntry();
    void theTopEntryStaysAtTheTopIfTheDetailLevelOrTheTimesBoxChanges();
    void theViewStaysAtTheEndIfTheDetailLevelOrTheTimesBoxChanges();
    void entriesAboveTheDetailLevelAreNotShown();
    void theDetailLevelAlsoAppliesToErrors();
    void detailLevelsAreComparedAsUnsignedNumbers();
    void infoEntriesOfDetailLevelTenOrHigherHaveTheMinorColour();
    void eachKindOfEntryHasTheExpectedColour_data();
    void eachKindOfEntryHasTheExpectedColour();
    void theColoursAreReadableOnADarkBackground();
    void anActionEntryIsShownAsAHeading();
    void linesHaveNoSpaceBetweenThem();
    void markupIsShownAsPlainText();
    void blanksAndTabsInALineAreShownUnchanged();
    void markupCharactersExceptAmpersandsAreEscaped();
    void anOpenWindowShowsNewEntriesOfAllThreads();
    void thePaneScrollsToNewEntriesUnlessTheUserHasScrolledUp();
    void escapeHidesTheWindow_data();
    void escapeHidesTheWindow();
    void keysOtherThanEscapeDoNotHideTheWindow();
    void theCloseButtonHidesTheWindow();
    void theWindowIsHiddenIfTheWindowManagerClosesIt();
    void aHiddenWindowHasNoText();
    void aHiddenWindowIgnoresALateNotification();
    void aHiddenWindowIsNotConnectedToTheLog();
    void theLogIsLockedWhileTheWindowConnectsOrDisconnects();
    void openingTheWindowAgainShowsAllEntries();
    void tabMovesTheFocusOutOfThePane();
    void theWindowShowsEntriesThatArriveWhileItOpens();
    void noEntryIsLostIfTheWindowOpensWhileAThreadWrites();
    void theOpenWindowShowsThousandsOfNewMessages();
    void theWindowShowsThousandsOfEntries();
    void theTimesBoxShowsTheTimeOfEachEntry();
    void theFindBarFindsTextInTheLog();
    void escapeInTheFindBarDoesNotHideTheWindow();
    void theSavedFileContainsTheShownLinesWithTheirTimes();
    void savingToAnExistingFileFirstAsksWhetherToReplaceIt();
    void aMessageBoxShowsTheFileNameIfTheLogCannotBeSaved();
    void hidingTheWindowClosesItsDialogs();

private:
    void log(Log::Kind kind, unsigned int level, const QString& text);
    void open();
    QStringList lines() const;
    QString topLine() const { return pane->cursorForPosition(QPoint(2, 4)).block().text(); }
    QPushButton* button(const QString& text) const { return buttonOf(window.get(), text); }
    // The text colour of a line; invalid if the line has the pane's own colour.
    QColor colourOf(int line) const;

    std::unique_ptr<WatchedEntries> entries;
    std::unique_ptr<Log::Window> window;
    HTextEdit* pane = nullptr;
    QSpinBox* level = nullptr;
};

void LogWindowTest::init()
{
    entries = std::make_unique<WatchedEntries>();
    window = std::make_unique<Log::Window>(*entries, nullptr);
    pane = window->findChild<HTextEdit*>();
    level = window->findChild<QSpinBox*>();
}

void LogWindowTest::cleanup()
{
    window.reset();
    entries.reset();
}

void LogWindowTest::log(Log::Kind kind, unsigned int entryLevel, const QString& text)
{
    {
        QMutexLocker locker(entries.get());
        entries->append(Log::Entry(kind, entryLevel, text));
    }
    entries->emitAppended();
}

void LogWindowTest::open()
{
    window->show();
    QVERIFY(QTest::qWaitForWindowActive(window.get(), 30000));
}

QStringList LogWindowTest::lines() const
{
    const QString text = pane->toPlainText();
    return text.isEmpty() ? QStringList() : text.split('\n');
}

QColor LogWindowTest::colourOf(int line) const
{
    const QTextBlock block = pane->document()->findBlockByNumber(line);
    const QTextCharFormat format = block.begin().fragment().charFormat();
    return format.hasProperty(QTextFormat::ForegroundBrush) ? format.foreground().color() : QColor();
}

void LogWindowTest::theWindowHasTheExpectedTextsAndRanges()
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

void LogWindowTest::theLogWindowHasNoParent()
{
    QWidget main;
    Log::Window other(*entries, &main);
    QVERIFY(other.parent() == nullptr);
    QVERIFY(other.isWindow());
}

void LogWindowTest::anOpenedWindowShowsAllEntriesAndIsScrolledToTheEnd()
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

void LogWindowTest::theWindowScrollsToARequestedEntry()
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

void LogWindowTest::theTopEntryStaysAtTheTopIfTheDetailLevelOrTheTimesBoxChanges()
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

void LogWindowTest::theViewStaysAtTheEndIfTheDetailLevelOrTheTimesBoxChanges()
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

void LogWindowTest::entriesAboveTheDetailLevelAreNotShown()
{
    log(Log::Info, 3, "detail");
    log(Log::Info, 2, "rough");
    open();
    QCOMPARE(lines(), QStringList({"rough"}));

    level->setFocus();
    QTest::keyClick(level, Qt::Key_Up);
    QCOMPARE(level->value(), 3);
    QCOMPARE(lines(), QStringList({"detail", "rough"}));

    QTest::keyClick(level, Qt::Key_Down);
    QCOMPARE(lines(), QStringList({"rough"}));
}

void LogWindowTest::theDetailLevelAlsoAppliesToErrors()
{
    log(Log::Error, 2, "error");
    log(Log::Error, 3, "error in detail");
    log(Log::Info, 1, "report");
    log(Log::Error, 0, "another error");
    level->setValue(0);
    open();
    QCOMPARE(lines(), QStringList({"error", "another error"}));
    level->setValue(3);
    QCOMPARE(lines(), QStringList({"error", "error in detail", "report", "another error"}));
}

void LogWindowTest::detailLevelsAreComparedAsUnsignedNumbers()
{
    log(Log::Info, 4294967295u, "far beyond");
    log(Log::Info, 0, "near");
    level->setValue(10);
    open();
    QCOMPARE(lines(), QStringList({"near"}));
}

void LogWindowTest::infoEntriesOfDetailLevelTenOrHigherHaveTheMinorColour()
{
    log(Log::Info, 9, "nine");
    log(Log::Info, 10, "ten");
    open();
    QCOMPARE(lines(), QStringList());
    level->setValue(10);
    QCOMPARE(lines(), QStringList({"nine", "ten"}));
    QVERIFY(!colourOf(0).isValid());
    QCOMPARE(colourOf(1), QColor(Colors::minor()));
}

void LogWindowTest::eachKindOfEntryHasTheExpectedColour_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("colour");
    QTest::newRow("info") << 0 << QString();
    QTest::newRow("ok") << 1 << Colors::ok();
    QTest::newRow("warning") << 2 << Colors::warning();
    QTest::newRow("error") << 3 << Colors::error();
    QTest::newRow("action") << 4 << Colors::action();
    QTest::newRow("unknown kind") << 17 << Colors::error();
}

void LogWindowTest::eachKindOfEntryHasTheExpectedColour()
{
    QFETCH(int, kind);
    QFETCH(QString, colour);
    log(static_cast<Log::Kind>(kind), 0, "some text");
    open();
    QCOMPARE(lines(), QStringList({"some text"}));
    QCOMPARE(colourOf(0), colour.isEmpty() ? QColor() : QColor(colour));
}

void LogWindowTest::theColoursAreReadableOnADarkBackground()
{
    log(Log::Action, 0, "some text");
    open();
    QCOMPARE(colourOf(0), QColor(Colors::action()));
    QPalette dark(QColor(53, 53, 53), QColor(42, 42, 42));
    dark.setColor(QPalette::Base, QColor(35, 35, 35));
    window->setPalette(dark);
    QCOMPARE(lines(), QStringList({"some text"}));
    QCOMPARE(colourOf(0), QColor(Colors::readable(Colors::action(), QColor(35, 35, 35))));
    QVERIFY(colourOf(0) != QColor(Colors::action()));
}

void LogWindowTest::anActionEntryIsShownAsAHeading()
{
    log(Log::Action, 0, "Applying");
    log(Log::Info, 0, "text");
    log(Log::Action, 0, "Cleaning");
    open();
    QCOMPARE(lines(), QStringList({"Applying", "text", "Cleaning"}));
    const auto format = [this](int line) {
        return pane->document()->findBlockByNumber(line).begin().fragment().charFormat();
    };
    QCOMPARE(pane->document()->findBlockByNumber(0).blockFormat().headingLevel(), 2);
    for (int line : {0, 2}) {
        QCOMPARE(format(line).fontWeight(), static_cast<int>(QFont::Bold));
        QVERIFY(format(line).intProperty(QTextFormat::FontSizeAdjustment) > 0);
    }
    // The line below a heading does not have the heading's format.
    QVERIFY(format(1).fontWeight() != QFont::Bold);
    QCOMPARE(format(1).intProperty(QTextFormat::FontSizeAdjustment), 0);
    QVERIFY(!colourOf(1).isValid());
}

void LogWindowTest::linesHaveNoSpaceBetweenThem()
{
    log(Log::Action, 0, "Applying");
    log(Log::OK, 0, "text");
    log(Log::Info, 0, "text");
    open();
    for (int i = 0; i < 3; ++i) {
        const QTextBlockFormat format = pane->document()->findBlockByNumber(i).blockFormat();
        QCOMPARE(format.topMargin(), 0.0);
        QCOMPARE(format.bottomMargin(), 0.0);
    }
}

void LogWindowTest::markupIsShownAsPlainText()
{
    log(Log::Info, 0, "a <b>bold</b> <img src=\"x\"> </font> line");
    open();
    QCOMPARE(lines(), QStringList({"a <b>bold</b> <img src=\"x\"> </font> line"}));
}

void LogWindowTest::blanksAndTabsInALineAreShownUnchanged()
{
    log(Log::Info, 0, "  two  blanks\tand\t\ttabs ");
    open();
    QCOMPARE(lines(), QStringList({"  two  blanks\tand\t\ttabs "}));
}

void LogWindowTest::markupCharactersExceptAmpersandsAreEscaped()
{
    QString line("<a> &lt;\t& <");
    Log::Window::htmlProtect(line);
    QCOMPARE(line, QString("&lt;a&gt;&#x0020;&lt;&#x0009;&&#x0020;&lt;"));
}

void LogWindowTest::anOpenWindowShowsNewEntriesOfAllThreads()
{
    log(Log::Info, 0, "old");
    open();
    log(Log::Info, 0, "new");
    QCOMPARE(lines(), QStringList({"old", "new"}));
    log(Log::Info, 5, "too detailed");
    QCOMPARE(lines(), QStringList({"old", "new"}));

    std::unique_ptr<QThread> writer(QThread::create([this] { log(Log::Warning, 0, "from a worker"); }));
    writer->start();
    QTRY_COMPARE(lines(), QStringList({"old", "new", "from a worker"}));
    writer->wait();
}

void LogWindowTest::thePaneScrollsToNewEntriesUnlessTheUserHasScrolledUp()
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

void LogWindowTest::escapeHidesTheWindow_data()
{
    QTest::addColumn<QString>("focus");
    QTest::newRow("pane") << "pane";
    QTest::newRow("spin box") << "level";
    QTest::newRow("button") << "close";
}

void LogWindowTest::escapeHidesTheWindow()
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

void LogWindowTest::keysOtherThanEscapeDoNotHideTheWindow()
{
    open();
    QTest::keyClick(window.get(), Qt::Key_A);
    QTest::keyClick(pane, Qt::Key_Return);
    QVERIFY(window->isVisible());
}

void LogWindowTest::theCloseButtonHidesTheWindow()
{
    open();
    QTest::mouseClick(button("&Close"), Qt::LeftButton);
    QVERIFY(!window->isVisible());
    open();
    QTest::keyClick(window.get(), Qt::Key_C, Qt::AltModifier);
    QTRY_VERIFY(!window->isVisible());
}

void LogWindowTest::theWindowIsHiddenIfTheWindowManagerClosesIt()
{
    log(Log::Info, 0, "text");
    open();
    window->close();
    QVERIFY(!window->isVisible());
    QCOMPARE(pane->toPlainText(), QString());
    open();
    QCOMPARE(lines(), QStringList({"text"}));
}

void LogWindowTest::aHiddenWindowHasNoText()
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

void LogWindowTest::aHiddenWindowIgnoresALateNotification()
{
    open();
    std::unique_ptr<QThread> writer(QThread::create([this] { log(Log::Info, 0, "too late"); }));
    writer->start();
    writer->wait();
    window->hide();
    QCoreApplication::processEvents();
    QCOMPARE(pane->toPlainText(), QString());
}

void LogWindowTest::aHiddenWindowIsNotConnectedToTheLog()
{
    QCOMPARE(entries->listeners(), 0);
    for (int round = 0; round < 3; ++round) {
        open();
        QCOMPARE(entries->listeners(), 1);
        window->hide();
        QCOMPARE(entries->listeners(), 0);
    }
}

void LogWindowTest::theLogIsLockedWhileTheWindowConnectsOrDisconnects()
{
    open();
    QCOMPARE(entries->locked, QList<bool>({true}));
    window->hide();
    QCOMPARE(entries->locked, QList<bool>({true, true}));
}

void LogWindowTest::openingTheWindowAgainShowsAllEntries()
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

void LogWindowTest::tabMovesTheFocusOutOfThePane()
{
    open();
    pane->setFocus();
    QTRY_VERIFY(pane->hasFocus());
    QTest::keyClick(pane, Qt::Key_Tab);
    QVERIFY(level->hasFocus());
}

void LogWindowTest::theWindowShowsEntriesThatArriveWhileItOpens()
{
    log(Log::Info, 0, "before");
    // This entry arrives while the window paints the earlier entries, before the window connects to the log.
    QMetaObject::invokeMethod(
        window.get(), [this] { log(Log::Info, 0, "between"); }, Qt::QueuedConnection);
    window->show();
    QCOMPARE(lines(), QStringList({"before", "between"}));
}

void LogWindowTest::noEntryIsLostIfTheWindowOpensWhileAThreadWrites()
{
    const int count = 3000;
    std::unique_ptr<QThread> writer(QThread::create([this] {
        for (int i = 0; i < count; ++i) {
            log(Log::Info, 0, QString::number(i));
        }
    }));
    writer->start();
    while (!writer->isFinished()) {
        window->show();
        QCoreApplication::processEvents();
        window->hide();
    }
    writer->wait();
    open();
    QCOMPARE(lines().count(), count);
    for (int i = 0; i < count; ++i) {
        QCOMPARE(lines().at(i), QString::number(i));
        i += 97;
    }
}

void LogWindowTest::theOpenWindowShowsThousandsOfNewMessages()
{
    open();
    const int count = 20000;
    std::unique_ptr<QThread> writer(QThread::create([this] {
        for (int i = 0; i < count; ++i) {
            log(Log::OK, 0, QString::number(i));
        }
    }));
    writer->start();
    QTRY_COMPARE_WITH_TIMEOUT(pane->document()->blockCount(), count, 120000);
    writer->wait();
    const QStringList shown = lines();
    for (int i = 0; i < count; ++i) {
        QCOMPARE(shown.at(i), QString::number(i));
    }
    QCOMPARE(pane->verticalScrollBar()->value(), pane->verticalScrollBar()->maximum());
}

void LogWindowTest::theWindowShowsThousandsOfEntries()
{
    const int count = 30000;
    for (int i = 0; i < count; ++i) {
        entries->append(Log::Entry(Log::Info, 0, QString("a line of ordinary length, number %1").arg(i)));
    }
    open();
    QCOMPARE(pane->document()->blockCount(), count);
    QCOMPARE(pane->verticalScrollBar()->value(), pane->verticalScrollBar()->maximum());
    log(Log::Info, 0, "last");
    QCOMPARE(pane->document()->lastBlock().text(), QString("last"));
    QCOMPARE(pane->verticalScrollBar()->value(), pane->verticalScrollBar()->maximum());
}

void LogWindowTest::theTimesBoxShowsTheTimeOfEachEntry()
{
    const QDateTime before = QDateTime::currentDateTime();
    log(Log::Info, 0, "first");
    log(Log::Action, 0, "Applying");
    open();
    QCOMPARE(lines(), (QStringList{"first", "Applying"}));
    auto* box = window->findChild<QCheckBox*>();
    QVERIFY(!box->isChecked());
    QCOMPARE(box->text(), QString("&Times"));
    box->click();
    const QStringList shown = lines();
    QCOMPARE(shown.size(), 2);
    for (const QString& line : shown) {
        const QTime time = QTime::fromString(line.left(8), "HH:mm:ss");
        QVERIFY2(time.isValid(), qPrintable(line));
        const int late = before.time().secsTo(time);
        QVERIFY2(late >= -1 && late < 600, qPrintable(line));
    }
    QCOMPARE(shown.first().mid(8), QString("  first"));
    QCOMPARE(shown.last().mid(8), QString("  Applying"));
    log(Log::Error, 0, "third");
    QTRY_COMPARE(lines().size(), 3);
    QCOMPARE(lines().last().mid(8), QString("  third"));
    box->click();
    QCOMPARE(lines(), (QStringList{"first", "Applying", "third"}));
}

void LogWindowTest::theFindBarFindsTextInTheLog()
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

void LogWindowTest::escapeInTheFindBarDoesNotHideTheWindow()
{
    open();
    auto* bar = window->findChild<FindBar*>();
    button("&Find...")->click();
    QTRY_VERIFY(bar->isVisible());
    QTest::keyClick(bar->findChild<QLineEdit*>(), Qt::Key_Escape);
    QVERIFY(!bar->isVisible());
    QVERIFY(window->isVisible());
}

void LogWindowTest::theSavedFileContainsTheShownLinesWithTheirTimes()
{
    log(Log::Info, 0, "shown <b>");
    log(Log::Info, 5, "detail");
    log(Log::Error, 0, "last \u00fc");
    open();
    QTemporaryDir directory;
    const QString path = directory.filePath("log.txt");
    button("&Save...")->click();
    const QPointer<QFileDialog> dialog = window->findChild<QFileDialog*>();
    QVERIFY(dialog != nullptr && QTest::qWaitForWindowActive(dialog));
    // Qt's own size for the dialog does not depend on the font, so VYRE sets a minimum size in columns and
    // rows.
    const QSize screen = Metrics::maxWindowSize();
    const QFontMetrics metrics = dialog->fontMetrics();
    QVERIFY(dialog->width() >= qMin(screen.width(), 85 * Metrics::columnWidth(metrics)));
    QVERIFY(dialog->height() >= qMin(screen.height(), 22 * metrics.lineSpacing()));
    auto* name = dialog->findChild<QLineEdit*>("fileNameEdit");
    name->setText(path);
    dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Save)->click();
    QTRY_VERIFY2(QFile::exists(path),
                 dialog.isNull() ? "closed" : qPrintable(dialog->selectedFiles().join(' ')));
    QCOMPARE(QFile::permissions(path) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QStringList saved = QString::fromUtf8(file.readAll()).split('\n');
    QCOMPARE(saved.size(), 3);
    QVERIFY(QDateTime::fromString(saved.at(0).left(19), Qt::ISODate).isValid());
    QCOMPARE(saved.at(0).mid(19), QString("  shown <b>"));
    QCOMPARE(saved.at(1).mid(19), QString("  last \u00fc"));
    QCOMPARE(saved.at(2), QString());
}

void LogWindowTest::savingToAnExistingFileFirstAsksWhetherToReplaceIt()
{
    log(Log::Info, 0, "new");
    open();
    QTemporaryDir directory;
    const QString path = directory.filePath("log.txt");
    const auto contents = [&path] {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("old");
    }
    for (const bool replaced : {false, true}) {
        window->saveInto(path);
        auto* box = window->findChild<QMessageBox*>();
        QVERIFY(box != nullptr && QTest::qWaitForWindowActive(box));
        QVERIFY(box->text().contains(path));
        QCOMPARE(box->defaultButton()->text().remove('&'), QString("Cancel"));
        if (replaced) {
            for (QAbstractButton* each : box->buttons()) {
                if (each->text() == "&Replace") {
                    each->click();
                }
            }
        } else {
            QTest::keyClick(box, Qt::Key_Return);
        }
        QTRY_VERIFY(window->findChild<QMessageBox*>() == nullptr);
        QCOMPARE(contents() == "old", !replaced);
    }
    QVERIFY(contents().endsWith("  new\n"));
}

void LogWindowTest::aMessageBoxShowsTheFileNameIfTheLogCannotBeSaved()
{
    open();
    const QString path = QStringLiteral("/missing-directory/log.txt");
    window->saveInto(path);
    auto* box = window->findChild<QMessageBox*>();
    QVERIFY(box != nullptr && QTest::qWaitForWindowActive(box));
    QVERIFY2(box->text().contains(path), qPrintable(box->text()));
    QTest::keyClick(box, Qt::Key_Return);
    QTRY_VERIFY(window->findChild<QMessageBox*>() == nullptr);
}

void LogWindowTest::hidingTheWindowClosesItsDialogs()
{
    open();
    window->save();
    auto* dialog = window->findChild<QFileDialog*>();
    QVERIFY(dialog != nullptr && QTest::qWaitForWindowActive(dialog));
    window->hide();
    QTRY_VERIFY(window->findChild<QFileDialog*>() == nullptr);
}

QTEST_MAIN(LogWindowTest)
#include "LogWindowTest.moc"
