#include <QtTest>

#include "tests/yumio/BackEnd.h"

namespace {

const char* const generic =
    "Internal error: python exception occurred from C code.\nWhen reporting this issue, please "
    "include the contents of the\nLog window, which should contain a walkback.";

// Payloads of the package manager's own classes, and what calls of the program raise. Where the value of a
// bar is looked at, a pause goes before the call that sets it: values that follow at once are not reported.
const char* const definitions = R"(
import time

class Rpm(dnf.repo.RPMPayload):
    download_size = None
    def __init__(self, name, size, arch='x86_64'):
        self.pkg = Thing(name=name, arch=arch)
        self.download_size = size
    def __str__(self):
        return self.pkg.name + '.rpm'

class Delta(dnf.drpm.DeltaPayload):
    download_size = None
    def __init__(self, name, size):
        self.pkg = Thing(name=name, arch='x86_64')
        self.download_size = size
    def __str__(self):
        return self.pkg.name + '.drpm'

class Metadata(dnf.repo.MDPayload):
    download_size = None
    def __init__(self, name, size):
        self.name = name
        self.download_size = size
    def __str__(self):
        return self.name

class Wrong:
    def __str__(self):
        raise self.exception

def failure(function, *arguments):
    try:
        return function(*arguments)
    except Exception as e:
        return type(e).__name__

def confirmed(*items):
    yumIOC.listTransaction(None, items)
    assert yumIOC.userconfirm() == 1
)";

} // namespace

// Of what the script reports.
class YumIOProgressTest : public QObject
{
    Q_OBJECT

private:
    YumIOProbe& yumIO() { return backEnd->yumIO; }
    QStringList warnings() { return backEnd->answers.takeTexts("VYRE Yum Warning"); }
    QStringList errors() { return backEnd->answers.takeTexts("VYRE Yum Error"); }
    int logLength() { return backEnd->log().count(); }
    QStringList logged(int from)
    {
        // The display of the tests complains on standard error, which an operation captures.
        QStringList lines;
        for (const QString& line : backEnd->log(from)) {
            if (!line.contains("This plugin does not support")) {
                lines.append(line);
            }
        }
        return lines;
    }

    // Applies with these statements in place of the package manager's work. They append to "seen".
    bool apply(const QString& statements)
    {
        backEnd->run("def applying(*lists):\n    " + QString(statements).replace("\n", "\n    ") +
                     "\n    return True\n"
                     "it.does['apply'] = applying\nseen = []");
        return yumIO().apply();
    }
    void collect(const QString& statements)
    {
        backEnd->run(statements);
        QVERIFY(backEnd->collect());
    }

    QScopedPointer<BackEnd> backEnd;

private Q_SLOTS:
    void initTestCase()
    {
        backEnd.reset(new BackEnd);
        QVERIFY(backEnd->start());
        backEnd->answers.take();
        backEnd->run(definitions);
        QVERIFY(backEnd->collect()); // leaves the bars idle
        // The tip of the item bar belongs to a window that is shown.
        backEnd->window.show();
    }

    void cleanupTestCase() { backEnd.reset(); }

    void init()
    {
        backEnd->renew();
        yumIO().stdoutPending.clear();
        yumIO().stderrPending.clear();
        yumIO().transaction.txText.clear();
        yumIO().transaction.txListed = false;
    }

    void cleanup()
    {
        for (const ShownDialog& each : backEnd->answers.take()) {
            QTest::qFail(qPrintable("not expected: " + each.text), __FILE__, __LINE__);
        }
        QCOMPARE(int(yumIO().phase), int(YumIOProbe::Idle));
        QVERIFY(yumIO().progress == nullptr);
        QCOMPARE(backEnd->bars(), QStringList({"idle", "idle"}));
        QVERIFY(PyErr_Occurred() == nullptr);
    }

    // --- Output

    void unfinishedLineWaitsForItsEnd()
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

    void streamsAreKeptApart()
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

    void kindAndLevelOfStandardError()
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

