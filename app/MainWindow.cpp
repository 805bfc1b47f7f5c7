#include "app/MainWindow.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QMutexLocker>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <QVector>
#include <QWindow>

#include <algorithm>
#include <functional>
#include <sys/utsname.h>

#include "app/Settings.h"
#include "app/WindowSizeKeeper.h"
#include "app/base/Share.h"
#include "packagetable/Model.h"
#include "packagetable/SortFilterProxyModel.h"
#include "packagetable/View.h"
#include "python/Python.h"
#include "repo/Execute.h"
#include "repo/RepoAuthChecker.h"
#include "repo/RepoEditorDialog.h"
#include "repo/YumConfIO.h"
#include "services/HProgressBar.h"
#include "services/LogWindow.h"
#include "widgets/Colors.h"
#include "widgets/HFrameLabel.h"
#include "widgets/HMenu.h"
#include "widgets/Literal.h"
#include "widgets/Metrics.h"
#include "widgets/PlainLabel.h"
#include "yumio/YumIO.h"

namespace {

constexpr int searchMode = PackageTable::Search;

constexpr char documentation[] = "/usr/share/doc/vyre";

QString nodeName()
{
    utsname names;
    return uname(&names) == 0 ? QString::fromLocal8Bit(names.nodename) : QString();
}

// The key that opens the editor of repositories is one that edits take for themselves, to go to their end.
class ExpressionEdit : public QLineEdit
{
public:
    using QLineEdit::QLineEdit;

protected:
    bool event(QEvent* event) override
    {
        if (event->type() == QEvent::ShortcutOverride) {
            const auto* key = static_cast<QKeyEvent*>(event);
            if (key->key() == Qt::Key_E && key->modifiers() == Qt::ControlModifier) {
                event->ignore();
                return false;
            }
        }
        return QLineEdit::event(event);
    }
};

} // namespace

MainWindow::MainWindow()
    : repoEditorAtStart(false), logAtStart(false), yumIO(new YumIO), closing(nullptr), yumConfIO(nullptr),
      initialized(false), scheduled(false), busy(false), closeWanted(false), collectFailed(false),
      logWindow(nullptr), repoEditor(nullptr), aboutBox(nullptr)
{
    setWindowTitle(Literal::title(tr("VYRE - %1").arg(nodeName())));
    Execute::keepOutput(); // the manual can be opened while a transaction's output is captured
    model = new PackageTable::Model(yumIO, this);
    proxy = new PackageTable::SortFilterProxyModel(PackageTable::ViewUpdatable, true, false, yumIO, this);
    proxy->setSourceModel(model);
    createMenuBar();
    createMainArea();
    yumIO->setup(this, totalBar, itemBar);
    connect(yumIO, SIGNAL(collectedExtraData()), this, SLOT(collectedExtraData()));
    collectedExtraData();
    modeChanged(PackageTable::Filter);
    setReady(false);
}

void MainWindow::createMenuBar()
{
    const auto addMenu = [this](const QString& title) {
        auto* menu = new HMenu(title, menuBar());
        menuBar()->addMenu(menu);
        return menu;
    };
    programMenu = addMenu(tr("&Program"));
    quitAction = programMenu->addAction(tr("&Quit"), this, SLOT(quit()), QKeySequence(tr("Ctrl+Q")));

    HMenu* windowsMenu = addMenu(tr("&Windows"));
    windowsMenu->addAction(tr("&Log"), this, SLOT(displayLog()), QKeySequence(tr("Ctrl+L")));

    repositoriesMenu = addMenu(tr("&Repositories"));
    editConfigurationAction = repositoriesMenu->addAction(
        tr("&Edit Configuration"), this, SLOT(editRepositories()), QKeySequence(tr("Ctrl+E")));

    cacheMenu = addMenu(tr("&Cache"));
    cleanDbcacheAction = cacheMenu->addAction(tr("Clean dbcache"), this, SLOT(cleanDbcache()));
    cleanPackagesAction = cacheMenu->addAction(tr("Clean Packages"), this, SLOT(cleanPackages()));
    cleanMetadataAction = cacheMenu->addAction(tr("Clean Metadata"), this, SLOT(cleanMetadata()));
    cacheMenu->addSeparator();
    cleanAllAction = cacheMenu->addAction(tr("Clean All"), this, SLOT(cleanAll()));

    HMenu* helpMenu = addMenu(tr("&Help"));
    helpMenu->addAction(tr("Manual (html)"), this, SLOT(manualHtml()));
    helpMenu->addAction(tr("Manual (PDF)"), this, SLOT(manualPdf()));
    helpMenu->addSeparator();
    helpMenu->addAction(tr("&About"), this, SLOT(about()), QKeySequence(Qt::Key_F1));
}

