#include "packagetable/OtherContextMenu.h"

#include "packagetable/Model.h"

namespace PackageTable {

OtherContextMenu::OtherContextMenu(Model* packages, QWidget* parentView)
    : QMenu(parentView), model(packages), view(parentView)
{
    // Neither has a window to open yet.
    describeAction = addAction(tr("&Describe"));
    describeAction->setEnabled(false);
    browseAction = addAction(tr("Browse Repository"));
    browseAction->setEnabled(false);
}

void OtherContextMenu::exec(QModelIndex sourceIndex, const QPoint& globalPos)
{
    clicked = sourceIndex;
    browseAction->setVisible(sourceIndex.column() == RepositoryColumn);
    QMenu::exec(globalPos);
}

} // namespace PackageTable
