// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoVantor.h"

#include <algorithm>
#include <random>

#include <QtTest>

#include "app/base/Credentials.h"
#include "repo/RepoEntry.h"

using namespace Repo;

namespace {

struct Auth
{
    bool found;
    QStringList pieces; // name key, name, password key, password
};

template <typename Source> Auth authOf(const Source& source)
{
    QString nameKey = QStringLiteral("old");
    QString name = nameKey;
    QString passwordKey = nameKey;
    QString password = nameKey;
    const bool found = Vantor::getAuth(source, nameKey, name, passwordKey, password);
    return {found, {nameKey, name, passwordKey, password}};
}

QString password(const QString& url)
{
    return authOf(url).pieces.at(3);
}

// Joins randomly chosen pieces of URLs.
QString randomUrls(std::mt19937& random)
{
    static const QStringList pieces{"/vantor?", "/vantor?u=", "&p=", "&path=", "&path=x",  "a",
                                    "=",        "&",          " ",   "\n",     "http://h", "/vantor?u=a&p=b",
                                    "/",        "x=y",        "b&c", "joe"};
    std::uniform_int_distribution<int> size(1, 12);
    std::uniform_int_distribution<int> piece(0, pieces.size() - 1);
    QString text;
    for (int count = size(random); count > 0; --count) {
        text += pieces.at(piece(random));
    }
    return text;
}

const QString base = QStringLiteral("http://h/vantor?u=bob&p=secret&path=/x");

} // namespace

class RepoVantorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theCredentialsInAUrlAreFound_data();
    void theCredentialsInAUrlAreFound();
    void thePartsOfTheCredentialsAreEmptyIfARepositoryHasNoCredentials();
    void credentialsInUrlsArePreferredToCredentialsInTheMirrorList();
    void theMirrorListIsSearchedIfTheUrlsHaveNoCredentials();
    void aNameWithBlankAndAmpersandIsEncoded();
    void specialCharactersAreEncodedWithLowerCaseHexadecimalDigits_data();
    void specialCharactersAreEncodedWithLowerCaseHexadecimalDigits();
    void ordinaryCharactersAreNotEncoded();
    void writtenCredentialsAreReadBack_data();
    void writtenCredentialsAreReadBack();
    void escapesInUpperOrLowerCaseAreDecoded();
    void incompleteEscapesAreNotDecoded();
    void everyCredentialUrlGetsTheSameCredentials();
    void replacingTheCredentialsKeepsTheParameterNames();
    void replacingThePasswordKeepsTheName();
    void replacingTheCredentialsDoesNotChangeATextWithoutCredentials();
    void theRegularExpressionsHaveTheExpectedPatterns();
    void theExpressionForOneUrlCapturesItsPassword();
    void theExpressionForUrlsCapturesEachPassword();
    void theFirstMaskedPlaceInACredentialUrlIsItsPassword_data();
    void theFirstMaskedPlaceInACredentialUrlIsItsPassword();
    void theExpressionsCaptureOnlyPasswords();
    void replacingTheCredentialsChangesOnlyTheMatchesOfTheExpression();
};

void RepoVantorTest::theCredentialsInAUrlAreFound_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("found");
    QTest::addColumn<QStringList>("pieces");
    const QStringList none{QString(), QString(), QString(), QString()};
    QTest::newRow("usual") << base << true << QStringList{"u", "bob", "p", "secret"};
    QTest::newRow("empty values") << "http://h/vantor?u=&p=&path=/x" << true << QStringList{"u", "", "p", ""};
    QTest::newRow("empty keys") << "/vantor?=&=&path=" << true << QStringList{"", "", "", ""};
    QTest::newRow("encoded") << "/vantor?u%20k=a%20b&p=%26&path=" << true
                             << QStringList{"u k", "a b", "p", "&"};
    QTest::newRow("in the second URL")
        << "http://a/b\n" + base << true << QStringList{"u", "bob", "p", "secret"};
    QTest::newRow("in both URLs") << base + "\nhttp://h/vantor?n=eve&w=other&path=/x" << true
                                  << QStringList{"u", "bob", "p", "secret"};
    QTest::newRow("empty") << QString() << false << none;
    QTest::newRow("no vantor") << "http://h/x?u=bob&p=secret&path=/x" << false << none;
    QTest::newRow("vantor in different letter case")
        << "http://h/Vantor?u=bob&p=secret&path=/x" << false << none;
    QTest::newRow("no name key") << "http://h/vantor?u" << false << none;
    QTest::newRow("no end of the name") << "http://h/vantor?u=bob" << false << none;
    QTest::newRow("no password key") << "http://h/vantor?u=bob&p" << false << none;
    QTest::newRow("no &path=") << "http://h/vantor?u=bob&p=secret" << false << none;
}

