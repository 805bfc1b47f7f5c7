// SPDX-License-Identifier: GPL-2.0-or-later

// Replaces the contents of a file safely. Even if the disk is full, the process is killed or the power fails,
// the old or the new text remains complete: in the file, or in a copy of the old text.
//
// The new text is written to a temporary file in the same directory. The temporary file gets the owner, the
// mode and the extended attributes of the old file. As soon as its text is on the disk, it is renamed to the
// name of the old file. Links are followed. A rename is impossible if the directory is not writable or the
// owner cannot be set. If the file has several names, a rename would replace the file under only one of its
// names. In these cases, the file itself is overwritten. A copy preserves the old text until the new text is
// on the disk.
//
// Only the graphical thread uses this class. The class shows no window. The names of temporary files and
// copies begin with "." and do not end with ".repo". Therefore no program treats them as repository files.

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
    // On failure, the next three functions return false and set errno.

    // Prepares to replace the text of an existing file. If the file does not contain `expected`, fails with
    // ESTALE. If `others` is false, all users except the owner and the group of the file lose their rights.
    bool replace(const QString& path, const QByteArray& expected, const QByteArray& text, bool others = true);
    // Prepares to create a file with this mode, reduced by the umask. If the file already exists, fails with
    // EEXIST.
    bool create(const QString& path, const QByteArray& text, mode_t mode);
    // Gives the file its new text. Call syncDirectories() afterwards, because commit() does not write the
    // file's directory to the disk.
    bool commit();

    // Writes the prepared texts of many files to the disk together. Without an earlier sync(), each commit()
    // writes its own text to the disk.
    static bool sync(const std::vector<std::unique_ptr<SafeFile>>& files);
    // Writes directories to the disk, so that renamed and new files in them are permanent.
    static void syncDirectories(const QStringList& directories);

    SafeFile() = default;
    // Removes the temporary file if commit() has not run.
    ~SafeFile();
    SafeFile(const SafeFile&) = delete;
    SafeFile& operator=(const SafeFile&) = delete;

    // Returns the directory of the real file, to which all symbolic links lead.
    QString directory() const { return directoryPath; }
    // If commit() has failed, the file may contain neither the old nor the new text. In this case, this
    // function returns the path of a copy with the old text. Otherwise it returns an empty string.
    QString copy() const { return copyPath; }
    // Returns true if replace() has taken rights away from other users.
    bool hasRemovedRights() const { return removedRights; }

    // Removes the temporary files that killed programs have left behind in a directory. Does not remove
    // copies of old texts.
    static void removeLeftovers(const QString& directory);
    // Returns the copies of old texts that killed programs have left behind in a directory.
    static QStringList leftoverCopies(const QString& directory);
    // Returns the directories in which copies are stored if the directory of a file is not writable.
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
