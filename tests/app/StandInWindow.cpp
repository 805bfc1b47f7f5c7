// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/app/StandInWindow.h"

using namespace PackageTable;

QSettings* StandInWindow::settings(QObject* owner)
{
    return new QSettings(QSettings::IniFormat, QSettings::UserScope, "vyre", "vyre", owner);
}

void StandInWindow::usual()
{
    using S = StandIn;
    const QJsonObject old{{"version", "1"}, {"repoid", "@System"}};
    const QJsonObject next{{"version", "2"}, {"repoid", "updates"}, {"summary", "needle"}};
    standIn->setPackages({S::package("tool", next), S::package("many", next)},
                         {S::package("tool", old), S::package("many", old), S::package("shell", old)},
                         {S::package("editor", {{"files", QJsonArray{"/usr/bin/needle"}}}), S::package("lib"),
                          S::package("lib", {{"arch", "i686"}})},
                         {S::group("Games")});
}

void StandInWindow::startWithoutPackages()
{
    standIn->setUnreadable(true);
    {
        const Answers answers("OK");
        shown->window->show();
        QTRY_VERIFY_WITH_TIMEOUT(shown->isReady(), 20000);
    }
    shown->window->activateWindow();
    QTRY_VERIFY(QApplication::activeWindow() == shown->window);
}

void StandInWindow::listEverything() const
{
    shown->choose(shown->stateBox, ViewAll);
    shown->click(shown->groupsBox, QPoint(8, shown->groupsBox->height() / 2));
    QCOMPARE(shown->sorted(), (QStringList{"Games", "editor", "lib", "lib", "many", "shell", "tool"}));
}

QStringList StandInWindow::usable() const
{
    QStringList found;
    for (const QAction* action : shown->window->menuBar()->actions()) {
        if (action->menu()->isEnabled()) {
            found << action->text();
        }
        for (const QAction* entry : action->menu()->actions()) {
            if (entry->isEnabled() && !entry->isSeparator()) {
                found << entry->text();
            }
        }
    }
    if (shown->area->isEnabled()) {
        found << "table";
    }
    return found;
}

bool StandInWindow::inTheMiddle(const std::function<void()>& collect, const std::function<void()>& meanwhile)
{
    standIn->setHeld(true);
    standIn->forgetCalls();
    const Once once([this] { return standIn->calls("setupRepos") + standIn->calls("collectFileLists") > 0; },
                    [this, meanwhile] {
                        meanwhile();
                        standIn->setHeld(false);
                    });
    collect();
    return QTest::qWaitFor([&once] { return once.isDone(); }, 20000);
}

QColor StandInWindow::backgroundOfLabel() const
{
    return shown->label->grab().toImage().pixelColor(shown->label->width() / 2, 3);
}

QMessageBox* StandInWindow::aboutBox()
{
    for (QWidget* each : QApplication::topLevelWidgets()) {
        auto* box = qobject_cast<QMessageBox*>(each);
        if (box != nullptr && box->windowTitle() == "About" && box->isVisible()) {
            return box;
        }
    }
    return nullptr;
}

Log::Window* StandInWindow::logWindow()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* window = qobject_cast<Log::Window*>(widget)) {
            return window;
        }
    }
    return nullptr;
}

bool StandInWindow::logIsVisible()
{
    const Log::Window* window = logWindow();
    return window != nullptr && window->isVisible();
}

QString StandInWindow::busyCursor()
{
    const QCursor* cursor = QApplication::overrideCursor();
    return cursor == nullptr ? "none" : cursor->shape() == Qt::BusyCursor ? "busy" : "other";
}

void StandInWindow::compareQuit(const std::function<void()>& quit)
{
    shown->start();
    shown->click("tool", ActionColumn);
    shown->key(Qt::Key_L, Qt::ControlModifier);
    QVERIFY(logIsVisible());
    QVERIFY(QTest::qWaitForWindowActive(logWindow()));
    shown->window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(shown->window));
    standIn->forgetCalls();
    // Quitting destroys the records. A paint event after that must find an empty model.
    QList<int> rows;
    connect(shown->model, &QAbstractItemModel::modelReset, this,
            [this, &rows] { rows << shown->model->rowCount(); });
    QCOMPARE(runToTheEnd(quit), 0);
    QCOMPARE(rows, QList<int>{0});
    QVERIFY(!shown->window->isVisible());
    QVERIFY(!logIsVisible());
    QCOMPARE(shown->model->rowCount(), 0);
    QCOMPARE(standIn->calls("apply"), 0);
    // After the program has ended, these calls must have no effect.
    shown->window->stateChanged(-1);
    shown->window->quit();
    QTest::qWait(50);
}

void StandInWindow::initTestCase()
{
    standIn = std::make_unique<StandIn>();
    usual();
    shown = std::make_unique<ShownWindow>();
}
