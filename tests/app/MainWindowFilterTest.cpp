// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>
#include <QtWidgets>

#include <functional>

#include "tests/app/EachAlone.h"
#include "tests/app/StandInWindow.h"
#include "tests/packagetable/Described.h"
#include "widgets/Colors.h"

using namespace PackageTable;

// Tests of the filter controls above the table, which determine the listed rows, and of the buttons that mark
// rows.
class MainWindowFilterTest : public StandInWindow
{
    Q_OBJECT

private Q_SLOTS:
    void theReturnKeyAppliesTheExpression();
    void theFilterButtonAppliesTheExpression();
    void typingAnExpressionDoesNotChangeTheListedRows();
    void theListedRowsHaveTheStateThatTheStateBoxSelects();
    void clearingTheDuplicatesBoxHidesTheDuplicates();
    void checkingTheGroupsBoxListsTheGroups();
    void theLabelsAndToolTipsOfTheFilterRowDependOnTheMode();
    void aSearchWithoutAnExpressionLoadsNoExtraData();
    void aSearchFindsTextsInEveryField();
    void aSearchAfterACollectionDoesNotLoadTheExtraDataAgain();
    void twoSearchesBeforeTheFirstCollectionLoadTheExtraDataOnlyOnce();
    void theTableIsNotFilteredWhileExtraDataAreLoaded();
    void aSearchFindsAPackageByTheExactPathOfAFile();
    void aHintIsShownIfAnExpressionWithAFinalDollarSignFindsNothing();
    void bothHintsAreShownIfAnExpressionWithADollarSignMatchesOnlyInAnotherLetterCase();
    void theEmptyTableNamesTheLimitOfTheChosenView_data();
    void theEmptyTableNamesTheLimitOfTheChosenView();
    void anInvalidExpressionHasTheErrorColour();
    void theStateBoxAndBothCheckBoxesFilterTheRowsInSearchModeToo();
    void aWorkerReadsTheSearchTextsOfRecordsWithTheSelectedState();
    void aWorkerReadsTheSearchTextsAgainAfterARefresh();

    void theApplyButtonIsEnabledWhileAtLeastOneRecordIsMarked();
    void aButtonMarksTheSelectedRows();
    void aButtonMarksTheListedUpdates();
    void aButtonRemovesAllMarks();
    void markingManyRowsSortsTheTableOnlyOnce();
    void aWarningIsShownIfAMarkedRecordIsNotListed();
    void aWarningIsShownIfAControlOfTheFilterRowHidesAMarkedRecord();
    void theWarningAboutUnlistedActionsDoesNotMoveTheControls();
    void theWarningAboutUnlistedActionsHasTheWarningColour();
};

void MainWindowFilterTest::theReturnKeyAppliesTheExpression()
{
    shown->start();
    shown->filter("too");
    QCOMPARE(shown->listed(), QStringList{"tool"});
    shown->filter("(");
    QCOMPARE(shown->listed(), QStringList());
    shown->filter(".*");
    QCOMPARE(shown->sorted(), (QStringList{"many", "tool"}));
}

void MainWindowFilterTest::theFilterButtonAppliesTheExpression()
{
    shown->start();
    shown->type("too");
    shown->press("Filter");
    QCOMPARE(shown->listed(), QStringList{"tool"});
}

void MainWindowFilterTest::typingAnExpressionDoesNotChangeTheListedRows()
{
    shown->start();
    shown->type("too");
    QCOMPARE(shown->sorted(), (QStringList{"many", "tool"}));
}

void MainWindowFilterTest::theListedRowsHaveTheStateThatTheStateBoxSelects()
{
    shown->start();
    const QList<QStringList> expected{
        {"many", "tool"},
        {"editor", "lib", "lib"},
        {"many", "shell", "tool"},
        {"editor", "lib", "lib", "many", "shell", "tool"},
    };
    for (const int index : {1, 2, 3, 0}) {
        shown->choose(shown->stateBox, index);
        QCOMPARE(shown->sorted(), expected.at(index));
    }
}

void MainWindowFilterTest::clearingTheDuplicatesBoxHidesTheDuplicates()
{
    shown->start();
    shown->choose(shown->stateBox, ViewInstallable);
    QCOMPARE(shown->sorted(), (QStringList{"editor", "lib", "lib"}));
    shown->click(shown->dupsBox, QPoint(8, shown->dupsBox->height() / 2));
    QVERIFY(!shown->dupsBox->isChecked());
    QCOMPARE(shown->sorted(), (QStringList{"editor", "lib"}));
    shown->click(shown->dupsBox, QPoint(8, shown->dupsBox->height() / 2));
    QCOMPARE(shown->sorted(), (QStringList{"editor", "lib", "lib"}));
}

