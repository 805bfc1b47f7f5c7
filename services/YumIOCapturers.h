// SPDX-License-Identifier: GPL-2.0-or-later

// Captures standard output and standard error during an operation, and sends the text to the back end. The
// captured output includes the output of programs that this process starts.
//
// YumIOCapturers redirects descriptors 1 and 2 to pipes. The worker thread creates and destroys it.
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

// The worker creates, activates and deactivates a YumIOCapturersMinion. Its slots run on the graphical
// thread, which also deletes it.
class YumIOCapturersMinion : public QObject
{
    Q_OBJECT

public:
    // Takes over the read ends of the two pipes, which must be non-blocking. The receiver is the back end,
    // which the main window owns.
    YumIOCapturersMinion(CapturedOutput* textReceiver, int stdoutReadEnd, int stderrReadEnd);
    // Reads the rest of the output. The worker does not wait for this destructor.
    ~YumIOCapturersMinion() override;

    // Does the work of all minions without an event loop: reads the available output, and deactivates each
    // minion whose worker has requested that. The graphical thread calls this function repeatedly when it
    // cannot return to its event loop.
    static void serveAll();

    // Makes the graphical thread watch the pipes. Does not wait.
    void activate();
    // Stops watching the pipes, and waits until their contents have been read. If the graphical thread called
    // this function, that thread would wait for itself.
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
    bool finalizing; // true while finalize() runs and the worker waits for its end
    FileDescriptor stdoutFd;
    FileDescriptor stderrFd;
    std::unique_ptr<QSocketNotifier> stdoutNotifier;
    std::unique_ptr<QSocketNotifier> stderrNotifier;
    QSemaphore finished;
    // The decoders keep their state, because two reads can split a multi-byte character.
    QTextDecoder stdoutDecoder;
    QTextDecoder stderrDecoder;
};

class YumIOCapturers : public QObject
{
    Q_OBJECT

public:
    // Starts the capture. If the capture cannot be started, the receiver gets a report, and the operation
    // runs without capture.
    explicit YumIOCapturers(CapturedOutput* textReceiver);
    // Restores the descriptors, and returns when all output has reached the receiver. If a descriptor cannot
    // be restored, the receiver gets a report, and the graphical thread continues to watch the pipes.
    ~YumIOCapturers() override;

private:
    struct Pipe
    {
        bool open();

        FileDescriptor readEnd;
        FileDescriptor writeEnd;
    };

    void startPump();
    // Restores a descriptor from its duplicate if the descriptor was redirected. On failure, reports this and
    // returns false.
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

// While a YumIOCapturersUser exists, `capturersSlot` points to a new YumIOCapturers. After that,
// `capturersSlot` has its former value again. Several of these objects can be nested. The graphical thread
// must not use this class.
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
