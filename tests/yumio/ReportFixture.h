// SPDX-License-Identifier: GPL-2.0-or-later

// The common base for tests of the script's reports: payloads, and a visible window.

#ifndef TESTS_YUMIO_REPORTFIXTURE_H
#define TESTS_YUMIO_REPORTFIXTURE_H

#include "tests/yumio/ApplyFixture.h"

class ReportFixture : public ApplyFixture
{
    Q_OBJECT

protected Q_SLOTS:
    void initTestCase();

protected:
    // The log from the given entry on, without the messages of the display. The display writes them to
    // standard error while an operation captures it.
    QStringList logged(int from);
};

#endif
