// SPDX-License-Identifier: GPL-2.0-or-later

// The common base for tests of applying: a back end on the stand-in script, whose transactions are Python
// statements.

#ifndef TESTS_YUMIO_APPLYFIXTURE_H
#define TESTS_YUMIO_APPLYFIXTURE_H

#include <QObject>
#include <QScopedPointer>

#include "tests/yumio/BackEnd.h"

class ApplyFixture : public QObject
{
    Q_OBJECT

protected Q_SLOTS:
    // The test framework calls these slots, as in every test class.
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
    // Applies; these statements replace the package manager's work. They append to "seen".
    bool apply(const QString& statements = QString("pass"));
    // The six lists passed to the script: the names in them, joined by "<" for pairs.
    QString given();
    bool wasApplied();

    // The text of an exception that no scope expects.
    static const char* const generic;

    QScopedPointer<BackEnd> backEnd;
};

#endif
