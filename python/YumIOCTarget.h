// The back end as the script sees it: what the functions of the module yumIOC call.
//
// Called on the thread that runs the script, with the interpreter lock held. Each member parses its arguments
// (NULL for userconfirm and rpmtransDel, else a tuple) and returns a new reference, or NULL with a Python
// exception set, which then surfaces in the script.
//
// A class that derives from this and from Python names Python first: the interpreter's end, in the destructor
// of Python, can run functions of the script, which must not reach a back end that is half gone.

#ifndef PYTHON_YUMIOCTARGET_H
#define PYTHON_YUMIOCTARGET_H

#ifndef PY_SSIZE_T_CLEAN
#define PY_SSIZE_T_CLEAN
#endif
#include <Python.h>

class YumIOCTarget
{
public:
    YumIOCTarget() = default;
    YumIOCTarget(const YumIOCTarget&) = delete;
    YumIOCTarget& operator=(const YumIOCTarget&) = delete;
    // Calls that still come afterwards raise RuntimeError in the script.
    virtual ~YumIOCTarget();

    virtual PyObject* stdoutWrite(PyObject* module, PyObject* args) = 0;
    virtual PyObject* stderrWrite(PyObject* module, PyObject* args) = 0;
    virtual PyObject* log(PyObject* module, PyObject* args) = 0;
    virtual PyObject* errorlog(PyObject* module, PyObject* args) = 0;
    virtual PyObject* downloadStart(PyObject* module, PyObject* args) = 0;
    virtual PyObject* downloadProgress(PyObject* module, PyObject* args) = 0;
    virtual PyObject* downloadMessage(PyObject* module, PyObject* args) = 0;
    virtual PyObject* downloadEnd(PyObject* module, PyObject* args) = 0;
    virtual PyObject* userconfirm(PyObject* module, PyObject* args) = 0;
    virtual PyObject* reportDownloadSize(PyObject* module, PyObject* args) = 0;
    virtual PyObject* reportRemoveSize(PyObject* module, PyObject* args) = 0;
    virtual PyObject* listTransaction(PyObject* module, PyObject* args) = 0;
    virtual PyObject* downloadRemotePayloads(PyObject* module, PyObject* args) = 0;
    virtual PyObject* rpmtransInit(PyObject* module, PyObject* args) = 0;
    virtual PyObject* rpmtransDel(PyObject* module, PyObject* args) = 0;
    virtual PyObject* rpmtransProgress(PyObject* module, PyObject* args) = 0;
    virtual PyObject* rpmtransScriptout(PyObject* module, PyObject* args) = 0;
    virtual PyObject* postTransactionOutput(PyObject* module, PyObject* args) = 0;
    virtual PyObject* gpgsigcheck(PyObject* module, PyObject* args) = 0;
};

#endif
