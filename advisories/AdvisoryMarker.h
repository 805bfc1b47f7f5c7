// SPDX-License-Identifier: GPL-2.0-or-later

// Finds the records that must be marked for the updates that advisories request. If a package has no record
// that can be marked, reports the reason.
//
// Only the graphical thread calls these functions, while no worker runs. They have no state.

#ifndef ADVISORIES_ADVISORYMARKER_H
#define ADVISORIES_ADVISORYMARKER_H

#include <QCoreApplication>
#include <QString>
#include <QStringList>
#include <QVector>

#include "yumio/Advisory.h"

class YumIO;
namespace Package {
class Entry;
}

class AdvisoryMarker
{
    Q_DECLARE_TR_FUNCTIONS(AdvisoryMarker)

public:
    struct Found
    {
        QVector<Package::Entry*> entries; // each record once; all of them permit the Update action
        QStringList refusals;             // one line for each package whose update cannot be marked
    };

    static Found find(YumIO& yumIO, const QVector<Advisory>& advisories);
    // Returns one line about the state of a package that an advisory names.
    static QString described(const Advisory::Package& package);

private:
    // Returns the reason why the record must not be marked, with %1 for the name of the package. Returns an
    // empty string if the record may be marked.
    static QString refusal(const YumIO& yumIO, const Package::Entry* entry);
};

#endif
