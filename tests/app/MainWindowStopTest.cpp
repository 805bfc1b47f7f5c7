// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>
#include <QtWidgets>

#include "app/Notice.h"
#include "app/OutcomeLine.h"
#include "app/StopButton.h"
#include "repo/RepoEditorDialog.h"
#include "repo/RepoEditorModel.h"
#include "services/HProgressBar.h"
#include "tests/app/EachAlone.h"
#include "tests/app/StandInWindow.h"
#include "tests/history/ShownHistory.h"
#include "widgets/ElidedLabel.h"

using namespace PackageTable;

// Tests of stopped operations, and of failing repositories that the user excludes from the session.
class MainWindowStopTest : public StandInWindow
{
    Q_OBJECT

private:
    StopButton* button() const { return shown->window->findChild<StopButton*>(); }
    // The text of the notice next to the menus; empty while the notice is hidden.
    QString notice() const;
    QString log() const;
    void compareStop(const std::function<void()>& stop);
    // Shows the window with an available package whose name begins with "hard". A comparison of its name or
    // its summary with the expression in the constant `hard` takes hours.
    void startWithHardPackage(PackageTable::StateFilter state);
    // Whether VYRE is comparing the records, and the Stop button is enabled.
    bool isComparing() const;
    // Calls act(), which must start a comparison, and presses Escape during this comparison.
    void stopByEscape(const std::function<void()>& act);
    const QString hard = "~(.*)(.*)\\1\\2x";
    // The repositories whose "session" box in the editor is not ticked.
    QStringList switchedOff() const;

private Q_SLOTS:
    void aClickOnTheStopButtonStopsARefresh();
    void escapeStopsARefresh();
    void theAltKeyOfTheStopButtonStopsARefresh();
    void aNoticeCountsTheMarksThatAreImpossibleAfterAStop();
    void marksAreKeptForTheNextRefreshIfTheCacheIsUnreadableAfterAStop();
    void aStopDuringTheFirstCollectionListsThePackagesFromTheCache();
    void closingTheWindowStopsTheRunningOperation();
    void theQuitCommandStopsTheRunningOperation();
    void closingTheWindowDuringAnUndoDoesNotOpenTheHistoryAgain();
    void theOutcomeOfAStoppedTransactionSaysWhetherKeysWereImported();
    void aNoticeSaysThatAnUndoWasStoppedBeforeItsListing();
    void aStoppedSearchDoesNotChangeTheListedRows();
    void aStoppedFilterDoesNotChangeTheListedRows();
    void stoppingTheSearchAfterAChangeOfTheStateBoxRestoresTheBox();
    void stoppingTheSearchAfterAChangeOfTheModeBoxRestoresTheBox();
    void theTableIsNotFilteredIfTheComparisonAfterARefreshIsStopped();
    void closingTheWindowStopsTheRunningSearch();
    void theStopButtonIsDisabledIfNoOperationRuns();
    void theToolTipOfTheStopButtonSaysWhetherTheTableKeepsItsPackages_data();
    void theToolTipOfTheStopButtonSaysWhetherTheTableKeepsItsPackages();
    void failingRepositoriesAreDisabledForTheSessionIfTheUserAgrees();
    void theYesToAllButtonDisablesAllFailingRepositoriesForTheSession();
    void noPackageIsListedIfTheUserKeepsAFailingRepository();
};

QString MainWindowStopTest::notice() const
{
    const auto* label = shown->window->findChild<Notice*>();
    return label != nullptr && label->isVisible() ? label->wholeText() : QString();
}

QString MainWindowStopTest::log() const
{
    shown->action("&Windows", "&Log")->trigger();
    const QString text = logWindow()->findChild<QTextEdit*>()->toPlainText();
    logWindow()->close();
    return text;
}

