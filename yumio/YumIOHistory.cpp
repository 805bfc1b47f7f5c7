// SPDX-License-Identifier: GPL-2.0-or-later

// Reads the history of transactions, and undoes or repeats recorded transactions. The functions whose names
// end in Real run on a worker thread.

#include "yumio/YumIO.h"

#include <unistd.h>

#include <QEventLoop>

#include "python/CPython.h"
#include "services/Progress.h"
#include "yumio/OperationScope.h"
#include "yumio/WorkerThreads.h"

bool YumIO::readHistory(HistoryRecords& found)
{
    QEventLoop loop;
    ReadHistoryThread thread(this, loop, &found);
    execWorkThread(loop, thread);
    return thread.result;
}

bool YumIO::readHistoryReal(HistoryRecords* found)
{
    OperationScope operationScope(*this);
    PyGILStateWrapper lock(true);
    ExceptScope scope(*this);
    {
        // Ask the script here, on the worker: the script imports a part of the package manager, and the
        // graphical thread must not wait for this import.
        const PyRef missing(pyMethodCall(yumIO.get(), "lacksReplay", "()"));
        PyErr_Clear();
        missingForReplay = missing ? pyString(missing.get()) : QString();
    }
    commExceptSetup();
    const PyRef result(pyMethodCall(yumIO.get(), "transactions", "()"));
    if (!result || PyList_Check(result.get()) == 0) {
        if (!stopRaised(result.get()) && !commExceptRaised(result.get(), tr("read the history"))) {
            internalError(tr("Internal error: the history cannot be read"));
        }
        return false;
    }
    const Py_ssize_t count = PyList_GET_SIZE(result.get());
    found->reserve(static_cast<int>(count));
    for (Py_ssize_t i = 0; i < count; ++i) {
        long long number = 0;
        long long begin = 0;
        PyObject* texts[4] = {};
        int end = 0;
        int lines = 0;
        if (PyArg_ParseTuple(PyList_GET_ITEM(result.get(), i), "LLOOOOii", &number, &begin, &texts[0],
                             &texts[1], &texts[2], &texts[3], &end, &lines) == 0) {
            PyErr_Clear();
            return internalError(tr("Internal error: the history cannot be read"));
        }
        HistoryRecord record;
        record.number = number;
        record.begin = begin;
        record.user = pyString(texts[0]);
        record.commandLine = pyString(texts[1]);
        record.changes = pyString(texts[2]);
        record.names = pyString(texts[3]);
        record.result = static_cast<HistoryRecord::Result>(end);
        record.outputLines = lines;
        found->append(record);
    }
    return true;
}

QString YumIO::describeTransaction(qint64 number)
{
    QEventLoop loop;
    DescribeTransactionThread thread(this, loop, number);
    execWorkThread(loop, thread);
    return thread.result;
}

QString YumIO::describeTransactionReal(qint64 number)
{
    OperationScope operationScope(*this);
    PyGILStateWrapper lock(true);
    ExceptScope scope(*this);
    commExceptSetup();
    const PyRef result(
        pyMethodCall(yumIO.get(), "describeTransaction", "(L)", static_cast<long long>(number)));
    if (!result) {
        if (!stopRaised(nullptr)) {
            commExceptRaised(nullptr, tr("read the history"));
        }
        return QString();
    }
    return pyString(result.get());
}

QString YumIO::replayFault() const
{
    return geteuid() != 0 ? tr("Only root can undo or repeat transactions.") : missingForReplay;
}

bool YumIO::replay(Replay kind, qint64 number)
{
    for (Package::Entry* entry : records.all()) {
        entry->txAction = Package::None;
        entry->local = false;
    }
    transaction = TransactionState();
    transaction.isReplay = true;
    QEventLoop loop;
    ReplayThread thread(this, loop, kind, number);
    execWorkThread(loop, thread, true);
    return outcome(thread.result);
}

bool YumIO::replayReal(Replay kind, qint64 number)
{
    OperationScope operationScope(*this);
    if (!startTransaction(replayHeading(kind).arg(number))) {
        return false;
    }
    PyGILStateWrapper lock(true);
    PhaseScope phaseScope(phase);
    startResolving();
    // Use the names of the package manager's commands, which the script expects.
    const char* const command = kind == Replay::UndoThis       ? "undo"
                                : kind == Replay::UndoAllSince ? "rollback"
                                                               : "redo";
    return carryOut([this, command, number] {
        return pyMethodTry(yumIO.get(), "replay", "(s,L)", command, static_cast<long long>(number));
    });
}

QString YumIO::replayHeading(Replay kind)
{
    switch (kind) {
    case Replay::UndoThis:
        return tr("Undoing transaction %1");
    case Replay::UndoAllSince:
        return tr("Undoing all transactions after %1");
    case Replay::Redo:
        break;
    }
    return tr("Repeating transaction %1");
}
