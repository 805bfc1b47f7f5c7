// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include "tests/yumio/BackEnd.h"

namespace {

const char* const generic =
    "Internal error: python exception occurred from C code.\nWhen reporting this issue, please "
    "include the contents of the\nLog window, which should contain a walkback.";

const char* const underTheMenu = "\nUnder the Repositories menu, Edit Configuration can be used to configure "
                                 "repositories.";

QStringList names(const QList<Package::Entry*>& entries)
{
    QStringList texts;
    for (const Package::Entry* entry : entries) {
        texts.append(entry->name + "." + entry->biArch);
    }
    texts.sort();
    return texts;
}

} // namespace

class YumIOCollectTest : public QObject
{
    Q_OBJECT

private:
    YumIOProbe& yumIO() { return backEnd->yumIO; }
    QStringList errors() { return backEnd->answers.takeTexts("VYRE Yum Error"); }
    QStringList warnings() { return backEnd->answers.takeTexts("VYRE Yum Warning"); }

    QScopedPointer<BackEnd> backEnd;

private Q_SLOTS:
    void initTestCase()
    {
        backEnd.reset(new BackEnd);
        QVERIFY(!yumIO().fileListsLoaded);
        QVERIFY(!yumIO().otherDataLoaded);
        QVERIFY(!yumIO().locked);
        QCOMPARE(yumIO().count(), 0);
        QVERIFY(backEnd->start());
        QCOMPARE(errors(), QStringList());
        QCOMPARE(backEnd->text("sys.argv"), QString("['the-test', 'info']"));
    }

    void cleanupTestCase() { backEnd.reset(); }

    void init()
    {
        backEnd->renew();
        yumIO().locked = false;
    }

    void cleanup()
    {
        for (const ShownDialog& each : backEnd->answers.take()) {
            QTest::qFail(qPrintable("not expected: " + each.text), __FILE__, __LINE__);
        }
        QCOMPARE(int(yumIO().phase), int(YumIOProbe::Idle));
        QCOMPARE(int(yumIO().exceptLogStart), -1);
        QVERIFY(yumIO().progress == nullptr);
        QVERIFY(PyErr_Occurred() == nullptr);
    }

    void aCollectionAsksTheScriptOnlyOnceWhetherARepositoryIsLocal()
    {
        backEnd->run(
            "it.does['isLocal'] = lambda repoid: repoid == 'near'\n"
            "it.updates = [Package('u', repoid='far')]\n"
            "it.installed = [Package('u', version='0', repoid='@System')]\n"
            "it.available = [Package('p%d' % i, repoid='near' if i % 3 else 'far') for i in range(30)]");
        QVERIFY(yumIO().collect({}));
        QCOMPARE(backEnd->text("sorted(it.did('isLocal'))"), QString("[('far',), ('near',)]"));
        QVERIFY(yumIO().isLocalRepo("near"));
        QVERIFY(!yumIO().isLocalRepo("far"));
        QVERIFY(!yumIO().isLocalRepo("@System"));
        // The next collection asks a second time, because the user may have edited the repositories.
        backEnd->run("it.does['isLocal'] = lambda repoid: False");
        QVERIFY(yumIO().collect({}));
        QVERIFY(!yumIO().isLocalRepo("near"));
    }

    void aRecordHasTheValuesOfItsPackage()
    {
        backEnd->run(
            "it.available = [Package('tool', '2.3', 'noarch', 'extra', release='4', epoch=1, size=2048,\n"
            "                        buildtime=1700000000)]");
        const auto references = backEnd->text("sys.getrefcount(it.available[0])").toInt();
        QVERIFY(backEnd->collect());
        QCOMPARE(yumIO().count(), 1);
        const Package::Entry& entry = *yumIO()[0];
        QCOMPARE(entry.action, Package::None);
        QCOMPARE(entry.state, Package::Available);
        QCOMPARE(entry.kind, Package::Ordinary);
        QCOMPARE(entry.name, QString("tool"));
        QCOMPARE(entry.verRel, QString("1:2.3-4"));
        QCOMPARE(entry.repo, QString("extra"));
        QCOMPARE(entry.arch, QString("noarch"));
        QCOMPARE(entry.biArch, QString("x86_64"));
        QCOMPARE(entry.size, quint64(2048));
        QCOMPARE(entry.sizeText, QString("2.0Kb"));
        QCOMPARE(entry.summary, QString("The package tool"));
        QCOMPARE(entry.buildTime, quint64(1700000000));
        QCOMPARE(entry.buildTimeText, QString("Tue Nov 14 22:13:20 2023"));
        QVERIFY(!entry.duplicate);
        QVERIFY(entry.next == nullptr);
        QVERIFY(entry.pyObject == backEnd->value("it.available[0]").get());
        QCOMPARE(backEnd->text("sys.getrefcount(it.available[0])").toInt(), references + 1);
        yumIO().clearEntries();
        QCOMPARE(backEnd->text("sys.getrefcount(it.available[0])").toInt(), references);
    }

