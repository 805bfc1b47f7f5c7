// SPDX-License-Identifier: GPL-2.0-or-later

// Reads the package manager's main configuration file and repository files into one list of repositories. The
// editors change this list. Then write() writes the whole list to the files.
//
// YumConfIO neither overwrites nor removes a file that it has not read completely. The same applies to a file
// that another program has changed since the last read. Two paths lead to the same file if their device and
// inode numbers are equal, or if their canonical paths are equal.
//
// A YumConfIO lives on the graphical thread and shows its errors in message boxes; the main window owns it.
// The object reads the bytes of a file as Latin-1 characters, but writes UTF-8.

#ifndef REPO_YUMCONFIO_H
#define REPO_YUMCONFIO_H

#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

#include "repo/RepoEntry.h"
#include "repo/RepoFile.h"
#include "repo/YumRepoEnabled.h"

class QWidget;
class SafeFile;

class YumConfIO : public QObject
{
    Q_OBJECT

public:
    // The object stores references to both arguments, which must outlive the object. The constructor reads no
    // files.
    YumConfIO(const QList<YumRepoEnabled>& requests, QHash<QString, bool>& session);
    ~YumConfIO() override;

    // Returns the path of the main configuration file. Each call searches again for the first existing file
    // of /etc/yum/yum.conf, /etc/yum.conf and /etc/dnf/dnf.conf. If all three are missing, the result is
    // /etc/yum.conf. The script searches the same paths.
    static QString fileName();

    // Returns the directories in which VYRE looks for repository files if the main configuration file names
    // none: /etc/yum.repos.d, /etc/yum/repos.d and each existing directory of `knownDirectories`.
    QStringList defaultDirectories() const;
    // The package manager's default directories, relative to the managed root. The package manager reports
    // these directories when it has started. Before that, the list contains the default directories of all
    // versions of the package manager.
    QStringList knownDirectories{QStringLiteral("/etc/distro.repos.d"),
                                 QStringLiteral("/usr/share/dnf5/repos.d")};

    // Replaces all data by the current contents of the files. Adds new identifiers to `sessionEnabled`; known
    // identifiers keep their value. On failure, shows one error over `window`, returns false and does not
    // emit changed(). `entries` then contains the repositories that were read before the error.
    bool read(QWidget* window);

    // Writes all files, and removes repository files without repositories. If some of the `entries` have
    // empty or repeated identifiers, first asks the user, and removes these entries if the user agrees.
    // Returns false if the user declines, or if an error occurs. Shows the error over `window`. Files that
    // were written before the error keep their new contents. If a write would overwrite another program's
    // changes, nothing is written.
    bool write(QWidget* window);

    // Valid after write() has returned false. True if other programs have changed files and the user wants to
    // read all files again. In this case, `entries` is unchanged.
    bool readAgainWanted = false;
    // Valid after write() has returned true. True if other programs have made changes that `entries` does not
    // contain.
    bool outdated = false;

    // The values of the [main] section.
    QString cachedir;
    QStringList reposdir;
    bool enabled = false;
    bool gpgcheck = false;

    // All repositories, in the order in which they were read.
    QList<Repo::Entry> entries;

    const QList<YumRepoEnabled>& enableRequests;
    // The key is a repository identifier. The value is true if this run of the program uses the repository,
    // regardless of the files.
    QHash<QString, bool>& sessionEnabled;

    // The text of the main file before the first repository section. A line feed ends each logical line.
    QString mainText;

    // Warnings about settings that the package manager reads differently from VYRE, and about files that VYRE
    // leaves alone. The user must see these warnings before a file is written.
    QStringList warnings;

    // The parent window of the message boxes. The caller of read() and write() owns this window. The pointer
    // is valid only during these calls.
    QWidget* parent = nullptr;

    // Physical lines that are already read, but belong to logical lines that readLogicalLine() has not
    // returned yet.
    QStringList pendingLines;

Q_SIGNALS:
    // Emitted after read() has succeeded.
    void changed();
    // Emitted when write() has a message for the user.
    void noted(const QString& text);

private:
    // A file that VYRE has read completely or written.
    struct Known
    {
        QString path;            // the first path that led to the file
        QString canonical;       // the canonical path of the file
        QStringList names;       // the paths of the file in the repository directories
        Repo::File file;         // the contents of the file; the member `text` is empty
        QString unedited;        // the text that write() writes if the user changes nothing in this file
        QStringList identifiers; // the identifiers of the sections, sorted
        bool isMain = false;
    };

