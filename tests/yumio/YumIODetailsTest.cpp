// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include "tests/yumio/BackEndFixture.h"

class YumIODetailsTest : public BackEndFixture
{
    Q_OBJECT

private:
    const Package::Entry& tool() { return *backEnd->entry("tool"); }
    const Package::Entry& group() { return *backEnd->group("G"); }

private Q_SLOTS:
    // Every test starts with one package and one group.
    void init() override
    {
        BackEndFixture::init();
        yumIO().missingAttributes.clear();
        backEnd->run("tool = Package('tool')\n"
                     "group = Group('G', 'g', ['b', 'a'], ['d'], [], ['c', 'c'])\n"
                     "it.installed = [tool]\n"
                     "it.groups = [group]");
        QVERIFY(backEnd->collect());
        QVERIFY(backEnd->entry("tool") != nullptr);
        QVERIFY(backEnd->group("G") != nullptr);
    }

    void cleanup() override
    {
        BackEndFixture::cleanup();
        QCOMPARE(PyGILState_Check(), 1);
    }

    void extraDataAreNotLoadedAgainAfterACollection()
    {
        QVERIFY(yumIO().collectFileLists());
        QVERIFY(yumIO().collectOtherData());
        QCOMPARE(backEnd->text("it.did('collectFileLists') + it.did('collectOtherData')"), QString("[]"));
    }

    void missingExtraDataAreLoadedOnlyOnce_data()
    {
        QTest::addColumn<bool>("files");
        QTest::addColumn<QString>("method");
        QTest::addColumn<QString>("heading");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("what");
        QTest::newRow("file lists") << true << "collectFileLists"
                                    << "Collecting File Lists"
                                    << "file lists"
                                    << "collect filelists";
        QTest::newRow("change logs") << false << "collectOtherData"
                                     << "Collecting Miscellaneous data"
                                     << "miscellaneous data"
                                     << "collect miscellaneous data";
    }

    void missingExtraDataAreLoadedOnlyOnce()
    {
        QFETCH(bool, files);
        QFETCH(QString, method);
        QFETCH(QString, heading);
        QFETCH(QString, name);
        QFETCH(QString, what);
        bool& loaded = files ? yumIO().fileListsLoaded : yumIO().otherDataLoaded;
        const auto load = [this, files] {
            return files ? yumIO().collectFileLists() : yumIO().collectOtherData();
        };
        QSignalSpy spy(&yumIO(), SIGNAL(collectedExtraData()));
        loaded = false;

        backEnd->run("it.raises['" + method + "'] = dnf.exceptions.Error('broken')");
        QVERIFY(!load());
        QCOMPARE(errors(), QStringList("broken\nUnable to " + what));
        backEnd->run("it.raises['" + method + "'] = KeyError('x')");
        QVERIFY(!load());
        QCOMPARE(errors(),
                 QStringList({generic, "Internal error: execution of yumIO." + method + " failed"}));
        QVERIFY(!loaded);
        QCOMPARE(spy.count(), 0);

        backEnd->run("it.raises.clear()\nit.calls.clear()\n"
                     "seen = []\n"
                     "def load():\n    print('loading')\n    seen.append(look())\n    return True\n"
                     "it.does['" +
                     method + "'] = load");
        const int before = backEnd->log().count();
        QVERIFY(load());
        QVERIFY(loaded);
        QCOMPARE(spy.count(), 1);
        QCOMPARE(backEnd->log(before), QStringList({"4 0 " + heading, "1 0 loading"}));
        QCOMPARE(yumIO().readingName, name);
        QCOMPARE(backEnd->text("seen"), QString("[['Loading %1: Total Progress (0%) 0/15000', "
                                                "'Reading repositories (0%) 0/1']]")
                                            .arg(name));
        QCOMPARE(backEnd->bars(), QStringList({"idle", "idle"}));
        QVERIFY(load());
        QCOMPARE(backEnd->text("it.calls"), "[('" + method + "',)]");
        QCOMPARE(spy.count(), 1);
    }

