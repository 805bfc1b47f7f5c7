// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HSortFilterProxyModel.h"

#include <QtTest>

#include <QStandardItemModel>

#include "tests/widgets/FixedTable.h"

namespace {

// If `all` is true, this proxy lists the rows that match the expression. If `all` is false, it lists the rows
// with odd numbers. Like the state filter of the package table, `all` is not a part of the expression.
class SwitchedProxy : public HSortFilterProxyModel
{
public:
    using HSortFilterProxyModel::createSecondarySortIndex;
    using HSortFilterProxyModel::HSortFilterProxyModel;
    using HSortFilterProxyModel::lessThan;

    bool all = true;

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override
    {
        return all ? HSortFilterProxyModel::filterAcceptsRow(row, parent)
                   : sourceModel()->index(row, 0, parent).data().toInt() % 2 != 0;
    }
};

QVariantList column(const QAbstractItemModel& model, int number)
{
    QVariantList values;
    for (int row = 0; row < model.rowCount(); ++row) {
        values << model.index(row, number).data();
    }
    return values;
}

QVariantList sorted(const QVariantList& values)
{
    QVector<FixedTable::Row> rows;
    for (const QVariant& value : values) {
        rows << FixedTable::Row{value, 0};
    }
    FixedTable model(rows);
    HSortFilterProxyModel proxy(1);
    proxy.setSourceModel(&model);
    proxy.sort(0);
    return column(proxy, 0);
}

} // namespace

class HSortFilterProxyModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valuesOfEachTypeHaveTheExpectedOrder_data();
    void valuesOfEachTypeHaveTheExpectedOrder();
    void valuesOfDifferentTypesAreConvertedToTheTypeOfTheLeftValue();
    void anInvalidIndexIsSortedBeforeEveryValidIndex();
    void rowsWithEqualValuesAreOrderedByTheSecondColumn();
    void rowsWithEqualValuesAreAlsoOrderedByTheSecondColumnInDescendingOrder();
    void rowsThatAreEqualInBothColumnsKeepTheSourceOrder();
    void aSecondSortColumnOutsideTheTableHasNoEffect_data();
    void aSecondSortColumnOutsideTheTableHasNoEffect();
    void createSecondarySortIndexReturnsAnIndexInTheRowOfTheGivenIndex();
    void everyChangeOfTheFilterSortsAllRowsAgain_data();
    void everyChangeOfTheFilterSortsAllRowsAgain();
    void aNewPatternFiltersTheRowsAndKeepsTheSortOrder();
    void aNewQRegExpFiltersTheRowsAndKeepsTheSortOrder();
    void aReportedChangeOfTheFilterAppliesTheFilterAgain();
    void clearingTheProxyAppliesTheFilterAgain();
    void aProxyThatWasNeverSortedKeepsTheSourceOrder();
    void aSourceModelCanBeSetThroughTheBaseClass();
    void aSourceThatIsNoHAbstractTableModelIsSortedByOneColumnOnly();
    void theFunctionsOfAProxyWithoutASourceModelDoNothing();
    void aDeletedSourceModelIsIgnored();
};

void HSortFilterProxyModelTest::valuesOfEachTypeHaveTheExpectedOrder_data()
{
    QTest::addColumn<QVariantList>("given");
    QTest::addColumn<QVariantList>("expected");
    const auto row = [](const char* name, const QVariantList& given) {
        QVariantList expected = given;
        std::reverse(expected.begin(), expected.end());
        QTest::newRow(name) << given << expected;
    };
    // Each data row has its values in the wrong order. If the proxy compared the numbers as texts, it would
    // keep this order.
    row("int: 9 precedes 10", {10, 9});
    row("negative int", {-1, -2});
    row("unsigned int", {QVariant(4000000000U), QVariant(5U)});
    row("qlonglong", {QVariant(Q_INT64_C(10000000000)), QVariant(Q_INT64_C(9))});
    row("qulonglong", {QVariant(Q_UINT64_C(18446744073709551615)), QVariant(Q_UINT64_C(2))});
    row("double", {QVariant(1e20), QVariant(9.5)});
    row("QChar", {QVariant(QChar(0xff01)), QVariant(QChar(u'a'))});
    row("text: B precedes a", {"a", "B"});
    row("text by code unit, not by locale", {QString::fromUtf8("\u00e9"), "f"});
    row("text of digits", {"9", "10"});
    row("QDate", {QDate(10000, 1, 1), QDate(2019, 12, 31)});
    row("QTime", {QTime(12, 0), QTime(1, 0)});
    row("QDateTime",
        {QDateTime(QDate(10000, 1, 1), QTime(0, 0)), QDateTime(QDate(2019, 12, 31), QTime(0, 0))});
    row("bool as text", {true, false});
    row("float as text", {QVariant(9.5F), QVariant(10.5F)});
    row("no value as empty text", {"a", QVariant(QString())});
}

