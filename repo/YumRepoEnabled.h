// One request of the command line to use, or not to use, the repositories that a pattern matches.
//
// A plain value; the command line makes the list of them, the main window owns it.

#ifndef REPO_YUMREPOENABLED_H
#define REPO_YUMREPOENABLED_H

#include <QRegExp>
#include <QString>

struct YumRepoEnabled
{
    // The pattern is a case-sensitive shell wildcard for the whole identifier.
    YumRepoEnabled(bool enable, const QString& wildcard)
        : enabled(enable), pattern(wildcard, Qt::CaseSensitive, QRegExp::Wildcard)
    {
    }

    bool enabled;
    QRegExp pattern;
};

#endif
