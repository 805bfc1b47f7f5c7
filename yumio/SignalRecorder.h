// SPDX-License-Identifier: GPL-2.0-or-later

// Defers the signals that end the process until the end of a scope. Without this class, a signal could
// interrupt a transaction and leave it half done. A SignalRecorder records the first signal. Its destructor
// lets this signal take effect.
//
// Any thread may create a SignalRecorder, but only one SignalRecorder may exist at a time. An ignored signal
// stays ignored. A fault of the program itself, or an abort, still ends the process at once, because the
// process cannot continue. Child programs that start during the scope have the usual signal actions.

#ifndef YUMIO_SIGNALRECORDER_H
#define YUMIO_SIGNALRECORDER_H

#include <csignal>

class SignalRecorder
{
public:
    SignalRecorder();
    // Does not return if the recorded signal ends the process.
    ~SignalRecorder();
    SignalRecorder(const SignalRecorder&) = delete;
    SignalRecorder& operator=(const SignalRecorder&) = delete;

private:
    static constexpr int count = 65; // arrays are indexed by signal number, from 1 to 64

    struct sigaction before[count];
    bool replaced[count];
};

#endif
