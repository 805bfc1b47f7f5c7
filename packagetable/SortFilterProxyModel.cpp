// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/SortFilterProxyModel.h"

#include <QElapsedTimer>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <utility>

#include "packagetable/Columns.h"
#include "packagetable/SearchedTexts.h"
#include "widgets/CaselessPattern.h"
#include "widgets/HAbstractTableModel.h"
#include "yumio/YumIO.h"

namespace PackageTable {

int SortFilterProxyModel::fewRows = 10000;

namespace {

// prepareQuickly() gives up after this number of milliseconds.
constexpr int quickTime = 30;

// The same for a table with more than `fewRows` rows. In such a table, the other steps of a filter also take
// some milliseconds, and the graphical thread must serve events after 16 milliseconds.
constexpr int quickTimeOfLongTable = 8;

// After this number of milliseconds, prepareQuickly() estimates whether it will have to give up later.
constexpr int estimateTime = 4;

// If a search has found nothing, it looks for matches with a different letter case. It stops after this
// number of milliseconds. The result is only a hint.
constexpr int longestHintTime = 1000;

// The same for a filter, which is usually much quicker than a search.
constexpr int longestFilterHintTime = 200;

// Returns the texts that a search compares, for the records of these rows.
std::shared_ptr<SearchedTexts> textsOf(YumIO& yumIO, const QVector<int>& rows,
                                       const std::shared_ptr<CaselessPattern>& caseless)
{
    QVector<const Package::Entry*> records;
    records.reserve(rows.count());
    for (const int row : rows) {
        records.append(yumIO[row]);
    }
    return std::make_shared<SearchedTexts>(records, caseless);
}

} // namespace

SortFilterProxyModel::SortFilterProxyModel(StateFilter state, bool withDups, bool withGroups, YumIO* backEnd,
                                           QObject* parent)
    : HSortFilterProxyModel(NameColumn, parent), mode(Filter), filtering(true), stateFilter(state),
      dups(withDups), groups(withGroups), yumIO(backEnd), source(nullptr), comingSettings(),
      comparedMode(Filter), comparison(0), foundIgnoringCase(false), hintIsKnown(false), sortedBy(-1),
      sortedIn(Qt::AscendingOrder), sortPauses(0), sortWanted(false), mapped(false), mapping(false)
{
    idle.setSingleShot(true);
    idle.setInterval(100); // the table is painted before this timer fires
    connect(&idle, SIGNAL(timeout()), this, SLOT(prepareTexts()));
}

void SortFilterProxyModel::setSourceModel(HAbstractTableModel* model)
{
    if (source != nullptr) {
        disconnect(source, nullptr, this, nullptr);
    }
    // Set `source` first: setSourceModel() notifies the views, which then read from the new model.
    source = model;
    dropMap();
    HSortFilterProxyModel::setSourceModel(model);
    if (source != nullptr) {
        // Disconnect the base class from the source model. Otherwise the base class would update its own map
        // after each change.
        disconnect(source, nullptr, this, nullptr);
        connect(source, SIGNAL(modelAboutToBeReset()), this, SLOT(sourceAboutToBeReset()));
        connect(source, SIGNAL(modelAboutToBeReset()), this, SLOT(clearCache()));
        connect(source, SIGNAL(modelReset()), this, SLOT(sourceReset()));
        connect(source, SIGNAL(dataChanged(const QModelIndex&, const QModelIndex&, const QVector<int>&)),
                this, SLOT(sourceChanged(const QModelIndex&, const QModelIndex&, const QVector<int>&)));
        connect(source, SIGNAL(destroyed()), this, SLOT(sourceDestroyed()));
    }
}

void SortFilterProxyModel::setMode(Mode newMode)
{
    if (mode != newMode) {
        mode = newMode;
        filterAgain();
    }
}

void SortFilterProxyModel::setStateFilter(StateFilter state)
{
    if (stateFilter != state) {
        stateFilter = state;
        filterAgain();
    }
}

void SortFilterProxyModel::setDupsFilter(bool withDups)
{
    if (dups != withDups) {
        dups = withDups;
        filterAgain();
    }
}

void SortFilterProxyModel::setGroupsFilter(bool withGroups)
{
    if (groups != withGroups) {
        groups = withGroups;
        filterAgain();
    }
}

void SortFilterProxyModel::setFilter(bool on)
{
    if (filtering != on) {
        filtering = on;
        filterAgain();
    }
}

void SortFilterProxyModel::setFilterRegExp(const QString& text)
{
    const QString stripped = Expression::withoutOuterAny(text);
    pattern.compile(stripped);

    const QRegExp changed(stripped, Qt::CaseSensitive, QRegExp::RegExp);
    if (changed != expression) {
        clearCache();
    }
    expression = changed;
    refilter(); // filters every record again
}

void SortFilterProxyModel::setUpdateListed()
{
    const int rows = rowCount();
    for (int row = 0; row < rows; ++row) {
        const QModelIndex listed = index(row, ActionColumn);
        Package::Entry* entry = (*yumIO)[mapToSource(listed).row()];
        if (entry->state == Package::Updatable && !yumIO->isLeftToUser(*entry)) {
            entry->action = Package::Update;
            Q_EMIT dataChanged(listed, listed);
        }
    }
    // Do not sort or filter now: rows move only when the user sorts or filters again.
    keys[ActionColumn].clear();
    if (sortedBy == ActionColumn) {
        order.clear();
    }
}

void SortFilterProxyModel::clear()
{
    comparison = 0;
    discardPrepared();
    filterAgain();
}

void SortFilterProxyModel::filterAgain()
{
    clearCache();
    refilter();
}

void SortFilterProxyModel::clearCache()
{
    verdicts.clear();
}

void SortFilterProxyModel::discardPrepared()
{
    comingVerdicts.clear();
    hintIsKnown = false;
}

void SortFilterProxyModel::sourceAboutToBeReset()
{
    beginResetModel();
    dropMap();
}

void SortFilterProxyModel::sourceReset()
{
    // Drop a map that a view may have built while the records changed, because this map is invalid.
    dropMap();
    adoptPrepared();
    endResetModel();
}

void SortFilterProxyModel::setPrepared(PreparedRows rows)
{
    prepared = std::move(rows);
}

void SortFilterProxyModel::adoptPrepared()
{
    PreparedRows rows;
    std::swap(rows, prepared);
    if (rows.count == 0 || rows.count != sourceRows()) {
        return;
    }
    nameRanks = std::move(rows.nameRanks);
    visible = rows.texts;
    visibleFrom = std::move(rows.textFrom);
    if (rows.sortedBy == sortedBy) {
        if (sortedBy >= 0) {
            keys[sortedBy] = std::move(rows.keys);
        }
        if (rows.sortedIn == sortedIn) {
            order = std::move(rows.order);
        }
    }
}

void SortFilterProxyModel::sourceDestroyed()
{
    setSourceModel(static_cast<HAbstractTableModel*>(nullptr));
}

void SortFilterProxyModel::dropMap()
{
    clearCache();
    discardPrepared();
    mapped = false;
    order.clear();
    listedRows.clear();
    proxyRows.clear();
    for (std::vector<qint64>& column : keys) {
        column.clear();
    }
    nameRanks.clear();
    visible.clear();
    visibleFrom.clear();
    idle.start();
}

void SortFilterProxyModel::sourceChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                                         const QVector<int>& roles)
{
    for (int row = topLeft.row(); row <= bottomRight.row(); ++row) {
        const QModelIndex first = mapFromSource(source->index(row, topLeft.column()));
        if (first.isValid()) {
            Q_EMIT dataChanged(first, index(first.row(), bottomRight.column()), roles);
        }
    }
    for (int column = topLeft.column(); column <= bottomRight.column(); ++column) {
        keys[column].clear();
    }
    if (sortedBy >= topLeft.column() && sortedBy <= bottomRight.column()) {
        if (sortPauses > 0) {
            sortWanted = true;
        } else {
            sort(sortedBy, sortedIn);
        }
    }
}

