// SPDX-License-Identifier: GPL-2.0-or-later

// Describes each column of the package table by one Row: its heading, the contents of its cells and its sort
// order. The model, the proxy and the view read these rows. Other code of the table mentions only four
// columns by name: Action, Kind, Name and Repository. Only these columns do more than show a value.
//
// Columns contains only constants, so any thread may use it. The table may have 60,000 rows. Therefore no
// function creates a string that the record already contains. A loop over all rows should use textIn(): if
// two threads copy the same strings, they disturb each other, because each copy changes the string's counter.

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
        // Returns the text for a record. For a column of pictures, only screen readers use this text. The
        // result is a string of the record, or `made`, which then contains the text.
        const QString& (*textIn)(const Package::Entry& record, QString& made);
        // For a column of pictures, an array of `mostPictures` icon names, indexed by the sort key. A null
        // name means no icon. For a column of texts, the pointer is null.
        const char* const* pictures;
        bool coloured; // true if the text has the colour of the record's state
        // Returns the sort key of a record. If this pointer is null, the rows are sorted by the text.
        int (*sortKey)(const Package::Entry& record);
        // Returns the value of Qt::UserRole for a record. If this pointer is null, the value is the record
        // itself.
        QVariant (*value)(const Package::Entry& record);
        // Returns the tool tip of the record's cell, which may be empty. If this pointer is null, no cell of
        // the column has a tool tip.
        QString (*cellToolTip)(const Package::Entry& record, const YumIO& backEnd);

        bool showsPictures() const { return pictures != nullptr; }
        // Returns a copy of the text.
        QString text(const Package::Entry& record) const
        {
            QString made;
            return textIn(record, made);
        }
    };

    // Returns the Row of a column, which must exist.
    static const Row& row(int column) { return all[column]; }
    // Returns the text of a record in the table. In a column of pictures, the text is empty.
    static QString text(const Package::Entry& record, int column)
    {
        return all[column].showsPictures() ? QString() : all[column].text(record);
    }
    // Returns the heading of a column in the user's language.
    static QString title(int column);
    // Returns the tool tip of the column's heading in the user's language.
    static QString toolTip(int column);

private:
    static const Row* const all;
};

} // namespace PackageTable

#endif
