// SPDX-License-Identifier: GPL-2.0-or-later

// Sets SIGCHLD to its default disposition for a scope. If SIGCHLD were ignored, rpm and its scripts could not
// read the exit status of their child processes.
//
// During a transaction, the worker has one ChildSignal on its stack. The destructor restores the former
// disposition. If a change of the disposition fails, the back end reports this to the user.

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

    // Sets the disposition. Call this function once, after the output capture has begun. The constructor does
    // not set the disposition: the ChildSignal is created before the capture, so that it is destroyed after
    // the capture.
    void disable() { disabled = backEnd.sigchldDisable(); }

private:
    YumIO& backEnd;
    bool disabled;
};

#endif
