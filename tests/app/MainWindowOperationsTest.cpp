// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>
#include <QtWidgets>

#include "app/Notice.h"
#include "tests/app/EachAlone.h"
#include "tests/app/StandInWindow.h"
#include "tests/packagetable/Described.h"

using namespace PackageTable;

// Tests of long operations: the controls that are enabled during an operation, and the table after it.
class MainWindowOperationsTest : public StandInWindow
{
    Q_OBJECT

private:
    void compareReadAgain(Mode mode, const QString& expression, const QStringList& before);
    // Applies an update, and calls meanwhile() while the script changes the system.
    void whileTheSystemIsChanged(const std::function<void()>& meanwhile);
    void compareClean(const QString& entry, const char* method);

private Q_SLOTS:
    void controlsAreDisabledWhileAWorkerRuns();
    void theQuitKeyAndTheRefreshButtonDoNothingWhileAWorkerRuns();
    void theLogCanBeOpenedWhileAWorkerRuns();
    void theWindowCannotBeClosedWhileTheSystemIsChanged();
    void theQuitCommandIsRefusedWhileTheSystemIsChanged();
    void severalRefusedAttemptsToCloseTheWindowCauseOneLogEntry();
    void theTableIsEnabledIfAnOperationEndsWhileTheAboutWindowIsOpen();
    void theFilterStaysInEffectWhileThePackagesAreReadAgain() { compareReadAgain(Filter, "too", {"tool"}); }
    void theSearchStaysInEffectWhileThePackagesAreReadAgain()
    {
        compareReadAgain(Search, "needle", {"editor", "many", "tool"});
    }
    void anOperationDoesNotMoveTheFocusFromTheTableOrTheExpression();
    void theRefreshButtonCollectsThePackagesAgain();
    void theRefreshButtonClearsTheActionsAndTheWarningAboutThem();
    void cleaningTheDbcacheCollectsThePackagesAgain() { compareClean("Clean dbcache", "cleanDbcache"); }
    void cleaningTheMetadataCollectsThePackagesAgain() { compareClean("Clean Metadata", "cleanMetadata"); }
    void cleaningAllCachedDataCollectsThePackagesAgain() { compareClean("Clean All", "cleanAll"); }
    void cleaningTheCachedPackagesDoesNotChangeTheTable();
    void theWarningsAboutTheConfigurationAreLoggedOnlyOnce();
    void theToolTipsOfTheCleaningCommandsContainTheCacheDirectory();
    void theResizeButtonFitsTheColumnsToTheirContents();
    void anApplyChangesTheSystemAndReadsThePackagesAgain();
    void theCollectionAfterAnApplyUsesTheCredentialsThatTheUserHasTyped();
    void theMarksAreKeptIfTheUserCancelsAnApply();
    void theTableIsKeptIfAnApplyFailsBeforeItsFirstChange();
    void thePackagesAreReadAgainIfAnApplyFailsAfterAChange();
    void theMarksThatAFailedApplyHasNotCarriedOutAreKept();
    void theCollectionAfterAFailedCollectionRestoresTheMarks();
    void marksThatAreStillPossibleAreKeptIfAnotherProgramHasChangedTheSystem();
    void theUserIsAskedForCredentialsIfATransactionAddsARepository();
};

void MainWindowOperationsTest::controlsAreDisabledWhileAWorkerRuns()
{
    shown->start();
    QCOMPARE(usable(), usableWhenReady);
    QStringList seen;
    QVERIFY(inTheMiddle([this] { shown->press("Re&fresh"); },
                        [this, &seen] { seen << busyCursor() << usable() << shown->listed(); }));
    QCOMPARE(seen, QStringList{"busy"} + usableWhileBusy);
    QCOMPARE(usable(), usableWhenReady);
    QCOMPARE(busyCursor(), QString("none"));
}

void MainWindowOperationsTest::theQuitKeyAndTheRefreshButtonDoNothingWhileAWorkerRuns()
{
    shown->start();
    QVERIFY(inTheMiddle([this] { shown->press("Re&fresh"); },
                        [this] {
                            shown->key(Qt::Key_Q, Qt::ControlModifier);
                            shown->click(shown->button("Re&fresh"));
                        }));
    QTRY_VERIFY(shown->isReady());
    QTest::qWait(50);
    QVERIFY(shown->window->isVisible());
    QCOMPARE(standIn->calls("setupRepos"), 1);
}

