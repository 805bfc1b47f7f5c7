// SPDX-License-Identifier: GPL-2.0-or-later

// The base class for tests of the script's reports. The class defines payload classes for the script, and
// shows the back end's window.

#ifndef TESTS_YUMIO_REPORTFIXTURE_H
#define TESTS_YUMIO_REPORTFIXTURE_H

#include "tests/yumio/ApplyFixture.h"

class ReportFixture : public ApplyFixture
{
    Q_OBJECT

protected Q_SLOTS:
    void initTestCase();

protected:
    // The log from this entry on, without messages of the window system. If the window system writes a
    // message while an operation captures standard error, the log contains this message.
    QStringList logged(int from);
};

#endif
