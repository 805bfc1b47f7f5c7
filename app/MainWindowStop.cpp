// SPDX-License-Identifier: GPL-2.0-or-later

// Stopping an operation, and closing the main window.

#include "app/MainWindow.h"

#include <QApplication>
#include <QCloseEvent>

#include "app/Notice.h"
#include "app/StopButton.h"
#include "packagetable/Model.h"
#include "services/LogWindow.h"
#include "yumio/YumIO.h"

void MainWindow::quit()
{
    if (quitting()) {
        return;
    }
    // The running operation must end first: it may be a transaction, which must not be interrupted.
    if (yumIO->isWorking()) {
        closeLater();
        return;
    }
    saveLayout();
    // `yumIO` becomes null, because from now on, no other function may use the back end.
    YumIO* const ending = yumIO;
    yumIO = nullptr;
    ending->clearEntriesBeforeQuit();
    model->reset();
    if (logWindow != nullptr && logWindow->isVisible()) {
        logWindow->hide();
    }
    closing = ending;
    close();
    closing = nullptr;
    delete ending;
}

void MainWindow::stop()
{
    if (!quitting()) {
        yumIO->stop();
    }
}

void MainWindow::showStopState()
{
    if (!quitting()) {
        stopButton->showState(yumIO->stopState());
    }
}

// Called while the back end works. If the work can be stopped, the window closes when the work has stopped.
// Otherwise, the window stays open, and a notice gives the reason.
void MainWindow::closeLater()
{
    if (yumIO->stop()) {
        closeWanted = true;
    } else {
        QApplication::beep();
        const QString refusal = yumIO->isChangingSystem()
                                    ? tr("VYRE cannot close while it changes packages")
                                    : tr("VYRE cannot close before the current work is complete");
        if (refusal != loggedRefusal) {
            notice->withdraw(loggedRefusal);
            loggedRefusal = refusal;
            yumIO->log(Log::Warning, 0, refusal);
        }
        showNotice(refusal);
    }
}

// Removes the notice that explains why the window stays open. Called when an operation begins or ends.
void MainWindow::endRefusal()
{
    notice->withdraw(loggedRefusal);
    loggedRefusal.clear();
}

bool MainWindow::isChangingSystem() const
{
    return !quitting() && yumIO->isChangingSystem();
}

void MainWindow::finish(bool displayIsThere)
{
    if (quitting()) {
        if (closing != nullptr) {
            closing->finish(displayIsThere);
        }
        return;
    }
    if (displayIsThere) {
        saveLayout();
    }
    yumIO->finish(displayIsThere);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    closeWanted = false;
    if (!quitting() && yumIO->isWorking()) {
        closeLater();
        event->ignore();
        return;
    }
    event->accept();
    quit();
}
