// The fields of a package, a suite or a group, each once and in the order of a search and of a description:
// what the user reads before it, where its text comes from and who uses it. YumIO::text() reads one of a
// record.
//
// Any thread; constants only.

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
        Time,         // an attribute in seconds since the epoch; 0 stands for none
        Dependencies, // an attribute that is a list
        Header,       // a list in the header of an installed package
        FileList,     // extra data, which may have to be loaded first
        ChangeLog,    // the same
        Members       // a list of the script's group
    };

    enum Use {
        OfPackages = 1, // and of suites
        OfGroups = 2,
        // A search looks at it. It looks at the file list and the change log too, apart: they are read in
        // other ways than the packages themselves.
        Searched = 4,
        Described = 8,  // the description of a record shows it
        OfVersions = 16 // the short description of a further installed version shows it too
    };

    struct Row
    {
        Field field;
        const char* label; // not translated; null for the name, which heads a description
        Source source;
        const char*
            attribute; // its name in the script, or that of the header's tag; null for the other sources
        QString Package::Entry::*member; // null, except for a member of the record
        int uses;
    };

    static const Row& row(Field field);
    // What stands before its text, in the user's language.
    static QString label(Field field);

    // Gives each field that has all of these uses to a function, in their order, until that returns true;
    // whether it did.
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
