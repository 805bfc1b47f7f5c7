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
        Files,
        ChangeLog,
        MandatoryPackages,
        DefaultPackages,
        OptionalPackages,
        ConditionalPackages,
        Count
    };

    enum class Source {
        Record,       // a member of the record
        RecordKind,   // the word for the record's kind
        Text,         // an attribute of the script's package
        Time,         // an attribute in seconds since the epoch; 0 means no time
        Dependencies, // an attribute that is a list
        Header,       // a list in the header of an installed package
        FileList,     // extra data, loaded on first use
        ChangeLog,    // extra data, loaded on first use
        Members       // a list of the script's group
    };

    enum Use {
        OfPackages = 1, // packages and suites have the field
        OfGroups = 2,
        // Searches include the field. The file list and the change log lack this flag, although searches
        // include them too: searches read these two separately.
        Searched = 4,
        Described = 8,  // the description of a record shows it
        OfVersions = 16 // the short description of another installed version shows it too
    };

    struct Row
    {
        Field field;
        const char* label; // not translated; null for the name, because it is the heading of a description
        Source source;
        const char*
            attribute; // the script's attribute, or the tag of the package header; null for other sources
        QString Package::Entry::*member; // only for the source Record, otherwise null
        int uses;
    };

    static const Row& row(Field field);
    // Returns the label in front of the text, in the user's language.
    static QString label(Field field);

    // Calls the function for each field that has all of these uses, until the function returns true. Returns
    // whether the function returned true.
    template <typename Function> static bool any(int uses, Function function)
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
