// SPDX-License-Identifier: GPL-2.0-or-later

// Reads the interpreter's datetime objects. CPython's header datetime.h adds a static pointer to every file
// that includes it. Therefore only DateTime.cpp includes datetime.h.
//
// Any thread that holds the interpreter lock may call these functions.

#ifndef YUMIO_DATETIME_H
#define YUMIO_DATETIME_H

#include "python/PyObject.h"

namespace DateTime {

// Imports CPython's datetime interface. On failure, returns false and sets an exception.
bool import();

// Returns whether the object is a datetime.datetime or an instance of a subclass.
bool isDateTime(PyObject* object);

// year(), month() and day() return the parts of a date. isDateTime() must be true for the object.
int year(PyObject* object);
int month(PyObject* object);
int day(PyObject* object);

} // namespace DateTime

#endif
