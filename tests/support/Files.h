// SPDX-License-Identifier: GPL-2.0-or-later

// Lets tests write and read whole files.

#ifndef TESTS_SUPPORT_FILES_H
#define TESTS_SUPPORT_FILES_H

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>

namespace Files {

inline void put(const QString& path, const QByteArray& contents)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size()) {
        qFatal("cannot write %s", qPrintable(path));
    }
}

inline QByteArray get(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(cannot be read)");
}

// The template for the name of a directory with many files. If possible, this directory is in memory: on a
// disk, a program may have to wait when it truncates and closes a file.
inline QString scratchTemplate()
{
    const QFileInfo memory(QStringLiteral("/dev/shm"));
    const QString directory = memory.isDir() && memory.isWritable() ? memory.filePath() : QDir::tempPath();
    return directory + QStringLiteral("/vyre-test-XXXXXX");
}

} // namespace Files

#endif
