#include "app/MainWindow.h"

#include <QTextEdit>
#include <QtTest>
#include <QtWidgets>

#include <memory>

#include "app/base/Share.h"
#include "services/HProgressBar.h"
#include "services/LogWindow.h"
#include "tests/app/EachAlone.h"
#include "tests/app/ShownWindow.h"
#include "tests/packagetable/Described.h"
#include "widgets/Colors.h"
#include "widgets/HMenu.h"

using namespace PackageTable;

namespace {

Log::Window* logWindow()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* window = qobject_cast<Log::Window*>(widget)) {
            return window;
        }
    }
    return nullptr;
}

bool logIsVisible()
{
    const Log::Window* window = logWindow();
    return window != nullptr && window->isVisible();
}

QString busyCursor()
{
    const QCursor* cursor = QApplication::overrideCursor();
    return cursor == nullptr ? "none" : cursor->shape() == Qt::BusyCursor ? "busy" : "other";
}

const char unlistedToolTip[] = "Some packages have actions specified, but because of the current\n"
                               "Mode, Filter, Search, State, Duplicates, and Groups settings,\n"
                               "these packages are not listed currently.\n"
                               "Pressing Apply will cause these actions to occur nonetheless.";

const char modeToolTip[] =
    "Specify the method for using a regular expression to select packages in the table:\n"
    "\tFilter uses the textual fields visible in the table, as if they were separated by spaces.\n"
    "\tSearch uses all fields in packages, including list of Files, Change Log, Requires, etc.,\n"
    "\tindependently.  It is considerably slower.";

} // namespace

class MainWindowTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<StandIn> standIn;
    std::unique_ptr<ShownWindow> shown;

    static QSettings* settings(QObject* owner)
    {
        return new QSettings(QSettings::IniFormat, QSettings::UserScope, "vyre", "vyre", owner);
    }

    // What there is unless a test says otherwise: "tool" and "many" are out of date, "shell" is installed,
    // "editor" and "lib" are not, the latter for two architectures, and "Games" is a group.
    void usual()
    {
        using S = StandIn;
        const QJsonObject old{{"version", "1"}, {"repoid", "@System"}};
        const QJsonObject next{{"version", "2"}, {"repoid", "updates"}, {"summary", "needle"}};
        standIn->setPackages({S::package("tool", next), S::package("many", next)},
                             {S::package("tool", old), S::package("many", old), S::package("shell", old)},
                             {S::package("editor", {{"files", QJsonArray{"/usr/bin/needle"}}}),
                              S::package("lib"), S::package("lib", {{"arch", "i686"}})},
                             {S::group("Games")});
    }
    void listEverything() const
    {
        shown->choose(shown->stateBox, ViewAll);
        shown->click(shown->groupsBox, QPoint(8, shown->groupsBox->height() / 2));
        QCOMPARE(shown->sorted(), (QStringList{"Games", "editor", "lib", "lib", "many", "shell", "tool"}));
    }
    // What can be used: menus by their titles, entries by their texts, and "table" for the table area.
    QStringList usable() const
    {
        QStringList found;
        for (const QAction* action : shown->window->menuBar()->actions()) {
            if (action->menu()->isEnabled()) {
                found << action->text();
            }
            for (const QAction* entry : action->menu()->actions()) {
                if (entry->isEnabled() && !entry->isSeparator()) {
                    found << entry->text();
                }
            }
        }
        if (shown->area->isEnabled()) {
            found << "table";
        }
        return found;
    }
    const QStringList usableWhileBusy{"&Windows", "&Log", "&Help", "Manual (html)", "Manual (PDF)", "&About"};
    const QStringList usableWhenReady{"&Program",       "&Quit",         "&Windows",
                                      "&Log",           "&Repositories", "&Edit Configuration",
                                      "&Cache",         "Clean dbcache", "Clean Packages",
                                      "Clean Metadata", "Clean All",     "&Help",
                                      "Manual (html)",  "Manual (PDF)",  "&About",
                                      "table"};

    // Runs something that collects the packages, and in the middle of it something else.
    bool inTheMiddle(const std::function<void()>& collect, const std::function<void()>& meanwhile)
    {
        standIn->setHeld(true);
        standIn->forgetCalls();
        const Once once(
            [this] { return standIn->calls("setupRepos") + standIn->calls("collectFileLists") > 0; },
            [this, meanwhile] {
                meanwhile();
                standIn->setHeld(false);
            });
        collect();
        return QTest::qWaitFor([&once] { return once.isDone(); }, 20000);
    }

    // The colour of the label's background, as it is painted.
    QColor backgroundOfLabel() const
    {
        return shown->label->grab().toImage().pixelColor(shown->label->width() / 2, 3);
    }

    void compareClean(const QString& entry, const char* method);
    void compareAfterTheEditor(Mode mode, const char* expression, const QStringList& listed);
    void compareReadAgain(Mode mode, const QString& expression, const QStringList& before);
    void compareManuals();
    static QMessageBox* aboutBox()
    {
        for (QWidget* each : QApplication::topLevelWidgets()) {
            auto* box = qobject_cast<QMessageBox*>(each);
            if (box != nullptr && box->windowTitle() == "About" && box->isVisible()) {
                return box;
            }
        }
        return nullptr;
    }
    void compareQuit(const std::function<void()>& quit);

