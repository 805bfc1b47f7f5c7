// SPDX-License-Identifier: GPL-2.0-or-later

// The context menu of a repository in the table of the editor.
//
// Graphical thread; a child of the view.

#ifndef REPO_REPOEDITORCONTEXTMENU_H
#define REPO_REPOEDITORCONTEXTMENU_H

#include <QMenu>
#include <QPersistentModelIndex>

namespace RepoEditor {

class Model;

class ContextMenu : public QMenu
{
    Q_OBJECT

public:
    ContextMenu(Model* repositories, QWidget* parentView);

    // Runs the menu for a source index at a position on the screen. The index is invalid below the last row.
    void exec(QModelIndex sourceIndex, const QPoint& globalPos);

Q_SIGNALS:
    // Gives a valid source index.
    void edit(QModelIndex sourceIndex);

private Q_SLOTS:
    void handleEdit();
    void handleBrowse();

private:
    Model* model;
    QWidget* view;
    QAction* editAction;
    QAction* browseAction;
    QPersistentModelIndex clicked;
};

} // namespace RepoEditor

#endif
