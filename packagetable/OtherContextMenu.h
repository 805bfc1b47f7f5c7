// SPDX-License-Identifier: GPL-2.0-or-later

// The menu of all columns except the Action column.
//
// The object lives on the graphical thread; the view is its Qt parent.

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

    // Runs the menu for `sourceIndex`, at a position on the screen. If the user clicks below the last row,
    // the index is invalid.
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
