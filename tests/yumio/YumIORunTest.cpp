// SPDX-License-Identifier: GPL-2.0-or-later

#include <array>
#include <cerrno>
#include <csignal>
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QtTest>

#include "tests/yumio/ApplyFixture.h"

namespace {

// If one of these variables is true, the replacement below for a function of the C library fails. A test
// cannot make the real functions fail.
bool failWaiting = false;
bool failSettingTheChildSignal = false;
bool failRestoringTheChildSignal = false;
bool failPipes = false;

} // namespace

extern "C" pid_t waitpid(pid_t pid, int* status, int options)
{
    static const auto real = reinterpret_cast<pid_t (*)(pid_t, int*, int)>(dlsym(RTLD_NEXT, "waitpid"));
    if (failWaiting && pid == -1) {
        errno = EINVAL;
        return -1;
    }
    return real(pid, status, options);
}

extern "C" int pipe2(int* ends, int flags) noexcept
{
    static const auto real = reinterpret_cast<int (*)(int*, int)>(dlsym(RTLD_NEXT, "pipe2"));
    if (failPipes) {
        errno = EMFILE;
        return -1;
    }
    return real(ends, flags);
}

extern "C" int sigaction(int number, const struct sigaction* action, struct sigaction* old) noexcept
{
    static const auto real = reinterpret_cast<int (*)(int, const struct sigaction*, struct sigaction*)>(
        dlsym(RTLD_NEXT, "sigaction"));
    if (number == SIGCHLD && (old != nullptr ? failSettingTheChildSignal : failRestoringTheChildSignal)) {
        errno = EINVAL;
        return -1;
    }
    return real(number, action, old);
}

// Tests of the back end's behaviour during and after the script's apply().
class YumIORunTest : public ApplyFixture
{
    Q_OBJECT

private Q_SLOTS:
    void aNewTransactionResetsTheStateOfTheFormerTransaction()
    {
        transaction().txText = "text";
        transaction().txListed = true;
        transaction().txApplied = true;
        transaction().cachedSize = 1;
        transaction().downloadSize = 2;
        transaction().downloadWeight = 3;
        transaction().rpmWeight = 4;
        transaction().downloadSteps = 5;
        transaction().actCounter = 6;
        transaction().testRun = true;
        transaction().lastTsDone = 7;
        transaction().lastAction = 8;
        transaction().remoteWeight = 9;
        transaction().remoteCount = 10;
        transaction().downloading = true;
        transaction().threadCount = 11;
        transaction().threadsMax = 12;
        transaction().nextSlot = 13;
        transaction().payloadSlots.insert("x", 14);
        QVERIFY(!apply("seen.append(state())"));
        QCOMPARE(backEnd->text("{name: value for name, value in seen[0].items() if value} == "
                               "{'phase': 2, 'lastTsDone': -1}"),
                 QString("True"));
    }

    void theOutputDuringATransactionIsLogged()
    {
        const int before = logLength();
        QVERIFY(!apply("import os\nos.write(1, b'from a scriptlet\\n')\nos.write(2, b'its trouble\\n')\n"
                       "print('from the script')"));
        QStringList log = backEnd->log(before);
        QCOMPARE(log.takeFirst(), QString("4 0 Applying"));
        log.sort();
        QCOMPARE(log, QStringList({"1 0 from a scriptlet", "1 0 from the script", "3 0 its trouble"}));
    }

    void theEndOfAnOperationLogsItsUnfinishedLines()
    {
        int before = logLength();
        QVERIFY(!apply("import os\nos.write(1, b'first\\nlast words')\nos.write(2, b'last trouble')\n"
                       "sys.stdout.write('script')\nsys.stderr.write('its trouble')"));
        QStringList log = backEnd->log(before);
        QCOMPARE(log.takeFirst(), QString("4 0 Applying"));
        log.sort();
        QCOMPARE(log, QStringList({"1 0 first", "1 0 last words", "1 0 script", "3 0 its trouble",
                                   "3 0 last trouble"}));
        before = logLength();
        QVERIFY(!apply("import os\nos.write(1, b'next\\n')\nos.write(2, b'next trouble\\n')\n"
                       "sys.stdout.write('next of the script\\n')"));
        log = backEnd->log(before);
        QCOMPARE(log.takeFirst(), QString("4 0 Applying"));
        log.sort();
        QCOMPARE(log, QStringList({"1 0 next", "1 0 next of the script", "3 0 next trouble"}));
    }

