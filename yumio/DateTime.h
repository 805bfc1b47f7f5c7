// The interpreter's datetime objects. CPython's header for them keeps one pointer in every file that includes
// it; only DateTime.cpp does.
//
// Any thread that holds the interpreter lock.

#ifndef YUMIO_DATETIME_H
#define YUMIO_DATETIME_H

#include "python/PyObject.h"

namespace DateTime {

// Imports the interface; false, with an exception set, when that fails.
bool import();

// Whether the object is a datetime.datetime or of a subclass of it.
bool isDateTime(PyObject* object);

// Of an object for which isDateTime() is true.
int year(PyObject* object);
int month(PyObject* object);
int day(PyObject* object);

} // namespace DateTime

#endif
