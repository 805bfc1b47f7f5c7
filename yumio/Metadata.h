// SPDX-License-Identifier: GPL-2.0-or-later

// Reads the file lists and the change logs of a repository's packages directly from its metadata files.
//
// The package manager can also list the files of a package. But for each file, the package manager searches
// through all directories. For all packages of a distribution, this takes half a minute. This namespace reads
// the whole metadata file in a second.
//
// Any thread may call these functions. They do not need the interpreter.

#ifndef YUMIO_METADATA_H
#define YUMIO_METADATA_H

#include <functional>
#include <string>

#include <QByteArray>
#include <QHash>
#include <QString>

namespace Metadata {

// The packages to read. The key is the checksum of a package, in hexadecimal digits. The value is the index
// that is passed to the function `take` together with the text of the package.
using Wanted = QHash<QByteArray, int>;

// Receives the index and the text of a package. The text is UTF-8.
using Take = std::function<void(int index, const std::string& text)>;

// readFileLists() and readChangeLogs() call `take` for each wanted package in the file, which may be
// compressed. If the file is complete and of the right kind, these functions return true. Otherwise they
// describe the error in `problem` and return false. During the work, they call `stopped` often. If `stopped`
// returns true, they return false and leave `problem` unchanged.

// Each text has one path per line, without duplicates, sorted by UTF-16 code units.
bool readFileLists(const QString& path, const Wanted& wanted, const Take& take, QString& problem,
                   const std::function<bool()>& stopped = {});
// In each text, the newest entry comes first. Each entry begins with "* ", the date and the author.
bool readChangeLogs(const QString& path, const Wanted& wanted, const Take& take, QString& problem,
                    const std::function<bool()>& stopped = {});

// Checks that the document in the file is well-formed, has the root element `rootName`, and contains at least
// the number of packages that it declares. The document may be compressed.
bool check(const QString& path, const QByteArray& rootName, QString& problem);

} // namespace Metadata

#endif
