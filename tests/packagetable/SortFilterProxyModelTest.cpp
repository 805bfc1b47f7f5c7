// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/SortFilterProxyModel.h"

#include <QtTest>
#include <QtWidgets>

#include <algorithm>
#include <memory>

#include "packagetable/Columns.h"
#include "tests/packagetable/Table.h"
#include "yumio/Fields.h"

using namespace PackageTable;

namespace {

class Proxy : public SortFilterProxyModel
{
public:
    using SortFilterProxyModel::filterAcceptsRow;
    using SortFilterProxyModel::lessThan;
    using SortFilterProxyModel::SortFilterProxyModel;
};

} // namespace

class SortFilterProxyModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanupTestCase();
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
    void theSearchFindsTextsInEachField_data();
    void theSearchFindsTextsInEachField();
    void theSearchFindsLockedPackagesByTheirLocks();
    void theSearchFindsTextsInEachListOfAGroup_data();
    void theSearchFindsTextsInEachListOfAGroup();
    void theSearchDoesNotMatchAcrossFields();
    void theExpressionInFilterModeMatchesOnlyVisibleTexts();
    void aFilterWithoutMatchesReportsMatchesInAnotherLetterCase();
    void aSearchWithoutMatchesReportsMatchesInAnotherLetterCase();
    void aPreparedSearchWithoutMatchesReportsMatchesInAnotherLetterCase();
    void aMatchingRecordIsListedOnlyIfAllFiltersAcceptTheRecord();
    void theSearchReadsNoFieldsOfARecordAfterTheFirstMatch();
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
    void theRemovableFilterDoesNotListExcludedPackages();
    void everyRowIsListedIfFilteringIsDisabled();
    void settingAFilterToItsPresentValueChangesNothing();
    void eachColumnSortsTheRowsByItsTextsOrNumbers_data();
    void eachColumnSortsTheRowsByItsTextsOrNumbers();
    void sizesAreComparedAsSigned32BitIntegers();
    void buildTimesAreComparedAsSigned32BitIntegers();
    void rowsWithEqualValuesAreSortedByName_data();
    void rowsWithEqualValuesAreSortedByName();
    void rowsAreOrderedByTheirSortKeysOrTexts_data();
    void rowsAreOrderedByTheirSortKeysOrTexts();
    void anInvalidIndexIsSortedBeforeEveryRow();
    void allListedUpdatesCanBeMarked();
    void markingTheListedUpdatesSkipsReplacedPackages();
    void markingTheListedUpdatesSkipsUnlistedUpdates();
    void sortingByActionAgainUsesTheNewActions();
    void markingTheListedUpdatesMovesNoRowUntilTheFilterChanges();
    void theTableIsSortedOnceAtTheEndOfASortPause();
    void aSortPauseHasNoEffectIfTheTableIsNotSortedByAction();
    void theNextResetOfTheModelUsesTheOrderThatAWorkerHasPrepared();
    void aPreparedOrderIsIgnoredIfTheRecordsOrTheSortOrderHaveChanged_data();
    void aPreparedOrderIsIgnoredIfTheRecordsOrTheSortOrderHaveChanged();

private:
    void readTexts()
    {
        if (!table->yumIO.collectSearchTexts(proxy->searched(ViewAll, true, true)) ||
            table->entry("tool").searchTexts.isNull()) {
            qFatal("the texts cannot be read");
        }
    }
    QStringList listed(const QString& expression)
    {
        proxy->setFilterRegExp(expression);
        return sortedNames(*proxy);
    }
    // Sorts the table by a column, and returns the listed names in this order.
    QStringList inOrder(int column, Qt::SortOrder order = Qt::AscendingOrder)
    {
        proxy->sort(column, order);
        return names(*proxy);
    }

    std::unique_ptr<Table> table;
    std::unique_ptr<Model> model;
    std::unique_ptr<Proxy> proxy;
};

void SortFilterProxyModelTest::initTestCase()
{
    table = std::make_unique<Table>();
}

