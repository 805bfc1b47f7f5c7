// SPDX-License-Identifier: GPL-2.0-or-later

// Includes the interpreter's header with the settings of this program. Lengths in formats such as "s#" have
// the type Py_ssize_t.
//
// Only the sources of python/, yumio/ and their tests include this header. Headers for other folders use
// "python/PyObject.h" instead.

#ifndef PYTHON_CPYTHON_H
#define PYTHON_CPYTHON_H

#ifndef PY_SSIZE_T_CLEAN
#define PY_SSIZE_T_CLEAN
#endif
#include <Python.h>

#endif
