// SPDX-License-Identifier: GPL-2.0-or-later

// A table model whose values the test supplies, for the tests of models and views.

#ifndef TESTS_WIDGETS_FIXEDTABLE_H
#define TESTS_WIDGETS_FIXEDTABLE_H

#include <QSet>
#include <QVariant>
#include <QVector>

#include "widgets/HAbstractTableModel.h"

class FixedTable : public HAbstractTableModel
{
public:
    using Row = QVector<QVariant>;

    explicit FixedTable(const QVector<Row>& values = {}, int columns = 2)
        : HAbstractTableModel(nullptr), rows(values), columnNumber(columns)
    {
    }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override
    {
        return parent.isValid() ? 0 : rows.size();
    }
    int columnCount(const QModelIndex& parent = QModelIndex()) const override
    {
        return parent.isValid() ? 0 : columnNumber;
    }
    QVariant data(const QModelIndex& index, int role) const override
    {
        return role == Qt::DisplayRole ? rows.at(index.row()).value(index.column()) : QVariant();
    }
    Qt::ItemFlags flags(const QModelIndex& index) const override
    {
        const Qt::ItemFlags usual = HAbstractTableModel::flags(index);
        return unselectable.contains(index.row()) ? usual & ~Qt::ItemIsSelectable : usual;
    }

    void append(const Row& row)
    {
        beginInsertRows(QModelIndex(), rows.size(), rows.size());
        rows.append(row);
        endInsertRows();
    }

    // A test that changes these values directly does not notify the views.
    QVector<Row> rows;
    QSet<int> unselectable;

private:
    int columnNumber;
};

#endif
