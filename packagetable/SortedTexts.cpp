// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/SortedTexts.h"

#include <algorithm>
#include <cstddef>

namespace PackageTable {

namespace {

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

} // namespace

SortedTexts::Text::Text(const QString& itsText, int itsRow)
    : begin(eightCharacters(itsText, 0)), next(isComplete(begin) ? eightCharacters(itsText, 8) : 0),
      text(&itsText), row(itsRow)
{
}

// Thousands of records may share the memory of one text. So the following functions compare the addresses
// before the characters.

bool SortedTexts::isSame(const Text& l, const Text& r)
{
    return l.begin == r.begin && l.next == r.next &&
           (l.text->constData() == r.text->constData() || *l.text == *r.text);
}

bool SortedTexts::isLess(const Text& l, const Text& r)
{
    return l.begin != r.begin ? l.begin < r.begin
           : l.next != r.next ? l.next < r.next
                              : l.text->constData() != r.text->constData() && *l.text < *r.text;
}

void SortedTexts::sortAdded()
{
    const size_t sorted = ends.empty() ? 0 : ends.back();
    if (sorted == texts.size()) {
        return;
    }
    std::sort(texts.begin() + static_cast<std::ptrdiff_t>(sorted), texts.end(), isLess);
    ends.push_back(texts.size());
    const auto length = [this](size_t fromLast) {
        const size_t end = ends.size() - 1 - fromLast;
        return ends[end] - (end > 0 ? ends[end - 1] : 0);
    };
    while (ends.size() > 1 && length(1) <= 2 * length(0)) {
        mergeLast();
    }
}

// Merges the last two parts of sorted texts.
void SortedTexts::mergeLast()
{
    const auto at = [this](size_t position) { return texts.begin() + static_cast<std::ptrdiff_t>(position); };
    const size_t first = ends.size() > 2 ? ends[ends.size() - 3] : 0;
    const size_t middle = ends[ends.size() - 2];
    std::inplace_merge(at(first), at(middle), at(ends.back()), isLess);
    ends.erase(ends.end() - 2);
}

void SortedTexts::sortAll()
{
    sortAdded();
    while (ends.size() > 1) {
        mergeLast();
    }
}

std::vector<int> SortedTexts::ranks()
{
    sortAll();
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

} // namespace PackageTable
