// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HTextEdit.h"

#include <QApplication>
#include <QFocusEvent>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTextBlockFormat>
#include <QTextCursor>

#include "widgets/Metrics.h"

HTextEdit::HTextEdit(QWidget* parent) : HTextEdit(-1, -1, parent) {}

HTextEdit::HTextEdit(int columnCount, int rowCount, QWidget* parent)
    : QTextEdit(parent), columns(columnCount), rows(rowCount)
{
}

QSize HTextEdit::sizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    QSize hint = QTextEdit::sizeHint();
    if (columns != -1) {
        hint.setWidth(2 * frameWidth() + columns * Metrics::columnWidth(metrics));
    }
    if (rows != -1) {
        hint.setHeight(2 * frameWidth() + rows * metrics.lineSpacing());
    }
    return hint.boundedTo(Metrics::maxWindowSize());
}

void HTextEdit::appendCompact(const QString& text)
{
    append(text);
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    cursor.movePosition(QTextCursor::End);
    QTextBlockFormat format = cursor.blockFormat();
    format.setTopMargin(0);
    format.setBottomMargin(0);
    cursor.setBlockFormat(format);
    cursor.endEditBlock();
}

void HTextEdit::focusOutEvent(QFocusEvent* event)
{
    const QWidget* popup = QApplication::activePopupWidget();
    const bool inOwnMenu = popup != nullptr && popup->parentWidget() == this;
    if (event->reason() != Qt::PopupFocusReason && !inOwnMenu) {
        Q_EMIT editingFinished();
    }
    QTextEdit::focusOutEvent(event);
}

void HTextEdit::keyPressEvent(QKeyEvent* event)
{
    const bool hasCursor =
        (textInteractionFlags() & (Qt::TextSelectableByKeyboard | Qt::TextEditable)) != Qt::NoTextInteraction;
    if (!hasCursor && event->matches(QKeySequence::MoveToStartOfDocument)) {
        verticalScrollBar()->triggerAction(QScrollBar::SliderToMinimum);
        horizontalScrollBar()->triggerAction(QScrollBar::SliderToMinimum);
        return;
    }
    if (!hasCursor && event->matches(QKeySequence::MoveToEndOfDocument)) {
        verticalScrollBar()->triggerAction(QScrollBar::SliderToMaximum);
        return;
    }
    QTextEdit::keyPressEvent(event);
}
