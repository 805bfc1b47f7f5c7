// SPDX-License-Identifier: GPL-2.0-or-later

// The context menu of a repository in the editor's table.
//
// The object lives on the graphical thread; the view is its Qt parent.

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

    // Runs the menu for `sourceIndex`, at a position on the screen. If the user clicks below the last row,
    // the index is invalid.
    void exec(QModelIndex sourceIndex, const QPoint& globalPos);

Q_SIGNALS:
    // Emitted when the user wants to edit a repository. The argument is a valid source index.
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
