// SPDX-License-Identifier: GPL-2.0-or-later

// Computes the values that the table needs before it can show the records: the order of the rows, the joined
// texts for the filter, and the rows with the widest cells. For 60,000 records, this takes a tenth of a
// second, so other threads do this work while the window serves events.
//
// The graphical thread creates and deletes a Preparation. If it is the reader of a collection, it does most
// of the work during the collection, when the records are still in the processor's cache. If the collection
// fails, the Preparation must be deleted without run(). After the collection, a worker calls run(), which
// does the rest. The static functions may run on any thread. No code may change the records during these
// calls.

#ifndef PACKAGETABLE_PREPARATION_H
#define PACKAGETABLE_PREPARATION_H

#include <memory>
#include <vector>

#include <QByteArray>
#include <QFont>

#include "packagetable/PackageTable.h"
#include "packagetable/SortedTexts.h"
#include "yumio/RecordTexts.h"

class YumIO;

namespace PackageTable {

// The order of all rows, and their texts.
struct PreparedRows
{
    int count = 0; // the number of all records
    int sortedBy = -1;
    Qt::SortOrder sortedIn = Qt::AscendingOrder;
    std::vector<int> nameRanks;
    std::vector<qint64> keys; // the sort keys of the sorted column
    std::vector<int> order;   // the sorted source rows
    QByteArray texts;         // see joinTexts()
    std::vector<int> textFrom;
};

class WidestCells;

class Preparation : public RecordTexts::Reader
{
public:
    // The cells of the table use `font`. withWidths: whether to fill `widest`. Only the fitting of the
    // columns needs `widest`.
    Preparation(const YumIO& backEnd, const QFont& font, bool withWidths = true);
    ~Preparation() override;

    void begun(int expected) override;
    void rowsAdded(const std::vector<Package::Entry*>& added) override;
    void ended() override;

    // A `sortedBy` of -1 means that the rows keep the back end's order.
    void run(int sortedBy, Qt::SortOrder sortedIn);

    PreparedRows rows;
    // For each column: some source rows, one of which has the widest text or picture.
    std::vector<int> widest[ColumnCount];

    // Returns a rank for each source row: equal texts of the column have the same rank, and a greater text
    // has a greater rank.
    static std::vector<int> ranksOf(const YumIO& backEnd, int column);
    // Returns the sort key of each source row for a column. If two cells are equal, the name of the package
    // decides.
    static std::vector<qint64> keysOf(const YumIO& backEnd, int column, const std::vector<int>& nameRanks);
    // Returns the source rows in the order of these keys. If `keys` is empty, returns the back end's order.
    static std::vector<int> orderOf(const std::vector<qint64>& keys, size_t count, Qt::SortOrder sortOrder);
    // Joins the visible texts of each row, separated by blanks. Skips empty texts. A zero byte ends each row;
    // `from` gets the position of each row in `texts`.
    static void joinTexts(const YumIO& backEnd, QByteArray& texts, std::vector<int>& from);

private:
    void addRow(int row, const Package::Entry& entry);
    void prepareRows();
    void findWidest();

    const YumIO& yumIO;
    QString fontName; // a description of the font: a QFont must not be shared by two threads
    bool fitting;
    int read = 0;      // rowsAdded() has read the rows before this row
    SortedTexts names; // of the read rows; prepareRows() adds the other rows
    std::unique_ptr<WidestCells> widestOfRead;
};

} // namespace PackageTable

#endif
