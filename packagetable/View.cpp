#include "packagetable/View.h"

#include <QEvent>
#include <QFontMetricsF>
#include <QHeaderView>
#include <QScopedValueRollback>
#include <QSet>
#include <QVector>

#include <algorithm>
#include <array>
#include <limits>

#include "packagetable/ActionContextMenu.h"
#include "packagetable/Model.h"
#include "packagetable/OtherContextMenu.h"
#include "packagetable/SortFilterProxyModel.h"

namespace PackageTable {

namespace {

// Adds up the widths of single characters, far quicker than a text is measured. Kerning makes the text itself
// a little narrower or wider.
class WidthEstimate
{
public:
    explicit WidthEstimate(const QFont& font)
    {
        const QFontMetricsF metrics(font);
        for (size_t i = 0; i < widths.size(); ++i) {
#if QT_VERSION >= QT_VERSION_CHECK(5, 11, 0)
            widths[i] = metrics.horizontalAdvance(QLatin1Char(static_cast<char>(i)));
#else
            widths[i] = metrics.width(QLatin1Char(static_cast<char>(i)));
#endif
        }
    }

    // Infinite for a text that is not all ASCII: nothing is known about other scripts.
    qreal operator()(const QString& text) const
    {
        qreal sum = 0;
        for (const QChar& character : text) {
            if (character.unicode() >= widths.size()) {
                return std::numeric_limits<qreal>::infinity();
            }
            sum += widths[character.unicode()];
        }
        return sum;
    }

private:
    std::array<qreal, 128> widths;
};

} // namespace

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
    verticalHeader()->hide();
    // All rows are one line high; asking each of them for its height would take its time.
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);

    auto* header = new QHeaderView(Qt::Horizontal, this);
    header->setSectionsMovable(true);
    header->setSectionsClickable(true);
    header->setSortIndicatorShown(true);
    header->setHighlightSections(false);
    // Otherwise a click with the right button reaches the view, as one on the row at that height.
    header->setContextMenuPolicy(Qt::PreventContextMenu);
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
    const QScopedValueRollback<bool> fitting(fittingRecords, true);
    HTableView::resizeColumnsToContents();
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
    if (column < NameColumn) {
        QSet<int> icons;
        for (int row = 0; row < count; ++row) {
            const int icon = rows->index(row, column).data(Qt::UserRole).toInt();
            if (!icons.contains(icon)) {
                icons.insert(icon);
                width = qMax(width, measured(row));
            }
        }
        return width;
    }
    // What is measured is the text that looks widest, and then those that come close to it.
    const WidthEstimate estimate(option.font);
    QVector<qreal> estimates(count);
    for (int row = 0; row < count; ++row) {
        estimates[row] = estimate(rows->index(row, column).data().toString());
    }
    const auto widest = std::max_element(estimates.cbegin(), estimates.cend());
    width = measured(static_cast<int>(widest - estimates.cbegin()));
    const qreal margin = QFontMetricsF(option.font).height();
    QSet<QString> texts;
    for (int row = 0; row < count; ++row) {
        if (estimates.at(row) + margin > width) {
            const QString text = rows->index(row, column).data().toString();
            if (!texts.contains(text)) {
                texts.insert(text);
                width = qMax(width, measured(row));
            }
        }
    }
    return width;
}

void View::reset()
{
    HTableView::reset();
    // There is no current row any more, and the selection does not tell.
    if (currentRow != -1) {
        const int previousRow = currentRow;
        currentRow = -1;
        Q_EMIT currentChanged(-1, previousRow);
    }
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
    const int previousRow = proxy->mapToSource(previous).row();
    currentRow = proxy->mapToSource(current).row();
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
