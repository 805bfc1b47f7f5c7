// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoFile.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

#include "app/base/RepositoryFileLimit.h"
#include "services/FileDescriptor.h"

namespace Repo {

namespace {

const QByteArray byteOrderMark("\xEF\xBB\xBF");

QString resolved(const QString& path)
{
    char* const found = realpath(QFile::encodeName(path).constData(), nullptr);
    const QString result = found != nullptr ? QFile::decodeName(found) : QString();
    free(found);
    return result;
}

// Counts the line ends of a file by kind, and converts all of them to line feeds.
struct Lines
{
    explicit Lines(const QByteArray& bytes)
    {
        text.reserve(bytes.size());
        for (int start = 0; start < bytes.size();) {
            const int end = bytes.indexOf('\n', start);
            int last = end < 0 ? bytes.size() : end;
            while (last > start && bytes.at(last - 1) == '\r') {
                --last;
            }
            const bool returned = last < (end < 0 ? bytes.size() : end);
            (returned ? withReturns : withoutReturns) += end < 0 && !returned ? 0 : 1;
            text.append(bytes.constData() + start, last - start);
            if (end < 0) {
                break;
            }
            text.append('\n');
            start = end + 1;
        }
    }

    QByteArray text;
    int withReturns = 0;
    int withoutReturns = 0;
};

// Returns the size of the longest repository section, in bytes.
int largestSection(const QByteArray& text)
{
    int largest = 0;
    int start = -1;
    for (int line = 0; line >= 0 && line < text.size();) {
        if (text.at(line) == '[') {
            largest = std::max(largest, start < 0 ? 0 : line - start);
            const bool isMain = start < 0 && text.mid(line, 6) == "[main]" &&
                                (line + 6 == text.size() || text.at(line + 6) == '\n');
            start = isMain ? -1 : line;
        }
        const int end = text.indexOf('\n', line);
        line = end < 0 ? -1 : end + 1;
    }
    return std::max(largest, start < 0 ? 0 : text.size() - start);
}

} // namespace

FileNumber numberOf(const struct stat& status)
{
    return {static_cast<quint64>(status.st_dev), static_cast<quint64>(status.st_ino)};
}

QString canonicalPath(const QString& path)
{
    const QString whole = resolved(path);
    if (!whole.isEmpty()) {
        return whole;
    }
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    const QString name = path.mid(slash + 1);
    const QString directory = resolved(slash < 0    ? QStringLiteral(".")
                                       : slash == 0 ? QStringLiteral("/")
                                                    : path.left(slash));
    if (directory.isEmpty() || name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..")) {
        return path;
    }
    return directory.endsWith(QLatin1Char('/')) ? directory + name : directory + QLatin1Char('/') + name;
}

File File::read(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat status;
    if (stat(name.constData(), &status) == 0) {
        return read(path, status);
    }
    File file;
    file.failure = errno;
    file.state = NoStatus;
    if (file.failure == ENOENT || file.failure == ELOOP) {
        if (lstat(name.constData(), &status) == 0) {
            file.leaveAlone(tr("%1 is left alone: it is a broken link.").arg(path));
        } else if (errno == ENOENT) {
            file.state = Missing;
        }
    }
    return file;
}

File File::read(const QString& path, const struct stat& status)
{
    File file;
    if (S_ISDIR(status.st_mode)) {
        file.state = Directory;
        file.failure = EISDIR;
    } else if (!S_ISREG(status.st_mode)) {
        // Do not open other kinds of files: opening a device can already have an effect.
        file.leaveAlone(tr("%1 is left alone: it is not a regular file.").arg(path));
    } else if (file.load(path)) {
        file.understand(path);
    }
    return file;
}

void File::leaveAlone(const QString& sentence)
{
    state = LeftAlone;
    reason = sentence;
    bytes.clear();
}

bool File::load(const QString& path)
{
    const QString tooLarge =
        tr("%1 is left alone, and its repositories are not used: it is larger than %2 MB.")
            .arg(path, QString::number(repositoryFileLimit >> 20));
    const QString notRegular = tr("%1 is left alone: it is not a regular file.").arg(path);
    // Another program may have replaced the file since stat(). Therefore the type of the file is checked
    // again after open().
    const FileDescriptor file(
        open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    if (!file.isOpen()) {
        failure = errno;
        state = Unopenable;
        return false;
    }
    struct stat status;
    if (fstat(file.get(), &status) != 0) {
        failure = errno;
        state = NoStatus;
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        leaveAlone(notRegular);
        return false;
    }
    number = numberOf(status);
    if (status.st_size > repositoryFileLimit) {
        leaveAlone(tooLarge);
        return false;
    }
    // Read up to the end of the file, because its reported size may be wrong: files in /proc report the size
    // 0. The size limit ends the loop for endless files.
    for (;;) {
        const int filled = bytes.size();
        const int wanted = filled == 0 ? static_cast<int>(status.st_size) + 1 : 1 << 16;
        bytes.resize(filled + wanted);
        const ssize_t got = ::read(file.get(), bytes.data() + filled, static_cast<size_t>(wanted));
        bytes.resize(filled + std::max(0, static_cast<int>(got)));
        if (got == 0) {
            return true;
        }
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            failure = errno;
            bytes.clear();
            if (failure == EAGAIN) {
                failure = 0;
                leaveAlone(notRegular);
            } else {
                state = Unreadable;
            }
            return false;
        }
        if (bytes.size() > repositoryFileLimit) {
            leaveAlone(tooLarge);
            return false;
        }
    }
}

void File::understand(const QString& path)
{
    state = Text;
    hasMark = bytes.startsWith(byteOrderMark);
    const Lines lines(hasMark ? bytes.mid(byteOrderMark.size()) : bytes);
    // Refuse UTF-16, which contains null bytes. Also refuse files whose only line ends are carriage returns,
    // because their whole text would be one line.
    if (bytes.contains('\0') || bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF") ||
        (!lines.text.contains('\n') && lines.text.contains('\r'))) {
        leaveAlone(tr("%1 is left alone, and its repositories are not used: it is not a plain text file.")
                       .arg(path));
        return;
    }
    if (largestSection(lines.text) > repositorySectionLimit) {
        leaveAlone(
            tr("%1 is left alone, and its repositories are not used: one of them is larger than %2 kB.")
                .arg(path, QString::number(repositorySectionLimit >> 10)));
        return;
    }
    text = QString::fromLatin1(lines.text);
    hasCarriageReturns = lines.withReturns > 0 && lines.withoutReturns == 0;
    isAscii = std::all_of(lines.text.begin(), lines.text.end(), [](char byte) { return (byte & 0x80) == 0; });
    isPlain = isAscii && !hasMark && lines.withReturns == 0;
}

QByteArray File::encoded(const QString& written) const
{
    QByteArray result = written.toUtf8();
    if (hasCarriageReturns) {
        result.replace("\n", "\r\n");
    }
    return hasMark ? byteOrderMark + result : result;
}

} // namespace Repo
