// SPDX-License-Identifier: GPL-2.0-or-later

// Opens the manual in a viewer, and web pages in a browser. Helper programs in the share directory find the
// viewer and the browser.
//
// Only the graphical thread calls these functions.

#ifndef APP_MANUALS_H
#define APP_MANUALS_H

#include <QCoreApplication>
#include <QString>
#include <QStringList>

class QWidget;

class Manuals
{
    Q_DECLARE_TR_FUNCTIONS(Manuals)

public:
    // If a program cannot be started, each of the following functions shows a message over the window. If the
    // manual is not installed, openHtml() and openPdf() start no program, but return a message for the user.
    static QString openHtml(QWidget* window);
    static QString openPdf(QWidget* window);
    static void openPage(QWidget* window, const QString& address);

    // The directory of the manual. Tests set another directory.
    static inline QString directory = QStringLiteral("/usr/share/doc/vyre");

private:
    // The last element of the command is the path of the file to open.
    static QString openFile(QWidget* window, const QStringList& command);
};

#endif
