// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/Records.h"

#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "app/base/SignalsBlocked.h"

namespace {

// The greatest length of a list of records with the same name. A system has only a few bi-arch classes, so
// usual lists are short. But a repository may invent any number of architectures.
constexpr int mostInList = 16;

// For fewer records, the start of a thread takes longer than their deletion.
constexpr int manyRecords = 4096;

} // namespace

void Records::reserve(int further)
{
    byName.reserve(byName.count() + further);
}

Package::Entry** Records::placeIn(Package::Entry** first, const Package::EntryKey& key)
{
    Package::Entry** place = first;
    for (int passed = 0; *place != nullptr; place = &(*place)->sameName) {
        const bool group = (*place)->kind == Package::Group;
        if (group == key.group && key.arch == (group ? QString() : (*place)->biArch)) {
            return place;
        }
        if (++passed == mostInList) {
            return nullptr;
        }
    }
    return place;
}

Package::Entry*& Records::place(const Package::EntryKey& key)
{
    placed = &byName[key.name];
    Package::Entry** const found = placeIn(&placed->first, key);
    if (found == nullptr) {
        return otherKeys[key];
    }
    if (*found == nullptr && !otherKeys.isEmpty()) {
        const auto other = otherKeys.find(key);
        if (other != otherKeys.end()) {
            return other.value();
        }
    }
    return *found;
}

Package::Entry* Records::find(const Package::EntryKey& key) const
{
    Package::Entry* first = byName.value(key.name).first;
    Package::Entry** const found = placeIn(&first, key);
    return found != nullptr && *found != nullptr ? *found : otherKeys.value(key);
}

void Records::added(Package::Entry* entry)
{
    collectedEntries.append(entry);
    if (entry->kind != Package::Group) {
        biArchs.insert(entry->biArch);
    }
}

void Records::addKey(const Package::EntryKey& key, Package::Entry* entry)
{
    if (find(key) == nullptr) {
        otherKeys.insert(key, entry);
    }
}

Package::Entry*& Records::endOfChain(Package::Entry* first)
{
    Package::Entry* last = first;
    while (last->next != nullptr) {
        last = last->next;
    }
    return last->next;
}

void Records::addReplacement(const Package::Entry* replaced, const QString& before,
                             const Package::Entry* other, const QString& after)
{
    if (replaced != nullptr) {
        replacements[replaced].by.append(after);
    }
    if (other != nullptr) {
        replacements[other].of.append(before);
    }
}

void Records::publish()
{
    entries.reserve(collectedEntries.count());
    for (Package::Entry* entry : qAsConst(collectedEntries)) {
        entries.append(entry);
    }
}

Package::Entry* Records::findPackage(const QString& name, const QString& preferredBiArch) const
{
    if (Package::Entry* found = find(Package::EntryKey(false, name, preferredBiArch))) {
        return found;
    }
    for (const QString& biArch : biArchs) {
        if (biArch != preferredBiArch) {
            if (Package::Entry* found = find(Package::EntryKey(false, name, biArch))) {
                return found;
            }
        }
    }
    return nullptr;
}

Package::Entry* Records::installedEntry(Package::Entry* entry)
{
    return entry->state == Package::Installed ? entry : entry->next;
}

quint64 Records::installedSize(Package::Entry* entry)
{
    const Package::Entry* installed = entry != nullptr ? installedEntry(entry) : nullptr;
    return installed != nullptr ? installed->size : 0;
}

bool Records::isLeftToUser(const Package::Entry& entry) const
{
    const auto found = replacements.constFind(&entry);
    return found != replacements.constEnd() && (!found->by.isEmpty() || entry.state == Package::Available);
}

Package::Marks Records::marks() const
{
    Package::Marks found;
    for (const Package::Entry* entry : entries) {
        if (entry->action != Package::None) {
            found.insert(Package::EntryKey(*entry), entry->action);
        }
    }
    return found;
}

void Records::restoreMarks(const Package::Marks& marks) const
{
    for (auto i = marks.constBegin(); i != marks.constEnd(); ++i) {
        Package::Entry* entry = find(i.key());
        if (entry != nullptr && entry->permits(i.value())) {
            entry->action = i.value();
        }
    }
}

void Records::clear(const std::function<void(PyObject*)>& drop)
{
    std::vector<PyObject*> objects;
    objects.reserve(drop ? static_cast<size_t>(collectedEntries.count()) : 0);
    for (Package::Entry* first : qAsConst(collectedEntries)) {
        for (Package::Entry* entry = first; entry != nullptr; entry = entry->next) {
            PyObject* const object = std::exchange(entry->pyObject, nullptr);
            if (object != nullptr && drop) {
                objects.push_back(object);
            }
        }
    }
    std::thread thread;
    if (drop && collectedEntries.count() >= manyRecords) {
        // Signals are for the worker, which knows when it must not be interrupted.
        const SignalsBlocked signalsBlocked;
        try {
            thread = std::thread(&Records::deleteAll, this);
        } catch (const std::system_error&) {
            // The system cannot start another thread, so this thread does the work.
        }
    }
    for (PyObject* object : objects) {
        drop(object);
    }
    if (thread.joinable()) {
        thread.join();
    } else {
        deleteAll();
    }
}

void Records::deleteAll()
{
    // The records are deleted through this list, because the index may contain a record under two keys.
    qDeleteAll(collectedEntries);
    entries.clear();
    byName.clear();
    placed = nullptr;
    otherKeys.clear();
    collectedEntries.clear();
    biArchs.clear();
    sharedTexts.clear();
    replacements.clear();
}
