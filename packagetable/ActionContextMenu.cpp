// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/ActionContextMenu.h"

#include "packagetable/Model.h"
#include "packagetable/SortFilterProxyModel.h"
#include "widgets/HTableView.h"
#include "widgets/Icons.h"
#include "widgets/Literal.h"
#include "yumio/VersionLocks.h"

namespace PackageTable {

ActionContextMenu::ActionContextMenu(Model* packages, SortFilterProxyModel* sortedRows,
                                     HTableView* parentView)
    : QMenu(parentView), model(packages), proxy(sortedRows), view(parentView)
{
    const auto add = [this](const char* icon, const QString& text, const char* slot) {
        QAction* action = addAction(Icons::shared(QLatin1String(icon)), text);
        connect(action, SIGNAL(triggered()), this, slot);
        return action;
    };
    updateAction = add("update", tr("&Update"), SLOT(handleUpdateAction()));
    installAction = add("install", tr("&Install"), SLOT(handleInstallAction()));
    removeAction = add("remove", tr("&Remove"), SLOT(handleRemoveAction()));
    noneAction = addAction(tr("&No Action"));
    connect(noneAction, SIGNAL(triggered()), this, SLOT(handleNoneAction()));
    lockSeparator = addSeparator();
    lockAction = addAction(tr("&Lock Version"));
    unlockAction = addAction(tr("Un&lock Version"));
    setToolTipsVisible(true);
    offerVersionLocks();
}

QModelIndexList ActionContextMenu::selectedRows() const
{
    return proxy->mapToSource(view->selectedRows());
}

void ActionContextMenu::exec(QModelIndex sourceIndex, const QPoint& globalPos)
{
    clicked = sourceIndex;
    QModelIndexList rows = selectedRows();
    if (rows.isEmpty()) {
        rows.append(sourceIndex);
    }
    bool update = false;
    bool install = false;
    bool remove = false;
    for (const QModelIndex& row : qAsConst(rows)) {
        const Package::Entry* entry = model->entry(row.row());
        update = update || entry->permits(Package::Update);
        install = install || entry->permits(Package::Install);
        remove = remove || entry->permits(Package::Remove);
    }
    updateAction->setEnabled(update);
    installAction->setEnabled(install);
    removeAction->setEnabled(remove);
    offerVersionLocks();
    const QAction* chosen = QMenu::exec(globalPos);
    if (chosen != nullptr && (chosen == lockAction || chosen == unlockAction)) {
        const bool locked = chosen == lockAction;
        const QList<int> found = lockableRows(locked);
        if (!found.isEmpty()) {
            Q_EMIT versionLocksChosen(found, locked);
        }
    }
}

void ActionContextMenu::offerVersionLocks()
{
    const VersionLocks& locks = model->versionLocks();
    const bool canLock = !lockableRows(true).isEmpty();
    const bool canUnlock = !lockableRows(false).isEmpty();
    // "Lock" and "Unlock" have the same shortcut letter. Therefore the menu shows both entries only if the
    // selection contains both locked and unlocked packages.
    lockSeparator->setVisible(locks.offered);
    lockAction->setVisible(locks.offered && (canLock || !canUnlock));
    lockAction->setEnabled(locks.fault.isEmpty() && canLock);
    unlockAction->setVisible(locks.offered && canUnlock);
    unlockAction->setEnabled(locks.fault.isEmpty());
    const auto explain = [&locks](QAction* action, const QString& toolTip) {
        action->setToolTip(Literal::toolTip(locks.fault.isEmpty() ? toolTip : locks.fault));
    };
    explain(lockAction, tr("The packages stay at their version: they get no updates.\n"
                           "The versionlock plug-in keeps the list of locked packages."));
    explain(unlockAction, tr("The packages get updates again.\n"
                             "The versionlock plug-in keeps the list of locked packages."));
}

QList<int> ActionContextMenu::lockableRows(bool locked) const
{
    QModelIndexList rows = selectedRows();
    if (rows.isEmpty() && clicked.isValid()) {
        rows.append(clicked);
    }
    QList<int> found;
    for (const QModelIndex& row : qAsConst(rows)) {
        const Package::Entry* entry = model->entry(row.row());
        if (entry->kind != Package::Group && model->versionLocks().isLocked(*entry) != locked) {
            found.append(row.row());
        }
    }
    return found;
}

void ActionContextMenu::handleUpdateAction()
{
    handleAction(Package::Update);
}

void ActionContextMenu::handleInstallAction()
{
    handleAction(Package::Install);
}

void ActionContextMenu::handleRemoveAction()
{
    handleAction(Package::Remove);
}

void ActionContextMenu::handleNoneAction()
{
    handleAction(Package::None);
}

void ActionContextMenu::handleAction(Package::Action action)
{
    const QModelIndexList rows = selectedRows();
    if (rows.isEmpty()) {
        model->setAction(clicked, action);
        return;
    }
    const SortFilterProxyModel::SortPause pause(*proxy);
    for (const QModelIndex& row : rows) {
        if (model->entry(row.row())->permits(action)) {
            model->setAction(row, action);
        }
    }
}

} // namespace PackageTable
