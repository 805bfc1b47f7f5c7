// SPDX-License-Identifier: GPL-2.0-or-later

#include "history/HistoryDialog.h"

#include <functional>
#include <memory>

#include <unistd.h>

#include <QtTest>
#include <QtWidgets>

#include "services/HProgressBar.h"
#include "tests/support/AnsweringUser.h"
#include "tests/support/Buttons.h"
#include "tests/support/StandIn.h"
#include "yumio/YumIO.h"

// Tests of the history window. A stand-in replaces the script, so no package manager is needed.
class HistoryDialogTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void theListShowsAllTransactionsWithTheNewestFirst();
    void theDetailsPaneShowsTheCurrentTransactionAsPlainText();
    void theUserCanSelectAnotherTransactionWhileDetailsAreRead();
    void theExpressionFindsTransactionsByTheirPackages();
    void eachCommandButtonReturnsItsCommandAndTheCurrentTransaction_data();
    void eachCommandButtonReturnsItsCommandAndTheCurrentTransaction();
    void theUserCanSelectOnlyOneTransaction();
    void theUndoAllSinceButtonIsDisabledIfTheNewestTransactionIsCurrent();
    void theCommandButtonsAreDisabledAndShowTheReasonIfTheScriptRefusesTheCommands();
    void aMessageIsShownIfTheHistoryCannotBeRead();
    void theWindowClosesOnlyAfterTheWorkerHasEnded();
    void closingTheWindowStopsTheWorker();
    void everyControlCanBeReachedByKeys();
    void openingTheWindowAgainKeepsTheCurrentTransaction();
    void anOlderTransactionStaysCurrentEvenIfNewTransactionsAreAdded();
    void aNewTransactionBecomesCurrentIfTheNewestTransactionWasCurrent();
    void theCommandButtonsAreDisabledUntilTheWindowHasReadTheHistoryAgain();
    void fiveThousandTransactionsAreListed();
    void theWindowRespondsWhileADifficultExpressionIsCompared();
    void theWindowCanBeClosedDuringAComparison();

private:
    QTableView* table() const { return dialog->findChild<QTableView*>(); }
    QLineEdit* edit() const { return dialog->findChild<QLineEdit*>(); }
    QPushButton* button(const QString& text) const { return buttonOf(dialog.get(), text); }
    QString details() const { return dialog->findChild<QTextEdit*>()->toPlainText(); }
    static QString detailsOf(int number) { return QString("Details of %1\n<b>not bold</b>").arg(number); }
    QStringList numbers() const;
    void show();
    // Calls `act` while a worker reads the details of a transaction. The stand-in holds the worker back until
    // `act` returns.
    void whileWorking(const std::function<void()>& act);
    void compareRefusal(const QString& reason);
    // Opens the window with 5,000 transactions and types an expression whose comparison takes minutes.
    void typeDifficultExpression();
    bool isComparing() const;
    void go(int row) const { table()->setCurrentIndex(table()->model()->index(row, 0)); }

    std::unique_ptr<StandIn> standIn;
    std::unique_ptr<QWidget> window;
    std::unique_ptr<YumIO> yumIO;
    std::unique_ptr<HistoryDialog> dialog;
};

void HistoryDialogTest::initTestCase()
{
    QCOMPARE(int(geteuid()), 0);
    standIn = std::make_unique<StandIn>();
    standIn->setPackages({}, {}, {});
    window = std::make_unique<QWidget>();
    auto* total = new HProgressBar(window.get());
    auto* item = new HProgressBar(window.get());
    yumIO = std::make_unique<YumIO>();
    yumIO->setup(window.get(), total, item);
    QVERIFY(yumIO->initialize());
}

void HistoryDialogTest::cleanupTestCase()
{
    yumIO.reset();
    window.reset();
}

void HistoryDialogTest::init()
{
    standIn->forgetCalls();
    dialog = std::make_unique<HistoryDialog>(yumIO.get(), nullptr);
}

void HistoryDialogTest::cleanup()
{
    standIn->setHeld(false);
    standIn->setHistoryBroken(false);
    standIn->setHistoryLong(false);
    standIn->setReplayRefused(false);
    QTRY_VERIFY(!yumIO->isWorking());
    dialog.reset();
}

