// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/base/XdgRuntimeDirEnsurer.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

const mode_t onlyForOwner = 0700;

const char* nonEmptyVariable(const char* name)
{
    const char* value = std::getenv(name);
    return value != nullptr && value[0] != '\0' ? value : nullptr;
}

// Opens a directory below the directory `parent`. Checks and removals use descriptors, because a path could
// lead to another file after the check.
int openDirectory(int parent, const char* name)
{
    return openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

// Returns the mount number of a file, or -1 on failure. The device number is not sufficient: if a file system
// is mounted twice, both mounts have the same device number.
int mountOf(int fd)
{
    const std::unique_ptr<FILE, int (*)(FILE*)> info(
        std::fopen(("/proc/self/fdinfo/" + std::to_string(fd)).c_str(), "re"), std::fclose);
    char line[128];
    int mount = -1;
    while (info != nullptr && std::fgets(line, sizeof line, info.get()) != nullptr) {
        if (std::sscanf(line, "mnt_id: %d", &mount) == 1) {
            return mount;
        }
    }
    return -1;
}

// Removes the contents of the directory `fd` on the mount `mount`, and closes the descriptor.
void removeContents(int fd, int mount)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(fdopendir(fd), closedir);
    if (directory == nullptr) {
        close(fd);
        return;
    }
    std::vector<std::string> names;
    while (const dirent* entry = readdir(directory.get())) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
            names.emplace_back(entry->d_name);
        }
    }
    for (const std::string& name : names) {
        if (unlinkat(fd, name.c_str(), 0) == 0 || (errno != EISDIR && errno != EPERM)) {
            continue;
        }
        const int below = openDirectory(fd, name.c_str());
        if (below < 0) {
            continue;
        }
        const int mountBelow = mountOf(below);
        if (mountBelow == -1 || mountBelow != mount) {
            close(below);
            continue;
        }
        removeContents(below, mount);
        (void)unlinkat(fd, name.c_str(), AT_REMOVEDIR);
    }
}

} // namespace

XdgRuntimeDirEnsurer::XdgRuntimeDirEnsurer() : parent(-1), directory(-1)
{
    created[0] = '\0';
    if (nonEmptyVariable("XDG_RUNTIME_DIR") != nullptr) {
        return;
    }
    const char* base = nonEmptyVariable("TMPDIR");
    if (base == nullptr) {
        base = "/tmp";
    }
    const int length =
        std::snprintf(created, sizeof created, "%s/xdg_runtime.%d", base, static_cast<int>(geteuid()));
    if (length < 0 || static_cast<size_t>(length) >= sizeof created) {
        // Do not use a truncated path: it could name another user's directory, which the destructor would
        // remove.
        created[0] = '\0';
        return;
    }

    parent = ::open(base, O_PATH | O_DIRECTORY | O_CLOEXEC);
    const char* name = created + std::strlen(base) + 1;
    const mode_t before = umask(07777 & ~onlyForOwner);
    if (parent >= 0) {
        (void)mkdirat(parent, name, onlyForOwner);
        if (!open(name)) {
            // The existing directory belongs to another user, or other users may enter it. Create a directory
            // with a random suffix instead. If the longer name does not fit into the buffer, use no
            // directory.
            const int end =
                std::snprintf(created + length, sizeof created - static_cast<size_t>(length), ".XXXXXX");
            if (static_cast<size_t>(length + end) >= sizeof created || mkdtemp(created) == nullptr ||
                !open(name)) {
                created[0] = '\0';
            }
        }
    }
    umask(before);
    if (created[0] != '\0') {
        setenv("XDG_RUNTIME_DIR", created, 1);
    }
}

// Opens the directory. Returns false if it is missing or not safe.
bool XdgRuntimeDirEnsurer::open(const char* name)
{
    directory = openDirectory(parent, name);
    struct stat status;
    if (directory >= 0 && (fstat(directory, &status) != 0 || status.st_uid != geteuid() ||
                           (status.st_mode & 07777) != onlyForOwner)) {
        close(directory);
        directory = -1;
    }
    return directory >= 0;
}

XdgRuntimeDirEnsurer::~XdgRuntimeDirEnsurer()
{
    remove();
}

void XdgRuntimeDirEnsurer::remove()
{
    if (directory >= 0) {
        removeContents(directory, mountOf(directory));
        (void)unlinkat(parent, std::strrchr(created, '/') + 1, AT_REMOVEDIR);
        directory = -1;
    }
    if (parent >= 0) {
        close(parent);
        parent = -1;
    }
}
