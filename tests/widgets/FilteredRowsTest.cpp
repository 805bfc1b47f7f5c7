// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/FilteredRows.h"

#include <QDateTime>
#include <QtTest>

#include "tests/widgets/FixedTable.h"

namespace {

// In column 0 of this table, the searched texts differ from the displayed texts. In column 1, the sorted
// values differ from the displayed values.
class Keyed : public FixedTable
{
public:
    using FixedTable::FixedTable;

    QVariant data(const QModelIndex& index, int role) const override
    {
        if (role == FilteredRows::SearchRole && index.column() == 0) {
            return rows.at(index.row()).value(3);
        }
        return role == FilteredRows::SortRole && index.column() == 1
                   ? QVariant(QDateTime::fromSecsSinceEpoch(rows.at(index.row()).value(2).toLongLong()))
                   : FixedTable::data(index, role);
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        return orientation == Qt::Horizontal && role == Qt::DisplayRole
                   ? QVariant(QStringLiteral("column %1").arg(section))
                   : QVariant();
    }
    void reset(const QVector<Row>& values)
    {
        beginResetModel();
        rows = values;
        endResetModel();
    }
};

QStringList firstColumn(const FilteredRows& rows)
{
    QStringList texts;
    for (int row = 0; row < rows.rowCount(); ++row) {
        texts << rows.index(row, 0).data().toString();
    }
    return texts;
}

// The C library needs minutes to compare this expression with difficultText().
const QString difficult = QStringLiteral("(a*)*\\1b");

QString difficultText()
{
    return QString(300, 'a') + "xb";
}

} // namespace

class FilteredRowsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyRowIsListedIfNoExpressionIsSet();
    void theExpressionMatchesTheJoinedTextsOfAllColumns_data();
    void theExpressionMatchesTheJoinedTextsOfAllColumns();
    void theExpressionAlsoMatchesTextThatIsNotShown();
    void anInvalidExpressionListsNothingAndHasAnErrorText();
    void rowsAreSortedByTheValueOfEachSortKey();
    void rowsWithEqualSortKeysKeepTheirOrder();
    void rowIndexesAreMappedToTheSourceModelAndBack();
    void rowsAreFilteredAndSortedAgainWhenTheSourceChanges();
    void aSignalReportsChangedCellsOfListedRows();
    void theHeaderShowsTheTitlesOfTheSourceEvenIfNoRowIsListed();
    void noRowIsListedIfNoSourceIsSet();
    void anExpressionWithABackReferenceIsComparedByOtherThreads();
    void sortingDuringAComparisonSortsTheListedRows();
    void anEquivalentExpressionIsNotComparedAgain();
    void theNewTextIsComparedIfACellChangesDuringAComparison();
    void theSourceCanBeDeletedDuringAComparison();
};

void FilteredRowsTest::everyRowIsListedIfNoExpressionIsSet()
{
    FixedTable table({{"b", 1}, {"a", 2}, {"c", 3}});
    FilteredRows rows;
    rows.setSourceModel(&table);
    QCOMPARE(firstColumn(rows), QStringList({"b", "a", "c"}));
    rows.setExpression(".*");
    QCOMPARE(firstColumn(rows), QStringList({"b", "a", "c"}));
    QVERIFY(rows.isValidExpression());
    QCOMPARE(rows.columnCount(), 2);
    QVERIFY(!rows.parent(rows.index(0, 0)).isValid());
    QCOMPARE(rows.rowCount(rows.index(0, 0)), 0);
}

void FilteredRowsTest::theExpressionMatchesTheJoinedTextsOfAllColumns_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("a text") << "kernel" << QStringList({"kernel", "kernel-core"});
    QTest::newRow("different letter case") << "Kernel" << QStringList();
    QTest::newRow("text in another column") << "bash" << QStringList({"shell"});
    QTest::newRow("text across two columns") << "^kernel 7$" << QStringList({"kernel"});
    QTest::newRow("alternatives") << "^(shell|kernel) " << QStringList({"kernel", "shell"});
    QTest::newRow("wildcards around a text") << ".*core.*" << QStringList({"kernel-core"});
    QTest::newRow("letters beyond ASCII")
        << QString::fromUtf8("ü.e") << QStringList({QString::fromUtf8("Prüfen")});
}

void FilteredRowsTest::theExpressionMatchesTheJoinedTextsOfAllColumns()
{
    QFETCH(QString, expression);
    QFETCH(QStringList, expected);
    FixedTable table(
        {{"kernel", 7}, {"shell", "bash"}, {"kernel-core", 7}, {QString::fromUtf8("Prüfen"), 1}});
    FilteredRows rows;
    rows.setSourceModel(&table);
    rows.setExpression(expression);
    QCOMPARE(firstColumn(rows), expected);
    QCOMPARE(rows.expressionFault(), QString());
}