void SortFilterProxyModelTest::init()
{
    proxy.reset();
    table->collectUsual();
    model = std::make_unique<Model>(&table->yumIO);
    proxy = std::make_unique<Proxy>(ViewAll, true, true, &table->yumIO);
    proxy->setSourceModel(model.get());
}

void SortFilterProxyModelTest::cleanupTestCase()
{
    proxy.reset();
    model.reset();
    table.reset();
}

void SortFilterProxyModelTest::theStateFilterListsOnlyRecordsInTheChosenState_data()
{
    QTest::addColumn<int>("filter");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("updatable") << 0 << QStringList{"Tools", "many", "tool"};
    QTest::newRow("installable") << 1 << QStringList{"Games", "editor", "lib", "lib", "office"};
    QTest::newRow("removable") << 2 << QStringList{"Editors", "Tools", "kernel", "many", "shell", "tool"};
    QTest::newRow("all") << 3 << QStringList{"Editors", "Games", "Tools",  "editor", "kernel", "lib",
                                             "lib",     "many",  "office", "shell",  "tool"};
}

void SortFilterProxyModelTest::theStateFilterListsOnlyRecordsInTheChosenState()
{
    QFETCH(int, filter);
    QFETCH(QStringList, expected);
    QCOMPARE(proxy->rowCount(), 11);
    proxy->setStateFilter(static_cast<StateFilter>(filter));
    QCOMPARE(sortedNames(*proxy), expected);
}

void SortFilterProxyModelTest::onlyOneOfTwoArchitecturesIsListedIfDuplicatesAreNotIncluded()
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

void SortFilterProxyModelTest::noGroupIsListedIfGroupsAreNotIncluded()
{
    QCOMPARE(listed("Games|shell"), (QStringList{"Games", "shell"}));
    proxy->setGroupsFilter(false);
    QCOMPARE(sortedNames(*proxy), QStringList{"shell"});
    QCOMPARE(listed("Games"), QStringList());
    QCOMPARE(listed(""), (QStringList{"editor", "kernel", "lib", "lib", "many", "office", "shell", "tool"}));
    proxy->setGroupsFilter(true);
    QCOMPARE(listed("Games"), QStringList{"Games"});
}

void SortFilterProxyModelTest::theConstructorAppliesTheGivenFilters()
{
    SortFilterProxyModel strict(ViewInstallable, false, false, &table->yumIO);
    strict.setSourceModel(model.get());
    QCOMPARE(sortedNames(strict), (QStringList{"editor", "lib", "office"}));
    QVERIFY(strict.getFilter());
}

void SortFilterProxyModelTest::anExpressionOfWildcardsAloneListsEveryRow_data()
{
    QTest::addColumn<QString>("expression");
    QTest::newRow("empty") << "";
    QTest::newRow("wildcard") << ".*";
    QTest::newRow("two wildcards") << ".*.*";
}

void SortFilterProxyModelTest::anExpressionOfWildcardsAloneListsEveryRow()
{
    QFETCH(QString, expression);
    for (const Mode mode : {Filter, Search}) {
        proxy->setMode(mode);
        QCOMPARE(listed("shell"), QStringList{"shell"});
        QCOMPARE(listed(expression).count(), 11);
    }
}

void SortFilterProxyModelTest::wildcardsAroundAnExpressionAreIgnored_data()
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

void SortFilterProxyModelTest::wildcardsAroundAnExpressionAreIgnored()
{
    QFETCH(QString, expression);
    QFETCH(QString, taken);
    QCOMPARE(listed(expression), QStringList{"shell"});
    QCOMPARE(proxy->filterRegExp(), QRegExp(taken, Qt::CaseSensitive, QRegExp::RegExp));
}

void SortFilterProxyModelTest::expressionsUseExtendedSyntaxAndAreCaseSensitive()
{
    QCOMPARE(listed("^(tool|lib{1}) "), (QStringList{"lib", "lib", "tool"}));
    QCOMPARE(listed("^[Tt]ools?"), (QStringList{"Tools", "tool"}));
    QCOMPARE(listed("Tool"), QStringList{"Tools"});
    QCOMPARE(listed("SHELL"), QStringList());
}

void SortFilterProxyModelTest::noRowIsListedIfTheExpressionIsInvalid_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("filter") << int(Filter);
    QTest::newRow("search") << int(Search);
}

