// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/OtherContextMenu.h"

#include "packagetable/Model.h"

namespace PackageTable {

OtherContextMenu::OtherContextMenu(Model* packages, QWidget* parentView)
    : QMenu(parentView), model(packages), view(parentView)
{
    describeAction = addAction(tr("&Describe"));
    browseAction = addAction(tr("Browse Repository"));
    connect(describeAction, SIGNAL(triggered()), this, SLOT(handleDescribeAction()));
    connect(browseAction, SIGNAL(triggered()), this, SLOT(handleBrowseAction()));
}

void OtherContextMenu::exec(QModelIndex sourceIndex, const QPoint& globalPos)
{
    clicked = sourceIndex;
    describeAction->setEnabled(sourceIndex.isValid());
    browseAction->setVisible(sourceIndex.column() == RepositoryColumn);
    // Groups and installed packages come from no repository that a browser could open.
    const QString repo = sourceIndex.data().toString();
    browseAction->setEnabled(!repo.isEmpty() && repo != QLatin1String(localRepository));
    QMenu::exec(globalPos);
}

void OtherContextMenu::handleDescribeAction()
{
    model->describe(clicked, view);
}

void OtherContextMenu::handleBrowseAction()
{
    model->browse(clicked, view);
}

} // namespace PackageTable
