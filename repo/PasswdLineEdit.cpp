#include "repo/PasswdLineEdit.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QStyle>

#include <limits>

#include "app/base/Fonts.h"
#include "repo/OneLineValidator.h"
#include "repo/PasswdInner.h"

PasswdLineEdit::PasswdLineEdit(QRegExp const& expression, QWidget* parent)
    : QLineEdit(parent), inner(new PasswdInnerLineEdit(parent)), showing(false)
{
    mask.hideInWholeText(expression);
    setFont(Fonts::makeFixed(font()));
    setAcceptDrops(false);
    setContextMenuPolicy(Qt::NoContextMenu);
    setInputMethodHints(Qt::ImhSensitiveData | Qt::ImhNoPredictiveText | Qt::ImhNoAutoUppercase);
    setMaxLength(std::numeric_limits<int>::max());
    inner->setMaxLength(maxLength());
    inner->setFont(font());
    inner->setGeometry(geometry());
    connect(inner, SIGNAL(textChanged(const QString&)), this, SLOT(handleInnerTextChanged()));
    connect(this, SIGNAL(textChanged(const QString&)), this, SLOT(handleOwnTextChanged(const QString&)));
}

PasswdLineEdit::~PasswdLineEdit()
{
    // A parent that is being destroyed may have destroyed it first.
    delete inner;
}

void PasswdLineEdit::maskEverywhere(QRegExp const& expression)
{
    mask.hideEverywhere(expression);
    showText();
}

void PasswdLineEdit::setRealText(QString const& text)
{
    inner->setText(text);
    takeSelection();
}

QString PasswdLineEdit::realText() const
{
    return inner->text();
}

void PasswdLineEdit::handleInnerTextChanged()
{
    showText();
    Q_EMIT realTextChanged(inner->text());
}

// Whoever sets the text of this widget, an assistive program for instance, means the real text.
void PasswdLineEdit::handleOwnTextChanged(const QString& text)
{
    if (showing) {
        return;
    }
    const PasswdInner::Difference difference(shown, text);
    shown = text;
    inner->setSelection(difference.begin, difference.removed);
    inner->insert(text.mid(difference.begin, difference.added));
    takeSelection();
}

void PasswdLineEdit::showText()
{
    const QScopedValueRollback<bool> guard(showing, true);
    const QChar character = QChar(style()->styleHint(QStyle::SH_LineEdit_PasswordCharacter, nullptr, this));
    shown = mask.masked(inner->text(), character);
    if (text() != shown) {
        setText(shown);
    }
    takeSelection();
}

void PasswdLineEdit::passSelection()
{
    const QString real = inner->text();
    const int position = PasswdInner::characterBoundary(real, cursorPosition());
    int anchor = position;
    if (hasSelectedText()) {
        const int begin = selectionStart();
        const int other = begin == cursorPosition() ? begin + selectedText().size() : begin;
        anchor = PasswdInner::characterBoundary(real, other);
    }
    const int begin = qMin(anchor, position);
    const int length = qAbs(anchor - position);
    const bool sameSelection =
        inner->hasSelectedText() ? inner->selectionStart() == begin && inner->selectedText().size() == length
                                 : length == 0;
    // Going where it is already would split what is undone at once.
    if (sameSelection && inner->cursorPosition() == position) {
        return;
    }
    separateUndo();
    if (length > 0) {
        inner->setSelection(anchor, position - anchor);
    } else {
        inner->deselect();
        inner->setCursorPosition(position);
    }
}

void PasswdLineEdit::takeSelection()
{
    const int position = inner->cursorPosition();
    const int begin = inner->selectionStart();
    if (begin >= 0 && inner->hasSelectedText()) {
        const int length = inner->selectedText().size();
        if (begin == position) {
            setSelection(begin + length, -length);
        } else {
            setSelection(begin, length);
        }
        return;
    }
    if (hasSelectedText()) {
        deselect();
    }
    if (cursorPosition() != position) {
        setCursorPosition(position);
    }
}

void PasswdLineEdit::copySelection(int clipboardMode)
{
    if (hasSelectedText()) {
        const QString real = inner->text().mid(selectionStart(), selectedText().size());
        QGuiApplication::clipboard()->setMimeData(new PasswdMimeData(selectedText(), real),
                                                  static_cast<QClipboard::Mode>(clipboardMode));
    }
}

