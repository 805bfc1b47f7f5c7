// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/base/Credentials.h"

#include <algorithm>
#include <limits>
#include <random>

#include <ctime>

#include <QFile>
#include <QRegularExpression>
#include <QTest>

using Credentials::Place;
using Credentials::Text;

namespace {

// Replaces each character of a password by a star, and marks the place of an empty password with a bar.
QString starred(const QString& text, Text kind)
{
    QString result = text;
    QVector<Place> found = Credentials::places(text, kind);
    std::reverse(found.begin(), found.end());
    for (const Place& place : qAsConst(found)) {
        const QString stars =
            place.length == 0 ? QStringLiteral("|") : QString(place.length, QLatin1Char('*'));
        result.replace(place.begin, place.length, stars);
    }
    return result;
}

// The rules of the scanner, Credentials::places(), as regular expressions. The test applies each expression
// at every position of a text.
QVector<QRegularExpression> expressions(Text kind)
{
    const auto make = [](const char* pattern) {
        return QRegularExpression(QLatin1String("\\G") + QLatin1String(pattern),
                                  QRegularExpression::DotMatchesEverythingOption);
    };
    QVector<QRegularExpression> all{
        make("(?i:/vantor)\\?[^=]*=[^&]*&[^=]*=(.*?)&path="),
        make("(?i:/vantor)[^\\s?]*\\?[^\\s&]*&[^\\s&=]*=([^\\s&]*)&path="),
        make("://[^/\\s:]*:([^/\\s]*)@"),
        make("://(?!\\[)[^/\\s:@?#]*:(?!\\$|[0-9]*(?:[/?#\\s]|\\z))([^/\\s@]*/\\S*)@"),
        make("(?i:password)=([^\\s&]*)"),
    };
    if (kind == Text::Options) {
        all << make("(?i:password)[ \\t]*[:=][ \\t]*([^\\n]*(?:\\n[ \\t][^\\n]*)*)");
    }
    return all;
}

QVector<bool> secretBy(const QRegularExpression& expression, const QString& text, QVector<bool> secret)
{
    for (int i = 0; i < text.size(); ++i) {
        const QRegularExpressionMatch match = expression.match(text, i, QRegularExpression::NormalMatch,
                                                               QRegularExpression::AnchoredMatchOption);
        std::fill(secret.begin() + std::max(0, match.capturedStart(1)),
                  secret.begin() + std::max(0, match.capturedEnd(1)), true);
    }
    return secret;
}

// Replaces each character of a secret by a star, except line feeds and the indentation after them.
QString lettersOf(const QString& text, const QVector<bool>& secret)
{
    QString result = text;
    bool indentation = false;
    for (int i = 0; i < text.size(); ++i) {
        const bool blank = text.at(i) == QLatin1Char(' ') || text.at(i) == QLatin1Char('\t');
        indentation = i > 0 && secret.at(i) && secret.at(i - 1) && blank &&
                      (indentation || text.at(i - 1) == QLatin1Char('\n'));
        if (secret.at(i) && text.at(i) != QLatin1Char('\n') && !indentation) {
            result[i] = QLatin1Char('*');
        }
    }
    return result;
}

// The processor time of this thread in nanoseconds, which does not depend on the load of the machine.
qint64 processorTime()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return qint64(time.tv_sec) * 1000000000 + time.tv_nsec;
}

QString randomText(std::mt19937& random)
{
    static const QStringList pieces{
        "/vantor",
        "/vantor?",
        "?",
        "&",
        "=",
        "&path=",
        "://",
        "http://",
        ":",
        "@",
        "/",
        " ",
        "\n",
        "\n  ",
        "a",
        "b=c",
        "password",
        "word=",
        "Pass",
        "u=v&p=w&",
        "80",
        "[",
        "$x",
        "#",
        "\t",
        "Vantor",
        "path=",
        "xyz",
        "::1",
        "&p=",
        "?u=",
        "proxy_password = ",
        "/vantor?u=v&p=",
        "&path=x",
        "://joe:",
        "w@h/",
        "?password=",
    };
    std::uniform_int_distribution<int> size(1, 16);
    std::uniform_int_distribution<int> piece(0, pieces.size() - 1);
    QString text;
    for (int count = size(random); count > 0; --count) {
        text += pieces.at(piece(random));
    }
    return text;
}

} // namespace

class CredentialsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void passwordsInUrlsAreFound_data();
    void passwordsInUrlsAreFound();
    void passwordsInOptionsAreFound_data();
    void passwordsInOptionsAreFound();
    void aTextWithAPlaceForAPasswordHoldsCredentials();
    void aTextHoldsAPasswordOnlyIfThePasswordIsNotEmpty();
    void theScannerAndRegularExpressionsFindTheSamePasswords_data();
    void theScannerAndRegularExpressionsFindTheSamePasswords();
    void everyPasswordIsHiddenByThreeDots();
    void credentialsAreRemovedFromUrls();
    void theSearchTimeIsLinearInTheLengthOfTheText_data();
    void theSearchTimeIsLinearInTheLengthOfTheText();
};

