// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>
#include <QtWidgets>

#include "app/Notice.h"
#include "app/VersionLocksCommand.h"
#include "tests/app/EachAlone.h"
#include "tests/app/StandInWindow.h"
#include "tests/support/Menus.h"

using namespace PackageTable;

// Tests of the commands that lock packages at their version.
class VersionLocksCommandTest : public StandInWindow
{
    Q_OBJECT

private Q_SLOTS:
    void lockingAPackageReadsThePackagesAgainAndKeepsTheMarksOfOtherPackages();
    void controlsAreDisabledWhileAWorkerLocksVersions();
};

void VersionLocksCommandTest::lockingAPackageReadsThePackagesAgainAndKeepsTheMarksOfOtherPackages()
{
    standIn->setVersionLocks({});
    shown->start();
    shown->click("tool", ActionColumn);
    shown->click("many", ActionColumn);
    QCOMPARE(shown->marks(), (QStringList{"many update", "tool update"}));
    standIn->forgetCalls();
    // Like the real package manager, the script no longer offers the update of the locked package.
    const QJsonObject old{{"version", "1"}, {"repoid", "@System"}};
    standIn->setVersionLocks({{"tool", "tool-0:1-1.*"}});
    standIn->setPackages({StandIn::package("many", {{"version", "2"}})},
                         {StandIn::package("tool", old), StandIn::package("many", old)}, {});
    const auto choose = [this](const QString& name) {
        QVERIFY(withMenu(
            [this, name] {
                const QRect cell =
                    shown->view->visualRect(shown->proxy->index(shown->listed().indexOf(name), ActionColumn));
                QTest::mouseClick(shown->window->windowHandle(), Qt::RightButton, {},
                                  shown->view->viewport()->mapTo(shown->window, cell.center()));
            },
            [](QMenu& menu) { QTest::keyClick(&menu, Qt::Key_L); }));
    };
    choose("tool");
    QTRY_COMPARE(shown->listed(), QStringList{"many"});
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(shown->marks(), QStringList{"many update"});
    QCOMPARE(shown->window->findChild<Notice*>()->wholeText(),
             QString("Removed marks that a version lock does not permit: 1"));
    QCOMPARE(standIn->calls("lockVersions tool"), 1);
    QCOMPARE(standIn->calls("setupRepos"), 1);
    QCOMPARE(standIn->calls("reset"), 0);

    // The row that was current before the choice is still current after the collection.
    shown->choose(shown->stateBox, ViewAll);
    choose("tool");
    QTRY_COMPARE(standIn->calls("setupRepos"), 2);
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(standIn->calls("unlockVersions tool"), 1);
    QCOMPARE(shown->view->currentIndex().sibling(shown->view->currentIndex().row(), NameColumn).data(),
             QVariant("tool"));
    QCOMPARE(shown->marks(), QStringList{"many update"});

    // A mark of another package is lost for another reason.
    standIn->setPackages({}, {StandIn::package("tool", old), StandIn::package("many", old)}, {});
    choose("tool");
    QTRY_COMPARE(standIn->calls("setupRepos"), 3);
    QTRY_VERIFY(shown->isReady());
    QCOMPARE(shown->marks(), QStringList());
    QCOMPARE(shown->window->findChild<Notice*>()->wholeText(),
             QString("Removed marks that are no longer possible: 1"));

    // If locking fails, VYRE reads the packages again too.
    standIn->setFailing(true);
    standIn->setVersionLocks({});
    shown->press("Re&fresh");
    {
        const Answers answers("Close");
        choose("tool");
        QTRY_VERIFY(shown->isReady());
        QVERIFY2(answers.all().contains("it cannot be locked"), qPrintable(answers.all()));
    }
    QCOMPARE(standIn->calls("setupRepos"), 5);
}

void VersionLocksCommandTest::controlsAreDisabledWhileAWorkerLocksVersions()
{
    standIn->setVersionLocks({});
    shown->start();
    QStringList seen;
    standIn->setHeld(true);
    const QString name = shown->model->entry(0)->name;
    const Once once([this, name] { return standIn->calls("lockVersions " + name) > 0; },
                    [this, &seen] {
                        seen = usable();
                        standIn->setHeld(false);
                    });
    shown->window->findChild<VersionLocksCommand*>()->run({0}, true);
    QVERIFY(once.isDone());
    QCOMPARE(seen, usableWhileBusy);
    QCOMPARE(usable(), usableWhenReady);
}

int main(int argc, char** argv)
{
    return EachAlone::run<VersionLocksCommandTest>(argc, argv);
}

#include "VersionLocksCommandTest.moc"
