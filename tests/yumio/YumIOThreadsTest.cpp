// SPDX-License-Identifier: GPL-2.0-or-later

// Tests of how the graphical thread waits for a worker.

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <memory>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QPushButton>
#include <QSemaphore>
#include <QtTest>

#include "python/CPython.h"
#include "services/YumIODialogs.h"
#include "tests/yumio/BackEnd.h"
#include "widgets/Expression.h"
#include "yumio/WorkerThreads.h"

namespace {

// A worker that runs a function. The loop ends after the function, or earlier if the function calls
// endLoop().
class Worker : public QThread
{
public:
    Worker(YumIOProbe& theYumIO, QEventLoop& eventLoop, std::function<void()> function)
        : yumIO(theYumIO), loop(eventLoop), work(std::move(function))
    {
    }

    void endLoop()
    {
        loop.exit(0);
        ended = true;
    }

protected:
    void run() override
    {
        yumIO.blocker.block();
        work();
        if (!ended) {
            loop.exit(0);
        }
    }

private:
    YumIOProbe& yumIO;
    QEventLoop& loop;
    std::function<void()> work;
    bool ended = false;
};

// Calls a function whenever the watched widget is enabled or disabled.
class ChangeWatch : public QObject
{
public:
    explicit ChangeWatch(std::function<void()> function) : look(std::move(function)) {}
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::EnabledChange) {
            look();
        }
        return false;
    }

private:
    std::function<void()> look;
};

bool childSignalIsBlocked()
{
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    return sigismember(&mask, SIGCHLD) == 1;
}

} // namespace

Q_DECLARE_METATYPE(std::function<QThread*(YumIOProbe&, QEventLoop&)>)

class YumIOThreadsTest : public QObject
{
    Q_OBJECT

private:
    YumIOProbe& yumIO() { return backEnd->yumIO; }

    // Runs the function on a worker, as the back end runs its operations.
    void work(const std::function<void()>& function)
    {
        QEventLoop loop;
        Worker worker(yumIO(), loop, function);
        yumIO().execWorkThread(loop, worker);
        QVERIFY(worker.isFinished());
    }

    // For a worker: runs the given function on the graphical thread, but does not wait for it.
    static void later(const std::function<void()>& function)
    {
        QMetaObject::invokeMethod(qApp, function, Qt::QueuedConnection);
    }

    // The traces that an operation leaves: the number of log entries, and the number of records of the
    // package "tool".
    QList<int> traces()
    {
        const bool hasTool = yumIO().records.findPackage("tool", QString()) != nullptr;
        return {backEnd->log().count(), hasTool ? 1 : 0};
    }

    QScopedPointer<BackEnd> backEnd;

private Q_SLOTS:
    void initTestCase()
    {
        backEnd.reset(new BackEnd);
        QVERIFY(backEnd->start());
        backEnd->answers.take();
    }

    void cleanupTestCase() { backEnd.reset(); }

    void init() { backEnd->renew(); }

    void theWindowIsUsableAfterAnOperationThatFailsAtOnce()
    {
        QPushButton button("Press", &backEnd->window);
        button.setGeometry(10, 60, 100, 30);
        QSignalSpy clicks(&button, SIGNAL(clicked()));
        backEnd->window.resize(300, 200);
        backEnd->window.show();
        QVERIFY(QTest::qWaitForWindowActive(&backEnd->window));

        yumIO().locked = false;
        backEnd->run("it.raises['lock'] = dnf.exceptions.LockError('held')");
        QVERIFY(!backEnd->collect());
        QCOMPARE(backEnd->answers.takeTexts("VYRE Yum Error"), QStringList("Unable to obtain yum lock"));
        QVERIFY(!yumIO().isWorking());

        QTest::mouseClick(&button, Qt::LeftButton);
        QCOMPARE(clicks.count(), 1);
        backEnd->run("it.raises.clear()");
        QVERIFY(backEnd->collect());
        backEnd->window.hide();
    }

    void fiftyConsecutiveOperationsSucceed()
    {
        for (int i = 0; i < 50; ++i) {
            QVERIFY(backEnd->collect());
            yumIO().clearEntries();
        }
    }

