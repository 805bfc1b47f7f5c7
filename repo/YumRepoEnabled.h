// SPDX-License-Identifier: GPL-2.0-or-later

// One request of the command line to use, or not to use, the repositories whose identifiers match a pattern.
//
// A plain value. The command line creates the list; the main window owns it.

#ifndef REPO_YUMREPOENABLED_H
#define REPO_YUMREPOENABLED_H

#include <QRegExp>
#include <QString>

struct YumRepoEnabled
{
    // The pattern is a case-sensitive shell wildcard that must match the whole identifier.
    YumRepoEnabled(bool enable, const QString& wildcard)
        : enabled(enable), pattern(wildcard, Qt::CaseSensitive, QRegExp::Wildcard)
    {
    }

    bool enabled;
    QRegExp pattern;
};

#endif
