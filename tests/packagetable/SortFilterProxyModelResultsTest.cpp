// SPDX-License-Identifier: GPL-2.0-or-later

#include <QScopedValueRollback>

#include <functional>
#include <vector>

#include "tests/packagetable/FilteredTable.h"
#include "tests/support/ResidentMemory.h"

using namespace PackageTable;

// Tests of the results of comparisons: the proxy stores them, and a worker can prepare them.
class SortFilterProxyModelResultsTest : public FilteredTable
{
    Q_OBJECT

private Q_SLOTS:
    void preparedAndUnpreparedComparisonsListTheSameRecords_data();
    void preparedAndUnpreparedComparisonsListTheSameRecords();
    void aWorkerGoesThroughTheRecordsOfALongTable_data();
    void aWorkerGoesThroughTheRecordsOfALongTable();
    void theQuickPreparationOfALongTableLeavesItToTheWorkerToFindNothing();
    void theWorkerOfALongTableListsTheSameRecords_data();
    void theWorkerOfALongTableListsTheSameRecords();
    void theProxyUsesThePreparedVerdictsOnlyForTheirSettings();
    void aPreparedFilterKnowsWhetherRecordsMatchInAnotherLetterCase();
    void aPreparedSearchRespectsTheStateFilter();
    void theProxyUsesPreparedResultsInsteadOfComparingAgain();
    void aResetOfTheModelDiscardsPreparedResults();
    void theQuickPreparationRefusesAnExpressionWithABackReference();
    void aPreparedSearchReturnsFreeMemoryToTheSystem();
    void eachRecordIsSearchedOnlyOnceForTheSameSettings();
    void aResetOfTheModelClearsTheStoredResults();
    void aResetOfTheFormerSourceModelKeepsTheStoredResults();
    void clearingTheProxyClearsTheStoredResults();
    void eachChangedFilterSettingClearsTheStoredResults();
};

void SortFilterProxyModelResultsTest::preparedAndUnpreparedComparisonsListTheSameRecords_data()
{
    QTest::addColumn<QString>("expression");
    for (const char* expression : {"tool",
                                   "^tool",
                                   "^tool$",
                                   "e.*r",
                                   "[a-z]+-[0-9]",
                                   "(a|e|i|o|u){2}",
                                   "([a-z])\\1",
                                   "(.*)(.*)(.*)[0-9]q",
                                   "1 \\* ",
                                   "^$",
                                   "x*",
                                   "a|b",
                                   "noarch 4",
                                   "\\.",
                                   "usr/bin",
                                   "(",
                                   "",
                                   ".*",
                                   ".*tool.*",
                                   "Tools",
                                   "nothing has this"}) {
        QTest::newRow(expression) << QString(expression);
    }
}

void SortFilterProxyModelResultsTest::preparedAndUnpreparedComparisonsListTheSameRecords()
{
    QFETCH(QString, expression);
    for (const Mode mode : {Filter, Search}) {
        proxy->setMode(mode);
        // If no comparison was prepared, the proxy compares the records itself.
        const QStringList expected = listed(expression);
        readTexts();
        QVERIFY(proxy->prepare({mode, ViewAll, true, true, expression}));
        QCOMPARE(listed(expression), expected);
        proxy->clear();
        const bool isQuick = proxy->prepareQuickly({mode, ViewAll, true, true, expression});
        if (mode == Search || expression.contains("\\1")) {
            QVERIFY(!isQuick);
        } else if (table->yumIO.count() <= SortFilterProxyModel::fewRows) {
            QVERIFY(isQuick);
        }
        QCOMPARE(listed(expression), expected);
    }
}

void SortFilterProxyModelResultsTest::aWorkerGoesThroughTheRecordsOfALongTable_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("filter") << static_cast<int>(Filter);
    QTest::newRow("search") << static_cast<int>(Search);
}

void SortFilterProxyModelResultsTest::aWorkerGoesThroughTheRecordsOfALongTable()
{
    QFETCH(int, mode);
    const SortFilterProxyModel::Settings wanted{static_cast<Mode>(mode), ViewAll, true, true, "tool"};
    readTexts();
    QVERIFY(proxy->prepare(wanted));
    // All results are known now. So without a worker, these functions serve no events.
    const auto servesEvents = [](const std::function<void()>& call) {
        bool served = false;
        QTimer::singleShot(0, [&served] { served = true; });
        call();
        const bool result = served;
        QCoreApplication::processEvents(); // the timer must fire before the end of this function
        return result;
    };
    for (const bool isLong : {false, true}) {
        const QScopedValueRollback<int> limit(SortFilterProxyModel::fewRows, isLong ? 1 : 1000);
        QCOMPARE(servesEvents([this, &wanted] { proxy->prepare(wanted); }), isLong);
        QCOMPARE(servesEvents([this] { proxy->searched(ViewAll, true, true); }), isLong);
    }
}

