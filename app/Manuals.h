// The manual and web pages, which other programs show: the share directory has those that find a fitting one.
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
    // What cannot be started is reported over the window. Returns a text for the user if the manual is not
    // installed; a desktop shows nobody what the other program says then.
    static QString openHtml(QWidget* window);
    static QString openPdf(QWidget* window);
    static void openPage(QWidget* window, const QString& address);

private:
    static QString faultOf(const QString& file);
};

#endif
