// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoEditorContextMenu.h"

#include "repo/RepoEditorModel.h"

namespace RepoEditor {

ContextMenu::ContextMenu(Model* repositories, QWidget* parentView)
    : QMenu(parentView), model(repositories), view(parentView)
{
    editAction = addAction(tr("Edit"), this, SLOT(handleEdit()));
    browseAction = addAction(tr("Browse Repository"), this, SLOT(handleBrowse()));
}

void ContextMenu::exec(QModelIndex sourceIndex, const QPoint& globalPos)
{
    clicked = sourceIndex;
    editAction->setEnabled(clicked.isValid());
    browseAction->setEnabled(clicked.isValid());
    QMenu::exec(globalPos);
}

void ContextMenu::handleEdit()
{
    if (clicked.isValid()) {
        Q_EMIT edit(clicked);
    }
}

void ContextMenu::handleBrowse()
{
    model->browse(clicked, view);
}

} // namespace RepoEditor
