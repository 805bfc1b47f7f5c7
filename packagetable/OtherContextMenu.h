// SPDX-License-Identifier: GPL-2.0-or-later

// The menu of all columns except the Action column.
//
// Graphical thread; a child of the view.

#ifndef PACKAGETABLE_OTHERCONTEXTMENU_H
#define PACKAGETABLE_OTHERCONTEXTMENU_H

#include <QMenu>
#include <QPersistentModelIndex>

namespace PackageTable {

class Model;

class OtherContextMenu : public QMenu
{
    Q_OBJECT

public:
    OtherContextMenu(Model* packages, QWidget* parentView);

    // Runs the menu for a source index at a position on the screen. The index is invalid below the last row.
    void exec(QModelIndex sourceIndex, const QPoint& globalPos);

private Q_SLOTS:
    void handleDescribeAction();
    void handleBrowseAction();

private:
    Model* model;
    QWidget* view;
    QAction* describeAction;
    QAction* browseAction;
    QPersistentModelIndex clicked;
};

} // namespace PackageTable

#endif