    void theStartOfAnOperationLogsAnEarlierUnfinishedLine()
    {
        const int before = logLength();
        backEnd->run("sys.stdout.write('idle words')");
        QCOMPARE(backEnd->log(before), QStringList());
        QVERIFY(!apply("sys.stdout.write('words\\n')"));
        QCOMPARE(backEnd->log(before), QStringList({"1 0 idle words", "4 0 Applying", "1 0 words"}));
    }

    void aLineThatArrivesInTwoPartsIsOneLogEntry()
    {
        const int before = logLength();
        QVERIFY(!apply("import os\n"
                       "os.write(1, b'one li')\n"
                       "os.write(2, b'trou')\n"
                       "while captured() != ['one li', 'trou']: pass\n"
                       "os.write(1, b'ne\\n')\n"
                       "os.write(2, b'ble\\n')"));
        QStringList log = backEnd->log(before);
        QCOMPARE(log.takeFirst(), QString("4 0 Applying"));
        log.sort();
        QCOMPARE(log, QStringList({"1 0 one line", "3 0 trouble"}));
    }

    void theOperationContinuesIfItsOutputCannotBeCaptured()
    {
        const int before = logLength();
        const QString descriptors = "[os.readlink('/proc/self/fd/%d' % fd) for fd in (1, 2)]";
        backEnd->run("import os");
        const QString original = backEnd->text(descriptors);
        failPipes = true;
        const bool applied = apply("seen.extend(" + descriptors +
                                   ")\nyumIOC.listTransaction(None, [])\n"
                                   "yumIOC.userconfirm()");
        failPipes = false;
        QVERIFY(applied);
        const QList<ShownDialog> shown = backEnd->answers.take();
        QCOMPARE(shown.count(), 2);
        QCOMPARE(shown[0].title, QString("VYRE Yum Error"));
        QCOMPARE(shown[0].text, QString("Unable to open pipe to capture rpm transaction output"));
        QCOMPARE(shown[1].title, QString("Apply"));
        QCOMPARE(backEnd->log(before),
                 QStringList({"4 0 Applying", "3 0 Unable to open pipe to capture rpm transaction output",
                              "4 0 Applying: OK"}));
        QCOMPARE(backEnd->text("seen"), original);
        QCOMPARE(backEnd->text(descriptors), original);
    }

    void theListOfMarkedRecordsDoesNotOwnTheRecords()
    {
        collect("it.available = [Package('tool')]");
        mark("tool", Package::Install);
        QVERIFY(!apply());
        {
            const auto marked = transaction().actionEntries;
            QCOMPARE(marked.count(), 1);
            QVERIFY(marked.first() == backEnd->entry("tool"));
        }
        QCOMPARE(backEnd->entry("tool")->name, QString("tool"));
        QVERIFY(!apply());
        QCOMPARE(given(), QString("tool1.0; ; ; ; ; "));
        // Cleared records are no longer in the list of marked records.
        yumIO().clearEntries();
        QVERIFY(transaction().actionEntries.isEmpty());
    }

    void aMessageExplainsWhyTheMarksCouldNotBeApplied()
    {
        const QString confirmed = "yumIOC.listTransaction(None, [])\nyumIOC.userconfirm()\n";
        QVERIFY(!apply(confirmed + "raise dnf.exceptions.DepsolveError('nothing provides x')"));
        QList<ShownDialog> shown = backEnd->answers.take();
        QCOMPARE(shown.count(), 2);
        QCOMPARE(shown[1].title, QString("VYRE Yum Error"));
        QCOMPARE(shown[1].text, QString("nothing provides x\nUnable to apply changes"));
        QVERIFY(!transaction().txApplied);

        QVERIFY(!apply(confirmed + "raise RuntimeError('odd')"));
        shown = backEnd->answers.take();
        QCOMPARE(shown.count(), 2);
        QCOMPARE(shown[1].text, QString("Unable to apply changes: Runtime Error:\n\nodd"));

        QVERIFY(!apply(confirmed + "raise KeyError('x')"));
        shown = backEnd->answers.take();
        QCOMPARE(shown.count(), 2);
        QCOMPARE(shown[1].text, QString(generic));

        QVERIFY(apply(confirmed));
        backEnd->answers.take();
    }

