// SPDX-License-Identifier: GPL-2.0-or-later

// Sends the output of the process, and of the programs that it starts, to the back end for the length of an
// operation. Standard output and standard error are captured.
//
// YumIOCapturers is made and destroyed on the worker thread, and redirects descriptors 1 and 2 into pipes.
// YumIOCapturersMinion lives on the graphical thread and reads the output that an OutputPump moves out of
// these pipes. YumIOCapturersUser installs a YumIOCapturers for one operation.

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

// The worker makes it and switches it on and off. Its slots run on the graphical thread, which also deletes
// it.
class YumIOCapturersMinion : public QObject
{
    Q_OBJECT

public:
    // Takes over the read ends of the two pipes, which must be non-blocking. The receiver is not owned.
    YumIOCapturersMinion(CapturedOutput* textReceiver, int stdoutReadEnd, int stderrReadEnd);
    // Reads the remaining output. The worker does not wait for it.
    ~YumIOCapturersMinion() override;

    // Does the work of every such object without an event loop: reads the available output, and stops
    // watching where the worker has asked for it. The graphical thread calls it if it does not return to its
    // event loop.
    static void serveAll();

    // Starts watching the pipes. Does not wait.
    void activate();
    // Stops watching the pipes, and waits until their contents have been read. The graphical thread must not
    // call it, because it would wait for itself.
    void deactivate();

public Q_SLOTS:
    void initialize();
    void finalize();
    void readStdout();
    void readStderr();

private:
    void endFinalizing();

    CapturedOutput* receiver;
    bool active;
    bool finalizing; // the worker waits for the end of finalize()
    FileDescriptor stdoutFd;
    FileDescriptor stderrFd;
    std::unique_ptr<QSocketNotifier> stdoutNotifier;
    std::unique_ptr<QSocketNotifier> stderrNotifier;
    QSemaphore finished;
    // A multi-byte character can be split between two reads.
    QTextDecoder stdoutDecoder;
    QTextDecoder stderrDecoder;
};

class YumIOCapturers : public QObject
{
    Q_OBJECT

public:
    // A failure is reported to the receiver. The operation then runs without capture.
    explicit YumIOCapturers(CapturedOutput* textReceiver);
    // Restores the descriptors, and returns when all output has reached the receiver. A failure to restore
    // one is reported. The pipes then stay watched.
    ~YumIOCapturers() override;

private:
    struct Pipe
    {
        bool open();

        FileDescriptor readEnd;
        FileDescriptor writeEnd;
    };

    void startPump();
    // Restores a saved descriptor, if it had been replaced. A failure is reported, and returns false.
    bool restore(const FileDescriptor& saved, int fd, bool redirected);

    YumIOCapturersMinion* minion;
    CapturedOutput* receiver;
    std::unique_ptr<OutputPump> pump;
    FileDescriptor savedStdout;
    FileDescriptor savedStderr;
    Pipe stdoutPipe;
    Pipe stderrPipe;
    bool stdoutRedirected;
    bool stderrRedirected;
};

// Sets the slot to a YumIOCapturers for the length of a scope, then restores its former value. Scopes nest.
// The graphical thread must not use it.
class YumIOCapturersUser
{
public:
    YumIOCapturersUser(YumIOCapturers*& capturersSlot, CapturedOutput* receiver);
    ~YumIOCapturersUser();
    YumIOCapturersUser(const YumIOCapturersUser&) = delete;
    YumIOCapturersUser& operator=(const YumIOCapturersUser&) = delete;

private:
    YumIOCapturers*& slot;
    YumIOCapturers* former;
};

#endif
