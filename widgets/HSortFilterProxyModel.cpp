// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HSortFilterProxyModel.h"

#include <QDate>
#include <QDateTime>
#include <QRegExp>
#include <QTime>
#include <QVariant>

#include "widgets/HAbstractTableModel.h"

namespace {

enum class Order { Less, Equal, Greater };

template <typename Value> Order orderAs(const QVariant& left, const QVariant& right)
{
    const Value l = left.value<Value>();
    const Value r = right.value<Value>();
    return l < r ? Order::Less : l == r ? Order::Equal : Order::Greater;
}

Order order(const QVariant& left, const QVariant& right)
{
    switch (left.userType()) {
    case QMetaType::Int:
        return orderAs<int>(left, right);
    case QMetaType::UInt:
        return orderAs<unsigned int>(left, right);
    case QMetaType::LongLong:
        return orderAs<qlonglong>(left, right);
    case QMetaType::ULongLong:
        return orderAs<qulonglong>(left, right);
    case QMetaType::Double:
        return orderAs<double>(left, right);
    case QMetaType::QChar:
        return orderAs<QChar>(left, right);
    case QMetaType::QDate:
        return orderAs<QDate>(left, right);
    case QMetaType::QTime:
        return orderAs<QTime>(left, right);
    case QMetaType::QDateTime:
        return orderAs<QDateTime>(left, right);
    default:
        return orderAs<QString>(left, right);
    }
}

} // namespace

HSortFilterProxyModel::HSortFilterProxyModel(int column, QObject* parent)
    : QSortFilterProxyModel(parent), secondarySortColumn(column)
{
}

void HSortFilterProxyModel::setSourceModel(HAbstractTableModel* model)
{
    QSortFilterProxyModel::setSourceModel(model);
    source = model;
}

void HSortFilterProxyModel::setSourceModel(QAbstractItemModel* model)
{
    QSortFilterProxyModel::setSourceModel(model);
    source = qobject_cast<HAbstractTableModel*>(model);
}

void HSortFilterProxyModel::filterChanged()
{
    invalidateFilter();
    sortFromScratch();
}

void HSortFilterProxyModel::clear()
{
    invalidate();
    sortFromScratch();
}

void HSortFilterProxyModel::setFilterRegExp(const QString& pattern)
{
    QSortFilterProxyModel::setFilterRegExp(pattern);
    sortFromScratch();
}

void HSortFilterProxyModel::setFilterRegExp(const QRegExp& regExp)
{
    QSortFilterProxyModel::setFilterRegExp(regExp);
    sortFromScratch();
}

void HSortFilterProxyModel::sortFromScratch()
{
    if (source != nullptr) {
        source->forceSortColumnRediscovery();
    }
    sort(sortColumn(), sortOrder());
}

bool HSortFilterProxyModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    switch (order(left.data(Qt::DisplayRole), right.data(Qt::DisplayRole))) {
    case Order::Less:
        return true;
    case Order::Greater:
        return false;
    case Order::Equal:
        break;
    }
    // Rows that are equal in both columns keep their order, because the base class sorts stably.
    const QModelIndex secondary = createSecondarySortIndex(left);
    return left.column() != secondarySortColumn && secondary.isValid() &&
           lessThan(secondary, createSecondarySortIndex(right));
}

QModelIndex HSortFilterProxyModel::createSecondarySortIndex(const QModelIndex& index) const
{
    return source != nullptr ? source->index(index.row(), secondarySortColumn, QModelIndex()) : QModelIndex();
}
