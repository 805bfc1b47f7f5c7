// A private copy of the tests' sandbox, whose repositories are served as long as the object lives. The
// process works on its root, by VYREROOT and HOME. One for a process, on the graphical thread.

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

    // False when the copy could not be made or served; standard error tells why.
    bool start();
    // Waits until the server is gone; false when it does not go.
    bool stop();

    QString root() const { return rootPath; }
    // Why the package manager cannot read groups here, for QSKIP; empty when it can.
    QByteArray withoutGroups() const;
    // In the directory of the copy, where tests may leave their own files too.
    QString filePath(const QString& name) const { return scratch.filePath(name); }

private:
    bool readLine(QString& line);

    QTemporaryDir scratch;
    QString rootPath;
    QProcess server;
};

#endif
