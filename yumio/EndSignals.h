// SPDX-License-Identifier: GPL-2.0-or-later

// Turns the signals that end a program into requests: the program then ends in good order and releases the
// package manager's lock.
//
// State of the process. The graphical thread installs it; signals may arrive on any thread. While a
// transaction changes the system, a SignalRecorder takes precedence over this.

#ifndef YUMIO_ENDSIGNALS_H
#define YUMIO_ENDSIGNALS_H

#include <csignal>

namespace EndSignals {

// Whether the signal can be caught and its default action ends the process.
bool endsProcess(int number);

// Whether a failing instruction raises this signal.
bool isFault(int number);

// Whether another process or the system sent the signal. False for a fault of the running instruction and for
// an abort() of this process: the process cannot continue after these.
bool wasSent(const siginfo_t& info);

// From now on each signal that ends the process, and has its default action, writes its number, an int, to
// the descriptor. The caller keeps the descriptor. Two cases remove the lock file and end the process at
// once: a fault of the program itself, and a signal that arrives long after an earlier one without effect.
void install(int descriptor);

// The same for SIGINT, because the interpreter repeatedly restores its default action. Without an earlier
// install() it does nothing.
void renew();

// Whether install() or renew() has set this action.
bool isOurs(const struct sigaction& action);

// The package manager's lock file, held by this process; a null or empty path means none. It is copied.
void setLockFile(const char* path);

// Ends the process by the signal's default action.
[[noreturn]] void endBy(int number);

} // namespace EndSignals

#endif