void MainWindow::createMainArea()
{
    auto* central = new QWidget(this);
    auto* centralLayout = new QVBoxLayout(central);
    tableArea = new QWidget(central);
    auto* tableLayout = new QVBoxLayout(tableArea);
    tableLayout->setContentsMargins(0, 0, 0, 0);
    tableLayout->addLayout(createFilterRow());
    view = new PackageTable::View(model, proxy, tableArea);
    view->setAccessibleName(tr("Packages"));
    tableLayout->addWidget(view, 1);
    tableLayout->addLayout(createButtonRow());
    connect(view, SIGNAL(currentChanged(int, int)), this, SLOT(currentChanged(int, int)));
    connect(view, SIGNAL(stateChanged(int)), this, SLOT(stateChanged(int)));
    connect(view, SIGNAL(actionRefused(const QString&)), this, SLOT(warnAndNotice(const QString&)));

    totalBar = new HProgressBar(central);
    totalBar->setAccessibleName(tr("Whole operation"));
    itemBar = new HProgressBar(central);
    itemBar->setAccessibleName(tr("Current step"));
    centralLayout->addWidget(tableArea, 1);
    centralLayout->addStretch(0);
    centralLayout->addWidget(totalBar);
    centralLayout->addWidget(itemBar);
    setCentralWidget(central);

    // There is nothing to choose from before the first collection; the bars keep to the bottom meanwhile. The
    // table must not be asked for its size: it decides once for how many rows it asks room.
    tableArea->hide();
}

QBoxLayout* MainWindow::createFilterRow()
{
    auto* row = new QHBoxLayout;
    modeBox = new QComboBox;
    modeBox->addItem(tr("Filter"));
    modeBox->addItem(tr("Search"));
    connect(modeBox, SIGNAL(currentIndexChanged(int)), this, SLOT(modeChanged(int)));
    row->addWidget(modeBox);

    regexpEdit = new ExpressionEdit(QStringLiteral(".*"));
    connect(regexpEdit, SIGNAL(returnPressed()), this, SLOT(filtersearch()));
    regexpEdit->setAccessibleName(tr("Regular expression"));
    row->addWidget(regexpEdit, 1);

    filterButton = new QPushButton;
    filterButton->setDefault(true);
    connect(filterButton, SIGNAL(clicked()), this, SLOT(filtersearch()));
    row->addWidget(filterButton);

    stateBox = new QComboBox;
    stateBox->addItem(tr("View Updatable"), PackageTable::ViewUpdatable);
    stateBox->addItem(tr("View Installable"), PackageTable::ViewInstallable);
    stateBox->addItem(tr("View Removable"), PackageTable::ViewRemovable);
    stateBox->addItem(tr("View All"), PackageTable::ViewAll);
    stateBox->setToolTip(
        tr("Filter for those packages which are eligible for updating,\nfor installing, or for "
           "removing; or show all packages"));
    connect(stateBox, SIGNAL(currentIndexChanged(int)), this, SLOT(stateFilterChanged(int)));
    row->addWidget(stateBox);

    dupsBox = new QCheckBox(tr("Include Duplicates"));
    dupsBox->setChecked(true);
    dupsBox->setToolTip(
        tr("Whether or not filter should include packages with duplicate names.\nIf unchecked, the "
           "package with the architecture closest to the base architecture is shown."));
    connect(dupsBox, SIGNAL(stateChanged(int)), this, SLOT(dupsFilterChanged(int)));
    row->addWidget(dupsBox);

    groupsBox = new QCheckBox(tr("Include Groups"));
    groupsBox->setToolTip(tr("Whether or not filter should include package groups"));
    connect(groupsBox, SIGNAL(stateChanged(int)), this, SLOT(groupsFilterChanged(int)));
    row->addWidget(groupsBox);
    return row;
}

