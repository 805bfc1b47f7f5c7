// SPDX-License-Identifier: GPL-2.0-or-later

#include "history/HistoryModel.h"

#include <QtTest>

#include "widgets/Colors.h"
#include "widgets/FilteredRows.h"

class HistoryModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachRowShowsTheTextsOfItsTransaction();
    void everyColumnHasATitleAndAToolTip();
    void numericColumnsAndTheTimeColumnAreNotSortedAsTexts();
    void theResultsOfFailedAndInterruptedTransactionsAreColoured();
    void theExpressionMatchesPackageNamesThatTheRowsDoNotShow();
    void theRowOfATransactionIsFoundByItsNumber();

private:
    static HistoryRecord record(qint64 number, HistoryRecord::Result result = HistoryRecord::Succeeded);
    static QString cell(const HistoryModel& model, int row, int column)
    {
        return model.index(row, column).data().toString();
    }
};

HistoryRecord HistoryModelTest::record(qint64 number, HistoryRecord::Result result)
{
    HistoryRecord made;
    made.number = number;
    made.begin = 86400 * 365 + 60 * number;
    made.user = QStringLiteral("root");
    made.commandLine = QStringLiteral("dnf install shell");
    made.changes = QStringLiteral("Install: shell");
    made.names = QStringLiteral("shell libshell");
    made.result = result;
    made.outputLines = static_cast<int>(number) - 1;
    return made;
}

void HistoryModelTest::eachRowShowsTheTextsOfItsTransaction()
{
    HistoryModel model;
    QCOMPARE(model.rowCount(), 0);
    model.setRecords({record(3), record(2, HistoryRecord::Failed), record(1, HistoryRecord::Interrupted)});
    QCOMPARE(model.rowCount(), 3);
    QCOMPARE(model.columnCount(), int(HistoryModel::ColumnCount));
    QStringList texts;
    for (int column = 0; column < model.columnCount(); ++column) {
        texts << cell(model, 0, column);
    }
    QCOMPARE(texts, (QStringList{"3", "1971-01-01 00:03", "root", "dnf install shell", "Install: shell",
                                 "Succeeded", "2"}));
    QCOMPARE(cell(model, 1, HistoryModel::Result), QString("Failed"));
    QCOMPARE(cell(model, 2, HistoryModel::Result), QString("Interrupted"));
    QCOMPARE(cell(model, 2, HistoryModel::Output), QString());
    QVERIFY(!model.data(QModelIndex()).isValid());
}

void HistoryModelTest::everyColumnHasATitleAndAToolTip()
{
    const HistoryModel model;
    QStringList titles;
    for (int column = 0; column < model.columnCount(); ++column) {
        titles << model.headerData(column, Qt::Horizontal).toString();
        QVERIFY(model.headerData(column, Qt::Horizontal, Qt::ToolTipRole).toString().length() > 10);
    }
    QVERIFY(model.headerData(HistoryModel::Changes, Qt::Horizontal, Qt::ToolTipRole)
                .toString()
                .contains("\"(failed)\" marks changes that were not made"));
    QCOMPARE(titles, (QStringList{"Number", "Time", "User", "Command Line", "Changes", "Result", "Output"}));
    QVERIFY(!model.headerData(0, Qt::Vertical).isValid());
    QVERIFY(!model.headerData(HistoryModel::ColumnCount, Qt::Horizontal).isValid());
}

void HistoryModelTest::numericColumnsAndTheTimeColumnAreNotSortedAsTexts()
{
    HistoryModel model;
    model.setRecords({record(100), record(9), record(20)});
    FilteredRows rows;
    rows.setSourceModel(&model);
    for (int column : {HistoryModel::Number, HistoryModel::Time, HistoryModel::Output}) {
        rows.sort(column, Qt::AscendingOrder);
        QCOMPARE(rows.index(0, 0).data().toString(), QString("9"));
        QCOMPARE(rows.index(2, 0).data().toString(), QString("100"));
    }
}

void HistoryModelTest::theResultsOfFailedAndInterruptedTransactionsAreColoured()
{
    HistoryModel model;
    model.setRecords({record(3), record(2, HistoryRecord::Failed), record(1, HistoryRecord::Interrupted)});
    const auto colour = [&model](int row, int column) {
        return model.index(row, column).data(Qt::ForegroundRole).value<QColor>();
    };
    QVERIFY(!model.index(0, HistoryModel::Result).data(Qt::ForegroundRole).isValid());
    QCOMPARE(colour(1, HistoryModel::Result), QColor(Colors::error()));
    QVERIFY(colour(2, HistoryModel::Result).isValid());
    QVERIFY(!model.index(1, HistoryModel::Changes).data(Qt::ForegroundRole).isValid());
    model.setBackground(Qt::black);
    QCOMPARE(colour(1, HistoryModel::Result), QColor(Colors::readable(Colors::error(), Qt::black)));
}

void HistoryModelTest::theExpressionMatchesPackageNamesThatTheRowsDoNotShow()
{
    HistoryModel model;
    model.setRecords({record(1)});
    FilteredRows rows;
    rows.setSourceModel(&model);
    rows.setExpression("libshell");
    QCOMPARE(rows.rowCount(), 1);
    for (int column = 0; column < model.columnCount(); ++column) {
        QVERIFY(!cell(model, 0, column).contains("libshell"));
    }
}

void HistoryModelTest::theRowOfATransactionIsFoundByItsNumber()
{
    HistoryModel model;
    model.setRecords({record(7), record(5)});
    QCOMPARE(model.rowOf(5), 1);
    QCOMPARE(model.rowOf(6), -1);
    QCOMPARE(model.record(1).number, qint64(5));
}

QTEST_MAIN(HistoryModelTest)
#include "HistoryModelTest.moc"
