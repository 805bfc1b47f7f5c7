// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/ActionContextMenu.h"

#include "packagetable/Model.h"
#include "packagetable/SortFilterProxyModel.h"
#include "widgets/HTableView.h"
#include "widgets/Icons.h"

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
    QMenu::exec(globalPos);
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
