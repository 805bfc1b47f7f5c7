// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/packagetable/FilteredTable.h"

using namespace PackageTable;

// Tests that mark packages, and check the order of the rows after that.
class SortFilterProxyModelMarksTest : public FilteredTable
{
    Q_OBJECT

private Q_SLOTS:
    void allListedUpdatesCanBeMarked();
    void markingTheListedUpdatesSkipsReplacedPackages();
    void markingTheListedUpdatesSkipsUnlistedUpdates();
    void sortingByActionAgainUsesTheNewActions();
    void markingTheListedUpdatesMovesNoRowUntilTheFilterChanges();
    void theTableIsSortedOnceAtTheEndOfASortPause();
    void aSortPauseHasNoEffectIfTheTableIsNotSortedByAction();
};

void SortFilterProxyModelMarksTest::allListedUpdatesCanBeMarked()
{
    proxy->sort(NameColumn);
    table->entry("many").action = Package::Remove;
    QSignalSpy spy(proxy.get(), SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    proxy->setUpdateListed();
    QCOMPARE(changed(spy), (QStringList{"Tools", "many", "tool"}));
    for (int row = 0; row < table->yumIO.count(); ++row) {
        const Package::Entry* entry = table->yumIO[row];
        QCOMPARE(entry->action, entry->state == Package::Updatable ? Package::Update : Package::None);
    }
}

void SortFilterProxyModelMarksTest::markingTheListedUpdatesSkipsReplacedPackages()
{
    using S = StandIn;
    const QJsonObject old{{"version", "1"}, {"repoid", "@System"}};
    table->collect({S::package("split", {{"version", "2"}}), S::package("tool", {{"replaced", "gone"}})},
                   {S::package("split", old), S::package("tool", old), S::package("gone", old)},
                   {S::package("better", {{"replaced", "split"}})});
    model->reset();
    proxy->setUpdateListed();
    QCOMPARE(table->entry("split").action, Package::None);
    QCOMPARE(table->entry("better").action, Package::None);
    // "tool" replaces another package too, but it is an update of an installed package, so it is marked.
    QCOMPARE(table->entry("tool").action, Package::Update);
}

void SortFilterProxyModelMarksTest::markingTheListedUpdatesSkipsUnlistedUpdates()
{
    QCOMPARE(listed("many|shell"), (QStringList{"many", "shell"}));
    QSignalSpy spy(proxy.get(), SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    proxy->setUpdateListed();
    QCOMPARE(changed(spy), QStringList{"many"});
    QCOMPARE(table->entry("many").action, Package::Update);
    QCOMPARE(table->entry("tool").action, Package::None);
}

void SortFilterProxyModelMarksTest::sortingByActionAgainUsesTheNewActions()
{
    proxy->setGroupsFilter(false);
    QCOMPARE(inOrder(ActionColumn).first(), QStringLiteral("editor"));
    inOrder(NameColumn);
    model->setAction(model->index(table->row("tool"), 0), Package::Remove);
    QCOMPARE(inOrder(ActionColumn).first(), QStringLiteral("tool"));
    inOrder(NameColumn);
    proxy->setUpdateListed();
    QCOMPARE(inOrder(ActionColumn).mid(0, 3), (QStringList{"many", "tool", "editor"}));
}

void SortFilterProxyModelMarksTest::markingTheListedUpdatesMovesNoRowUntilTheFilterChanges()
{
    proxy->setGroupsFilter(false);
    const QStringList before = inOrder(ActionColumn);
    QCOMPARE(before.first(), QStringLiteral("editor"));
    proxy->setUpdateListed();
    QCOMPARE(names(*proxy), before);
    proxy->setFilterRegExp("o");
    QCOMPARE(names(*proxy).first(), QStringLiteral("tool"));
    proxy->setFilterRegExp("");
    QCOMPARE(names(*proxy).mid(0, 3), (QStringList{"many", "tool", "editor"}));
}

void SortFilterProxyModelMarksTest::theTableIsSortedOnceAtTheEndOfASortPause()
{
    proxy->setGroupsFilter(false);
    const QStringList before = inOrder(ActionColumn);
    QCOMPARE(before, (QStringList{"editor", "kernel", "lib", "lib", "many", "office", "shell", "tool"}));
    QSignalSpy layout(proxy.get(), SIGNAL(layoutChanged()));
    QSignalSpy spy(proxy.get(), SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    {
        const SortFilterProxyModel::SortPause pause(*proxy);
        for (const char* name : {"tool", "shell", "many"}) {
            model->setAction(model->index(table->row(name), 0), Package::Remove);
            QCOMPARE(names(*proxy), before);
        }
        QCOMPARE(spy.count(), 3);
        QCOMPARE(layout.count(), 0);
    }
    QCOMPARE(names(*proxy),
             (QStringList{"many", "shell", "tool", "editor", "kernel", "lib", "lib", "office"}));
    QCOMPARE(layout.count(), 1);
    model->setAction(model->index(table->row("kernel"), 0), Package::Remove);
    QCOMPARE(names(*proxy).first(), QStringLiteral("kernel"));
}

void SortFilterProxyModelMarksTest::aSortPauseHasNoEffectIfTheTableIsNotSortedByAction()
{
    inOrder(NameColumn);
    QSignalSpy layout(proxy.get(), SIGNAL(layoutChanged()));
    {
        const SortFilterProxyModel::SortPause pause(*proxy);
        QVERIFY(proxy->dynamicSortFilter());
        model->setAction(model->index(table->row("tool"), 0), Package::Remove);
    }
    QVERIFY(proxy->dynamicSortFilter());
    QCOMPARE(layout.count(), 0);
}

QTEST_MAIN(SortFilterProxyModelMarksTest)
#include "SortFilterProxyModelMarksTest.moc"
