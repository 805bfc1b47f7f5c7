// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include "tests/yumio/CollectFixture.h"

// Tests of the steps of a collection: their order, their failures, and their progress. Also tests of the
// reset, and of the configuration variables.
class YumIOCollectStepsTest : public CollectFixture
{
    Q_OBJECT

private Q_SLOTS:
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
        QVERIFY(yumIO().records.findPackage("tool", QString()) != nullptr);
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
};

QTEST_MAIN(YumIOCollectStepsTest)
#include "YumIOCollectStepsTest.moc"
