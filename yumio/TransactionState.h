// One transaction, from the click on "Apply Actions" to the next one: the marked records, the listing, the
// weights of the progress bars, the downloads and the outcome.
//
// The back end has one object and replaces it when an apply begins. The worker writes it, with the
// interpreter lock held; the graphical thread does so only while no worker runs.

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

    // Sizes are bytes. A package weighs its bytes, and at least as much as an empty one
    // (Transaction::atLeast).

    // Counts a package that rpm is going to install; local: its file is in the cache.
    void weighNew(quint64 size, bool local);
    // Counts a file to download. A delta is rebuilt to a package, which takes a third of the time.
    void weighRemote(quint64 size, bool delta);
    // Gives the downloads of the counted files their share of the total bar: none for files in the cache.
    void shareDownloadSteps();
    // One slot for each counted file.
    void startDownloads();
    void endDownloads();
    void clearSlots();

    QList<Package::Entry*> actionEntries; // the marked records; the back end owns them

    // The listing, or the script's output for a question without one.
    QString txText;
    bool txListed = false;  // the listing has been made since the last question
    bool txApplied = false; // the user has confirmed, and nothing has failed

    bool transactionRan = false;                    // rpm has changed the system, or may have
    bool outdated = false;                          // refused: another program has changed the system
    Package::Marks leftOut;                         // impossible, so not applied
    std::unique_ptr<SignalRecorder> signalRecorder; // while the system is being changed

    quint64 cachedSize = 0;
    quint64 downloadSize = 0;
    quint64 downloadWeight = 0; // of all packages to install, those in the cache too
    quint64 rpmWeight = 0;
    quint32 downloadSteps = 0; // of the total bar

    quint64 actCounter = 0; // weight of the finished steps of the present item
    bool testRun = false;   // rpm only tests the transaction
    // Tell a further report about one package from the first report about the next one.
    qint64 lastTsDone = -1;
    qint64 lastAction = 0;

    quint64 remoteWeight = 0;
    quint32 remoteCount = 0;
    bool downloading = false; // kept for diagnostics
    quint32 threadCount = 0;  // remoteCount and remoteWeight when the downloads began
    quint64 threadsMax = 0;
    quint32 nextSlot = 0; // the first one that no file has
    QHash<QString, quint32> payloadSlots;
};

#endif
