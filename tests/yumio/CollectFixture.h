// SPDX-License-Identifier: GPL-2.0-or-later

// The base class for tests of collections. After each test, the class also checks that no operation runs.

#ifndef TESTS_YUMIO_COLLECTFIXTURE_H
#define TESTS_YUMIO_COLLECTFIXTURE_H

#include "tests/yumio/BackEndFixture.h"

class CollectFixture : public BackEndFixture
{
    Q_OBJECT

protected Q_SLOTS:
    // This function also checks the state of the back end before and after the start.
    void initTestCase() override;
    void init() override;
    void cleanup() override;
};

#endif
