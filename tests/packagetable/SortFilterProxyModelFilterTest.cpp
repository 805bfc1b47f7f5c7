// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/packagetable/FilteredTable.h"

using namespace PackageTable;

// Tests of the filters, and of the expression in filter mode.
class SortFilterProxyModelFilterTest : public FilteredTable
{
    Q_OBJECT

private Q_SLOTS:
    void theStateFilterListsOnlyRecordsInTheChosenState_data();
    void theStateFilterListsOnlyRecordsInTheChosenState();
    void onlyOneOfTwoArchitecturesIsListedIfDuplicatesAreNotIncluded();
    void noGroupIsListedIfGroupsAreNotIncluded();
    void theConstructorAppliesTheGivenFilters();
    void anExpressionOfWildcardsAloneListsEveryRow_data();
    void anExpressionOfWildcardsAloneListsEveryRow();
    void wildcardsAroundAnExpressionAreIgnored_data();
    void wildcardsAroundAnExpressionAreIgnored();
    void expressionsUseExtendedSyntaxAndAreCaseSensitive();
    void noRowIsListedIfTheExpressionIsInvalid_data();
    void noRowIsListedIfTheExpressionIsInvalid();
    void aDotMatchesAnyLetter();
    void anExpressionMatchesAcrossColumns();
    void anEmptyColumnAddsNoBlankToTheMatchedText();
    void anExpressionMatchesTheStarAfterTheVersion();
    void theExpressionInFilterModeMatchesOnlyVisibleTexts();
    void aFilterWithoutMatchesReportsMatchesInAnotherLetterCase();
    void aMatchingRecordIsListedOnlyIfAllFiltersAcceptTheRecord();
    void theRemovableFilterDoesNotListExcludedPackages();
    void everyRowIsListedIfFilteringIsDisabled();
    void settingAFilterToItsPresentValueChangesNothing();
};

void SortFilterProxyModelFilterTest::theStateFilterListsOnlyRecordsInTheChosenState_data()
{
    QTest::addColumn<int>("filter");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("updatable") << 0 << QStringList{"Tools", "many", "tool"};
    QTest::newRow("installable") << 1 << QStringList{"Games", "editor", "lib", "lib", "office"};
    QTest::newRow("removable") << 2 << QStringList{"Editors", "Tools", "kernel", "many", "shell", "tool"};
    QTest::newRow("all") << 3 << QStringList{"Editors", "Games", "Tools",  "editor", "kernel", "lib",
                                             "lib",     "many",  "office", "shell",  "tool"};
}

void SortFilterProxyModelFilterTest::theStateFilterListsOnlyRecordsInTheChosenState()
{
    QFETCH(int, filter);
    QFETCH(QStringList, expected);
    QCOMPARE(proxy->rowCount(), 11);
    proxy->setStateFilter(static_cast<StateFilter>(filter));
    QCOMPARE(sortedNames(*proxy), expected);
}

void SortFilterProxyModelFilterTest::onlyOneOfTwoArchitecturesIsListedIfDuplicatesAreNotIncluded()
{
    const auto architectures = [this] {
        QStringList found;
        for (int row = 0; row < proxy->rowCount(); ++row) {
            found << proxy->index(row, ArchitectureColumn).data().toString();
        }
        found.sort();
        return found;
    };
    QCOMPARE(listed("lib"), (QStringList{"lib", "lib"}));
    proxy->setDupsFilter(false);
    QCOMPARE(architectures(), QStringList{"x86_64"});
    QCOMPARE(listed(""), (QStringList{"Editors", "Games", "Tools", "editor", "kernel", "lib", "many",
                                      "office", "shell", "tool"}));
    proxy->setDupsFilter(true);
    QCOMPARE(listed("lib"), (QStringList{"lib", "lib"}));
    QCOMPARE(architectures(), (QStringList{"i686", "x86_64"}));
}

void SortFilterProxyModelFilterTest::noGroupIsListedIfGroupsAreNotIncluded()
{
    QCOMPARE(listed("Games|shell"), (QStringList{"Games", "shell"}));
    proxy->setGroupsFilter(false);
    QCOMPARE(sortedNames(*proxy), QStringList{"shell"});
    QCOMPARE(listed("Games"), QStringList());
    QCOMPARE(listed(""), (QStringList{"editor", "kernel", "lib", "lib", "many", "office", "shell", "tool"}));
    proxy->setGroupsFilter(true);
    QCOMPARE(listed("Games"), QStringList{"Games"});
}

