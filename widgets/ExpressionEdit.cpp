// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/ExpressionEdit.h"

#include <QApplication>
#include <QKeyEvent>

#include "widgets/Colors.h"

void ExpressionEdit::showValid(bool valid)
{
    // The filtered table is empty not only if the expression is invalid, but also if nothing matches. The
    // colour distinguishes these cases.
    QPalette palette = QApplication::palette(this);
    if (!valid) {
        palette.setColor(QPalette::Base, QColor(Colors::errorBg()));
        palette.setColor(QPalette::Text, Qt::black);
    }
    setPalette(palette);
}

bool ExpressionEdit::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_E && key->modifiers() == Qt::ControlModifier) {
            event->ignore();
            return false;
        }
    }
    return QLineEdit::event(event);
}
