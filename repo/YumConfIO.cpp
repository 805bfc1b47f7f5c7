#include "repo/YumConfIO.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "app/base/Credentials.h"
#include "app/base/ManagedRoot.h"
#include "widgets/HMessageBox.h"

namespace {

struct FileCloser
{
    void operator()(FILE* file) const { fclose(file); }
};
using FileGuard = std::unique_ptr<FILE, FileCloser>;

struct DirectoryCloser
{
    void operator()(DIR* directory) const { closedir(directory); }
};
using DirectoryGuard = std::unique_ptr<DIR, DirectoryCloser>;

FileGuard openForReading(const QString& path)
{
    return FileGuard(fopen(QFile::encodeName(path).constData(), "re"));
}

// Truncates the file, or creates it with `mode` less the umask. An existing file keeps its mode and its
// owner, and a symbolic link is followed.
FileGuard openForWriting(const QString& path, mode_t mode)
{
    const int descriptor =
        open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
    if (descriptor < 0) {
        return nullptr;
    }
    FileGuard file(fdopen(descriptor, "w"));
    if (!file) {
        const int failure = errno;
        close(descriptor);
        errno = failure;
    }
    return file;
}

bool writeText(FILE* file, const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    return fwrite(bytes.constData(), 1, size_t(bytes.size()), file) == size_t(bytes.size());
}

// Only closing shows whether the last of the buffered text reached the disk.
bool closeWritten(FileGuard file)
{
    return fclose(file.release()) == 0;
}

// The next entry whose name ends in ".repo"; a null name at the end of the directory, or on failure with
// errno set.
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

// A pipe keeps its reader waiting until somebody writes into it, and a device may do so for ever or give
// bytes without end.
bool mayHaveNoEnd(const struct stat& status)
{
    return S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode);
}

bool holdsPassword(const QString& text)
{
    return Credentials::holds(text, Credentials::Text::Options);
}

bool holdsPassword(const Repo::Entry& entry)
{
    return holdsPassword(entry.name) || holdsPassword(entry.baseurl) || holdsPassword(entry.mirrorlist) ||
           holdsPassword(entry.options);
}

bool isBlank(QChar character)
{
    return character == QLatin1Char(' ') || character == QLatin1Char('\t');
}

// Anything but exactly "0" is on.
bool isOn(const QString& value)
{
    return value != QLatin1String("0");
}

// The text may come from a file: it is never taken as rich text.
QMessageBox::StandardButton showCritical(QWidget* parent, const QString& title, const QString& text,
                                         QMessageBox::StandardButtons buttons,
                                         QMessageBox::StandardButton preferred)
{
    HMessageBox box(QMessageBox::Critical, title, text, buttons, parent);
    box.setDefaultButton(preferred);
    box.setEscapeButton(preferred);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

} // namespace

YumConfIO::YumConfIO(QList<YumRepoEnabled> const& requests, QHash<QString, bool>& session)
    : enableRequests(requests), sessionEnabled(session)
{
}

QString YumConfIO::fileName()
{
    const QString preferred = ManagedRoot::absolute(QStringLiteral("/etc/yum/yum.conf"));
    struct stat status;
    if (stat(QFile::encodeName(preferred).constData(), &status) == 0) {
        return preferred;
    }
    return ManagedRoot::absolute(QStringLiteral("/etc/yum.conf"));
}

bool YumConfIO::read(QWidget* window)
{
    parent = window;
    mainText.clear();
    cachedir = ManagedRoot::absolute(QStringLiteral("/var/cache/yum"));
    reposdir = QStringList{ManagedRoot::absolute(QStringLiteral("/etc/yum.repos.d")),
                           ManagedRoot::absolute(QStringLiteral("/etc/yum/repos.d"))};
    enabled = true;
    gpgcheck = false;
    entries.clear();
    // A read that failed in the middle of a file leaves lines behind.
    pendingLines.clear();
    doubts.clear();

    {
        const QString path = fileName();
        const FileGuard file = openForReading(path);
        if (!file) {
            error(tr("Unable to read yum configuration file %1").arg(path));
            return false;
        }
        if (!readConfFile(file.get())) {
            return false;
        }
    }
    for (const QString& directory : qAsConst(reposdir)) {
        if (!readRepoDirectory(directory)) {
            return false;
        }
    }
    Q_EMIT changed();
    return true;
}

bool YumConfIO::readConfFile(FILE* file)
{
    const QString path = fileName();
    for (;;) {
        QString line;
        const int result = readLogicalLine(file, path, line);
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
            // An image's file names its own directories, not those of this system.
            for (QString& directory : reposdir) {
                directory = ManagedRoot::namedDirectoryOfFiles(directory);
            }
        } else if (isOption(line, QStringLiteral("enabled"), value)) {
            enabled = isOn(value);
            doubtSwitch(path, QStringLiteral("main"), line, value);
        } else if (isOption(line, QStringLiteral("gpgcheck"), value)) {
            gpgcheck = isOn(value);
            doubtSwitch(path, QStringLiteral("main"), line, value);
        }
        mainText += line + QLatin1Char('\n');
    }
    return readRepoFile(file, path);
}

