// SPDX-License-Identifier: GPL-2.0-or-later

// Gives SIGCHLD its default disposition for a scope, because rpm and its scripts wait for their children.
//
// The worker that applies a transaction has one object on its stack. The destructor restores the former
// disposition on every path. The back end reports failures.

#ifndef YUMIO_CHILDSIGNAL_H
#define YUMIO_CHILDSIGNAL_H

#include "yumio/YumIO.h"

class YumIO::ChildSignal
{
public:
    explicit ChildSignal(YumIO& owner) : backEnd(owner), disabled(false) {}
    ~ChildSignal()
    {
        if (disabled) {
            backEnd.sigchldRestore();
        }
    }
    ChildSignal(const ChildSignal&) = delete;
    ChildSignal& operator=(const ChildSignal&) = delete;

    // Call it once. The constructor does not disable, because the scope is longer than the output capture.
    void disable() { disabled = backEnd.sigchldDisable(); }

private:
    YumIO& backEnd;
    bool disabled;
};

#endif
