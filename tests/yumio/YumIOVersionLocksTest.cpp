// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include "tests/yumio/BackEndFixture.h"

class YumIOVersionLocksTest : public BackEndFixture
{
    Q_OBJECT

private:
    // Collects one installed package, "tool", and returns its record.
    QVector<Package::Entry*> tool()
    {
        backEnd->run("it.installed = [Package('tool')]");
        return backEnd->collect() ? QVector<Package::Entry*>{backEnd->entry("tool")}
                                  : QVector<Package::Entry*>();
    }

private Q_SLOTS:
    void eachCollectionReadsTheVersionLocks()
    {
        QVERIFY(backEnd->collect());
        QVERIFY(!yumIO().versionLocks().offered);
        backEnd->run("it.locks = ('', {'tool': 'tool-0:1-1.*', 't\u00f6\u00f6l': 't*'})");
        QVERIFY(backEnd->collect());
        QVERIFY(yumIO().versionLocks().offered);
        QCOMPARE(yumIO().versionLocks().fault, QString());
        QCOMPARE(
            yumIO().versionLocks().lines,
            (QHash<QString, QString>{{"tool", "tool-0:1-1.*"}, {QStringLiteral("t\u00f6\u00f6l"), "t*"}}));
        backEnd->run("it.locks = ('no right', {})");
        QVERIFY(backEnd->collect());
        QCOMPARE(yumIO().versionLocks().fault, QString("no right"));
        QVERIFY(yumIO().versionLocks().lines.isEmpty());
        backEnd->run("it.locks = None");
        QVERIFY(backEnd->collect());
        QVERIFY(!yumIO().versionLocks().offered);
        QCOMPARE(yumIO().versionLocks().fault, QString());
    }

    void theMenuOffersNoLocksIfTheAnswerOfTheScriptIsUnusable()
    {
        backEnd->run("it.locks = ('', ['tool'])");
        QVERIFY(backEnd->collect());
        QVERIFY(!yumIO().versionLocks().offered);
    }

    void aWorkerLocksAndUnlocksThePackagesOfTheRecords()
    {
        const QVector<Package::Entry*> entries = tool();
        QCOMPARE(entries.count(), 1);
        const int before = backEnd->log().count();
        backEnd->run("import threading\nit.calls = []\n"
                     "def lock(names):\n"
                     "    seen.append([threading.current_thread() is not threading.main_thread(), look()])\n"
                     "    print('Adding')\n"
                     "    return True\n"
                     "seen = []\nit.does['lockVersions'] = lock");
        QVERIFY(yumIO().changeVersionLocks(entries, true));
        QCOMPARE(backEnd->text("it.calls"), QString("[('lockVersions', ['tool'])]"));
        QCOMPARE(backEnd->text("seen"),
                 QString("[[True, ['Locking Versions (0%) 0/1', 'Preparing (0%) 0/1']]]"));
        QCOMPARE(backEnd->log(before).mid(0, 1), QStringList("4 0 Locking Versions"));
        QVERIFY(!backEnd->log(before).filter("Adding").isEmpty());
        QVERIFY(yumIO().changeVersionLocks(entries, false));
        QCOMPARE(backEnd->text("it.calls[1:]"), QString("[('unlockVersions', ['tool'])]"));
    }

    void anErrorIsShownIfThePlugInCannotChangeTheLocks()
    {
        const QVector<Package::Entry*> entries = tool();
        QCOMPARE(entries.count(), 1);
        backEnd->run("it.raises['lockVersions'] = dnf.exceptions.Error('no room')\n"
                     "it.raises['unlockVersions'] = TypeError('strange')");
        QVERIFY(!yumIO().changeVersionLocks(entries, true));
        const auto shown = backEnd->answers.take();
        QCOMPARE(shown.count(), 1);
        QCOMPARE(shown[0].text, QString("no room\nUnable to lock versions"));
        QVERIFY(!yumIO().changeVersionLocks(entries, false));
        QCOMPARE(errors().last(), QString("Internal error: the version locks cannot be changed"));
    }
};

QTEST_MAIN(YumIOVersionLocksTest)
#include "YumIOVersionLocksTest.moc"
