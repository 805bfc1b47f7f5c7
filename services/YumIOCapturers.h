// Feeds what is written to the process's standard output and standard error, also by the programs it starts,
// to the back end for the length of an operation.
//
// YumIOCapturers is made and destroyed on the worker thread and redirects descriptors 1 and 2 into pipes.
// YumIOCapturersMinion lives on the graphical thread and reads what an OutputPump passes on from these pipes.
// YumIOCapturersUser installs a YumIOCapturers for one operation.

#ifndef SERVICES_YUMIOCAPTURERS_H
#define SERVICES_YUMIOCAPTURERS_H

#include <memory>

#include <QCoreApplication>
#include <QObject>
#include <QSemaphore>
#include <QSocketNotifier>
#include <QTextDecoder>

#include "services/CapturedOutput.h"
#include "services/FileDescriptor.h"
#include "services/OutputPump.h"

// Made and switched on and off by the worker; its slots run in the graphical thread, where it is also
// deleted.
class YumIOCapturersMinion : public QObject
{
    Q_OBJECT

public:
    // Takes over the read ends of the two pipes, which must be non-blocking. The receiver is not owned.
    YumIOCapturersMinion(CapturedOutput* yumIO, int stdoutReadEnd, int stderrReadEnd);
    // Reads what is left, without the worker waiting for it.
    ~YumIOCapturersMinion() override;

    // Does the part of every such object of the process without an event loop: reads what has come, and stops
    // watching where the worker has asked for it. For a graphical thread that does not return to its loop.
    static void serveAll();

    // Starts watching the pipes. Does not wait.
    void activate();
    // Stops watching the pipes, and waits until everything that was written to them has been read. Not for
    // the graphical thread: it would wait for itself.
    void deactivate();

public Q_SLOTS:
    void initialize();
    void finalize();
    void readStdout();
    void readStderr();

private:
    void endFinalizing();

    CapturedOutput* yumIO;
    bool active;
    bool finalizing; // the worker waits for the end of finalize()
    FileDescriptor stdoutFd;
    FileDescriptor stderrFd;
    std::unique_ptr<QSocketNotifier> stdoutNotifier;
    std::unique_ptr<QSocketNotifier> stderrNotifier;
    QSemaphore finished;
    // A character can be split between two reads.
    QTextDecoder stdoutDecoder;
    QTextDecoder stderrDecoder;
};

class YumIOCapturers : public QObject
{
    Q_OBJECT

public:
    // A failure is reported to the receiver, and the operation then runs without capture.
    explicit YumIOCapturers(CapturedOutput* yumIO);
    // Puts the descriptors back, and returns when all that was written has reached the receiver. A failure to
    // put one back is reported, and the pipes then stay watched.
    ~YumIOCapturers() override;

private:
    struct Pipe
    {
        bool open();

        FileDescriptor readEnd;
        FileDescriptor writeEnd;
    };

    void startPump();
    // Puts a saved descriptor back in place, if it had been replaced; false, and reported, when that failed.
    bool restore(const FileDescriptor& saved, int fd, bool redirected);

    YumIOCapturersMinion* minion;
    CapturedOutput* yumIO;
    std::unique_ptr<OutputPump> pump;
    FileDescriptor savedStdout;
    FileDescriptor savedStderr;
    Pipe stdoutPipe;
    Pipe stderrPipe;
    bool stdoutRedirected;
    bool stderrRedirected;
};

// Gives the slot a YumIOCapturers for the length of a scope, then puts its former value back. Scopes nest.
// Not for the graphical thread.
class YumIOCapturersUser
{
public:
    YumIOCapturersUser(YumIOCapturers*& capturersSlot, CapturedOutput* yumIO);
    ~YumIOCapturersUser();
    YumIOCapturersUser(const YumIOCapturersUser&) = delete;
    YumIOCapturersUser& operator=(const YumIOCapturersUser&) = delete;

private:
    YumIOCapturers*& slot;
    YumIOCapturers* former;
};

#endif
