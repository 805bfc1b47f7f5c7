// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include "tests/yumio/ReportFixture.h"

// Tests of the script's output, of wrong calls by the script, and of its reports about a transaction.
class YumIOProgressTest : public ReportFixture
{
    Q_OBJECT

private Q_SLOTS:
    // --- Output

    void anUnfinishedLineOfOutputIsLoggedWhenItsEndArrives()
    {
        QSignalSpy spy(&yumIO().logEntries(), SIGNAL(appended()));
        const int before = logLength();
        backEnd->run("sys.stdout.write('one\\ntw')");
        QCOMPARE(backEnd->log(before), QStringList("1 0 one"));
        QCOMPARE(yumIO().stdoutPending, QString("tw"));
        QCOMPARE(spy.count(), 1);
        backEnd->run("sys.stdout.write('o')");
        QCOMPARE(backEnd->log(before).count(), 1);
        QCOMPARE(spy.count(), 1);
        backEnd->run("sys.stdout.write('\\nthree\\n\\nfour\\n')");
        QCOMPARE(backEnd->log(before), QStringList({"1 0 one", "1 0 two", "1 0 three", "1 0 four"}));
        QCOMPARE(spy.count(), 2);
        QVERIFY(yumIO().stdoutPending.isEmpty());
    }

    void standardOutputAndStandardErrorAreNotMixedInALine()
    {
        const int before = logLength();
        backEnd->run("sys.stdout.write('out')\nsys.stderr.write('err')");
        yumIO().stdoutCapturedWrite("captured out");
        yumIO().stderrCapturedWrite("captured err");
        QCOMPARE(backEnd->log(before), QStringList());
        yumIO().stderrCapturedWrite(" 1\n");
        yumIO().stdoutCapturedWrite(" 2\n");
        backEnd->run("sys.stderr.write(' 3\\n')\nsys.stdout.write(' 4\\n')");
        QCOMPARE(backEnd->log(before),
                 QStringList({"3 0 captured err 1", "1 0 captured out 2", "3 0 err 3", "1 0 out 4"}));
    }

    void standardErrorIsLoggedWithTheConfiguredKindAndLevel()
    {
        const Log::Kind kind = yumIO().stderrKind;
        const unsigned int level = yumIO().stderrLevel;
        QCOMPARE(kind, Log::Error);
        QCOMPARE(level, 0U);
        yumIO().stderrKind = Log::Warning;
        yumIO().stderrLevel = 7;
        const int before = logLength();
        backEnd->run("sys.stderr.write('mild\\n')");
        yumIO().stderrKind = kind;
        yumIO().stderrLevel = level;
        QCOMPARE(backEnd->log(before), QStringList("2 7 mild"));
    }

    void onlyAQuestionWithoutAListingContainsTheOutputOfTheScript()
    {
        backEnd->run("sys.stdout.write('caf\\u00e9 %1')\nsys.stderr.write('b\\n')");
        QCOMPARE(transaction().txText, QString::fromUtf8("café %1\nb\n\n"));
        transaction().txText = "listing\n";
        transaction().txListed = true;
        backEnd->run("sys.stdout.write('c')\nsys.stderr.write('d')");
        QCOMPARE(transaction().txText, QString("listing\n"));
        transaction().txListed = false;
        backEnd->run("yumIOC.gpgsigcheck()");
        QCOMPARE(transaction().txText, QString());
    }

    void logMessagesOfTheScriptKeepTheirLevel()
    {
        QSignalSpy spy(&yumIO().logEntries(), SIGNAL(appended()));
        const int before = logLength();
        backEnd->run("yumIOC.log(9, 'one\\n\\ntwo <b>')\nyumIOC.errorlog(2, 'three')");
        QCOMPARE(backEnd->log(before), QStringList({"0 9 one", "0 9 two <b>", "3 2 three"}));
        QCOMPARE(spy.count(), 2);
    }

