// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include "tests/yumio/ReportFixture.h"

// Tests of the script's reports about downloads.
class YumIODownloadsTest : public ReportFixture
{
    Q_OBJECT

private Q_SLOTS:
    void theWeightOfThePayloadsDeterminesTheStepsOfTheDownloads()
    {
        collect("it.available = [Package(name, size=100000) for name in 'abcd']");
        QVERIFY(apply("confirmed(item(1, 'a'), item(1, 'b'), item(1, 'c'), item(1, 'd'))\n"
                      "seen.append(look())\n"
                      "yumIOC.downloadRemotePayloads(iter([Rpm('a', 30000.0), Rpm('b', 50)]))\n"
                      "seen.append(state())\n"
                      "seen.append(look())\n"
                      "yumIOC.downloadRemotePayloads([Delta('c', 60000), Delta('d', 70)])\n"
                      "seen.append(state())\n"));
        backEnd->answers.take();
        QCOMPARE(backEnd->text("seen[0][0]"), QString("Running Transaction: Total Progress (0%) 0/33100"));
        QCOMPARE(backEnd->text("seen[1]['remoteCount'], seen[1]['remoteWeight']"), QString("(2, 40240)"));
        // The downloads weigh 40240, and all packages to install together weigh 400000.
        QCOMPARE(backEnd->text("seen[1]['downloadSteps']"), QString::number(40240 * 24000ULL / 400000));
        QCOMPARE(backEnd->text("seen[2][0]"),
                 QString("Running Transaction: Total Progress (0%) 0/%1").arg(2414 + 9100));
        QCOMPARE(backEnd->text("seen[3]['remoteCount'], seen[3]['remoteWeight']"),
                 QString("(4, %1)").arg(40240 + 60000 + 20000 + 10240 + 10240));
    }

    void aPayloadIsCountedEvenIfItsRecordHasAnotherArchitecture()
    {
        collect("it.available = [Package('lib', arch='i686')]");
        QVERIFY(!apply("yumIOC.downloadRemotePayloads([Rpm('lib', 20000, 'i586')])\nseen.append(state())"));
        // The script has sent no listing. So the total weight is unknown, and the downloads get no steps.
        QCOMPARE(backEnd->text("seen[0]['remoteCount'], seen[0]['downloadSteps']"), QString("(1, 0)"));
    }

    void anUnreadablePayloadDoesNotAffectOtherPayloads()
    {
        collect("it.available = [Package('a'), Package('b')]");
        QVERIFY(!apply("yumIOC.downloadRemotePayloads([Rpm('nobody', 1), Rpm('a', 20000), Thing(), "
                       "Rpm('b', 30000)])\nseen.append(state())"));
        QCOMPARE(errors(),
                 QStringList("Internal error: downloadRemotePayloads: unable to determine payload pkg"));
        // The first package has a size of one byte, so it gets the smallest weight.
        QCOMPARE(backEnd->text("seen[0]['remoteCount'], seen[0]['remoteWeight']"), QString("(3, 60240)"));
    }

    void aTransactionHasNoDownloadsIfAllPackagesAreCached()
    {
        collect("it.available = [Package('a', size=100000)]\n"
                "it.does['verifyLocalPkg'] = lambda package: True");
        QVERIFY(apply("confirmed(item(1, 'a'))\n"
                      "yumIOC.downloadRemotePayloads([])\n"
                      "seen.append(state())\n"
                      "seen.append(look())\n"
                      "yumIOC.rpmtransInit(True)\n"
                      "seen.append(look())"));
        backEnd->answers.take();
        QCOMPARE(backEnd->text("seen[0]['downloadSteps'], seen[0]['downloading']"), QString("(0, 0)"));
        QCOMPARE(backEnd->text("seen[1]"),
                 QString("['Running Transaction: Total Progress (0%) 0/9100', 'Preparing (0%) 0/1']"));
        QCOMPARE(backEnd->text("seen[2]"), QString("['Running Transaction: Total Progress (1%) 100/9100', "
                                                   "'Preparing to Run Transaction (0%) 0/1']"));
    }

