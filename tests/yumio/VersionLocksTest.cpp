// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/VersionLocks.h"

#include <QtTest>

class VersionLocksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noPackageIsLockedIfThePlugInIsMissing()
    {
        const VersionLocks locks;
        QVERIFY(!locks.offered);
        QVERIFY(!locks.isLocked(Package::Entry()));
    }

    void aPackageIsLockedIfAVersionLockNamesIt()
    {
        VersionLocks locks;
        locks.lines.insert("tool", "tool-0:1-1.*");
        Package::Entry entry;
        entry.name = "tool";
        QVERIFY(locks.isLocked(entry));
        entry.name = "tools";
        QVERIFY(!locks.isLocked(entry));
    }

    void aGroupWithTheNameOfALockedPackageIsNotLocked()
    {
        VersionLocks locks;
        locks.lines.insert("tool", "tool-0:1-1.*");
        Package::Entry entry;
        entry.name = "tool";
        entry.kind = Package::Group;
        QVERIFY(!locks.isLocked(entry));
    }
};

QTEST_APPLESS_MAIN(VersionLocksTest)
#include "VersionLocksTest.moc"
