// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/UnpackedFile.h"

#include <algorithm>
#include <vector>

#include <QFile>

#include <archive.h>
#include <archive_entry.h>
#ifdef VYRE_ISAL
#include <isa-l/igzip_lib.h>
#endif

namespace {

constexpr int blockSize = 1 << 18;

} // namespace

#ifdef VYRE_ISAL

// Unpacks a file that consists of one gzip stream.
class UnpackedFile::Gzip
{
public:
    explicit Gzip(const QString& path) : packed(path), input(blockSize)
    {
        isal_inflate_init(&state);
        state.crc_flag = ISAL_GZIP;
        state.avail_in = 0;
    }

    // Returns whether the file begins like a gzip file.
    bool open() { return packed.open(QIODevice::ReadOnly) && packed.peek(2) == QByteArray("\x1f\x8b"); }

    // Returns the number of bytes, 0 at the end of the content, and -1 if libarchive must read the file.
    int read(char* buffer, int size)
    {
        state.next_out = reinterpret_cast<uint8_t*>(buffer);
        state.avail_out = static_cast<uint32_t>(size);
        while (state.avail_out > 0 && state.block_state != ISAL_BLOCK_FINISH) {
            if (state.avail_in == 0) {
                const qint64 count = packed.read(input.data(), blockSize);
                if (count <= 0) {
                    return -1; // the file is truncated or unreadable
                }
                state.next_in = reinterpret_cast<uint8_t*>(input.data());
                state.avail_in = static_cast<uint32_t>(count);
            }
            if (isal_inflate(&state) != ISAL_DECOMP_OK) {
                return -1;
            }
        }
        // libarchive decides whether more data after the end of the stream are another stream or an error.
        if (state.block_state == ISAL_BLOCK_FINISH && (state.avail_in > 0 || !packed.atEnd())) {
            return -1;
        }
        return size - static_cast<int>(state.avail_out);
    }

private:
    QFile packed;
    std::vector<char> input;
    inflate_state state;
};

#else

class UnpackedFile::Gzip
{
public:
    explicit Gzip(const QString&) {}
    bool open() { return false; }
    int read(char*, int) { return -1; }
};

#endif

UnpackedFile::UnpackedFile(const QString& path)
    : filePath(path), gzip(std::make_unique<Gzip>(path)), file(nullptr, archive_read_free)
{
    if (!gzip->open()) {
        gzip.reset();
    }
}

UnpackedFile::~UnpackedFile() = default;

int UnpackedFile::read(char* buffer, int size)
{
    if (gzip != nullptr) {
        const int count = gzip->read(buffer, size);
        if (count >= 0) {
            position += count;
            return count;
        }
        gzip.reset();
    }
    if (file == nullptr && !(open() && skip(position))) {
        return -1;
    }
    const la_ssize_t count = archive_read_data(file.get(), buffer, static_cast<size_t>(size));
    if (count < 0) {
        error = QString::fromLocal8Bit(archive_error_string(file.get()));
        return -1;
    }
    position += count;
    return static_cast<int>(count);
}

bool UnpackedFile::open()
{
    file.reset(archive_read_new());
    archive_read_support_filter_all(file.get());
    archive_read_support_format_raw(file.get());
    archive_entry* entry = nullptr;
    if (archive_read_open_filename(file.get(), filePath.toLocal8Bit().constData(), blockSize) != ARCHIVE_OK ||
        archive_read_next_header(file.get(), &entry) != ARCHIVE_OK) {
        error = QString::fromLocal8Bit(archive_error_string(file.get()));
        return false;
    }
    return true;
}

bool UnpackedFile::skip(qint64 count)
{
    std::vector<char> unused(blockSize);
    while (count > 0) {
        const la_ssize_t read = archive_read_data(file.get(), unused.data(),
                                                  static_cast<size_t>(std::min<qint64>(count, blockSize)));
        if (read <= 0) {
            error = QString::fromLocal8Bit(archive_error_string(file.get()));
            return false;
        }
        count -= read;
    }
    return true;
}