    void theGettersReturnTheExpectedTextsOfARecord()
    {
        backEnd->run(
            "it.installed = [Package('tool', relativepath='t/tool.rpm'), Package('other', group='Suite')]");
        QVERIFY(backEnd->collect());
        const Package::Entry& entry = *backEnd->entry("tool");
        QCOMPARE(yumIO().getName(entry), QString("tool"));
        QCOMPARE(yumIO().getVerRel(entry), QString("1.0-1"));
        QCOMPARE(yumIO().getRepo(entry), QString("main"));
        QCOMPARE(yumIO().getArch(entry), QString("x86_64"));
        QCOMPARE(yumIO().getSize(entry), QString("20Kb"));
        QCOMPARE(yumIO().getSummary(entry), QString("The package tool"));
        QCOMPARE(yumIO().getBuildTime(entry), QString("Fri Jan  2 00:00:00 1970"));
        QCOMPARE(yumIO().getState(entry), QString("Installed"));
        QCOMPARE(yumIO().getKind(entry), QString("Ordinary package"));
        QCOMPARE(yumIO().getDescription(entry), QString("All about tool"));
        QCOMPARE(yumIO().getGroup(entry), QString("Applications/Testing"));
        QCOMPARE(yumIO().getVendor(entry), QString("Vendor"));
        QCOMPARE(yumIO().getBuildHost(entry), QString("host.example"));
        QCOMPARE(yumIO().getInstallTime(entry), QString("Sat Jan  3 00:00:00 1970"));
        QCOMPARE(yumIO().getBinaryRpm(entry), QString("t/tool.rpm"));
        QCOMPARE(yumIO().getSourceRpm(entry), QString("tool.src.rpm"));
        QCOMPARE(yumIO().getLicense(entry), QString("MIT"));
        QCOMPARE(yumIO().getPackager(entry), QString("Packager"));
        QCOMPARE(yumIO().getUrl(entry), QString("https://example.org/tool"));
        QCOMPARE(yumIO().getBinaryRpm(*backEnd->entry("other")), QString());
        QCOMPARE(yumIO().getKind(*backEnd->entry("other")), QString("Suite of packages"));
    }

    void aCollectionCallsTheMethodsOfTheScriptInOrder()
    {
        const int before = backEnd->log().count();
        QVERIFY(backEnd->collect());
        QCOMPARE(backEnd->text("' '.join(call[0] for call in it.calls)"),
                 QString("lock setupRepos collectUpdates collectAll collectGroups collectDone"));
        QCOMPARE(backEnd->log(before).value(0), QString("4 0 Initialization"));
        QCOMPARE(yumIO().basearch, QString("x86_64"));
        QCOMPARE(yumIO().readingName, QString("contents"));
        QCOMPARE(int(yumIO().readingCount), 0);
        QVERIFY(yumIO().locked);
    }

    void severalCollectionsTakeTheLockOnlyOnce()
    {
        QVERIFY(backEnd->collect());
        yumIO().clearEntries();
        QVERIFY(backEnd->collect());
        QCOMPARE(backEnd->text("len(it.did('lock'))"), QString("1"));
    }

    void aCollectionReportsThatAnotherProcessHoldsTheLock()
    {
        backEnd->run("def held():\n"
                     "    yumIOC.errorlog(1, 'process 12 has it')\n"
                     "    raise dnf.exceptions.LockError('held')\n"
                     "it.does['lock'] = held");
        QVERIFY(!backEnd->collect());
        QCOMPARE(errors(), QStringList("process 12 has it\nUnable to obtain yum lock"));
        QVERIFY(!yumIO().locked);
        QCOMPARE(backEnd->text("it.calls"), QString("[('lock',)]"));
        QVERIFY(!backEnd->total.isEnabled());

        backEnd->run("it.does.clear()");
        QVERIFY(backEnd->collect());
    }

    void anUnexpectedErrorOfTheScriptsLockMethodIsReported()
    {
        backEnd->run("it.raises['lock'] = KeyError('x')");
        QVERIFY(!backEnd->collect());
        QCOMPARE(errors(), QStringList(generic));
        QVERIFY(!yumIO().locked);
    }

    void extraDataAreTreatedAsLoadedEvenAfterAFailedCollection()
    {
        yumIO().fileListsLoaded = false;
        yumIO().otherDataLoaded = false;
        backEnd->run("it.raises['lock'] = dnf.exceptions.LockError('held')");
        QVERIFY(!backEnd->collect());
        errors();
        QVERIFY(yumIO().haveFileLists());
        QVERIFY(yumIO().haveOtherData());
    }

    void anErrorIsReportedIfTheScriptHasNoRepositoriesAttribute()
    {
        backEnd->run("del BASE.repos");
        QVERIFY(!backEnd->collect());
        QCOMPARE(errors(), QStringList({generic, "Internal error: yumIO.base.repos not evaluable"}));
    }

    void anErrorIsReportedIfTheRepositoriesAreNoDictionary()
    {
        backEnd->run("BASE.repos = []");
        QVERIFY(!backEnd->collect());
        QCOMPARE(errors(), QStringList("Internal error: yumIO.base.repos not a dictionary"));
    }

    void aConfigurationWithoutRepositoriesIsReported()
    {
        backEnd->run("BASE.repos = {}");
        QVERIFY(!backEnd->collect());
        QCOMPARE(errors(), QStringList(QString("No repositories are configured.") + underTheMenu));
        QCOMPARE(backEnd->text("it.calls"), QString("[('lock',)]"));
    }

    void aConfigurationWithoutEnabledRepositoriesIsReported()
    {
        backEnd->run("BASE.repos = {'a': Thing(enabled=0), 'b': Thing(enabled=None), 'c': Thing()}");
        QVERIFY(!backEnd->collect());
        QCOMPARE(errors(), QStringList(QString("No repositories are enabled.") + underTheMenu));
    }

    void enabledRepositoriesKeepTheirOrder()
    {
        backEnd->run(
            "BASE.repos = {'z': Thing(enabled=1), 'b': Thing(enabled='yes'), 'a': Thing(enabled=True)}");
        QVERIFY(backEnd->collect());
        QCOMPARE(yumIO().enabledRepos, QStringList({"z", "a"}));
    }

