// SPDX-License-Identifier: GPL-2.0-or-later

// Provides a private copy of the tests' sandbox, and a server for the repositories of the copy, until the
// SandboxCopy is destroyed. A SandboxCopy sets VYREROOT and HOME, so that the process works on the copy. A
// process has only one SandboxCopy, on the graphical thread.

#ifndef TESTS_YUMIO_SANDBOXCOPY_H
#define TESTS_YUMIO_SANDBOXCOPY_H

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

class SandboxCopy
{
public:
    SandboxCopy() = default;
    ~SandboxCopy() { stop(); }
    Q_DISABLE_COPY(SandboxCopy)

    // Makes the copy and starts the server. Returns false if this fails; standard error shows the reason.
    bool start();
    // Ends the server, and waits for its end. Returns false if the server does not end.
    bool stop();

    QString root() const { return rootPath; }
    // The reason why dnf cannot read groups here, for QSKIP; empty if dnf can read groups.
    QByteArray withoutGroups() const;
    // The path of a file in the directory of the copy. Tests may also write files of their own there.
    QString filePath(const QString& name) const { return scratch.filePath(name); }

private:
    bool readLine(QString& line);

    QTemporaryDir scratch;
    QString rootPath;
    QProcess server;
};

#endif