    void outputIsPartOfAPlainQuestionOnly()
    {
        backEnd->run("sys.stdout.write('caf\\u00e9 %1')\nsys.stderr.write('b\\n')");
        QCOMPARE(yumIO().transaction.txText, QString::fromUtf8("café %1\nb\n\n"));
        yumIO().transaction.txText = "listing\n";
        yumIO().transaction.txListed = true;
        backEnd->run("sys.stdout.write('c')\nsys.stderr.write('d')");
        QCOMPARE(yumIO().transaction.txText, QString("listing\n"));
        yumIO().transaction.txListed = false;
        backEnd->run("yumIOC.gpgsigcheck()");
        QCOMPARE(yumIO().transaction.txText, QString());
    }

    void messagesWithTheirLevel()
    {
        QSignalSpy spy(&yumIO().logEntries(), SIGNAL(appended()));
        const int before = logLength();
        backEnd->run("yumIOC.log(9, 'one\\n\\ntwo <b>')\nyumIOC.errorlog(2, 'three')");
        QCOMPARE(backEnd->log(before), QStringList({"0 9 one", "0 9 two <b>", "3 2 three"}));
        QCOMPARE(spy.count(), 2);
    }

    void errorMarkBeginsALine()
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

    void outputOfScriptlets()
    {
        const int before = logLength();
        backEnd->run("yumIOC.rpmtransScriptout(None)\nyumIOC.rpmtransScriptout('first\\nsecond')");
        QCOMPARE(backEnd->log(before), QStringList({"1 0 first", "1 0 second"}));
    }

    void endOfTheTransactionsOutputIsNothing()
    {
        const int before = logLength();
        backEnd->run("yumIOC.postTransactionOutput()\nyumIOC.postTransactionOutput(1, 'x')\n"
                     "yumIOC.gpgsigcheck(1, 'x')");
        QCOMPARE(backEnd->log(before), QStringList());
    }

    // --- Wrong calls

