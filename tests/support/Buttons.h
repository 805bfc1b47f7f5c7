// SPDX-License-Identifier: GPL-2.0-or-later

// Finds the buttons of a window by their texts.

#ifndef TESTS_SUPPORT_BUTTONS_H
#define TESTS_SUPPORT_BUTTONS_H

#include <QPushButton>
#include <QString>
#include <QWidget>

// Returns the button with this text. If the window has no such button, ends the test program.
inline QPushButton* buttonOf(const QWidget* window, const QString& text)
{
    for (QPushButton* each : window->findChildren<QPushButton*>()) {
        if (each->text() == text) {
            return each;
        }
    }
    qFatal("the button %s is missing", qPrintable(text));
    return nullptr;
}

#endif
