// One configuration file of the package manager as it is on the disk: what it holds, or why it is left alone.
//
// A plain value; made on the graphical thread, which reading never keeps waiting: neither for a pipe nor for
// a file without an end.

#ifndef REPO_REPOFILE_H
#define REPO_REPOFILE_H

#include <QByteArray>
#include <QCoreApplication>
#include <QHash>
#include <QPair>
#include <QString>

#include <sys/stat.h>

namespace Repo {

// What is the same for all the paths that lead to one file: its device and its number there.
using FileNumber = QPair<quint64, quint64>;
FileNumber numberOf(const struct stat& status);

// The path without links, ".", ".." and doubled slashes. Of a file that does not exist, the directory is
// looked up; where there is no such directory either, the path is returned as it is.
QString canonicalPath(const QString& path);

class File
{
    Q_DECLARE_TR_FUNCTIONS(Repo::File)

public:
    enum State {
        Text,       // understood
        LeftAlone,  // nothing that a configuration is read from: `reason` says why
        Missing,    // there is no such name
        Directory,  // a directory
        NoStatus,   // stat() failed with `failure`
        Unopenable, // open() failed with `failure`
        Unreadable  // read() failed with `failure`
    };

    static File read(const QString& path);
    // The same of a file whose stat() is known.
    static File read(const QString& path, const struct stat& status);

    // What `text`, with line feeds, is in a file of this kind: with its line ends and its byte order mark.
    QByteArray encoded(const QString& text) const;

    State state = Missing;
    int failure = 0;
    // A sentence for the user, that names the file.
    QString reason;
    // All that the file holds, as it is.
    QByteArray bytes;
    // The same as Latin-1, without a byte order mark and with line feeds alone at the ends of lines.
    QString text;
    bool hasMark = false;
    bool isAscii = false;
    // Each line ends with a carriage return and a line feed.
    bool hasCarriageReturns = false;
    // Neither of these two, nothing beyond ASCII, no carriage return at the end of a line: reading and
    // writing keep every letter.
    bool isPlain = false;
    FileNumber number;

private:
    void leaveAlone(const QString& sentence);
    bool load(const QString& path);
    void understand(const QString& path);
};

} // namespace Repo

#endif
