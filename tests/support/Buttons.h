// SPDX-License-Identifier: GPL-2.0-or-later

// Finds the buttons of a window by their texts.

#ifndef TESTS_SUPPORT_BUTTONS_H
#define TESTS_SUPPORT_BUTTONS_H

#include <QDialogButtonBox>
#include <QPushButton>
#include <QString>
#include <QWidget>

// Returns the button with this text; null if the window has no such button. The texts of Qt's standard
// buttons can begin with a "&"; `text` may omit this "&".
inline QPushButton* findButton(const QWidget* window, const QString& text,
                               Qt::FindChildOptions options = Qt::FindChildrenRecursively)
{
    for (QPushButton* each : window->findChildren<QPushButton*>(QString(), options)) {
        const auto* box = qobject_cast<const QDialogButtonBox*>(each->parentWidget());
        const bool standard = box != nullptr && box->standardButton(each) != QDialogButtonBox::NoButton;
        if (each->text() == text || (standard && each->text() == QLatin1Char('&') + text)) {
            return each;
        }
    }
    return nullptr;
}

// Returns the button with this text. If the window has no such button, ends the test program.
inline QPushButton* buttonOf(const QWidget* window, const QString& text,
                             Qt::FindChildOptions options = Qt::FindChildrenRecursively)
{
    QPushButton* found = findButton(window, text, options);
    if (found == nullptr) {
        qFatal("the button %s is missing", qPrintable(text));
    }
    return found;
}

#endif
