// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>
#include <QtWidgets>

#include "services/HProgressBar.h"
#include "tests/app/EachAlone.h"
#include "tests/app/StandInWindow.h"
#include "widgets/HMenu.h"

using namespace PackageTable;

// Tests of the menus, texts and layout of the main window.
class MainWindowWidgetsTest : public StandInWindow
{
    Q_OBJECT

private Q_SLOTS:
    void theWindowTitleContainsTheNameOfTheMachine();
    void theMenusHaveTheExpectedEntriesAndKeys();
    void menusCanBeTornOff();
    void theFilterRowHasTheExpectedTexts();
    void theStateBoxHasTheExpectedEntries();
    void theButtonsHaveTheExpectedTextsAndToolTips();
    void thePartsOfTheWindowAreInTheExpectedOrder();
    void theWindowIsAtLeast768PixelsWideAndFitsTheScreen();
};

void MainWindowWidgetsTest::theWindowTitleContainsTheNameOfTheMachine()
{
    QProcess uname;
    uname.start("uname", {"-n"});
    QVERIFY(uname.waitForFinished());
    QCOMPARE(shown->window->windowTitle(), "VYRE - " + QString::fromLocal8Bit(uname.readAll().trimmed()));
}

void MainWindowWidgetsTest::theMenusHaveTheExpectedEntriesAndKeys()
{
    QStringList found;
    for (const QAction* action : shown->window->menuBar()->actions()) {
        found << action->text();
        for (const QAction* entry : action->menu()->actions()) {
            found << (entry->isSeparator() ? "--"
                                           : "  " + entry->text() + '|' + entry->shortcut().toString());
        }
    }
    QCOMPARE(found,
             (QStringList{"&Program", "  &Quit|Ctrl+Q", "&Windows", "  &Log|Ctrl+L", "  &History|Ctrl+H",
                          "  &Advisories|Ctrl+D", "&Repositories", "  &Edit Configuration|Ctrl+E", "&Cache",
                          "  Clean dbcache|", "  Clean Packages|", "  Clean Metadata|", "--", "  Clean All|",
                          "&Help", "  Manual (html)|", "  Manual (PDF)|", "--", "  &About|F1"}));
}

void MainWindowWidgetsTest::menusCanBeTornOff()
{
    for (const char* title : {"&Program", "&Windows", "&Repositories", "&Cache", "&Help"}) {
        const auto* menu = qobject_cast<HMenu*>(shown->menu(title));
        QVERIFY(menu != nullptr);
        QVERIFY(menu->isTearOffEnabled());
    }
}

void MainWindowWidgetsTest::theFilterRowHasTheExpectedTexts()
{
    QCOMPARE(shown->modeBox->count(), 2);
    QCOMPARE(shown->modeBox->itemText(0), QString("Filter"));
    QCOMPARE(shown->modeBox->itemText(1), QString("Search"));
    QCOMPARE(shown->modeBox->currentIndex(), 0);
    QCOMPARE(shown->regexpEdit->text(), QString(".*"));
    QVERIFY(shown->filterButton()->isDefault());
    QCOMPARE(shown->dupsBox->text(), QString("Include Duplicates"));
    QVERIFY(shown->dupsBox->isChecked());
    QCOMPARE(shown->dupsBox->toolTip(),
             QString("Whether or not filter should include packages with duplicate names.\n"
                     "If unchecked, the package with the architecture closest to the base architecture is "
                     "shown."));
    QCOMPARE(shown->groupsBox->text(), QString("Include Groups"));
    QVERIFY(!shown->groupsBox->isChecked());
    QCOMPARE(shown->groupsBox->toolTip(), QString("Whether or not filter should include package groups"));
}

void MainWindowWidgetsTest::theStateBoxHasTheExpectedEntries()
{
    const QStringList texts{"View Updatable", "View Installable", "View Removable", "View All"};
    QCOMPARE(shown->stateBox->count(), 4);
    for (int i = 0; i < 4; ++i) {
        QCOMPARE(shown->stateBox->itemText(i), texts.at(i));
        QCOMPARE(shown->stateBox->itemData(i), QVariant(i));
    }
    QCOMPARE(shown->stateBox->currentIndex(), 0);
    QCOMPARE(shown->stateBox->toolTip(),
             QString("Filter for those packages which are eligible for updating,\n"
                     "for installing, or for removing; or show all packages"));
}

