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

// A part of a sort key: its upper or its lower half, and the least and the greatest value of this half.
struct KeyPart
{
    int bits; // the lowest bit of the half
    qint64 least;
    qint64 greatest;

    qint64 of(qint64 key) const { return bits > 0 ? key >> bits : key & 0xffffffff; }
};

KeyPart partOf(const std::vector<qint64>& keys, int bits)
{
    KeyPart part{bits, 0, 0};
    part.least = part.greatest = part.of(keys.front());
    for (const qint64 key : keys) {
        part.least = qMin(part.least, part.of(key));
        part.greatest = qMax(part.greatest, part.of(key));
    }
    return part;
}

// Sorts the rows in `order` by a part of their keys, without comparisons. Rows with equal parts keep their
// order. This is fast if there are not many more possible values than rows.
std::vector<int> sortedByPart(const std::vector<int>& order, const std::vector<qint64>& keys,
                              const KeyPart& part, Qt::SortOrder sortOrder)
{
    const auto place = [&keys, &part, sortOrder](int row) {
        const qint64 value = part.of(keys[static_cast<size_t>(row)]);
        return static_cast<size_t>(sortOrder == Qt::AscendingOrder ? value - part.least
                                                                   : part.greatest - value);
    };
    std::vector<int> begins(static_cast<size_t>(part.greatest - part.least) + 2);
    for (const int row : order) {
        ++begins[place(row) + 1];
    }
    std::partial_sum(begins.begin(), begins.end(), begins.begin());
    std::vector<int> sorted(order.size());
    for (const int row : order) {
        sorted[static_cast<size_t>(begins[place(row)]++)] = row;
    }
    return sorted;
}

} // namespace

// Finds rows with the widest cells of each column. The rules of WidthEstimate for threads apply.
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
    void endMeasuring() { estimate.endMeasuring(); }
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

void Preparation::begun(int expected)
{
    // prepareRows() adds the groups. Without this reservation, the memory would grow step by step, and its
    // peak would be several megabytes higher.
    const int most = expected + mostGroups;
    names.reserve(most);
    rows.textFrom.reserve(static_cast<size_t>(most));
    rows.texts.reserve(bytesOfRow * most);
    if (fitting) {
        widestOfRead = std::make_unique<WidestCells>(fontName);
    }
}

void Preparation::rowsAdded(const std::vector<Package::Entry*>& added)
{
    for (const Package::Entry* entry : added) {
        addRow(read, *entry);
        if (widestOfRead) {
            widestOfRead->add(read, *entry);
        }
        ++read;
    }
    names.sortAdded();
}

void Preparation::addRow(int row, const Package::Entry& entry)
{
    names.add(entry.name, row);
    rows.textFrom.push_back(rows.texts.size());
    appendTexts(rows.texts, entry);
}

void Preparation::ended()
{
    names.sortAll();
    if (widestOfRead) {
        widestOfRead->endMeasuring();
    }
}

void Preparation::run(int sortedBy, Qt::SortOrder sortedIn)
{
    rows.count = yumIO.count();
    rows.sortedBy = sortedBy;
    rows.sortedIn = sortedIn;
    if (fitting && !widestOfRead) {
        std::thread other([this] { findWidest(); });
        prepareRows();
        other.join();
        return;
    }
    prepareRows();
    if (fitting) {
        findWidest();
    }
}

void Preparation::prepareRows()
{
    for (int row = read; row < rows.count; ++row) {
        addRow(row, *yumIO[row]);
    }
    rows.nameRanks = names.ranks();
    names = SortedTexts();
    if (rows.sortedBy >= 0 && rows.sortedBy < ColumnCount) {
        rows.keys = keysOf(yumIO, rows.sortedBy, rows.nameRanks);
    }
    rows.order = orderOf(rows.keys, static_cast<size_t>(rows.count), rows.sortedIn);
}

void Preparation::findWidest()
{
    const auto cells = widestOfRead ? std::move(widestOfRead) : std::make_unique<WidestCells>(fontName);
    for (int row = read; row < rows.count; ++row) {
        cells->add(row, *yumIO[row]);
    }
    for (int column = 0; column < ColumnCount; ++column) {
        widest[column] = cells->rows(column);
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
    std::vector<int> order(count);
    std::iota(order.begin(), order.end(), 0);
    if (keys.size() != count || count == 0) {
        return order;
    }
    const KeyPart lower = partOf(keys, 0);
    const KeyPart upper = partOf(keys, 32);
    const auto isNear = [count](const KeyPart& part) {
        return static_cast<quint64>(part.greatest - part.least) < 2 * count;
    };
    if (isNear(lower) && isNear(upper)) {
        order = sortedByPart(order, keys, lower, sortOrder);
        return upper.least == upper.greatest ? order : sortedByPart(order, keys, upper, sortOrder);
    }
    const auto at = [&keys](int row) { return keys[static_cast<size_t>(row)]; };
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
