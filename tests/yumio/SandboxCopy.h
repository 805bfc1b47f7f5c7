// SPDX-License-Identifier: GPL-2.0-or-later

// A private copy of the tests' sandbox. It serves its repositories as long as the object exists. It sets
// VYREROOT and HOME, so that the process works on the copy. A process has only one object of this class, on
// the graphical thread.

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

    // Returns false if the copy cannot be made or served; standard error shows the reason.
    bool start();
    // Ends the server and waits; returns false if the server does not end.
    bool stop();

    QString root() const { return rootPath; }
    // The reason, for QSKIP, why the package manager cannot read groups here; empty if it can.
    QByteArray withoutGroups() const;
    // A path in the directory of the copy. Tests may also write their own files there.
    QString filePath(const QString& name) const { return scratch.filePath(name); }

private:
    bool readLine(QString& line);

    QTemporaryDir scratch;
    QString rootPath;
    QProcess server;
};

#endif
