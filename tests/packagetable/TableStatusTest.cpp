// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/TableStatus.h"

#include <QAccessible>
#include <QtTest>
#include <QtWidgets>

#include <memory>

#include "tests/packagetable/ShownTable.h"
#include "widgets/ElidedLabel.h"

using namespace PackageTable;

// Tests of the status line below the package table.
class TableStatusTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void cleanupTestCase() { table.reset(); }
    void theStatusLineCountsTheListedRows();
    void theStatusLineCountsTheSelectedRows();
    void aChangedFilterResetsTheNumberOfSelectedRowsToZero();
    void theStatusLineCountsTheMarksOfEachAction();
    void theStatusLineAlsoCountsTheMarksOfUnlistedRecords();
    void markingTheListedUpdatesChangesTheCounts();
    void theDownloadSizeIncludesInstallationsAndUpdatesButNoRemovals();
    void theDownloadSizeSaysThatItDoesNotIncludeMarkedGroups();
    void theDownloadSizeDoesNotIncludePackagesOfLocalRepositories();
    void theStatusLineAlsoCountsLockedPackagesThatAreNotListed();
    void theStatusLineCountsTheLockedRowsInTheSelection();
    void aNewCollectionResetsAllCounts();
    void assistiveProgramsReadTheLineAsAStatusBarWithItsText();
    void allCountsAreZeroIfTheTableHasNoRecords();

private:
    // Waits until the line shows this text. Returns false if the line does not show it in time.
    bool shows(const QString& text) const
    {
        const bool found = QTest::qWaitFor([this, text] { return label()->wholeText() == text; });
        if (!found) {
            qWarning("the line shows %s", qPrintable(label()->wholeText()));
        }
        return found;
    }
    ElidedLabel* label() const { return status->findChild<ElidedLabel*>(); }
    void mark(const QString& name, Package::Action action)
    {
        shown->model.setAction(shown->model.index(table->row(name), ActionColumn), action);
    }

    // Reads the packages again, with these locks.
    void lock(const QJsonObject& lines)
    {
        const Model::Hiding hiding(shown->model);
        table->standIn.setVersionLocks(lines);
        table->collectUsual();
    }

    std::unique_ptr<Table> table;
    std::unique_ptr<ShownTable> shown;
    TableStatus* status = nullptr;
};

void TableStatusTest::init()
{
    if (table == nullptr) {
        table = std::make_unique<Table>();
    }
    table->collectUsual();
    shown = std::make_unique<ShownTable>(*table);
    shown->proxy.setGroupsFilter(false);
    status = new TableStatus(&shown->model, &shown->proxy, shown->view);
    shown->window.layout()->addWidget(status);
}

void TableStatusTest::cleanup()
{
    shown.reset();
    table->standIn.removeVersionLocks();
}

void TableStatusTest::theStatusLineCountsTheListedRows()
{
    QVERIFY(shows(QString("Listed: %1   Selected: 0   No marks").arg(shown->proxy.rowCount())));
    shown->proxy.setStateFilter(ViewUpdatable);
    shown->proxy.setFilterRegExp("");
    QVERIFY(shows("Listed: 2   Selected: 0   No marks"));
    shown->proxy.setFilterRegExp("(");
    QVERIFY(shows("Listed: 0   Selected: 0   No marks"));
}

void TableStatusTest::theStatusLineCountsTheSelectedRows()
{
    const int rows = shown->proxy.rowCount();
    shown->select({"tool", "shell", "office"});
    QVERIFY(shows(QString("Listed: %1   Selected: 3   No marks").arg(rows)));
    shown->view->selectAll();
    QVERIFY(shows(QString("Listed: %1   Selected: %1   No marks").arg(rows)));
    shown->view->clearSelection();
    QVERIFY(shows(QString("Listed: %1   Selected: 0   No marks").arg(rows)));
}