private Q_SLOTS:
    void initTestCase()
    {
        standIn = std::make_unique<StandIn>();
        usual();
        shown = std::make_unique<ShownWindow>();
    }

    // --- What there is to see

    void titleNamesTheMachine();
    void menusHaveTheirEntries();
    void menusCanBeTornOffAndTellMore();
    void filterRowHasItsTexts();
    void stateBoxGoesFromUpdatableToAll();
    void buttonsHaveTheirTextsAndToolTips();
    void partsAreInTheirOrder();
    void windowIsWideEnough();

    // --- Start

    void newWindowWaitsForItsStart();
    void windowIsThereBeforeTheSlowWork();
    void startListsWhatIsOutOfDate();
    void startingTwiceCollectsOnce();
    void columnsFitTheirContentsAfterTheStart();
    void settingsMadeBeforehandApply();
    void searchAskedForBeforehandApplies();
    void filterOfTheCommandLineAppliesAfterTheEditor()
    {
        compareAfterTheEditor(Filter, "many|shell", {"many", "shell"});
    }
    void searchOfTheCommandLineAppliesAfterTheEditor()
    {
        compareAfterTheEditor(Search, "needle", {"editor", "many", "tool"});
    }
    void failingBackEndQuitsWithoutShowingTheTable();
    void logIsThereBeforeTheBackEndIsStarted();
    void quittingFromTheQuestionForCredentialsReadsNothing();
    void credentialsThatAreEnteredAreUsedAtOnce();
    void repositoriesThatWereEditedAreReadAgain();
    void logIsOpenedAtTheStartIfAskedFor();
    void logStaysClosedOtherwise();

    void emptyTableTellsWhy();
    void failedCollectionDoesNotLookLikeNoUpdates();
    void sizeAndColumnsAreRemembered();
    void rememberedSizeAndColumnsAreRestored();
    void nonsenseThatIsRememberedChangesNothing();

    // --- Filter row

    void returnAppliesTheExpression();
    void buttonAppliesTheExpression();
    void typingAloneListsNothingElse();
    void stateBoxDecidesWhatIsListed();
    void duplicatesCanBeLeftOut();
    void groupsCanBeIncluded();
    void modeDecidesTheTexts();
    void searchForAnythingLoadsNothing();
    void searchLooksIntoEveryField();
    void collectionHasLoadedTheExtraData();
    void extraDataAreLoadedOnceForTheFirstExpression();
    void nothingIsFilteredWhileExtraDataAreLoaded();
    void brokenExpressionLooksDifferent();
    void filtersInSearchModeApply();
    void textsAreReadForTheExpressionInUse();
    void textsAreReadBeforeNewRecordsAreSearched();

    // --- Actions

    void applyIsEnabledWhileThereIsAnyAction();
    void selectedRowsAreSet();
    void listedUpdatesAreSet();
    void clearingTakesAllActionsAway();
    void settingTheSelectedRowsSortsTheTableOnce();
    void hiddenActionsAreWarnedOf();
    void everyFilterWarnsOfHiddenActions();
    void warningKeepsItsPlace();
    void warningHasTheColourOfOne();

    // --- Long operations

    void controlsAreTakenAwayWhileItWorks();
    void shortcutsDoNothingWhileItWorks();
    void logCanBeOpenedWhileItWorks();
    void windowCannotBeClosedWhileItWorks();
    void quittingIsRefusedWhileItWorks();
    void operationEndsUnderTheAboutWindow();
    void nothingWrongIsFilteredWhileThePackagesAreReadAgain() { compareReadAgain(Filter, "too", {"tool"}); }
    void nothingWrongIsFoundWhileThePackagesAreReadAgain()
    {
        compareReadAgain(Search, "needle", {"editor", "many", "tool"});
    }
    void focusComesBack();
    void refreshCollectsAnew();
    void refreshForgetsActionsAndTheirWarning();
    void cleaningDbcacheCollectsAnew() { compareClean("Clean dbcache", "cleanDbcache"); }
    void cleaningMetadataCollectsAnew() { compareClean("Clean Metadata", "cleanMetadata"); }
    void cleaningAllCollectsAnew() { compareClean("Clean All", "cleanAll"); }
    void cleaningPackagesLeavesTheTableAlone();
    void doubtsAboutTheConfigurationAreLoggedOnce();
    void cleanEntriesNameTheCacheDirectory();
    void sizeOfColumnsIsRestored();
    void confirmedActionsAreAppliedAndTheTableCollected();
    void credentialsTypedAfterAnApplyAreUsedAtOnce();
    void refusedActionsStay();
    void failureBeforeAnyChangeLeavesTheTableAlone();
    void failureHalfWayCollectsTheTable();
    void marksStayWhenAnotherProgramHasChangedTheSystem();
    void repositoriesOfATransactionMayNeedCredentials();

    // --- Other windows and the end

    void currentPackageCanBeDescribed();
    void describingEndsWithTheRow();
    void errorsThatStandInTheLogOnlyAreTold();
    void aClickOnARowThatCannotBeMarkedSaysWhy();
    void manualsAreOpenedInOtherPrograms();
    void manualsCanBeOpenedWhileItWorks();
    void missingManualIsTold();
    void shortcutOpensTheLog();
    void menuOpensTheLog();
    void aboutTellsTheVersion();
    void aboutOpensItsPageInTheBrowserOfTheUser();
    void shortcutQuits();
    void menuQuits();
    void closingQuits();
};

void MainWindowTest::titleNamesTheMachine()
{
    QProcess uname;
    uname.start("uname", {"-n"});
    QVERIFY(uname.waitForFinished());
    QCOMPARE(shown->window->windowTitle(), "VYRE - " + QString::fromLocal8Bit(uname.readAll().trimmed()));
}

void MainWindowTest::menusHaveTheirEntries()
{
    QStringList found;
    for (const QAction* action : shown->window->menuBar()->actions()) {
        found << action->text();
        for (const QAction* entry : action->menu()->actions()) {
            found << (entry->isSeparator() ? "--"
                                           : "  " + entry->text() + '|' + entry->shortcut().toString());
        }
    }
    QCOMPARE(found, (QStringList{"&Program", "  &Quit|Ctrl+Q", "&Windows", "  &Log|Ctrl+L", "&Repositories",
                                 "  &Edit Configuration|Ctrl+E", "&Cache", "  Clean dbcache|",
                                 "  Clean Packages|", "  Clean Metadata|", "--", "  Clean All|", "&Help",
                                 "  Manual (html)|", "  Manual (PDF)|", "--", "  &About|F1"}));
}

void MainWindowTest::menusCanBeTornOffAndTellMore()
{
    for (const char* title : {"&Program", "&Windows", "&Repositories", "&Cache", "&Help"}) {
        const auto* menu = qobject_cast<HMenu*>(shown->menu(title));
        QVERIFY(menu != nullptr);
        QVERIFY(menu->isTearOffEnabled());
    }
}

void MainWindowTest::filterRowHasItsTexts()
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

void MainWindowTest::stateBoxGoesFromUpdatableToAll()
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

void MainWindowTest::buttonsHaveTheirTextsAndToolTips()
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

void MainWindowTest::partsAreInTheirOrder()
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
    // The room that is left is that of the table and of the stretch.
    QVERIFY(shown->view->height() > shown->window->height() / 2);
    QVERIFY(place(buttonRow.at(1)).x() - place(buttonRow.at(0)).x() - buttonRow.at(0)->width() >
            place(buttonRow.at(2)).x() - place(buttonRow.at(1)).x() - buttonRow.at(1)->width());
}

void MainWindowTest::windowIsWideEnough()
{
    QVERIFY(shown->window->sizeHint().width() >= 768);
    QVERIFY(shown->window->sizeHint().width() >= shown->window->minimumSizeHint().width());
    shown->start();
    QVERIFY(shown->window->width() >= 768);
    QVERIFY(QGuiApplication::primaryScreen()->geometry().contains(shown->window->frameGeometry()));
}

void MainWindowTest::newWindowWaitsForItsStart()
{
    QCOMPARE(usable(), usableWhileBusy);
    QCOMPARE(busyCursor(), QString("busy"));
    QCOMPARE(shown->listed(), QStringList());
    QCOMPARE(standIn->calls(), QStringList());
    // A window that is not shown starts nothing.
    QTest::qWait(100);
    QCOMPARE(standIn->calls(), QStringList());
    QVERIFY(!shown->window->isVisible());
}

void MainWindowTest::windowIsThereBeforeTheSlowWork()
{
    QStringList seen;
    QImage picture;
    QVERIFY(inTheMiddle([this] { shown->window->show(); },
                        [this, &seen, &picture] {
                            seen << (shown->window->isVisible() ? "visible" : "hidden")
                                 << (shown->window->windowHandle()->isExposed() ? "exposed" : "covered")
                                 << (shown->area->isVisible() ? "table" : "no table") << busyCursor()
                                 << usable();
                            picture = shown->window->screen()
                                          ->grabWindow(shown->window->winId())
                                          .toImage()
                                          .convertToFormat(QImage::Format_RGB32);
                        }));
    QCOMPARE(seen, (QStringList{"visible", "exposed", "no table", "busy"} + usableWhileBusy));
    // It has been painted: not all of it is of one colour.
    QSet<QRgb> colours;
    for (int x = 0; x < picture.width(); ++x) {
        colours.insert(picture.pixel(x, shown->window->menuBar()->height() / 2));
    }
    QVERIFY(colours.count() > 3);
    QTRY_VERIFY(shown->isReady());
}

