// SPDX-License-Identifier: GPL-2.0-or-later

// A package table in a window, with functions that click in it.

#ifndef TESTS_PACKAGETABLE_SHOWNTABLE_H
#define TESTS_PACKAGETABLE_SHOWNTABLE_H

#include <QApplication>
#include <QVBoxLayout>
#include <QWindow>
#include <QtTest>

#include "packagetable/SortFilterProxyModel.h"
#include "packagetable/View.h"
#include "tests/packagetable/Table.h"

class ShownTable
{
public:
    explicit ShownTable(Table& shown)
        : table(shown), model(&shown.yumIO), proxy(PackageTable::ViewAll, true, true, &shown.yumIO)
    {
        proxy.setSourceModel(&model);
        view = new PackageTable::View(&model, &proxy);
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(view);
        window.resize(900, 500);
        window.show();
        QApplication::setActiveWindow(&window);
        if (!QTest::qWaitForWindowActive(&window)) {
            qFatal("the window does not appear");
        }
        view->HTableView::sortByColumn(PackageTable::NameColumn, Qt::AscendingOrder);
        view->setFocus();
        // setFocus() may have made the first row current. The tests begin without a current row.
        view->setCurrentIndex(QModelIndex());
    }

    int listedRow(const QString& name) const { return names(proxy).indexOf(name); }

    // The centre of a cell in the coordinates of the viewport. If the cell is not visible, this function
    // first scrolls to the cell.
    QPoint place(const QString& name, int column) const
    {
        const QModelIndex index = proxy.index(listedRow(name), column);
        if (!view->viewport()->rect().contains(view->visualRect(index).center())) {
            view->scrollTo(index);
        }
        return view->visualRect(index).center();
    }

    // Sends the click to the window, as the window system does. Qt chooses the widget that receives the
    // click.
    void click(QWidget* widget, const QPoint& place, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::mouseClick(window.windowHandle(), button, modifiers, widget->mapTo(&window, place));
    }
    void click(const QString& name, int column, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        click(view->viewport(), place(name, column), button, modifiers);
    }

    void select(const QStringList& chosen)
    {
        view->clearSelection();
        for (const QString& name : chosen) {
            click(name, PackageTable::NameColumn, Qt::LeftButton, Qt::ControlModifier);
        }
    }

    Table& table;
    PackageTable::Model model;
    PackageTable::SortFilterProxyModel proxy;
    QWidget window;
    PackageTable::View* view;
};

#endif
