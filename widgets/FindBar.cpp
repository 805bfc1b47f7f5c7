// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/FindBar.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
#include <QStyle>
#include <QTextCursor>
#include <QTextEdit>
#include <QToolButton>

#include "widgets/ExpressionEdit.h"
#include "widgets/Metrics.h"
#include "widgets/PlainLabel.h"

namespace {

// Makes a widget show its selection in the same colour with and without the focus. This is necessary because
// the find bar has the focus while it selects matches.
void keepSelectionVisible(QWidget* widget)
{
    QPalette palette;
    for (const QPalette::ColorRole role : {QPalette::Highlight, QPalette::HighlightedText}) {
        palette.setBrush(QPalette::Inactive, role, widget->palette().brush(QPalette::Active, role));
    }
    widget->setPalette(palette);
}

} // namespace

class FindBar::Text
{
public:
    Text() = default;
    virtual ~Text() = default;
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;

    // The widget that shows the text.
    virtual QWidget* widget() const = 0;
    virtual QString contents() const = 0;
    // Returns the start of the selection. If nothing is selected, returns the position of the cursor.
    virtual int position() const = 0;
    // Returns whether any characters are selected.
    virtual bool hasSelection() const = 0;
    // Selects a match and scrolls to it.
    virtual void select(int start, int length) = 0;
};

class FindBar::EditText : public FindBar::Text
{
public:
    explicit EditText(QTextEdit* searched) : edit(searched) { keepSelectionVisible(edit); }

    QWidget* widget() const override { return edit; }
    QString contents() const override { return edit->toPlainText(); }
    int position() const override { return edit->textCursor().selectionStart(); }
    bool hasSelection() const override { return edit->textCursor().hasSelection(); }
    void select(int start, int length) override
    {
        QTextCursor cursor = edit->textCursor();
        cursor.setPosition(start);
        cursor.setPosition(start + length, QTextCursor::KeepAnchor);
        edit->setTextCursor(cursor);
        edit->ensureCursorVisible();
    }

private:
    QTextEdit* edit;
};

class FindBar::LabelText : public FindBar::Text
{
public:
    LabelText(QLabel* searched, QScrollArea* around) : label(searched), area(around)
    {
        keepSelectionVisible(label);
    }

    QWidget* widget() const override { return label; }
    QString contents() const override { return label->text(); }
    int position() const override { return qMax(label->selectionStart(), 0); }
    bool hasSelection() const override { return label->hasSelectedText(); }
    void select(int start, int length) override
    {
        label->setSelection(start, length);
        const QString before = label->text().left(start);
        const int row = before.count(QLatin1Char('\n'));
        const QString line = before.mid(before.lastIndexOf(QLatin1Char('\n')) + 1);
        const QFontMetrics metrics = label->fontMetrics();
        const QString match = label->text().mid(start, length);
        const auto width = [&metrics](const QString& part) {
            return metrics.size(Qt::TextSingleLine | Qt::TextExpandTabs, part).width();
        };
        // With some fonts, the lines of the label are higher than the line spacing of the font.
        const int lines = label->text().count(QLatin1Char('\n')) + 1;
        const double height = static_cast<double>(label->sizeHint().height()) / lines;
        const int top = qRound(row * height);
        const int bottom = qRound((row + 1) * height);
        const int right = width(line) + width(match);
        const int margin = bottom - top;
        // Show the end of the match first, then its beginning. If the match is wider than the area, the
        // beginning stays visible.
        area->ensureVisible(right, bottom, margin, margin);
        area->ensureVisible(width(line), top, margin, margin);
    }

private:
    QLabel* label;
    QScrollArea* area;
};

FindBar::FindBar(QTextEdit* edit, QWidget* window) : FindBar(std::make_unique<EditText>(edit), window) {}

FindBar::FindBar(QLabel* label, QScrollArea* area, QWidget* window)
    : FindBar(std::make_unique<LabelText>(label, area), window)
{
}

FindBar::FindBar(std::unique_ptr<Text> searched, QWidget* window)
    : QWidget(window), text(std::move(searched)), field(nullptr), nextButton(nullptr),
      previousButton(nullptr), result(nullptr)
{
    hide();
    const auto addKey = [this, window](const QKeySequence& key, const char* slot) {
        connect(new QShortcut(key, window), SIGNAL(activated()), this, slot);
    };
    addKey(Qt::CTRL + Qt::Key_F, SLOT(open()));
    addKey(Qt::Key_F3, SLOT(findNext()));
    addKey(Qt::SHIFT + Qt::Key_F3, SLOT(findPrevious()));
}

