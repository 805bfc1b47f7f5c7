// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/Preparation.h"

#include <QApplication>
#include <QThread>
#include <QtTest>

#include <algorithm>
#include <limits>
#include <memory>
#include <numeric>

#include "packagetable/SortFilterProxyModel.h"
#include "tests/packagetable/Table.h"

using namespace PackageTable;

class PreparationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { table = std::make_unique<Table>(); }
    void init()
    {
        table->collectUsual();
        model = std::make_unique<Model>(&table->yumIO);
        proxy = std::make_unique<SortFilterProxyModel>(ViewAll, true, true, &table->yumIO);
        proxy->setSourceModel(model.get());
    }
    void cleanup()
    {
        proxy.reset();
        model.reset();
    }
    void cleanupTestCase() { table.reset(); }

    void theComputationRunsOnAWorker();
    void thePreparedOrderEqualsTheOrderOfTheTable_data();
    void thePreparedOrderEqualsTheOrderOfTheTable();
    void thePreparedTextOfARowContainsTheVisibleTextsOfItsCells();
    void thePreparationFindsTheWidestTextOfATextColumnAndEachPictureOfAPictureColumn();
    void theWidestTextsAreFoundOnlyIfTheCallerRequestsThem();
    void aPreparationThatReadsRowsDuringTheCollectionHasTheSameResults_data();
    void aPreparationThatReadsRowsDuringTheCollectionHasTheSameResults();
    void theFirstRowCanBeReadDuringTheCollection();
    void namesAreSortedByTheirCharactersWhateverTheirLengthAndLetters();
    void keysAreSortedInTheSameWayWhateverTheirDistance_data();
    void keysAreSortedInTheSameWayWhateverTheirDistance();
    void nothingIsPreparedIfTheTableHasNoRecords();

private:
    std::unique_ptr<Preparation> prepared(int column, Qt::SortOrder order)
    {
        auto result = std::make_unique<Preparation>(table->yumIO, QApplication::font());
        complete(*result, column, order);
        return result;
    }
    void complete(Preparation& preparation, int column, Qt::SortOrder order)
    {
        table->yumIO.compute([&preparation, column, order] { preparation.run(column, order); });
    }
    // The visible texts of a row, separated by blanks.
    static QString textOf(const PreparedRows& rows, int row)
    {
        return QString(rows.texts.constData() + rows.textFrom[static_cast<size_t>(row)]);
    }
    void checkWidest(const Preparation& preparation);

    std::unique_ptr<Table> table;
    std::unique_ptr<Model> model;
    std::unique_ptr<SortFilterProxyModel> proxy;
};

void PreparationTest::theComputationRunsOnAWorker()
{
    QThread* thread = nullptr;
    bool served = false;
    QTimer timer;
    connect(&timer, &QTimer::timeout, [&served] { served = true; });
    timer.start(1);
    table->yumIO.compute([&thread] {
        thread = QThread::currentThread();
        QThread::msleep(300);
    });
    QVERIFY(thread != nullptr && thread != QThread::currentThread());
    QVERIFY2(served, "the event loop handled no events during the computation");
}

void PreparationTest::thePreparedOrderEqualsTheOrderOfTheTable_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<Qt::SortOrder>("order");
    for (int column = 0; column < ColumnCount; ++column) {
        QTest::addRow("column %d, ascending", column) << column << Qt::AscendingOrder;
        QTest::addRow("column %d, descending", column) << column << Qt::DescendingOrder;
    }
}

void PreparationTest::thePreparedOrderEqualsTheOrderOfTheTable()
{
    QFETCH(int, column);
    QFETCH(Qt::SortOrder, order);
    proxy->sort(column, order);
    std::vector<int> shown;
    for (int row = 0; row < proxy->rowCount(); ++row) {
        shown.push_back(proxy->mapToSource(proxy->index(row, 0)).row());
    }
    QVERIFY(shown.size() > 5);
    QCOMPARE(prepared(column, order)->rows.order, shown);
}

void PreparationTest::thePreparedTextOfARowContainsTheVisibleTextsOfItsCells()
{
    const auto preparation = prepared(NameColumn, Qt::AscendingOrder);
    const int row = table->row("editor");
    QCOMPARE(static_cast<int>(preparation->rows.textFrom.size()), table->yumIO.count());
    QCOMPARE(textOf(preparation->rows, row),
             QString("editor 3:9-4 base noarch 4.9Kb Fri Jan  2 00:00:00 1970"));
}

