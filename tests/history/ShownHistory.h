// SPDX-License-Identifier: GPL-2.0-or-later

// Acts in the history window as soon as the window has read the list and the details of a transaction. Until
// then, the worker's event loop is the innermost loop, and a test must not wait in it.

#ifndef TESTS_HISTORY_SHOWNHISTORY_H
#define TESTS_HISTORY_SHOWNHISTORY_H

#include <QApplication>
#include <QPushButton>
#include <QTextEdit>
#include <QTimer>

#include <functional>

#include "history/HistoryDialog.h"

// Calls the first function, which opens the window, and then the second function with the window. Afterwards
// it closes the window if it is still open. Returns whether the window was opened.
inline bool withHistory(const std::function<void()>& open, const std::function<void(HistoryDialog&)>& use)
{
    bool opened = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        auto* dialog = qobject_cast<HistoryDialog*>(QApplication::activeModalWidget());
        if (dialog != nullptr && dialog->isVisible() &&
            !dialog->findChild<QTextEdit*>()->toPlainText().isEmpty()) {
            timer.stop();
            opened = true;
            use(*dialog);
            if (dialog->isVisible()) {
                dialog->close();
            }
        }
    });
    timer.start(20);
    open(); // returns when the dialog has been closed
    return opened;
}

#endif
