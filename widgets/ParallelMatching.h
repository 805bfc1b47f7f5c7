// SPDX-License-Identifier: GPL-2.0-or-later

// Compares an expression with many items on several threads, each with its own compiled expression.
//
// The C library cannot be interrupted while it compares an expression with a text, which may take minutes.
// Therefore the destructor does not wait for the threads: if the ParallelMatching is deleted before the
// threads have finished, each thread ends after its current item. Until then, the thread has the lowest
// priority, and uses only its own data and the function `matches`. This function must own its data, or use
// data that never change.
//
// Any thread may create and use a ParallelMatching, but only one thread at a time.

#ifndef WIDGETS_PARALLELMATCHING_H
#define WIDGETS_PARALLELMATCHING_H

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include <QString>

class Expression;

class ParallelMatching
{
public:
    // Returns whether the expression matches the item with this index. Several threads call this function at
    // the same time.
    using Matches = std::function<bool(const Expression& expression, size_t index)>;

    // Starts the threads.
    ParallelMatching(const QString& expression, size_t count, Matches matches);
    ~ParallelMatching();
    ParallelMatching(const ParallelMatching&) = delete;
    ParallelMatching& operator=(const ParallelMatching&) = delete;

    // Waits until all items have been compared, but at most `milliseconds`. Returns whether all items have
    // been compared. In this case, the function `matches` is already deleted.
    bool wait(int milliseconds) const;
    // Returns the number of items that have been compared.
    size_t done() const;
    // Returns for each item whether it matches. Call it only after wait() has returned true.
    const std::vector<char>& found() const;

private:
    struct Shared;
    static void compare(Shared& shared);

    std::shared_ptr<Shared> shared;
};

#endif
