// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/Preparation.h"

#include <algorithm>
#include <deque>
#include <numeric>
#include <thread>

#include "packagetable/Columns.h"
#include "packagetable/WidthEstimate.h"
#include "yumio/YumIO.h"

namespace PackageTable {

namespace {

// The texts of a row usually have at most this number of bytes.
constexpr int bytesOfRow = 100;

// Systems usually have at most this number of groups.
constexpr int mostGroups = 1000;

// Appends a text in UTF-8.
void append(QByteArray& utf8, const QString& text)
{
    const int length = text.length();
    const int before = utf8.size();
    utf8.resize(before + length);
    const ushort* const from = text.utf16();
    char* const to = utf8.data() + before;
    unsigned all = 0;
    for (int i = 0; i < length; ++i) {
        all |= from[i];
        to[i] = static_cast<char>(from[i]);
    }
    if (all >= 0x80) { // the text is not ASCII
        utf8.resize(before);
        utf8 += text.toUtf8();
    }
}

// Appends the visible texts of a record, and a zero byte.
void appendTexts(QByteArray& utf8, const Package::Entry& entry)
{
    const int before = utf8.size();
    QString made;
    for (int column = 0; column < ColumnCount; ++column) {
        const Columns::Row& described = Columns::row(column);
        if (described.showsPictures()) {
            continue;
        }
        const QString& text = described.textIn(entry, made);
        if (!text.isEmpty()) {
            if (utf8.size() != before) {
                utf8 += ' ';
            }
            append(utf8, text);
        }
    }
    utf8 += '\0';
}

// Sorts rows by keys from `least` to `greatest` without comparisons. This is fast if there are not many more
// possible keys than rows.
std::vector<int> orderOfNearKeys(const std::vector<qint64>& keys, qint64 least, qint64 greatest,
                                 Qt::SortOrder sortOrder)
{
    const auto place = [least, greatest, sortOrder](qint64 key) {
        return static_cast<size_t>(sortOrder == Qt::AscendingOrder ? key - least : greatest - key);
    };
    std::vector<int> begins(static_cast<size_t>(greatest - least) + 2);
    for (const qint64 key : keys) {
        ++begins[place(key) + 1];
    }
    std::partial_sum(begins.begin(), begins.end(), begins.begin());
    std::vector<int> order(keys.size());
    for (size_t row = 0; row < keys.size(); ++row) {
        order[static_cast<size_t>(begins[place(keys[row])]++)] = static_cast<int>(row);
    }
    return order;
}

} // namespace

// Finds rows with the widest cells of each column. Qt keeps data of a font for each thread, so only one
// thread may create, use and delete the object.
class WidestCells
{
public:
    explicit WidestCells(const QString& fontName) : estimate(fontOf(fontName))
    {
        for (int column = 0; column < ColumnCount; ++column) {
            texts.emplace_back(estimate);
        }
    }

    void add(int row, const Package::Entry& entry)
    {
        for (int column = 0; column < ColumnCount; ++column) {
            const Columns::Row& described = Columns::row(column);
            if (!described.showsPictures()) {
                texts[static_cast<size_t>(column)].add(row, described.textIn(entry, made));
                continue;
            }
            std::vector<int>& keys = pictures[column].keys;
            const int key = described.sortKey(entry);
            if (std::find(keys.begin(), keys.end(), key) == keys.end()) {
                keys.push_back(key);
                pictures[column].rows.push_back(row);
            }
        }
    }
    // Returns the rows that may have the widest texts of a column.
    const std::vector<WidestRows::Candidate>& textsOf(int column) const
    {
        return texts[static_cast<size_t>(column)].found();
    }
    void addTexts(int column, const std::vector<WidestRows::Candidate>& others)
    {
        texts[static_cast<size_t>(column)].add(others);
    }
    // Returns some rows for a column: a row for each picture, or rows with the widest texts.
    std::vector<int> rows(int column) const
    {
        return Columns::row(column).showsPictures() ? pictures[column].rows
                                                    : texts[static_cast<size_t>(column)].rows();
    }

private:
    struct Pictures
    {
        std::vector<int> keys; // a column has only a few pictures
        std::vector<int> rows; // for each key, one row
    };

    static QFont fontOf(const QString& name)
    {
        QFont font;
        font.fromString(name);
        return font;
    }

