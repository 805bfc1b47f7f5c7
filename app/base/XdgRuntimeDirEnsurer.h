// SPDX-License-Identifier: GPL-2.0-or-later

// Creates a runtime directory if the process has none, and removes it when the program ends. For example, a
// process of a privileged account without a login session has no runtime directory.
//
// main() creates the XdgRuntimeDirEnsurer first and destroys it last. No other thread exists at these two
// times.

#ifndef APP_BASE_XDGRUNTIMEDIRENSURER_H
#define APP_BASE_XDGRUNTIMEDIRENSURER_H

class XdgRuntimeDirEnsurer
{
public:
    // If XDG_RUNTIME_DIR is unset or empty, creates a directory with mode 0700 and sets XDG_RUNTIME_DIR to
    // its path. The directory is below TMPDIR, or below "/tmp" if TMPDIR is unset. The name of this directory
    // is predictable, so anyone can create it in "/tmp". Therefore an existing directory is used only if it
    // belongs to this user, has mode 0700 and is not a link. Otherwise the new directory gets an
    // unpredictable name.
    XdgRuntimeDirEnsurer();
    // Removes the directory and its contents, even if the directory existed before. Does not follow links,
    // and does not remove the contents of mounted directories.
    ~XdgRuntimeDirEnsurer();
    // Does the same as the destructor, for a process that ends without running destructors. Call this
    // function at most once.
    void remove();
    XdgRuntimeDirEnsurer(const XdgRuntimeDirEnsurer&) = delete;
    XdgRuntimeDirEnsurer& operator=(const XdgRuntimeDirEnsurer&) = delete;

private:
    bool open(const char* name);

    char created[1024]; // the path of the created directory, or an empty string
    int parent;         // a descriptor of the directory above the created directory, or -1
    int directory;
};

#endif
