// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/PackedTexts.h"

#include <cstring>

#include <lz4.h>

namespace {

// If a text would make its block longer than this number of bytes, the text begins a new block. lz4 finds
// repetitions only within 64 KiB, so larger blocks would hardly improve the compression. They would also need
// more of the processor's cache.
constexpr size_t blockSize = 1 << 17;

constexpr size_t lengthSize = sizeof(qint32);

qint32 numberAt(const char* place)
{
    qint32 number = 0;
    std::memcpy(&number, place, sizeof number);
    return number;
}

void appendNumber(std::string& text, size_t value)
{
    const auto number = static_cast<qint32>(value);
    text.append(reinterpret_cast<const char*>(&number), sizeof number);
}

} // namespace

PackedText::PackedText(const QByteArray& text)
{
    if (!text.isNull()) {
        TextPacker packer;
        packer.add(*this, text.constData(), static_cast<size_t>(text.size()));
        packer.finish();
    }
}

QByteArray PackedText::text() const
{
    if (isNull()) {
        return QByteArray();
    }
    TextUnpacker unpacker;
    const QByteArray found = unpacker.text(*this);
    return QByteArray(found.constData(), found.size());
}

void TextPacker::add(PackedText& target, const char* text, size_t size)
{
    if (!unpacked.empty() && unpacked.size() + size > blockSize) {
        finish();
    }
    waiting.emplace_back(&target, static_cast<qint32>(unpacked.size()));
    appendNumber(unpacked, size);
    unpacked.append(text, size);
    unpacked += '\0';
}

void TextPacker::finish()
{
    if (waiting.empty()) {
        return;
    }
    const auto size = static_cast<int>(unpacked.size());
    buffer.resize(lengthSize + static_cast<size_t>(LZ4_compressBound(size)));
    std::memcpy(buffer.data(), &size, lengthSize);
    const int packed = LZ4_compress_default(unpacked.data(), buffer.data() + lengthSize, size,
                                            static_cast<int>(buffer.size() - lengthSize));
    const QByteArray block(buffer.data(), static_cast<int>(lengthSize) + packed);
    for (const auto& [target, offset] : waiting) {
        target->block = block;
        target->offset = offset;
    }
    waiting.clear();
    unpacked.clear();
}

QByteArray TextUnpacker::text(const PackedText& sameBlock, qint32 position)
{
    if (sameBlock.isNull()) {
        return QByteArray("");
    }
    const char* const found = texts(sameBlock).constData() + position;
    return QByteArray::fromRawData(found + lengthSize, numberAt(found));
}

QByteArray TextUnpacker::texts(const PackedText& packed)
{
    if (packed.block.constData() != block.constData()) {
        const qint32 size = numberAt(packed.block.constData());
        unpacked.resize(static_cast<size_t>(size));
        if (LZ4_decompress_safe(packed.block.constData() + lengthSize, unpacked.data(),
                                packed.block.size() - static_cast<int>(lengthSize), size) != size) {
            qFatal("A block of texts is damaged."); // only an error in this program can damage a block
        }
        block = packed.block; // while this object holds the block, no other block gets its address
    }
    return QByteArray::fromRawData(unpacked.data(), static_cast<int>(unpacked.size()));
}