SortFilterProxyModel::SortPause::SortPause(SortFilterProxyModel& paused) : proxy(paused)
{
    ++proxy.sortPauses;
}

SortFilterProxyModel::SortPause::~SortPause()
{
    --proxy.sortPauses;
    if (proxy.sortPauses == 0 && proxy.sortWanted) {
        proxy.sortWanted = false;
        proxy.sort(proxy.sortedBy, proxy.sortedIn);
    }
}

// --- The map

int SortFilterProxyModel::sourceRows() const
{
    return source != nullptr ? source->rowCount() : 0;
}

void SortFilterProxyModel::refilter()
{
    beginResetModel();
    mapped = false;
    map();
    endResetModel();
}

void SortFilterProxyModel::map() const
{
    // The function that reads a field may open a message box, which processes paint events. A paint event of
    // the table calls map() a second time. This inner call must end here.
    if (mapped || mapping) {
        return;
    }
    mapping = true;
    const size_t rows = static_cast<size_t>(sourceRows());
    if (order.size() != rows) {
        const bool sorted = sortedBy >= 0 && sortedBy < ColumnCount;
        static const std::vector<qint64> none;
        order = Preparation::orderOf(sorted ? sortKeys(sortedBy) : none, rows, sortedIn);
    }
    if (filtering && comingVerdicts.size() == rows && comingSettings == settings()) {
        verdicts.swap(comingVerdicts);
        comingVerdicts.clear();
    }
    if (filtering && expression.isEmpty() && !yumIO.isNull() && verdicts.empty()) {
        // Go through the records in their own order, because the processor reads consecutive memory faster
        // than memory in the sorted order.
        const int records = yumIO->count();
        verdicts.reserve(static_cast<size_t>(records));
        for (int row = 0; row < records; ++row) {
            verdicts.push_back(passes(*(*yumIO)[row], stateFilter, dups, groups) ? Accepted : Rejected);
        }
    }
    std::vector<int> listed;
    std::vector<int> listedAt(rows, -1);
    listed.reserve(rows);
    for (int row : order) {
        if (filterAcceptsRow(row, QModelIndex())) {
            listedAt[static_cast<size_t>(row)] = static_cast<int>(listed.size());
            listed.push_back(row);
        }
    }
    listedRows.swap(listed);
    proxyRows.swap(listedAt);
    mapping = false;
    mapped = true;
}

