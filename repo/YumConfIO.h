// SPDX-License-Identifier: GPL-2.0-or-later

// Reads the main configuration file and the repository files of the package manager into one list of
// repositories, and writes that list back as a whole. In between, the list is the working copy of the
// editors.
//
// It neither overwrites nor removes a file that it has not read and understood completely, or that another
// program has changed since. Two paths lead to the same file if their device and inode numbers, or their
// canonical paths, are equal.
//
// Lives on the graphical thread and shows its errors in message boxes; the main window owns it. It reads
// bytes as Latin-1 and writes UTF-8.

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
    // The object keeps references to both, and they must outlive it. The constructor reads nothing.
    YumConfIO(const QList<YumRepoEnabled>& requests, QHash<QString, bool>& session);
    ~YumConfIO() override;

    // The path of the main configuration file, searched again at each call: the first existing file of
    // /etc/yum/yum.conf, /etc/yum.conf and /etc/dnf/dnf.conf, else the second. The script searches the same
    // paths.
    static QString fileName();

    // The directories of repository files if the main file names none: the two usual ones, and each existing
    // directory of `knownDirectories`.
    QStringList defaultDirectories() const;
    // The default directories of the package manager, below "/". Initially, and if the package manager does
    // not start, these are the directories of all its versions.
    QStringList knownDirectories{QStringLiteral("/etc/distro.repos.d"),
                                 QStringLiteral("/usr/share/dnf5/repos.d")};

    // Replaces everything by the current contents of the files. New identifiers enter the session enable
    // table; known ones keep their state. On a failure, shows one error over `window` and returns false
    // without changed(); `entries` then contains the repositories up to the failure.
    bool read(QWidget* window);

    // Writes every file, and removes the repository files without repositories. If the user agrees, it first
    // removes entries with an empty or repeated identifier from `entries`. Returns false if the user declines
    // or after an error over `window`; the files written before the error stay written. If another program
    // has changed a file to write since reading, nothing is written.
    bool write(QWidget* window);

    // After write() has returned false: other programs have changed files, and the user wants to read these
    // again. `entries` is unchanged.
    bool readAgainWanted = false;
    // After write() has returned true: `entries` does not contain the changes of other programs.
    bool outdated = false;

    // The values of the [main] section.
    QString cachedir;
    QStringList reposdir;
    bool enabled = false;
    bool gpgcheck = false;

    // All repositories, in reading order.
    QList<Repo::Entry> entries;

    const QList<YumRepoEnabled>& enableRequests;
    // Maps an identifier to the use of the repository in this run, independently of the files.
    QHash<QString, bool>& sessionEnabled;

    // The main file before its first repository section; a line feed ends each logical line.
    QString mainText;

    // Warnings for the user before anything is written: settings that the package manager reads in another
    // way, and files that VYRE leaves alone.
    QStringList doubts;

    // The window below the message boxes; not owned, valid during read() and write().
    QWidget* parent = nullptr;

    // Physical lines read ahead and not yet consumed.
    QStringList pendingLines;

Q_SIGNALS:
    // The list was read successfully.
    void changed();
    // Reports an action of write() to the user.
    void noted(const QString& text);

private:
    // A file that VYRE has read completely, or written.
    struct Known
    {
        QString path;            // the first path that led to it
        QString canonical;       // its canonical path
        QStringList names;       // all its paths in the repository directories
        Repo::File file;         // its contents, without `text`
        QString unedited;        // its text after a write without edits
        QStringList identifiers; // of its sections, sorted
        bool isMain = false;
    };

    // The order of writing the files: a section that moves is always in at least one of its two files.
    enum Turn { Gains, GainsAndLoses, GainsNothing, Unedited };

    // The planned write of one file.
    struct Target
    {
        QString path;
        int known = -1; // in `knownFiles`
        QList<Repo::Entry> sections;
        QString text;
        bool edited = true;    // different from the last read or write
        bool outdated = false; // another program has changed the file
        bool skipped = false;  // the file stays unchanged
        Turn turn = Gains;
    };

    // Adds a warning if VYRE reads the value of an option as on, but the package manager reads it as off.
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

    // All these functions show their errors before they return false or ReadError.
    bool readMainFile();
    bool readConfFile(Lines& lines);
    bool readRepoDirectory(const QString& directory);
    bool readRepoFile(Lines& lines, const QString& path);
    // Records a file that was read completely, or the reason to leave it alone. The sections of the file are
    // the entries from `firstEntry` on.
    void keep(const QString& path, const Repo::File& file, int firstEntry, bool isMain);
    // A logical line is a line together with all following lines that begin with white space.
    int readLogicalLine(Lines& lines, QString& line);
    static int readLine(Lines& lines, QString& line);
    void unreadLine(const QString& line);
    static bool isOption(const QString& line, const QString& key, QString& value);

    static void cleanupRead(Repo::Entry& entry);
    void applyUsedOptions(const Repo::Entry& entry);

    // False if the list has errors and the user declines to remove them.
    bool checkErrors();
    bool hasEmptyId() const;
    // The repeated identifiers, separated by commas. Each identifier occurs once for every later entry that
    // repeats it.
    QString getDuplicateId() const;
    void cleanupWrite(QList<Repo::Entry>& list) const;
    static bool filePositionLessThan(const Repo::Entry& left, const Repo::Entry& right);
    static QString textOf(const QString& beginning, const QList<Repo::Entry>& sections);
    static QString textOf(const Repo::Entry& entry);

    // The main file and every file with a repository, in the order of writing.
    QList<Target> targets() const;
    // `before`: the earlier identifiers of the file, sorted.
    static Turn turnOf(const Target& target, const QStringList& before);
    QHash<Repo::FileNumber, int> numbersOfKnown() const;
    // Known repository files without repositories, except those that must stay unchanged.
    QList<int> unused(const QList<Target>& list) const;
    // Decides which targets to skip. If a write would lose changes of other programs, asks the user and
    // returns false.
    bool respectChanges(QList<Target>& list, QList<int>& removed);
    void removeLeftovers() const;
    bool writeFiles(QList<Target>& list);
    bool prepareWrite(SafeFile& file, const Target& target);
    bool commit(std::vector<std::unique_ptr<SafeFile>>& files, const QList<Target*>& list);
    void written(Target& target, const SafeFile& file);
    bool removeUnusedFiles(const QList<int>& removed);
    bool isInRepoDirectory(const QString& path) const;
    bool reportOutdated(const QList<Target>& list);

    // Shows the message together with the current errno.
    void error(const QString& message);

    QString mainFile; // the path of the main file at the time of reading
    QList<Known> knownFiles;
    QHash<Repo::FileNumber, int> knownNumbers; // during a read; -1 for a file that is left alone
};

#endif
