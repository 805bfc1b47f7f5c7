// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/View.h"

#include <QApplication>
#include <QEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QSet>
#include <QVector>

#include <algorithm>
#include <limits>
#include <vector>

#include "packagetable/ActionContextMenu.h"
#include "packagetable/Columns.h"
#include "packagetable/Model.h"
#include "packagetable/OtherContextMenu.h"
#include "packagetable/SortFilterProxyModel.h"
#include "packagetable/WidthEstimate.h"

namespace PackageTable {

View::View(Model* packages, SortFilterProxyModel* sortedRows, QWidget* parent)
    : HTableView(QStyleOptionViewItem::Left, 10, std::numeric_limits<int>::max(), parent), model(packages),
      proxy(sortedRows), currentRow(-1), fittingRecords(false), actionMenu(nullptr), otherMenu(nullptr)
{
    setModel(proxy);
    setShowGrid(false);
    setGridStyle(Qt::NoPen);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setAlternatingRowColors(true);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setTabKeyNavigation(false); // otherwise the Tab key would stop at each cell
    verticalHeader()->hide();
    setOneLineRows();
    adaptColors();

    auto* header = new QHeaderView(Qt::Horizontal, this);
    header->setSectionsMovable(true);
    header->setSectionsClickable(true);
    header->setHighlightSections(false);
    // Let the header handle right clicks. Otherwise a right click on the header would reach the view, as if
    // the user had clicked the row at the same height.
    header->setContextMenuPolicy(Qt::PreventContextMenu);
    setHorizontalHeader(header);
    header->setSortIndicatorShown(true); // setHorizontalHeader() has cleared this setting

    sortByColumn(KindColumn, Qt::AscendingOrder);
    // The proxy ignores this setting, because it compares an expression with every column.
    proxy->setFilterKeyColumn(KindColumn);

    connect(header, SIGNAL(sectionClicked(int)), this, SLOT(handleHorizontalHeaderClicked(int)));
    connect(this, SIGNAL(clicked(const QModelIndex&)), this, SLOT(handleActivated(const QModelIndex&)));
    connect(this, SIGNAL(customContextMenuRequested(const QPoint&)), this,
            SLOT(handleCustomContextMenuRequested(const QPoint&)));
}

View::~View() = default;

QModelIndexList View::selectedRows() const
{
    return proxy->mapToSource(HTableView::selectedRows());
}

void View::resizeColumnsToContents()
{
    fitColumns(nullptr);
}

void View::fitColumns(const std::vector<int>* widest)
{
    {
        const QScopedValueRollback<bool> fitting(fittingRecords, true);
        const QScopedValueRollback<const std::vector<int>*> candidates(widestRecords, widest);
        HTableView::resizeColumnsToContents();
    }
    fittedWidths.clear();
    for (int column = 0; column < ColumnCount; ++column) {
        fittedWidths.append(columnWidth(column));
    }
}

View::Layout View::layoutByHand() const
{
    Layout layout;
    for (int column = 0; column < ColumnCount; ++column) {
        const int width = columnWidth(column);
        layout.widths.append(column < fittedWidths.size() && fittedWidths.at(column) != width ? width : 0);
        layout.places.append(horizontalHeader()->visualIndex(column));
    }
    return layout;
}

void View::restoreLayout(const Layout& layout)
{
    if (layout.widths.size() != ColumnCount || layout.places.size() != ColumnCount) {
        return;
    }
    for (int column = 0; column < ColumnCount; ++column) {
        const int width = layout.widths.at(column);
        if (width >= horizontalHeader()->minimumSectionSize() && width <= maximumWidth()) {
            setColumnWidth(column, width);
        }
    }
    for (int place = 0; place < ColumnCount; ++place) {
        const int column = layout.places.indexOf(place);
        if (column >= 0) {
            horizontalHeader()->moveSection(horizontalHeader()->visualIndex(column), place);
        }
    }
}

int View::contentsWidthForColumn(int column) const
{
    const QAbstractItemModel* const rows = fittingRecords ? static_cast<QAbstractItemModel*>(model) : proxy;
    const int count = rows->rowCount();
    if (count == 0) {
        return 0;
    }
    const QStyleOptionViewItem option = viewOptions();
    const auto measured = [this, rows, column, &option](int row) {
        const QModelIndex index = rows->index(row, column);
        return itemDelegate(index)->sizeHint(option, index).width();
    };
    int width = 0;
    if (fittingRecords && widestRecords != nullptr) {
        for (const int row : widestRecords[column]) {
            width = qMax(width, measured(row));
        }
        return width;
    }
    const auto entryAt = [this](int row) -> const Package::Entry& {
        return *model->entry(fittingRecords ? row : proxy->mapToSource(proxy->index(row, NameColumn)).row());
    };
    if (Columns::row(column).showsPictures()) {
        QSet<int> icons;
        for (int row = 0; row < count; ++row) {
            const int icon = Columns::row(column).sortKey(entryAt(row));
            if (!icons.contains(icon)) {
                icons.insert(icon);
                width = qMax(width, measured(row));
            }
        }
        return width;
    }
    // Only the texts with the largest estimates are measured.
    if (widthEstimate == nullptr || widthEstimate->usedFont() != option.font) {
        widthEstimate = std::make_unique<WidthEstimate>(option.font);
    }
    WidestRows widest(*widthEstimate);
    QString made;
    for (int row = 0; row < count; ++row) {
        widest.add(row, Columns::row(column).textIn(entryAt(row), made));
    }
    for (const int row : widest.rows()) {
        width = qMax(width, measured(row));
    }
    return width;
}

void View::reset()
{
    pressedRecord = QPersistentModelIndex(); // the reset may have moved all rows, so forget the last press
    HTableView::reset();
    // A reset clears the current row, but the selection model emits no signal for it. Emit the signal here.
    if (currentRow != -1) {
        const int previousRow = currentRow;
        currentRow = -1;
        Q_EMIT currentChanged(-1, previousRow);
    }
}

void View::describe()
{
    model->describe(proxy->mapToSource(currentIndex()), this);
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
        const Package::Entry* entry = model->entry(sourceIndex.row());
        if (!Model::canBeMarked(*entry)) {
            const QString reason =
                tr("%1 cannot be marked: the configuration excludes it from updates and removals")
                    .arg(entry->name);
            Q_EMIT actionRefused(reason);
        }
    }
}

