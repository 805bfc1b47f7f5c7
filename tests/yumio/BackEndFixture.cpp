// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/yumio/BackEndFixture.h"

#include <QTest>

#include "yumio/Fields.h"

const char* const BackEndFixture::generic =
    "Internal error: python exception occurred from C code.\nWhen reporting this issue, please "
    "include the contents of the\nLog window, which should contain a walkback.";

void BackEndFixture::initTestCase()
{
    backEnd.reset(new BackEnd);
    QVERIFY(backEnd->start());
    backEnd->answers.take();
}

void BackEndFixture::cleanupTestCase()
{
    backEnd.reset();
}

void BackEndFixture::init()
{
    backEnd->renew();
}

void BackEndFixture::cleanup()
{
    for (const ShownDialog& each : backEnd->answers.take()) {
        QTest::qFail(qPrintable("not expected: " + each.text), __FILE__, __LINE__);
    }
    QVERIFY(yumIO().progress == nullptr);
    QVERIFY(PyErr_Occurred() == nullptr);
}

QString BackEndFixture::emptyLists()
{
    QStringList items{"'files': []", "'changelogs': []"};
    for (int i = 0; i < Fields::Count; ++i) {
        const Fields::Row& row = Fields::row(static_cast<Fields::Field>(i));
        if (row.source == Fields::Source::Dependencies) {
            items << QString("'%1': []").arg(row.attribute);
        }
    }
    return '{' + items.join(", ") + '}';
}