QModelIndex SortFilterProxyModel::index(int row, int column, const QModelIndex& parent) const
{
    return row >= 0 && row < rowCount(parent) && column >= 0 && column < ColumnCount
               ? createIndex(row, column)
               : QModelIndex();
}

QModelIndex SortFilterProxyModel::parent(const QModelIndex&) const
{
    return QModelIndex();
}

QModelIndex SortFilterProxyModel::sibling(int row, int column, const QModelIndex&) const
{
    return index(row, column);
}

int SortFilterProxyModel::rowCount(const QModelIndex& parent) const
{
    if (parent.isValid()) {
        return 0;
    }
    map();
    return static_cast<int>(listedRows.size());
}

int SortFilterProxyModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() || source == nullptr ? 0 : source->columnCount();
}

bool SortFilterProxyModel::hasChildren(const QModelIndex& parent) const
{
    return rowCount(parent) > 0;
}

QVariant SortFilterProxyModel::data(const QModelIndex& listed, int role) const
{
    if (role == Qt::AccessibleTextRole && listed.isValid() && Columns::row(listed.column()).showsPictures()) {
        const int row = mapToSource(listed).row();
        return row < 0 ? QVariant() : Columns::row(listed.column()).text(*(*yumIO)[row]);
    }
    return HSortFilterProxyModel::data(listed, role);
}

QVariant SortFilterProxyModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (source == nullptr || orientation == Qt::Vertical) {
        // Do not call the base class, which would use its own map.
        // NOLINTNEXTLINE(bugprone-parent-virtual-call)
        return QAbstractItemModel::headerData(section, orientation, role);
    }
    return source->headerData(section, orientation, role);
}

QModelIndex SortFilterProxyModel::mapToSource(const QModelIndex& listed) const
{
    if (!listed.isValid() || listed.model() != this || listed.row() >= rowCount()) {
        return QModelIndex();
    }
    return source->index(listedRows[static_cast<size_t>(listed.row())], listed.column());
}

QModelIndexList SortFilterProxyModel::mapToSource(const QModelIndexList& listed) const
{
    QModelIndexList rows;
    rows.reserve(listed.size());
    for (const QModelIndex& each : listed) {
        rows.append(mapToSource(each));
    }
    return rows;
}

