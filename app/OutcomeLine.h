// SPDX-License-Identifier: GPL-2.0-or-later

// The outcome of the last transaction, in one line next to the menus, with a button that opens the log at the
// beginning of this transaction. The line is hidden until the first transaction ends. The next operation
// hides the line again.
//
// The object lives on the graphical thread; its Qt parent owns it.

#ifndef APP_OUTCOMELINE_H
#define APP_OUTCOMELINE_H

#include <QWidget>

class ElidedLabel;
class TransactionOutcome;

class OutcomeLine : public QWidget
{
    Q_OBJECT

public:
    explicit OutcomeLine(QWidget* parent);

    // logEntry: the index of the transaction's first entry in the log.
    void showOutcome(const TransactionOutcome& outcome, int logEntry);
    void clear();

Q_SIGNALS:
    void logWanted(int entry);

private Q_SLOTS:
    void requestLog();

private:
    ElidedLabel* label;
    int firstEntry;
};

#endif
