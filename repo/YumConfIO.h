// Reads the package manager's main configuration file and its repository files into one list of repositories
// and writes that list back as a whole. Between the two, the list is the editors' working copy.
//
// What it has not read and understood to its end, it neither overwrites nor removes; nor what another program
// has changed since. Two paths are one file when their device and number, or their canonical paths, are the
// same.
//
// Lives on the graphical thread and shows its errors there in message boxes; the main window owns it. Bytes
// are read as Latin-1 and written as UTF-8.

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
    // Both are kept by reference and must outlive this object. Nothing is read yet.
    YumConfIO(const QList<YumRepoEnabled>& requests, QHash<QString, bool>& session);
    ~YumConfIO() override;

    // The path of the main configuration file, looked up afresh: the first of /etc/yum/yum.conf,
    // /etc/yum.conf and /etc/dnf/dnf.conf that exists, else the second. The script looks in the same places.
    static QString fileName();

    // Where repository files are if the main file names no directories: the two usual ones, and those of the
    // known ones that exist.
    QStringList defaultDirectories() const;
    // The directories that the package manager looks into by default, below "/". Before it says which ones
    // these are, or where it cannot be started, all that any version of it knows.
    QStringList knownDirectories{QStringLiteral("/etc/distro.repos.d"),
                                 QStringLiteral("/usr/share/dnf5/repos.d")};

    // Replaces everything with what the files hold now. The session enable table gains the identifiers that
    // it does not know yet; those it knows keep their state. Returns false, without changed(), after showing
    // one error over `window`; `entries` then holds what was read up to the failure.
    bool read(QWidget* window);

    // Writes every file and removes the repository files that no repository is left in. Entries without an
    // identifier or with one already taken are dropped from `entries` if the user agrees. Returns false when
    // the user declines or an error was shown over `window`; files written before the error stay written.
    // Nothing is written where a file that has to be has been changed by another program since it was read.
    bool write(QWidget* window);

    // After write() has returned false: other programs have changed files, and the user wants them to be read
    // again. `entries` is as it was.
    bool readAgainWanted = false;
    // After write() has returned true: `entries` does not hold what other programs have changed.
    bool outdated = false;

    // The values of the [main] section.
    QString cachedir;
    QStringList reposdir;
    bool enabled = false;
    bool gpgcheck = false;

    // All repositories, in reading order.
    QList<Repo::Entry> entries;

    const QList<YumRepoEnabled>& enableRequests;
    // From identifier to whether the repository is used in this run, whatever the files say.
    QHash<QString, bool>& sessionEnabled;

    // The main file up to its first repository section, each logical line followed by a line feed.
    QString mainText;

    // What the files hold that the package manager takes otherwise, and which files are left alone: for the
    // user to know before anything is written.
    QStringList doubts;

    // Whose window the message boxes belong to; not owned, valid during read() and write().
    QWidget* parent = nullptr;

    // Physical lines read ahead and not yet consumed.
    QStringList pendingLines;

Q_SIGNALS:
    // The list was read successfully.
    void changed();
    // Something that write() has done, for the user to know.
    void noted(const QString& text);

private:
    // A file that was read whole, or written.
    struct Known
    {
        QString path;            // the first one of those that it was read by
        QString canonical;       // its canonical path
        QStringList names;       // all of those in the repository directories
        Repo::File file;         // what it holds; without `text`
        QString unedited;        // what is written into it if nothing is edited
        QStringList identifiers; // of its sections, sorted
        bool isMain = false;
    };

    // The order in which files are written: a section that moves is never in neither of its files.
    enum Turn { Gains, GainsAndLoses, GainsNothing, Unedited };

    // What write() makes of one file.
    struct Target
    {
        QString path;
        int known = -1; // in `knownFiles`
        QList<Repo::Entry> sections;
        QString text;
        bool edited = true;    // otherwise than it was read or written last
        bool outdated = false; // another program has changed the file
        bool skipped = false;  // it stays as it is
        Turn turn = Gains;
    };

    // Notes it when a value of an option is off for the package manager and on for us.
    void doubtSwitch(const QString& path, const QString& id, const QString& line, const QString& value);

    enum ReadResult { LineRead = 0, EndOfFile = 1, ReadError = 2 };

    // The text of a file and where the next line begins.
    struct Lines
    {
        QString text;
        int next = 0;
    };

    void doubtCopies();
    Lines linesOf(const Repo::File& file, const QString& path);

    // All of these show their errors before they return false or ReadError.
    bool readMainFile();
    bool readConfFile(Lines& lines);
    bool readRepoDirectory(const QString& directory);
    bool readRepoFile(Lines& lines, const QString& path);
    // Notes why a file is left alone, or that it was read whole: then its sections are the entries from
    // `firstEntry` on.
    void keep(const QString& path, const Repo::File& file, int firstEntry, bool isMain);
    // A logical line is a line together with the lines after it that begin with white space.
    int readLogicalLine(Lines& lines, QString& line);
    static int readLine(Lines& lines, QString& line);
    void unreadLine(const QString& line);
    static bool isOption(const QString& line, const QString& key, QString& value);

    static void cleanupRead(Repo::Entry& entry);
    void applyUsedOptions(const Repo::Entry& entry);

    // False when the list has errors and the user declined to have them removed.
    bool checkErrors();
    bool hasEmptyId() const;
    // The identifiers used more than once, separated by commas: each once for every later entry that repeats
    // it.
    QString getDuplicateId() const;
    void cleanupWrite(QList<Repo::Entry>& list) const;
    static bool filePositionLessThan(const Repo::Entry& left, const Repo::Entry& right);
    static QString textOf(const QString& beginning, const QList<Repo::Entry>& sections);
    static QString textOf(const Repo::Entry& entry);

    // Every file that holds a repository, and the main file, in the order in which they are written.
    QList<Target> targets() const;
    // `before`: the identifiers that the file had, sorted.
    static Turn turnOf(const Target& target, const QStringList& before);
    QHash<Repo::FileNumber, int> numbersOfKnown() const;
    // Known repository files that hold no repository any more, without those to be left as they are.
    QList<int> unused(const QList<Target>& list) const;
    // Decides which targets are skipped. False, after asking the user, if other programs' changes would be
    // lost.
    bool respectChanges(QList<Target>& list, QList<int>& removed);
    void removeLeftovers() const;
    bool writeFiles(QList<Target>& list);
    bool makeReady(SafeFile& file, const Target& target);
    bool commit(std::vector<std::unique_ptr<SafeFile>>& files, const QList<Target*>& list);
    void written(Target& target, const SafeFile& file);
    bool removeUnusedFiles(const QList<int>& removed);
    bool isInRepoDirectory(const QString& path) const;
    bool reportOutdated(const QList<Target>& list);

    // Shows the message together with the current errno.
    void error(const QString& message);

    QString mainFile; // the main configuration file when it was read
    QList<Known> knownFiles;
    QHash<Repo::FileNumber, int> knownNumbers; // while reading; -1 for a file that is left alone
};

#endif
