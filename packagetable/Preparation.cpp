// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/Preparation.h"

#include <QSet>

#include <algorithm>
#include <numeric>
#include <thread>

#include "packagetable/Columns.h"
#include "packagetable/WidthEstimate.h"
#include "yumio/YumIO.h"

namespace PackageTable {

namespace {

// Converts the first four characters of a string to a number. If the numbers of two strings differ, they have
// the same order as the strings.
quint64 beginning(const QString& text)
{
    quint64 number = 0;
    const int length = text.length();
    for (int i = 0; i < 4; ++i) {
        number = number << 16 | (i < length ? text.at(i).unicode() : 0);
    }
    return number;
}

} // namespace

Preparation::Preparation(const YumIO& backEnd, int sortedBy, Qt::SortOrder sortedIn, const QFont& font)
    : yumIO(backEnd), fontName(font.toString())
{
    rows.count = yumIO.count();
    rows.sortedBy = sortedBy;
    rows.sortedIn = sortedIn;
}

void Preparation::run(bool withWidths)
{
    if (!withWidths) {
        prepareRows();
        return;
    }
    std::thread other([this] { findWidest(); });
    prepareRows();
    other.join();
}

void Preparation::prepareRows()
{
    rows.nameRanks = ranksOf(yumIO, NameColumn);
    if (rows.sortedBy >= 0 && rows.sortedBy < ColumnCount) {
        rows.keys = keysOf(yumIO, rows.sortedBy, rows.nameRanks);
    }
    rows.order = orderOf(rows.keys, static_cast<size_t>(rows.count), rows.sortedIn);
    joinTexts(yumIO, rows.texts, rows.textFrom);
}

void Preparation::findWidest()
{
    QFont font;
    font.fromString(fontName);
    WidthEstimate estimate(font);
    for (int column = 0; column < ColumnCount; ++column) {
        if (Columns::row(column).showsPictures()) {
            widest[column] = rowsWithEachPicture(column);
        } else {
            widest[column] = estimate.widestRows(
                rows.count, [this, column](int row) { return Columns::text(*yumIO[row], column); });
        }
    }
}

std::vector<int> Preparation::rowsWithEachPicture(int column) const
{
    std::vector<int> found;
    QSet<int> pictures;
    for (int row = 0; row < rows.count; ++row) {
        const int picture = Columns::row(column).sortKey(*yumIO[row]);
        if (!pictures.contains(picture)) {
            pictures.insert(picture);
            found.push_back(row);
        }
    }
    return found;
}

std::vector<int> Preparation::ranksOf(const YumIO& backEnd, int column)
{
    struct Text
    {
        quint64 beginning;
        QString text;
        int row;
    };
    const int rows = backEnd.count();
    std::vector<Text> texts;
    texts.reserve(static_cast<size_t>(rows));
    for (int row = 0; row < rows; ++row) {
        const QString text = Columns::text(*backEnd[row], column);
        texts.push_back({beginning(text), text, row});
    }
    // Thousands of records may share the memory of one text. So compare the addresses before the characters.
    const auto isSame = [](const Text& l, const Text& r) {
        return l.beginning == r.beginning && (l.text.constData() == r.text.constData() || l.text == r.text);
    };
    std::sort(texts.begin(), texts.end(), [](const Text& l, const Text& r) {
        return l.beginning != r.beginning ? l.beginning < r.beginning
                                          : l.text.constData() != r.text.constData() && l.text < r.text;
    });
    std::vector<int> ranks(static_cast<size_t>(rows));
    int rank = 0;
    for (size_t i = 0; i < texts.size(); ++i) {
        if (i > 0 && !isSame(texts[i - 1], texts[i])) {
            ++rank;
        }
        ranks[static_cast<size_t>(texts[i].row)] = rank;
    }
    return ranks;
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
    texts.reserve(100 * rows);
    for (int row = 0; row < rows; ++row) {
        from.push_back(texts.size());
        const Package::Entry& entry = *backEnd[row];
        for (int column = 0; column < ColumnCount; ++column) {
            if (Columns::row(column).showsPictures()) {
                continue;
            }
            const QString text = Columns::text(entry, column);
            if (!text.isEmpty()) {
                if (texts.size() != from.back()) {
                    texts += ' ';
                }
                texts += text.toUtf8();
            }
        }
        texts += '\0';
    }
}

} // namespace PackageTable
