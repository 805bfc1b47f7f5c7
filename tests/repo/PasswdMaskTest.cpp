// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/PasswdMask.h"

#include <QtTest>

class PasswdMaskTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyPasswordInUrlsIsHidden_data();
    void everyPasswordInUrlsIsHidden();
    void passwordsInOptionsAreHidden();
    void aTextWithoutPasswordsIsNotChanged();
    void maskingTheSameTextAgainReturnsTheCachedResult();
    void everyMatchOfAnExpressionIsHidden();
    void anExpressionForWholeTextsDoesNotMatchAPartOfAText();
    void eachOfSeveralExpressionsHidesItsMatches();
    void eachPasswordCharacterIsReplacedByExactlyOneMaskCharacter();
    void aMatchWithAnEmptyCaptureHidesNothing();
    void aMatchWithoutCharactersHidesNothing();
    void insertedTextIsHiddenIfItBecomesAPartOfAPassword();
};

void PasswdMaskTest::everyPasswordInUrlsIsHidden_data()
{
    QTest::addColumn<QString>("urls");
    QTest::addColumn<QString>("masked");
    QTest::newRow("vantor") << "http://h/vantor?u=bob&p=abc&path=/x"
                            << "http://h/vantor?u=bob&p=***&path=/x";
    QTest::newRow("in several URLs")
        << "http://h/vantor?u=bob&p=abc&path=/x\nhttp://k/\nhttp://l/vantor?u=&p=d&path="
        << "http://h/vantor?u=bob&p=***&path=/x\nhttp://k/\nhttp://l/vantor?u=&p=*&path=";
    QTest::newRow("before the host") << "https://me:abc@h:80/x"
                                     << "https://me:***@h:80/x";
    QTest::newRow("at sign in the password") << "https://me:a@c@h/x"
                                             << "https://me:***@h/x";
    QTest::newRow("without a user name") << "https://:abc@h/x"
                                         << "https://:***@h/x";
    QTest::newRow("before the host and in the query") << "https://me:abc@h/vantor?u=bob&p=de&path=x"
                                                      << "https://me:***@h/vantor?u=bob&p=**&path=x";
    QTest::newRow("no password") << "http://h:80/a:b@c http://me@h/ file:///srv"
                                 << "http://h:80/a:b@c http://me@h/ file:///srv";
}

void PasswdMaskTest::everyPasswordInUrlsIsHidden()
{
    QFETCH(QString, urls);
    QTEST(PasswdMask().masked(urls, QLatin1Char('*')), "masked");
}

void PasswdMaskTest::passwordsInOptionsAreHidden()
{
    const QString options = QStringLiteral("proxy_password = ab\n  c\nproxy=http://me:abc@h/\nretries=1\n");
    const QString masked = QStringLiteral("proxy_password = **\n  *\nproxy=http://me:***@h/\nretries=1\n");
    QCOMPARE(PasswdMask(Credentials::Text::Options).masked(options, QLatin1Char('*')), masked);
    QVERIFY(PasswdMask(Credentials::Text::Options).hides(QStringLiteral("password="), 9));
    QVERIFY(!PasswdMask(Credentials::Text::Options).hides(QStringLiteral("password="), 8));
}

void PasswdMaskTest::aTextWithoutPasswordsIsNotChanged()
{
    const PasswdMask mask;
    QCOMPARE(mask.masked(QStringLiteral("abc"), QLatin1Char('*')), QStringLiteral("abc"));
    QVERIFY(!mask.hides(QStringLiteral("abc"), 1));
}

