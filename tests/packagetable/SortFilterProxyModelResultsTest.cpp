// SPDX-License-Identifier: GPL-2.0-or-later

#include <functional>

#include "tests/packagetable/FilteredTable.h"

using namespace PackageTable;

// Tests of the results of comparisons: the proxy stores them, and a worker can prepare them.
class SortFilterProxyModelResultsTest : public FilteredTable
{
    Q_OBJECT

private Q_SLOTS:
    void preparedAndUnpreparedComparisonsListTheSameRecords_data();
    void preparedAndUnpreparedComparisonsListTheSameRecords();
    void aPreparedSearchRespectsTheStateFilter();
    void theProxyUsesPreparedResultsInsteadOfComparingAgain();
    void aResetOfTheModelDiscardsPreparedResults();
    void theQuickPreparationRefusesAnExpressionWithABackReference();
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
        QVERIFY(proxy->prepareQuickly({mode, ViewAll, true, true, expression}) ==
                (mode == Filter && !expression.contains("\\1")));
        QCOMPARE(listed(expression), expected);
    }
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