    void aCollectionEnablesAndDisablesRepositoriesForTheSession()
    {
        backEnd->run("BASE.repos['second'] = Thing(enabled=0)");
        QVERIFY(backEnd->collect({{"main", false}, {"second", true}, {"not-configured", true}}));
        QCOMPARE(backEnd->text("it.did('enableRepo')"), QString("[('second',)]"));
        QCOMPARE(backEnd->text("it.did('disableRepo')"), QString("[('main',)]"));
    }

    void aWarningIsShownIfARepositoryCannotBeEnabled()
    {
        backEnd->run("BASE.repos['second'] = Thing(enabled=0)\n"
                     "it.raises['enableRepo'] = dnf.exceptions.RepoError('no %1 there')");
        QVERIFY(backEnd->collect({{"second", true}, {"main", true}}));
        QStringList shown = warnings();
        shown.sort();
        QCOMPARE(shown, QStringList({"unable to setup repository main:\nno %1 there",
                                     "unable to setup repository second:\nno %1 there"}));
    }

    void anErrorIsReportedIfARepositoryCannotBeRead_data()
    {
        QTest::addColumn<QString>("exception");
        QTest::newRow("RepoError") << "dnf.exceptions.RepoError('no mirrors')";
        QTest::newRow("BdbQuit") << "bdb.BdbQuit('no mirrors')";
    }

    void anErrorIsReportedIfARepositoryCannotBeRead()
    {
        QFETCH(QString, exception);
        backEnd->run("it.raises['setupRepos'] = " + exception);
        QVERIFY(!backEnd->collect());
        QCOMPARE(errors(), QStringList("no mirrors\nUnable to initialize"));
        QCOMPARE(backEnd->text("it.did('collectUpdates')"), QString("[]"));
    }

    void anErrorIsReportedIfSetupReposFailsUnexpectedly()
    {
        backEnd->run("it.raises['setupRepos'] = KeyError('x')");
        QVERIFY(!backEnd->collect());
        QCOMPARE(errors(), QStringList(generic));
    }

