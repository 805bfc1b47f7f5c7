#include "packagetable/View.h"

#include <QEvent>
#include <QHeaderView>

#include <limits>

#include "packagetable/ActionContextMenu.h"
#include "packagetable/Model.h"
#include "packagetable/OtherContextMenu.h"
#include "packagetable/SortFilterProxyModel.h"

namespace PackageTable {

View::View(Model* packages, SortFilterProxyModel* sorted, QWidget* parent)
    : HTableView(QStyleOptionViewItem::Left, 10, std::numeric_limits<int>::max(), parent), model(packages),
      proxy(sorted), actionMenu(nullptr), otherMenu(nullptr)
{
    setModel(proxy);
    setShowGrid(false);
    setGridStyle(Qt::NoPen);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setAlternatingRowColors(true);
    setContextMenuPolicy(Qt::CustomContextMenu);
    verticalHeader()->hide();
    // All rows are one line high; asking each of them for its height would take its time.
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);

    auto* header = new QHeaderView(Qt::Horizontal, this);
    header->setSectionsMovable(true);
    header->setSectionsClickable(true);
    header->setSortIndicatorShown(true);
    header->setHighlightSections(false);
    setHorizontalHeader(header);

    sortByColumn(KindColumn, Qt::AscendingOrder);
    proxy->setFilterKeyColumn(KindColumn);

    connect(header, SIGNAL(sectionClicked(int)), this, SLOT(handleHorizontalHeaderClicked(int)));
    connect(this, SIGNAL(clicked(const QModelIndex&)), this, SLOT(handleActivated(const QModelIndex&)));
    connect(this, SIGNAL(customContextMenuRequested(const QPoint&)), this,
            SLOT(handleCustomContextMenuRequested(const QPoint&)));
}

QModelIndexList View::selectedRows() const
{
    QModelIndexList rows;
    for (const QModelIndex& listed : HTableView::selectedRows()) {
        rows.append(proxy->mapToSource(listed));
    }
    return rows;
}

void View::resizeColumnsToContents()
{
    const bool filtering = proxy->getFilter();
    proxy->setFilter(false);
    HTableView::resizeColumnsToContents();
    proxy->setFilter(filtering);
}

void View::handleHorizontalHeaderClicked(int column)
{
    HTableView::sortByColumn(column);
    proxy->setFilterKeyColumn(column);
}

void View::handleActivated(const QModelIndex& index)
{
    if (index.isValid() && index.column() == ActionColumn) {
        const QModelIndex sourceIndex = proxy->mapToSource(index);
        model->toggleAction(sourceIndex);
        Q_EMIT stateChanged(sourceIndex.row());
    }
}

void View::handleCustomContextMenuRequested(const QPoint& pos)
{
    const QModelIndex sourceIndex = proxy->mapToSource(indexAt(pos));
    const QPoint globalPos = viewport()->mapToGlobal(pos);
    if (sourceIndex.isValid() && sourceIndex.column() == ActionColumn) {
        if (actionMenu == nullptr) {
            actionMenu = new ActionContextMenu(model, this);
        }
        actionMenu->exec(sourceIndex, globalPos);
        Q_EMIT stateChanged(-1);
        return;
    }
    if (otherMenu == nullptr) {
        otherMenu = new OtherContextMenu(model, this);
    }
    otherMenu->exec(sourceIndex, globalPos);
}

void View::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    HTableView::currentChanged(current, previous);
    const int currentRow = proxy->mapToSource(current).row();
    const int previousRow = proxy->mapToSource(previous).row();
    if (currentRow != previousRow) {
        Q_EMIT currentChanged(currentRow, previousRow);
    }
}

void View::changeEvent(QEvent* event)
{
    HTableView::changeEvent(event);
    if (event->type() == QEvent::EnabledChange) {
        model->setEnabled(isEnabled());
    }
}

} // namespace PackageTable
