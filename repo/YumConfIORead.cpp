// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/YumConfIO.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <cerrno>
#include <memory>

#include <dirent.h>
#include <sys/stat.h>

#include "app/base/Credentials.h"
#include "app/base/ManagedRoot.h"

namespace {

struct DirectoryCloser
{
    void operator()(DIR* directory) const { closedir(directory); }
};
using DirectoryGuard = std::unique_ptr<DIR, DirectoryCloser>;

// Returns the next name in the directory that ends in ".repo". At the end of the directory, returns a null
// string. On failure, returns a null string and sets errno.
QString nextRepoFile(DIR* directory)
{
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(directory);
        if (!entry) {
            return QString();
        }
        const QString name = QFile::decodeName(entry->d_name);
        if (name.endsWith(QLatin1String(".repo"))) {
            return name;
        }
    }
}

bool isBlank(QChar character)
{
    return character == QLatin1Char(' ') || character == QLatin1Char('\t');
}

// Returns whether the value of a yes-or-no option means "yes". Every value except "0" means "yes".
bool isOn(const QString& value)
{
    return value != QLatin1String("0");
}

} // namespace

bool YumConfIO::readMainFile()
{
    mainFile = fileName();
    const Repo::File file = Repo::File::read(mainFile);
    errno = file.failure;
    switch (file.state) {
    case Repo::File::Directory:
    case Repo::File::Unreadable:
        error(tr("Error reading repository configuration file %1").arg(mainFile));
        return false;
    case Repo::File::LeftAlone:
        if (file.failure == 0) {
            keep(mainFile, file, 0, true);
            return true;
        }
        break;
    case Repo::File::Text: {
        Lines lines = linesOf(file, mainFile);
        if (!readConfFile(lines)) {
            return false;
        }
        keep(mainFile, file, 0, true);
        return true;
    }
    default:
        break;
    }
    error(tr("Unable to read yum configuration file %1").arg(mainFile));
    return false;
}

YumConfIO::Lines YumConfIO::linesOf(const Repo::File& file, const QString& path)
{
    if (!file.isAscii) {
        warnings.append(tr("%1 contains letters outside ASCII. If VYRE writes the file, each of these "
                           "letters becomes two wrong letters.")
                            .arg(path));
    }
    return {file.text, 0};
}

bool YumConfIO::readConfFile(Lines& lines)
{
    const QString path = mainFile;
    for (;;) {
        QString line;
        const int result = readLogicalLine(lines, line);
        if (result == ReadError) {
            return false;
        }
        if (result == EndOfFile) {
            break;
        }
        if (line.startsWith(QLatin1Char('[')) && line != QLatin1String("[main]")) {
            unreadLine(line);
            break;
        }
        QString value;
        if (isOption(line, QStringLiteral("cachedir"), value)) {
            cachedir = ManagedRoot::namedDirectory(value);
        } else if (isOption(line, QStringLiteral("reposdir"), value)) {
            reposdir = value.replace(QLatin1Char(','), QLatin1Char(' ')).split(QLatin1Char(' '));
            reposdir.removeAll(QString());
            // A path in the main configuration file of a managed root is relative to that root.
            for (QString& directory : reposdir) {
                directory = ManagedRoot::namedDirectoryOfFiles(directory);
            }
        } else if (isOption(line, QStringLiteral("enabled"), value)) {
            enabled = isOn(value);
            noteDoubtfulSwitch(path, QStringLiteral("main"), line, value);
        } else if (isOption(line, QStringLiteral("gpgcheck"), value)) {
            gpgcheck = isOn(value);
            noteDoubtfulSwitch(path, QStringLiteral("main"), line, value);
        }
        mainText += line + QLatin1Char('\n');
    }
    return readRepoFile(lines, path);
}

void YumConfIO::noteDoubtfulSwitch(const QString& path, const QString& id, const QString& line,
                                   const QString& value)
{
    static const QStringList off{QStringLiteral("0"), QStringLiteral("no"), QStringLiteral("false"),
                                 QStringLiteral("off")};
    if (isOn(value) && off.contains(value.trimmed().toLower())) {
        warnings.append(tr("%1, section [%2]: VYRE reads \"%3\" as enabled, and writes it as enabled. Only 0 "
                           "disables it.")
                            .arg(path, id, line.trimmed()));
    }
}

bool YumConfIO::readRepoDirectory(const QString& directory)
{
    const DirectoryGuard listing(opendir(QFile::encodeName(directory).constData()));
    if (!listing) {
        return true;
    }
    for (QString name = nextRepoFile(listing.get()); !name.isNull(); name = nextRepoFile(listing.get())) {
        const QString path = directory + QLatin1Char('/') + name;
        struct stat status;
        if (stat(QFile::encodeName(path).constData(), &status) == 0) {
            const auto found = knownNumbers.constFind(Repo::numberOf(status));
            if (found != knownNumbers.constEnd()) {
                // This file was already read under another path: it has several names, or its directory has
                // several paths.
                if (*found >= 0 && !knownFiles.at(*found).isMain) {
                    knownFiles[*found].names.append(path);
                }
                continue;
            }
        }
        const Repo::File file = Repo::File::read(path);
        errno = file.failure;
        switch (file.state) {
        case Repo::File::Missing:
        case Repo::File::Directory:
            break;
        case Repo::File::NoStatus:
            error(tr("Unable to stat repository configuration file %1").arg(path));
            return false;
        case Repo::File::Unopenable:
            error(tr("Unable to read repository configuration file %1").arg(path));
            return false;
        case Repo::File::Unreadable:
            error(tr("Error reading repository configuration file %1").arg(path));
            return false;
        case Repo::File::LeftAlone:
            keep(path, file, entries.size(), false);
            break;
        case Repo::File::Text: {
            const int firstEntry = entries.size();
            Lines lines = linesOf(file, path);
            if (!readRepoFile(lines, path)) {
                return false;
            }
            keep(path, file, firstEntry, false);
            break;
        }
        }
    }
    if (errno != 0) {
        // Stop here: the list would lack the repositories of the files whose names have not been read.
        error(tr("Unable to read repository configuration file %1").arg(directory));
        return false;
    }
    return true;
}

