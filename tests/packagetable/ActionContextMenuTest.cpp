// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/ActionContextMenu.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>

#include "app/base/Share.h"
#include "tests/packagetable/ShownTable.h"
#include "tests/support/Menus.h"

using namespace PackageTable;

class ActionContextMenuTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void theMenuListsTheActionsWithTheirIcons();
    void theMenuOffersTheActionsOfTheClickedRowIfNoRowIsSelected_data();
    void theMenuOffersTheActionsOfTheClickedRowIfNoRowIsSelected();
    void theClickedRowGetsTheActionIfNoRowIsSelected_data();
    void theClickedRowGetsTheActionIfNoRowIsSelected();
    void theMenuOffersEachActionThatAtLeastOneSelectedRowPermits_data();
    void theMenuOffersEachActionThatAtLeastOneSelectedRowPermits();
    void anActionIsSetOnlyInSelectedRowsThatPermitTheAction_data();
    void anActionIsSetOnlyInSelectedRowsThatPermitTheAction();
    void theSelectedRowsAndNotTheClickedRowGetTheAction();
    void aRightClickOnAnUnselectedRowSelectsThisRow();
    void anActionCanBeChosenWithTheMouse();
    void escapeClosesTheMenuAndSetsNoAction();
    void noActionIsSetIfTheRowIsRemovedWhileTheMenuIsOpen();
    void allSelectedRowsGetTheActionEvenIfTheTableIsSortedByAction();
    void theMenuOffersToLockUnlockedRowsAndToUnlockLockedRows_data();
    void theMenuOffersToLockUnlockedRowsAndToUnlockLockedRows();
    void theLockEntryEmitsASignalWithTheRows();
    void theUnlockEntryAppliesOnlyToTheLockedRowsInTheSelection();
    void theLockEntriesAreDisabledAndShowTheReasonIfTheUserCannotWriteLocks();

private:
    // Opens the menu on a row, and presses a key in the menu. While Control is pressed, the click does not
    // change the selection. Returns the entries that were enabled.
    QStringList choose(const QString& name, Qt::Key key)
    {
        QStringList offered;
        withMenu([this, name] { shown->click(name, ActionColumn, Qt::RightButton, Qt::ControlModifier); },
                 [&offered, key](QMenu& menu) {
                     offered = offeredIn(menu);
                     QTest::keyClick(&menu, key);
                 });
        return offered;
    }
    QMap<QString, int> actions() const
    {
        QMap<QString, int> found;
        for (int row = 0; row < table->yumIO.count(); ++row) {
            if (table->yumIO[row]->action != Package::None) {
                found.insert(table->yumIO[row]->name, table->yumIO[row]->action);
            }
        }
        return found;
    }

    std::unique_ptr<Table> table;
    std::unique_ptr<ShownTable> shown;
};

using Actions = QMap<QString, int>;
Q_DECLARE_METATYPE(Actions)

void ActionContextMenuTest::initTestCase()
{
    table = std::make_unique<Table>();
}

void ActionContextMenuTest::init()
{
    table->collectUsual();
    shown = std::make_unique<ShownTable>(*table);
}

void ActionContextMenuTest::cleanup()
{
    shown.reset();
    table->standIn.removeVersionLocks();
}

void ActionContextMenuTest::cleanupTestCase()
{
    table.reset();
}

void ActionContextMenuTest::theMenuListsTheActionsWithTheirIcons()
{
    const ActionContextMenu menu(&shown->model, &shown->proxy, shown->view);
    QCOMPARE(shownIn(menu), (QStringList{"&Update", "&Install", "&Remove", "&No Action"}));
    const char* const icons[] = {"icons/update.png", "icons/install.png", "icons/remove.png"};
    for (int i = 0; i < 3; ++i) {
        const QImage expected = QIcon(Share::absolute(QLatin1String(icons[i]))).pixmap(16).toImage();
        QVERIFY(!expected.isNull());
        QCOMPARE(menu.actions().at(i)->icon().pixmap(16).toImage(), expected);
    }
    QVERIFY(menu.actions().at(3)->icon().isNull());
}

