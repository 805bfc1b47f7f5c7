// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/SafeFile.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSet>

#include <cerrno>
#include <cstdio>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "app/base/ManagedRoot.h"
#include "app/base/RepositoryFileLimit.h"
#include "repo/RepoFile.h"
#include "services/FileDescriptor.h"

namespace {

const char temporaryInfix[] = ".vyre-";
const char copyInfix[] = ".vyre-old-";

// If sync() gets more than this number of files, it writes the whole file system to the disk once, including
// other programs' data. This is faster than writing each file separately.
constexpr size_t fewFiles = 8;

// Closes a descriptor without changing errno.
void closeQuietly(int& number)
{
    const int failure = errno;
    if (number >= 0) {
        close(number);
    }
    number = -1;
    errno = failure;
}

// Creates a file that only this user can open. The file gets a random name. Locks the file, to show other
// instances of VYRE that the file is in use.
int makeHelper(int directory, const QByteArray& name, const char* infix, QByteArray& made)
{
    static const char letters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    for (int tries = 0; tries < 100; ++tries) {
        // Shorten the original name: with the characters that are added to it, the file name may have at most
        // 255 bytes.
        made = "." + name.left(200) + infix;
        for (int i = 0; i < 6; ++i) {
            made += letters[QRandomGenerator::global()->bounded(static_cast<int>(sizeof letters) - 1)];
        }
        const int number = openat(directory, made.constData(),
                                  O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
        if (number >= 0) {
            flock(number, LOCK_EX | LOCK_NB);
            return number;
        }
        if (errno != EEXIST) {
            return -1;
        }
    }
    return -1;
}

bool writeAll(int number, const QByteArray& text)
{
    for (int written = 0; written < text.size();) {
        const ssize_t done =
            pwrite(number, text.constData() + written, static_cast<size_t>(text.size() - written), written);
        if (done < 0 && errno == EINTR) {
            continue;
        }
        if (done <= 0) {
            return false;
        }
        written += static_cast<int>(done);
    }
    return true;
}

// Reads a file up to the size limit for configuration files.
bool readAll(int number, QByteArray& content)
{
    content.clear();
    char block[1 << 16];
    for (;;) {
        const ssize_t got = pread(number, block, sizeof block, content.size());
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0 || content.size() > repositoryFileLimit) {
            return got == 0;
        }
        content.append(block, static_cast<int>(got));
    }
}

// Copies all extended attributes, including access control lists. Returns false if the new file refuses an
// attribute.
bool copyAttributes(int from, int to)
{
    const ssize_t size = flistxattr(from, nullptr, 0);
    if (size <= 0) {
        return size == 0 || errno == ENOTSUP;
    }
    QByteArray names(static_cast<int>(size), '\0');
    const ssize_t listed = flistxattr(from, names.data(), static_cast<size_t>(size));
    if (listed < 0) {
        return false;
    }
    names.truncate(static_cast<int>(listed));
    for (const QByteArray& each : names.split('\0')) {
        // Skip these two checksums: the kernel calculates them from the contents of the new file.
        if (each.isEmpty() || each == "security.ima" || each == "security.evm") {
            continue;
        }
        QByteArray value(1 << 16, '\0');
        const ssize_t length =
            fgetxattr(from, each.constData(), value.data(), static_cast<size_t>(value.size()));
        if (length < 0) {
            return false;
        }
        value.truncate(static_cast<int>(length));
        QByteArray present(1 << 16, '\0');
        const ssize_t found =
            fgetxattr(to, each.constData(), present.data(), static_cast<size_t>(present.size()));
        if (found == length && present.left(static_cast<int>(found)) == value) {
            continue;
        }
        if (fsetxattr(to, each.constData(), value.constData(), static_cast<size_t>(value.size()), 0) != 0) {
            return false;
        }
    }
    return true;
}

bool isSame(const struct stat& left, const struct stat& right)
{
    return left.st_dev == right.st_dev && left.st_ino == right.st_ino && left.st_size == right.st_size &&
           left.st_mtim.tv_sec == right.st_mtim.tv_sec && left.st_mtim.tv_nsec == right.st_mtim.tv_nsec;
}

// Returns the names of this user's temporary files in a directory. makeHelper() makes each of these names
// from a dot, the name of the saved file, the infix, and six random characters.
QList<QByteArray> helpersIn(int directory, const QString& infix)
{
    QList<QByteArray> result;
    const QRegularExpression form(
        QStringLiteral("^\\..+%1[a-z0-9]{6}$").arg(QRegularExpression::escape(infix)));
    const int listed = openat(directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* const listing = listed < 0 ? nullptr : fdopendir(listed);
    if (listing == nullptr) {
        return result;
    }
    while (const dirent* entry = readdir(listing)) {
        struct stat status;
        if (entry->d_name[0] == '.' && form.match(QFile::decodeName(entry->d_name)).hasMatch() &&
            fstatat(directory, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(status.st_mode) &&
            status.st_uid == geteuid()) {
            result.append(QByteArray(entry->d_name));
        }
    }
    closedir(listing);
    return result;
}

int openDirectory(const QString& path)
{
    return open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

} // namespace

SafeFile::~SafeFile()
{
    dropTemporary();
    closeQuietly(directoryNumber);
}

void SafeFile::dropTemporary()
{
    const int failure = errno;
    if (!temporaryName.isEmpty()) {
        unlinkat(directoryNumber, temporaryName.constData(), 0);
        temporaryName.clear();
    }
    closeQuietly(temporaryNumber);
    errno = failure;
}

// Follows all links, then opens the directory of the file and stores the name of the file.
bool SafeFile::open(const QString& path)
{
    const QString place = Repo::canonicalPath(path);
    const int slash = place.lastIndexOf(QLatin1Char('/'));
    directoryPath = slash < 0 ? QStringLiteral(".") : slash == 0 ? QStringLiteral("/") : place.left(slash);
    name = QFile::encodeName(place.mid(slash + 1));
    if (name.isEmpty()) {
        errno = EISDIR;
        return false;
    }
    directoryNumber = openDirectory(directoryPath);
    return directoryNumber >= 0;
}

bool SafeFile::makeTemporary(const QByteArray& text, mode_t mode)
{
    temporaryNumber = makeHelper(directoryNumber, name, temporaryInfix, temporaryName);
    if (temporaryNumber < 0) {
        temporaryName.clear();
        return false;
    }
    if (!writeAll(temporaryNumber, text) || (!existed && fchmod(temporaryNumber, mode) != 0)) {
        dropTemporary();
        return false;
    }
    return true;
}

// Copies the owner, the mode and the attributes of the old file to the temporary file.
bool SafeFile::copyStatus()
{
    const FileDescriptor old(
        openat(directoryNumber, name.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
    if (!old.isOpen()) {
        return false;
    }
    struct stat made;
    if (fstat(temporaryNumber, &made) != 0) {
        return false;
    }
    if ((made.st_uid != before.st_uid || made.st_gid != before.st_gid) &&
        fchown(temporaryNumber, before.st_uid, before.st_gid) != 0) {
        return false;
    }
    return copyAttributes(old.get(), temporaryNumber) && fchmod(temporaryNumber, newMode) == 0;
}

bool SafeFile::replace(const QString& path, const QByteArray& expected, const QByteArray& text, bool others)
{
    existed = true;
    oldText = expected;
    newText = text;
    if (!open(path)) {
        return false;
    }
    {
        const FileDescriptor old(openat(directoryNumber, name.constData(),
                                        O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
        if (!old.isOpen()) {
            errno = errno == ENOENT ? ESTALE : errno;
            return false;
        }
        QByteArray found;
        if (fstat(old.get(), &before) != 0 || !S_ISREG(before.st_mode) || !readAll(old.get(), found) ||
            found != expected) {
            errno = ESTALE;
            return false;
        }
    }
    newMode = before.st_mode & 07777;
    if (!others && (newMode & 07) != 0) {
        newMode &= ~static_cast<mode_t>(07);
        removedRights = true;
    }
    inPlace = before.st_nlink > 1;
    if (inPlace) {
        return true;
    }
    if (!makeTemporary(text, newMode)) {
        inPlace = errno == EACCES || errno == EPERM || errno == EROFS;
        return inPlace;
    }
    if (!copyStatus()) {
        inPlace = true;
        dropTemporary();
    }
    return true;
}

bool SafeFile::create(const QString& path, const QByteArray& text, mode_t mode)
{
    newText = text;
    if (!open(path)) {
        return false;
    }
    struct stat status;
    if (fstatat(directoryNumber, name.constData(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
        errno = S_ISDIR(status.st_mode) ? EISDIR : EEXIST;
        return false;
    }
    const mode_t mask = umask(0);
    umask(mask);
    return makeTemporary(text, mode & ~mask);
}

bool SafeFile::sync(const std::vector<std::unique_ptr<SafeFile>>& files)
{
    QSet<quint64> devices;
    for (const auto& file : files) {
        if (file->temporaryNumber < 0) {
            continue;
        }
        struct stat status;
        if (files.size() > fewFiles && fstat(file->temporaryNumber, &status) == 0) {
            if (!devices.contains(static_cast<quint64>(status.st_dev))) {
                if (syncfs(file->temporaryNumber) != 0) {
                    return false;
                }
                devices.insert(static_cast<quint64>(status.st_dev));
            }
            file->synced = true;
        }
    }
    return true;
}

bool SafeFile::isUnchanged() const
{
    struct stat status;
    return fstatat(directoryNumber, name.constData(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           isSame(status, before);
}

bool SafeFile::commit()
{
    if (existed && !isUnchanged()) {
        errno = ESTALE;
        return false;
    }
    if (inPlace) {
        return commitInPlace();
    }
    if (!synced && fsync(temporaryNumber) != 0) {
        return false;
    }
    if (existed) {
        if (renameat(directoryNumber, temporaryName.constData(), directoryNumber, name.constData()) != 0) {
            if (errno != EBUSY && errno != EPERM && errno != EACCES) {
                return false;
            }
            // The file cannot be replaced: the file is a mount point, or the directory does not permit this
            // user to replace a file of another user. Therefore write to the existing file.
            dropTemporary();
            return commitInPlace();
        }
    } else {
        // Never overwrite a file that another program has created since create().
        if (renameat2(directoryNumber, temporaryName.constData(), directoryNumber, name.constData(),
                      RENAME_NOREPLACE) != 0) {
            // Some file systems do not support RENAME_NOREPLACE. linkat() also fails if the file exists.
            if ((errno != EINVAL && errno != ENOSYS) || linkat(directoryNumber, temporaryName.constData(),
                                                               directoryNumber, name.constData(), 0) != 0) {
                return false;
            }
            unlinkat(directoryNumber, temporaryName.constData(), 0);
        }
    }
    temporaryName.clear();
    closeQuietly(temporaryNumber);
    return true;
}

bool SafeFile::makeCopy()
{
    for (const QString& place : QStringList(directoryPath) + copyDirectories()) {
        const FileDescriptor directory(openDirectory(place));
        if (!directory.isOpen()) {
            continue;
        }
        QByteArray made;
        const FileDescriptor copy(makeHelper(directory.get(), name, copyInfix, made));
        if (!copy.isOpen()) {
            continue;
        }
        if (!writeAll(copy.get(), oldText) || fsync(copy.get()) != 0) {
            const int failure = errno;
            unlinkat(directory.get(), made.constData(), 0);
            errno = failure;
            return false;
        }
        fsync(directory.get());
        copyPath = place + QLatin1Char('/') + QFile::decodeName(made);
        return true;
    }
    return false;
}

bool SafeFile::overwrite(const QByteArray& content, bool setMode)
{
    const FileDescriptor file(
        openat(directoryNumber, name.constData(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    return file.isOpen() && (!setMode || fchmod(file.get(), newMode) == 0) && writeAll(file.get(), content) &&
           ftruncate(file.get(), content.size()) == 0 && fsync(file.get()) == 0;
}

bool SafeFile::commitInPlace()
{
    if (faccessat(directoryNumber, name.constData(), W_OK, AT_EACCESS) != 0 || !makeCopy()) {
        return false;
    }
    const bool good = overwrite(newText, removedRights);
    const int failure = errno;
    if (good || overwrite(oldText, false)) {
        unlink(QFile::encodeName(copyPath).constData());
        copyPath.clear();
    }
    errno = failure;
    return good;
}

void SafeFile::syncDirectories(const QStringList& directories)
{
    for (const QString& path : directories) {
        const FileDescriptor directory(openDirectory(path));
        if (directory.isOpen()) {
            fsync(directory.get());
        }
    }
}

QStringList SafeFile::copyDirectories()
{
    QStringList result{ManagedRoot::absolute(QStringLiteral("/var/tmp")), QDir::tempPath()};
    result.removeDuplicates();
    return result;
}

void SafeFile::removeLeftovers(const QString& directory)
{
    const FileDescriptor listed(openDirectory(directory));
    if (!listed.isOpen()) {
        return;
    }
    for (const QByteArray& each : helpersIn(listed.get(), QString::fromLatin1(temporaryInfix))) {
        const FileDescriptor file(openat(listed.get(), each.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
        // Remove the file only if its lock is free. Another instance of VYRE holds the lock while it writes
        // the file.
        if (file.isOpen() && flock(file.get(), LOCK_EX | LOCK_NB) == 0) {
            unlinkat(listed.get(), each.constData(), 0);
        }
    }
}

QStringList SafeFile::leftoverCopies(const QString& directory)
{
    QStringList result;
    const FileDescriptor listed(openDirectory(directory));
    if (!listed.isOpen()) {
        return result;
    }
    for (const QByteArray& each : helpersIn(listed.get(), QString::fromLatin1(copyInfix))) {
        const FileDescriptor file(openat(listed.get(), each.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
        if (file.isOpen() && flock(file.get(), LOCK_EX | LOCK_NB) == 0) {
            result.append(directory + QLatin1Char('/') + QFile::decodeName(each));
        }
    }
    result.sort();
    return result;
}