void MainWindowStopTest::compareStop(const std::function<void()>& stop)
{
    shown->start();
    shown->click("tool", ActionColumn);
    shown->filter("too");
    const AnsweringUser user(AnsweringUser::key(Qt::Key_Escape), AnsweringUser::EveryDialog);
    standIn->setHeld(true);
    standIn->forgetCalls();
    const Once once([this] { return button()->isEnabled() && standIn->calls("setupRepos") > 0; },
                    [&stop] { stop(); });
    shown->press("Re&fresh");
    QTRY_VERIFY(once.isDone());
    QTRY_VERIFY(shown->isReady());
    standIn->setHeld(false);
    QCOMPARE(user.titles(), QStringList());
    QCOMPARE(standIn->calls("setupCachedRepos"), 1);
    QCOMPARE(shown->listed(), QStringList{"tool"});
    QCOMPARE(shown->marks(), QStringList{"tool update"});
    QVERIFY(shown->button("&Apply Actions")->isEnabled());
    QCOMPARE(usable(), usableWhenReady);
    QCOMPARE(notice(), QString("Stopped. \"Refresh\" reads the repositories again."));
    const QString lines = log();
    QCOMPARE(lines.count("Stopped."), 1);
    QVERIFY2(!lines.contains("interrupted"), qPrintable(lines));
    QVERIFY(!button()->isEnabled());
    // The next refresh uses the network again, and discards the marks as usual.
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(shown->marks(), QStringList());
    QCOMPARE(standIn->calls("setupRepos"), 2);
}

void MainWindowStopTest::aClickOnTheStopButtonStopsARefresh()
{
    compareStop([this] { shown->click(button()); });
}

void MainWindowStopTest::escapeStopsARefresh()
{
    compareStop([this] { shown->key(Qt::Key_Escape); });
}

void MainWindowStopTest::theAltKeyOfTheStopButtonStopsARefresh()
{
    compareStop([this] { shown->key(Qt::Key_S, Qt::AltModifier); });
}

void MainWindowStopTest::aNoticeCountsTheMarksThatAreImpossibleAfterAStop()
{
    shown->start();
    shown->click("tool", ActionColumn);
    QCOMPARE(shown->marks(), QStringList{"tool update"});
    standIn->setHeld(true);
    standIn->forgetCalls();
    // Before the stop, the script has read a repository that no longer has the update.
    standIn->setPackages({}, {StandIn::package("tool", {{"version", "1"}, {"repoid", "@System"}})}, {});
    const Once once([this] { return button()->isEnabled() && standIn->calls("setupRepos") > 0; },
                    [this] { shown->click(button()); });
    shown->press("Re&fresh");
    QTRY_VERIFY(once.isDone());
    QTRY_VERIFY(shown->isReady());
    standIn->setHeld(false);
    QCOMPARE(standIn->calls("setupCachedRepos"), 1);
    QCOMPARE(shown->marks(), QStringList());
    const QString text = "Stopped. Removed marks that are no longer possible: 1";
    QCOMPARE(notice(), text);
    QVERIFY(log().contains(text));
}

void MainWindowStopTest::marksAreKeptForTheNextRefreshIfTheCacheIsUnreadableAfterAStop()
{
    shown->start();
    shown->click("tool", ActionColumn);
    standIn->setHeld(true);
    standIn->forgetCalls();
    const AnsweringUser user(AnsweringUser::key(Qt::Key_Escape), AnsweringUser::EveryDialog);
    const Once once([this] { return button()->isEnabled() && standIn->calls("setupRepos") > 0; },
                    [this] {
                        standIn->setUnreadable(true);
                        shown->click(button());
                    });
    shown->press("Re&fresh");
    QTRY_VERIFY(once.isDone());
    QTRY_VERIFY(shown->isReady());
    standIn->setHeld(false);
    standIn->setUnreadable(false);
    QCOMPARE(standIn->calls("setupCachedRepos"), 1);
    QCOMPARE(shown->marks(), QStringList());
    QVERIFY(!log().contains("Removed marks"));
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(shown->marks(), QStringList{"tool update"});
}

void MainWindowStopTest::aStopDuringTheFirstCollectionListsThePackagesFromTheCache()
{
    standIn->setHeld(true);
    QString tip;
    const Once once([this] { return button()->isEnabled() && standIn->calls("setupRepos") > 0; },
                    [this, &tip] {
                        tip = button()->toolTip();
                        shown->click(button());
                    });
    shown->start();
    QVERIFY2(tip.contains("VYRE then lists the installed packages"), qPrintable(tip));
    QCOMPARE(standIn->calls("setupCachedRepos"), 1);
    QCOMPARE(shown->listed(), (QStringList{"many", "tool"}));
}

