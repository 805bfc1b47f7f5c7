// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/Execute.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "app/base/SignalsBlocked.h"
#include "widgets/HMessageBox.h"

namespace {

int keptStdout = -1;
int keptStderr = -1;

void keep(int& kept, int fd)
{
    const int duplicate = fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (duplicate >= 0) {
        if (kept >= 0) {
            close(kept);
        }
        kept = duplicate;
    }
}

// --- Functions for the child processes. When fork() copied the process, another thread may have held a lock
// of the C library. In the child process, nobody releases this lock. Therefore the functions below use only
// system calls; but report() also formats a text.

void report(const char* format, const char* program, int failure)
{
    char text[4096];
    const int length =
        program != nullptr
            ? snprintf(text, sizeof text, format, program, unsigned(failure), strerror(failure))
            : snprintf(text, sizeof text, format, unsigned(failure), strerror(failure));
    // If this write fails, nothing else can report the failure.
    if (write(STDERR_FILENO, text, std::min(static_cast<size_t>(length), sizeof text - 1)) < 0) {
        return;
    }
}

void restoreOutput()
{
    if (keptStdout >= 0) {
        dup2(keptStdout, STDOUT_FILENO);
    }
    if (keptStderr >= 0) {
        dup2(keptStderr, STDERR_FILENO);
    }
}

void restoreSignals()
{
    struct sigaction byDefault;
    memset(&byDefault, 0, sizeof byDefault);
    byDefault.sa_handler = SIG_DFL;
    for (int number = 1; number <= SIGRTMAX; ++number) {
        // This call fails for SIGKILL and SIGSTOP, whose actions are always the default.
        sigaction(number, &byDefault, nullptr);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

void closeDescriptors()
{
    constexpr unsigned first = STDERR_FILENO + 1;
#ifdef SYS_close_range
    if (syscall(SYS_close_range, first, ~0u, 0u) == 0) {
        return;
    }
#endif
    // On systems without close_range(), close the descriptors one by one. If the limit is 1,000,000,000, this
    // would take too long. Therefore close only the first 65,536 descriptors.
    rlimit limit{};
    const rlim_t most = 65536;
    const rlim_t end = getrlimit(RLIMIT_NOFILE, &limit) == 0 ? std::min(limit.rlim_cur, most) : most;
    for (unsigned fd = first; fd < end; ++fd) {
        close(static_cast<int>(fd));
    }
}

[[noreturn]] void runChild(char* const* argv)
{
    restoreOutput();
    setsid(); // Ctrl+C in our terminal must not stop the program
    const pid_t grandchild = fork();
    if (grandchild < 0) {
        report("second fork() failed; errno = %u (%s)\n", nullptr, errno);
        _exit(1);
    }
    if (grandchild > 0) {
        _exit(0);
    }
    closeDescriptors();
    restoreSignals();
    execv(argv[0], argv);
    report("execv(\"%s\", ...) failed; errno = %u (%s)\n", argv[0], errno);
    _exit(1);
}

} // namespace

void Execute::keepOutput()
{
    keep(keptStdout, STDOUT_FILENO);
    keep(keptStderr, STDERR_FILENO);
}

void Execute::execute(QWidget* parent, char* const* argv)
{
    // Block all signals during fork(), because a signal handler of this process must not run in the child.
    pid_t child = -1;
    int failure = 0;
    {
        const SignalsBlocked signalsBlocked;
        child = fork();
        failure = errno;
        if (child == 0) {
            runChild(argv);
        }
    }
    if (child < 0) {
        auto* box =
            new HMessageBox(QMessageBox::Critical, tr("Help"),
                            tr("fork() failed; errno = %1 (%2)")
                                .arg(QString::number(failure), QString::fromLocal8Bit(strerror(failure))),
                            QMessageBox::Ok, parent);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->setModal(false);
        box->show();
        return;
    }
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}
