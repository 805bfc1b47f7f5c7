// SPDX-License-Identifier: GPL-2.0-or-later

// The table of repositories. A click on a check box toggles it. A double click on a repository opens the form
// of this repository.
//
// The object lives on the graphical thread; the editor's dialog is its Qt parent. The view owns its context
// menu.

#ifndef REPO_REPOEDITORVIEW_H
#define REPO_REPOEDITORVIEW_H

#include "widgets/HTableView.h"

class QSortFilterProxyModel;

namespace RepoEditor {

class ContextMenu;
class Model;

class View : public HTableView
{
    Q_OBJECT

public:
    // The editor's dialog owns both models. `model` is the source of `sortedRows`.
    View(Model* model, QSortFilterProxyModel* sortedRows, QWidget* parent = nullptr);

    // currentRow() and setCurrentRow() use source rows; -1 means no row.
    int currentRow() const;
    void setCurrentRow(int row);
    // Returns source indexes.
    QModelIndexList selectedRows() const;

    // The view creates the menu on first use and owns it.
    ContextMenu* getContextMenu();

public Q_SLOTS:
    void reset() override;
    void handleHorizontalHeaderClicked(int column);
    void handleClicked(const QModelIndex& index);
    void handleCustomContextMenuRequested(const QPoint& pos);
    void handleActivated(const QModelIndex& index);

Q_SIGNALS:
    // Emitted when another row becomes current. The arguments are source rows; -1 means no row.
    void currentChanged(int current, int previous);
    // Emitted when the form of a repository must be opened. The argument is the repository's source index.
    void activated(const QModelIndex& index);

protected:
    // In a column of check boxes, the space key acts as a click on the box.
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

private:
    Model* repositories;
    QSortFilterProxyModel* proxy;
    ContextMenu* contextMenu; // null before the first use
    int announcedRow;
};

} // namespace RepoEditor

#endif
