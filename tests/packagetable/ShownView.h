// SPDX-License-Identifier: GPL-2.0-or-later

// The base class for tests of View. Before each test function, the class shows a table with the usual
// records.

#ifndef TESTS_PACKAGETABLE_SHOWNVIEW_H
#define TESTS_PACKAGETABLE_SHOWNVIEW_H

#include <QtTest>
#include <QtWidgets>

#include <memory>

#include "tests/packagetable/ShownTable.h"

class ShownView : public QObject
{
    Q_OBJECT

protected:
    std::unique_ptr<Table> table;
    std::unique_ptr<ShownTable> shown;
    PackageTable::View* view = nullptr;

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
};

#endif
