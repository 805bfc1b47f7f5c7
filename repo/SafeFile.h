// SPDX-License-Identifier: GPL-2.0-or-later

// Replaces the contents of a file safely. After a full disk, SIGKILL or a power failure, the file contains
// either the old or the new text.
//
// The new text goes into a temporary file beside the old one. The temporary file gets the owner, the mode and
// the extended attributes of the old file, and its name once the text is on the disk. Links are followed.
// This is impossible if the directory is not writable, if the file has several names, or if its owner cannot
// be set. Then the file itself is overwritten, and a copy keeps the old text until the new text is on the
// disk.
//
// Graphical thread; shows no window. The names of temporary files and copies begin with a point and do not
// end with ".repo", so no program treats them as repository files.

#ifndef REPO_SAFEFILE_H
#define REPO_SAFEFILE_H

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

#include <sys/stat.h>

class SafeFile
{
public:
    // These three functions return false and set errno on a failure.

    // Prepares to replace the text of an existing file. If its text is not `expected`, errno is ESTALE. If
    // `others` is false, users who are neither the owner nor in the group lose their rights.
    bool replace(const QString& path, const QByteArray& expected, const QByteArray& text, bool others = true);
    // Prepares to create a file with this mode, reduced by the umask. If the file exists, errno is EEXIST.
    bool create(const QString& path, const QByteArray& text, mode_t mode);
    // Gives the file its new text. The directory is not on the disk afterwards: see syncDirectories().
    bool commit();

    // Writes the prepared texts of many files to the disk at once. For a file without this call, commit()
    // writes the text.
    static bool sync(const std::vector<std::unique_ptr<SafeFile>>& files);
    // Writes the names of committed or removed files to the disk.
    static void syncDirectories(const QStringList& directories);

    SafeFile() = default;
    // Removes the temporary file if commit() has not run.
    ~SafeFile();
    SafeFile(const SafeFile&) = delete;
    SafeFile& operator=(const SafeFile&) = delete;

    // The directory of the file, after all links.
    QString directory() const { return directoryPath; }
    // After a failed commit(): the path of the old text, if the file contains neither text.
    QString copy() const { return copyPath; }
    // True if replace() has removed rights.
    bool hasRemovedRights() const { return removedRights; }

    // Removes the temporary files that killed programs have left in a directory, but not copies of old texts.
    static void removeLeftovers(const QString& directory);
    // The copies of old texts that killed programs have left in a directory.
    static QStringList leftoverCopies(const QString& directory);
    // The directories for copies, if the directory of the file is not writable.
    static QStringList copyDirectories();

private:
    bool open(const QString& path);
    bool makeTemporary(const QByteArray& text, mode_t mode);
    bool copyStatus();
    bool isUnchanged() const;
    bool commitInPlace();
    bool makeCopy();
    bool overwrite(const QByteArray& content, bool setMode);
    void dropTemporary();

    QString directoryPath;
    QByteArray name;
    QByteArray newText;
    QByteArray oldText;
    struct stat before = {};
    mode_t newMode = 0;
    bool existed = false;
    bool inPlace = false;
    bool synced = false;
    bool removedRights = false;
    QString copyPath;
    int directoryNumber = -1;
    int temporaryNumber = -1;
    QByteArray temporaryName;
};

#endif