void ActionContextMenuTest::theMenuOffersTheActionsOfTheClickedRowIfNoRowIsSelected_data()
{
    QTest::addColumn<QStringList>("offered");
    QTest::newRow("tool") << QStringList{"&Update", "&Remove", "&No Action"};
    QTest::newRow("editor") << QStringList{"&Install", "&No Action"};
    QTest::newRow("shell") << QStringList{"&Remove", "&No Action"};
    QTest::newRow("Games") << QStringList{"&Install", "&No Action"};
}

void ActionContextMenuTest::theMenuOffersTheActionsOfTheClickedRowIfNoRowIsSelected()
{
    QFETCH(QStringList, offered);
    QCOMPARE(choose(QTest::currentDataTag(), Qt::Key_Escape), offered);
    QVERIFY(shown->view->selectedRows().isEmpty());
}

void ActionContextMenuTest::theClickedRowGetsTheActionIfNoRowIsSelected_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("action");
    QTest::newRow("update") << "tool" << int(Qt::Key_U) << int(Package::Update);
    QTest::newRow("install") << "editor" << int(Qt::Key_I) << int(Package::Install);
    QTest::newRow("remove") << "tool" << int(Qt::Key_R) << int(Package::Remove);
}

void ActionContextMenuTest::theClickedRowGetsTheActionIfNoRowIsSelected()
{
    QFETCH(QString, name);
    QFETCH(int, key);
    QFETCH(int, action);
    choose(name, static_cast<Qt::Key>(key));
    QCOMPARE(actions(), (Actions{{name, action}}));
    choose(name, Qt::Key_N);
    QCOMPARE(actions(), Actions());
}

void ActionContextMenuTest::theMenuOffersEachActionThatAtLeastOneSelectedRowPermits_data()
{
    QTest::addColumn<QStringList>("selected");
    QTest::addColumn<QStringList>("offered");
    QTest::newRow("available and installed")
        << QStringList{"editor", "shell"} << QStringList{"&Install", "&Remove", "&No Action"};
    QTest::newRow("out of date and installed")
        << QStringList{"tool", "shell"} << QStringList{"&Update", "&Remove", "&No Action"};
    QTest::newRow("two available packages")
        << QStringList{"editor", "office"} << QStringList{"&Install", "&No Action"};
    QTest::newRow("out of date, available and installed")
        << QStringList{"tool", "editor", "shell"}
        << QStringList{"&Update", "&Install", "&Remove", "&No Action"};
}

void ActionContextMenuTest::theMenuOffersEachActionThatAtLeastOneSelectedRowPermits()
{
    QFETCH(QStringList, selected);
    QFETCH(QStringList, offered);
    shown->select(selected);
    QCOMPARE(shown->view->selectedRows().count(), selected.count());
    QCOMPARE(choose(selected.first(), Qt::Key_Escape), offered);
}

void ActionContextMenuTest::anActionIsSetOnlyInSelectedRowsThatPermitTheAction_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<Actions>("expected");
    const int u = Package::Update;
    const int i = Package::Install;
    const int r = Package::Remove;
    // The marks after the choice in the menu. Before the choice, the marks are Update for "tool", Install for
    // "editor" and Remove for "shell".
    QTest::newRow("update") << int(Qt::Key_U) << Actions{{"tool", u}, {"editor", i}, {"shell", r}};
    QTest::newRow("install") << int(Qt::Key_I) << Actions{{"tool", u}, {"editor", i}, {"shell", r}};
    QTest::newRow("remove") << int(Qt::Key_R) << Actions{{"tool", r}, {"editor", i}, {"shell", r}};
    QTest::newRow("none") << int(Qt::Key_N) << Actions();
}