void MainWindowFilterTest::checkingTheGroupsBoxListsTheGroups()
{
    shown->start();
    shown->choose(shown->stateBox, ViewInstallable);
    shown->click(shown->groupsBox, QPoint(8, shown->groupsBox->height() / 2));
    QCOMPARE(shown->sorted(), (QStringList{"Games", "editor", "lib", "lib"}));
    shown->click(shown->groupsBox, QPoint(8, shown->groupsBox->height() / 2));
    QCOMPARE(shown->sorted(), (QStringList{"editor", "lib", "lib"}));
}

void MainWindowFilterTest::theLabelsAndToolTipsOfTheFilterRowDependOnTheMode()
{
    shown->start();
    for (int round = 0; round < 2; ++round) {
        QCOMPARE(shown->button("Filter")->toolTip(), QString("Apply the filter specified to the left"));
        QCOMPARE(shown->regexpEdit->toolTip(),
                 QString("Regular expression filter matching textual fields visible in the table"));
        shown->choose(shown->modeBox, Search);
        QCOMPARE(shown->button("Search")->toolTip(),
                 QString("Perform the search for the regular expression specified to the left"));
        QCOMPARE(shown->regexpEdit->toolTip(),
                 QString("Regular expression to compare to all fields of a package"));
        shown->choose(shown->modeBox, Filter);
    }
}

void MainWindowFilterTest::aSearchWithoutAnExpressionLoadsNoExtraData()
{
    shown->start();
    standIn->forgetCalls();
    shown->choose(shown->modeBox, Search);
    QCOMPARE(shown->sorted(), (QStringList{"many", "tool"}));
    shown->press("Search");
    shown->filter("");
    QCOMPARE(shown->sorted(), (QStringList{"many", "tool"}));
    QCOMPARE(standIn->calls(), QStringList());
    QCOMPARE(usable(), usableWhenReady);
}

void MainWindowFilterTest::aSearchFindsTextsInEveryField()
{
    shown->start();
    shown->choose(shown->stateBox, ViewAll);
    shown->filter("bin/needle");
    QCOMPARE(shown->listed(), QStringList());
    shown->choose(shown->modeBox, Search);
    QCOMPARE(shown->listed(), QStringList{"editor"});
    shown->type("needle");
    shown->press("Search");
    QCOMPARE(shown->sorted(), (QStringList{"editor", "many", "tool"}));
    shown->choose(shown->modeBox, Filter);
    QCOMPARE(shown->listed(), QStringList());
    QVERIFY(shown->proxy->getFilter());
    QCOMPARE(usable(), usableWhenReady);
    QCOMPARE(busyCursor(), QString("none"));
}

void MainWindowFilterTest::aSearchAfterACollectionDoesNotLoadTheExtraDataAgain()
{
    QCOMPARE(shown->modeBox->toolTip(), QString(modeToolTip) + " (Must load extra data.)");
    shown->start();
    QCOMPARE(shown->modeBox->toolTip(), QString(modeToolTip));
    standIn->forgetCalls();
    shown->choose(shown->modeBox, Search);
    shown->filter("needle");
    shown->filter("other");
    shown->press("Re&fresh");
    shown->filter("needle");
    QCOMPARE(shown->sorted(), (QStringList{"many", "tool"}));
    QCOMPARE(standIn->calls("collectFileLists") + standIn->calls("collectOtherData"), 0);
    QCOMPARE(shown->modeBox->toolTip(), QString(modeToolTip));
}