void View::keyPressEvent(QKeyEvent* event)
{
    const QModelIndex current = currentIndex();
    if (event->key() == Qt::Key_Space && event->modifiers() == Qt::NoModifier && current.isValid()) {
        // The space key acts as a click on the Action column of the row. A key that the user holds down acts
        // only once, because its repetitions would select one action after another.
        if (!event->isAutoRepeat()) {
            handleActivated(current.sibling(current.row(), ActionColumn));
        }
        return;
    }
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && current.isValid()) {
        describe();
        return;
    }
    HTableView::keyPressEvent(event);
}

void View::mousePressEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->pos());
    if (event->button() == Qt::LeftButton && index.column() == ActionColumn) {
        const bool quick = sincePress.isValid() &&
                           sincePress.elapsed() < QApplication::doubleClickInterval() &&
                           (event->pos() - pressedAt).manhattanLength() < QApplication::startDragDistance();
        sincePress.start();
        pressedAt = event->pos();
        const QModelIndex record = proxy->mapToSource(index);
        const QModelIndex pressed = proxy->mapFromSource(pressedRecord);
        if (quick && pressedRecord.isValid() && pressedRecord != record && pressed.row() != pressedRow) {
            // The previous click has changed the action of a row. Because the table is sorted by action, this
            // row has moved, and a different row is now under the pointer. The user still means the row that
            // has moved. But if the first click has moved no row, and the user then clicks on a neighbouring
            // row, the condition above is false, and the second click is for the neighbouring row.
            handleActivated(pressed);
            pressIsHandled = true;
            return;
        }
        pressedRecord = record;
        pressedRow = index.row();
    }
    pressIsHandled = false;
    HTableView::mousePressEvent(event);
}

void View::mouseReleaseEvent(QMouseEvent* event)
{
    // Skip the base class after a handled press. The base class compares the row under the pointer with the
    // row of an earlier press, and could emit clicked().
    if (!pressIsHandled) {
        HTableView::mouseReleaseEvent(event);
    }
    pressIsHandled = false;
}

void View::mouseDoubleClickEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->pos());
    if (index.column() == ActionColumn) {
        // Treat a double click as a further single click, because each click must change the action. The base
        // class would not emit clicked() for a double click.
        QMouseEvent press(QEvent::MouseButtonPress, event->localPos(), event->windowPos(), event->screenPos(),
                          event->button(), event->buttons(), event->modifiers(), event->source());
        mousePressEvent(&press);
        return;
    }
    HTableView::mouseDoubleClickEvent(event);
    if (event->button() == Qt::LeftButton && index.isValid()) {
        describe();
    }
}

void View::focusInEvent(QFocusEvent* event)
{
    const bool hadCurrent = currentIndex().isValid();
    HTableView::focusInEvent(event);
    if (!hadCurrent && currentIndex().isValid()) {
        // The base class has made the first row current without selecting it. Undo this, because Space or
        // Enter would act on a row that does not look selected.
        selectionModel()->clearCurrentIndex();
    }
}

void View::handleCustomContextMenuRequested(const QPoint& pos)
{
    const QModelIndex sourceIndex = proxy->mapToSource(indexAt(pos));
    const QPoint globalPos = viewport()->mapToGlobal(pos);
    if (sourceIndex.isValid() && sourceIndex.column() == ActionColumn) {
        if (actionMenu == nullptr) {
            actionMenu = new ActionContextMenu(model, proxy, this);
            connect(actionMenu, SIGNAL(versionLocksChosen(const QList<int>&, bool)), this,
                    SIGNAL(versionLocksChosen(const QList<int>&, bool)));
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
    const int previousRow = proxy->mapToSource(previous).row();
    currentRow = proxy->mapToSource(current).row();
    if (currentRow != previousRow) {
        Q_EMIT currentChanged(currentRow, previousRow);
    }
}

void View::adaptColors()
{
    // Pass the lighter of the two alternating row backgrounds to the model. If both backgrounds are dark,
    // light text has less contrast on the lighter background. Text that is readable on the lighter background
    // is readable on both.
    const QColor base = palette().color(QPalette::Base);
    const QColor alternate = palette().color(QPalette::AlternateBase);
    model->setBackground(alternate.lightness() > base.lightness() ? alternate : base);
}

void View::changeEvent(QEvent* event)
{
    HTableView::changeEvent(event);
    if (event->type() == QEvent::EnabledChange) {
        model->setEnabled(isEnabled());
    } else if (event->type() == QEvent::PaletteChange) {
        adaptColors();
    }
}

} // namespace PackageTable