    void aCollectionExplainsTheFailureOfAMethodOfTheScript_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<QString>("what");
        QTest::newRow("updates") << "collectUpdates"
                                 << "collect updatable packages";
        QTest::newRow("all") << "collectAll"
                             << "collect installed and available packages";
        QTest::newRow("groups") << "collectGroups"
                                << "collect groups";
    }

    void aCollectionExplainsTheFailureOfAMethodOfTheScript()
    {
        QFETCH(QString, method);
        QFETCH(QString, what);
        backEnd->run("it.installed = [Package('tool')]\nit.raises['" + method +
                     "'] = dnf.exceptions.Error('broken')");
        QVERIFY(!backEnd->collect());
        QCOMPARE(errors(), QStringList("broken\nUnable to " + what));
        QCOMPARE(yumIO().count(), 0);

        backEnd->run("it.raises['" + method + "'] = KeyError('x')");
        QVERIFY(!backEnd->collect());
        QCOMPARE(errors(),
                 QStringList({generic, "Internal error: execution of yumIO." + method + " failed"}));
        QCOMPARE(yumIO().count(), 0);

        // After a failed collection, the next collection works as usual.
        yumIO().clearEntries();
        backEnd->run("it.raises.clear()");
        QVERIFY(backEnd->collect());
        QCOMPARE(yumIO().count(), 1);
    }

    void theBarsShowTheProgressOfACollection()
    {
        backEnd->run(
            "seen = []\n"
            "def watch(method):\n"
            "    answer = {'collectUpdates': it.updates, 'collectGroups': it.groups,\n"
            "              'collectAll': Thing(installed=[], available=[])}.get(method)\n"
            "    it.does[method] = lambda: (seen.append((state()['phase'],) + tuple(look())), answer)[1]\n"
            "for each in ('lock', 'setupRepos', 'collectUpdates', 'collectAll', 'collectGroups', "
            "'collectDone'):\n"
            "    watch(each)");
        const QStringList expected{
            "(0, 'Initializing: Total Progress (0%) 0/18000', 'Preparing (0%) 0/1')",
            "(1, 'Initializing: Total Progress (0%) 100/18000', 'Reading repositories 0/0')",
            "(1, 'Initializing: Total Progress (83%) 15000/18000', 'Collecting updatable packages 0/0')",
            ("(1, 'Initializing: Total Progress (88%) 16000/18000', "
             "'Collecting installed and available packages 0/0')"),
            "(0, 'Initializing: Total Progress (94%) 17000/18000', 'Collecting groups 0/0')",
            "(0, 'Initializing: Total Progress (94%) 17000/18000', 'Collecting groups 0/0')"};
        QVERIFY(backEnd->collect());
        QCOMPARE(backEnd->text("seen"), "[" + expected.join(", ") + "]");
        QCOMPARE(backEnd->bars(), QStringList({"idle", "idle"}));
    }

    void theItemBarNamesTheRepositoryAndTheCurrentStep()
    {
        backEnd->run("seen = []\n"
                     "BASE.repos['other'] = Thing(enabled=1)\n"
                     "def read():\n"
                     "    for name in ('main', 'other'):\n"
                     "        showReading(name, 'Reading repository metadata for ' + name)\n"
                     "        seen.append(tuple(look()))\n"
                     "        if name == 'other':\n"
                     "            payload = dnf.repo.MDPayload(None)\n"
                     "            payload.start = lambda text: None\n"
                     "            payload._text, payload._download_size = 'Other', 200\n"
                     "            yumIOC.downloadProgress(payload, 50.0)\n"
                     "            seen.append(tuple(look()))\n"
                     "        showReading(name, 'Reading the packages of ' + name)\n"
                     "        seen.append(tuple(look()))\n"
                     "it.does['setupRepos'] = read\n");
        QVERIFY(backEnd->collect());
        const QString total("'Initializing: Total Progress ");
        QCOMPARE(backEnd->text("seen"),
                 "[(" + total + "(5%) 1000/18000', 'Reading repository metadata for main 0/0'), (" + total +
                     "(44%) 8000/18000', 'Reading the packages of main 0/0'), (" + total +
                     "(44%) 8000/18000', 'Reading repository metadata for other 0/0'), (" + total +
                     "(54%) 9750/18000', 'Reading repository metadata for other (25%) 50/200'), (" + total +
                     "(83%) 15000/18000', 'Reading the packages of other 0/0')]");
        QCOMPARE(backEnd->bars(), QStringList({"idle", "idle"}));
        // While no operation runs, the bars do not show reports.
        backEnd->run("showReading('main', 'too late')");
        QCOMPARE(backEnd->bars(), QStringList({"idle", "idle"}));
    }

    void aCollectionFromTheCacheDoesNotUseTheNetwork()
    {
        backEnd->run("it.installed = [Package('old')]");
        QVERIFY(yumIO().collect({}, YumIO::Source::Cache));
        QCOMPARE(backEnd->text("len(it.did('setupRepos'))"), QString("0"));
        QCOMPARE(backEnd->text("len(it.did('setupCachedRepos'))"), QString("1"));
        QCOMPARE(yumIO().count(), 1);
    }

    void theUserCanStopACollectionInEachOfItsSteps_data()
    {
        QTest::addColumn<QString>("method");
        QTest::newRow("repositories") << "setupRepos";
        QTest::newRow("updates") << "collectUpdates";
        QTest::newRow("all") << "collectAll";
        QTest::newRow("groups") << "collectGroups";
    }

    void theUserCanStopACollectionInEachOfItsSteps()
    {
        QFETCH(QString, method);
        backEnd->run("import time\n"
                     "def wait():\n"
                     "    while not stopWanted(False):\n        time.sleep(0.01)\n"
                     "    raise dnf.exceptions.RepoError('interrupted')\n"
                     "it.does['" +
                     method + "'] = wait");
        StopRequest::State state = StopRequest::State::Idle;
        QTimer::singleShot(300, &yumIO(), [this, &state] {
            state = yumIO().stopState();
            yumIO().stop();
        });
        const int before = backEnd->log().count();
        QVERIFY(!yumIO().collect({}));
        QVERIFY(yumIO().wasStopped());
        QCOMPARE(state, method == "setupRepos" ? StopRequest::State::Possible : StopRequest::State::Useless);
        QCOMPARE(backEnd->answers.take().count(), 0);
        QCOMPARE(backEnd->log(before),
                 QStringList({"4 0 Initialization", "0 3 interrupted", "4 0 Stopped."}));
        QCOMPARE(backEnd->bars(), QStringList({"idle", "idle"}));
        yumIO().clearEntries();
        backEnd->run("it.does.clear()");
        QVERIFY(backEnd->collect());
        QVERIFY(!yumIO().wasStopped());
    }

    void theBackEndKnowsWhichRepositoriesTheScriptSkips()
    {
        const int before = yumIO().logEntries().count();
        backEnd->run("def read():\n"
                     "    logWarning(2, 'Ignoring repositories: one')\n"
                     "    it.skippedRepos = ['one', 'two']\n"
                     "it.does['setupRepos'] = read\n");
        QVERIFY(backEnd->collect());
        QCOMPARE(yumIO().skippedRepos(), QStringList({"one", "two"}));
        bool warned = false;
        {
            const QMutexLocker locker(&yumIO().logEntries());
            for (int i = before; i < yumIO().logEntries().count(); ++i) {
                const Log::Entry& entry = yumIO().logEntries().at(i);
                warned = warned || (entry.kind == Log::Warning && entry.level == 2 &&
                                    entry.text == QString("Ignoring repositories: one"));
            }
        }
        QVERIFY(warned);
        backEnd->run("it.does.clear()\ndel it.skippedRepos");
        yumIO().clearEntries();
        QVERIFY(backEnd->collect());
        QCOMPARE(yumIO().skippedRepos(), QStringList());
    }

    void theScriptCanAskTheUserAboutEachFailingRepository()
    {
        backEnd->run("seen = []\n"
                     "def read():\n"
                     "    seen.append([goOnWithout('one', 'http://u:secret@h/ is away', 2),\n"
                     "                 goOnWithout('two', 'broken', 1), goOnWithout('three', 'late', 0)])\n"
                     "it.does['setupRepos'] = read\n");
        backEnd->answers.press("Yes");
        backEnd->answers.press("Yes to &All");
        QVERIFY(backEnd->collect());
        QCOMPARE(backEnd->text("seen"), QString("[[True, True, True]]"));
        QList<ShownDialog> asked = backEnd->answers.take();
        QCOMPARE(asked.count(), 2);
        QCOMPARE(asked[0].title, QString("Repositories"));
        QVERIFY2(asked[0].text.startsWith("The repository one cannot be read:\nhttp://"),
                 qPrintable(asked[0].text));
        QVERIFY(!asked[0].text.contains("secret"));
        QCOMPARE(asked[0].buttons, QStringList({"Yes", "No", "Yes to &All"}));
        QCOMPARE(asked[1].text,
                 QString("The repository two cannot be read:\nbroken\n\nGo on without it for this session?"));
        QCOMPARE(yumIO().unwantedRepos(), QStringList({"one", "two", "three"}));
        // The next collection asks a second time, although the user has answered "Yes to All" in the first
        // collection.
        for (const QString answer : {"No", "Escape", "Enter"}) {
            backEnd->run("seen = []\n"
                         "it.does['setupRepos'] = lambda: seen.append(goOnWithout('one', 'late', 0))");
            backEnd->answers.press(answer);
            yumIO().clearEntries();
            QVERIFY(backEnd->collect());
            // Enter means "Yes": "No" would empty the table, although all other repositories are readable.
            const bool goesOn = answer == "Enter";
            QCOMPARE(backEnd->text("seen"), QString(goesOn ? "[True]" : "[False]"));
            asked = backEnd->answers.take();
            QCOMPARE(asked.count(), 1);
            QCOMPARE(asked[0].buttons, QStringList({"Yes", "No"}));
            QCOMPARE(yumIO().unwantedRepos(), goesOn ? QStringList("one") : QStringList());
        }
        // A collection without enabled repositories still lists the installed packages.
        backEnd->run("it.does.clear()\nBASE.repos['main'].enabled = 0\nit.installed = [Package('old')]");
        yumIO().clearEntries();
        QVERIFY(backEnd->collect());
        QCOMPARE(backEnd->answers.take().count(), 0);
        QCOMPARE(yumIO().count(), 1);
    }

    void anErrorIsReportedIfAListOfPackagesCannotBeIterated()
    {
        backEnd->run("def broken():\n    yield Package('tool')\n    raise KeyError('x')\n"
                     "it.updates = 5");
        QVERIFY(!backEnd->collect());
        QCOMPARE(errors(), QStringList({generic, "Internal error: the packages are not iterable"}));
        backEnd->run("it.updates = broken()");
        QVERIFY(!backEnd->collect());
        QCOMPARE(errors(), QStringList({generic, "Internal error: the packages cannot be walked"}));
        yumIO().clearEntries();
        backEnd->run("it.updates = []\nit.groups = 5");
        QVERIFY(!backEnd->collect());
        QCOMPARE(errors(), QStringList({generic, "Internal error: the groups are not iterable"}));
        backEnd->run("def broken():\n    yield Group('G', 'g')\n    raise KeyError('x')\n"
                     "it.groups = broken()");
        QVERIFY(!backEnd->collect());
        QCOMPARE(errors(), QStringList({generic, "Internal error: the groups cannot be walked"}));
        QCOMPARE(yumIO().count(), 0);
    }

    void anErrorIsReportedIfAListOfPackagesIsMissing()
    {
        backEnd->run("it.does['collectAll'] = lambda: Thing(installed=[Package('tool')])");
        QVERIFY(!backEnd->collect());
        QCOMPARE(errors(), QStringList({generic, "Internal error: yumIO.collectAll.available not found"}));
        QCOMPARE(yumIO().count(), 0);
        QCOMPARE(yumIO().records.keyCount(), 1);
        backEnd->run("it.does['collectAll'] = lambda: Thing(available=[])");
        QVERIFY(!backEnd->collect());
        QCOMPARE(errors(), QStringList({generic, "Internal error: yumIO.collectAll.installed not found"}));
    }

    void theOutputOfTheScriptDuringACollectionIsLogged()
    {
        backEnd->run("import os\n"
                     "def talk():\n"
                     "    print('from the script')\n"
                     "    os.write(1, b'to descriptor 1\\n')\n"
                     "    os.write(2, b'to descriptor 2\\n')\n"
                     "    return []\n"
                     "it.does['collectUpdates'] = talk");
        const int before = backEnd->log().count();
        QVERIFY(backEnd->collect());
        const QStringList log = backEnd->log(before);
        QVERIFY(log.contains("1 0 from the script"));
        QVERIFY(log.contains("1 0 to descriptor 1"));
        QVERIFY(log.contains("3 0 to descriptor 2"));
    }

    void aWarningNamesReplacedPackagesWhichAreNotMarkedAutomatically()
    {
        backEnd->run(
            "old, new = Package('old'), Package('new', '2.0')\n"
            "split, better = Package('split'), Package('better', '2.0')\n"
            "it.updates, it.installed = [better], [old, split, Package('better'), Package('plain')]\n"
            "it.available = [new, Package('other')]\n"
            "it.replacements = [(old, new), (split, better)]");
        const int before = backEnd->log().count();
        QVERIFY(backEnd->collect());
        const QString old = backEnd->text("str(old)");
        const QString fresh = backEnd->text("str(new)");
        // Each line of the warning becomes a separate log entry.
        QCOMPARE(backEnd->log(before).filter(QRegularExpression("Other packages replace| -> ")),
                 (QStringList{"2 2 Other packages replace these installed packages. Mark the replacements "
                              "for installation, or keep the installed packages:",
                              "2 2 " + old + " -> " + fresh,
                              "2 2 " + backEnd->text("str(split)") + " -> " + backEnd->text("str(better)")}));
        QStringList left;
        for (const char* name : {"old", "new", "split", "better", "plain", "other"}) {
            if (yumIO().isLeftToUser(*backEnd->entry(name))) {
                left.append(name);
            }
        }
        // "better" replaces another package too, but it is an update of an installed package. So VYRE may
        // mark it automatically.
        QCOMPARE(left, (QStringList{"old", "new", "split"}));
        QCOMPARE(yumIO().replacement(*backEnd->entry("old")).by, QStringList(fresh));
        QCOMPARE(yumIO().replacement(*backEnd->entry("new")).of, QStringList(old));
        QCOMPARE(yumIO().replacement(*backEnd->entry("better")).of, QStringList(backEnd->text("str(split)")));
        QVERIFY(yumIO().replacement(*backEnd->entry("plain")).by.isEmpty());
        backEnd->run("del it.replacements");
        yumIO().clearEntries();
        QVERIFY(backEnd->collect());
        QVERIFY(!yumIO().isLeftToUser(*backEnd->entry("old")));
    }

    void theRecordOfAnUpdateIsChainedToTheInstalledVersion()
    {
        backEnd->run("it.updates = [Package('tool', '2.0')]\n"
                     "it.installed = [Package('tool', '1.0', repo='@System')]\n"
                     "it.available = [Package('tool', '2.0'), Package('tool', '1.5')]");
        QVERIFY(backEnd->collect());
        QCOMPARE(yumIO().count(), 1);
        const Package::Entry* entry = yumIO()[0];
        QCOMPARE(entry->state, Package::Updatable);
        QCOMPARE(entry->verRel, QString("2.0-1"));
        QVERIFY(entry->next != nullptr);
        QCOMPARE(entry->next->state, Package::Installed);
        QCOMPARE(entry->next->verRel, QString("1.0-1"));
        QVERIFY(entry->next->next == nullptr);
    }

    void anUpdateIsChainedToItsInstalledVersionEvenIfTheirBiArchClassesDiffer()
    {
        backEnd->run(
            "loses, gets = Package('loses', '2.0', arch='noarch'), Package('gets', '2.0', arch='i686')\n"
            "it.updates = [loses, gets, Package('plain', '2.0')]\n"
            "it.installed = [Package('loses', arch='i686'), Package('loses', '0.9'), Package('plain'),\n"
            "                Package('gets', arch='noarch')]\n"
            "it.available = [Package('loses', '1.5', arch='i686'), Package('gets', '1.5', arch='noarch')]\n"
            "it.counterparts = [(loses, it.installed[0]), (loses, it.installed[1]), (gets, "
            "it.installed[3])]");
        const int references = backEnd->text("sys.getrefcount(it.installed[0])").toInt();
        QVERIFY(backEnd->collect());
        QCOMPARE(names(yumIO().records.all()), QStringList({"gets.i386", "loses.x86_64", "plain.x86_64"}));
        const auto versions = [](const Package::Entry* entry) {
            QStringList lines;
            for (; entry != nullptr; entry = entry->next) {
                lines.append(QString::number(entry->state) + " " + entry->verRel + " " + entry->arch);
            }
            return lines;
        };
        QCOMPARE(versions(backEnd->entry("loses")),
                 QStringList({"0 2.0-1 noarch", "2 1.0-1 i686", "2 0.9-1 x86_64"}));
        QCOMPARE(versions(backEnd->entry("gets", "i386")), QStringList({"0 2.0-1 i686", "2 1.0-1 noarch"}));
        // The listing of a transaction calls findPackage() to find the installed versions.
        QVERIFY(yumIO().findPackage("gets", "noarch") == backEnd->entry("gets", "i386"));
        QVERIFY(yumIO().findPackage("loses", "i686") == backEnd->entry("loses"));

        backEnd->entry("loses")->action = Package::Update;
        backEnd->entry("gets", "i386")->action = Package::Update;
        yumIO().apply();
        QCOMPARE(backEnd->text("sorted('%s-%s.%s<%s.%s' % (a.name, a.version, a.arch, b.version, b.arch)\n"
                               "       for a, b in it.did('apply')[0][1])"),
                 QString("['gets-2.0.i686<1.0.noarch', 'loses-2.0.noarch<0.9.x86_64', "
                         "'loses-2.0.noarch<1.0.i686']"));
        // Clearing releases the reference of each record exactly once.
        yumIO().clearEntries();
        QCOMPARE(yumIO().count(), 0);
        backEnd->run("it.calls.clear()");
        QCOMPARE(backEnd->text("sys.getrefcount(it.installed[0])").toInt(), references);
    }

    void theInstalledVersionsOfAPackageAreOneChain()
    {
        backEnd->run("it.installed = [Package('kernel', v) for v in ('6.1', '6.2', '6.3')]");
        QVERIFY(backEnd->collect());
        QCOMPARE(yumIO().count(), 1);
        QStringList versions;
        for (const Package::Entry* entry = yumIO()[0]; entry != nullptr; entry = entry->next) {
            QCOMPARE(entry->state, Package::Installed);
            versions.append(entry->verRel);
        }
        QCOMPARE(versions, QStringList({"6.1-1", "6.2-1", "6.3-1"}));
        // Each version in the chain has a reference of its own.
        backEnd->run("kernels = it.installed");
        const int references = backEnd->text("[sys.getrefcount(k) for k in kernels][2]").toInt();
        yumIO().clearEntries();
        QCOMPARE(backEnd->text("[sys.getrefcount(k) for k in kernels][2]").toInt(), references - 1);
    }

    void theRecordWithTheWorseArchitectureIsADuplicate()
    {
        backEnd->run("it.available = [Package('lib', arch='i686'), Package('lib', arch='x86_64'),\n"
                     "                Package('mono', arch='x86_64'), Package('mono', arch='i586')]");
        QVERIFY(backEnd->collect());
        QCOMPARE(names(yumIO().records.all()),
                 QStringList({"lib.i386", "lib.x86_64", "mono.i386", "mono.x86_64"}));
        QVERIFY(backEnd->entry("lib", "i386")->duplicate);
        QVERIFY(!backEnd->entry("lib")->duplicate);
        QVERIFY(backEnd->entry("mono", "i386")->duplicate);
        QVERIFY(!backEnd->entry("mono")->duplicate);
        QCOMPARE(backEnd->text("[(a.arch, b.arch) for a, b in it.did('isBetterThan')]"),
                 QString("[('i686', 'x86_64'), ('x86_64', 'i586')]"));
    }

    void aRecordIsBetterOnlyIfTheScriptReturnsExactlyTrue()
    {
        backEnd->run("it.available = [Package('lib', arch='x86_64'), Package('lib', arch='i686')]\n"
                     "it.does['isBetterThan'] = lambda a, b: 1");
        QVERIFY(backEnd->collect());
        QVERIFY(backEnd->entry("lib")->duplicate);
        QVERIFY(!backEnd->entry("lib", "i386")->duplicate);
    }

    void theFirstRecordIsTheDuplicateIfTheScriptFailsToCompareTwoRecords()
    {
        backEnd->run("it.available = [Package('lib', arch='x86_64'), Package('lib', arch='i686')]\n"
                     "it.raises['isBetterThan'] = KeyError('x')");
        QVERIFY(backEnd->collect());
        QCOMPARE(errors(), QStringList(generic));
        QVERIFY(backEnd->entry("lib")->duplicate);
        QVERIFY(!backEnd->entry("lib", "i386")->duplicate);
    }

    void severalFailuresToCompareRecordsAreReportedOnce()
    {
        backEnd->run(
            "it.available = [Package('lib%d' % n, arch=a) for n in range(50) for a in ('x86_64', 'i686')]\n"
            "it.raises['isBetterThan'] = KeyError('x')");
        QVERIFY(backEnd->collect());
        QCOMPARE(errors(), QStringList(generic));
        QVERIFY(backEnd->entry("lib49")->duplicate);
        QVERIFY(!backEnd->entry("lib49", "i386")->duplicate);
    }

    void groupsHaveTheExpectedStates()
    {
        backEnd->run(
            "it.updates = [Package('fresh', '2.0')]\n"
            "it.installed = [Package('fresh'), Package('old')]\n"
            "BASE.history.installed['there'] = 'yes'\n"
            "it.groups = [Group('Installed', 'there', mandatory=['fresh']),\n"
            "             Group('Mandatory update', 'm', mandatory=['old', 'fresh']),\n"
            "             Group('Default update', 'd', default=['fresh']),\n"
            "             Group('Optional update', 'o', optional=['fresh'], conditional=['fresh']),\n"
            "             Group('Unknown members', 'u', mandatory=['nobody']),\n"
            "             Group('Hidden', 'h', uservisible=False),\n"
            "             Group('Default update', 'second', mandatory=[])]\n");
        QVERIFY(backEnd->collect());
        QCOMPARE(backEnd->group("Installed")->state, Package::Installed);
        QCOMPARE(backEnd->group("Mandatory update")->state, Package::Updatable);
        QCOMPARE(backEnd->group("Default update")->state, Package::Updatable);
        QCOMPARE(backEnd->group("Optional update")->state, Package::Available);
        QCOMPARE(backEnd->group("Unknown members")->state, Package::Available);
        QVERIFY(backEnd->group("Hidden") == nullptr);
        QCOMPARE(yumIO().count(), 7);
        const Package::Entry& group = *backEnd->group("Default update");
        QCOMPARE(group.kind, Package::Group);
        QCOMPARE(group.action, Package::None);
        QVERIFY(group.pyObject == backEnd->value("it.groups[2]").get());
        QVERIFY(group.verRel.isEmpty() && group.arch.isEmpty() && group.repo.isEmpty());
    }

    void aGroupWithoutAVisibilityIsSkipped()
    {
        backEnd->run("it.groups = [Group('G', 'g')]\ndel it.groups[0].uservisible");
        QVERIFY(backEnd->collect());
        QCOMPARE(yumIO().count(), 0);
    }

    void aGroupWithoutANameIsReported()
    {
        backEnd->run("it.groups = [Group('G', 'g')]\ndel it.groups[0].name");
        QVERIFY(!backEnd->collect());
        QCOMPARE(errors(), QStringList("Internal error: group without name"));
    }

    void aGroupAndAPackageOfTheSameNameAreTwoRecords()
    {
        backEnd->run("it.available = [Package('base')]\nit.groups = [Group('base', 'base')]");
        QVERIFY(backEnd->collect());
        QCOMPARE(yumIO().count(), 2);
        QVERIFY(backEnd->group("base") != backEnd->entry("base"));
    }

    void anUnreadableHistoryOfGroupsIsReportedOnce()
    {
        backEnd->run("class Damaged(Exception): pass\n"
                     "class Broken:\n"
                     "    asked = 0\n"
                     "    def get(self, id):\n"
                     "        Broken.asked += 1\n"
                     "        raise Damaged('history.sqlite: not a database')\n"
                     "BASE.history.group = Broken()\n"
                     "it.updates = [Package('fresh', '2.0')]\n"
                     "it.installed = [Package('fresh')]\n"
                     "it.groups = [Group('G%d' % n, 'g%d' % n, default=['fresh']) for n in range(500)]");
        QVERIFY(backEnd->collect());
        QCOMPARE(backEnd->answers.takeTexts("VYRE Yum Warning"),
                 QStringList(
                     "VYRE does not know which groups are installed, because it cannot read the transaction "
                     "history.\nhistory.sqlite: not a database\nIf the file is damaged, move it to another "
                     "place. The package manager then creates a new file."));
        QCOMPARE(backEnd->text("Broken.asked"), QString("1"));
        QCOMPARE(yumIO().count(), 501);
        QCOMPARE(backEnd->group("G499")->state, Package::Updatable);
        // The next collection does not report this failure a second time.
        yumIO().clearEntries();
        QVERIFY(backEnd->collect());
        QCOMPARE(backEnd->answers.take().count(), 0);
        // If the exception has no text, the message names the type of the exception.
        yumIO().clearEntries();
        backEnd->run("def get(id): raise KeyError()\nBASE.history.group.get = get");
        QVERIFY(backEnd->collect());
        QVERIFY(backEnd->answers.takeTexts("VYRE Yum Warning").value(0).contains("history.\nKeyError\nIf"));
    }

    void anErrorIsReportedIfTheHistoryOfGroupsIsMissing()
    {
        backEnd->run("del BASE.history");
        QVERIFY(!backEnd->collect());
        QCOMPARE(errors(), QStringList({generic, "Internal error: yumIO.base.history not evaluable"}));
        backEnd->run("BASE.history = Thing()");
        QVERIFY(!backEnd->collect());
        QCOMPARE(errors(), QStringList({generic, "Internal error: yumIO.base.history.group not evaluable"}));
    }

    void packagesInTheRpmGroupSuiteAreSuites()
    {
        backEnd->run("it.available = [Package('office', group='Suite'), Package('suite', group='suite')]");
        QVERIFY(backEnd->collect());
        QCOMPARE(backEnd->entry("office")->kind, Package::Suite);
        QCOMPARE(backEnd->entry("suite")->kind, Package::Ordinary);
    }

    void clearingTheEntriesRemovesAllRecords()
    {
        backEnd->run("it.available = [Package('lib', arch='x86_64'), Package('lib', arch='i686')]\n"
                     "it.groups = [Group('G', 'g')]");
        QVERIFY(backEnd->collect());
        QCOMPARE(yumIO().count(), 3);
        yumIO().clearEntries();
        QCOMPARE(yumIO().count(), 0);
        QCOMPARE(yumIO().records.keyCount(), 0);
    }

    void clearingTheEntriesBeforeQuittingReleasesNoReferences()
    {
        backEnd->run("it.installed = [Package('kernel', v) for v in ('6.1', '6.2')]\nkernels = it.installed");
        QVERIFY(backEnd->collect());
        const QString references = backEnd->text("[sys.getrefcount(k) for k in kernels]");
        yumIO().clearEntriesBeforeQuit();
        QCOMPARE(backEnd->text("[sys.getrefcount(k) for k in kernels]"), references);
        QCOMPARE(yumIO().count(), 0);
        QCOMPARE(yumIO().records.keyCount(), 0);
    }

    void aResetOfTheBackEndResetsTheScript()
    {
        yumIO().reset();
        QCOMPARE(backEnd->text("it.calls"), QString("[('reset',)]"));
    }

    void theWindowRespondsWhileTheScriptIsReset()
    {
        backEnd->run("import threading\n"
                     "served = threading.Event()\n"
                     "def reset():\n"
                     "    it.calls.append(served.wait(60))\n"
                     "it.reset = reset");
        QTimer::singleShot(0, this, [this] {
            Python::PyGILStateWrapper lock(true);
            backEnd->run("served.set()");
        });
        yumIO().reset();
        QCOMPARE(backEnd->text("it.calls"), QString("[True]"));
    }

    void configurationVariablesAreRead()
    {
        backEnd->run("BASE.conf.releasever = '9'");
        QCOMPARE(yumIO().getYumVar("releasever"), QString("9"));
        QCOMPARE(yumIO().getYumVar("nothing"), QString());
        QCOMPARE(errors(), QStringList({generic, "Internal error: yum var nothing not found"}));
        backEnd->run("del BASE.conf");
        QCOMPARE(yumIO().getYumVar("releasever"), QString());
        QCOMPARE(errors(), QStringList({generic, "Internal error: conf not evaluable"}));
    }

    void eachRepositoryWhoseMetadataAreDownloadedIsCounted()
    {
        backEnd->run("class Payload:\n"
                     "    download_size = 400.0\n"
                     "    def __init__(self, name): self.name = name\n"
                     "    def __str__(self): return self.name\n"
                     "def download():\n"
                     "    yumIOC.downloadStart(1, 400, 0)\n"
                     "    one, two = Payload('one'), Payload('two')\n"
                     "    yumIOC.downloadProgress(one, 0.0)\n"
                     "    yumIOC.downloadProgress(one, 200.0)\n"
                     "    yumIOC.downloadMessage('x')\n"
                     "    yumIOC.downloadEnd(one, None, None)\n"
                     "    yumIOC.downloadProgress(two, 0.0)\n"
                     "    return True\n"
                     "it.does['setupRepos'] = download\n"
                     "BASE.repos['second'] = Thing(enabled=1)");
        QVERIFY(backEnd->collect());
        QCOMPARE(int(yumIO().readingCount), 2);
        QCOMPARE(yumIO().readingMax, 1ULL);
    }
};

QTEST_MAIN(YumIOCollectTest)
#include "YumIOCollectTest.moc"
