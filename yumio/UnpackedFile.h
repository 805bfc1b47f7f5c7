// SPDX-License-Identifier: GPL-2.0-or-later

// Reads a file from the beginning to the end, and unpacks it if it is compressed.
//
// libarchive unpacks all forms of compression. For gzip, it uses zlib. ISA-L unpacks gzip three times as fast
// as zlib, and most repositories have gzip files. So if the build has found ISA-L, ISA-L unpacks gzip files.
// If ISA-L refuses a file, for example because the file is damaged, libarchive continues at the same place.
// So the content and the error messages do not depend on ISA-L.
//
// An object belongs to the function that reads the file. Any thread may use the object, but only one thread
// at a time.

#ifndef YUMIO_UNPACKEDFILE_H
#define YUMIO_UNPACKEDFILE_H

#include <memory>

#include <QString>

struct archive;

class UnpackedFile
{
public:
    explicit UnpackedFile(const QString& path);
    ~UnpackedFile();
    UnpackedFile(const UnpackedFile&) = delete;
    UnpackedFile& operator=(const UnpackedFile&) = delete;

    // Writes the next bytes of the content to `buffer`, at most `size` bytes. Returns the number of written
    // bytes, 0 at the end of the content, or -1 after an error.
    int read(char* buffer, int size);
    // The text of the error; empty if no error has happened.
    QString problem() const { return error; }

private:
    class Gzip;

    bool open();
    bool skip(qint64 count);

    QString filePath;
    QString error;
    qint64 position = 0; // the number of bytes that read() has returned
    std::unique_ptr<Gzip> gzip;
    std::unique_ptr<archive, int (*)(archive*)> file;
};

#endif