QBoxLayout* MainWindow::createButtonRow()
{
    auto* row = new QHBoxLayout;
    const auto addButton = [this, row](const QString& text, const QString& toolTip, const char* slot) {
        auto* button = new QPushButton(text);
        button->setToolTip(Literal::toolTip(toolTip));
        if (slot != nullptr) {
            connect(button, SIGNAL(clicked()), this, slot);
        }
        row->addWidget(button);
        return button;
    };
    describeButton = addButton(
        tr("&Describe"), tr("Pop up a window with a detailed description of the currently selected package"),
        nullptr);
    connect(describeButton, SIGNAL(clicked()), view, SLOT(describe()));
    describeButton->setEnabled(false);
    row->addStretch(1);
    addButton(tr("Re&size"), tr("Resize the columns and window to optimal values"), SLOT(resize()));
    addButton(
        tr("Re&fresh"),
        tr("Refresh the list of installed packages and packages available for update.\nUse this to check for "
           "new updates in repositories, or if any packages were installed manually."),
        SLOT(refresh()));
    addButton(
        tr("Set &Install/Update of Selected"),
        tr("Sets the Action for all selected packages which are Not Installed to Install, and\nsets the "
           "Action for all selected packages which are Installed but Out-of-date to Update.\nDoes not Apply "
           "Actions automatically."),
        SLOT(setSelected()));
    addButton(
        tr("Set &Update of Listed"),
        tr("Sets the Action to Update for any packages which are Installed but Out-of-date,\nand which are "
           "currently listed based on the the Mode, Filter, Search, State, Duplicates, and Groups "
           "settings.\nDoes not Apply Actions automatically."),
        SLOT(setUpdateListed()));
    addButton(tr("&Clear Actions"), tr("Clears all specified Actions (Updates, Installs, and Removals)"),
              SLOT(clearActions()));
    unlistedLabel = new HFrameLabel;
    unlistedLabel->setPalette(Colors::makeWarning(unlistedLabel->palette()));
    warnConfigure();
    row->addWidget(unlistedLabel);
    applyButton =
        addButton(tr("&Apply Actions"), tr("Applies the specified Actions (Updates, Installs, and Removals)"),
                  SLOT(apply()));
    applyButton->setEnabled(false);
    return row;
}

void MainWindow::setMode(PackageTable::Mode mode)
{
    modeBox->setCurrentIndex(mode);
}

void MainWindow::setRegexp(const char* regexp)
{
    regexpEdit->setText(QString::fromLocal8Bit(regexp));
}

void MainWindow::setStateFilter(PackageTable::StateFilter filter)
{
    stateBox->setCurrentIndex(filter);
}

void MainWindow::setDups(bool include)
{
    dupsBox->setChecked(include);
}

void MainWindow::setGroups(bool include)
{
    groupsBox->setChecked(include);
}

void MainWindow::setVisible(bool visible)
{
    const bool first = visible && !scheduled;
    if (first) {
        scheduled = true;
        // Room for the table, which is not there to ask for it yet.
        QWidget::resize(QSize(1000, 700).boundedTo(Metrics::maxWindowSize()));
    }
    QMainWindow::setVisible(visible);
    if (first) {
        QTimer::singleShot(0, this, SLOT(initialize()));
    }
}

QSize MainWindow::sizeHint() const
{
    return QMainWindow::sizeHint().expandedTo(QSize(768, 0));
}

void MainWindow::initialize()
{
    // The window system shows a window in its own time, and a window without contents looks broken.
    // Nor does it ever show a window that is started as an icon.
    QElapsedTimer waiting;
    waiting.start();
    QTimer alarm; // wakes the wait up
    alarm.start(100);
    while (windowHandle() != nullptr && !windowHandle()->isExposed() && waiting.elapsed() < 2000) {
        QEventLoop().processEvents(QEventLoop::ExcludeUserInputEvents | QEventLoop::WaitForMoreEvents);
    }
    repaint();
    if (quitting()) {
        return;
    }

    yumConfIO = new YumConfIO(repoOverrides, sessionEnabled);
    connect(yumConfIO, SIGNAL(changed()), this, SLOT(yumConfIOChanged()));
    connect(yumConfIO, SIGNAL(noted(const QString&)), this, SLOT(yumConfIONoted(const QString&)));
    model->setYumConfIO(yumConfIO);
    if (logAtStart) {
        displayLog();
    }
    if (!yumIO->initialize()) {
        quit();
        return;
    }
    const QStringList known = yumIO->knownDirectories();
    if (!known.isEmpty()) {
        yumConfIO->knownDirectories = known;
    }
    if (repoEditorAtStart) {
        model->reset();
        setReady(true);
        editRepositories(true);
        initialized = true;
        return;
    }
    bool changed = false;
    if (!checkCredentials(changed)) {
        return;
    }
    if (changed) {
        yumIO->reset();
        yumIO->clearEntries();
    }
    collect();
    if (quitting()) {
        return;
    }
    model->reset();
    collectedExtraData(); // a collection counts as having loaded them
    showTable();
    {
        // The columns fit all rows; those that do not match are not to be seen while a search is prepared.
        const PackageTable::Model::Hiding hiding(*model);
        view->setEmptyText(tr("Reading the packages..."));
        filtersearch();
    }
    updateEmptyText();
    setReady(true);
    initialized = true;
}

