// SPDX-License-Identifier: GPL-2.0-or-later

// Declares two types of the interpreter without its header. A header includes this file if it only passes
// pointers to these types.
//
// <Python.h> sets macros of the C library and must come before every other header. The header of a window
// includes the header of the back end and must not depend on this order. Every version of Python 3 has these
// two struct names.

#ifndef PYTHON_PYOBJECT_H
#define PYTHON_PYOBJECT_H

struct _object;
typedef struct _object PyObject;
struct _ts;
typedef struct _ts PyThreadState;

#endif