void MainWindowOperationsTest::theLogCanBeOpenedWhileAWorkerRuns()
{
    shown->start();
    bool opened = false;
    QVERIFY(inTheMiddle([this] { shown->press("Re&fresh"); },
                        [this, &opened] {
                            shown->key(Qt::Key_L, Qt::ControlModifier);
                            opened = logIsVisible();
                        }));
    QVERIFY(opened);
    QTRY_VERIFY(shown->isReady());
}

void MainWindowOperationsTest::whileTheSystemIsChanged(const std::function<void()>& meanwhile)
{
    shown->start();
    shown->click("tool", ActionColumn);
    const Answers answers("OK");
    standIn->setHeld(true);
    const Once once([this] { return shown->window->isChangingSystem(); },
                    [this, meanwhile] {
                        meanwhile();
                        QTest::qWait(50);
                        QVERIFY(shown->window->isVisible());
                        QVERIFY(shown->window->isChangingSystem());
                        standIn->setHeld(false);
                    });
    shown->press("&Apply Actions");
    QTRY_VERIFY(once.isDone());
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(answers.titles(), QStringList{"Apply"});
    QCOMPARE(shown->listed(), (QStringList{"many", "tool"}));
}

void MainWindowOperationsTest::theWindowCannotBeClosedWhileTheSystemIsChanged()
{
    whileTheSystemIsChanged([this] {
        QVERIFY(!shown->window->close());
        const auto* notice = shown->window->findChild<Notice*>();
        QVERIFY(notice != nullptr && notice->isVisible());
        QCOMPARE(notice->wholeText(), QString("VYRE cannot close while it changes packages"));
    });
    // After the end of the change, the notice is not true any more, so it disappears at once.
    QVERIFY(!shown->window->findChild<Notice*>()->isVisible());
}

void MainWindowOperationsTest::theQuitCommandIsRefusedWhileTheSystemIsChanged()
{
    whileTheSystemIsChanged([this] { shown->window->quit(); });
    QCOMPARE(runToTheEnd([this] { shown->window->quit(); }), 0);
    QVERIFY(!shown->window->isVisible());
}

void MainWindowOperationsTest::severalRefusedAttemptsToCloseTheWindowCauseOneLogEntry()
{
    const auto refuse = [this] {
        for (int i = 0; i < 3; ++i) {
            QVERIFY(!shown->window->close());
        }
    };
    const auto logged = [this] {
        shown->choose("&Windows", "&Log");
        const QString text = logWindow()->findChild<QTextEdit*>()->toPlainText();
        logWindow()->close();
        return text.count("VYRE cannot close while it changes packages\n");
    };
    whileTheSystemIsChanged(refuse);
    QCOMPARE(logged(), 1);
    whileTheSystemIsChanged(refuse);
    QCOMPARE(logged(), 2);
}

void MainWindowOperationsTest::theTableIsEnabledIfAnOperationEndsWhileTheAboutWindowIsOpen()
{
    shown->start();
    QVERIFY(
        inTheMiddle([this] { shown->press("Re&fresh"); },
                    [this] { QTimer::singleShot(0, shown->window, [this] { shown->key(Qt::Key_F1); }); }));
    QTRY_VERIFY(aboutBox() != nullptr);
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(shown->listed(), (QStringList{"many", "tool"}));
    QVERIFY(aboutBox() != nullptr);
    // The user can filter the table while the About window is open.
    shown->filter("too");
    QCOMPARE(shown->listed(), QStringList{"tool"});
    QTest::keyClick(aboutBox(), Qt::Key_Escape);
    QVERIFY(aboutBox() == nullptr);
}

