// SPDX-License-Identifier: GPL-2.0-or-later

// Owns a file descriptor and closes it. Any thread may use a FileDescriptor, but only one thread at a time.

#ifndef SERVICES_FILEDESCRIPTOR_H
#define SERVICES_FILEDESCRIPTOR_H

#include <unistd.h>

class FileDescriptor
{
public:
    // Takes over the descriptor. -1 means no descriptor.
    explicit FileDescriptor(int descriptor = -1) : fd(descriptor) {}
    ~FileDescriptor() { close(); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    bool isOpen() const { return fd >= 0; }
    int get() const { return fd; }

    // Returns the descriptor without closing it. From now on, the caller owns the descriptor.
    int release()
    {
        const int released = fd;
        fd = -1;
        return released;
    }

    // Closes the current descriptor and takes over `descriptor` instead.
    void reset(int descriptor)
    {
        close();
        fd = descriptor;
    }

    void close()
    {
        if (fd >= 0) {
            ::close(fd);
            fd = -1;
        }
    }

private:
    int fd;
};

#endif
