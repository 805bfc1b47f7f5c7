// SPDX-License-Identifier: GPL-2.0-or-later

// The header of the interpreter, as our sources include it: lengths in formats such as "s#" are Py_ssize_t.
//
// For sources of python/, yumio/ and their tests. A header that others include has "python/PyObject.h"
// instead.

#ifndef PYTHON_CPYTHON_H
#define PYTHON_CPYTHON_H

#ifndef PY_SSIZE_T_CLEAN
#define PY_SSIZE_T_CLEAN
#endif
#include <Python.h>

#endif
