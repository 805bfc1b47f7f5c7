// The record of one row of the package table: an ordinary package, a group or a suite of packages.
//
// The back end (YumIO) makes and deletes records on a worker thread, with the interpreter lock held, and owns
// them. The graphical thread reads them, and writes the chosen action, while no worker runs.

#ifndef YUMIO_PACKAGE_H
#define YUMIO_PACKAGE_H

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QStringList>

#include "python/PyObject.h"

namespace Package {

// The table sorts by these numbers.
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
    // Deletes the chain of further installed versions too. It cannot drop the reference to the script's
    // object, since it may not hold the interpreter lock: whoever deletes a record clears pyObject first, and
    // the first record of the process for which that was forgotten is reported on standard error.
    ~Entry();
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

    // Whether the user may choose the action.
    bool permits(Action chosen) const;
    // Whether the package manager's configuration excludes every installed version; false when there is none.
    bool isExcluded() const;

    Action action; // what the user chose
    State state;
    Kind kind;
    QString name;
    QString verRel; // version and release, with a non-zero epoch before them; empty for groups
    QString repo;   // identifier of the repository
    QString arch;
    QString biArch; // the architecture folded to the class of those that stand in for each other
    quint64 size;   // bytes
    QString sizeText;
    QString summary;
    quint64 buildTime; // seconds since the epoch
    QString buildTimeText;
    PyObject* pyObject; // the script's package or group object: one strong reference
    bool duplicate;     // a record of the same name and another bi-arch class is better
    bool excluded;      // an installed version that the package manager's configuration excludes
    Entry* next;        // owned; installed versions of the same name and bi-arch class that came later
    Action txAction;    // what the transaction being applied does to this record
    bool local;         // while applying: the package file is in the local cache already, and valid
    // What a search looks at, in UTF-8: every text but the next two, each ended by a zero (null: nothing has
    // been read), the file list and the change log.
    QByteArray searchTexts;
    QByteArray searchFiles;
    QByteArray searchChangeLog;
};

// Under which the back end finds a record: groups and packages may have the same name.
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

// The actions of records, to be set again after a new collection.
using Marks = QHash<EntryKey, Action>;

// Packages of other names, with version and architecture, that replace a record or that it replaces; empty
// for nearly all records.
struct Replacement
{
    QStringList by;
    QStringList of;
};

// Owns its records.
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