void ActionContextMenuTest::anActionIsSetOnlyInSelectedRowsThatPermitTheAction()
{
    QFETCH(int, key);
    QFETCH(Actions, expected);
    for (const char* name : {"tool", "editor", "shell"}) {
        shown->click(QLatin1String(name), ActionColumn);
    }
    shown->select({"tool", "editor", "shell"});
    choose("editor", static_cast<Qt::Key>(key));
    QCOMPARE(actions(), expected);

    // Make the same choice a second time, now without marks before the choice.
    shown->model.clearActions();
    choose("editor", static_cast<Qt::Key>(key));
    const Actions set = actions();
    const QStringList changedRows = key == Qt::Key_U   ? QStringList{"tool"}
                                    : key == Qt::Key_I ? QStringList{"editor"}
                                    : key == Qt::Key_R ? QStringList{"shell", "tool"}
                                                       : QStringList();
    QCOMPARE(set.keys(), changedRows);
}

void ActionContextMenuTest::theSelectedRowsAndNotTheClickedRowGetTheAction()
{
    shown->select({"editor", "office"});
    QCOMPARE(choose("shell", Qt::Key_I), (QStringList{"&Install", "&No Action"}));
    QCOMPARE(actions(), (Actions{{"editor", Package::Install}, {"office", Package::Install}}));
}

void ActionContextMenuTest::aRightClickOnAnUnselectedRowSelectsThisRow()
{
    shown->select({"editor", "office"});
    QStringList offered;
    QVERIFY(withMenu([this] { shown->click("shell", ActionColumn, Qt::RightButton); },
                     [&offered](QMenu& menu) {
                         offered = offeredIn(menu);
                         QTest::keyClick(&menu, Qt::Key_R);
                     }));
    QCOMPARE(offered, (QStringList{"&Remove", "&No Action"}));
    QCOMPARE(actions(), (Actions{{"shell", Package::Remove}}));
}

void ActionContextMenuTest::anActionCanBeChosenWithTheMouse()
{
    QVERIFY(withMenu([this] { shown->click("tool", ActionColumn, Qt::RightButton); },
                     [](QMenu& menu) {
                         const QRect place = menu.actionGeometry(actionOf(menu, "&Remove"));
                         QTest::mouseMove(&menu, place.center());
                         QTest::mouseClick(&menu, Qt::LeftButton, Qt::NoModifier, place.center());
                     }));
    QCOMPARE(actions(), (Actions{{"tool", Package::Remove}}));
}

void ActionContextMenuTest::escapeClosesTheMenuAndSetsNoAction()
{
    shown->click("tool", ActionColumn);
    choose("tool", Qt::Key_Escape);
    QCOMPARE(actions(), (Actions{{"tool", Package::Update}}));
}

void ActionContextMenuTest::noActionIsSetIfTheRowIsRemovedWhileTheMenuIsOpen()
{
    QVERIFY(withMenu([this] { shown->click("tool", ActionColumn, Qt::RightButton, Qt::ControlModifier); },
                     [this](QMenu& menu) {
                         shown->model.reset();
                         QTest::keyClick(&menu, Qt::Key_U);
                     }));
    QCOMPARE(actions(), Actions());
}

void ActionContextMenuTest::allSelectedRowsGetTheActionEvenIfTheTableIsSortedByAction()
{
    shown->view->HTableView::sortByColumn(ActionColumn, Qt::AscendingOrder);
    QSignalSpy layout(&shown->proxy, SIGNAL(layoutChanged()));
    shown->select({"tool", "shell", "kernel", "many"});
    choose("kernel", Qt::Key_R);
    QCOMPARE(actions().keys(), (QStringList{"kernel", "many", "shell", "tool"}));
    QCOMPARE(names(shown->proxy).mid(0, 4), (QStringList{"kernel", "many", "shell", "tool"}));
    QCOMPARE(layout.count(), 1);
    QCOMPARE(shown->view->selectedRows().count(), 4);
}

void ActionContextMenuTest::theMenuOffersToLockUnlockedRowsAndToUnlockLockedRows_data()
{
    QTest::addColumn<QStringList>("selected");
    QTest::addColumn<QStringList>("offered");
    const QString lock = "&Lock Version";
    const QString unlock = "Un&lock Version";
    QTest::newRow("installed") << QStringList{"kernel"} << QStringList{lock};
    QTest::newRow("out of date") << QStringList{"tool"} << QStringList{lock};
    QTest::newRow("available") << QStringList{"editor"} << QStringList{lock};
    QTest::newRow("locked") << QStringList{"shell"} << QStringList{unlock};
    QTest::newRow("locked and unlocked") << QStringList{"shell", "tool"} << QStringList{lock, unlock};
    QTest::newRow("group") << QStringList{"Games"} << QStringList();
}

