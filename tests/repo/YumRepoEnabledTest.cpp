// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include "repo/YumRepoEnabled.h"

class YumRepoEnabledTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theConstructorStoresTheStateAndThePattern();
    void aPatternWithWildcardsMatchesOnlyWholeIdentifiers_data();
    void aPatternWithWildcardsMatchesOnlyWholeIdentifiers();
};

void YumRepoEnabledTest::theConstructorStoresTheStateAndThePattern()
{
    QVERIFY(YumRepoEnabled(true, QStringLiteral("*")).enabled);
    QVERIFY(!YumRepoEnabled(false, QStringLiteral("*")).enabled);
    QCOMPARE(YumRepoEnabled(true, QStringLiteral("fed?ra*")).pattern.pattern(), QStringLiteral("fed?ra*"));
}

void YumRepoEnabledTest::aPatternWithWildcardsMatchesOnlyWholeIdentifiers_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("id");
    QTest::addColumn<bool>("matches");
    QTest::newRow("whole identifier") << "base"
                                      << "base" << true;
    QTest::newRow("only the beginning of the identifier") << "base"
                                                          << "base-debug" << false;
    QTest::newRow("star") << "base*"
                          << "base-debug" << true;
    QTest::newRow("question mark") << "b?se"
                                   << "base" << true;
    QTest::newRow("characters in brackets") << "b[ae]se"
                                            << "bese" << true;
    QTest::newRow("different letter case") << "Base"
                                           << "base" << false;
    QTest::newRow("a literal dot") << "b.se"
                                   << "base" << false;
}

void YumRepoEnabledTest::aPatternWithWildcardsMatchesOnlyWholeIdentifiers()
{
    QFETCH(QString, pattern);
    QFETCH(QString, id);
    QFETCH(bool, matches);
    QCOMPARE(YumRepoEnabled(true, pattern).pattern.exactMatch(id), matches);
}

QTEST_APPLESS_MAIN(YumRepoEnabledTest)
#include "YumRepoEnabledTest.moc"
