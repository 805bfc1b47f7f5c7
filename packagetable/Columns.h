// SPDX-License-Identifier: GPL-2.0-or-later

// The columns of the package table, one row of data for each: the heading, the contents of a cell and the
// sort order. Model, proxy and view use this table; none of them has code for a single column.
//
// Graphical thread; constants only. The code for a cell runs 60,000 times, so no row creates a text that it
// can return from the record.

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
        // The text for a record. In a column of pictures, screen readers read this word.
        QString (*text)(const Package::Entry& record);
        // In a column of pictures: `mostPictures` icon names, by sort key; null means no icon. Null in other
        // columns.
        const char* const* pictures;
        bool coloured; // the text has the colour of the record's state
        // The sort key of a record. If null, the text is the sort key.
        int (*sortKey)(const Package::Entry& record);
        // The value of Qt::UserRole. If null, the record is the value.
        QVariant (*value)(const Package::Entry& record);
        // The tool tip of the cell, possibly empty. If null, no cell has a tool tip.
        QString (*cellToolTip)(const Package::Entry& record, const YumIO& backEnd);

        bool showsPictures() const { return pictures != nullptr; }
    };

    // The column must exist.
    static const Row& row(int column) { return all[column]; }
    // The text of a record in the table; empty in a column of pictures.
    static QString text(const Package::Entry& record, int column)
    {
        return all[column].showsPictures() ? QString() : all[column].text(record);
    }
    // In the language of the user.
    static QString title(int column);
    static QString toolTip(int column);

private:
    static const Row* const all;
};

} // namespace PackageTable

#endif
