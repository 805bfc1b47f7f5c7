// SPDX-License-Identifier: GPL-2.0-or-later

// Parts of the two masking edits: the hidden widgets that contain the real texts, and the clipboard data that
// transfers text between masking edits.
//
// All parts live on the graphical thread. The masking edits own the hidden widgets.

#ifndef REPO_PASSWDINNER_H
#define REPO_PASSWDINNER_H

#include <QLineEdit>
#include <QMimeData>
#include <QTextEdit>

#include <cstdlib>

class QKeyEvent;

// In the hidden widgets, the event functions that the masking edits call are public. Assistive programs
// cannot read the texts of the hidden widgets.
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

// A part of a text with passwords, for the clipboard. All programs see the masked text. Only the masking
// edits of this process can read the real text.
class PasswdMimeData : public QMimeData
{
    Q_OBJECT

public:
    PasswdMimeData(const QString& masked, const QString& real);

    // Returns the real text if the data come from a masking edit. Otherwise returns the plain text of the
    // data.
    static QString realText(const QMimeData* source);

private:
    QString real;
};

namespace PasswdInner {

// Returns true if the key moves the cursor or changes the selection, without changing the text.
bool movesCursor(const QKeyEvent* event);
// Returns `position`, or the next position if `position` would split a surrogate pair.
int characterBoundary(const QString& text, int position);

// The difference between two texts: one part, which starts at `begin` in both texts. The part has `removed`
// characters in the first text, and `added` characters in the second text.
struct Difference
{
    Difference(const QString& from, const QString& to);

    int begin;
    int removed;
    int added;
};

// The positions of the cursor and of the start of the selection. Both positions are equal if nothing is
// selected.
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

// --- Functions for line edits and text edits, both visible and hidden.

// Returns the text, with one character for each cursor position.
QString text(const QLineEdit* edit);
QString text(const QTextEdit* edit);
// Replaces the visible text. The user cannot undo this.
void show(QLineEdit* edit, const QString& text);
void show(QTextEdit* edit, const QString& text);
// Replaces the part of the text that `difference` describes. `text` is the complete new text.
void replace(QLineEdit* edit, const Difference& difference, const QString& text);
void replace(QTextEdit* edit, const Difference& difference, const QString& text);

Selection selection(const QLineEdit* edit);
Selection selection(const QTextEdit* edit);
void select(QLineEdit* edit, const Selection& selection);
void select(QTextEdit* edit, const Selection& selection);
// selectWordBefore() selects from the beginning of a word to the cursor, and selectWordAfter() from the
// cursor to the end of a word.
void selectWordBefore(QLineEdit* edit);
void selectWordBefore(QTextEdit* edit);
void selectWordAfter(QLineEdit* edit);
void selectWordAfter(QTextEdit* edit);

// Replaces the selection by the text. In a line edit, the text becomes one line.
void insert(QLineEdit* edit, const QString& text);
void insert(QTextEdit* edit, const QString& text);
void removeSelected(QLineEdit* edit);
void removeSelected(QTextEdit* edit);
// Starts a new undo step.
void separateUndo(QLineEdit* edit);
void separateUndo(QTextEdit* edit);

} // namespace PasswdInner

#endif
