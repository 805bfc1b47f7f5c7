// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/Expression.h"
#include "widgets/CaselessPattern.h"

#include <random>

#include <QtTest>

#include "tests/widgets/PlainExpression.h"

namespace {

class Generator
{
public:
    explicit Generator(quint32 seed) : random(seed) {}

    int below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random); }

    template <size_t count> QString one(const char* const (&from)[count])
    {
        return QString::fromUtf8(from[below(static_cast<int>(count))]);
    }

    // Makes a random expression. Some of these expressions are invalid.
    QString expression()
    {
        static const char* const pieces[] = {
            "a",       "b",        "ab",       "-",        "1",           " ",
            "/",       "é",        "€",        "🌧",     ".",           "*",
            "+",       "?",        "^",        "$",        "(",           ")",
            "|",       "[",        "]",        "{",        "}",           "\\",
            "\\.",     "\\*",      "\\(",      "\\)",      "\\[",         "\\]",
            "\\{",     "\\}",      "\\|",      "\\^",      "\\$",         "\\\\",
            "\\/",     "\\+",      "\\?",      "\\1",      "\\2",         "\\w",
            "\\W",     "\\s",      "\\S",      "\\b",      "\\B",         "\\<",
            "\\>",     "\\`",      "\\'",      "\\a",      "\\é",         "[ab]",
            "[^ab]",   "[]a]",     "[^]a]",    "[a\\]",    "[[:alpha:]]", "[[:digit:]b]",
            "[[.a.]]", "[[=a=]b]", "[[.].]a]", "[[.-.]b]", "[a-z]",       "[é€]",
            "[b-]",    "[[:",      ":]",       "{1}",      "{0}",         "{,2}",
            "{2,}",    "(a)",      "(ab|b)",   "(a)\\1",   "()",          "a*",
            "b?",      "é*",       "é?",       "\\.*",     "a+",          "€+",
            "ab{0}",   "a|",       ".*",       ".+",       "a{1,}",       "(a|b)*",
            "[^a]*",   "(ab)?"};
        QString text;
        for (int count = 1 + below(7); count > 0; --count) {
            text += one(pieces);
        }
        return text;
    }

    // Makes a random text from the characters that the expressions contain.
    QString text()
    {
        static const char* const pieces[] = {"a", "b", "ab", "aa", "-",  "1",  " ", "/",   "é", "€", "🌧",
                                             ".", "*", "+",  "?",  "^",  "$",  "(", ")",   "|", "[", "]",
                                             "{", "}", "\\", "w",  "é€", "\n", ":", "{1}", "A"};
        QString result;
        for (int count = below(9); count > 0; --count) {
            result += one(pieces);
        }
        return result;
    }

private:
    std::mt19937 random;
};

QString description(const QString& expression, const QByteArray& text)
{
    return QString("expression %1, text %2").arg(expression, QString::fromUtf8(text));
}

} // namespace

class ExpressionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anExpressionMatchesTheSameTextsAsInTheCLibrary_data()
    {
        QTest::addColumn<quint32>("seed");
        for (quint32 seed = 1; seed <= 10; ++seed) {
            QTest::newRow(qPrintable(QString::number(seed))) << seed;
        }
    }

    void anExpressionMatchesTheSameTextsAsInTheCLibrary()
    {
        QFETCH(quint32, seed);
        Generator generator(seed);
        int compiled = 0;
        int matched = 0;
        int found = 0;
        for (int i = 0; i < 3000; ++i) {
            const QString expression = generator.expression();
            const PlainExpression plain(expression.toUtf8());
            Expression ours;
            ours.compile(expression);
            compiled += plain.compiled() ? 1 : 0;
            QByteArray all;
            bool any = false;
            for (int j = 0; j < 20; ++j) {
                const QByteArray text = generator.text().toUtf8();
                const bool expected = plain.matches(text);
                QVERIFY2(ours.matches(text.constData()) == expected,
                         qPrintable(description(expression, text)));
                matched += expected ? 1 : 0;
                if (j % 4 == 0) {
                    // Clear the list often: in a long list, almost every expression would match one of the
                    // texts.
                    all.clear();
                    any = false;
                }
                all += text + '\0';
                any = any || expected;
                QVERIFY2(ours.matchesAny(all) == any, qPrintable(description(expression, all)));
                found += any ? 1 : 0;
            }
        }
        // The random cases are meaningful only if they include many valid and many invalid expressions, and
        // many texts with and without a match.
        QVERIFY2(compiled > 500 && compiled < 2500, qPrintable(QString::number(compiled)));
        QVERIFY2(matched > 1000 && matched < compiled * 20 - 1000, qPrintable(QString::number(matched)));
        QVERIFY2(found > matched && found < compiled * 20 - 1000, qPrintable(QString::number(found)));
    }

    void aBackReferenceInAnExpressionIsFound()
    {
        QVERIFY(Expression::refersToGroups("(a*)*\\1b"));
        QVERIFY(Expression::refersToGroups("^(\\w+\\s?)+\\1$"));
        QVERIFY(!Expression::refersToGroups("(a*)*b1"));
        QVERIFY(!Expression::refersToGroups("\\w+\\.0"));
        QVERIFY(!Expression::refersToGroups(QString()));
    }

    void anEscapedTextMatchesExactlyTheTextsThatContainIt()
    {
        Generator generator(99);
        for (int i = 0; i < 20000; ++i) {
            QString literal;
            while (literal.isEmpty()) {
                literal = generator.text();
            }
            const QString expression =
                QString(literal).replace(QRegularExpression("([][.*+?^$(){}|\\\\])"), "\\\\1");
            Expression ours;
            ours.compile(expression);
            const QByteArray text =
                (generator.text() + (i % 2 == 0 ? literal : QString()) + generator.text()).toUtf8();
            QVERIFY2(ours.matches(text.constData()) == text.contains(literal.toUtf8()),
                     qPrintable(description(expression, text)));
            QCOMPARE(ours.matchesAny("x" + QByteArray(1, '\0') + text + '\0'),
                     text.contains(literal.toUtf8()) || literal == "x");
        }
    }

    void theRequiredTextIsTheTextThatEveryMatchContains_data()
    {
        QTest::addColumn<QString>("expression");
        QTest::addColumn<QString>("required");
        QTest::addColumn<bool>("whole");
        const auto row = [](const char* expression, const char* required, bool whole = false) {
            QTest::newRow(expression)
                << QString::fromUtf8(expression) << QString::fromUtf8(required) << whole;
        };
        QTest::newRow("nothing") << QString("") << QString("") << true;
        row("kernel", "kernel", true);
        row("kernel-core 6", "kernel-core 6", true);
        row("lib.*so", "lib");
        row("li.*libso", "libso");
        row("ab.cd", "ab");
        row("^kernel", "kernel");
        row("kernel$", "kernel");
        row("^$", "");
        row(".*", "");
        row("abc*", "ab");
        row("abc?d", "ab");
        row("abc+d", "abc");
        row("abc+?d", "ab");
        row("abc++*d", "ab");
        row("abc+a*d", "abc");
        row("a*", "");
        row("*ab", "ab");
        row("é*", "");
        row("xé*", "x");
        row("x🌧?y", "x");
        row("é+", "é");
        row("abc{2}", "ab");
        row("abc{0}de", "ab");
        row("abc+{0}", "ab");
        row("abc{2}defg{1,2}", "def");
        row("abc{2", "");
        row("(abc)", "");
        row("(abc)?de", "de");
        row("ab(c|(d))e[)]fg", "ab");
        row("a(b[)]c\\)d)efg", "efg");
        row("a(b)c|d", "");
        row("abc|d", "");
        row("abcd()", "abcd");
        row("abcd)", "");
        row("abcd(", "");
        row("[abc]def", "def");
        row("abc[d]e", "abc");
        row("[]x]yz", "yz");
        row("[^]x]yz", "yz");
        row("[a\\]yz", "yz");
        row("[[:alpha:]]bc", "bc");
        row("[[:alpha:]x]bc", "bc");
        row("[[.].]]bc", "bc");
        row("[[=a=]]bc", "bc");
        row("bc[[:alpha:", "");
        row("bc[x", "");
        row("bc[", "");
        row("a]bc", "bc");
        row("a}bc", "bc");
        row("gtk\\+", "gtk+", true);
        row("a\\.b\\*c\\?\\(\\)\\[\\]\\{\\}\\|\\^\\$\\\\\\/", "a.b*c?()[]{}|^$\\/", true);
        row("a\\.*", "a");
        row("\\wab", "ab");
        row("ab\\>", "ab");
        row("a\\1bc", "bc");
        row("ab\\", "ab");
    }

    void theRequiredTextIsTheTextThatEveryMatchContains()
    {
        QFETCH(QString, expression);
        QFETCH(QString, required);
        QFETCH(bool, whole);
        bool answer = !whole;
        QCOMPARE(QString::fromUtf8(Expression::requiredText(expression.toUtf8(), answer)), required);
        QCOMPARE(answer, whole);
    }

    void anExpressionIsRewrittenForOnePassOnlyIfThisIsNecessaryAndPossible_data()
    {
        QTest::addColumn<QByteArray>("expression");
        QTest::addColumn<QByteArray>("onePass");
        const auto row = [](const char* expression, const char* onePass) {
            QTest::newRow(expression) << QByteArray(expression) << QByteArray(onePass);
        };
        row("a.*b", "^.*(a.*b)");
        row("a+", "^.*(a+)");
        row("a{2,}", "^.*(a{2,})");
        row("(.*)(.*)b", "^.*((.*)(.*)b)");
        row("[^a]*$", "^.*([^a]*$)");
        row("^a*|b", "");
        row("^a.*b", "");
        row("abc", "");
        row("a{2,3}", "");
        row("[a*]", "");
        row("a\\*", "");
        row("(a*)\\1", "");
        row("a*)", "");
        row("a*)(b", "");
        row("a*)|(b", "");
    }

    void anExpressionIsRewrittenForOnePassOnlyIfThisIsNecessaryAndPossible()
    {
        QFETCH(QByteArray, expression);
        QFETCH(QByteArray, onePass);
        QCOMPARE(Expression::inOnePass(expression), onePass);
    }

    // If a text is not UTF-8, "." does not match each of its bytes.
    void invalidUtf8IsMatchedAsInTheCLibrary()
    {
        for (const char* expression : {"a+b", "a.*b", "(a|b)+"}) {
            const PlainExpression plain(expression);
            Expression ours;
            ours.compile(expression);
            for (const char* text : {"\xff ab", "a\xe2\x82z ab", "\xed\xa0\x80 ab", "\xf5 aab", "\xc0 ab",
                                     "\xc3", "\xe0\x80\x80 ab", "\xf4\x90\x80\x80 ab", "\xf0\x80\x80\x80 ab",
                                     "a\xff"
                                     "b"}) {
                QCOMPARE(ours.matches(text), plain.matches(text));
            }
        }
    }

    void noTextMatchesIfNoExpressionIsSet()
    {
        Expression none;
        QVERIFY(!none.matches(""));
        QVERIFY(!none.matches("a"));
        QVERIFY(!none.matchesAny(QByteArray("a\0", 2)));
    }

    void anExpressionThatCannotBeCompiledMatchesNoText()
    {
        for (const char* text : {"(", "[", "a{2", "\\", "a\\", "[[:nonsense:]]", "kernel[", "kernel("}) {
            Expression broken;
            broken.compile(text);
            QVERIFY2(!broken.matches("kernel( [ \\ a{2"), text);
            QVERIFY2(!broken.matchesAny(QByteArray("kernel( [ \\ a{2\0", 17)), text);
        }
    }

    void theFaultDescribesASyntaxErrorInTheExpression()
    {
        Expression expression;
        QCOMPARE(expression.fault(), QString());
        expression.compile("a(");
        QCOMPARE(expression.fault(), QString("Unmatched ( or \\("));
        expression.compile("a{5");
        QCOMPARE(expression.fault(), QString("Unmatched \\{"));
        expression.compile("a");
        QCOMPARE(expression.fault(), QString());
    }

    void anExpressionIsInvalidIfItsRepetitionsNeedTooMuchMemory_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::newRow("one large bound") << "a{1,30000}" << false;
        QTest::newRow("nested bounds") << "((a{1,100}){1,100}){1,50}" << false;
        QTest::newRow("nested bounds in several groups") << "((ab{70}c)x(d{70})){70}" << false;
        QTest::newRow("nested bounds without an upper limit") << "((a{100,}){100,}){50,}" << false;
        QTest::newRow("three bounds after one letter") << "a{100}{100}{50}" << false;
        QTest::newRow("bound of a bracket expression") << "[}]{30000}" << false;
        QTest::newRow("many nested pluses")
            << QString("(").repeated(40) + "a" + QString(")+").repeated(40) << false;
        QTest::newRow("small bounds") << "(ab){2,20}[x-z]{3}c{255}" << true;
        QTest::newRow("many bounds in a row") << QString("a{9}b").repeated(50) << true;
        QTest::newRow("long text") << QString("abc.").repeated(1000) << true;
        QTest::newRow("escaped braces") << "a\\{30000\\}" << true;
        QTest::newRow("braces in brackets") << "a[{30000}]" << true;
    }

    void anExpressionIsInvalidIfItsRepetitionsNeedTooMuchMemory()
    {
        QFETCH(QString, text);
        QFETCH(bool, valid);
        Expression expression;
        expression.compile(text);
        QCOMPARE(expression.isValid(), valid);
        QCOMPARE(expression.fault(), valid ? QString() : QString("Regular expression too big"));
        QVERIFY(valid || !expression.matches("aaaa"));
        QVERIFY(CaselessPattern(text).isUsable() == valid);
    }

    void aSecondExpressionReplacesTheFirst()
    {
        Expression expression;
        expression.compile("kernel");
        QVERIFY(expression.matches("a kernel"));
        expression.compile("^c.t$");
        QVERIFY(!expression.matches("a kernel"));
        QVERIFY(expression.matches("cat"));
        expression.compile("(");
        QVERIFY(!expression.matches("cat"));
        expression.compile("");
        QVERIFY(expression.matches("cat"));
        QVERIFY(expression.matches(""));
    }

    void matchingIsCaseSensitive()
    {
        Expression expression;
        expression.compile("Kernel");
        QVERIFY(!expression.matches("kernel"));
        QVERIFY(!expression.matchesAny(QByteArray("kernel\0KERNEL\0", 14)));
        QVERIFY(expression.matchesAny(QByteArray("kernel\0Kernel\0", 14)));
    }

    void eachTextIsMatchedSeparately()
    {
        Expression expression;
        expression.compile("^b$");
        QVERIFY(!expression.matchesAny(QByteArray("ab\0ba\0", 6)));
        QVERIFY(expression.matchesAny(QByteArray("ab\0b\0", 5)));
        QVERIFY(expression.matchesAny(QByteArray("b\0ab\0", 5)));
        expression.compile("a.*b");
        QVERIFY(!expression.matchesAny(QByteArray("a\0b\0", 4)));
        expression.compile("^$");
        QVERIFY(!expression.matchesAny(QByteArray("a\0b\0", 4)));
        QVERIFY(expression.matchesAny(QByteArray("a\0b\0\0", 5)));
        QVERIFY(!expression.matchesAny(QByteArray()));
    }

    void anExpressionEndsAtANullCharacter()
    {
        for (const QString& text :
             {QString("ab.*") + QChar(0) + "c", QString("ab") + QChar(0) + "c.*defgh"}) {
            Expression expression;
            expression.compile(text);
            QVERIFY(expression.matches("xaby"));
            QVERIFY(expression.matchesAny(QByteArray("xaby\0", 5)));
            QVERIFY(!expression.matchesAny(QByteArray("cdefgh\0", 7)));
        }
    }

    void theLocaleOfTheTestsHasMultibyteCharacters()
    {
        // If the locale had only single-byte characters, the tests above would not test multibyte characters.
        Expression expression;
        expression.compile("^.$");
        QVERIFY(expression.matches("€"));
    }
};

QTEST_GUILESS_MAIN(ExpressionTest)
#include "ExpressionTest.moc"