void TableStatusTest::aChangedFilterResetsTheNumberOfSelectedRowsToZero()
{
    shown->select({"tool", "shell"});
    QVERIFY(shows(QString("Listed: %1   Selected: 2   No marks").arg(shown->proxy.rowCount())));
    shown->proxy.setStateFilter(ViewUpdatable);
    QVERIFY(shows("Listed: 2   Selected: 0   No marks"));
}

void TableStatusTest::theStatusLineCountsTheMarksOfEachAction()
{
    shown->proxy.setStateFilter(ViewUpdatable);
    mark("tool", Package::Update);
    mark("editor", Package::Install);
    mark("office", Package::Install);
    mark("shell", Package::Remove);
    mark("many", Package::Remove);
    mark("kernel", Package::Remove);
    QVERIFY(QTest::qWaitFor([this] {
        return label()->wholeText().startsWith(
            "Listed: 2   Selected: 0   Marks: 2 Install, 1 Update, 3 Remove   To download: ");
    }));
    shown->model.clearActions();
    QVERIFY(shows("Listed: 2   Selected: 0   No marks"));
}

void TableStatusTest::theStatusLineAlsoCountsTheMarksOfUnlistedRecords()
{
    shown->proxy.setStateFilter(ViewUpdatable);
    mark("shell", Package::Remove); // the table does not list this record
    QVERIFY(shows("Listed: 2   Selected: 0   Marks: 0 Install, 0 Update, 1 Remove   To download: 0b"));
}

void TableStatusTest::markingTheListedUpdatesChangesTheCounts()
{
    shown->proxy.setStateFilter(ViewUpdatable);
    QVERIFY(shows("Listed: 2   Selected: 0   No marks"));
    shown->proxy.setUpdateListed();
    QVERIFY(QTest::qWaitFor(
        [this] { return label()->wholeText().contains("Marks: 0 Install, 2 Update, 0 Remove"); }));
}

void TableStatusTest::theDownloadSizeIncludesInstallationsAndUpdatesButNoRemovals()
{
    table->entry("tool").size = 3 * 1024 * 1024;
    table->entry("editor").size = 1024 * 1024;
    table->entry("shell").size = 50 * 1024 * 1024;
    shown->proxy.setStateFilter(ViewUpdatable);
    mark("tool", Package::Update);
    mark("shell", Package::Remove);
    QVERIFY(shows("Listed: 2   Selected: 0   Marks: 0 Install, 1 Update, 1 Remove   To download: 3.0Mb"));
    mark("editor", Package::Install);
    QVERIFY(shows("Listed: 2   Selected: 0   Marks: 1 Install, 1 Update, 1 Remove   To download: 4.0Mb"));
}

void TableStatusTest::theDownloadSizeSaysThatItDoesNotIncludeMarkedGroups()
{
    table->collect({}, {}, {StandIn::package("editor", {})}, {StandIn::group("games")});
    table->entry("editor").size = 1024 * 1024;
    mark("editor", Package::Install);
    QVERIFY(QTest::qWaitFor([this] { return label()->wholeText().endsWith("To download: 1.0Mb"); }));
    mark("games", Package::Install);
    QVERIFY(QTest::qWaitFor(
        [this] { return label()->wholeText().endsWith("To download: 1.0Mb, without groups"); }));
    mark("games", Package::Remove);
    QVERIFY(QTest::qWaitFor([this] { return label()->wholeText().endsWith("To download: 1.0Mb"); }));
}

