// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/DescribeDialog.h"
#include "tests/packagetable/ShownView.h"
#include "tests/support/Menus.h"

using namespace PackageTable;

// Tests of the clicks and the key that set an action.
class ViewActionsTest : public ShownView
{
    Q_OBJECT

private Q_SLOTS:
    void clickingAnActionCellSelectsTheNextAction();
    void clickingTheActionCellOfAnExcludedPackageShowsTheReason();
    void aClickOutsideTheActionColumnSetsNoAction();
    void aClickWithTheRightButtonSetsNoAction();
    void clicksSetActionsEvenIfTheActionColumnWasMoved();
    void theSpaceKeySelectsTheNextActionOfTheCurrentRow();
    void aHeldSpaceKeyChangesTheActionOnlyOnce();
    void eachOfSeveralQuickClicksOnAnActionCellChangesTheAction_data();
    void eachOfSeveralQuickClicksOnAnActionCellChangesTheAction();
    void severalQuickClicksChangeOnlyTheRowOfTheFirstClick();
    void twoQuickClicksOnNeighbouringRowsChangeBothRows();
};

void ViewActionsTest::clickingAnActionCellSelectsTheNextAction()
{
    QSignalSpy spy(view, SIGNAL(stateChanged(int)));
    const auto& action = table->entry("tool").action;
    shown->click("tool", ActionColumn);
    QCOMPARE(action, Package::Update);
    shown->click("tool", ActionColumn);
    QCOMPARE(action, Package::Remove);
    shown->click("tool", ActionColumn);
    QCOMPARE(action, Package::None);
    QCOMPARE(spy.count(), 3);
    for (const auto& signal : qAsConst(spy)) {
        QCOMPARE(signal.at(0).toInt(), table->row("tool"));
    }
    shown->click("shell", ActionColumn);
    QCOMPARE(table->entry("shell").action, Package::Remove);
    shown->click("shell", ActionColumn);
    QCOMPARE(table->entry("shell").action, Package::None);
    shown->click("editor", ActionColumn);
    QCOMPARE(table->entry("editor").action, Package::Install);
}

void ViewActionsTest::clickingTheActionCellOfAnExcludedPackageShowsTheReason()
{
    QSignalSpy refused(view, SIGNAL(actionRefused(const QString&)));
    shown->click("tool", ActionColumn);
    QCOMPARE(refused.count(), 0);
    table->entry("shell").excluded = true;
    shown->click("shell", ActionColumn);
    QCOMPARE(refused.count(), 1);
    QCOMPARE(refused.at(0).at(0).toString(),
             QString("shell cannot be marked: the configuration excludes it from updates and removals"));
    shown->click("shell", NameColumn);
    QCOMPARE(refused.count(), 1);
    QTest::keyClick(view, Qt::Key_Space);
    QCOMPARE(refused.count(), 2);
    QCOMPARE(table->entry("shell").action, Package::None);
}

void ViewActionsTest::aClickOutsideTheActionColumnSetsNoAction()
{
    QSignalSpy spy(view, SIGNAL(stateChanged(int)));
    for (int column = StateColumn; column < ColumnCount; ++column) {
        shown->click("tool", column);
    }
    QCOMPARE(table->entry("tool").action, Package::None);
    QCOMPARE(spy.count(), 0);
}

void ViewActionsTest::aClickWithTheRightButtonSetsNoAction()
{
    QVERIFY(withMenu([this] { shown->click("tool", ActionColumn, Qt::RightButton); }, [](QMenu&) {}));
    QCOMPARE(table->entry("tool").action, Package::None);
}

void ViewActionsTest::clicksSetActionsEvenIfTheActionColumnWasMoved()
{
    view->horizontalHeader()->moveSection(0, 3);
    shown->click("tool", StateColumn);
    QCOMPARE(table->entry("tool").action, Package::None);
    shown->click("tool", ActionColumn);
    QCOMPARE(table->entry("tool").action, Package::Update);
}

void ViewActionsTest::theSpaceKeySelectsTheNextActionOfTheCurrentRow()
{
    QSignalSpy spy(view, SIGNAL(stateChanged(int)));
    shown->click("tool", NameColumn);
    view->setFocus();
    QTest::keyClick(view, Qt::Key_Space);
    QCOMPARE(table->entry("tool").action, Package::Update);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toInt(), table->row("tool"));
    QTest::keyClick(view, Qt::Key_Space, Qt::ControlModifier);
    QCOMPARE(table->entry("tool").action, Package::Update);
}

