// SPDX-License-Identifier: GPL-2.0-or-later

// Stores the package records. Finds a record by its key or by the name of the package, chains the installed
// versions of a package, and deletes all records.
//
// The back end has one Records object. A worker changes this object while the worker holds the interpreter
// lock. The graphical thread reads the object only while no worker runs. Each version in a record's chain has
// one reference to an object of the script. This class neither adds nor releases these references: clear()
// passes them to the function `drop`.

#ifndef YUMIO_RECORDS_H
#define YUMIO_RECORDS_H

#include <functional>

#include <QHash>
#include <QSet>
#include <QString>
#include <QVector>

#include "yumio/Package.h"

class Records
{
public:
    // --- For the table: the records by position. Before publish() the list is empty.

    int count() const { return entries.count(); }
    Package::Entry* at(int row) const { return entries.at(row); }
    const QList<Package::Entry*>& all() const { return entries; }

    // --- Collection

    // Reserves memory for `further` additional records, so that the index does not grow step by step.
    void reserve(int further);
    // The index stores a pointer to a record for each key. Returns a reference to the pointer for `key`. If
    // the key is new, this pointer is null. In this case, store a new record with this key in the pointer,
    // and then call added().
    Package::Entry*& place(const Package::EntryKey& key);
    void added(Package::Entry* entry);
    // Returns the records that were passed to added(), in the order of these calls.
    const QVector<Package::Entry*>& collected() const { return collectedEntries; }
    // Adds `key` as another key for the existing record `entry`. If `key` already has a record, nothing
    // changes.
    void addKey(const Package::EntryKey& key, Package::Entry* entry);
    // Returns a reference to the null pointer that ends the record's chain. The caller can store another
    // installed version there.
    static Package::Entry*& endOfChain(Package::Entry* first);
    // Call this function once for every record, after place() and before the next place(). After the last
    // call, each record is flagged as a duplicate, except the best record of each name. isBetter(a, b)
    // returns whether a is preferred to b.
    template <typename IsBetter> void rank(Package::Entry* entry, IsBetter isBetter)
    {
        Package::Entry*& best = placed->best;
        if (best == nullptr) {
            best = entry;
        } else if (isBetter(*best, *entry)) {
            entry->duplicate = true;
        } else {
            best->duplicate = true;
            best = entry;
        }
    }
    // Returns an equal text whose memory all records share. Use this function for texts that thousands of
    // records have.
    QString shared(const QString& text) { return *sharedTexts.insert(text); }
    // Registers that a package with another name replaces an installed package. The texts describe the two
    // packages. Each of the two records may be null.
    void addReplacement(const Package::Entry* replaced, const QString& before, const Package::Entry* other,
                        const QString& after);
    // Makes the records visible to the table. This call ends the collection.
    void publish();

    // --- Finding. The result is null if no record fits.

    Package::Entry* find(const Package::EntryKey& key) const;
    // Finds a package by name. Prefers a package of the class `preferredBiArch`. If this class has no package
    // with this name, returns a package of any class.
    Package::Entry* findPackage(const QString& name, const QString& preferredBiArch) const;
    // Returns the first installed version in a record's chain.
    static Package::Entry* installedEntry(Package::Entry* entry);
    static quint64 installedSize(Package::Entry* entry); // 0 if nothing is installed
    Package::Replacement replacement(const Package::Entry& entry) const { return replacements.value(&entry); }
    bool isLeftToUser(const Package::Entry& entry) const;

    // --- Marks

    Package::Marks marks() const;
    // For each key in `marks`, sets the action of the record with this key. Skips records that do not permit
    // the action.
    void restoreMarks(const Package::Marks& marks) const;

    // --- Deletion

    // Deletes all records. If `drop` is set, clear() passes each reference to an object of the script to
    // `drop`, which must release the reference. Without `drop`, the references are never released. If there
    // are many records, another thread deletes them meanwhile. When clear() returns, this thread has ended.
    void clear(const std::function<void(PyObject*)>& drop = {});

private:
    void deleteAll();

    // The records with the same name: packages of different bi-arch classes, or a package and a group.
    struct Named
    {
        Package::Entry* first = nullptr; // begins the list of these records; see Package::Entry::sameName
        Package::Entry* best = nullptr;  // the best record so far; see rank()
    };

    // The place of a key in the list of the records with this name.
    static Package::Entry** placeIn(Package::Entry** first, const Package::EntryKey& key);

    Package::EntryList entries;
    QHash<QString, Named> byName;
    Named* placed = nullptr; // the item for the last call of place()
    // The second keys of records, and the keys of the records for which the list of a name has no place.
    QHash<Package::EntryKey, Package::Entry*> otherKeys;
    // All records, in the order of their collection. Their order in memory is the same, so a loop over them
    // is fast.
    QVector<Package::Entry*> collectedEntries;
    QSet<QString> biArchs;
    QSet<QString> sharedTexts;
    QHash<const Package::Entry*, Package::Replacement> replacements; // only a few records have a replacement
};

#endif
