// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/OutputPump.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <system_error>
#include <utility>

#include "app/base/SignalsBlocked.h"

namespace {

constexpr int blockSize = 64 << 10;

// If the reader is too slow, the pump waits for this time after each block, to slow the writers down.
constexpr int restMilliseconds = 20;

} // namespace

OutputPump::OutputPump() = default;

OutputPump::~OutputPump()
{
    stop();
}

bool OutputPump::start(Channel (&channels)[channelCount])
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return false;
    }
    wakeRead.reset(ends[0]);
    wakeWrite.reset(ends[1]);
    for (int i = 0; i < channelCount; ++i) {
        ways[i].channel.from.reset(channels[i].from.release());
        ways[i].channel.to.reset(channels[i].to.release());
    }

    // Block all signals while the new thread is created, because the new thread inherits the blocked signals.
    // With SIGPIPE unblocked, a write to a pipe without a reader would end the program.
    bool started = true;
    {
        const SignalsBlocked signalsBlocked;
        try {
            thread = std::thread(&OutputPump::run, this);
        } catch (const std::system_error&) {
            started = false;
        }
    }
    for (int i = 0; i < channelCount && !started; ++i) {
        channels[i].from.reset(ways[i].channel.from.release());
        channels[i].to.reset(ways[i].channel.to.release());
    }
    return started;
}

void OutputPump::stop()
{
    if (thread.joinable()) {
        wakeWrite.close(); // the pump's thread then reads the end of file and stops
        thread.join();
    }
    for (Way& way : ways) {
        way.channel.from.close();
        way.channel.to.close();
    }
}

// Reads only the bytes that are available at the start of the call. Otherwise a writer that never pauses
// would keep the pump in this function.
void OutputPump::fill(Way& way)
{
    int count = 0;
    if (ioctl(way.channel.from.get(), FIONREAD, &count) != 0) {
        way.ended = true;
        return;
    }
    const int old = way.waiting.size();
    way.waiting.resize(old + (count > 0 ? count : blockSize));
    const ssize_t got =
        read(way.channel.from.get(), way.waiting.data() + old, static_cast<size_t>(way.waiting.size() - old));
    way.waiting.resize(old + (got > 0 ? static_cast<int>(got) : 0));
    if (countWaiting(way) > mostBytes) {
        way.waiting.resize(old);
        if (!way.leftOut) {
            way.leftOut = true;
            way.waiting += "\n(output is left out here)\n";
        }
    } else {
        way.leftOut = false;
    }
    if (got == 0 || (got < 0 && errno != EAGAIN && errno != EINTR)) {
        way.ended = true;
    }
}

void OutputPump::drain(Way& way)
{
    const ssize_t put = write(way.channel.to.get(), way.waiting.constData() + way.done,
                              static_cast<size_t>(countWaiting(way)));
    if (put > 0) {
        way.done += static_cast<int>(put);
    } else if (put < 0 && errno != EAGAIN && errno != EINTR) {
        // The reader has closed its end of the pipe. Drop the output, so that the writers never wait.
        way.done = way.waiting.size();
    }
    if (countWaiting(way) == 0) {
        way.waiting.clear();
        way.done = 0;
    } else if (way.done > way.waiting.size() / 2) {
        way.waiting.remove(0, way.done);
        way.done = 0;
    }
}

void OutputPump::run()
{
    for (bool stopping = false;;) {
        enum { Wake = 2 * channelCount };
        pollfd polled[Wake + 1];
        bool anything = !stopping;
        bool crowded = false;
        for (int i = 0; i < channelCount; ++i) {
            const Way& way = ways[i];
            const bool waiting = countWaiting(way) > 0;
            anything = anything || waiting;
            crowded = crowded || countWaiting(way) > fullBuffer;
            // A descriptor of -1 makes poll() ignore this entry.
            polled[2 * i] = {way.ended || stopping ? -1 : way.channel.from.get(), POLLIN, 0};
            polled[2 * i + 1] = {waiting ? way.channel.to.get() : -1, POLLOUT, 0};
        }
        if (!anything) {
            return;
        }
        polled[Wake] = {stopping ? -1 : wakeRead.get(), POLLIN, 0};
        if (poll(polled, Wake + 1, -1) < 0) {
            continue; // poll() fails only if memory is short, because all signals are blocked
        }
        for (int i = 0; i < channelCount; ++i) {
            if (polled[2 * i + 1].revents != 0) {
                drain(ways[i]);
            }
            if (polled[2 * i].revents != 0) {
                fill(ways[i]);
            }
        }
        if (polled[Wake].revents != 0) {
            stopping = true;
            for (Way& way : ways) {
                if (!way.ended) {
                    fill(way);
                }
            }
        } else if (crowded) {
            poll(nullptr, 0, restMilliseconds);
        }
    }
}
