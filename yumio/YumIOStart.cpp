// SPDX-License-Identifier: GPL-2.0-or-later

// Starts the interpreter and the script. A worker imports the package manager, because the import
// takes a tenth of a second or more, and the window must serve events in the meantime.

#include "yumio/YumIO.h"

#include <QEventLoop>
#include <QFile>
#include <QFileInfo>

#include <clocale>
#include <cstdio>

#include "app/base/ManagedRoot.h"
#include "app/base/Program.h"
#include "app/base/Share.h"
#include "python/CPython.h"
#include "python/GarbageCollectorPause.h"
#include "python/YumIOC.h"
#include "yumio/DateTime.h"
#include "yumio/OperationScope.h"
#include "yumio/WorkerThreads.h"

namespace {

class File
{
public:
    explicit File(const QString& path) : file(std::fopen(QFile::encodeName(path).constData(), "re")) {}
    ~File()
    {
        if (file != nullptr) {
            std::fclose(file);
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    FILE* get() const { return file; }

private:
    FILE* file;
};

} // namespace

bool YumIO::initialize()
{
    const QString root = ManagedRoot::path();
    if (!root.isEmpty() && !QFileInfo(root).isDir()) {
        // Stop here, because the package manager would create a missing root as an empty directory.
        error(tr("The root directory %1 does not exist").arg(root));
        return false;
    }
    if (!yumIO) {
        YumIOC::initialize(this);
    }
    if (!Python::initialize()) {
        return false;
    }
    if (yumIO) {
        return true;
    }
    {
        PyGILStateWrapper lock(true);
        // Import "threading" on this thread: Python regards the thread that first imports this module as the
        // main thread.
        const PyRef threading(PyImport_ImportModule("threading"));
        PyErr_Clear();
    }
    QEventLoop loop;
    InitializeThread thread(this, loop);
    // The user must not close the window between this operation and the collection. Only the collection can
    // be stopped, so the user's requests wait until the collection runs.
    execWorkThread(loop, thread, false, QEventLoop::ExcludeUserInputEvents);
    return thread.result;
}

bool YumIO::initializeReal()
{
    OperationScope operationScope(*this);
    PyGILStateWrapper lock(true);
    const GarbageCollectorPause pause; // the interpreter keeps nearly all objects that an import makes
    if (!DateTime::import()) {
        return internalError(tr("Internal error: cannot import python datetime"));
    }

    const PyRef arguments(Py_BuildValue("[ss]", program, "info"));
    pyAssign("sys", "argv", arguments.get());
    const PyRef rpmModule(PyImport_ImportModule("rpm"));
    if (!rpmModule) {
        return internalError(tr("Internal error: cannot find python rpm module"));
    }
    rpmDict = PyModule_GetDict(rpmModule.get());
    if (rpmDict == nullptr) {
        return internalError(tr("Internal error: cannot find python rpm dict"));
    }

    {
        const QString path = Share::absolute(QStringLiteral("python/YumIO.py"));
        const File script(path);
        if (script.get() == nullptr) {
            return internalError(tr("Internal error: unable to open YumIO.py"));
        }
        // Set __file__, because the script derives the directory of its modules from it.
        const PyRef file(PyUnicode_DecodeFSDefault(QFile::encodeName(path).constData()));
        pyAssignGlobal("__file__", file.get());
        offerTranslations();
        offerFunctions();
        const PyRef result(PyRun_File(script.get(), "YumIO.py", Py_file_input, main_dict, main_dict));
        if (!result) {
            return internalError(tr("Internal error: unable to execute YumIO.py"));
        }
    }
    // The import of the package manager activates the user's locale for the process. Restore the "C" locale
    // for numbers: the libraries would otherwise expect a decimal comma in configuration files, which always
    // have a decimal point.
    std::setlocale(LC_NUMERIC, "C");
    yumIOClass = pyValue("__main__", "YumIO");
    if (yumIOClass == nullptr) {
        return internalError(tr("Internal error: cannot find python YumIO"));
    }
    {
        ExceptScope scope(*this, {PyExc_SystemExit});
        yumIO = PyRef(pyCall("YumIO", "()"));
        if (pyExceptMatches(yumIO.get(), PyExc_SystemExit)) {
            pythonException(tr("Unable to initialize"));
            return false;
        }
        if (!yumIO) {
            return internalError(tr("Internal error: cannot create python yumIO"));
        }
    }
    base = PyRef(PyObject_GetAttrString(yumIO.get(), "base"));
    if (!base) {
        internalError(tr("Internal error: yumIO.base not evaluable"));
        yumIO = PyRef(); // without `base`, the object is useless; the next start creates a new one
        return false;
    }
    static const struct
    {
        Class slot;
        const char* name;
    } lookups[] = {
        {BdbQuit, "bdb.BdbQuit"},
        {DnfError, "dnf.exceptions.Error"},
        {MiscError, "dnf.exceptions.MiscError"},
        {RepoError, "dnf.exceptions.RepoError"},
        {LockError, "dnf.exceptions.LockError"},
        {DeltaPayload, "dnf.drpm.DeltaPayload"},
        {MDPayload, "dnf.repo.MDPayload"},
        {RPMPayload, "dnf.repo.RPMPayload"},
    };
    for (const auto& lookup : lookups) {
        classes[lookup.slot] = pyLookup(lookup.name, false);
    }
    return true;
}

void YumIO::reset()
{
    QEventLoop loop;
    ResetThread thread(this, loop);
    // Only the following collection can be stopped, so the user's requests wait until the collection runs.
    execWorkThread(loop, thread, false, QEventLoop::ExcludeUserInputEvents);
}

void YumIO::resetReal()
{
    OperationScope operationScope(*this);
    PyGILStateWrapper lock(true);
    const PyRef result(pyMethodCall(yumIO.get(), "reset", "()"));
}
