// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/PlainLabel.h"

#include <QKeyEvent>

PlainLabel::PlainLabel(QWidget* parent) : PlainLabel(QString(), parent) {}

PlainLabel::PlainLabel(const QString& text, QWidget* parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setText(text);
}

void PlainLabel::keyPressEvent(QKeyEvent* event)
{
    if (!event->modifiers().testFlag(Qt::ShiftModifier)) {
        switch (event->key()) {
        case Qt::Key_Home:
        case Qt::Key_End:
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
        case Qt::Key_Up:
        case Qt::Key_Down:
            event->ignore();
            return;
        default:
            break;
        }
    }
    QLabel::keyPressEvent(event);
}
