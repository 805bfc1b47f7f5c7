// The graphical thread's side of the workers: it starts one, waits for it, and ends its waits.

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

// So often a thread that does not serve events looks at what the worker needs of it, in milliseconds.
constexpr unsigned long servingInterval = 20;

// The library that fetches files gives all of them up once this flag of its own is set, within a second.
void interruptDownloads()
{
    static volatile std::sig_atomic_t* const flag = [] {
        // Only if the package manager has loaded it.
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
    finishLines(); // of what was printed between two operations
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
    // Fires inside the loop only: the worker must neither end the loop nor ask it anything before it runs.
    QTimer::singleShot(0, this, SLOT(blockerRelease()));
    loop.exec();
    // Whatever else has ended the loop (the application's own end, say): the worker is never left alone with
    // its requests, and the operation never cut off. What the user does now waits for the loop outside.
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
            // Again and again: the script clears it before it begins to download.
            interruptDownloads();
        }
        YumIOCapturersMinion::serveAll();
    }
    if (Python::initialized) {
        PyGILStateWrapper lock(true);
        releaseLock();
    }
}
