// SPDX-License-Identifier: GPL-2.0-or-later

// The test functions depend on their order, because they run in one process, and an unattended program always
// remains unattended.

#include "services/Unattended.h"

#include <QDialog>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <atomic>
#include <memory>

#include "services/Log.h"
#include "services/YumIODialogs.h"
#include "tests/support/AnsweringUser.h"

namespace {

QStringList messages;

void keepMessage(QtMsgType, const QMessageLogContext&, const QString& text)
{
    messages.append(text);
}

} // namespace

class UnattendedTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        messages.clear();
        handler = qInstallMessageHandler(keepMessage);
    }

    void cleanup() { qInstallMessageHandler(handler); }

    void logEntriesCauseNoQtMessagesWhileAUserIsPresent()
    {
        QVERIFY(!Unattended::is());
        Log::EntryList log;
        QSignalSpy appended(&log, SIGNAL(appended()));
        log.appendMessage(Log::Error, 0, QStringLiteral("bad"));
        QCOMPARE(log.count(), 1);
        QCOMPARE(appended.count(), 1);
        QCOMPARE(messages, QStringList());
    }

    // While the worker waits for the answer, the graphical thread cannot close the dialog.
    void aWaitingWorkerGetsTheSafeAnswerIfTheUserDisappears()
    {
        std::atomic<int> answer(-2);
        std::unique_ptr<QThread> worker(QThread::create([&] {
            YumIODialogs dialogs(nullptr);
            answer = dialogs.critical("Apply", "Do you wish to proceed?", "Yes", "No", QString(), 1, 1);
        }));
        worker->start();
        bool given = false;
        const AnsweringUser user(
            [&](QDialog* dialog) {
                if (!given) {
                    // From now on, the graphical thread only waits for the worker.
                    Unattended::begin();
                    given = worker->wait(30000);
                    dialog->reject();
                }
            },
            AnsweringUser::EveryDialog);
        QTRY_VERIFY_WITH_TIMEOUT(given, 60000);
        QCOMPARE(answer, 1);
        QVERIFY(Unattended::is());
    }

    void questionsGetTheSafeAnswerIfNoUserIsPresent_data()
    {
        QTest::addColumn<bool>("onWorker");
        QTest::newRow("graphical thread") << false;
        QTest::newRow("worker") << true;
    }

    void questionsGetTheSafeAnswerIfNoUserIsPresent()
    {
        QFETCH(bool, onWorker);
        int answers[4] = {-2, -2, -2, -2};
        const auto ask = [&answers] {
            YumIODialogs dialogs(nullptr);
            answers[0] = dialogs.confirm("Apply", "Listing", "OK", "Cancel");
            answers[1] = dialogs.critical("Apply", "Proceed?", "Yes", "No", QString(), 0, 1);
            answers[2] = dialogs.warning("Warning", "So it is", QString(), QString(), QString(), 0, -1);
            answers[3] = dialogs.scrollable("Error", "Long");
        };
        if (onWorker) {
            std::unique_ptr<QThread> worker(QThread::create(ask));
            worker->start();
            QVERIFY(worker->wait(30000));
        } else {
            ask();
        }
        QCOMPARE(answers[0], int(QDialog::Rejected));
        QCOMPARE(answers[1], 1);
        QCOMPARE(answers[2], -1);
        QCOMPARE(answers[3], 0);
    }

    void logEntriesAreAlsoQtMessagesIfNoUserIsPresent()
    {
        Log::EntryList log;
        QSignalSpy appended(&log, SIGNAL(appended()));
        log.appendMessage(Log::Error, 0, QStringLiteral("first\nsecond"));
        log.appendMessage(Log::Info, 3, QStringLiteral("detail"));
        QCOMPARE(log.count(), 3);
        QCOMPARE(appended.count(), 0);
        QCOMPARE(messages, QStringList({"first", "second"}));
    }

private:
    QtMessageHandler handler = nullptr;
};

QTEST_MAIN(UnattendedTest)
#include "UnattendedTest.moc"