void TableStatusTest::theDownloadSizeDoesNotIncludePackagesOfLocalRepositories()
{
    const QJsonObject local{{"repoid", "local"}};
    const QJsonObject old{{"version", "1"}, {"repoid", "@System"}};
    table->collect({StandIn::package("tool", {{"version", "2"}, {"repoid", "local"}})},
                   {StandIn::package("tool", old)},
                   {StandIn::package("near", local), StandIn::package("far", {{"repoid", "base"}})});
    for (const char* const name : {"tool", "near", "far"}) {
        table->entry(name).size = 1024 * 1024;
    }
    mark("near", Package::Install);
    mark("tool", Package::Update);
    QVERIFY(QTest::qWaitFor([this] { return label()->wholeText().endsWith("To download: 0b"); }));
    mark("far", Package::Install);
    QVERIFY(QTest::qWaitFor([this] { return label()->wholeText().endsWith("To download: 1.0Mb"); }));
}

void TableStatusTest::theStatusLineAlsoCountsLockedPackagesThatAreNotListed()
{
    lock({{"shell", "shell-0:1-1.*"},
          {"kernel", "kernel-0:1-1.*"},
          {"Games", "Games"},
          {"unknown", "unknown"}});
    shown->proxy.setStateFilter(ViewUpdatable);
    QVERIFY(shows("Listed: 2   Selected: 0   No marks   Locked: 2"));
    mark("tool", Package::Update);
    QVERIFY(QTest::qWaitFor([this] {
        const QString text = label()->wholeText();
        return text.contains("1 Update") && text.endsWith("   Locked: 2");
    }));
    shown->model.clearActions();
    lock({});
    shown->proxy.setStateFilter(ViewUpdatable);
    QVERIFY(shows("Listed: 2   Selected: 0   No marks"));
}

void TableStatusTest::theStatusLineCountsTheLockedRowsInTheSelection()
{
    lock({{"shell", "shell-0:1-1.*"}, {"kernel", "kernel-0:1-1.*"}});
    shown->proxy.setStateFilter(ViewRemovable);
    const QString listed = QString("Listed: %1   ").arg(shown->proxy.rowCount());
    shown->select({"shell", "tool"});
    QVERIFY(shows(listed + "Selected: 2   No marks   Locked: 2 (1 selected)"));
    shown->select({"tool"});
    QVERIFY(shows(listed + "Selected: 1   No marks   Locked: 2"));
    // A filter that hides the rows also ends their selection.
    shown->select({"shell"});
    shown->proxy.setStateFilter(ViewUpdatable);
    QVERIFY(shows("Listed: 2   Selected: 0   No marks   Locked: 2"));
}

void TableStatusTest::aNewCollectionResetsAllCounts()
{
    mark("shell", Package::Remove);
    QVERIFY(QTest::qWaitFor([this] { return label()->wholeText().contains("1 Remove"); }));
    {
        const Model::Hiding hiding(shown->model);
        QVERIFY(shows("Listed: 0   Selected: 0   No marks"));
        table->collect({}, {StandIn::package("alone", {{"repoid", "@System"}})}, {});
    }
    QVERIFY(shows("Listed: 1   Selected: 0   No marks"));
}

void TableStatusTest::assistiveProgramsReadTheLineAsAStatusBarWithItsText()
{
    QAccessible::setActive(true);
    QVERIFY(shows(QString("Listed: %1   Selected: 0   No marks").arg(shown->proxy.rowCount())));
    QAccessibleInterface* bar = QAccessible::queryAccessibleInterface(status);
    QCOMPARE(bar->role(), QAccessible::StatusBar);
    QCOMPARE(bar->text(QAccessible::Name), QString("Rows and marks"));
    QCOMPARE(bar->childCount(), 1);
    QCOMPARE(bar->child(0)->text(QAccessible::Name), label()->wholeText());
}

void TableStatusTest::allCountsAreZeroIfTheTableHasNoRecords()
{
    shown.reset();
    table->yumIO.clearEntries();
    shown = std::make_unique<ShownTable>(*table);
    status = new TableStatus(&shown->model, &shown->proxy, shown->view);
    shown->window.layout()->addWidget(status);
    QVERIFY(shows("Listed: 0   Selected: 0   No marks"));
}

QTEST_MAIN(TableStatusTest)
#include "TableStatusTest.moc"