FindBar::~FindBar() = default;

void FindBar::createContents()
{
    field = new ExpressionEdit;
    nextButton = new QPushButton(tr("&Next"));
    previousButton = new QPushButton(tr("&Previous"));
    result = new PlainLabel;
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    // A small window becomes wider instead of squeezing the field.
    field->setMinimumWidth(20 * Metrics::columnWidth(field->fontMetrics()));
    field->setAccessibleName(tr("Find"));
    field->setPlaceholderText(tr("Find"));
    row->addWidget(field, 1);
    nextButton->setToolTip(tr("Go to the next match (F3)"));
    previousButton->setToolTip(tr("Go to the previous match (Shift+F3)"));
    row->addWidget(nextButton);
    row->addWidget(previousButton);
    row->addWidget(result);
    auto* close = new QToolButton;
    close->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton, nullptr, this));
    close->setAutoRaise(true);
    close->setAccessibleName(tr("Close the Find bar"));
    close->setToolTip(tr("Close the Find bar"));
    close->setFocusPolicy(Qt::TabFocus);
    row->addWidget(close);
    for (QPushButton* button : {nextButton, previousButton}) {
        button->setAutoDefault(false);
        button->setEnabled(false);
    }

    // By default, new widgets are at the end of the tab order. Put the widgets of the bar after the text,
    // because the bar is below the text.
    QWidget* previous = text->widget();
    for (QWidget* next : {static_cast<QWidget*>(field), static_cast<QWidget*>(nextButton),
                          static_cast<QWidget*>(previousButton), static_cast<QWidget*>(close)}) {
        setTabOrder(previous, next);
        previous = next;
    }

    connect(field, SIGNAL(textChanged(const QString&)), this, SLOT(findTyped()));
    connect(nextButton, SIGNAL(clicked()), this, SLOT(findNext()));
    connect(previousButton, SIGNAL(clicked()), this, SLOT(findPrevious()));
    connect(close, SIGNAL(clicked()), this, SLOT(dismiss()));
}

void FindBar::open()
{
    QWidget* focused = QApplication::focusWidget();
    if (focused != nullptr && !isAncestorOf(focused)) {
        focusBefore = focused;
    }
    if (field == nullptr) {
        createContents();
    }
    show();
    field->setFocus(Qt::ShortcutFocusReason);
    field->selectAll();
}

void FindBar::dismiss()
{
    if (focusBefore != nullptr) {
        focusBefore->setFocus();
    }
    hide();
}

void FindBar::findTyped()
{
    const bool any = !field->text().isEmpty();
    nextButton->setEnabled(any);
    previousButton->setEnabled(any);
    if (any) {
        find(text->position(), false);
    } else {
        showFound(true);
    }
}

void FindBar::findNext()
{
    if (field == nullptr || field->text().isEmpty()) {
        open();
        return;
    }
    find(text->position() + (text->hasSelection() ? 1 : 0), false);
}

void FindBar::findPrevious()
{
    if (field == nullptr || field->text().isEmpty()) {
        open();
        return;
    }
    find(text->position() - 1, true);
}

void FindBar::find(int from, bool backward)
{
    const QString contents = text->contents();
    const QString& wanted = field->text();
    int found = -1;
    if (!backward) {
        found = contents.indexOf(wanted, from, Qt::CaseInsensitive);
        if (found < 0) {
            found = contents.indexOf(wanted, 0, Qt::CaseInsensitive);
        }
    } else {
        // Do not pass a negative position: QString counts it from the end of the text.
        found = from >= 0 ? contents.lastIndexOf(wanted, from, Qt::CaseInsensitive) : -1;
        if (found < 0) {
            found = contents.lastIndexOf(wanted, -1, Qt::CaseInsensitive);
        }
    }
    if (found >= 0) {
        text->select(found, wanted.size());
    }
    showFound(found >= 0);
}

void FindBar::showFound(bool found)
{
    field->showValid(found);
    result->setText(found ? QString() : tr("Not found"));
    field->setAccessibleDescription(result->text());
}

void FindBar::keyPressEvent(QKeyEvent* event)
{
    // Never pass Escape or Enter on to the window: Enter would press the window's default button, which may
    // start a transaction.
    switch (event->key()) {
    case Qt::Key_Escape:
        dismiss();
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (auto* button = qobject_cast<QAbstractButton*>(QApplication::focusWidget())) {
            button->click();
        } else if (event->modifiers().testFlag(Qt::ShiftModifier)) {
            findPrevious();
        } else {
            findNext();
        }
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    event->accept();
}
