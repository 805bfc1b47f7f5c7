// SPDX-License-Identifier: GPL-2.0-or-later

#include "python/YumIOC.h"

#include <cstring>

#include "app/base/RepositoryFileLimit.h"
#include "python/Python.h"
#include "python/YumIOCTarget.h"

namespace {

const char moduleName[] = "yumIOC";

YumIOCTarget* currentTarget = nullptr;

struct State
{
    YumIOCTarget* target;
};

using Member = PyObject* (YumIOCTarget::*)(PyObject* module, PyObject* args);

template <Member member> PyObject* route(PyObject* module, PyObject* args)
{
    YumIOCTarget* target = static_cast<State*>(PyModule_GetState(module))->target;
    if (target == nullptr) {
        PyErr_SetString(PyExc_RuntimeError, "yumIOC: the back end is gone");
        return nullptr;
    }
    return (target->*member)(module, args);
}

PyMethodDef methods[] = {
    {"stdoutWrite", route<&YumIOCTarget::stdoutWrite>, METH_VARARGS, nullptr},
    {"stderrWrite", route<&YumIOCTarget::stderrWrite>, METH_VARARGS, nullptr},
    {"log", route<&YumIOCTarget::log>, METH_VARARGS, nullptr},
    {"errorlog", route<&YumIOCTarget::errorlog>, METH_VARARGS, nullptr},
    {"downloadStart", route<&YumIOCTarget::downloadStart>, METH_VARARGS, nullptr},
    {"downloadProgress", route<&YumIOCTarget::downloadProgress>, METH_VARARGS, nullptr},
    {"downloadMessage", route<&YumIOCTarget::downloadMessage>, METH_VARARGS, nullptr},
    {"downloadEnd", route<&YumIOCTarget::downloadEnd>, METH_VARARGS, nullptr},
    {"userconfirm", route<&YumIOCTarget::userconfirm>, METH_NOARGS, nullptr},
    {"reportDownloadSize", route<&YumIOCTarget::reportDownloadSize>, METH_VARARGS, nullptr},
    {"reportRemoveSize", route<&YumIOCTarget::reportRemoveSize>, METH_VARARGS, nullptr},
    {"listTransaction", route<&YumIOCTarget::listTransaction>, METH_VARARGS, nullptr},
    {"downloadRemotePayloads", route<&YumIOCTarget::downloadRemotePayloads>, METH_VARARGS, nullptr},
    {"rpmtransInit", route<&YumIOCTarget::rpmtransInit>, METH_VARARGS, nullptr},
    {"rpmtransDel", route<&YumIOCTarget::rpmtransDel>, METH_NOARGS, nullptr},
    {"rpmtransProgress", route<&YumIOCTarget::rpmtransProgress>, METH_VARARGS, nullptr},
    {"rpmtransScriptout", route<&YumIOCTarget::rpmtransScriptout>, METH_VARARGS, nullptr},
    {"postTransactionOutput", route<&YumIOCTarget::postTransactionOutput>, METH_VARARGS, nullptr},
    {"gpgsigcheck", route<&YumIOCTarget::gpgsigcheck>, METH_VARARGS, nullptr},
    {nullptr, nullptr, 0, nullptr},
};

PyModuleDef definition = {
    PyModuleDef_HEAD_INIT, moduleName, nullptr, sizeof(State), methods, nullptr, nullptr, nullptr, nullptr,
};

// Returns a borrowed reference to the imported module. Returns NULL if the script has not imported the
// module, or if the interpreter has ended.
PyObject* existingModule()
{
    return PyState_FindModule(&definition);
}

void pointTo(PyObject* module, YumIOCTarget* target)
{
    static_cast<State*>(PyModule_GetState(module))->target = target;
}

bool registered()
{
    for (const _inittab* entry = PyImport_Inittab; entry->name != nullptr; ++entry) {
        if (std::strcmp(entry->name, moduleName) == 0) {
            return true;
        }
    }
    return false;
}

void setTarget(YumIOCTarget* target)
{
    currentTarget = target;
    if (Py_IsInitialized() != 0) {
        const Python::PyGILStateWrapper lock(true);
        if (PyObject* module = existingModule()) {
            pointTo(module, target);
        }
    }
}

} // namespace

YumIOCTarget::~YumIOCTarget()
{
    if (currentTarget == this) {
        setTarget(nullptr);
    }
}

PyMODINIT_FUNC PyInit_yumIOC()
{
    PyRef module = PyRef::borrow(existingModule());
    if (!module) {
        module = PyRef(PyModule_Create(&definition));
        if (!module || PyState_AddModule(module.get(), &definition) != 0 ||
            PyModule_AddIntConstant(module.get(), "repositoryFileLimit", repositoryFileLimit) != 0 ||
            PyModule_AddIntConstant(module.get(), "repositorySectionLimit", repositorySectionLimit) != 0) {
            return nullptr;
        }
    }
    pointTo(module.get(), currentTarget);
    return module.release();
}

int YumIOC::initialize(YumIOCTarget* yumIO)
{
    setTarget(yumIO);
    if (registered()) {
        return 0;
    }
    // Built-in modules must be added before the interpreter starts.
    return Py_IsInitialized() != 0 ? -1 : PyImport_AppendInittab(moduleName, &PyInit_yumIOC);
}
