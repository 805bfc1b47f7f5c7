// SPDX-License-Identifier: GPL-2.0-or-later

// The base class for tests that use one back end with the stand-in script. After each test, the class checks
// that the back end is idle and has shown no unexpected dialog.

#ifndef TESTS_YUMIO_BACKENDFIXTURE_H
#define TESTS_YUMIO_BACKENDFIXTURE_H

#include <QObject>
#include <QScopedPointer>

#include "tests/yumio/BackEnd.h"

class BackEndFixture : public QObject
{
    Q_OBJECT

protected Q_SLOTS:
    // The test framework calls these slots for every derived class.
    virtual void initTestCase();
    void cleanupTestCase();
    virtual void init();
    virtual void cleanup();

protected:
    YumIOProbe& yumIO() { return backEnd->yumIO; }
    QStringList errors() { return backEnd->answers.takeTexts("VYRE Yum Error"); }
    QStringList warnings() { return backEnd->answers.takeTexts("VYRE Yum Warning"); }
    // Returns a Python dictionary with an empty list for the file list, the change log and each kind of
    // dependencies. A package of the stand-in script has these attributes only if a test sets them.
    static QString emptyLists();

    // The message about an unexpected Python exception.
    static const char* const generic;

    QScopedPointer<BackEnd> backEnd;
};

#endif
