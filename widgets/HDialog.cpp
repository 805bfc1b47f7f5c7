// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HDialog.h"

#include <QKeyEvent>

HDialog::HDialog(QWidget* parent, Qt::WindowFlags flags) : QDialog(parent, flags) {}

void HDialog::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        event->ignore();
        return;
    }
    QDialog::keyPressEvent(event);
}
