// SPDX-License-Identifier: GPL-2.0-or-later

// Finds the records that advisories ask to update, and says why it finds none for a package.
//
// Graphical thread, while no worker runs; no state.

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
        QVector<Package::Entry*> entries; // each once; all permit the action Update
        QStringList refusals;             // a line for each other package that is not installed
    };

    static Found find(YumIO& yumIO, const QVector<Advisory>& advisories);
    // The state of a package of an advisory, as a line.
    static QString described(const Advisory::Package& package);

private:
    // Why the record must not be marked; empty if it can be.
    static QString refusal(const YumIO& yumIO, const Package::Entry* entry);
};

#endif
