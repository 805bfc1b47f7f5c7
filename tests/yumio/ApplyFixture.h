// SPDX-License-Identifier: GPL-2.0-or-later

// The base class for tests of applying marks. The tests describe each transaction by Python statements.

#ifndef TESTS_YUMIO_APPLYFIXTURE_H
#define TESTS_YUMIO_APPLYFIXTURE_H

#include "tests/yumio/BackEndFixture.h"

class ApplyFixture : public BackEndFixture
{
    Q_OBJECT

protected Q_SLOTS:
    void initTestCase() override;
    void init() override;
    void cleanup() override;

protected:
    TransactionState& transaction() { return yumIO().transaction; }
    int logLength() { return backEnd->log().count(); }
    QStringList headings(int from);

    // Runs the statements, which set up packages, and then collects these packages.
    void collect(const QString& statements);
    void mark(const QString& name, Package::Action action) { backEnd->entry(name)->action = action; }
    // Applies the marks. The statements replace the work of dnf. They may append values to the list "seen".
    bool apply(const QString& statements = QString("pass"));
    // The names in the six lists that the script's apply() got. "<" joins the two names of a pair.
    QString given();
    bool wasApplied();
};

#endif
