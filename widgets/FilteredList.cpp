// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/FilteredList.h"

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QHelpEvent>
#include <QHideEvent>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QShowEvent>
#include <QSplitter>
#include <QToolTip>
#include <QVBoxLayout>

#include <algorithm>
#include <limits>
#include <vector>

#include "widgets/ExpressionEdit.h"
#include "widgets/FilteredRows.h"
#include "widgets/HAbstractTableModel.h"
#include "widgets/HItemDelegate.h"
#include "widgets/HTableView.h"
#include "widgets/Literal.h"
#include "widgets/Metrics.h"
#include "widgets/PlainLabel.h"

namespace {

// A column whose texts are wider than this number of letters is narrowed if the list has too little width.
constexpr int widestColumn = 30;
// The smallest width of a narrowed column, in letters.
constexpr int narrowestColumn = 12;
// The number of texts of a column that are measured. These are the texts with the most characters.
constexpr size_t measuredTexts = 8;
// The value of `reported` if the row is unknown. No row has this number.
constexpr int unknownRow = -2;

// A delegate for cells to which the model gives no tool tip: if the column is too narrow for the text of such
// a cell, the tool tip shows the whole text.
class Cells : public HItemDelegate
{
public:
    using HItemDelegate::HItemDelegate;

    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override
    {
        const QRect cell = view->visualRect(index);
        if (event->type() == QEvent::ToolTip && index.data(Qt::ToolTipRole).toString().isEmpty() &&
            sizeHint(option, index).width() > cell.width()) {
            const QString text = index.data().toString();
            QToolTip::showText(event->globalPos(), Literal::toolTip(text), view->viewport(), cell);
            return true;
        }
        return HItemDelegate::helpEvent(event, view, option, index);
    }
};

// A table with a fixed size hint. The hint does not depend on the columns, because the user can make each
// column narrower.
class Table : public HTableView
{
public:
    explicit Table(QWidget* parent)
        : HTableView(QStyleOptionViewItem::Left, 8, std::numeric_limits<int>::max(), parent)
    {
    }

    QSize sizeHint() const override
    {
        return {116 * Metrics::columnWidth(fontMetrics()), 11 * verticalHeader()->defaultSectionSize()};
    }
};

} // namespace

FilteredList::FilteredList(HAbstractTableModel* records, const QString& name, QWidget* parent)
    : QWidget(parent), model(records), rows(new FilteredRows(this)), edit(new ExpressionEdit(this)),
      countLabel(new PlainLabel(this)), splitter(new QSplitter(Qt::Vertical, this)),
      table(new Table(splitter)), comparingLong(false), reported(-1), listing(false), sharing(false)
{
    auto* editLabel = new PlainLabel(tr("&Filter"), this);
    editLabel->setBuddy(edit);
    edit->setAccessibleName(tr("Regular expression"));
    edit->setToolTip(tr("Regular expression filter matching the texts of a row,\n"
                        "as if they were separated by spaces"));
    edit->setClearButtonEnabled(true);
    edit->installEventFilter(this);
    connect(edit, SIGNAL(textChanged(const QString&)), this, SLOT(applyExpression()));

    // Connect this slot before the view connects its own slot: aboutToList() must store the current row
    // before the view loses the current row.
    connect(rows, SIGNAL(modelAboutToBeReset()), this, SLOT(aboutToList()));
    rows->setSourceModel(model);
    table->setModel(rows);
    connect(rows, SIGNAL(modelReset()), this, SLOT(listed()));
    connect(rows, SIGNAL(longComparison(bool)), this, SLOT(handleLongComparison(bool)));
    table->setAccessibleName(name);
    table->setItemDelegate(new Cells(table));
    table->setShowGrid(false);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setAlternatingRowColors(true);
    table->setTabKeyNavigation(false); // otherwise the Tab key would stop at each cell
    table->setWordWrap(false);
    table->verticalHeader()->hide();
    table->setOneLineRows();
    QHeaderView* header = table->horizontalHeader();
    header->setSectionsClickable(true);
    header->setHighlightSections(false);
    header->setStretchLastSection(true);
    header->setContextMenuPolicy(Qt::PreventContextMenu);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setSortIndicatorShown(true);
    header->setSortIndicator(-1, Qt::AscendingOrder);
    connect(header, SIGNAL(sectionClicked(int)), this, SLOT(handleHeader(int)));
    connect(header, SIGNAL(sectionResized(int, int, int)), this, SLOT(columnResized(int)));
    table->viewport()->installEventFilter(this);
    connect(table, SIGNAL(activated(const QModelIndex&)), this, SLOT(handleActivated(const QModelIndex&)));
    connect(table->selectionModel(), SIGNAL(selectionChanged(const QItemSelection&, const QItemSelection&)),
            this, SLOT(handleSelection()));
    connect(table->selectionModel(), SIGNAL(currentChanged(const QModelIndex&, const QModelIndex&)), this,
            SLOT(handleSelection()));

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* row = new QHBoxLayout;
    layout->addLayout(row);
    row->addWidget(editLabel);
    row->addWidget(edit, 1);
    row->addWidget(countLabel);
    splitter->addWidget(table);
    splitter->setChildrenCollapsible(false);
    layout->addWidget(splitter, 1);
    setTabOrder(edit, table);
    selectCurrent(-1);
    reported = currentRow();
    updateTexts();
}

