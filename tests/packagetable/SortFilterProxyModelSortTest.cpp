// SPDX-License-Identifier: GPL-2.0-or-later

#include <algorithm>

#include "tests/packagetable/FilteredTable.h"

using namespace PackageTable;

// Tests of the order of the rows.
class SortFilterProxyModelSortTest : public FilteredTable
{
    Q_OBJECT

private Q_SLOTS:
    void eachColumnSortsTheRowsByItsTextsOrNumbers_data();
    void eachColumnSortsTheRowsByItsTextsOrNumbers();
    void sizesAreComparedAsSigned32BitIntegers();
    void buildTimesAreComparedAsSigned32BitIntegers();
    void rowsWithEqualValuesAreSortedByName_data();
    void rowsWithEqualValuesAreSortedByName();
    void rowsAreOrderedByTheirSortKeysOrTexts_data();
    void rowsAreOrderedByTheirSortKeysOrTexts();
    void anInvalidIndexIsSortedBeforeEveryRow();
    void theNextResetOfTheModelUsesTheOrderThatAWorkerHasPrepared();
    void aPreparedOrderIsIgnoredIfTheRecordsOrTheSortOrderHaveChanged_data();
    void aPreparedOrderIsIgnoredIfTheRecordsOrTheSortOrderHaveChanged();
};

void SortFilterProxyModelSortTest::eachColumnSortsTheRowsByItsTextsOrNumbers_data()
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

void SortFilterProxyModelSortTest::eachColumnSortsTheRowsByItsTextsOrNumbers()
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

void SortFilterProxyModelSortTest::sizesAreComparedAsSigned32BitIntegers()
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

void SortFilterProxyModelSortTest::buildTimesAreComparedAsSigned32BitIntegers()
{
    table->collect({}, {},
                   {StandIn::package("a", {{"buildtime", 2147483648.0}}),
                    StandIn::package("b", {{"buildtime", 2147483647.0}}),
                    StandIn::package("c", {{"buildtime", 4294967296.0}}),
                    StandIn::package("d", {{"buildtime", 0}})});
    model->reset();
    QCOMPARE(inOrder(BuildTimeColumn), (QStringList{"a", "c", "d", "b"}));
}

void SortFilterProxyModelSortTest::rowsWithEqualValuesAreSortedByName_data()
{
    QTest::addColumn<int>("column");
    for (int column = 0; column < ColumnCount; ++column) {
        QTest::addRow("column %d", column) << column;
    }
}

void SortFilterProxyModelSortTest::rowsWithEqualValuesAreSortedByName()
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

void SortFilterProxyModelSortTest::rowsAreOrderedByTheirSortKeysOrTexts_data()
{
    rowsWithEqualValuesAreSortedByName_data();
}

void SortFilterProxyModelSortTest::rowsAreOrderedByTheirSortKeysOrTexts()
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

void SortFilterProxyModelSortTest::anInvalidIndexIsSortedBeforeEveryRow()
{
    QVERIFY(!proxy->lessThan(QModelIndex(), QModelIndex()));
    QVERIFY(!proxy->lessThan(model->index(0, NameColumn), QModelIndex()));
    QVERIFY(proxy->lessThan(QModelIndex(), model->index(0, NameColumn)));
}

void SortFilterProxyModelSortTest::theNextResetOfTheModelUsesTheOrderThatAWorkerHasPrepared()
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

void SortFilterProxyModelSortTest::aPreparedOrderIsIgnoredIfTheRecordsOrTheSortOrderHaveChanged_data()
{
    QTest::addColumn<int>("more");
    QTest::addColumn<int>("column");
    QTest::addColumn<Qt::SortOrder>("order");
    QTest::addRow("one more record") << 1 << int(NameColumn) << Qt::AscendingOrder;
    QTest::addRow("different sort column") << 0 << int(VersionColumn) << Qt::AscendingOrder;
    QTest::addRow("descending order") << 0 << int(NameColumn) << Qt::DescendingOrder;
}

void SortFilterProxyModelSortTest::aPreparedOrderIsIgnoredIfTheRecordsOrTheSortOrderHaveChanged()
{
    QFETCH(int, more);
    QFETCH(int, column);
    QFETCH(Qt::SortOrder, order);
    proxy->sort(NameColumn);
    const QStringList before = names(*proxy);
    Preparation other(table->yumIO, QFont());
    other.run(column, order);
    other.rows.count += more;
    proxy->setPrepared(other.rows);
    model->reset();
    QCOMPARE(names(*proxy), before);
}

QTEST_MAIN(SortFilterProxyModelSortTest)
#include "SortFilterProxyModelSortTest.moc"