void MainWindowOperationsTest::compareReadAgain(Mode mode, const QString& expression,
                                                const QStringList& before)
{
    shown->start();
    shown->choose(shown->stateBox, ViewAll);
    shown->choose(shown->modeBox, mode);
    shown->filter(expression);
    QCOMPARE(shown->sorted(), before);
    using S = StandIn;
    // The next collection finds packages that differ from the listed packages.
    standIn->setPackages({}, {S::package("shell"), S::package("games")},
                         {S::package("zoo"), S::package("tooth", {{"summary", "needle"}}), S::package("one"),
                          S::package("two"), S::package("three"), S::package("four")});
    const QStringList after{"tooth"};
    QStringList wrong;
    QStringList told;
    QTimer watch;
    connect(&watch, &QTimer::timeout, [&] {
        const QStringList listed = shown->sorted();
        if (listed.isEmpty()) {
            told << shown->view->accessibleDescription();
        } else if (listed != before && listed != after) {
            wrong << listed.join(" ");
        }
    });
    watch.start(1);
    QVERIFY(inTheMiddle([this] { shown->press("Re&fresh"); },
                        [this] {
                            QTest::qWait(20);
                            QCOMPARE(shown->listed(), QStringList());
                        }));
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(shown->listed(), after);
    QCOMPARE(wrong, QStringList());
    told.removeDuplicates();
    QCOMPARE(told, QStringList{"Reading the packages..."});
}

void MainWindowOperationsTest::anOperationDoesNotMoveTheFocusFromTheTableOrTheExpression()
{
    shown->start();
    QVERIFY(shown->view->hasFocus());
    shown->choose(shown->modeBox, Search);
    QVERIFY(shown->modeBox->hasFocus()); // a change of the mode starts a search, but does not move the focus
    shown->filter("needle");
    QVERIFY(shown->regexpEdit->hasFocus());
    standIn->forgetCalls();
    shown->key(Qt::Key_F, Qt::AltModifier);
    QTRY_COMPARE(standIn->calls("setupRepos"), 1);
    QTRY_VERIFY(shown->isReady());
    QVERIFY(shown->regexpEdit->hasFocus());
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QVERIFY(shown->view->hasFocus());
    shown->stateBox->setFocus();
    shown->choose("&Cache", "Clean All");
    QTRY_VERIFY(shown->isReady());
    QVERIFY(shown->view->hasFocus());
    QVERIFY(!shown->button("&Describe")->isEnabled());
    // After the apply, no marks are left, so the button that had the focus is disabled.
    shown->filter(".*");
    shown->click("tool", ActionColumn);
    {
        const Answers answers("OK");
        shown->press("&Apply Actions");
        QTRY_VERIFY(shown->isReady());
    }
    QVERIFY(!shown->button("&Apply Actions")->isEnabled());
    QTRY_VERIFY(shown->view->hasFocus()); // the window gets the focus back after the dialog
    shown->filter(".*");
    shown->click(shown->listed().first(), ActionColumn);
    shown->button("&Apply Actions")->setFocus();
    {
        const Answers answers("Cancel");
        shown->key(Qt::Key_Space);
        QTRY_COMPARE(answers.seen.size(), 1);
        QTRY_VERIFY(shown->isReady());
    }
    QTRY_VERIFY(shown->view->hasFocus()); // the window gets the focus back after the dialog
}

void MainWindowOperationsTest::theRefreshButtonCollectsThePackagesAgain()
{
    shown->start();
    standIn->forgetCalls();
    standIn->setPackages({StandIn::package("newer", {{"version", "2"}})}, {StandIn::package("newer")}, {});
    shown->press("Re&fresh");
    QCOMPARE(shown->listed(), QStringList{"newer"});
    QCOMPARE(standIn->calls().mid(0, 1), QStringList{"reset"});
    QCOMPARE(standIn->calls("setupRepos"), 1);
}

void MainWindowOperationsTest::theRefreshButtonClearsTheActionsAndTheWarningAboutThem()
{
    shown->start();
    shown->click("tool", ActionColumn);
    shown->filter("many");
    QCOMPARE(shown->label->text(), QString("Unlisted Actions"));
    shown->press("Re&fresh");
    QCOMPARE(shown->marks(), QStringList());
    QCOMPARE(shown->label->text(), QString());
    QVERIFY(!shown->button("&Apply Actions")->isEnabled());
}

