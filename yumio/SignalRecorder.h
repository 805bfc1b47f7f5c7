// Holds the signals that would end the program back for a scope, in which that would leave a transaction half
// done: they are noted, and take their effect at the end of the scope.
//
// Any thread, one object at a time in the process. A signal that is ignored stays ignored. Programs that are
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
    static constexpr int numbers[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
    static constexpr int count = sizeof numbers / sizeof *numbers;

    struct sigaction before[count];
    bool replaced[count];
};

#endif
