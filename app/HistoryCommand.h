// SPDX-License-Identifier: GPL-2.0-or-later

// The command "History": shows the History window, and carries out the user's request to undo or repeat a
// transaction.
//
// The object lives on the graphical thread; the main window owns it.

#ifndef APP_HISTORYCOMMAND_H
#define APP_HISTORYCOMMAND_H

#include <QObject>

class CommandHost;
class HistoryDialog;

class HistoryCommand : public QObject
{
    Q_OBJECT

public:
    HistoryCommand(CommandHost& window, QObject* parent);

public Q_SLOTS:
    void run();

private:
    CommandHost& host;
    HistoryDialog* dialog; // null before the first use
};

#endif