    void argumentsThatAreNotUnderstood_data()
    {
        QTest::addColumn<QString>("call");
        QTest::addColumn<QString>("function"); // empty: nothing is said to the user
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

    void argumentsThatAreNotUnderstood()
    {
        QFETCH(QString, call);
        QFETCH(QString, function);
        const QStringList expected =
            function.isEmpty()
                ? QStringList()
                : QStringList({generic, "Internal error: " + function + ": unable to interpret arguments"});
        // Whether anything is being done or not.
        QCOMPARE(backEnd->text("failure(yumIOC." + call + ")"), QString("TypeError"));
        QCOMPARE(errors(), expected);
        QVERIFY(!apply("seen.append(failure(yumIOC." + call + "))"));
        QCOMPARE(backEnd->text("seen"), QString("['TypeError']"));
        QCOMPARE(errors(), expected);
    }

    void scriptSeesWhatIsWrongWithItsCall()
    {
        backEnd->run("def message(function, *arguments):\n"
                     "    try:\n"
                     "        function(*arguments)\n"
                     "    except TypeError as e:\n"
                     "        return str(e)\n");
        // These two say nothing to the user.
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

    void numbersWithoutMeaningAreNoExceptions()
    {
        collect("it.available = [Package('a', size=30000)]");
        QVERIFY(!apply("a = Rpm('a', 30000)\n"
                       "yumIOC.downloadRemotePayloads([a])\n"
                       "yumIOC.downloadStart(1, 30000, 0)\n"
                       "seen.append(failure(yumIOC.downloadEnd, a, 1 << 70, None))\n"
                       "seen.append(tip())"));
        QCOMPARE(backEnd->text("seen"), QString("[None, ['Downloading a.rpm: Complete']]"));
    }

    void downloadsOutsideOfAnOperation_data()
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

    void downloadsOutsideOfAnOperation()
    {
        QFETCH(QString, function);
        QFETCH(QString, arguments);
        QCOMPARE(backEnd->text("failure(yumIOC." + function + ", " + arguments + ")"),
                 QString("RuntimeError"));
        QCOMPARE(errors(), QStringList("Internal error: " + function + ": download at unexpected time"));
    }

    void payloadsThatCannotBeRead_data()
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

    void payloadsThatCannotBeRead()
    {
        QFETCH(QString, call);
        QFETCH(QString, message);
        QFETCH(bool, exception);
        backEnd->run("wrong = Wrong()\nwrong.exception = ValueError('x')");
        const int before = logLength();
        QVERIFY(!apply("seen.append(failure(yumIOC." + call + "))\nseen.append(state())"));
        const QStringList texts = errors();
        QCOMPARE(texts, QStringList("Internal error: " + message));
        // What was wrong with it, where it was an exception.
        QCOMPARE(!backEnd->log(before).filter(QRegularExpression("^3 0 \\w+Error: ")).isEmpty(), exception);
        // The script goes on.
        QCOMPARE(backEnd->text("seen[0]"), QString("None"));
        QCOMPARE(backEnd->text("seen[1]['remoteCount'], seen[1]['payloadSlots']"), QString("(0, 0)"));
    }

    void interruptInsideAPayloadIsTheOperations()
    {
        // An exception that the operation explains itself must get there.
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

    // --- Downloads

    void remotePayloadsAreWeighed()
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
        // 40240 of 400000 are fetched.
        QCOMPARE(backEnd->text("seen[1]['downloadSteps']"), QString::number(40240 * 24000ULL / 400000));
        QCOMPARE(backEnd->text("seen[2][0]"),
                 QString("Running Transaction: Total Progress (0%) 0/%1").arg(2414 + 9100));
        QCOMPARE(backEnd->text("seen[3]['remoteCount'], seen[3]['remoteWeight']"),
                 QString("(4, %1)").arg(40240 + 60000 + 20000 + 10240 + 10240));
    }

    void payloadOfAnotherArchitectureThanListed()
    {
        collect("it.available = [Package('lib', arch='i686')]");
        QVERIFY(!apply("yumIOC.downloadRemotePayloads([Rpm('lib', 20000, 'i586')])\nseen.append(state())"));
        // Nothing was listed of which this could be a part.
        QCOMPARE(backEnd->text("seen[0]['remoteCount'], seen[0]['downloadSteps']"), QString("(1, 0)"));
    }

    void payloadsThatAreNotCountedDoNotStopTheOthers()
    {
        collect("it.available = [Package('a'), Package('b')]");
        QVERIFY(!apply("yumIOC.downloadRemotePayloads([Rpm('nobody', 1), Rpm('a', 20000), Thing(), "
                       "Rpm('b', 30000)])\nseen.append(state())"));
        QCOMPARE(errors(),
                 QStringList("Internal error: downloadRemotePayloads: unable to determine payload pkg"));
        // The first one is not in the table.
        QCOMPARE(backEnd->text("seen[0]['remoteCount'], seen[0]['remoteWeight']"), QString("(3, 60240)"));
    }

    void transactionFromTheCache()
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

    void downloadsSideBySide()
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
        // Each has the slot of its first progress.
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

    void downloadWithoutAnyProgressTakesItsSlotAndCounts()
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

    void deltaWithoutAnyProgressIsStillRebuilt()
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

    void smallDownloadsWeighTheirLeast()
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

    void endsOfAnOrdinaryPayload_data()
    {
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("state");
        const QString complete = "Downloading a.rpm: Complete";
        QTest::newRow("success") << "None" << complete;
        QTest::newRow("0") << "0" << complete;
        QTest::newRow("failed") << "1" << complete;
        QTest::newRow("another mirror") << "3" << complete;
        QTest::newRow("already present") << "2"
                                         << "Downloading a.rpm: 5000 / 30000 (16.7%)";
    }

    void endsOfAnOrdinaryPayload()
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

    void messageOfAFailedDownloadIsLogged()
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

    void deltaIsCompleteWhenItsPackageIsRebuilt()
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
        // The weights of the downloads and of the rebuilding.
        QCOMPARE(backEnd->text("seen[5][1]"), QString("Downloading 2 packages (100%) 100480/100480"));
        QCOMPARE(backEnd->text("seen[6]['payloadSlots']"), QString("0"));
    }

    void failedDeltaEndsAtOnce()
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

    void payloadsOfOtherTypes()
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

    void downloadWithoutASlotIsWarnedOfOnce()
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

    void metadataIsReadRepositoryByRepository()
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
        // 100 to prepare, 900 of the step itself, then 7000 for each of two repositories.
        const QString first = "['Initializing: Total Progress (%1%) %2/18000', "
                              "'Reading repository metadata for %3']";
        QCOMPARE(seen(0), first.arg("5", "1000", "one (0%) 0/1"));
        QCOMPARE(seen(1), first.arg("5", "1000", "one (0%) 0/1"));
        QCOMPARE(seen(2), first.arg("15", "2750", "one (25%) 100/400"));
        QCOMPARE(seen(3), first.arg("44", "8000", "one (100%) 400/400"));
        QCOMPARE(seen(4), first.arg("44", "8000", "two (0%) 0/1"));
        QCOMPARE(seen(5), QString("['Initializing: Total Progress (83%) 15000/18000', "
                                  "'Collecting updatable packages (0%) 0/1']"));
    }

