// SPDX-License-Identifier: GPL-2.0-or-later

// The names of two types of the interpreter without its header, for headers that only pass pointers on.
//
// <Python.h> sets macros of the C library and has to come before every other header. A window that includes
// the header of the back end must not depend on that. Every version of Python 3 has these two tags.

#ifndef PYTHON_PYOBJECT_H
#define PYTHON_PYOBJECT_H

struct _object;
typedef struct _object PyObject;
struct _ts;
typedef struct _ts PyThreadState;

#endif