void HSortFilterProxyModelTest::valuesOfEachTypeHaveTheExpectedOrder()
{
    QFETCH(QVariantList, given);
    QFETCH(QVariantList, expected);
    QCOMPARE(sorted(given), expected);
    QCOMPARE(sorted(expected), expected);
}

void HSortFilterProxyModelTest::valuesOfDifferentTypesAreConvertedToTheTypeOfTheLeftValue()
{
    FixedTable model({{9, 0},
                      {"10", 0},
                      {QChar(u'b'), 0},
                      {int('c'), 0},
                      {QTime(21, 0), 0},
                      {QDateTime(QDate(2019, 1, 1), QTime(22, 0)), 0}});
    SwitchedProxy proxy(1);
    proxy.setSourceModel(&model);
    const QModelIndex number = model.index(0, 0);
    const QModelIndex text = model.index(1, 0);
    QVERIFY(proxy.lessThan(number, text));                         // 9 < 10
    QVERIFY(proxy.lessThan(text, number));                         // "10" < "9"
    QVERIFY(proxy.lessThan(model.index(2, 0), model.index(3, 0))); // 'b' < 'c'
    QVERIFY(proxy.lessThan(model.index(4, 0), model.index(5, 0))); // 21:00 < 22:00
}

void HSortFilterProxyModelTest::anInvalidIndexIsSortedBeforeEveryValidIndex()
{
    FixedTable model({{"a", 0}});
    SwitchedProxy proxy(1);
    proxy.setSourceModel(&model);
    QVERIFY(proxy.lessThan(QModelIndex(), model.index(0, 0)));
    QVERIFY(!proxy.lessThan(model.index(0, 0), QModelIndex()));
    QVERIFY(!proxy.lessThan(QModelIndex(), QModelIndex()));
}

void HSortFilterProxyModelTest::rowsWithEqualValuesAreOrderedByTheSecondColumn()
{
    FixedTable model({{1, "pear"}, {0, "zebra"}, {1, "apple"}, {1, "fig"}});
    HSortFilterProxyModel proxy(1);
    proxy.setSourceModel(&model);
    proxy.sort(0);
    QCOMPARE(column(proxy, 1), (QVariantList{"zebra", "apple", "fig", "pear"}));
}

void HSortFilterProxyModelTest::rowsWithEqualValuesAreAlsoOrderedByTheSecondColumnInDescendingOrder()
{
    FixedTable model({{1, "pear"}, {0, "zebra"}, {1, "apple"}, {1, "fig"}});
    HSortFilterProxyModel proxy(1);
    proxy.setSourceModel(&model);
    proxy.sort(0, Qt::DescendingOrder);
    QCOMPARE(column(proxy, 1), (QVariantList{"pear", "fig", "apple", "zebra"}));
}

void HSortFilterProxyModelTest::rowsThatAreEqualInBothColumnsKeepTheSourceOrder()
{
    FixedTable model({{2, "b", 0}, {1, "a", 1}, {1, "a", 2}, {2, "b", 3}, {1, "a", 4}}, 3);
    HSortFilterProxyModel proxy(1);
    proxy.setSourceModel(&model);
    proxy.sort(0);
    QCOMPARE(column(proxy, 2), (QVariantList{1, 2, 4, 0, 3}));
    proxy.sort(1);
    QCOMPARE(column(proxy, 2), (QVariantList{1, 2, 4, 0, 3}));
}

