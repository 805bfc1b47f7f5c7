// SPDX-License-Identifier: GPL-2.0-or-later

// One repository of the configuration of the package manager: the contents of one section of a configuration
// file.
//
// A plain value without a thread of its own. YumConfIO owns the list; the editors change it.

#ifndef REPO_REPOENTRY_H
#define REPO_REPOENTRY_H

#include <QString>

namespace Repo {

struct Entry
{
    // The section name between the brackets; empty only until a new repository gets a name.
    QString id;
    QString name;
    // One URL per line, the lines separated by a single line feed.
    QString baseurl;
    QString mirrorlist;
    // Values of Qt::CheckState; Qt::PartiallyChecked if the section has no such option.
    qint32 enabled = 1;
    qint32 gpgcheck = 1;
    // Every other line of the section, verbatim and in order, each followed by a line feed.
    QString options;
    // The path of the file with the section; empty until a new repository gets a file.
    QString file;
    // The order of the sections in one file: 1.0, 2.0, ... after reading. A fraction puts a section between
    // two others.
    double position = 0.0;
};

// True if both describe the same repository, even if their other fields differ.
bool operator==(const Entry& left, const Entry& right);
bool operator!=(const Entry& left, const Entry& right);

} // namespace Repo

#endif
