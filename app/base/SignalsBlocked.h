// SPDX-License-Identifier: GPL-2.0-or-later

// Blocks all signals of the calling thread until the end of a scope. A thread or process that is created in
// this scope inherits the blocked signals.
//
// Any thread may use a SignalsBlocked as a local variable.

#ifndef APP_BASE_SIGNALSBLOCKED_H
#define APP_BASE_SIGNALSBLOCKED_H

#include <csignal>

class SignalsBlocked
{
public:
    SignalsBlocked()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t before;
};

#endif