void MainWindowWidgetsTest::theButtonsHaveTheExpectedTextsAndToolTips()
{
    const QMap<QString, QString> toolTips{
        {"&Describe", "Pop up a window with a detailed description of the currently selected package"},
        {"Re&size", "Resize the columns and window to optimal values"},
        {"Re&fresh", "Refresh the list of installed packages and packages available for update.\n"
                     "Use this to check for new updates in repositories, or if any packages were installed "
                     "manually."},
        {"Set &Install/Update of Selected",
         "Sets the Action for all selected packages which are Not Installed to Install, and\n"
         "sets the Action for all selected packages which are Installed but Out-of-date to Update.\n"
         "Does not Apply Actions automatically."},
        {"Set &Update of Listed",
         "Sets the Action to Update for any packages which are Installed but Out-of-date,\n"
         "and which are currently listed based on the the Mode, Filter, Search, State, Duplicates, and "
         "Groups "
         "settings.\nDoes not Apply Actions automatically."},
        {"&Clear Actions", "Clears all specified Actions (Updates, Installs, and Removals)"},
        {"&Apply Actions", "Applies the specified Actions (Updates, Installs, and Removals)"},
    };
    QCOMPARE(shown->area->findChildren<QPushButton*>().count(), toolTips.count() + 1);
    for (auto i = toolTips.constBegin(); i != toolTips.constEnd(); ++i) {
        QCOMPARE(shown->button(i.key())->toolTip(), i.value());
    }
    QVERIFY(!shown->button("&Describe")->isEnabledTo(shown->area));
    QVERIFY(!shown->button("&Apply Actions")->isEnabledTo(shown->area));
}

void MainWindowWidgetsTest::thePartsOfTheWindowAreInTheExpectedOrder()
{
    shown->start();
    const auto place = [this](const QWidget* widget) { return widget->mapTo(shown->window, QPoint()); };
    const QList<QWidget*> filterRow{shown->modeBox,  shown->regexpEdit, shown->filterButton(),
                                    shown->stateBox, shown->dupsBox,    shown->groupsBox};
    const QList<QWidget*> buttonRow{shown->button("&Describe"),
                                    shown->button("Re&size"),
                                    shown->button("Re&fresh"),
                                    shown->button("Set &Install/Update of Selected"),
                                    shown->button("Set &Update of Listed"),
                                    shown->button("&Clear Actions"),
                                    shown->label,
                                    shown->button("&Apply Actions")};
    for (const QList<QWidget*>& row : {filterRow, buttonRow}) {
        for (int i = 1; i < row.count(); ++i) {
            QVERIFY(place(row.at(i)).x() >= place(row.at(i - 1)).x() + row.at(i - 1)->width());
        }
    }
    const QList<HProgressBar*> bars = shown->window->findChildren<HProgressBar*>();
    QCOMPARE(bars.count(), 2);
    const QList<QWidget*> column{filterRow.first(), shown->view, buttonRow.first(), bars.at(0), bars.at(1)};
    for (int i = 1; i < column.count(); ++i) {
        QVERIFY(place(column.at(i)).y() >= place(column.at(i - 1)).y() + column.at(i - 1)->height());
    }
    // The table gets the remaining height, and the gap after the first button gets the remaining width.
    QVERIFY(shown->view->height() > shown->window->height() / 2);
    QVERIFY(place(buttonRow.at(1)).x() - place(buttonRow.at(0)).x() - buttonRow.at(0)->width() >
            place(buttonRow.at(2)).x() - place(buttonRow.at(1)).x() - buttonRow.at(1)->width());
}

void MainWindowWidgetsTest::theWindowIsAtLeast768PixelsWideAndFitsTheScreen()
{
    QVERIFY(shown->window->sizeHint().width() >= 768);
    QVERIFY(shown->window->sizeHint().width() >= shown->window->minimumSizeHint().width());
    shown->start();
    QVERIFY(shown->window->width() >= 768);
    QVERIFY(QGuiApplication::primaryScreen()->geometry().contains(shown->window->frameGeometry()));
}

int main(int argc, char** argv)
{
    return EachAlone::run<MainWindowWidgetsTest>(argc, argv);
}

#include "MainWindowWidgetsTest.moc"