void MainWindowOperationsTest::compareClean(const QString& entry, const char* method)
{
    shown->start();
    standIn->forgetCalls();
    standIn->setPackages({StandIn::package("newer", {{"version", "2"}})}, {StandIn::package("newer")}, {});
    shown->choose("&Cache", entry);
    QTRY_COMPARE(shown->listed(), QStringList{"newer"});
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(standIn->calls().mid(0, 2), (QStringList{method, "reset"}));
    QCOMPARE(standIn->calls("setupRepos"), 1);
    QCOMPARE(usable(), usableWhenReady);
}

void MainWindowOperationsTest::cleaningTheCachedPackagesDoesNotChangeTheTable()
{
    shown->start();
    shown->click("tool", ActionColumn);
    standIn->forgetCalls();
    standIn->setPackages({}, {}, {});
    QSignalSpy reset(shown->model, SIGNAL(modelReset()));
    shown->choose("&Cache", "Clean Packages");
    QTRY_COMPARE(standIn->calls(), QStringList{"cleanPackages"});
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(reset.count(), 0);
    QCOMPARE(shown->listed(), (QStringList{"many", "tool"}));
    QCOMPARE(shown->marks(), QStringList{"tool update"});
    QCOMPARE(usable(), usableWhenReady);
}

void MainWindowOperationsTest::theWarningsAboutTheConfigurationAreLoggedOnlyOnce()
{
    QFile file(standIn->root() + "/etc/yum.repos.d/doubted.repo");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[doubted]\nbaseurl=file:///nowhere\nenabled=no\n");
    file.close();
    shown->start();
    const auto dialog = [this] {
        const Once once([] { return qobject_cast<QDialog*>(QApplication::activeModalWidget()) != nullptr; },
                        [] { QApplication::activeModalWidget()->close(); });
        shown->action("&Repositories", "&Edit Configuration")->trigger();
        QVERIFY(once.isDone());
    };
    dialog();
    dialog();
    shown->action("&Windows", "&Log")->trigger();
    QVERIFY(logIsVisible());
    const QString log = logWindow()->findChild<QTextEdit*>()->toPlainText();
    QCOMPARE(log.count("doubted.repo, section [doubted]: VYRE reads \"enabled=no\" as enabled"), 1);
}

void MainWindowOperationsTest::theToolTipsOfTheCleaningCommandsContainTheCacheDirectory()
{
    shown->start();
    const auto toolTip = [this](const char* text) { return shown->action("&Cache", text)->toolTip(); };
    const QString place = standIn->root() + "/var/cache/standin";
    QCOMPARE(toolTip("Clean dbcache"),
             QString("Clean RPM dbcache files (solv/solvx databases constructed from the metadata) cached "
                     "locally in ") +
                 place);
    QCOMPARE(toolTip("Clean Packages"), QString("Clean RPM packages cached locally in ") + place +
                                            "\n(useful for recovering disk space)");
    QCOMPARE(toolTip("Clean Metadata"),
             QString("Clean metadata (mostly XML or compressed XML) cached locally in ") + place);
    QCOMPARE(toolTip("Clean All"), QString("Clean all data cached locally in ") + place);
}

void MainWindowOperationsTest::theResizeButtonFitsTheColumnsToTheirContents()
{
    shown->start();
    const int width = shown->view->columnWidth(NameColumn);
    shown->view->setColumnWidth(NameColumn, 7);
    shown->filter("many");
    shown->press("Re&size");
    QCOMPARE(shown->view->columnWidth(NameColumn), width);
    QCOMPARE(shown->listed(), QStringList{"many"});
}