void SortFilterProxyModelTest::noRowIsListedIfTheExpressionIsInvalid()
{
    QFETCH(int, mode);
    proxy->setMode(static_cast<Mode>(mode));
    for (const char* expression : {"(", "[a", "x{", "\\"}) {
        QCOMPARE(listed(expression), QStringList());
        QCOMPARE(listed("shell"), QStringList{"shell"});
    }
}

void SortFilterProxyModelTest::aDotMatchesAnyLetter()
{
    table->collect({}, {}, {StandIn::package(QString::fromUtf8("Gr\u00f6\u00dfe")), StandIn::package("Gre")});
    model->reset();
    QCOMPARE(listed("^Gr..e "), QStringList{QString::fromUtf8("Gr\u00f6\u00dfe")});
    QCOMPARE(listed(QString::fromUtf8("\u00f6")), QStringList{QString::fromUtf8("Gr\u00f6\u00dfe")});
}

void SortFilterProxyModelTest::anExpressionMatchesAcrossColumns()
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

void SortFilterProxyModelTest::anEmptyColumnAddsNoBlankToTheMatchedText()
{
    // A group has a text only in the Name column.
    QCOMPARE(listed("^Games$"), QStringList{"Games"});
    QCOMPARE(listed("^Games "), QStringList());
}

void SortFilterProxyModelTest::anExpressionMatchesTheStarAfterTheVersion()
{
    QCOMPARE(listed("1 \\* "), (QStringList{"kernel", "many"}));
}

void SortFilterProxyModelTest::theSearchFindsTextsInEachField_data()
{
    QTest::addColumn<QJsonObject>("attributes");
    QTest::addColumn<QString>("expression");
    const auto text = [](const char* attribute) {
        QTest::newRow(attribute) << QJsonObject{{attribute, "a needle in hay"}} << "needle";
    };
    const auto list = [](const char* attribute) {
        QTest::newRow(attribute) << QJsonObject{{attribute, QJsonArray{"hay", "a needle", "straw"}}}
                                 << "needle";
    };
    QTest::newRow("name") << QJsonObject{{"name", "needle"}} << "needle";
    QTest::newRow("version-release") << QJsonObject{{"version", "12"}, {"release", "34"}} << "12-34";
    text("repoid");
    text("arch");
    QTest::newRow("size") << QJsonObject{{"size", 77000000}} << "^73Mb$";
    text("summary");
    QTest::newRow("buildtime") << QJsonObject{{"buildtime", 1234567890}} << "Feb 13 23:31:30 2009";
    // For these fields, the search reads attributes of dnf's packages.
    for (int i = 0; i < Fields::Count; ++i) {
        const Fields::Row& row = Fields::row(static_cast<Fields::Field>(i));
        switch (row.source) {
        case Fields::Source::Text:
            text(row.attribute);
            break;
        case Fields::Source::Time:
            QTest::newRow(row.attribute)
                << QJsonObject{{row.attribute, 1234567890}} << "Feb 13 23:31:30 2009";
            break;
        case Fields::Source::Dependencies:
            list(row.attribute);
            break;
        default:
            break;
        }
    }
    list("prefixes");
    list("files");
    const QJsonArray log{QJsonArray{"author", "first"}, QJsonArray{"author", "needle"}};
    QTest::newRow("changelogs") << QJsonObject{{"changelogs", log}} << "needle";
}

void SortFilterProxyModelTest::theSearchFindsTextsInEachField()
{
    QFETCH(QJsonObject, attributes);
    QFETCH(QString, expression);
    const QString name = attributes.value("name").toString("found");
    table->collect({}, {}, {StandIn::package(name, attributes), StandIn::package("other")},
                   {StandIn::group("group")});
    model->reset();
    proxy->setMode(Search);
    QCOMPARE(listed(expression), QStringList{name});
    QCOMPARE(listed(expression + "s"), QStringList());
}

