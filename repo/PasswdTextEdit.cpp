// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/PasswdTextEdit.h"

#include <QTextCursor>

PasswdTextEdit::PasswdTextEdit(const QRegExp& expression, QWidget* parent)
    : PasswdTextEdit(expression, -1, -1, parent)
{
}

PasswdTextEdit::PasswdTextEdit(const QRegExp& expression, int columnCount, int rowCount, QWidget* parent)
    : PasswdTextEdit(PasswdMask(), columnCount, rowCount, parent)
{
    mask.hideEverywhere(expression);
}

PasswdTextEdit::PasswdTextEdit(Credentials::Text kind, int columnCount, int rowCount, QWidget* parent)
    : PasswdTextEdit(PasswdMask(kind), columnCount, rowCount, parent)
{
}

PasswdTextEdit::PasswdTextEdit(const PasswdMask& initialMask, int columnCount, int rowCount, QWidget* parent)
    : PasswdEdit(parent, columnCount, rowCount)
{
    mask = initialMask;
    setAcceptRichText(false);
    // The hidden edit stores the real text and its undo steps, so the visible edit stores no undo steps.
    setUndoRedoEnabled(false);
    connect(inner, SIGNAL(textChanged()), this, SLOT(handleInnerTextChanged()));
    connect(this, SIGNAL(textChanged()), this, SLOT(handleOwnTextChanged()));
}

void PasswdTextEdit::setRealPlainText(const QString& text)
{
    inner->setPlainText(text);
    showRealSelection();
}

QString PasswdTextEdit::realPlainText() const
{
    return real();
}

void PasswdTextEdit::handleInnerTextChanged()
{
    showText();
    Q_EMIT realTextChanged();
}

void PasswdTextEdit::handleOwnTextChanged()
{
    applyVisibleText();
}

QMimeData* PasswdTextEdit::createMimeDataFromSelection() const
{
    return makeMimeData();
}

void PasswdTextEdit::insertFromMimeData(const QMimeData* source)
{
    insertReal(PasswdMimeData::realText(source));
}

void PasswdTextEdit::mousePressEvent(QMouseEvent* event)
{
    // Clear the selection before QTextEdit sees a press inside the selection. Otherwise QTextEdit would start
    // to drag the selected text.
    const QTextCursor pressed = cursorForPosition(event->pos());
    const QTextCursor cursor = textCursor();
    if (event->button() == Qt::LeftButton && !(event->modifiers() & Qt::ShiftModifier) &&
        pressed.position() >= cursor.selectionStart() && pressed.position() <= cursor.selectionEnd()) {
        setTextCursor(pressed);
    }
    PasswdEdit::mousePressEvent(event);
}