void MainWindowOperationsTest::anApplyChangesTheSystemAndReadsThePackagesAgain()
{
    shown->start();
    shown->choose(shown->stateBox, ViewAll);
    shown->click("tool", ActionColumn);
    shown->click("editor", ActionColumn);
    shown->click("shell", ActionColumn);
    shown->filter("tool");
    QCOMPARE(shown->label->text(), QString("Unlisted Actions"));
    standIn->forgetCalls();
    standIn->setPackages({}, {StandIn::package("tool", {{"version", "2"}}), StandIn::package("editor")}, {});
    const Answers answers("OK");
    shown->press("&Apply Actions");
    QTRY_COMPARE(answers.titles(), QStringList{"Apply"});
    QTRY_VERIFY(shown->isReady());
    QVERIFY2(standIn->calls().contains("apply editor tool shell"), qPrintable(standIn->calls().join(';')));
    QCOMPARE(standIn->calls("setupRepos"), 1);
    QCOMPARE(shown->marks(), QStringList());
    QCOMPARE(shown->label->text(), QString());
    QVERIFY(!shown->button("&Apply Actions")->isEnabled());
    shown->filter("");
    QCOMPARE(shown->sorted(), (QStringList{"editor", "tool"}));
    QCOMPARE(usable(), usableWhenReady);
    QCOMPARE(busyCursor(), QString("none"));
}

void MainWindowOperationsTest::theCollectionAfterAnApplyUsesTheCredentialsThatTheUserHasTyped()
{
    shown->start();
    shown->choose(shown->stateBox, ViewAll);
    shown->click("tool", ActionColumn);
    // The applied update installs a repository file that lacks credentials.
    standIn->setRepos("[base]\nname=Base\nbaseurl=http://h/vantor?u=&p=&path=/x\n");
    standIn->forgetCalls();
    bool asked = false;
    const AnsweringUser user(
        [&asked](QDialog* dialog) {
            // The dialog would lose a click that arrives before it has the focus.
            if (!dialog->isActiveWindow()) {
                return;
            }
            for (QLineEdit* field : dialog->findChildren<QLineEdit*>()) {
                asked = true;
                QTest::keyClicks(field, "secret");
            }
            QTest::mouseClick(buttonOf(dialog, "OK"), Qt::LeftButton);
        },
        AnsweringUser::EveryDialog);
    shown->press("&Apply Actions");
    QTRY_VERIFY(asked);
    QTRY_VERIFY(shown->isReady());
    // Between the apply and the collection, the script reads the new repository file.
    const QStringList calls = standIn->calls();
    const QByteArray context = calls.join(';').toUtf8();
    QVERIFY2(calls.indexOf("apply") >= 0 && calls.indexOf("apply") < calls.indexOf("reset"), context);
    QVERIFY2(calls.indexOf("reset") < calls.indexOf("setupRepos"), context);
    shown->action("&Windows", "&Log")->trigger();
    QVERIFY(logIsVisible());
    const QString log = logWindow()->findChild<QTextEdit*>()->toPlainText();
    QCOMPARE(log.count("standin.repo contains a password. From now on, only the file's owner"), 1);
    QVERIFY(!log.contains("secret"));
}

void MainWindowOperationsTest::theMarksAreKeptIfTheUserCancelsAnApply()
{
    shown->start();
    shown->click("tool", ActionColumn);
    shown->filter("many");
    standIn->forgetCalls();
    const Answers answers("Cancel");
    shown->press("&Apply Actions");
    QTRY_COMPARE(answers.titles(), QStringList{"Apply"});
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(standIn->calls("setupRepos"), 0);
    QCOMPARE(shown->marks(), QStringList{"tool update"});
    QCOMPARE(shown->label->text(), QString("Unlisted Actions"));
    QVERIFY(shown->button("&Apply Actions")->isEnabled());
    QCOMPARE(usable(), usableWhenReady);
}

void MainWindowOperationsTest::theTableIsKeptIfAnApplyFailsBeforeItsFirstChange()
{
    shown->start();
    shown->click("tool", ActionColumn);
    standIn->setFailing(true);
    standIn->forgetCalls();
    const Answers answers("OK");
    shown->press("&Apply Actions");
    QTRY_COMPARE(answers.titles(), (QStringList{"Apply", "VYRE Yum Error"}));
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(answers.texts().last(), QString("Unable to apply changes: Runtime Error:\n\ntoo early"));
    QCOMPARE(standIn->calls("setupRepos"), 0);
    QCOMPARE(shown->marks(), QStringList{"tool update"});
    QVERIFY(shown->button("&Apply Actions")->isEnabled());
}

