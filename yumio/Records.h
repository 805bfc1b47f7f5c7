// SPDX-License-Identifier: GPL-2.0-or-later

// The package records: finds them by key and by name, chains the installed versions, and deletes them.
//
// The back end has one object. A worker changes it and holds the interpreter lock; the graphical thread reads
// it only while no worker runs. Each version of a record has one reference to an object of the script.
// Records itself never adds or releases this reference: clear() passes it to its caller.

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

    // Reserves memory for this many more records, so that the indexes do not grow step by step.
    void reserve(int further);
    // A reference to the index entry of this key; null if the key is new. A caller that stores a new record
    // there calls added() next.
    Package::Entry*& place(const Package::EntryKey& key) { return entryIndex[key]; }
    void added(Package::Entry* entry);
    // Adds one more key for an existing record. If the key already has a record, that record stays.
    void addKey(const Package::EntryKey& key, Package::Entry* entry);
    // A reference to the end of the record's chain, for one more installed version.
    static Package::Entry*& endOfChain(Package::Entry* first);
    // Flags all records of one name but the best as duplicates. isBetter(a, b): a is preferred.
    template <typename IsBetter> void rank(Package::Entry* entry, IsBetter isBetter)
    {
        Package::Entry*& best = bestByName[entry->name];
        if (best == nullptr) {
            best = entry;
        } else if (isBetter(*best, *entry)) {
            entry->duplicate = true;
        } else {
            best->duplicate = true;
            best = entry;
        }
    }
    // The same text, from memory that all records share. For texts that thousands of records have.
    QString shared(const QString& text) { return *sharedTexts.insert(text); }
    // Registers that a package of another name replaces an installed one. The texts describe the two
    // packages; the record of either may be null.
    void addReplacement(const Package::Entry* replaced, const QString& before, const Package::Entry* other,
                        const QString& after);
    // Makes the records visible to the table.
    void publish();

    // --- Finding. The result is null if no record fits.

    int keyCount() const { return entryIndex.count(); }

    Package::Entry* find(const Package::EntryKey& key) const { return entryIndex.value(key); }
    // A package of any bi-arch class, preferably of the given one.
    Package::Entry* findPackage(const QString& name, const QString& preferredBiArch) const;
    // The installed version of a record, at the start of its chain.
    static Package::Entry* installedEntry(Package::Entry* entry);
    static quint64 installedSize(Package::Entry* entry); // 0 if nothing is installed
    Package::Replacement replacement(const Package::Entry& entry) const { return replacements.value(&entry); }
    bool isLeftToUser(const Package::Entry& entry) const;

    // --- Marks

    Package::Marks marks() const;
    // Sets each action for the record that now has its key, if that record permits the action.
    void restoreMarks(const Package::Marks& marks) const;

    // --- Deletion

    // Deletes all records. drop, if set, receives each reference to an object of the script; without drop the
    // references are abandoned.
    void clear(const std::function<void(PyObject*)>& drop = {});

private:
    Package::EntryList entries;
    QHash<Package::EntryKey, Package::Entry*> entryIndex;
    // The records of the index in the order of collection, which is also their order in memory.
    QVector<Package::Entry*> collectedEntries;
    QHash<QString, Package::Entry*> bestByName;
    QSet<QString> biArchs;
    QSet<QString> sharedTexts;
    QHash<const Package::Entry*, Package::Replacement> replacements; // few records have one
};

#endif