    void aWorkerBeginsOnlyInsideTheEventLoop()
    {
        QEventLoop loop;
        bool running = false;
        bool working = false;
        Worker worker(yumIO(), loop, [&] {
            running = loop.isRunning();
            working = yumIO().isWorking();
        });
        yumIO().execWorkThread(loop, worker);
        QVERIFY(running);
        QVERIFY(working);
        QVERIFY(!yumIO().isWorking());
    }

    void theTimersOfTheWindowRunWhileAWorkerRuns()
    {
        QSemaphore ticks;
        QTimer timer;
        connect(&timer, &QTimer::timeout, [&ticks] { ticks.release(); });
        timer.start(1);
        bool ticked = false;
        work([&] { ticked = ticks.tryAcquire(5, 60000); });
        QVERIFY(ticked);
    }

    void theGraphicalThreadReleasesTheInterpreterLockForAWorker()
    {
        QCOMPARE(PyGILState_Check(), 1);
        bool workerTookIt = false;
        int graphicalHasIt = -1;
        work([&] {
            Python::PyGILStateWrapper lock(true);
            workerTookIt = yumIO().python().py("taken = True") == 0;
            QSemaphore seen;
            later([&] {
                graphicalHasIt = PyGILState_Check();
                seen.release();
            });
            seen.acquire();
        });
        QVERIFY(workerTookIt);
        QCOMPARE(graphicalHasIt, 0);
        QCOMPARE(PyGILState_Check(), 1);
    }

    void theWindowGetsEventsThatAWorkerPostsAfterEndingTheLoop()
    {
        QStringList delivered;
        QEventLoop loop;
        Worker* current = nullptr;
        Worker worker(yumIO(), loop, [&] {
            later([&] { delivered.append("before the end"); });
            current->endLoop();
            // Gives the loop time to end. If the loop takes longer, the test is less strict, but still valid.
            QThread::msleep(50);
            later([&] { delivered.append("after the end"); });
        });
        current = &worker;
        yumIO().execWorkThread(loop, worker);
        QCOMPARE(delivered, QStringList({"before the end", "after the end"}));
    }

    void theLastProgressReportOfAWorkerIsDelivered()
    {
        QVERIFY(backEnd->collect());
        // The last event of the operation makes the bars idle.
        QVERIFY(!backEnd->total.isEnabled());
        QVERIFY(!backEnd->item.isEnabled());
        QCOMPARE(backEnd->total.maximum(), 1);
    }

    void theMainLoopHandlesAClickThatArrivesWhenTheOperationEnds()
    {
        QPushButton button("Press", &backEnd->window);
        button.setGeometry(10, 60, 100, 30);
        QSignalSpy clicks(&button, SIGNAL(clicked()));
        backEnd->window.resize(300, 200);
        backEnd->window.show();
        QVERIFY(QTest::qWaitForWindowActive(&backEnd->window));
        const QPoint centre = button.mapToGlobal(button.rect().center());
        const QByteArray click =
            QString("xdotool mousemove --sync %1 %2 click 1").arg(centre.x()).arg(centre.y()).toLocal8Bit();

        int status = -1;
        const int outerLevel = QThread::currentThread()->loopLevel();
        QEventLoop loop;
        Worker* current = nullptr;
        Worker worker(yumIO(), loop, [&] {
            current->endLoop();
            // Wait until the loop has ended, so that a posted event runs outside of the loop.
            QSemaphore outside;
            for (int i = 0; i < 1000 && !outside.tryAcquire(1, 10); ++i) {
                later([&] {
                    if (QThread::currentThread()->loopLevel() == outerLevel) {
                        outside.release();
                    }
                });
            }
            status = std::system(click.constData());
            QThread::msleep(200); // gives the click time to arrive
            QSemaphore last;      // after this, nothing refers to "outside"
            later([&] { last.release(); });
            last.tryAcquire(1, 10000);
        });
        current = &worker;
        yumIO().execWorkThread(loop, worker);
        QCOMPARE(status, 0);
        QCOMPARE(clicks.count(), 0);
        // Qt handles deferred input together with the next event of the display.
        QCOMPARE(std::system("xdotool mousemove_relative 1 1"), 0);
        QTRY_COMPARE_WITH_TIMEOUT(clicks.count(), 1, 30000);
        backEnd->window.hide();
    }