void PasswdMaskTest::maskingTheSameTextAgainReturnsTheCachedResult()
{
    PasswdMask mask;
    const QString first = mask.masked(QStringLiteral("http://me:abc@h/"), QLatin1Char('*'));
    // The second result has the address of the first result, so it comes from the cache.
    QCOMPARE(mask.masked(QStringLiteral("http://me:abc@h/"), QLatin1Char('*')).constData(),
             first.constData());
    QCOMPARE(mask.masked(QStringLiteral("http://me:abc@h/"), QLatin1Char('#')),
             QStringLiteral("http://me:###@h/"));
    QCOMPARE(mask.masked(QStringLiteral("http://me:ab@h/"), QLatin1Char('#')),
             QStringLiteral("http://me:##@h/"));
    mask.hideEverywhere(QRegExp(QStringLiteral("(h)/")));
    QCOMPARE(mask.masked(QStringLiteral("http://me:ab@h/"), QLatin1Char('#')),
             QStringLiteral("http://me:##@#/"));
}

void PasswdMaskTest::everyMatchOfAnExpressionIsHidden()
{
    PasswdMask mask;
    mask.hideEverywhere(QRegExp(QStringLiteral("p=([a-z]*);")));
    QCOMPARE(mask.masked(QStringLiteral("p=abc; p=; x=abc; p=d; p=e"), QLatin1Char('*')),
             QStringLiteral("p=***; p=; x=abc; p=*; p=e"));
}

void PasswdMaskTest::anExpressionForWholeTextsDoesNotMatchAPartOfAText()
{
    PasswdMask mask;
    mask.hideInWholeText(QRegExp(QStringLiteral("p=([a-z]*);")));
    QCOMPARE(mask.masked(QStringLiteral("p=abc;"), QLatin1Char('*')), QStringLiteral("p=***;"));
    QCOMPARE(mask.masked(QStringLiteral("p=abc; "), QLatin1Char('*')), QStringLiteral("p=abc; "));
    QCOMPARE(mask.masked(QStringLiteral(" p=abc;"), QLatin1Char('*')), QStringLiteral(" p=abc;"));
}

void PasswdMaskTest::eachOfSeveralExpressionsHidesItsMatches()
{
    PasswdMask mask;
    mask.hideEverywhere(QRegExp(QStringLiteral("p=([a-z]*)")));
    mask.hideEverywhere(QRegExp(QStringLiteral("q=([a-z]*)")));
    QCOMPARE(mask.masked(QStringLiteral("q=abc p=d"), QLatin1Char('*')), QStringLiteral("q=*** p=*"));
}

void PasswdMaskTest::eachPasswordCharacterIsReplacedByExactlyOneMaskCharacter()
{
    PasswdMask mask;
    mask.hideEverywhere(QRegExp(QStringLiteral("p=(.*);")));
    const QString text = QString::fromUtf8("p=a\xf0\x9f\x94\x91z;");
    QCOMPARE(mask.masked(text, QLatin1Char('*')), QStringLiteral("p=****;"));
    QCOMPARE(mask.masked(text, QLatin1Char('*')).size(), text.size());
}

void PasswdMaskTest::aMatchWithAnEmptyCaptureHidesNothing()
{
    PasswdMask mask;
    mask.hideEverywhere(QRegExp(QStringLiteral("p=(a)?")));
    mask.hideEverywhere(QRegExp(QStringLiteral("q=a")));
    QCOMPARE(mask.masked(QStringLiteral("p=b q=a"), QLatin1Char('*')), QStringLiteral("p=b q=a"));
}

void PasswdMaskTest::aMatchWithoutCharactersHidesNothing()
{
    PasswdMask mask;
    mask.hideEverywhere(QRegExp(QStringLiteral("(x*)")));
    QCOMPARE(mask.masked(QStringLiteral("axxb"), QLatin1Char('*')), QStringLiteral("a**b"));
}

void PasswdMaskTest::insertedTextIsHiddenIfItBecomesAPartOfAPassword()
{
    PasswdMask mask;
    mask.hideEverywhere(QRegExp(QStringLiteral("p=([a-z]*);")));
    const QString text = QStringLiteral("p=ab; p=;");
    QList<bool> hidden;
    for (int i = 0; i <= text.size(); ++i) {
        hidden << mask.hides(text, i);
    }
    QCOMPARE(hidden, (QList<bool>{false, false, true, true, true, false, false, false, true, false}));
}

QTEST_APPLESS_MAIN(PasswdMaskTest)
#include "PasswdMaskTest.moc"
