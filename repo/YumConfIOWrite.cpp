// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/YumConfIO.h"

#include <QFile>
#include <QSet>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <memory>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include "app/base/Credentials.h"
#include "repo/SafeFile.h"
#include "repo/YumConfIOParts.h"

using namespace YumConfIOParts;

namespace {

// A message lists at most this number of file names.
constexpr int listedNames = 20;
// A message lists at most this number of repository identifiers.
constexpr int listedIdentifiers = 100;

// The maximum number of files in a batch. It limits the open descriptors, because each file of a batch stays
// open until the batch is committed.
constexpr int filesAtOnce = 200;

QString listOf(QStringList names)
{
    if (names.size() > listedNames) {
        names = names.mid(0, listedNames);
        names.append(QStringLiteral("..."));
    }
    return names.join(QLatin1Char('\n'));
}

} // namespace

bool YumConfIO::hasEmptyId() const
{
    return std::any_of(entries.begin(), entries.end(),
                       [](const Repo::Entry& entry) { return entry.id.isEmpty(); });
}

QString YumConfIO::getDuplicateId() const
{
    QHash<QString, int> later;
    for (const Repo::Entry& entry : entries) {
        ++later[entry.id];
    }
    QStringList duplicates;
    for (const Repo::Entry& entry : entries) {
        const int times = --later[entry.id];
        for (int i = 0; i < times; ++i) {
            if (duplicates.size() == listedIdentifiers) {
                return duplicates.join(QStringLiteral(", ")) + QStringLiteral(", ...");
            }
            duplicates.append(entry.id);
        }
    }
    return duplicates.join(QStringLiteral(", "));
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
        showBox(parent, tr("Repository Editor"), messages.join(QLatin1Char('\n')) + tr("  Proceed?"),
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
    readAgainWanted = false;
    outdated = false;
    if (!checkErrors()) {
        return false;
    }
    cleanupWrite(entries);
    QList<Target> list = targets();
    QList<int> removed = unused(list);
    if (!respectChanges(list, removed)) {
        return false;
    }
    removeLeftovers();
    return writeFiles(list) && removeUnusedFiles(removed) && reportOutdated(list);
}

QList<YumConfIO::Target> YumConfIO::targets() const
{
    QHash<QString, int> byPath;
    for (int i = knownFiles.size() - 1; i >= 0; --i) {
        byPath.insert(knownFiles.at(i).canonical, i);
    }
    for (int i = knownFiles.size() - 1; i >= 0; --i) {
        byPath.insert(knownFiles.at(i).path, i);
    }
    QHash<Repo::FileNumber, int> byNumber;
    const auto find = [&](const QString& path) {
        int known = byPath.value(path, -1);
        struct stat status;
        if (known < 0) {
            known = byPath.value(Repo::canonicalPath(path), -1);
        }
        if (known < 0 && stat(QFile::encodeName(path).constData(), &status) == 0) {
            if (byNumber.isEmpty()) {
                byNumber = numbersOfKnown();
            }
            known = byNumber.value(Repo::numberOf(status), -1);
        }
        return known;
    };

    QList<Target> result;
    QHash<QString, int> byEntryFile; // both maps contain indexes into `result`
    QHash<QString, int> byPlace;
    QList<Repo::Entry> sorted = entries;
    for (Repo::Entry& entry : sorted) {
        if (!byEntryFile.contains(entry.file)) {
            Target target;
            target.known = find(entry.file);
            const QString place =
                target.known < 0 ? Repo::canonicalPath(entry.file) : knownFiles.at(target.known).canonical;
            if (!byPlace.contains(place)) {
                byPlace.insert(place, result.size());
                target.path = target.known < 0 ? entry.file : knownFiles.at(target.known).path;
                result.append(target);
            }
            byEntryFile.insert(entry.file, byPlace.value(place));
        }
        entry.file = result.at(byEntryFile.value(entry.file)).path;
    }
    std::stable_sort(sorted.begin(), sorted.end(), filePositionLessThan);
    for (const Repo::Entry& entry : qAsConst(sorted)) {
        result[byEntryFile.value(entry.file)].sections.append(entry);
    }
    std::sort(result.begin(), result.end(),
              [](const Target& left, const Target& right) { return left.path < right.path; });

    for (int i = 0; i < knownFiles.size(); ++i) {
        const auto isThis = [i](const Target& target) { return target.known == i; };
        if (knownFiles.at(i).isMain && std::none_of(result.cbegin(), result.cend(), isThis)) {
            Target main;
            main.path = knownFiles.at(i).path;
            main.known = i;
            result.append(main);
        }
    }
    for (Target& target : result) {
        const Known* const known = target.known < 0 ? nullptr : &knownFiles.at(target.known);
        target.text = textOf(known != nullptr && known->isMain ? mainText : QString(), target.sections);
        target.edited = known == nullptr || target.text != known->unedited;
        target.turn = turnOf(target, known != nullptr ? known->identifiers : QStringList());
    }
    std::stable_sort(result.begin(), result.end(),
                     [](const Target& left, const Target& right) { return left.turn < right.turn; });
    return result;
}

YumConfIO::Turn YumConfIO::turnOf(const Target& target, const QStringList& before)
{
    const QStringList now = identifiersOf(target.sections);
    if (!std::includes(before.cbegin(), before.cend(), now.cbegin(), now.cend())) {
        return std::includes(now.cbegin(), now.cend(), before.cbegin(), before.cend()) ? Gains
                                                                                       : GainsAndLoses;
    }
    return target.edited ? GainsNothing : Unedited;
}

QList<int> YumConfIO::unused(const QList<Target>& list) const
{
    QSet<int> used;
    for (const Target& target : list) {
        used.insert(target.known);
    }
    QList<int> result;
    for (int i = 0; i < knownFiles.size(); ++i) {
        const Known& known = knownFiles.at(i);
        // A file that contained repositories, but has none now, is removed. A plain file is removed even if
        // it never contained a repository; any other file without repositories stays unchanged.
        if (!used.contains(i) && !known.names.isEmpty() &&
            (known.file.isPlain || !known.unedited.isEmpty())) {
            result.append(i);
        }
    }
    return result;
}

bool YumConfIO::respectChanges(QList<Target>& list, QList<int>& removed)
{
    QStringList changedFiles;
    if (fileName() != mainFile) {
        changedFiles.append(fileName());
    }
    for (Target& target : list) {
        if (target.known < 0) {
            struct stat status;
            if (lstat(QFile::encodeName(target.path).constData(), &status) == 0 && !S_ISDIR(status.st_mode)) {
                changedFiles.append(target.path);
            }
            continue;
        }
        const Known& known = knownFiles.at(target.known);
        const Repo::File now = Repo::File::read(known.path);
        target.outdated = now.state != Repo::File::Text || now.bytes != known.file.bytes;
        if (target.edited && target.outdated) {
            changedFiles.append(target.path);
        }
        // VYRE also writes unedited files if they are plain: this removes their blank lines and the comments
        // above their first section. In any other unedited file, a write would change characters.
        target.skipped = !target.edited && (target.outdated || !known.file.isPlain ||
                                            known.file.encoded(target.text) == known.file.bytes);
    }
    QList<int> good;
    for (const int i : qAsConst(removed)) {
        const Known& known = knownFiles.at(i);
        const Repo::File now = Repo::File::read(known.path);
        if (now.state == Repo::File::Text && now.bytes == known.file.bytes) {
            good.append(i);
        } else if (now.state != Repo::File::Missing && !known.unedited.isEmpty()) {
            changedFiles.append(known.path);
        }
    }
    removed = good;
    if (changedFiles.isEmpty()) {
        return true;
    }
    readAgainWanted =
        showBox(parent, tr("Repository Editor"),
                tr("VYRE has written nothing: other programs have created or changed these files "
                   "since VYRE last read the configuration, or VYRE cannot edit them.\n%1\n"
                   "Read all files again, and lose your changes?")
                    .arg(listOf(changedFiles)),
                QMessageBox::Yes | QMessageBox::No, QMessageBox::No,
                QMessageBox::Warning) == QMessageBox::Yes;
    return false;
}

// Writes the files in batches. All files of a batch are prepared before the first one is committed. If a
// section moves to another file, the order makes sure that the section is written to the new file before it
// is removed from the old file.
bool YumConfIO::writeFiles(QList<Target>& list)
{
    std::vector<std::unique_ptr<SafeFile>> files;
    QList<Target*> ready;
    for (Target& target : list) {
        if (target.skipped) {
            continue;
        }
        auto file = std::make_unique<SafeFile>();
        if (!prepareWrite(*file, target)) {
            error(tr("Unable to write repository configuration file %1").arg(target.path));
            return false;
        }
        files.push_back(std::move(file));
        ready.append(&target);
        if (ready.size() == filesAtOnce) {
            if (!commit(files, ready)) {
                return false;
            }
            files.clear();
            ready.clear();
        }
    }
    return commit(files, ready);
}

bool YumConfIO::prepareWrite(SafeFile& file, const Target& target)
{
    if (target.known < 0) {
        // Protect the new file even if its password is still empty, because VYRE may later write the user's
        // password to it.
        const bool secret = Credentials::holds(target.text, Credentials::Text::Options);
        return file.create(target.path, target.text.toUtf8(), secret ? S_IRUSR | S_IWUSR : 0666);
    }
    const bool secret = target.edited && Credentials::holdsPassword(target.text, Credentials::Text::Options);
    const Repo::File& known = knownFiles.at(target.known).file;
    return file.replace(target.path, known.bytes, known.encoded(target.text), !secret);
}

bool YumConfIO::commit(std::vector<std::unique_ptr<SafeFile>>& files, const QList<Target*>& list)
{
    QStringList directories;
    bool good = SafeFile::sync(files);
    int failed = 0;
    for (int i = 0; good && i < list.size(); ++i) {
        SafeFile& file = *files[static_cast<size_t>(i)];
        failed = i;
        good = file.commit();
        if (good) {
            written(*list.at(i), file);
            directories.append(file.directory());
        } else if (!file.copy().isEmpty()) {
            const int failure = errno;
            Q_EMIT noted(
                tr("VYRE was interrupted while it wrote a configuration file. The previous text is in %1")
                    .arg(file.copy()));
            errno = failure;
        }
    }
    const int failure = errno;
    directories.removeDuplicates();
    SafeFile::syncDirectories(directories);
    errno = failure;
    if (!good) {
        error(tr("Unable to write repository configuration file %1").arg(list.at(failed)->path));
    }
    return good;
}

void YumConfIO::written(Target& target, const SafeFile& file)
{
    if (target.known < 0) {
        target.known = knownFiles.size();
        Known made;
        made.path = target.path;
        made.canonical = Repo::canonicalPath(target.path);
        if (target.path.endsWith(QLatin1String(".repo")) && isInRepoDirectory(made.canonical)) {
            made.names.append(target.path);
        }
        knownFiles.append(made);
    }
    Known& known = knownFiles[target.known];
    known.unedited = target.text;
    known.identifiers = identifiersOf(target.sections);
    known.file.bytes = known.file.encoded(target.text);
    known.file.isPlain = known.file.bytes == target.text.toLatin1();
    known.file.isAscii = known.file.isPlain;
    if (file.hasRemovedRights()) {
        const QString note =
            tr("%1 contains a password. From now on, only the file's owner and group can read the file.")
                .arg(target.path);
        Q_EMIT noted(note);
    }
}

bool YumConfIO::removeUnusedFiles(const QList<int>& removed)
{
    QStringList directories;
    QSet<QString> gone;
    for (const int i : removed) {
        const Known& known = knownFiles.at(i);
        QStringList names;
        // Read all names before the first removal, because symbolic links to the file are broken after the
        // removal.
        for (const QString& name : known.names) {
            const Repo::File now = Repo::File::read(name);
            if (now.state == Repo::File::NoStatus) {
                errno = now.failure;
                error(tr("Unable to stat repository configuration file %1").arg(name));
                return false;
            }
            if (now.state == Repo::File::Text && now.bytes == known.file.bytes) {
                names.append(name);
            }
        }
        for (const QString& name : qAsConst(names)) {
            if (unlink(QFile::encodeName(name).constData()) != 0 && errno != ENOENT) {
                error(tr("Unable to unlink repository configuration file %1").arg(name));
                return false;
            }
            directories.append(directoryOf(name));
        }
        gone.insert(known.path);
    }
    directories.removeDuplicates();
    SafeFile::syncDirectories(directories);
    knownFiles.erase(std::remove_if(knownFiles.begin(), knownFiles.end(),
                                    [&gone](const Known& known) { return gone.contains(known.path); }),
                     knownFiles.end());
    return true;
}

bool YumConfIO::reportOutdated(const QList<Target>& list)
{
    QStringList paths;
    for (const Target& target : list) {
        if (target.outdated) {
            paths.append(target.path);
        }
    }
    if (!paths.isEmpty()) {
        outdated = true;
        showBox(parent, tr("Repository Editor"),
                tr("Other programs have changed these files since VYRE last read them. You have not edited "
                   "these files, and VYRE has not changed them.\n%1")
                    .arg(listOf(paths)),
                QMessageBox::Ok, QMessageBox::Ok, QMessageBox::Information);
    }
    return true;
}

QString YumConfIO::textOf(const QString& beginning, const QList<Repo::Entry>& sections)
{
    QString text = beginning;
    for (int i = 0; i < sections.size(); ++i) {
        if (i != 0) {
            text += QLatin1Char('\n');
        }
        text += textOf(sections.at(i));
    }
    return text;
}

QString YumConfIO::textOf(const Repo::Entry& entry)
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
    return text + entry.options;
}
