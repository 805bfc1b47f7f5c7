// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include "tests/yumio/CollectFixture.h"

namespace {

const char* const underTheMenu = "\nUnder the Repositories menu, Edit Configuration can be used to configure "
                                 "repositories.";

} // namespace

// Tests of the repositories that a collection reads.
class YumIOCollectRepositoriesTest : public CollectFixture
{
    Q_OBJECT

private Q_SLOTS:
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

    void aCollectionFromTheCacheDoesNotUseTheNetwork()
    {
        backEnd->run("it.installed = [Package('old')]");
        QVERIFY(yumIO().collect({}, YumIO::Source::Cache));
        QCOMPARE(backEnd->text("len(it.did('setupRepos'))"), QString("0"));
        QCOMPARE(backEnd->text("len(it.did('setupCachedRepos'))"), QString("1"));
        QCOMPARE(yumIO().count(), 1);
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

QTEST_MAIN(YumIOCollectRepositoriesTest)
#include "YumIOCollectRepositoriesTest.moc"
