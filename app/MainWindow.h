// SPDX-License-Identifier: GPL-2.0-or-later

// The program's main window: menus, the filter row, the package table, the action buttons and the progress
// bars. The window owns the back end and all objects that use the back end. The window disables the controls
// before each long operation and enables them afterwards.
//
// The object lives on the graphical thread. main() creates it and never deletes it.

#ifndef APP_MAINWINDOW_H
#define APP_MAINWINDOW_H

#include <QHash>
#include <QList>
#include <QMainWindow>
#include <QPointer>
#include <QSet>

#include <functional>
#include <memory>
#include <vector>

#include "app/CommandHost.h"
#include "packagetable/PackageTable.h"
#include "repo/YumRepoEnabled.h"
#include "yumio/Package.h"

class AdvisoriesCommand;
class ExpressionEdit;
class HFrameLabel;
class HistoryCommand;
class HMenu;
class HProgressBar;
class Notice;
class OutcomeLine;
class QAction;
class QBoxLayout;
class QCheckBox;
class QComboBox;
class QMenuBar;
class QMessageBox;
class QPushButton;
class StopButton;
class YumConfIO;
class YumIO;
namespace Log {
class Window;
}
namespace PackageTable {
class Model;
class Preparation;
class SortFilterProxyModel;
class View;
} // namespace PackageTable
namespace RepoEditor {
class Dialog;
}

class MainWindow : public QMainWindow, private CommandHost
{
    Q_OBJECT

public:
    MainWindow();

    // The following functions apply the options of the command line. Call them before the window is first
    // shown.
    void setMode(PackageTable::Mode mode);
    void setRegexp(const char* regexp);
    void setStateFilter(PackageTable::StateFilter filter);
    void setDups(bool include);
    void setGroups(bool include);
    void setRepoEditorAtStart() { repoEditorAtStart = true; }
    void setLogAtStart() { logAtStart = true; }
    void addRepoOverride(const YumRepoEnabled& request) { repoOverrides.append(request); }

    void setVisible(bool visible) override;
    QSize sizeHint() const override;
    // This function hides QMainWindow::menuBar(), which would replace the row of the menus by a new menu bar.
    QMenuBar* menuBar() const { return menus; }

    // Returns whether the back end is changing the system now. This work must not be interrupted.
    bool isChangingSystem() const;
    // Ends all work before the process ends; see YumIO::finish().
    void finish(bool displayIsThere);

public Q_SLOTS:
    void resize();
    void refresh();
    void reposChanged();
    void initialize();
    void yumConfIOChanged();
    // Logs a message from YumConfIO::write().
    void yumConfIONoted(const QString& text);
    void quit();
    // Asks the running operation to stop.
    void stop();
    void displayLog();
    // Opens the log at an entry.
    void displayLogFrom(int entry);
    // If `atStart` is true, the packages are collected when the editor closes, even if nothing has changed.
    void editRepositories(bool atStart = false);
    void cleanDbcache();
    void cleanPackages();
    void cleanMetadata();
    void cleanAll();
    void manualHtml();
    void manualPdf();
    void about();
    void filtersearch();
    void currentChanged(int row, int previous);
    void stateChanged(int row = -1);
    void warnAndNotice(const QString& text) override;
    void modeChanged(int mode);
    void collectedExtraData();
    void stateFilterChanged(int index);
    void dupsFilterChanged(int state);
    void groupsFilterChanged(int state);
    void setSelected();
    void setUpdateListed();
    void clearActions();
    void apply();

private Q_SLOTS:
    void openPage(const QString& address);
    void showStopState();

protected:
    // While the back end changes the system, the window stays open, because a transaction must not be
    // interrupted. If any other operation runs, this function asks the operation to stop, and the window
    // closes when the operation has ended. If no operation runs, this function does the same as quit().
    void closeEvent(QCloseEvent* event) override;

private:
    QWidget* dialogParent() override { return this; }
    YumIO* backEnd() const override { return yumIO; }
    bool isClosing() const override { return quitting() || closeWanted; }
    bool hasPackages() const override { return !collectFailed; }
    void setReady(bool ready) override;
    void beginOperation() override;
    void recollect(Kept kept) override { readPackages(kept, Configuration::Kept); }
    bool carryOut(const std::function<bool()>& operation, Kept kept) override;
    void marksChanged() override;
    void showErrors(const ErrorWatch& errors) override;
    void showTransactionErrors(bool done);
    // Shows a notice about the repositories that the last collection left out. The package manager skipped
    // these repositories, or the user switched them off. Shows nothing if the user switched off no repository
    // and the package manager skipped the same repositories as at the previous notice.
    void showSkippedRepos();