    void onlyTheGraphicalThreadBlocksTheChildSignalWhileAWorkerRuns()
    {
        QVERIFY(!childSignalIsBlocked());
        bool workers = true;
        bool graphical = false;
        work([&] {
            workers = childSignalIsBlocked();
            QSemaphore seen;
            later([&] {
                graphical = childSignalIsBlocked();
                seen.release();
            });
            seen.acquire();
        });
        QVERIFY(!workers);
        QVERIFY(graphical);
        QVERIFY(!childSignalIsBlocked());
    }

    void theSignalMaskIsRestoredAfterAnOperation()
    {
        sigset_t child;
        sigemptyset(&child);
        sigaddset(&child, SIGCHLD);
        pthread_sigmask(SIG_BLOCK, &child, nullptr);
        work([] {});
        const bool blocked = childSignalIsBlocked();
        pthread_sigmask(SIG_UNBLOCK, &child, nullptr);
        QVERIFY(blocked);
    }

    void theDefaultHandlerOfSIGINTIsSetAfterAnOperation()
    {
        yumIO().python().setEnablePythonSIGINTHandler(true);
        struct sigaction action;
        sigaction(SIGINT, nullptr, &action);
        QVERIFY(action.sa_handler != SIG_DFL);
        QVERIFY(backEnd->collect());
        sigaction(SIGINT, nullptr, &action);
        QVERIFY(action.sa_handler == SIG_DFL);
    }

    void afterAnOperationAnInterruptEndsTheProgram()
    {
        yumIO().python().setEnablePythonSIGINTHandler(true);
        QVERIFY(backEnd->collect());
        const pid_t child = fork();
        if (child == 0) {
            raise(SIGINT);
            _exit(0);
        }
        int status = 0;
        QCOMPARE(waitpid(child, &status, 0), child);
        QVERIFY(WIFSIGNALED(status));
        QCOMPARE(WTERMSIG(status), SIGINT);
    }

    void theProgramEndsOnlyAfterItsWorkerHasEnded_data()
    {
        QTest::addColumn<int>("way");
        QTest::newRow("quit") << 0;
        QTest::newRow("end of the session") << 1;
        QTest::newRow("last window closed") << 2;
    }

    void theProgramEndsOnlyAfterItsWorkerHasEnded()
    {
        QFETCH(int, way);
        const auto endProgram = [this, way] {
            if (way == 0) {
                qApp->quit();
            } else if (way == 1) {
                // At the end of a session, the session manager sends this event.
                QEvent quit(QEvent::Quit);
                QCoreApplication::sendEvent(qApp, &quit);
            } else {
                backEnd->window.show();
                backEnd->window.close();
            }
        };
        bool ended = false;
        bool endedBefore = false;
        int answer = -1;
        int conflict = -1;
        QTimer::singleShot(0, qApp, [&] {
            work([&] {
                QSemaphore quit;
                later([&] {
                    endProgram();
                    quit.release();
                });
                quit.acquire();
                // If the program did not delay its end, the loop would end within this time.
                QThread::msleep(100);
                {
                    // No user can answer any more, so the answer is "No".
                    YumIODialogsUser user(yumIO().dialogs, &backEnd->window);
                    answer = yumIO().dialogs->confirm("Apply", "Really?", "OK", "Cancel");
                    conflict = yumIO().dialogs->critical("Apply", "Really?", "Yes", "No", QString(), 1, 1);
                }
                ended = true;
            });
            endedBefore = ended;
            qApp->quit();
        });
        qApp->exec();
        QVERIFY(endedBefore);
        QCOMPARE(answer, 0);
        QCOMPARE(conflict, 1);
        // The refused dialogs do not affect the next operation.
        QVERIFY(backEnd->collect());
    }

