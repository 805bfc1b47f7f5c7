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

// So often a signal that has to wait looks whether the system is still being changed, in milliseconds.
constexpr int lookingInterval = 100;

ProgramEnd* current = nullptr;
pid_t owner = 0;

bool onGraphicalThread()
{
    const QCoreApplication* const instance = QCoreApplication::instance();
    return instance != nullptr && QThread::currentThread() == instance->thread();
}

// A function of a library that the toolkit has loaded already; null without it. Nothing else of these
// libraries is needed, so they are none of ours to link.
template <typename Function> Function functionOf(const char* library, const char* name)
{
    void* const loaded = dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
    return loaded != nullptr ? reinterpret_cast<Function>(dlsym(loaded, name)) : nullptr;
}

} // namespace

ProgramEnd::ProgramEnd(MainWindow& mainWindow, std::function<void()> lastCleanUp)
    : window(mainWindow), cleanUp(std::move(lastCleanUp)), signalPipe{-1, -1}, notifier(nullptr), wanted(0),
      ending(false)
{
    current = this;
    owner = getpid();
    if (pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) == 0) {
        notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, this);
        connect(notifier, SIGNAL(activated(int)), this, SLOT(signalsCame()));
        EndSignals::install(signalPipe[1]);
    }
    // The toolkit says that the connection is broken, and then ends the process. Where a library below it, or
    // one that a desktop has the toolkit load, notices first, it does the same by a handler of its own.
    MessageHandler::watch(lookAtDisplay);
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
    // The descriptors stay: a signal may still come.
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

void ProgramEnd::lookAtDisplay(bool fatal)
{
    // What is reported on the way to the end is not another one.
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
    // The last of three ways to notice, for what ends the process without a word: some libraries that were
    // loaded later have gone already. Not in a child, nor where another thread has ended the process: the
    // graphical one still runs then.
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
        Unattended::report(tr("The transaction has come to its end. VYRE ends."));
    }
    // Objects of the toolkit cannot be torn down without the display.
    _exit(1);
}

void ProgramEnd::signalEnds(int number)
{
    finish(!displayIsLost());
    EndSignals::endBy(number);
}

void ProgramEnd::signalsCame()
{
    int number = 0;
    while (read(signalPipe[0], &number, sizeof number) == ssize_t(sizeof number)) {
        if (wanted == 0) {
            wanted = number;
        }
    }
    if (wanted == 0 || ending) {
        return;
    }
    if (window.isChangingSystem()) {
        // It came just before that began: from then on signals are held back elsewhere.
        QTimer::singleShot(lookingInterval, this, SLOT(signalsCame()));
        return;
    }
    signalEnds(wanted);
}
