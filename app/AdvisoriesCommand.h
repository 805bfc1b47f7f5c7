// SPDX-License-Identifier: GPL-2.0-or-later

// The command "Advisories": reads the repositories' advisories and shows them in the Advisories window. The
// command marks the updates that the user chooses there.
//
// The object lives on the graphical thread; the main window owns it.

#ifndef APP_ADVISORIESCOMMAND_H
#define APP_ADVISORIESCOMMAND_H

#include <QObject>
#include <QVector>

class AdvisoryDialog;
class CommandHost;
namespace Package {
class Entry;
} // namespace Package
namespace PackageTable {
class Model;
class SortFilterProxyModel;
} // namespace PackageTable

class AdvisoriesCommand : public QObject
{
    Q_OBJECT

public:
    AdvisoriesCommand(CommandHost& window, PackageTable::Model* records,
                      PackageTable::SortFilterProxyModel* rows, QObject* parent);

public Q_SLOTS:
    void run();

private Q_SLOTS:
    void markUpdates(const QVector<Package::Entry*>& entries);

private:
    CommandHost& host;
    PackageTable::Model* model;
    PackageTable::SortFilterProxyModel* proxy;
    AdvisoryDialog* dialog; // null before the first use
};

#endif
