// SPDX-License-Identifier: GPL-2.0-or-later

// Mounts a small file system on a directory. Only this process sees it, and it ends with the process. Only
// root can mount.

#ifndef TESTS_REPO_SMALLDISK_H
#define TESTS_REPO_SMALLDISK_H

#include <QFile>
#include <QString>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/vfs.h>
#include <unistd.h>

class SmallDisk
{
public:
    // Whether this process has the right to mount file systems. Returns false also if "/" is not a mount
    // point, as in a plain chroot.
    static bool possible()
    {
        return geteuid() == 0 && unshare(CLONE_NEWNS) == 0 &&
               mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    }

    // Mounts the file system over the directory, and so hides the directory's own contents.
    explicit SmallDisk(const QString& directory) : place(QFile::encodeName(directory))
    {
        if (mount("tmpfs", place.constData(), "tmpfs", 0, "size=256k,mode=755") != 0) {
            qFatal("no small disk: %s", std::strerror(errno));
        }
    }
    ~SmallDisk() { umount2(place.constData(), MNT_DETACH); }
    Q_DISABLE_COPY(SmallDisk)

    // Fills the file system until this number of blocks of `blockSize` bytes is free.
    void leave(int blocks) const
    {
        const QByteArray filler = place + "/filler";
        unlink(filler.constData());
        struct statfs room;
        const int file = open(filler.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        if (statfs(place.constData(), &room) != 0 || file < 0 ||
            posix_fallocate(file, 0, (off_t(room.f_bfree) - blocks) * blockSize) != 0) {
            qFatal("the small disk cannot be filled: %s", std::strerror(errno));
        }
        close(file);
    }

    static constexpr int blockSize = 4096;

private:
    QByteArray place;
};

#endif
