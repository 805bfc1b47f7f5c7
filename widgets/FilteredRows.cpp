// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/FilteredRows.h"

#include <QDateTime>

#include <algorithm>
#include <utility>

#include "widgets/ParallelMatching.h"

namespace {

// If the graphical thread has compared rows for this number of milliseconds, it gives up, and other threads
// compare the rows.
constexpr int quickTime = 30;
// The graphical thread checks the elapsed time each time it has compared this number of bytes.
constexpr int bytesBetweenChecks = 16384;
// The number of milliseconds between two checks whether the other threads have finished.
constexpr int checkInterval = 20;
// After this number of milliseconds, a window shows that a comparison runs.
constexpr int longTime = 200;
// If a new expression replaces the expression of a running comparison, the new comparison begins after this
// number of milliseconds. The user is probably typing, and each comparison may leave threads behind.
constexpr int typingPause = 200;

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
    : QAbstractProxyModel(parent), isListed(true), comparing(false), isLong(false), sortedBy(-1),
      sortedIn(Qt::AscendingOrder)
{
    connect(&checkTimer, SIGNAL(timeout()), this, SLOT(checkMatching()));
}

FilteredRows::~FilteredRows() = default;

void FilteredRows::setSourceModel(QAbstractItemModel* model)
{
    sourceAboutToChange();
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
    sourceHasChanged();
}

void FilteredRows::setExpression(const QString& newText)
{
    const bool wasComparing = comparing;
    stopMatching();
    wantedText = newText;
    expression = Expression::withoutOuterAny(newText);
    pattern.compile(expression);
    const bool known = expression.isEmpty() || texts != nullptr;
    if (isListed && known && expression == Expression::withoutOuterAny(listedText)) {
        listedText = wantedText;
        reportLong(false);
    } else {
        filter(wasComparing);
    }
}

// Lists the rows that match the expression: immediately, or when other threads have compared the rows.
void FilteredRows::filter(bool soon)
{
    std::vector<char> found;
    if (compare(found)) {
        beginResetModel();
        setListed(std::move(found));
        map();
        endResetModel();
        reportLong(false);
    } else if (soon) {
        checkTimer.start(typingPause);
    } else {
        startMatching();
    }
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
    stopMatching();
    texts.reset();
    sourceRows.clear();
    ownRows.clear();
}

void FilteredRows::sourceHasChanged()
{
    std::vector<char> found;
    if (compare(found)) {
        setListed(std::move(found));
    } else {
        isListed = false;
        listedText.clear();
        accepted.clear();
    }
    map();
    endResetModel();
    if (comparing) {
        startMatching();
    } else {
        reportLong(false);
    }
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
    texts.reset();
    if (comparing) {
        stopMatching();
        filter(true);
    }
}

// --- Comparing the rows with the expression

int FilteredRows::rowsOfSource() const
{
    return sourceModel() != nullptr ? sourceModel()->rowCount() : 0;
}

void FilteredRows::joinTexts()
{
    const int rows = rowsOfSource();
    const int columns = sourceModel()->columnCount();
    auto joined = std::make_shared<Texts>();
    joined->reserve(static_cast<size_t>(rows));
    for (int row = 0; row < rows; ++row) {
        QStringList all;
        all.reserve(columns + 1);
        for (int column = 0; column < columns; ++column) {
            all.append(sourceModel()->index(row, column).data().toString());
        }
        const QString further = sourceModel()->index(row, 0).data(SearchRole).toString();
        if (!further.isEmpty()) {
            all.append(further);
        }
        joined->push_back(all.join(QLatin1Char(' ')).toUtf8());
    }
    texts = joined;
}

// Finds out for each row whether it matches the expression. If this takes too long for the graphical thread,
// sets `comparing` to true and returns false; the caller must then call startMatching().
bool FilteredRows::compare(std::vector<char>& found)
{
    const int rows = rowsOfSource();
    if (rows == 0 || expression.isEmpty() || !pattern.isValid()) {
        if (expression.isEmpty()) {
            texts.reset(); // the user does not filter the rows
        }
        found.assign(static_cast<size_t>(rows), expression.isEmpty() ? 1 : 0);
        return true;
    }
    if (texts == nullptr) {
        joinTexts();
    }
    if (compareQuickly(found)) {
        return true;
    }
    comparing = true;
    running.start();
    return false;
}

bool FilteredRows::compareQuickly(std::vector<char>& found) const
{
    // If the expression refers to its groups, comparing it with a single row may already take hours.
    if (Expression::refersToGroups(expression)) {
        return false;
    }
    QElapsedTimer elapsed;
    elapsed.start();
    found.reserve(texts->size());
    int bytes = 0;
    for (const QByteArray& each : *texts) {
        found.push_back(pattern.matches(each.constData()) ? 1 : 0);
        bytes += each.size();
        if (bytes > bytesBetweenChecks) {
            bytes = 0;
            if (elapsed.elapsed() >= quickTime) {
                return false;
            }
        }
    }
    return true;
}

void FilteredRows::startMatching()
{
    matching = std::make_unique<ParallelMatching>(expression, texts->size(),
                                                  [own = texts](const Expression& each, size_t index) {
                                                      return each.matches((*own)[index].constData());
                                                  });
    checkTimer.start(checkInterval);
    // Wait, because the threads finish most comparisons within some milliseconds.
    matching->wait(quickTime);
    checkMatching();
}

// Ends the comparison without a result. The threads end by themselves.
void FilteredRows::stopMatching()
{
    matching.reset();
    checkTimer.stop();
    comparing = false;
}

void FilteredRows::checkMatching()
{
    if (matching == nullptr) {
        startMatching();
    } else if (!matching->wait(0)) {
        reportLong(isLong || running.elapsed() >= longTime);
    } else {
        std::vector<char> found = matching->found();
        stopMatching();
        // If the source model no longer exists, ignore the result.
        if (found.size() == static_cast<size_t>(rowsOfSource())) {
            beginResetModel();
            setListed(std::move(found));
            map();
            endResetModel();
        }
        reportLong(false);
    }
}

void FilteredRows::reportLong(bool now)
{
    if (isLong != now) {
        isLong = now;
        Q_EMIT longComparison(now);
    }
}

void FilteredRows::setListed(std::vector<char> found)
{
    accepted = std::move(found);
    listedText = wantedText;
    isListed = true;
}

void FilteredRows::map()
{
    sourceRows.clear();
    ownRows.clear();
    if (sourceModel() == nullptr) {
        return;
    }
    const int rows = rowsOfSource();
    for (int row = 0; row < rows; ++row) {
        if (static_cast<size_t>(row) < accepted.size() && accepted[static_cast<size_t>(row)] != 0) {
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