    void parallelDownloadsHaveSeparateRowsInTheTip()
    {
        collect("it.available = [Package('a', size=30000), Package('b', size=70000)]");
        QVERIFY(apply("confirmed(item(1, 'a'), item(1, 'b'))\n"
                      "a, b = Rpm('a', 30000), Rpm('b', 70000)\n"
                      "yumIOC.downloadRemotePayloads([a, b])\n"
                      "yumIOC.downloadStart(2, 100000, 0)\n"
                      "seen.append(state())\nseen.append(look())\nseen.append(tip())\n"
                      "yumIOC.downloadProgress(b, 0.0)\n"
                      "yumIOC.downloadMessage('hello')\n"
                      "yumIOC.downloadProgress(a, 15000.0)\n"
                      "time.sleep(.02)\n"
                      "yumIOC.downloadProgress(b, 35000.9)\n"
                      "seen.append(state())\nseen.append(look())\nseen.append(tip())\n"
                      "yumIOC.downloadEnd(a, None, None)\n"
                      "time.sleep(.02)\n"
                      "yumIOC.downloadEnd(b, None, None)\n"
                      "seen.append(state())\nseen.append(look())\nseen.append(tip())\n"));
        backEnd->answers.take();
        QCOMPARE(backEnd->text("[seen[0][name] for name in ('downloading', 'threadCount', 'threadsMax', "
                               "'nextSlot', 'payloadSlots', 'actCounter')]"),
                 QString("[1, 2, 100000, 0, 0, 100000]"));
        QCOMPARE(backEnd->text("seen[1]"), QString("['Running Transaction: Total Progress (0%) 100/33100', "
                                                   "'Downloading 2 packages (0%) 0/100000']"));
        QCOMPARE(backEnd->text("seen[2]"), QString("['2 downloads: Not Started Yet']"));
        // A download gets its slot when it first reports progress.
        QCOMPARE(backEnd->text("seen[3]['nextSlot'], seen[3]['payloadSlots']"), QString("(2, 2)"));
        QVERIFY2(backEnd->text("seen[4][1]") == "Downloading 2 packages (50%) 50000/100000",
                 qPrintable(backEnd->text("seen[4]")));
        QCOMPARE(backEnd->text("seen[5]"), QString("['Downloading b.rpm: 35000 / 70000 (50.0%)', "
                                                   "'Downloading a.rpm: 15000 / 30000 (50.0%)']"));
        QCOMPARE(backEnd->text("seen[6]['nextSlot'], seen[6]['payloadSlots']"), QString("(2, 0)"));
        QVERIFY2(backEnd->text("seen[7][1]") == "Downloading 2 packages (100%) 100000/100000",
                 qPrintable(backEnd->text("seen[7]")));
        QCOMPARE(backEnd->text("seen[8]"),
                 QString("['Downloading b.rpm: Complete', 'Downloading a.rpm: Complete']"));
    }

    void aDownloadWithoutProgressReportsIsShownInTheTipAndCounted()
    {
        collect("it.available = [Package('a', size=30000), Package('b', size=70000)]");
        QVERIFY(!apply("a, b = Rpm('a', 30000), Rpm('b', 70000)\n"
                       "yumIOC.downloadRemotePayloads([a, b])\n"
                       "yumIOC.downloadStart(2, 100000, 0)\n"
                       "time.sleep(.02)\n"
                       "yumIOC.downloadEnd(a, None, None)\n"
                       "seen.append(tip())\nseen.append(look())\nseen.append(state())\n"
                       "time.sleep(.02)\n"
                       "yumIOC.downloadProgress(b, 70000.0)\n"
                       "seen.append(tip())\nseen.append(look())\n"
                       "yumIOC.downloadEnd(Thing(download_size=5), None, None)\n"));
        QCOMPARE(backEnd->text("seen[0]"),
                 QString("['Downloading a.rpm: Complete', '1 downloads: Not Started Yet']"));
        QCOMPARE(backEnd->text("seen[1][1]"), QString("Downloading 2 packages (30%) 30000/100000"));
        QCOMPARE(backEnd->text("seen[2]['nextSlot'], seen[2]['payloadSlots']"), QString("(1, 0)"));
        QCOMPARE(backEnd->text("seen[3]"), QString("['Downloading a.rpm: Complete', "
                                                   "'Downloading b.rpm: 70000 / 70000 (100.0%)']"));
        QCOMPARE(backEnd->text("seen[4][1]"), QString("Downloading 2 packages (100%) 100000/100000"));
    }