void ActionContextMenuTest::theMenuOffersToLockUnlockedRowsAndToUnlockLockedRows()
{
    QFETCH(QStringList, selected);
    QFETCH(QStringList, offered);
    table->standIn.setVersionLocks({{"shell", "shell-0:1-1.*"}});
    table->collectUsual();
    shown = std::make_unique<ShownTable>(*table);
    shown->select(selected);
    QSignalSpy chosen(shown->view, SIGNAL(versionLocksChosen(const QList<int>&, bool)));
    QCOMPARE(choose(selected.first(), Qt::Key_Escape).filter("lock", Qt::CaseInsensitive), offered);
    QCOMPARE(chosen.count(), 0);
}

void ActionContextMenuTest::theLockEntryEmitsASignalWithTheRows()
{
    table->standIn.setVersionLocks({});
    table->collectUsual();
    shown = std::make_unique<ShownTable>(*table);
    QSignalSpy chosen(shown->view, SIGNAL(versionLocksChosen(const QList<int>&, bool)));
    choose("tool", Qt::Key_L);
    QCOMPARE(chosen.count(), 1);
    QCOMPARE(chosen.at(0).at(0).value<QList<int>>(), QList<int>{table->row("tool")});
    QCOMPARE(chosen.at(0).at(1), QVariant(true));
    QCOMPARE(actions(), Actions());
}

void ActionContextMenuTest::theUnlockEntryAppliesOnlyToTheLockedRowsInTheSelection()
{
    table->standIn.setVersionLocks({{"shell", "shell-0:1-1.*"}});
    table->collectUsual();
    shown = std::make_unique<ShownTable>(*table);
    shown->select({"shell", "tool", "Games"});
    QSignalSpy chosen(shown->view, SIGNAL(versionLocksChosen(const QList<int>&, bool)));
    // The entries for locking and unlocking have the same mnemonic. So the key of the mnemonic only moves
    // from one entry to the other, and Return chooses an entry.
    const auto press = [this](int times) {
        withMenu([this] { shown->click("shell", ActionColumn, Qt::RightButton, Qt::ControlModifier); },
                 [times](QMenu& menu) {
                     for (int i = 0; i < times; ++i) {
                         QTest::keyClick(&menu, Qt::Key_L);
                     }
                     QTest::keyClick(&menu, Qt::Key_Return);
                 });
    };
    press(1);
    press(2);
    QCOMPARE(chosen.count(), 2);
    QCOMPARE(chosen.at(0).at(0).value<QList<int>>(), QList<int>{table->row("tool")});
    QCOMPARE(chosen.at(0).at(1), QVariant(true));
    QCOMPARE(chosen.at(1).at(0).value<QList<int>>(), QList<int>{table->row("shell")});
    QCOMPARE(chosen.at(1).at(1), QVariant(false));
}

void ActionContextMenuTest::theLockEntriesAreDisabledAndShowTheReasonIfTheUserCannotWriteLocks()
{
    table->standIn.setVersionLocks({{"shell", "shell-0:1-1.*"}}, "no <b>right</b>");
    table->collectUsual();
    shown = std::make_unique<ShownTable>(*table);
    for (const char* name : {"shell", "tool"}) {
        QStringList toolTips;
        withMenu([this, name] { shown->click(name, ActionColumn, Qt::RightButton); },
                 [&toolTips](QMenu& menu) {
                     for (const QAction* action : menu.actions()) {
                         if (action->isVisible() && action->text().contains("lock", Qt::CaseInsensitive)) {
                             QVERIFY(!action->isEnabled());
                             toolTips << action->toolTip();
                         }
                     }
                 });
        QCOMPARE(toolTips, QStringList{"<p style=\"white-space: pre\">no &lt;b&gt;right&lt;/b&gt;</p>"});
    }
}

QTEST_MAIN(ActionContextMenuTest)
#include "ActionContextMenuTest.moc"
