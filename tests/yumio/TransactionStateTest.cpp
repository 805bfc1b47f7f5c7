// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include "yumio/TransactionState.h"

// The smallest weight that a package can have.
constexpr quint64 least = 10240;

class TransactionStateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void beginningATransactionResetsEverythingExceptTheMarks()
    {
        Package::Entry entry;
        TransactionState transaction;
        transaction.txText = "text";
        transaction.txListed = true;
        transaction.txApplied = true;
        transaction.transactionRan = true;
        transaction.outdated = true;
        transaction.outcome.known = true;
        transaction.leftOut.insert(Package::EntryKey(entry), Package::Install);
        transaction.weighNew(50000, false);
        transaction.weighRemote(50000, true);
        transaction.shareDownloadSteps();
        transaction.startDownloads();
        transaction.payloadSlots.insert("a", transaction.nextSlot++);
        transaction.actCounter = 5;
        transaction.testRun = true;
        transaction.lastTsDone = 3;
        transaction.lastAction = 6;

        transaction = TransactionState({&entry});
        QCOMPARE(transaction.actionEntries, QList<Package::Entry*>{&entry});
        QCOMPARE(transaction.txText, QString());
        QVERIFY(!transaction.txListed);
        QVERIFY(!transaction.txApplied);
        QVERIFY(!transaction.transactionRan);
        QVERIFY(!transaction.outdated);
        QVERIFY(!transaction.outcome.known);
        QVERIFY(transaction.leftOut.isEmpty());
        QVERIFY(transaction.signalRecorder == nullptr);
        QCOMPARE(transaction.cachedSize, quint64(0));
        QCOMPARE(transaction.downloadSize, quint64(0));
        QCOMPARE(transaction.downloadWeight, quint64(0));
        QCOMPARE(transaction.rpmWeight, quint64(0));
        QCOMPARE(transaction.downloadSteps, quint32(0));
        QCOMPARE(transaction.actCounter, quint64(0));
        QVERIFY(!transaction.testRun);
        QCOMPARE(transaction.lastTsDone, qint64(-1));
        QCOMPARE(transaction.lastAction, qint64(0));
        QCOMPARE(transaction.remoteWeight, quint64(0));
        QCOMPARE(transaction.remoteCount, quint32(0));
        QVERIFY(!transaction.downloading);
        QCOMPARE(transaction.threadCount, quint32(0));
        QCOMPARE(transaction.threadsMax, quint64(0));
        QCOMPARE(transaction.nextSlot, quint32(0));
        QVERIFY(transaction.payloadSlots.isEmpty());
    }

    void theSizesOfCachedAndDownloadedPackagesAreSeparateAndTheirWeightsAreAdded()
    {
        TransactionState transaction;
        transaction.weighNew(30000, true);
        transaction.weighNew(20000, false);
        QCOMPARE(transaction.cachedSize, quint64(30000));
        QCOMPARE(transaction.downloadSize, quint64(20000));
        QCOMPARE(transaction.downloadWeight, quint64(50000));
        QCOMPARE(transaction.rpmWeight, quint64(150000));
    }

    void aSmallPackageHasTheMinimumWeight()
    {
        TransactionState transaction;
        transaction.weighNew(1, false);
        QCOMPARE(transaction.downloadSize, quint64(1));
        QCOMPARE(transaction.downloadWeight, least);
        QCOMPARE(transaction.rpmWeight, least);
        transaction.weighRemote(1, true);
        QCOMPARE(transaction.remoteWeight, 2 * least);
    }

    void theWeightOfADeltaIsAThirdLargerThanItsSize()
    {
        TransactionState transaction;
        transaction.weighRemote(90000, false);
        QCOMPARE(transaction.remoteWeight, quint64(90000));
        transaction.weighRemote(90000, true);
        QCOMPARE(transaction.remoteWeight, quint64(210000));
        QCOMPARE(transaction.remoteCount, quint32(2));
    }

    void theDownloadsGetStepsInProportionToTheirWeight()
    {
        TransactionState transaction;
        transaction.downloadSteps = 7;
        transaction.shareDownloadSteps();
        // The number is unchanged, because this transaction installs no package.
        QCOMPARE(transaction.downloadSteps, quint32(7));
        transaction.weighNew(30000, true);
        transaction.weighNew(10240, false);
        transaction.shareDownloadSteps();
        QCOMPARE(transaction.downloadSteps, quint32(0));
        transaction.weighRemote(10240, false);
        transaction.shareDownloadSteps();
        QCOMPARE(transaction.downloadSteps, quint32(10240 * 24000 / 40240));
    }

    void thePayloadSlotsAreClearedWhenTheDownloadsBeginAndEnd()
    {
        TransactionState transaction;
        transaction.weighRemote(20000, false);
        transaction.weighRemote(30000, false);
        transaction.payloadSlots.insert("old", transaction.nextSlot++);
        transaction.startDownloads();
        QVERIFY(transaction.downloading);
        QCOMPARE(transaction.threadCount, quint32(2));
        QCOMPARE(transaction.threadsMax, quint64(50000));
        QCOMPARE(transaction.nextSlot, quint32(0));
        QVERIFY(transaction.payloadSlots.isEmpty());
        transaction.payloadSlots.insert("a", transaction.nextSlot++);
        transaction.endDownloads();
        QVERIFY(!transaction.downloading);
        QCOMPARE(transaction.nextSlot, quint32(0));
        QVERIFY(transaction.payloadSlots.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TransactionStateTest)
#include "TransactionStateTest.moc"