    void theTipShowsARebuiltDeltaEvenIfItReportedNoProgress()
    {
        collect("it.available = [Package('a', size=30000), Package('b', size=70000)]");
        QVERIFY(!apply("a = Delta('a', 30000)\n"
                       "yumIOC.downloadRemotePayloads([a, Rpm('b', 70000)])\n"
                       "yumIOC.downloadStart(2, 100000, 1)\n"
                       "yumIOC.downloadEnd(a, 0, None)\n"
                       "seen.append(tip())\n"
                       "yumIOC.downloadEnd(a, 4, None)\n"
                       "seen.append(tip())"));
        QCOMPARE(backEnd->text("seen[0][0]"), QString("Downloading a.drpm: 30000 / 30000 (100.0%)"));
        QCOMPARE(backEnd->text("seen[1][0]"), QString("Downloading a.drpm: Complete"));
    }

    void aSmallDownloadHasTheMinimumWeight()
    {
        collect("it.available = [Package('a', size=100), Package('b', size=100)]");
        QVERIFY(apply("confirmed(item(1, 'a'), item(1, 'b'))\n"
                      "a, b = Rpm('a', 100), Rpm('b', 100)\n"
                      "yumIOC.downloadRemotePayloads([a, b])\n"
                      "yumIOC.downloadStart(2, 200, 0)\n"
                      "yumIOC.downloadProgress(a, 50.0)\n"
                      "seen.append(tip())\n"
                      "time.sleep(.02)\n"
                      "yumIOC.downloadEnd(a, None, '')\n"
                      "seen.append(look())\n"));
        backEnd->answers.take();
        QCOMPARE(backEnd->text("seen[0][0]"), QString("Downloading a.rpm: 50 / 10240 (0.5%)"));
        QCOMPARE(backEnd->text("seen[1][1]"), QString("Downloading 2 packages (50%) 10240/20480"));
    }

    void theTipShowsTheResultOfEachDownload_data()
    {
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("state");
        const QString complete = "Downloading a.rpm: Complete";
        QTest::newRow("success") << "None" << complete;
        QTest::newRow("status 0") << "0" << complete;
        QTest::newRow("failed") << "1" << complete;
        QTest::newRow("failed, dnf tries another mirror") << "3" << complete;
        QTest::newRow("package already present") << "2"
                                                 << "Downloading a.rpm: 5000 / 30000 (16.7%)";
    }

    void theTipShowsTheResultOfEachDownload()
    {
        QFETCH(QString, status);
        QFETCH(QString, state);
        collect("it.available = [Package('a', size=30000), Package('b', size=30000)]");
        QVERIFY(apply("confirmed(item(1, 'a'), item(1, 'b'))\n"
                      "a, b = Rpm('a', 30000), Rpm('b', 30000)\n"
                      "yumIOC.downloadRemotePayloads([a, b])\n"
                      "yumIOC.downloadStart(2, 60000, 0)\n"
                      "yumIOC.downloadProgress(a, 5000.0)\n"
                      "yumIOC.downloadEnd(a, " +
                      status +
                      ", None)\n"
                      "seen.append(tip())\nseen.append(state()['payloadSlots'])"));
        backEnd->answers.take();
        QCOMPARE(backEnd->text("seen[0][0]"), state);
        QCOMPARE(backEnd->text("seen[1]"), QString(status == "2" ? "1" : "0"));
    }

    void theMessageOfAFailedDownloadIsLogged()
    {
        collect("it.available = [Package('a', size=30000)]");
        const int before = logLength();
        QVERIFY(!apply("a = Rpm('a', 30000)\n"
                       "yumIOC.downloadRemotePayloads([a])\n"
                       "yumIOC.downloadStart(1, 30000, 0)\n"
                       "yumIOC.downloadProgress(a, 5000.0)\n"
                       "yumIOC.downloadEnd(a, 1, 'Status code: 404')"));
        QCOMPARE(logged(before), QStringList({"4 0 Applying", "0 2 a.rpm: Status code: 404"}));
    }

