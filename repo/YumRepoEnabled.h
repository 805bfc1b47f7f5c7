// SPDX-License-Identifier: GPL-2.0-or-later

// An option on the command line that enables or disables all repositories whose identifiers match a pattern.
//
// A YumRepoEnabled can be copied. CommandLine creates the list of options; the main window owns the list.

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
