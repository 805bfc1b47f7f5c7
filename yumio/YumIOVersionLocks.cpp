// SPDX-License-Identifier: GPL-2.0-or-later

// Reads and changes the version locks of the package manager.

#include "yumio/YumIO.h"

#include "python/CPython.h"
#include "services/Progress.h"
#include "services/YumIOCapturers.h"
#include "yumio/OperationScope.h"
#include "yumio/WorkerThreads.h"

bool YumIO::changeVersionLocks(const QVector<Package::Entry*>& entries, bool lockThem)
{
    QEventLoop loop;
    ChangeVersionLocksThread thread(this, loop, entries, lockThem);
    execWorkThread(loop, thread);
    return thread.result;
}

bool YumIO::changeVersionLocksReal(const QVector<Package::Entry*>& entries, bool lockThem)
{
    OperationScope operationScope(*this);
    const QString heading = lockThem ? tr("Locking Versions") : tr("Unlocking Versions");
    log(Log::Action, 0, heading);
    PyGILStateWrapper lock(true);
    progress->startTotal(heading, 1);
    progress->startItem(tr("Preparing"), 1, 1);
    const PyRef packages(PyList_New(0));
    for (const Package::Entry* entry : entries) {
        PyList_Append(packages.get(), entry->pyObject);
    }
    ExceptScope scope(*this);
    commExceptSetup();
    PyRef result;
    {
        YumIOCapturersUser capturersUser(capturers, this);
        result = PyRef(
            pyMethodCall(yumIO.get(), lockThem ? "lockVersions" : "unlockVersions", "(O)", packages.get()));
    }
    if (!result && !commExceptRaised(nullptr, lockThem ? tr("lock versions") : tr("unlock versions"))) {
        internalError(tr("Internal error: the version locks cannot be changed"));
    }
    progress->reset();
    return static_cast<bool>(result);
}

void YumIO::collectVersionLocks()
{
    versionLockState = VersionLocks();
    if (PyObject_HasAttrString(yumIO.get(), "versionLocks") == 0) {
        return;
    }
    const PyRef found(pyMethodCall(yumIO.get(), "versionLocks", "()"));
    PyObject* fault = nullptr;
    PyObject* lines = nullptr;
    if (found && found.get() != Py_None &&
        PyArg_ParseTuple(found.get(), "UO!", &fault, &PyDict_Type, &lines) != 0) {
        versionLockState.offered = true;
        versionLockState.fault = pyString(fault);
        PyObject* name = nullptr;
        PyObject* text = nullptr;
        Py_ssize_t position = 0;
        while (PyDict_Next(lines, &position, &name, &text)) {
            versionLockState.lines.insert(pyString(name), pyString(text));
        }
    }
    PyErr_Clear();
}