void MainWindow::showTable()
{
    if (tableArea->isHidden()) {
        tableArea->show();
        view->resizeColumnsToContents();
        restoreLayout();
    }
    updateEmptyText();
}

void MainWindow::updateEmptyText()
{
    if (collectFailed) {
        view->setEmptyText(tr("The packages could not be read.\nThe Log window (Ctrl+L) tells why."));
    } else if (!proxy->isValidExpression()) {
        view->setEmptyText(tr("This is not a valid regular expression:\n%1").arg(proxy->expressionFault()));
    } else if (stateBox->currentIndex() == PackageTable::ViewUpdatable && proxy->filterRegExp().isEmpty()) {
        view->setEmptyText(tr("No package has an update."));
    } else {
        view->setEmptyText(tr("No package matches."));
    }
}

void MainWindow::saveLayout() const
{
    if (tableArea->isHidden()) {
        return;
    }
    const auto toVariants = [](const QList<int>& numbers) {
        QVariantList variants;
        for (int number : numbers) {
            variants.append(number);
        }
        return variants;
    };
    Settings settings;
    const PackageTable::View::Layout layout = view->layoutByHand();
    settings.setValue(QStringLiteral("MainWindow/columnWidths"), toVariants(layout.widths));
    settings.setValue(QStringLiteral("MainWindow/columnPlaces"), toVariants(layout.places));
    settings.setValue(QStringLiteral("MainWindow/maximized"), isMaximized());
    if (!isMaximized() && !isFullScreen()) {
        settings.setValue(QStringLiteral("MainWindow/size"), size());
    }
}

void MainWindow::restoreLayout()
{
    const auto toNumbers = [](const QVariant& value) {
        QList<int> numbers;
        const QVariantList list = value.toList();
        for (const QVariant& number : list) {
            numbers.append(number.toInt());
        }
        return numbers;
    };
    const Settings settings;
    view->restoreLayout({toNumbers(settings.value(QStringLiteral("MainWindow/columnWidths"))),
                         toNumbers(settings.value(QStringLiteral("MainWindow/columnPlaces")))});
    const QSize remembered = settings.value(QStringLiteral("MainWindow/size")).toSize();
    if (!remembered.isEmpty()) {
        QWidget::resize(remembered.boundedTo(Metrics::maxWindowSize()));
    }
    if (settings.value(QStringLiteral("MainWindow/maximized")).toBool()) {
        setWindowState(windowState() | Qt::WindowMaximized);
    }
}

// False: the user wants the program to end, and it does.
bool MainWindow::checkCredentials(bool& changed)
{
    const RepoAuth::Checker checker(this, yumConfIO);
    changed = checker.changed;
    if (checker.quit) {
        quit();
    }
    return !quitting();
}

void MainWindow::editRepositories(bool atStart)
{
    if (quitting()) {
        return;
    }
    if (repoEditor == nullptr) {
        repoEditor = new RepoEditor::Dialog(yumIO, yumConfIO, this);
        new WindowSizeKeeper(QStringLiteral("RepositoryEditor"), repoEditor);
        connect(repoEditor, SIGNAL(reposChanged()), this, SLOT(reposChanged()));
    }
    repoEditor->reposChangedForced = atStart;
    repoEditor->exec();
}

void MainWindow::reposChanged()
{
    setReady(false);
    bool changed = false;
    if (!checkCredentials(changed)) {
        return;
    }
    yumIO->reset();
    if (tableArea->isHidden()) {
        takeExpression(); // of the command line
    }
    recollect();
    showTable();
    setReady(true);
}

