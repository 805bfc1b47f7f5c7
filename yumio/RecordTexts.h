// SPDX-License-Identifier: GPL-2.0-or-later

// Formats the sizes and the build times of new records on its own thread. Meanwhile, a worker reads further
// packages from the script. The table can read complete records on the same thread; see Reader.
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

    // Reads records of the table when their texts are complete, before the end of the collection.
    class Reader
    {
    public:
        virtual ~Reader() = default;
        // The thread of RecordTexts calls this function before the first call of rowsAdded(), for example for
        // the reservation of memory. `expected` is the probable number of rows.
        virtual void begun(int expected) = 0;
        // The same thread calls this function with the next rows of the table. The first call begins with the
        // first row. The texts of these records do not change until the end of the collection.
        virtual void rowsAdded(const std::vector<Package::Entry*>& rows) = 0;
        // The same thread calls this function once, after the last call of rowsAdded().
        virtual void ended() = 0;
    };

    // Sets sizeText and buildTimeText of this record, at the latest when finish() returns. The record's size
    // and buildTime must already be set.
    void add(Package::Entry* entry);
    // From now on until endRows() or finish(), each added record is a row of the table. `earlier` are the
    // rows before these rows, and all of them have been added. About `expected` rows will follow. From now on
    // until finish(), no text of a row changes. The reader, which may be null, must exist until finish() has
    // returned. If the system cannot start a thread, the reader gets no rows.
    void beginRows(Reader* reader, std::vector<Package::Entry*> earlier, int expected);
    // The reader gets the last rows, and its ended() is called as soon as possible.
    void endRows();
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
    struct Batch
    {
        Entries entries;
        Reader* reader = nullptr;
        int expected = 0;       // the probable number of rows, if `reader` is set
        bool formatted = false; // whether an earlier batch contained these records
        bool last = false;      // whether the reader gets no further rows
    };

    void pass();
    void run();
    void format(const Entries& entries);

    Batch added;               // for the worker only
    QSet<QString> sizes;       // for the thread only; equal texts of many records share their memory
    std::vector<Batch> passed; // the thread takes records from here
    bool ending = false;
    std::mutex mutex; // protects `passed` and `ending`
    std::condition_variable changed;
    std::thread thread; // runs from the first pass() until finish()
};

#endif
