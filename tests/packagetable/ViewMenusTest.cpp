// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/ActionContextMenu.h"
#include "packagetable/OtherContextMenu.h"
#include "tests/packagetable/ShownView.h"
#include "tests/support/Menus.h"

using namespace PackageTable;

// Tests of the context menus.
class ViewMenusTest : public ShownView
{
    Q_OBJECT

private Q_SLOTS:
    void aRightClickInTheActionColumnOpensTheActionMenu();
    void aRightClickOutsideTheActionColumnOpensTheMenuWithoutActions();
    void aRightClickBelowTheRowsOpensTheMenuWithoutActions();
    void aRightClickOnTheHeaderOpensNoMenu();
    void theMenuKeyOpensTheMenuOfTheCurrentCell();
    void eachContextMenuIsCreatedOnlyOnce();

private:
    void rightClick(QWidget* widget, const QPoint& place) { shown->click(widget, place, Qt::RightButton); }
};

void ViewMenusTest::aRightClickInTheActionColumnOpensTheActionMenu()
{
    QSignalSpy spy(view, SIGNAL(stateChanged(int)));
    bool right = false;
    QPoint place;
    QVERIFY(withMenu([this] { rightClick(view->viewport(), shown->place("tool", ActionColumn)); },
                     [&right, &place, &spy](QMenu& menu) {
                         right = qobject_cast<ActionContextMenu*>(&menu) != nullptr && spy.isEmpty();
                         place = menu.pos();
                     }));
    QVERIFY(right);
    QCOMPARE(place, view->viewport()->mapToGlobal(shown->place("tool", ActionColumn)));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.first().first().toInt(), -1);
}

void ViewMenusTest::aRightClickOutsideTheActionColumnOpensTheMenuWithoutActions()
{
    QSignalSpy spy(view, SIGNAL(stateChanged(int)));
    for (int column = StateColumn; column < ColumnCount; ++column) {
        bool right = false;
        QVERIFY(
            withMenu([this, column] { rightClick(view->viewport(), shown->place("tool", column)); },
                     [&right](QMenu& menu) { right = qobject_cast<OtherContextMenu*>(&menu) != nullptr; }));
        QVERIFY(right);
    }
    QCOMPARE(spy.count(), 0);
}

void ViewMenusTest::aRightClickBelowTheRowsOpensTheMenuWithoutActions()
{
    bool right = false;
    const QPoint below(20, view->viewport()->height() - 10);
    QVERIFY(!view->indexAt(below).isValid());
    QVERIFY(withMenu([this, below] { rightClick(view->viewport(), below); },
                     [&right](QMenu& menu) { right = qobject_cast<OtherContextMenu*>(&menu) != nullptr; }));
    QVERIFY(right);
}

void ViewMenusTest::aRightClickOnTheHeaderOpensNoMenu()
{
    QHeaderView* header = view->horizontalHeader();
    QVERIFY(!withMenu([this, header] { rightClick(header->viewport(), QPoint(20, header->height() / 2)); },
                      [](QMenu&) {}));
    QCOMPARE(shown->proxy.sortColumn(), int(NameColumn));
}

void ViewMenusTest::theMenuKeyOpensTheMenuOfTheCurrentCell()
{
    shown->click("shell", ActionColumn);
    QCOMPARE(table->entry("shell").action, Package::Remove);
    QStringList offered;
    bool opened = false;
    // The window system turns the Menu key into a request for a menu, so the test sends the key through the
    // window system.
    withMenu(
        [&opened] {
            QCOMPARE(QProcess::execute("xdotool", {"key", "Menu"}), 0);
            QTRY_VERIFY(opened);
        },
        [&offered, &opened](QMenu& menu) {
            opened = true;
            offered = offeredIn(menu);
            QTest::keyClick(&menu, Qt::Key_N);
        });
    QVERIFY(opened);
    QCOMPARE(offered, (QStringList{"&Remove", "&No Action"}));
    QCOMPARE(table->entry("shell").action, Package::None);
}

void ViewMenusTest::eachContextMenuIsCreatedOnlyOnce()
{
    QCOMPARE(view->findChildren<QMenu*>().count(), 0);
    for (const char* name : {"tool", "shell"}) {
        for (const int column : {ActionColumn, NameColumn}) {
            QVERIFY(withMenu(
                [this, name, column] {
                    rightClick(view->viewport(), shown->place(QLatin1String(name), column));
                },
                [](QMenu&) {}));
        }
    }
    QCOMPARE(view->findChildren<ActionContextMenu*>().count(), 1);
    QCOMPARE(view->findChildren<OtherContextMenu*>().count(), 1);
}

QTEST_MAIN(ViewMenusTest)
#include "ViewMenusTest.moc"
