// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/YumConfIO.h"

#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <sys/stat.h>

#include "app/base/ManagedRoot.h"
#include "repo/SafeFile.h"
#include "repo/YumConfIOParts.h"

using namespace YumConfIOParts;

YumConfIO::YumConfIO(const QList<YumRepoEnabled>& requests, QHash<QString, bool>& session)
    : enableRequests(requests), sessionEnabled(session)
{
}

YumConfIO::~YumConfIO() = default;

QString YumConfIO::fileName()
{
    const QString usual = ManagedRoot::absolute(QStringLiteral("/etc/yum.conf"));
    for (const QString& path : {ManagedRoot::absolute(QStringLiteral("/etc/yum/yum.conf")), usual,
                                ManagedRoot::absolute(QStringLiteral("/etc/dnf/dnf.conf"))}) {
        struct stat status;
        if (stat(QFile::encodeName(path).constData(), &status) == 0) {
            return path;
        }
    }
    return usual;
}

QStringList YumConfIO::defaultDirectories() const
{
    QStringList result{ManagedRoot::absolute(QStringLiteral("/etc/yum.repos.d")),
                       ManagedRoot::absolute(QStringLiteral("/etc/yum/repos.d"))};
    for (const QString& known : knownDirectories) {
        const QString directory = ManagedRoot::absolute(known);
        if (!result.contains(directory) && QFileInfo(directory).isDir()) {
            result.append(directory);
        }
    }
    return result;
}

bool YumConfIO::read(QWidget* window)
{
    parent = window;
    mainText.clear();
    cachedir = ManagedRoot::absolute(QStringLiteral("/var/cache/yum"));
    reposdir = defaultDirectories();
    enabled = true;
    gpgcheck = false;
    entries.clear();
    // Remove the pending lines that a failed read has left behind.
    pendingLines.clear();
    warnings.clear();
    knownFiles.clear();
    knownNumbers.clear();
    readAgainWanted = false;
    outdated = false;

    if (!readMainFile()) {
        return false;
    }
    for (const QString& directory : qAsConst(reposdir)) {
        if (!readRepoDirectory(directory)) {
            return false;
        }
    }
    noteLeftoverCopies();
    Q_EMIT changed();
    return true;
}

void YumConfIO::keep(const QString& path, const Repo::File& file, int firstEntry, bool isMain)
{
    if (file.state != Repo::File::Text) {
        knownNumbers.insert(file.number, -1);
        warnings.append(file.reason);
        return;
    }
    Known known;
    known.path = path;
    known.canonical = Repo::canonicalPath(path);
    known.file = file;
    known.file.text.clear();
    const QList<Repo::Entry> sections = entries.mid(firstEntry);
    known.unedited = textOf(isMain ? mainText : QString(), sections);
    known.identifiers = identifiersOf(sections);
    known.isMain = isMain;
    if (!isMain) {
        known.names.append(path);
    }
    knownNumbers.insert(file.number, knownFiles.size());
    knownFiles.append(known);
}

// Warns about copies of old configuration files that an earlier run of VYRE left behind because it was
// killed.
void YumConfIO::noteLeftoverCopies()
{
    QSet<QString> directories;
    for (const QString& directory : qAsConst(reposdir) + SafeFile::copyDirectories()) {
        directories.insert(Repo::canonicalPath(directory));
    }
    for (const Known& known : qAsConst(knownFiles)) {
        directories.insert(directoryOf(known.canonical));
    }
    QStringList copies;
    for (const QString& directory : qAsConst(directories)) {
        copies += SafeFile::leftoverCopies(directory);
    }
    copies.sort();
    for (const QString& copy : qAsConst(copies)) {
        warnings.append(
            tr("VYRE was interrupted while it wrote a configuration file. The previous text is in %1")
                .arg(copy));
    }
}

// Maps the present device and inode numbers of each known file to its index in `knownFiles`. The inode number
// changes if another program replaces the file.
QHash<Repo::FileNumber, int> YumConfIO::numbersOfKnown() const
{
    QHash<Repo::FileNumber, int> result;
    for (int i = knownFiles.size() - 1; i >= 0; --i) {
        struct stat status;
        if (stat(QFile::encodeName(knownFiles.at(i).path).constData(), &status) == 0) {
            result.insert(Repo::numberOf(status), i);
        }
    }
    return result;
}

void YumConfIO::removeLeftovers() const
{
    QSet<QString> directories;
    for (const Known& known : knownFiles) {
        directories.insert(directoryOf(known.canonical));
    }
    for (const QString& directory : reposdir) {
        directories.insert(Repo::canonicalPath(directory));
    }
    for (const QString& directory : qAsConst(directories)) {
        SafeFile::removeLeftovers(directory);
    }
}

bool YumConfIO::isInRepoDirectory(const QString& path) const
{
    return std::any_of(reposdir.cbegin(), reposdir.cend(), [&path](const QString& directory) {
        return Repo::canonicalPath(directory) == directoryOf(path);
    });
}

void YumConfIO::error(const QString& message)
{
    const int failure = errno;
    const QString suffix = tr("; errno = %1 (%2).")
                               .arg(QString::number(failure), QString::fromLocal8Bit(std::strerror(failure)));
    showBox(parent, tr("VYRE Repository Editor Error"), message + suffix, QMessageBox::Ok, QMessageBox::Ok);
}
