// One repository of the package manager's configuration: what one section of a configuration file says.
//
// A plain value without a thread of its own; YumConfIO holds the list of them, the editors change it.

#ifndef REPO_REPOENTRY_H
#define REPO_REPOENTRY_H

#include <QString>

namespace Repo {

struct Entry
{
    // The section name between the brackets; empty only while a new repository has not been named.
    QString id;
    QString name;
    // One URL per line, the lines separated by a single line feed.
    QString baseurl;
    QString mirrorlist;
    // Values of Qt::CheckState: Qt::PartiallyChecked when the section does not say.
    qint32 enabled = 1;
    qint32 gpgcheck = 1;
    // Every other line of the section, verbatim and in order, each followed by a line feed.
    QString options;
    // The path of the file that holds the section; empty until a new repository is given one.
    QString file;
    // Orders the sections of one file: 1.0, 2.0, ... as read; a fraction places a section between two others.
    double position = 0.0;
};

// True when both stand for the same repository, whatever else they say about it.
bool operator==(const Entry& left, const Entry& right);
bool operator!=(const Entry& left, const Entry& right);

} // namespace Repo

#endif
