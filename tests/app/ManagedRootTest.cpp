// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <QTemporaryDir>

#include "app/base/ManagedRoot.h"
#include "tests/support/EnvironmentVariable.h"

class ManagedRootTest : public QObject
{
    Q_OBJECT

private:
    EnvironmentVariable managedRoot{"VYREROOT"};

private Q_SLOTS:
    void theRunningSystemIsManagedIfNoRootIsSet()
    {
        managedRoot.unset();
        QCOMPARE(ManagedRoot::path(), QString());
        QCOMPARE(ManagedRoot::absolute("/etc/yum.conf"), QStringLiteral("/etc/yum.conf"));
        QCOMPARE(ManagedRoot::absolute("/"), QStringLiteral("/"));
        QCOMPARE(ManagedRoot::namedDirectory("/srv/cache"), QStringLiteral("/srv/cache"));
        QCOMPARE(ManagedRoot::namedDirectoryOfFiles("/etc"), QStringLiteral("/etc"));
    }

    void anAbsolutePathInASettingIsResolvedBelowTheRoot()
    {
        const QTemporaryDir root;
        managedRoot.set(QFile::encodeName(root.path()));
        QCOMPARE(ManagedRoot::namedDirectory("/srv/cache"), root.path() + "/srv/cache");
        QCOMPARE(ManagedRoot::namedDirectory(root.path()), root.path());
        QCOMPARE(ManagedRoot::namedDirectory(root.path() + "/srv"), root.path() + "/srv");
        QCOMPARE(ManagedRoot::namedDirectory(root.path() + "2"), root.path() + root.path() + "2");
        QCOMPARE(ManagedRoot::namedDirectory("cache"), QStringLiteral("cache"));
        // If a directory that VYRE only reads is missing below the root, VYRE uses the directory outside the
        // root.
        QCOMPARE(ManagedRoot::namedDirectoryOfFiles("/etc"), QStringLiteral("/etc"));
        QVERIFY(QDir(root.path()).mkdir("etc"));
        QCOMPARE(ManagedRoot::namedDirectoryOfFiles("/etc"), root.path() + "/etc");
    }

    void theRootIsStoredAsAnAbsolutePathWithoutSuperfluousParts_data()
    {
        QTest::addColumn<QByteArray>("given");
        QTest::addColumn<QString>("root");
        QTest::newRow("empty") << QByteArray("") << "";
        QTest::newRow("the running system") << QByteArray("/") << "";
        QTest::newRow("the running system with a longer path") << QByteArray("/srv/..//") << "";
        QTest::newRow("absolute path") << QByteArray("/srv/image") << "/srv/image";
        QTest::newRow("slash at the end") << QByteArray("/srv/image/") << "/srv/image";
        QTest::newRow("slashes at the end") << QByteArray("/srv/image//") << "/srv/image";
        QTest::newRow("path with dots") << QByteArray("/srv/other/../image/.") << "/srv/image";
        QTest::newRow("relative path") << QByteArray("image") << QDir::currentPath() + "/image";
        QTest::newRow("letters beyond ASCII")
            << QByteArray("/srv/\xc3\xbc") << QString::fromUtf8("/srv/\xc3\xbc");
    }

    void theRootIsStoredAsAnAbsolutePathWithoutSuperfluousParts()
    {
        QFETCH(QByteArray, given);
        QFETCH(QString, root);
        managedRoot.set(given);
        QCOMPARE(ManagedRoot::path(), root);
        QCOMPARE(ManagedRoot::absolute("/etc/yum.conf"), root + "/etc/yum.conf");
    }
};

QTEST_GUILESS_MAIN(ManagedRootTest)
#include "ManagedRootTest.moc"
