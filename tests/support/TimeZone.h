// SPDX-License-Identifier: GPL-2.0-or-later

// A time zone that a test sets. The destructor restores the former time zone.

#ifndef TESTS_SUPPORT_TIMEZONE_H
#define TESTS_SUPPORT_TIMEZONE_H

#include <ctime>
#include <optional>

#include "tests/support/EnvironmentVariable.h"

class TimeZone
{
public:
    explicit TimeZone(const QByteArray& name)
    {
        variable.emplace("TZ", name);
        tzset();
    }
    ~TimeZone()
    {
        variable.reset();
        tzset();
    }
    Q_DISABLE_COPY(TimeZone)

private:
    std::optional<EnvironmentVariable> variable;
};

#endif