void MainWindow::yumConfIOChanged()
{
    // The files are read often; each of these is told once.
    for (const QString& doubt : qAsConst(yumConfIO->doubts)) {
        if (!quitting() && !toldDoubts.contains(doubt)) {
            toldDoubts.insert(doubt);
            yumIO->log(Log::Warning, 0, doubt);
        }
    }
    const QString& directory = yumConfIO->cachedir;
    cleanDbcacheAction->setToolTip(tr("Clean RPM dbcache files (solv/solvx databases constructed from the "
                                      "metadata) cached locally in %1")
                                       .arg(directory));
    cleanPackagesAction->setToolTip(
        tr("Clean RPM packages cached locally in %1\n(useful for recovering disk space)").arg(directory));
    cleanMetadataAction->setToolTip(
        tr("Clean metadata (mostly XML or compressed XML) cached locally in %1").arg(directory));
    cleanAllAction->setToolTip(tr("Clean all data cached locally in %1").arg(directory));
}

void MainWindow::yumConfIONoted(const QString& text)
{
    if (!quitting()) {
        yumIO->log(Log::Warning, 0, text);
    }
}

void MainWindow::setReady(bool ready)
{
    {
        Python::PyGILStateWrapper lock(ready && Python::initialized);
        if (!ready && !busy) {
            focusBefore = focusWidget();
        }
        programMenu->setEnabled(ready);
        quitAction->setEnabled(ready);
        repositoriesMenu->setEnabled(ready);
        editConfigurationAction->setEnabled(ready);
        cacheMenu->setEnabled(ready);
        for (QAction* action :
             {cleanDbcacheAction, cleanPackagesAction, cleanMetadataAction, cleanAllAction}) {
            action->setEnabled(ready);
        }
        tableArea->setEnabled(ready);
        if (ready && busy && !focusBefore.isNull()) {
            focusBefore->setFocus();
        }
    }
    if (ready == busy) {
        busy = !ready;
        if (busy) {
            QApplication::setOverrideCursor(Qt::BusyCursor);
        } else {
            QApplication::restoreOverrideCursor();
        }
    }
    QEventLoop().processEvents(QEventLoop::ExcludeUserInputEvents);
    if (ready && closeWanted && !quitting()) {
        closeWanted = false;
        // The operation has to return first.
        QTimer::singleShot(0, this, SLOT(close()));
    }
}

void MainWindow::collect()
{
    const LoggedErrors errors(*this);
    collectFailed = !yumIO->collect(sessionEnabled);
}

MainWindow::LoggedErrors::LoggedErrors(MainWindow& forWindow) : window(forWindow)
{
    Log::EntryList& entries = window.yumIO->logEntries();
    const QMutexLocker locker(&entries);
    before = entries.count();
}

MainWindow::LoggedErrors::~LoggedErrors()
{
    if (window.quitting()) {
        return;
    }
    Log::EntryList& entries = window.yumIO->logEntries();
    bool any = false;
    {
        const QMutexLocker locker(&entries);
        any = std::any_of(entries.cbegin() + before, entries.cend(), [](const Log::Entry& entry) {
            return entry.kind == Log::Error && entry.level <= 2; // that the log window shows by itself
        });
    }
    if (any) {
        window.showNotice(tr("There are errors in the log (Ctrl+L)"));
    }
}

void MainWindow::recollect(Kept kept)
{
    view->setEmptyText(tr("Reading the packages..."));
    const YumIO::Marks marks = kept == AllMarks       ? yumIO->marks()
                               : kept == LeftOutMarks ? yumIO->leftOutMarks()
                                                      : YumIO::Marks();
    {
        const PackageTable::Model::Hiding hiding(*model);
        yumIO->clearEntries();
        collect();
        yumIO->restoreMarks(marks);
        // Or what is asked of each record for the expression would hold up the graphical thread.
        prepareFilterSearch();
    }
    updateEmptyText();
    // The records are new ones.
    warnUnlistedActions();
    stateChanged(-1);
    collectedExtraData();
}

void MainWindow::resize()
{
    view->resizeColumnsToContents();
}

void MainWindow::refresh()
{
    setReady(false);
    yumIO->reset();
    recollect();
    setReady(true);
}

