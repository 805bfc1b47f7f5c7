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

// If a signal requests the end while the back end changes the system, VYRE waits until the change is
// complete. This is the number of milliseconds between two checks.
constexpr int checkInterval = 100;

ProgramEnd* current = nullptr;
pid_t owner = 0;

bool onGraphicalThread()
{
    const QCoreApplication* const instance = QCoreApplication::instance();
    return instance != nullptr && QThread::currentThread() == instance->thread();
}

// Returns a function of a library that Qt has already loaded, or null if the library is not loaded. VYRE uses
// only a few functions of such libraries, so it does not link them.
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
    // Qt, the X library or another library may be the first to notice that the connection to the X server is
    // broken. Qt prints a message, which checkDisplay() receives. The X library calls connectionBroke().
    // Another library calls exit(), and the C library then calls processExits().
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
    // The signal handler may still write to the pipe, so the pipe is not closed.
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
    // Ignore Qt's messages while the program ends, because they must not start the end a second time.
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
    // A library other than Qt and the X library may be the first to notice that the display is lost. If this
    // library calls exit() without a message, only processExits() can still clean up. Ignore calls in child
    // processes and on threads other than the graphical thread, because VYRE's graphical thread still runs.
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
    // Skip the destructors of Qt's objects, because they need the display, which may be lost.
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
        // Wait until the change is complete. The signal arrived just before the change began: during the
        // change, a SignalRecorder receives the signals instead of this object.
        QTimer::singleShot(checkInterval, this, SLOT(handleSignals()));
        return;
    }
    signalEnds(firstSignal);
}