void CredentialsTest::passwordsInUrlsAreFound_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const auto add = [](const char* name, const char* text, const char* expected) {
        QTest::newRow(name) << QString::fromLatin1(text) << QString::fromLatin1(expected);
    };
    add("empty text", "", "");
    add("vantor", "http://h/vantor?u=bob&p=abc&path=/x", "http://h/vantor?u=bob&p=***&path=/x");
    add("vantor without a password", "http://h/vantor?u=&p=&path=/x", "http://h/vantor?u=&p=|&path=/x");
    add("vantor with a path before the query", "http://h/vantor/a/b?u=bob&p=abc&path=/x",
        "http://h/vantor/a/b?u=bob&p=***&path=/x");
    add("unfinished path parameter", "http://h/vantor?u=bob&p=abc&pat", "http://h/vantor?u=bob&p=abc&pat");
    add("nothing after vantor", "/vantor?", "/vantor?");
    add("no path parameter", "/vantor?u=&p=", "/vantor?u=&p=");
    add("ampersand and blank in the password", "/vantor?u=&p=a&b c=d&path=", "/vantor?u=&p=*******&path=");
    add("password on two lines", "/vantor?u=&p=ab\n cd&path=", "/vantor?u=&p=**\n **&path=");
    add("several URLs", "/vantor?u=&p=ab&path=\nhttp://k/\n/vantor?u=&p=c&path=/vantor?u=&p=d&path=x",
        "/vantor?u=&p=**&path=\nhttp://k/\n/vantor?u=&p=*&path=/vantor?u=&p=*&path=x");
    add("password before the host", "https://me:abc@h:80/x", "https://me:***@h:80/x");
    add("an at sign in the password", "https://me:a@c@h/x", "https://me:***@h/x");
    add("an at sign in the name", "https://me@corp:ac@h/x", "https://me@corp:**@h/x");
    add("a slash in the password", "https://me:a/c@h/x", "https://me:***@h/x");
    add("no name", "https://:abc@h/x", "https://:***@h/x");
    add("no password", "https://me:@h/x", "https://me:|@h/x");
    add("a name without a password", "https://me@h/x", "https://me@h/x");
    add("ports", "http://h:80/a@b http://h:$port/a@b http://h:/a@b http://[::1]/a@b",
        "http://h:80/a@b http://h:$port/a@b http://h:/a@b http://[::1]/a@b");
    add("no URL", "write to joe:k@h", "write to joe:k@h");
    add("password parameters", "/x?Password=abc&y=z&db_password=&z", "/x?Password=***&y=z&db_password=|&z");
    add("an option instead of a URL", "password = abc", "password = abc");
}

void CredentialsTest::passwordsInUrlsAreFound()
{
    QFETCH(QString, text);
    QTEST(starred(text, Text::Urls), "expected");
}

void CredentialsTest::passwordsInOptionsAreFound_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const auto add = [](const char* name, const char* text, const char* expected) {
        QTest::newRow(name) << QString::fromLatin1(text) << QString::fromLatin1(expected);
    };
    add("usual", "a=b\npassword=x&y z\nb=c", "a=b\npassword=*****\nb=c");
    add("blanks and a colon", "proxy_Password \t: \tabc", "proxy_Password \t: \t***");
    add("empty password", "password=\n", "password=|\n");
    add("password on several lines", "password=ab\n  cd\n\te f\nx=y", "password=**\n  **\n\t***\nx=y");
    add("password only on the second line", "password=\n  ab\nx=y", "password=|\n  **\nx=y");
    add("password in a comment", "# password=ab", "# password=**");
    add("options that are no passwords", "passwords=ab\npassword_file=x\nusername=y",
        "passwords=ab\npassword_file=x\nusername=y");
    add("URL of a proxy", "proxy=http://me:abc@h:3128/", "proxy=http://me:***@h:3128/");
    add("a vantor URL", "x=/vantor?u=&p=ab&path=", "x=/vantor?u=&p=**&path=");
}

void CredentialsTest::passwordsInOptionsAreFound()
{
    QFETCH(QString, text);
    QTEST(starred(text, Text::Options), "expected");
}

void CredentialsTest::aTextWithAPlaceForAPasswordHoldsCredentials()
{
    QVERIFY(Credentials::holds(QStringLiteral("/vantor?u=&p=&path="), Text::Urls));
    QVERIFY(Credentials::holds(QStringLiteral("[r]\nproxy=http://u:p@h/\n"), Text::Options));
    QVERIFY(Credentials::holds(QStringLiteral("password : x"), Text::Options));
    QVERIFY(!Credentials::holds(QStringLiteral("password : x"), Text::Urls));
    QVERIFY(!Credentials::holds(QStringLiteral("http://h/vantor\nusername=u\n"), Text::Options));
}

