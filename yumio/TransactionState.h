// SPDX-License-Identifier: GPL-2.0-or-later

// One transaction, from the click on "Apply Actions" to the next click: the marked records, the listing, the
// weights of the progress bars, the downloads and the outcome.
//
// The back end has one object and replaces it when an apply begins. The worker writes it and holds the
// interpreter lock; the graphical thread writes it only while no worker runs.

#ifndef YUMIO_TRANSACTIONSTATE_H
#define YUMIO_TRANSACTIONSTATE_H

#include <memory>

#include <QHash>
#include <QList>
#include <QString>

#include "yumio/Package.h"
#include "yumio/SignalRecorder.h"

class TransactionState
{
public:
    TransactionState() = default;
    explicit TransactionState(QList<Package::Entry*> marked) : actionEntries(std::move(marked)) {}

    // Sizes are in bytes. A package weighs its bytes, and at least the minimum of
    // Transaction::atLeast.

    // Counts a package that rpm will install; local: its file is in the cache.
    void weighNew(quint64 size, bool local);
    // Counts a file to download. A delta weighs a third more, because a package is rebuilt from it.
    void weighRemote(quint64 size, bool delta);
    // Sets the downloads' share of the total bar. Files in the cache get no share.
    void shareDownloadSteps();
    // One slot for each counted file.
    void startDownloads();
    void endDownloads();
    void clearSlots();

    QList<Package::Entry*> actionEntries; // the marked records; the back end owns them

    // The listing, or the script's output for a question that has no listing.
    QString txText;
    bool txListed = false;  // a listing was made since the last question
    bool txApplied = false; // the user confirmed and no step failed

    bool transactionRan = false;                    // rpm has, or may have, changed the system
    bool outdated = false;                          // refused: another program changed the system
    Package::Marks leftOut;                         // impossible marks, not applied
    std::unique_ptr<SignalRecorder> signalRecorder; // while rpm changes the system

    quint64 cachedSize = 0;
    quint64 downloadSize = 0;
    quint64 downloadWeight = 0; // of all packages to install, including the cached ones
    quint64 rpmWeight = 0;
    quint32 downloadSteps = 0; // of the total bar

    quint64 actCounter = 0; // weight of the finished steps of the current item
    bool testRun = false;   // rpm only tests the transaction
    // These two distinguish a further report about one package from the first report about the next package.
    qint64 lastTsDone = -1;
    qint64 lastAction = 0;

    quint64 remoteWeight = 0;
    quint32 remoteCount = 0;
    bool downloading = false; // kept for diagnostics
    quint32 threadCount = 0;  // remoteCount and remoteWeight when the downloads began
    quint64 threadsMax = 0;
    quint32 nextSlot = 0; // the first slot without a file
    QHash<QString, quint32> payloadSlots;
};

#endif
