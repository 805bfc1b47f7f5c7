// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include "tests/yumio/CollectFixture.h"

// Tests of the records that a collection makes of groups.
class YumIOCollectGroupsTest : public CollectFixture
{
    Q_OBJECT

private Q_SLOTS:
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
};

QTEST_MAIN(YumIOCollectGroupsTest)
#include "YumIOCollectGroupsTest.moc"