void MainWindowFilterTest::twoSearchesBeforeTheFirstCollectionLoadTheExtraDataOnlyOnce()
{
    // The repository editor opens at startup, before the program collects packages.
    shown->window->setRepoEditorAtStart();
    standIn->forgetCalls();
    const auto loads = [this] {
        return QList<int>{standIn->calls("collectFileLists"), standIn->calls("collectOtherData")};
    };
    QList<QList<int>> seen;
    const Once once(
        [] {
            const QWidget* dialog = QApplication::activeModalWidget();
            return dialog != nullptr && dialog->windowTitle() == "VYRE Repository Configuration Editor";
        },
        [this, loads, &seen] {
            shown->window->setMode(Search);
            seen << loads();
            for (const char* expression : {"needle", "other"}) {
                shown->window->setRegexp(expression);
                shown->window->filtersearch();
                seen << loads();
            }
            QApplication::activeModalWidget()->close();
        });
    shown->window->show();
    QTRY_VERIFY_WITH_TIMEOUT(shown->isReady(), 20000);
    QVERIFY(once.isDone());
    QCOMPARE(seen, (QList<QList<int>>{{0, 0}, {1, 1}, {1, 1}}));
    QCOMPARE(loads(), (QList<int>{1, 1}));
}

void MainWindowFilterTest::theTableIsNotFilteredWhileExtraDataAreLoaded()
{
    // The repository editor opens at startup, before the program loads the extra data.
    shown->window->setRepoEditorAtStart();
    QList<bool> filtering;
    const Once edited(
        [] {
            const QWidget* dialog = QApplication::activeModalWidget();
            return dialog != nullptr && dialog->windowTitle() == "VYRE Repository Configuration Editor";
        },
        [this, &filtering] {
            shown->window->setMode(Search);
            shown->window->setRegexp("needle");
            filtering << shown->proxy->getFilter();
            const bool held = inTheMiddle([this] { shown->window->filtersearch(); },
                                          [this, &filtering] { filtering << shown->proxy->getFilter(); });
            filtering << (held && shown->proxy->getFilter());
            QApplication::activeModalWidget()->close();
        });
    shown->window->show();
    QTRY_VERIFY_WITH_TIMEOUT(shown->isReady(), 20000);
    QVERIFY(edited.isDone());
    QCOMPARE(filtering, (QList<bool>{true, false, true}));
}

void MainWindowFilterTest::aSearchFindsAPackageByTheExactPathOfAFile()
{
    standIn->setPackages({}, {},
                         {StandIn::package("first", {{"files", QJsonArray{"/usr/bin/a", "/usr/bin/b"}}}),
                          StandIn::package("last", {{"files", QJsonArray{"/usr/bin/0", "/usr/bin/a"}}}),
                          StandIn::package("longer", {{"files", QJsonArray{"/usr/bin/ab", "/usr/bin/b"}}})});
    shown->start();
    shown->choose(shown->stateBox, ViewInstallable);
    shown->choose(shown->modeBox, Search);
    shown->filter("/usr/bin/a");
    QCOMPARE(shown->sorted(), (QStringList{"first", "last", "longer"}));
    shown->filter("/usr/bin/a$");
    QCOMPARE(shown->sorted(), QStringList{"last"});
    shown->filter("/usr/bin/a([[:space:]]|$)"); // as the manual and the hint recommend
    QCOMPARE(shown->sorted(), (QStringList{"first", "last"}));
}

void MainWindowFilterTest::aHintIsShownIfAnExpressionWithAFinalDollarSignFindsNothing()
{
    shown->start();
    const auto hinted = [this] { return shown->view->accessibleDescription().contains("([[:space:]]|$)"); };
    shown->filter("/usr/bin/missing$");
    QCOMPARE(shown->listed(), QStringList());
    QVERIFY(!hinted()); // Filter mode needs no hint: "$" matches the end of a row
    shown->choose(shown->modeBox, Search);
    QCOMPARE(shown->listed(), QStringList());
    QVERIFY2(hinted(), qPrintable(shown->view->accessibleDescription()));
    shown->filter("/usr/bin/missing");
    QVERIFY(!hinted());
    QVERIFY(shown->view->accessibleDescription().startsWith("No package matches."));
}

void MainWindowFilterTest::bothHintsAreShownIfAnExpressionWithADollarSignMatchesOnlyInAnotherLetterCase()
{
    standIn->setPackages({}, {},
                         {StandIn::package("first", {{"files", QJsonArray{"/usr/bin/a", "/usr/bin/b"}}})});
    shown->start();
    shown->choose(shown->stateBox, ViewInstallable);
    shown->choose(shown->modeBox, Search);
    const QString caseHint =
        "No package matches.\nWith other upper and lower case letters, packages match. For "
        "both forms of a letter, write \"[Aa]\".";
    const QString viewHint = "\n\"View Installable\" lists only packages that are not installed. "
                             "Another view may list packages that match.";
    shown->filter("/usr/bin/B");
    QCOMPARE(shown->view->accessibleDescription(), caseHint + viewHint);
    shown->filter("/usr/bin/B$");
    QCOMPARE(shown->listed(), QStringList());
    QCOMPARE(shown->view->accessibleDescription(),
             caseHint +
                 "\nIn a search, \"$\" is the end of a whole field, such as the list of files. "
                 "For the end of one line, write \"([[:space:]]|$)\"." +
                 viewHint);
    shown->filter("/usr/bin/b$");
    QCOMPARE(shown->listed(), QStringList{"first"});
}

