// SPDX-License-Identifier: GPL-2.0-or-later

// One repository in the package manager's configuration: the contents of one section of a configuration file.
//
// An Entry can be copied and belongs to no thread. YumConfIO owns the list of repositories, and the editors
// change this list.

#ifndef REPO_REPOENTRY_H
#define REPO_REPOENTRY_H

#include <QString>

namespace Repo {

struct Entry
{
    // The name of the section, without its brackets. This name is empty only while a new repository has no
    // identifier.
    QString id;
    QString name;
    // One URL per line, with a single line feed between the lines.
    QString baseurl;
    QString mirrorlist;
    // `enabled` and `gpgcheck` are values of Qt::CheckState. Qt::PartiallyChecked means that the section
    // lacks the option.
    qint32 enabled = 1;
    qint32 gpgcheck = 1;
    // All other lines of the section, unchanged and in order. A line feed ends each line.
    QString options;
    // The path of the file with the section. This path is empty only while a new repository has no file.
    QString file;
    // The position of the section among the sections of its file. After reading, the positions are 1.0, 2.0
    // and so on. A new section gets a fraction between two of them.
    double position = 0.0;
};

// Returns true if both repositories have the same identifier, even if other members differ.
bool operator==(const Entry& left, const Entry& right);
bool operator!=(const Entry& left, const Entry& right);

} // namespace Repo

#endif
