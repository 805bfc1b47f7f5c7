// SPDX-License-Identifier: GPL-2.0-or-later

// The table of all fields of packages, suites and groups, in the order in which searches and descriptions use
// them. Each row of the table describes the label, the source of the text and the uses of one field.
// YumIO::text() reads a field of a record.
//
// Any thread may use the table, because it contains only constants.

#ifndef YUMIO_FIELDS_H
#define YUMIO_FIELDS_H

#include <QCoreApplication>
#include <QString>

namespace Package {
class Entry;
}

class Fields
{
    Q_DECLARE_TR_FUNCTIONS(Fields)

public:
    enum Field {
        Name,
        Kind,
        Version,
        Repository,
        Architecture,
        Size,
        Summary,
        Description,
        Group,
        Vendor,
        BuildTime,
        BuildHost,
        InstallTime,
        BinaryRpm,
        SourceRpm,
        License,
        Packager,
        Url,
        Relocations,
        Provides,
        RequiresPre,
        Requires,
        Conflicts,
        Obsoletes,
        Recommends,
        Suggests,
        Supplements,
        Enhances,
        Advisories,
        ModuleStreams,
        VersionLock,
        Files,
        ChangeLog,
        MandatoryPackages,
        DefaultPackages,
        OptionalPackages,
        ConditionalPackages,
        Count
    };

    // "Attribute" means an attribute of the script's package object. Each attribute has either dnf's name or
    // a name that a module of share/python/vyre/ defines.
    enum class Source {
        Record,       // a text that is a member of the record
        RecordKind,   // the word for the record's kind
        Text,         // an attribute that is a str or None
        Time,         // an attribute in seconds since the epoch; 0 and None mean no time
        Dependencies, // an attribute that is a list
        Header,       // a list in the rpm header of an installed package; other packages have no such value
        FileList,     // the file list, which is extra data, loaded on first use
        ChangeLog,    // the change log, which is extra data, loaded on first use
        VersionLock,  // the version lock of the package; empty if the package is not locked
        Members       // an attribute of the script's group object that is a list
    };

    enum Use {
        OfPackages = 1, // ordinary packages and suites have the field
        OfGroups = 2,   // groups have the field
        // A search compares the field with the expression. The file list and the change log lack this flag,
        // because a search reads these two fields separately.
        Searched = 4,
        Described = 8, // the description of a record shows the field
        // The short description of another installed version shows the field. This short description has only
        // the fields that help to distinguish the installed versions of one package.
        InShortDescription = 16
    };

    struct Row
    {
        Field field;
        const char* label; // not translated; null for the name, because it is the heading of a description
        Source source;
        // The name of the script's attribute, or the tag in the rpm header. Null if the source needs no name.
        const char* attribute;
        QString Package::Entry::*member; // the member with the text; null unless the source is Record
        int uses;                        // flags of Use
    };

    static const Row& row(Field field);
    // Returns the label in front of the text, in the user's language.
    static QString label(Field field);

    // Calls the function for each field that has all of these uses, until the function returns true. Returns
    // whether the function returned true.
    template <typename Function> static bool forEachUntil(int uses, Function function)
    {
        for (int i = 0; i < Count; ++i) {
            const auto field = static_cast<Field>(i);
            if ((row(field).uses & uses) == uses && function(field)) {
                return true;
            }
        }
        return false;
    }
};

#endif
