// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/packagetable/FilteredTable.h"

using namespace PackageTable;

void FilteredTable::initTestCase()
{
    table = std::make_unique<Table>();
}

void FilteredTable::init()
{
    proxy.reset();
    table->collectUsual();
    model = std::make_unique<Model>(&table->yumIO);
    proxy = std::make_unique<Proxy>(ViewAll, true, true, &table->yumIO);
    proxy->setSourceModel(model.get());
}

void FilteredTable::cleanupTestCase()
{
    proxy.reset();
    model.reset();
    table.reset();
}

void FilteredTable::readTexts()
{
    if (!table->yumIO.collectSearchTexts(proxy->searched(ViewAll, true, true)) ||
        table->entry("tool").searchTexts.isNull()) {
        qFatal("the texts cannot be read");
    }
}

QStringList FilteredTable::listed(const QString& expression)
{
    proxy->setFilterRegExp(expression);
    return sortedNames(*proxy);
}

QStringList FilteredTable::inOrder(int column, Qt::SortOrder order)
{
    proxy->sort(column, order);
    return names(*proxy);
}