    WidthEstimate estimate;
    std::vector<WidestRows> texts; // by column
    Pictures pictures[ColumnCount];
    QString made;
};

Preparation::Preparation(const YumIO& backEnd, const QFont& font, bool withWidths)
    : yumIO(backEnd), fontName(font.toString()), fitting(withWidths)
{
}

Preparation::~Preparation() = default;

void Preparation::begun(int first, int expected)
{
    readFrom = readTo = first;
    // prepareRows() adds the rows before `first` and the groups. Without this reservation, the memory would
    // grow step by step, and its peak would be several megabytes higher.
    const int most = first + expected + mostGroups;
    names.reserve(most);
    rows.textFrom.reserve(static_cast<size_t>(most));
    rows.texts.reserve(bytesOfRow * most);
    if (fitting) {
        widestOfRead = std::make_unique<WidestCells>(fontName);
    }
}

void Preparation::rowsAdded(int first, const std::vector<Package::Entry*>& added)
{
    readTo = first;
    for (const Package::Entry* entry : added) {
        names.add(entry->name, readTo);
        rows.textFrom.push_back(rows.texts.size());
        appendTexts(rows.texts, *entry);
        if (widestOfRead) {
            widestOfRead->add(readTo, *entry);
        }
        ++readTo;
    }
    names.sortAdded();
}

void Preparation::ended()
{
    if (!widestOfRead) {
        return;
    }
    for (int column = 0; column < ColumnCount; ++column) {
        readTexts[column] = widestOfRead->textsOf(column);
        if (Columns::row(column).showsPictures()) {
            widest[column] = widestOfRead->rows(column);
        }
    }
    widestOfRead.reset();
}

template <typename Function> void Preparation::forOtherRows(Function function) const
{
    for (int row = 0; row < readFrom; ++row) {
        function(row, *yumIO[row]);
    }
    for (int row = readTo; row < rows.count; ++row) {
        function(row, *yumIO[row]);
    }
}

void Preparation::run(int sortedBy, Qt::SortOrder sortedIn)
{
    rows.count = yumIO.count();
    rows.sortedBy = sortedBy;
    rows.sortedIn = sortedIn;
    if (!fitting) {
        prepareRows();
        return;
    }
    std::thread other([this] { findWidest(); });
    prepareRows();
    other.join();
}

void Preparation::prepareRows()
{
    // The texts of the read rows stay at the beginning.
    std::vector<int> from(static_cast<size_t>(rows.count));
    std::copy(rows.textFrom.begin(), rows.textFrom.end(), from.begin() + readFrom);
    forOtherRows([this, &from](int row, const Package::Entry& entry) {
        names.add(entry.name, row);
        from[static_cast<size_t>(row)] = rows.texts.size();
        appendTexts(rows.texts, entry);
    });
    rows.textFrom = std::move(from);
    rows.nameRanks = names.ranks();
    names = SortedTexts();
    if (rows.sortedBy >= 0 && rows.sortedBy < ColumnCount) {
        rows.keys = keysOf(yumIO, rows.sortedBy, rows.nameRanks);
    }
    rows.order = orderOf(rows.keys, static_cast<size_t>(rows.count), rows.sortedIn);
}

void Preparation::findWidest()
{
    WidestCells cells(fontName);
    forOtherRows([&cells](int row, const Package::Entry& entry) { cells.add(row, entry); });
    for (int column = 0; column < ColumnCount; ++column) {
        cells.addTexts(column, readTexts[column]);
        const std::vector<int> found = cells.rows(column);
        widest[column].insert(widest[column].end(), found.begin(), found.end());
    }
}

std::vector<int> Preparation::ranksOf(const YumIO& backEnd, int column)
{
    const int rows = backEnd.count();
    SortedTexts texts;
    texts.reserve(rows);
    std::deque<QString> kept; // the texts that are not in a record
    QString made;
    for (int row = 0; row < rows; ++row) {
        const QString& text = Columns::row(column).textIn(*backEnd[row], made);
        if (&text == &made) {
            kept.push_back(made);
        }
        texts.add(&text == &made ? kept.back() : text, row);
    }
    return texts.ranks();
}

std::vector<qint64> Preparation::keysOf(const YumIO& backEnd, int column, const std::vector<int>& nameRanks)
{
    std::vector<int> ranks;
    const auto number = Columns::row(column).sortKey;
    if (number == nullptr && column != NameColumn) {
        ranks = ranksOf(backEnd, column); // a column without a sort key is sorted by its texts
    }
    std::vector<qint64> keys(nameRanks.size());
    for (size_t row = 0; row < keys.size(); ++row) {
        const qint64 first = number != nullptr ? number(*backEnd[static_cast<int>(row)])
                             : ranks.empty()   ? 0
                                               : ranks[row];
        keys[row] = first * (Q_INT64_C(1) << 32) + nameRanks[row];
    }
    return keys;
}

std::vector<int> Preparation::orderOf(const std::vector<qint64>& keys, size_t count, Qt::SortOrder sortOrder)
{
    if (keys.size() == count && count > 0) {
        const auto ends = std::minmax_element(keys.begin(), keys.end());
        if (static_cast<quint64>(*ends.second) - static_cast<quint64>(*ends.first) < 2 * count) {
            return orderOfNearKeys(keys, *ends.first, *ends.second, sortOrder);
        }
    }
    std::vector<int> order(count);
    std::iota(order.begin(), order.end(), 0);
    const auto at = [&keys](int row) { return keys[static_cast<size_t>(row)]; };
    if (keys.size() != count) {
        return order;
    }
    if (sortOrder == Qt::AscendingOrder) {
        std::stable_sort(order.begin(), order.end(), [&at](int l, int r) { return at(l) < at(r); });
    } else {
        std::stable_sort(order.begin(), order.end(), [&at](int l, int r) { return at(r) < at(l); });
    }
    return order;
}

void Preparation::joinTexts(const YumIO& backEnd, QByteArray& texts, std::vector<int>& from)
{
    const int rows = backEnd.count();
    from.reserve(static_cast<size_t>(rows));
    texts.reserve(bytesOfRow * rows);
    for (int row = 0; row < rows; ++row) {
        from.push_back(texts.size());
        appendTexts(texts, *backEnd[row]);
    }
}

} // namespace PackageTable
