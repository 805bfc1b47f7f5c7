// SPDX-License-Identifier: GPL-2.0-or-later

// Describes each column of the package table by one Row: the heading, the contents of a cell and the sort
// order. Model, proxy and view use these rows. These three classes name only the Action, Kind, Name and
// Repository columns, which have further functions.
//
// Only the graphical thread uses it. It contains only constants. The code for a cell runs 60,000 times, so no
// function creates a string that the record already contains.

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
        const char* title;   // the text of the heading, not translated
        const char* toolTip; // the tool tip of the heading, not translated
        // Returns the text for a record. In a column of pictures, screen readers read this word.
        QString (*text)(const Package::Entry& record);
        // In a column of pictures, an array of `mostPictures` icon names, indexed by the sort key. A null
        // name means no icon. In other columns, the pointer is null.
        const char* const* pictures;
        bool coloured; // the text has the colour of the record's state
        // Returns the sort key of a record. If the pointer is null, the text is the sort key.
        int (*sortKey)(const Package::Entry& record);
        // Returns the value of Qt::UserRole. If the pointer is null, the record is the value.
        QVariant (*value)(const Package::Entry& record);
        // Returns the tool tip of the cell, which may be empty. If the pointer is null, no cell has a tool
        // tip.
        QString (*cellToolTip)(const Package::Entry& record, const YumIO& backEnd);

        bool showsPictures() const { return pictures != nullptr; }
    };

    // The column must exist.
    static const Row& row(int column) { return all[column]; }
    // Returns the text of a record in the table. In a column of pictures, the text is empty.
    static QString text(const Package::Entry& record, int column)
    {
        return all[column].showsPictures() ? QString() : all[column].text(record);
    }
    // Both functions return a text in the user's language.
    static QString title(int column);
    static QString toolTip(int column);

private:
    static const Row* const all;
};

} // namespace PackageTable

#endif