QStringList HistoryDialogTest::numbers() const
{
    QStringList found;
    for (int row = 0; row < table()->model()->rowCount(); ++row) {
        found << table()->model()->index(row, 0).data().toString();
    }
    return found;
}

void HistoryDialogTest::show()
{
    const int before = standIn->calls("transactions");
    dialog->show();
    QVERIFY(QTest::qWaitForWindowActive(dialog.get(), 30000));
    QTRY_COMPARE(standIn->calls("transactions"), before + 1);
    QTRY_VERIFY(!yumIO->isWorking());
    QTRY_VERIFY(!numbers().isEmpty());
    QTRY_VERIFY(!details().isEmpty());
    QTRY_VERIFY(!yumIO->isWorking());
}

void HistoryDialogTest::theListShowsAllTransactionsWithTheNewestFirst()
{
    show();
    QCOMPARE(dialog->windowTitle(), QString("VYRE History"));
    QCOMPARE(numbers(), (QStringList{"3", "2", "1"}));
    QCOMPARE(standIn->calls("transactions"), 1);
    QCOMPARE(table()->accessibleName(), QString("Transactions"));
}

void HistoryDialogTest::theDetailsPaneShowsTheCurrentTransactionAsPlainText()
{
    show();
    QCOMPARE(details(), detailsOf(3));
    go(2);
    QTRY_COMPARE(details(), detailsOf(1));
    // Since the window opened, it has read the details of transaction 3 only once.
    go(0);
    QCOMPARE(details(), detailsOf(3));
    QCOMPARE(standIn->calls("describeTransaction 3"), 1);
}

void HistoryDialogTest::whileWorking(const std::function<void()>& act)
{
    // While the stand-in holds the worker, a nested event loop runs. The test function continues only after
    // this loop, so a timer calls act() inside the loop.
    standIn->setHeld(true);
    QTimer timer;
    bool done = false;
    connect(&timer, &QTimer::timeout, this, [&] {
        if (!done && yumIO->isWorking()) {
            done = true;
            act();
            standIn->setHeld(false);
        }
    });
    timer.start(20);
    QTRY_VERIFY(done && !yumIO->isWorking());
}

void HistoryDialogTest::theUserCanSelectAnotherTransactionWhileDetailsAreRead()
{
    show();
    go(1);
    QStringList seen;
    whileWorking([this, &seen] {
        go(0);
        seen << details();
        go(2);
        seen << details();
    });
    QCOMPARE(seen, (QStringList{detailsOf(3), QString()}));
    QTRY_COMPARE(details(), detailsOf(1));
    // While the worker read the details of transaction 2, the user selected a different transaction. The
    // window has nevertheless kept the details of transaction 2.
    go(1);
    QCOMPARE(details(), detailsOf(2));
}

void HistoryDialogTest::theExpressionFindsTransactionsByTheirPackages()
{
    show();
    QTest::keyClicks(edit(), "many");
    QCOMPARE(numbers(), QStringList{"2"});
    QTRY_COMPARE(details(), detailsOf(2));
    QVERIFY(button("Undo All &Since")->isEnabled());
    edit()->setText("nothing like this");
    QCOMPARE(numbers(), QStringList());
    QCOMPARE(details(), QString());
    for (const char* text : {"&Undo This", "Undo All &Since", "&Redo"}) {
        QVERIFY(!button(text)->isEnabled());
    }
}

void HistoryDialogTest::eachCommandButtonReturnsItsCommandAndTheCurrentTransaction_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("kind");

    QTest::newRow("undo") << "&Undo This" << int(Qt::Key_U) << int(Replay::UndoThis);
    QTest::newRow("undo all since") << "Undo All &Since" << int(Qt::Key_S) << int(Replay::UndoAllSince);
    QTest::newRow("redo") << "&Redo" << int(Qt::Key_R) << int(Replay::Redo);
}

void HistoryDialogTest::eachCommandButtonReturnsItsCommandAndTheCurrentTransaction()
{
    QFETCH(QString, text);
    QFETCH(int, key);
    QFETCH(int, kind);
    show();
    go(1);
    QTRY_COMPARE(details(), detailsOf(2));
    QVERIFY(button(text)->isEnabled());
    QSignalSpy spy(dialog.get(), SIGNAL(finished(int)));
    QTest::keyClick(dialog.get(), static_cast<Qt::Key>(key), Qt::AltModifier);
    QTRY_COMPARE(spy.count(), 1);
    QCOMPARE(spy.first().first().toInt(), int(QDialog::Accepted));
    QCOMPARE(int(dialog->wantedReplay()), kind);
    QCOMPARE(dialog->wantedNumber(), qint64(2));
    QVERIFY(!dialog->isVisible());
}