void SortFilterProxyModelTest::theSearchFindsLockedPackagesByTheirLocks()
{
    table->standIn.setVersionLocks({{"shell", "shell-0:1-1.*"}, {"edit", "edit"}, {"Games", "Games"}});
    table->collect({}, {StandIn::package("shell", {{"repoid", "@System"}})},
                   {StandIn::package("edit"), StandIn::package("other", {{"summary", "shell, edit"}})},
                   {StandIn::group("Games")});
    table->standIn.removeVersionLocks();
    model->reset();
    proxy->setMode(Search);
    QCOMPARE(listed("^Locked by "), (QStringList{"edit", "shell"}));
    QCOMPARE(listed("^Locked by shell-0:1-1"), QStringList{"shell"});
}

void SortFilterProxyModelTest::theSearchFindsTextsInEachListOfAGroup_data()
{
    QTest::addColumn<QJsonObject>("attributes");
    QTest::newRow("name") << QJsonObject{{"name", "needle"}};
    for (const char* list :
         {"mandatory_packages", "default_packages", "optional_packages", "conditional_packages"}) {
        QTest::newRow(list) << QJsonObject{{list, QJsonArray{"hay", "a needle", "straw"}}};
    }
}

void SortFilterProxyModelTest::theSearchFindsTextsInEachListOfAGroup()
{
    QFETCH(QJsonObject, attributes);
    const QString name = attributes.value("name").toString("found");
    table->collect({}, {}, {StandIn::package("other")},
                   {StandIn::group(name, attributes), StandIn::group("empty")});
    model->reset();
    QCOMPARE(listed("needle").count(), attributes.contains("name") ? 1 : 0);
    proxy->setMode(Search);
    QCOMPARE(listed("needle"), QStringList{name});
    QCOMPARE(listed("needles"), QStringList());
}

void SortFilterProxyModelTest::theSearchDoesNotMatchAcrossFields()
{
    QCOMPARE(listed("noarch 4"), QStringList{"editor"});
    proxy->setMode(Search);
    QCOMPARE(sortedNames(*proxy), QStringList());
    QCOMPARE(listed("^noarch$"), QStringList{"editor"});
}

void SortFilterProxyModelTest::aFilterWithoutMatchesReportsMatchesInAnotherLetterCase()
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

void SortFilterProxyModelTest::aPreparedSearchWithoutMatchesReportsMatchesInAnotherLetterCase()
{
    table->collect(
        {},
        {StandIn::package("tool", {{"repoid", "@System"}}),
         StandIn::package("shell", {{"repoid", "@System"}, {"files", QJsonArray{"/usr/bin/shell"}}})},
        {});
    model->reset();
    proxy->setMode(Search);
    readTexts();
    const auto isHinted = [this](const QString& expression, StateFilter state = ViewAll) {
        if (!proxy->prepare({Search, state, true, true, expression})) {
            qFatal("the search was stopped");
        }
        proxy->setStateFilter(state);
        return listed(expression).isEmpty() && proxy->matchesIgnoringCase();
    };
    proxy->setGroupsFilter(true);
    for (const char* expression : {"/USR/BIN/SHELL", "/Usr/bin/shell", "/usr/bin/.HELL", "^SHELL$"}) {
        QVERIFY2(isHinted(expression), expression);
    }
    for (const char* expression :
         {"/usr/bin/shell", "/USR/BIN/SHELLS", "(S)HELL\\1", "/usr/bin/.*ELL", "[/]USR/OTHER"}) {
        QVERIFY2(!isHinted(expression), expression);
    }
    // A record must also pass the state filter.
    QVERIFY(isHinted("/USR/BIN/SHELL", ViewRemovable));
    QVERIFY(!isHinted("/USR/BIN/SHELL", ViewUpdatable));
}

void SortFilterProxyModelTest::aSearchWithoutMatchesReportsMatchesInAnotherLetterCase()
{
    proxy->setMode(Search);
    readTexts();
    for (const char* expression : {"SHELL", "Shell"}) {
        QCOMPARE(listed(expression), QStringList());
        QVERIFY2(proxy->matchesIgnoringCase(), expression);
    }
    // If no search was prepared, matchesIgnoringCase() returns true only for an expression that is one word.
    for (const char* expression : {"SHELLS", "NOARCH 4", "^SHELL"}) {
        QCOMPARE(listed(expression), QStringList());
        QVERIFY2(!proxy->matchesIgnoringCase(), expression);
    }
}

