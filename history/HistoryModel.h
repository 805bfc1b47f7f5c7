// SPDX-License-Identifier: GPL-2.0-or-later

// The table of recorded transactions. Each row is one transaction; the newest transaction comes first.
//
// The object lives on the graphical thread; its Qt parent owns it. The object owns the records, so a cell
// never calls the script.

#ifndef HISTORY_HISTORYMODEL_H
#define HISTORY_HISTORYMODEL_H

#include <QColor>

#include "widgets/HAbstractTableModel.h"
#include "yumio/HistoryRecord.h"

class HistoryModel : public HAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Number, Time, User, CommandLine, Changes, Result, Output, ColumnCount };

    explicit HistoryModel(QObject* parent = nullptr);

    void setRecords(const HistoryRecords& records);
    // Returns the transaction of a row, which must exist.
    const HistoryRecord& record(int row) const { return records.at(row); }
    // Returns the row of the transaction with this number, or -1 if no row has it.
    int rowOf(qint64 number) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // Sets the background colour of the rows. The model then chooses text colours for the results. These
    // colours are readable on this background.
    void setBackground(const QColor& color);

private:
    static QString text(const HistoryRecord& record, int column);
    static QString word(HistoryRecord::Result result);
    QVariant sortKey(const HistoryRecord& record, int column) const;

    HistoryRecords records;
    QColor background;
};

#endif
