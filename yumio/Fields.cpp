// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/Fields.h"

#include "yumio/Package.h"

namespace {

using Package::Entry;
using From = Fields::Source;

// Combinations of flags that most fields have.
constexpr int searchedAndDescribed = Fields::OfPackages | Fields::Searched | Fields::Described;
constexpr int alsoInShortDescription = searchedAndDescribed | Fields::InShortDescription;
constexpr int searchedAndDescribedForGroups = Fields::OfGroups | Fields::Searched | Fields::Described;

constexpr Fields::Row row(Fields::Field field, const char* label, QString Entry::*member,
                          int uses = searchedAndDescribed)
{
    return {field, label, From::Record, nullptr, member, uses};
}

constexpr Fields::Row row(Fields::Field field, const char* label, From source, const char* attribute,
                          int uses = searchedAndDescribed)
{
    return {field, label, source, attribute, nullptr, uses};
}

constexpr Fields::Row rows[] = {
    row(Fields::Name, nullptr, &Entry::name, Fields::OfPackages | Fields::OfGroups | Fields::Searched),
    row(Fields::Kind, QT_TRANSLATE_NOOP("Fields", "Kind"), From::RecordKind, nullptr,
        Fields::OfPackages | Fields::OfGroups | Fields::Described),
    row(Fields::Version, QT_TRANSLATE_NOOP("Fields", "Version"), &Entry::verRel, alsoInShortDescription),
    row(Fields::Repository, QT_TRANSLATE_NOOP("Fields", "Repository"), &Entry::repo),
    row(Fields::Architecture, QT_TRANSLATE_NOOP("Fields", "Architecture"), &Entry::arch,
        alsoInShortDescription),
    row(Fields::Size, QT_TRANSLATE_NOOP("Fields", "Size"), &Entry::sizeText, alsoInShortDescription),
    row(Fields::Summary, QT_TRANSLATE_NOOP("Fields", "Summary"), &Entry::summary),
    row(Fields::Description, QT_TRANSLATE_NOOP("Fields", "Description"), From::Text, "description"),
    row(Fields::Group, QT_TRANSLATE_NOOP("Fields", "Group"), From::Text, "group"),
    row(Fields::Vendor, QT_TRANSLATE_NOOP("Fields", "Vendor"), From::Text, "vendor"),
    row(Fields::BuildTime, QT_TRANSLATE_NOOP("Fields", "Build Time"), &Entry::buildTimeText,
        alsoInShortDescription),
    row(Fields::BuildHost, QT_TRANSLATE_NOOP("Fields", "Build Host"), From::Text, "buildhost"),
    row(Fields::InstallTime, QT_TRANSLATE_NOOP("Fields", "Install Time"), From::Time, "installtime"),
    row(Fields::BinaryRpm, QT_TRANSLATE_NOOP("Fields", "Binary RPM"), From::Text, "relativepath"),
    row(Fields::SourceRpm, QT_TRANSLATE_NOOP("Fields", "Source RPM"), From::Text, "sourcerpm"),
    row(Fields::License, QT_TRANSLATE_NOOP("Fields", "License"), From::Text, "license"),
    row(Fields::Packager, QT_TRANSLATE_NOOP("Fields", "Packager"), From::Text, "packager",
        alsoInShortDescription),
    row(Fields::Url, QT_TRANSLATE_NOOP("Fields", "URL"), From::Text, "url"),
    row(Fields::Relocations, QT_TRANSLATE_NOOP("Fields", "Relocations"), From::Header, "PREFIXES"),
    row(Fields::Provides, QT_TRANSLATE_NOOP("Fields", "Provides"), From::Dependencies, "provides"),
    row(Fields::RequiresPre, QT_TRANSLATE_NOOP("Fields", "Requires (pre)"), From::Dependencies,
        "requires_pre"),
    row(Fields::Requires, QT_TRANSLATE_NOOP("Fields", "Requires"), From::Dependencies, "requires"),
    row(Fields::Conflicts, QT_TRANSLATE_NOOP("Fields", "Conflicts"), From::Dependencies, "conflicts"),
    row(Fields::Obsoletes, QT_TRANSLATE_NOOP("Fields", "Obsoletes"), From::Dependencies, "obsoletes"),
    row(Fields::Recommends, QT_TRANSLATE_NOOP("Fields", "Recommends"), From::Dependencies, "recommends"),
    row(Fields::Suggests, QT_TRANSLATE_NOOP("Fields", "Suggests"), From::Dependencies, "suggests"),
    row(Fields::Supplements, QT_TRANSLATE_NOOP("Fields", "Supplements"), From::Dependencies, "supplements"),
    row(Fields::Enhances, QT_TRANSLATE_NOOP("Fields", "Enhances"), From::Dependencies, "enhances"),
    row(Fields::Advisories, QT_TRANSLATE_NOOP("Fields", "Advisories"), From::Text, "advisories"),
    row(Fields::ModuleStreams, QT_TRANSLATE_NOOP("Fields", "Module Streams"), From::Text, "modulestreams"),
    row(Fields::VersionLock, QT_TRANSLATE_NOOP("Fields", "Version Lock"), From::VersionLock, nullptr),
    row(Fields::Files, QT_TRANSLATE_NOOP("Fields", "Files"), From::FileList, nullptr,
        Fields::OfPackages | Fields::Described),
    row(Fields::ChangeLog, QT_TRANSLATE_NOOP("Fields", "Change Log"), From::ChangeLog, nullptr,
        Fields::OfPackages | Fields::Described),
    row(Fields::MandatoryPackages, QT_TRANSLATE_NOOP("Fields", "Mandatory Packages"), From::Members,
        "mandatory_packages", searchedAndDescribedForGroups),
    row(Fields::DefaultPackages, QT_TRANSLATE_NOOP("Fields", "Default Packages"), From::Members,
        "default_packages", searchedAndDescribedForGroups),
    row(Fields::OptionalPackages, QT_TRANSLATE_NOOP("Fields", "Optional Packages"), From::Members,
        "optional_packages", searchedAndDescribedForGroups),
    row(Fields::ConditionalPackages, QT_TRANSLATE_NOOP("Fields", "Conditional Packages"), From::Members,
        "conditional_packages", searchedAndDescribedForGroups),
};

constexpr bool inOrder()
{
    for (int i = 0; i < Fields::Count; ++i) {
        if (rows[i].field != i) {
            return false;
        }
    }
    return true;
}

static_assert(sizeof rows / sizeof *rows == Fields::Count, "each field has its row");
static_assert(inOrder(), "the rows are in the order of the enumeration");

} // namespace

const Fields::Row& Fields::row(Field field)
{
    return rows[field];
}

QString Fields::label(Field field)
{
    return tr(rows[field].label);
}