void MainWindowTest::startListsWhatIsOutOfDate()
{
    shown->start();
    QCOMPARE(shown->listed(), (QStringList{"many", "tool"}));
    QCOMPARE(usable(), usableWhenReady);
    QCOMPARE(busyCursor(), QString("none"));
    QCOMPARE(shown->marks(), QStringList());
    QCOMPARE(shown->label->text(), QString());
    QCOMPARE(standIn->calls("setupRepos"), 1);
    QCOMPARE(standIn->calls("collectFileLists") + standIn->calls("collectOtherData"), 0);
    QVERIFY(shown->view->horizontalHeader()->isSortIndicatorShown());
}

void MainWindowTest::startingTwiceCollectsOnce()
{
    shown->start();
    shown->window->hide();
    shown->window->show();
    QTest::qWait(200);
    QVERIFY(shown->isReady());
    QCOMPARE(standIn->calls("setupRepos"), 1);
}

void MainWindowTest::columnsFitTheirContentsAfterTheStart()
{
    const QString longName = QString("name").repeated(15);
    standIn->setPackages({}, {}, {StandIn::package(longName)});
    shown->start();
    // Not only to what is listed.
    QCOMPARE(shown->listed(), QStringList());
    QVERIFY(shown->view->columnWidth(NameColumn) >= shown->view->fontMetrics().horizontalAdvance(longName));
}

void MainWindowTest::settingsMadeBeforehandApply()
{
    shown->window->setMode(Filter);
    shown->window->setRegexp("l");
    shown->window->setStateFilter(ViewAll);
    shown->window->setDups(false);
    shown->window->setGroups(true);
    QCOMPARE(shown->regexpEdit->text(), QString("l"));
    QCOMPARE(shown->stateBox->currentIndex(), 3);
    QVERIFY(!shown->dupsBox->isChecked());
    QVERIFY(shown->groupsBox->isChecked());
    shown->start();
    QCOMPARE(shown->sorted(), (QStringList{"lib", "shell", "tool"}));
    shown->filter("");
    QCOMPARE(shown->sorted(), (QStringList{"Games", "editor", "lib", "many", "shell", "tool"}));
}

void MainWindowTest::searchAskedForBeforehandApplies()
{
    shown->window->setMode(Search);
    shown->window->setRegexp("needle");
    shown->window->setStateFilter(ViewAll);
    QCOMPARE(shown->modeBox->currentIndex(), 1);
    QCOMPARE(usable(), usableWhileBusy);
    shown->start();
    QCOMPARE(shown->sorted(), (QStringList{"editor", "many", "tool"}));
    QCOMPARE(usable(), usableWhenReady);
    QCOMPARE(busyCursor(), QString("none"));
}

void MainWindowTest::compareAfterTheEditor(Mode mode, const char* expression, const QStringList& listed)
{
    shown->window->setRepoEditorAtStart();
    shown->window->setMode(mode);
    shown->window->setRegexp(expression);
    shown->window->setStateFilter(ViewAll);
    const Once once([] { return QApplication::activeModalWidget() != nullptr; },
                    [] { QApplication::activeModalWidget()->close(); });
    shown->window->show();
    QTRY_VERIFY_WITH_TIMEOUT(shown->isReady(), 20000);
    QCOMPARE(shown->sorted(), listed);
    // And another one afterwards.
    shown->filter("too");
    QCOMPARE(shown->listed(), QStringList{"tool"});
}

void MainWindowTest::failingBackEndQuitsWithoutShowingTheTable()
{
    standIn->setRefusing(true);
    shown->window->setLogAtStart();
    const Answers answers("Close");
    bool table = false;
    QTimer watch;
    connect(&watch, &QTimer::timeout, [this, &table] { table = table || shown->area->isVisible(); });
    watch.start(1);
    QCOMPARE(runToTheEnd([this] { shown->window->show(); }), 0);
    QVERIFY(!shown->window->isVisible());
    QVERIFY(!logIsVisible());
    QVERIFY(!table);
    QCOMPARE(answers.titles(), QStringList{"VYRE Yum Error"});
    QVERIFY2(answers.texts().first().contains("Unable to initialize"), qPrintable(answers.texts().first()));
    QCOMPARE(standIn->calls("setupRepos"), 0);
}

void MainWindowTest::logIsThereBeforeTheBackEndIsStarted()
{
    standIn->setRefusing(true);
    shown->window->setLogAtStart();
    // The failure is shown while the back end is being started.
    QStringList seen;
    const Once once([] { return qobject_cast<QDialog*>(QApplication::activeModalWidget()) != nullptr; },
                    [&seen] {
                        seen << QApplication::activeModalWidget()->windowTitle()
                             << (logIsVisible() ? "log" : "no log");
                        QApplication::activeModalWidget()->close();
                    });
    QCOMPARE(runToTheEnd([this] { shown->window->show(); }), 0);
    QCOMPARE(seen, (QStringList{"VYRE Yum Error", "log"}));
}

void MainWindowTest::quittingFromTheQuestionForCredentialsReadsNothing()
{
    const QByteArray repos("[base]\nbaseurl=http://h/vantor?u=&p=&path=/x\n");
    standIn->setRepos(repos);
    const Answers answers("Quit");
    QCOMPARE(runToTheEnd([this] { shown->window->show(); }), 0);
    QCOMPARE(answers.titles(), QStringList{"VYRE Authentication"});
    QVERIFY(!shown->window->isVisible());
    QCOMPARE(standIn->calls("setupRepos"), 0);
    QFile file(standIn->root() + "/etc/yum.repos.d/standin.repo");
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), repos);
}

void MainWindowTest::credentialsThatAreEnteredAreUsedAtOnce()
{
    standIn->setRepos("[base]\nbaseurl=http://h/vantor?u=&p=&path=/x\n");
    const Once once([] { return qobject_cast<QDialog*>(QApplication::activeModalWidget()) != nullptr; },
                    [] {
                        QWidget* dialog = QApplication::activeModalWidget();
                        for (QLineEdit* field : dialog->findChildren<QLineEdit*>()) {
                            QTest::keyClicks(field, "me");
                        }
                        QTest::mouseClick(buttonIn(dialog, "OK"), Qt::LeftButton);
                    });
    shown->window->show();
    QTRY_VERIFY_WITH_TIMEOUT(shown->isReady(), 20000);
    QVERIFY(once.isDone());
    QFile file(standIn->root() + "/etc/yum.repos.d/standin.repo");
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("[base]\nbaseurl=http://h/vantor?u=me&p=me&path=/x\n"));
    // The package manager has read the files before.
    const QStringList calls = standIn->calls();
    QVERIFY2(calls.contains("reset") && calls.indexOf("reset") < calls.indexOf("setupRepos"),
             qPrintable(calls.join(';')));
}

void MainWindowTest::repositoriesThatWereEditedAreReadAgain()
{
    shown->window->setRepoEditorAtStart();
    const Once once([] { return qobject_cast<QDialog*>(QApplication::activeModalWidget()) != nullptr; },
                    [] { QApplication::activeModalWidget()->close(); });
    shown->window->show();
    QTRY_COMPARE_WITH_TIMEOUT(shown->listed(), (QStringList{"many", "tool"}), 20000);
    QVERIFY(once.isDone());
    const QStringList calls = standIn->calls();
    QVERIFY2(calls.contains("reset") && calls.indexOf("reset") < calls.indexOf("setupRepos"),
             qPrintable(calls.join(';')));
}

