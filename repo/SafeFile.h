// Puts a new text in the place of a file so that, whatever happens meanwhile, its place holds the old text or
// the new one: a full disk, a signal that cannot be caught, a power failure.
//
// The new text is written into a file beside the old one, which gets owner, mode and extended attributes of
// that and takes its name when the text is on the disk. A link is followed. Where that cannot be (the
// directory may not be written, the file has several names, its owner cannot be given) the file itself is
// overwritten; then its old text stays in a copy until the new one is on the disk.
//
// Graphical thread; no window is shown. The names of the temporary files and of the copies begin with a point
// and do not end with ".repo": nothing takes them for repository files.

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
    // All three: false with errno on a failure.

    // Makes ready to replace the text of an existing file, which must be `expected`: errno is ESTALE if it is
    // not. Without `others`, those who are neither the owner nor in the group lose their rights.
    bool replace(const QString& path, const QByteArray& expected, const QByteArray& text, bool others = true);
    // Makes ready to make a file, with this mode less the umask; errno is EEXIST if there is one.
    bool create(const QString& path, const QByteArray& text, mode_t mode);
    // Puts the text into its place. Its directory is not on the disk then: see syncDirectories().
    bool commit();

    // Writes what has been made ready to the disk, that of many files at once. commit() does it for a file
    // that this was not called for.
    static bool sync(const std::vector<std::unique_ptr<SafeFile>>& files);
    // Writes the names of files that were committed or removed to the disk.
    static void syncDirectories(const QStringList& directories);

    SafeFile() = default;
    // Removes what has not been committed.
    ~SafeFile();
    SafeFile(const SafeFile&) = delete;
    SafeFile& operator=(const SafeFile&) = delete;

    // The directory of the place that the path leads to.
    QString directory() const { return directoryPath; }
    // After a failed commit(): where the old text is, if the file itself holds neither text any more.
    QString copy() const { return copyPath; }
    // Rights were taken away.
    bool hasTakenRights() const { return takenRights; }

    // Removes what programs that were killed left in a directory, except copies of old texts.
    static void removeLeftovers(const QString& directory);
    // The copies that such programs left there.
    static QStringList leftCopies(const QString& directory);
    // Where copies are made for directories that may not be written.
    static QStringList copyDirectories();

private:
    bool open(const QString& path);
    bool makeTemporary(const QByteArray& text, mode_t mode);
    bool takeOver();
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
    bool takenRights = false;
    QString copyPath;
    int directoryNumber = -1;
    int temporaryNumber = -1;
    QByteArray temporaryName;
};

#endif