void SortFilterProxyModelFilterTest::theConstructorAppliesTheGivenFilters()
{
    SortFilterProxyModel strict(ViewInstallable, false, false, &table->yumIO);
    strict.setSourceModel(model.get());
    QCOMPARE(sortedNames(strict), (QStringList{"editor", "lib", "office"}));
    QVERIFY(strict.getFilter());
}

void SortFilterProxyModelFilterTest::anExpressionOfWildcardsAloneListsEveryRow_data()
{
    QTest::addColumn<QString>("expression");
    QTest::newRow("empty") << "";
    QTest::newRow("wildcard") << ".*";
    QTest::newRow("two wildcards") << ".*.*";
}

void SortFilterProxyModelFilterTest::anExpressionOfWildcardsAloneListsEveryRow()
{
    QFETCH(QString, expression);
    for (const Mode mode : {Filter, Search}) {
        proxy->setMode(mode);
        QCOMPARE(listed("shell"), QStringList{"shell"});
        QCOMPARE(listed(expression).count(), 11);
    }
}

void SortFilterProxyModelFilterTest::wildcardsAroundAnExpressionAreIgnored_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("taken");
    QTest::newRow("no wildcard") << "shell"
                                 << "shell";
    QTest::newRow("wildcard before the expression") << ".*shell"
                                                    << "shell";
    QTest::newRow("wildcard after the expression") << "shell.*"
                                                   << "shell";
    QTest::newRow("wildcards on both sides") << ".*shell.*"
                                             << "shell";
    QTest::newRow("several wildcards on both sides") << ".*.*shell.*.*.*"
                                                     << "shell";
    QTest::newRow("wildcard inside the expression") << ".*sh.*ll"
                                                    << "sh.*ll";
}

void SortFilterProxyModelFilterTest::wildcardsAroundAnExpressionAreIgnored()
{
    QFETCH(QString, expression);
    QFETCH(QString, taken);
    QCOMPARE(listed(expression), QStringList{"shell"});
    QCOMPARE(proxy->filterRegExp(), QRegExp(taken, Qt::CaseSensitive, QRegExp::RegExp));
}

void SortFilterProxyModelFilterTest::expressionsUseExtendedSyntaxAndAreCaseSensitive()
{
    QCOMPARE(listed("^(tool|lib{1}) "), (QStringList{"lib", "lib", "tool"}));
    QCOMPARE(listed("^[Tt]ools?"), (QStringList{"Tools", "tool"}));
    QCOMPARE(listed("Tool"), QStringList{"Tools"});
    QCOMPARE(listed("SHELL"), QStringList());
}

void SortFilterProxyModelFilterTest::noRowIsListedIfTheExpressionIsInvalid_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("filter") << int(Filter);
    QTest::newRow("search") << int(Search);
}

void SortFilterProxyModelFilterTest::noRowIsListedIfTheExpressionIsInvalid()
{
    QFETCH(int, mode);
    proxy->setMode(static_cast<Mode>(mode));
    for (const char* expression : {"(", "[a", "x{", "\\"}) {
        QCOMPARE(listed(expression), QStringList());
        QCOMPARE(listed("shell"), QStringList{"shell"});
    }
}

void SortFilterProxyModelFilterTest::aDotMatchesAnyLetter()
{
    table->collect({}, {}, {StandIn::package(QString::fromUtf8("Gr\u00f6\u00dfe")), StandIn::package("Gre")});
    model->reset();
    QCOMPARE(listed("^Gr..e "), QStringList{QString::fromUtf8("Gr\u00f6\u00dfe")});
    QCOMPARE(listed(QString::fromUtf8("\u00f6")), QStringList{QString::fromUtf8("Gr\u00f6\u00dfe")});
}

void SortFilterProxyModelFilterTest::anExpressionMatchesAcrossColumns()
{
    // The Size column follows the Architecture column. The Size column shows 5000 bytes as "4.9Kb", and 1000
    // bytes as "1.0Kb".
    QCOMPARE(listed("noarch 4"), QStringList{"editor"});
    QCOMPARE(listed("noarch 1"), QStringList());
    QCOMPARE(listed("i686 1"), QStringList{"lib"});
    QCOMPARE(listed("^editor 3:9-4 base noarch 4\\.9Kb Fri Jan  2 00:00:00 1970"), QStringList{"editor"});
    QStringList texts;
    for (const int column : columns([](const Columns::Row& row) { return !row.showsPictures(); })) {
        texts << Columns::text(table->entry("editor"), column);
    }
    QVERIFY(!texts.contains(QString()));
    const QString line = texts.join(' ').replace('.', "\\.");
    QCOMPARE(listed('^' + line + '$'), QStringList{"editor"});
}

