// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/yumio/ApplyFixture.h"

#include <unistd.h>

#include <QRegularExpression>
#include <QTest>

void ApplyFixture::initTestCase()
{
    // Only root can apply changes.
    QCOMPARE(int(geteuid()), 0);
    BackEndFixture::initTestCase();
}

void ApplyFixture::init()
{
    BackEndFixture::init();
    yumIO().stdoutPending.clear();
    yumIO().stderrPending.clear();
    transaction() = TransactionState();
}

void ApplyFixture::cleanup()
{
    BackEndFixture::cleanup();
    QCOMPARE(int(yumIO().phase), int(YumIOProbe::Idle));
    QCOMPARE(int(yumIO().exceptLogStart), -1);
    QCOMPARE(backEnd->bars(), QStringList({"idle", "idle"}));
}

QStringList ApplyFixture::headings(int from)
{
    return backEnd->log(from).filter(QRegularExpression("^4 "));
}

void ApplyFixture::collect(const QString& statements)
{
    backEnd->run(statements);
    QVERIFY(backEnd->collect());
}

bool ApplyFixture::apply(const QString& statements)
{
    backEnd->run("def applying(*lists):\n    " + QString(statements).replace("\n", "\n    ") +
                 "\n    return True\n"
                 "it.does['apply'] = applying\nseen = []");
    return yumIO().apply();
}

QString ApplyFixture::given()
{
    return backEnd->text("'; '.join(' '.join('<'.join(x.name + '-' + x.version for x in each)\n"
                         "    if isinstance(each, list) else each.name + getattr(each, 'version', '')\n"
                         "    for each in part) for part in it.did('apply')[0])");
}

bool ApplyFixture::wasApplied()
{
    return backEnd->text("it.did('apply')") != QString("[]");
}
