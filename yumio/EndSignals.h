// SPDX-License-Identifier: GPL-2.0-or-later

// Turns the signals that end a program into requests to end. After such a request, the program finishes its
// work and releases the package manager's lock.
//
// The state belongs to the whole process. The graphical thread calls install(); a signal may arrive on any
// thread. While a transaction changes the system, a SignalRecorder receives the signals instead.

#ifndef YUMIO_ENDSIGNALS_H
#define YUMIO_ENDSIGNALS_H

#include <csignal>

namespace EndSignals {

// Returns whether the signal can be caught and its default action ends the process.
bool endsProcess(int number);

// Returns whether a failing instruction raises this signal.
bool isFault(int number);

// Returns whether another process or the system sent the signal. Returns false if an instruction of this
// process has raised the signal, or if this process has called abort(). In these cases, the process cannot
// continue.
bool wasSent(const siginfo_t& info);

// Installs a handler for each signal that would end the process by its default action, except SIGINT. The
// handler writes the signal's number (an int) to the descriptor, which the caller still owns. But if the
// signal reports a fault of the program itself, the handler removes the lock file and ends the process at
// once. The handler does the same if another signal arrives a long time after the first signal, because the
// program should have ended by then.
void install(int descriptor);

// Installs the same handler for SIGINT. Call this function again after the interpreter has restored the
// default action of SIGINT. If install() has not been called yet, the function does nothing.
void renew();

// Returns whether this signal action calls the handler that install() and renew() install.
bool isOurs(const struct sigaction& action);

// Sets the path of the package manager's lock file while this process holds the lock. A null or empty path
// means that no file must be removed. The path is copied.
void setLockFile(const char* path);

// Ends the process by the signal's default action.
[[noreturn]] void endBy(int number);

} // namespace EndSignals

#endif