void HSortFilterProxyModelTest::aSecondSortColumnOutsideTheTableHasNoEffect_data()
{
    QTest::addColumn<int>("second");
    QTest::newRow("no column") << -1;
    QTest::newRow("beyond the last column") << 9;
}

void HSortFilterProxyModelTest::aSecondSortColumnOutsideTheTableHasNoEffect()
{
    QFETCH(int, second);
    FixedTable model({{1, "b"}, {1, "a"}, {0, "c"}});
    HSortFilterProxyModel proxy(second);
    proxy.setSourceModel(&model);
    proxy.sort(0);
    QCOMPARE(column(proxy, 1), (QVariantList{"c", "b", "a"}));
}

void HSortFilterProxyModelTest::createSecondarySortIndexReturnsAnIndexInTheRowOfTheGivenIndex()
{
    FixedTable model({{1, "b"}, {1, "a"}});
    SwitchedProxy proxy(1);
    QVERIFY(!proxy.createSecondarySortIndex(model.index(1, 0)).isValid());
    proxy.setSourceModel(&model);
    QCOMPARE(proxy.createSecondarySortIndex(model.index(1, 0)), model.index(1, 1));
}

using Change = void (*)(HSortFilterProxyModel&);
Q_DECLARE_METATYPE(Change)

void HSortFilterProxyModelTest::everyChangeOfTheFilterSortsAllRowsAgain_data()
{
    QTest::addColumn<Change>("change");
    const auto row = [](const char* name, Change change) { QTest::newRow(name) << change; };
    row("filterChanged", [](HSortFilterProxyModel& proxy) { proxy.filterChanged(); });
    row("clear", [](HSortFilterProxyModel& proxy) { proxy.clear(); });
    row("pattern", [](HSortFilterProxyModel& proxy) { proxy.setFilterRegExp(QString()); });
    row("expression", [](HSortFilterProxyModel& proxy) { proxy.setFilterRegExp(QRegExp()); });
}

void HSortFilterProxyModelTest::everyChangeOfTheFilterSortsAllRowsAgain()
{
    QFETCH(Change, change);
    FixedTable model({{1, "one"}, {2, "two"}, {3, "three"}});
    HSortFilterProxyModel proxy(1);
    proxy.setSourceModel(&model);
    proxy.sort(0, Qt::DescendingOrder);
    QCOMPARE(column(proxy, 0), (QVariantList{3, 2, 1}));
    model.rows[0][0] = 9; // the model does not notify the proxy
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    change(proxy);
    QCOMPARE(resets.count(), 1);
    QCOMPARE(column(proxy, 0), (QVariantList{9, 3, 2}));
    QCOMPARE(proxy.sortColumn(), 0);
    QCOMPARE(proxy.sortOrder(), Qt::DescendingOrder);
}

void HSortFilterProxyModelTest::aNewPatternFiltersTheRowsAndKeepsTheSortOrder()
{
    FixedTable model({{"bc", 0}, {"x", 0}, {"ab", 0}});
    HSortFilterProxyModel proxy(1);
    proxy.setSourceModel(&model);
    proxy.sort(0);
    proxy.setFilterRegExp(QStringLiteral("b"));
    QCOMPARE(proxy.filterRegExp().pattern(), QStringLiteral("b"));
    QCOMPARE(column(proxy, 0), (QVariantList{"ab", "bc"}));
    proxy.setFilterRegExp(QString());
    QCOMPARE(column(proxy, 0), (QVariantList{"ab", "bc", "x"}));
}

void HSortFilterProxyModelTest::aNewQRegExpFiltersTheRowsAndKeepsTheSortOrder()
{
    FixedTable model({{"BC", 0}, {"x", 0}, {"ab", 0}});
    HSortFilterProxyModel proxy(1);
    proxy.setSourceModel(&model);
    proxy.sort(0, Qt::DescendingOrder);
    const QRegExp expression(QStringLiteral("^.?b"), Qt::CaseInsensitive);
    proxy.setFilterRegExp(expression);
    QCOMPARE(proxy.filterRegExp(), expression);
    QCOMPARE(column(proxy, 0), (QVariantList{"ab", "BC"}));
}