void RepoVantorTest::theCredentialsInAUrlAreFound()
{
    QFETCH(QString, url);
    const Auth auth = authOf(url);
    QTEST(auth.found, "found");
    QTEST(auth.pieces, "pieces");
}

void RepoVantorTest::thePartsOfTheCredentialsAreEmptyIfARepositoryHasNoCredentials()
{
    QCOMPARE(authOf(Entry()).pieces, (QStringList{QString(), QString(), QString(), QString()}));
}

void RepoVantorTest::credentialsInUrlsArePreferredToCredentialsInTheMirrorList()
{
    Entry entry;
    entry.baseurl = base;
    entry.mirrorlist = QStringLiteral("http://h/vantor?n=eve&w=other&path=/x");
    QVERIFY(authOf(entry).found);
    QCOMPARE(authOf(entry).pieces.at(1), QStringLiteral("bob"));
}

void RepoVantorTest::theMirrorListIsSearchedIfTheUrlsHaveNoCredentials()
{
    Entry entry;
    entry.baseurl = QStringLiteral("http://h/plain");
    entry.mirrorlist = base;
    QVERIFY(authOf(entry).found);
    QCOMPARE(authOf(entry).pieces.at(1), QStringLiteral("bob"));
}

void RepoVantorTest::aNameWithBlankAndAmpersandIsEncoded()
{
    const QString url = Vantor::replaceAuth(base, QStringLiteral("a b&c"), QStringLiteral("secret"));
    QCOMPARE(url, QStringLiteral("http://h/vantor?u=a%20b%26c&p=secret&path=/x"));
    QCOMPARE(authOf(url).pieces.at(1), QStringLiteral("a b&c"));
}

void RepoVantorTest::specialCharactersAreEncodedWithLowerCaseHexadecimalDigits_data()
{
    QTest::addColumn<QString>("character");
    QTest::addColumn<QString>("encoded");
    const QByteArray special("$&+,/:;=?@ \"<>#%{}|\\^~[]");
    for (const char character : special) {
        const QByteArray code = '%' + QByteArray(1, character).toHex();
        QTest::newRow(code.constData()) << QString(QLatin1Char(character)) << QString::fromLatin1(code);
    }
    QTest::newRow("tab") << QStringLiteral("\t") << QStringLiteral("%09");
    QTest::newRow("no-break space") << QString(QChar(0xa0)) << QStringLiteral("%a0");
}

void RepoVantorTest::specialCharactersAreEncodedWithLowerCaseHexadecimalDigits()
{
    QFETCH(QString, character);
    QFETCH(QString, encoded);
    QCOMPARE(Vantor::replaceAuth(base, character),
             QStringLiteral("http://h/vantor?u=bob&p=%1&path=/x").arg(encoded));
    QCOMPARE(password(Vantor::replaceAuth(base, character)), character);
}

void RepoVantorTest::ordinaryCharactersAreNotEncoded()
{
    const QString ordinary = QString::fromUtf8("azAZ09-_.!*'()`\xc3\xa4\xe2\x82\xac");
    QCOMPARE(Vantor::replaceAuth(base, ordinary),
             QStringLiteral("http://h/vantor?u=bob&p=%1&path=/x").arg(ordinary));
}

void RepoVantorTest::writtenCredentialsAreReadBack_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("an escape") << "a%41";
    QTest::newRow("an escaped percent sign") << "100%25";
    QTest::newRow("the end of a password") << "x&path=/y";
    QTest::newRow("backslash and digit") << "\\1";
    QTest::newRow("many percent signs") << "%%%41%%";
}