void FilteredList::setEmptyText(const QString& text)
{
    emptyText = text;
    updateTexts();
}

void FilteredList::setDetails(QWidget* details)
{
    splitter->addWidget(details);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 1);
}

void FilteredList::fitColumns()
{
    textWidths.clear();
    for (int column = 0; column < model->columnCount(); ++column) {
        textWidths.push_back(qMax(table->horizontalHeader()->sectionSizeHint(column), widthOfTexts(column)));
    }
    shareWidth();
}

int FilteredList::widthOfTexts(int column) const
{
    const QFontMetrics metrics = table->fontMetrics();
    const int count = model->rowCount();
    std::vector<QString> texts;
    texts.reserve(static_cast<size_t>(count));
    for (int row = 0; row < count; ++row) {
        texts.push_back(model->index(row, column).data().toString());
    }
    const size_t measured = std::min(measuredTexts, texts.size());
    std::partial_sort(texts.begin(), texts.begin() + static_cast<std::ptrdiff_t>(measured), texts.end(),
                      [](const QString& l, const QString& r) { return l.length() > r.length(); });
    int width = 0;
    for (size_t i = 0; i < measured; ++i) {
        width = qMax(width, metrics.boundingRect(texts[i]).width());
    }
    // Add the margins that the delegate leaves on both sides of a text.
    return width + 2 * Metrics::columnWidth(metrics);
}

void FilteredList::shareWidth()
{
    const QHeaderView* header = table->horizontalHeader();
    const int letter = Metrics::columnWidth(table->fontMetrics());
    std::vector<int> widths = textWidths;
    std::vector<size_t> narrowed;
    int free = table->viewport()->width();
    for (size_t column = 0; column < widths.size(); ++column) {
        if (widths[column] > widestColumn * letter) {
            widths[column] =
                qMax(header->sectionSizeHint(static_cast<int>(column)), narrowestColumn * letter);
            narrowed.push_back(column);
        }
        free -= widths[column];
    }
    // Begin with the column that needs the least additional width: if its share of the free width is more
    // than this column needs, the other columns get the rest.
    std::sort(narrowed.begin(), narrowed.end(), [this, &widths](size_t l, size_t r) {
        return textWidths[l] - widths[l] < textWidths[r] - widths[r];
    });
    for (size_t i = 0; i < narrowed.size() && free > 0; ++i) {
        const size_t column = narrowed[i];
        const int share =
            qMin(free / static_cast<int>(narrowed.size() - i), textWidths[column] - widths[column]);
        widths[column] += share;
        free -= share;
    }
    sharing = true;
    for (size_t column = 0; column < widths.size(); ++column) {
        // The last column gets at least this width: setStretchLastSection() then widens it to fill the list.
        table->setColumnWidth(static_cast<int>(column), widths[column]);
    }
    sharing = false;
}

void FilteredList::columnResized(int column)
{
    // When the width of the list changes, the width of the last column changes too.
    if (!sharing && column != model->columnCount() - 1) {
        textWidths.clear(); // from now on, the user decides
    }
}

void FilteredList::handleHeader(int column)
{
    table->sortByColumn(column);
}

QString FilteredList::expression() const
{
    return edit->text();
}

void FilteredList::setExpression(const QString& text)
{
    edit->setText(text);
}