void SortFilterProxyModelFilterTest::anEmptyColumnAddsNoBlankToTheMatchedText()
{
    // A group has a text only in the Name column.
    QCOMPARE(listed("^Games$"), QStringList{"Games"});
    QCOMPARE(listed("^Games "), QStringList());
}

void SortFilterProxyModelFilterTest::anExpressionMatchesTheStarAfterTheVersion()
{
    QCOMPARE(listed("1 \\* "), (QStringList{"kernel", "many"}));
}

void SortFilterProxyModelFilterTest::aFilterWithoutMatchesReportsMatchesInAnotherLetterCase()
{
    for (const char* expression : {"SHELL", "^Shell .*NOARCH|^Shell ", "S[A-Z]ELL"}) {
        QCOMPARE(listed(expression), QStringList());
        QVERIFY2(proxy->matchesIgnoringCase(), expression);
    }
    for (const char* expression : {"SHELLS", "^Shells ", "(S)HELL\\1", "(", ""}) {
        proxy->setFilterRegExp(expression);
        QVERIFY2(!proxy->matchesIgnoringCase(), expression);
    }
    // A record must also pass the state filter.
    proxy->setStateFilter(ViewUpdatable);
    QCOMPARE(listed("SHELL"), QStringList());
    QVERIFY(!proxy->matchesIgnoringCase());
    QCOMPARE(listed("TOOL"), QStringList());
    QVERIFY(proxy->matchesIgnoringCase());
}

void SortFilterProxyModelFilterTest::theExpressionInFilterModeMatchesOnlyVisibleTexts()
{
    table->collect({}, {}, {StandIn::package("found", {{"summary", "needle"}})});
    model->reset();
    proxy->setMode(Search);
    QCOMPARE(listed("needle"), QStringList{"found"});
    proxy->setMode(Filter);
    QCOMPARE(sortedNames(*proxy), QStringList());
}

void SortFilterProxyModelFilterTest::aMatchingRecordIsListedOnlyIfAllFiltersAcceptTheRecord()
{
    for (const Mode mode : {Filter, Search}) {
        proxy->setMode(mode);
        proxy->setStateFilter(ViewRemovable);
        QCOMPARE(listed("editor|shell"), QStringList{"shell"});
        proxy->setStateFilter(ViewAll);
        proxy->setDupsFilter(false);
        QCOMPARE(listed("i686"), QStringList());
        proxy->setDupsFilter(true);
    }
}

void SortFilterProxyModelFilterTest::theRemovableFilterDoesNotListExcludedPackages()
{
    proxy->setStateFilter(ViewRemovable);
    table->entry("shell").excluded = true;
    table->entry("tool").next->excluded = true;
    proxy->clear();
    QCOMPARE(listed("^(shell|tool|editor) "), QStringList());
    // One of the two installed versions of "kernel" is not excluded, so "kernel" is removable.
    table->entry("kernel").excluded = true;
    proxy->clear();
    QCOMPARE(listed("^kernel "), QStringList{"kernel"});
    proxy->setStateFilter(ViewAll);
    QCOMPARE(listed("^shell "), QStringList{"shell"});
    proxy->setStateFilter(ViewUpdatable);
    QCOMPARE(listed("^tool "), QStringList{"tool"});
}

void SortFilterProxyModelFilterTest::everyRowIsListedIfFilteringIsDisabled()
{
    proxy->setStateFilter(ViewUpdatable);
    proxy->setDupsFilter(false);
    proxy->setGroupsFilter(false);
    QCOMPARE(listed("tool"), QStringList{"tool"});
    proxy->setFilter(false);
    QVERIFY(!proxy->getFilter());
    QCOMPARE(proxy->rowCount(), 11);
    proxy->setFilter(true);
    QVERIFY(proxy->getFilter());
    QCOMPARE(sortedNames(*proxy), QStringList{"tool"});
}

void SortFilterProxyModelFilterTest::settingAFilterToItsPresentValueChangesNothing()
{
    proxy->rowCount();
    QSignalSpy layout(proxy.get(), SIGNAL(layoutChanged()));
    QSignalSpy reset(proxy.get(), SIGNAL(modelReset()));
    proxy->setMode(Filter);
    proxy->setStateFilter(ViewAll);
    proxy->setDupsFilter(true);
    proxy->setGroupsFilter(true);
    proxy->setFilter(true);
    QCOMPARE(layout.count() + reset.count(), 0);
    proxy->setFilter(false);
    QVERIFY(reset.count() > 0);
}

QTEST_MAIN(SortFilterProxyModelFilterTest)
#include "SortFilterProxyModelFilterTest.moc"