void MainWindowOperationsTest::thePackagesAreReadAgainIfAnApplyFailsAfterAChange()
{
    shown->start();
    shown->click("tool", ActionColumn);
    standIn->setBreaking(true);
    standIn->forgetCalls();
    standIn->setPackages({}, {}, {StandIn::package("tool")});
    const Answers answers("OK");
    shown->press("&Apply Actions");
    QTRY_VERIFY(answers.titles().size() >= 2);
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(answers.all(), QString("Apply, VYRE Yum Error: " + answers.texts().first() +
                                    " | Unable to apply changes: Runtime Error:\n\nhalf way"));
    QCOMPARE(standIn->calls("setupRepos"), 1);
    QCOMPARE(shown->listed(), QStringList());
    QCOMPARE(shown->marks(), QStringList());
    QVERIFY(!shown->button("&Apply Actions")->isEnabled());
}

void MainWindowOperationsTest::theMarksThatAFailedApplyHasNotCarriedOutAreKept()
{
    shown->start();
    shown->choose(shown->stateBox, ViewAll);
    shown->click("tool", ActionColumn);
    shown->click("editor", ActionColumn);
    QCOMPARE(shown->marks(), (QStringList{"editor install", "tool update"}));
    // The apply fails after it has installed the editor.
    const QJsonObject next{{"version", "2"}};
    standIn->setPackages({StandIn::package("tool", next)},
                         {StandIn::package("tool"), StandIn::package("editor")}, {});
    standIn->setBreaking(true);
    const Answers answers("OK");
    shown->press("&Apply Actions");
    QTRY_VERIFY(answers.titles().size() >= 2);
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(shown->marks(), QStringList{"tool update"});
    QVERIFY(shown->button("&Apply Actions")->isEnabled());
}

void MainWindowOperationsTest::theCollectionAfterAFailedCollectionRestoresTheMarks()
{
    shown->start();
    shown->click("tool", ActionColumn);
    standIn->setUnreadable(true);
    const Answers answers("OK");
    shown->press("Re&fresh");
    QTRY_VERIFY(!answers.titles().isEmpty());
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(shown->listed(), QStringList());
    standIn->setUnreadable(false);
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(shown->marks(), QStringList{"tool update"});
    // A Refresh after a successful collection removes the marks.
    shown->press("Re&fresh");
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(shown->marks(), QStringList());
}

void MainWindowOperationsTest::marksThatAreStillPossibleAreKeptIfAnotherProgramHasChangedTheSystem()
{
    shown->start();
    shown->choose(shown->stateBox, ViewAll);
    shown->click("tool", ActionColumn);
    shown->click("editor", ActionColumn);
    shown->click("shell", ActionColumn);
    // Before the apply fails, another program installs the editor and removes the shell.
    const QJsonObject next{{"version", "2"}};
    standIn->setPackages({StandIn::package("tool", next)},
                         {StandIn::package("tool"), StandIn::package("editor")}, {StandIn::package("shell")});
    standIn->setOutdated(true);
    standIn->forgetCalls();
    const Answers answers("Close");
    shown->press("&Apply Actions");
    QTRY_COMPARE(answers.titles(), QStringList{"VYRE Yum Error"});
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(standIn->calls("setupRepos"), 1);
    QCOMPARE(shown->sorted(), (QStringList{"editor", "shell", "tool"}));
    QCOMPARE(shown->marks(), QStringList{"tool update"});
    QVERIFY(shown->button("&Apply Actions")->isEnabled());
}

void MainWindowOperationsTest::theUserIsAskedForCredentialsIfATransactionAddsARepository()
{
    shown->start();
    shown->click("tool", ActionColumn);
    // The applied update installs a repository file that lacks credentials.
    standIn->setRepos("[base]\nbaseurl=http://h/vantor?u=&p=&path=/x\n");
    const Answers answers("OK");
    shown->press("&Apply Actions");
    QTRY_COMPARE(answers.titles(), (QStringList{"Apply", "VYRE Authentication"}));
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(shown->marks(), QStringList());
}

int main(int argc, char** argv)
{
    return EachAlone::run<MainWindowOperationsTest>(argc, argv);
}

#include "MainWindowOperationsTest.moc"
