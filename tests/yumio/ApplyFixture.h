// SPDX-License-Identifier: GPL-2.0-or-later

// The base class for tests of applying marks. It owns a back end with the stand-in script. The tests describe
// each transaction by Python statements.

#ifndef TESTS_YUMIO_APPLYFIXTURE_H
#define TESTS_YUMIO_APPLYFIXTURE_H

#include <QObject>
#include <QScopedPointer>

#include "tests/yumio/BackEnd.h"

class ApplyFixture : public QObject
{
    Q_OBJECT

protected Q_SLOTS:
    // The test framework calls these slots for every derived class.
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

    // Runs the statements, which set up packages, and then collects these packages.
    void collect(const QString& statements);
    void mark(const QString& name, Package::Action action) { backEnd->entry(name)->action = action; }
    // Applies the marks. The statements replace the work of dnf. They may append values to the list "seen".
    bool apply(const QString& statements = QString("pass"));
    // The names in the six lists that the script got for its apply(). "<" joins the two names of a pair.
    QString given();
    bool wasApplied();

    // The message about an unexpected Python exception.
    static const char* const generic;

    QScopedPointer<BackEnd> backEnd;
};

#endif