void MainWindow::clean(bool (YumIO::*operation)())
{
    setReady(false);
    (yumIO->*operation)();
    // The window is about to close: to collect would wait for the same lock again.
    if (!closeWanted) {
        yumIO->reset();
        recollect();
    }
    setReady(true);
}

void MainWindow::cleanDbcache()
{
    clean(&YumIO::cleanDbcache);
}

void MainWindow::cleanPackages()
{
    // Packages that are no longer downloaded change nothing in the table.
    setReady(false);
    yumIO->cleanPackages();
    setReady(true);
}

void MainWindow::cleanMetadata()
{
    clean(&YumIO::cleanMetadata);
}

void MainWindow::cleanAll()
{
    clean(&YumIO::cleanAll);
}

void MainWindow::apply()
{
    setReady(false);
    const LoggedErrors errors(*this);
    const bool applied = yumIO->apply();
    bool changed = false;
    if (applied && !checkCredentials(changed)) {
        return;
    }
    if (changed) {
        // Or the back end goes on with the URLs that it has read before.
        yumIO->reset();
    }
    // A transaction that failed half way has changed the system all the same.
    if (applied || yumIO->systemChanged()) {
        recollect(LeftOutMarks);
    } else if (yumIO->isOutdated()) {
        recollect(AllMarks);
    }
    warnUnlistedActions();
    stateChanged(-1);
    setReady(true);
}

void MainWindow::quit()
{
    if (quitting()) {
        return;
    }
    // A transaction must not be cut off.
    if (yumIO->isWorking()) {
        closeLater();
        return;
    }
    saveLayout();
    // From here on nothing asks the back end any more.
    YumIO* const ending = yumIO;
    yumIO = nullptr;
    ending->clearEntriesBeforeQuit();
    model->reset();
    if (logWindow != nullptr && logWindow->isVisible()) {
        logWindow->hide();
    }
    closing = ending;
    close();
    closing = nullptr;
    delete ending;
}

// While the back end works. Where it only waits for another program, there is nothing to be cut off.
void MainWindow::closeLater()
{
    if (yumIO->endWaiting()) {
        closeWanted = true;
    } else {
        QApplication::beep();
    }
}

bool MainWindow::isChangingSystem() const
{
    return !quitting() && yumIO->isChangingSystem();
}

void MainWindow::finish(bool displayIsThere)
{
    if (quitting()) {
        if (closing != nullptr) {
            closing->finish(displayIsThere);
        }
        return;
    }
    if (displayIsThere) {
        saveLayout();
    }
    yumIO->finish(displayIsThere);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (!quitting() && yumIO->isWorking()) {
        closeLater();
        event->ignore();
        return;
    }
    event->accept();
    quit();
}

void MainWindow::displayLog()
{
    if (logWindow == nullptr) {
        logWindow = new Log::Window(yumIO->logEntries(), this);
        new WindowSizeKeeper(QStringLiteral("LogWindow"), logWindow);
    }
    logWindow->show();
    logWindow->raise();
    logWindow->activateWindow();
}

// The command is a program of the share directory and its arguments.
void MainWindow::openExternally(QStringList command)
{
    command.first() = Share::absolute(command.first());
    QList<QByteArray> arguments;
    for (const QString& argument : qAsConst(command)) {
        arguments.append(QFile::encodeName(argument));
    }
    QVector<char*> argv;
    for (QByteArray& argument : arguments) {
        argv.append(argument.data());
    }
    argv.append(nullptr);
    Execute::execute(this, argv.constData());
}

// The file is the last word of the command.
void MainWindow::openManual(const QStringList& command)
{
    openExternally(command);
    const QString& file = command.last();
    if (quitting() || QFile::exists(file)) {
        return;
    }
    // Where the other program tells of it, a desktop shows it to nobody.
    warnAndNotice(tr("The manual is not installed: there is no file %1").arg(file));
}

void MainWindow::warnAndNotice(const QString& text)
{
    if (!quitting()) {
        yumIO->log(Log::Warning, 0, text);
        showNotice(text);
    }
}

