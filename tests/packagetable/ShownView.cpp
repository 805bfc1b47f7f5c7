// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/packagetable/ShownView.h"

void ShownView::initTestCase()
{
    table = std::make_unique<Table>();
}

void ShownView::init()
{
    table->collectUsual();
    shown = std::make_unique<ShownTable>(*table);
    view = shown->view;
}

void ShownView::cleanup()
{
    shown.reset();
}

void ShownView::cleanupTestCase()
{
    table.reset();
}
