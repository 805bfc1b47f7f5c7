// SPDX-License-Identifier: GPL-2.0-or-later

// The script's interface to the back end: the functions of the module yumIOC call these members.
//
// The members are called on the thread that runs the script, with the interpreter lock held. Each member
// parses its arguments, which are a tuple (NULL for userconfirm and rpmtransDel). Each member returns a new
// reference, or NULL with a pending Python exception, which the script then receives.
//
// If a class derives from both this class and Python, it must list Python first. The destructor of Python
// ends the interpreter and may thereby run functions of the script. At that time this base class is already
// destroyed, so the functions of yumIOC can no longer call it.

#ifndef PYTHON_YUMIOCTARGET_H
#define PYTHON_YUMIOCTARGET_H

#include "python/PyObject.h"

class YumIOCTarget
{
public:
    YumIOCTarget() = default;
    YumIOCTarget(const YumIOCTarget&) = delete;
    YumIOCTarget& operator=(const YumIOCTarget&) = delete;
    // After the target is destroyed, each function of the module raises RuntimeError in the script.
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