void SortFilterProxyModelResultsTest::theQuickPreparationOfALongTableLeavesItToTheWorkerToFindNothing()
{
    for (const bool isLong : {false, true}) {
        const QScopedValueRollback<int> limit(SortFilterProxyModel::fewRows, isLong ? 1 : 1000);
        QVERIFY(proxy->prepareQuickly({Filter, ViewAll, true, true, "tool"}));
        QCOMPARE(proxy->prepareQuickly({Filter, ViewAll, true, true, "no tool"}), !isLong);
    }
}

void SortFilterProxyModelResultsTest::theWorkerOfALongTableListsTheSameRecords_data()
{
    preparedAndUnpreparedComparisonsListTheSameRecords_data();
}

void SortFilterProxyModelResultsTest::theWorkerOfALongTableListsTheSameRecords()
{
    const QScopedValueRollback<int> limit(SortFilterProxyModel::fewRows, 1);
    preparedAndUnpreparedComparisonsListTheSameRecords();
}

void SortFilterProxyModelResultsTest::theProxyUsesThePreparedVerdictsOnlyForTheirSettings()
{
    readTexts();
    for (const Mode mode : {Filter, Search}) {
        proxy->setMode(mode);
        proxy->setStateFilter(ViewAll);
        QVERIFY(listed("").contains("tool"));
        const Package::State before = table->entry("tool").state;
        QVERIFY(proxy->prepare({mode, ViewUpdatable, true, true, "tool"}));
        // The proxy does not look at the records again: the worker has already judged the former state.
        table->entry("tool").state = Package::Installed;
        proxy->setStateFilter(ViewUpdatable);
        QVERIFY(listed("tool").contains("tool"));
        // The verdicts are used only once, and only for the same settings.
        proxy->setStateFilter(ViewAll);
        proxy->setStateFilter(ViewUpdatable);
        QVERIFY(!sortedNames(*proxy).contains("tool"));
        table->entry("tool").state = before;
        QVERIFY(proxy->prepare({mode, ViewUpdatable, true, true, "tool"}));
        table->entry("tool").state = Package::Installed;
        QVERIFY(!listed("too").contains("tool"));
        proxy->clear(); // clear() and a reset discard the verdicts
        QVERIFY(!listed("tool").contains("tool"));
        QVERIFY(proxy->prepare({mode, ViewUpdatable, true, true, "too"}));
        table->entry("tool").state = before;
        model->reset();
        QVERIFY(listed("too").contains("tool"));
    }
}

void SortFilterProxyModelResultsTest::aPreparedFilterKnowsWhetherRecordsMatchInAnotherLetterCase()
{
    for (const char* expression : {"TOOL", "^TOOL", "NOTHING"}) {
        proxy->clear();
        QCOMPARE(listed(expression), QStringList());
        const bool expected = proxy->matchesIgnoringCase();
        QCOMPARE(expected, QString(expression) != "NOTHING");
        QVERIFY(proxy->prepare({Filter, ViewAll, true, true, expression}));
        // The hint is known for this expression only.
        QVERIFY(!listed("tool").isEmpty());
        QCOMPARE(listed(expression), QStringList());
        QCOMPARE(proxy->matchesIgnoringCase(), expected);
    }
    // The prepared hint is for the same state filter only.
    QVERIFY(proxy->prepare({Filter, ViewAll, true, true, "EDITOR"}));
    QCOMPARE(listed("EDITOR"), QStringList());
    QVERIFY(proxy->matchesIgnoringCase());
    proxy->setStateFilter(ViewUpdatable);
    QVERIFY(!proxy->matchesIgnoringCase());
}

