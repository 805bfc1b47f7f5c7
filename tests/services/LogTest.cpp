// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/Log.h"

#include <memory>

#include <QSignalSpy>
#include <QTest>
#include <QThread>

class LogTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachNonEmptyLineOfAMessageBecomesAnEntry();
    void passwordsInUrlsAreHidden_data();
    void passwordsInUrlsAreHidden();
    void entriesHaveTheKindAndLevelOfTheirMessage();
    void aMessageOfSeveralLinesCausesOneNotification();
    void readersAreNotifiedAfterTheLogIsUnlocked();
    void allMessagesAreLoggedIfTwoThreadsWriteAtTheSameTime();
};

void LogTest::eachNonEmptyLineOfAMessageBecomesAnEntry()
{
    Log::EntryList log;
    log.appendMessage(Log::Warning, 3, "first line\n\nsecond line\n");
    QCOMPARE(log.count(), 2);
    QCOMPARE(log.at(0).text, QString("first line"));
    QCOMPARE(log.at(1).text, QString("second line"));
    for (const Log::Entry& entry : log) {
        QCOMPARE(entry.kind, Log::Warning);
        QCOMPARE(entry.level, 3u);
    }
}

void LogTest::passwordsInUrlsAreHidden_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("hidden");
    const auto add = [](const char* name, const char* message, const char* hidden) {
        QTest::newRow(name) << QString::fromUtf8(message) << QString::fromUtf8(hidden);
    };
    add("password in the query", "404 for http://h/vantor?u=joe&p=s3%26t&path=/x (IP: 1)",
        "404 for http://h/vantor?u=joe&p=●●●&path=/x (IP: 1)");
    add("path before the query", "http://h:8/a/vantor/repodata/repomd.xml?u=joe&p=s3&path=/x",
        "http://h:8/a/vantor/repodata/repomd.xml?u=joe&p=●●●&path=/x");
    add("two URLs", "http://h/vantor?u=&p=a&path= http://h/vantor?u=&p=b&path=",
        "http://h/vantor?u=&p=●●●&path= http://h/vantor?u=&p=●●●&path=");
    add("password before the host", "ftp://joe:s3t@h:21/x", "ftp://joe:●●●@h:21/x");
    add("at sign in the password", "http://me:s@3@h/x failed", "http://me:●●●@h/x failed");
    add("no password", "http://h/vantor?u=&p=&path=/x", "http://h/vantor?u=&p=&path=/x");
    add("queries that are not vantor", "http://h/list?u=joe&p=9&arch=x86",
        "http://h/list?u=joe&p=9&arch=x86");
    add("a port, and a mail address after the URL", "http://h:80/x: write to joe:k@h",
        "http://h:80/x: write to joe:k@h");
}

void LogTest::passwordsInUrlsAreHidden()
{
    QFETCH(QString, message);
    QFETCH(QString, hidden);
    Log::EntryList log;
    log.appendMessage(Log::Error, 1, message);
    QCOMPARE(log.count(), 1);
    QCOMPARE(log.at(0).text, hidden);
}

void LogTest::entriesHaveTheKindAndLevelOfTheirMessage()
{
    QCOMPARE(static_cast<quint32>(Log::Info), 0u);
    QCOMPARE(static_cast<quint32>(Log::OK), 1u);
    QCOMPARE(static_cast<quint32>(Log::Warning), 2u);
    QCOMPARE(static_cast<quint32>(Log::Error), 3u);
    QCOMPARE(static_cast<quint32>(Log::Action), 4u);
    QCOMPARE(sizeof(Log::Kind), sizeof(quint32));

    Log::EntryList log;
    log.append(Log::Entry(Log::Action, 4000000000u, "Applying"));
    const Log::Entry copy = log.at(0);
    QCOMPARE(copy.kind, Log::Action);
    QCOMPARE(copy.level, 4000000000u);
    QCOMPARE(copy.text, QString("Applying"));
    QCOMPARE(copy.time, log.at(0).time);
}

void LogTest::aMessageOfSeveralLinesCausesOneNotification()
{
    Log::EntryList log;
    QSignalSpy spy(&log, SIGNAL(appended()));
    log.appendMessage(Log::Info, 0, "one\ntwo\nthree");
    QCOMPARE(spy.count(), 1);
    log.emitAppended();
    QCOMPARE(spy.count(), 2);
    QCOMPARE(log.count(), 3);
}

void LogTest::readersAreNotifiedAfterTheLogIsUnlocked()
{
    Log::EntryList log;
    int free = 0;
    connect(&log, &Log::EntryList::appended, [&] {
        if (log.tryLock()) {
            ++free;
            log.unlock();
        }
    });
    log.appendMessage(Log::Info, 0, "text");
    QCOMPARE(free, 1);
}

void LogTest::allMessagesAreLoggedIfTwoThreadsWriteAtTheSameTime()
{
    Log::EntryList log;
    const auto write = [&log] {
        for (int i = 0; i < 5000; ++i) {
            log.appendMessage(Log::Info, 0, "a\nb");
        }
    };
    std::unique_ptr<QThread> one(QThread::create(write));
    std::unique_ptr<QThread> two(QThread::create(write));
    one->start();
    two->start();
    one->wait();
    two->wait();
    QCOMPARE(log.count(), 20000);
    // Lines of the other thread never come between the two lines of a message.
    for (int i = 0; i < log.count(); i += 2) {
        QCOMPARE(log.at(i).text + log.at(i + 1).text, QString("ab"));
    }
}

QTEST_GUILESS_MAIN(LogTest)
#include "LogTest.moc"
