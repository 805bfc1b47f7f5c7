#include "repo/PasswdTextEdit.h"

#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QStyle>
#include <QTextCursor>

#include "app/base/Fonts.h"
#include "repo/PasswdInner.h"
#include "repo/PlainText.h"

namespace {

void replace(QTextEdit* edit, const PasswdInner::Difference& difference, const QString& text)
{
    QTextCursor cursor(edit->document());
    cursor.setPosition(difference.begin);
    cursor.setPosition(difference.begin + difference.removed, QTextCursor::KeepAnchor);
    cursor.insertText(text.mid(difference.begin, difference.added));
}

void select(QTextEdit* edit, int anchor, int position)
{
    QTextCursor cursor = edit->textCursor();
    if (cursor.anchor() != anchor || cursor.position() != position) {
        cursor.setPosition(anchor);
        cursor.setPosition(position, QTextCursor::KeepAnchor);
        edit->setTextCursor(cursor);
    }
}

} // namespace

PasswdTextEdit::PasswdTextEdit(QRegExp const& expression, QWidget* parent)
    : PasswdTextEdit(expression, -1, -1, parent)
{
}

PasswdTextEdit::PasswdTextEdit(QRegExp const& expression, int columnCount, int rowCount, QWidget* parent)
    : HTextEdit(columnCount, rowCount, parent), inner(new PasswdInnerTextEdit(parent)), showing(false)
{
    mask.hideEverywhere(expression);
    setFont(Fonts::makeFixed(font()));
    setAcceptDrops(false);
    setAcceptRichText(false);
    setContextMenuPolicy(Qt::NoContextMenu);
    setInputMethodHints(inputMethodHints() | Qt::ImhSensitiveData | Qt::ImhNoPredictiveText |
                        Qt::ImhNoAutoUppercase);
    // The hidden edit knows what there is to be undone.
    setUndoRedoEnabled(false);
    inner->setFont(font());
    inner->setGeometry(geometry());
    connect(inner, SIGNAL(textChanged()), this, SLOT(handleInnerTextChanged()));
    connect(this, SIGNAL(textChanged()), this, SLOT(handleOwnTextChanged()));
}

PasswdTextEdit::~PasswdTextEdit()
{
    // A parent that is being destroyed may have destroyed it first.
    delete inner;
}

void PasswdTextEdit::maskEverywhere(QRegExp const& expression)
{
    mask.hideEverywhere(expression);
    showText();
}

void PasswdTextEdit::setRealPlainText(QString const& text)
{
    inner->setPlainText(text);
    takeSelection();
}

QString PasswdTextEdit::realPlainText() const
{
    return PlainText::exact(inner->document());
}

QChar PasswdTextEdit::passwordCharacter() const
{
    return QChar(style()->styleHint(QStyle::SH_LineEdit_PasswordCharacter, nullptr, this));
}

void PasswdTextEdit::handleInnerTextChanged()
{
    showText();
    Q_EMIT realTextChanged();
}

// Whoever sets the text of this widget, an assistive program for instance, means the real text.
void PasswdTextEdit::handleOwnTextChanged()
{
    if (showing) {
        return;
    }
    const QString text = PlainText::exact(document());
    const PasswdInner::Difference difference(shown, text);
    shown = text;
    if (difference.removed != 0 || difference.added != 0) {
        replace(inner, difference, text);
    }
}

void PasswdTextEdit::showText()
{
    const QScopedValueRollback<bool> guard(showing, true);
    const QString masked = mask.masked(realPlainText(), passwordCharacter());
    const PasswdInner::Difference difference(PlainText::exact(document()), masked);
    shown = masked;
    if (difference.removed != 0 || difference.added != 0) {
        replace(this, difference, masked);
    }
}

void PasswdTextEdit::passSelection()
{
    const QString real = realPlainText();
    const QTextCursor cursor = textCursor();
    select(inner, PasswdInner::characterBoundary(real, cursor.anchor()),
           PasswdInner::characterBoundary(real, cursor.position()));
}

void PasswdTextEdit::takeSelection()
{
    const QTextCursor cursor = inner->textCursor();
    select(this, cursor.anchor(), cursor.position());
    ensureCursorVisible();
}

void PasswdTextEdit::removeSelection()
{
    if (textCursor().hasSelection()) {
        passSelection();
        inner->textCursor().removeSelectedText();
        takeSelection();
    }
}