void MainWindowTest::emptyTableTellsWhy()
{
    standIn->setPackages({}, {StandIn::package("shell")}, {});
    shown->start();
    const auto told = [this] { return shown->view->accessibleDescription(); };
    QCOMPARE(shown->listed(), QStringList());
    QCOMPARE(told(), QString("No package has an update."));
    shown->choose(shown->stateBox, ViewInstallable);
    QCOMPARE(told(), QString("No package matches."));
    shown->filter("(");
    QCOMPARE(told(), QString("This is not a valid regular expression:\nUnmatched ( or \\("));
    shown->choose(shown->stateBox, ViewUpdatable);
    shown->filter("shell");
    QCOMPARE(told(), QString("No package matches."));
    shown->choose(shown->stateBox, ViewRemovable);
    QCOMPARE(shown->listed(), QStringList{"shell"});
    QCOMPARE(told(), QString());
    shown->filter("nothing");
    shown->choose(shown->stateBox, ViewUpdatable);
    QCOMPARE(told(), QString("No package matches."));

    // It is drawn, and not over rows.
    const auto colours = [this] {
        const QImage picture = shown->view->viewport()->grab().toImage();
        QSet<QRgb> found;
        const QPoint middle = picture.rect().center();
        for (int x = -60; x < 60; ++x) {
            for (int y = -10; y < 10; ++y) {
                found.insert(picture.pixel(middle + QPoint(x, y)));
            }
        }
        return found.count();
    };
    QVERIFY(colours() > 1);
    shown->filter("");
    shown->choose(shown->stateBox, ViewAll);
    QCOMPARE(shown->listed(), QStringList{"shell"});
    QCOMPARE(colours(), 1);
}

void MainWindowTest::failedCollectionDoesNotLookLikeNoUpdates()
{
    standIn->setUnreadable(true);
    const Answers answers("OK");
    // The message may take the focus before the window has it.
    shown->window->show();
    QTRY_VERIFY_WITH_TIMEOUT(shown->isReady(), 20000);
    QCOMPARE(shown->view->accessibleDescription(),
             QString("The packages could not be read.\nThe Log window (Ctrl+L) tells why."));
    standIn->setUnreadable(false);
    shown->press("Re&fresh");
    QCOMPARE(shown->listed(), (QStringList{"many", "tool"}));
    shown->filter("nothing");
    QCOMPARE(shown->view->accessibleDescription(), QString("No package matches."));
}

void MainWindowTest::sizeAndColumnsAreRemembered()
{
    shown->start();
    const QSize size(shown->window->width() - 20, shown->window->height() - 30);
    shown->window->QWidget::resize(size);
    shown->view->setColumnWidth(NameColumn, 321);
    shown->view->horizontalHeader()->moveSection(RepositoryColumn, ArchitectureColumn);
    compareQuit([this] { shown->key(Qt::Key_Q, Qt::ControlModifier); });
    const QSettings* kept = settings(this);
    QCOMPARE(kept->value("MainWindow/size").toSize(), size);
    QVariantList widths;
    QVariantList places;
    for (int column = 0; column < ColumnCount; ++column) {
        widths << (column == NameColumn ? 321 : 0);
        places << column;
    }
    std::swap(places[RepositoryColumn], places[ArchitectureColumn]);
    QCOMPARE(kept->value("MainWindow/columnWidths").toStringList(), QVariant(widths).toStringList());
    QCOMPARE(kept->value("MainWindow/columnPlaces").toStringList(), QVariant(places).toStringList());
}

void MainWindowTest::rememberedSizeAndColumnsAreRestored()
{
    QSettings* kept = settings(this);
    kept->setValue("MainWindow/size", QSize(1100, 500));
    QVariantList widths;
    QVariantList places;
    for (int column = 0; column < ColumnCount; ++column) {
        widths << (column == NameColumn ? 234 : 0);
        places << column;
    }
    std::swap(places[RepositoryColumn], places[ArchitectureColumn]);
    kept->setValue("MainWindow/columnWidths", widths);
    kept->setValue("MainWindow/columnPlaces", places);
    kept->sync();
    shown->start();
    QTRY_COMPARE(shown->window->size(), QSize(1100, 500));
    QCOMPARE(shown->view->columnWidth(NameColumn), 234);
    QCOMPARE(shown->view->horizontalHeader()->logicalIndex(RepositoryColumn), int(ArchitectureColumn));
    QCOMPARE(shown->view->columnWidth(ArchitectureColumn),
             qMax(shown->view->sizeHintForColumn(ArchitectureColumn),
                  shown->view->horizontalHeader()->sectionSizeHint(ArchitectureColumn)));
    // Fitting them forgets what was done by hand.
    shown->press("Re&size");
    QVERIFY(shown->view->columnWidth(NameColumn) != 234);
    QCOMPARE(shown->view->layoutByHand().widths.at(NameColumn), 0);
}

void MainWindowTest::nonsenseThatIsRememberedChangesNothing()
{
    QSettings* kept = settings(this);
    kept->setValue("MainWindow/size", "wide");
    // As many as there are columns, or they would not be looked at.
    QVariantList widths{-5, 1 << 30, "x"};
    QVariantList nowhere{0, 0, 99, -1, "x"};
    QList<int> usualPlaces;
    QList<int> noWidths;
    for (int column = 0; column < ColumnCount; ++column) {
        usualPlaces << column;
        noWidths << 0;
        if (column >= widths.size()) {
            widths << 0;
        }
        if (column >= nowhere.size()) {
            nowhere << column;
        }
    }
    kept->setValue("MainWindow/columnWidths", widths);
    kept->setValue("MainWindow/columnPlaces", nowhere);
    kept->sync();
    shown->start();
    QVERIFY(QGuiApplication::primaryScreen()->geometry().contains(shown->window->geometry()));
    QList<int> places = shown->view->layoutByHand().places;
    std::sort(places.begin(), places.end());
    QCOMPARE(places, usualPlaces);
    QCOMPARE(shown->view->layoutByHand().widths, noWidths);
    shown->click("tool", ActionColumn);
    QCOMPARE(shown->marks(), QStringList{"tool update"});
}

void MainWindowTest::logIsOpenedAtTheStartIfAskedFor()
{
    shown->window->setLogAtStart();
    QVERIFY(inTheMiddle([this] { shown->window->show(); }, [] { QVERIFY(logIsVisible()); }));
    QTRY_VERIFY(shown->isReady());
    QVERIFY(logIsVisible());
}

void MainWindowTest::logStaysClosedOtherwise()
{
    shown->start();
    QVERIFY(logWindow() == nullptr);
}

void MainWindowTest::returnAppliesTheExpression()
{
    shown->start();
    shown->filter("too");
    QCOMPARE(shown->listed(), QStringList{"tool"});
    shown->filter("(");
    QCOMPARE(shown->listed(), QStringList());
    shown->filter(".*");
    QCOMPARE(shown->sorted(), (QStringList{"many", "tool"}));
}

void MainWindowTest::buttonAppliesTheExpression()
{
    shown->start();
    shown->type("too");
    shown->press("Filter");
    QCOMPARE(shown->listed(), QStringList{"tool"});
}

void MainWindowTest::typingAloneListsNothingElse()
{
    shown->start();
    shown->type("too");
    QCOMPARE(shown->sorted(), (QStringList{"many", "tool"}));
}