QModelIndex SortFilterProxyModel::mapFromSource(const QModelIndex& sourceIndex) const
{
    map();
    if (!sourceIndex.isValid() || static_cast<size_t>(sourceIndex.row()) >= proxyRows.size()) {
        return QModelIndex();
    }
    const int row = proxyRows[static_cast<size_t>(sourceIndex.row())];
    return row >= 0 ? createIndex(row, sourceIndex.column()) : QModelIndex();
}

void SortFilterProxyModel::sort(int column, Qt::SortOrder newOrder)
{
    Q_EMIT layoutAboutToBeChanged(QList<QPersistentModelIndex>(), VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    std::vector<int> rows;
    rows.reserve(static_cast<size_t>(before.size()));
    for (const QModelIndex& listed : before) {
        rows.push_back(mapToSource(listed).row());
    }
    sortedBy = column;
    sortedIn = newOrder;
    order.clear();
    mapped = false;
    map();
    QModelIndexList after;
    after.reserve(before.size());
    for (int i = 0; i < before.size(); ++i) {
        const int row = rows[static_cast<size_t>(i)];
        const int now = row >= 0 ? proxyRows[static_cast<size_t>(row)] : -1;
        after.append(now >= 0 ? createIndex(now, before.at(i).column()) : QModelIndex());
    }
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged(QList<QPersistentModelIndex>(), VerticalSortHint);
}

// --- The order

const std::vector<qint64>& SortFilterProxyModel::sortKeys(int column) const
{
    const size_t rows = static_cast<size_t>(sourceRows());
    std::vector<qint64>& key = keys[column];
    if (key.size() == rows) {
        return key;
    }
    if (nameRanks.size() != rows) {
        nameRanks = Preparation::ranksOf(*yumIO, NameColumn);
    }
    key = Preparation::keysOf(*yumIO, column, nameRanks);
    return key;
}

bool SortFilterProxyModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    const int rows = sourceRows();
    if (!left.isValid() || !right.isValid() || left.column() >= ColumnCount || left.row() >= rows ||
        right.row() >= rows) {
        return HSortFilterProxyModel::lessThan(left, right);
    }
    const std::vector<qint64>& key = sortKeys(left.column());
    return key[static_cast<size_t>(left.row())] < key[static_cast<size_t>(right.row())];
}

// --- The filter

bool SortFilterProxyModel::filterAcceptsRow(int row, const QModelIndex& parent) const
{
    if (!filtering) {
        return true;
    }
    if (yumIO.isNull() || row >= yumIO->count()) {
        return false;
    }
    if (verdicts.size() != static_cast<size_t>(yumIO->count())) {
        verdicts.assign(static_cast<size_t>(yumIO->count()), Unknown);
    }
    if (verdicts[static_cast<size_t>(row)] == Unknown) {
        const bool accepted = acceptRow((*yumIO)[row], row, parent);
        // The back end may have collected new records while acceptRow() read a field. In this case, the row
        // may no longer exist.
        if (static_cast<size_t>(row) < verdicts.size()) {
            verdicts[static_cast<size_t>(row)] = accepted ? Accepted : Rejected;
        }
        return accepted;
    }
    return verdicts[static_cast<size_t>(row)] == Accepted;
}

bool SortFilterProxyModel::passes(const Package::Entry& entry, StateFilter state, bool withDups,
                                  bool withGroups)
{
    switch (state) {
    case ViewUpdatable:
        if (entry.state != Package::Updatable) {
            return false;
        }
        break;
    case ViewInstallable:
        if (entry.state != Package::Available) {
            return false;
        }
        break;
    case ViewRemovable:
        if (!entry.permits(Package::Remove)) {
            return false;
        }
        break;
    case ViewAll:
        break;
    }
    return (withDups || !entry.duplicate) && (withGroups || entry.kind != Package::Group);
}

void SortFilterProxyModel::computeForAllRows(const std::function<void()>& computation) const
{
    if (yumIO->count() > fewRows) {
        yumIO->compute(computation);
    } else {
        computation();
    }
}

QVector<Package::Entry*> SortFilterProxyModel::searched(StateFilter state, bool withDups,
                                                        bool withGroups) const
{
    QVector<Package::Entry*> found;
    if (yumIO.isNull()) {
        return found;
    }
    computeForAllRows([&found, &backEnd = *yumIO, state, withDups, withGroups] {
        const int rows = backEnd.count();
        for (int row = 0; row < rows; ++row) {
            Package::Entry* entry = backEnd[row];
            if (passes(*entry, state, withDups, withGroups)) {
                found.append(entry);
            }
        }
    });
    return found;
}

