// SPDX-License-Identifier: GPL-2.0-or-later

// An advisory of a repository that concerns an installed package: the reason for updates, such as a security
// fault.
//
// A plain value, which the back end's worker makes.

#ifndef YUMIO_ADVISORY_H
#define YUMIO_ADVISORY_H

#include <QString>
#include <QStringList>
#include <QVector>

class Advisory
{
public:
    // Whether the update that an advisory asks for can be marked, and why not. The script has the same
    // numbers.
    enum Obstacle : int {
        Possible = 0,
        IsInstalled = 1, // this version, or a newer one
        NotOffered = 2,  // by any repository
        Older = 3,       // the offered update is older than the advisory's version
        Locked = 4,      // by a version lock
        Excluded = 5     // by the configuration
    };

    // A package that the advisory names. Any version of it is installed.
    struct Package
    {
        QString name;
        QString arch;
        QString evr; // with the epoch, unless that is zero
        Obstacle obstacle = Possible;
        QString offered; // the version of the offered update, if there is one

        QString text() const { return name + QLatin1Char('-') + evr + QLatin1Char('.') + arch; }
    };

    QString id;
    QString kind; // in dnf's words, as the severity is
    bool security = false;
    QString severity; // empty for other kinds than security
    int rank = 0;     // of the severity; the most severe has the highest
    QString date;     // of the last change, as 2024-12-31
    QString title;
    QString description;
    QStringList cves;
    QStringList bugs; // with their titles
    QVector<Package> packages;

    // Whether all of its packages are installed in this version or a newer one.
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
