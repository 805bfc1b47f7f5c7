// SPDX-License-Identifier: GPL-2.0-or-later

#include <QLineEdit>

#include "tests/packagetable/Described.h"
#include "tests/packagetable/ShownView.h"

using namespace PackageTable;

// Tests of the current row, the selected rows and the focus.
class ViewRowsTest : public ShownView
{
    Q_OBJECT

private Q_SLOTS:
    void aSignalReportsAChangeOfTheCurrentRow();
    void noSignalIsEmittedIfOnlyTheCurrentColumnChanges();
    void aSignalReportsMinusOneIfTheCurrentRowIsFilteredOut();
    void theSelectedRowsAreIndexesOfTheSourceModel();
    void theTabKeyMovesTheFocusOutOfTheTable();
    void theViewDescribesTheCurrentRow();
    void theEnterKeyDescribesTheCurrentRow();
    void aDoubleClickDescribesTheRow();
    void controlHomeAndControlEndReachTheFirstAndTheLastRow();
    void gettingTheFocusDoesNotMakeARowCurrent();
};

void ViewRowsTest::aSignalReportsAChangeOfTheCurrentRow()
{
    QSignalSpy spy(view, SIGNAL(currentChanged(int, int)));
    shown->click("office", NameColumn);
    QCOMPARE(spy.value(0), (QList<QVariant>{table->row("office"), -1}));
    QTest::keyClick(view, Qt::Key_Down);
    QCOMPARE(spy.value(1), (QList<QVariant>{table->row("shell"), table->row("office")}));
    view->setCurrentIndex(QModelIndex());
    QCOMPARE(spy.value(2), (QList<QVariant>{-1, table->row("shell")}));
    QCOMPARE(spy.count(), 3);
}

void ViewRowsTest::noSignalIsEmittedIfOnlyTheCurrentColumnChanges()
{
    shown->click("office", NameColumn);
    QSignalSpy spy(view, SIGNAL(currentChanged(int, int)));
    QTest::keyClick(view, Qt::Key_Right);
    QCOMPARE(view->currentIndex().column(), int(VersionColumn));
    QCOMPARE(spy.count(), 0);
}

void ViewRowsTest::aSignalReportsMinusOneIfTheCurrentRowIsFilteredOut()
{
    shown->click("office", NameColumn);
    QSignalSpy spy(view, SIGNAL(currentChanged(int, int)));
    shown->proxy.setFilterRegExp("tool");
    QVERIFY(!view->currentIndex().isValid());
    // When the view removes the current row, a neighbouring row may become current for a moment. So the view
    // may emit several signals.
    QCOMPARE(spy.value(0).value(1).toInt(), table->row("office"));
    for (int i = 1; i < spy.count(); ++i) {
        QCOMPARE(spy.at(i).at(1), spy.at(i - 1).at(0));
    }
    QCOMPARE(spy.last().at(0).toInt(), -1);
    spy.clear();
    shown->model.reset();
    QCOMPARE(spy.count(), 0);
    shown->click("tool", NameColumn);
    QCOMPARE(spy.value(0), (QList<QVariant>{table->row("tool"), -1}));
}

void ViewRowsTest::theSelectedRowsAreIndexesOfTheSourceModel()
{
    QCOMPARE(view->selectedRows(), QModelIndexList());
    shown->select({"tool", "editor"});
    QModelIndexList rows = view->selectedRows();
    QCOMPARE(rows.count(), 2);
    QStringList chosen;
    for (const QModelIndex& row : qAsConst(rows)) {
        QCOMPARE(row.model(), &shown->model);
        chosen << table->yumIO[row.row()]->name;
    }
    QCOMPARE(chosen, (QStringList{"tool", "editor"}));
}

void ViewRowsTest::theTabKeyMovesTheFocusOutOfTheTable()
{
    QLineEdit next(&shown->window);
    next.show();
    QWidget::setTabOrder(view, &next);
    view->setFocus();
    shown->click("tool", NameColumn);
    QTest::keyClick(view, Qt::Key_Tab);
    QVERIFY(!view->hasFocus());
}

