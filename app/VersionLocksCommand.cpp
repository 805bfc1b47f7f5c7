// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/VersionLocksCommand.h"

#include <QSet>
#include <QVector>

#include "app/CommandHost.h"
#include "app/ErrorWatch.h"
#include "packagetable/Model.h"
#include "packagetable/SortFilterProxyModel.h"
#include "packagetable/View.h"
#include "yumio/YumIO.h"

VersionLocksCommand::VersionLocksCommand(CommandHost& window, PackageTable::Model* records,
                                         PackageTable::SortFilterProxyModel* rows, PackageTable::View* table,
                                         QObject* parent)
    : QObject(parent), host(window), model(records), proxy(rows), view(table)
{
}

void VersionLocksCommand::run(const QList<int>& rows, bool locked)
{
    YumIO* const yumIO = host.backEnd();
    QVector<Package::Entry*> entries;
    for (const int row : rows) {
        if (yumIO != nullptr && row < yumIO->count()) {
            entries.append((*yumIO)[row]);
        }
    }
    if (entries.isEmpty()) {
        return;
    }
    const Package::EntryKey first(*entries.first());
    const YumIO::Marks before = yumIO->marks();
    QSet<QString> names;
    for (const Package::Entry* entry : qAsConst(entries)) {
        names.insert(entry->name);
    }
    host.beginOperation();
    const ErrorWatch errors(yumIO->logEntries());
    yumIO->changeVersionLocks(entries, locked);
    // Even if the call has failed, it may have changed some locks.
    host.recollect(CommandHost::AllMarks);
    // The user may have quit while the packages were read.
    const YumIO* const remaining = host.backEnd();
    if (remaining != nullptr && host.hasPackages()) {
        const YumIO::Marks after = remaining->marks();
        int removed = 0;
        int others = 0;
        for (auto i = before.constBegin(); i != before.constEnd(); ++i) {
            if (!after.contains(i.key())) {
                ++(names.contains(i.key().name) ? removed : others);
            }
        }
        if (others > 0) {
            // For example, the user has agreed to go on without a repository.
            host.warnAndNotice(tr("Removed marks that are no longer possible: %1").arg(others));
        }
        if (removed > 0) {
            host.warnAndNotice(tr("Removed marks that a version lock does not permit: %1").arg(removed));
        }
    }
    host.showErrors(errors);
    host.setReady(true);
    makeCurrent(first);
}

void VersionLocksCommand::makeCurrent(const Package::EntryKey& key)
{
    const YumIO* const yumIO = host.backEnd();
    const int count = yumIO == nullptr ? 0 : yumIO->count();
    for (int row = 0; row < count; ++row) {
        if (Package::EntryKey(*(*yumIO)[row]) == key) {
            view->setCurrentIndex(proxy->mapFromSource(model->index(row, PackageTable::ActionColumn)));
            return;
        }
    }
}