    void theMessageAboutAFailureContainsTheErrorsThatTheScriptLogged()
    {
        collect("it.updates = [Package('tool', '2.0')]\nit.installed = [Package('tool')]\n"
                "it.raises['verifyLocalPkg'] = dnf.exceptions.MiscError('not there')");
        mark("tool", Package::Update);
        // While VYRE makes the listing, it also calls the script. These calls do not discard the reasons that
        // the script has logged before.
        QVERIFY(!apply("yumIOC.errorlog(1, 'the first reason')\n"
                       "yumIOC.listTransaction(None, [item(6, 'tool', version='2.0'), item(7, 'tool')])\n"
                       "yumIOC.errorlog(0, 'the second reason')\n"
                       "yumIOC.errorlog(3, 'a detail')\n"
                       "yumIOC.log(0, 'no error')\n"
                       "raise dnf.exceptions.Error('stopped')"));
        QCOMPARE(backEnd->text("len(it.did('verifyLocalPkg'))"), QString("1"));
        QCOMPARE(errors(),
                 QStringList("the first reason\nthe second reason\nstopped\nUnable to apply changes"));
    }

    void theListsForTheScriptAreReleasedAfterTheTransaction()
    {
        collect("it.available = [Package('tool')]");
        mark("tool", Package::Install);
        const QString references = backEnd->text("sys.getrefcount(it.available[0])");
        QVERIFY(!apply());
        backEnd->run("it.calls.clear()");
        QCOMPARE(backEnd->text("sys.getrefcount(it.available[0])"), references);
    }

    void theScriptCanWaitForItsChildrenEvenIfVyreIgnoresTheChildSignal()
    {
        struct sigaction mine = {};
        mine.sa_handler = SIG_IGN;
        struct sigaction original;
        sigaction(SIGCHLD, &mine, &original);
        const bool applied =
            apply("import os\n"
                  "seen.append(os.waitpid(os.spawnlp(os.P_NOWAIT, 'false', 'false'), 0)[1])");
        struct sigaction now;
        sigaction(SIGCHLD, &original, &now);
        QVERIFY(!applied);
        QVERIFY(now.sa_handler == SIG_IGN);
        QCOMPARE(backEnd->text("seen"), QString("[256]"));
    }

