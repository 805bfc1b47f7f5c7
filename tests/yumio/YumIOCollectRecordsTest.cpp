// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include "tests/yumio/CollectFixture.h"

namespace {

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

// Tests of the records that a collection makes of packages.
class YumIOCollectRecordsTest : public CollectFixture
{
    Q_OBJECT

private Q_SLOTS:
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
        QVERIFY(yumIO().records.findPackage("lib", QString()) != nullptr);
        const Package::EntryKey group(true, "G", QString());
        QVERIFY(yumIO().records.find(group) != nullptr);
        yumIO().clearEntries();
        QCOMPARE(yumIO().count(), 0);
        QVERIFY(yumIO().records.findPackage("lib", QString()) == nullptr);
        QVERIFY(yumIO().records.find(group) == nullptr);
    }

    void clearingTheEntriesBeforeQuittingReleasesNoReferences()
    {
        backEnd->run("it.installed = [Package('kernel', v) for v in ('6.1', '6.2')]\nkernels = it.installed");
        QVERIFY(backEnd->collect());
        const Package::EntryKey kernel(*yumIO()[0]);
        QVERIFY(yumIO().records.find(kernel) != nullptr);
        const QString references = backEnd->text("[sys.getrefcount(k) for k in kernels]");
        yumIO().clearEntriesBeforeQuit();
        QCOMPARE(backEnd->text("[sys.getrefcount(k) for k in kernels]"), references);
        QCOMPARE(yumIO().count(), 0);
        QVERIFY(yumIO().records.find(kernel) == nullptr);
    }
};

QTEST_MAIN(YumIOCollectRecordsTest)
#include "YumIOCollectRecordsTest.moc"