void CredentialsTest::aTextHoldsAPasswordOnlyIfThePasswordIsNotEmpty()
{
    for (const char* text : {"/vantor?u=&p=&path=", "password=\n", "password = \n[r]\n",
                             "http://h/?password=", "http://u:@h/", "http://h/\n"}) {
        QVERIFY2(!Credentials::holdsPassword(QLatin1String(text), Text::Options), text);
    }
    for (const char* text : {"/vantor?u=&p=x&path=", "password=x", "password=\n  x\n", "http://h/?password=x",
                             "http://u:p@h/", "password=\nproxy=http://u:p@h/\n"}) {
        QVERIFY2(Credentials::holdsPassword(QLatin1String(text), Text::Options), text);
    }
}

void CredentialsTest::theScannerAndRegularExpressionsFindTheSamePasswords_data()
{
    QTest::addColumn<bool>("options");
    QTest::newRow("URLs") << false;
    QTest::newRow("options") << true;
}

void CredentialsTest::theScannerAndRegularExpressionsFindTheSamePasswords()
{
    QFETCH(bool, options);
    const Text kind = options ? Text::Options : Text::Urls;
    const QVector<QRegularExpression> all = expressions(kind);
    std::mt19937 random(20);
    int withSecrets = 0;
    for (int i = 0; i < 5000; ++i) {
        const QString text = randomText(random);
        QVector<bool> secret(text.size(), false);
        for (const QRegularExpression& expression : all) {
            QVERIFY2(expression.isValid(), qPrintable(expression.errorString()));
            secret = secretBy(expression, text, secret);
        }
        QVector<bool> found(text.size(), false);
        const QVector<Place> places = Credentials::places(text, kind);
        int last = -1;
        for (const Place& place : places) {
            QVERIFY2(place.begin > last && place.length >= 0 && place.end() <= text.size(), qPrintable(text));
            last = place.end();
            std::fill(found.begin() + place.begin, found.begin() + place.end(), true);
        }
        const QString message = QStringLiteral("%1\n---\n%2").arg(text, lettersOf(text, found));
        QVERIFY2(lettersOf(text, found) == lettersOf(text, secret), qPrintable(message));
        withSecrets += places.isEmpty() ? 0 : 1;
    }
    QVERIFY(withSecrets > 500);
}

void CredentialsTest::everyPasswordIsHiddenByThreeDots()
{
    QCOMPARE(Credentials::hidden(QStringLiteral("a http://me:x@h/ b\n\nc ftp://me:longer@h/?password=y&z\n")),
             QString::fromUtf8("a http://me:●●●@h/ b\n\nc ftp://me:●●●@h/?password=●●●&z\n"));
    const QString without = QStringLiteral("http://me:@h/vantor?u=&p=&path= password: x");
    QCOMPARE(Credentials::hidden(without), without);
    // A match never continues in the next line.
    const QString lines = QStringLiteral("/vantor?u=&\np=x\n&path=");
    QCOMPARE(Credentials::hidden(lines), lines);
}

void CredentialsTest::credentialsAreRemovedFromUrls()
{
    QFile file(QFINDTESTDATA("../support/urls-with-credentials"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    int tried = 0;
    for (const QString& line : lines) {
        if (!line.startsWith(QLatin1Char('#'))) {
            const QStringList pair = line.split(QLatin1Char('\t'));
            QCOMPARE(pair.size(), 2);
            QCOMPARE(Credentials::removed(pair.at(0)), pair.at(1));
            ++tried;
        }
    }
    QVERIFY(tried > 20);
}

void CredentialsTest::theSearchTimeIsLinearInTheLengthOfTheText_data()
{
    QTest::addColumn<QString>("piece");
    for (const char* piece : {"/vantor?",    "/vantor",       "/vantor?a=",
                              "/vantor?a=&", "/vantor?a=&b=", "/vantor?a=b&c=d&path=",
                              "://",         "://a:",         "://a:b@",
                              "://a:x ",     "://a:x/",       "://@?",
                              "password",    "password=",     "password= ",
                              "password=a ", "password\t",    "a",
                              "@",           "password=\n ",  "/vantor?a=b&c=d&path=x /vantor?=&"}) {
        QTest::newRow(piece) << QString::fromLatin1(piece);
    }
}

// The second text is eight times as long as the first text. For the second text, a linear search takes 8
// times as long as for the first text, and a quadratic search takes 64 times as long.
void CredentialsTest::theSearchTimeIsLinearInTheLengthOfTheText()
{
    QFETCH(QString, piece);
    const auto nanoseconds = [](const QString& text) {
        qint64 least = std::numeric_limits<qint64>::max();
        for (int i = 0; i < 3; ++i) {
            const qint64 begin = processorTime();
            Credentials::places(text, Text::Urls);
            Credentials::places(text, Text::Options);
            Credentials::hidden(text);
            Credentials::removed(text);
            Credentials::vantorParts(text);
            least = std::min(least, processorTime() - begin);
        }
        return least;
    };
    const QString text = piece.repeated(20000 / piece.size());
    const qint64 shorter = nanoseconds(text);
    const qint64 longer = nanoseconds(text.repeated(8));
    QVERIFY2(longer < 30 * shorter, qPrintable(QStringLiteral("%1 %2").arg(shorter).arg(longer)));
}

QTEST_APPLESS_MAIN(CredentialsTest)
#include "CredentialsTest.moc"
