// SPDX-License-Identifier: GPL-2.0-or-later

// Ends the process safely if the display is lost, if a signal requests the end, or if a library calls exit().
// A running transaction is completed; any other work is abandoned. Then the program releases the locks and
// removes the runtime directory.
//
// A ProgramEnd lives on the graphical thread. main() owns the only ProgramEnd, and creates it after the main
// window. main() never deletes the main window.

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
    // `lastCleanUp` is called immediately before the object ends the process. If the program ends normally,
    // main() does the same clean-up itself.
    ProgramEnd(MainWindow& mainWindow, std::function<void()> lastCleanUp);
    // Runs only if the program ends normally. After the destructor, a lost display or a call of exit() has no
    // effect on this class.
    ~ProgramEnd() override;

private Q_SLOTS:
    // Reads the received signals, and ends the process with the default action of the first signal. If the
    // back end is changing the system, first waits until this change is complete.
    void handleSignals();

private:
    [[noreturn]] void displayLost();
    [[noreturn]] void endWithoutToolkit();
    [[noreturn]] void signalEnds(int number);
    void finish(bool displayIsThere);
    bool displayIsLost() const;

    // MessageHandler calls checkDisplay() after each message. The X library calls connectionBroke() if the
    // connection to the display breaks. The C library calls processExits() if any code calls exit().
    static void checkDisplay(bool fatal);
    static int connectionBroke(void* display);
    static void processExits();

    MainWindow& window;
    std::function<void()> cleanUp;
    int signalPipe[2];
    QSocketNotifier* notifier;
    int firstSignal; // 0 before the first signal
    bool ending;     // finish() has begun, so later signals and messages are ignored
};

#endif
