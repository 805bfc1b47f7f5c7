// SPDX-License-Identifier: GPL-2.0-or-later

// Opens the manual and web pages in other programs. Helper programs of the share directory find these.
//
// Graphical thread; only functions.

#ifndef APP_MANUALS_H
#define APP_MANUALS_H

#include <QCoreApplication>
#include <QString>

class QWidget;

class Manuals
{
    Q_DECLARE_TR_FUNCTIONS(Manuals)

public:
    // If a program cannot be started, a message over the window reports it. If the manual is not installed,
    // these functions return a text for the user, because the other program's own message is not visible on a
    // desktop.
    static QString openHtml(QWidget* window);
    static QString openPdf(QWidget* window);
    static void openPage(QWidget* window, const QString& address);

private:
    static QString faultOf(const QString& file);
};

#endif
