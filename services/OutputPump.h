// SPDX-License-Identifier: GPL-2.0-or-later

// Moves the output from the writers' pipes to the reader's pipes, so that no writer has to wait for the
// reader.
//
// While output is captured, descriptors 1 and 2 are pipes that the graphical thread reads. A library that
// writes to one of them on that same thread would wait for ever if the pipe is full. The pump is between the
// writers and the reader, and keeps the unread output in memory.
//
// The worker thread that captures the output makes and stops the pump. The pump works on a thread of its own,
// which receives no signals.

#ifndef SERVICES_OUTPUTPUMP_H
#define SERVICES_OUTPUTPUMP_H

#include <QByteArray>

#include <thread>

#include "services/FileDescriptor.h"

class OutputPump
{
public:
    // If more bytes than this wait for the reader, the pump slows the writers down. It never stops them.
    static constexpr int fullBuffer = 1 << 20;
    // The largest number of bytes that wait for the reader. Further output is dropped, and a line reports it.
    static constexpr int mostBytes = 256 << 20;

    static constexpr int channelCount = 2;

    // One way through the pump: it reads from one descriptor and writes to the other.
    struct Channel
    {
        FileDescriptor from;
        FileDescriptor to;
    };

    OutputPump();
    ~OutputPump();
    OutputPump(const OutputPump&) = delete;
    OutputPump& operator=(const OutputPump&) = delete;

    // Takes over the four descriptors, which must be non-blocking. Returns false if resources are missing;
    // the channels are then unchanged.
    bool start(Channel (&channels)[channelCount]);
    // Returns when all output that was written before the call has reached the reader's end. Meanwhile the
    // reader must read or close its end.
    void stop();

private:
    struct Way
    {
        Channel channel;
        QByteArray waiting; // already read; the bytes from "done" on are still to be written
        int done = 0;
        bool ended = false;   // no more input comes, or no more output is wanted
        bool leftOut = false; // output was dropped since the buffer became full
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