    void theOutputOfTheScriptIsLoggedWhileExtraDataAreLoaded_data()
    {
        missingExtraDataAreLoadedOnlyOnce_data();
    }

    void theOutputOfTheScriptIsLoggedWhileExtraDataAreLoaded()
    {
        QFETCH(bool, files);
        QFETCH(QString, method);
        QFETCH(QString, heading);
        (files ? yumIO().fileListsLoaded : yumIO().otherDataLoaded) = false;
        // os.write() bypasses sys.stdout, as dnf's libraries do.
        backEnd->run("import os\n"
                     "def load():\n"
                     "    os.write(1, b'something odd\\n')\n"
                     "    os.write(2, b'something wrong\\n')\n"
                     "    return True\n"
                     "it.does['" +
                     method + "'] = load");
        const int before = backEnd->log().count();
        QVERIFY(files ? yumIO().collectFileLists() : yumIO().collectOtherData());
        QStringList log = backEnd->log(before);
        QCOMPARE(log.takeFirst(), "4 0 " + heading);
        log.sort(); // the order of the two streams in the log varies
        QCOMPARE(log, QStringList({"1 0 something odd", "3 0 something wrong"}));
    }

    void theOutputOfTheScriptIsLoggedWhileAChangeLogIsRead()
    {
        backEnd->run("import os\n"
                     "class Loud(Package):\n"
                     "    @property\n"
                     "    def changelogs(self):\n"
                     "        os.write(1, b'something odd\\n')\n"
                     "        os.write(2, b'something wrong\\n')\n"
                     "        return []\n"
                     "it.available.append(Loud('loud'))");
        yumIO().clearEntries();
        QVERIFY(backEnd->collect());
        const int before = backEnd->log().count();
        yumIO().loadChangeLog(*backEnd->entry("loud"));
        QStringList log = backEnd->log(before);
        log.sort();
        QCOMPARE(log, QStringList({"1 0 something odd", "3 0 something wrong"}));
    }

    void extraDataAreReadRepositoryByRepository_data() { missingExtraDataAreLoadedOnlyOnce_data(); }

    void extraDataAreReadRepositoryByRepository()
    {
        QFETCH(bool, files);
        QFETCH(QString, method);
        QFETCH(QString, name);
        backEnd->run("class Payload:\n"
                     "    download_size = 400.0\n"
                     "    def __init__(self, name): self.name = name\n"
                     "    def __str__(self): return self.name\n"
                     "seen = []\n"
                     "def load():\n"
                     "    for name in 'one', 'two':\n"
                     "        payload = Payload(name)\n"
                     "        yumIOC.downloadStart(1, 400, 0)\n"
                     "        yumIOC.downloadProgress(payload, 0.0)\n"
                     "        seen.append(look())\n"
                     "        yumIOC.downloadEnd(payload, None, None)\n"
                     "    return True\n"
                     "it.does['" +
                     method +
                     "'] = load\n"
                     "BASE.repos['second'] = Thing(enabled=1)");
        yumIO().clearEntries();
        QVERIFY(backEnd->collect());
        (files ? yumIO().fileListsLoaded : yumIO().otherDataLoaded) = false;
        QVERIFY(files ? yumIO().collectFileLists() : yumIO().collectOtherData());
        // The first 1000 of 15000 steps come before the first repository. Each of the two repositories gets
        // half of the remaining steps.
        QCOMPARE(backEnd->text("seen"), QString("[['Loading %1: Total Progress (6%) 1000/15000', "
                                                "'Reading repository metadata for one (0%) 0/1'], "
                                                "['Loading %1: Total Progress (53%) 8000/15000', "
                                                "'Reading repository metadata for two (0%) 0/1']]")
                                            .arg(name));
        QCOMPARE(yumIO().phase, quint32(YumIOProbe::Idle));
    }

    void aPathThatOccursTwiceIsShownOnce()
    {
        backEnd->run("tool.files = ['/usr/z', '/usr/a', '/usr/z', '/Usr', '/usr/a']");
        QCOMPARE(yumIO().getFiles(tool()), QString("/Usr\n/usr/a\n/usr/z"));
    }