    void anErrorNumberLikeErrno2BeginsANewLineInTheLog()
    {
        const int before = logLength();
        backEnd->run("yumIOC.errorlog(0, 'a: [Errno 2] b: [Errno 13] c')\n"
                     "yumIOC.log(1, 'a [Errno 2] b')\n"
                     "yumIOC.log(1, 'a: [Errno x] b')\n"
                     "yumIOC.log(1, 'a: [Errno ] b')\n"
                     "yumIOC.log(1, 'a: [Errno 2]')");
        QCOMPARE(backEnd->log(before),
                 QStringList({"3 0 a:", "3 0 [Errno 2] b:", "3 0 [Errno 13] c", "0 1 a [Errno 2] b",
                              "0 1 a: [Errno x] b", "0 1 a:", "0 1 [Errno ] b", "0 1 a: [Errno 2]"}));
    }

    void theOutputOfScriptletsIsLogged()
    {
        const int before = logLength();
        backEnd->run("yumIOC.rpmtransScriptout(None)\nyumIOC.rpmtransScriptout('first\\nsecond')");
        QCOMPARE(backEnd->log(before), QStringList({"1 0 first", "1 0 second"}));
    }

    void theFunctionsPostTransactionOutputAndGpgsigcheckLogNothing()
    {
        const int before = logLength();
        backEnd->run("yumIOC.postTransactionOutput()\nyumIOC.postTransactionOutput(1, 'x')\n"
                     "yumIOC.gpgsigcheck(1, 'x')");
        QCOMPARE(backEnd->log(before), QStringList());
    }

    // --- Wrong calls

    void invalidArgumentsOfACallAreReported_data()
    {
        QTest::addColumn<QString>("call");
        QTest::addColumn<QString>("function"); // empty if the user gets no message
        const auto row = [](const char* call, const char* function) {
            QTest::newRow(call) << call << function;
        };
        row("downloadStart", "downloadStart");
        row("downloadStart, 'a', 1, 2", "downloadStart");
        row("downloadStart, 1, 2", "downloadStart");
        row("downloadProgress, 1", "downloadProgress");
        row("downloadProgress, 1, 'half'", "downloadProgress");
        row("downloadMessage", "downloadMessage");
        row("downloadEnd, 1, 2", "downloadEnd");
        row("rpmtransInit", "rpmtransInit");
        row("rpmtransProgress, 1, 2, 3, 4, 5", "rpmtransProgress");
        row("rpmtransProgress, 1, 'install', 3, 4, 5, 6", "rpmtransProgress");
        row("rpmtransProgress, 1, 1, 'x', 4, 5, 6", "rpmtransProgress");
        row("rpmtransProgress, 1, 1, 3, 4, 5, []", "rpmtransProgress");
        row("rpmtransScriptout", "rpmtransScriptout");
        row("downloadRemotePayloads", "");
        row("downloadRemotePayloads, 1", "");
        row("stdoutWrite", "");
        row("stdoutWrite, 1", "");
        row("stderrWrite, None", "");
        row("log, 'a', 'b'", "");
        row("log, 1", "");
        row("errorlog, 1, 2", "");
        row("errorlog", "");
        row("rpmtransDel, 1", "");
    }

    void invalidArgumentsOfACallAreReported()
    {
        QFETCH(QString, call);
        QFETCH(QString, function);
        const QStringList expected =
            function.isEmpty()
                ? QStringList()
                : QStringList({generic, "Internal error: " + function + ": unable to interpret arguments"});
        // The call has the same result when no operation runs and during an operation.
        QCOMPARE(backEnd->text("failure(yumIOC." + call + ")"), QString("TypeError"));
        QCOMPARE(errors(), expected);
        QVERIFY(!apply("seen.append(failure(yumIOC." + call + "))"));
        QCOMPARE(backEnd->text("seen"), QString("['TypeError']"));
        QCOMPARE(errors(), expected);
    }