void HistoryDialogTest::theUserCanSelectOnlyOneTransaction()
{
    show();
    const auto selected = [this] {
        QList<int> rows;
        for (const QModelIndex& index : table()->selectionModel()->selectedRows()) {
            rows << index.row();
        }
        return rows;
    };
    QTest::keyClick(table(), Qt::Key_Down, Qt::ShiftModifier);
    QCOMPARE(table()->currentIndex().row(), 1);
    QCOMPARE(selected(), QList<int>{1});
    QTest::keyClick(table(), Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(selected(), QList<int>{1});
}

void HistoryDialogTest::theUndoAllSinceButtonIsDisabledIfTheNewestTransactionIsCurrent()
{
    show();
    QVERIFY(!button("Undo All &Since")->isEnabled());
    QCOMPARE(button("Undo All &Since")->toolTip(), QString("No transaction is newer than this transaction."));
    QVERIFY(button("&Undo This")->isEnabled());
    QVERIFY(button("&Redo")->isEnabled());
}

void HistoryDialogTest::compareRefusal(const QString& reason)
{
    go(1);
    for (const char* text : {"&Undo This", "Undo All &Since", "&Redo"}) {
        QVERIFY(!button(text)->isEnabled());
        QCOMPARE(button(text)->toolTip(), reason);
    }
    QStringList shown;
    for (const QLabel* label : dialog->findChildren<QLabel*>()) {
        if (label->isVisible()) {
            shown << label->text();
        }
    }
    QVERIFY2(shown.contains(reason), qPrintable(shown.join('\n')));
}

void HistoryDialogTest::theCommandButtonsAreDisabledAndShowTheReasonIfTheScriptRefusesTheCommands()
{
    standIn->setReplayRefused(true);
    show();
    compareRefusal("Not with this version.");
    dialog->reject();
    standIn->setReplayRefused(false);
    dialog->setRefusal("Not now.");
    show();
    compareRefusal("Not now.");
    dialog->reject();
    dialog->setRefusal(QString());
    show();
    go(1);
    QVERIFY(button("&Redo")->isEnabled());
}

void HistoryDialogTest::aMessageIsShownIfTheHistoryCannotBeRead()
{
    standIn->setHistoryBroken(true);
    QString message;
    const AnsweringUser user(
        [this, &message](QDialog* box) {
            if (box != dialog.get()) {
                for (const QLabel* label : box->findChildren<QLabel*>()) {
                    message += label->text();
                }
                box->reject();
            }
        },
        AnsweringUser::EveryDialog);
    dialog->show();
    QTRY_VERIFY(message.contains("the history is broken"));
    QTRY_COMPARE(table()->accessibleDescription(),
                 QString("The history could not be read.\n"
                         "To see the reason, close this window and open the Log window (Ctrl+L)."));
    QVERIFY(!button("&Redo")->isEnabled());
    dialog->reject();
    QVERIFY(!dialog->isVisible());
}

void HistoryDialogTest::theWindowClosesOnlyAfterTheWorkerHasEnded()
{
    show();
    go(1);
    bool open = false;
    whileWorking([this, &open] {
        QTest::keyClick(dialog.get(), Qt::Key_Escape);
        open = dialog->isVisible();
    });
    QVERIFY(open);
    QTRY_VERIFY(!dialog->isVisible());
    QCOMPARE(dialog->result(), int(QDialog::Rejected));
    // If the user chooses a command, the window also stays open until the worker has ended.
    show();
    go(2);
    whileWorking([this, &open] {
        button("&Redo")->click();
        open = dialog->isVisible();
    });
    QVERIFY(open);
    QTRY_VERIFY(!dialog->isVisible());
    QCOMPARE(dialog->result(), int(QDialog::Accepted));
    QCOMPARE(dialog->wantedNumber(), qint64(1));
}

void HistoryDialogTest::closingTheWindowStopsTheWorker()
{
    show();
    // The worker does not end by itself.
    standIn->setHeld(true);
    bool closed = false;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] {
        if (!closed && yumIO->isWorking()) {
            closed = true;
            QTest::keyClick(dialog.get(), Qt::Key_Escape);
        }
    });
    timer.start(20);
    go(1);
    QTRY_VERIFY(closed && !yumIO->isWorking());
    QTRY_VERIFY(!dialog->isVisible());
    standIn->setHeld(false);
    show(); // the window reads the history again
    QCOMPARE(numbers(), (QStringList{"3", "2", "1"}));
}

