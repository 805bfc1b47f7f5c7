// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/MessageHandler.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "app/base/Program.h"

namespace MessageHandler {

namespace {

int terminal = -1;
std::atomic<void (*)(bool)> watcher(nullptr);
// True if the last message has timed out: the program at the other end of the terminal or pipe did not read
// the message.
std::atomic<bool> stuck(false);

// The maximum number of bytes for one write(). If poll() reports that a pipe is ready, the pipe accepts this
// number of bytes without blocking. If nobody reads the pipe, messages are lost, but VYRE does not hang.
constexpr int block = 512;
constexpr int patience = 1000; // milliseconds

void write(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    say(text);
    if (void (*const function)(bool) = watcher) {
        function(type == QtFatalMsg);
    }
}

} // namespace

void say(const QString& text)
{
    const QByteArray line = QByteArray(program) + ": " + text.toLocal8Bit() + '\n';
    for (int done = 0; done < line.size();) {
        pollfd ready = {terminal, POLLOUT, 0};
        if (poll(&ready, 1, stuck ? 0 : patience) <= 0) {
            stuck = true; // the next messages do not wait
            break;
        }
        stuck = false;
        const ssize_t written = ::write(terminal, line.constData() + done,
                                        static_cast<size_t>(std::min(block, line.size() - done)));
        if (written <= 0) {
            break; // the terminal is closed
        }
        done += static_cast<int>(written);
    }
}

void install()
{
    terminal = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    if (terminal >= 0) {
        qInstallMessageHandler(write);
    }
}

void watch(void (*function)(bool fatal))
{
    watcher = function;
}

} // namespace MessageHandler