void SortFilterProxyModelResultsTest::aPreparedSearchRespectsTheStateFilter()
{
    proxy->setMode(Search);
    readTexts();
    QVERIFY(proxy->prepare({Search, ViewInstallable, true, true, "o"}));
    proxy->setStateFilter(ViewInstallable);
    const QStringList installable = listed("o");
    QVERIFY(!installable.isEmpty());
    QVERIFY(proxy->prepare({Search, ViewAll, true, true, "o"}));
    proxy->setStateFilter(ViewAll);
    const QStringList all = sortedNames(*proxy);
    QVERIFY(all.count() > installable.count());
    proxy->clear(); // clear() discards the prepared results
    QCOMPARE(sortedNames(*proxy), all);
    // The proxy uses the results of prepare() only for the same expression and mode.
    QVERIFY(proxy->prepare({Search, ViewAll, true, true, "o"}));
    QCOMPARE(listed("nothing has this"), QStringList());
    QCOMPARE(listed("^$").contains("tool"), listed("").contains("tool"));
    QCOMPARE(listed("o"), all);
    proxy->setMode(Filter);
    QCOMPARE(listed("^editor "), QStringList{"editor"});
}

void SortFilterProxyModelResultsTest::theProxyUsesPreparedResultsInsteadOfComparingAgain()
{
    proxy->setMode(Search);
    readTexts();
    QVERIFY(proxy->prepare({Search, ViewAll, true, true, "tool"}));
    table->entry("tool").searchTexts = PackedText(QByteArray("other\0", 6));
    table->entry("editor").searchTexts = PackedText(QByteArray("tool\0", 5));
    QVERIFY(listed("tool").contains("tool"));
    QVERIFY(!listed("tool").contains("editor"));
    proxy->clear();
    QVERIFY(listed("tool").contains("editor"));
    // The worker compares these texts too, although each text is packed in a block of its own.
    QVERIFY(proxy->prepare({Search, ViewAll, true, true, "^other$"}));
    QCOMPARE(listed("^other$"), QStringList{"tool"});
    table->entry("editor").searchFiles = PackedText("/only/here");
    table->entry("tool").searchChangeLog = PackedText("only here");
    QVERIFY(proxy->prepare({Search, ViewAll, true, true, "only.here$"}));
    QCOMPARE(listed("only.here$"), (QStringList{"editor", "tool"}));
}

void SortFilterProxyModelResultsTest::aResetOfTheModelDiscardsPreparedResults()
{
    QVERIFY(proxy->prepare({Filter, ViewAll, true, true, "tool"}));
    QCOMPARE(listed("^tool"), QStringList{"tool"});
    table->collect({}, {}, {StandIn::package("toolbox"), StandIn::package("other")});
    model->reset();
    QCOMPARE(listed("tool"), QStringList{"toolbox"});
}

void SortFilterProxyModelResultsTest::theQuickPreparationRefusesAnExpressionWithABackReference()
{
    QVERIFY(proxy->prepareQuickly({Filter, ViewAll, true, true, "t(o)o"}));
    QVERIFY(!proxy->prepareQuickly({Filter, ViewAll, true, true, "t(o)\\1"}));
    QVERIFY(!proxy->prepareQuickly({Search, ViewAll, true, true, "tool"}));
    QVERIFY(proxy->prepare({Filter, ViewAll, true, true, "t(o)\\1"}));
    QCOMPARE(listed("^t(o)\\1"), QStringList{"tool"});
}

void SortFilterProxyModelResultsTest::aPreparedSearchReturnsFreeMemoryToTheSystem()
{
#if defined(__SANITIZE_ADDRESS__) || !defined(__GLIBC__)
    QSKIP("only the C library of GNU can return all free memory, and the sanitizer replaces it");
#endif
    proxy->setMode(Search);
    readTexts();
    std::vector<QByteArray> pieces(50000, QByteArray(1000, 'x'));
    for (QByteArray& piece : pieces) {
        piece.detach();
    }
    const QByteArray last(1000, 'x'); // keeps the C library from returning the memory of the pieces at once
    std::vector<QByteArray>().swap(pieces);
    const qint64 before = residentMemory();
    QVERIFY(proxy->prepare({Search, ViewAll, true, true, "tool"}));
    const qint64 returned = before - residentMemory();
    QVERIFY2(returned > 25000, qPrintable(QString::number(returned)));
}

