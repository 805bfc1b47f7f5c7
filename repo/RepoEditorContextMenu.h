// The menu of a repository in the editor's table.
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

    // Runs the menu for a source index (invalid below the last row), at a place on the screen.
    void exec(QModelIndex sourceIndex, const QPoint& globalPos);

Q_SIGNALS:
    // A source index, and a valid one.
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
