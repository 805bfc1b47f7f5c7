// SPDX-License-Identifier: GPL-2.0-or-later

// The texts that a search compares with an expression, in their packed blocks. The threads of the search
// compare the texts block by block, so they unpack each block only once.
//
// The graphical thread creates a SearchedTexts and shares it with the threads. Several threads may call
// match() and matchesIgnoringCase() at the same time. After the user has stopped a search, its threads may
// still use the SearchedTexts, even after the deletion of the records.

#ifndef PACKAGETABLE_SEARCHEDTEXTS_H
#define PACKAGETABLE_SEARCHEDTEXTS_H

#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

#include <QByteArray>
#include <QHash>
#include <QVector>

#include "yumio/PackedTexts.h"

class CaselessPattern;
class Expression;
namespace Package {
class Entry;
}

namespace PackageTable {

class SearchedTexts
{
public:
    // The kinds of texts of a record. A search compares all of them with its expression.
    enum Kind { Fields, Files, ChangeLog, KindCount };

    // The records must have their texts. The constructor copies references to the texts, so the records need
    // not exist afterwards. `caseless` has the expression of the search. If it is null, the caller must not
    // call matchesIgnoringCase().
    explicit SearchedTexts(const QVector<const Package::Entry*>& records,
                           std::shared_ptr<const CaselessPattern> caseless = nullptr);

    size_t blockCount() const { return blocks.size(); }
    // Compares the texts of a block, except the texts of records that are known to match. Returns whether a
    // text of the block matches. Until a text matches, also finds blocks that cannot match `caseless`.
    bool match(const Expression& pattern, size_t index);
    // Returns whether a text of the block matches `caseless`. If match() has found that this is impossible,
    // does not unpack the block again.
    bool matchesIgnoringCase(size_t index) const;
    // After this call, each running comparison ends after its current text, and later calls of match() and
    // matchesIgnoringCase() compare no text.
    void stop() { stopped = true; }
    // Returns whether a comparison has found a match in the record with this index.
    bool isFound(int record) const { return found[static_cast<size_t>(record)]; }

    static const PackedText& textOf(const Package::Entry& record, Kind kind);
    // `text` is an unpacked text of this kind. `Pattern` is Expression or CaselessPattern.
    template <typename Pattern>
    static bool matchesText(const Pattern& pattern, Kind kind, const QByteArray& text)
    {
        return kind == Fields ? pattern.matchesAny(text) : pattern.matches(text.constData());
    }

private:
    // A place is the index of a text in `texts`.
    static constexpr int noText = -1;
    struct Text
    {
        qint32 position = 0; // the position of the text in its block
        int next = noText;   // the place of the next text of the same block
    };
    struct Block
    {
        Kind kind;
        PackedText packed; // one of the block's texts, for access to the block
        int first;         // the places of the block's first and last text
        int last;
        bool isExcluded; // no text of the block matches, with or without regard to the letter case
    };
    // The blocks of one kind of texts, while the constructor finds them.
    struct KindOfBlocks
    {
        std::vector<Block> blocks;
        QHash<const char*, size_t> numbers; // the address of a block -> its index in `blocks`
        const char* lastAddress = nullptr;  // of the block of the text that was added last
        size_t last = 0;                    // the index of this block
    };

    void add(KindOfBlocks& blocksOfKind, Kind kind, const PackedText& text, int place);
    const Text& textAt(int place) const { return texts[static_cast<size_t>(place)]; }

    std::shared_ptr<const CaselessPattern> ignoringCase;
    std::vector<Block> blocks; // a thread writes only the block that it compares
    std::vector<Text> texts;   // for each record, its texts of all kinds; a group has only the first kind
    std::unique_ptr<std::atomic<bool>[]> found; // for each record, whether one of its texts matches
    std::atomic<bool> isAnyFound{false};
    std::atomic<bool> stopped{false};
};

} // namespace PackageTable

#endif
