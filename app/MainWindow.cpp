// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/MainWindow.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QTimer>
#include <QWindow>

#include <functional>
#include <memory>
#include <sys/utsname.h>
#include <unistd.h>

#include "app/AdvisoriesCommand.h"
#include "app/ErrorWatch.h"
#include "app/HistoryCommand.h"
#include "app/KeptLayout.h"
#include "app/Notice.h"
#include "app/OutcomeLine.h"
#include "app/StopButton.h"
#include "app/WindowSizeKeeper.h"
#include "packagetable/Model.h"
#include "packagetable/Preparation.h"
#include "packagetable/SortFilterProxyModel.h"
#include "packagetable/View.h"
#include "python/Python.h"
#include "repo/Execute.h"
#include "repo/RepoAuthChecker.h"
#include "repo/RepoEditorDialog.h"
#include "repo/YumConfIO.h"
#include "services/HProgressBar.h"
#include "widgets/ExpressionEdit.h"
#include "widgets/HFrameLabel.h"
#include "widgets/HMenu.h"
#include "widgets/Literal.h"
#include "widgets/Metrics.h"
#include "yumio/YumIO.h"

namespace {

QString nodeName()
{
    utsname names;
    return uname(&names) == 0 ? QString::fromLocal8Bit(names.nodename) : QString();
}

void serveEvents()
{
    QEventLoop().processEvents(QEventLoop::ExcludeUserInputEvents);
}

} // namespace

MainWindow::MainWindow()
    : repoEditorAtStart(false), logAtStart(false), yumIO(new YumIO), closing(nullptr), yumConfIO(nullptr),
      initialized(false), scheduled(false), busy(false), closeWanted(false), collectFailed(false),
      logWindow(nullptr), repoEditor(nullptr), aboutBox(nullptr)
{
    setWindowTitle(Literal::title(tr("VYRE - %1").arg(nodeName())));
    Execute::keepOutput(); // a manual viewer must not print into the captured output
    model = new PackageTable::Model(yumIO, this);
    proxy = new PackageTable::SortFilterProxyModel(PackageTable::ViewUpdatable, true, false, yumIO, this);
    proxy->setSourceModel(model);
    historyCommand = new HistoryCommand(*this, this);
    advisoriesCommand = new AdvisoriesCommand(*this, model, proxy, this);
    createMenuBar();
    createMainArea();
    yumIO->setup(this, totalBar, itemBar);
    connect(yumIO, SIGNAL(stopStateChanged()), this, SLOT(showStopState()));
    connect(yumIO, SIGNAL(collectedExtraData()), this, SLOT(collectedExtraData()));
    collectedExtraData();
    modeChanged(PackageTable::Filter);
    setReady(false);
}

