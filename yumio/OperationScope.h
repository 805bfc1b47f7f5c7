// SPDX-License-Identifier: GPL-2.0-or-later

// Begins an operation of a worker, and gives the worker access to the progress bars and the dialogs of the
// graphical thread.
//
// The worker that carries out the operation has one OperationScope on its stack. The constructor waits until
// the event loop of the graphical thread runs. The destructor ends the access.

#ifndef YUMIO_OPERATIONSCOPE_H
#define YUMIO_OPERATIONSCOPE_H

#include <optional>

#include "services/Progress.h"
#include "services/YumIODialogs.h"
#include "yumio/YumIO.h"

class YumIO::OperationScope
{
public:
    explicit OperationScope(YumIO& backEnd)
    {
        backEnd.blocker.block();
        progressUser.emplace(backEnd.progress, backEnd.totalBar, backEnd.itemBar);
        dialogsUser.emplace(backEnd.dialogs, backEnd.parent);
    }
    OperationScope(const OperationScope&) = delete;
    OperationScope& operator=(const OperationScope&) = delete;

private:
    std::optional<Progress::User> progressUser;
    std::optional<YumIODialogsUser> dialogsUser;
};

#endif
