// Gives the process a runtime directory of its own when it has none, as happens when it runs under a
// privileged account without a login session, and removes it at the end.
//
// The first object that main() makes and the last that it destroys; no other thread exists at either moment.

#ifndef APP_BASE_XDGRUNTIMEDIRENSURER_H
#define APP_BASE_XDGRUNTIMEDIRENSURER_H

#include <ftw.h>
#include <sys/stat.h>

class XdgRuntimeDirEnsurer
{
public:
    // Sets XDG_RUNTIME_DIR when it is unset or empty, and makes the directory (mode 0700) below TMPDIR, else
    // "/tmp". An existing directory is used as it is.
    XdgRuntimeDirEnsurer();
    // Removes the directory with everything in it, also when it had been there before.
    ~XdgRuntimeDirEnsurer();
    XdgRuntimeDirEnsurer(const XdgRuntimeDirEnsurer&) = delete;
    XdgRuntimeDirEnsurer& operator=(const XdgRuntimeDirEnsurer&) = delete;

private:
    static int removeFile(const char* path, const struct stat*, int, FTW*);

    char created[1024]; // empty: nothing was made
};

#endif
