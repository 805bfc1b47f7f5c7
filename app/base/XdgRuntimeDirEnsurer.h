// SPDX-License-Identifier: GPL-2.0-or-later

// Gives the process a runtime directory if it has none, and removes it at the end. A process that runs under
// a privileged account without a login session has none.
//
// main() makes this object first and destroys it last; no other thread exists at either moment.

#ifndef APP_BASE_XDGRUNTIMEDIRENSURER_H
#define APP_BASE_XDGRUNTIMEDIRENSURER_H

class XdgRuntimeDirEnsurer
{
public:
    // Sets XDG_RUNTIME_DIR if it is unset or empty, and makes the directory (mode 0700) below TMPDIR, or
    // below "/tmp" if TMPDIR is unset. Anyone can make a directory of that name in "/tmp". So an existing one
    // must belong to this user, have that mode and not be a link. Otherwise the directory gets an
    // unpredictable name.
    XdgRuntimeDirEnsurer();
    // Removes the directory and its contents, even if it existed before. Links are not followed, and mounted
    // directories keep their contents.
    ~XdgRuntimeDirEnsurer();
    // Does the same at an end of the process that runs no destructors. Call it once.
    void remove();
    XdgRuntimeDirEnsurer(const XdgRuntimeDirEnsurer&) = delete;
    XdgRuntimeDirEnsurer& operator=(const XdgRuntimeDirEnsurer&) = delete;

private:
    bool open(const char* name);

    char created[1024]; // empty: no directory was made
    int parent;         // the directory above it; -1: no directory was made
    int directory;
};

#endif