void YumConfIO::doubtSwitch(const QString& path, const QString& id, const QString& line, const QString& value)
{
    static const QStringList off{QStringLiteral("0"), QStringLiteral("no"), QStringLiteral("false"),
                                 QStringLiteral("off")};
    if (isOn(value) && off.contains(value.trimmed().toLower())) {
        doubts.append(tr("%1, section [%2]: \"%3\" is taken for on, and written so. Only 0 switches off.")
                          .arg(path, id, line.trimmed()));
    }
}

void YumConfIO::doubtLetters(const QString& path)
{
    const QString doubt =
        tr("%1 has letters beyond ASCII. Each of them becomes two other ones when the file is written.")
            .arg(path);
    if (!doubts.contains(doubt)) {
        doubts.append(doubt);
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
        if (stat(QFile::encodeName(path).constData(), &status) != 0) {
            error(tr("Unable to stat repository configuration file %1").arg(path));
            return false;
        }
        if (S_ISDIR(status.st_mode) || mayHaveNoEnd(status)) {
            continue;
        }
        const FileGuard file = openForReading(path);
        if (!file) {
            error(tr("Unable to read repository configuration file %1").arg(path));
            return false;
        }
        if (!readRepoFile(file.get(), path)) {
            return false;
        }
    }
    if (errno != 0) {
        // Files that were not listed would be removed by the next write.
        error(tr("Unable to read repository configuration file %1").arg(directory));
        return false;
    }
    return true;
}

bool YumConfIO::readRepoFile(FILE* file, const QString& path)
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
        const int result = readLogicalLine(file, path, line);
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
            doubtSwitch(path, entry.id, line, value);
        } else if (isOption(line, QStringLiteral("gpgcheck"), value)) {
            entry.gpgcheck = isOn(value) ? Qt::Checked : Qt::Unchecked;
            doubtSwitch(path, entry.id, line, value);
        } else if (!line.isEmpty()) {
            entry.options += line + QLatin1Char('\n');
        }
    }
}

int YumConfIO::readLogicalLine(FILE* file, const QString& path, QString& line)
{
    if (pendingLines.isEmpty()) {
        const int result = readLine(file, path, line);
        if (result != LineRead) {
            return result;
        }
    } else {
        line = pendingLines.takeFirst();
        if (!pendingLines.isEmpty()) {
            // The line after this one is known not to continue it.
            return LineRead;
        }
    }
    for (;;) {
        QString next;
        const int result = readLine(file, path, next);
        if (result == ReadError) {
            return ReadError;
        }
        if (result == EndOfFile) {
            return LineRead;
        }
        if (next.isEmpty() || !isBlank(next.at(0))) {
            pendingLines.append(next);
            return LineRead;
        }
        line += QLatin1Char('\n') + next;
    }
}

int YumConfIO::readLine(FILE* file, const QString& path, QString& line)
{
    line.clear();
    for (;;) {
        errno = 0;
        const int byte = fgetc(file);
        if (byte == EOF) {
            break;
        }
        if (byte == '\n') {
            return LineRead;
        }
        line += QLatin1Char(char(byte));
        if (byte > 0x7f) {
            doubtLetters(path);
        }
    }
    if (errno != 0) {
        error(tr("Error reading repository configuration file %1").arg(path));
        return ReadError;
    }
    return line.isEmpty() ? EndOfFile : LineRead;
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
    if (line.leftRef(int(keyEnd - line.begin())) != key) {
        return false;
    }
    const auto valueBegin =
        std::find_if_not(separator + 1, line.end(), [](QChar character) { return isBlank(character); });
    value = line.mid(int(valueBegin - line.begin()));
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

bool YumConfIO::hasEmptyId() const
{
    return std::any_of(entries.begin(), entries.end(),
                       [](const Repo::Entry& entry) { return entry.id.isEmpty(); });
}

QString YumConfIO::getDuplicateId() const
{
    QString duplicates;
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        for (auto later = entry + 1; later != entries.end(); ++later) {
            if (*entry == *later) {
                if (!duplicates.isEmpty()) {
                    duplicates += QStringLiteral(", ");
                }
                duplicates += entry->id;
            }
        }
    }
    return duplicates;
}

