// SPDX-License-Identifier: GPL-2.0-or-later

// The parts of the two masking edits: the hidden widgets with the real texts, and the transfer of text
// between masking edits.
//
// Graphical thread. The masking edits own the hidden widgets.

#ifndef REPO_PASSWDINNER_H
#define REPO_PASSWDINNER_H

#include <QLineEdit>
#include <QMimeData>
#include <QTextEdit>

#include <cstdlib>

class QKeyEvent;

// The hidden widgets make public the functions that their masking edits need. Assistive programs do not get
// their texts.
class PasswdInnerLineEdit : public QLineEdit
{
    Q_OBJECT

public:
    explicit PasswdInnerLineEdit(QWidget* parent = nullptr);

    using QLineEdit::inputMethodEvent;
    using QLineEdit::keyPressEvent;
    using QLineEdit::keyReleaseEvent;
};

class PasswdInnerTextEdit : public QTextEdit
{
    Q_OBJECT

public:
    explicit PasswdInnerTextEdit(QWidget* parent = nullptr);

    using QTextEdit::inputMethodEvent;
    using QTextEdit::keyPressEvent;
    using QTextEdit::keyReleaseEvent;
};

// A part of a text with passwords on the clipboard. Every program sees the masked text; only the masking
// edits of this process get the real text.
class PasswdMimeData : public QMimeData
{
    Q_OBJECT

public:
    PasswdMimeData(const QString& masked, const QString& real);

    // The real text if the source has one, else the plain text.
    static QString realText(const QMimeData* source);

private:
    QString real;
};

namespace PasswdInner {

// True for keys that move the cursor or the selection without a change of the text.
bool movesCursor(const QKeyEvent* event);
// The nearest position that is not between the two halves of one character.
int characterBoundary(const QString& text, int position);

// The range to replace in one text, and the number of characters from the other text, to make both texts
// equal.
struct Difference
{
    Difference(const QString& from, const QString& to);

    int begin;
    int removed;
    int added;
};

// The positions of the cursor and of the start of the selection. Both are equal if nothing is selected.
struct Selection
{
    int begin() const { return qMin(anchor, position); }
    int length() const { return std::abs(anchor - position); }
    bool operator!=(const Selection& other) const
    {
        return anchor != other.anchor || position != other.position;
    }

    int anchor;
    int position;
};

// --- The same functions for both kinds of edits, visible and hidden.

// The text with one character for each cursor position.
QString text(const QLineEdit* edit);
QString text(const QTextEdit* edit);
// Replaces the visible text. The user cannot undo this.
void show(QLineEdit* edit, const QString& text);
void show(QTextEdit* edit, const QString& text);
// Applies the difference; `text` is the whole new text.
void replace(QLineEdit* edit, const Difference& difference, const QString& text);
void replace(QTextEdit* edit, const Difference& difference, const QString& text);

Selection selection(const QLineEdit* edit);
Selection selection(const QTextEdit* edit);
void select(QLineEdit* edit, const Selection& selection);
void select(QTextEdit* edit, const Selection& selection);
// Selects from the cursor to the beginning or the end of a word.
void selectWordBefore(QLineEdit* edit);
void selectWordBefore(QTextEdit* edit);
void selectWordAfter(QLineEdit* edit);
void selectWordAfter(QTextEdit* edit);

// Replaces the selection. A line edit gets the text as one line.
void insert(QLineEdit* edit, const QString& text);
void insert(QTextEdit* edit, const QString& text);
void removeSelected(QLineEdit* edit);
void removeSelected(QTextEdit* edit);
// Starts a new undo step.
void separateUndo(QLineEdit* edit);
void separateUndo(QTextEdit* edit);

} // namespace PasswdInner

#endif
