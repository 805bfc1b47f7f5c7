// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/AdvisoriesCommand.h"

#include "advisories/AdvisoryDialog.h"
#include "app/CommandHost.h"
#include "app/ErrorWatch.h"
#include "app/WindowSizeKeeper.h"
#include "packagetable/Model.h"
#include "packagetable/SortFilterProxyModel.h"
#include "yumio/YumIO.h"

AdvisoriesCommand::AdvisoriesCommand(CommandHost& window, PackageTable::Model* records,
                                     PackageTable::SortFilterProxyModel* rows, QObject* parent)
    : QObject(parent), host(window), model(records), proxy(rows), dialog(nullptr)
{
}

void AdvisoriesCommand::run()
{
    YumIO* const yumIO = host.backEnd();
    if (yumIO == nullptr) {
        return;
    }
    if (!host.hasPackages()) {
        // Without collected packages, VYRE would find no advisory about an installed package.
        host.warnAndNotice(tr("VYRE cannot show advisories, because it could not read the packages."));
        return;
    }
    host.setReady(false);
    const ErrorWatch errors(yumIO->logEntries());
    const bool shown = yumIO->collectAdvisories() && !host.isClosing();
    host.showErrors(errors);
    host.setReady(true);
    if (!shown) {
        return;
    }
    if (dialog == nullptr) {
        dialog = new AdvisoryDialog(yumIO, host.dialogParent());
        new WindowSizeKeeper(QStringLiteral("Advisories"), dialog);
        connect(dialog, SIGNAL(updatesWanted(const QVector<Package::Entry*>&)), this,
                SLOT(markUpdates(const QVector<Package::Entry*>&)));
    }
    dialog->load();
    dialog->exec();
}

void AdvisoriesCommand::markUpdates(const QVector<Package::Entry*>& entries)
{
    {
        const PackageTable::SortFilterProxyModel::SortPause pause(*proxy);
        model->setUpdates(entries);
    }
    host.marksChanged();
}