void MainWindow::setVisible(bool visible)
{
    const bool first = visible && !scheduled;
    if (first) {
        scheduled = true;
        // Set the size here: the table is still hidden, so the layout reserves no space for it.
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
    // Waits until the window system shows the window, because a window without contents looks broken. The
    // wait has a limit, because a window that starts as an icon is never shown.
    QElapsedTimer waiting;
    waiting.start();
    QTimer alarm; // makes processEvents() return regularly
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
    const bool started = yumIO->initialize();
    if (quitting()) {
        return;
    }
    if (!started) {
        quit();
        return;
    }
    const QString warning = restriction();
    showFault(warning); // the user must know this restriction before marking packages
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
    // Set a filter while the table is empty, so that the rows are sorted and filtered only once.
    const bool search = modeBox->currentIndex() == PackageTable::Search;
    const QString expression = regexpEdit->text();
    if (!search) {
        applyExpression();
    }
    collect();
    if (quitting()) {
        return;
    }
    const auto prepared = prepareTable();
    if (quitting()) {
        return;
    }
    // In a long table, each of the following steps takes some milliseconds, so serve events between them. The
    // first round paints other parts of the window. Meanwhile, further events can arrive.
    model->reset();
    serveEvents();
    serveEvents();
    if (quitting()) {
        return;
    }
    collectedExtraData(); // the collection may have loaded file lists and change logs
    showTable(prepared->widest);
    if (quitting()) {
        return;
    }
    if (search || regexpEdit->text() != expression) {
        // showTable() has fitted the columns to all rows. Hide the rows until the program has compared them
        // with the expression, because some rows do not match.
        const PackageTable::Model::Hiding hiding(*model);
        view->setEmptyText(tr("Reading the packages..."));
        filtersearch();
    }
    updateEmptyText();
    setReady(true);
    focusTable();
    if (!warning.isEmpty()) {
        // showFault() has already shown this warning. Show it again: the first notice may have disappeared,
        // or a newer notice may have replaced it.
        showNotice(warning);
    }
    initialized = true;
}

// Returns the notice for a user who cannot change packages, or whose changes may not last. If no such
// restriction is known, returns an empty text.
QString MainWindow::restriction() const
{
    if (geteuid() != 0) {
        return tr("VYRE cannot change packages, because it does not run as root");
    }
    return yumIO->restriction();
}

std::shared_ptr<PackageTable::Preparation> MainWindow::newPreparation() const
{
    const bool fitting = tableArea->isHidden(); // showTable() fits the columns of a hidden table
    return std::make_shared<PackageTable::Preparation>(*yumIO, view->font(), fitting);
}

std::shared_ptr<PackageTable::Preparation> MainWindow::prepareTable()
{
    const auto prepared = preparation ? std::move(preparation) : newPreparation();
    const int column = proxy->sortColumn();
    const Qt::SortOrder order = proxy->sortOrder();
    yumIO->compute([&prepared, column, order] { prepared->run(column, order); });
    if (!quitting()) {
        proxy->setPrepared(std::move(prepared->rows));
    }
    return prepared;
}

void MainWindow::showTable(const std::vector<int>* widest)
{
    if (tableArea->isHidden()) {
        // Prevent a paint event before the caller enables the table: the table would be painted twice.
        tableArea->setUpdatesEnabled(false);
        tableArea->show();
        view->fitColumns(widest);
        KeptLayout::restore(*this, *view);
        serveEvents();
        tableArea->setUpdatesEnabled(true);
        if (quitting()) {
            return;
        }
    }
    updateEmptyText();
}

void MainWindow::focusTable()
{
    // The focus may be on a button that is disabled now, or on no widget.
    if (focusWidget() != regexpEdit) {
        view->setFocus();
    }
}

void MainWindow::saveLayout() const
{
    if (!tableArea->isHidden()) {
        KeptLayout::save(*this, *view);
    }
}

// Asks the user for missing credentials. Returns false if the user has ended the program. In this case,
// quit() has already run.
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
    beginOperation();
    bool changed = false;
    if (!checkCredentials(changed)) {
        return;
    }
    const bool first = tableArea->isHidden();
    if (first) {
        applyExpression(); // the expression from the command line
    }
    reportedSkipped.clear();
    readPackages(NoMarks, Configuration::ReadAgain);
    showTable();
    if (quitting()) {
        return;
    }
    setReady(true);
    if (quitting()) {
        return;
    }
    focusTable();
    const QString warning = first ? restriction() : QString();
    if (!warning.isEmpty()) {
        // The repository editor covered the first notice, and then beginOperation() removed it. Show it
        // again.
        showNotice(warning);
    }
}

