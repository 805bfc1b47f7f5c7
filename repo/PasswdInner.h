// What the two masking edits are made of: the hidden widgets that hold the real texts, and how text travels
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

// The hidden widgets open what their masking edits drive them with. Assistive programs are not told their
// texts.
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

// A piece of a text with passwords on the clipboard: every program sees it masked, and only a masking edit of
// this process gets the real one.
class PasswdMimeData : public QMimeData
{
    Q_OBJECT

public:
    PasswdMimeData(const QString& masked, const QString& real);

    // The real text if there is one, else the plain text.
    static QString realText(const QMimeData* source);

private:
    QString real;
};

namespace PasswdInner {

// Keys that move the cursor or the selection and change nothing.
bool movesCursor(const QKeyEvent* event);
// A place in a text that is not between the two halves of one character.
int characterBoundary(const QString& text, int position);

// What has to be replaced in one text, and by how many characters of the other, to make them equal.
struct Difference
{
    Difference(const QString& from, const QString& to);

    int begin;
    int removed;
    int added;
};

// Where the cursor is, and where the selection was begun; both are the same when nothing is selected.
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

// --- The same for both kinds of edits, those that are seen and the hidden ones.

// One character for each place of the cursor.
QString text(const QLineEdit* edit);
QString text(const QTextEdit* edit);
// Makes the text that is seen another one, which nobody can undo.
void show(QLineEdit* edit, const QString& text);
void show(QTextEdit* edit, const QString& text);
// `text` is the whole new text, of which the difference is taken.
void replace(QLineEdit* edit, const Difference& difference, const QString& text);
void replace(QTextEdit* edit, const Difference& difference, const QString& text);

Selection selection(const QLineEdit* edit);
Selection selection(const QTextEdit* edit);
void select(QLineEdit* edit, const Selection& selection);
void select(QTextEdit* edit, const Selection& selection);
// From the cursor to the beginning or the end of a word.
void selectWordBefore(QLineEdit* edit);
void selectWordBefore(QTextEdit* edit);
void selectWordAfter(QLineEdit* edit);
void selectWordAfter(QTextEdit* edit);

// In place of the selection. What is inserted into a line is made one line.
void insert(QLineEdit* edit, const QString& text);
void insert(QTextEdit* edit, const QString& text);
void removeSelected(QLineEdit* edit);
void removeSelected(QTextEdit* edit);
// What comes now is undone by itself.
void separateUndo(QLineEdit* edit);
void separateUndo(QTextEdit* edit);

} // namespace PasswdInner

#endif
