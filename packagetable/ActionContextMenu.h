// SPDX-License-Identifier: GPL-2.0-or-later

// The menu of the Action column. It gives one action to the clicked row, or to all selected rows whose state
// permits the action.
//
// Graphical thread; a child of the view.

#ifndef PACKAGETABLE_ACTIONCONTEXTMENU_H
#define PACKAGETABLE_ACTIONCONTEXTMENU_H

#include <QMenu>
#include <QModelIndexList>
#include <QPersistentModelIndex>

#include "yumio/Package.h"

class HTableView;

namespace PackageTable {

class Model;
class SortFilterProxyModel;

class ActionContextMenu : public QMenu
{
    Q_OBJECT

public:
    ActionContextMenu(Model* packages, SortFilterProxyModel* sortedRows, HTableView* parentView);

    // Runs the menu for a source index, at a position on the screen.
    void exec(QModelIndex sourceIndex, const QPoint& globalPos);

private Q_SLOTS:
    void handleUpdateAction();
    void handleInstallAction();
    void handleRemoveAction();
    void handleNoneAction();

private:
    void handleAction(Package::Action action);
    QModelIndexList selectedRows() const; // source indexes

    Model* model;
    SortFilterProxyModel* proxy;
    HTableView* view;
    QAction* updateAction;
    QAction* installAction;
    QAction* removeAction;
    QAction* noneAction;
    QPersistentModelIndex clicked;
};

} // namespace PackageTable

#endif