void MainWindowFilterTest::theEmptyTableNamesTheLimitOfTheChosenView_data()
{
    QTest::addColumn<int>("view");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("hint");

    const QString another = " Another view may list packages that match.";
    const QString updatable = "\n\"View Updatable\" lists only packages that have an update." + another;
    const QString installable =
        "\n\"View Installable\" lists only packages that are not installed." + another;
    const QString removable = "\n\"View Removable\" lists only installed packages." + another;
    QTest::newRow("updatable, filter") << int(ViewUpdatable) << int(Filter) << updatable;
    QTest::newRow("updatable, search") << int(ViewUpdatable) << int(Search) << updatable;
    QTest::newRow("installable, filter") << int(ViewInstallable) << int(Filter) << installable;
    QTest::newRow("installable, search") << int(ViewInstallable) << int(Search) << installable;
    QTest::newRow("removable, filter") << int(ViewRemovable) << int(Filter) << removable;
    QTest::newRow("removable, search") << int(ViewRemovable) << int(Search) << removable;
    QTest::newRow("all, filter") << int(ViewAll) << int(Filter) << QString();
    QTest::newRow("all, search") << int(ViewAll) << int(Search) << QString();
}

void MainWindowFilterTest::theEmptyTableNamesTheLimitOfTheChosenView()
{
    QFETCH(int, view);
    QFETCH(int, mode);
    QFETCH(QString, hint);
    shown->start();
    shown->choose(shown->modeBox, mode);
    shown->choose(shown->stateBox, view);
    shown->filter("nothing has this");
    QCOMPARE(shown->listed(), QStringList());
    QCOMPARE(shown->view->accessibleDescription(), "No package matches." + hint);
}

void MainWindowFilterTest::anInvalidExpressionHasTheErrorColour()
{
    shown->start();
    const QColor usual = shown->regexpEdit->palette().color(QPalette::Base);
    shown->filter("(");
    QCOMPARE(shown->sorted(), QStringList());
    QCOMPARE(shown->regexpEdit->palette().color(QPalette::Base), QColor(Colors::errorBg()));
    shown->filter("nothing has this");
    QCOMPARE(shown->sorted(), QStringList());
    QCOMPARE(shown->regexpEdit->palette().color(QPalette::Base), usual);
}

void MainWindowFilterTest::theStateBoxAndBothCheckBoxesFilterTheRowsInSearchModeToo()
{
    shown->start();
    shown->choose(shown->modeBox, Search);
    shown->filter("i|l");
    QCOMPARE(shown->sorted(), (QStringList{"many", "tool"})); // the summary of both is "needle"
    shown->choose(shown->stateBox, ViewInstallable);
    QCOMPARE(usable(), usableWhenReady);
    QCOMPARE(shown->sorted(), (QStringList{"editor", "lib", "lib"}));
    shown->click(shown->dupsBox, QPoint(8, shown->dupsBox->height() / 2));
    QCOMPARE(shown->sorted(), (QStringList{"editor", "lib"}));
    shown->click(shown->groupsBox, QPoint(8, shown->groupsBox->height() / 2));
    shown->filter("a");
    QCOMPARE(shown->sorted(), (QStringList{"Games", "editor", "lib"}));
    QCOMPARE(usable(), usableWhenReady);
    QCOMPARE(busyCursor(), QString("none"));
}

