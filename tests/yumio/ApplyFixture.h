// SPDX-License-Identifier: GPL-2.0-or-later

// The base class for tests of applying marks. It has a back end with the stand-in script. A transaction
// consists of Python statements.

#ifndef TESTS_YUMIO_APPLYFIXTURE_H
#define TESTS_YUMIO_APPLYFIXTURE_H

#include <QObject>
#include <QScopedPointer>

#include "tests/yumio/BackEnd.h"

class ApplyFixture : public QObject
{
    Q_OBJECT

protected Q_SLOTS:
    // The test framework calls these slots of every test class.
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

protected:
    YumIOProbe& yumIO() { return backEnd->yumIO; }
    TransactionState& transaction() { return yumIO().transaction; }
    QStringList errors() { return backEnd->answers.takeTexts("VYRE Yum Error"); }
    QStringList warnings() { return backEnd->answers.takeTexts("VYRE Yum Warning"); }
    int logLength() { return backEnd->log().count(); }
    QStringList headings(int from);

    // Collects the packages that the statements set up.
    void collect(const QString& statements);
    void mark(const QString& name, Package::Action action) { backEnd->entry(name)->action = action; }
    // Applies the marks. These statements replace the package manager's work, and append to "seen".
    bool apply(const QString& statements = QString("pass"));
    // The names in the six lists that were passed to the script. "<" joins the names of a pair.
    QString given();
    bool wasApplied();

    // The text of an exception that no scope expects.
    static const char* const generic;

    QScopedPointer<BackEnd> backEnd;
};

#endif
