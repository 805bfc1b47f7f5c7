// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <fcntl.h>
#include <functional>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "app/base/StandardDescriptors.h"

namespace {

// Runs the function in a child process; returns the child's exit status.
int inAnotherProcess(const std::function<int()>& function)
{
    const pid_t child = fork();
    if (child == 0) {
        _exit(function());
    }
    int status = -1;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool isSameFile(const struct stat& one, const struct stat& other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

} // namespace

class StandardDescriptorsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void closedDescriptorsAreOpenedButOpenDescriptorsAreNotChanged()
    {
        for (int closed = 0; closed < 8; ++closed) {
            const int status = inAnotherProcess([closed] {
                struct stat null;
                struct stat before[3];
                stat("/dev/null", &null);
                for (int fd = 0; fd < 3; ++fd) {
                    // Do not open the null device here: ensure() also opens it, so the test would not
                    // notice an unwanted change.
                    dup2(open("/", O_RDONLY), fd);
                    fstat(fd, &before[fd]);
                }
                for (int fd = 0; fd < 3; ++fd) {
                    if ((closed >> fd & 1) != 0) {
                        close(fd);
                    }
                }
                StandardDescriptors::ensure();
                for (int fd = 0; fd < 3; ++fd) {
                    struct stat after;
                    if (fstat(fd, &after) != 0 ||
                        !isSameFile(after, (closed >> fd & 1) != 0 ? null : before[fd]) ||
                        (fcntl(fd, F_GETFD) & FD_CLOEXEC) != 0) {
                        return fd + 1;
                    }
                }
                return 0;
            });
            QVERIFY2(status == 0, qPrintable(QStringLiteral("%1: %2").arg(closed).arg(status)));
        }
    }
};

QTEST_GUILESS_MAIN(StandardDescriptorsTest)
#include "StandardDescriptorsTest.moc"
