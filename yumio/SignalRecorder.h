// Holds the signals that would end the program back for a scope, in which that would leave a transaction half
// done: they are noted, and take their effect at the end of the scope.
//
// Any thread, one object at a time in the process. A signal that is ignored stays ignored. A fault of the
// program itself ends it at once, as does an abort: there is no going on after these. Programs that are
// started meanwhile have the usual signals.

#ifndef YUMIO_SIGNALRECORDER_H
#define YUMIO_SIGNALRECORDER_H

#include <csignal>

class SignalRecorder
{
public:
    SignalRecorder();
    // Does not return when a signal that was noted ends the process.
    ~SignalRecorder();
    SignalRecorder(const SignalRecorder&) = delete;
    SignalRecorder& operator=(const SignalRecorder&) = delete;

private:
    static constexpr int count = 65; // signals are numbered from 1 to 64

    struct sigaction before[count];
    bool replaced[count];
};

#endif