    void anErrorOfAWorkerIsShownInADialog()
    {
        yumIO().locked = false;
        backEnd->run("it.raises['setupRepos'] = dnf.exceptions.RepoError('no mirrors')");
        QVERIFY(!backEnd->collect());
        const QList<ShownDialog> shown = backEnd->answers.take();
        QCOMPARE(shown.count(), 1);
        QCOMPARE(shown[0].title, QString("VYRE Yum Error"));
    }

    void everyOperationBeginsOnlyInsideItsEventLoop_data()
    {
        using Make = std::function<QThread*(YumIOProbe&, QEventLoop&)>;
        QTest::addColumn<Make>("make");
        const auto add = [](const char* name, const Make& make) { QTest::newRow(name) << make; };
        static const QHash<QString, bool> usual;
        static QVector<Package::Entry*> wanted;
        add("collect", [](auto& yumIO, auto& loop) {
            return new YumIOProbe::CollectThread(&yumIO, loop, usual, YumIO::Source::Repositories);
        });
        add("clear",
            [](auto& yumIO, auto& loop) { return new YumIOProbe::ClearEntriesThread(&yumIO, loop); });
        add("file lists",
            [](auto& yumIO, auto& loop) { return new YumIOProbe::CollectFileListsThread(&yumIO, loop); });
        add("change logs",
            [](auto& yumIO, auto& loop) { return new YumIOProbe::CollectOtherDataThread(&yumIO, loop); });
        add("search texts", [](auto& yumIO, auto& loop) {
            wanted = {yumIO.records.at(0)};
            return new YumIOProbe::CollectSearchTextsThread(&yumIO, loop, wanted);
        });
        add("one change log", [](auto& yumIO, auto& loop) {
            return new YumIOProbe::LoadChangeLogThread(&yumIO, loop, *yumIO.records.at(0));
        });
        static const QString label("All");
        add("clean", [](auto& yumIO, auto& loop) {
            return new YumIOProbe::CleanThread(&yumIO, loop, label, "cleanAll");
        });
        add("apply", [](auto& yumIO, auto& loop) { return new YumIOProbe::ApplyThread(&yumIO, loop); });
    }

    void everyOperationBeginsOnlyInsideItsEventLoop()
    {
        using Make = std::function<QThread*(YumIOProbe&, QEventLoop&)>;
        QFETCH(Make, make);
        backEnd->run("class Noting(Package):\n"
                     "    @property\n"
                     "    def changelogs(self):\n"
                     "        yumIOC.log(0, 'The change log is read.')\n"
                     "        return []\n"
                     "it.available = [Noting('tool')]");
        QVERIFY(backEnd->collect());
        QCOMPARE(yumIO().count(), 1);
        const QList<int> before = traces();
        QEventLoop loop;
        const QScopedPointer<QThread> thread(make(yumIO(), loop));
        // If the worker ended before the loop began, nothing else would end the loop.
        connect(thread.data(), &QThread::finished, &loop, &QEventLoop::quit);
        QList<int> beforeTheLoop;
        {
            // These are the steps of execWorkThread(), with time for a worker to begin too early.
            yumIO().blocker.prepare();
            Python::PyThreadStateWrapper released;
            thread->start();
            thread->wait(200);
            beforeTheLoop = traces();
            QTimer::singleShot(0, &loop, [this] { yumIO().blocker.release(); });
            loop.exec();
            QVERIFY(thread->wait(60000));
            loop.processEvents();
        }
        QCOMPARE(beforeTheLoop, before);
        QVERIFY(traces() != before);
        backEnd->answers.take();
    }

    void theTableSeesNoRecordsWhileTheyAreCollected()
    {
        // The operation resets the bars at its end. At that moment, the records exist, but the table must not
        // see them yet.
        QList<int> seen;
        ChangeWatch watch([this, &seen] {
            if (!backEnd->total.isEnabled()) {
                seen.append(yumIO().count());
            }
        });
        backEnd->run("it.available = [Package('tool')]\n"
                     "seen = []\n"
                     "it.does['collectDone'] = lambda: seen.append(counted())");
        QVERIFY(backEnd->collect());
        seen.clear();
        yumIO().clearEntries();
        backEnd->total.installEventFilter(&watch);
        QVERIFY(backEnd->collect());
        backEnd->total.removeEventFilter(&watch);
        QCOMPARE(seen, QList<int>({0}));
        QCOMPARE(backEnd->text("seen"), QString("[['0'], ['0']]"));
        QCOMPARE(yumIO().count(), 1);
    }

