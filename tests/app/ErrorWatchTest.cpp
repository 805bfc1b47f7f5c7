// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/ErrorWatch.h"

#include <QtTest>

class ErrorWatchTest : public QObject
{
    Q_OBJECT

private:
    Log::EntryList entries;

    void log(Log::Kind kind, unsigned int level) { entries.append(Log::Entry(kind, level, "text")); }

private Q_SLOTS:
    void theWatchReportsOnlyErrorsThatWereLoggedAfterTheWatchBegan()
    {
        log(Log::Error, 0);
        const ErrorWatch errors(entries);
        QCOMPARE(errors.firstEntry(), 1);
        QVERIFY(!errors.hasErrors());
        log(Log::Info, 0);
        log(Log::Warning, 0);
        QVERIFY(!errors.hasErrors());
        log(Log::Error, 0);
        log(Log::Info, 0);
        QVERIFY(errors.hasErrors());
        QCOMPARE(errors.firstEntry(), 1);
    }

    void theWatchIgnoresErrorsAboveTheDefaultDetailLevel()
    {
        const ErrorWatch errors(entries);
        log(Log::Error, 3);
        QVERIFY(!errors.hasErrors());
        log(Log::Error, 2);
        QVERIFY(errors.hasErrors());
    }
};

QTEST_GUILESS_MAIN(ErrorWatchTest)
#include "ErrorWatchTest.moc"
