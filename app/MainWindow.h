// SPDX-License-Identifier: GPL-2.0-or-later

// The program's one main window: menus, the filter row, the package table, the action buttons and the
// progress bars. It owns the back end and all objects that work on it. It disables the controls before each
// long operation and enables them afterwards.
//
// Graphical thread; made by main() and never deleted.

#ifndef APP_MAINWINDOW_H
#define APP_MAINWINDOW_H

#include <QHash>
#include <QList>
#include <QMainWindow>
#include <QPointer>
#include <QSet>

#include <functional>

#include "packagetable/PackageTable.h"
#include "repo/YumRepoEnabled.h"

class ExpressionEdit;
class HFrameLabel;
class HMenu;
class HProgressBar;
class Notice;
class QAction;
class QBoxLayout;
class QCheckBox;
class QComboBox;
class QMessageBox;
class QPushButton;
class YumConfIO;
class YumIO;
namespace Log {
class Window;
}
namespace PackageTable {
class Model;
class SortFilterProxyModel;
class View;
} // namespace PackageTable
namespace RepoEditor {
class Dialog;
}

class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    MainWindow();

    // The settings of the command line. Call these before the window is first shown.
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

    // Returns whether the back end is changing the system at this moment. No such change may be interrupted.
    bool isChangingSystem() const;
    // Ends all work, because the process ends directly afterwards; see YumIO::finish().
    void finish(bool displayIsThere);

public Q_SLOTS:
    void resize();
    void refresh();
    void reposChanged();
    void initialize();
    void yumConfIOChanged();
    // Logs a message about the writing of the configuration.
    void yumConfIONoted(const QString& text);
    void quit();
    void displayLog();
    // At the start, the packages are collected when the editor closes, even without changes.
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
    // Shows a text beside the menus for a while, and logs it.
    void warnAndNotice(const QString& text);
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

protected:
    // While the back end works, the window stays open, because a transaction must not be interrupted. If the
    // back end only waits for another program, the wait ends, and then the window closes. Otherwise this does
    // the same as quit().
    void closeEvent(QCloseEvent* event) override;

private:
    // At the end of its scope, shows a notice if the log has new errors. Some errors are reported only in the
    // log, for example an unreachable repository or a failed script of a package.
    class LoggedErrors
    {
    public:
        explicit LoggedErrors(MainWindow& forWindow);
        ~LoggedErrors();
        LoggedErrors(const LoggedErrors&) = delete;
        LoggedErrors& operator=(const LoggedErrors&) = delete;

    private:
        MainWindow& window;
        int before; // the number of entries at the beginning
    };

    void createMenuBar();
    void createMainArea();
    QBoxLayout* createFilterRow();
    QBoxLayout* createButtonRow();
    void prepareFilterSearch();
    void anyFilterChanged();
    void warnConfigure();
    void warnUnlistedActions();
    void setReady(bool ready);
    void collect();
    // The marks that are set again after a collection, where they are still possible.
    enum Kept { NoMarks, AllMarks, LeftOutMarks };
    void recollect(Kept kept = NoMarks);
    // Filters the table by the text in the edit.
    void applyExpression();
    void showTable();
    void updateEmptyText();
    void closeLater();
    void saveLayout() const;
    bool checkCredentials(bool& changed);
    void clean(bool (YumIO::*operation)());
    void showNotice(const QString& text);
    // An empty text means no fault; nothing is shown then.
    void showFault(const QString& text);
    void changeFilter(const std::function<void()>& change);
    bool quitting() const { return yumIO == nullptr; }

    bool repoEditorAtStart;
    bool logAtStart;
    QList<YumRepoEnabled> repoOverrides;
    QHash<QString, bool> sessionEnabled;
    QSet<QString> loggedDoubts; // doubts about the configuration that the log already has
    YumIO* yumIO;               // null from quit() on
    YumIO* closing;             // the back end while quit() closes the window
    YumConfIO* yumConfIO;
    bool initialized;
    bool scheduled;
    bool busy;
    bool closeWanted;              // the window closes at the end of the current operation
    bool collectFailed;            // the last collection of packages failed
    QPointer<QWidget> focusBefore; // had the focus when the controls were disabled

    HMenu* programMenu;
    QAction* quitAction;
    HMenu* repositoriesMenu;
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
    Log::Window* logWindow;         // null until first needed
    RepoEditor::Dialog* repoEditor; // null until first needed
    QMessageBox* aboutBox;          // null until first needed
    Notice* notice;                 // null until first needed
};

#endif