    void aCallWithWrongArgumentsRaisesAnExceptionInTheScript()
    {
        backEnd->run("def message(function, *arguments):\n"
                     "    try:\n"
                     "        function(*arguments)\n"
                     "    except TypeError as e:\n"
                     "        return str(e)\n");
        // A wrong call of listTransaction() or log() causes no message.
        const QString count = backEnd->text("message(yumIOC.listTransaction)");
        QVERIFY2(count.contains("2 arguments (0 given)"), qPrintable(count));
        const QString type = backEnd->text("message(yumIOC.log, 'a', 'b')");
        QVERIFY2(type.contains("str"), qPrintable(type));
        QCOMPARE(errors(), QStringList());
        QCOMPARE(backEnd->text("message(yumIOC.downloadProgress)"), count);
        QCOMPARE(backEnd->text("message(yumIOC.downloadStart, 'a', 1, 2)"), type);
        QCOMPARE(errors(),
                 QStringList({generic, "Internal error: downloadProgress: unable to interpret arguments",
                              generic, "Internal error: downloadStart: unable to interpret arguments"}));
    }

    void aTooLargeStatusNumberRaisesNoException()
    {
        collect("it.available = [Package('a', size=30000)]");
        QVERIFY(!apply("a = Rpm('a', 30000)\n"
                       "yumIOC.downloadRemotePayloads([a])\n"
                       "yumIOC.downloadStart(1, 30000, 0)\n"
                       "seen.append(failure(yumIOC.downloadEnd, a, 1 << 70, None))\n"
                       "seen.append(tip())"));
        QCOMPARE(backEnd->text("seen"), QString("[None, ['Downloading a.rpm: Complete']]"));
    }

    void anErrorIsReportedForADownloadOutsideAnOperation_data()
    {
        QTest::addColumn<QString>("function");
        QTest::addColumn<QString>("arguments");
        QTest::newRow("start") << "downloadStart"
                               << "1, 2, 3";
        QTest::newRow("progress") << "downloadProgress"
                                  << "Rpm('a', 1), 1.0";
        QTest::newRow("message") << "downloadMessage"
                                 << "'hello'";
        QTest::newRow("end") << "downloadEnd"
                             << "Rpm('a', 1), None, None";
    }

    void anErrorIsReportedForADownloadOutsideAnOperation()
    {
        QFETCH(QString, function);
        QFETCH(QString, arguments);
        QCOMPARE(backEnd->text("failure(yumIOC." + function + ", " + arguments + ")"),
                 QString("RuntimeError"));
        QCOMPARE(errors(), QStringList("Internal error: " + function + ": download at unexpected time"));
    }

    void unreadablePayloadsAreReported_data()
    {
        QTest::addColumn<QString>("call");
        QTest::addColumn<QString>("message");
        QTest::addColumn<bool>("exception");
        const auto row = [](const char* call, const char* message, bool exception = true) {
            QTest::newRow(message) << call << message << exception;
        };
        row("downloadProgress, wrong, 1.0", "downloadProgress: unable to determine payload __str__");
        row("downloadProgress, Rpm('a', None), 1.0",
            "downloadProgress: unable to determine payload download_size");
        row("downloadEnd, wrong, None, None", "downloadEnd: unable to determine payload __str__");
        row("downloadEnd, Rpm('a', 'many'), None, None",
            "downloadEnd: unable to determine payload download_size");
        row("downloadRemotePayloads, [Thing()]", "downloadRemotePayloads: unable to determine payload pkg");
        row("downloadRemotePayloads, [Thing(pkg=Thing())]",
            "downloadRemotePayloads: unable to determine payload pkg.name");
        row("downloadRemotePayloads, [Thing(pkg=Thing(name='a'))]",
            "downloadRemotePayloads: unable to determine payload pkg.arch");
        row("downloadRemotePayloads, [Thing(pkg=Thing(name='a', arch='x86_64'))]",
            "downloadRemotePayloads: unable to determine payload download_size", false);
    }

