// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include "tests/yumio/BackEndFixture.h"

class YumIOAdvisoriesTest : public BackEndFixture
{
    Q_OBJECT

private Q_SLOTS:
    void aWorkerReadsTheAdvisoriesOnceAfterEachCollection()
    {
        backEnd->run(
            "import threading\n"
            "def read():\n"
            "    seen.append([threading.current_thread() is not threading.main_thread(), look()[1]])\n"
            "    return [('A-1', 'security', True, 'High', 3, '2024-01-02', 'A title', 'All of it',\n"
            "             ['CVE-1', 'CVE-2'], ['7 - Bug'], [('tool', 'noarch', '1:2-3', 3, '1:2-2'),\n"
            "                                               ('lib', 'x86_64', '1-1', 1, '')]),\n"
            "            ('B-2', 'bugfix', False, '', 0, '2023-01-02', '', '', [], [], [])]\n"
            "seen = []\nit.does['collectAdvisories'] = read");
        QVERIFY(backEnd->collect());
        QVERIFY(yumIO().advisories().isEmpty());
        const int before = backEnd->log().count();
        QVERIFY(yumIO().collectAdvisories());
        QVERIFY(yumIO().collectAdvisories());
        QCOMPARE(backEnd->text("seen"), QString("[[True, 'Reading Advisories 0/0']]"));
        QCOMPARE(backEnd->log(before), QStringList("4 0 Reading Advisories"));
        QCOMPARE(yumIO().advisories().count(), 2);
        const Advisory& first = yumIO().advisories().first();
        QCOMPARE(
            (QStringList{first.id, first.kind, first.severity, first.date, first.title, first.description}),
            (QStringList{"A-1", "security", "High", "2024-01-02", "A title", "All of it"}));
        QVERIFY(first.security);
        QCOMPARE(first.rank, 3);
        QCOMPARE(first.cves, (QStringList{"CVE-1", "CVE-2"}));
        QCOMPARE(first.bugs, QStringList{"7 - Bug"});
        QCOMPARE(first.packages.count(), 2);
        QCOMPARE(first.packages[0].text(), QString("tool-1:2-3.noarch"));
        QCOMPARE(first.packages[0].obstacle, Advisory::Older);
        QCOMPARE(first.packages[0].offered, QString("1:2-2"));
        QCOMPARE(first.packages[1].obstacle, Advisory::IsInstalled);
        QVERIFY(!yumIO().advisories()[1].security);
        QVERIFY(backEnd->collect());
        QVERIFY(yumIO().advisories().isEmpty());
        QVERIFY(yumIO().collectAdvisories());
        QCOMPARE(yumIO().advisories().count(), 2);
    }

    void afterAFailureTheNextAttemptReadsTheAdvisoriesAgain()
    {
        QVERIFY(backEnd->collect());
        backEnd->run("it.raises['collectAdvisories'] = dnf.exceptions.Error('no luck')");
        QVERIFY(!yumIO().collectAdvisories());
        const auto shown = backEnd->answers.take();
        QCOMPARE(shown.count(), 1);
        QCOMPARE(shown[0].text, QString("no luck\nUnable to read the advisories"));
        backEnd->run("it.raises.clear()\nit.does['collectAdvisories'] = lambda: [('A-1', 'incomplete')]");
        QVERIFY(!yumIO().collectAdvisories());
        QCOMPARE(backEnd->answers.takeTexts("VYRE Yum Error").last(),
                 QString("Internal error: the advisories cannot be read"));
        backEnd->run("it.does.clear()");
        QVERIFY(yumIO().collectAdvisories());
    }

    void anUpdateHasTheAdvisoriesThatTheScriptReports()
    {
        backEnd->run("it.installed = [Package('tool'), Package('lib')]\n"
                     "it.updates = [Package('tool', '2.0'), Package('lib', '2.0')]\n"
                     "it.updateAdvisories = [(it.updates[0], ['A-2', 'A-1']), (Package('gone'), ['A-3'])]");
        QVERIFY(backEnd->collect());
        QCOMPARE(yumIO().advisoriesOfUpdate(*backEnd->entry("tool")), (QStringList{"A-2", "A-1"}));
        QCOMPARE(yumIO().advisoriesOfUpdate(*backEnd->entry("lib")), QStringList());
        backEnd->run("it.updateAdvisories = 'nonsense'");
        QVERIFY(backEnd->collect());
        QCOMPARE(yumIO().advisoriesOfUpdate(*backEnd->entry("tool")), QStringList());
    }

    void theRecordOfAPackageInAnAdvisoryIsFoundByNameAndArchitecture()
    {
        backEnd->run("it.installed = [Package('tool', arch='noarch')]");
        QVERIFY(backEnd->collect());
        QCOMPARE(yumIO().recordOf("tool", "noarch"), backEnd->entry("tool"));
        QVERIFY(yumIO().recordOf("tool", "i686") == nullptr);
    }

    void aSearchInManyPackagesUsesAnIndexOfTheAdvisories()
    {
        backEnd->run("it.available = [Package('p%d' % i, advisories='A-%d' % i, **" + emptyLists() +
                     ") for i in range(20)]");
        QVERIFY(backEnd->collect());
        QCOMPARE(yumIO().text(*backEnd->entry("p7"), Fields::Advisories), QString("A-7"));
        QVector<Package::Entry*> all;
        for (int row = 0; row < yumIO().count(); ++row) {
            all.append(yumIO()[row]);
        }
        backEnd->run("it.calls = []");
        yumIO().collectSearchTexts(all.mid(0, 3));
        QCOMPARE(backEnd->text("[call for call in it.calls if 'Advisories' in call[0]]"), QString("[]"));
        backEnd->run("it.calls = []");
        yumIO().collectSearchTexts(all);
        QCOMPARE(backEnd->text("[call for call in it.calls if 'Advisories' in call[0]]"),
                 QString("[('loadAdvisories',), ('forgetAdvisories',)]"));
        QVERIFY(backEnd->entry("p7")->searchTexts.text().contains("A-7"));
    }
};

QTEST_MAIN(YumIOAdvisoriesTest)
#include "YumIOAdvisoriesTest.moc"