void MainWindowStopTest::closingTheWindowStopsTheRunningOperation()
{
    shown->start();
    standIn->setHeld(true);
    standIn->forgetCalls();
    bool closed = true;
    const Once once([this] { return button()->isEnabled() && standIn->calls("setupRepos") > 0; },
                    [this, &closed] { closed = shown->window->close(); });
    QCOMPARE(runToTheEnd([this] { shown->press("Re&fresh"); }), 0);
    QVERIFY(once.isDone());
    QVERIFY(!closed); // the program first waits for the end of the operation, and then closes the window
    QVERIFY(!shown->window->isVisible());
    QCOMPARE(standIn->calls("setupCachedRepos"), 0);
}

void MainWindowStopTest::theQuitCommandStopsTheRunningOperation()
{
    shown->start();
    standIn->setHeld(true);
    standIn->forgetCalls();
    const Once once([this] { return button()->isEnabled() && standIn->calls("setupRepos") > 0; },
                    [this] {
                        shown->window->quit();
                        QVERIFY(shown->window->isVisible());
                    });
    QCOMPARE(runToTheEnd([this] { shown->press("Re&fresh"); }), 0);
    QVERIFY(!shown->window->isVisible());
}

void MainWindowStopTest::closingTheWindowDuringAnUndoDoesNotOpenTheHistoryAgain()
{
    shown->start();
    const AnsweringUser user(
        [this](QDialog* dialog) {
            auto* history = qobject_cast<HistoryDialog*>(dialog);
            if (history != nullptr && hasRead(*history)) {
                standIn->setHeld(true);
                buttonOf(history, "&Undo This")->click();
            }
        },
        AnsweringUser::EveryDialog);
    const Once once([this] { return button()->isEnabled() && standIn->calls("replay undo 3") > 0; },
                    [this] { shown->window->close(); });
    QCOMPARE(runToTheEnd([this] { shown->key(Qt::Key_H, Qt::ControlModifier); }), 0);
    QVERIFY(once.isDone());
    QVERIFY(!shown->window->isVisible());
    QTest::qWait(100); // if the history opened again, it would now use the back end, which has ended
    QCOMPARE(user.titles(), QStringList{"VYRE History"});
}

void MainWindowStopTest::theOutcomeOfAStoppedTransactionSaysWhetherKeysWereImported()
{
    shown->start();
    shown->click("tool", ActionColumn);
    standIn->setDownloading(true);
    for (const bool imported : {false, true}) {
        standIn->setOutcome({{"keysImported", imported}});
        standIn->forgetCalls();
        const Answers answers("OK");
        const Once once([this] { return button()->isEnabled() && standIn->calls("downloading") > 0; },
                        [this] { shown->click(button()); });
        shown->press("&Apply Actions");
        QTRY_VERIFY(once.isDone());
        QTRY_VERIFY(shown->isReady());
        const auto* line = shown->window->findChild<OutcomeLine*>();
        QVERIFY(line->isVisible());
        QCOMPARE(line->findChild<ElidedLabel*>()->wholeText(),
                 imported ? QString("Stopped: no packages were changed, but signing keys were imported")
                          : QString("Stopped: nothing was changed"));
        QCOMPARE(notice(), QString());
        QCOMPARE(shown->marks(), QStringList{"tool update"});
    }
    standIn->setDownloading(false);
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QVERIFY(!shown->window->findChild<OutcomeLine*>()->isVisible());
}