void PreparationTest::thePreparationFindsTheWidestTextOfATextColumnAndEachPictureOfAPictureColumn()
{
    checkWidest(*prepared(NameColumn, Qt::AscendingOrder));
}

// Checks that `widest` contains a row with the widest text of each column of texts, and a row for each
// picture.
void PreparationTest::checkWidest(const Preparation& preparation)
{
    const QFontMetrics metrics(QApplication::font());
    const auto width = [this, &metrics](int row, int column) {
        return metrics.size(0, Columns::text(*table->yumIO[row], column)).width();
    };
    for (int column = 0; column < ColumnCount; ++column) {
        if (Columns::row(column).showsPictures()) {
            QSet<int> all;
            for (int row = 0; row < table->yumIO.count(); ++row) {
                all << static_cast<int>(Columns::row(column).sortKey(*table->yumIO[row]));
            }
            QSet<int> pictures;
            for (const int row : preparation.widest[column]) {
                pictures << static_cast<int>(Columns::row(column).sortKey(*table->yumIO[row]));
            }
            QVERIFY(column != StateColumn || all.size() > 1);
            QCOMPARE(pictures, all);
            // A picture may occur both in the rows of the collection and in the other rows.
            QVERIFY(static_cast<int>(preparation.widest[column].size()) <= 2 * all.size());
            continue;
        }
        int widest = 0;
        for (int row = 0; row < table->yumIO.count(); ++row) {
            widest = qMax(widest, width(row, column));
        }
        int found = 0;
        for (const int row : preparation.widest[column]) {
            found = qMax(found, width(row, column));
        }
        QCOMPARE(found, widest);
    }
}

void PreparationTest::theWidestTextsAreFoundOnlyIfTheCallerRequestsThem()
{
    Preparation without(table->yumIO, QApplication::font(), false);
    complete(without, NameColumn, Qt::AscendingOrder);
    QVERIFY(without.widest[NameColumn].empty());
    QCOMPARE(static_cast<int>(without.rows.order.size()), table->yumIO.count());
    QVERIFY(!prepared(NameColumn, Qt::AscendingOrder)->widest[NameColumn].empty());
}

void PreparationTest::aPreparationThatReadsRowsDuringTheCollectionHasTheSameResults_data()
{
    QTest::addColumn<bool>("fitting");
    QTest::newRow("with the widest cells") << true;
    QTest::newRow("without the widest cells") << false;
}

void PreparationTest::aPreparationThatReadsRowsDuringTheCollectionHasTheSameResults()
{
    QFETCH(bool, fitting);
    Preparation early(table->yumIO, QApplication::font(), fitting);
    model.reset(); // the records are replaced
    table->collectUsual(&early);
    const size_t read = early.rows.textFrom.size();
    QVERIFY(read >= 4); // "editor", twice "lib", and "office"
    QVERIFY(read < static_cast<size_t>(table->yumIO.count()));
    complete(early, SizeColumn, Qt::DescendingOrder);
    QCOMPARE(early.widest[NameColumn].empty(), !fitting);
    const auto late = prepared(SizeColumn, Qt::DescendingOrder);
    QCOMPARE(early.rows.count, table->yumIO.count());
    QCOMPARE(early.rows.nameRanks, late->rows.nameRanks);
    QCOMPARE(early.rows.keys, late->rows.keys);
    QCOMPARE(early.rows.order, late->rows.order);
    for (int row = 0; row < table->yumIO.count(); ++row) {
        QCOMPARE(textOf(early.rows, row), textOf(late->rows, row));
    }
    if (fitting) {
        checkWidest(early);
    }
}

void PreparationTest::theFirstRowCanBeReadDuringTheCollection()
{
    Preparation early(table->yumIO, QApplication::font());
    model.reset(); // the records are replaced
    table->collect({}, {}, {StandIn::package("tool"), StandIn::package("editor")}, {}, &early);
    complete(early, NameColumn, Qt::AscendingOrder);
    QCOMPARE(early.rows.nameRanks, (std::vector<int>{1, 0}));
    QCOMPARE(early.rows.order, (std::vector<int>{1, 0}));
    QCOMPARE(static_cast<int>(early.rows.textFrom.size()), 2);
    QVERIFY(textOf(early.rows, 0).startsWith("tool "));
    QVERIFY(textOf(early.rows, 1).startsWith("editor "));
}

