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
std::atomic<bool> stuck(false); // the last wait for the reader of the terminal had no success

// A reader that does not read, for example of a pipe, loses messages but does not stop the program. If poll()
// reports that the descriptor is ready, it accepts this many bytes at once.
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
            stuck = true; // one wait is enough for all messages
            break;
        }
        stuck = false;
        const ssize_t written = ::write(terminal, line.constData() + done,
                                        static_cast<size_t>(std::min(block, line.size() - done)));
        if (written <= 0) {
            break; // the terminal no longer exists
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