void FilteredList::applyExpression()
{
    rows->setExpression(edit->text());
    edit->showValid(rows->isValidExpression());
    updateTexts();
}

bool FilteredList::stopComparing()
{
    if (!rows->isComparing()) {
        return false;
    }
    // Do not call setText(), because Ctrl+Z could then not bring the stopped expression back.
    const QString listedExpression = rows->listedExpression();
    edit->selectAll();
    edit->insert(listedExpression);
    if (!rows->isValidExpression()) {
        // Remove the invalid expression: probably, the user had typed only a part of it.
        edit->selectAll();
        edit->insert(QString());
    }
    return true;
}

void FilteredList::handleLongComparison(bool running)
{
    comparingLong = running;
    updateTexts();
}

void FilteredList::updateTexts()
{
    if (model->rowCount() == 0) {
        table->setEmptyText(emptyText);
    } else if (rows->isComparing()) {
        table->setEmptyText(tr("Comparing the rows with the expression..."));
    } else if (!rows->isValidExpression()) {
        table->setEmptyText(tr("This is not a valid regular expression:\n%1").arg(rows->expressionFault()));
    } else {
        table->setEmptyText(tr("Nothing matches."));
    }
    countLabel->setText(comparingLong ? tr("Comparing the rows (Esc stops)")
                                      : tr("%1 of %2 listed").arg(rows->rowCount()).arg(model->rowCount()));
}

// --- The current row

int FilteredList::currentRow() const
{
    return rows->mapToSource(table->currentIndex()).row();
}

void FilteredList::setCurrentRow(int row)
{
    if (rows->isComparing()) {
        wanted = QPersistentModelIndex(model->index(row, 0));
    }
    selectCurrent(row);
    reportCurrent();
}

QList<int> FilteredList::selectedRows() const
{
    QList<int> found;
    for (const QModelIndex& index : table->selectedRows()) {
        found.append(index.row());
    }
    std::sort(found.begin(), found.end());
    for (int& row : found) {
        row = rows->mapToSource(rows->index(row, 0)).row();
    }
    return found;
}

void FilteredList::aboutToList()
{
    listing = true;
    const int row = currentRow();
    // If the model is reset, this persistent index becomes invalid. listed() then makes the first row
    // current.
    kept = row >= 0 ? QPersistentModelIndex(model->index(row, 0)) : wanted;
    wanted = QPersistentModelIndex();
}

void FilteredList::listed()
{
    const bool same = kept.isValid();
    selectCurrent(same ? kept.row() : -1);
    kept = QPersistentModelIndex();
    if (!same) {
        reported = unknownRow; // the row number may now belong to another record
    }
    listing = false;
    updateTexts();
    reportCurrent();
    Q_EMIT selectionChanged();
}

// Makes `row` the only selected row, and the current row. If the filter hides the row, uses the first listed
// row instead.
void FilteredList::selectCurrent(int row)
{
    QModelIndex index = rows->mapFromSource(model->index(row, 0));
    if (!index.isValid()) {
        index = rows->index(0, 0);
    }
    if (index.isValid()) {
        // Qt's setCurrentIndex() would not select the row while the user holds a modifier key, for example
        // the Ctrl key of the shortcut that has opened the window.
        table->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect |
                                                            QItemSelectionModel::Rows);
    }
}

void FilteredList::handleSelection()
{
    if (!listing) {
        reportCurrent();
        Q_EMIT selectionChanged();
    }
}

void FilteredList::reportCurrent()
{
    const int row = currentRow();
    if (row != reported) {
        reported = row;
        Q_EMIT currentChanged(row);
    }
}

void FilteredList::handleActivated(const QModelIndex& index)
{
    if (index.isValid()) {
        Q_EMIT activated(rows->mapToSource(index).row());
    }
}

void FilteredList::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    // A spontaneous event comes from the window manager, for example when it restores a minimized window.
    // Only a show event from the program means that the window opens.
    if (!event->spontaneous()) {
        table->setFocus();
    }
}

void FilteredList::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    if (!event->spontaneous()) {
        stopComparing();
    }
}

bool FilteredList::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == table->viewport() && event->type() == QEvent::Resize && !textWidths.empty()) {
        shareWidth();
    }
    // The Down key in the edit moves the focus to the list.
    if (watched == edit && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Down) {
        table->setFocus();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}