    void unreadablePayloadsAreReported()
    {
        QFETCH(QString, call);
        QFETCH(QString, message);
        QFETCH(bool, exception);
        backEnd->run("wrong = Wrong()\nwrong.exception = ValueError('x')");
        const int before = logLength();
        QVERIFY(!apply("seen.append(failure(yumIOC." + call + "))\nseen.append(state())"));
        const QStringList texts = errors();
        QCOMPARE(texts, QStringList("Internal error: " + message));
        // If the payload raised an exception, the log contains this exception.
        QCOMPARE(!backEnd->log(before).filter(QRegularExpression("^3 0 \\w+Error: ")).isEmpty(), exception);
        // The script continues after the call.
        QCOMPARE(backEnd->text("seen[0]"), QString("None"));
        QCOMPARE(backEnd->text("seen[1]['remoteCount'], seen[1]['payloadSlots']"), QString("(0, 0)"));
    }

    void theOperationReportsARuntimeErrorThatAPayloadRaises()
    {
        // The operation must get the exception, because the operation reports the failure to the user.
        backEnd->run("wrong = Wrong()\nwrong.exception = RuntimeError('inside')\n"
                     "class Lost:\n"
                     "    @property\n"
                     "    def pkg(self): raise RuntimeError('inside')\n");
        for (const char* call : {"downloadProgress(wrong, 1.0)", "downloadEnd(wrong, None, None)",
                                 "downloadRemotePayloads([Lost(), Lost()])"}) {
            QVERIFY(!apply(QString("yumIOC.") + call));
            const QStringList texts = errors();
            QCOMPARE(texts.count(), 2);
            QVERIFY2(texts[0].startsWith("Internal error: download"), qPrintable(texts[0]));
            QCOMPARE(texts[1], QString("Unable to apply changes: Runtime Error:\n\ninside"));
        }
    }

    // --- The transaction

    void theBarShowsThePreparationEvenIfNothingIsDownloaded()
    {
        collect("it.installed = [Package('old', size=200000)]");
        QVERIFY(apply("confirmed(item(8, 'old'))\n"
                      "yumIOC.downloadRemotePayloads([])\n"
                      "yumIOC.rpmtransInit(True)\n"
                      "seen.append(look())\n"
                      "yumIOC.rpmtransDel()\n"
                      "yumIOC.rpmtransInit(False)\n"
                      "yumIOC.rpmtransProgress(it.installed[0], 8, 0, 1, 1, 1)\n"
                      "yumIOC.rpmtransDel()\n"
                      "seen.append(look())"));
        backEnd->answers.take();
        QCOMPARE(backEnd->text("seen[0]"), QString("['Running Transaction: Total Progress (1%) 100/9100', "
                                                   "'Preparing to Run Transaction (0%) 0/1']"));
        QCOMPARE(backEnd->text("seen[1][0]"),
                 QString("Running Transaction: Total Progress (100%) 9100/9100"));
    }

    void theBarsShowThePreparationOfTheTransaction()
    {
        collect(
            "it.available = [Package('a', size=30000)]\nit.does['verifyLocalPkg'] = lambda package: True");
        QVERIFY(apply("confirmed(item(1, 'a'))\n"
                      "yumIOC.downloadRemotePayloads([])\n"
                      "yumIOC.rpmtransInit(True)\n"
                      "seen.append(look())\nseen.append(state())\n"
                      "yumIOC.rpmtransDel()\n"
                      "seen.append(look())\n"
                      "yumIOC.rpmtransInit(False)\n"
                      "seen.append(look())\nseen.append(state())\n"
                      "yumIOC.rpmtransDel()\n"
                      "seen.append(look())\n"));
        backEnd->answers.take();
        const QString preparing = "['Running Transaction: Total Progress (1%) 100/9100', "
                                  "'Preparing to Run Transaction (0%) 0/1']";
        QCOMPARE(backEnd->text("seen[0]"), preparing);
        QCOMPARE(backEnd->text("seen[1]['testRun']"), QString("1"));
        // The bars do not change when the test transaction ends, nor when the real transaction begins.
        QCOMPARE(backEnd->text("seen[2]"), preparing);
        QCOMPARE(backEnd->text("seen[3]"), preparing);
        QCOMPARE(backEnd->text("seen[4]['testRun']"), QString("0"));
        QCOMPARE(backEnd->text("seen[5]"), QString("['Running Transaction: Total Progress (100%) 9100/9100', "
                                                   "'Preparing to Run Transaction (0%) 0/1']"));
    }

