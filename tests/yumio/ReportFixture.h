// What the tests of the script's reports have in common: payloads, and a window that is shown.

#ifndef TESTS_YUMIO_REPORTFIXTURE_H
#define TESTS_YUMIO_REPORTFIXTURE_H

#include "tests/yumio/ApplyFixture.h"

class ReportFixture : public ApplyFixture
{
    Q_OBJECT

protected Q_SLOTS:
    void initTestCase();

protected:
    // The log from the given entry on, without the complaints of the display of the tests: it writes them to
    // standard error, which an operation captures.
    QStringList logged(int from);
};

#endif
