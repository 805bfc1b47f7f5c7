// Reads the file lists and the change logs of all packages of a repository straight from its metadata files.
//
// The package manager can tell the files of one package, but it looks for the directory of each file among
// all directories: for every package of a distribution that takes half a minute, where reading the file once
// takes a second.
//
// Any thread; nothing here needs the interpreter.

#ifndef YUMIO_METADATA_H
#define YUMIO_METADATA_H

#include <vector>

#include <QByteArray>
#include <QHash>
#include <QString>

namespace Metadata {

// The packages that are wanted: checksum, in hexadecimal digits, to the place in the result.
using Wanted = QHash<QByteArray, int>;

// Both set texts[place], UTF-8, of each wanted package that the file holds; the others stay as they are. The
// file may be compressed. Returns whether it is of the right kind and could be read to its end; what is wrong
// goes to problem.

// One path a line, in the order of their characters, each once.
bool readFileLists(const QString& path, const Wanted& wanted, std::vector<QByteArray>& texts,
                   QString& problem);
// The newest entry first; each begins with "* ", the date and the author.
bool readChangeLogs(const QString& path, const Wanted& wanted, std::vector<QByteArray>& texts,
                    QString& problem);

// Whether the document, which may be compressed, is well-formed, has this outermost element, and holds as
// many packages as it says it does.
bool check(const QString& path, const QByteArray& rootName, QString& problem);

} // namespace Metadata

#endif
