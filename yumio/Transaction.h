// SPDX-License-Identifier: GPL-2.0-or-later

// The package manager's codes for the items of a transaction, and the number of progress steps of a
// transaction.
//
// The header contains only constants; any thread may use them.

#ifndef YUMIO_TRANSACTION_H
#define YUMIO_TRANSACTION_H

#include <QtGlobal>

namespace Transaction {

// The change to an item. The codes above 100 are not changes but phases, which the package manager reports in
// the same way.
enum Action : long {
    Install = 1,
    Downgrade = 2,
    Downgraded = 3,
    Obsolete = 4,
    Obsoleted = 5,
    Upgrade = 6,
    Upgraded = 7,
    Remove = 8,
    Reinstall = 9,
    Reinstalled = 10,
    ReasonChange = 11,
    Cleanup = 101,
    Verify = 102,
    Scriptlet = 103,
    Preparation = 201,
    Post = 202
};

// The reason why an item is part of the transaction.
enum Reason : long { Dependency = 1, Clean = 3, WeakDependency = 4, Group = 5 };

// The maximum number of steps of the total bar for the downloads.
constexpr quint32 downloadSteps = 24000;
// The number of steps of the total bar for the transaction itself: 100 for its preparation, 1000 for the
// preparation of its run, and 8000 for the packages.
constexpr quint32 runSteps = 9100;

// Returns the weight of a package: its size in bytes, with a minimum, because even an empty package takes
// some time.
inline quint64 atLeast(quint64 bytes)
{
    return qMax<quint64>(bytes, 10240);
}

} // namespace Transaction

#endif