void MainWindowStopTest::aNoticeSaysThatAnUndoWasStoppedBeforeItsListing()
{
    shown->start();
    const AnsweringUser user(
        [this](QDialog* dialog) {
            auto* history = qobject_cast<HistoryDialog*>(dialog);
            const bool again = standIn->calls("replay undo 3") > 0;
            if (again) {
                standIn->setHeld(false); // the script reads the history again
            }
            if (history != nullptr && hasRead(*history)) {
                standIn->setHeld(!again);
                buttonOf(history, again ? "&Close" : "&Undo This")->click();
            }
        },
        AnsweringUser::EveryDialog);
    const Once once([this] { return button()->isEnabled() && standIn->calls("replay undo 3") > 0; },
                    [this] { shown->click(button()); });
    shown->key(Qt::Key_H, Qt::ControlModifier);
    QVERIFY(once.isDone());
    QCOMPARE(user.titles(), (QStringList{"VYRE History", "VYRE History"}));
    QCOMPARE(notice(), QString("Stopped. Nothing was changed."));
    QVERIFY(!shown->window->findChild<OutcomeLine*>()->isVisible());
}

void MainWindowStopTest::startWithHardPackage(PackageTable::StateFilter state)
{
    using S = StandIn;
    const QString text = "~" + QString("ab").repeated(300);
    standIn->setPackages({S::package("tool", {{"version", "2"}})}, {S::package("tool")},
                         {S::package("hard" + text, {{"summary", text}}), S::package("soft")});
    shown->start();
    shown->choose(shown->stateBox, state);
}

bool MainWindowStopTest::isComparing() const
{
    const auto bars = shown->window->findChildren<HProgressBar*>();
    return button()->isEnabled() && std::any_of(bars.begin(), bars.end(), [](const HProgressBar* bar) {
               return bar->text().startsWith("Comparing with the expression");
           });
}

void MainWindowStopTest::stopByEscape(const std::function<void()>& act)
{
    const Once once([this] { return isComparing(); }, [this] { shown->key(Qt::Key_Escape); });
    act();
    QTRY_VERIFY(once.isDone());
    QTRY_VERIFY(shown->isReady());
    QVERIFY(!button()->isEnabled());
    QCOMPARE(usable(), usableWhenReady);
    QCOMPARE(busyCursor(), QString("none"));
    QCOMPARE(log().count("Stopped."), 1);
}

void MainWindowStopTest::aStoppedSearchDoesNotChangeTheListedRows()
{
    startWithHardPackage(ViewInstallable);
    shown->choose(shown->modeBox, Search);
    shown->filter("soft");
    QCOMPARE(shown->listed(), QStringList{"soft"});
    shown->click("soft", ActionColumn);
    stopByEscape([this] { shown->filter(hard); });
    QCOMPARE(shown->listed(), QStringList{"soft"});
    QCOMPARE(shown->marks(), QStringList{"soft install"});
    QCOMPARE(shown->regexpEdit->text(), hard);
    QCOMPARE(shown->modeBox->currentIndex(), int(Search));
    QCOMPARE(notice(), QString("Stopped. The table shows the same rows as before."));
    shown->filter("tool|soft");
    QCOMPARE(shown->listed(), QStringList{"soft"});
    shown->choose(shown->stateBox, ViewAll);
    QCOMPARE(shown->sorted(), (QStringList{"soft", "tool"}));
}

void MainWindowStopTest::aStoppedFilterDoesNotChangeTheListedRows()
{
    startWithHardPackage(ViewInstallable);
    shown->filter("soft");
    stopByEscape([this] { shown->filter(hard); });
    QCOMPARE(shown->listed(), QStringList{"soft"});
    QCOMPARE(notice(), QString("Stopped. The table shows the same rows as before."));
    shown->filter("^s(o)ft.*\\1?");
    QCOMPARE(shown->listed(), QStringList{"soft"});
}

void MainWindowStopTest::stoppingTheSearchAfterAChangeOfTheStateBoxRestoresTheBox()
{
    startWithHardPackage(ViewUpdatable);
    shown->choose(shown->modeBox, Search);
    shown->filter(hard + "|tool");
    QCOMPARE(shown->listed(), QStringList{"tool"});
    stopByEscape([this] {
        shown->stateBox->setFocus();
        shown->key(Qt::Key_Down);
    });
    QCOMPARE(shown->stateBox->currentIndex(), int(ViewUpdatable));
    QCOMPARE(shown->listed(), QStringList{"tool"});
    QCOMPARE(notice(), QString("Stopped. The table shows the same rows as before."));
}

