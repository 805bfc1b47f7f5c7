// SPDX-License-Identifier: GPL-2.0-or-later

// One transaction of the package manager's history, as a list shows it.
//
// A value. A worker makes it; afterwards the graphical thread uses it.

#ifndef YUMIO_HISTORYRECORD_H
#define YUMIO_HISTORYRECORD_H

#include <QString>
#include <QVector>

struct HistoryRecord
{
    enum Result { Succeeded = 0, Failed = 1, Interrupted = 2 };

    qint64 number = 0;
    qint64 begin = 0; // in seconds since 1970
    QString user;
    QString commandLine;
    QString changes; // in short, in the package manager's words
    QString names;   // of all changed packages, separated by spaces
    Result result = Succeeded;
    int outputLines = 0; // of kept output of scriptlets
};

using HistoryRecords = QVector<HistoryRecord>;

// What to do with a transaction of the history.
enum class Replay {
    UndoThis,
    UndoAllSince, // undo all newer transactions
    Redo
};

#endif
