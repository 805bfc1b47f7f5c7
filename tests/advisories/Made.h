// SPDX-License-Identifier: GPL-2.0-or-later

// Functions that make advisories for tests.

#ifndef TESTS_ADVISORIES_MADE_H
#define TESTS_ADVISORIES_MADE_H

#include "yumio/Advisory.h"

inline Advisory::Package packageOf(const QString& name, Advisory::Obstacle obstacle = Advisory::Possible,
                                   const QString& evr = QStringLiteral("2-1"),
                                   const QString& offered = QStringLiteral("2-1"))
{
    return {name, QStringLiteral("x86_64"), evr, obstacle, offered};
}

inline Advisory advisory(const QString& id, bool security, const QVector<Advisory::Package>& packages)
{
    Advisory made;
    made.id = id;
    made.security = security;
    made.kind = security ? QStringLiteral("security") : QStringLiteral("bugfix");
    made.date = QStringLiteral("2024-02-20");
    made.title = QStringLiteral("About ") + id;
    made.packages = packages;
    return made;
}

#endif