    void theTipShowsADeltaAsCompleteWhenItsPackageIsRebuilt()
    {
        collect("it.available = [Package('a', size=30000), Package('b', size=30000)]");
        QVERIFY(apply("confirmed(item(1, 'a'), item(1, 'b'))\n"
                      "a, b = Delta('a', 60000), Delta('b', 300)\n"
                      "yumIOC.downloadRemotePayloads([a, b])\n"
                      "yumIOC.downloadStart(2, 60300, 2)\n"
                      "seen.append(look())\n"
                      "yumIOC.downloadProgress(a, 1000.0)\n"
                      "yumIOC.downloadProgress(b, 10.0)\n"
                      "yumIOC.downloadEnd(a, None, None)\n"
                      "seen.append(tip())\n"
                      "yumIOC.downloadEnd(b, 0, None)\n"
                      "seen.append(tip())\n"
                      "yumIOC.downloadEnd(a, 4, None)\n"
                      "seen.append(tip())\n"
                      "time.sleep(.02)\n"
                      "yumIOC.downloadEnd(b, 4, None)\n"
                      "seen.append(tip())\n"
                      "seen.append(look())\n"
                      "seen.append(state())"));
        backEnd->answers.take();
        QCOMPARE(backEnd->text("seen[0][1]"), QString("Downloading 2 packages (0%) 0/100480"));
        QCOMPARE(backEnd->text("seen[1]"), QString("['Downloading a.drpm: 60000 / 60000 (100.0%)', "
                                                   "'Downloading b.drpm: 10 / 10240 (0.1%)']"));
        QCOMPARE(backEnd->text("seen[2]"), QString("['Downloading a.drpm: 60000 / 60000 (100.0%)', "
                                                   "'Downloading b.drpm: 10240 / 10240 (100.0%)']"));
        QCOMPARE(backEnd->text("seen[3]"), QString("['Downloading a.drpm: Complete', "
                                                   "'Downloading b.drpm: 10240 / 10240 (100.0%)']"));
        QCOMPARE(backEnd->text("seen[4]"),
                 QString("['Downloading a.drpm: Complete', 'Downloading b.drpm: Complete']"));
        // 100480 is the weight of the downloads together with the packages that are rebuilt from the deltas.
        QCOMPARE(backEnd->text("seen[5][1]"), QString("Downloading 2 packages (100%) 100480/100480"));
        QCOMPARE(backEnd->text("seen[6]['payloadSlots']"), QString("0"));
    }

    void theTipShowsAFailedDeltaAsCompleteAtOnce()
    {
        collect("it.available = [Package('a', size=30000), Package('b', size=30000)]");
        QVERIFY(!apply("a, b = Delta('a', 60000), Delta('b', 300)\n"
                       "yumIOC.downloadRemotePayloads([a, b])\n"
                       "yumIOC.downloadStart(2, 60300, 2)\n"
                       "yumIOC.downloadProgress(a, 1000.0)\n"
                       "time.sleep(.02)\n"
                       "yumIOC.downloadEnd(a, 1, None)\n"
                       "seen.append(tip())\nseen.append(look())"));
        QCOMPARE(backEnd->text("seen[0][0]"), QString("Downloading a.drpm: Complete"));
        QCOMPARE(backEnd->text("seen[1][1]"), QString("Downloading 2 packages (79%) 80000/100480"));
    }

    void aPayloadOfAnUnexpectedTypeCausesAWarning()
    {
        collect("it.available = [Package('a', size=30000)]");
        QVERIFY(!apply("yumIOC.downloadRemotePayloads([Rpm('a', 30000)])\n"
                       "yumIOC.downloadStart(1, 30000, 0)\n"
                       "yumIOC.downloadProgress(Thing(download_size=1), 1.0)\n"
                       "seen.append(state())\n"
                       "yumIOC.downloadProgress(Metadata('repomd.xml', 2000), 1.0)\n"
                       "seen.append(state())\n"));
        QCOMPARE(warnings(), QStringList("warning: YumIO::tsDownloadProgress saw payload with unexpected "
                                         "type: Thing"));
        QCOMPARE(backEnd->text("seen[0]['payloadSlots'], seen[1]['payloadSlots']"), QString("(0, 1)"));
    }

