// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/ParallelMatching.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "app/base/SignalsBlocked.h"
#include "widgets/Expression.h"

namespace {

// When a thread takes new items, it takes at most this number.
constexpr size_t mostAtOnce = 64;

// The items are divided into at least this number of portions, if possible. With many small portions, all
// threads stay busy, although some portions take longer than others.
constexpr size_t portionsOfAll = 256;

constexpr unsigned int mostThreads = 8;

// The lowest priority for setpriority().
constexpr int lowest = 19;

// Linux gives each thread a number and a priority of its own. The C library of old systems has no gettid().
pid_t numberOfThread()
{
    return static_cast<pid_t>(syscall(SYS_gettid));
}

} // namespace

struct ParallelMatching::Shared
{
    QString expression;
    size_t count = 0;
    size_t portion = 1; // the number of items that a thread takes in one step
    Matches matches;
    std::atomic<size_t> next{0}; // the first item that no thread has taken
    std::atomic<size_t> done{0};
    std::atomic<bool> stopped{false};
    std::vector<char> found; // a thread writes only the items that it has taken
    std::mutex mutex;        // guards `running` and `numbers`
    std::condition_variable ended;
    unsigned int running = 0;   // the number of threads
    std::vector<pid_t> numbers; // the numbers of the threads that compare items
};

ParallelMatching::ParallelMatching(const QString& expression, size_t count, Matches matches)
    : shared(std::make_shared<Shared>())
{
    shared->expression = expression;
    shared->count = count;
    shared->matches = std::move(matches);
    shared->found.resize(count);
    shared->portion = std::clamp<size_t>(count / portionsOfAll, 1, mostAtOnce);
    const size_t portions = (count + shared->portion - 1) / shared->portion;
    const unsigned int processors = std::clamp(std::thread::hardware_concurrency(), 2U, mostThreads);
    const auto threads = static_cast<unsigned int>(std::min<size_t>(processors, portions));
    // The threads must not handle signals, because they may exist longer than the operation.
    const SignalsBlocked signalsBlocked;
    for (unsigned int i = 0; i < threads; ++i) {
        {
            const std::lock_guard<std::mutex> lock(shared->mutex);
            ++shared->running;
        }
        const auto run = [own = shared] {
            const pid_t number = numberOfThread();
            {
                const std::lock_guard<std::mutex> lock(own->mutex);
                own->numbers.push_back(number);
            }
            compare(*own);
            const std::lock_guard<std::mutex> lock(own->mutex);
            own->numbers.erase(std::find(own->numbers.begin(), own->numbers.end(), number));
            --own->running;
            if (own->running == 0) {
                own->matches = nullptr;
            }
            own->ended.notify_all();
        };
        try {
            std::thread(run).detach();
        } catch (const std::system_error&) {
            // The system cannot start another thread. If no thread was started, compare on this thread.
            if (i == 0) {
                run();
            } else {
                const std::lock_guard<std::mutex> lock(shared->mutex);
                --shared->running;
            }
            break;
        }
    }
}

ParallelMatching::~ParallelMatching()
{
    shared->stopped = true;
    // The current items may take hours, and nobody needs their results after the deletion. So give these
    // threads the lowest priority.
    const std::lock_guard<std::mutex> lock(shared->mutex);
    for (const pid_t number : shared->numbers) {
        setpriority(PRIO_PROCESS, static_cast<id_t>(number), lowest);
    }
}

void ParallelMatching::compare(Shared& shared)
{
    Expression own;
    own.compile(shared.expression);
    while (!shared.stopped) {
        const size_t first = shared.next.fetch_add(shared.portion);
        if (first >= shared.count) {
            return;
        }
        const size_t end = std::min(first + shared.portion, shared.count);
        for (size_t index = first; index < end && !shared.stopped; ++index) {
            shared.found[index] = shared.matches(own, index) ? 1 : 0;
            ++shared.done;
        }
    }
}

bool ParallelMatching::wait(int milliseconds) const
{
    std::unique_lock<std::mutex> lock(shared->mutex);
    return shared->ended.wait_for(lock, std::chrono::milliseconds(milliseconds),
                                  [this] { return shared->running == 0; });
}

size_t ParallelMatching::done() const
{
    return shared->done;
}

const std::vector<char>& ParallelMatching::found() const
{
    return shared->found;
}
