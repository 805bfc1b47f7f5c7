// SPDX-License-Identifier: GPL-2.0-or-later

// The functions with which the graphical thread starts a worker and waits until the worker has ended. When
// the program ends, these functions make the worker give up. compute() runs any computation on a worker.

#include "yumio/YumIO.h"

#include <csignal>
#include <functional>

#include <QEventLoop>
#include <QThread>
#include <QTimer>

#include "services/Unattended.h"
#include "services/YumIOCapturers.h"
#include "yumio/EndSignals.h"
#include "yumio/WorkerThreads.h"

namespace {

// When the program ends, the graphical thread waits for the worker without serving events. At this interval,
// in milliseconds, it serves the worker's requests.
constexpr unsigned long servingInterval = 20;

} // namespace

void YumIO::execWorkThread(QEventLoop& loop, QThread& thread, bool stoppable,
                           QEventLoop::ProcessEventsFlags flags)
{
    // Log an unfinished line of output that arrived after the previous operation.
    finishLines();
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
    // Release the worker only when the event loop runs. Before that, the worker must neither end the loop nor
    // send requests to the graphical thread.
    QTimer::singleShot(0, this, SLOT(blockerRelease()));
    loop.exec(flags);
    // The loop may have ended earlier than the worker, for example because the application ends. The
    // operation must not be interrupted, so keep answering the worker's requests. Leave user input to the
    // outer event loop.
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

void YumIO::compute(const std::function<void()>& computation)
{
    QEventLoop loop;
    ComputeThread thread(this, loop, computation);
    execWorkThread(loop, thread, false, QEventLoop::ExcludeUserInputEvents);
}

void YumIO::computeReal(const std::function<void()>& computation)
{
    blocker.block();
    computation();
}

bool YumIO::outcome(bool done)
{
    stopped = !done && stopRequest.wasRequested();
    if (stopped) {
        log(Log::Action, 0, tr("Stopped."));
    }
    return done;
}

bool YumIO::mustGiveUp() const
{
    return Unattended::is() || stopRequest.isRequested();
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
            // Set librepo's `lr_interrupt` in each round, because librepo clears this flag when it begins a
            // download.
            StopRequest::interruptDownloads();
        }
        YumIOCapturersMinion::serveAll();
    }
    if (Python::initialized) {
        PyGILStateWrapper lock(true);
        releaseLock();
    }
}
