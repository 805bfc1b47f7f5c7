// What the two masking edits are made of: the hidden widgets that hold the real texts, and how text travels
// between masking edits.
//
// Graphical thread. The masking edits own the hidden widgets.

#ifndef REPO_PASSWDINNER_H
#define REPO_PASSWDINNER_H

#include <QLineEdit>
#include <QMimeData>
#include <QTextEdit>

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
// Keys that bring the selection to the clipboard, and leave the text alone.
bool copies(const QKeyEvent* event);
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

} // namespace PasswdInner

#endif
