// SPDX-License-Identifier: GPL-2.0-or-later

// An environment variable that a test sets. The destructor restores the variable's former value.

#ifndef TESTS_SUPPORT_ENVIRONMENTVARIABLE_H
#define TESTS_SUPPORT_ENVIRONMENTVARIABLE_H

#include <QByteArray>
#include <QtGlobal>

class EnvironmentVariable
{
public:
    // Stores the present value. Only set() and unset() change the variable.
    explicit EnvironmentVariable(const char* variable)
        : name(variable), wasSet(qEnvironmentVariableIsSet(variable)), before(qgetenv(variable))
    {
    }
    EnvironmentVariable(const char* variable, const QByteArray& value) : EnvironmentVariable(variable)
    {
        set(value);
    }
    ~EnvironmentVariable() { put(wasSet, before); }
    Q_DISABLE_COPY(EnvironmentVariable)

    // A null value unsets the variable.
    void set(const QByteArray& value) { put(!value.isNull(), value); }
    void unset() { put(false, QByteArray()); }

private:
    void put(bool set, const QByteArray& value)
    {
        if (set) {
            qputenv(name, value);
        } else {
            qunsetenv(name);
        }
    }

    const char* name;
    bool wasSet;
    QByteArray before;
};

#endif
