// SPDX-License-Identifier: GPL-2.0-or-later

// An interpreter for the tests. The interpreter records its messages instead of showing them.

#ifndef TESTS_PYTHON_RECORDINGPYTHON_H
#define TESTS_PYTHON_RECORDINGPYTHON_H

#include "python/CPython.h"
#include "python/Python.h"

#include <QStringList>

class RecordingPython : public Python
{
public:
    void error(const char* text) override { errors.append(QString::fromUtf8(text)); }
    void warning(const char* text) override { warnings.append(QString::fromUtf8(text)); }
    void tracebackOnTerminal(const char* text) override { tracebacks.append(QString::fromUtf8(text)); }
    void exceptionExpected() override
    {
        ++expectedCount;
        Python::exceptionExpected();
    }

    // Returns the messages of error() since the previous call.
    QStringList takeErrors()
    {
        QStringList taken;
        taken.swap(errors);
        return taken;
    }

    // Evaluates an expression, and returns str() of its value.
    QString text(const char* expression)
    {
        const PyRef value(pyr(expression));
        const PyRef string(value ? PyObject_Str(value.get()) : nullptr);
        return string ? QString::fromUtf8(PyUnicode_AsUTF8(string.get())) : QString();
    }

    QStringList errors;
    QStringList warnings;
    QStringList tracebacks;
    int expectedCount = 0;
};

#endif
