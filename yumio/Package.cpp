// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/Package.h"

#include <cstdio>
#include <utility>

namespace Package {

Entry::Entry()
    : action(None), state(Available), kind(Ordinary), size(0), buildTime(0), pyObject(nullptr),
      duplicate(false), excluded(false), match(0), next(nullptr), sameName(nullptr), txAction(None),
      local(false)
{
}

Entry::~Entry()
{
    static bool reported = false;
    if (pyObject != nullptr && !reported) {
        reported = true;
        std::fprintf(stderr,
                     "Internal error: attempt to delete Package::Entry %p with extant python obj %p\n",
                     static_cast<void*>(this), static_cast<void*>(pyObject));
    }
    // Delete the chain in a loop, because a recursive deletion could exhaust the stack.
    Entry* following = next;
    while (following != nullptr) {
        Entry* doomed = following;
        following = doomed->next;
        doomed->next = nullptr;
        delete doomed;
    }
}

bool Entry::permits(Action chosen) const
{
    switch (chosen) {
    case Update:
        return state == Updatable;
    case Install:
        return state == Available;
    case Remove:
        return state != Available && !isExcluded();
    case None:
        return true;
    }
    return false;
}

bool Entry::isExcluded() const
{
    const Entry* version = state == Installed ? this : next;
    if (version == nullptr) {
        return false;
    }
    for (; version != nullptr; version = version->next) {
        if (!version->excluded) {
            return false;
        }
    }
    return true;
}

EntryKey::EntryKey(bool ofGroup, QString ofName, QString ofArch)
    : group(ofGroup), name(std::move(ofName)), arch(std::move(ofArch))
{
}

EntryKey::EntryKey(const Entry& entry)
    : group(entry.kind == Group), name(entry.name), arch(group ? QString() : entry.biArch)
{
}

uint qHash(const EntryKey& key)
{
    return qHash(key.name) * 2 + qHash(key.arch) * 4 + (key.group ? 1 : 0);
}

uint qHash(const EntryKey& key, uint seed)
{
    return qHash(key) ^ seed;
}

EntryList::~EntryList()
{
    qDeleteAll(*this);
}

} // namespace Package
