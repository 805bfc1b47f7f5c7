// SPDX-License-Identifier: GPL-2.0-or-later

#include "history/HistoryModel.h"

#include <QDateTime>

#include "widgets/Colors.h"
#include "widgets/FilteredRows.h"

HistoryModel::HistoryModel(QObject* parent) : HAbstractTableModel(parent), background(Qt::white) {}

void HistoryModel::setRecords(const HistoryRecords& newRecords)
{
    beginResetModel();
    records = newRecords;
    endResetModel();
}

int HistoryModel::rowOf(qint64 number) const
{
    for (int row = 0; row < records.size(); ++row) {
        if (records.at(row).number == number) {
            return row;
        }
    }
    return -1;
}

int HistoryModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : records.size();
}

int HistoryModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QString HistoryModel::word(HistoryRecord::Result result)
{
    switch (result) {
    case HistoryRecord::Failed:
        return tr("Failed");
    case HistoryRecord::Interrupted:
        return tr("Interrupted");
    case HistoryRecord::Succeeded:
        break;
    }
    return tr("Succeeded");
}

QString HistoryModel::text(const HistoryRecord& record, int column)
{
    switch (column) {
    case Number:
        return QString::number(record.number);
    case Time:
        return QDateTime::fromSecsSinceEpoch(record.begin).toString(QStringLiteral("yyyy-MM-dd HH:mm"));
    case User:
        return record.user;
    case CommandLine:
        return record.commandLine;
    case Changes:
        return record.changes;
    case Result:
        return word(record.result);
    case Output:
        return record.outputLines == 0 ? QString() : QString::number(record.outputLines);
    default:
        return QString();
    }
}

QVariant HistoryModel::sortKey(const HistoryRecord& record, int column) const
{
    switch (column) {
    case Number:
        return record.number;
    case Time:
        return record.begin;
    case Output:
        return record.outputLines;
    default:
        return QVariant();
    }
}

QVariant HistoryModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= records.size()) {
        return QVariant();
    }
    const HistoryRecord& record = records.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return text(record, index.column());
    case Qt::ForegroundRole:
        if (index.column() == Result && record.result != HistoryRecord::Succeeded) {
            const QString name = record.result == HistoryRecord::Failed ? Colors::error() : Colors::warning();
            return QColor(Colors::readable(name, background));
        }
        return QVariant();
    case FilteredRows::SortRole:
        return sortKey(record, index.column());
    case FilteredRows::SearchRole:
        return record.names;
    default:
        return QVariant();
    }
}

QVariant HistoryModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || (role != Qt::DisplayRole && role != Qt::ToolTipRole)) {
        return QVariant();
    }
    const bool tip = role == Qt::ToolTipRole;
    switch (section) {
    case Number:
        return tip ? tr("The number of the transaction, as in \"dnf history\"") : tr("Number");
    case Time:
        return tip ? tr("When the transaction began") : tr("Time");
    case User:
        return tip ? tr("Who was logged in") : tr("User");
    case CommandLine:
        return tip ? tr("The command, or the marks that VYRE applied") : tr("Command Line");
    case Changes:
        return tip ? tr("The changed packages and groups, or their number; \"(failed)\" marks changes that "
                        "were not made")
                   : tr("Changes");
    case Result:
        return tip ? tr("Whether the transaction succeeded, failed or was interrupted") : tr("Result");
    case Output:
        return tip ? tr("The number of output lines of package scripts that dnf has kept") : tr("Output");
    default:
        return QVariant();
    }
}

void HistoryModel::setBackground(const QColor& color)
{
    background = color;
}
