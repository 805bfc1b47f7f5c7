// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/yumio/SandboxCopy.h"

#include <QFile>

bool SandboxCopy::start()
{
    const QString copy = scratch.filePath(QStringLiteral("sandbox"));
    if (QProcess::execute(SANDBOX_TOOL,
                          {QStringLiteral("copy"), qEnvironmentVariable("VYRE_SANDBOX"), copy}) != 0) {
        return false;
    }
    // The server ends when its standard input is closed.
    server.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    server.start(SANDBOX_TOOL,
                 {QStringLiteral("run"), copy, QStringLiteral("--"), QStringLiteral("sh"),
                  QStringLiteral("-c"), QStringLiteral("echo \"$VYREROOT\"; echo \"$HOME\"; exec cat")});
    QString home;
    if (!readLine(rootPath) || !readLine(home)) {
        return false;
    }
    qputenv("HOME", QFile::encodeName(home));
    qputenv("VYREROOT", QFile::encodeName(rootPath));
    return true;
}

QByteArray SandboxCopy::withoutGroups() const
{
    QFile reason(scratch.filePath(QStringLiteral("sandbox/without-groups")));
    return reason.open(QIODevice::ReadOnly) ? reason.readAll() : QByteArray();
}

bool SandboxCopy::readLine(QString& line)
{
    while (!server.canReadLine()) {
        if (!server.waitForReadyRead(60000)) {
            return false;
        }
    }
    line = QString::fromLocal8Bit(server.readLine()).trimmed();
    return true;
}

bool SandboxCopy::stop()
{
    if (server.state() == QProcess::NotRunning) {
        return true;
    }
    server.closeWriteChannel();
    return server.waitForFinished(60000);
}
