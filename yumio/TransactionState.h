// SPDX-License-Identifier: GPL-2.0-or-later

// The state of one transaction: the marked records, the listing, the weights of the progress bars, the
// downloads and the outcome. A TransactionState is valid from one click on "Apply Actions" until the next
// click.
//
// The back end has one TransactionState, and replaces it at the start of each transaction. The worker writes
// it while the worker holds the interpreter lock. The graphical thread writes it only while no worker runs.

#ifndef YUMIO_TRANSACTIONSTATE_H
#define YUMIO_TRANSACTIONSTATE_H

#include <memory>

#include <QHash>
#include <QList>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

#include "yumio/Package.h"
#include "yumio/SignalRecorder.h"
#include "yumio/TransactionOutcome.h"

class TransactionState
{
public:
    TransactionState() = default;
    explicit TransactionState(QList<Package::Entry*> marked) : actionEntries(std::move(marked)) {}

    // Sizes are in bytes. The weight of a package is its size, but at least the minimum of
    // Transaction::atLeast().

    // Counts a package that rpm will install. "local" means that the package file is in the cache.
    void weighNew(quint64 size, bool local);
    // Counts a file to download. The weight of a delta is its size and a third of its size, because the
    // package must be rebuilt from the delta.
    void weighRemote(quint64 size, bool delta);
    // Sets the number of steps of the downloads in the total bar. Files in the cache get no steps.
    void shareDownloadSteps();
    // Sets the number of download slots to the number of files to download, and frees all slots.
    void startDownloads();
    void endDownloads();
    void clearSlots();

    QList<Package::Entry*> actionEntries; // the marked records; the back end owns them

    // The text of the next question: the listing or, if no listing exists, the script's output.
    QString txText;
    bool txListed = false;         // true if the text is a listing
    bool txApplied = false;        // the user has confirmed, and no step has failed
    QMap<long, int> listed;        // the number of listed items by action
    QStringList unmarkedRemovals;  // listed removals that the user has not marked, as the listing names them
    bool isReplay = false;         // replay() started the transaction, which ignores the marks
    QString sizes;                 // the sizes in the listing, in one line
    QSet<QString> membersToRemove; // the package names of all groups that are marked for removal

    bool transactionRan = false; // rpm may have changed the system
    bool outdated = false;       // other programs changed the system, so the script refused the transaction
    Package::Marks leftOut;      // the marks that the script left out, because they cannot be carried out
    TransactionOutcome outcome;
    std::unique_ptr<SignalRecorder> signalRecorder; // not null while rpm changes the system

    quint64 cachedSize = 0;
    quint64 downloadSize = 0;
    quint64 downloadWeight = 0; // the weight of all packages to install, including packages in the cache
    quint64 rpmWeight = 0;
    quint32 downloadSteps = 0; // the steps of the downloads in the total bar

    quint64 actCounter = 0; // the weight of all steps up to the current one
    bool testRun = false;   // rpm only tests the transaction, without changes
    // The values of the last progress report. A report with other values is about another package.
    qint64 lastTsDone = -1;
    qint64 lastAction = 0;

    quint64 remoteWeight = 0;
    quint32 remoteCount = 0;
    bool downloading = false; // for diagnostics only
    quint32 threadCount = 0;  // remoteCount when the downloads began
    quint64 threadsMax = 0;   // remoteWeight when the downloads began
    quint32 nextSlot = 0;     // the first slot that no file uses
    QHash<QString, quint32> payloadSlots;
};

#endif