void MainWindowStopTest::stoppingTheSearchAfterAChangeOfTheModeBoxRestoresTheBox()
{
    using S = StandIn;
    standIn->setPackages({}, {}, {S::package("soft", {{"summary", "~" + QString("ab").repeated(300)}})});
    shown->start();
    shown->choose(shown->stateBox, ViewInstallable);
    shown->filter(hard + "|^soft ");
    QCOMPARE(shown->listed(), QStringList{"soft"});
    stopByEscape([this] {
        shown->modeBox->setFocus();
        shown->key(Qt::Key_Down);
    });
    QCOMPARE(shown->modeBox->currentIndex(), int(Filter));
    QVERIFY(shown->button("Filter")->isEnabled());
    QCOMPARE(shown->listed(), QStringList{"soft"});
}

void MainWindowStopTest::theTableIsNotFilteredIfTheComparisonAfterARefreshIsStopped()
{
    using S = StandIn;
    startWithHardPackage(ViewInstallable);
    standIn->setPackages({}, {}, {S::package("soft", {{"vendor", "needle"}}), S::package("other")});
    shown->press("Re&fresh");
    shown->choose(shown->modeBox, Search);
    shown->filter(hard + "|needle");
    QCOMPARE(shown->listed(), QStringList{"soft"});
    standIn->setPackages(
        {}, {}, {S::package("soft", {{"summary", "~" + QString("ab").repeated(300)}}), S::package("other")});
    const Once once([this] { return isComparing(); }, [this] { shown->key(Qt::Key_Escape); });
    shown->press("Re&fresh");
    QTRY_VERIFY(once.isDone());
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(shown->sorted(), (QStringList{"other", "soft"}));
    QCOMPARE(notice(), QString("Stopped. The expression does not filter the table."));
    shown->filter("oth");
    QCOMPARE(shown->listed(), QStringList{"other"});
}

void MainWindowStopTest::closingTheWindowStopsTheRunningSearch()
{
    startWithHardPackage(ViewInstallable);
    shown->choose(shown->modeBox, Search);
    bool closed = true;
    const Once once([this] { return isComparing(); }, [this, &closed] { closed = shown->window->close(); });
    QCOMPARE(runToTheEnd([this] { shown->filter(hard); }), 0);
    QVERIFY(once.isDone());
    QVERIFY(!closed);
    QVERIFY(!shown->window->isVisible());
}

void MainWindowStopTest::theStopButtonIsDisabledIfNoOperationRuns()
{
    shown->start();
    QVERIFY(!button()->isEnabled());
    QVERIFY(button()->toolTip().contains("No operation is running now."));
    // Escape, a key of the disabled button, has no effect.
    standIn->forgetCalls();
    shown->key(Qt::Key_Escape);
    QTest::qWait(20);
    QVERIFY(shown->isReady());
    QCOMPARE(standIn->calls(), QStringList());
}

void MainWindowStopTest::theToolTipOfTheStopButtonSaysWhetherTheTableKeepsItsPackages_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<bool>("keeps");
    QTest::newRow("dbcache") << "Clean dbcache" << true;
    QTest::newRow("metadata") << "Clean Metadata" << false;
    QTest::newRow("all") << "Clean All" << false;
}

void MainWindowStopTest::theToolTipOfTheStopButtonSaysWhetherTheTableKeepsItsPackages()
{
    QFETCH(QString, entry);
    QFETCH(bool, keeps);
    shown->start();
    QStringList tips;
    const auto stopWhileHeld = [this, &tips](const std::function<void()>& act) {
        standIn->setHeld(true);
        standIn->forgetCalls();
        const Once once([this] { return button()->isEnabled() && standIn->calls("setupRepos") > 0; },
                        [this, &tips] {
                            tips << button()->toolTip();
                            shown->click(button());
                        });
        act();
        QTRY_VERIFY(once.isDone());
        QTRY_VERIFY(shown->isReady());
        standIn->setHeld(false);
    };
    stopWhileHeld([this, &entry] { shown->action("&Cache", entry)->trigger(); });
    stopWhileHeld([this] { shown->press("Re&fresh"); });
    QCOMPARE(tips.count(), 2);
    const QString kept = "VYRE keeps the listed packages and all marks, unless a repository has changed.";
    const QString lost = "VYRE has deleted the metadata.";
    QCOMPARE(tips.at(0).contains(kept), keeps);
    QCOMPARE(tips.at(0).contains(lost), !keeps);
    // The second operation, a Refresh, has not deleted the metadata.
    QVERIFY2(tips.at(1).contains(kept), qPrintable(tips.at(1)));
}