void FilteredRowsTest::theExpressionAlsoMatchesTextThatIsNotShown()
{
    Keyed table({{1, "a", 0, "kernel shell"}, {2, "b", 0}, {3, "kernel", 0, ""}});
    FilteredRows rows;
    rows.setSourceModel(&table);
    rows.setExpression("kernel");
    QCOMPARE(firstColumn(rows), QStringList({"1", "3"}));
    rows.setExpression("^1 a kernel shell$");
    QCOMPARE(firstColumn(rows), QStringList({"1"}));
}

void FilteredRowsTest::anInvalidExpressionListsNothingAndHasAnErrorText()
{
    FixedTable table({{"a", 1}});
    FilteredRows rows;
    rows.setSourceModel(&table);
    rows.setExpression("[");
    QCOMPARE(rows.rowCount(), 0);
    QVERIFY(!rows.isValidExpression());
    QVERIFY(!rows.expressionFault().isEmpty());
    rows.setExpression("");
    QCOMPARE(rows.rowCount(), 1);
    QCOMPARE(rows.expressionFault(), QString());
}

void FilteredRowsTest::rowsAreSortedByTheValueOfEachSortKey()
{
    Keyed table({{10, "Monday", 300}, {9, "Friday", 100}, {100, "Sunday", 200}});
    FilteredRows rows;
    rows.setSourceModel(&table);
    rows.sort(0, Qt::AscendingOrder);
    QCOMPARE(firstColumn(rows), QStringList({"9", "10", "100"}));
    rows.sort(0, Qt::DescendingOrder);
    QCOMPARE(firstColumn(rows), QStringList({"100", "10", "9"}));
    rows.sort(1, Qt::AscendingOrder);
    QCOMPARE(firstColumn(rows), QStringList({"9", "100", "10"}));
    rows.sort(-1);
    QCOMPARE(firstColumn(rows), QStringList({"10", "9", "100"}));

    FixedTable texts({{"beta", 1}, {"Alpha", 2}, {"gamma", 3}});
    rows.setSourceModel(&texts);
    rows.sort(0, Qt::AscendingOrder);
    QCOMPARE(firstColumn(rows), QStringList({"Alpha", "beta", "gamma"}));
}

void FilteredRowsTest::rowsWithEqualSortKeysKeepTheirOrder()
{
    FixedTable table({{"c", 1}, {"a", 1}, {"b", 0}});
    FilteredRows rows;
    rows.setSourceModel(&table);
    rows.sort(1, Qt::AscendingOrder);
    QCOMPARE(firstColumn(rows), QStringList({"b", "c", "a"}));
    rows.sort(1, Qt::DescendingOrder);
    QCOMPARE(firstColumn(rows), QStringList({"c", "a", "b"}));
}

void FilteredRowsTest::rowIndexesAreMappedToTheSourceModelAndBack()
{
    FixedTable table({{"b", 1}, {"x", 2}, {"a", 3}});
    FilteredRows rows;
    rows.setSourceModel(&table);
    rows.setExpression("^[ab]");
    rows.sort(0, Qt::AscendingOrder);
    QCOMPARE(rows.mapToSource(rows.index(0, 1)), table.index(2, 1));
    QCOMPARE(rows.mapFromSource(table.index(0, 0)), rows.index(1, 0));
    QVERIFY(!rows.mapFromSource(table.index(1, 0)).isValid());
    QVERIFY(!rows.mapToSource(QModelIndex()).isValid());
    QVERIFY(!rows.mapFromSource(QModelIndex()).isValid());
    QCOMPARE(rows.index(0, 0).sibling(1, 1).data(), QVariant(1));
}

void FilteredRowsTest::rowsAreFilteredAndSortedAgainWhenTheSourceChanges()
{
    Keyed table({{"b1", 1, 0}, {"c", 2, 0}});
    FilteredRows rows;
    rows.setSourceModel(&table);
    rows.setExpression("b");
    rows.sort(0, Qt::AscendingOrder);
    table.append({"b0", 3, 0});
    QCOMPARE(firstColumn(rows), QStringList({"b0", "b1"}));
    table.reset({{"b9", 1, 0}, {"b2", 1, 0}, {"d", 1, 0}});
    QCOMPARE(firstColumn(rows), QStringList({"b2", "b9"}));
    table.reset({});
    QCOMPARE(rows.rowCount(), 0);
}

void FilteredRowsTest::aSignalReportsChangedCellsOfListedRows()
{
    FixedTable table({{"x", 1}, {"b", 2}});
    FilteredRows rows;
    rows.setSourceModel(&table);
    rows.setExpression("b");
    QSignalSpy spy(&rows, SIGNAL(dataChanged(const QModelIndex&, const QModelIndex&, const QVector<int>&)));
    Q_EMIT table.dataChanged(table.index(0, 0), table.index(1, 1));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.first().at(0).toModelIndex(), rows.index(0, 0));
    QCOMPARE(spy.first().at(1).toModelIndex(), rows.index(0, 1));
}

