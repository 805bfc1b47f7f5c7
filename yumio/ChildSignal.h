// Gives SIGCHLD its default disposition for a scope: rpm and its scripts wait for their children themselves.
//
// The worker that applies a transaction has one on its stack. The former disposition comes back at the end of
// the scope, on every path. The back end reports failures.

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

    // Once: not in the constructor, because the scope begins before output is captured and ends after that.
    void disable() { disabled = backEnd.sigchldDisable(); }

private:
    YumIO& backEnd;
    bool disabled;
};

#endif
