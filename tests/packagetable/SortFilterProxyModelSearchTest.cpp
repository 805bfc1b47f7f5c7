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