void HistoryDialogTest::everyControlCanBeReachedByKeys()
{
    show();
    QTRY_VERIFY(table()->hasFocus());
    // If the list or the expression field has the focus, Enter presses no button.
    QTest::keyClick(table(), Qt::Key_Return);
    QVERIFY(dialog->isVisible());
    QTest::keyClick(dialog.get(), Qt::Key_F, Qt::AltModifier);
    QTRY_VERIFY(edit()->hasFocus());
    QTest::keyClick(edit(), Qt::Key_Return);
    QVERIFY(dialog->isVisible());
    QTest::keyClick(edit(), Qt::Key_Tab);
    QTRY_VERIFY(table()->hasFocus());
    QTest::keyClick(table(), Qt::Key_Tab);
    QTRY_VERIFY(dialog->findChild<QTextEdit*>()->hasFocus());
    QTest::keyClick(dialog->focusWidget(), Qt::Key_Tab);
    QTRY_VERIFY(button("&Undo This")->hasFocus());
    for (int i = 0; i < 4 && !edit()->hasFocus(); ++i) {
        QTest::keyClick(dialog->focusWidget(), Qt::Key_Tab);
    }
    QTRY_VERIFY(edit()->hasFocus()); // after the last control, Tab returns to the first control
    QTest::keyClick(dialog.get(), Qt::Key_C, Qt::AltModifier);
    QTRY_VERIFY(!dialog->isVisible());
    // Whenever the window opens, the list gets the focus.
    show();
    QCOMPARE(dialog->focusWidget(), table());
}

void HistoryDialogTest::openingTheWindowAgainKeepsTheCurrentTransaction()
{
    show();
    go(1);
    QTRY_COMPARE(details(), detailsOf(2));
    dialog->reject();
    standIn->forgetCalls();
    show();
    QTRY_COMPARE(standIn->calls("transactions"), 1);
    // The window reads the details again, because they may have changed since it was last open.
    QTRY_COMPARE(standIn->calls("describeTransaction 2"), 1);
    QCOMPARE(table()->currentIndex().row(), 1);
}

void HistoryDialogTest::anOlderTransactionStaysCurrentEvenIfNewTransactionsAreAdded()
{
    show();
    go(1);
    QTRY_COMPARE(details(), detailsOf(2));
    dialog->reject();
    standIn->setHistoryLong(true); // many transactions are now newer than the current one
    show();
    QCOMPARE(table()->currentIndex().siblingAtColumn(0).data().toString(), QString("2"));
    QCOMPARE(details(), detailsOf(2));
    QTest::keyClick(dialog.get(), Qt::Key_U, Qt::AltModifier);
    QTRY_VERIFY(!dialog->isVisible());
    QCOMPARE(dialog->wantedNumber(), qint64(2));
    // If the history no longer contains the transaction, the newest transaction becomes current.
    show();
    go(1);
    QTRY_COMPARE(details(), detailsOf(4999));
    dialog->reject();
    standIn->setHistoryLong(false);
    show();
    QCOMPARE(table()->currentIndex().row(), 0);
    QCOMPARE(details(), detailsOf(3));
}

void HistoryDialogTest::aNewTransactionBecomesCurrentIfTheNewestTransactionWasCurrent()
{
    show();
    QCOMPARE(details(), detailsOf(3));
    dialog->reject();
    standIn->setHistoryLong(true);
    show();
    QCOMPARE(table()->currentIndex().row(), 0);
    QCOMPARE(details(), detailsOf(5000));
}

