// The package manager's codes for the items of a transaction, and the progress budget of one.
//
// Constants only.

#ifndef YUMIO_TRANSACTION_H
#define YUMIO_TRANSACTION_H

#include <QtGlobal>

namespace Transaction {

// What happens to an item. The codes above 100 are phases that the package manager reports like actions.
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

// Why an item is part of the transaction.
enum Reason : long { Dependency = 1, Clean = 3, WeakDependency = 4, Group = 5 };

// Steps of the total bar, out of which the downloads get at most the first number; the second are those of
// the transaction itself: 100 to prepare, 1000 to prepare to run it, 8000 for the packages.
constexpr quint32 downloadSteps = 24000;
constexpr quint32 runSteps = 9100;

// The weight of a package: its bytes, but even an empty one takes its time.
inline quint64 atLeast(quint64 bytes)
{
    return qMax<quint64>(bytes, 10240);
}

} // namespace Transaction

#endif