    void fileListsAreLoadedWhenAFileListIsFirstRead()
    {
        yumIO().fileListsLoaded = false;
        backEnd->run("def load():\n    tool.files = ['/usr/bin/tool']\n    return True\n"
                     "it.does['collectFileLists'] = load\n"
                     "tool.files = []");
        QCOMPARE(yumIO().getFiles(tool()), QString("/usr/bin/tool"));
        QCOMPARE(backEnd->text("len(it.did('collectFileLists'))"), QString("1"));
    }

    void anErrorIsReportedIfFileListsCannotBeLoaded()
    {
        yumIO().fileListsLoaded = false;
        backEnd->run("tool.files = ['/usr/bin/tool']\n"
                     "it.raises['collectFileLists'] = dnf.exceptions.Error('broken')");
        QCOMPARE(yumIO().getFiles(tool()), QString());
        QCOMPARE(errors(), QStringList("broken\nUnable to collect filelists"));
    }

    void noFileListsAreLoadedForAPackageOrAGroupWithoutAFileList()
    {
        yumIO().fileListsLoaded = false;
        QCOMPARE(yumIO().getFiles(tool()), QString());
        QCOMPARE(yumIO().getFiles(group()), QString());
        QCOMPARE(backEnd->text("it.did('collectFileLists')"), QString("[]"));
    }

    void anErrorIsReportedIfAFileListVanishesDuringLoading()
    {
        yumIO().fileListsLoaded = false;
        backEnd->run("tool.files = ['/usr/bin/tool']\n"
                     "def load():\n    del tool.files\n    return True\n"
                     "it.does['collectFileLists'] = load");
        QCOMPARE(yumIO().getFiles(tool()), QString());
        QCOMPARE(errors(), QStringList({generic, "Internal error: cannot find package's files"}));
    }

    void theFileListAndTheHeaderAreReadOnce()
    {
        backEnd->run("class Counting(Package):\n"
                     "    count = 0\n"
                     "    @property\n"
                     "    def files(self):\n"
                     "        self.count += 1\n"
                     "        return ['/usr/bin/counting']\n"
                     "    @property\n"
                     "    def hdr(self):\n"
                     "        self.count += 1\n"
                     "        return {rpm.RPMTAG_PREFIXES: ['/opt']}\n"
                     "counting = Counting('counting')\n"
                     "it.installed.append(counting)");
        yumIO().clearEntries();
        QVERIFY(backEnd->collect());
        QCOMPARE(yumIO().getFiles(*backEnd->entry("counting")), QString("/usr/bin/counting"));
        QCOMPARE(backEnd->text("counting.count"), QString("1"));
        QCOMPARE(yumIO().getRelocations(*backEnd->entry("counting")), QString("/opt"));
        QCOMPARE(backEnd->text("counting.count"), QString("2"));
    }

    void anErrorIsReportedIfAListOfAPackageCannotBeRead()
    {
        backEnd->run("class Failing(Package):\n"
                     "    @property\n"
                     "    def suggests(self): raise ValueError('broken')\n"
                     "it.installed.append(Failing('failing'))");
        yumIO().clearEntries();
        QVERIFY(backEnd->collect());
        const int before = backEnd->log().count();
        QCOMPARE(yumIO().getSuggests(*backEnd->entry("failing")), QString());
        QCOMPARE(errors(), QStringList({generic, "Internal error: cannot find package's suggests"}));
        QVERIFY(!backEnd->log(before).filter("ValueError: broken").isEmpty());
    }

