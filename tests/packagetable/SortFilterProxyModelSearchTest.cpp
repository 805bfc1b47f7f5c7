// SPDX-License-Identifier: GPL-2.0-or-later

#include <QScopedValueRollback>

#include "tests/packagetable/FilteredTable.h"
#include "yumio/Fields.h"

using namespace PackageTable;

// Tests of the expression in search mode.
class SortFilterProxyModelSearchTest : public FilteredTable
{
    Q_OBJECT

private Q_SLOTS:
    void theSearchFindsTextsInEachField_data();
    void theSearchFindsTextsInEachField();
    void theSearchFindsLockedPackagesByTheirLocks();
    void theSearchFindsTextsInEachListOfAGroup_data();
    void theSearchFindsTextsInEachListOfAGroup();
    void theSearchDoesNotMatchAcrossFields();
    void aSearchWithoutMatchesReportsMatchesInAnotherLetterCase();
    void aPreparedSearchWithoutMatchesReportsMatchesInAnotherLetterCase_data();
    void aPreparedSearchWithoutMatchesReportsMatchesInAnotherLetterCase();
    void aPreparedSearchOfManyBlocksFindsEachMatch_data();
    void aPreparedSearchOfManyBlocksFindsEachMatch();
    void aRepeatedSearchWithoutMatchesReportsMatchesInAnotherLetterCase();
    void theSearchReadsNoFieldsOfARecordAfterTheFirstMatch();
};

void SortFilterProxyModelSearchTest::theSearchFindsTextsInEachField_data()
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

void SortFilterProxyModelSearchTest::theSearchFindsTextsInEachField()
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

void SortFilterProxyModelSearchTest::theSearchFindsLockedPackagesByTheirLocks()
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

void SortFilterProxyModelSearchTest::theSearchFindsTextsInEachListOfAGroup_data()
{
    QTest::addColumn<QJsonObject>("attributes");
    QTest::newRow("name") << QJsonObject{{"name", "needle"}};
    for (const char* list :
         {"mandatory_packages", "default_packages", "optional_packages", "conditional_packages"}) {
        QTest::newRow(list) << QJsonObject{{list, QJsonArray{"hay", "a needle", "straw"}}};
    }
}

void SortFilterProxyModelSearchTest::theSearchFindsTextsInEachListOfAGroup()
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

void SortFilterProxyModelSearchTest::theSearchDoesNotMatchAcrossFields()
{
    QCOMPARE(listed("noarch 4"), QStringList{"editor"});
    proxy->setMode(Search);
    QCOMPARE(sortedNames(*proxy), QStringList());
    QCOMPARE(listed("^noarch$"), QStringList{"editor"});
}

void SortFilterProxyModelSearchTest::aPreparedSearchWithoutMatchesReportsMatchesInAnotherLetterCase_data()
{
    QTest::addColumn<int>("fewRows");
    QTest::newRow("short table") << SortFilterProxyModel::fewRows;
    QTest::newRow("long table") << 1;
}

void SortFilterProxyModelSearchTest::aPreparedSearchWithoutMatchesReportsMatchesInAnotherLetterCase()
{
    QFETCH(int, fewRows);
    const QScopedValueRollback<int> limit(SortFilterProxyModel::fewRows, fewRows);
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

void SortFilterProxyModelSearchTest::aPreparedSearchOfManyBlocksFindsEachMatch_data()
{
    QTest::addColumn<int>("fewRows");
    QTest::addColumn<QStringList>("urls"); // of the first package, a middle package and the last package
    for (const int fewRows : {SortFilterProxyModel::fewRows, 1}) {
        const auto row = [fewRows](const char* name, const QStringList& urls) {
            QTest::addRow("%s, %s table", name, fewRows == 1 ? "long" : "short") << fewRows << urls;
        };
        row("none", {"", "", ""});
        row("first", {"needle", "", ""});
        row("last", {"", "", "needle"});
        row("all", {"needle", "needle", "needle"});
        row("first in another letter case", {"NEEDLE", "", ""});
        row("last in another letter case", {"", "", "NEEDLE"});
        row("first in another letter case, then a match", {"NEEDLE", "", "needle"});
        row("a match, then last in another letter case", {"needle", "", "NEEDLE"});
    }
}

void SortFilterProxyModelSearchTest::aPreparedSearchOfManyBlocksFindsEachMatch()
{
    QFETCH(int, fewRows);
    QFETCH(QStringList, urls);
    const QScopedValueRollback<int> limit(SortFilterProxyModel::fewRows, fewRows);
    const QStringList names = {"first", "middle", "tool"};
    QJsonArray packages;
    QStringList exact;
    for (int i = 0; i < names.count(); ++i) {
        packages.append(StandIn::package(names.at(i), {{"repoid", "@System"}, {"url", urls.at(i)}}));
        if (urls.at(i) == "needle") {
            exact.append(names.at(i));
        }
        // A block has the texts of six packages.
        for (int j = 0; j < 20; ++j) {
            packages.append(StandIn::package(names.at(i) + QString::number(j),
                                             {{"repoid", "@System"}, {"description", QString(10000, 'h')}}));
        }
    }
    table->collect({}, packages, {});
    model->reset();
    proxy->setMode(Search);
    readTexts();
    for (const char* expression : {"needle", "nee.le", "[n]eedle", "needl[^a]", "^needle$", "needle|straw"}) {
        QVERIFY2(proxy->prepare({Search, ViewAll, true, true, expression}), expression);
        QVERIFY2(listed(expression) == exact, expression);
        // An expression with alternatives has no required text, so it is not searched a second time.
        const bool isHinted =
            exact.isEmpty() && urls.contains("NEEDLE") && QString(expression) != "needle|straw";
        QVERIFY2(proxy->matchesIgnoringCase() == isHinted, expression);
        // The filter finds none of these texts.
        QVERIFY2(proxy->prepare({Filter, ViewAll, true, true, expression}), expression);
        proxy->setMode(Filter);
        QVERIFY2(sortedNames(*proxy).isEmpty() && !proxy->matchesIgnoringCase(), expression);
        proxy->setMode(Search);
    }
}

void SortFilterProxyModelSearchTest::aRepeatedSearchWithoutMatchesReportsMatchesInAnotherLetterCase()
{
    table->collect({},
                   {StandIn::package("tool", {{"repoid", "@System"}}),
                    StandIn::package("shell", {{"repoid", "@System"}, {"url", "the end of a shell"}})},
                   {StandIn::package("editor")}, {StandIn::group("Games")});
    model->reset();
    proxy->setMode(Search);
    readTexts();
    // An earlier search knows the results of some records, so only the other records are compared.
    const auto isHinted = [this](StateFilter state) {
        proxy->setStateFilter(state);
        return proxy->prepare({Search, state, true, true, "A SHELL"}) && listed("A SHELL").isEmpty() &&
               proxy->matchesIgnoringCase();
    };
    QVERIFY(isHinted(ViewRemovable));
    QVERIFY(isHinted(ViewRemovable));
    QVERIFY(isHinted(ViewAll));
    QVERIFY(!isHinted(ViewInstallable));
    QVERIFY(isHinted(ViewAll));
}

void SortFilterProxyModelSearchTest::aSearchWithoutMatchesReportsMatchesInAnotherLetterCase()
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

void SortFilterProxyModelSearchTest::theSearchReadsNoFieldsOfARecordAfterTheFirstMatch()
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

QTEST_MAIN(SortFilterProxyModelSearchTest)
#include "SortFilterProxyModelSearchTest.moc"