    void createMenuBar();
    void createMainArea();
    QBoxLayout* createFilterRow();
    QBoxLayout* createButtonRow();
    // Workers read the texts for a search, and compare the records with the expression. `expression` and the
    // boxes of the filter row are the settings that the table will get. Returns false if the user has stopped
    // the search; the table is then unchanged.
    bool prepareFilterSearch(const QString& expression);
    // Compares the records with the settings of the filter row and with `expression`, and then calls
    // `change`, which changes the table. If the user stops the comparison, the filter row shows the settings
    // of the table again. At the end, enables the controls if `ready` is true.
    void changeListing(const QString& expression, bool ready, const std::function<void()>& change);
    void showMode(int mode);
    void showAppliedSettings();
    void anyFilterChanged();
    void warnConfigure();
    void warnUnlistedActions();
    void showUnlistedActions(bool any);
    enum class Configuration { Kept, ReadAgain };
    // Deletes all records and reads the packages again. If wanted, the script reads its configuration first.
    void readPackages(Kept kept, Configuration configuration);
    // Reads the packages. If the user stops the collection, reads the packages from the cache and returns
    // true.
    bool collect();
    // Filters the table by the expression in the expression field.
    void applyExpression();
    std::shared_ptr<PackageTable::Preparation> newPreparation() const;
    // A worker completes the Preparation of the last collection: the values that the table needs before it
    // can show the records. The caller must reset the model afterwards.
    std::shared_ptr<PackageTable::Preparation> prepareTable();
    // Shows the table, and fits its columns. `widest` is the argument for View::fitColumns(). Serves events
    // without user input, but the table is not painted meanwhile.
    void showTable(const std::vector<int>* widest = nullptr);
    // Moves the focus to the table after an operation, unless the expression field has the focus.
    void focusTable();
    // A sentence about the packages that the chosen view lists; empty for the view of all packages.
    QString limitOfView() const;
    void updateEmptyText();
    void closeLater();
    void endRefusal();
    QString restriction() const;
    void saveLayout() const;
    bool checkCredentials(bool& changed);
    void clean(bool (YumIO::*operation)(), bool deletesMetadata);
    void showNotice(const QString& text);
    // Shows the message `text` to the user, unless it is empty.
    void showFault(const QString& text);
    bool quitting() const { return yumIO == nullptr; }

    bool repoEditorAtStart;
    bool logAtStart;
    QList<YumRepoEnabled> repoOverrides;
    QHash<QString, bool> sessionEnabled;
    QSet<QString> loggedWarnings; // the warnings about the configuration that are already in the log
    QString loggedRefusal;        // the logged reason why the window stays open; empty between operations
    YumIO* yumIO;                 // null after the start of quit()
    YumIO* closing;               // the back end while quit() closes the window
    YumConfIO* yumConfIO;
    bool initialized;
    bool scheduled;
    bool busy;
    bool closeWanted;             // the window closes at the end of the current operation
    bool collectFailed;           // the last collection of packages failed
    Package::Marks marksOfFailed; // the next collection restores these marks if the last collection failed
    std::shared_ptr<PackageTable::Preparation> preparation; // from a successful collection to prepareTable()
    QPointer<QWidget> focusBefore; // the widget that had the focus when the controls were disabled

    HistoryCommand* historyCommand;
    AdvisoriesCommand* advisoriesCommand;
    QMenuBar* menus;
    OutcomeLine* outcomeLine;
    HMenu* programMenu;
    QAction* quitAction;
    QAction* historyAction;
    HMenu* repositoriesMenu;
    QAction* advisoriesAction;
    QAction* editConfigurationAction;
    HMenu* cacheMenu;
    QAction* cleanDbcacheAction;
    QAction* cleanPackagesAction;
    QAction* cleanMetadataAction;
    QAction* cleanAllAction;
    QWidget* tableArea;
    QComboBox* modeBox;
    ExpressionEdit* regexpEdit;
    QPushButton* filterButton;
    QComboBox* stateBox;
    QCheckBox* groupsBox;
    QCheckBox* dupsBox;
    PackageTable::Model* model;
    PackageTable::SortFilterProxyModel* proxy;
    PackageTable::View* view;
    QPushButton* describeButton;
    QPushButton* applyButton;
    HFrameLabel* unlistedLabel;
    HProgressBar* totalBar;
    HProgressBar* itemBar;
    StopButton* stopButton;
    Log::Window* logWindow;         // null before the first use
    RepoEditor::Dialog* repoEditor; // null before the first use
    QMessageBox* aboutBox;          // null before the first use
    Notice* notice;
    QStringList reportedSkipped; // the back end's skippedRepos() at the last notice
};

#endif
