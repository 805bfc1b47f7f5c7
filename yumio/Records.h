// The package records: finds them by key and by name, chains the installed versions, and deletes them.
//
// The back end has one object. A worker changes it, with the interpreter lock held; the graphical thread
// reads it only while no worker runs. Each version of a record has one reference to an object of the script,
// which Records itself neither takes nor drops: clear() gives it to its caller.

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
    // --- For the table: the records by position, none before publish().

    int count() const { return entries.count(); }
    Package::Entry* at(int row) const { return entries.at(row); }
    const QList<Package::Entry*>& all() const { return entries; }

    // --- Collection

    // Expects so many more records. It saves the indexes from growing many times.
    void reserve(int further);
    // The place of the record with this key; null if the key is new. A caller that puts a record there calls
    // added() next.
    Package::Entry*& place(const Package::EntryKey& key) { return entryIndex[key]; }
    void added(Package::Entry* entry);
    // Finds an existing record under one more key. A record that the key has already stays.
    void addKey(const Package::EntryKey& key, Package::Entry* entry);
    // The place of one more installed version of a record.
    static Package::Entry*& endOfChain(Package::Entry* first);
    // Marks all records of one name but the best as duplicates. isBetter(a, b) compares two records.
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
    // The same text in the memory that all records share; for texts that thousands of records have.
    QString shared(const QString& text) { return *sharedTexts.insert(text); }
    // A package of another name takes the place of an installed one. The texts describe them; the record of
    // either may be null.
    void addReplacement(const Package::Entry* replaced, const QString& before, const Package::Entry* other,
                        const QString& after);
    // Makes the records visible to the table.
    void publish();

    // --- Finding. Null if no record fits.

    int keyCount() const { return entryIndex.count(); }

    Package::Entry* find(const Package::EntryKey& key) const { return entryIndex.value(key); }
    // A package of any bi-arch class, if possible of the given one.
    Package::Entry* findPackage(const QString& name, const QString& preferredBiArch) const;
    // The installed version that a record has, at the begin of its chain.
    static Package::Entry* installedEntry(Package::Entry* entry);
    static quint64 installedSize(Package::Entry* entry); // 0 if nothing is installed
    Package::Replacement replacement(const Package::Entry& entry) const { return replacements.value(&entry); }
    bool isLeftToUser(const Package::Entry& entry) const;

    // --- Marks

    Package::Marks marks() const;
    // Sets each action, if the record that has the key now permits it.
    void restoreMarks(const Package::Marks& marks) const;

    // --- Deletion

    // Deletes all records. drop, if any, takes over each reference to an object of the script; without it
    // they are abandoned.
    void clear(const std::function<void(PyObject*)>& drop = {});

private:
    Package::EntryList entries;
    QHash<Package::EntryKey, Package::Entry*> entryIndex;
    // The records of the index in their order of collection, which is their order in memory too.
    QVector<Package::Entry*> collectedEntries;
    QHash<QString, Package::Entry*> bestByName;
    QSet<QString> biArchs;
    QSet<QString> sharedTexts;
    QHash<const Package::Entry*, Package::Replacement> replacements; // few records have one
};

#endif
