// SPDX-License-Identifier: GPL-2.0-or-later

// Sets and restores the disposition of SIGCHLD, and reaps ended child processes.

#include "yumio/ChildSignal.h"

#include <cerrno>
#include <cstring>
#include <sys/wait.h>

bool YumIO::sigchldDisable()
{
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    sigemptyset(&standard.sa_mask);
    if (sigaction(SIGCHLD, &standard, &savedSigchld) == 0) {
        return true;
    }
    const int problem = errno;
    error(tr("Unable to disable SIGCHLD signal handler; errno=%1 (%2)")
              .arg(problem)
              .arg(QString::fromLocal8Bit(std::strerror(problem))));
    return false;
}

void YumIO::sigchldRestore()
{
    if (sigaction(SIGCHLD, &savedSigchld, nullptr) != 0) {
        const int problem = errno;
        error(tr("Unable to restore SIGCHLD signal handler; errno=%1 (%2)")
                  .arg(problem)
                  .arg(QString::fromLocal8Bit(std::strerror(problem))));
    }
}

bool YumIO::reapChildren()
{
    for (;;) {
        const pid_t child = waitpid(-1, nullptr, WNOHANG);
        if (child == 0 || (child < 0 && errno == ECHILD)) {
            return true;
        }
        if (child < 0) {
            const int problem = errno;
            error(tr("Unable to reap children; errno=%1 (%2)")
                      .arg(problem)
                      .arg(QString::fromLocal8Bit(std::strerror(problem))));
            return false;
        }
        log(Log::Warning, 0, tr("Reaped zombie child %1").arg(child));
    }
}
