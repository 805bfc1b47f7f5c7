// SPDX-License-Identifier: GPL-2.0-or-later

// Lets a test use the history window after the window has read the list and the details of a transaction.
// While the window reads, a nested event loop runs. A test must not wait inside this loop.

#ifndef TESTS_HISTORY_SHOWNHISTORY_H
#define TESTS_HISTORY_SHOWNHISTORY_H

#include <QApplication>
#include <QPushButton>
#include <QTextEdit>
#include <QTimer>

#include <functional>

#include "history/HistoryDialog.h"

// Calls open(), which must open the history window, and calls use() with this window. If the window is still
// open after that, closes it. Returns whether the window was opened.
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
    open(); // returns when the window is closed
    return opened;
}

#endif