// Beside the menus for a while: a window would come between what the user does next.
void MainWindow::showNotice(const QString& text)
{
    auto* notice = qobject_cast<QLabel*>(menuBar()->cornerWidget());
    if (notice == nullptr) {
        notice = new PlainLabel(menuBar());
        notice->setPalette(Colors::makeWarning(notice->palette()));
        notice->setBackgroundRole(QPalette::Window); // not the menu bar's
        notice->setForegroundRole(QPalette::WindowText);
        notice->setAutoFillBackground(true);
        notice->setMargin(2);
        menuBar()->setCornerWidget(notice);
    }
    notice->setText(text);
    notice->show();
    auto* end = notice->findChild<QTimer*>();
    if (end == nullptr) {
        end = new QTimer(notice);
        end->setSingleShot(true);
        connect(end, SIGNAL(timeout()), notice, SLOT(hide()));
    }
    end->start(15000);
}

void MainWindow::openPage(const QString& address)
{
    openExternally({QStringLiteral("webbrowser"), address});
}

void MainWindow::manualHtml()
{
    openManual({QStringLiteral("webbrowser"),
                QStringLiteral("%1/html/index.html").arg(QLatin1String(documentation))});
}

void MainWindow::manualPdf()
{
    openManual({QStringLiteral("mimeviewer"), QStringLiteral("application/pdf"),
                QStringLiteral("%1/manual.pdf").arg(QLatin1String(documentation))});
}

void MainWindow::about()
{
    if (aboutBox == nullptr) {
        // Not by QMessageBox::about(): its event loop would hold up an operation that has ended meanwhile.
        aboutBox = new QMessageBox(
            QMessageBox::NoIcon, tr("About"),
            tr("<h3>VYRE %1</h3><hr><p>VYRE, Vyrecraft, is a graphical user interface which allows a user to "
               "make "
               "modifications to the installed rpm packages on a "
               "system.</p><p>Capabilities:<p><ul><li>Install "
               "new "
               "packages or update existing packages by downloading them from a yum package "
               "repository</li><li>Remove "
               "existing packages.</li><li>Configure sets of repositories from which to obtain new and "
               "updated "
               "packages.</li><li>Examine installed packages or packages available for installation or "
               "update</li><li>Install, update, or remove groups of packages</li><li>Install or update "
               "suites of "
               "packages</li></ul><p>More is told at <a "
               "href=\"https://vyre.example/\">https://vyre.example/</a>.</p>")
                .arg(QStringLiteral(VYRE_VERSION)),
            QMessageBox::Ok, this);
        aboutBox->setIconPixmap(windowIcon().pixmap(64));
        aboutBox->setModal(false);
        // Qt would open the page as root.
        for (QLabel* label : aboutBox->findChildren<QLabel*>()) {
            label->setOpenExternalLinks(false);
            connect(label, SIGNAL(linkActivated(const QString&)), this, SLOT(openPage(const QString&)));
        }
    }
    aboutBox->show();
    aboutBox->raise();
    aboutBox->activateWindow();
}

void MainWindow::modeChanged(int mode)
{
    const bool search = mode == searchMode;
    if (search) {
        setReady(false);
    }
    filterButton->setText(search ? tr("Search") : tr("Filter"));
    regexpEdit->setToolTip(
        search ? tr("Regular expression to compare to all fields of a package")
               : tr("Regular expression filter matching textual fields visible in the table"));
    filterButton->setToolTip(search
                                 ? tr("Perform the search for the regular expression specified to the left")
                                 : tr("Apply the filter specified to the left"));
    prepareFilterSearch();
    proxy->setMode(static_cast<PackageTable::Mode>(mode));
    if (search) {
        setReady(initialized);
    }
    anyFilterChanged();
}

void MainWindow::prepareFilterSearch()
{
    // Before the start there is nothing to load from; the start itself comes by here.
    if (!scheduled || modeBox->currentIndex() != searchMode) {
        return;
    }
    const QString regexp = regexpEdit->text();
    const bool wanted = !regexp.isEmpty() && regexp != QLatin1String(".*");
    // What the table is filtered by need not be what has been typed meanwhile.
    if (!wanted && proxy->filterRegExp().isEmpty()) {
        return;
    }
    if (wanted && (!yumIO->haveFileLists() || !yumIO->haveOtherData())) {
        proxy->setFilter(false);
        yumIO->collectFileLists();
        yumIO->collectOtherData();
        proxy->setFilter(true);
    }
    yumIO->collectSearchTexts(
        proxy->searched(static_cast<PackageTable::StateFilter>(stateBox->currentIndex()),
                        dupsBox->isChecked(), groupsBox->isChecked()));
}