void MainWindow::yumConfIOChanged()
{
    // The configuration files are read often, but each warning is logged only once.
    for (const QString& warning : qAsConst(yumConfIO->warnings)) {
        if (!quitting() && !loggedWarnings.contains(warning)) {
            loggedWarnings.insert(warning);
            yumIO->log(Log::Warning, 0, warning);
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
        advisoriesAction->setEnabled(ready);
        repositoriesMenu->setEnabled(ready);
        editConfigurationAction->setEnabled(ready);
        cacheMenu->setEnabled(ready);
        for (QAction* action :
             {historyAction, cleanDbcacheAction, cleanPackagesAction, cleanMetadataAction, cleanAllAction}) {
            action->setEnabled(ready);
        }
        tableArea->setEnabled(ready);
        if (ready && busy && !focusBefore.isNull()) {
            focusBefore->setFocus();
        }
    }
    if (ready == busy) {
        busy = !ready;
        endRefusal();
        if (busy) {
            QApplication::setOverrideCursor(Qt::BusyCursor);
        } else {
            QApplication::restoreOverrideCursor();
        }
    }
    serveEvents();
    if (ready && closeWanted && !quitting()) {
        // The functions of the operation must return before the window closes.
        QTimer::singleShot(0, this, SLOT(close()));
    }
}

void MainWindow::beginOperation()
{
    outcomeLine->clear();
    notice->beginOperation();
    setReady(false);
}

bool MainWindow::collect()
{
    if (closeWanted) {
        // The window will close, so nobody will see the packages.
        collectFailed = true;
        return false;
    }
    const auto collectFrom = [this](YumIO::Source source) {
        preparation = newPreparation();
        collectFailed = !yumIO->collect(sessionEnabled, source, preparation.get());
        if (collectFailed) {
            preparation.reset();
        }
    };
    const ErrorWatch errors(yumIO->logEntries());
    collectFrom(YumIO::Source::Repositories);
    stopButton->setResult(StopButton::Result::SameTable);
    showSkippedRepos();
    if (collectFailed || yumIO->unwantedRepos().isEmpty()) {
        showErrors(errors); // otherwise the notice of showSkippedRepos() already refers to the log
    }
    for (const QString& id : yumIO->unwantedRepos()) {
        sessionEnabled.insert(id, false);
    }
    const bool stopped = collectFailed && yumIO->wasStopped();
    if (stopped && !closeWanted) {
        yumIO->clearEntries();
        collectFrom(YumIO::Source::Cache);
        showNotice(tr("Stopped. \"Refresh\" reads the repositories again."));
    }
    return stopped;
}

void MainWindow::showSkippedRepos()
{
    QStringList skipped = yumIO->skippedRepos();
    const QStringList unwanted = collectFailed ? QStringList() : yumIO->unwantedRepos();
    if (skipped == reportedSkipped && unwanted.isEmpty()) {
        return; // do not repeat the notice: the outcome of a transaction needs the space next to the menus
    }
    reportedSkipped = skipped;
    skipped += unwanted;
    if (skipped.count() == 1) {
        // In a narrow window, only the beginning of a notice is visible. A long identifier would leave no
        // visible space for the advice.
        constexpr int longest = 40;
        QString id = skipped.first();
        if (id.length() > longest) {
            id = id.left(longest - 1) + QChar(0x2026);
        }
        notice->showTextAboutLog(tr("The repository %1 is left out: see the log (Ctrl+L)").arg(id));
    } else if (!skipped.isEmpty()) {
        notice->showTextAboutLog(
            tr("%1 repositories are left out: see the log (Ctrl+L)").arg(skipped.count()));
    }
}

void MainWindow::showErrors(const ErrorWatch& errors)
{
    if (errors.hasErrors()) {
        notice->showTextAboutLog(tr("There are errors in the log (Ctrl+L)"));
    }
}

void MainWindow::readPackages(Kept kept, Configuration configuration)
{
    view->setEmptyText(tr("Reading the packages..."));
    // If the last collection failed, its records are incomplete and have no marks.
    const bool failedBefore = collectFailed;
    const YumIO::Marks all = failedBefore ? marksOfFailed : yumIO->marks();
    const YumIO::Marks marks = kept == AllMarks || failedBefore ? all
                               : kept == LeftOutMarks           ? yumIO->leftOutMarks()
                                                                : YumIO::Marks();
    int marked = 0;
    {
        const PackageTable::Model::Hiding hiding(*model);
        if (configuration == Configuration::ReadAgain) {
            yumIO->reset();
        }
        yumIO->clearEntries();
        const bool stopped = collect();
        const YumIO::Marks wanted = (stopped || collectFailed) && kept == NoMarks ? all : marks;
        yumIO->restoreMarks(wanted);
        marked = wanted.isEmpty() ? 0 : yumIO->marks().count(); // marks() reads all records
        const int lost = wanted.count() - marked;
        if (stopped && !collectFailed && lost > 0) {
            // Before the stop, some repositories may have been read again, and have other packages now.
            warnAndNotice(tr("Stopped. Removed marks that are no longer possible: %1").arg(lost));
        }
        marksOfFailed = collectFailed ? wanted : YumIO::Marks();
        // Without this call, the proxy would read the search texts of each record on the graphical thread and
        // block this thread.
        if (!prepareFilterSearch(proxy->filterRegExp().pattern())) {
            proxy->setFilterRegExp(QString()); // the table has no previous result for the new records
            showNotice(tr("Stopped. The expression does not filter the table."));
        }
        if (!quitting()) {
            prepareTable();
        }
    }
    updateEmptyText();
    if (marked > 0) {
        marksChanged();
    } else {
        showUnlistedActions(false);
        applyButton->setEnabled(false);
    }
    collectedExtraData();
}

void MainWindow::resize()
{
    view->resizeColumnsToContents();
}

void MainWindow::refresh()
{
    beginOperation();
    reportedSkipped.clear();
    readPackages(NoMarks, Configuration::ReadAgain);
    setReady(true);
    focusTable();
}

void MainWindow::clean(bool (YumIO::*operation)(), bool deletesMetadata)
{
    beginOperation();
    (yumIO->*operation)();
    if (yumIO->wasStopped()) {
        showNotice(tr("Stopped."));
    } else if (!closeWanted) {
        if (deletesMetadata) {
            stopButton->setResult(StopButton::Result::Remains);
        }
        reportedSkipped.clear();
        readPackages(NoMarks, Configuration::ReadAgain);
    }
    setReady(true);
    focusTable();
}

void MainWindow::cleanDbcache()
{
    clean(&YumIO::cleanDbcache, false);
}

void MainWindow::cleanPackages()
{
    // The table does not depend on downloaded packages, so no new collection is necessary.
    beginOperation();
    yumIO->cleanPackages();
    if (yumIO->wasStopped()) {
        showNotice(tr("Stopped."));
    }
    setReady(true);
}

void MainWindow::cleanMetadata()
{
    clean(&YumIO::cleanMetadata, true);
}

void MainWindow::cleanAll()
{
    clean(&YumIO::cleanAll, true);
}

void MainWindow::apply()
{
    carryOut([this] { return yumIO->apply(); }, LeftOutMarks);
}

bool MainWindow::carryOut(const std::function<bool()>& operation, Kept kept)
{
    beginOperation();
    const ErrorWatch errors(yumIO->logEntries());
    const bool applied = operation();
    endRefusal();
    const bool done = applied || yumIO->systemChanged();
    const bool hasErrors = errors.hasErrors();
    TransactionOutcome outcome = yumIO->transactionOutcome();
    outcome.stopped = yumIO->wasStopped();
    if (outcome.known) {
        outcomeLine->showOutcome(outcome, errors.firstEntry());
    }
    bool changed = false;
    if (applied && !checkCredentials(changed)) {
        return done;
    }
    // Even a failed transaction may have changed the system.
    if (done) {
        // After a failure, readPackages() drops the marks of the changes that were carried out, because these
        // changes are no longer possible. The user can apply the remaining marks again.
        // If the user has entered credentials, the back end must read the configuration again. Otherwise it
        // would continue to use the old URLs.
        readPackages(applied ? kept : AllMarks, changed ? Configuration::ReadAgain : Configuration::Kept);
    } else if (yumIO->isOutdated()) {
        recollect(AllMarks);
    }
    if (hasErrors && !outcome.hasFailures()) {
        // recollect() may have shown a notice about an unreachable repository. The notice about the
        // transaction replaces this notice, because a failed package script is more important.
        showTransactionErrors(done);
    }
    marksChanged();
    if (outcome.stopped && !outcome.known) {
        // The user has not confirmed a transaction, so the outcome line shows nothing.
        showNotice(tr("Stopped. Nothing was changed."));
    }
    setReady(true);
    focusTable();
    return done;
}

// done: whether the transaction has changed the system.
void MainWindow::showTransactionErrors(bool done)
{
    // If nothing was carried out, a missing right may be the reason. beginOperation() has removed the notice
    // about this right, so show it again.
    const QString refusal = done || quitting() ? QString() : restriction();
    if (!refusal.isEmpty()) {
        showNotice(refusal);
    }
    // A user without root's rights cannot begin a transaction. In this case, the log contains only the error
    // that a dialog has already shown.
    if (geteuid() == 0) {
        notice->showTextAboutLog(tr("The transaction has reported errors: see the log (Ctrl+L)"));
    }
}

void MainWindow::warnUnlistedActions()
{
    const int count = quitting() ? 0 : yumIO->count();
    for (int row = 0; row < count; ++row) {
        if ((*yumIO)[row]->action != Package::None && !proxy->mapFromSource(model->index(row, 0)).isValid()) {
            showUnlistedActions(true);
            return;
        }
    }
    showUnlistedActions(false);
}

void MainWindow::showUnlistedActions(bool any)
{
    if (!any) {
        unlistedLabel->setText(QString());
        unlistedLabel->setToolTip(QString());
        return;
    }
    unlistedLabel->setText(tr("Unlisted Actions"));
    unlistedLabel->setToolTip(tr("Some packages have actions specified, but because of the "
                                 "current\nMode, Filter, Search, State, "
                                 "Duplicates, and Groups settings,\nthese packages are not listed "
                                 "currently.\nPressing Apply will "
                                 "cause these actions to occur nonetheless."));
}

void MainWindow::currentChanged(int row, int)
{
    describeButton->setEnabled(row != -1);
}

void MainWindow::marksChanged()
{
    warnUnlistedActions();
    stateChanged(-1);
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
    marksChanged();
}
