// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/PasswdLineEdit.h"

#include <limits>

PasswdLineEdit::PasswdLineEdit(const QRegExp& expression, QWidget* parent) : PasswdEdit(parent)
{
    mask.hideInWholeText(expression);
    setMaxLength(std::numeric_limits<int>::max());
    inner->setMaxLength(maxLength());
    connect(inner, SIGNAL(textChanged(const QString&)), this, SLOT(handleInnerTextChanged()));
    connect(this, SIGNAL(textChanged(const QString&)), this, SLOT(handleOwnTextChanged()));
}

void PasswdLineEdit::setRealText(const QString& text)
{
    inner->setText(text);
    showRealSelection();
}

QString PasswdLineEdit::realText() const
{
    return real();
}

void PasswdLineEdit::handleInnerTextChanged()
{
    showText();
    showRealSelection();
    Q_EMIT realTextChanged(real());
}

void PasswdLineEdit::handleOwnTextChanged()
{
    applyVisibleText();
}

bool PasswdLineEdit::selectForRemoval(QKeyEvent* event)
{
    if (event->matches(QKeySequence::DeleteEndOfLine)) {
        setSelection(cursorPosition(), text().size() - cursorPosition());
    } else if (event->matches(QKeySequence::DeleteCompleteLine)) {
        selectAll();
    } else {
        return PasswdEdit::selectForRemoval(event);
    }
    copySelection(QClipboard::Clipboard);
    return true;
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
    PasswdEdit::mouseReleaseEvent(event);
    if (hasSelectionClipboard && event->button() == Qt::LeftButton) {
        copySelection(QClipboard::Selection);
    }
}