// Returns the rows that the settings permit and whose match with the expression is unknown. Sets `again` to
// true if the last comparison had the same mode and expression.
QVector<int> SortFilterProxyModel::unknownRows(const Settings& wanted, bool& again) const
{
    again = comparison != 0 && comparedMode == wanted.mode && comparedExpression == wanted.expression;
    QVector<int> found;
    const int rows = yumIO->count();
    for (int row = 0; row < rows; ++row) {
        const Package::Entry& entry = *(*yumIO)[row];
        if (passes(entry, wanted.state, wanted.dups, wanted.groups) &&
            !(again && std::abs(entry.match) == comparison) &&
            (wanted.mode == Filter || !entry.searchTexts.isNull())) {
            found.append(row);
        }
    }
    return found;
}

// Notes that the last comparison was for these settings.
void SortFilterProxyModel::noteComparison(const Settings& wanted, bool again)
{
    if (!again) {
        static qint32 last = 0; // all proxies share `last`, because a record stores only one number
        comparison = ++last;
        comparedMode = wanted.mode;
        comparedExpression = wanted.expression;
    }
}

// Stores the results of the last comparison in the records of these rows. `isFound` returns the result for an
// index in `rows`.
void SortFilterProxyModel::keep(const QVector<int>& rows, const std::function<bool(int)>& isFound) const
{
    for (int i = 0; i < rows.count(); ++i) {
        (*yumIO)[rows.at(i)]->match = isFound(i) ? comparison : -comparison;
    }
}

bool SortFilterProxyModel::prepareQuickly(const Settings& given)
{
    Settings wanted = given;
    wanted.expression = Expression::withoutOuterAny(given.expression);
    discardPrepared();
    // If the expression refers to its groups, comparing it with a single row may already take hours.
    if (wanted.mode != Filter || yumIO.isNull() || Expression::refersToGroups(wanted.expression)) {
        return false;
    }
    Expression compiled;
    compiled.compile(wanted.expression);
    if (wanted.expression.isEmpty() || !compiled.isValid()) {
        return true;
    }
    QElapsedTimer running;
    running.start();
    const bool isLong = yumIO->count() > fewRows;
    const int limit = isLong ? quickTimeOfLongTable : quickTime;
    bool again = false;
    const QVector<int> rows = unknownRows(wanted, again);
    if (visibleFrom.empty()) {
        makeTexts();
    }
    const auto count = static_cast<qint64>(rows.count());
    std::vector<char> found;
    found.reserve(static_cast<size_t>(count));
    for (const int row : rows) {
        const auto done = static_cast<qint64>(found.size());
        if (done % 64 == 0) {
            const qint64 elapsed = running.elapsed();
            if (elapsed >= limit || (elapsed >= estimateTime && elapsed * count > 2 * limit * done)) {
                return false;
            }
        }
        const char* text = visible.constData() + visibleFrom[static_cast<size_t>(row)];
        found.push_back(compiled.matches(text) ? 1 : 0);
    }
    if (isLong && !again && std::find(found.cbegin(), found.cend(), 1) == found.cend()) {
        return false; // prepare() also compares without regard to the letter case
    }
    noteComparison(wanted, again);
    keep(rows, [&found](int index) { return found[static_cast<size_t>(index)] != 0; });
    bool isComplete = true;
    comingVerdicts = verdictsFor(wanted, isComplete);
    comingSettings = wanted;
    return true;
}

bool SortFilterProxyModel::prepare(const Settings& given)
{
    Settings wanted = given;
    wanted.expression = Expression::withoutOuterAny(given.expression);
    Expression compiled;
    compiled.compile(wanted.expression);
    if (yumIO.isNull() || wanted.expression.isEmpty() || !compiled.isValid()) {
        return true;
    }
    const bool complete = compare(wanted);
    if (wanted.mode == Search) {
        YumIO::returnFreeMemory(); // a search needs some megabytes, which are free now
    }
    return complete;
}

