// SPDX-License-Identifier: GPL-2.0-or-later

// Moves output from the writers' pipes to the reader's pipes, so that no writer must wait for the reader.
//
// While output is captured, descriptors 1 and 2 are pipes that the graphical thread reads. If a library on
// the graphical thread wrote to a full pipe, this thread would wait for itself for ever. Therefore the pump
// is between the writers and the reader, and stores the unread output in memory.
//
// A worker thread captures the output: it creates the pump and stops it. The pump runs on its own thread,
// which receives no signals.

#ifndef SERVICES_OUTPUTPUMP_H
#define SERVICES_OUTPUTPUMP_H

#include <QByteArray>

#include <thread>

#include "services/FileDescriptor.h"

class OutputPump
{
public:
    // If more than this number of bytes wait for the reader, the pump slows the writers down. The pump never
    // stops the writers.
    static constexpr int fullBuffer = 1 << 20;
    // The maximum number of bytes that wait for the reader. The pump drops any output beyond this limit and
    // inserts a line that reports the gap.
    static constexpr int mostBytes = 256 << 20;

    static constexpr int channelCount = 2;

    // One channel of the pump: the pump reads from `from`, and writes to `to`.
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
    // Waits until the reader's pipes contain all output that was written before the call. During this wait,
    // the reader must read from its pipes or close them.
    void stop();

private:
    struct Way
    {
        Channel channel;
        QByteArray waiting; // the output that has been read; the bytes before `done` have been written
        int done = 0;
        bool ended = false;   // the input has ended
        bool leftOut = false; // the pump has dropped the output that it read last
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
