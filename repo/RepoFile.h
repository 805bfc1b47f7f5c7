// SPDX-License-Identifier: GPL-2.0-or-later

// One configuration file of the package manager with its contents on the disk, or the reason why VYRE leaves
// it alone.
//
// A plain value, created on the graphical thread. Reading never blocks that thread, neither for a pipe nor
// for an endless file.

#ifndef REPO_REPOFILE_H
#define REPO_REPOFILE_H

#include <QByteArray>
#include <QCoreApplication>
#include <QHash>
#include <QPair>
#include <QString>

#include <sys/stat.h>

namespace Repo {

// Device and inode number: equal for all paths that lead to the same file.
using FileNumber = QPair<quint64, quint64>;
FileNumber numberOf(const struct stat& status);

// The path without links, ".", ".." and double slashes. For a missing file, only its directory is resolved.
// If the directory is missing too, the path is returned unchanged.
QString canonicalPath(const QString& path);

class File
{
    Q_DECLARE_TR_FUNCTIONS(Repo::File)

public:
    enum State {
        Text,       // a readable text file
        LeftAlone,  // no source of configuration: `reason` says why
        Missing,    // the name does not exist
        Directory,  // a directory
        NoStatus,   // stat() failed with `failure`
        Unopenable, // open() failed with `failure`
        Unreadable  // read() failed with `failure`
    };

    static File read(const QString& path);
    // The same, if the result of stat() is already known.
    static File read(const QString& path, const struct stat& status);

    // The bytes of `text` in this file: with its line ends and its byte order mark. In `text`, line feeds end
    // the lines.
    QByteArray encoded(const QString& text) const;

    State state = Missing;
    int failure = 0;
    // A sentence for the user, which contains the name of the file.
    QString reason;
    // The complete, unchanged contents of the file.
    QByteArray bytes;
    // The contents as Latin-1, without the byte order mark, and with line feeds as line ends.
    QString text;
    bool hasMark = false;
    bool isAscii = false;
    // Each line ends with a carriage return and a line feed.
    bool hasCarriageReturns = false;
    // The file has no byte order mark, no bytes beyond ASCII and no carriage return at the end of a line.
    // Reading and writing such a file changes no character.
    bool isPlain = false;
    FileNumber number;

private:
    void leaveAlone(const QString& sentence);
    bool load(const QString& path);
    void understand(const QString& path);
};

} // namespace Repo

#endif