bool SortFilterProxyModel::compare(const Settings& wanted)
{
    const bool isSearch = wanted.mode == Search;
    if (!isSearch && visibleFrom.empty()) {
        makeTexts();
    }
    const int count = yumIO->count();
    bool again = false;
    QVector<int> rows;
    std::shared_ptr<SearchedTexts> texts;
    const auto from = std::make_shared<std::vector<int>>();
    const auto caseless = std::make_shared<CaselessPattern>(wanted.expression);
    // If the search finds nothing, it searches a second time without regard to the letter case.
    const bool searchesTwice = isSearch && caseless->isQuick();
    computeForAllRows([&, this] {
        rows = unknownRows(wanted, again);
        if (isSearch) {
            texts = textsOf(*yumIO, rows, searchesTwice ? caseless : nullptr);
        } else {
            from->reserve(static_cast<size_t>(rows.count()));
            for (const int row : qAsConst(rows)) {
                from->push_back(visibleFrom[static_cast<size_t>(row)]);
            }
        }
    });
    std::vector<char> found;
    if (!rows.isEmpty()) {
        std::function<bool(const Expression&, size_t)> matches;
        if (isSearch) {
            matches = [texts](const Expression& each, size_t index) { return texts->match(each, index); };
        } else {
            matches = [from, texts = visible](const Expression& each, size_t index) {
                return each.matches(texts.constData() + (*from)[index]);
            };
        }
        if (!yumIO->findMatches(wanted.expression, isSearch ? texts->blockCount() : from->size(), matches,
                                found)) {
            if (texts) {
                texts->stop();
            }
            return false;
        }
    }
    if (yumIO.isNull() || yumIO->count() != count) {
        return true;
    }
    if (!rows.isEmpty()) {
        noteComparison(wanted, again);
    }
    std::shared_ptr<SearchedTexts> caselessTexts;
    std::vector<Verdict> judged;
    bool hint = false;
    computeForAllRows([&, this] {
        keep(rows, [&](int index) {
            return isSearch ? texts->isFound(index) : found[static_cast<size_t>(index)] != 0;
        });
        bool isComplete = true;
        judged = verdictsFor(wanted, isComplete);
        const auto accepted = std::find(judged.cbegin(), judged.cend(), Accepted);
        if (!isComplete || accepted != judged.cend()) {
            return;
        }
        if (!isSearch) {
            hint = isVisibleIgnoringCase(wanted, *caseless, longestFilterHintTime);
        } else if (searchesTwice) {
            // If an earlier search has compared some of the records, `texts` lacks them.
            caselessTexts = again ? textsOf(*yumIO, passingRows(wanted), caseless) : texts;
        }
    });
    comingVerdicts.swap(judged);
    comingSettings = wanted;
    foundIgnoringCase = hint;
    hintIsKnown = !isSearch;
    if (caselessTexts) {
        searchIgnoringCase(wanted, caselessTexts);
    }
    return true;
}

QVector<int> SortFilterProxyModel::passingRows(const Settings& wanted) const
{
    QVector<int> rows;
    for (int row = 0; row < yumIO->count(); ++row) {
        if (passes(*(*yumIO)[row], wanted.state, wanted.dups, wanted.groups)) {
            rows.append(row);
        }
    }
    return rows;
}

// Returns the verdict for each row. Sets `isComplete` to false if a verdict is unknown.
std::vector<SortFilterProxyModel::Verdict> SortFilterProxyModel::verdictsFor(const Settings& wanted,
                                                                             bool& isComplete) const
{
    std::vector<Verdict> found;
    const int rows = yumIO->count();
    found.reserve(static_cast<size_t>(rows));
    for (int row = 0; row < rows; ++row) {
        const Package::Entry& entry = *(*yumIO)[row];
        const bool passed = passes(entry, wanted.state, wanted.dups, wanted.groups);
        const bool isKnown = !passed || (comparison != 0 && std::abs(entry.match) == comparison);
        isComplete = isComplete && isKnown;
        found.push_back(!isKnown ? Unknown : passed && entry.match == comparison ? Accepted : Rejected);
    }
    return found;
}

