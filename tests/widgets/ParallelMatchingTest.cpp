// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/ParallelMatching.h"

#include <atomic>
#include <mutex>
#include <set>
#include <thread>

#include <QtTest>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "widgets/Expression.h"

namespace {

constexpr int longTime = 60000;

} // namespace

class ParallelMatchingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachItemIsComparedOnce_data()
    {
        QTest::addColumn<int>("count");
        for (const int count : {0, 1, 63, 64, 65, 1000}) {
            QTest::newRow(qPrintable(QString::number(count))) << count;
        }
    }

    void eachItemIsComparedOnce()
    {
        QFETCH(int, count);
        const auto size = static_cast<size_t>(count);
        std::vector<std::atomic<int>> calls(size);
        const ParallelMatching matching("^1.*5$", size, [&calls](const Expression& expression, size_t index) {
            ++calls[index];
            return expression.matches(QByteArray::number(static_cast<qulonglong>(index)).constData());
        });
        QVERIFY(matching.wait(longTime));
        QCOMPARE(matching.done(), size);
        QCOMPARE(matching.found().size(), size);
        for (int i = 0; i < count; ++i) {
            const QString text = QString::number(i);
            const auto index = static_cast<size_t>(i);
            QCOMPARE(calls[index].load(), 1);
            QCOMPARE(matching.found()[index] != 0, i > 1 && text.startsWith('1') && text.endsWith('5'));
        }
    }

    void eachThreadComparesWithAnExpressionOfItsOwn()
    {
        std::mutex mutex;
        std::set<std::thread::id> threads;
        std::set<const Expression*> expressions;
        const ParallelMatching matching("a", 1000, [&](const Expression& expression, size_t) {
            for (int i = 0; i < longTime; ++i) {
                {
                    const std::lock_guard<std::mutex> lock(mutex);
                    threads.insert(std::this_thread::get_id());
                    expressions.insert(&expression);
                    if (threads.size() > 1) {
                        return true;
                    }
                }
                std::this_thread::sleep_for(
                    std::chrono::milliseconds(1)); // give another thread time to begin
            }
            return false;
        });
        QVERIFY(matching.wait(2 * longTime));
        QVERIFY(threads.size() >= 2);
        QVERIFY(expressions.size() >= 2);
        QCOMPARE(threads.count(std::this_thread::get_id()), size_t(0));
    }

    void whenAllItemsHaveBeenComparedTheFunctionIsDeleted()
    {
        const auto data = std::make_shared<int>(0);
        for (const size_t count : {size_t(1), size_t(1000)}) {
            const ParallelMatching matching("a", count,
                                            [data](const Expression&, size_t) { return *data == 0; });
            QVERIFY(matching.wait(longTime));
            QCOMPARE(data.use_count(), 1L);
        }
    }

    void theMatchingCanBeDeletedDuringAComparison()
    {
        struct State
        {
            std::atomic<int> begun{0};
            std::atomic<bool> held{true};
        };
        const auto state = std::make_shared<State>();
        {
            const ParallelMatching matching("a", 1000, [state](const Expression&, size_t) {
                ++state->begun;
                while (state->held) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                }
                return true;
            });
            QTRY_VERIFY(state->begun > 0);
            QVERIFY(!matching.wait(1));
        }
        const int begun = state->begun + 8; // up to 8 threads may each begin one more item
        state->held = false;
        QTRY_COMPARE(state.use_count(), 1L); // true when all threads have ended
        QVERIFY2(state->begun <= begun, qPrintable(QString::number(state->begun)));
    }

    void aThreadThatIsNoLongerNeededHasTheLowestPriority()
    {
        struct State
        {
            std::atomic<pid_t> thread{0};
            std::atomic<bool> held{true};
        };
        const int before = getpriority(PRIO_PROCESS, 0);
        const auto state = std::make_shared<State>();
        const auto priority = [&state] {
            return getpriority(PRIO_PROCESS, static_cast<id_t>(state->thread));
        };
        {
            const ParallelMatching matching("a", 1, [state](const Expression&, size_t) {
                state->thread = static_cast<pid_t>(syscall(SYS_gettid));
                while (state->held) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                }
                return true;
            });
            QTRY_VERIFY(state->thread != 0);
            QCOMPARE(priority(), before);
        }
        QCOMPARE(priority(), 19);
        QCOMPARE(getpriority(PRIO_PROCESS, 0), before); // the other threads keep their priority
        state->held = false;
        QTRY_COMPARE(state.use_count(), 1L);
    }

    void anInvalidExpressionMatchesNoItem()
    {
        const ParallelMatching matching(
            "(", 3, [](const Expression& expression, size_t) { return expression.matches("("); });
        QVERIFY(matching.wait(longTime));
        QCOMPARE(matching.found(), std::vector<char>(3, 0));
    }
};

QTEST_MAIN(ParallelMatchingTest)
#include "ParallelMatchingTest.moc"
