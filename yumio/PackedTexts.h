// SPDX-License-Identifier: GPL-2.0-or-later

// Long texts of many records, in compressed memory.
//
// The texts that a search compares need far more memory than all other data of the records. A single text is
// too short to be compressed well. Therefore a TextPacker compresses blocks of consecutive texts, and each
// PackedText refers to its block. If a search reads the texts in the order of their blocks, a TextUnpacker
// unpacks each block only once.
//
// Any thread may use these classes, but only one thread at a time may use one object. Different threads may
// use texts of the same block.

#ifndef YUMIO_PACKEDTEXTS_H
#define YUMIO_PACKEDTEXTS_H

#include <string>
#include <utility>
#include <vector>

#include <QByteArray>

// A text, or no text. The last PackedText of a block releases the block.
class PackedText
{
public:
    PackedText() = default;
    // Makes a block that contains only `text`. If `text` is null, the PackedText has no text. Tests use this
    // constructor.
    explicit PackedText(const QByteArray& text);

    bool isNull() const { return block.isNull(); }
    // Unpacks the text. For many texts, use a TextUnpacker.
    QByteArray text() const;
    // Returns the address of the text's block, which is the same for all texts of one block. Returns null if
    // this PackedText has no text. The texts of a block are consecutive.
    const char* blockAddress() const { return block.isNull() ? nullptr : block.constData(); }
    // Returns the position of the text in its block.
    qint32 position() const { return offset; }

private:
    friend class TextPacker;
    friend class TextUnpacker;

    QByteArray block;  // the unpacked size, then the packed texts
    qint32 offset = 0; // the position of the text's length in the unpacked block; the text follows
};

// Packs texts.
class TextPacker
{
public:
    TextPacker() = default;
    TextPacker(const TextPacker&) = delete;
    TextPacker& operator=(const TextPacker&) = delete;

    // Packs a text, which may contain zero bytes. The packer sets `target` before the next finish() returns,
    // so `target` must exist until then. If `target` already has a text, the new text replaces the old text.
    void add(PackedText& target, const char* text, size_t size);
    void finish();

private:
    std::string unpacked;
    std::vector<std::pair<PackedText*, qint32>> waiting; // targets and the offsets of their texts
    std::vector<char> buffer;
};

// Unpacks texts. Keeps the block that was unpacked last.
class TextUnpacker
{
public:
    TextUnpacker() = default;
    TextUnpacker(const TextUnpacker&) = delete;
    TextUnpacker& operator=(const TextUnpacker&) = delete;

    // Returns the unpacked text. In memory, a zero byte follows the text. If `packed` is null, returns an
    // empty text. The result refers to memory of this TextUnpacker, and is valid until the next call.
    QByteArray text(const PackedText& packed) { return text(packed, packed.position()); }
    // Returns the text at `position` in the block of `sameBlock`.
    QByteArray text(const PackedText& sameBlock, qint32 position);
    // Returns all texts of the block of `packed`, which must have a text. A length precedes each text, and a
    // zero byte follows it. The result is valid until the next call.
    QByteArray texts(const PackedText& packed);

private:
    QByteArray block;
    std::vector<char> unpacked;
};

#endif
