// SPDX-License-Identifier: GPL-2.0-or-later

// Access to the interpreter's datetime objects. CPython's header for them adds a static pointer to every file
// that includes it, so only DateTime.cpp includes it.
//
// For any thread that holds the interpreter lock.

#ifndef YUMIO_DATETIME_H
#define YUMIO_DATETIME_H

#include "python/PyObject.h"

namespace DateTime {

// Imports the interface. On failure it returns false and sets an exception.
bool import();

// Whether the object is a datetime.datetime or an instance of a subclass.
bool isDateTime(PyObject* object);

// The object must fulfil isDateTime().
int year(PyObject* object);
int month(PyObject* object);
int day(PyObject* object);

} // namespace DateTime

#endif
