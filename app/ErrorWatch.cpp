// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/ErrorWatch.h"

#include <QMutexLocker>

#include <algorithm>

ErrorWatch::ErrorWatch(Log::EntryList& log) : entries(log)
{
    const QMutexLocker locker(&entries);
    first = entries.count();
}

bool ErrorWatch::hasErrors() const
{
    const QMutexLocker locker(&entries);
    return std::any_of(entries.cbegin() + first, entries.cend(), [](const Log::Entry& entry) {
        // The log window always shows the errors up to this level.
        return entry.kind == Log::Error && entry.level <= 2;
    });
}
