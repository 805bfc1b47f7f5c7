// SPDX-License-Identifier: GPL-2.0-or-later

// The commands of the table that lock packages at their version and unlock them. After a change to the locks,
// this class reads the packages again, because the locks decide which updates exist.
//
// The object lives on the graphical thread; the main window owns it.

#ifndef APP_VERSIONLOCKSCOMMAND_H
#define APP_VERSIONLOCKSCOMMAND_H

#include <QList>
#include <QObject>

class CommandHost;
namespace Package {
class EntryKey;
} // namespace Package
namespace PackageTable {
class Model;
class SortFilterProxyModel;
class View;
} // namespace PackageTable

class VersionLocksCommand : public QObject
{
    Q_OBJECT

public:
    VersionLocksCommand(CommandHost& window, PackageTable::Model* records,
                        PackageTable::SortFilterProxyModel* rows, PackageTable::View* table, QObject* parent);

public Q_SLOTS:
    // Locks or unlocks the versions of these source rows, and collects the packages again.
    void run(const QList<int>& rows, bool locked);

private:
    // Makes the row of this record the current row, if the table lists the record.
    void makeCurrent(const Package::EntryKey& key);

    CommandHost& host;
    PackageTable::Model* model;
    PackageTable::SortFilterProxyModel* proxy;
    PackageTable::View* view;
};

#endif
