// SPDX-License-Identifier: GPL-2.0-or-later

// The menu of the Action column. It sets an action for the clicked row, or for all selected rows whose state
// permits the action.
//
// It lives on the graphical thread; the view is its Qt parent.

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

    // Runs the menu at a position on the screen, for a source index.
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
