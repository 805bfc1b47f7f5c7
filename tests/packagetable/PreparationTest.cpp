// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/Preparation.h"

#include <QApplication>
#include <QThread>
#include <QtTest>

#include <memory>

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
    void nothingIsPreparedIfTheTableHasNoRecords();

private:
    std::unique_ptr<Preparation> prepared(int column, Qt::SortOrder order)
    {
        auto result = std::make_unique<Preparation>(table->yumIO, column, order, QApplication::font());
        table->yumIO.compute([&result] { result->run(); });
        return result;
    }

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
    QCOMPARE(
        QString(preparation->rows.texts.constData() + preparation->rows.textFrom[static_cast<size_t>(row)]),
        QString("editor 3:9-4 base noarch 4.9Kb Fri Jan  2 00:00:00 1970"));
}

void PreparationTest::thePreparationFindsTheWidestTextOfATextColumnAndEachPictureOfAPictureColumn()
{
    const auto preparation = prepared(NameColumn, Qt::AscendingOrder);
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
            for (const int row : preparation->widest[column]) {
                pictures << static_cast<int>(Columns::row(column).sortKey(*table->yumIO[row]));
            }
            QVERIFY(column != StateColumn || all.size() > 1);
            QCOMPARE(pictures, all);
            QCOMPARE(static_cast<int>(preparation->widest[column].size()), all.size());
            continue;
        }
        int widest = 0;
        for (int row = 0; row < table->yumIO.count(); ++row) {
            widest = qMax(widest, width(row, column));
        }
        int found = 0;
        for (const int row : preparation->widest[column]) {
            found = qMax(found, width(row, column));
        }
        QCOMPARE(found, widest);
    }
}

void PreparationTest::theWidestTextsAreFoundOnlyIfTheCallerRequestsThem()
{
    Preparation preparation(table->yumIO, NameColumn, Qt::AscendingOrder, QApplication::font());
    preparation.run(false);
    QVERIFY(preparation.widest[NameColumn].empty());
    QCOMPARE(static_cast<int>(preparation.rows.order.size()), table->yumIO.count());
    preparation.run(true);
    QVERIFY(!preparation.widest[NameColumn].empty());
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