void MainWindowFilterTest::aWorkerReadsTheSearchTextsOfRecordsWithTheSelectedState()
{
    shown->start();
    // Whether a worker has read the search texts of all records with this state.
    const auto haveTexts = [this](Package::State state) {
        bool all = true;
        for (int row = 0; row < shown->model->rowCount(); ++row) {
            const Package::Entry& entry = *shown->model->entry(row);
            all =
                all && (entry.state != state || entry.kind == Package::Group || !entry.searchTexts.isNull());
        }
        return all;
    };
    shown->filter("bin/needle");
    shown->type("");
    QVERIFY(!haveTexts(Package::Updatable));
    shown->choose(shown->modeBox, Search);
    QCOMPARE(shown->listed(), QStringList());
    QVERIFY(haveTexts(Package::Updatable));
    QVERIFY(!haveTexts(Package::Available));
    shown->choose(shown->stateBox, ViewInstallable);
    QCOMPARE(shown->listed(), QStringList{"editor"});
    QVERIFY(haveTexts(Package::Available));
    QVERIFY(!haveTexts(Package::Installed));
    QCOMPARE(usable(), usableWhenReady);
}

void MainWindowFilterTest::aWorkerReadsTheSearchTextsAgainAfterARefresh()
{
    shown->start();
    shown->choose(shown->modeBox, Search);
    shown->filter("needle");
    const QStringList found = shown->sorted();
    QVERIFY(!found.isEmpty());
    // A record keeps only the texts that a worker has read. If the graphical thread read the texts, the
    // records would lack them.
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(shown->sorted(), found);
    int unread = 0;
    for (int row = 0; row < shown->model->rowCount(); ++row) {
        const Package::Entry& entry = *shown->model->entry(row);
        unread += entry.state == Package::Updatable && entry.searchTexts.isNull() ? 1 : 0;
    }
    QCOMPARE(unread, 0);
}

void MainWindowFilterTest::theApplyButtonIsEnabledWhileAtLeastOneRecordIsMarked()
{
    shown->start();
    const QPushButton* apply = shown->button("&Apply Actions");
    QVERIFY(!apply->isEnabled());
    shown->click("tool", ActionColumn);
    QVERIFY(apply->isEnabled());
    shown->click("many", ActionColumn);
    shown->click("tool", ActionColumn);
    shown->click("tool", ActionColumn);
    QCOMPARE(shown->marks(), QStringList{"many update"});
    QVERIFY(apply->isEnabled());
    shown->click("many", ActionColumn);
    shown->click("many", ActionColumn);
    QCOMPARE(shown->marks(), QStringList());
    QVERIFY(!apply->isEnabled());
}

void MainWindowFilterTest::aButtonMarksTheSelectedRows()
{
    shown->start();
    listEverything();
    shown->press("Set &Install/Update of Selected");
    QCOMPARE(shown->marks(), QStringList());
    QVERIFY(!shown->button("&Apply Actions")->isEnabled());
    for (const char* name : {"editor", "shell", "tool", "Games"}) {
        shown->click(name, NameColumn, Qt::ControlModifier);
    }
    shown->press("Set &Install/Update of Selected");
    QCOMPARE(shown->marks(), (QStringList{"Games install", "editor install", "tool update"}));
    QVERIFY(shown->button("&Apply Actions")->isEnabled());
    QCOMPARE(standIn->calls("apply"), 0);
}

void MainWindowFilterTest::aButtonMarksTheListedUpdates()
{
    shown->start();
    shown->choose(shown->stateBox, ViewAll);
    shown->filter("tool|shell|editor");
    shown->press("Set &Update of Listed");
    QCOMPARE(shown->marks(), QStringList{"tool update"});
    QVERIFY(shown->button("&Apply Actions")->isEnabled());
    shown->filter("");
    shown->press("Set &Update of Listed");
    QCOMPARE(shown->marks(), (QStringList{"many update", "tool update"}));
    QCOMPARE(standIn->calls("apply"), 0);
}

void MainWindowFilterTest::aButtonRemovesAllMarks()
{
    shown->start();
    listEverything();
    shown->click("tool", ActionColumn);
    shown->click("editor", ActionColumn);
    shown->click("shell", ActionColumn);
    shown->filter("many");
    QCOMPARE(shown->marks().count(), 3);
    QCOMPARE(shown->label->text(), QString("Unlisted Actions"));
    shown->press("&Clear Actions");
    QCOMPARE(shown->marks(), QStringList());
    QVERIFY(!shown->button("&Apply Actions")->isEnabled());
    QCOMPARE(shown->label->text(), QString());
}