void SortFilterProxyModelTest::theExpressionInFilterModeMatchesOnlyVisibleTexts()
{
    table->collect({}, {}, {StandIn::package("found", {{"summary", "needle"}})});
    model->reset();
    proxy->setMode(Search);
    QCOMPARE(listed("needle"), QStringList{"found"});
    proxy->setMode(Filter);
    QCOMPARE(sortedNames(*proxy), QStringList());
}

void SortFilterProxyModelTest::aMatchingRecordIsListedOnlyIfAllFiltersAcceptTheRecord()
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

void SortFilterProxyModelTest::theSearchReadsNoFieldsOfARecordAfterTheFirstMatch()
{
    table->collect({}, {},
                   {StandIn::package("name", {{"watched", 1}}), StandIn::package("other", {{"watched", 1}})});
    model->reset();
    proxy->setMode(Search);
    table->standIn.forgetCalls();
    QCOMPARE(listed("name"), QStringList{"name"});
    QCOMPARE(table->standIn.calls("description"),
             1); // only for "other": the first package already matches by its name
}

void SortFilterProxyModelTest::preparedAndUnpreparedComparisonsListTheSameRecords_data()
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

void SortFilterProxyModelTest::preparedAndUnpreparedComparisonsListTheSameRecords()
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

void SortFilterProxyModelTest::aPreparedSearchRespectsTheStateFilter()
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

void SortFilterProxyModelTest::theProxyUsesPreparedResultsInsteadOfComparingAgain()
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

void SortFilterProxyModelTest::aResetOfTheModelDiscardsPreparedResults()
{
    QVERIFY(proxy->prepare({Filter, ViewAll, true, true, "tool"}));
    QCOMPARE(listed("^tool"), QStringList{"tool"});
    table->collect({}, {}, {StandIn::package("toolbox"), StandIn::package("other")});
    model->reset();
    QCOMPARE(listed("tool"), QStringList{"toolbox"});
}

void SortFilterProxyModelTest::theQuickPreparationRefusesAnExpressionWithABackReference()
{
    QVERIFY(proxy->prepareQuickly({Filter, ViewAll, true, true, "t(o)o"}));
    QVERIFY(!proxy->prepareQuickly({Filter, ViewAll, true, true, "t(o)\\1"}));
    QVERIFY(!proxy->prepareQuickly({Search, ViewAll, true, true, "tool"}));
    QVERIFY(proxy->prepare({Filter, ViewAll, true, true, "t(o)\\1"}));
    QCOMPARE(listed("^t(o)\\1"), QStringList{"tool"});
}

void SortFilterProxyModelTest::eachRecordIsSearchedOnlyOnceForTheSameSettings()
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

void SortFilterProxyModelTest::aResetOfTheModelClearsTheStoredResults()
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

void SortFilterProxyModelTest::aResetOfTheFormerSourceModelKeepsTheStoredResults()
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

void SortFilterProxyModelTest::clearingTheProxyClearsTheStoredResults()
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

void SortFilterProxyModelTest::eachChangedFilterSettingClearsTheStoredResults()
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

void SortFilterProxyModelTest::theRemovableFilterDoesNotListExcludedPackages()
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

void SortFilterProxyModelTest::everyRowIsListedIfFilteringIsDisabled()
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

void SortFilterProxyModelTest::settingAFilterToItsPresentValueChangesNothing()
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

void SortFilterProxyModelTest::eachColumnSortsTheRowsByItsTextsOrNumbers_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QStringList>("expected");
    // The expected order of the packages for each column, in the order of the columns.
    static const char* const orders[] = {
        "d c b A", // Action
        "d A c b", // State
        "c A b d", // Kind
        "A b c d", // Name
        "A c d b", // Version
        "A d b c", // Repository
        "A c b d", // Architecture
        "A d b c", // Size
        "A c b d", // Build Time
    };
    static_assert(sizeof orders / sizeof *orders == ColumnCount, "each column has its order");
    for (int column = 0; column < ColumnCount; ++column) {
        QTest::newRow(Columns::row(column).title) << column << QString(orders[column]).split(' ');
    }
}

