// SPDX-License-Identifier: GPL-2.0-or-later

// Declares two types of the interpreter without including its header. Headers that only pass pointers to
// these types include this file.
//
// <Python.h> sets macros of the C library, so it must come before every other header. The header of a window
// includes the header of the back end, and cannot ensure this order. The two struct names are the same in
// every version of Python 3.

#ifndef PYTHON_PYOBJECT_H
#define PYTHON_PYOBJECT_H

struct _object;
typedef struct _object PyObject;
struct _ts;
typedef struct _ts PyThreadState;

#endif
