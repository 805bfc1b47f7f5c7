// SPDX-License-Identifier: GPL-2.0-or-later

// Reads the file lists and the change logs of all packages of a repository straight from its metadata files.
//
// The package manager can list the files of one package, but it searches all directories for the directory of
// each file. For every package of a distribution this takes half a minute. Reading the metadata file once
// takes a second.
//
// For any thread, without the interpreter.

#ifndef YUMIO_METADATA_H
#define YUMIO_METADATA_H

#include <vector>

#include <QByteArray>
#include <QHash>
#include <QString>

namespace Metadata {

// The packages to read: the checksum, in hexadecimal digits, and the index of the result.
using Wanted = QHash<QByteArray, int>;

// Both functions set texts[index], in UTF-8, for each wanted package that the file contains. The other texts
// do not change. The file may be compressed. The result is true if the file is of the right kind and
// complete; otherwise problem describes the fault.

// One path a line, without duplicates, sorted by character code.
bool readFileLists(const QString& path, const Wanted& wanted, std::vector<QByteArray>& texts,
                   QString& problem);
// The newest entry first. Each entry begins with "* ", the date and the author.
bool readChangeLogs(const QString& path, const Wanted& wanted, std::vector<QByteArray>& texts,
                    QString& problem);

// Checks a document, which may be compressed: it must be well-formed, have this root element, and contain as
// many packages as it declares.
bool check(const QString& path, const QByteArray& rootName, QString& problem);

} // namespace Metadata

#endif