void FilteredRowsTest::theHeaderShowsTheTitlesOfTheSourceEvenIfNoRowIsListed()
{
    Keyed table;
    FilteredRows rows;
    rows.setSourceModel(&table);
    QCOMPARE(rows.headerData(1, Qt::Horizontal), QVariant("column 1"));
    QVERIFY(!rows.headerData(0, Qt::Vertical).isValid());
}

void FilteredRowsTest::noRowIsListedIfNoSourceIsSet()
{
    FilteredRows rows;
    QCOMPARE(rows.rowCount(), 0);
    QCOMPARE(rows.columnCount(), 0);
    QVERIFY(!rows.headerData(0, Qt::Horizontal).isValid());
    {
        FixedTable table({{"a", 1}});
        rows.setSourceModel(&table);
        QCOMPARE(rows.rowCount(), 1);
    }
    QCOMPARE(rows.rowCount(), 0);
    QVERIFY(!rows.index(0, 0).isValid());
}

void FilteredRowsTest::anExpressionWithABackReferenceIsComparedByOtherThreads()
{
    FixedTable table({{QString(100, 'a') + "xb", 1}, {"aab", 2}, {"kernel", 3}});
    FilteredRows rows;
    rows.setSourceModel(&table);
    QSignalSpy spy(&rows, SIGNAL(longComparison(bool)));
    rows.setExpression("[kx]");
    rows.setExpression("(a*)*\\1b");
    QVERIFY(rows.isComparing());
    QCOMPARE(rows.listedExpression(), QString("[kx]"));
    QCOMPARE(rows.rowCount(), 2);
    QTRY_VERIFY_WITH_TIMEOUT(!rows.isComparing(), 300000);
    QCOMPARE(rows.listedExpression(), QString("(a*)*\\1b"));
    QCOMPARE(rows.rowCount(), 2);
    QCOMPARE(rows.index(1, 0).data().toString(), QString("aab"));
    QCOMPARE(spy.count(), 2);
    QCOMPARE(spy.at(0).at(0).toBool(), true);
    QCOMPARE(spy.at(1).at(0).toBool(), false);
    rows.setExpression("(a*)*\\1)["); // an invalid expression is never compared
    QVERIFY(!rows.isComparing());
    QCOMPARE(rows.rowCount(), 0);
}

void FilteredRowsTest::sortingDuringAComparisonSortsTheListedRows()
{
    FixedTable table({{"b", 1}, {difficultText(), 2}, {"a", 3}});
    FilteredRows rows;
    rows.setSourceModel(&table);
    rows.setExpression("^[ab] ");
    rows.setExpression(difficult);
    rows.sort(0, Qt::AscendingOrder);
    QVERIFY(rows.isComparing());
    QCOMPARE(firstColumn(rows), QStringList({"a", "b"}));
}

void FilteredRowsTest::anEquivalentExpressionIsNotComparedAgain()
{
    FixedTable table({{"b", 1}, {difficultText(), 2}});
    FilteredRows rows;
    rows.setSourceModel(&table);
    rows.setExpression("^b");
    rows.setExpression(difficult);
    QSignalSpy spy(&rows, SIGNAL(modelReset()));
    rows.setExpression("^b.*");
    QVERIFY(!rows.isComparing());
    QCOMPARE(spy.count(), 0);
    QCOMPARE(firstColumn(rows), QStringList({"b"}));
    QCOMPARE(rows.listedExpression(), QString("^b.*"));
    // After a change to a text, the same expression may match different rows than before.
    table.rows[0][0] = "x";
    Q_EMIT table.dataChanged(table.index(0, 0), table.index(0, 0));
    QCOMPARE(rows.rowCount(), 1);
    rows.setExpression("^b");
    QCOMPARE(rows.rowCount(), 0);
}

void FilteredRowsTest::theNewTextIsComparedIfACellChangesDuringAComparison()
{
    FixedTable table({{"b", 1}, {difficultText(), 2}});
    FilteredRows rows;
    rows.setSourceModel(&table);
    rows.setExpression(difficult);
    QVERIFY(rows.isComparing());
    table.rows[0][0] = "x";
    table.rows[1][0] = "aab";
    Q_EMIT table.dataChanged(table.index(0, 0), table.index(1, 0));
    QTRY_VERIFY(!rows.isComparing());
    QCOMPARE(firstColumn(rows), QStringList({"aab"}));
}

void FilteredRowsTest::theSourceCanBeDeletedDuringAComparison()
{
    FilteredRows rows;
    {
        FixedTable table({{QString(80, 'a') + "xb", 1}, {"aab", 2}});
        rows.setSourceModel(&table);
        rows.setExpression(difficult);
        QVERIFY(rows.isComparing());
    }
    QTRY_VERIFY_WITH_TIMEOUT(!rows.isComparing(), 300000);
    QCOMPARE(rows.rowCount(), 0);
}

QTEST_MAIN(FilteredRowsTest)
#include "FilteredRowsTest.moc"