bool YumConfIO::readRepoFile(Lines& lines, const QString& path)
{
    Repo::Entry entry;
    entry.file = path;
    bool inSection = false;
    bool isNew = false;

    const auto finish = [&]() {
        if (!inSection) {
            return;
        }
        cleanupRead(entry);
        if (isNew) {
            applyUsedOptions(entry);
        }
        entries.append(entry);
    };

    for (;;) {
        QString line;
        const int result = readLogicalLine(lines, line);
        if (result == ReadError) {
            return false;
        }
        if (result == EndOfFile) {
            finish();
            return true;
        }
        if (line.startsWith(QLatin1Char('['))) {
            if (!line.endsWith(QLatin1Char(']'))) {
                error(tr("Malformed section name in line: %1")
                          .arg(Credentials::hidden(line, Credentials::Text::Options)));
                return false;
            }
            finish();
            const double position = entry.position + 1.0;
            entry = Repo::Entry();
            entry.id = line.mid(1, line.size() - 2);
            entry.file = path;
            entry.position = position;
            isNew = !sessionEnabled.contains(entry.id);
            if (isNew) {
                sessionEnabled.insert(entry.id, enabled);
            }
            inSection = true;
            continue;
        }
        QString value;
        if (isOption(line, QStringLiteral("name"), value)) {
            entry.name = value;
        } else if (isOption(line, QStringLiteral("baseurl"), value)) {
            entry.baseurl = value;
        } else if (isOption(line, QStringLiteral("mirrorlist"), value)) {
            entry.mirrorlist = value;
        } else if (isOption(line, QStringLiteral("enabled"), value)) {
            entry.enabled = isOn(value) ? Qt::Checked : Qt::Unchecked;
            if (isNew) {
                sessionEnabled.insert(entry.id, isOn(value));
            }
            noteDoubtfulSwitch(path, entry.id, line, value);
        } else if (isOption(line, QStringLiteral("gpgcheck"), value)) {
            entry.gpgcheck = isOn(value) ? Qt::Checked : Qt::Unchecked;
            noteDoubtfulSwitch(path, entry.id, line, value);
        } else if (!line.isEmpty()) {
            entry.options += line + QLatin1Char('\n');
        }
    }
}

int YumConfIO::readLogicalLine(Lines& lines, QString& line)
{
    if (pendingLines.isEmpty()) {
        const int result = readLine(lines, line);
        if (result != LineRead) {
            return result;
        }
    } else {
        line = pendingLines.takeFirst();
        if (!pendingLines.isEmpty()) {
            // The next line has already been read and is not a continuation, so this logical line is
            // complete.
            return LineRead;
        }
    }
    for (;;) {
        QString next;
        if (readLine(lines, next) == EndOfFile) {
            return LineRead;
        }
        if (next.isEmpty() || !isBlank(next.at(0))) {
            pendingLines.append(next);
            return LineRead;
        }
        line += QLatin1Char('\n');
        line += next;
    }
}

int YumConfIO::readLine(Lines& lines, QString& line)
{
    if (lines.next >= lines.text.size()) {
        line.clear();
        return EndOfFile;
    }
    const int end = lines.text.indexOf(QLatin1Char('\n'), lines.next);
    line = lines.text.mid(lines.next, end < 0 ? -1 : end - lines.next);
    lines.next = end < 0 ? lines.text.size() : end + 1;
    return LineRead;
}

void YumConfIO::unreadLine(const QString& line)
{
    pendingLines.prepend(line);
}

bool YumConfIO::isOption(const QString& line, const QString& key, QString& value)
{
    const auto isSeparator = [](QChar character) {
        return character == QLatin1Char(':') || character == QLatin1Char('=');
    };
    const auto separator = std::find_if(line.begin(), line.end(), isSeparator);
    if (separator == line.end()) {
        return false;
    }
    auto keyEnd = separator;
    while (keyEnd != line.begin() && isBlank(*(keyEnd - 1))) {
        --keyEnd;
    }
    if (line.leftRef(static_cast<int>(keyEnd - line.begin())) != key) {
        return false;
    }
    const auto valueBegin =
        std::find_if_not(separator + 1, line.end(), [](QChar character) { return isBlank(character); });
    value = line.mid(static_cast<int>(valueBegin - line.begin()));
    return true;
}

void YumConfIO::cleanupRead(Repo::Entry& entry)
{
    static const QRegularExpression whiteSpace(QStringLiteral("[ \\t\\n]+"));
    entry.baseurl.replace(whiteSpace, QStringLiteral("\n"));
}

void YumConfIO::applyUsedOptions(const Repo::Entry& entry)
{
    for (const YumRepoEnabled& request : enableRequests) {
        if (request.pattern.exactMatch(entry.id)) {
            sessionEnabled.insert(entry.id, request.enabled);
        }
    }
}