void RepoVantorTest::writtenCredentialsAreReadBack()
{
    QFETCH(QString, text);
    const QString url = Vantor::replaceAuth(base, text, text, text, text);
    QCOMPARE(authOf(url).pieces, (QStringList{text, text, text, text}));
    QVERIFY(url.endsWith(QStringLiteral("&path=/x")));
}

void RepoVantorTest::escapesInUpperOrLowerCaseAreDecoded()
{
    QCOMPARE(password(QStringLiteral("/vantor?u=&p=%2F%2f%c3%C3&path=")), QString::fromLatin1("//\xc3\xc3"));
}

void RepoVantorTest::incompleteEscapesAreNotDecoded()
{
    QCOMPARE(password(QStringLiteral("/vantor?u=&p=%g1%1g%%20%&path=")), QStringLiteral("%g1%1g% %"));
    QCOMPARE(password(QStringLiteral("/vantor?u=&p=%4&path=")), QStringLiteral("%4"));
}

void RepoVantorTest::everyCredentialUrlGetsTheSameCredentials()
{
    const QString urls = QStringLiteral("http://a/vantor?u=x&p=y&path=/1\nhttp://b/plain\n"
                                        "http://c/vantor?name=&word=&path=/2");
    QCOMPARE(Vantor::replaceAuth(urls, QStringLiteral("u"), QStringLiteral("eve"), QStringLiteral("p"),
                                 QStringLiteral("pw")),
             QStringLiteral("http://a/vantor?u=eve&p=pw&path=/1\nhttp://b/plain\n"
                            "http://c/vantor?u=eve&p=pw&path=/2"));
}

void RepoVantorTest::replacingTheCredentialsKeepsTheParameterNames()
{
    QCOMPARE(Vantor::replaceAuth(QStringLiteral("/vantor?login=&key%20word=&path="), QStringLiteral("eve"),
                                 QStringLiteral("pw")),
             QStringLiteral("/vantor?login=eve&key%20word=pw&path="));
}

void RepoVantorTest::replacingThePasswordKeepsTheName()
{
    QCOMPARE(Vantor::replaceAuth(base, QStringLiteral("pw")),
             QStringLiteral("http://h/vantor?u=bob&p=pw&path=/x"));
}

void RepoVantorTest::replacingTheCredentialsDoesNotChangeATextWithoutCredentials()
{
    const QString url = QStringLiteral("http://h/x?u=bob&p=secret&path=/x");
    QCOMPARE(Vantor::replaceAuth(url, QStringLiteral("pw")), url);
    QCOMPARE(Vantor::replaceAuth(url, QStringLiteral("eve"), QStringLiteral("pw")), url);
    QCOMPARE(Vantor::replaceAuth(url, QStringLiteral("u"), QStringLiteral("eve"), QStringLiteral("p"),
                                 QStringLiteral("pw")),
             url);
}

void RepoVantorTest::theRegularExpressionsHaveTheExpectedPatterns()
{
    QCOMPARE(Vantor::oneUrlRegExp().pattern(),
             QStringLiteral("^.*/vantor\\?[^&\\s]*=[^&\\s]*&[^&\\s]*=([^&\\s]*)&path=.*$"));
    QCOMPARE(Vantor::urlsRegExp().pattern(),
             QStringLiteral("/vantor\\?[^&\\s]*=[^&\\s]*&[^&\\s]*=([^&\\s]*)&path=[\\s]*\\b"));
    QCOMPARE(Vantor::oneUrlRegExp().caseSensitivity(), Qt::CaseSensitive);
    QCOMPARE(Vantor::urlsRegExp().caseSensitivity(), Qt::CaseSensitive);
}

void RepoVantorTest::theExpressionForOneUrlCapturesItsPassword()
{
    const QRegExp expression = Vantor::oneUrlRegExp();
    QVERIFY(expression.exactMatch(base));
    QCOMPARE(expression.cap(1), QStringLiteral("secret"));
    QVERIFY(!expression.exactMatch(QStringLiteral("http://h/vantor?u=bob&p=secret")));
}

