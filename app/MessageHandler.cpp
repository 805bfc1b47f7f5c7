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
std::atomic<bool> stuck(false); // the last wait for the terminal's reader timed out

// If standard error is a pipe and its reader does not read, messages are lost, but the program does not stop.
// If poll() reports that the descriptor is ready, the descriptor accepts at least this number of bytes.
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
            stuck = true; // later messages do not wait again
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
