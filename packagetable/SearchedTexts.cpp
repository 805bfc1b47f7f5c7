// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/SearchedTexts.h"

#include <utility>

#include "widgets/CaselessPattern.h"
#include "widgets/Expression.h"
#include "yumio/Package.h"

namespace PackageTable {

SearchedTexts::SearchedTexts(const QVector<const Package::Entry*>& records,
                             std::shared_ptr<const CaselessPattern> caseless)
    : ignoringCase(std::move(caseless)), texts(static_cast<size_t>(KindCount * records.count())),
      found(new std::atomic<bool>[static_cast<size_t>(records.count())]())
{
    KindOfBlocks kinds[KindCount];
    // Go through the records only once, because they are not in the processor's cache.
    for (int i = 0; i < records.count(); ++i) {
        const Package::Entry& record = *records.at(i);
        for (const Kind kind : {Fields, Files, ChangeLog}) {
            if (kind == Fields || record.kind != Package::Group) {
                add(kinds[kind], kind, textOf(record, kind), KindCount * i + kind);
            }
        }
    }
    // The fields are the first kind, because a match in a field saves the comparison of the file list and the
    // change log.
    for (const KindOfBlocks& kind : kinds) {
        blocks.insert(blocks.end(), kind.blocks.cbegin(), kind.blocks.cend());
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

// Adds a text to its block. `place` is the index in `texts`.
void SearchedTexts::add(KindOfBlocks& blocksOfKind, Kind kind, const PackedText& text, int place)
{
    const char* const address = text.blockAddress();
    std::vector<Block>& all = blocksOfKind.blocks;
    if (all.empty() || address != blocksOfKind.lastAddress) {
        const auto known = blocksOfKind.numbers.constFind(address);
        blocksOfKind.lastAddress = address;
        blocksOfKind.last = known != blocksOfKind.numbers.constEnd() ? *known : all.size();
        if (blocksOfKind.last == all.size()) {
            blocksOfKind.numbers.insert(address, all.size());
            all.push_back({kind, text, place, place, false});
        }
    }
    // Append the text to the list of its block. If the block is new, the text is already its only text.
    Block& block = all[blocksOfKind.last];
    texts[static_cast<size_t>(block.last)].next = place;
    block.last = place;
    texts[static_cast<size_t>(place)] = {text.position(), noText};
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
    for (int place = block.first; place != noText && !stopped; place = textAt(place).next) {
        std::atomic<bool>& matching = found[static_cast<size_t>(place / KindCount)];
        if (!matching &&
            matchesText(pattern, block.kind, unpacker.text(block.packed, textAt(place).position))) {
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
    if (block.isExcluded) {
        return false;
    }
    for (int place = block.first; place != noText && !stopped; place = textAt(place).next) {
        if (matchesText(*ignoringCase, block.kind, unpacker.text(block.packed, textAt(place).position))) {
            return true;
        }
    }
    return false;
}

} // namespace PackageTable