void HSortFilterProxyModelTest::aReportedChangeOfTheFilterAppliesTheFilterAgain()
{
    FixedTable model({{3, 0}, {2, 0}, {1, 0}});
    SwitchedProxy proxy(1);
    proxy.setSourceModel(&model);
    proxy.sort(0);
    QCOMPARE(proxy.rowCount(), 3);
    proxy.all = false;
    QCOMPARE(proxy.rowCount(), 3);
    proxy.filterChanged();
    QCOMPARE(column(proxy, 0), (QVariantList{1, 3}));
}

void HSortFilterProxyModelTest::clearingTheProxyAppliesTheFilterAgain()
{
    FixedTable model({{3, 0}, {2, 0}, {1, 0}});
    SwitchedProxy proxy(1);
    proxy.setSourceModel(&model);
    proxy.sort(0);
    QCOMPARE(proxy.rowCount(), 3);
    proxy.all = false;
    proxy.clear();
    QCOMPARE(column(proxy, 0), (QVariantList{1, 3}));
}

void HSortFilterProxyModelTest::aProxyThatWasNeverSortedKeepsTheSourceOrder()
{
    FixedTable model({{3, 0}, {1, 0}, {2, 0}});
    HSortFilterProxyModel proxy(1);
    proxy.setSourceModel(&model);
    proxy.setFilterRegExp(QStringLiteral("[123]"));
    QCOMPARE(column(proxy, 0), (QVariantList{3, 1, 2}));
}

void HSortFilterProxyModelTest::aSourceModelCanBeSetThroughTheBaseClass()
{
    FixedTable model({{1, "b"}, {1, "a"}});
    HSortFilterProxyModel proxy(1);
    QAbstractProxyModel& base = proxy;
    base.setSourceModel(&model);
    proxy.sort(0);
    QCOMPARE(column(proxy, 1), (QVariantList{"a", "b"}));
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    proxy.clear();
    QCOMPARE(resets.count(), 1);
}

void HSortFilterProxyModelTest::aSourceThatIsNoHAbstractTableModelIsSortedByOneColumnOnly()
{
    QStandardItemModel model(0, 2);
    model.appendRow({new QStandardItem(QStringLiteral("x")), new QStandardItem(QStringLiteral("b"))});
    model.appendRow({new QStandardItem(QStringLiteral("x")), new QStandardItem(QStringLiteral("a"))});
    model.appendRow({new QStandardItem(QStringLiteral("w")), new QStandardItem(QStringLiteral("c"))});
    HSortFilterProxyModel proxy(1);
    proxy.setSourceModel(&model);
    proxy.sort(0);
    QCOMPARE(column(proxy, 1), (QVariantList{"c", "b", "a"}));
    proxy.setFilterRegExp(QStringLiteral("x"));
    QCOMPARE(column(proxy, 1), (QVariantList{"b", "a"}));
}

void HSortFilterProxyModelTest::theFunctionsOfAProxyWithoutASourceModelDoNothing()
{
    HSortFilterProxyModel proxy(1);
    proxy.filterChanged();
    proxy.clear();
    proxy.setFilterRegExp(QStringLiteral("a"));
    QCOMPARE(proxy.rowCount(), 0);
    QCOMPARE(proxy.filterRegExp().pattern(), QStringLiteral("a"));
}

void HSortFilterProxyModelTest::aDeletedSourceModelIsIgnored()
{
    HSortFilterProxyModel proxy(1);
    {
        FixedTable model({{1, 0}});
        proxy.setSourceModel(&model);
        QCOMPARE(proxy.rowCount(), 1);
    }
    proxy.clear();
    QCOMPARE(proxy.rowCount(), 0);
}

QTEST_MAIN(HSortFilterProxyModelTest)
#include "HSortFilterProxyModelTest.moc"