void SortFilterProxyModelTest::eachColumnSortsTheRowsByItsTextsOrNumbers()
{
    QFETCH(int, column);
    QFETCH(QStringList, expected);
    // Texts are compared character by character: "10-1" precedes "9-1", and capital letters precede small
    // letters. Numbers are compared by their values.
    const QJsonObject d{{"version", "3"}, {"repoid", "B"}, {"size", 900}, {"buildtime", 1234567890}};
    table->collect(
        {StandIn::package("d", d)},
        {StandIn::package("d"),
         StandIn::package(
             "b",
             {{"version", "9"}, {"repoid", "a"}, {"arch", "noarch"}, {"size", 5000}, {"buildtime", 99999}})},
        {StandIn::package("c", {{"version", "10"},
                                {"repoid", "b"},
                                {"group", "Suite"},
                                {"arch", "i686"},
                                {"size", 10000},
                                {"buildtime", 500}})},
        {StandIn::group("A")});
    model->reset();
    table->entry("d").action = Package::Update;
    table->entry("c").action = Package::Install;
    table->entry("b").action = Package::Remove;
    QCOMPARE(inOrder(column), expected);
    std::reverse(expected.begin(), expected.end());
    QCOMPARE(inOrder(column, Qt::DescendingOrder), expected);
}

void SortFilterProxyModelTest::sizesAreComparedAsSigned32BitIntegers()
{
    // The sizes are compared as signed 32-bit integers, in which 3 000 000 000 is negative, and 4 294 967 297
    // is 1.
    table->collect({}, {},
                   {StandIn::package("a", {{"size", 3000000000.0}}), StandIn::package("b", {{"size", 2}}),
                    StandIn::package("c", {{"size", 4294967297.0}}), StandIn::package("d", {{"size", 1}}),
                    StandIn::package("e", {{"size", 0}}), StandIn::package("f", {{"size", 2147483647.0}})});
    model->reset();
    QCOMPARE(table->entry("a").size, 3000000000ULL);
    QCOMPARE(inOrder(SizeColumn), (QStringList{"a", "e", "c", "d", "b", "f"}));
}

void SortFilterProxyModelTest::buildTimesAreComparedAsSigned32BitIntegers()
{
    table->collect({}, {},
                   {StandIn::package("a", {{"buildtime", 2147483648.0}}),
                    StandIn::package("b", {{"buildtime", 2147483647.0}}),
                    StandIn::package("c", {{"buildtime", 4294967296.0}}),
                    StandIn::package("d", {{"buildtime", 0}})});
    model->reset();
    QCOMPARE(inOrder(BuildTimeColumn), (QStringList{"a", "c", "d", "b"}));
}

void SortFilterProxyModelTest::rowsWithEqualValuesAreSortedByName_data()
{
    QTest::addColumn<int>("column");
    for (int column = 0; column < ColumnCount; ++column) {
        QTest::addRow("column %d", column) << column;
    }
}

void SortFilterProxyModelTest::rowsWithEqualValuesAreSortedByName()
{
    QFETCH(int, column);
    QJsonArray packages;
    QStringList expected;
    for (int i = 0; i < 20; ++i) {
        expected << QStringLiteral("p%1").arg((i * 7) % 20, 2, 10, QLatin1Char('0'));
        packages.append(StandIn::package(expected.last()));
    }
    table->collect({}, {}, packages);
    model->reset();
    expected.sort();
    QCOMPARE(inOrder(column), expected);
    std::reverse(expected.begin(), expected.end());
    QCOMPARE(inOrder(column, Qt::DescendingOrder), expected);
}

void SortFilterProxyModelTest::rowsAreOrderedByTheirSortKeysOrTexts_data()
{
    rowsWithEqualValuesAreSortedByName_data();
}

