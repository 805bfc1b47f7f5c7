// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoEditorView.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QSortFilterProxyModel>

#include "repo/RepoEditorContextMenu.h"
#include "repo/RepoEditorModel.h"

namespace RepoEditor {

View::View(Model* model, QSortFilterProxyModel* sortedRows, QWidget* parent)
    : HTableView(QStyleOptionViewItem::Left, 10, 20, parent), repositories(model), proxy(sortedRows),
      contextMenu(nullptr), announcedRow(-1)
{
    setModel(proxy);
    setShowGrid(false);
    setAlternatingRowColors(true);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setTabKeyNavigation(false);
    verticalHeader()->hide();
    setOneLineRows();
    setAccessibleName(tr("Repositories"));

    auto* header = new QHeaderView(Qt::Horizontal, this);
    header->setSectionsMovable(true);
    header->setSectionsClickable(true);
    header->setSortIndicatorShown(true);
    header->setHighlightSections(false);
    header->setStretchLastSection(true);
    // Let the header handle right clicks. Otherwise a right click on the header would reach the view, as if
    // the user had clicked the row at the same height.
    header->setContextMenuPolicy(Qt::PreventContextMenu);
    setHorizontalHeader(header);

    connect(header, SIGNAL(sectionClicked(int)), this, SLOT(handleHorizontalHeaderClicked(int)));
    connect(this, SIGNAL(clicked(const QModelIndex&)), this, SLOT(handleClicked(const QModelIndex&)));
    connect(this, SIGNAL(customContextMenuRequested(const QPoint&)), this,
            SLOT(handleCustomContextMenuRequested(const QPoint&)));
    connect(this, SIGNAL(doubleClicked(const QModelIndex&)), this, SLOT(handleActivated(const QModelIndex&)));
}

int View::currentRow() const
{
    return proxy->mapToSource(currentIndex()).row();
}

void View::setCurrentRow(int row)
{
    setCurrentIndex(proxy->mapFromSource(repositories->createIndex(row)));
}

QModelIndexList View::selectedRows() const
{
    QModelIndexList rows;
    const QModelIndexList allListed = HTableView::selectedRows();
    for (const QModelIndex& listed : allListed) {
        rows.append(proxy->mapToSource(listed));
    }
    return rows;
}

ContextMenu* View::getContextMenu()
{
    if (contextMenu == nullptr) {
        contextMenu = new ContextMenu(repositories, this);
    }
    return contextMenu;
}

void View::reset()
{
    HTableView::reset();
    // A reset clears the current row, but the selection model emits no signal for it. Emit the signal here.
    if (announcedRow != -1) {
        const int previousRow = announcedRow;
        announcedRow = -1;
        Q_EMIT currentChanged(-1, previousRow);
    }
}

void View::handleHorizontalHeaderClicked(int column)
{
    HTableView::sortByColumn(column);
}

void View::handleClicked(const QModelIndex& index)
{
    switch (index.column()) {
    case SessionColumn:
        repositories->toggleUse(proxy->mapToSource(index));
        break;
    case PermanentColumn:
        repositories->toggleEnabled(proxy->mapToSource(index));
        break;
    default:
        break;
    }
}

void View::handleCustomContextMenuRequested(const QPoint& pos)
{
    const QModelIndex sourceIndex = proxy->mapToSource(indexAt(pos));
    if (sourceIndex.column() == SessionColumn || sourceIndex.column() == PermanentColumn) {
        return;
    }
    getContextMenu()->exec(sourceIndex, viewport()->mapToGlobal(pos));
}

void View::handleActivated(const QModelIndex& index)
{
    Q_EMIT activated(proxy->mapToSource(index));
}

void View::keyPressEvent(QKeyEvent* event)
{
    const QModelIndex current = currentIndex();
    if (event->key() == Qt::Key_Space && event->modifiers() == Qt::NoModifier && current.isValid() &&
        (current.column() == SessionColumn || current.column() == PermanentColumn)) {
        handleClicked(current);
        return;
    }
    HTableView::keyPressEvent(event);
}

// The base class makes the first row current when the view gets the focus. This function undoes this change,
// because a current row that is not selected is invisible.
void View::focusInEvent(QFocusEvent* event)
{
    const bool hadCurrent = currentIndex().isValid();
    HTableView::focusInEvent(event);
    if (!hadCurrent && currentIndex().isValid()) {
        selectionModel()->setCurrentIndex(QModelIndex(), QItemSelectionModel::NoUpdate);
    }
}

void View::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    HTableView::currentChanged(current, previous);
    const int previousRow = proxy->mapToSource(previous).row();
    announcedRow = proxy->mapToSource(current).row();
    if (announcedRow != previousRow) {
        Q_EMIT currentChanged(announcedRow, previousRow);
    }
}

} // namespace RepoEditor