void MainWindow::filtersearch()
{
    const bool search = modeBox->currentIndex() == searchMode;
    if (search) {
        setReady(false);
    }
    prepareFilterSearch();
    takeExpression();
    if (search) {
        setReady(true);
    }
    anyFilterChanged();
}

void MainWindow::takeExpression()
{
    proxy->setFilterRegExp(regexpEdit->text());
    // An expression that is none would look like one that nothing matches.
    QPalette palette = QApplication::palette(regexpEdit);
    if (!proxy->isValidExpression()) {
        palette.setColor(QPalette::Base, QColor(Colors::errorBg()));
        palette.setColor(QPalette::Text, Qt::black);
    }
    regexpEdit->setPalette(palette);
}

void MainWindow::changeFilter(const std::function<void()>& change)
{
    const bool search = modeBox->currentIndex() == searchMode;
    if (search) {
        setReady(false);
        prepareFilterSearch();
    }
    change();
    if (search) {
        setReady(initialized);
    }
    anyFilterChanged();
}

void MainWindow::stateFilterChanged(int index)
{
    changeFilter([this, index] { proxy->setStateFilter(static_cast<PackageTable::StateFilter>(index)); });
}

void MainWindow::dupsFilterChanged(int state)
{
    changeFilter([this, state] { proxy->setDupsFilter(state != Qt::Unchecked); });
}

void MainWindow::groupsFilterChanged(int state)
{
    changeFilter([this, state] { proxy->setGroupsFilter(state != Qt::Unchecked); });
}

void MainWindow::anyFilterChanged()
{
    warnUnlistedActions();
    if (initialized) {
        updateEmptyText();
    }
}

void MainWindow::collectedExtraData()
{
    QString text =
        tr("Specify the method for using a regular expression to select packages in the table:\n"
           "\tFilter uses the textual fields visible in the table, as if they were separated by spaces.\n"
           "\tSearch uses all fields in packages, including list of Files, Change Log, Requires, etc.,\n"
           "\tindependently.  It is considerably slower.");
    if (!yumIO->haveFileLists() || !yumIO->haveOtherData()) {
        text = tr("%1 (Must load extra data.)").arg(text);
    }
    modeBox->setToolTip(Literal::toolTip(text));
}

void MainWindow::warnConfigure()
{
    // Its full size is kept, so that the row does not move when the warning comes and goes.
    unlistedLabel->setText(tr("Unlisted Actions"));
    unlistedLabel->setFixedSize(unlistedLabel->sizeHint());
    unlistedLabel->setText(QString());
}

void MainWindow::warnUnlistedActions()
{
    const int count = quitting() ? 0 : yumIO->count();
    for (int row = 0; row < count; ++row) {
        if ((*yumIO)[row]->action != Package::None && !proxy->mapFromSource(model->index(row, 0)).isValid()) {
            unlistedLabel->setText(tr("Unlisted Actions"));
            unlistedLabel->setToolTip(tr("Some packages have actions specified, but because of the "
                                         "current\nMode, Filter, Search, State, "
                                         "Duplicates, and Groups settings,\nthese packages are not listed "
                                         "currently.\nPressing Apply will "
                                         "cause these actions to occur nonetheless."));
            return;
        }
    }
    unlistedLabel->setText(QString());
    unlistedLabel->setToolTip(QString());
}

void MainWindow::currentChanged(int row, int)
{
    describeButton->setEnabled(row != -1);
}

void MainWindow::stateChanged(int row)
{
    const int count = quitting() ? 0 : yumIO->count();
    bool any = row >= 0 && row < count && (*yumIO)[row]->action != Package::None;
    for (int i = 0; i < count && !any; ++i) {
        any = (*yumIO)[i]->action != Package::None;
    }
    applyButton->setEnabled(any);
}

void MainWindow::setSelected()
{
    {
        const PackageTable::SortFilterProxyModel::SortPause pause(*proxy);
        model->setSelected(view->selectedRows());
    }
    stateChanged(-1);
}

void MainWindow::setUpdateListed()
{
    proxy->setUpdateListed();
    stateChanged(-1);
}

void MainWindow::clearActions()
{
    {
        const PackageTable::SortFilterProxyModel::SortPause pause(*proxy);
        model->clearActions();
    }
    warnUnlistedActions();
    stateChanged(-1);
}