void SortFilterProxyModelTest::rowsAreOrderedByTheirSortKeysOrTexts()
{
    QFETCH(int, column);
    table->entry("tool").action = Package::Remove;
    const bool text = Columns::row(column).sortKey == nullptr;
    for (int l = 0; l < model->rowCount(); ++l) {
        for (int r = 0; r < model->rowCount(); ++r) {
            const QModelIndex left = model->index(l, column);
            const QModelIndex right = model->index(r, column);
            const QString leftName = left.sibling(l, NameColumn).data().toString();
            const QString rightName = right.sibling(r, NameColumn).data().toString();
            bool expected = false;
            if (text) {
                const QString leftText = left.data().toString();
                const QString rightText = right.data().toString();
                expected = leftText < rightText || (leftText == rightText && leftName < rightName);
            } else {
                const int leftNumber = left.data(Qt::UserRole).toInt();
                const int rightNumber = right.data(Qt::UserRole).toInt();
                expected = leftNumber < rightNumber || (leftNumber == rightNumber && leftName < rightName);
            }
            QCOMPARE(proxy->lessThan(left, right), expected);
        }
    }
}

void SortFilterProxyModelTest::anInvalidIndexIsSortedBeforeEveryRow()
{
    QVERIFY(!proxy->lessThan(QModelIndex(), QModelIndex()));
    QVERIFY(!proxy->lessThan(model->index(0, NameColumn), QModelIndex()));
    QVERIFY(proxy->lessThan(QModelIndex(), model->index(0, NameColumn)));
}