void RepoVantorTest::theExpressionForUrlsCapturesEachPassword()
{
    const QRegExp expression = Vantor::urlsRegExp();
    const QString urls = QStringLiteral("http://a/vantor?u=x&p=one&path=a\nhttp://b/vantor?u=y&p=two&path=b");
    const int first = expression.indexIn(urls);
    QCOMPARE(expression.cap(1), QStringLiteral("one"));
    QVERIFY(expression.indexIn(urls, first + 1) > first);
    QCOMPARE(expression.cap(1), QStringLiteral("two"));
}

void RepoVantorTest::theFirstMaskedPlaceInACredentialUrlIsItsPassword_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("captured");
    QTest::newRow("slash after &path=") << base << "secret";
    QTest::newRow("word after &path=") << "/vantor?u=bob&p=secret&path=x"
                                       << "secret";
    QTest::newRow("ampersand in a key") << "/vantor?u=bob&x&p=secret&path="
                                        << "secret";
    QTest::newRow("ampersand in the password") << "/vantor?u=bob&p=sec&ret&path="
                                               << "sec&ret";
    QTest::newRow("blank in the password") << "/vantor?u=bob&p=sec ret&path="
                                           << "sec ret";
    QTest::newRow("equals sign in the password") << "/vantor?u=bob&p=sec=ret&path="
                                                 << "sec=ret";
    QTest::newRow("two URLs") << "/vantor?u=bob&p=one&path=\n/vantor?u=bob&p=two&path="
                              << "one";
}

void RepoVantorTest::theFirstMaskedPlaceInACredentialUrlIsItsPassword()
{
    QFETCH(QString, url);
    const QVector<Credentials::Place> places = Credentials::places(url, Credentials::Text::Urls);
    QVERIFY(!places.isEmpty());
    QTEST(url.mid(places.first().begin, places.first().length), "captured");
    QCOMPARE(url.mid(places.first().begin, places.first().length), password(url));
}

void RepoVantorTest::theExpressionsCaptureOnlyPasswords()
{
    std::mt19937 random(6);
    int captured = 0;
    for (int i = 0; i < 5000; ++i) {
        const QString text = randomUrls(random);
        QVector<bool> secret(text.size() + 1, false);
        const QVector<Credentials::Place> places = Credentials::places(text, Credentials::Text::Urls);
        for (const Credentials::Place& place : places) {
            std::fill(secret.begin() + place.begin, secret.begin() + place.end(), true);
        }
        const auto isSecret = [&secret, &text, &captured](const QRegExp& matched) {
            ++captured;
            for (int at = matched.pos(1); at < matched.pos(1) + matched.cap(1).size(); ++at) {
                if (!secret.at(at) && text.at(at) != QLatin1Char('\n')) {
                    return false;
                }
            }
            return true;
        };
        const QRegExp one = Vantor::oneUrlRegExp();
        QVERIFY2(!one.exactMatch(text) || isSecret(one), qPrintable(text));
        const QRegExp several = Vantor::urlsRegExp();
        for (int at = several.indexIn(text); at >= 0;
             at = several.indexIn(text, at + several.matchedLength())) {
            QVERIFY2(isSecret(several), qPrintable(text));
        }
    }
    QVERIFY(captured > 200);
}

void RepoVantorTest::replacingTheCredentialsChangesOnlyTheMatchesOfTheExpression()
{
    const QRegExp credentials(QStringLiteral("/vantor\\?[^&\\s]*=[^&\\s]*&[^&\\s]*=[^&\\s]*&path="));
    std::mt19937 random(7);
    int replaced = 0;
    for (int i = 0; i < 5000; ++i) {
        const QString text = randomUrls(random);
        QString expected = text;
        expected.replace(credentials, QStringLiteral("/vantor?n=N&w=W&path="));
        QCOMPARE(Vantor::replaceAuth(text, QStringLiteral("n"), QStringLiteral("N"), QStringLiteral("w"),
                                     QStringLiteral("W")),
                 expected);
        replaced += expected == text ? 0 : 1;
    }
    QVERIFY(replaced > 200);
}

QTEST_APPLESS_MAIN(RepoVantorTest)
#include "RepoVantorTest.moc"