void PasswdLineEdit::removeSelection()
{
    if (hasSelectedText()) {
        passSelection();
        inner->del();
        takeSelection();
    }
}

// Moving the cursor away and back does it.
void PasswdLineEdit::separateUndo()
{
    const int position = inner->cursorPosition();
    inner->setCursorPosition(position == 0 ? 1 : 0);
    inner->setCursorPosition(position);
}

void PasswdLineEdit::insertReal(const QString& text)
{
    separateUndo();
    passSelection();
    inner->insert(OneLineValidator::oneLine(text));
    separateUndo();
    takeSelection();
}

// The keys that select and then remove are taken apart here: what they remove is what the masked text shows,
// and what they copy is masked.
bool PasswdLineEdit::editsSelection(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Cut)) {
        copySelection(QClipboard::Clipboard);
    } else if (event->matches(QKeySequence::DeleteStartOfWord)) {
        if (!hasSelectedText()) {
            cursorWordBackward(true);
        }
    } else if (event->matches(QKeySequence::DeleteEndOfWord)) {
        if (!hasSelectedText()) {
            cursorWordForward(true);
        }
    } else if (event->matches(QKeySequence::DeleteEndOfLine)) {
        setSelection(cursorPosition(), text().size() - cursorPosition());
        copySelection(QClipboard::Clipboard);
    } else if (event->matches(QKeySequence::DeleteCompleteLine)) {
        selectAll();
        copySelection(QClipboard::Clipboard);
    } else {
        return false;
    }
    removeSelection();
    return true;
}

void PasswdLineEdit::keyPressEvent(QKeyEvent* event)
{
    if (PasswdInner::movesCursor(event)) {
        QLineEdit::keyPressEvent(event);
        passSelection();
    } else if (PasswdInner::copies(event)) {
        copySelection(QClipboard::Clipboard);
    } else if (event->matches(QKeySequence::Paste)) {
        insertReal(PasswdMimeData::realText(QGuiApplication::clipboard()->mimeData()));
    } else if (!editsSelection(event)) {
        passSelection();
        inner->keyPressEvent(event);
        takeSelection();
    }
}

void PasswdLineEdit::keyReleaseEvent(QKeyEvent* event)
{
    inner->keyReleaseEvent(event);
    QLineEdit::keyReleaseEvent(event);
}

void PasswdLineEdit::mousePressEvent(QMouseEvent* event)
{
    QLineEdit::mousePressEvent(event);
    passSelection();
}

void PasswdLineEdit::mouseReleaseEvent(QMouseEvent* event)
{
    const bool hasSelectionClipboard = QGuiApplication::clipboard()->supportsSelection();
    if (event->button() == Qt::MiddleButton) {
        if (hasSelectionClipboard) {
            deselect();
            insertReal(
                PasswdMimeData::realText(QGuiApplication::clipboard()->mimeData(QClipboard::Selection)));
        }
        return;
    }
    QLineEdit::mouseReleaseEvent(event);
    if (hasSelectionClipboard && event->button() == Qt::LeftButton) {
        copySelection(QClipboard::Selection);
    }
    passSelection();
}

void PasswdLineEdit::mouseDoubleClickEvent(QMouseEvent* event)
{
    QLineEdit::mouseDoubleClickEvent(event);
    passSelection();
}

// What is being composed is shown here, what is composed goes to the hidden edit.
void PasswdLineEdit::inputMethodEvent(QInputMethodEvent* event)
{
    if (!event->commitString().isEmpty() || event->replacementLength() > 0 ||
        !event->preeditString().isEmpty()) {
        QInputMethodEvent nothingComposed;
        QLineEdit::inputMethodEvent(&nothingComposed);
        removeSelection();
        passSelection();
        QInputMethodEvent commit;
        commit.setCommitString(event->commitString(), event->replacementStart(), event->replacementLength());
        inner->inputMethodEvent(&commit);
        takeSelection();
    }
    QString composed = event->preeditString();
    if (mask.hides(inner->text(), cursorPosition())) {
        composed.fill(QChar(style()->styleHint(QStyle::SH_LineEdit_PasswordCharacter, nullptr, this)));
    }
    QInputMethodEvent preedit(composed, event->attributes());
    QLineEdit::inputMethodEvent(&preedit);
    event->accept();
}

bool PasswdLineEdit::event(QEvent* event)
{
    const bool handled = QLineEdit::event(event);
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
