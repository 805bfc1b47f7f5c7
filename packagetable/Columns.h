// The columns of the package table, one row each: the heading, and all that the table shows of a record there
// and sorts it by. Model, proxy and view ask here; none of them knows one column from another.
//
// Graphical thread; constants only. What is done for a cell is done 60,000 times: no row makes a text that it
// could return from the record.

#ifndef PACKAGETABLE_COLUMNS_H
#define PACKAGETABLE_COLUMNS_H

#include <QCoreApplication>
#include <QString>
#include <QVariant>

#include "packagetable/PackageTable.h"

class YumIO;
namespace Package {
class Entry;
}

namespace PackageTable {

class Columns
{
    Q_DECLARE_TR_FUNCTIONS(PackageTable::Columns)

public:
    static constexpr int mostPictures = 4;

    struct Row
    {
        Column column;
        const char* title;   // of the heading, not translated
        const char* toolTip; // the same
        // What it shows of a record. Of a picture, the word that is read to anyone who cannot see it.
        QString (*text)(const Package::Entry& record);
        // Where it shows pictures, the names of as many icons as there are at most, by sort key; null names
        // for none.
        const char* const* pictures;
        bool coloured; // in the colour of the record's state
        // What the table is sorted by; null: by the text.
        int (*sortKey)(const Package::Entry& record);
        // What stands in Qt::UserRole; null: the record.
        QVariant (*value)(const Package::Entry& record);
        // The cell's tool tip, empty for none; null: no cell has one.
        QString (*cellToolTip)(const Package::Entry& record, const YumIO& backEnd);

        bool showsPictures() const { return pictures != nullptr; }
    };

    // For a column that exists.
    static const Row& row(int column) { return all[column]; }
    // The text that the table shows of a record: an empty one in a column of pictures.
    static QString text(const Package::Entry& record, int column)
    {
        return all[column].showsPictures() ? QString() : all[column].text(record);
    }
    // In the user's language.
    static QString title(int column);
    static QString toolTip(int column);

private:
    static const Row* const all;
};

} // namespace PackageTable

#endif
