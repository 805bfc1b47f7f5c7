// SPDX-License-Identifier: GPL-2.0-or-later

#include "python/PyRef.h"

#include "python/CPython.h"

PyRef PyRef::borrow(PyObject* borrowed)
{
    Py_XINCREF(borrowed);
    return PyRef(borrowed);
}

void PyRef::drop(PyObject* owned)
{
    Py_DECREF(owned);
}