    void metadataBeyondTwoGigabytes()
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

    // --- The transaction

    void removalAloneKeepsItsPreparation()
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

    void preparation()
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
        // The end of the test is not the end, and the preparation does not begin twice.
        QCOMPARE(backEnd->text("seen[2]"), preparing);
        QCOMPARE(backEnd->text("seen[3]"), preparing);
        QCOMPARE(backEnd->text("seen[4]['testRun']"), QString("0"));
        QCOMPARE(backEnd->text("seen[5]"), QString("['Running Transaction: Total Progress (100%) 9100/9100', "
                                                   "'Preparing to Run Transaction (0%) 0/1']"));
    }

    void preparationWithoutATest()
    {
        QVERIFY(apply("confirmed()\n"
                      "yumIOC.rpmtransInit(False)\n"
                      "seen.append(look())\n"));
        backEnd->answers.take();
        QCOMPARE(backEnd->text("seen[0][1]"), QString("Preparing to Run Transaction (0%) 0/1"));
    }

    void everyFlagButFalseIsATest()
    {
        QVERIFY(!apply("for flag in (False, True, None, 0, '', False):\n"
                       "    yumIOC.rpmtransInit(flag)\n"
                       "    seen.append(state()['testRun'])"));
        QCOMPARE(backEnd->text("seen"), QString("[0, 1, 1, 1, 1, 0]"));
    }

    void preparationEndsTheDownloads()
    {
        collect("it.available = [Package('a', size=30000), Package('b', size=30000)]");
        QVERIFY(apply("confirmed(item(1, 'a'), item(1, 'b'))\n"
                      "yumIOC.downloadRemotePayloads([Rpm('a', 30000), Rpm('b', 30000)])\n"
                      "yumIOC.downloadStart(2, 60000, 0)\n"
                      "yumIOC.downloadProgress(Rpm('a', 30000), 1000.0)\n"
                      "yumIOC.rpmtransInit(1)\n"
                      "seen.append(look())\nseen.append(tip())\nseen.append(state())"));
        backEnd->answers.take();
        // Anything but False is a test.
        QCOMPARE(backEnd->text("[seen[2][name] for name in ('testRun', 'downloading', 'nextSlot', "
                               "'payloadSlots', 'actCounter')]"),
                 QString("[1, 0, 0, 0, 0]"));
        QCOMPARE(backEnd->text("seen[0]"),
                 QString("['Running Transaction: Total Progress (72%) 24100/33100', "
                         "'Preparing to Run Transaction (0%) 0/1']"));
        QCOMPARE(backEnd->text("seen[1]"), QString("[]"));
    }

    void actionsOfTheTransaction_data()
    {
        QTest::addColumn<int>("action");
        QTest::addColumn<QString>("text");
        QTest::addColumn<quint64>("weight");      // of a new package of 200000 and an old one of 100000
        QTest::addColumn<quint64>("leastWeight"); // of small ones
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

    void actionsOfTheTransaction()
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
            // More of the same package adds nothing.
            QCOMPARE(backEnd->text("seen[0]['actCounter'], seen[2]['actCounter']"),
                     QString("(%1, %1)").arg(large ? weight : leastWeight));
            QCOMPARE(backEnd->text("seen[0]['lastTsDone'], seen[0]['lastAction']"),
                     QString("(1, %1)").arg(action));
            QCOMPARE(backEnd->text("seen[3][1]"), text + " (66%) 6/9");
            QCOMPARE(logged(before).filter(QRegularExpression("^0 ")), QStringList("0 1 " + text));
        }
    }

    void everyPackageHasItsWeightOnce()
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

    void packageWithoutARecordHasItsOwnWeight()
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

    void actionsThatAreNoPackages()
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

    void actsEndWhereTheTransactionEnds()
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

    void reportsBetweenOperationsMoveNothing()
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