    void endedChildrenAreReapedBeforeTheTransaction()
    {
        const pid_t child = fork();
        if (child == 0) {
            _exit(0);
        }
        siginfo_t info;
        QCOMPARE(waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT), 0);
        const int before = logLength();
        QVERIFY(!apply());
        QCOMPARE(backEnd->log(before),
                 QStringList({"4 0 Applying", QString("2 0 Reaped zombie child %1").arg(child)}));
    }

    void anErrorIsReportedIfChildrenCannotBeReaped()
    {
        failWaiting = true;
        const bool applied = apply();
        failWaiting = false;
        QVERIFY(!applied);
        QCOMPARE(errors(), QStringList("Unable to reap children; errno=22 (Invalid argument)"));
        QVERIFY(!wasApplied());
    }

    void anErrorIsReportedIfTheActionOfTheChildSignalCannotBeSet()
    {
        failSettingTheChildSignal = true;
        const bool applied = apply();
        failSettingTheChildSignal = false;
        QVERIFY(!applied);
        QCOMPARE(errors(),
                 QStringList("Unable to disable SIGCHLD signal handler; errno=22 (Invalid argument)"));
        QVERIFY(wasApplied());
    }

    void anErrorIsReportedIfTheActionOfTheChildSignalCannotBeRestored()
    {
        failRestoringTheChildSignal = true;
        const bool applied = apply();
        failRestoringTheChildSignal = false;
        QVERIFY(!applied);
        QCOMPARE(errors(),
                 QStringList("Unable to restore SIGCHLD signal handler; errno=22 (Invalid argument)"));
    }

    void theSystemCountsAsChangedIfTheRealTransactionHasBegun()
    {
        QVERIFY(apply("yumIOC.listTransaction(None, [])\nyumIOC.userconfirm()\nyumIOC.rpmtransInit(True)"));
        backEnd->answers.take();
        QVERIFY(!yumIO().systemChanged());
        QVERIFY(!apply("yumIOC.listTransaction(None, [])\nyumIOC.userconfirm()\nyumIOC.rpmtransInit(False)\n"
                       "yumIOC.rpmtransInit(True)\n"
                       "raise dnf.exceptions.Error('half way')"));
        backEnd->answers.take();
        QVERIFY(yumIO().systemChanged());
        QVERIFY(!apply());
        QVERIFY(!yumIO().systemChanged());
    }

    void theScriptDecidesWhetherTheSystemWasChanged()
    {
        QVERIFY(!apply("yumIOC.listTransaction(None, [])\nyumIOC.userconfirm()\nyumIOC.rpmtransInit(False)\n"
                       "it.systemChanged = False\nit.outdated = True\n"
                       "raise dnf.exceptions.Error('not begun')"));
        backEnd->answers.take();
        QVERIFY(!yumIO().systemChanged());
        QVERIFY(yumIO().isOutdated());
        QVERIFY(apply("yumIOC.listTransaction(None, [])\nyumIOC.userconfirm()\n"
                      "it.systemChanged = True\nit.outdated = False"));
        backEnd->answers.take();
        QVERIFY(yumIO().systemChanged());
        QVERIFY(!yumIO().isOutdated());
        backEnd->run("del it.systemChanged, it.outdated");
    }

    void theScriptReportsTheOutcomeOfATransaction()
    {
        const QString confirmed = "yumIOC.listTransaction(None, [])\nyumIOC.userconfirm()\n";
        QVERIFY(apply(
            confirmed +
            "it.outcome = {'installed': 3, 'failed': 'x', 'groupsRemoved': 2, 'odd': 1, "
            "'failedScriptlets': ['b\\u00f6se', 'other'], 'restartNeeded': True, 'keysImported': True}"));
        backEnd->answers.take();
        TransactionOutcome outcome = yumIO().transactionOutcome();
        QVERIFY(outcome.known);
        QVERIFY(outcome.keysImported);
        QCOMPARE(outcome.text(),
                 QString("3 installed, 2 groups removed; a restart is needed; the scriptlets of b\u00f6se "
                         "and 1 more failed"));
        // The next attempt ends without a transaction.
        QVERIFY(!apply("it.outcome = None"));
        outcome = yumIO().transactionOutcome();
        QVERIFY(!outcome.known);
        QVERIFY(!outcome.keysImported);
        QCOMPARE(outcome.text(), QString("Nothing was changed"));
        backEnd->run("del it.outcome");
    }

    void theMessageAboutAFailureBeginsWithTheCompletedChanges()
    {
        const QString changed = "yumIOC.listTransaction(None, [])\nyumIOC.userconfirm()\n"
                                "it.outcome = {'installed': 3, 'updated': 1, 'failed': 1}\n"
                                "yumIOC.errorlog(0, 'it hurts')\n";
        const int before = logLength();
        QVERIFY(!apply(changed + "raise dnf.exceptions.Error('The transaction failed for:\\nx-1')"));
        QCOMPARE(backEnd->answers.take().value(1).text,
                 QString("Carried out: 3 installed, 1 updated.\nit hurts\nThe transaction failed for:\nx-1\n"
                         "Unable to apply changes"));
        QCOMPARE(backEnd->log(before).count("0 0 Carried out: 3 installed, 1 updated."), 1);
        QVERIFY(!apply(changed + "raise RuntimeError('odd')"));
        QCOMPARE(backEnd->answers.take().value(1).text,
                 QString("Carried out: 3 installed, 1 updated.\nUnable to apply changes: Runtime "
                         "Error:\n\nodd"));
        QVERIFY(!apply(changed + "raise dnf.exceptions.RepoError('database is locked')"));
        QCOMPARE(backEnd->answers.take().value(1).text,
                 QString("Carried out: 3 installed, 1 updated.\nit hurts\nUnable to apply changes: a "
                         "repository's sqlite database was locked unexpectedly\nOn some distributions, "
                         "PackageKit has been known to cause this."));
        // If nothing was carried out, the message begins with the failure.
        QVERIFY(!apply("it.outcome = {'failed': 1}\nraise dnf.exceptions.Error('stopped')"));
        QCOMPARE(errors(), QStringList{"stopped\nUnable to apply changes"});
        backEnd->run("del it.outcome");
    }

    void theMessageAboutAnUnexpectedExceptionBeginsWithTheCompletedChanges_data()
    {
        QTest::addColumn<QString>("exception");
        for (const char* exception : {"ValueError('odd')", "KeyError('odd')",
                                      "dnf.exceptions.RepoError('odd')", "SystemExit('odd')"}) {
            QTest::newRow(exception) << exception;
        }
    }

    void theMessageAboutAnUnexpectedExceptionBeginsWithTheCompletedChanges()
    {
        QFETCH(QString, exception);
        const QString unexpected =
            "Internal error: python exception occurred from C code.\nWhen reporting this issue, please "
            "include the contents of the\nLog window, which should contain a walkback.";
        const int before = logLength();
        QVERIFY(!apply("yumIOC.listTransaction(None, [])\nyumIOC.userconfirm()\n"
                       "it.outcome = {'installed': 3, 'updated': 1}\nraise " +
                       exception));
        const QList<ShownDialog> shown = backEnd->answers.take();
        QCOMPARE(shown.count(), 2); // the listing and the message
        QCOMPARE(shown[1].text, "Carried out: 3 installed, 1 updated.\n" + unexpected);
        QVERIFY2(backEnd->log(before).join('\n').contains("Traceback"), qPrintable(exception));
        // If nothing was carried out, the message begins with the failure.
        QVERIFY(!apply("it.outcome = None\nraise " + exception));
        QCOMPARE(errors(), QStringList(unexpected));
        backEnd->run("del it.outcome");
    }

    void theRemarksOfTheScriptAreShownAfterASuccessfulTransaction()
    {
        QVERIFY(apply("yumIOC.listTransaction(None, [])\nyumIOC.userconfirm()\n"
                      "it.remarks = ['No history', 'No script']"));
        const QList<ShownDialog> shown = backEnd->answers.take();
        QCOMPARE(shown.count(), 2);
        QCOMPARE(shown[1].title, QString("VYRE Yum Warning"));
        QCOMPARE(shown[1].text, QString("No history\n\nNo script"));
        backEnd->run("del it.remarks");
    }

    void theMarksAreKeptAfterATestTransaction()
    {
        QVERIFY(!apply("yumIOC.listTransaction(None, [])\nyumIOC.userconfirm()\n"
                       "return False"));
        QCOMPARE(backEnd->answers.take().count(), 1);
    }

    void theScriptCanAddLinesToTheListing()
    {
        QVERIFY(apply("addToListing('too early')\nyumIOC.listTransaction(None, [])\n"
                      "addToListing('Enabling module streams:\\n\\tgr\\u00f6ve 1\\n')\n"
                      "yumIOC.reportRemoveSize([])\nyumIOC.userconfirm()"));
        const QList<ShownDialog> shown = backEnd->answers.take();
        QCOMPARE(shown.count(), 1);
        QCOMPARE(shown[0].text,
                 QString("Transaction to be performed:\nEnabling module streams:\n\tgr\u00f6ve 1\n"
                         "No downloads; only removals\n"));
    }

    void theScriptCanAddLinesBeforeTheListing()
    {
        QVERIFY(apply("addBeforeListing('too early')\nyumIOC.listTransaction(None, [])\n"
                      "addBeforeListing('Only a t\u00e8st\\n\\n')\n"
                      "yumIOC.reportRemoveSize([])\nyumIOC.userconfirm()"));
        const QList<ShownDialog> shown = backEnd->answers.take();
        QCOMPARE(shown.count(), 1);
        QCOMPARE(shown[0].text, QString("Only a t\u00e8st\n\nTransaction to be performed:\n"
                                        "No downloads; only removals\n"));
    }

    void theLogNamesThePackagesThatATransactionLeftOut()
    {
        const QString confirmed = "yumIOC.listTransaction(None, [])\nyumIOC.userconfirm()\n";
        int before = logLength();
        QVERIFY(apply(confirmed + "it.leftOutReasons = ''"));
        QCOMPARE(backEnd->log(before).filter("Left out").count(), 0);
        before = logLength();
        QVERIFY(apply(confirmed + "it.leftOutReasons = 'one-1-1.noarch\\n    nothing provides %1'"));
        backEnd->run("del it.leftOutReasons");
        const QStringList lines = backEnd->log(before);
        const int first = lines.indexOf(
            QRegularExpression(".*These packages are not in the transaction. VYRE keeps their marks:"));
        QVERIFY2(first > lines.indexOf(QRegularExpression(".*Applying: OK")), qPrintable(lines.join("\n")));
        QVERIFY(lines.value(first + 1).endsWith("one-1-1.noarch"));
        QVERIFY(lines.value(first + 2).endsWith("    nothing provides %1"));
        backEnd->answers.take();
    }

    void theEnterKeyAcceptsTheListingButAnswersQuestionsWithNo()
    {
        backEnd->answers.press("Enter");
        QVERIFY(!apply("seen.append(yumIOC.userconfirm())"));
        QCOMPARE(backEnd->answers.take().value(0).title, QString("Query"));
        QCOMPARE(backEnd->text("seen"), QString("[0]"));
        backEnd->answers.press("Enter");
        QVERIFY(apply("yumIOC.listTransaction(None, [])\nseen.append(yumIOC.userconfirm())"));
        QCOMPARE(backEnd->answers.take().value(0).title, QString("Apply"));
        QCOMPARE(backEnd->text("seen"), QString("[1]"));
    }

    void theItemBarShowsTheActivityThatTheScriptReports()
    {
        QVERIFY(apply("yumIOC.listTransaction(None, [])\nyumIOC.userconfirm()\n"
                      "changeActivity('Waiting for w\\u00e4scher (17)')\n"
                      "seen.append(look())"));
        backEnd->answers.take();
        QCOMPARE(backEnd->text("seen"),
                 QString("[['Running Transaction: Total Progress (1%) 100/9100', "
                         "'Waiting for w\u00e4scher (17) 0/0']]")); // "0/0" means that the bar has no maximum
        // While no operation runs, the bars are idle and cannot show an activity.
        backEnd->run("changeActivity('later')");
    }

    void theItemBarShowsAWaitUntilTheWaitEnds()
    {
        QVERIFY(!yumIO().stop());
        QVERIFY(apply("yumIOC.listTransaction(None, [])\nyumIOC.userconfirm()\n"
                      "goes = [waitForLock('Waiting for w\\u00e4scher (17)'), waitForLock('Waiting for x')]\n"
                      "seen.append(look()[1])\n"
                      "goes.append(waitForLock(None))\n"
                      "seen.extend([look()[1], goes])"));
        backEnd->answers.take();
        QCOMPARE(backEnd->text("seen"), QString("['Waiting for x 0/0', 'Preparing (0%) 0/1', "
                                                "[True, True, True]]"));
        // waitForLock() does not wait on the graphical thread.
        backEnd->run("seen.append([waitForLock('later'), waitForLock(None)])");
        QCOMPARE(backEnd->text("seen[-1]"), QString("[False, True]"));
        QVERIFY(!yumIO().stop());
    }

    void theUserCanStopATransactionWhileItWaitsForALock()
    {
        backEnd->run("import time\nended = []");
        QTimer timer;
        bool ended = false;
        connect(&timer, &QTimer::timeout, &timer, [&] {
            if (backEnd->bars().value(1).startsWith("Waiting")) {
                ended = yumIO().stop();
            }
        });
        timer.start(10);
        const int before = logLength();
        QVERIFY(!apply("yumIOC.listTransaction(None, [])\nyumIOC.userconfirm()\n"
                       "while waitForLock('Waiting for x'):\n    time.sleep(0.01)\n"
                       "ended.append(waitForLock(None))\n"
                       "raise dnf.exceptions.LockError('ended')"));
        QVERIFY(ended);
        QCOMPARE(backEnd->text("ended"), QString("[False]"));
        // The user sees the listing, but no message about the failure.
        QCOMPARE(backEnd->answers.take().count(), 1);
        QVERIFY(yumIO().wasStopped());
        const QStringList lines = backEnd->log(before);
        QVERIFY2(lines.count("0 3 ended") == 1 && lines.last() == "4 0 Stopped." &&
                     lines.filter(QRegularExpression("^[23] ")).isEmpty(),
                 qPrintable(lines.join("\n")));
        // If the next operation fails without a stop, the user sees a message about the failure.
        QVERIFY(!apply("raise dnf.exceptions.Error('broken')"));
        QCOMPARE(backEnd->answers.take().count(), 1);
    }

    // Applies the marks, and requests a stop 200 milliseconds later. The script can call wait() to wait for
    // this request.
    bool stopAfterAWhile(const QString& statements)
    {
        backEnd->run("import time\nseen = []\n"
                     "def wait():\n"
                     "    while not stopWanted(False):\n        time.sleep(0.01)\n");
        QTimer timer;
        connect(&timer, &QTimer::timeout, &timer, [this] {
            if (yumIO().stopState() == StopRequest::State::Possible) {
                yumIO().stop();
            }
        });
        timer.start(200);
        return apply(statements);
    }

    void aStoppedTransactionAsksNoQuestion()
    {
        const int before = logLength();
        QVERIFY(
            !stopAfterAWhile("wait()\nyumIOC.listTransaction(None, [])\nseen.append(yumIOC.userconfirm())\n"
                             "yumIOC.errorlog(1, 'seen')\nraise dnf.exceptions.Error('interrupted')"));
        QVERIFY(yumIO().wasStopped());
        QCOMPARE(backEnd->answers.take().count(), 0);
        QCOMPARE(backEnd->text("seen"), QString("[0]"));
        QCOMPARE(backEnd->log(before),
                 QStringList({"4 0 Applying", "3 1 seen", "0 3 interrupted", "4 0 Stopped."}));
    }

    void aStopDuringTheTestTransactionPreventsTheChangeOfTheSystem()
    {
        QVERIFY(!stopAfterAWhile("yumIOC.rpmtransInit(True)\nwait()\nyumIOC.rpmtransInit(False)\n"
                                 "seen.append('changed')"));
        QVERIFY(yumIO().wasStopped());
        QVERIFY(!yumIO().systemChanged());
        QVERIFY(!yumIO().isChangingSystem());
        QCOMPARE(backEnd->answers.take().count(), 0);
        QCOMPARE(backEnd->text("seen"), QString("[]"));
    }

    void aStopIsRefusedWhileTheSystemIsChanged()
    {
        backEnd->run("import time");
        QList<bool> accepted;
        QList<StopRequest::State> states;
        QTimer timer;
        connect(&timer, &QTimer::timeout, &timer, [&] {
            if (yumIO().isChangingSystem()) {
                accepted.append(yumIO().stop());
                states.append(yumIO().stopState());
            }
        });
        timer.start(10);
        QVERIFY(apply("yumIOC.listTransaction(None, [])\nyumIOC.userconfirm()\n"
                      "yumIOC.rpmtransInit(False)\ntime.sleep(0.3)\nseen.append(stopWanted(False))"));
        backEnd->answers.take();
        QCOMPARE(backEnd->text("seen"), QString("[False]"));
        QVERIFY(!accepted.isEmpty());
        QVERIFY(!accepted.contains(true));
        QCOMPARE(states.first(), StopRequest::State::Refused);
        QVERIFY(!yumIO().wasStopped());
        QCOMPARE(yumIO().stopState(), StopRequest::State::Idle);
    }

    void theScriptCanRefuseFurtherRequestsToStop()
    {
        QVERIFY(!stopAfterAWhile("seen.append(stopWanted(True))\ntime.sleep(0.5)\n"
                                 "seen.append(stopWanted(False))\nyumIOC.listTransaction(None, [])"));
        QCOMPARE(backEnd->text("seen"), QString("[False, False]"));
        QVERIFY(!yumIO().wasStopped());
    }

    void aCollectionKeepsTheMarksThatAreStillPossible()
    {
        const QString before("it.updates = [Package('fresh', '2.0'), Package('done', '2.0'), "
                             "Package('both', '2.0', arch='i686'), Package('away', '2.0')]\n"
                             "it.installed = [Package('fresh'), Package('done'), Package('away'), "
                             "Package('both', arch='i686'), Package('old'), Package('gone')]\n"
                             "it.available = [Package('tool'), Package('there'), Package('left')]\n"
                             "it.groups = [Group('tool', 't'), Group('lost', 'l')]");
        collect(before);
        mark("fresh", Package::Update);
        mark("done", Package::Update);
        mark("away", Package::Remove);
        mark("old", Package::Remove);
        mark("gone", Package::Remove);
        mark("tool", Package::Install);
        mark("there", Package::Install);
        backEnd->entry("both", "i386")->action = Package::Update;
        backEnd->group("lost")->action = Package::Install;
        const YumIO::Marks marks = yumIO().marks();
        QCOMPARE(marks.count(), 9);
        yumIO().clearEntries();
        // Since the user marked the packages, another program has updated, installed and removed some of
        // them.
        collect("it.updates = [Package('fresh', '2.0'), Package('both', '2.0', arch='i686')]\n"
                "it.installed = [Package('fresh'), Package('done', '2.0'), Package('away', '2.0'), "
                "Package('both', arch='i686'), Package('old'), Package('there')]\n"
                "it.available = [Package('tool'), Package('left'), Package('gone')]\n"
                "it.groups = [Group('tool', 't')]");
        yumIO().restoreMarks(marks);
        QHash<QString, int> found;
        for (const Package::Entry* entry : yumIO().records.all()) {
            if (entry->action != Package::None) {
                found.insert(entry->name, entry->action);
            }
        }
        QCOMPARE(found, (QHash<QString, int>{{"fresh", Package::Update},
                                             {"both", Package::Update},
                                             {"away", Package::Remove},
                                             {"old", Package::Remove},
                                             {"tool", Package::Install}}));
        QCOMPARE(backEnd->group("tool")->action, Package::None);
    }

    void terminationSignalsAreDelayedWhileTheSystemIsChanged()
    {
        // The test framework has changed the actions for SIGHUP and SIGTERM, so set their default actions.
        const std::array<int, 2> numbers{SIGHUP, SIGTERM};
        std::array<struct sigaction, 2> original;
        for (size_t i = 0; i < numbers.size(); ++i) {
            struct sigaction standard = {};
            standard.sa_handler = SIG_DFL;
            sigaction(numbers[i], &standard, &original[i]);
        }
        // Python knows only the handlers that it has set itself, so the script reads the caught signals from
        // /proc.
        backEnd->run("def held():\n"
                     "    with open('/proc/self/status') as status:\n"
                     "        caught = int(status.read().split('SigCgt:')[1].split()[0], 16)\n"
                     "    return [caught >> number - 1 & 1 for number in (1, 15)]");
        const bool applied = apply("yumIOC.listTransaction(None, [])\nyumIOC.userconfirm()\n"
                                   "seen.append(held())\nyumIOC.rpmtransInit(True)\nseen.append(held())\n"
                                   "yumIOC.rpmtransInit(False)\nseen.append(held())\n"
                                   "yumIOC.rpmtransDel()\nseen.append(held())");
        const QString after = backEnd->text("held()");
        for (size_t i = 0; i < numbers.size(); ++i) {
            sigaction(numbers[i], &original[i], nullptr);
        }
        backEnd->answers.take();
        QVERIFY(applied);
        QCOMPARE(backEnd->text("seen"), QString("[[0, 0], [0, 0], [1, 1], [1, 1]]"));
        QCOMPARE(after, QString("[0, 0]"));
    }
};

QTEST_MAIN(YumIORunTest)
#include "YumIORunTest.moc"