    // --- The comparison of many items with an expression

    void theComparingThreadsDoNotHoldTheInterpreterLock()
    {
        const int logged = backEnd->log().count();
        std::vector<char> found;
        std::atomic<int> holders{0};
        QVERIFY(yumIO().findMatches(
            "^[0-9]*7$", 100,
            [&holders](const Expression& expression, size_t index) {
                holders += PyGILState_Check();
                return expression.matches(QByteArray::number(static_cast<int>(index)).constData());
            },
            found));
        QCOMPARE(holders.load(), 0);
        QCOMPARE(found.size(), size_t(100));
        for (size_t i = 0; i < found.size(); ++i) {
            QCOMPARE(int(found[i]), i % 10 == 7 ? 1 : 0);
        }
        QVERIFY(!yumIO().wasStopped());
        QCOMPARE(backEnd->log(logged).filter("Stopped."), QStringList());
    }

    void aStopEndsALongComparisonAtOnceAlthoughItsThreadsGoOn()
    {
        const auto held = std::make_shared<std::atomic<bool>>(true);
        const auto running = std::make_shared<std::atomic<int>>(0);
        const auto compare = [held, running](const Expression&, size_t) {
            ++*running;
            while (*held) {
                QThread::msleep(1);
            }
            --*running;
            return true;
        };
        QStringList bars;
        QTimer timer;
        connect(&timer, &QTimer::timeout, &timer, [this, &bars] {
            if (yumIO().stopState() == StopRequest::State::Possible && backEnd->total.isEnabled()) {
                bars = backEnd->bars();
                yumIO().stop();
            }
        });
        timer.start(10);
        const int logged = backEnd->log().count();
        std::vector<char> found{5};
        QVERIFY(!yumIO().findMatches("a", 200, compare, found));
        QVERIFY(yumIO().wasStopped());
        QVERIFY(*running > 0);
        QCOMPARE(found, std::vector<char>{5});
        QCOMPARE(bars, QStringList({"Comparing with the expression: Total Progress (0%) 0/200",
                                    "Comparing packages (0%) 0/200"}));
        QCOMPARE(backEnd->bars(), QStringList({"idle", "idle"}));
        QCOMPARE(backEnd->log(logged),
                 QStringList({"4 0 Comparing Packages with the Expression", "4 0 Stopped."}));
        *held = false;
        QTRY_COMPARE(running->load(), 0);
        // The next comparison uses threads of its own.
        QVERIFY(yumIO().findMatches(
            "a", 200, [](const Expression&, size_t) { return true; }, found));
        QCOMPARE(found, std::vector<char>(200, 1));
    }

    void aStopRequestEndsAComparisonEvenAtItsBeginning()
    {
        const auto held = std::make_shared<std::atomic<bool>>(true);
        QTimer::singleShot(0, [this] { QVERIFY(yumIO().stop()); });
        std::vector<char> found;
        QVERIFY(!yumIO().findMatches(
            "a", 1,
            [held](const Expression&, size_t) {
                while (*held) {
                    QThread::msleep(1);
                }
                return true;
            },
            found));
        *held = false;
    }

    void theTableSeesNoRecordsWhileTheyAreCleared()
    {
        // The script's object is deleted while its record still exists.
        backEnd->run("seen = []\n"
                     "class Ending(Package):\n"
                     "    def __del__(self): seen.append(counted())\n"
                     "it.available = [Ending('tool')]");
        QVERIFY(backEnd->collect());
        backEnd->run("it.available = []");
        QCOMPARE(yumIO().count(), 1);
        QCOMPARE(backEnd->text("seen"), QString("[]"));
        yumIO().clearEntries();
        QCOMPARE(backEnd->text("seen"), QString("[['0']]"));
        QCOMPARE(yumIO().count(), 0);
    }
};

QTEST_MAIN(YumIOThreadsTest)
#include "YumIOThreadsTest.moc"
