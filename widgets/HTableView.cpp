// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HTableView.h"

#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyle>

#include "widgets/HItemDelegate.h"
#include "widgets/Metrics.h"

HTableView::HTableView(QStyleOptionViewItem::Position position, int min, int max, QWidget* parent)
    : QTableView(parent), decorationPosition(position), minRows(min), maxRows(max), oneLineRows(false)
{
    setItemDelegate(new HItemDelegate(this));
}

QStyleOptionViewItem HTableView::viewOptions() const
{
    QStyleOptionViewItem option = QTableView::viewOptions();
    option.decorationPosition = decorationPosition;
    option.showDecorationSelected = false;
    return option;
}

void HTableView::setOneLineRows()
{
    oneLineRows = true;
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    fitRowsToFont();
}

void HTableView::fitRowsToFont()
{
    // Use only multiples of 8 pixels as icon sizes, because an icon looks blurred if it is scaled by one or
    // two pixels.
    const int step = 8;
    const int side = qMax(style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this),
                          fontMetrics().height() / step * step);
    setIconSize(QSize(side, side));
    verticalHeader()->setDefaultSectionSize(qMax(fontMetrics().height(), side) + 6);
}

void HTableView::setModel(QAbstractItemModel* newModel)
{
    if (model() != nullptr) {
        disconnect(model(), nullptr, this, SLOT(describeEmptiness()));
    }
    QTableView::setModel(newModel);
    if (newModel != nullptr) {
        connect(newModel, SIGNAL(modelReset()), this, SLOT(describeEmptiness()));
        connect(newModel, SIGNAL(rowsInserted(const QModelIndex&, int, int)), this,
                SLOT(describeEmptiness()));
        connect(newModel, SIGNAL(rowsRemoved(const QModelIndex&, int, int)), this, SLOT(describeEmptiness()));
    }
    describeEmptiness();
}

void HTableView::setEmptyText(const QString& text)
{
    if (emptyText != text) {
        emptyText = text;
        describeEmptiness();
        viewport()->update();
    }
}

bool HTableView::isEmpty() const
{
    return !emptyText.isEmpty() && model() != nullptr && model()->rowCount(rootIndex()) == 0;
}

void HTableView::describeEmptiness()
{
    if (!emptyText.isEmpty()) {
        setAccessibleDescription(isEmpty() ? emptyText : QString());
    }
}

void HTableView::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    if (!isEmpty()) {
        return;
    }
    QPainter painter(viewport());
    QColor color = palette().color(QPalette::Text);
    color.setAlphaF(0.7);
    painter.setPen(color);
    const int margin = 2 * fontMetrics().height();
    painter.drawText(viewport()->rect().adjusted(margin, 0, -margin, 0), Qt::AlignCenter | Qt::TextWordWrap,
                     emptyText);
}

void HTableView::changeEvent(QEvent* event)
{
    QTableView::changeEvent(event);
    if (oneLineRows && (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)) {
        fitRowsToFont();
    }
}

void HTableView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier) {
        const QPoint place = visualRect(currentIndex()).center();
        QContextMenuEvent menu(QContextMenuEvent::Keyboard, place, viewport()->mapToGlobal(place));
        QCoreApplication::sendEvent(viewport(), &menu);
        return;
    }
    const bool toStart = event->key() == Qt::Key_Home;
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    if ((toStart || event->key() == Qt::Key_End) && modifiers == Qt::ControlModifier) {
        const int rows = model() != nullptr ? model()->rowCount(rootIndex()) : 0;
        if (rows > 0) {
            // Select the cell explicitly, because the base class only makes it current.
            QItemSelectionModel::SelectionFlags command = QItemSelectionModel::ClearAndSelect;
            if (selectionBehavior() == QAbstractItemView::SelectRows) {
                command |= QItemSelectionModel::Rows;
            }
            const int column = qMax(currentIndex().column(), 0);
            selectionModel()->setCurrentIndex(model()->index(toStart ? 0 : rows - 1, column, rootIndex()),
                                              command);
        }
        return;
    }
    QTableView::keyPressEvent(event);
}

