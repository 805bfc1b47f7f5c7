// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <QFile>
#include <QTemporaryDir>

#include "app/Settings.h"

class SettingsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void allSettingsAreStoredInOneFileOfTheUser();
};

void SettingsTest::allSettingsAreStoredInOneFileOfTheUser()
{
    const QTemporaryDir directory;
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, directory.path());
    Settings().setValue("Some/size", 7);
    QFile file(directory.filePath("vyre/vyre.ini"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("[Some]\nsize=7\n"));
    QCOMPARE(Settings().value("Some/size").toInt(), 7);
}

QTEST_GUILESS_MAIN(SettingsTest)
#include "SettingsTest.moc"
