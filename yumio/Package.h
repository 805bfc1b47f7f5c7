// SPDX-License-Identifier: GPL-2.0-or-later

// The record of one package, group or suite. Each listed record is one row of the package table.
//
// The back end (YumIO) owns the records. A worker thread creates and deletes the records while it holds the
// interpreter lock. While no worker runs, the graphical thread reads the records and writes the chosen
// actions.

#ifndef YUMIO_PACKAGE_H
#define YUMIO_PACKAGE_H

#include <QHash>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QStringList>

#include "python/PyObject.h"
#include "yumio/PackedTexts.h"

namespace Package {

// The State column is sorted by these numbers.
enum State : qint32 {
    Updatable = 0, // installed, a newer version is available
    Available = 1, // not installed, can be installed
    Installed = 2  // installed, no update
};

enum Kind : qint32 { Suite = 0, Group = 1, Ordinary = 2 };

enum Action : qint32 { Update = 0, Install = 1, Remove = 2, None = 3 };

class Entry
{
public:
    Entry();
    // Also deletes the chain of other installed versions. The caller must clear pyObject first: the
    // destructor cannot release the script's object, because the calling thread may not hold the interpreter
    // lock. If pyObject is still set, the destructor reports this on standard error, once per process.
    ~Entry();
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

    // Returns whether the user may choose the action.
    bool permits(Action chosen) const;
    // Returns whether the package manager's configuration excludes every installed version. Returns false if
    // no version is installed.
    bool isExcluded() const;

    Action action; // the action that the user has chosen
    State state;
    Kind kind;
    QString name;
    QString verRel; // "epoch:version-release", without an epoch of 0; empty for groups
    QString repo;   // the repository's identifier
    QString arch;
    QString biArch; // the bi-arch class: a common name of architectures that replace each other
    quint64 size;   // in bytes
    QString sizeText;
    QString summary;
    quint64 buildTime; // in seconds since the epoch
    QString buildTimeText;
    PyObject* pyObject; // the script's package or group object, a strong reference
    bool duplicate;     // another record with this name suits the system better
    bool excluded;      // the package is installed, and the package manager's configuration excludes it
    // The result of the last search that compared the record with an expression. The table's filter numbers
    // its searches. If the record matches, this is the number of the search. If the record does not match,
    // this is the same number with a minus sign. If no search has compared the record, this is 0.
    qint32 match;
    Entry* next;     // owned; the next installed version with the same name and bi-arch class
    Entry* sameName; // the next record with this name; only the index of the records uses this list
    Action txAction; // the effect of the current transaction on this record
    bool local;      // during a transaction: the cache already has a valid package file
    // The texts that a search reads, in UTF-8. searchTexts contains all these texts except the file list and
    // the change log. A zero byte follows each text. searchTexts is null until the texts have been read.
    PackedText searchTexts;
    PackedText searchFiles;
    PackedText searchChangeLog;
};

// The key by which the back end finds a record. The key includes the kind, because a group and a package may
// have the same name.
class EntryKey
{
public:
    EntryKey(bool ofGroup, QString ofName, QString ofArch);
    explicit EntryKey(const Entry& entry);

    bool operator==(const EntryKey& other) const
    {
        return group == other.group && name == other.name && arch == other.arch;
    }

    bool group;
    QString name;
    QString arch; // the bi-arch class; empty for a group
};

uint qHash(const EntryKey& key);
uint qHash(const EntryKey& key, uint seed);

// The actions that the user has chosen. The program restores them after a new collection.
using Marks = QHash<EntryKey, Action>;

// The replacements between the package of a record and packages with other names. The lists contain package
// names with version and architecture. For nearly all records, both lists are empty.
struct Replacement
{
    QStringList by; // the packages that replace the package of the record
    QStringList of; // the packages that the package of the record replaces
};

// A list that owns its records.
class EntryList : public QList<Entry*>
{
public:
    EntryList() = default;
    ~EntryList();
    EntryList(const EntryList&) = delete;
    EntryList& operator=(const EntryList&) = delete;
};

} // namespace Package

Q_DECLARE_METATYPE(Package::Entry*)

#endif
