// SPDX-License-Identifier: GPL-2.0-or-later

#include <QScrollBar>
#include <QThread>

#include "tests/services/ShownLog.h"

// Tests of entries that arrive while the window is open, opens, or is hidden.
class LogWindowArrivalTest : public ShownLog
{
    Q_OBJECT

private Q_SLOTS:
    void anOpenWindowShowsNewEntriesOfAllThreads();
    void aHiddenWindowIgnoresALateNotification();
    void aHiddenWindowIsNotConnectedToTheLog();
    void theLogIsLockedWhileTheWindowConnectsOrDisconnects();
    void theWindowShowsEntriesThatArriveWhileItOpens();
    void noEntryIsLostIfTheWindowOpensWhileAThreadWrites();
    void theOpenWindowShowsThousandsOfNewMessages();
    void theWindowShowsThousandsOfEntries();
};

void LogWindowArrivalTest::anOpenWindowShowsNewEntriesOfAllThreads()
{
    log(Log::Info, 0, "old");
    open();
    log(Log::Info, 0, "new");
    QCOMPARE(lines(), QStringList({"old", "new"}));
    log(Log::Info, 5, "too detailed");
    QCOMPARE(lines(), QStringList({"old", "new"}));

    std::unique_ptr<QThread> writer(QThread::create([this] { log(Log::Warning, 0, "from a worker"); }));
    writer->start();
    QTRY_COMPARE(lines(), QStringList({"old", "new", "from a worker"}));
    writer->wait();
}

void LogWindowArrivalTest::aHiddenWindowIgnoresALateNotification()
{
    open();
    std::unique_ptr<QThread> writer(QThread::create([this] { log(Log::Info, 0, "too late"); }));
    writer->start();
    writer->wait();
    window->hide();
    QCoreApplication::processEvents();
    QCOMPARE(pane->toPlainText(), QString());
}

void LogWindowArrivalTest::aHiddenWindowIsNotConnectedToTheLog()
{
    QCOMPARE(entries->listeners(), 0);
    for (int round = 0; round < 3; ++round) {
        open();
        QCOMPARE(entries->listeners(), 1);
        window->hide();
        QCOMPARE(entries->listeners(), 0);
    }
}

void LogWindowArrivalTest::theLogIsLockedWhileTheWindowConnectsOrDisconnects()
{
    open();
    QCOMPARE(entries->locked, QList<bool>({true}));
    window->hide();
    QCOMPARE(entries->locked, QList<bool>({true, true}));
}

void LogWindowArrivalTest::theWindowShowsEntriesThatArriveWhileItOpens()
{
    log(Log::Info, 0, "before");
    // This entry arrives while the window paints the earlier entries, before the window connects to the log.
    QMetaObject::invokeMethod(
        window.get(), [this] { log(Log::Info, 0, "between"); }, Qt::QueuedConnection);
    window->show();
    QCOMPARE(lines(), QStringList({"before", "between"}));
}

void LogWindowArrivalTest::noEntryIsLostIfTheWindowOpensWhileAThreadWrites()
{
    const int count = 3000;
    std::unique_ptr<QThread> writer(QThread::create([this] {
        for (int i = 0; i < count; ++i) {
            log(Log::Info, 0, QString::number(i));
        }
    }));
    writer->start();
    while (!writer->isFinished()) {
        window->show();
        QCoreApplication::processEvents();
        window->hide();
    }
    writer->wait();
    open();
    QCOMPARE(lines().count(), count);
    for (int i = 0; i < count; ++i) {
        QCOMPARE(lines().at(i), QString::number(i));
        i += 97;
    }
}

void LogWindowArrivalTest::theOpenWindowShowsThousandsOfNewMessages()
{
    open();
    const int count = 20000;
    std::unique_ptr<QThread> writer(QThread::create([this] {
        for (int i = 0; i < count; ++i) {
            log(Log::OK, 0, QString::number(i));
        }
    }));
    writer->start();
    QTRY_COMPARE_WITH_TIMEOUT(pane->document()->blockCount(), count, 120000);
    writer->wait();
    const QStringList shown = lines();
    for (int i = 0; i < count; ++i) {
        QCOMPARE(shown.at(i), QString::number(i));
    }
    QCOMPARE(pane->verticalScrollBar()->value(), pane->verticalScrollBar()->maximum());
}

void LogWindowArrivalTest::theWindowShowsThousandsOfEntries()
{
    const int count = 30000;
    for (int i = 0; i < count; ++i) {
        entries->append(Log::Entry(Log::Info, 0, QString("a line of ordinary length, number %1").arg(i)));
    }
    open();
    QCOMPARE(pane->document()->blockCount(), count);
    QCOMPARE(pane->verticalScrollBar()->value(), pane->verticalScrollBar()->maximum());
    log(Log::Info, 0, "last");
    QCOMPARE(pane->document()->lastBlock().text(), QString("last"));
    QCOMPARE(pane->verticalScrollBar()->value(), pane->verticalScrollBar()->maximum());
}

QTEST_MAIN(LogWindowArrivalTest)
#include "LogWindowArrivalTest.moc"
