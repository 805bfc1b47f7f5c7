// SPDX-License-Identifier: GPL-2.0-or-later

// Reads the advisories of the repositories.

#include "yumio/YumIO.h"

#include "python/CPython.h"
#include "services/Progress.h"
#include "services/YumIOCapturers.h"
#include "yumio/OperationScope.h"
#include "yumio/WorkerThreads.h"

bool YumIO::collectAdvisories()
{
    if (advisoriesLoaded) {
        return true;
    }
    QEventLoop loop;
    CollectAdvisoriesThread thread(this, loop);
    execWorkThread(loop, thread);
    return thread.result;
}

bool YumIO::collectAdvisoriesReal()
{
    OperationScope operationScope(*this);
    const QString heading = tr("Reading Advisories");
    log(Log::Action, 0, heading);
    PyGILStateWrapper lock(true);
    progress->startTotal(heading, 1);
    progress->startItem(heading, 0, 0);
    ExceptScope scope(*this);
    commExceptSetup();
    PyRef found;
    {
        YumIOCapturersUser capturersUser(capturers, this);
        found = PyRef(pyMethodCall(yumIO.get(), "collectAdvisories", "()"));
    }
    progress->reset();
    advisoryList.clear();
    if (!found) {
        return commExceptRaised(nullptr, tr("read the advisories"))
                   ? false
                   : internalError(tr("Internal error: the advisories cannot be read"));
    }
    const Py_ssize_t count = PyList_Check(found.get()) ? PyList_GET_SIZE(found.get()) : 0;
    for (Py_ssize_t i = 0; i < count && PyErr_Occurred() == nullptr; ++i) {
        readAdvisory(PyList_GET_ITEM(found.get(), i));
    }
    if (PyErr_Occurred() != nullptr) {
        return internalError(tr("Internal error: the advisories cannot be read"));
    }
    advisoriesLoaded = true;
    return true;
}

void YumIO::readAdvisory(PyObject* tuple)
{
    PyObject* texts[6] = {};
    PyObject* lists[3] = {};
    int security = 0;
    Advisory advisory;
    if (PyArg_ParseTuple(tuple, "UUpUiUUUO!O!O!", &texts[0], &texts[1], &security, &texts[2], &advisory.rank,
                         &texts[3], &texts[4], &texts[5], &PyList_Type, &lists[0], &PyList_Type, &lists[1],
                         &PyList_Type, &lists[2]) == 0) {
        return;
    }
    advisory.id = pyString(texts[0]);
    advisory.kind = pyString(texts[1]);
    advisory.security = security != 0;
    advisory.severity = pyString(texts[2]);
    advisory.date = pyString(texts[3]);
    advisory.title = pyString(texts[4]);
    advisory.description = pyString(texts[5]);
    for (Py_ssize_t i = 0; i < PyList_GET_SIZE(lists[0]); ++i) {
        advisory.cves.append(pyString(PyList_GET_ITEM(lists[0], i)));
    }
    for (Py_ssize_t i = 0; i < PyList_GET_SIZE(lists[1]); ++i) {
        advisory.bugs.append(pyString(PyList_GET_ITEM(lists[1], i)));
    }
    for (Py_ssize_t i = 0; i < PyList_GET_SIZE(lists[2]); ++i) {
        PyObject* parts[4] = {};
        int obstacle = 0;
        if (PyArg_ParseTuple(PyList_GET_ITEM(lists[2], i), "UUUiU", &parts[0], &parts[1], &parts[2],
                             &obstacle, &parts[3]) == 0) {
            return;
        }
        advisory.packages.append({pyString(parts[0]), pyString(parts[1]), pyString(parts[2]),
                                  static_cast<Advisory::Obstacle>(obstacle), pyString(parts[3])});
    }
    advisoryList.append(advisory);
}

void YumIO::collectUpdateAdvisories()
{
    advisoriesLoaded = false;
    advisoryList.clear();
    updateAdvisoryIds.clear();
    const PyRef pairs(PyObject_GetAttrString(yumIO.get(), "updateAdvisories"));
    const Py_ssize_t count = pairs && PyList_Check(pairs.get()) ? PyList_GET_SIZE(pairs.get()) : 0;
    for (Py_ssize_t i = 0; i < count; ++i) {
        PyObject* update = nullptr;
        PyObject* ids = nullptr;
        if (PyArg_ParseTuple(PyList_GET_ITEM(pairs.get(), i), "OO!", &update, &PyList_Type, &ids) == 0) {
            break;
        }
        const Package::Entry* entry = findPackage(pyStringDec(attribute(update, NameAttribute)),
                                                  pyStringDec(attribute(update, ArchAttribute)));
        if (entry != nullptr) {
            QStringList& texts = updateAdvisoryIds[entry];
            for (Py_ssize_t each = 0; each < PyList_GET_SIZE(ids); ++each) {
                texts.append(pyString(PyList_GET_ITEM(ids, each)));
            }
        }
    }
    PyErr_Clear();
}

void YumIO::indexAdvisories(bool keep)
{
    const char* const method = keep ? "loadAdvisories" : "forgetAdvisories";
    if (PyObject_HasAttrString(yumIO.get(), method) != 0) {
        const PyRef result(pyMethodCall(yumIO.get(), method, "()"));
        PyErr_Clear(); // without the index, the advisories of each package are read separately
    }
}
