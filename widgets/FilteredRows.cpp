// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/FilteredRows.h"

#include <QDateTime>

#include <algorithm>

namespace {

bool isNumber(const QVariant& value)
{
    switch (value.userType()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return true;
    default:
        return false;
    }
}

// The value of a cell by which rows are sorted.
struct Key
{
    explicit Key(const QVariant& value)
    {
        if (isNumber(value)) {
            number = value.toLongLong();
        } else if (value.userType() == QMetaType::QDateTime) {
            const QDateTime time = value.toDateTime();
            number = time.isValid() ? time.toMSecsSinceEpoch() : 0;
        } else {
            text = value.toString();
        }
    }

    bool operator<(const Key& other) const
    {
        return number != other.number ? number < other.number
                                      : text.compare(other.text, Qt::CaseInsensitive) < 0;
    }

    qint64 number = 0;
    QString text;
};

} // namespace

FilteredRows::FilteredRows(QObject* parent)
    : QAbstractProxyModel(parent), sortedBy(-1), sortedIn(Qt::AscendingOrder)
{
}

void FilteredRows::setSourceModel(QAbstractItemModel* model)
{
    beginResetModel();
    if (sourceModel() != nullptr) {
        disconnect(sourceModel(), nullptr, this, nullptr);
    }
    QAbstractProxyModel::setSourceModel(model);
    if (model != nullptr) {
        connect(model, SIGNAL(modelAboutToBeReset()), this, SLOT(sourceAboutToChange()));
        connect(model, SIGNAL(modelReset()), this, SLOT(sourceHasChanged()));
        connect(model, SIGNAL(rowsAboutToBeInserted(const QModelIndex&, int, int)), this,
                SLOT(sourceAboutToChange()));
        connect(model, SIGNAL(rowsInserted(const QModelIndex&, int, int)), this, SLOT(sourceHasChanged()));
        connect(model, SIGNAL(rowsAboutToBeRemoved(const QModelIndex&, int, int)), this,
                SLOT(sourceAboutToChange()));
        connect(model, SIGNAL(rowsRemoved(const QModelIndex&, int, int)), this, SLOT(sourceHasChanged()));
        connect(model, SIGNAL(dataChanged(const QModelIndex&, const QModelIndex&, const QVector<int>&)), this,
                SLOT(sourceDataChanged(const QModelIndex&, const QModelIndex&, const QVector<int>&)));
    }
    map();
    endResetModel();
}

void FilteredRows::setExpression(const QString& text)
{
    beginResetModel();
    expression = Expression::withoutOuterAny(text);
    pattern.compile(expression);
    map();
    endResetModel();
}

void FilteredRows::sort(int column, Qt::SortOrder order)
{
    beginResetModel();
    sortedBy = column;
    sortedIn = order;
    map();
    endResetModel();
}

void FilteredRows::sourceAboutToChange()
{
    beginResetModel();
    sourceRows.clear();
    ownRows.clear();
}

void FilteredRows::sourceHasChanged()
{
    map();
    endResetModel();
}

// Rows do not move when their data change. They move when the user filters or sorts again.
void FilteredRows::sourceDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                                     const QVector<int>& roles)
{
    for (int row = topLeft.row(); row <= bottomRight.row(); ++row) {
        const QModelIndex first = mapFromSource(topLeft.sibling(row, topLeft.column()));
        if (first.isValid()) {
            Q_EMIT dataChanged(first, index(first.row(), bottomRight.column()), roles);
        }
    }
}

bool FilteredRows::matches(int sourceRow) const
{
    if (expression.isEmpty()) {
        return true;
    }
    if (!pattern.isValid()) {
        return false;
    }
    QStringList texts;
    const int columns = sourceModel()->columnCount();
    texts.reserve(columns);
    for (int column = 0; column < columns; ++column) {
        texts.append(sourceModel()->index(sourceRow, column).data().toString());
    }
    const QString further = sourceModel()->index(sourceRow, 0).data(SearchRole).toString();
    if (!further.isEmpty()) {
        texts.append(further);
    }
    return pattern.matches(texts.join(QLatin1Char(' ')).toUtf8().constData());
}

void FilteredRows::map()
{
    sourceRows.clear();
    ownRows.clear();
    if (sourceModel() == nullptr) {
        return;
    }
    const int rows = sourceModel()->rowCount();
    for (int row = 0; row < rows; ++row) {
        if (matches(row)) {
            sourceRows.push_back(row);
        }
    }
    if (sortedBy >= 0 && sortedBy < sourceModel()->columnCount()) {
        std::vector<Key> keys;
        keys.reserve(static_cast<size_t>(rows));
        for (int row = 0; row < rows; ++row) {
            const QModelIndex cell = sourceModel()->index(row, sortedBy);
            const QVariant key = cell.data(SortRole);
            keys.emplace_back(key.isValid() ? key : cell.data());
        }
        const auto at = [&keys](int row) -> const Key& { return keys[static_cast<size_t>(row)]; };
        if (sortedIn == Qt::AscendingOrder) {
            std::stable_sort(sourceRows.begin(), sourceRows.end(),
                             [&at](int l, int r) { return at(l) < at(r); });
        } else {
            std::stable_sort(sourceRows.begin(), sourceRows.end(),
                             [&at](int l, int r) { return at(r) < at(l); });
        }
    }
    ownRows.assign(static_cast<size_t>(rows), -1);
    for (size_t row = 0; row < sourceRows.size(); ++row) {
        ownRows[static_cast<size_t>(sourceRows[row])] = static_cast<int>(row);
    }
}

QModelIndex FilteredRows::index(int row, int column, const QModelIndex& parent) const
{
    return row >= 0 && row < rowCount(parent) && column >= 0 && column < columnCount(parent)
               ? createIndex(row, column)
               : QModelIndex();
}

QModelIndex FilteredRows::parent(const QModelIndex&) const
{
    return QModelIndex();
}

QModelIndex FilteredRows::sibling(int row, int column, const QModelIndex&) const
{
    return index(row, column);
}

int FilteredRows::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() || sourceModel() == nullptr ? 0 : static_cast<int>(sourceRows.size());
}

int FilteredRows::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() || sourceModel() == nullptr ? 0 : sourceModel()->columnCount();
}

bool FilteredRows::hasChildren(const QModelIndex& parent) const
{
    return rowCount(parent) > 0;
}

QVariant FilteredRows::headerData(int section, Qt::Orientation orientation, int role) const
{
    return sourceModel() != nullptr && orientation == Qt::Horizontal
               ? sourceModel()->headerData(section, orientation, role)
               : QVariant();
}

QModelIndex FilteredRows::mapToSource(const QModelIndex& listed) const
{
    if (!listed.isValid() || sourceModel() == nullptr || listed.row() >= rowCount()) {
        return QModelIndex();
    }
    return sourceModel()->index(sourceRows[static_cast<size_t>(listed.row())], listed.column());
}

QModelIndex FilteredRows::mapFromSource(const QModelIndex& sourceIndex) const
{
    const auto row = static_cast<size_t>(sourceIndex.row());
    return sourceIndex.isValid() && row < ownRows.size() ? index(ownRows[row], sourceIndex.column())
                                                         : QModelIndex();
}
