// SPDX-License-Identifier: GPL-2.0-or-later

// Creates the menus, boxes and buttons of the main window.

#include "app/MainWindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/AdvisoriesCommand.h"
#include "app/HistoryCommand.h"
#include "app/Notice.h"
#include "app/OutcomeLine.h"
#include "app/StopButton.h"
#include "app/VersionLocksCommand.h"
#include "packagetable/Model.h"
#include "packagetable/SortFilterProxyModel.h"
#include "packagetable/TableStatus.h"
#include "packagetable/View.h"
#include "services/HProgressBar.h"
#include "widgets/Colors.h"
#include "widgets/ExpressionEdit.h"
#include "widgets/HComboBox.h"
#include "widgets/HFrameLabel.h"
#include "widgets/HMenu.h"
#include "widgets/Literal.h"

void MainWindow::createMenuBar()
{
    // Screen readers find texts only in ordinary widgets, not inside the menu bar. Therefore the texts next
    // to the menus are labels of their own.
    auto* row = new QWidget(this);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    menus = new QMenuBar(row);
    notice = new Notice(row);
    outcomeLine = new OutcomeLine(row);
    connect(outcomeLine, SIGNAL(logWanted(int)), this, SLOT(displayLogFrom(int)));
    layout->addWidget(menus, 1);
    layout->addWidget(notice);
    layout->addWidget(outcomeLine);
    setMenuWidget(row);

    const auto addMenu = [this](const QString& title) {
        auto* menu = new HMenu(title, menus);
        menus->addMenu(menu);
        return menu;
    };
    programMenu = addMenu(tr("&Program"));
    quitAction = programMenu->addAction(tr("&Quit"), this, SLOT(quit()), QKeySequence(tr("Ctrl+Q")));

    HMenu* windowsMenu = addMenu(tr("&Windows"));
    windowsMenu->addAction(tr("&Log"), this, SLOT(displayLog()), QKeySequence(tr("Ctrl+L")));
    historyAction =
        windowsMenu->addAction(tr("&History"), historyCommand, SLOT(run()), QKeySequence(tr("Ctrl+H")));

    advisoriesAction =
        windowsMenu->addAction(tr("&Advisories"), advisoriesCommand, SLOT(run()), QKeySequence(tr("Ctrl+D")));

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
    tableLayout->addWidget(new PackageTable::TableStatus(model, proxy, view, tableArea));
    tableLayout->addLayout(createButtonRow());
    connect(view, SIGNAL(currentChanged(int, int)), this, SLOT(currentChanged(int, int)));
    connect(view, SIGNAL(stateChanged(int)), this, SLOT(stateChanged(int)));
    connect(view, SIGNAL(actionRefused(const QString&)), this, SLOT(warnAndNotice(const QString&)));
    connect(view, SIGNAL(versionLocksChosen(const QList<int>&, bool)),
            new VersionLocksCommand(*this, model, proxy, view, this), SLOT(run(const QList<int>&, bool)));

    totalBar = new HProgressBar(central);
    totalBar->setAccessibleName(tr("Whole operation"));
    itemBar = new HProgressBar(central);
    itemBar->setAccessibleName(tr("Current step"));
    centralLayout->addWidget(tableArea, 1);
    centralLayout->addStretch(0);
    stopButton = new StopButton(central);
    connect(stopButton, SIGNAL(clicked()), this, SLOT(stop()));
    auto* barsLayout = new QVBoxLayout;
    barsLayout->addWidget(totalBar);
    barsLayout->addWidget(itemBar);
    auto* progressLayout = new QHBoxLayout;
    progressLayout->addLayout(barsLayout, 1);
    progressLayout->addWidget(stopButton);
    centralLayout->addLayout(progressLayout);
    setCentralWidget(central);

    // The table is hidden until the first collection. The bars stay at the bottom of the window. The table
    // sets the number of rows in its size hint only once. Therefore the layout must not ask for the size hint
    // of an empty table.
    tableArea->hide();
}

QBoxLayout* MainWindow::createFilterRow()
{
    auto* row = new QHBoxLayout;
    modeBox = new HComboBox;
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

    stateBox = new HComboBox;
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

void MainWindow::warnConfigure()
{
    // The label always has its full size, so that the row does not move when the warning appears or
    // disappears.
    unlistedLabel->setText(tr("Unlisted Actions"));
    unlistedLabel->setFixedSize(unlistedLabel->sizeHint());
    unlistedLabel->setText(QString());
}
