// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <unistd.h>

#include "tests/yumio/ApplyFixture.h"

// Tests of reading the history, and of undoing and repeating recorded transactions.
class YumIOHistoryTest : public ApplyFixture
{
    Q_OBJECT

private Q_SLOTS:
    void eachTransactionInTheHistoryBecomesARecord()
    {
        backEnd->run("it.does['transactions'] = lambda: [\n"
                     "    (2, 5000000000, 'me', 'dnf upgrade', 'Upgrade: a', 'a b', 1, 7),\n"
                     "    (1, 86400, 'root', '', '', '', 0, 0)]");
        HistoryRecords found;
        QVERIFY(yumIO().readHistory(found));
        QCOMPARE(found.size(), 2);
        const HistoryRecord& first = found.at(0);
        QCOMPARE(first.number, qint64(2));
        QCOMPARE(first.begin, qint64(5000000000));
        QCOMPARE(first.user, QString("me"));
        QCOMPARE(first.commandLine, QString("dnf upgrade"));
        QCOMPARE(first.changes, QString("Upgrade: a"));
        QCOMPARE(first.names, QString("a b"));
        QCOMPARE(int(first.result), int(HistoryRecord::Failed));
        QCOMPARE(first.outputLines, 7);
        QCOMPARE(int(found.at(1).result), int(HistoryRecord::Succeeded));
    }

    void anErrorIsReportedIfTheHistoryCannotBeRead()
    {
        HistoryRecords found;
        backEnd->run("it.raises['transactions'] = dnf.exceptions.Error('broken')");
        QVERIFY(!yumIO().readHistory(found));
        QCOMPARE(errors(), QStringList{"broken\nUnable to read the history"});
        for (const char* answer : {"None", "[1]", "[('x',)]", "[(1, 2, 3)]"}) {
            backEnd->run(
                QStringLiteral("it.raises.clear()\nit.does['transactions'] = lambda: %1").arg(answer));
            QVERIFY(!yumIO().readHistory(found));
            QCOMPARE(errors(), QStringList{"Internal error: the history cannot be read"});
        }
    }

    void theDetailsOfATransactionAreRead()
    {
        backEnd->run("it.does['describeTransaction'] = lambda number: 'All about %d' % number");
        QCOMPARE(yumIO().describeTransaction(5), QString("All about 5"));
        backEnd->run("it.raises['describeTransaction'] = dnf.exceptions.Error('broken')");
        QCOMPARE(yumIO().describeTransaction(5), QString());
        QCOMPARE(errors(), QStringList{"broken\nUnable to read the history"});
    }

    void noTransactionCanBeUndoneIfTheUserIsNotRoot()
    {
        HistoryRecords records;
        backEnd->run("it.does['lacksReplay'] = lambda: ''");
        QVERIFY(yumIO().readHistory(records));
        QCOMPARE(yumIO().replayFault(), QString());
        backEnd->run("it.does['lacksReplay'] = lambda: 'too old'");
        QVERIFY(yumIO().readHistory(records));
        QCOMPARE(yumIO().replayFault(), QString("too old"));
        QCOMPARE(seteuid(65534), 0);
        const QString fault = yumIO().replayFault();
        const bool done = yumIO().replay(Replay::Redo, 1);
        QCOMPARE(seteuid(0), 0);
        QCOMPARE(fault, QString("Only root can undo or repeat transactions."));
        QVERIFY(!done);
        QCOMPARE(errors(), QStringList{"Must be run as root to apply changes"});
        QCOMPARE(backEnd->text("it.did('replay')"), QString("[]"));
    }

    void theUserCanUndoAndRepeatTransactions_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("called");
        QTest::addColumn<QString>("heading");

        QTest::newRow("undo") << int(Replay::UndoThis) << "[('undo', 12)]"
                              << "4 0 Undoing transaction 12";
        QTest::newRow("rollback") << int(Replay::UndoAllSince) << "[('rollback', 12)]"
                                  << "4 0 Undoing all transactions after 12";
        QTest::newRow("redo") << int(Replay::Redo) << "[('redo', 12)]"
                              << "4 0 Repeating transaction 12";
    }

    void theUserCanUndoAndRepeatTransactions()
    {
        QFETCH(int, kind);
        QFETCH(QString, called);
        QFETCH(QString, heading);
        collect("it.installed = [Package('a')]");
        mark("a", Package::Remove);
        backEnd->run("def replaying(kind, number):\n"
                     "    yumIOC.listTransaction(None, [item(8, 'a')])\n"
                     "    yumIOC.reportRemoveSize(None)\n"
                     "    it.systemChanged = bool(yumIOC.userconfirm())\n"
                     "    return True\n"
                     "it.does['replay'] = replaying");
        const int from = logLength();
        backEnd->answers.press("OK");
        QVERIFY(yumIO().replay(static_cast<Replay>(kind), 12));
        QCOMPARE(backEnd->text("it.did('replay')"), called);
        QCOMPARE(headings(from), (QStringList{heading, "4 0 Applying: OK"}));
        QVERIFY(yumIO().systemChanged());
        // The confirmation shows a listing, as it does if marks are applied. All marks are kept.
        const QList<ShownDialog> dialogs = backEnd->answers.take();
        QCOMPARE(dialogs.size(), 1);
        QVERIFY2(dialogs.first().text.contains("\tRemove: a 1.0-1 (x86_64)\n"),
                 qPrintable(dialogs.first().text));
        QCOMPARE(int(backEnd->entry("a")->action), int(Package::Remove));
        // The notice about removals does not mention marks.
        QCOMPARE(dialogs.first().notice, QString("Removals: 1.\n    a 1.0-1 (x86_64)"));
        // If the user refuses the listing, the system is not changed.
        backEnd->answers.press("Cancel");
        QVERIFY(!yumIO().replay(static_cast<Replay>(kind), 12));
        QVERIFY(!yumIO().systemChanged());
        backEnd->answers.take();
    }

    void anErrorIsReportedIfTheScriptCannotReplayATransaction()
    {
        collect("it.installed = [Package('a')]");
        backEnd->run("it.raises['replay'] = dnf.exceptions.Error('impossible')");
        QVERIFY(!yumIO().replay(Replay::UndoThis, 3));
        QCOMPARE(errors(), QStringList{"impossible\nUnable to apply changes"});
    }
};

QTEST_MAIN(YumIOHistoryTest)
#include "YumIOHistoryTest.moc"
