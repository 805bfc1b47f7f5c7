// SPDX-License-Identifier: GPL-2.0-or-later

// The base class for tests of SortFilterProxyModel. Before each test function, the class makes the usual
// records, with a model and a proxy that lists all of them.

#ifndef TESTS_PACKAGETABLE_FILTEREDTABLE_H
#define TESTS_PACKAGETABLE_FILTEREDTABLE_H

#include <QtTest>
#include <QtWidgets>

#include <memory>

#include "packagetable/Columns.h"
#include "packagetable/SortFilterProxyModel.h"
#include "tests/packagetable/Table.h"

class FilteredTable : public QObject
{
    Q_OBJECT

protected:
    class Proxy : public PackageTable::SortFilterProxyModel
    {
    public:
        using SortFilterProxyModel::filterAcceptsRow;
        using SortFilterProxyModel::lessThan;
        using SortFilterProxyModel::SortFilterProxyModel;
    };

    void readTexts();
    QStringList listed(const QString& expression);
    // Sorts the table by a column, and returns the listed names in this order.
    QStringList inOrder(int column, Qt::SortOrder order = Qt::AscendingOrder);

    std::unique_ptr<Table> table;
    std::unique_ptr<PackageTable::Model> model;
    std::unique_ptr<Proxy> proxy;

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanupTestCase();
};

#endif