void SortFilterProxyModelResultsTest::eachRecordIsSearchedOnlyOnceForTheSameSettings()
{
    QTableView view; // after each change signal, the view requests all rows
    view.setModel(proxy.get());
    table->collect({}, {}, {StandIn::package("watched", {{"watched", 1}})});
    model->reset();
    proxy->setMode(Search);
    table->standIn.forgetCalls();
    QCOMPARE(listed("nothing"), QStringList());
    QCOMPARE(table->standIn.calls("description"), 1);

    // The expressions "nothing" and ".*nothing" have the same results, which are stored. A new sort order
    // keeps these results.
    QCOMPARE(listed(".*nothing"), QStringList());
    inOrder(SizeColumn);
    QCOMPARE(table->standIn.calls("description"), 1);

    proxy->setDupsFilter(false);
    QCOMPARE(names(*proxy), QStringList());
    QCOMPARE(table->standIn.calls("description"), 2);
    QCOMPARE(listed("none"), QStringList());
    QCOMPARE(table->standIn.calls("description"), 3);
}

void SortFilterProxyModelResultsTest::aResetOfTheModelClearsTheStoredResults()
{
    proxy->setStateFilter(ViewUpdatable);
    QCOMPARE(sortedNames(*proxy), (QStringList{"Tools", "many", "tool"}));
    Package::Entry& entry = table->entry("tool");
    entry.state = Package::Installed;
    QVERIFY(proxy->filterAcceptsRow(table->row("tool"), QModelIndex()));
    model->reset();
    QVERIFY(!proxy->filterAcceptsRow(table->row("tool"), QModelIndex()));
    QCOMPARE(sortedNames(*proxy), (QStringList{"Tools", "many"}));

    // The new records may have the same addresses as the deleted records, but they need results of their own.
    table->collect({}, {StandIn::package("one")}, {StandIn::package("two")});
    model->reset();
    QCOMPARE(sortedNames(*proxy), QStringList());
    proxy->setStateFilter(ViewRemovable);
    QCOMPARE(sortedNames(*proxy), QStringList{"one"});
}

void SortFilterProxyModelResultsTest::aResetOfTheFormerSourceModelKeepsTheStoredResults()
{
    Model second(&table->yumIO);
    proxy->setSourceModel(&second);
    proxy->setStateFilter(ViewUpdatable);
    QCOMPARE(proxy->rowCount(), 3);
    table->entry("tool").state = Package::Installed;
    model->reset();
    QVERIFY(proxy->filterAcceptsRow(table->row("tool"), QModelIndex()));
    second.reset();
    QVERIFY(!proxy->filterAcceptsRow(table->row("tool"), QModelIndex()));
    proxy->setSourceModel(model.get());
}

void SortFilterProxyModelResultsTest::clearingTheProxyClearsTheStoredResults()
{
    proxy->setStateFilter(ViewUpdatable);
    const int row = table->row("tool");
    QVERIFY(proxy->filterAcceptsRow(row, QModelIndex()));
    table->yumIO[row]->state = Package::Installed;
    QVERIFY(proxy->filterAcceptsRow(row, QModelIndex()));
    proxy->clearCache();
    QVERIFY(!proxy->filterAcceptsRow(row, QModelIndex()));
    table->yumIO[row]->state = Package::Updatable;
    proxy->clear();
    QVERIFY(proxy->filterAcceptsRow(row, QModelIndex()));
    QCOMPARE(proxy->rowCount(), 3);
}

void SortFilterProxyModelResultsTest::eachChangedFilterSettingClearsTheStoredResults()
{
    const int row = table->row("tool");
    const auto forgets = [this, row](const std::function<void()>& change) {
        proxy->setStateFilter(ViewRemovable);
        table->yumIO[row]->state = Package::Updatable;
        proxy->clear();
        const bool before = proxy->filterAcceptsRow(row, QModelIndex());
        table->yumIO[row]->state =
            Package::Available; // as long as a stored result is used, this new state has no effect
        change();
        return before && !proxy->filterAcceptsRow(row, QModelIndex());
    };
    QVERIFY(!forgets([] {}));
    QVERIFY(forgets([this] { proxy->setMode(Search); }));
    QVERIFY(forgets([this] { proxy->setStateFilter(ViewUpdatable); }));
    QVERIFY(forgets([this] { proxy->setDupsFilter(false); }));
    QVERIFY(forgets([this] { proxy->setGroupsFilter(false); }));
    QVERIFY(forgets([this] { proxy->setFilterRegExp(QStringLiteral("tool")); }));
    QVERIFY(!forgets([this] { proxy->setFilterRegExp(QStringLiteral(".*tool.*")); }));
}

QTEST_MAIN(SortFilterProxyModelResultsTest)
#include "SortFilterProxyModelResultsTest.moc"
