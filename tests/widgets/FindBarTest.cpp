// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/FindBar.h"

#include <QtTest>
#include <QtWidgets>

#include "widgets/HScrollArea.h"
#include "widgets/HTextEdit.h"
#include "widgets/PlainLabel.h"

namespace {

QString manyLines()
{
    QString text;
    for (int i = 0; i < 400; ++i) {
        text += QString("line %1 <b> %2\n").arg(i).arg(QString(i % 100 == 50 ? 300 : 10, 'x'));
    }
    return text + "the last Needle";
}

// A dialog with a default button, a FindBar, and a long text in a text edit or in a label.
class Searched : public QDialog
{
public:
    explicit Searched(bool inLabel)
    {
        auto* column = new QVBoxLayout(this);
        if (inLabel) {
            label = new PlainLabel(manyLines());
            label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
            area = new HScrollArea(this);
            area->setWidget(label);
            column->addWidget(area);
            bar = new FindBar(label, area, this);
        } else {
            edit = new HTextEdit(60, 10, this);
            edit->setReadOnly(true);
            edit->setPlainText(manyLines());
            edit->setLineWrapMode(QTextEdit::NoWrap);
            column->addWidget(edit);
            bar = new FindBar(edit, this);
        }
        column->addWidget(bar);
        ok = new QPushButton("OK");
        ok->setDefault(true);
        QObject::connect(ok, SIGNAL(clicked()), this, SLOT(accept()));
        column->addWidget(ok);
        resize(500, 300);
        show();
        if (!QTest::qWaitForWindowActive(this)) {
            qFatal("the dialog does not appear");
        }
        wasVisible = bar->isVisible();
        bar->open(); // the bar makes its contents when it first opens
        bar->dismiss();
        field = bar->findChild<QLineEdit*>();
        next = bar->findChildren<QPushButton*>().at(0);
        previous = bar->findChildren<QPushButton*>().at(1);
    }

    void open()
    {
        QTest::keyClick(this, Qt::Key_F, Qt::ControlModifier);
        if (!QTest::qWaitFor([this] { return field->hasFocus(); })) {
            qFatal("the bar does not open");
        }
    }
    QString selected() const
    {
        return label != nullptr ? label->selectedText() : edit->textCursor().selectedText();
    }
    int place() const
    {
        return label != nullptr ? label->selectionStart() : edit->textCursor().selectionStart();
    }
    // How far the text is scrolled, from 0 (top) to 1 (bottom).
    double scrolled() const
    {
        const QScrollBar* scrollBar =
            label != nullptr ? area->verticalScrollBar() : edit->verticalScrollBar();
        return static_cast<double>(scrollBar->value()) / scrollBar->maximum();
    }
    QString result() const { return bar->findChild<PlainLabel*>()->text(); }

    PlainLabel* label = nullptr;
    HScrollArea* area = nullptr;
    HTextEdit* edit = nullptr;
    FindBar* bar;
    bool wasVisible;
    QPushButton* ok;
    QLineEdit* field;
    QPushButton* next;
    QPushButton* previous;
};

} // namespace

// Tests of the bar that finds a word in a text. Most of these tests run twice: with a text edit and with a
// label.
class FindBarTest : public QObject
{
    Q_OBJECT

private:
    void addRows()
    {
        QTest::addColumn<bool>("inLabel");
        QTest::newRow("text edit") << false;
        QTest::newRow("label") << true;
    }

private Q_SLOTS:
    void theBarIsHiddenUntilItsKeyIsPressed_data() { addRows(); }
    void theBarIsHiddenUntilItsKeyIsPressed();
    void theFirstMatchOfTheTypedTextIsSelectedAndVisible_data() { addRows(); }
    void theFirstMatchOfTheTypedTextIsSelectedAndVisible();
    void enterGoesToTheNextMatchAndShiftEnterToThePreviousMatch_data() { addRows(); }
    void enterGoesToTheNextMatchAndShiftEnterToThePreviousMatch();
    void keysInTheBarNeverReachTheDefaultButton_data() { addRows(); }
    void keysInTheBarNeverReachTheDefaultButton();
    void theButtonsAndF3GoToTheNextAndThePreviousMatch_data() { addRows(); }
    void theButtonsAndF3GoToTheNextAndThePreviousMatch();
    void theBarReportsThatTheTypedTextIsNotFound_data() { addRows(); }
    void theBarReportsThatTheTypedTextIsNotFound();
    void tabGoesFromTheTextThroughTheBarToTheButtons_data() { addRows(); }
    void tabGoesFromTheTextThroughTheBarToTheButtons();
    void escapeHidesTheBarAndReturnsTheFocus_data() { addRows(); }
    void escapeHidesTheBarAndReturnsTheFocus();
    void aMatchAtTheRightEndOfALongLineIsScrolledIntoView();
    void aSmallWindowBecomesWideEnoughForTheFieldWhenTheBarOpens();
};

