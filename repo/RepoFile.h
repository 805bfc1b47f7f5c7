// SPDX-License-Identifier: GPL-2.0-or-later

// One configuration file of the package manager: its contents on the disk, or the reason why VYRE leaves the
// file alone.
//
// The graphical thread creates File objects, which can be copied. Reading never blocks that thread, even if
// the file is a pipe or endless.

#ifndef REPO_REPOFILE_H
#define REPO_REPOFILE_H

#include <QByteArray>
#include <QCoreApplication>
#include <QHash>
#include <QPair>
#include <QString>

#include <sys/stat.h>

namespace Repo {

// The device and inode numbers. These numbers are equal for all paths that lead to the same file.
using FileNumber = QPair<quint64, quint64>;
FileNumber numberOf(const struct stat& status);

// Returns the path without links, ".", ".." and double slashes. If the file is missing, only the path of its
// directory is resolved. If the directory is also missing, the path is returned unchanged.
QString canonicalPath(const QString& path);

class File
{
    Q_DECLARE_TR_FUNCTIONS(Repo::File)

public:
    enum State {
        Text,       // a readable text file
        LeftAlone,  // not used as configuration; `reason` explains this
        Missing,    // the file does not exist
        Directory,  // a directory
        NoStatus,   // stat() failed with `failure`
        Unopenable, // open() failed with `failure`
        Unreadable  // read() failed with `failure`
    };

    static File read(const QString& path);
    // Reads the file; the caller has already called stat().
    static File read(const QString& path, const struct stat& status);

    // Converts a text to bytes for this file. Replaces line feeds by the line ends of the file. If the file
    // had a byte order mark, adds this mark.
    QByteArray encoded(const QString& text) const;

    State state = Missing;
    int failure = 0;
    // The explanation for the user, a sentence with the name of the file.
    QString reason;
    // The complete, unchanged contents of the file.
    QByteArray bytes;
    // The contents as Latin-1, without the byte order mark, and with line feeds as line ends.
    QString text;
    bool hasMark = false;
    bool isAscii = false;
    // True if each line ends with a carriage return and a line feed.
    bool hasCarriageReturns = false;
    // True if the file has no byte order mark, no bytes beyond ASCII and no carriage return at the end of a
    // line. If the program reads a plain file and writes it again, no character changes.
    bool isPlain = false;
    FileNumber number;

private:
    void leaveAlone(const QString& sentence);
    bool load(const QString& path);
    void understand(const QString& path);
};

} // namespace Repo

#endif