    void anIncompleteListIsNotShown()
    {
        backEnd->run("def broken():\n"
                     "    yield 'one'\n"
                     "    raise ValueError('half way')\n"
                     "def changes():\n"
                     "    yield {'timestamp': datetime.datetime(2024, 2, 20), 'author': 'A', 'text': 'T'}\n"
                     "    raise ValueError('half way')\n"
                     "tool.files = broken()\n"
                     "tool.enhances = broken()\n"
                     "tool.changelogs = changes()\n"
                     "tool.hdr = {rpm.RPMTAG_PREFIXES: broken()}\n"
                     "group.default_packages = broken()");
        QCOMPARE(yumIO().getFiles(tool()), QString());
        QCOMPARE(errors(), QStringList({generic, "Internal error: cannot find package's files"}));
        QCOMPARE(yumIO().getEnhances(tool()), QString());
        QCOMPARE(errors(), QStringList({generic, "Internal error: cannot find package's enhances"}));
        QCOMPARE(yumIO().getChangeLog(tool()), QString());
        QCOMPARE(errors(), QStringList({generic, "Internal error: cannot find package's changelogs"}));
        QCOMPARE(yumIO().getRelocations(tool()), QString());
        QCOMPARE(errors(), QStringList(generic));
        QCOMPARE(yumIO().getDefaultPkgs(group()), QString());
        QCOMPARE(errors(), QStringList({generic, "Internal error: group G.default_packages not evaluable"}));
        // The value None means that the group lacks this list, which is not an error.
        backEnd->run("group.default_packages = None");
        QCOMPARE(yumIO().getDefaultPkgs(group()), QString());
    }

