// SPDX-License-Identifier: GPL-2.0-or-later

// The notices, the log, the manuals and the About box of the main window.

#include "app/MainWindow.h"

#include <QLabel>
#include <QMessageBox>

#include "app/Manuals.h"
#include "app/Notice.h"
#include "app/WindowSizeKeeper.h"
#include "services/LogWindow.h"
#include "yumio/YumIO.h"

void MainWindow::displayLog()
{
    if (logWindow == nullptr) {
        logWindow = new Log::Window(yumIO->logEntries(), this);
        new WindowSizeKeeper(QStringLiteral("LogWindow"), logWindow);
    }
    notice->logOpened();
    logWindow->show();
    logWindow->raise();
    logWindow->activateWindow();
}

void MainWindow::displayLogFrom(int entry)
{
    if (!quitting()) {
        displayLog();
        logWindow->showFrom(entry);
    }
}

void MainWindow::openPage(const QString& address)
{
    Manuals::openPage(this, address);
}

void MainWindow::manualHtml()
{
    showFault(Manuals::openHtml(this));
}

void MainWindow::manualPdf()
{
    showFault(Manuals::openPdf(this));
}

void MainWindow::showFault(const QString& text)
{
    if (!text.isEmpty()) {
        warnAndNotice(text);
    }
}

void MainWindow::warnAndNotice(const QString& text)
{
    if (!quitting()) {
        yumIO->log(Log::Warning, 0, text);
        showNotice(text);
    }
}

void MainWindow::showNotice(const QString& text)
{
    notice->showText(text);
}

void MainWindow::about()
{
    if (aboutBox == nullptr) {
        // QMessageBox::about() is unsuitable, because it runs an event loop. If an operation ended during
        // this loop, the operation would have to wait for the end of the loop.
        aboutBox = new QMessageBox(
            QMessageBox::NoIcon, tr("About"),
            tr("<h3>VYRE %1</h3><hr><p>VYRE, Vyrecraft, is a graphical user interface which allows a user to "
               "make "
               "modifications to the installed rpm packages on a "
               "system.</p><p>Capabilities:<p><ul><li>Install "
               "new "
               "packages or update existing packages by downloading them from a yum package "
               "repository</li><li>Remove "
               "existing packages.</li><li>Configure sets of repositories from which to obtain new and "
               "updated "
               "packages.</li><li>Examine installed packages or packages available for installation or "
               "update</li><li>Install, update, or remove groups of packages</li><li>Install or update "
               "suites of "
               "packages</li></ul><p>For more information, see <a "
               "href=\"https://vyre.example/\">https://vyre.example/</a>.</p>")
                .arg(QStringLiteral(VYRE_VERSION)),
            QMessageBox::Ok, this);
        aboutBox->setIconPixmap(windowIcon().pixmap(64));
        aboutBox->setModal(false);
        // Let openPage() open the web page: Qt itself would start the browser with the rights of root.
        for (QLabel* label : aboutBox->findChildren<QLabel*>()) {
            label->setOpenExternalLinks(false);
            connect(label, SIGNAL(linkActivated(const QString&)), this, SLOT(openPage(const QString&)));
        }
    }
    aboutBox->show();
    aboutBox->raise();
    aboutBox->activateWindow();
}
