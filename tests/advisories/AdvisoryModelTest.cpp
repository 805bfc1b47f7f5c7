// SPDX-License-Identifier: GPL-2.0-or-later

#include "advisories/AdvisoryModel.h"

#include <QtTest>

#include "tests/advisories/Made.h"
#include "widgets/Colors.h"
#include "widgets/FilteredRows.h"

class AdvisoryModelTest : public QObject
{
    Q_OBJECT

private:
    static QVector<Advisory> some()
    {
        Advisory first = advisory("A-1", true, {packageOf("tool"), packageOf("lib", Advisory::IsInstalled)});
        first.severity = "Important/Sec.";
        first.rank = 4;
        first.cves = QStringList{"CVE-2024-1", "CVE-2024-2"};
        first.bugs = QStringList{"17 - Wrong sums"};
        first.description = "<b>All</b> about it.";
        return {first, advisory("B-2", false, {packageOf("lib", Advisory::IsInstalled)})};
    }
    static QStringList row(const AdvisoryModel& model, int row)
    {
        QStringList texts;
        for (int column = 0; column < model.columnCount(); ++column) {
            texts << model.index(row, column).data().toString();
        }
        return texts;
    }

private Q_SLOTS:
    void eachRowShowsOneAdvisory()
    {
        AdvisoryModel model;
        QCOMPARE(model.rowCount(), 0);
        QSignalSpy reset(&model, SIGNAL(modelReset()));
        model.setAdvisories(some());
        QCOMPARE(reset.count(), 1);
        QCOMPARE(row(model, 0), (QStringList{"A-1", "security", "Important/Sec.", "2024-02-20",
                                             "Not Installed", "About A-1"}));
        QCOMPARE(row(model, 1), (QStringList{"B-2", "bugfix", "", "2024-02-20", "Installed", "About B-2"}));
        QCOMPARE(model.rowOf("B-2"), 1);
        QCOMPARE(model.rowOf("C-3"), -1);
        QVERIFY(!model.data(QModelIndex()).isValid());
    }

    void everyColumnHasATitleAndAToolTip()
    {
        const AdvisoryModel model;
        QStringList titles;
        for (int column = 0; column < model.columnCount(); ++column) {
            titles << model.headerData(column, Qt::Horizontal).toString();
            QVERIFY(!model.headerData(column, Qt::Horizontal, Qt::ToolTipRole).toString().isEmpty());
        }
        QCOMPARE(titles, (QStringList{"Advisory", "Kind", "Severity", "Date", "State", "Title"}));
        QVERIFY(!model.headerData(0, Qt::Vertical).isValid());
        QVERIFY(!model.headerData(model.columnCount(), Qt::Horizontal).isValid());
    }

    void severitiesAreSortedByTheirRank()
    {
        AdvisoryModel model;
        model.setAdvisories(some());
        QCOMPARE(model.index(0, AdvisoryModel::Severity).data(FilteredRows::SortRole), QVariant(4));
        QCOMPARE(model.index(1, AdvisoryModel::Severity).data(FilteredRows::SortRole), QVariant(0));
        QVERIFY(!model.index(0, AdvisoryModel::Id).data(FilteredRows::SortRole).isValid());
    }

    void theExpressionMatchesEvenTextsThatTheRowsDoNotShow()
    {
        AdvisoryModel model;
        model.setAdvisories(some());
        FilteredRows rows;
        rows.setSourceModel(&model);
        for (const char* expression :
             {"CVE-2024-2", "^A-1 ", "Wrong sums", "tool-2-1[.]x86_64", "about it", "security .*Not Inst"}) {
            rows.setExpression(expression);
            QCOMPARE(rows.rowCount(), 1);
            QCOMPARE(rows.index(0, 0).data(), QVariant("A-1"));
        }
        rows.setExpression("lib-2-1");
        QCOMPARE(rows.rowCount(), 2);
    }

    void anAdvisoryWithAMissingSecurityUpdateIsRed()
    {
        AdvisoryModel model;
        QVector<Advisory> advisories = some();
        advisories.append(advisory("C-3", true, {packageOf("lib", Advisory::IsInstalled)}));
        advisories.append(advisory("D-4", false, {packageOf("tool")}));
        model.setAdvisories(advisories);
        model.setBackground(Qt::white);
        QCOMPARE(model.index(0, 0).data(Qt::ForegroundRole).value<QColor>(),
                 QColor(Colors::readable(Colors::error(), Qt::white)));
        for (const int other : {1, 2, 3}) {
            QVERIFY(!model.index(other, 0).data(Qt::ForegroundRole).isValid());
        }
    }

    void theDetailsTextContainsAllPartsOfAnAdvisory()
    {
        AdvisoryModel model;
        model.setAdvisories(some());
        QCOMPARE(model.details(0),
                 QString("A-1: About A-1\n\nPackages:\n"
                         "  tool-2-1.x86_64: not installed; the update 2-1 is available\n"
                         "  lib-2-1.x86_64: installed\n\nCVE:\n  CVE-2024-1\n  CVE-2024-2\n\n"
                         "Bugs:\n  17 - Wrong sums\n\n<b>All</b> about it."));
        QCOMPARE(model.details(1), QString("B-2: About B-2\n\nPackages:\n  lib-2-1.x86_64: installed"));
    }
};

QTEST_MAIN(AdvisoryModelTest)
#include "AdvisoryModelTest.moc"
