// SPDX-License-Identifier: GPL-2.0-or-later

// The menu of the Action column. The menu sets an action for the clicked row, or for all selected rows whose
// state permits the action. If the package manager offers version locks, the menu also locks and unlocks the
// packages of these rows.
//
// The object lives on the graphical thread; the view is its Qt parent.

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

    // Runs the menu for `sourceIndex`, at a position on the screen.
    void exec(QModelIndex sourceIndex, const QPoint& globalPos);

Q_SIGNALS:
    // Emitted when the user wants to lock or unlock the versions of these source rows. The menu is already
    // closed, so the receiver may wait for a worker.
    void versionLocksChosen(const QList<int>& rows, bool locked);

private Q_SLOTS:
    void handleUpdateAction();
    void handleInstallAction();
    void handleRemoveAction();
    void handleNoneAction();

private:
    void handleAction(Package::Action action);
    QModelIndexList selectedRows() const; // source indexes
    // If `locked` is true, returns the source rows whose packages can be locked. Otherwise returns the source
    // rows whose packages can be unlocked.
    QList<int> lockableRows(bool locked) const;
    void offerVersionLocks();

    Model* model;
    SortFilterProxyModel* proxy;
    HTableView* view;
    QAction* updateAction;
    QAction* installAction;
    QAction* removeAction;
    QAction* noneAction;
    QAction* lockSeparator;
    QAction* lockAction;
    QAction* unlockAction;
    QPersistentModelIndex clicked;
};

} // namespace PackageTable

#endif