void ViewRowsTest::theViewDescribesTheCurrentRow()
{
    view->describe(); // no row is current, so no dialog opens, and the function returns at once
    QVERIFY(view->findChildren<QDialog*>().isEmpty());
    shown->click("shell", NameColumn);
    QString described;
    QVERIFY(withDialog<Describe::Dialog>(
        [this] { view->describe(); },
        [&described](Describe::Dialog& dialog) { described = dialog.findChild<QLabel*>()->text(); }));
    QCOMPARE(described, QString("shell"));
}

void ViewRowsTest::theEnterKeyDescribesTheCurrentRow()
{
    shown->click("shell", NameColumn);
    QString described;
    QVERIFY(withDialog<Describe::Dialog>(
        [this] { QTest::keyClick(shown->window.windowHandle(), Qt::Key_Return); },
        [&described](Describe::Dialog& dialog) { described = dialog.findChild<QLabel*>()->text(); }));
    QCOMPARE(described, QString("shell"));
}

void ViewRowsTest::aDoubleClickDescribesTheRow()
{
    QString described;
    QVERIFY(withDialog<Describe::Dialog>(
        [this] {
            const QPoint place = view->viewport()->mapTo(&shown->window, shown->place("tool", SizeColumn));
            shown->click("tool", SizeColumn);
            QTest::mouseDClick(shown->window.windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
        },
        [&described](Describe::Dialog& dialog) { described = dialog.findChild<QLabel*>()->text(); }));
    QCOMPARE(described, QString("tool"));
    QCOMPARE(table->entry("tool").action, Package::None);
}

void ViewRowsTest::controlHomeAndControlEndReachTheFirstAndTheLastRow()
{
    const int last = shown->proxy.rowCount() - 1;
    const auto selected = [this] {
        QList<int> rows;
        for (const QModelIndex& index : view->selectionModel()->selectedRows()) {
            rows << index.row();
        }
        return rows;
    };
    // "" means that no row is current. The keys also work in this case.
    for (const char* start : {"", "shell", "tool"}) {
        if (*start != '\0') {
            shown->click(start, NameColumn);
        }
        QTest::keyClick(shown->window.windowHandle(), Qt::Key_End, Qt::ControlModifier);
        QCOMPARE(view->currentIndex().row(), last);
        QCOMPARE(selected(), QList<int>{last});
        QTest::keyClick(shown->window.windowHandle(), Qt::Key_Home, Qt::ControlModifier);
        QCOMPARE(view->currentIndex().row(), 0);
        QCOMPARE(selected(), QList<int>{0});
    }
}

void ViewRowsTest::gettingTheFocusDoesNotMakeARowCurrent()
{
    view->clearFocus();
    QSignalSpy current(view, SIGNAL(currentChanged(int, int)));
    for (const Qt::FocusReason reason : {Qt::TabFocusReason, Qt::OtherFocusReason}) {
        view->setFocus(reason);
        QVERIFY(view->hasFocus());
        QVERIFY(!view->currentIndex().isValid());
        view->clearFocus();
    }
    QTest::keyClick(shown->window.windowHandle(), Qt::Key_Space);
    QVERIFY(current.isEmpty() || current.last().at(0).toInt() == -1);
    // An arrow key makes a row current.
    view->setFocus();
    QTest::keyClick(shown->window.windowHandle(), Qt::Key_Down);
    QCOMPARE(view->selectionModel()->selectedRows().count(), 1);
    QVERIFY(view->currentIndex().isValid());
    const QModelIndex chosen = view->currentIndex();
    view->clearFocus();
    view->setFocus();
    QCOMPARE(view->currentIndex(), chosen);
}

QTEST_MAIN(ViewRowsTest)
#include "ViewRowsTest.moc"
