// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/DateTime.h"

#include "python/CPython.h"

#include <datetime.h>

namespace DateTime {

bool import()
{
    PyDateTime_IMPORT;
    return PyDateTimeAPI != nullptr;
}

bool isDateTime(PyObject* object)
{
    return PyDateTime_Check(object);
}

int year(PyObject* object)
{
    return PyDateTime_GET_YEAR(object);
}

int month(PyObject* object)
{
    return PyDateTime_GET_MONTH(object);
}

int day(PyObject* object)
{
    return PyDateTime_GET_DAY(object);
}

} // namespace DateTime
