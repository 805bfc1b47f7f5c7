// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/SearchedTexts.h"

#include <utility>

#include <QHash>

#include "widgets/CaselessPattern.h"
#include "widgets/Expression.h"
#include "yumio/Package.h"

namespace PackageTable {

SearchedTexts::SearchedTexts(const QVector<const Package::Entry*>& records,
                             std::shared_ptr<const CaselessPattern> caseless)
    : ignoringCase(std::move(caseless)), found(new std::atomic<bool>[static_cast<size_t>(records.count())]())
{
    // The fields are the first kind, because a match in a field saves the comparison of the file list and the
    // change log.
    for (const Kind kind : {Fields, Files, ChangeLog}) {
        add(kind, records);
    }
}

const PackedText& SearchedTexts::textOf(const Package::Entry& record, Kind kind)
{
    switch (kind) {
    case Files:
        return record.searchFiles;
    case ChangeLog:
        return record.searchChangeLog;
    default:
        return record.searchTexts;
    }
}

void SearchedTexts::add(Kind kind, const QVector<const Package::Entry*>& records)
{
    QHash<const char*, size_t> numbers;
    const char* address = nullptr; // the address of the last block
    size_t number = 0;
    std::vector<size_t> blockOf; // the number of the block of each text
    std::vector<Text> added;
    blockOf.reserve(static_cast<size_t>(records.count()));
    added.reserve(static_cast<size_t>(records.count()));
    // For each block: first the number of its texts, later the index in `texts` for its next text.
    std::vector<size_t> places;
    const size_t firstBlock = blocks.size();
    for (int i = 0; i < records.count(); ++i) {
        const Package::Entry& record = *records.at(i);
        if (kind != Fields && record.kind == Package::Group) {
            continue;
        }
        const PackedText& text = textOf(record, kind);
        if (text.blockAddress() != address || blockOf.empty()) {
            address = text.blockAddress();
            const auto known = numbers.constFind(address);
            number = known != numbers.constEnd() ? *known : places.size();
            if (known == numbers.constEnd()) {
                numbers.insert(address, number);
                places.push_back(0);
                blocks.push_back({kind, text, 0, 0, false});
            }
        }
        ++places[number];
        blockOf.push_back(number);
        added.push_back({i, text.position()});
    }
    size_t place = texts.size();
    for (size_t i = 0; i < places.size(); ++i) {
        blocks[firstBlock + i].first = place;
        place = std::exchange(places[i], place) + place;
        blocks[firstBlock + i].end = place;
    }
    texts.resize(place);
    for (size_t i = 0; i < added.size(); ++i) {
        texts[places[blockOf[i]]++] = added[i];
    }
}

bool SearchedTexts::match(const Expression& pattern, size_t index)
{
    thread_local TextUnpacker unpacker; // keeps its memory for the next block
    Block& block = blocks[index];
    // If the whole search finds nothing, a second search ignores the letter case. Most blocks lack a text
    // that each match contains. This check while the block is unpacked saves both comparisons of the block.
    if (ignoringCase && !isAnyFound && !block.packed.isNull()) {
        const QByteArray all = unpacker.texts(block.packed);
        if (!ignoringCase->mayMatch(all.constData(), static_cast<size_t>(all.size()))) {
            block.isExcluded = true;
            return false;
        }
    }
    bool any = false;
    for (size_t i = block.first; i < block.end && !stopped; ++i) {
        std::atomic<bool>& matching = found[static_cast<size_t>(texts[i].record)];
        if (!matching && matchesText(pattern, block.kind, unpacker.text(block.packed, texts[i].position))) {
            matching = true;
            isAnyFound = true;
            any = true;
        }
    }
    return any;
}

bool SearchedTexts::matchesIgnoringCase(size_t index) const
{
    thread_local TextUnpacker unpacker;
    const Block& block = blocks[index];
    for (size_t i = block.first; i < block.end && !stopped && !block.isExcluded; ++i) {
        if (matchesText(*ignoringCase, block.kind, unpacker.text(block.packed, texts[i].position))) {
            return true;
        }
    }
    return false;
}

} // namespace PackageTable
