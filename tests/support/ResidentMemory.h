// SPDX-License-Identifier: GPL-2.0-or-later

// The memory of the test program, for tests that the program releases memory.

#ifndef TESTS_SUPPORT_RESIDENTMEMORY_H
#define TESTS_SUPPORT_RESIDENTMEMORY_H

#include <QFile>
#include <QString>

#include <unistd.h>

// Returns the resident memory of this process in KiB.
inline qint64 residentMemory()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("cannot read %s", qPrintable(file.fileName()));
    }
    return file.readAll().split(' ').value(1).toLongLong() * (sysconf(_SC_PAGESIZE) / 1024);
}

#endif
