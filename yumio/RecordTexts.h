// SPDX-License-Identifier: GPL-2.0-or-later

// Formats the sizes and the build times of new records on its own thread. Meanwhile, a worker reads further
// packages from the script.
//
// The back end owns the only object. A worker adds records, and calls finish() before the end of the
// collection. Until then, no other code may read or write the two texts, or delete an added record.

#ifndef YUMIO_RECORDTEXTS_H
#define YUMIO_RECORDTEXTS_H

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include <QSet>
#include <QString>

namespace Package {
class Entry;
}

class RecordTexts
{
public:
    RecordTexts() = default;
    ~RecordTexts();
    RecordTexts(const RecordTexts&) = delete;
    RecordTexts& operator=(const RecordTexts&) = delete;

    // Sets sizeText and buildTimeText of this record, at the latest when finish() returns. The record's size
    // and buildTime must already be set.
    void add(Package::Entry* entry);
    // Waits until all added records have their texts.
    void finish();

    // Calls finish() when it goes out of scope.
    class Scope
    {
    public:
        explicit Scope(RecordTexts& of) : texts(of) {}
        ~Scope() { texts.finish(); }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        RecordTexts& texts;
    };

private:
    using Entries = std::vector<Package::Entry*>;

    void pass();
    void run();
    void format(const Entries& entries);

    Entries added;       // for the worker only
    QSet<QString> sizes; // for the thread only; equal texts of many records share their memory
    Entries passed;      // the thread takes records from here
    bool ending = false;
    std::mutex mutex; // protects `passed` and `ending`
    std::condition_variable changed;
    std::thread thread; // runs from the first pass() until finish()
};

#endif
