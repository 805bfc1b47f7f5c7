// Passes on what is written into pipes, so that no writer has to wait for the reader at the other end.
//
// While output is captured, descriptors 1 and 2 are pipes that the graphical thread reads. A library that
// writes to one of them in that very thread would wait for ever for room in a full pipe. The pump stands
// between the writers and the reader, and keeps in memory what the reader has not taken yet.
//
// Made and stopped by the worker thread that captures; it works on a thread of its own, which takes no
// signals.

#ifndef SERVICES_OUTPUTPUMP_H
#define SERVICES_OUTPUTPUMP_H

#include <QByteArray>

#include <thread>

#include "services/FileDescriptor.h"

class OutputPump
{
public:
    // What waits for the reader may take this many bytes; then the writers are slowed down, and never
    // stopped.
    static constexpr int fullBuffer = 1 << 20;
    // So many at most: what comes then, while the reader does not read, is left out, and a line says so.
    static constexpr int mostBytes = 256 << 20;

    static constexpr int channelCount = 2;

    // One way through the pump: where bytes are read, and where they are written to.
    struct Channel
    {
        FileDescriptor from;
        FileDescriptor to;
    };

    OutputPump();
    ~OutputPump();
    OutputPump(const OutputPump&) = delete;
    OutputPump& operator=(const OutputPump&) = delete;

    // Takes the four descriptors over, which must be non-blocking. False: there are no resources for it, and
    // the channels are as before.
    bool start(Channel (&channels)[channelCount]);
    // Returns when everything that had been written before the call has reached the reader's end. The reader
    // has to read meanwhile, or to close its end.
    void stop();

private:
    struct Way
    {
        Channel channel;
        QByteArray waiting; // read, and not yet written from "done" on
        int done = 0;
        bool ended = false;   // nothing more comes, or nothing more is wanted
        bool leftOut = false; // since the buffer was full
    };

    void run();
    static void fill(Way& way);
    static void drain(Way& way);
    static int countWaiting(const Way& way) { return way.waiting.size() - way.done; }

    Way ways[channelCount];
    FileDescriptor wakeRead;
    FileDescriptor wakeWrite;
    std::thread thread;
};

#endif
