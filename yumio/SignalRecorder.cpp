#include "yumio/SignalRecorder.h"

namespace {

// The first signal that came; 0: none.
volatile std::sig_atomic_t recorded = 0;

extern "C" void record(int number)
{
    if (recorded == 0) {
        recorded = number;
    }
}

} // namespace

SignalRecorder::SignalRecorder() : before(), replaced()
{
    recorded = 0;
    struct sigaction recording = {};
    recording.sa_handler = record;
    recording.sa_flags = SA_RESTART;
    sigemptyset(&recording.sa_mask);
    for (int i = 0; i < count; ++i) {
        replaced[i] = sigaction(numbers[i], nullptr, &before[i]) == 0 && before[i].sa_handler != SIG_IGN &&
                      sigaction(numbers[i], &recording, &before[i]) == 0;
    }
}

SignalRecorder::~SignalRecorder()
{
    for (int i = 0; i < count; ++i) {
        if (replaced[i]) {
            sigaction(numbers[i], &before[i], nullptr);
        }
    }
    if (recorded != 0) {
        const int number = recorded;
        recorded = 0;
        std::raise(number);
    }
}
