// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/RecordTexts.h"

#include <system_error>
#include <utility>

#include "app/base/SignalsBlocked.h"
#include "yumio/Package.h"
#include "yumio/ScriptValues.h"

namespace {

// A larger number of records needs fewer wake-ups of the thread. A smaller number leaves less work for
// finish().
constexpr size_t recordsAtOnce = 1024;

} // namespace

RecordTexts::~RecordTexts()
{
    finish();
}

void RecordTexts::add(Package::Entry* entry)
{
    added.entries.push_back(entry);
    if (added.entries.size() >= recordsAtOnce) {
        pass();
    }
}

void RecordTexts::beginRows(Reader* reader, std::vector<Package::Entry*> earlier, int expected)
{
    if (!added.entries.empty()) {
        pass();
    }
    if (reader == nullptr) {
        return;
    }
    added.reader = reader;
    added.expected = static_cast<int>(earlier.size()) + expected;
    if (!earlier.empty()) {
        added.entries = std::move(earlier);
        added.formatted = true;
        pass();
        added.formatted = false;
    }
}

void RecordTexts::endRows()
{
    if (added.reader != nullptr) {
        added.last = true;
        pass();
        added = Batch();
    }
}

void RecordTexts::pass()
{
    if (!thread.joinable()) {
        // Signals are for the worker, which knows when it must not be interrupted.
        const SignalsBlocked signalsBlocked;
        try {
            thread = std::thread(&RecordTexts::run, this);
        } catch (const std::system_error&) {
            // The system cannot start another thread, so this thread does the work.
            if (!added.formatted) {
                format(added.entries);
            }
            added = Batch();
            return;
        }
    }
    {
        const std::lock_guard<std::mutex> lock(mutex);
        passed.push_back(added);
    }
    added.entries.clear();
    changed.notify_one();
}

void RecordTexts::finish()
{
    if (!added.entries.empty()) {
        pass();
    }
    if (thread.joinable()) {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            ending = true;
        }
        changed.notify_one();
        thread.join();
        ending = false;
    }
    added = Batch();
    sizes.clear();
}

void RecordTexts::run()
{
    Reader* reader = nullptr;
    for (;;) {
        std::vector<Batch> batches;
        {
            std::unique_lock<std::mutex> lock(mutex);
            changed.wait(lock, [this] { return ending || !passed.empty(); });
            if (passed.empty()) {
                break;
            }
            batches.swap(passed);
        }
        for (const Batch& batch : batches) {
            if (!batch.formatted) {
                format(batch.entries);
            }
            if (batch.reader != nullptr) {
                if (reader == nullptr) {
                    reader = batch.reader;
                    reader->begun(batch.expected);
                }
                reader->rowsAdded(batch.entries);
                if (batch.last) {
                    reader->ended();
                    reader = nullptr;
                }
            }
        }
    }
    if (reader != nullptr) {
        reader->ended();
    }
}

void RecordTexts::format(const Entries& entries)
{
    for (Package::Entry* entry : entries) {
        entry->sizeText = *sizes.insert(ScriptValues::bytesFormat(entry->size));
        entry->buildTimeText = ScriptValues::timeText(entry->buildTime);
    }
}
