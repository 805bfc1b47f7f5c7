// The menu on all columns but the Action column.
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

    // Runs the menu for a source index (invalid below the last row), at a place on the screen.
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
