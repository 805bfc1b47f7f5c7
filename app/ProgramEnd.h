// SPDX-License-Identifier: GPL-2.0-or-later

// Ends the process in good order if the display is lost, if a signal asks for the end, or if a library ends
// it. A transaction continues to its end, and all other work is abandoned. Then the locks are released and
// the runtime directory is removed.
//
// Graphical thread; one object. main() makes it after the main window, which it does not own.

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
    // lastCleanUp does the work that main() does last at a normal end.
    ProgramEnd(MainWindow& mainWindow, std::function<void()> lastCleanUp);
    // From here on, main() itself ends the process.
    ~ProgramEnd() override;

private Q_SLOTS:
    // Reads the received signals. The first one ends the process, but not while the back end changes the
    // system.
    void handleSignals();

private:
    [[noreturn]] void displayLost();
    [[noreturn]] void endWithoutToolkit();
    [[noreturn]] void signalEnds(int number);
    void finish(bool displayIsThere);
    bool displayIsLost() const;

    // The toolkit calls the first function for each of its messages. The library below it calls the second,
    // and the C library calls the third at an exit().
    static void checkDisplay(bool fatal);
    static int connectionBroke(void* display);
    static void processExits();

    MainWindow& window;
    std::function<void()> cleanUp;
    int signalPipe[2];
    QSocketNotifier* notifier;
    int firstSignal; // 0: none
    bool ending;     // the end has begun; later causes are ignored
};

#endif
