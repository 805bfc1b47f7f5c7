#include "app/MessageHandler.h"

#include <QByteArray>
#include <QString>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

#include "app/base/Program.h"

namespace MessageHandler {

namespace {

int terminal = -1;

void write(QtMsgType, const QMessageLogContext&, const QString& text)
{
    const QByteArray line = QByteArray(program) + ": " + text.toLocal8Bit() + '\n';
    const ssize_t written = ::write(terminal, line.constData(), static_cast<size_t>(line.size()));
    (void)written; // a terminal that is gone has nobody to tell
}

} // namespace

void install()
{
    terminal = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    if (terminal >= 0) {
        qInstallMessageHandler(write);
    }
}

} // namespace MessageHandler
