// SPDX-License-Identifier: GPL-2.0-or-later

// A repository's advisory about an installed package. The advisory gives the reason for updates, for example
// a security fault.
//
// An Advisory is a plain value. A worker of the back end creates it, and the graphical thread reads it
// afterwards.

#ifndef YUMIO_ADVISORY_H
#define YUMIO_ADVISORY_H

#include <QString>
#include <QStringList>
#include <QVector>

class Advisory
{
public:
    // The reason why the update that the advisory requests cannot be marked. `Possible` means that no such
    // reason exists. The script uses the same numbers.
    enum Obstacle : int {
        Possible = 0,
        IsInstalled = 1, // the named version or a newer version is installed
        NotOffered = 2,  // no repository offers the update
        Older = 3,       // the update on offer is older than the version that the advisory names
        Locked = 4,      // a version lock excludes the update
        Excluded = 5     // the configuration excludes the update
    };

    // A package that the advisory names. At least one version of this package is installed.
    struct Package
    {
        QString name;
        QString arch;
        QString evr; // with the epoch, unless the epoch is zero
        Obstacle obstacle = Possible;
        QString offered; // the version of the offered update, or empty

        QString text() const { return name + QLatin1Char('-') + evr + QLatin1Char('.') + arch; }
    };

    QString id;
    QString kind; // the kind of the advisory, in dnf's words
    bool security = false;
    QString severity; // the severity in dnf's words; empty unless the kind is security
    int rank = 0;     // the severity as a number; the highest number is the most severe
    QString date;     // the date of the last change, for example 2024-12-31
    QString title;
    QString description;
    QStringList cves;
    QStringList bugs; // the bugs with their titles
    QVector<Package> packages;

    // Returns whether the installed version of each named package is the named version or a newer version.
    bool isInstalled() const
    {
        for (const Package& package : packages) {
            if (package.obstacle != IsInstalled) {
                return false;
            }
        }
        return true;
    }
};

#endif