    void theBarShowsThePreparationEvenWithoutATestTransaction()
    {
        QVERIFY(apply("confirmed()\n"
                      "yumIOC.rpmtransInit(False)\n"
                      "seen.append(look())\n"));
        backEnd->answers.take();
        QCOMPARE(backEnd->text("seen[0][1]"), QString("Preparing to Run Transaction (0%) 0/1"));
    }

    void everyArgumentOfRpmtransInitExceptFalseMeansATestTransaction()
    {
        QVERIFY(!apply("for flag in (False, True, None, 0, '', False):\n"
                       "    yumIOC.rpmtransInit(flag)\n"
                       "    seen.append(state()['testRun'])"));
        QCOMPARE(backEnd->text("seen"), QString("[0, 1, 1, 1, 1, 0]"));
    }

    void thePreparationOfATransactionRemovesTheDownloadsFromTheTip()
    {
        collect("it.available = [Package('a', size=30000), Package('b', size=30000)]");
        QVERIFY(apply("confirmed(item(1, 'a'), item(1, 'b'))\n"
                      "yumIOC.downloadRemotePayloads([Rpm('a', 30000), Rpm('b', 30000)])\n"
                      "yumIOC.downloadStart(2, 60000, 0)\n"
                      "yumIOC.downloadProgress(Rpm('a', 30000), 1000.0)\n"
                      "yumIOC.rpmtransInit(1)\n"
                      "seen.append(look())\nseen.append(tip())\nseen.append(state())"));
        backEnd->answers.take();
        // The argument 1 means a test transaction, like every argument except False.
        QCOMPARE(backEnd->text("[seen[2][name] for name in ('testRun', 'downloading', 'nextSlot', "
                               "'payloadSlots', 'actCounter')]"),
                 QString("[1, 0, 0, 0, 0]"));
        QCOMPARE(backEnd->text("seen[0]"),
                 QString("['Running Transaction: Total Progress (72%) 24100/33100', "
                         "'Preparing to Run Transaction (0%) 0/1']"));
        QCOMPARE(backEnd->text("seen[1]"), QString("[]"));
    }

    void theBarsShowEachActionOfTheTransaction_data()
    {
        QTest::addColumn<int>("action");
        QTest::addColumn<QString>("text");
        // "weight" is for a new package with the size 200000 and an old package with the size 100000.
        // "leastWeight" is for small packages.
        QTest::addColumn<quint64>("weight");
        QTest::addColumn<quint64>("leastWeight");
        const auto row = [](int action, const char* text, quint64 weight, quint64 least = 10240) {
            QTest::newRow(text) << action << text << weight << least;
        };
        row(1, "Installing pkg", 600000);
        row(2, "Downgrading pkg", 600000);
        row(3, "Completing downgrade of pkg", 20000);
        row(4, "Obsoleting pkg", 600000);
        QTest::newRow("Obsoleted") << 5 << "Obsoleting pkg" << quint64(100000) << quint64(10240);
        row(6, "Upgrading pkg", 600000);
        row(7, "Completing upgrade of pkg", 20000);
        row(8, "Removing pkg", 100000);
        row(9, "Reinstalling pkg", 600000);
        row(10, "Completing reinstall of pkg", 20000);
        row(103, "Executing scriptlet for pkg", 0, 0);
    }

