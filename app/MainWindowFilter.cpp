// SPDX-License-Identifier: GPL-2.0-or-later

// The filter and the search of the main window.

#include "app/MainWindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QSignalBlocker>

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
    showMode(mode);
    changeListing(proxy->filterRegExp().pattern(), initialized,
                  [this, mode] { proxy->setMode(static_cast<PackageTable::Mode>(mode)); });
}

void MainWindow::showMode(int mode)
{
    const bool search = mode == searchMode;
    filterButton->setText(search ? tr("Search") : tr("Filter"));
    regexpEdit->setToolTip(
        search ? tr("Regular expression to compare to all fields of a package")
               : tr("Regular expression filter matching textual fields visible in the table"));
    filterButton->setToolTip(search
                                 ? tr("Perform the search for the regular expression specified to the left")
                                 : tr("Apply the filter specified to the left"));
}

void MainWindow::showAppliedSettings()
{
    const PackageTable::SortFilterProxyModel::Settings applied = proxy->settings();
    const QSignalBlocker modeBlocker(modeBox);
    const QSignalBlocker stateBlocker(stateBox);
    const QSignalBlocker dupsBlocker(dupsBox);
    const QSignalBlocker groupsBlocker(groupsBox);
    modeBox->setCurrentIndex(applied.mode);
    showMode(applied.mode);
    stateBox->setCurrentIndex(applied.state);
    dupsBox->setChecked(applied.dups);
    groupsBox->setChecked(applied.groups);
}

bool MainWindow::prepareFilterSearch(const QString& expression)
{
    // Before the window is shown, no data can be loaded. Afterwards, initialize() calls this function again.
    if (!scheduled) {
        return true;
    }
    const PackageTable::SortFilterProxyModel::Settings settings{
        static_cast<PackageTable::Mode>(modeBox->currentIndex()),
        static_cast<PackageTable::StateFilter>(stateBox->currentIndex()), dupsBox->isChecked(),
        groupsBox->isChecked(), expression};
    if (settings.mode != PackageTable::Search) {
        return proxy->prepare(settings);
    }
    const QString regexp = regexpEdit->text();
    const bool wanted = !regexp.isEmpty() && regexp != QLatin1String(".*");
    // The expression that filters the table may differ from the expression in the edit.
    if (!wanted && proxy->filterRegExp().isEmpty()) {
        return true;
    }
    if (wanted && (!yumIO->haveFileLists() || !yumIO->haveOtherData())) {
        proxy->setFilter(false);
        const bool stopped = (!yumIO->collectFileLists() && yumIO->wasStopped()) ||
                             (!yumIO->collectOtherData() && yumIO->wasStopped());
        proxy->setFilter(true);
        if (stopped) {
            return false;
        }
    }
    return yumIO->collectSearchTexts(proxy->searched(settings.state, settings.dups, settings.groups)) &&
           proxy->prepare(settings);
}

void MainWindow::filtersearch()
{
    changeListing(regexpEdit->text(), true, [this] { applyExpression(); });
}

void MainWindow::changeListing(const QString& expression, bool ready, const std::function<void()>& change)
{
    const PackageTable::SortFilterProxyModel::Settings settings{
        static_cast<PackageTable::Mode>(modeBox->currentIndex()),
        static_cast<PackageTable::StateFilter>(stateBox->currentIndex()), dupsBox->isChecked(),
        groupsBox->isChecked(), expression};
    const bool quick = !scheduled || proxy->prepareQuickly(settings);
    if (!quick) {
        setReady(false);
    }
    if (quick || prepareFilterSearch(expression)) {
        change();
    } else {
        showAppliedSettings();
        if (!closeWanted) {
            showNotice(initialized ? tr("Stopped. The table shows the same rows as before.")
                                   : tr("Stopped. The expression does not filter the table."));
        }
    }
    if (!quick) {
        setReady(ready);
    }
    anyFilterChanged();
}

void MainWindow::applyExpression()
{
    proxy->setFilterRegExp(regexpEdit->text());
    regexpEdit->showValid(proxy->isValidExpression());
}

void MainWindow::stateFilterChanged(int index)
{
    changeListing(proxy->filterRegExp().pattern(), initialized,
                  [this, index] { proxy->setStateFilter(static_cast<PackageTable::StateFilter>(index)); });
}

void MainWindow::dupsFilterChanged(int state)
{
    changeListing(proxy->filterRegExp().pattern(), initialized,
                  [this, state] { proxy->setDupsFilter(state != Qt::Unchecked); });
}

void MainWindow::groupsFilterChanged(int state)
{
    changeListing(proxy->filterRegExp().pattern(), initialized,
                  [this, state] { proxy->setGroupsFilter(state != Qt::Unchecked); });
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

QString MainWindow::limitOfView() const
{
    const QString name = stateBox->currentText();
    switch (stateBox->currentIndex()) {
    case PackageTable::ViewUpdatable:
        return tr("\"%1\" lists only packages that have an update.").arg(name);
    case PackageTable::ViewInstallable:
        return tr("\"%1\" lists only packages that are not installed.").arg(name);
    case PackageTable::ViewRemovable:
        return tr("\"%1\" lists only installed packages.").arg(name);
    default:
        return QString();
    }
}

void MainWindow::updateEmptyText()
{
    if (collectFailed) {
        view->setEmptyText(tr("The packages could not be read.\nThe Log window (Ctrl+L) shows the reason."));
    } else if (!proxy->isValidExpression()) {
        view->setEmptyText(tr("This is not a valid regular expression:\n%1").arg(proxy->expressionFault()));
    } else if (stateBox->currentIndex() == PackageTable::ViewUpdatable && proxy->filterRegExp().isEmpty()) {
        view->setEmptyText(tr("No package has an update."));
    } else {
        QStringList lines;
        lines.append(tr("No package matches."));
        if (proxy->rowCount() == 0 && proxy->matchesIgnoringCase()) {
            lines.append(tr("With other upper and lower case letters, packages match. For both forms of a "
                            "letter, write \"[Aa]\"."));
        }
        // The list of files is one field, so "$" matches only the end of the whole list, not the end of each
        // path.
        if (modeBox->currentIndex() == searchMode &&
            proxy->filterRegExp().pattern().endsWith(QLatin1Char('$'))) {
            lines.append(tr("In a search, \"$\" is the end of a whole field, such as the list of files. "
                            "For the end of one line, write \"([[:space:]]|$)\"."));
        }
        // In the smallest window, the table has only three lines. Therefore both sentences are in one line.
        const QString limit = limitOfView();
        if (!limit.isEmpty()) {
            const QString another = tr("Another view may list packages that match.");
            lines.append(proxy->filterRegExp().isEmpty() ? limit : limit + QLatin1Char(' ') + another);
        }
        view->setEmptyText(lines.join(QLatin1Char('\n')));
    }
}
