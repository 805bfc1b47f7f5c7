// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include "yumio/TransactionOutcome.h"

class TransactionOutcomeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aNewOutcomeIsUnknownAndEmpty()
    {
        const TransactionOutcome outcome;
        QVERIFY(!outcome.known);
        QVERIFY(!outcome.hasFailures());
        QVERIFY(!outcome.restartNeeded);
        QCOMPARE(outcome.changes(), QString());
        QCOMPARE(outcome.text(), QString("Nothing was changed"));
    }

    void eachCountOfAnOutcomeHasAName()
    {
        QSet<QString> names;
        for (int i = 0; i < TransactionOutcome::CountCount; ++i) {
            names.insert(TransactionOutcome::nameOf(static_cast<TransactionOutcome::Count>(i)));
        }
        QCOMPARE(names.size(), int(TransactionOutcome::CountCount));
    }

    void theDescriptionCountsTheMarksThatWereLeftOut()
    {
        TransactionOutcome outcome;
        outcome.leftOut = 2;
        QCOMPARE(outcome.text(), QString("Nothing was changed, 2 left out"));
        outcome.counts[TransactionOutcome::Installed] = 3;
        outcome.counts[TransactionOutcome::Failed] = 1;
        outcome.restartNeeded = true;
        QCOMPARE(outcome.text(), QString("3 installed, 1 failed, 2 left out; a restart is needed"));
        QCOMPARE(outcome.changes(), QString("3 installed"));
    }

    void theDescriptionMentionsImportedKeysIfNoPackagesWereChanged()
    {
        TransactionOutcome outcome;
        outcome.keysImported = true;
        QCOMPARE(outcome.text(), QString("No packages were changed, but signing keys were imported"));
        outcome.counts[TransactionOutcome::Installed] = 3;
        QCOMPARE(outcome.text(), QString("3 installed"));
    }

    void theDescriptionSaysThatTheUserHasStoppedTheTransaction()
    {
        TransactionOutcome outcome;
        outcome.stopped = true;
        QCOMPARE(outcome.text(), QString("Stopped: nothing was changed"));
        QVERIFY(!outcome.hasFailures());
        outcome.keysImported = true;
        QCOMPARE(outcome.text(),
                 QString("Stopped: no packages were changed, but signing keys were imported"));
    }

    void theDescriptionOfAnOutcomeIsOneLine_data()
    {
        using O = TransactionOutcome;
        QTest::addColumn<QList<int>>("counts"); // pairs of a Count and its number
        QTest::addColumn<QStringList>("scriptlets");
        QTest::addColumn<bool>("restart");
        QTest::addColumn<QString>("changes");
        QTest::addColumn<QString>("text");
        const auto row = [](const char* name, const QList<int>& counts, const QStringList& scriptlets,
                            bool restart, const QString& changes, const QString& text) {
            QTest::newRow(name) << counts << scriptlets << restart << changes << text;
        };
        row("installed, updated and failed packages", {O::Installed, 18, O::Updated, 1, O::Failed, 1}, {},
            true, "18 installed, 1 updated", "18 installed, 1 updated, 1 failed; a restart is needed");
        row("downgraded, reinstalled and removed packages",
            {O::Downgraded, 1, O::Reinstalled, 2, O::Removed, 3}, {}, false,
            "1 downgraded, 2 reinstalled, 3 removed", "1 downgraded, 2 reinstalled, 3 removed");
        row("one group", {O::GroupsInstalled, 1}, {}, false, "1 group installed", "1 group installed");
        row("an updated group, a removed group and a module",
            {O::GroupsUpdated, 1, O::GroupsRemoved, 1, O::Modules, 1}, {}, false,
            "1 group updated, 1 group removed, 1 module changed",
            "1 group updated, 1 group removed, 1 module changed");
        row("several groups",
            {O::GroupsInstalled, 2, O::GroupsUpdated, 3, O::GroupsRemoved, 4, O::Modules, 5}, {}, false,
            "2 groups installed, 3 groups updated, 4 groups removed, 5 modules changed",
            "2 groups installed, 3 groups updated, 4 groups removed, 5 modules changed");
        row("a changed reason", {O::ReasonsChanged, 1}, {}, false, "1 reason changed", "1 reason changed");
        row("several changed reasons", {O::Installed, 1, O::Modules, 1, O::ReasonsChanged, 2, O::Failed, 1},
            {}, false, "1 installed, 1 module changed, 2 reasons changed",
            "1 installed, 1 module changed, 2 reasons changed, 1 failed");
        row("only failures", {O::Failed, 2}, {}, false, "", "2 failed");
        row("a failed scriptlet", {O::Installed, 1}, {"%1limp"}, true, "1 installed",
            "1 installed; a restart is needed; the scriptlet of %1limp failed");
        row("several failed scriptlets", {O::Installed, 3}, {"%2", "b", "c"}, false, "3 installed",
            "3 installed; the scriptlets of %2 and 2 more failed");
    }

    void theDescriptionOfAnOutcomeIsOneLine()
    {
        QFETCH(QList<int>, counts);
        QFETCH(QStringList, scriptlets);
        QFETCH(bool, restart);
        TransactionOutcome outcome;
        for (int i = 0; i < counts.size(); i += 2) {
            outcome.counts[counts[i]] = counts[i + 1];
        }
        outcome.failedScriptlets = scriptlets;
        outcome.restartNeeded = restart;
        QTEST(outcome.changes(), "changes");
        QTEST(outcome.text(), "text");
        QCOMPARE(outcome.hasFailures(),
                 !scriptlets.isEmpty() || outcome.counts[TransactionOutcome::Failed] != 0);
    }

    void theDetailsNameAllPackagesWithFailedScriptlets()
    {
        TransactionOutcome outcome;
        outcome.counts[TransactionOutcome::Installed] = 3;
        QCOMPARE(outcome.details(), QString());
        outcome.failedScriptlets = QStringList{"limpgate"};
        QCOMPARE(outcome.details(), QString()); // text() already names this package
        outcome.failedScriptlets = QStringList{"limpgate", "%1%2", "loudhailer"};
        QCOMPARE(outcome.details(), QString("3 installed; the scriptlets of limpgate and 2 more failed\n"
                                            "The scriptlets of these packages failed:\n"
                                            "    limpgate, %1%2, loudhailer"));
    }

    void theDetailsOfManyFailuresFitOnAScreen()
    {
        TransactionOutcome outcome;
        for (int i = 0; i < 100; ++i) {
            outcome.failedScriptlets.append(QString("some-package-%1").arg(i));
        }
        QStringList lines = outcome.details().split('\n');
        QVERIFY2(lines.size() < 40, qPrintable(outcome.details()));
        for (const QString& line : qAsConst(lines)) {
            QVERIFY2(line.size() < 90, qPrintable(line));
        }
        QCOMPARE(lines.mid(2).join(QString()).remove(' ').split(','), outcome.failedScriptlets);
        outcome.failedScriptlets += QStringList{"package-x", "package-y"};
        lines = outcome.details().split('\n');
        QCOMPARE(lines.last(), QString("The log names 2 more."));
        QVERIFY(!outcome.details().contains("package-x"));
        outcome.failedScriptlets = QStringList{QString(300, 'x'), "short"};
        QCOMPARE(outcome.details().split('\n').mid(2),
                 (QStringList{"    " + QString(300, 'x') + ",", "    short"}));
    }
};

QTEST_MAIN(TransactionOutcomeTest)
#include "TransactionOutcomeTest.moc"
