// SPDX-License-Identifier: GPL-2.0-or-later

// One recorded transaction, with the values that the history window lists.
//
// A HistoryRecord is a plain value. A worker creates it, and the graphical thread uses it afterwards.

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
    QString changes; // a summary in the package manager's words
    QString names;   // the names of all packages, separated by spaces
    Result result = Succeeded;
    int outputLines = 0; // the number of recorded lines of scriptlet output
};

using HistoryRecords = QVector<HistoryRecord>;

// The operations on a recorded transaction.
enum class Replay {
    UndoThis,
    UndoAllSince, // undo all transactions after this one
    Redo
};

#endif
