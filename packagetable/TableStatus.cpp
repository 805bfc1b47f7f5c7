// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/TableStatus.h"

#include <QItemSelectionModel>

#include <algorithm>

#include "packagetable/Model.h"
#include "packagetable/SortFilterProxyModel.h"
#include "packagetable/View.h"
#include "widgets/ElidedLabel.h"
#include "widgets/Literal.h"
#include "yumio/ScriptValues.h"
#include "yumio/VersionLocks.h"

namespace PackageTable {

TableStatus::TableStatus(Model* packages, SortFilterProxyModel* listedRows, View* table, QWidget* parent)
    : QStatusBar(parent), model(packages), proxy(listedRows), view(table), label(new ElidedLabel),
      marksChanged(true), marks(), bytes(0), groupsToDownload(false)
{
    setSizeGripEnabled(false);
    setAccessibleName(tr("Rows and marks"));
    setToolTip(
        Literal::toolTip(tr("The download size includes all packages that are marked for Install or Update,\n"
                            "but neither their dependencies nor the packages of groups and of local "
                            "repositories.\n"
                            "Packages in the cache are not downloaded again.")));
    addWidget(label, 1);
    later.setSingleShot(true);
    later.setInterval(0);
    connect(&later, SIGNAL(timeout()), this, SLOT(updateText()));
    connect(model, SIGNAL(modelReset()), this, SLOT(recordsChanged()));
    connect(model, SIGNAL(dataChanged(const QModelIndex&, const QModelIndex&)), this,
            SLOT(cellsChanged(const QModelIndex&, const QModelIndex&)));
    // Also listen to the proxy: when the proxy marks all listed updates, only the proxy reports the changes.
    connect(proxy, SIGNAL(dataChanged(const QModelIndex&, const QModelIndex&)), this,
            SLOT(cellsChanged(const QModelIndex&, const QModelIndex&)));
    connect(proxy, SIGNAL(modelReset()), this, SLOT(updateLater()));
    connect(view->selectionModel(), SIGNAL(selectionChanged(const QItemSelection&, const QItemSelection&)),
            this, SLOT(updateLater()));
    updateText();
}

void TableStatus::recordsChanged()
{
    marksChanged = true;
    updateLater();
}

void TableStatus::cellsChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight)
{
    if (topLeft.column() <= ActionColumn && bottomRight.column() >= ActionColumn) {
        recordsChanged();
    }
}

void TableStatus::updateLater()
{
    if (!later.isActive()) {
        later.start();
    }
}

void TableStatus::updateText()
{
    if (marksChanged) {
        countMarks();
    }
    label->showText(text());
}

void TableStatus::countMarks()
{
    marksChanged = false;
    std::fill(std::begin(marks), std::end(marks), 0);
    bytes = 0;
    groupsToDownload = false;
    lockedRows.clear();
    const VersionLocks& locks = model->versionLocks();
    const bool anyLocks = !locks.lines.isEmpty();
    const int rows = model->rowCount();
    for (int row = 0; row < rows; ++row) {
        const Package::Entry& entry = *model->entry(row);
        ++marks[entry.action];
        if (entry.action == Package::Install || entry.action == Package::Update) {
            if (entry.kind == Package::Group) {
                groupsToDownload = true;
            } else if (!model->isLocal(entry)) {
                bytes += entry.size;
            }
        }
        if (anyLocks && locks.isLocked(entry)) {
            lockedRows.append(row);
        }
    }
}

QString TableStatus::text() const
{
    int selected = 0;
    // The view selects only whole rows, so the height of a range is its number of rows.
    for (const QItemSelectionRange& range : view->selectionModel()->selection()) {
        selected += range.height();
    }
    const int listed = proxy->rowCount();
    if (marks[Package::Install] + marks[Package::Update] + marks[Package::Remove] == 0) {
        return tr("Listed: %1   Selected: %2   No marks").arg(listed).arg(selected) + textOfLocks();
    }
    return tr("Listed: %1   Selected: %2   Marks: %3 Install, %4 Update, %5 Remove   To download: %6")
               .arg(listed)
               .arg(selected)
               .arg(marks[Package::Install])
               .arg(marks[Package::Update])
               .arg(marks[Package::Remove])
               .arg(ScriptValues::bytesFormat(bytes)) +
           (groupsToDownload ? tr(", without groups") : QString()) + textOfLocks();
}

QString TableStatus::textOfLocks() const
{
    if (lockedRows.isEmpty()) {
        return QString();
    }
    const QItemSelectionModel* selection = view->selectionModel();
    const auto selected = std::count_if(lockedRows.cbegin(), lockedRows.cend(), [this, selection](int row) {
        const QModelIndex listed = proxy->mapFromSource(model->index(row, NameColumn));
        return listed.isValid() && selection->isSelected(listed);
    });
    const QString separator = QStringLiteral("   ");
    return separator + (selected == 0 ? tr("Locked: %1").arg(lockedRows.count())
                                      : tr("Locked: %1 (%2 selected)").arg(lockedRows.count()).arg(selected));
}

} // namespace PackageTable
