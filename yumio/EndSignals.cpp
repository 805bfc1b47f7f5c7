// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/EndSignals.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace EndSignals {

namespace {

// If VYRE still runs this number of seconds after the first signal, the next signal ends the process at once.
// For example, the graphical thread may wait for an X server that hangs.
constexpr time_t patience = 10;

// install() sets `output` and `owner` before it installs the handlers.
volatile std::sig_atomic_t output = -1;
pid_t owner = 0;

volatile std::sig_atomic_t firstCame = 0; // 1 after the handler has passed on a signal
time_t firstTime = 0;                     // the monotonic time of the first signal, in seconds

// The path of the package manager's lock file. The handler reads it only while lockFileLength is not 0.
char lockFile[PATH_MAX] = "";
volatile std::sig_atomic_t lockFileLength = 0;

time_t now()
{
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec;
}

// --- Functions of the signal handler. They use system calls only, because the signal may interrupt any code.

// Removes the package manager's lock file, but only if it contains the number of this process. Otherwise the
// lock belongs to another process.
void removeLockFile()
{
    if (lockFileLength == 0) {
        return;
    }
    const int file = open(lockFile, O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (file < 0) {
        return;
    }
    char text[24] = "";
    const ssize_t length = read(file, text, sizeof text - 1);
    close(file);
    long number = 0;
    for (ssize_t i = 0; i < length && text[i] >= '0' && text[i] <= '9'; ++i) {
        number = 10 * number + (text[i] - '0');
    }
    if (number == getpid()) {
        unlink(lockFile);
    }
}

extern "C" void passOn(int number, siginfo_t* info, void*)
{
    const int failure = errno;
    if (getpid() != owner) {
        // This process is a child between fork() and exec(). End only this child.
        endBy(number);
    }
    const bool unheard = firstCame != 0 && now() - firstTime > patience;
    if (!wasSent(*info) || unheard) {
        removeLockFile();
        endBy(number);
    }
    if (firstCame == 0) {
        firstTime = now();
        firstCame = 1;
    }
    if (write(output, &number, sizeof number) != ssize_t(sizeof number)) {
        // If the pipe is full, do nothing: it already contains thousands of signals that nobody has read.
    }
    errno = failure;
}

void takeOver(int number)
{
    struct sigaction before = {};
    if (sigaction(number, nullptr, &before) != 0 || (before.sa_flags & SA_SIGINFO) != 0 ||
        before.sa_handler != SIG_DFL) {
        return;
    }
    struct sigaction ours = {};
    ours.sa_sigaction = passOn;
    ours.sa_flags = SA_RESTART | SA_SIGINFO;
    sigemptyset(&ours.sa_mask);
    sigaction(number, &ours, nullptr);
}

} // namespace

bool endsProcess(int number)
{
    switch (number) {
    case SIGKILL:
    case SIGSTOP: // no handler can catch SIGKILL and SIGSTOP
    case SIGCHLD:
    case SIGCONT:
    case SIGTSTP:
    case SIGTTIN:
    case SIGTTOU:
    case SIGURG:
    case SIGWINCH:
        return false;
    default:
        // Leave the numbers between SIGSYS and SIGRTMIN alone: the C library uses these signals for its
        // threads.
        return (number >= 1 && number <= SIGSYS) || (number >= SIGRTMIN && number <= SIGRTMAX);
    }
}

bool isFault(int number)
{
    return number == SIGSEGV || number == SIGBUS || number == SIGFPE || number == SIGILL ||
           number == SIGTRAP || number == SIGSYS;
}

bool wasSent(const siginfo_t& info)
{
    if (info.si_signo == SIGABRT) {
        // abort() sends SIGABRT to its own process with the two values in the following line. After abort(),
        // the process ends as soon as the handler returns.
        return !(info.si_code == SI_TKILL && info.si_pid == getpid());
    }
    // A signal for which isFault() is false was always sent, by a process or by the system (for example for a
    // timer).
    return !isFault(info.si_signo) || info.si_code <= 0;
}

void install(int descriptor)
{
    output = descriptor;
    owner = getpid();
    firstCame = 0;
    for (int number = 1; number <= SIGRTMAX; ++number) {
        // Skip SIGINT here: the interpreter checks during its start whether SIGINT has a handler. renew()
        // handles SIGINT later.
        if (endsProcess(number) && number != SIGINT) {
            takeOver(number);
        }
    }
}

void renew()
{
    if (output >= 0) {
        takeOver(SIGINT);
    }
}

bool isOurs(const struct sigaction& action)
{
    return (action.sa_flags & SA_SIGINFO) != 0 && action.sa_sigaction == passOn;
}

void setLockFile(const char* path)
{
    lockFileLength = 0;
    const size_t length = path != nullptr ? std::strlen(path) : 0;
    if (length > 0 && length < sizeof lockFile) {
        std::memcpy(lockFile, path, length + 1);
        lockFileLength = std::sig_atomic_t(length);
    }
}

void endBy(int number)
{
    struct sigaction byDefault = {};
    byDefault.sa_handler = SIG_DFL;
    sigemptyset(&byDefault.sa_mask);
    sigaction(number, &byDefault, nullptr);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, number);
    pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
    raise(number);
    _exit(128 + number);
}

} // namespace EndSignals
