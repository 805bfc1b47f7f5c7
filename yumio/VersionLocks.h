// SPDX-License-Identifier: GPL-2.0-or-later

// The package manager's version locks at the time of the last collection. A locked package gets no update.
// The versionlock plug-in of the package manager provides the locks. If this plug-in is missing, the program
// offers no locks.
//
// A VersionLocks is a plain value, and the back end has one. A worker sets it, and the graphical thread reads
// it while no worker runs.

#ifndef YUMIO_VERSIONLOCKS_H
#define YUMIO_VERSIONLOCKS_H

#include <QHash>
#include <QString>

#include "yumio/Package.h"

class VersionLocks
{
public:
    // Whether the package manager has loaded the plug-in.
    bool offered = false;
    // The reason why the user cannot change the locks; empty if the user can change them.
    QString fault;
    // For each locked package, the lines of the plug-in's list that lock it. The key is the name of the
    // package.
    QHash<QString, QString> lines;

    bool isLocked(const Package::Entry& entry) const
    {
        return entry.kind != Package::Group && lines.contains(entry.name);
    }
};

#endif
