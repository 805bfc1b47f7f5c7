// SPDX-License-Identifier: GPL-2.0-or-later

// Lets a test use the history window after the window has read the list and the details of a transaction.
// While the window reads, a nested event loop runs. A test must not wait inside this loop.

#ifndef TESTS_HISTORY_SHOWNHISTORY_H
#define TESTS_HISTORY_SHOWNHISTORY_H

#include <QTextEdit>

#include <functional>

#include "history/HistoryDialog.h"
#include "tests/support/Dialogs.h"

// Whether the window shows the details of a transaction.
inline bool hasRead(const HistoryDialog& history)
{
    return !history.findChild<QTextEdit*>()->toPlainText().isEmpty();
}

// Calls open(), which must open the history window, and calls use() with this window. If the window is still
// open after that, closes it. Returns whether the window was opened.
inline bool withHistory(const std::function<void()>& open, const std::function<void(HistoryDialog&)>& use)
{
    return withDialog<HistoryDialog>(open, use, hasRead);
}

#endif