QStringList MainWindowStopTest::switchedOff() const
{
    QStringList found;
    const Once once([] { return qobject_cast<RepoEditor::Dialog*>(QApplication::activeModalWidget()); },
                    [&found] {
                        auto* model = QApplication::activeModalWidget()->findChild<RepoEditor::Model*>();
                        for (int row = 0; row < model->rowCount(); ++row) {
                            if (!model->isTicked(model->index(row, RepoEditor::SessionColumn))) {
                                found << model->index(row, RepoEditor::IdentifierColumn).data().toString();
                            }
                        }
                        QApplication::activeModalWidget()->close();
                    });
    shown->action("&Repositories", "&Edit Configuration")->trigger();
    if (!once.isDone()) {
        qFatal("the editor does not open");
    }
    return found;
}

void MainWindowStopTest::failingRepositoriesAreDisabledForTheSessionIfTheUserAgrees()
{
    standIn->setRepos("[base]\nbaseurl=file:///base\n[extras]\nbaseurl=file:///extras\n");
    shown->start();
    standIn->setLacking(true);
    standIn->setComplaining(true);
    const AnsweringUser user(AnsweringUser::click("Yes"));
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(user.texts(),
             (QStringList{"The repository base cannot be read:\nbase is away\n\nGo on without it for this "
                          "session?",
                          "The repository extras cannot be read:\nextras is away\n\nGo on without it for "
                          "this session?"}));
    // The notice names the cause of the errors in the log.
    const auto* notice = shown->window->findChild<Notice*>();
    QVERIFY(notice->isVisible());
    QCOMPARE(notice->wholeText(), QString("2 repositories are left out: see the log (Ctrl+L)"));
    QCOMPARE(shown->listed(), (QStringList{"many", "tool"}));
    QCOMPARE(switchedOff(), (QStringList{"base", "extras"}));
    standIn->setLacking(false);
    standIn->setComplaining(false);
    standIn->forgetCalls();
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QVERIFY(standIn->calls().contains("disableRepo base"));
    QVERIFY(standIn->calls().contains("disableRepo extras"));
    QVERIFY(!notice->isVisible());
}

void MainWindowStopTest::theYesToAllButtonDisablesAllFailingRepositoriesForTheSession()
{
    standIn->setRepos("[base]\nbaseurl=file:///base\n[extras]\nbaseurl=file:///extras\n");
    shown->start();
    standIn->setLacking(true);
    const AnsweringUser user(AnsweringUser::click("Yes to &All"));
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(user.texts().size(), 1);
    QCOMPARE(shown->listed(), (QStringList{"many", "tool"}));
    QCOMPARE(switchedOff(), (QStringList{"base", "extras"}));
    QVERIFY(log().contains("VYRE does not use the repository extras in this session:"));
}

void MainWindowStopTest::noPackageIsListedIfTheUserKeepsAFailingRepository()
{
    standIn->setRepos("[base]\nbaseurl=file:///base\n[extras]\nbaseurl=file:///extras\n");
    shown->start();
    standIn->setLacking(true);
    const AnsweringUser user(AnsweringUser::clickIfThere("No"), AnsweringUser::EveryDialog);
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(user.titles(), (QStringList{"Repositories", "VYRE Yum Error"}));
    QVERIFY2(user.texts().last().contains("base is away\nUnable to initialize"),
             qPrintable(user.texts().last()));
    QCOMPARE(shown->listed(), QStringList());
    QCOMPARE(switchedOff(), QStringList());
}

int main(int argc, char** argv)
{
    return EachAlone::run<MainWindowStopTest>(argc, argv);
}

#include "MainWindowStopTest.moc"
