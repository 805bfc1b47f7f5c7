// SPDX-License-Identifier: GPL-2.0-or-later

// The table of the history: one row for each transaction, the newest first.
//
// Graphical thread; owned by its Qt parent. It owns the records; a cell never asks the script.

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
    // The row must exist.
    const HistoryRecord& record(int row) const { return records.at(row); }
    // The row of a transaction; -1 without it.
    int rowOf(qint64 number) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // The background of the rows, for which the colours of results must be readable.
    void setBackground(const QColor& color);

private:
    static QString text(const HistoryRecord& record, int column);
    static QString word(HistoryRecord::Result result);
    QVariant sortKey(const HistoryRecord& record, int column) const;

    HistoryRecords records;
    QColor background;
};

#endif
