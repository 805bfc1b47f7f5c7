// SPDX-License-Identifier: GPL-2.0-or-later

// The functions of the graphical thread for workers: they start a worker, wait for it, and end its waits.

#include "yumio/YumIO.h"

#include <csignal>

#include <QEventLoop>
#include <QThread>
#include <QTimer>

#include "services/Unattended.h"
#include "services/YumIOCapturers.h"
#include "yumio/EndSignals.h"

namespace {

// While the graphical thread does not serve events, it serves the worker's requests at this interval (ms).
constexpr unsigned long servingInterval = 20;

} // namespace

void YumIO::execWorkThread(QEventLoop& loop, QThread& thread, bool stoppable)
{
    finishLines(); // finish the output since the last operation
    blocker.prepare();
    blockerHeld = true;
    stopRequest.begin(stoppable);
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
    stopRequest.end();
}

bool YumIO::outcome(bool done)
{
    stopped = !done && stopRequest.wasRequested();
    if (stopped) {
        log(Log::Action, 0, tr("Stopped."));
    }
    return done;
}

void YumIO::blockerRelease()
{
    if (blockerHeld) {
        blockerHeld = false;
        blocker.release();
    }
}

void YumIO::finish(bool displayIsThere)
{
    Unattended::begin(displayIsThere ? Unattended::Reported::Faults : Unattended::Reported::Everything);
    blockerRelease();
    while (worker != nullptr && !worker->wait(servingInterval)) {
        if (!changingSystem) {
            // The flag is set repeatedly, because the script clears it before it begins to download.
            StopRequest::interruptDownloads();
        }
        YumIOCapturersMinion::serveAll();
    }
    if (Python::initialized) {
        PyGILStateWrapper lock(true);
        releaseLock();
    }
}
