// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoEditorSortFilterProxyModel.h"

#include <limits>

#include "repo/RepoEditorModel.h"

namespace RepoEditor {

namespace {

bool isDigit(QChar character)
{
    const ushort code = character.unicode();
    return (code >= '0' && code <= '9') || (code > 127 && character.category() == QChar::Number_DecimalDigit);
}

// Returns the sequence of digits (or of other characters, if `digits` is false) that begins at `position`.
// Moves `position` to the end of this sequence.
QStringRef readRun(const QString& text, int& position, bool digits)
{
    const int begin = position;
    while (position < text.size() && isDigit(text.at(position)) == digits) {
        ++position;
    }
    return text.midRef(begin, position - begin);
}

// Converts digits to a number. If the number is too large for the type, returns the largest number of the
// type.
quint64 toNumber(const QStringRef& digits)
{
    quint64 number = 0;
    for (const QChar digit : digits) {
        const quint64 value = static_cast<quint64>(digit.digitValue());
        if (number > (std::numeric_limits<quint64>::max() - value) / 10) {
            return std::numeric_limits<quint64>::max();
        }
        number = 10 * number + value;
    }
    return number;
}

bool naturalLessThan(const QString& left, const QString& right)
{
    int leftPosition = 0;
    int rightPosition = 0;
    const auto exhausted = [&]() { return leftPosition == left.size() && rightPosition == right.size(); };
    while (!exhausted()) {
        const int order = QStringRef::compare(readRun(left, leftPosition, false),
                                              readRun(right, rightPosition, false), Qt::CaseSensitive);
        if (order != 0) {
            return order < 0;
        }
        const quint64 leftNumber = toNumber(readRun(left, leftPosition, true));
        const quint64 rightNumber = toNumber(readRun(right, rightPosition, true));
        if (leftNumber != rightNumber) {
            return leftNumber < rightNumber;
        }
    }
    return false;
}

} // namespace

SortFilterProxyModel::SortFilterProxyModel(QObject* parent) : QSortFilterProxyModel(parent) {}

QVariant SortFilterProxyModel::data(const QModelIndex& index, int role) const
{
    const auto* repositories = qobject_cast<const Model*>(sourceModel());
    if (role == Qt::AccessibleTextRole && repositories != nullptr &&
        (index.column() == SessionColumn || index.column() == PermanentColumn)) {
        return repositories->isTicked(mapToSource(index)) ? tr("Yes") : tr("No");
    }
    return QSortFilterProxyModel::data(index, role);
}

bool SortFilterProxyModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    if (left.column() == IdentifierColumn || left.column() == NameColumn) {
        const QVariant leftText = left.data();
        const QVariant rightText = right.data();
        if (leftText.type() == QVariant::String && rightText.type() == QVariant::String) {
            return naturalLessThan(leftText.toString(), rightText.toString());
        }
    }
    return QSortFilterProxyModel::lessThan(left, right);
}

} // namespace RepoEditor
