// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HAbstractTableModel.h"

#include <QtTest>
#include <QtWidgets>

#include "tests/widgets/FixedTable.h"

class HAbstractTableModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void forceSortColumnRediscoveryResetsTheModelOnlyOnce();
    void aViewShowsChangedRowsAfterForceSortColumnRediscovery();
};

void HAbstractTableModelTest::forceSortColumnRediscoveryResetsTheModelOnlyOnce()
{
    FixedTable model({{1, 2}});
    QStringList order;
    connect(&model, &QAbstractItemModel::modelAboutToBeReset, [&order] { order << QStringLiteral("about"); });
    connect(&model, &QAbstractItemModel::modelReset, [&order] { order << QStringLiteral("reset"); });
    model.forceSortColumnRediscovery();
    QCOMPARE(order, (QStringList{QStringLiteral("about"), QStringLiteral("reset")}));
}

void HAbstractTableModelTest::aViewShowsChangedRowsAfterForceSortColumnRediscovery()
{
    FixedTable model({{1, 2}});
    QTableView view;
    view.setModel(&model);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    model.rows.append({3, 4}); // the model does not notify the view
    QCOMPARE(view.verticalHeader()->count(), 1);
    model.forceSortColumnRediscovery();
    QCOMPARE(view.verticalHeader()->count(), 2);
}

QTEST_MAIN(HAbstractTableModelTest)
#include "HAbstractTableModelTest.moc"
