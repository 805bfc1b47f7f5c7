// SPDX-License-Identifier: GPL-2.0-or-later

// Sorts the texts of rows while other code still adds texts, and finds the rank of each text. Qt compares
// texts by the numbers of their characters, and so does this class.
//
// Any thread may use an object, but only one thread at a time. The texts must exist as long as the object.

#ifndef PACKAGETABLE_SORTEDTEXTS_H
#define PACKAGETABLE_SORTEDTEXTS_H

#include <cstddef>
#include <vector>

#include <QString>

namespace PackageTable {

class SortedTexts
{
public:
    void reserve(int count) { texts.reserve(static_cast<size_t>(count)); }
    void add(const QString& text, int row) { texts.emplace_back(text, row); }
    // Sorts the texts that were added after the last call, and merges them with sorted texts of a similar
    // number. So each text is moved only a few times.
    void sortAdded();
    // Sorts all texts, so that ranks() only has to sort the texts that are added later.
    void sortAll();
    // Sorts all texts, and returns the rank of each row: equal texts have the same rank, and a greater text
    // has a greater rank. Each row from 0 on must have exactly one text.
    std::vector<int> ranks();

private:
    // The text of a row, and its first characters in a form that is quick to compare.
    struct Text
    {
        Text(const QString& itsText, int itsRow);

        quint64 begin; // the first eight characters
        quint64 next;  // the next eight characters
        const QString* text;
        int row;
    };

    static bool isSame(const Text& l, const Text& r);
    static bool isLess(const Text& l, const Text& r);
    void mergeLast();

    std::vector<Text> texts;
    std::vector<size_t> ends; // the ends of the sorted parts of `texts`
};

} // namespace PackageTable

#endif
