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

// In a number of eightCharacters(), stands for this character and for all greater characters.
constexpr quint64 lastCharacter = 0xff;

// Converts at most eight characters of a text to a number. If two texts have the same characters before
// `from`, but different numbers, the numbers have the same order as the texts. The characters after a
// `lastCharacter` do not count.
quint64 eightCharacters(const QString& text, int from)
{
    constexpr int most = 8;
    const int length = qMin(text.length() - from, most);
    quint64 number = 0;
    int count = 0;
    while (count < length && (number & 0xff) != lastCharacter) {
        number = number << 8 | qMin<quint64>(text.at(from + count).unicode(), lastCharacter);
        ++count;
    }
    return count > 0 ? number << (8 * (most - count)) : 0;
}

// Returns whether the number contains eight characters, so that the next characters count, too.
bool isComplete(quint64 number)
{
    return (number & 0xff) != 0 && (number & 0xff) != lastCharacter;
}

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

// Returns the rank of each text, by row. Sorts the texts.
std::vector<int> ranksOfTexts(std::vector<TextOfRow>& texts)
{
    // Thousands of records may share the memory of one text. So compare the addresses before the characters.
    const auto isSame = [](const TextOfRow& l, const TextOfRow& r) {
        return l.begin == r.begin && l.next == r.next &&
               (l.text->constData() == r.text->constData() || *l.text == *r.text);
    };
    std::sort(texts.begin(), texts.end(), [](const TextOfRow& l, const TextOfRow& r) {
        return l.begin != r.begin ? l.begin < r.begin
               : l.next != r.next ? l.next < r.next
                                  : l.text->constData() != r.text->constData() && *l.text < *r.text;
    });
    std::vector<int> ranks(texts.size());
    int rank = 0;
    for (size_t i = 0; i < texts.size(); ++i) {
        if (i > 0 && !isSame(texts[i - 1], texts[i])) {
            ++rank;
        }
        ranks[static_cast<size_t>(texts[i].row)] = rank;
    }
    return ranks;
}

} // namespace

TextOfRow::TextOfRow(const QString& itsText, int itsRow)
    : begin(eightCharacters(itsText, 0)), next(isComplete(begin) ? eightCharacters(itsText, 8) : 0),
      text(&itsText), row(itsRow)
{
}

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
    names.reserve(static_cast<size_t>(most));
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
        names.emplace_back(entry->name, readTo);
        rows.textFrom.push_back(rows.texts.size());
        appendTexts(rows.texts, *entry);
        if (widestOfRead) {
            widestOfRead->add(readTo, *entry);
        }
        ++readTo;
    }
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
        names.emplace_back(entry.name, row);
        from[static_cast<size_t>(row)] = rows.texts.size();
        appendTexts(rows.texts, entry);
    });
    rows.textFrom = std::move(from);
    rows.nameRanks = ranksOfTexts(names);
    names = std::vector<TextOfRow>();
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
    std::vector<TextOfRow> texts;
    texts.reserve(static_cast<size_t>(rows));
    std::deque<QString> kept; // the texts that are not in a record
    QString made;
    for (int row = 0; row < rows; ++row) {
        const QString& text = Columns::row(column).textIn(*backEnd[row], made);
        if (&text == &made) {
            kept.push_back(made);
        }
        texts.emplace_back(&text == &made ? kept.back() : text, row);
    }
    return ranksOfTexts(texts);
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
