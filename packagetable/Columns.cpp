// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/Columns.h"

#include <QStringList>

#include "yumio/Package.h"
#include "yumio/Words.h"
#include "yumio/YumIO.h"

namespace PackageTable {

namespace {

using Package::Entry;

// --- Texts

template <QString Entry::*member> const QString& textOf(const Entry& record, QString&)
{
    return record.*member;
}

template <auto member> const QString& wordFor(const Entry& record, QString& made)
{
    made = Words::of(record.*member);
    return made;
}

const QString& version(const Entry& record, QString& made)
{
    // " *" shows that more than one version is installed. `next` links the versions. If an update is
    // available, the first record is the update, so the installed versions begin at the second record.
    const Entry* last = record.state == Package::Updatable ? record.next : &record;
    if (last == nullptr || last->next == nullptr) {
        return record.verRel;
    }
    made = record.verRel + QLatin1String(" *");
    return made;
}

// --- Pictures, by Package::Action, Package::State and Package::Kind

constexpr const char* actionPictures[Columns::mostPictures] = {"updateBox", "installBox", "removeBox",
                                                               "noneBox"};
constexpr const char* statePictures[Columns::mostPictures] = {"out-of-date", nullptr, "up-to-date"};
constexpr const char* kindPictures[Columns::mostPictures] = {"suite", "group", "package"};

// --- Numbers

// Sort keys of all columns have the type int, although the members have different types.
template <auto member> int keyOf(const Entry& record)
{
    return static_cast<int>(record.*member);
}

template <auto member, typename Type> QVariant valueOf(const Entry& record)
{
    return static_cast<Type>(record.*member);
}

// --- Tool tips

// A tool tip lists at most this number of advisories.
constexpr int mostAdvisories = 8;

QString excludedToolTip()
{
    return Columns::tr("Package is installed; the configuration excludes it from updates and removals");
}

QString actionToolTip(const Entry& record, const YumIO&)
{
    // If an excluded package has no update, a click on the cell has no effect, and the tool tip gives the
    // reason.
    const bool canBeMarked = !record.isExcluded() || record.permits(Package::Update);
    return canBeMarked ? Words::explained(record.action) : excludedToolTip();
}

QString stateToolTip(const Entry& record, const YumIO& backEnd)
{
    QStringList lines{record.isExcluded() ? excludedToolTip() : Words::explained(record.state)};
    const YumIO::Replacement replacement = backEnd.replacement(record);
    if (!replacement.by.isEmpty()) {
        lines.append(Columns::tr("Replaced by %1").arg(replacement.by.join(QStringLiteral(", "))));
    }
    if (!replacement.of.isEmpty()) {
        lines.append(Columns::tr("Replaces %1").arg(replacement.of.join(QStringLiteral(", "))));
    }
    const QStringList advisories = backEnd.advisoriesOfUpdate(record);
    if (!advisories.isEmpty()) {
        lines.append(advisories.count() <= mostAdvisories
                         ? Columns::tr("Advisories: %1").arg(advisories.join(QStringLiteral(", ")))
                         : Columns::tr("Advisories: %1 and %2 more")
                               .arg(QStringList(advisories.mid(0, mostAdvisories)).join(QStringLiteral(", ")))
                               .arg(advisories.count() - mostAdvisories));
    }
    if (backEnd.versionLocks().isLocked(record)) {
        lines.append(
            Columns::tr("The version is locked: %1").arg(backEnd.versionLocks().lines.value(record.name)));
    }
    return lines.join(QLatin1Char('\n'));
}

QString kindToolTip(const Entry& record, const YumIO&)
{
    return Words::described(record.kind);
}

QString versionToolTip(const Entry& record, const YumIO&)
{
    QString text;
    for (const Entry* each = &record; each != nullptr; each = each->next) {
        text += (each->state == Package::Installed ? Columns::tr("Installed: %1\n")
                                                   : Columns::tr("Available: %1\n"))
                    .arg(each->verRel);
    }
    return text.trimmed();
}

// --- The columns

constexpr Columns::Row rows[] = {
    {ActionColumn, QT_TRANSLATE_NOOP("PackageTable::Columns", "Action"),
     QT_TRANSLATE_NOOP("PackageTable::Columns",
                       "Action to be performed on the package, if any: Update, Install, Remove"),
     wordFor<&Entry::action>, actionPictures, false, keyOf<&Entry::action>, valueOf<&Entry::action, int>,
     actionToolTip},
    {StateColumn, QT_TRANSLATE_NOOP("PackageTable::Columns", "State"),
     QT_TRANSLATE_NOOP("PackageTable::Columns", "Indicates whether the package is Installed or not and, if "
                                                "installed, whether it is Up-to-date or not"),
     wordFor<&Entry::state>, statePictures, false, keyOf<&Entry::state>, valueOf<&Entry::state, int>,
     stateToolTip},
    {KindColumn, QT_TRANSLATE_NOOP("PackageTable::Columns", "Kind"),
     QT_TRANSLATE_NOOP(
         "PackageTable::Columns",
         "Whether the package is an ordinary package, a suite of packages, or a group of packages"),
     wordFor<&Entry::kind>, kindPictures, true, keyOf<&Entry::kind>, valueOf<&Entry::kind, int>, kindToolTip},
    {NameColumn, QT_TRANSLATE_NOOP("PackageTable::Columns", "Name"),
     QT_TRANSLATE_NOOP("PackageTable::Columns", "Name of the package"), textOf<&Entry::name>, nullptr, true,
     nullptr, nullptr, nullptr},
    {VersionColumn, QT_TRANSLATE_NOOP("PackageTable::Columns", "Version"),
     QT_TRANSLATE_NOOP("PackageTable::Columns",
                       "Version and release of the package as version-release;\n"
                       "If the Epoch is non-zero, includes it as epoch:version-release"),
     version, nullptr, true, nullptr, nullptr, versionToolTip},
    {RepositoryColumn, QT_TRANSLATE_NOOP("PackageTable::Columns", "Repository"),
     QT_TRANSLATE_NOOP("PackageTable::Columns",
                       "Repository from which the most recent version of the package is available"),
     textOf<&Entry::repo>, nullptr, true, nullptr, nullptr, nullptr},
    {ArchitectureColumn, QT_TRANSLATE_NOOP("PackageTable::Columns", "Architecture"),
     QT_TRANSLATE_NOOP(
         "PackageTable::Columns",
         "Architecture for which the package is applicable, or \"noarch\" for general-purpose packages"),
     textOf<&Entry::arch>, nullptr, true, nullptr, nullptr, nullptr},
    {SizeColumn, QT_TRANSLATE_NOOP("PackageTable::Columns", "Size"),
     QT_TRANSLATE_NOOP("PackageTable::Columns", "Size of the package"), textOf<&Entry::sizeText>, nullptr,
     true, keyOf<&Entry::size>, valueOf<&Entry::size, qint64>, nullptr},
    {BuildTimeColumn, QT_TRANSLATE_NOOP("PackageTable::Columns", "Build Time"),
     QT_TRANSLATE_NOOP("PackageTable::Columns", "Date and time at which the package was created"),
     textOf<&Entry::buildTimeText>, nullptr, true, keyOf<&Entry::buildTime>,
     valueOf<&Entry::buildTime, quint64>, nullptr},
};

constexpr bool inOrder()
{
    for (int column = 0; column < ColumnCount; ++column) {
        if (rows[column].column != column) {
            return false;
        }
    }
    return true;
}

static_assert(sizeof rows / sizeof *rows == ColumnCount, "each column has its row");
static_assert(inOrder(), "the rows are in the order of the enumeration");

} // namespace

const Columns::Row* const Columns::all = rows;

QString Columns::title(int column)
{
    return tr(rows[column].title);
}

QString Columns::toolTip(int column)
{
    return tr(rows[column].toolTip);
}

} // namespace PackageTable