QSize HTableView::sizeHint() const
{
    if (minRows != maxRows) {
        const int rows = model() != nullptr ? model()->rowCount(rootIndex()) : 0;
        minRows = maxRows = qMin(qMax(rows, minRows), maxRows);
    }

    const QHeaderView* columns = horizontalHeader();
    const QHeaderView* rows = verticalHeader();
    int width = 2 * frameWidth() + frameOnlyAroundContentsPixels() + verticalScrollBar()->sizeHint().width();
    if (!rows->isHidden()) {
        width += rows->sizeHint().width();
    }
    if (columns->count() > 0) {
        const int last = columns->count() - 1;
        width += columnViewportPosition(last) + columnWidth(last);
    }
    int height = 2 * frameWidth();
    if (!columns->isHidden()) {
        height += columns->sizeHint().height();
    }
    if (rows->count() > 0) {
        height += rowViewportPosition(0) + rowHeight(0) * minRows;
    } else {
        height += rows->defaultSectionSize() * minRows;
    }
    return QSize(width, height);
}

QSize HTableView::minimumSizeHint() const
{
    // Qt draws only the lines that fit into the view, and a text in an empty table has up to three lines.
    constexpr int lines = 3;
    int height =
        2 * frameWidth() + lines * fontMetrics().lineSpacing() + horizontalScrollBar()->sizeHint().height();
    if (!horizontalHeader()->isHidden()) {
        height += horizontalHeader()->sizeHint().height();
    }
    return QTableView::minimumSizeHint().expandedTo(QSize(0, height));
}

int HTableView::sizeHintForColumn(int column) const
{
    if (model() == nullptr) {
        return -1;
    }
    ensurePolished();
    return contentsWidthForColumn(column) + (showGrid() ? 1 : 0);
}

int HTableView::contentsWidthForColumn(int column) const
{
    const QStyleOptionViewItem option = viewOptions();
    const int rows = model()->rowCount(rootIndex());
    int width = 0;
    for (int row = 0; row < rows; ++row) {
        const QModelIndex index = model()->index(row, column, rootIndex());
        width = qMax(width, itemDelegate(index)->sizeHint(option, index).width());
    }
    return width;
}

void HTableView::resizeColumnsToContents()
{
    QTableView::resizeColumnsToContents();
    for (QWidget* widget = this; widget != nullptr; widget = widget->parentWidget()) {
        widget->updateGeometry();
        if (widget->isWindow()) {
            break;
        }
    }
    QWidget* top = window();
    top->resize(top->sizeHint().boundedTo(Metrics::maxWindowSize()).expandedTo(top->size()));
}

void HTableView::sortByColumn(int column)
{
    if (model() == nullptr) {
        return;
    }
    const QHeaderView* header = horizontalHeader();
    const bool shown = header->sortIndicatorSection() == column;
    sortByColumn(column, shown ? header->sortIndicatorOrder() : Qt::AscendingOrder);
}

void HTableView::sortByColumn(int column, Qt::SortOrder order)
{
    horizontalHeader()->setSortIndicator(column, order);
    if (model() != nullptr) {
        model()->sort(column, order);
    }
}

QModelIndexList HTableView::selectedRows() const
{
    QModelIndexList rows;
    if (selectionModel() == nullptr) {
        return rows;
    }
    for (const QItemSelectionRange& range : selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row) {
            const QModelIndex index = model()->index(row, range.left(), range.parent());
            if (index.flags() & Qt::ItemIsSelectable) {
                rows.append(index);
            }
        }
    }
    return rows;
}

int HTableView::frameOnlyAroundContentsPixels() const
{
    return Metrics::frameOnlyAroundContentsPixels(this);
}
