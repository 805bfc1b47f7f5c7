// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include "repo/RepoEntry.h"

class RepoEntryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aNewEntrySpecifiesNothing();
    void equalityComparesOnlyTheIdentifier();
    void identifiersAreCaseSensitive();
};

void RepoEntryTest::aNewEntrySpecifiesNothing()
{
    const Repo::Entry entry;
    QCOMPARE(entry.id, QString());
    QCOMPARE(entry.name, QString());
    QCOMPARE(entry.baseurl, QString());
    QCOMPARE(entry.mirrorlist, QString());
    QCOMPARE(entry.enabled, qint32(Qt::PartiallyChecked));
    QCOMPARE(entry.gpgcheck, qint32(Qt::PartiallyChecked));
    QCOMPARE(entry.options, QString());
    QCOMPARE(entry.file, QString());
    QCOMPARE(entry.position, 0.0);
}

void RepoEntryTest::equalityComparesOnlyTheIdentifier()
{
    Repo::Entry left;
    left.id = QStringLiteral("base");
    Repo::Entry right;
    right.id = QStringLiteral("base");
    right.name = QStringLiteral("another name");
    right.position = 3.0;
    QVERIFY(left == right);
    QVERIFY(!(left != right));
    right.id = QStringLiteral("updates");
    QVERIFY(left != right);
    QVERIFY(!(left == right));
}

void RepoEntryTest::identifiersAreCaseSensitive()
{
    Repo::Entry left;
    left.id = QStringLiteral("base");
    Repo::Entry right;
    right.id = QStringLiteral("Base");
    QVERIFY(left != right);
}

QTEST_APPLESS_MAIN(RepoEntryTest)
#include "RepoEntryTest.moc"
