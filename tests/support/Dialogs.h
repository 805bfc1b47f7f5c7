// SPDX-License-Identifier: GPL-2.0-or-later

// Opens and uses modal dialogs as a user does.

#ifndef TESTS_SUPPORT_DIALOGS_H
#define TESTS_SUPPORT_DIALOGS_H

#include <QDialog>
#include <QWindow>

#include <functional>

#include "tests/support/AnsweringUser.h"

// Calls open(), which must open a modal dialog of the class Dialog, and calls use() once with this dialog. If
// the dialog is still open after that, closes it. Returns whether the dialog was opened. If isReady is given,
// waits for its result to become true before it calls use().
template <typename Dialog>
bool withDialog(const std::function<void()>& open, const std::function<void(Dialog&)>& use,
                const std::function<bool(const Dialog&)>& isReady = nullptr)
{
    bool opened = false;
    const AnsweringUser user(
        [&](QDialog* shown) {
            auto* dialog = qobject_cast<Dialog*>(shown);
            if (opened || dialog == nullptr || !dialog->windowHandle()->isExposed() ||
                (isReady && !isReady(*dialog))) {
                return;
            }
            opened = true;
            use(*dialog);
            if (dialog->isVisible()) {
                dialog->close();
            }
        },
        AnsweringUser::EveryDialog);
    open(); // returns when the dialog is closed
    return opened;
}

#endif
