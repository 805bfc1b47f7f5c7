// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/yumio/CollectFixture.h"

#include <QTest>

void CollectFixture::initTestCase()
{
    backEnd.reset(new BackEnd);
    QVERIFY(!yumIO().fileListsLoaded);
    QVERIFY(!yumIO().otherDataLoaded);
    QVERIFY(!yumIO().locked);
    QCOMPARE(yumIO().count(), 0);
    QVERIFY(backEnd->start());
    QCOMPARE(errors(), QStringList());
    QCOMPARE(backEnd->text("sys.argv"), QString("['the-test', 'info']"));
}

void CollectFixture::init()
{
    BackEndFixture::init();
    yumIO().locked = false;
}

void CollectFixture::cleanup()
{
    BackEndFixture::cleanup();
    QCOMPARE(int(yumIO().phase), int(YumIOProbe::Idle));
    QCOMPARE(int(yumIO().exceptLogStart), -1);
}
