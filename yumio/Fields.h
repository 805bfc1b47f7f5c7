// SPDX-License-Identifier: GPL-2.0-or-later

// The fields of a package, a suite or a group, each once, in the order of searches and descriptions:
// the label, the source of the text and the uses of the field. YumIO::text() reads a field of a
// record.
//
// For any thread: constants only.

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
        OfPackages = 1, // and of suites
        OfGroups = 2,
        // Searches include the field. They also include the file list and the change log, but read these
        // separately from the packages.
        Searched = 4,
        Described = 8,  // the description of a record shows it
        OfVersions = 16 // the short description of a further installed version shows it too
    };

    struct Row
    {
        Field field;
        const char* label; // not translated; null for the name, the heading of a description
        Source source;
        const char*
            attribute; // its name in the script, or the name of the header's tag; null for other sources
        QString Package::Entry::*member; // only for the source Record, otherwise null
        int uses;
    };

    static const Row& row(Field field);
    // The label in front of the text, in the user's language.
    static QString label(Field field);

    // Calls the function for each field that has all of these uses, in order, until the function returns
    // true. Returns whether it did.
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