void HistoryDialogTest::theCommandButtonsAreDisabledUntilTheWindowHasReadTheHistoryAgain()
{
    show();
    go(1);
    QTRY_COMPARE(details(), detailsOf(2));
    dialog->reject();
    QSignalSpy finished(dialog.get(), SIGNAL(finished(int)));
    QStringList enabled;
    const auto tryCommands = [this, &enabled] {
        for (const char* text : {"&Undo This", "Undo All &Since", "&Redo"}) {
            if (button(text)->isEnabled()) {
                enabled << text;
            }
        }
        QTest::keyClick(dialog.get(), Qt::Key_U, Qt::AltModifier);
    };
    dialog->show();
    tryCommands();
    QStringList listed = numbers();
    whileWorking([&] {
        tryCommands();
        listed += numbers();
    });
    QCOMPARE(enabled, QStringList());
    // The window does not list the transactions that it listed when it was last open. Those transactions may
    // be out of date.
    QCOMPARE(listed, QStringList());
    QTRY_COMPARE(details(), detailsOf(2));
    QCOMPARE(finished.count(), 0);
    QVERIFY(dialog->isVisible());
    QTest::keyClick(dialog.get(), Qt::Key_U, Qt::AltModifier);
    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(dialog->wantedNumber(), qint64(2));
}

void HistoryDialogTest::fiveThousandTransactionsAreListed()
{
    standIn->setHistoryLong(true);
    show();
    QTRY_COMPARE(table()->model()->rowCount(), 5000);
    QTest::keyClicks(edit(), "p4999$");
    QCOMPARE(numbers(), QStringList{"4999"});
    QTRY_COMPARE(details(), detailsOf(4999));
    // The script has described only the few transactions that were current, not all of them.
    QVERIFY(standIn->calls("describeTransaction") < 10);
}

bool HistoryDialogTest::isComparing() const
{
    for (const QLabel* label : dialog->findChildren<QLabel*>()) {
        if (label->isVisible() && label->text() == "Comparing the rows (Esc stops)") {
            return true;
        }
    }
    return false;
}

void HistoryDialogTest::typeDifficultExpression()
{
    standIn->setHistoryLong(true);
    show();
    QTest::keyClicks(edit(), "(.*)(.*)(.*)\\3\\2\\1[!]");
    QTRY_VERIFY(isComparing());
}

void HistoryDialogTest::theWindowRespondsWhileADifficultExpressionIsCompared()
{
    typeDifficultExpression();
    bool answered = false;
    QTimer::singleShot(0, [&answered] { answered = true; });
    QTRY_VERIFY(answered);
    QVERIFY(isComparing());
    // A newer expression replaces the expression of the running comparison.
    edit()->selectAll();
    QTest::keyClicks(edit(), "p4999$");
    QTRY_COMPARE(numbers(), QStringList{"4999"});
    QVERIFY(!isComparing());
    QTRY_COMPARE(details(), detailsOf(4999));
    // Escape stops the comparison, and only the next Escape closes the window.
    edit()->selectAll();
    QTest::keyClicks(edit(), "(.*)(.*)(.*)\\3\\2\\1[!]");
    QTRY_VERIFY(isComparing());
    QTest::keyClick(edit(), Qt::Key_Escape);
    QVERIFY(!isComparing());
    QVERIFY(dialog->isVisible());
    QVERIFY(!numbers().isEmpty());
    QTRY_VERIFY(!details().isEmpty());
    QTRY_VERIFY(!yumIO->isWorking());
    QTest::keyClick(edit(), Qt::Key_Escape);
    QVERIFY(!dialog->isVisible());
}

void HistoryDialogTest::theWindowCanBeClosedDuringAComparison()
{
    typeDifficultExpression();
    QTRY_VERIFY(!yumIO->isWorking());
    button("&Close")->click();
    QTRY_VERIFY(!dialog->isVisible());
    show(); // the window shows its transactions again
    QVERIFY(!isComparing());
    QTRY_COMPARE(numbers().size(), 5000);
    // Deleting the window also stops the comparison.
    edit()->selectAll();
    QTest::keyClicks(edit(), "(.*)(.*)(.*)\\3\\2\\1[!]");
    QTRY_VERIFY(isComparing());
    QTRY_VERIFY(!yumIO->isWorking());
    dialog.reset();
}

QTEST_MAIN(HistoryDialogTest)
#include "HistoryDialogTest.moc"
