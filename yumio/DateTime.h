// SPDX-License-Identifier: GPL-2.0-or-later

// Reads the interpreter's datetime objects. CPython's header for these objects adds a static pointer to every
// file that includes it. Therefore only DateTime.cpp includes that header.
//
// Any thread may call these functions while it holds the interpreter lock.

#ifndef YUMIO_DATETIME_H
#define YUMIO_DATETIME_H

#include "python/PyObject.h"

namespace DateTime {

// Imports CPython's datetime interface. On failure, returns false and sets an exception.
bool import();

// Returns whether the object is a datetime.datetime or an instance of a subclass.
bool isDateTime(PyObject* object);

// These functions return the parts of a date. isDateTime() must be true for the object.
int year(PyObject* object);
int month(PyObject* object);
int day(PyObject* object);

} // namespace DateTime

#endif