bool YumConfIO::checkErrors()
{
    QStringList messages;
    if (hasEmptyId()) {
        messages += tr("A repository has no Identifier.  It will be removed.");
    }
    const QString duplicates = getDuplicateId();
    if (!duplicates.isEmpty()) {
        messages += tr("Two or more repositories have the same Identifier(s), %1.  "
                       "Only one repository will be applied for each Identifier.")
                        .arg(duplicates);
    }
    if (messages.isEmpty()) {
        return true;
    }
    const QMessageBox::StandardButton answer =
        showCritical(parent, tr("Repository Editor"), messages.join(QLatin1Char('\n')) + tr("  Proceed?"),
                     QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    if (answer != QMessageBox::Yes) {
        return false;
    }
    QSet<QString> seen;
    const auto unusable = [&seen](const Repo::Entry& entry) {
        if (entry.id.isEmpty() || seen.contains(entry.id)) {
            return true;
        }
        seen.insert(entry.id);
        return false;
    };
    QList<Repo::Entry> usable;
    std::remove_copy_if(entries.cbegin(), entries.cend(), std::back_inserter(usable), unusable);
    entries = usable;
    return true;
}

void YumConfIO::cleanupWrite(QList<Repo::Entry>& list) const
{
    for (Repo::Entry& entry : list) {
        if (entry.file.isEmpty()) {
            entry.file = entry.id + QStringLiteral(".repo");
        }
        if (!entry.file.startsWith(QLatin1Char('/')) && !reposdir.isEmpty()) {
            entry.file.prepend(reposdir.first() + QLatin1Char('/'));
        }
    }
}

bool YumConfIO::filePositionLessThan(const Repo::Entry& left, const Repo::Entry& right)
{
    if (left.file != right.file) {
        return left.file < right.file;
    }
    return left.position < right.position;
}

bool YumConfIO::write(QWidget* window)
{
    parent = window;
    if (!checkErrors()) {
        return false;
    }
    cleanupWrite(entries);
    QList<Repo::Entry> sorted = entries;
    std::stable_sort(sorted.begin(), sorted.end(), filePositionLessThan);

    QSet<QString> written;
    for (int first = 0; first < sorted.size();) {
        const QString path = sorted.at(first).file;
        QList<Repo::Entry> sections;
        for (; first < sorted.size() && sorted.at(first).file == path; ++first) {
            sections.append(sorted.at(first));
        }
        if (!writeFile(path, sections)) {
            return false;
        }
        written.insert(path);
    }
    const QString mainFile = fileName();
    if (!written.contains(mainFile)) {
        if (!writeFile(mainFile, QList<Repo::Entry>())) {
            return false;
        }
        written.insert(mainFile);
    }
    return removeUnusedFiles(written);
}

bool YumConfIO::writeFile(const QString& path, const QList<Repo::Entry>& sections)
{
    const QString beginning = path == fileName() ? mainText : QString();
    const bool secret = holdsPassword(beginning) ||
                        std::any_of(sections.begin(), sections.end(),
                                    [](const Repo::Entry& entry) { return holdsPassword(entry); });
    FileGuard file = openForWriting(path, secret ? S_IRUSR | S_IWUSR : 0666);
    bool good = file && writeText(file.get(), beginning);
    for (int i = 0; good && i < sections.size(); ++i) {
        good =
            (i == 0 || writeText(file.get(), QStringLiteral("\n"))) && writeRepo(file.get(), sections.at(i));
    }
    if (!good || !closeWritten(std::move(file))) {
        error(tr("Unable to write repository configuration file %1").arg(path));
        return false;
    }
    return true;
}

bool YumConfIO::writeRepo(FILE* file, const Repo::Entry& entry)
{
    QString text = QLatin1Char('[') + entry.id + QStringLiteral("]\n");
    const auto addOption = [&text](const char* key, const QString& value) {
        if (!value.isEmpty()) {
            text += QLatin1String(key) + QLatin1Char('=') + value + QLatin1Char('\n');
        }
    };
    const auto stateText = [](qint32 state) {
        switch (state) {
        case Qt::Checked:
            return QStringLiteral("1");
        case Qt::Unchecked:
            return QStringLiteral("0");
        default:
            return QString();
        }
    };
    addOption("name", entry.name);
    addOption("baseurl", QString(entry.baseurl).replace(QLatin1Char('\n'), QStringLiteral("\n        ")));
    addOption("mirrorlist", entry.mirrorlist);
    addOption("enabled", stateText(entry.enabled));
    addOption("gpgcheck", stateText(entry.gpgcheck));
    text += entry.options;
    return writeText(file, text);
}

bool YumConfIO::removeUnusedFiles(const QSet<QString>& written)
{
    for (const QString& directory : qAsConst(reposdir)) {
        const DirectoryGuard listing(opendir(QFile::encodeName(directory).constData()));
        if (!listing) {
            continue;
        }
        for (QString name = nextRepoFile(listing.get()); !name.isNull(); name = nextRepoFile(listing.get())) {
            const QString path = directory + QLatin1Char('/') + name;
            struct stat status;
            if (stat(QFile::encodeName(path).constData(), &status) != 0) {
                error(tr("Unable to stat repository configuration file %1").arg(path));
                return false;
            }
            if (S_ISDIR(status.st_mode) || written.contains(path)) {
                continue;
            }
            if (unlink(QFile::encodeName(path).constData()) != 0) {
                error(tr("Unable to unlink repository configuration file %1").arg(path));
                return false;
            }
        }
    }
    return true;
}

void YumConfIO::error(const QString& message)
{
    const int failure = errno;
    const QString suffix = tr("; errno = %1 (%2).")
                               .arg(QString::number(failure), QString::fromLocal8Bit(std::strerror(failure)));
    showCritical(parent, tr("VYRE Repository Editor Error"), message + suffix, QMessageBox::Ok,
                 QMessageBox::Ok);
}