// If a search has no match, searches a second time without regard to the letter case, and stores whether the
// second search has a match.
void SortFilterProxyModel::searchIgnoringCase(const Settings& wanted,
                                              const std::shared_ptr<SearchedTexts>& texts)
{
    const auto any = std::make_shared<std::atomic<bool>>(false);
    std::vector<char> found;
    QElapsedTimer running;
    running.start();
    const bool complete = yumIO->findMatches(
        wanted.expression, texts->blockCount(),
        [texts, any, running](const Expression&, size_t index) {
            if (*any || running.elapsed() > longestHintTime) {
                texts->stop();
            } else if (texts->matchesIgnoringCase(index)) {
                *any = true;
            }
            return false;
        },
        found);
    if (!complete) {
        texts->stop(); // without a hint, the result of the search is still complete
    }
    foundIgnoringCase = *any;
}

bool SortFilterProxyModel::matchesIgnoringCase() const
{
    if (yumIO.isNull() || expression.isEmpty() || !pattern.isValid()) {
        return false;
    }
    if (mode == Search && foundIgnoringCase) {
        return true;
    }
    if (mode == Filter && hintIsKnown && comingSettings == settings()) {
        return foundIgnoringCase;
    }
    const CaselessPattern caseless(expression.pattern());
    // This function compares the joined visible texts, but a search compares each field separately. If the
    // joined texts contain a word without blanks, one of the texts contains this word too. Therefore, in
    // Search mode, this function compares only words.
    if (mode == Search && !caseless.isWord()) {
        return false;
    }
    if (visibleFrom.empty()) {
        makeTexts();
    }
    return isVisibleIgnoringCase(settings(), caseless, quickTime);
}

// Returns whether the visible text of a record that passes the other settings matches the expression without
// regard to the letter case. Gives up after `longest` milliseconds.
bool SortFilterProxyModel::isVisibleIgnoringCase(const Settings& wanted, const CaselessPattern& caseless,
                                                 int longest) const
{
    if (!caseless.isUsable()) {
        return false;
    }
    QElapsedTimer running;
    running.start();
    const int rows = yumIO->count();
    for (int row = 0; row < rows && (row % 64 != 0 || running.elapsed() < longest); ++row) {
        const Package::Entry& entry = *(*yumIO)[row];
        if (passes(entry, wanted.state, wanted.dups, wanted.groups) &&
            caseless.matches(visible.constData() + visibleFrom[static_cast<size_t>(row)])) {
            return true;
        }
    }
    return false;
}

bool SortFilterProxyModel::acceptRow(Package::Entry* entry, int row, const QModelIndex&) const
{
    if (!passes(*entry, stateFilter, dups, groups)) {
        return false;
    }
    if (expression.isEmpty()) {
        return true;
    }
    if (std::abs(entry->match) == comparison && comparison != 0 && comparedMode == mode &&
        comparedExpression == expression.pattern()) {
        return entry->match > 0;
    }
    if (mode == Search) {
        return entry->searchTexts.isNull() ? matchesAnyField(*entry) : matchesAnyText(*entry);
    }
    if (visibleFrom.empty()) {
        makeTexts();
    }
    return pattern.matches(visible.constData() + visibleFrom[static_cast<size_t>(row)]);
}

void SortFilterProxyModel::makeTexts() const
{
    Preparation::joinTexts(*yumIO, visible, visibleFrom);
}

void SortFilterProxyModel::prepareTexts()
{
    if (!yumIO.isNull() && visibleFrom.empty()) {
        makeTexts();
    }
}

// Compares the texts that a worker has read. If the records are in the order of their blocks, each unpacker
// unpacks a block only once.
bool SortFilterProxyModel::matchesAnyText(const Package::Entry& entry) const
{
    const auto isMatch = [this, &entry](SearchedTexts::Kind kind) {
        return SearchedTexts::matchesText(pattern, kind,
                                          unpackers[kind].text(SearchedTexts::textOf(entry, kind)));
    };
    return isMatch(SearchedTexts::Fields) ||
           (entry.kind != Package::Group &&
            (isMatch(SearchedTexts::Files) || isMatch(SearchedTexts::ChangeLog)));
}

bool SortFilterProxyModel::matchesAnyField(const Package::Entry& entry) const
{
    const auto found = [this](const QString& text) { return matches(text); };
    return yumIO->anySearchText(entry, found) ||
           (entry.kind != Package::Group &&
            (matches(yumIO->getFiles(entry)) || matches(yumIO->getChangeLog(entry))));
}

bool SortFilterProxyModel::matches(const QString& text) const
{
    return pattern.matches(text.toUtf8().constData());
}

} // namespace PackageTable