    // The order in which files are written. A section may move from one file to another. The file that gains
    // the section is written first, so at least one of the two files always contains the section.
    enum Turn { Gains, GainsAndLoses, GainsNothing, Unedited };

    // The planned write of one file.
    struct Target
    {
        QString path;
        int known = -1; // the index in `knownFiles`
        QList<Repo::Entry> sections;
        QString text;
        bool edited = true;    // the text differs from the text of the last read or write
        bool outdated = false; // another program has changed the file
        bool skipped = false;  // the file is not written
        Turn turn = Gains;
    };

    // Adds a warning if VYRE reads the value of an option as "yes", but the package manager reads it as "no".
    void noteDoubtfulSwitch(const QString& path, const QString& id, const QString& line,
                            const QString& value);

    enum ReadResult { LineRead = 0, EndOfFile = 1, ReadError = 2 };

    // The text of a file and the position of the next line.
    struct Lines
    {
        QString text;
        int next = 0;
    };

    void noteLeftoverCopies();
    Lines linesOf(const Repo::File& file, const QString& path);

    // The following functions show an error before they return false or ReadError.
    bool readMainFile();
    bool readConfFile(Lines& lines);
    bool readRepoDirectory(const QString& directory);
    bool readRepoFile(Lines& lines, const QString& path);
    // Stores a file that was read completely, or the reason why VYRE leaves it alone. The sections of the
    // file are the entries from index `firstEntry` to the end.
    void keep(const QString& path, const Repo::File& file, int firstEntry, bool isMain);
    // A logical line consists of a line and of all lines that follow it and begin with white space.
    int readLogicalLine(Lines& lines, QString& line);
    static int readLine(Lines& lines, QString& line);
    void unreadLine(const QString& line);
    static bool isOption(const QString& line, const QString& key, QString& value);

    static void cleanupRead(Repo::Entry& entry);
    void applyUsedOptions(const Repo::Entry& entry);

    // Returns false if identifiers are empty or repeated, and the user declines to remove these repositories.
    bool checkErrors();
    bool hasEmptyId() const;
    // Returns the repeated identifiers, separated by commas. For each pair of entries with the same
    // identifier, this identifier appears once. Three dots replace the rest of a long list.
    QString getDuplicateId() const;
    void cleanupWrite(QList<Repo::Entry>& list) const;
    static bool filePositionLessThan(const Repo::Entry& left, const Repo::Entry& right);
    static QString textOf(const QString& beginning, const QList<Repo::Entry>& sections);
    static QString textOf(const Repo::Entry& entry);

    // Returns the main file and every file with a repository, in the order in which they are written.
    QList<Target> targets() const;
    // Decides when the file is written. `before` contains the sorted identifiers that the file had at the
    // last read or write.
    static Turn turnOf(const Target& target, const QStringList& before);
    QHash<Repo::FileNumber, int> numbersOfKnown() const;
    // Returns the known repository files that no longer contain a repository and can be removed.
    QList<int> unused(const QList<Target>& list) const;
    // Decides which files are skipped. If a write would overwrite another program's changes, shows a question
    // and returns false.
    bool respectChanges(QList<Target>& list, QList<int>& removed);
    void removeLeftovers() const;
    bool writeFiles(QList<Target>& list);
    bool prepareWrite(SafeFile& file, const Target& target);
    bool commit(std::vector<std::unique_ptr<SafeFile>>& files, const QList<Target*>& list);
    void written(Target& target, const SafeFile& file);
    bool removeUnusedFiles(const QList<int>& removed);
    bool isInRepoDirectory(const QString& path) const;
    bool reportOutdated(const QList<Target>& list);

    // Shows the message and the text of the current errno.
    void error(const QString& message);

    QString mainFile; // the path of the main file when it was read
    QList<Known> knownFiles;
    // Maps each file of the current read to its index in `knownFiles`, or to -1 if VYRE leaves the file
    // alone.
    QHash<Repo::FileNumber, int> knownNumbers;
};

#endif
