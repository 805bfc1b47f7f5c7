// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>
#include <QtWidgets>

#include "tests/app/EachAlone.h"
#include "tests/app/StandInWindow.h"
#include "tests/history/ShownHistory.h"
#include "tests/support/AnsweringUser.h"

using namespace PackageTable;

// Tests of the command that shows the history.
class HistoryCommandTest : public StandInWindow
{
    Q_OBJECT

private:
    // Opens the history window, and presses its button `command`. Then presses the button `answer` in each
    // dialog that opens. If the history window opens again, closes it. Returns the titles of all these
    // windows.
    QStringList replay(const QString& command, const QString& answer);

private Q_SLOTS:
    void undoingATransactionReadsThePackagesAgainAndKeepsTheMarks();
    void theHistoryWindowOpensAgainIfTheUserCancelsARedo();
    void noTransactionCanBeUndoneIfThePackagesCouldNotBeRead();
};

QStringList HistoryCommandTest::replay(const QString& command, const QString& answer)
{
    AnsweringUser user({}, AnsweringUser::EveryDialog);
    user.answer = [&user, command, answer](QDialog* dialog) {
        auto* history = qobject_cast<HistoryDialog*>(dialog);
        if (history == nullptr) {
            buttonOf(dialog, answer)->click();
        } else if (user.titles().count("VYRE History") > 1) {
            history->close();
        } else if (hasRead(*history)) {
            buttonOf(history, command)->click();
        }
    };
    shown->key(Qt::Key_H, Qt::ControlModifier);
    return user.titles();
}

void HistoryCommandTest::undoingATransactionReadsThePackagesAgainAndKeepsTheMarks()
{
    shown->start();
    shown->click("tool", ActionColumn);
    standIn->forgetCalls();
    QCOMPARE(replay("&Undo This", "OK"), (QStringList{"VYRE History", "Apply"}));
    QTRY_VERIFY(shown->isReady());
    QVERIFY2(standIn->calls().contains("replay undo 3"), qPrintable(standIn->calls().join(';')));
    QCOMPARE(standIn->calls("apply"), 0);
    QCOMPARE(standIn->calls("setupRepos"), 1);
    QCOMPARE(shown->marks(), QStringList{"tool update"});
    QVERIFY(shown->button("&Apply Actions")->isEnabled());
    QCOMPARE(usable(), usableWhenReady);
    QCOMPARE(busyCursor(), QString("none"));
}

void HistoryCommandTest::theHistoryWindowOpensAgainIfTheUserCancelsARedo()
{
    shown->start();
    standIn->forgetCalls();
    QCOMPARE(replay("&Redo", "Cancel"), (QStringList{"VYRE History", "Apply", "VYRE History"}));
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(standIn->calls("replay redo 3"), 1);
    QCOMPARE(standIn->calls("setupRepos"), 0);
    QCOMPARE(usable(), usableWhenReady);
}

void HistoryCommandTest::noTransactionCanBeUndoneIfThePackagesCouldNotBeRead()
{
    startWithoutPackages();
    QVERIFY(withHistory([this] { shown->key(Qt::Key_H, Qt::ControlModifier); },
                        [](HistoryDialog& history) {
                            const QString reason(
                                "VYRE cannot undo transactions, because it could not read the packages.");
                            QCOMPARE(buttonOf(&history, "&Undo This")->toolTip(), reason);
                            QVERIFY(!buttonOf(&history, "&Undo This")->isEnabled());
                        }));
}

int main(int argc, char** argv)
{
    return EachAlone::run<HistoryCommandTest>(argc, argv);
}

#include "HistoryCommandTest.moc"