QMimeData* PasswdTextEdit::createMimeDataFromSelection() const
{
    const QTextCursor cursor = textCursor();
    const int begin = cursor.selectionStart();
    const int length = cursor.selectionEnd() - begin;
    return new PasswdMimeData(shown.mid(begin, length), realPlainText().mid(begin, length));
}

// Pasting by a key and by the middle button both come by here.
void PasswdTextEdit::insertFromMimeData(const QMimeData* source)
{
    passSelection();
    inner->insertPlainText(PasswdMimeData::realText(source));
    takeSelection();
}

// The keys that select and then remove are taken apart here: what they remove is what the masked text shows.
bool PasswdTextEdit::editsSelection(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Cut)) {
        copy();
    } else if (event->matches(QKeySequence::DeleteStartOfWord)) {
        if (!textCursor().hasSelection()) {
            moveCursor(QTextCursor::PreviousWord, QTextCursor::KeepAnchor);
        }
    } else if (event->matches(QKeySequence::DeleteEndOfWord)) {
        if (!textCursor().hasSelection()) {
            moveCursor(QTextCursor::NextWord, QTextCursor::KeepAnchor);
        }
    } else {
        return false;
    }
    removeSelection();
    return true;
}

void PasswdTextEdit::keyPressEvent(QKeyEvent* event)
{
    if (PasswdInner::movesCursor(event) || PasswdInner::copies(event) ||
        event->matches(QKeySequence::Paste)) {
        HTextEdit::keyPressEvent(event);
        passSelection();
    } else if (!editsSelection(event)) {
        passSelection();
        inner->keyPressEvent(event);
        takeSelection();
    }
}

void PasswdTextEdit::keyReleaseEvent(QKeyEvent* event)
{
    inner->keyReleaseEvent(event);
    HTextEdit::keyReleaseEvent(event);
}

void PasswdTextEdit::mousePressEvent(QMouseEvent* event)
{
    // A press on the selection would begin to drag it away.
    const QTextCursor pressed = cursorForPosition(event->pos());
    const QTextCursor cursor = textCursor();
    if (event->button() == Qt::LeftButton && !(event->modifiers() & Qt::ShiftModifier) &&
        pressed.position() >= cursor.selectionStart() && pressed.position() <= cursor.selectionEnd()) {
        setTextCursor(pressed);
    }
    HTextEdit::mousePressEvent(event);
    passSelection();
}

void PasswdTextEdit::mouseReleaseEvent(QMouseEvent* event)
{
    HTextEdit::mouseReleaseEvent(event);
    passSelection();
}

void PasswdTextEdit::mouseDoubleClickEvent(QMouseEvent* event)
{
    HTextEdit::mouseDoubleClickEvent(event);
    passSelection();
}

// What is being composed is shown here, what is composed goes to the hidden edit.
void PasswdTextEdit::inputMethodEvent(QInputMethodEvent* event)
{
    if (!event->commitString().isEmpty() || event->replacementLength() > 0 ||
        !event->preeditString().isEmpty()) {
        QInputMethodEvent nothingComposed;
        HTextEdit::inputMethodEvent(&nothingComposed);
        removeSelection();
        passSelection();
        QInputMethodEvent commit;
        commit.setCommitString(event->commitString(), event->replacementStart(), event->replacementLength());
        inner->inputMethodEvent(&commit);
        takeSelection();
    }
    QString composed = event->preeditString();
    if (mask.hides(realPlainText(), textCursor().position())) {
        composed.fill(passwordCharacter());
    }
    QInputMethodEvent preedit(composed, event->attributes());
    HTextEdit::inputMethodEvent(&preedit);
    event->accept();
}

bool PasswdTextEdit::event(QEvent* event)
{
    const bool handled = HTextEdit::event(event);
    if (inner == nullptr) {
        return handled;
    }
    switch (event->type()) {
    case QEvent::Move:
    case QEvent::Resize:
        inner->setGeometry(geometry());
        break;
    case QEvent::ParentChange:
        inner->setParent(parentWidget());
        inner->setGeometry(geometry());
        break;
    case QEvent::FontChange:
        inner->setFont(font());
        break;
    case QEvent::StyleChange:
        showText();
        break;
    default:
        break;
    }
    return handled;
}