void MainWindowFilterTest::markingManyRowsSortsTheTableOnlyOnce()
{
    QJsonArray packages;
    for (int i = 0; i < 50; ++i) {
        packages.append(StandIn::package("package" + QString::number(i)));
    }
    standIn->setPackages({}, {}, packages);
    shown->window->setStateFilter(ViewInstallable);
    shown->start();
    QHeaderView* header = shown->view->horizontalHeader();
    shown->click(header->viewport(), QPoint(header->sectionViewportPosition(ActionColumn) + 10, 8));
    QCOMPARE(shown->proxy->sortColumn(), int(ActionColumn));
    shown->view->setFocus();
    shown->key(Qt::Key_A, Qt::ControlModifier);
    QSignalSpy layout(shown->proxy, SIGNAL(layoutChanged()));
    // If the table has many rows, a separate sort for each marked row takes minutes.
    shown->press("Set &Install/Update of Selected");
    QCOMPARE(shown->marks().count(), 50);
    QCOMPARE(layout.count(), 1);
    shown->press("&Clear Actions");
    QCOMPARE(shown->marks().count(), 0);
    QCOMPARE(layout.count(), 2);
}

void MainWindowFilterTest::aWarningIsShownIfAMarkedRecordIsNotListed()
{
    shown->start();
    shown->click("tool", ActionColumn);
    QCOMPARE(shown->label->text(), QString());
    QCOMPARE(shown->label->toolTip(), QString());
    shown->filter("many");
    QCOMPARE(shown->label->text(), QString("Unlisted Actions"));
    QCOMPARE(shown->label->toolTip(), QString(unlistedToolTip));
    QVERIFY(shown->button("&Apply Actions")->isEnabled());
    shown->filter("");
    QCOMPARE(shown->label->text(), QString());
    QCOMPARE(shown->label->toolTip(), QString());
}

void MainWindowFilterTest::aWarningIsShownIfAControlOfTheFilterRowHidesAMarkedRecord()
{
    shown->start();
    listEverything();
    shown->filter("^(lib .*i686|Games)");
    QCOMPARE(shown->sorted(), (QStringList{"Games", "lib"}));
    shown->click("lib", ActionColumn);
    shown->click("Games", ActionColumn);
    const auto warns = [this](const std::function<void()>& change, const std::function<void()>& back) {
        const bool before = shown->label->text().isEmpty();
        change();
        const bool warned = shown->label->text() == "Unlisted Actions";
        back();
        return before && warned && shown->label->text().isEmpty();
    };
    const auto clickBox = [this](QCheckBox* box) { shown->click(box, QPoint(8, box->height() / 2)); };
    QVERIFY(warns([this] { shown->choose(shown->stateBox, ViewRemovable); },
                  [this] { shown->choose(shown->stateBox, ViewAll); }));
    QVERIFY(warns([this, clickBox] { clickBox(shown->dupsBox); },
                  [this, clickBox] { clickBox(shown->dupsBox); }));
    QVERIFY(warns([this, clickBox] { clickBox(shown->groupsBox); },
                  [this, clickBox] { clickBox(shown->groupsBox); }));
    // The name and the architecture of a package are in different fields, which a search never joins.
    QVERIFY(warns([this] { shown->choose(shown->modeBox, Search); },
                  [this] { shown->choose(shown->modeBox, Filter); }));
}

void MainWindowFilterTest::theWarningAboutUnlistedActionsDoesNotMoveTheControls()
{
    shown->start();
    const QWidget* apply = shown->button("&Apply Actions");
    const QRect label = shown->label->geometry();
    const QRect button = apply->geometry();
    QVERIFY(label.width() > shown->label->fontMetrics().horizontalAdvance("Unlisted Actions"));
    shown->click("tool", ActionColumn);
    shown->filter("many");
    QTest::qWait(50);
    QCOMPARE(shown->label->text(), QString("Unlisted Actions"));
    QCOMPARE(shown->label->geometry(), label);
    QCOMPARE(apply->geometry(), button);
}

void MainWindowFilterTest::theWarningAboutUnlistedActionsHasTheWarningColour()
{
    shown->start();
    const QColor around = shown->area->palette().color(QPalette::Window);
    QVERIFY(around != QColor(Colors::warningBg()));
    QCOMPARE(backgroundOfLabel(), around);
    shown->click("tool", ActionColumn);
    shown->filter("many");
    QCOMPARE(backgroundOfLabel(), QColor(Colors::warningBg()));
    shown->filter("");
    QCOMPARE(backgroundOfLabel(), around);
}

int main(int argc, char** argv)
{
    return EachAlone::run<MainWindowFilterTest>(argc, argv);
}

#include "MainWindowFilterTest.moc"
