// SPDX-License-Identifier: GPL-2.0-or-later

// The record of one row of the package table: an ordinary package, a group or a suite of packages.
//
// The back end (YumIO) owns the records. A worker thread makes and deletes them and holds the interpreter
// lock. While no worker runs, the graphical thread reads them and writes the chosen action.

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
    // Deletes the chain of further installed versions too. The destructor cannot release the script's object,
    // because its thread may not hold the interpreter lock. The caller clears pyObject before it deletes a
    // record. The destructor reports the first forgotten object of the process on standard error.
    ~Entry();
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

    // Whether the user may choose the action.
    bool permits(Action chosen) const;
    // Whether the package manager's configuration excludes every installed version; false without one.
    bool isExcluded() const;

    Action action; // the user's choice
    State state;
    Kind kind;
    QString name;
    QString verRel; // version and release, after the epoch unless that is zero; empty for groups
    QString repo;   // identifier of the repository
    QString arch;
    QString biArch; // the bi-arch class: one name for all architectures that replace each other
    quint64 size;   // bytes
    QString sizeText;
    QString summary;
    quint64 buildTime; // seconds since the epoch
    QString buildTimeText;
    PyObject* pyObject; // the script's package or group object: one strong reference
    bool duplicate;     // a record of the same name and another bi-arch class is preferred
    bool excluded;      // an installed version, excluded by the package manager's configuration
    Entry* next;        // owned; further installed versions of the same name and bi-arch class
    Action txAction;    // the effect of the current transaction on this record
    bool local;         // while applying: the local cache already has a valid package file
    // The searched texts in UTF-8: all but the file list and the change log, each followed by a zero byte,
    // then these two. A null searchTexts means that nothing has been read.
    QByteArray searchTexts;
    QByteArray searchFiles;
    QByteArray searchChangeLog;
};

// The key by which the back end finds a record. A group and a package may have the same name.
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

// The actions of records, for restoring them after a new collection.
using Marks = QHash<EntryKey, Action>;

// Packages of other names, with version and architecture, that replace a record or that the record replaces.
// Both lists are empty for nearly all records.
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
