// The signals that end a program, made into requests: the program is to end in good order, with the package
// manager's lock given back.
//
// State of the process. Installed by the graphical thread; signals may come on any thread. While the system
// is being changed, a SignalRecorder stands in front of this.

#ifndef YUMIO_ENDSIGNALS_H
#define YUMIO_ENDSIGNALS_H

#include <csignal>

namespace EndSignals {

// Every signal that can be caught and whose default action ends the process.
bool endsProcess(int number);

// Every signal that an instruction which cannot be carried out raises.
bool isFault(int number);

// Whether the signal was sent, and is no fault of the instruction that runs and no abort() of this process:
// there is no going on after these.
bool wasSent(const siginfo_t& info);

// From now on each such signal that has its default action writes its number, an int, to the descriptor,
// which stays the caller's. One that comes long after another one that has led to nothing, and a fault of the
// program itself, remove the lock file and end the process at once.
void install(int descriptor);

// The same for SIGINT, whose default action the interpreter sets again and again. Does nothing when nothing
// is installed.
void renew();

// Whether this is what install() and renew() have set.
bool isOurs(const struct sigaction& action);

// The package manager's lock file, which this process holds; an empty or null path: none. It is copied.
void setLockFile(const char* path);

// Ends the process by the signal's default action.
[[noreturn]] void endBy(int number);

} // namespace EndSignals

#endif
