// SPDX-License-Identifier: GPL-2.0-or-later

// Mounts a small file system on a directory. Only this process and its children see the file system. It
// disappears when these processes end. Only root can mount it.

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
    // Whether this process may mount file systems. A process cannot do so in a plain chroot, where "/" is not
    // a mount point.
    static bool possible()
    {
        return geteuid() == 0 && unshare(CLONE_NEWNS) == 0 &&
               mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    }

    // The new file system hides the existing contents of the directory.
    explicit SmallDisk(const QString& directory) : place(QFile::encodeName(directory))
    {
        if (mount("tmpfs", place.constData(), "tmpfs", 0, "size=256k,mode=755") != 0) {
            qFatal("the small disk cannot be mounted: %s", std::strerror(errno));
        }
    }
    ~SmallDisk() { umount2(place.constData(), MNT_DETACH); }
    Q_DISABLE_COPY(SmallDisk)

    // Fills the file system, except for this number of free blocks. Each block has `blockSize` bytes.
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
