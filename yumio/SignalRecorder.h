// SPDX-License-Identifier: GPL-2.0-or-later

// Defers, for a scope, the signals that end the process: during the scope they would leave a transaction half
// done. It records them and lets them take effect at the end of the scope.
//
// For any thread, one object at a time in the process. An ignored signal stays ignored. A fault of the
// program itself, or an abort, still ends the process at once, because the process cannot continue after
// these. Child programs started during the scope have the usual signals.

#ifndef YUMIO_SIGNALRECORDER_H
#define YUMIO_SIGNALRECORDER_H

#include <csignal>

class SignalRecorder
{
public:
    SignalRecorder();
    // Does not return if a recorded signal ends the process.
    ~SignalRecorder();
    SignalRecorder(const SignalRecorder&) = delete;
    SignalRecorder& operator=(const SignalRecorder&) = delete;

private:
    static constexpr int count = 65; // signals are numbered from 1 to 64

    struct sigaction before[count];
    bool replaced[count];
};

#endif