    void aMissingListOfAPackageIsReportedOnce()
    {
        const int before = backEnd->log().count();
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(yumIO().getProvides(tool()), QString());
            QVERIFY(PyErr_Occurred() == nullptr);
        }
        QCOMPARE(errors(), QStringList({generic, "Internal error: cannot find package's provides"}));
        QCOMPARE(backEnd->log(before).filter("package's provides").count(), 1);
        QCOMPARE(yumIO().getRequires(tool()), QString());
        QCOMPARE(errors(), QStringList({generic, "Internal error: cannot find package's requires"}));
        // A missing file list or change log is reported only once.
        backEnd->run("tool.files = None");
        QCOMPARE(yumIO().getFiles(tool()), QString());
        QCOMPARE(errors(), QStringList({generic, "Internal error: cannot find package's files"}));
        QCOMPARE(yumIO().getFiles(tool()), QString());
        QCOMPARE(yumIO().getChangeLog(tool()), QString());
        QCOMPARE(errors(), QStringList({generic, "Internal error: cannot find package's changelogs"}));
        QCOMPARE(yumIO().getChangeLog(tool()), QString());
    }

    void aChangeLogHasAParagraphForEachEntry()
    {
        backEnd->run("tool.changelogs = [\n"
                     "    {'timestamp': datetime.datetime(2024, 2, 20), 'author': 'Ann <a@b>', 'text': '- "
                     "one\\n- two'},\n"
                     "    {'timestamp': datetime.datetime(2023, 9, 2), 'author': 'Bob', 'text': '- three'}]");
        QCOMPARE(yumIO().getChangeLog(tool()),
                 QString("* Tue Feb 20 2024 Ann <a@b>\n- one\n- two\n\n* Sat Sep 2 2023 Bob\n- three"));
    }

    void aChangeLogEntryWithoutATimeIsReported()
    {
        backEnd->run(
            "tool.changelogs = [{'author': 'A', 'text': 'T'},\n"
            "                   {'timestamp': datetime.datetime(2024, 2, 20), 'author': 'B', 'text': 'U'}]");
        QCOMPARE(yumIO().getChangeLog(tool()), QString("*  A\nT\n\n* Tue Feb 20 2024 B\nU"));
        QCOMPARE(backEnd->answers.takeTexts("VYRE Yum Warning"),
                 QStringList("Internal error: YumIO::pyDate did not understand type: NULL"));
    }

    void theChangeLogTextIsEmptyIfAPackageHasNoChangeLog()
    {
        backEnd->run("tool.changelogs = None");
        QCOMPARE(yumIO().getChangeLog(tool()), QString());
        backEnd->run("tool.changelogs = []");
        QCOMPARE(yumIO().getChangeLog(tool()), QString());
        QCOMPARE(yumIO().getChangeLog(group()), QString());
        backEnd->run("del tool.changelogs");
        QCOMPARE(yumIO().getChangeLog(tool()), QString());
        QCOMPARE(errors(), QStringList({generic, "Internal error: cannot find package's changelogs"}));
    }

    void aWorkerReadsTheChangeLogOfAnAvailablePackage()
    {
        backEnd->run("import threading\n"
                     "readers = []\n"
                     "class Noting(Package):\n"
                     "    @property\n"
                     "    def changelogs(self):\n"
                     "        readers.append('here' if threading.get_ident() == own else 'worker')\n"
                     "        raise ValueError('broken')\n"
                     "own = threading.get_ident()\n"
                     "it.installed.append(Noting('installed'))\n"
                     "it.available.append(Noting('available'))");
        yumIO().clearEntries();
        QVERIFY(backEnd->collect());
        yumIO().loadChangeLog(*backEnd->entry("installed"));
        yumIO().loadChangeLog(group());
        QCOMPARE(backEnd->text("readers"), QString("[]"));
        yumIO().loadChangeLog(*backEnd->entry("available"));
        QCOMPARE(backEnd->text("readers"), QString("['worker']"));
        QVERIFY(PyErr_Occurred() == nullptr);
        QCOMPARE(errors(), QStringList());
        QCOMPARE(yumIO().getChangeLog(*backEnd->entry("available")), QString());
        QCOMPARE(errors(), QStringList({generic, "Internal error: cannot find package's changelogs"}));
        // If the other data are not loaded, the change log is read on the calling thread.
        yumIO().otherDataLoaded = false;
        yumIO().loadChangeLog(*backEnd->entry("available"));
        QCOMPARE(backEnd->text("readers"), QString("['worker', 'here']"));
        yumIO().otherDataLoaded = true;
    }

    void anErrorIsReportedIfAChangeLogCannotBeLoaded()
    {
        yumIO().otherDataLoaded = false;
        backEnd->run(
            "tool.changelogs = [{'timestamp': datetime.datetime(2024, 2, 20), 'author': 'A', 'text': 'T'}]\n"
            "it.raises['collectOtherData'] = dnf.exceptions.Error('broken')");
        QCOMPARE(yumIO().getChangeLog(tool()), QString());
        QCOMPARE(errors(), QStringList("broken\nUnable to collect miscellaneous data"));
        backEnd->run("it.raises.clear()");
        QCOMPARE(yumIO().getChangeLog(tool()), QString("* Tue Feb 20 2024 A\nT"));
    }

    void theDependenciesOfEachKindAreListed()
    {
        using Getter = QString (YumIO::*)(const Package::Entry&);
        const QList<QPair<QString, Getter>> kinds{
            {"provides", &YumIO::getProvides},        {"requires", &YumIO::getRequires},
            {"requires_pre", &YumIO::getRequiresPre}, {"conflicts", &YumIO::getConflicts},
            {"obsoletes", &YumIO::getObsoletes},      {"recommends", &YumIO::getRecommends},
            {"suggests", &YumIO::getSuggests},        {"supplements", &YumIO::getSupplements},
            {"enhances", &YumIO::getEnhances}};
        for (const auto& kind : kinds) {
            // The list keeps duplicates, and upper case comes before lower case.
            backEnd->run(QString("tool.%1 = [Member('%1'), Member('b = 2'), Member('b = 2'), Member('B')]")
                             .arg(kind.first));
            QStringList expected{"member B", "member b = 2", "member b = 2", "member " + kind.first};
            QCOMPARE((yumIO().*kind.second)(tool()), expected.join('\n'));
            backEnd->run("del tool." + kind.first);
            QCOMPARE((yumIO().*kind.second)(tool()), QString());
            QCOMPARE(errors(), QStringList({generic, "Internal error: cannot find package's " + kind.first}));
        }
    }

    void theMembersOfAGroupAreListed()
    {
        QCOMPARE(yumIO().getMandatoryPkgs(group()), QString("member a\nmember b"));
        QCOMPARE(yumIO().getDefaultPkgs(group()), QString("member d"));
        QCOMPARE(yumIO().getOptionalPkgs(group()), QString());
        QCOMPARE(yumIO().getConditionalPkgs(group()), QString("member c\nmember c"));
        backEnd->run("del group.mandatory_packages");
        QCOMPARE(yumIO().getMandatoryPkgs(group()), QString());
        QCOMPARE(errors(), QStringList("Internal error: group G.mandatory_packages not evaluable"));
    }

    void theRelocationsOfAnInstalledPackageAreListed()
    {
        backEnd->run("tool.hdr = {rpm.RPMTAG_PREFIXES: ['/usr', b'/opt', '/etc']}");
        QCOMPARE(yumIO().getRelocations(tool()), QString("/usr\n/opt\n/etc"));
        backEnd->run("tool.hdr = {rpm.RPMTAG_PREFIXES: None}");
        QCOMPARE(yumIO().getRelocations(tool()), QString());
    }

    void aPackageWithoutAnRpmHeaderHasNoRelocations()
    {
        QCOMPARE(yumIO().getRelocations(tool()), QString());
        QCOMPARE(errors(), QStringList());
        QVERIFY(yumIO().getRpmHdrValue(tool().pyObject, "PREFIXES") == nullptr);
        QCOMPARE(errors(), QStringList("getRpmHdrValue called for package with no hdr (i.e. not installed)"));
    }

    void theValueOfATagIsReadFromTheRpmHeader()
    {
        backEnd->run("tool.hdr = {rpm.RPMTAG_NAME: 'tool'}");
        const PyRef value(yumIO().getRpmHdrValue(tool().pyObject, "NAME"));
        QCOMPARE(QString::fromUtf8(PyUnicode_AsUTF8(value.get())), QString("tool"));
        QVERIFY(yumIO().getRpmHdrValue(tool().pyObject, "NONSENSE") == nullptr);
        QCOMPARE(errors(), QStringList("Internal error: cannot find rpm.RPMTAG_NONSENSE"));
        // A tag that the header lacks is not an error.
        QVERIFY(yumIO().getRpmHdrValue(tool().pyObject, "VERSION") == nullptr);
        QCOMPARE(errors(), QStringList());
        backEnd->run("tool.hdr = 1");
        QVERIFY(yumIO().getRpmHdrValue(tool().pyObject, "VERSION") == nullptr);
        QCOMPARE(errors(), QStringList(generic));
    }

    // --- The package manager itself

    void theVersionOfDnfIsReadOnce()
    {
        QCOMPARE(yumIO().dnfVersionStr(), backEnd->text("dnf.__version__"));
        QVERIFY(yumIO().dnfVersion() >= 40000);
        backEnd->run("dnf.__version__ = 'changed'");
        QVERIFY(yumIO().dnfVersion() >= 40000);
    }

    void anUnknownVersionOfDnfCausesOneWarning()
    {
        const QString known = yumIO().dnfVersionStr();
        yumIO().dnfVersionText.clear();
        QCOMPARE(yumIO().dnfVersionStr(), QString()); // the program looks for the version only once
        yumIO().dnfVersionLooked = false;
        backEnd->run("former = dnf.__version__\ndel dnf.__version__");
        QCOMPARE(yumIO().dnfVersion(), quint64(0));
        QCOMPARE(warnings(), QStringList("Internal error: dnf version not found"));
        QCOMPARE(yumIO().dnfVersion(), quint64(0));
        QCOMPARE(warnings(), QStringList());
        QVERIFY(yumIO().dnfVersionLooked);
        backEnd->run("dnf.__version__ = former");
        yumIO().dnfVersionText = known;
    }

    void theScriptDeterminesTheBiArchClassOfAnArchitecture()
    {
        QCOMPARE(yumIO().getBiArch("i586"), QString("i386"));
        QCOMPARE(yumIO().getBiArch("noarch"), QString("x86_64"));
        QCOMPARE(yumIO().getBiArch("s390x"), QString("s390x"));
    }
};

QTEST_MAIN(YumIODetailsTest)
#include "YumIODetailsTest.moc"
