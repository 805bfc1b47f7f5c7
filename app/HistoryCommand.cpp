// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/HistoryCommand.h"

#include "app/CommandHost.h"
#include "app/WindowSizeKeeper.h"
#include "history/HistoryDialog.h"
#include "yumio/YumIO.h"

HistoryCommand::HistoryCommand(CommandHost& window, QObject* parent)
    : QObject(parent), host(window), dialog(nullptr)
{
}

void HistoryCommand::run()
{
    YumIO* const yumIO = host.backEnd();
    if (yumIO == nullptr) {
        return;
    }
    if (dialog == nullptr) {
        dialog = new HistoryDialog(yumIO, host.dialogParent());
        new WindowSizeKeeper(QStringLiteral("History"), dialog);
    }
    // If the user cancels the operation, or if the operation fails, the history window opens again.
    while (!host.isClosing()) {
        dialog->setRefusal(
            host.hasPackages()
                ? QString()
                : tr("VYRE cannot undo transactions, because it could not read the packages."));
        if (dialog->exec() != QDialog::Accepted || host.backEnd() == nullptr) {
            return;
        }
        const Replay kind = dialog->wantedReplay();
        const qint64 number = dialog->wantedNumber();
        if (host.carryOut([yumIO, kind, number] { return yumIO->replay(kind, number); },
                          CommandHost::AllMarks)) {
            return;
        }
    }
}