void SortFilterProxyModelTest::allListedUpdatesCanBeMarked()
{
    proxy->sort(NameColumn);
    table->entry("many").action = Package::Remove;
    QSignalSpy spy(proxy.get(), SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    proxy->setUpdateListed();
    QCOMPARE(changed(spy), (QStringList{"Tools", "many", "tool"}));
    for (int row = 0; row < table->yumIO.count(); ++row) {
        const Package::Entry* entry = table->yumIO[row];
        QCOMPARE(entry->action, entry->state == Package::Updatable ? Package::Update : Package::None);
    }
}

void SortFilterProxyModelTest::markingTheListedUpdatesSkipsReplacedPackages()
{
    using S = StandIn;
    const QJsonObject old{{"version", "1"}, {"repoid", "@System"}};
    table->collect({S::package("split", {{"version", "2"}}), S::package("tool", {{"replaced", "gone"}})},
                   {S::package("split", old), S::package("tool", old), S::package("gone", old)},
                   {S::package("better", {{"replaced", "split"}})});
    model->reset();
    proxy->setUpdateListed();
    QCOMPARE(table->entry("split").action, Package::None);
    QCOMPARE(table->entry("better").action, Package::None);
    // "tool" replaces another package too, but it is an update of an installed package, so it is marked.
    QCOMPARE(table->entry("tool").action, Package::Update);
}

void SortFilterProxyModelTest::markingTheListedUpdatesSkipsUnlistedUpdates()
{
    QCOMPARE(listed("many|shell"), (QStringList{"many", "shell"}));
    QSignalSpy spy(proxy.get(), SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    proxy->setUpdateListed();
    QCOMPARE(changed(spy), QStringList{"many"});
    QCOMPARE(table->entry("many").action, Package::Update);
    QCOMPARE(table->entry("tool").action, Package::None);
}

void SortFilterProxyModelTest::sortingByActionAgainUsesTheNewActions()
{
    proxy->setGroupsFilter(false);
    QCOMPARE(inOrder(ActionColumn).first(), QStringLiteral("editor"));
    inOrder(NameColumn);
    model->setAction(model->index(table->row("tool"), 0), Package::Remove);
    QCOMPARE(inOrder(ActionColumn).first(), QStringLiteral("tool"));
    inOrder(NameColumn);
    proxy->setUpdateListed();
    QCOMPARE(inOrder(ActionColumn).mid(0, 3), (QStringList{"many", "tool", "editor"}));
}

void SortFilterProxyModelTest::markingTheListedUpdatesMovesNoRowUntilTheFilterChanges()
{
    proxy->setGroupsFilter(false);
    const QStringList before = inOrder(ActionColumn);
    QCOMPARE(before.first(), QStringLiteral("editor"));
    proxy->setUpdateListed();
    QCOMPARE(names(*proxy), before);
    proxy->setFilterRegExp("o");
    QCOMPARE(names(*proxy).first(), QStringLiteral("tool"));
    proxy->setFilterRegExp("");
    QCOMPARE(names(*proxy).mid(0, 3), (QStringList{"many", "tool", "editor"}));
}

void SortFilterProxyModelTest::theNextResetOfTheModelUsesTheOrderThatAWorkerHasPrepared()
{
    proxy->sort(NameColumn);
    const QStringList before = names(*proxy);
    PreparedRows reversed;
    reversed.count = table->yumIO.count();
    reversed.sortedBy = NameColumn;
    for (int row = proxy->rowCount() - 1; row >= 0; --row) {
        reversed.order.push_back(proxy->mapToSource(proxy->index(row, 0)).row());
    }
    proxy->setPrepared(reversed);
    QCOMPARE(names(*proxy), before);
    model->reset();
    QStringList expected = before;
    std::reverse(expected.begin(), expected.end());
    QCOMPARE(names(*proxy), expected);
    model->reset(); // the prepared order is valid for one reset only
    QCOMPARE(names(*proxy), before);
}

void SortFilterProxyModelTest::aPreparedOrderIsIgnoredIfTheRecordsOrTheSortOrderHaveChanged_data()
{
    QTest::addColumn<int>("more");
    QTest::addColumn<int>("column");
    QTest::addColumn<Qt::SortOrder>("order");
    QTest::addRow("one more record") << 1 << int(NameColumn) << Qt::AscendingOrder;
    QTest::addRow("different sort column") << 0 << int(VersionColumn) << Qt::AscendingOrder;
    QTest::addRow("descending order") << 0 << int(NameColumn) << Qt::DescendingOrder;
}

void SortFilterProxyModelTest::aPreparedOrderIsIgnoredIfTheRecordsOrTheSortOrderHaveChanged()
{
    QFETCH(int, more);
    QFETCH(int, column);
    QFETCH(Qt::SortOrder, order);
    proxy->sort(NameColumn);
    const QStringList before = names(*proxy);
    Preparation other(table->yumIO, column, order, QFont());
    other.run();
    other.rows.count += more;
    proxy->setPrepared(other.rows);
    model->reset();
    QCOMPARE(names(*proxy), before);
}

void SortFilterProxyModelTest::theTableIsSortedOnceAtTheEndOfASortPause()
{
    proxy->setGroupsFilter(false);
    const QStringList before = inOrder(ActionColumn);
    QCOMPARE(before, (QStringList{"editor", "kernel", "lib", "lib", "many", "office", "shell", "tool"}));
    QSignalSpy layout(proxy.get(), SIGNAL(layoutChanged()));
    QSignalSpy spy(proxy.get(), SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    {
        const SortFilterProxyModel::SortPause pause(*proxy);
        for (const char* name : {"tool", "shell", "many"}) {
            model->setAction(model->index(table->row(name), 0), Package::Remove);
            QCOMPARE(names(*proxy), before);
        }
        QCOMPARE(spy.count(), 3);
        QCOMPARE(layout.count(), 0);
    }
    QCOMPARE(names(*proxy),
             (QStringList{"many", "shell", "tool", "editor", "kernel", "lib", "lib", "office"}));
    QCOMPARE(layout.count(), 1);
    model->setAction(model->index(table->row("kernel"), 0), Package::Remove);
    QCOMPARE(names(*proxy).first(), QStringLiteral("kernel"));
}

void SortFilterProxyModelTest::aSortPauseHasNoEffectIfTheTableIsNotSortedByAction()
{
    inOrder(NameColumn);
    QSignalSpy layout(proxy.get(), SIGNAL(layoutChanged()));
    {
        const SortFilterProxyModel::SortPause pause(*proxy);
        QVERIFY(proxy->dynamicSortFilter());
        model->setAction(model->index(table->row("tool"), 0), Package::Remove);
    }
    QVERIFY(proxy->dynamicSortFilter());
    QCOMPARE(layout.count(), 0);
}

QTEST_MAIN(SortFilterProxyModelTest)
#include "SortFilterProxyModelTest.moc"
