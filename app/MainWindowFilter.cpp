// SPDX-License-Identifier: GPL-2.0-or-later

// The filter and the search of the main window.

#include "app/MainWindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>

#include <functional>

#include "packagetable/SortFilterProxyModel.h"
#include "packagetable/View.h"
#include "widgets/ExpressionEdit.h"
#include "widgets/Literal.h"
#include "yumio/YumIO.h"

namespace {

constexpr int searchMode = PackageTable::Search;

} // namespace

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
    // Before the window is shown, no data can be loaded. initialize() calls this function later.
    if (!scheduled || modeBox->currentIndex() != searchMode) {
        return;
    }
    const QString regexp = regexpEdit->text();
    const bool wanted = !regexp.isEmpty() && regexp != QLatin1String(".*");
    // An earlier expression may still filter the table, although the edit contains another expression.
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
    applyExpression();
    if (search) {
        setReady(true);
    }
    anyFilterChanged();
}

void MainWindow::applyExpression()
{
    proxy->setFilterRegExp(regexpEdit->text());
    regexpEdit->showValid(proxy->isValidExpression());
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

void MainWindow::updateEmptyText()
{
    if (collectFailed) {
        view->setEmptyText(tr("The packages could not be read.\nThe Log window (Ctrl+L) shows the reason."));
    } else if (!proxy->isValidExpression()) {
        view->setEmptyText(tr("This is not a valid regular expression:\n%1").arg(proxy->expressionFault()));
    } else if (stateBox->currentIndex() == PackageTable::ViewUpdatable && proxy->filterRegExp().isEmpty()) {
        view->setEmptyText(tr("No package has an update."));
    } else if (modeBox->currentIndex() == searchMode &&
               proxy->filterRegExp().pattern().endsWith(QLatin1Char('$'))) {
        // The list of files is one field, so "$" is not the end of each path.
        view->setEmptyText(tr("No package matches.\nIn a search, \"$\" is the end of a whole field, such as "
                              "the list of files.\nFor the end of one line, write \"([[:space:]]|$)\"."));
    } else {
        view->setEmptyText(tr("No package matches."));
    }
}
