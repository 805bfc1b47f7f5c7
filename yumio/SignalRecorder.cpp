// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/SignalRecorder.h"

#include <unistd.h>

#include "yumio/EndSignals.h"

namespace {

// The first signal that was recorded, or 0.
volatile std::sig_atomic_t recorded = 0;
pid_t owner = 0;

extern "C" void record(int number, siginfo_t* info, void*)
{
    if (getpid() != owner) {
        // This process is a child between fork() and exec(). End only this child.
        EndSignals::endBy(number);
    }
    if (!EndSignals::wasSent(*info)) {
        EndSignals::endBy(number);
    }
    if (recorded == 0) {
        recorded = number;
    }
}

} // namespace

SignalRecorder::SignalRecorder() : before(), replaced()
{
    recorded = 0;
    owner = getpid();
    struct sigaction recording = {};
    recording.sa_sigaction = record;
    recording.sa_flags = SA_RESTART | SA_SIGINFO;
    sigemptyset(&recording.sa_mask);
    for (int number = 1; number < count; ++number) {
        if (!EndSignals::endsProcess(number) || sigaction(number, nullptr, &before[number]) != 0) {
            continue;
        }
        const bool plain = (before[number].sa_flags & SA_SIGINFO) == 0;
        const bool ignored = plain && before[number].sa_handler == SIG_IGN;
        const bool byDefault = plain && before[number].sa_handler == SIG_DFL;
        // Keep a handler that other code has installed for a fault, because that code must still receive the
        // fault.
        const bool foreign = EndSignals::isFault(number) && !byDefault && !EndSignals::isOurs(before[number]);
        replaced[number] = !ignored && !foreign && sigaction(number, &recording, &before[number]) == 0;
    }
}

SignalRecorder::~SignalRecorder()
{
    for (int number = 1; number < count; ++number) {
        if (replaced[number]) {
            sigaction(number, &before[number], nullptr);
        }
    }
    if (recorded != 0) {
        const int number = recorded;
        recorded = 0;
        if (number == SIGABRT) {
            // Do not call raise() here: wasSent() would take a raised signal for an abort() of this process.
            kill(owner, number);
        } else {
            std::raise(number);
        }
    }
}
