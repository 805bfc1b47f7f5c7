// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/ProgramEnd.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>
#include <QX11Info>

#include <cstdlib>

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include "app/MainWindow.h"
#include "app/MessageHandler.h"
#include "services/Unattended.h"
#include "yumio/EndSignals.h"

struct xcb_connection_t;

namespace {

// If a signal arrives while the back end changes the system, the program checks at this interval, in
// milliseconds, whether the change is over.
constexpr int checkInterval = 100;

ProgramEnd* current = nullptr;
pid_t owner = 0;

bool onGraphicalThread()
{
    const QCoreApplication* const instance = QCoreApplication::instance();
    return instance != nullptr && QThread::currentThread() == instance->thread();
}

// Returns a function of a library that Qt has already loaded, or null. VYRE needs no other function of these
// libraries, so it does not link them.
template <typename Function> Function functionOf(const char* library, const char* name)
{
    void* const loaded = dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
    return loaded != nullptr ? reinterpret_cast<Function>(dlsym(loaded, name)) : nullptr;
}

} // namespace

ProgramEnd::ProgramEnd(MainWindow& mainWindow, std::function<void()> lastCleanUp)
    : window(mainWindow), cleanUp(std::move(lastCleanUp)), signalPipe{-1, -1}, notifier(nullptr),
      firstSignal(0), ending(false)
{
    current = this;
    owner = getpid();
    if (pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) == 0) {
        notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, this);
        connect(notifier, SIGNAL(activated(int)), this, SLOT(handleSignals()));
        EndSignals::install(signalPipe[1]);
    }
    // If the connection breaks, Qt reports this and then ends the process. The X library below Qt, or a
    // library that Qt loads for a desktop, may notice the broken connection first. These libraries call the X
    // library's error handler instead.
    MessageHandler::watch(checkDisplay);
    Unattended::reportThrough(MessageHandler::say);
    using Handler = int (*)(void*);
    const auto setHandler = functionOf<Handler (*)(Handler)>("libX11.so.6", "XSetIOErrorHandler");
    if (setHandler != nullptr) {
        setHandler(connectionBroke);
    }
    std::atexit(processExits);
}

ProgramEnd::~ProgramEnd()
{
    // The descriptors stay open, because a signal can still arrive.
    MessageHandler::watch(nullptr);
    current = nullptr;
}

bool ProgramEnd::displayIsLost() const
{
    if (!QX11Info::isPlatformX11()) {
        return false;
    }
    static const auto hasError =
        functionOf<int (*)(xcb_connection_t*)>("libxcb.so.1", "xcb_connection_has_error");
    xcb_connection_t* const connection = QX11Info::connection();
    return hasError != nullptr && connection != nullptr && hasError(connection) != 0;
}

void ProgramEnd::checkDisplay(bool fatal)
{
    // If Qt sends a message while the program ends, this message must not start the end again.
    if (current == nullptr || current->ending || !onGraphicalThread()) {
        return;
    }
    if (current->displayIsLost()) {
        current->displayLost();
    } else if (fatal) {
        current->endWithoutToolkit();
    }
}

int ProgramEnd::connectionBroke(void*)
{
    if (current != nullptr && !current->ending && onGraphicalThread()) {
        current->displayLost();
    }
    return 0;
}

void ProgramEnd::processExits()
{
    // A library may end the process without a message if it loses the display. In this case, only this
    // function notices the loss. At this time, some libraries may already be finalized. A call in a child
    // process or on another thread is ignored, because the graphical thread of the program still runs.
    if (current != nullptr && !current->ending && getpid() == owner && onGraphicalThread()) {
        current->displayLost();
    }
}

void ProgramEnd::finish(bool displayIsThere)
{
    ending = true;
    window.finish(displayIsThere);
    cleanUp();
}

void ProgramEnd::displayLost()
{
    const bool goingOn = window.isChangingSystem();
    Unattended::report(goingOn ? tr("The display is lost. The transaction goes on without it.")
                               : tr("The display is lost. VYRE ends."));
    endWithoutToolkit();
}

void ProgramEnd::endWithoutToolkit()
{
    const bool goingOn = window.isChangingSystem();
    finish(false);
    if (goingOn) {
        Unattended::report(tr("The transaction has ended. VYRE ends."));
    }
    // The destructors of Qt's objects need the display, so they must not run.
    _exit(1);
}

void ProgramEnd::signalEnds(int number)
{
    finish(!displayIsLost());
    EndSignals::endBy(number);
}

void ProgramEnd::handleSignals()
{
    int number = 0;
    while (read(signalPipe[0], &number, sizeof number) == ssize_t(sizeof number)) {
        if (firstSignal == 0) {
            firstSignal = number;
        }
    }
    if (firstSignal == 0 || ending) {
        return;
    }
    if (window.isChangingSystem()) {
        // The signal arrived just before the back end began to change the system. During the change, a
        // SignalRecorder receives the signals.
        QTimer::singleShot(checkInterval, this, SLOT(handleSignals()));
        return;
    }
    signalEnds(firstSignal);
}
