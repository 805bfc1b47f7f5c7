// SPDX-License-Identifier: GPL-2.0-or-later

// The functions of the graphical thread for workers: they start a worker, wait for it, and end its waits.

#include "yumio/YumIO.h"

#include <csignal>

#include <dlfcn.h>

#include <QEventLoop>
#include <QThread>
#include <QTimer>

#include "services/Unattended.h"
#include "services/YumIOCapturers.h"
#include "yumio/EndSignals.h"

namespace {

// While the graphical thread does not serve events, it serves the worker's requests at this interval (ms).
constexpr unsigned long servingInterval = 20;

// Sets a flag of the download library, which then abandons all downloads within a second.
void interruptDownloads()
{
    static volatile std::sig_atomic_t* const flag = [] {
        // The pointer is null if the package manager has not loaded the library.
        void* const library = dlopen("librepo.so.0", RTLD_LAZY | RTLD_NOLOAD);
        return library != nullptr ? static_cast<volatile std::sig_atomic_t*>(dlsym(library, "lr_interrupt"))
                                  : nullptr;
    }();
    if (flag != nullptr) {
        *flag = 1;
    }
}

} // namespace

void YumIO::execWorkThread(QEventLoop& loop, QThread& thread)
{
    finishLines(); // finish the output since the last operation
    blocker.prepare();
    blockerHeld = true;
    wait = Wait::None;
    worker = &thread;
    PyThreadStateWrapper released;
    thread.start(QThread::HighPriority);
    sigset_t childSignal;
    sigset_t before;
    sigemptyset(&childSignal);
    sigaddset(&childSignal, SIGCHLD);
    sigprocmask(SIG_BLOCK, &childSignal, &before);
    // The timer fires only inside the loop. Before the loop runs, the worker must not end it or send
    // requests.
    QTimer::singleShot(0, this, SLOT(blockerRelease()));
    loop.exec();
    // Something else may have ended the loop, for example the end of the application. The worker then still
    // needs answers to its requests, and its operation must not be interrupted. User input waits for the
    // outer loop.
    while (!thread.isFinished() && !thread.wait(10)) {
        loop.processEvents(QEventLoop::ExcludeUserInputEvents);
    }
    thread.wait();
    loop.processEvents(QEventLoop::ExcludeUserInputEvents);
    {
        PyGILStateWrapper lock(true);
        setEnablePythonSIGINTHandler(false);
        EndSignals::renew();
        finishLines();
    }
    sigprocmask(SIG_SETMASK, &before, nullptr);
    worker = nullptr;
}

void YumIO::blockerRelease()
{
    if (blockerHeld) {
        blockerHeld = false;
        blocker.release();
    }
}

bool YumIO::endWaiting()
{
    Wait found = Wait::Lasts;
    return wait.compare_exchange_strong(found, Wait::Ended) || found == Wait::Ended;
}

void YumIO::finish(bool displayIsThere)
{
    Unattended::begin(displayIsThere ? Unattended::Reported::Faults : Unattended::Reported::Everything);
    blockerRelease();
    while (worker != nullptr && !worker->wait(servingInterval)) {
        if (!changingSystem) {
            // The flag is set repeatedly, because the script clears it before it begins to download.
            interruptDownloads();
        }
        YumIOCapturersMinion::serveAll();
    }
    if (Python::initialized) {
        PyGILStateWrapper lock(true);
        releaseLock();
    }
}
