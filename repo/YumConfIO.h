// Reads the package manager's main configuration file and its repository files into one list of repositories
// and writes that list back as a whole. Between the two, the list is the editors' working copy.
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

#include <cstdio>

#include "repo/RepoEntry.h"
#include "repo/YumRepoEnabled.h"

class QWidget;

class YumConfIO : public QObject
{
    Q_OBJECT

public:
    // Both are kept by reference and must outlive this object. Nothing is read yet.
    YumConfIO(QList<YumRepoEnabled> const& requests, QHash<QString, bool>& session);

    // The path of the main configuration file, looked up afresh: the first of its two places that exists,
    // else the second.
    static QString fileName();

    // Replaces everything with what the files hold now. The session enable table gains the identifiers that
    // it does not know yet; those it knows keep their state. Returns false, without changed(), after showing
    // one error over `window`; `entries` then holds what was read up to the failure.
    bool read(QWidget* window);

    // Writes every file and removes the repository files that no repository is left in. Entries without an
    // identifier or with one already taken are dropped from `entries` if the user agrees. Returns false when
    // the user declines or an error was shown over `window`; files written before the error stay written.
    bool write(QWidget* window);

    // The values of the [main] section.
    QString cachedir;
    QStringList reposdir;
    bool enabled = false;
    bool gpgcheck = false;

    // All repositories, in reading order.
    QList<Repo::Entry> entries;

    QList<YumRepoEnabled> const& enableRequests;
    // From identifier to whether the repository is used in this run, whatever the files say.
    QHash<QString, bool>& sessionEnabled;

    // The main file up to its first repository section, each logical line followed by a line feed.
    QString mainText;

    // What the files hold that the package manager takes otherwise: for the user to know before anything is
    // written.
    QStringList doubts;

    // Whose window the message boxes belong to; not owned, valid during read() and write().
    QWidget* parent = nullptr;

    // Physical lines read ahead and not yet consumed.
    QStringList pendingLines;

Q_SIGNALS:
    // The list was read successfully.
    void changed();

private:
    // Notes it when a value of an option is off for the package manager and on for us.
    void doubtSwitch(const QString& path, const QString& id, const QString& line, const QString& value);

    // Notes once for each file that it has letters beyond ASCII.
    void doubtLetters(const QString& path);

    enum ReadResult { LineRead = 0, EndOfFile = 1, ReadError = 2 };

    // The files are open, at their current position, and stay open; `path` is theirs, for messages. All of
    // these show their errors before they return false or ReadError.
    bool readConfFile(FILE* file);
    bool readRepoDirectory(const QString& directory);
    bool readRepoFile(FILE* file, const QString& path);
    // A logical line is a line together with the lines after it that begin with white space.
    int readLogicalLine(FILE* file, const QString& path, QString& line);
    int readLine(FILE* file, const QString& path, QString& line);
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
    // One whole file: `mainText` if it is the main file, then `sections`.
    bool writeFile(const QString& path, const QList<Repo::Entry>& sections);
    static bool writeRepo(FILE* file, const Repo::Entry& entry);
    bool removeUnusedFiles(const QSet<QString>& written);

    // Shows the message together with the current errno.
    void error(const QString& message);
};

#endif
