// SPDX-License-Identifier: GPL-2.0-or-later

// Removes files from the package manager's cache, on a worker thread.

#include "yumio/YumIO.h"

#include <QEventLoop>

#include "python/CPython.h"
#include "services/Progress.h"
#include "yumio/OperationScope.h"
#include "yumio/WorkerThreads.h"

bool YumIO::cleanType(const QString& label, const char* method)
{
    QEventLoop loop;
    CleanThread thread(this, loop, label, method);
    execWorkThread(loop, thread);
    return outcome(thread.result);
}

bool YumIO::cleanReal(const QString& label, const char* method)
{
    OperationScope operationScope(*this);
    const QString heading = tr("Cleaning %1").arg(label);
    log(Log::Action, 0, heading);
    PyGILStateWrapper lock(true);
    progress->startTotal(heading, 1);
    progress->startItem(tr("Preparing"), 1, 1);
    ExceptScope scope(*this, {classes[LockError]});
    const PyRef result(pyMethodCall(yumIO.get(), method, "()"));
    finishLines();
    if (stopRaised(result.get())) {
        return false;
    }
    if (pyExceptMatches(result.get(), classes[LockError])) {
        pythonExceptionV(tr("Unable to obtain yum lock"));
        return false;
    }
    return result ? true : internalError(tr("Internal error: cannot clean %1").arg(label));
}

bool YumIO::cleanDbcache()
{
    return cleanType(tr("dbcache"), "cleanDbcache");
}

bool YumIO::cleanPackages()
{
    return cleanType(tr("Packages"), "cleanPackages");
}

bool YumIO::cleanMetadata()
{
    return cleanType(tr("Metadata"), "cleanMetadata");
}

bool YumIO::cleanAll()
{
    return cleanType(tr("All"), "cleanAll");
}
