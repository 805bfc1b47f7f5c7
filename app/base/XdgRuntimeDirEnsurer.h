// Gives the process a runtime directory of its own when it has none, as happens when it runs under a
// privileged account without a login session, and removes it at the end.
//
// The first object that main() makes and the last that it destroys; no other thread exists at either moment.

#ifndef APP_BASE_XDGRUNTIMEDIRENSURER_H
#define APP_BASE_XDGRUNTIMEDIRENSURER_H

class XdgRuntimeDirEnsurer
{
public:
    // Sets XDG_RUNTIME_DIR when it is unset or empty, and makes the directory (mode 0700) below TMPDIR, else
    // "/tmp". An existing directory is used only if it is this user's with that mode, and no link: anyone may
    // make one of that name in "/tmp". Otherwise the directory gets a name that nobody can guess.
    XdgRuntimeDirEnsurer();
    // Removes the directory with everything in it, also when it had been there before. No link is followed,
    // and nothing is removed that is mounted there.
    ~XdgRuntimeDirEnsurer();
    // The same, for an end of the process at which nothing is destroyed. Once.
    void remove();
    XdgRuntimeDirEnsurer(const XdgRuntimeDirEnsurer&) = delete;
    XdgRuntimeDirEnsurer& operator=(const XdgRuntimeDirEnsurer&) = delete;

private:
    bool open(const char* name);

    char created[1024]; // empty: nothing was made
    int parent;         // where it stands; -1: nothing was made
    int directory;
};

#endif
