// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/PasswdInner.h"

#include <QKeyEvent>
#include <QTextCursor>

#include <algorithm>
#include <iterator>

#include "repo/OneLineValidator.h"
#include "repo/PasswdAccessible.h"
#include "repo/PlainText.h"

PasswdInnerLineEdit::PasswdInnerLineEdit(QWidget* parent) : QLineEdit(parent)
{
    PasswdAccessible::install();
    setFocusPolicy(Qt::NoFocus);
    hide();
}

PasswdInnerTextEdit::PasswdInnerTextEdit(QWidget* parent) : QTextEdit(parent)
{
    PasswdAccessible::install();
    setAcceptRichText(false);
    setFocusPolicy(Qt::NoFocus);
    hide();
}

PasswdMimeData::PasswdMimeData(const QString& masked, const QString& realPiece) : real(realPiece)
{
    setText(masked);
}

QString PasswdMimeData::realText(const QMimeData* source)
{
    if (source == nullptr) {
        return QString();
    }
    const auto* own = qobject_cast<const PasswdMimeData*>(source);
    return own != nullptr ? own->real : source->text();
}

namespace PasswdInner {

bool movesCursor(const QKeyEvent* event)
{
    static const QKeySequence::StandardKey keys[] = {
        QKeySequence::MoveToNextChar,
        QKeySequence::MoveToPreviousChar,
        QKeySequence::MoveToNextWord,
        QKeySequence::MoveToPreviousWord,
        QKeySequence::MoveToNextLine,
        QKeySequence::MoveToPreviousLine,
        QKeySequence::MoveToNextPage,
        QKeySequence::MoveToPreviousPage,
        QKeySequence::MoveToStartOfLine,
        QKeySequence::MoveToEndOfLine,
        QKeySequence::MoveToStartOfBlock,
        QKeySequence::MoveToEndOfBlock,
        QKeySequence::MoveToStartOfDocument,
        QKeySequence::MoveToEndOfDocument,
        QKeySequence::SelectNextChar,
        QKeySequence::SelectPreviousChar,
        QKeySequence::SelectNextWord,
        QKeySequence::SelectPreviousWord,
        QKeySequence::SelectNextLine,
        QKeySequence::SelectPreviousLine,
        QKeySequence::SelectNextPage,
        QKeySequence::SelectPreviousPage,
        QKeySequence::SelectStartOfLine,
        QKeySequence::SelectEndOfLine,
        QKeySequence::SelectStartOfBlock,
        QKeySequence::SelectEndOfBlock,
        QKeySequence::SelectStartOfDocument,
        QKeySequence::SelectEndOfDocument,
        QKeySequence::SelectAll,
        QKeySequence::Deselect,
    };
    return std::any_of(std::begin(keys), std::end(keys),
                       [event](QKeySequence::StandardKey key) { return event->matches(key); });
}

int characterBoundary(const QString& text, int position)
{
    const bool within = position > 0 && position < text.size() && text.at(position).isLowSurrogate() &&
                        text.at(position - 1).isHighSurrogate();
    return within ? position + 1 : position;
}

Difference::Difference(const QString& from, const QString& to)
{
    const int shorter = std::min(from.size(), to.size());
    begin = 0;
    while (begin < shorter && from.at(begin) == to.at(begin)) {
        ++begin;
    }
    int same = 0;
    while (same < shorter - begin && from.at(from.size() - 1 - same) == to.at(to.size() - 1 - same)) {
        ++same;
    }
    removed = from.size() - begin - same;
    added = to.size() - begin - same;
}

QString text(const QLineEdit* edit)
{
    return edit->text();
}

QString text(const QTextEdit* edit)
{
    return PlainText::exact(edit->document());
}

void show(QLineEdit* edit, const QString& masked)
{
    edit->setText(masked);
}

// Shows the masked text. Replaces only the part that differs from the old text, because replacing the whole
// text would scroll the view.
void show(QTextEdit* edit, const QString& masked)
{
    replace(edit, Difference(text(edit), masked), masked);
}

void replace(QLineEdit* edit, const Difference& difference, const QString& whole)
{
    edit->setSelection(difference.begin, difference.removed);
    insert(edit, whole.mid(difference.begin, difference.added));
}

void replace(QTextEdit* edit, const Difference& difference, const QString& whole)
{
    QTextCursor cursor(edit->document());
    cursor.setPosition(difference.begin);
    cursor.setPosition(difference.begin + difference.removed, QTextCursor::KeepAnchor);
    cursor.insertText(whole.mid(difference.begin, difference.added));
}

Selection selection(const QLineEdit* edit)
{
    const int position = edit->cursorPosition();
    if (!edit->hasSelectedText()) {
        return {position, position};
    }
    const int begin = edit->selectionStart();
    return {begin == position ? begin + edit->selectedText().size() : begin, position};
}

Selection selection(const QTextEdit* edit)
{
    const QTextCursor cursor = edit->textCursor();
    return {cursor.anchor(), cursor.position()};
}

void select(QLineEdit* edit, const Selection& wanted)
{
    if (!(selection(edit) != wanted)) {
        return;
    }
    if (wanted.length() > 0) {
        edit->setSelection(wanted.anchor, wanted.position - wanted.anchor);
    } else {
        edit->deselect();
        edit->setCursorPosition(wanted.position);
    }
}

void select(QTextEdit* edit, const Selection& wanted)
{
    if (selection(edit) != wanted) {
        QTextCursor cursor = edit->textCursor();
        cursor.setPosition(wanted.anchor);
        cursor.setPosition(wanted.position, QTextCursor::KeepAnchor);
        edit->setTextCursor(cursor);
    }
    edit->ensureCursorVisible();
}

void selectWordBefore(QLineEdit* edit)
{
    edit->cursorWordBackward(true);
}

void selectWordBefore(QTextEdit* edit)
{
    edit->moveCursor(QTextCursor::PreviousWord, QTextCursor::KeepAnchor);
}

void selectWordAfter(QLineEdit* edit)
{
    edit->cursorWordForward(true);
}

void selectWordAfter(QTextEdit* edit)
{
    edit->moveCursor(QTextCursor::NextWord, QTextCursor::KeepAnchor);
}

void insert(QLineEdit* edit, const QString& piece)
{
    edit->insert(OneLineValidator::oneLine(piece));
}

void insert(QTextEdit* edit, const QString& piece)
{
    // Inserting an empty text would delete the selected text.
    if (!piece.isEmpty()) {
        edit->insertPlainText(piece);
    }
}

void removeSelected(QLineEdit* edit)
{
    edit->del();
}

void removeSelected(QTextEdit* edit)
{
    edit->textCursor().removeSelectedText();
}

// Moves the cursor, because QLineEdit then starts a new undo step.
void separateUndo(QLineEdit* edit)
{
    const int position = edit->cursorPosition();
    edit->setCursorPosition(position == 0 ? 1 : 0);
    edit->setCursorPosition(position);
}

// Does nothing, because QTextEdit starts a new undo step itself.
void separateUndo(QTextEdit*) {}

} // namespace PasswdInner