void ViewActionsTest::aHeldSpaceKeyChangesTheActionOnlyOnce()
{
    shown->click("tool", NameColumn);
    QSignalSpy changed(view, SIGNAL(stateChanged(int)));
    const auto send = [this](QEvent::Type type, bool repeats) {
        QKeyEvent event(type, Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "), repeats);
        QApplication::sendEvent(shown->window.windowHandle(), &event);
    };
    send(QEvent::KeyPress, false);
    for (int i = 0; i < 4; ++i) {
        send(QEvent::KeyRelease, true);
        send(QEvent::KeyPress, true);
    }
    send(QEvent::KeyRelease, false);
    QCOMPARE(table->entry("tool").action, Package::Update);
    QCOMPARE(changed.count(), 1);
    // After the release, the next key press changes the action again.
    send(QEvent::KeyPress, false);
    send(QEvent::KeyRelease, false);
    QCOMPARE(table->entry("tool").action, Package::Remove);
}

void ViewActionsTest::eachOfSeveralQuickClicksOnAnActionCellChangesTheAction_data()
{
    QTest::addColumn<int>("clicks");
    QTest::addColumn<int>("action");
    QTest::newRow("one click") << 1 << int(Package::Update);
    QTest::newRow("two clicks") << 2 << int(Package::Remove);
    QTest::newRow("three clicks") << 3 << int(Package::None);
    QTest::newRow("four clicks") << 4 << int(Package::Update);
    QTest::newRow("five clicks") << 5 << int(Package::Remove);
}

void ViewActionsTest::eachOfSeveralQuickClicksOnAnActionCellChangesTheAction()
{
    QFETCH(int, clicks);
    QFETCH(int, action);
    const QPoint place = view->viewport()->mapTo(&shown->window, shown->place("tool", ActionColumn));
    QSignalSpy changed(view, SIGNAL(stateChanged(int)));
    for (int i = 0; i < clicks; ++i) {
        // Qt may take such quick clicks for double clicks. QTest::mouseClick() would add delays, so Qt would
        // see single clicks.
        QTest::mousePress(shown->window.windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
        QTest::mouseRelease(shown->window.windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
    }
    QTest::qWait(50);
    QVERIFY(view->findChildren<Describe::Dialog*>().isEmpty());
    QCOMPARE(int(table->entry("tool").action), action);
    QCOMPARE(changed.count(), clicks);
}

void ViewActionsTest::severalQuickClicksChangeOnlyTheRowOfTheFirstClick()
{
    // The table is sorted by action, so the first click moves another row under the pointer.
    shown->proxy.sort(ActionColumn);
    QTest::qWait(50); // wait until the view shows the new order
    const QPoint inView = shown->place("tool", ActionColumn);
    const QPoint place = view->viewport()->mapTo(&shown->window, inView);
    QSignalSpy changed(view, SIGNAL(stateChanged(int)));
    for (const Package::Action action : {Package::Update, Package::Remove, Package::None, Package::Update}) {
        QTest::mousePress(shown->window.windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
        QTest::mouseRelease(shown->window.windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
        QCOMPARE(table->entry("tool").action, action);
    }
    QCOMPARE(changed.count(), 4); // no click has changed another row
    const QModelIndex under = view->indexAt(inView);
    QVERIFY(under.sibling(under.row(), NameColumn).data().toString() != "tool");
}

void ViewActionsTest::twoQuickClicksOnNeighbouringRowsChangeBothRows()
{
    // The table is sorted by name, so no click moves a row. The clicks are close to the common border of both
    // rows, so their distance is small enough for a double click.
    const int first = shown->listedRow("editor");
    const int height = view->rowHeight(first);
    QVERIFY(4 < QApplication::startDragDistance() && 4 < height);
    const QString next = shown->proxy.index(first + 1, NameColumn).data().toString();
    const QPoint above = shown->place("editor", ActionColumn) + QPoint(0, height / 2 - 2);
    const QPoint below = above + QPoint(0, 4);
    QCOMPARE(view->indexAt(above).row(), first);
    QCOMPARE(view->indexAt(below).row(), first + 1);
    QSignalSpy changed(view, SIGNAL(stateChanged(int)));
    for (const QPoint& each : {above, below}) {
        // QTest::mouseClick() would add delays between the clicks.
        const QPoint place = view->viewport()->mapTo(&shown->window, each);
        QTest::mousePress(shown->window.windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
        QTest::mouseRelease(shown->window.windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
    }
    QCOMPARE(table->entry("editor").action, Package::Install);
    QCOMPARE(changed.count(), 2);
    QCOMPARE(changed.at(0).at(0).toInt(), table->row("editor"));
    QCOMPARE(changed.at(1).at(0).toInt(), table->row(next));
    QVERIFY(table->entry(next).action != Package::None);
}

QTEST_MAIN(ViewActionsTest)
#include "ViewActionsTest.moc"
