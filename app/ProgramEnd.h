// SPDX-License-Identifier: GPL-2.0-or-later

// Ends the process without damage if the display is lost, a signal asks for the end, or a library ends the
// process. A running transaction continues to its end, and all other work is abandoned. Then the locks are
// released and the runtime directory is removed.
//
// It lives on the graphical thread. main() creates the only object after the main window. The object does not
// own the main window.

#ifndef APP_PROGRAMEND_H
#define APP_PROGRAMEND_H

#include <QObject>
#include <QSocketNotifier>

#include <functional>

class MainWindow;

class ProgramEnd : public QObject
{
    Q_OBJECT

public:
    // lastCleanUp does the work that main() does last if the program ends normally.
    ProgramEnd(MainWindow& mainWindow, std::function<void()> lastCleanUp);
    // After the destructor, main() itself ends the process.
    ~ProgramEnd() override;

private Q_SLOTS:
    // Reads the received signals. The first signal ends the process, but not while the back end changes the
    // system.
    void handleSignals();

private:
    [[noreturn]] void displayLost();
    [[noreturn]] void endWithoutToolkit();
    [[noreturn]] void signalEnds(int number);
    void finish(bool displayIsThere);
    bool displayIsLost() const;

    // Qt's message handler calls checkDisplay() after each message. The X library calls connectionBroke() if
    // the connection breaks. The C library calls processExits() at an exit().
    static void checkDisplay(bool fatal);
    static int connectionBroke(void* display);
    static void processExits();

    MainWindow& window;
    std::function<void()> cleanUp;
    int signalPipe[2];
    QSocketNotifier* notifier;
    int firstSignal; // 0 before the first signal
    bool ending;     // the end has begun; later reasons are ignored
};

#endif