void FindBarTest::theBarIsHiddenUntilItsKeyIsPressed()
{
    QFETCH(bool, inLabel);
    Searched dialog(inLabel);
    QVERIFY(!dialog.wasVisible);
    QVERIFY(!dialog.bar->isVisible());
    dialog.open();
    QVERIFY(dialog.bar->isVisible());
    QVERIFY(!dialog.next->isEnabled());
    QCOMPARE(dialog.field->accessibleName(), QString("Find"));
}

void FindBarTest::theFirstMatchOfTheTypedTextIsSelectedAndVisible()
{
    QFETCH(bool, inLabel);
    Searched dialog(inLabel);
    dialog.open();
    QCOMPARE(dialog.scrolled(), 0.0);
    QTest::keyClicks(dialog.field, "needle");
    QCOMPARE(dialog.selected(), QString("Needle"));
    // Qt computes the layout of a long text in several steps.
    QTRY_VERIFY(dialog.scrolled() > 0.95);
    dialog.field->clear();
    QTest::keyClicks(dialog.field, "line 200 <b>");
    QCOMPARE(dialog.selected(), QString("line 200 <b>"));
    QTRY_VERIFY(dialog.scrolled() > 0.4 && dialog.scrolled() < 0.6);
}

void FindBarTest::enterGoesToTheNextMatchAndShiftEnterToThePreviousMatch()
{
    QFETCH(bool, inLabel);
    Searched dialog(inLabel);
    dialog.open();
    QTest::keyClicks(dialog.field, "line 39");
    const QString text = manyLines();
    QList<int> places;
    for (int at = text.indexOf("line 39"); at >= 0; at = text.indexOf("line 39", at + 1)) {
        places << at;
    }
    QCOMPARE(places.size(), 11); // in line 39 and in the lines 390 to 399
    QCOMPARE(dialog.place(), places.at(0));
    for (int i = 1; i <= places.size(); ++i) {
        QTest::keyClick(dialog.field, Qt::Key_Return);
        QCOMPARE(dialog.place(), places.at(i % places.size()));
    }
    for (int i = places.size() - 1; i >= 0; --i) {
        QTest::keyClick(dialog.field, Qt::Key_Return, Qt::ShiftModifier);
        QCOMPARE(dialog.place(), places.at(i));
    }
}

void FindBarTest::keysInTheBarNeverReachTheDefaultButton()
{
    QFETCH(bool, inLabel);
    Searched dialog(inLabel);
    QSignalSpy clicks(dialog.ok, SIGNAL(clicked()));
    dialog.open();
    QTest::keyClick(dialog.field, Qt::Key_Return);
    QTest::keyClick(dialog.field, Qt::Key_Enter);
    QTest::keyClicks(dialog.field, "line 1");
    for (QWidget* each : {static_cast<QWidget*>(dialog.field), static_cast<QWidget*>(dialog.next),
                          static_cast<QWidget*>(dialog.previous)}) {
        each->setFocus();
        const int before = dialog.place();
        QTest::keyClick(each, Qt::Key_Return);
        QVERIFY(dialog.place() != before);
        QTest::keyClick(each, Qt::Key_Enter);
    }
    auto* close = dialog.bar->findChild<QToolButton*>();
    close->setFocus();
    QTest::keyClick(close, Qt::Key_Return);
    QVERIFY(!dialog.bar->isVisible());
    QVERIFY(dialog.isVisible());
    QCOMPARE(clicks.count(), 0);
}