    void theBarsShowEachActionOfTheTransaction()
    {
        QFETCH(int, action);
        QFETCH(QString, text);
        QFETCH(quint64, weight);
        QFETCH(quint64, leastWeight);
        for (const bool large : {true, false}) {
            backEnd->renew();
            collect(QString("it.updates = [Package('pkg', '2.0', size=%1)]\n"
                            "it.installed = [Package('pkg', size=%2)]")
                        .arg(large ? 200000 : 200)
                        .arg(large ? 100000 : 1000));
            const int before = logLength();
            QVERIFY(apply(QString("confirmed()\n"
                                  "yumIOC.rpmtransInit(False)\n"
                                  "time.sleep(.02)\n"
                                  "yumIOC.rpmtransProgress(it.updates[0], %1, 3, 9, 1, 2)\n"
                                  "seen.append(state())\nseen.append(look())\n"
                                  "time.sleep(.02)\n"
                                  "yumIOC.rpmtransProgress(it.updates[0], %1, 6, 9, 1, 2)\n"
                                  "seen.append(state())\nseen.append(look())\n")
                              .arg(action)));
            backEnd->answers.take();
            // Later reports about the same package do not add its weight again.
            QCOMPARE(backEnd->text("seen[0]['actCounter'], seen[2]['actCounter']"),
                     QString("(%1, %1)").arg(large ? weight : leastWeight));
            QCOMPARE(backEnd->text("seen[0]['lastTsDone'], seen[0]['lastAction']"),
                     QString("(1, %1)").arg(action));
            QCOMPARE(backEnd->text("seen[3][1]"), text + " (66%) 6/9");
            QCOMPARE(logged(before).filter(QRegularExpression("^0 ")), QStringList("0 1 " + text));
        }
    }

    void theWeightOfAPackageIsCountedOnlyOnce()
    {
        collect("it.available = [Package('a', size=200000), Package('b', size=300000)]");
        QVERIFY(apply(
            "confirmed()\n"
            "yumIOC.rpmtransInit(False)\n"
            "a, b = it.available\n"
            "for call in ((a, 1, 0, 2, 1, 4), (a, 1, 1, 2, 1, 4), (a, 1, 2, 2, 1, 4),\n"
            "             (b, 1, 0, 2, 2, 4), (b, 1, 2, 2, 2, 4),\n"
            "             (a, 103, None, None, 2, 4), (b, 103, None, None, None, None)):\n"
            "    yumIOC.rpmtransProgress(*call)\n"
            "    seen.append((state()['actCounter'], state()['lastTsDone'], state()['lastAction']))\n"));
        backEnd->answers.take();
        QCOMPARE(backEnd->text("seen"), QString("[(600000, 1, 1), (600000, 1, 1), (600000, 1, 1), "
                                                "(1500000, 2, 1), (1500000, 2, 1), (1500000, 2, 103), "
                                                "(1500000, 0, 103)]"));
    }

    void aPackageWithoutARecordHasTheWeightOfItsSize()
    {
        const int before = logLength();
        QVERIFY(apply("confirmed()\n"
                      "yumIOC.rpmtransInit(False)\n"
                      "yumIOC.rpmtransProgress(Package('nobody', size=20000), 1, 0, 1, 1, 1)\n"
                      "seen.append(state())"));
        backEnd->answers.take();
        QCOMPARE(backEnd->text("seen[0]['actCounter']"), QString("60000"));
        QVERIFY(backEnd->log(before).contains("0 1 Installing nobody"));
    }