    void surplusDownloadsCauseOneWarning()
    {
        collect("it.available = [Package('a', size=30000), Package('b', size=30000)]");
        const QString extra = "yumIOC.downloadRemotePayloads([Rpm('a', 30000)])\n"
                              "yumIOC.downloadStart(1, 30000, 0)\n"
                              "for name in 'abc':\n"
                              "    yumIOC.downloadProgress(Rpm(name, 30000), 1000.0)\n"
                              "yumIOC.downloadEnd(Rpm('b', 30000), None, None)\n"
                              "yumIOC.downloadEnd(Rpm('never', 30000), None, None)\n"
                              "seen.append(tip())\n";
        const int before = logLength();
        QVERIFY(!apply(extra));
        QCOMPARE(warnings(), QStringList("error: YumIO::tsDownloadProgress: unexpected thread 1/1"));
        QVERIFY(backEnd->log(before).contains("2 0 error: YumIO::tsDownloadProgress: unexpected thread 1/1"));
        QCOMPARE(backEnd->text("seen[0]"), QString("['Downloading a.rpm: 1000 / 30000 (3.3%)']"));
        QVERIFY(!apply(extra));
        QCOMPARE(warnings(), QStringList());
    }

    void theProgressOfMetadataDownloadsIsShownForEachRepository()
    {
        backEnd->run("def download():\n"
                     "    one, two = Metadata('one', 400.0), Metadata('two', 100.0)\n"
                     "    yumIOC.downloadStart(1, 400, 0)\n"
                     "    yumIOC.downloadProgress(one, 0.0)\n"
                     "    seen.append(look())\n"
                     "    yumIOC.downloadProgress(one, 0.0)\n"
                     "    seen.append(look())\n"
                     "    yumIOC.downloadProgress(one, 100.0)\n"
                     "    seen.append(look())\n"
                     "    yumIOC.downloadMessage('x')\n"
                     "    time.sleep(.02)\n"
                     "    yumIOC.downloadEnd(one, None, None)\n"
                     "    seen.append(look())\n"
                     "    yumIOC.downloadProgress(two, 50.0)\n"
                     "    seen.append(look())\n"
                     "    return True\n"
                     "seen = []\n"
                     "it.does['setupRepos'] = download\n"
                     "it.does['collectUpdates'] = lambda: seen.append(look()) or []\n"
                     "BASE.repos['second'] = Thing(enabled=1)");
        QVERIFY(backEnd->collect());
        const auto seen = [this](int index) { return backEnd->text(QString("seen[%1]").arg(index)); };
        // "Preparing" has 100 steps, "Reading repositories" 900, and each of the two repositories 7000.
        const QString first = "['Initializing: Total Progress (%1%) %2/18000', "
                              "'Reading repository metadata for %3']";
        QCOMPARE(seen(0), first.arg("5", "1000", "one (0%) 0/1"));
        QCOMPARE(seen(1), first.arg("5", "1000", "one (0%) 0/1"));
        QCOMPARE(seen(2), first.arg("15", "2750", "one (25%) 100/400"));
        QCOMPARE(seen(3), first.arg("44", "8000", "one (100%) 400/400"));
        QCOMPARE(seen(4), first.arg("44", "8000", "two (0%) 0/1"));
        // The bar has no maximum, because the number of the updates is not known yet.
        QCOMPARE(seen(5), QString("['Initializing: Total Progress (83%) 15000/18000', "
                                  "'Collecting updatable packages 0/0']"));
    }

    void theProgressOfAMetadataDownloadBeyondTwoGigabytesIsCorrect()
    {
        backEnd->run("def download():\n"
                     "    large = Metadata('large', 6.0 * 2 ** 30)\n"
                     "    yumIOC.downloadStart(1, 6 << 30, 0)\n"
                     "    yumIOC.downloadProgress(large, 0.0)\n"
                     "    yumIOC.downloadProgress(large, 3.0 * 2 ** 30)\n"
                     "    seen.append(look())\n"
                     "    time.sleep(.02)\n"
                     "    yumIOC.downloadEnd(large, None, None)\n"
                     "    seen.append(look())\n"
                     "    return True\n"
                     "seen = []\n"
                     "it.does['setupRepos'] = download");
        QVERIFY(backEnd->collect());
        QCOMPARE(backEnd->text("seen"),
                 QString("[['Initializing: Total Progress (44%) 8000/18000', "
                         "'Reading repository metadata for large (50%) 805306368/1610612736'], "
                         "['Initializing: Total Progress (83%) 15000/18000', "
                         "'Reading repository metadata for large (100%) 1610612736/1610612736']]"));
        QCOMPARE(yumIO().readingMax, 6ULL << 30);
    }
};

QTEST_MAIN(YumIODownloadsTest)
#include "YumIODownloadsTest.moc"