void FindBarTest::theButtonsAndF3GoToTheNextAndThePreviousMatch()
{
    QFETCH(bool, inLabel);
    Searched dialog(inLabel);
    // If the bar has no text to find yet, F3 opens the bar.
    QTest::keyClick(&dialog, Qt::Key_F3);
    QTRY_VERIFY(dialog.field->hasFocus());
    QTest::keyClicks(dialog.field, "line 30");
    const QString text = manyLines();
    const int first = text.indexOf("line 30");
    const int second = text.indexOf("line 300");
    QCOMPARE(dialog.place(), first);
    QTest::mouseClick(dialog.next, Qt::LeftButton);
    QCOMPARE(dialog.place(), second);
    QTest::mouseClick(dialog.previous, Qt::LeftButton);
    QCOMPARE(dialog.place(), first);
    QTest::keyClick(&dialog, Qt::Key_F3);
    QCOMPARE(dialog.place(), second);
    QTest::keyClick(&dialog, Qt::Key_F3, Qt::ShiftModifier);
    QCOMPARE(dialog.place(), first);
}

void FindBarTest::theBarReportsThatTheTypedTextIsNotFound()
{
    QFETCH(bool, inLabel);
    Searched dialog(inLabel);
    dialog.open();
    const QColor usual = dialog.field->palette().color(QPalette::Base);
    QTest::keyClicks(dialog.field, "linex");
    QCOMPARE(dialog.result(), QString("Not found"));
    QCOMPARE(dialog.field->accessibleDescription(), QString("Not found"));
    QVERIFY(dialog.field->palette().color(QPalette::Base) != usual);
    QTest::keyClick(dialog.field, Qt::Key_Backspace);
    QCOMPARE(dialog.result(), QString());
    QCOMPARE(dialog.field->palette().color(QPalette::Base), usual);
}

void FindBarTest::tabGoesFromTheTextThroughTheBarToTheButtons()
{
    QFETCH(bool, inLabel);
    Searched dialog(inLabel);
    dialog.open();
    QTest::keyClicks(dialog.field, "line"); // the match enables the buttons
    QWidget* text = inLabel ? static_cast<QWidget*>(dialog.area) : dialog.edit;
    if (!inLabel) {
        dialog.edit->setTabChangesFocus(true);
    }
    text->setFocus();
    for (QWidget* next : {static_cast<QWidget*>(dialog.field), static_cast<QWidget*>(dialog.next),
                          static_cast<QWidget*>(dialog.previous),
                          static_cast<QWidget*>(dialog.bar->findChild<QToolButton*>()),
                          static_cast<QWidget*>(dialog.ok), text}) {
        QTest::keyClick(&dialog, Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), next);
    }
}

void FindBarTest::escapeHidesTheBarAndReturnsTheFocus()
{
    QFETCH(bool, inLabel);
    Searched dialog(inLabel);
    dialog.ok->setFocus();
    dialog.open();
    QTest::keyClick(dialog.field, Qt::Key_Escape);
    QVERIFY(!dialog.bar->isVisible());
    QVERIFY(dialog.isVisible());
    QVERIFY(dialog.ok->hasFocus());
    QTest::keyClick(dialog.ok, Qt::Key_Escape);
    QVERIFY(!dialog.isVisible());
}

void FindBarTest::aMatchAtTheRightEndOfALongLineIsScrolledIntoView()
{
    Searched dialog(true);
    dialog.label->setText("\tshort\n" + QString(300, 'x') + "wanted\n" + QString(400, 'y'));
    dialog.area->forceResize();
    dialog.open();
    QTest::keyClicks(dialog.field, "wanted");
    QCOMPARE(dialog.selected(), QString("wanted"));
    const double right =
        dialog.label->fontMetrics().size(Qt::TextSingleLine, QString(300, 'x') + "wanted").width();
    const int left = dialog.area->horizontalScrollBar()->value();
    QVERIFY(left > 0);
    QVERIFY(right > left && right < left + dialog.area->viewport()->width());
}

void FindBarTest::aSmallWindowBecomesWideEnoughForTheFieldWhenTheBarOpens()
{
    Searched dialog(true);
    dialog.resize(dialog.minimumSizeHint());
    dialog.open();
    const int letters = dialog.field->fontMetrics().horizontalAdvance(QString(15, 'n'));
    QTRY_VERIFY(dialog.field->width() >= letters);
    QVERIFY(dialog.rect().contains(dialog.bar->geometry()));
}

QTEST_MAIN(FindBarTest)
#include "FindBarTest.moc"
