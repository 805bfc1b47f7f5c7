// A file system of this process's own with little room, on a directory; gone with the process. Only root has
// one.

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
    // Not where "/" is no mount point either, as in a bare chroot.
    static bool possible()
    {
        return geteuid() == 0 && unshare(CLONE_NEWNS) == 0 &&
               mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    }

    // Over the directory, whose contents are hidden by it.
    explicit SmallDisk(const QString& directory) : place(QFile::encodeName(directory))
    {
        if (mount("tmpfs", place.constData(), "tmpfs", 0, "size=256k,mode=755") != 0) {
            qFatal("no small disk: %s", std::strerror(errno));
        }
    }
    ~SmallDisk() { umount2(place.constData(), MNT_DETACH); }
    Q_DISABLE_COPY(SmallDisk)

    // Fills it until there is room for so many blocks, which are of `blockSize` bytes.
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
