// The program's one main window: menus, the filter row, the package table, the action buttons and the
// progress bars. It owns the back end and everything that works on it, and brackets each long operation by
// taking the controls away and giving them back.
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

    // Settings of the command line, to be made before the first showing.
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

    // Whether the system is being changed at this moment, which nothing may cut off.
    bool isChangingSystem() const;
    // Ends all work for an end of the process that follows at once; see YumIO::finish().
    void finish(bool displayIsThere);

public Q_SLOTS:
    void resize();
    void refresh();
    void reposChanged();
    void initialize();
    void yumConfIOChanged();
    // Something that the writing of the configuration has done.
    void yumConfIONoted(const QString& text);
    void quit();
    void displayLog();
    // At the start, closing the editor has the packages collected even if nothing was changed.
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
    // Refused while the back end works: a transaction must not be cut off. Where it only waits for another
    // program, that wait ends, and then the window closes. Otherwise the same as quit().
    void closeEvent(QCloseEvent* event) override;

private:
    // Tells, at the end of its scope, of errors that stand in the log only: a repository that cannot be
    // reached, a script of a package that has failed.
    class LoggedErrors
    {
    public:
        explicit LoggedErrors(MainWindow& forWindow);
        ~LoggedErrors();
        LoggedErrors(const LoggedErrors&) = delete;
        LoggedErrors& operator=(const LoggedErrors&) = delete;

    private:
        MainWindow& window;
        int before; // number of entries
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
    // Which marks are put back where they are still possible.
    enum Kept { NoMarks, AllMarks, LeftOutMarks };
    void recollect(Kept kept = NoMarks);
    // Filters the table by what is in the edit.
    void takeExpression();
    void showTable();
    void updateEmptyText();
    void closeLater();
    void saveLayout() const;
    bool checkCredentials(bool& changed);
    void clean(bool (YumIO::*operation)());
    void showNotice(const QString& text);
    // Warns with a text that is not empty.
    void showFault(const QString& text);
    void changeFilter(const std::function<void()>& change);
    bool quitting() const { return yumIO == nullptr; }

    bool repoEditorAtStart;
    bool logAtStart;
    QList<YumRepoEnabled> repoOverrides;
    QHash<QString, bool> sessionEnabled;
    QSet<QString> toldDoubts; // about the configuration, which the log has
    YumIO* yumIO;             // null from quit() on
    YumIO* closing;           // the back end while quit() closes the window
    YumConfIO* yumConfIO;
    bool initialized;
    bool scheduled;
    bool busy;
    bool closeWanted;              // at the end of the operation that is being given up
    bool collectFailed;            // the last collection of packages
    QPointer<QWidget> focusBefore; // had the focus when the controls were taken away

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