void MainWindowTest::stateBoxDecidesWhatIsListed()
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

void MainWindowTest::duplicatesCanBeLeftOut()
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

void MainWindowTest::groupsCanBeIncluded()
{
    shown->start();
    shown->choose(shown->stateBox, ViewInstallable);
    shown->click(shown->groupsBox, QPoint(8, shown->groupsBox->height() / 2));
    QCOMPARE(shown->sorted(), (QStringList{"Games", "editor", "lib", "lib"}));
    shown->click(shown->groupsBox, QPoint(8, shown->groupsBox->height() / 2));
    QCOMPARE(shown->sorted(), (QStringList{"editor", "lib", "lib"}));
}

void MainWindowTest::modeDecidesTheTexts()
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

void MainWindowTest::searchForAnythingLoadsNothing()
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

void MainWindowTest::searchLooksIntoEveryField()
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

void MainWindowTest::collectionHasLoadedTheExtraData()
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

void MainWindowTest::extraDataAreLoadedOnceForTheFirstExpression()
{
    // Nothing has been collected while the repositories are edited at the start.
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

void MainWindowTest::nothingIsFilteredWhileExtraDataAreLoaded()
{
    // Only then there are none yet.
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

void MainWindowTest::brokenExpressionLooksDifferent()
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

void MainWindowTest::filtersInSearchModeApply()
{
    shown->start();
    shown->choose(shown->modeBox, Search);
    shown->filter("i|l");
    QCOMPARE(shown->sorted(), (QStringList{"many", "tool"})); // both come from a file called "updates"
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

void MainWindowTest::textsAreReadForTheExpressionInUse()
{
    shown->start();
    // Whether a worker has read the texts of all records of a state.
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

void MainWindowTest::textsAreReadBeforeNewRecordsAreSearched()
{
    shown->start();
    shown->choose(shown->modeBox, Search);
    shown->filter("needle");
    const QStringList found = shown->sorted();
    QVERIFY(!found.isEmpty());
    // By a worker, for all: what a record is asked by the graphical thread leaves nothing here.
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

void MainWindowTest::applyIsEnabledWhileThereIsAnyAction()
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

void MainWindowTest::selectedRowsAreSet()
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

void MainWindowTest::listedUpdatesAreSet()
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

void MainWindowTest::clearingTakesAllActionsAway()
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

void MainWindowTest::settingTheSelectedRowsSortsTheTableOnce()
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
    // With so many rows that it would take minutes, each of them must not sort the table for itself.
    shown->press("Set &Install/Update of Selected");
    QCOMPARE(shown->marks().count(), 50);
    QCOMPARE(layout.count(), 1);
    shown->press("&Clear Actions");
    QCOMPARE(shown->marks().count(), 0);
    QCOMPARE(layout.count(), 2);
}

void MainWindowTest::hiddenActionsAreWarnedOf()
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

void MainWindowTest::everyFilterWarnsOfHiddenActions()
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
    // No field of a package holds both its name and its architecture.
    QVERIFY(warns([this] { shown->choose(shown->modeBox, Search); },
                  [this] { shown->choose(shown->modeBox, Filter); }));
}

void MainWindowTest::warningKeepsItsPlace()
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

void MainWindowTest::warningHasTheColourOfOne()
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

void MainWindowTest::controlsAreTakenAwayWhileItWorks()
{
    shown->start();
    QCOMPARE(usable(), usableWhenReady);
    QStringList seen;
    QVERIFY(inTheMiddle([this] { shown->press("Re&fresh"); },
                        [this, &seen] { seen << busyCursor() << usable() << shown->listed(); }));
    QCOMPARE(seen, QStringList{"busy"} + usableWhileBusy);
    QCOMPARE(usable(), usableWhenReady);
    QCOMPARE(busyCursor(), QString("none"));
}

void MainWindowTest::shortcutsDoNothingWhileItWorks()
{
    shown->start();
    QVERIFY(inTheMiddle([this] { shown->press("Re&fresh"); },
                        [this] {
                            shown->key(Qt::Key_Q, Qt::ControlModifier);
                            shown->click(shown->button("Re&fresh"));
                        }));
    QTRY_VERIFY(shown->isReady());
    QTest::qWait(50);
    QVERIFY(shown->window->isVisible());
    QCOMPARE(standIn->calls("setupRepos"), 1);
}

void MainWindowTest::logCanBeOpenedWhileItWorks()
{
    shown->start();
    bool opened = false;
    QVERIFY(inTheMiddle([this] { shown->press("Re&fresh"); },
                        [this, &opened] {
                            shown->key(Qt::Key_L, Qt::ControlModifier);
                            opened = logIsVisible();
                        }));
    QVERIFY(opened);
    QTRY_VERIFY(shown->isReady());
}

void MainWindowTest::windowCannotBeClosedWhileItWorks()
{
    shown->start();
    bool closed = true;
    QVERIFY(inTheMiddle([this] { shown->press("Re&fresh"); },
                        [this, &closed] { closed = shown->window->close() || !shown->window->isVisible(); }));
    QVERIFY(!closed);
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(shown->listed(), (QStringList{"many", "tool"}));
}

void MainWindowTest::quittingIsRefusedWhileItWorks()
{
    shown->start();
    QVERIFY(inTheMiddle([this] { shown->press("Re&fresh"); },
                        [this] {
                            shown->window->quit();
                            QVERIFY(shown->window->isVisible());
                        }));
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(shown->listed(), (QStringList{"many", "tool"}));
    QCOMPARE(runToTheEnd([this] { shown->window->quit(); }), 0);
    QVERIFY(!shown->window->isVisible());
}

void MainWindowTest::operationEndsUnderTheAboutWindow()
{
    shown->start();
    QVERIFY(
        inTheMiddle([this] { shown->press("Re&fresh"); },
                    [this] { QTimer::singleShot(0, shown->window, [this] { shown->key(Qt::Key_F1); }); }));
    QTRY_VERIFY(aboutBox() != nullptr);
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(shown->listed(), (QStringList{"many", "tool"}));
    QVERIFY(aboutBox() != nullptr);
    // The table can be worked with beside it.
    shown->filter("too");
    QCOMPARE(shown->listed(), QStringList{"tool"});
    QTest::keyClick(aboutBox(), Qt::Key_Escape);
    QVERIFY(aboutBox() == nullptr);
}

void MainWindowTest::compareReadAgain(Mode mode, const QString& expression, const QStringList& before)
{
    shown->start();
    shown->choose(shown->stateBox, ViewAll);
    shown->choose(shown->modeBox, mode);
    shown->filter(expression);
    QCOMPARE(shown->sorted(), before);
    using S = StandIn;
    // Other packages in the places of those that are listed.
    standIn->setPackages({}, {S::package("shell"), S::package("games")},
                         {S::package("zoo"), S::package("tooth", {{"summary", "needle"}}), S::package("one"),
                          S::package("two"), S::package("three"), S::package("four")});
    const QStringList after{"tooth"};
    QStringList wrong;
    QStringList told;
    QTimer watch;
    connect(&watch, &QTimer::timeout, [&] {
        const QStringList listed = shown->sorted();
        if (listed.isEmpty()) {
            told << shown->view->accessibleDescription();
        } else if (listed != before && listed != after) {
            wrong << listed.join(" ");
        }
    });
    watch.start(1);
    QVERIFY(inTheMiddle([this] { shown->press("Re&fresh"); },
                        [this] {
                            QTest::qWait(20);
                            QCOMPARE(shown->listed(), QStringList());
                        }));
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(shown->listed(), after);
    QCOMPARE(wrong, QStringList());
    told.removeDuplicates();
    QCOMPARE(told, QStringList{"Reading the packages..."});
}

void MainWindowTest::focusComesBack()
{
    shown->start();
    shown->choose(shown->modeBox, Search);
    shown->filter("needle");
    QVERIFY(shown->regexpEdit->hasFocus());
    shown->press("Re&fresh");
    QVERIFY(shown->button("Re&fresh")->hasFocus());
}

void MainWindowTest::refreshCollectsAnew()
{
    shown->start();
    standIn->forgetCalls();
    standIn->setPackages({StandIn::package("newer", {{"version", "2"}})}, {StandIn::package("newer")}, {});
    shown->press("Re&fresh");
    QCOMPARE(shown->listed(), QStringList{"newer"});
    QCOMPARE(standIn->calls().mid(0, 1), QStringList{"reset"});
    QCOMPARE(standIn->calls("setupRepos"), 1);
}

void MainWindowTest::refreshForgetsActionsAndTheirWarning()
{
    shown->start();
    shown->click("tool", ActionColumn);
    shown->filter("many");
    QCOMPARE(shown->label->text(), QString("Unlisted Actions"));
    shown->press("Re&fresh");
    QCOMPARE(shown->marks(), QStringList());
    QCOMPARE(shown->label->text(), QString());
    QVERIFY(!shown->button("&Apply Actions")->isEnabled());
}

void MainWindowTest::compareClean(const QString& entry, const char* method)
{
    shown->start();
    standIn->forgetCalls();
    standIn->setPackages({StandIn::package("newer", {{"version", "2"}})}, {StandIn::package("newer")}, {});
    shown->choose("&Cache", entry);
    QTRY_COMPARE(shown->listed(), QStringList{"newer"});
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(standIn->calls().mid(0, 2), (QStringList{method, "reset"}));
    QCOMPARE(standIn->calls("setupRepos"), 1);
    QCOMPARE(usable(), usableWhenReady);
}

void MainWindowTest::cleaningPackagesLeavesTheTableAlone()
{
    shown->start();
    shown->click("tool", ActionColumn);
    standIn->forgetCalls();
    standIn->setPackages({}, {}, {});
    QSignalSpy reset(shown->model, SIGNAL(modelReset()));
    shown->choose("&Cache", "Clean Packages");
    QTRY_COMPARE(standIn->calls(), QStringList{"cleanPackages"});
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(reset.count(), 0);
    QCOMPARE(shown->listed(), (QStringList{"many", "tool"}));
    QCOMPARE(shown->marks(), QStringList{"tool update"});
    QCOMPARE(usable(), usableWhenReady);
}

void MainWindowTest::doubtsAboutTheConfigurationAreLoggedOnce()
{
    QFile file(standIn->root() + "/etc/yum.repos.d/doubted.repo");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[doubted]\nbaseurl=file:///nowhere\nenabled=no\n");
    file.close();
    shown->start();
    const auto dialog = [this] {
        const Once once([] { return qobject_cast<QDialog*>(QApplication::activeModalWidget()) != nullptr; },
                        [] { QApplication::activeModalWidget()->close(); });
        shown->action("&Repositories", "&Edit Configuration")->trigger();
        QVERIFY(once.isDone());
    };
    dialog();
    dialog();
    shown->action("&Windows", "&Log")->trigger();
    QVERIFY(logIsVisible());
    const QString log = logWindow()->findChild<QTextEdit*>()->toPlainText();
    QCOMPARE(log.count("doubted.repo, section [doubted]: \"enabled=no\" is taken for on"), 1);
}

void MainWindowTest::cleanEntriesNameTheCacheDirectory()
{
    shown->start();
    const auto toolTip = [this](const char* text) { return shown->action("&Cache", text)->toolTip(); };
    const QString place = standIn->root() + "/var/cache/standin";
    QCOMPARE(toolTip("Clean dbcache"),
             QString("Clean RPM dbcache files (solv/solvx databases constructed from the metadata) cached "
                     "locally in ") +
                 place);
    QCOMPARE(toolTip("Clean Packages"), QString("Clean RPM packages cached locally in ") + place +
                                            "\n(useful for recovering disk space)");
    QCOMPARE(toolTip("Clean Metadata"),
             QString("Clean metadata (mostly XML or compressed XML) cached locally in ") + place);
    QCOMPARE(toolTip("Clean All"), QString("Clean all data cached locally in ") + place);
}

void MainWindowTest::sizeOfColumnsIsRestored()
{
    shown->start();
    const int width = shown->view->columnWidth(NameColumn);
    shown->view->setColumnWidth(NameColumn, 7);
    shown->filter("many");
    shown->press("Re&size");
    QCOMPARE(shown->view->columnWidth(NameColumn), width);
    QCOMPARE(shown->listed(), QStringList{"many"});
}

void MainWindowTest::confirmedActionsAreAppliedAndTheTableCollected()
{
    shown->start();
    shown->choose(shown->stateBox, ViewAll);
    shown->click("tool", ActionColumn);
    shown->click("editor", ActionColumn);
    shown->click("shell", ActionColumn);
    shown->filter("tool");
    QCOMPARE(shown->label->text(), QString("Unlisted Actions"));
    standIn->forgetCalls();
    standIn->setPackages({}, {StandIn::package("tool", {{"version", "2"}}), StandIn::package("editor")}, {});
    const Answers answers("OK");
    shown->press("&Apply Actions");
    QTRY_COMPARE(answers.titles(), QStringList{"Apply"});
    QTRY_VERIFY(shown->isReady());
    QVERIFY2(standIn->calls().contains("apply editor tool shell"), qPrintable(standIn->calls().join(';')));
    QCOMPARE(standIn->calls("setupRepos"), 1);
    QCOMPARE(shown->marks(), QStringList());
    QCOMPARE(shown->label->text(), QString());
    QVERIFY(!shown->button("&Apply Actions")->isEnabled());
    shown->filter("");
    QCOMPARE(shown->sorted(), (QStringList{"editor", "tool"}));
    QCOMPARE(usable(), usableWhenReady);
    QCOMPARE(busyCursor(), QString("none"));
}

void MainWindowTest::credentialsTypedAfterAnApplyAreUsedAtOnce()
{
    shown->start();
    shown->choose(shown->stateBox, ViewAll);
    shown->click("tool", ActionColumn);
    // The new version of a package may bring this.
    standIn->setRepos("[base]\nname=Base\nbaseurl=http://h/vantor?u=&p=&path=/x\n");
    standIn->forgetCalls();
    QTimer timer;
    bool answering = false;
    bool asked = false;
    connect(&timer, &QTimer::timeout, &timer, [&answering, &asked] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (answering || dialog == nullptr || QApplication::activeWindow() != dialog) {
            return;
        }
        const QScopedValueRollback<bool> guard(answering, true);
        for (QLineEdit* field : dialog->findChildren<QLineEdit*>()) {
            asked = true;
            QTest::keyClicks(field, "secret");
        }
        QTest::mouseClick(buttonIn(dialog, "OK"), Qt::LeftButton);
    });
    timer.start(10);
    shown->press("&Apply Actions");
    QTRY_VERIFY(asked);
    QTRY_VERIFY(shown->isReady());
    // The script reads the file again before it collects.
    const QStringList calls = standIn->calls();
    const QByteArray context = calls.join(';').toUtf8();
    QVERIFY2(calls.indexOf("apply") >= 0 && calls.indexOf("apply") < calls.indexOf("reset"), context);
    QVERIFY2(calls.indexOf("reset") < calls.indexOf("setupRepos"), context);
    shown->action("&Windows", "&Log")->trigger();
    QVERIFY(logIsVisible());
    const QString log = logWindow()->findChild<QTextEdit*>()->toPlainText();
    QCOMPARE(log.count("standin.repo holds a password: users other than its owner"), 1);
    QVERIFY(!log.contains("secret"));
}

void MainWindowTest::refusedActionsStay()
{
    shown->start();
    shown->click("tool", ActionColumn);
    shown->filter("many");
    standIn->forgetCalls();
    const Answers answers("Cancel");
    shown->press("&Apply Actions");
    QTRY_COMPARE(answers.titles(), QStringList{"Apply"});
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(standIn->calls("setupRepos"), 0);
    QCOMPARE(shown->marks(), QStringList{"tool update"});
    QCOMPARE(shown->label->text(), QString("Unlisted Actions"));
    QVERIFY(shown->button("&Apply Actions")->isEnabled());
    QCOMPARE(usable(), usableWhenReady);
}

void MainWindowTest::failureBeforeAnyChangeLeavesTheTableAlone()
{
    shown->start();
    shown->click("tool", ActionColumn);
    standIn->setFailing(true);
    standIn->forgetCalls();
    const Answers answers("OK");
    shown->press("&Apply Actions");
    QTRY_COMPARE(answers.titles(), (QStringList{"Apply", "VYRE Yum Error"}));
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(answers.texts().last(), QString("Unable to apply changes: Runtime Error:\n\ntoo early"));
    QCOMPARE(standIn->calls("setupRepos"), 0);
    QCOMPARE(shown->marks(), QStringList{"tool update"});
    QVERIFY(shown->button("&Apply Actions")->isEnabled());
}

void MainWindowTest::failureHalfWayCollectsTheTable()
{
    shown->start();
    shown->click("tool", ActionColumn);
    standIn->setBreaking(true);
    standIn->forgetCalls();
    standIn->setPackages({}, {}, {StandIn::package("tool")});
    const Answers answers("OK");
    shown->press("&Apply Actions");
    QTRY_VERIFY(answers.titles().size() >= 2);
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(answers.all(), QString("Apply, VYRE Yum Error: " + answers.texts().first() +
                                    " | Unable to apply changes: Runtime Error:\n\nhalf way"));
    QCOMPARE(standIn->calls("setupRepos"), 1);
    QCOMPARE(shown->listed(), QStringList());
    QCOMPARE(shown->marks(), QStringList());
    QVERIFY(!shown->button("&Apply Actions")->isEnabled());
}

void MainWindowTest::marksStayWhenAnotherProgramHasChangedTheSystem()
{
    shown->start();
    shown->choose(shown->stateBox, ViewAll);
    shown->click("tool", ActionColumn);
    shown->click("editor", ActionColumn);
    shown->click("shell", ActionColumn);
    // Meanwhile the editor has come, and the shell has gone.
    const QJsonObject next{{"version", "2"}};
    standIn->setPackages({StandIn::package("tool", next)},
                         {StandIn::package("tool"), StandIn::package("editor")}, {StandIn::package("shell")});
    standIn->setOutdated(true);
    standIn->forgetCalls();
    const Answers answers("Close");
    shown->press("&Apply Actions");
    QTRY_COMPARE(answers.titles(), QStringList{"VYRE Yum Error"});
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(standIn->calls("setupRepos"), 1);
    QCOMPARE(shown->sorted(), (QStringList{"editor", "shell", "tool"}));
    QCOMPARE(shown->marks(), QStringList{"tool update"});
    QVERIFY(shown->button("&Apply Actions")->isEnabled());
}

void MainWindowTest::repositoriesOfATransactionMayNeedCredentials()
{
    shown->start();
    shown->click("tool", ActionColumn);
    // As a package does that brings a repository.
    standIn->setRepos("[base]\nbaseurl=http://h/vantor?u=&p=&path=/x\n");
    const Answers answers("OK");
    shown->press("&Apply Actions");
    QTRY_COMPARE(answers.titles(), (QStringList{"Apply", "VYRE Authentication"}));
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(shown->marks(), QStringList());
}

void MainWindowTest::currentPackageCanBeDescribed()
{
    shown->start();
    listEverything();
    QVERIFY(!shown->button("&Describe")->isEnabled());
    for (const char* name : {"shell", "Games"}) {
        shown->click(name, NameColumn);
        QVERIFY(shown->button("&Describe")->isEnabled());
        QString described;
        QVERIFY(withDialog<Describe::Dialog>(
            [this] { shown->press("&Describe"); },
            [&described](Describe::Dialog& dialog) { described = dialog.findChild<QLabel*>()->text(); }));
        QCOMPARE(described, QString(name));
    }
}

void MainWindowTest::describingEndsWithTheRow()
{
    shown->start();
    shown->click("tool", NameColumn);
    QVERIFY(shown->button("&Describe")->isEnabled());
    shown->filter("no such package");
    QVERIFY(!shown->button("&Describe")->isEnabled());
    shown->filter("");
    shown->click("tool", NameColumn);
    QVERIFY(shown->button("&Describe")->isEnabled());
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QVERIFY(!shown->button("&Describe")->isEnabled());
}

void MainWindowTest::compareManuals()
{
    for (const char* name : {"webbrowser", "mimeviewer"}) {
        QFile program(Share::absolute(name));
        QVERIFY(program.open(QIODevice::WriteOnly));
        program.write("#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$0.part\" && mv \"$0.part\" \"$0.called\"\n");
        program.close();
        QVERIFY(program.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    }
    const auto called = [](const char* name) {
        QFile file(Share::absolute(name) + ".called");
        return QTest::qWaitFor([&file] { return file.exists(); }) && file.open(QIODevice::ReadOnly)
                   ? file.readAll()
                   : QByteArray("(not started)");
    };
    shown->choose("&Help", "Manual (html)");
    QCOMPARE(called("webbrowser"), QByteArray("/usr/share/doc/vyre/html/index.html\n"));
    QVERIFY(!QFile::exists(Share::absolute("mimeviewer.called")));
    shown->choose("&Help", "Manual (PDF)");
    QCOMPARE(called("mimeviewer"), QByteArray("application/pdf\n/usr/share/doc/vyre/manual.pdf\n"));
}

// Where there is one on this machine, nothing must be said.
void MainWindowTest::missingManualIsTold()
{
    shown->start();
    const QString file = QStringLiteral("/usr/share/doc/vyre/html/index.html");
    const auto notices = [this, &file] {
        int count = 0;
        for (const QLabel* label : shown->window->menuBar()->findChildren<QLabel*>()) {
            count += label->isVisible() &&
                     label->text() == "The manual is not installed: there is no file " + file;
        }
        return count;
    };
    QCOMPARE(notices(), 0);
    const int expected = QFile::exists(file) ? 0 : 1;
    for (int i = 0; i < 2; ++i) {
        shown->choose("&Help", "Manual (html)");
        QCOMPARE(notices(), expected);
        QVERIFY(QApplication::activeModalWidget() == nullptr);
    }
}

void MainWindowTest::errorsThatStandInTheLogOnlyAreTold()
{
    shown->start();
    const auto notices = [this] {
        int count = 0;
        for (const QLabel* label : shown->window->menuBar()->findChildren<QLabel*>()) {
            count += label->isVisible() && label->text() == "There are errors in the log (Ctrl+L)";
        }
        return count;
    };
    QCOMPARE(notices(), 0);
    standIn->setComplaining(true);
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(notices(), 1);
}

void MainWindowTest::aClickOnARowThatCannotBeMarkedSaysWhy()
{
    shown->start();
    shown->choose(shown->stateBox, PackageTable::ViewAll);
    QString name;
    for (int row = 0; row < shown->model->rowCount() && name.isEmpty(); ++row) {
        Package::Entry* entry = shown->model->entry(row);
        if (entry->state == Package::Installed && entry->kind == Package::Ordinary &&
            entry->next == nullptr) {
            entry->excluded = true;
            name = entry->name;
        }
    }
    QVERIFY(!name.isEmpty());
    const QString reason =
        name + " cannot be marked: the configuration excludes it from updates and removals";
    const auto notices = [this, &reason] {
        int count = 0;
        for (const QLabel* label : shown->window->menuBar()->findChildren<QLabel*>()) {
            count += label->isVisible() && label->text() == reason;
        }
        return count;
    };
    QCOMPARE(notices(), 0);
    shown->click(name, PackageTable::ActionColumn);
    QCOMPARE(notices(), 1);
    QVERIFY(!shown->button("Apply Actions")->isEnabled());
    shown->choose("&Windows", "&Log");
    QVERIFY(logIsVisible());
    QVERIFY(logWindow()->findChild<QTextEdit*>()->toPlainText().contains(reason));
}

void MainWindowTest::manualsAreOpenedInOtherPrograms()
{
    shown->start();
    compareManuals();
}

void MainWindowTest::manualsCanBeOpenedWhileItWorks()
{
    shown->start();
    QVERIFY(inTheMiddle([this] { shown->press("Re&fresh"); }, [this] { compareManuals(); }));
    QTRY_VERIFY(shown->isReady());
}

void MainWindowTest::shortcutOpensTheLog()
{
    shown->start();
    shown->key(Qt::Key_L, Qt::ControlModifier);
    QVERIFY(logIsVisible());
    QVERIFY(QTest::qWaitForWindowActive(logWindow()));
    QVERIFY(logWindow()->findChild<QTextEdit*>()->toPlainText().contains("Initialization"));
    // The same window comes back.
    const Log::Window* first = logWindow();
    const QSize size = first->size() - QSize(20, 30);
    logWindow()->resize(size);
    logWindow()->close();
    QCOMPARE(settings(this)->value("LogWindow/size").toSize(), size);
    QVERIFY(QTest::qWaitForWindowActive(shown->window));
    shown->key(Qt::Key_L, Qt::ControlModifier);
    QVERIFY(logIsVisible());
    QCOMPARE(static_cast<const Log::Window*>(logWindow()), first);
}

void MainWindowTest::menuOpensTheLog()
{
    shown->start();
    shown->choose("&Windows", "&Log");
    QTRY_VERIFY(logIsVisible());
}

void MainWindowTest::aboutTellsTheVersion()
{
    shown->start();
    shown->key(Qt::Key_F1);
    QTRY_VERIFY(aboutBox() != nullptr);
    const QString text = aboutBox()->text();
    const QString expected =
        "<h3>VYRE 2.1.2</h3><hr><p>VYRE, Vyrecraft, is a graphical user interface which allows a user to "
        "make "
        "modifications to the installed rpm packages on a system.</p><p>Capabilities:<p><ul><li>Install new "
        "packages or update existing packages by downloading them from a yum package repository</li>"
        "<li>Remove existing packages.</li><li>Configure sets of repositories from which to obtain new and "
        "updated packages.</li><li>Examine installed packages or packages available for installation or "
        "update</li><li>Install, update, or remove groups of packages</li><li>Install or update suites of "
        "packages</li></ul>";
    QCOMPARE(text.left(expected.length()), expected);
    // And where to read on.
    const QRegularExpression rest("^<p>[^<]*<a href=\"(https://[^\"]+)\">\\1</a>[^<]*</p>$");
    QVERIFY2(rest.match(text.mid(expected.length())).hasMatch(), qPrintable(text.mid(expected.length())));
}

void MainWindowTest::aboutOpensItsPageInTheBrowserOfTheUser()
{
    shown->start();
    shown->choose("&Help", "&About");
    QTRY_VERIFY(aboutBox() != nullptr);
    QLabel* link = nullptr;
    for (QLabel* label : aboutBox()->findChildren<QLabel*>()) {
        QVERIFY(!label->openExternalLinks());
        if (label->text().contains("https://vyre.example/")) {
            link = label;
        }
    }
    QVERIFY(link != nullptr);
    QFile program(Share::absolute("webbrowser"));
    QVERIFY(program.open(QIODevice::WriteOnly));
    program.write("#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$0.part\" && mv \"$0.part\" \"$0.page\"\n");
    program.close();
    QVERIFY(program.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    const QSignalSpy clicked(link, SIGNAL(linkActivated(const QString&)));
    for (int y = link->height() - 1; y >= 0 && clicked.isEmpty(); y -= 6) {
        for (int x = 0; x < link->width() && clicked.isEmpty(); x += 20) {
            QTest::mouseClick(link, Qt::LeftButton, {}, QPoint(x, y));
        }
    }
    QFile page(Share::absolute("webbrowser.page"));
    QTRY_VERIFY(page.exists());
    QVERIFY(page.open(QIODevice::ReadOnly));
    QCOMPARE(page.readAll(), QByteArray("https://vyre.example/\n"));
}

void MainWindowTest::compareQuit(const std::function<void()>& quit)
{
    shown->start();
    shown->click("tool", ActionColumn);
    shown->key(Qt::Key_L, Qt::ControlModifier);
    QVERIFY(logIsVisible());
    QVERIFY(QTest::qWaitForWindowActive(logWindow()));
    shown->window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(shown->window));
    standIn->forgetCalls();
    // What is painted on the way out finds no records: nothing keeps them any more.
    QList<int> rows;
    connect(shown->model, &QAbstractItemModel::modelReset, this,
            [this, &rows] { rows << shown->model->rowCount(); });
    QCOMPARE(runToTheEnd(quit), 0);
    QCOMPARE(rows, QList<int>{0});
    QVERIFY(!shown->window->isVisible());
    QVERIFY(!logIsVisible());
    QCOMPARE(shown->model->rowCount(), 0);
    QCOMPARE(standIn->calls("apply"), 0);
    // What comes late finds nothing to work with.
    shown->window->stateChanged(-1);
    shown->window->quit();
    QTest::qWait(50);
}

void MainWindowTest::shortcutQuits()
{
    compareQuit([this] { shown->key(Qt::Key_Q, Qt::ControlModifier); });
}

void MainWindowTest::menuQuits()
{
    compareQuit([this] { shown->choose("&Program", "&Quit"); });
}

void MainWindowTest::closingQuits()
{
    // As the window manager asks for it.
    compareQuit([] { QCOMPARE(QProcess::execute("xdotool", {"key", "alt+F4"}), 0); });
}

int main(int argc, char** argv)
{
    return EachAlone::run<MainWindowTest>(argc, argv);
}

#include "MainWindowTest.moc"