    void anActionWithoutAPackageDoesNotMoveTheBars()
    {
        for (int action : {11, 101, 102}) {
            QVERIFY(!apply(
                QString("yumIOC.rpmtransProgress(None, %1, 1, 2, 3, 4)\nseen.append(state())").arg(action)));
            QCOMPARE(warnings(), QStringList());
            QCOMPARE(backEnd->text("seen[0]['lastTsDone'], seen[0]['actCounter']"), QString("(-1, 0)"));
        }
        for (int action : {201, 202}) {
            QVERIFY(!apply(
                QString("yumIOC.rpmtransProgress(None, %1, 1, 2, 3, 4)\nseen.append(state())").arg(action)));
            QCOMPARE(warnings(),
                     QStringList(QString("Internal error: YumIO::rpmtransProgress interior action=%1 not "
                                         "understood")
                                     .arg(action)));
            QCOMPARE(backEnd->text("seen[0]['lastTsDone'], seen[0]['actCounter']"), QString("(-1, 0)"));
        }
        for (int action : {-1, 0, 12, 100, 104, 200, 203}) {
            QVERIFY(!apply(
                QString("yumIOC.rpmtransProgress(None, %1, 1, 2, 3, 4)\nseen.append(state())").arg(action)));
            QCOMPARE(warnings(),
                     QStringList(
                         QString("Internal error: YumIO::rpmtransProgress action=%1 not understood; ignoring")
                             .arg(action)));
            QCOMPARE(backEnd->text("seen[0]['lastTsDone'], seen[0]['actCounter']"), QString("(-1, 0)"));
        }
    }

    void theBarsAreFullAtTheEndOfATransaction()
    {
        collect("it.updates = [Package('up', '2.0', size=200000), Package('down', '2.0', size=5)]\n"
                "it.installed = [Package('up', size=90000), Package('down', size=7), Package('old', "
                "size=70000),\n"
                "                Package('same', size=50000)]\n"
                "it.available = [Package('new', size=40000)]\n"
                "it.does['verifyLocalPkg'] = lambda package: True");
        QVERIFY(apply(
            "items = [(1, 'new'), (2, 'down'), (3, 'down'), (4, 'new'), (5, 'old'), (6, 'up'), (7, 'up'),\n"
            "         (8, 'old'), (9, 'same'), (10, 'same')]\n"
            "confirmed(*[item(action, name) for action, name in items])\n"
            "yumIOC.downloadRemotePayloads([])\n"
            "yumIOC.rpmtransInit(False)\n"
            "for number, (action, name) in enumerate(items):\n"
            "    yumIOC.rpmtransProgress(Package(name), action, 0, 1, number, len(items))\n"
            "time.sleep(.02)\n"
            "yumIOC.rpmtransProgress(Package('same'), 10, 1, 1, len(items) - 1, len(items))\n"
            "seen.append(state())\nseen.append(look())\n"));
        backEnd->answers.take();
        QCOMPARE(backEnd->text("seen[0]['actCounter'] == seen[0]['rpmWeight']"), QString("True"));
        QCOMPARE(backEnd->text("seen[1]"), QString("['Running Transaction: Total Progress (100%) 9100/9100', "
                                                   "'Completing reinstall of same (100%) 1/1']"));
    }

    void reportsBetweenOperationsDoNotMoveTheBars()
    {
        const int before = logLength();
        backEnd->run("yumIOC.rpmtransInit(True)\n"
                     "yumIOC.rpmtransDel()\n"
                     "yumIOC.rpmtransInit(False)\n"
                     "yumIOC.rpmtransProgress(Package('a'), 1, 0, 1, 1000, 1)\n"
                     "yumIOC.rpmtransProgress(Package('a'), 1, 1, 1, 1000, 1)\n"
                     "yumIOC.rpmtransDel()\n"
                     "yumIOC.downloadRemotePayloads([])");
        QCOMPARE(backEnd->log(before), QStringList("0 1 Installing a"));
        QCOMPARE(backEnd->bars(), QStringList({"idle", "idle"}));
    }
};

QTEST_MAIN(YumIOProgressTest)
#include "YumIOProgressTest.moc"