void PreparationTest::namesAreSortedByTheirCharactersWhateverTheirLengthAndLetters()
{
    using S = StandIn;
    const QString umlaut(0xfc);
    const QString last(0xff);
    const QString beyond(0x100);
    QStringList expected;
    // Eight and sixteen characters are the lengths of the parts that are compared at once.
    for (const QString& prefix : {QString(), QString(7, 'a'), QString(8, 'a'), QString(15, 'a'),
                                  QString(16, 'a'), QString(17, 'a'), last, beyond, last + QString(8, 'a')}) {
        for (const QString& end : {QString("a"), QString("b"), QString("az"), umlaut, last, beyond,
                                   last + "b", beyond + "a", QString(0x2603)}) {
            expected << prefix + end;
        }
    }
    expected.removeDuplicates();
    std::sort(expected.begin(), expected.end());
    QJsonArray packages;
    for (int i = 0; i < expected.count(); ++i) {
        packages << S::package(expected.at(i * 37 % expected.count()));
    }
    model.reset();
    table->collect({}, {}, packages);
    QStringList found;
    const auto preparation = prepared(NameColumn, Qt::AscendingOrder);
    for (const int row : preparation->rows.order) {
        found << table->yumIO[row]->name;
    }
    QCOMPARE(found, expected);
}

void PreparationTest::keysAreSortedInTheSameWayWhateverTheirDistance_data()
{
    QTest::addColumn<QVector<qint64>>("keys");
    constexpr qint64 least = std::numeric_limits<qint64>::min();
    constexpr qint64 greatest = std::numeric_limits<qint64>::max();
    QTest::newRow("one key") << QVector<qint64>{5};
    QTest::newRow("equal keys") << QVector<qint64>{5, 5, 5};
    QTest::newRow("near keys") << QVector<qint64>{2, 0, 3, 2, 1, 0, 2};
    QTest::newRow("near keys with gaps") << QVector<qint64>{9, 0, 4, 4, 9};
    QTest::newRow("negative near keys") << QVector<qint64>{-2, 1, -1, -2, 0};
    QTest::newRow("near keys at the least key") << QVector<qint64>{least + 1, least, least + 1};
    QTest::newRow("near keys at the greatest key") << QVector<qint64>{greatest - 1, greatest, greatest - 1};
    const auto halves = [](qint64 upper, qint64 lower) { return upper * (Q_INT64_C(1) << 32) + lower; };
    QTest::newRow("near halves of keys")
        << QVector<qint64>{halves(3, 1), halves(1, 2), halves(3, 0), halves(1, 2), halves(2, 2)};
    QTest::newRow("near halves of keys, of which one is negative")
        << QVector<qint64>{halves(0, 2), halves(-1, 1), halves(-1, 0), halves(0, 0), halves(-1, 1)};
    QTest::newRow("near upper halves of keys")
        << QVector<qint64>{halves(1, 5000), halves(0, 7), halves(1, 0)};
    QTest::newRow("distant keys") << QVector<qint64>{1000, 0, 1000, 7};
    QTest::newRow("the most distant keys") << QVector<qint64>{greatest, least, 0, greatest};
}

void PreparationTest::keysAreSortedInTheSameWayWhateverTheirDistance()
{
    QFETCH(QVector<qint64>, keys);
    std::vector<int> ascending(static_cast<size_t>(keys.count()));
    std::iota(ascending.begin(), ascending.end(), 0);
    std::vector<int> descending = ascending;
    std::stable_sort(ascending.begin(), ascending.end(),
                     [&keys](int l, int r) { return keys.at(l) < keys.at(r); });
    std::stable_sort(descending.begin(), descending.end(),
                     [&keys](int l, int r) { return keys.at(l) > keys.at(r); });
    const std::vector<qint64> given(keys.cbegin(), keys.cend());
    QCOMPARE(Preparation::orderOf(given, given.size(), Qt::AscendingOrder), ascending);
    QCOMPARE(Preparation::orderOf(given, given.size(), Qt::DescendingOrder), descending);
}

void PreparationTest::nothingIsPreparedIfTheTableHasNoRecords()
{
    table->collect({}, {}, {});
    const auto preparation = prepared(NameColumn, Qt::AscendingOrder);
    QCOMPARE(preparation->rows.count, 0);
    QVERIFY(preparation->rows.order.empty());
    QVERIFY(preparation->widest[NameColumn].empty());
}

QTEST_MAIN(PreparationTest)
#include "PreparationTest.moc"
