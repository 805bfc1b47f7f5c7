// Ends the process in good order when its display is lost, when a signal asks for the end, and when a library
// ends it: a transaction is carried on to its end, everything else is given up, the locks are given back and
// the runtime directory is removed.
//
// Graphical thread; one object, made by main() once the main window is there, which it does not own.

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
    // The clean-up is what main() would do last.
    ProgramEnd(MainWindow& mainWindow, std::function<void()> lastCleanUp);
    // From here on the end is main()'s own.
    ~ProgramEnd() override;

private Q_SLOTS:
    // Reads the signals that have come, and ends the process by the first of them unless the system is being
    // changed.
    void signalsCame();

private:
    [[noreturn]] void displayLost();
    [[noreturn]] void endWithoutToolkit();
    [[noreturn]] void signalEnds(int number);
    void finish(bool displayIsThere);
    bool displayIsLost() const;

    // Called by the toolkit, for each of its messages; by the library below it; by the C library at an
    // exit().
    static void lookAtDisplay(bool fatal);
    static int connectionBroke(void* display);
    static void processExits();

    MainWindow& window;
    std::function<void()> cleanUp;
    int signalPipe[2];
    QSocketNotifier* notifier;
    int wanted;  // the first signal; 0: none
    bool ending; // once begun, nothing comes in between
};

#endif
