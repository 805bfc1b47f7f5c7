// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include "app/base/Share.h"
#include "tests/support/EnvironmentVariable.h"

class ShareTest : public QObject
{
    Q_OBJECT

private:
    EnvironmentVariable share{"VYRESHARE"};

private Q_SLOTS:
    void theInstalledShareDirectoryIsUsedByDefault()
    {
        share.unset();
        QCOMPARE(Share::absolute("python/YumIO.py"), QStringLiteral("/usr/share/vyre/python/YumIO.py"));
        QCOMPARE(Share::absolute(QString()), QStringLiteral("/usr/share/vyre/"));
    }

    void theEnvironmentVariableSetsTheShareDirectory_data()
    {
        QTest::addColumn<QByteArray>("directory");
        QTest::addColumn<QString>("relative");
        QTest::addColumn<QString>("path");
        QTest::newRow("plain") << QByteArray("/opt/vyre") << "icons"
                               << "/opt/vyre/icons";
        QTest::newRow("relative directory") << QByteArray("share") << "icons"
                                            << "share/icons";
        QTest::newRow("superfluous slashes") << QByteArray("/opt//vyre/") << "icons"
                                             << "/opt//vyre//icons";
        QTest::newRow("set to an empty value") << QByteArray("") << "icons"
                                               << "/icons";
        QTest::newRow("\"%1\" in the directory") << QByteArray("/opt/%2%1") << "icons"
                                                 << "/opt/%2%1/icons";
        QTest::newRow("\"%1\" in the file name") << QByteArray("/opt/%1") << "%1/%2"
                                                 << "/opt/%1/%1/%2";
    }

    void theEnvironmentVariableSetsTheShareDirectory()
    {
        QFETCH(QByteArray, directory);
        QFETCH(QString, relative);
        QFETCH(QString, path);
        share.set(directory);
        QVERIFY(qEnvironmentVariableIsSet("VYRESHARE"));
        QCOMPARE(Share::absolute(relative), path);
    }
};

QTEST_GUILESS_MAIN(ShareTest)
#include "ShareTest.moc"
