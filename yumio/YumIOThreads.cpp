// SPDX-License-Identifier: GPL-2.0-or-later

// The graphical thread's side of the workers: starts a worker, waits for it, and ends its waits.

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

// The interval, in milliseconds, at which a thread that does not serve events serves the worker's requests.
constexpr unsigned long servingInterval = 20;

// The download library abandons all downloads within a second after this flag of its own is set.
void interruptDownloads()
{
    static volatile std::sig_atomic_t* const flag = [] {
        // Null unless the package manager has loaded the library.
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
    finishLines(); // of output between two operations
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
    // Fires only inside the loop: the worker must not end the loop, or send it requests, before it runs.
    QTimer::singleShot(0, this, SLOT(blockerRelease()));
    loop.exec();
    // The end of the application, for example, may have ended the loop. The worker still needs answers to its
    // requests, and the operation must not be interrupted. User input waits for the outer loop.
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
            // Repeatedly, because the script clears the flag before it begins to download.
            interruptDownloads();
        }
        YumIOCapturersMinion::serveAll();
    }
    if (Python::initialized) {
        PyGILStateWrapper lock(true);
        releaseLock();
    }
}
