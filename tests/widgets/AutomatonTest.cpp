// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/Automaton.h"

#include <clocale>
#include <random>

#include <QProcess>
#include <QtTest>

#include "tests/widgets/PlainExpression.h"

namespace {

class Generator
{
public:
    explicit Generator(quint32 seed) : random(seed) {}

    int below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random); }

    template <size_t count> QByteArray one(const char* const (&from)[count])
    {
        return from[below(static_cast<int>(count))];
    }

    // Makes an expression that has mostly the translated forms.
    QByteArray expression()
    {
        QByteArray text;
        for (int left = below(4) == 0 ? 2 : 1; left > 0; --left) {
            text += below(6) == 0 ? "^" : "";
            text += alternative(3);
            text += below(6) == 0 ? "$" : "";
            text += left > 1 ? "|" : "";
        }
        return text;
    }

    // Makes a text from the characters of the expressions.
    QByteArray text(bool isAscii, bool isUtf8)
    {
        static const char* const ascii[] = {"a", "b",  "c", "h", "A", "1",  "_", " ",
                                            "-", "ab", ".", "]", "^", "\n", "l", "aa"};
        static const char* const beyond[] = {"\u00e9", "\u20ac", "\u00b7", "\U0001f327", "\u0301", "\u00c9"};
        static const char* const invalid[] = {"\xff",         "\xc3",         "\xe2\x82",         "\x80",
                                              "\xed\xa0\x80", "\xe0\x80\x80", "\xf4\x90\x80\x80", "\xf8"};
        QByteArray result;
        for (int count = below(9); count > 0; --count) {
            const int kind = below(8);
            result += !isUtf8 && kind == 0 ? one(invalid) : !isAscii && kind < 3 ? one(beyond) : one(ascii);
        }
        return result;
    }

private:
    QByteArray alternative(int depth)
    {
        QByteArray text;
        for (int count = 1 + below(4); count > 0; --count) {
            text += atom(depth);
            text += below(2) == 0 ? repetition() : QByteArray();
        }
        return text;
    }

    QByteArray atom(int depth)
    {
        static const char* const atoms[] = {"a",
                                            "b",
                                            "c",
                                            "h",
                                            "A",
                                            "1",
                                            "_",
                                            " ",
                                            "-",
                                            "\n",
                                            "\u00e9",
                                            "\u20ac",
                                            "l",
                                            ".",
                                            ".",
                                            "\\.",
                                            "\\]",
                                            "\\^",
                                            "\\-",
                                            "\\w",
                                            "\\W",
                                            "\\s",
                                            "\\S",
                                            "[ab]",
                                            "[^ab]",
                                            "[a-c]",
                                            "[^a-c]",
                                            "[]a]",
                                            "[^]a]",
                                            "[a\\]",
                                            "[-a]",
                                            "[a-]",
                                            "[[:alpha:]]",
                                            "[^[:alpha:]]",
                                            "[[:space:]b]",
                                            "[\u00e9]",
                                            "[^\u00e9]",
                                            "[a-\u00e9]",
                                            "[[:upper:]]",
                                            "[l\u00b7]"};
        static const char* const other[] = {"\\b", "\\B", "\\<",    "\\>", "\\`",  "\\'", "()",
                                            "^",   "$",   "(a)\\1", "}",   "]",    "{",   "*",
                                            "+",   "?",   ")",      "(",   "(|a)", "\\a"};
        if (depth > 0 && below(4) == 0) {
            QByteArray text = "(" + alternative(depth - 1);
            for (int count = below(3); count > 0; --count) {
                text += '|' + alternative(depth - 1);
            }
            return text + ')';
        }
        return below(60) == 0 ? one(other) : one(atoms);
    }

    QByteArray repetition()
    {
        static const char* const repetitions[] = {"*",   "+",    "?",     "*",    "+",     "?",     "{1}",
                                                  "{2}", "{1,}", "{0,2}", "{0,}", "{1,3}", "{2,2}", "{3}"};
        static const char* const other[] = {"{0}", "{,2}", "**",    "+?",  "{2}{2}",
                                            "{1",  "{a}",  "{0,0}", "?{3}"};
        return below(20) == 0 ? one(other) : one(repetitions);
    }

    std::mt19937 random;
};

QString description(const QByteArray& expression, const QByteArray& text)
{
    return QString("expression %1, text %2")
        .arg(QString::fromUtf8(expression), QString::fromLatin1(text.toPercentEncoding(" ")));
}

QByteArray joined(const QList<QByteArray>& texts)
{
    return texts.join('\0');
}

} // namespace

class AutomatonTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Makes locales in which characters have one or several bytes. German sorts the letters of each pair
    // separately. Czech sorts some pairs as one character.
    void initTestCase()
    {
        QVERIFY(directory.isValid());
        for (const auto& [locale, source, encoding] :
             {std::make_tuple("de_DE.UTF-8", "de_DE", "UTF-8"),
              std::make_tuple("cs_CZ.UTF-8", "cs_CZ", "UTF-8"),
              std::make_tuple("cs_CZ.ISO-8859-2", "cs_CZ", "ISO-8859-2"),
              std::make_tuple("ja_JP.EUC-JP", "ja_JP", "EUC-JP")}) {
            QCOMPARE(
                QProcess::execute("localedef", {"-i", source, "-f", encoding, directory.filePath(locale)}),
                0);
        }
        qputenv("LOCPATH", directory.path().toLocal8Bit());
    }

    void cleanup() { QVERIFY(setlocale(LC_ALL, "C.UTF-8") != nullptr); }

    void anAutomatonNeverContradictsTheCLibrary_data()
    {
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<quint32>("seed");
        const int factor = qMax(1, qEnvironmentVariableIntValue("VYRE_TEST_FACTOR"));
        for (const char* locale :
             {"C", "C.UTF-8", "de_DE.UTF-8", "cs_CZ.UTF-8", "cs_CZ.ISO-8859-2", "ja_JP.EUC-JP"}) {
            for (int seed = 1; seed <= 2 * factor; ++seed) {
                QTest::addRow("%s, %d", locale, seed) << QByteArray(locale) << static_cast<quint32>(seed);
            }
        }
    }

    void anAutomatonNeverContradictsTheCLibrary()
    {
        QFETCH(QByteArray, locale);
        QFETCH(quint32, seed);
        QVERIFY(setlocale(LC_ALL, locale.constData()) != nullptr);
        const bool isUtf8 = locale.endsWith("UTF-8");
        Generator generator(seed);
        int usable = 0;
        int yes = 0;
        int no = 0;
        for (int i = 0; i < 1000; ++i) {
            const QByteArray expression = generator.expression();
            const PlainExpression plain(expression);
            if (!plain.compiled()) {
                continue;
            }
            const Automaton automaton(expression);
            usable += automaton.isUsable() ? 1 : 0;
            QList<QByteArray> texts;
            bool any = false;
            bool areAscii = true;
            for (int j = 0; j < 20; ++j) {
                const bool isAscii = generator.below(3) != 0;
                const bool isValid = isAscii || generator.below(4) != 0;
                const QByteArray text = generator.text(isAscii, isValid);
                const bool expected = plain.matches(text);
                const Automaton::Answer answer = automaton.compare(text.constData(), text.size());
                QVERIFY2(answer == Automaton::Unknown || (answer == Automaton::Yes) == expected,
                         qPrintable(description(expression, text)));
                // If the automaton knew no result, the test could not fail.
                if (automaton.isUsable()) {
                    QVERIFY2(answer != Automaton::Unknown || !isAscii,
                             qPrintable(description(expression, text)));
                }
                yes += answer == Automaton::Yes ? 1 : 0;
                no += answer == Automaton::No ? 1 : 0;
                if (generator.below(4) == 0) {
                    texts.clear();
                    any = false;
                    areAscii = true;
                }
                texts.append(text);
                any = any || expected;
                areAscii = areAscii && isAscii;
                const QByteArray all = joined(texts);
                const Automaton::Answer ofAll = automaton.compareAny(all.constData(), all.size());
                QVERIFY2(ofAll == Automaton::Unknown || (ofAll == Automaton::Yes) == any,
                         qPrintable(description(expression, all)));
                if (automaton.isUsable()) {
                    QVERIFY2(ofAll != Automaton::Unknown || !areAscii,
                             qPrintable(description(expression, all)));
                }
            }
        }
        if (locale.startsWith("ja")) {
            QCOMPARE(usable, 0);
        } else {
            const QByteArray numbers =
                QByteArray::number(usable) + ' ' + QByteArray::number(yes) + ' ' + QByteArray::number(no);
            const int least = isUtf8 ? 400 : 300;
            QVERIFY2(usable > (locale.startsWith("cs") ? 30 : least), numbers.constData());
            QVERIFY2(yes > 200 && no > 200, numbers.constData());
        }
    }

    void anExpressionIsTranslatedIfItHasTheSameMeaningInBothLibraries_data()
    {
        QTest::addColumn<QByteArray>("expression");
        QTest::addColumn<bool>("usable");
        const auto rows = [](bool usable, const QByteArrayList& expressions) {
            for (const QByteArray& expression : expressions) {
                QTest::newRow(expression.isEmpty() ? "nothing" : expression.left(60).constData())
                    << expression << usable;
            }
        };
        rows(true, {"a",
                    "ab c",
                    "\u00e9",
                    "\U0001f327*",
                    "a.b",
                    ".",
                    "a*",
                    "a+b?",
                    "a{2}",
                    "a{2,}",
                    "a{0,3}",
                    "a{2,30}",
                    "a{1000}",
                    "(a)",
                    "(ab|c)*",
                    "((a|b)c){2}",
                    "(a*)*",
                    "a|b|c",
                    "^a",
                    "a$",
                    "^a$",
                    "^a|b$|^c$",
                    "^$",
                    "^",
                    "$",
                    "\\.\\[\\]\\(\\)\\*\\+\\?\\{\\}\\|\\^\\$\\\\\\/",
                    "\\-\\,\\;\\:\\@",
                    "\\w\\W\\s\\S",
                    "[ab]",
                    "[^ab]",
                    "[]a]",
                    "[^]a]",
                    "[a\\]",
                    "[a-z]*",
                    "[[:alpha:][:digit:]_]",
                    "[\u00e9\u20ac]",
                    "[a[]",
                    "\n",
                    "a/b:c",
                    QByteArray("(").repeated(100) + 'a' + QByteArray(")").repeated(100)});
        rows(false, {"",
                     "(a)\\1",
                     "\\ba",
                     "a\\B",
                     "\\<a",
                     "a\\>",
                     "\\`a",
                     "a\\'",
                     "\\a",
                     "\\n",
                     "a\\",
                     "()",
                     "(|a)",
                     "(a|)",
                     "a||b",
                     "|a",
                     "a|",
                     "a**",
                     "a+?",
                     "a{2}*",
                     "a*{2}",
                     "*a",
                     "+a",
                     "?a",
                     "a|*b",
                     "(*a)",
                     "(+a)",
                     "{2}",
                     "a{",
                     "a{,2}",
                     "a{x}",
                     "a{2",
                     "a{2,x}",
                     "a{0}",
                     "a{0,0}",
                     "a{1001}",
                     "a}",
                     "a]",
                     "a)",
                     ")",
                     "(a",
                     "(^a)",
                     "(a$)",
                     "(a$|b)",
                     "(^a|b)",
                     "a^",
                     "$a",
                     "a^b",
                     "a$b",
                     "^^a",
                     "a$$",
                     "^*",
                     "^*a",
                     "a$*",
                     "[[.a.]]",
                     "[[=a=]]",
                     "[a",
                     "[]",
                     "[[:nonsense:]]",
                     "[z-a]",
                     QByteArray("(").repeated(101) + 'a' + QByteArray(")").repeated(101)});
    }

    void anExpressionIsTranslatedIfItHasTheSameMeaningInBothLibraries()
    {
        QFETCH(QByteArray, expression);
        QFETCH(bool, usable);
        const Automaton automaton(expression);
        QCOMPARE(automaton.isUsable(), usable);
        if (!usable) {
            QCOMPARE(automaton.compare("a", 1), Automaton::Unknown);
            QCOMPARE(automaton.compareAny("a", 1), Automaton::Unknown);
        }
    }

    void anExpressionWithTooManyDifferentBracketsIsNotTranslated()
    {
        QByteArray expression;
        for (int i = 0; i < 50; ++i) {
            expression += "[_" + QByteArray::number(i) + ']';
        }
        QVERIFY(Automaton(expression + expression).isUsable());
        QVERIFY(!Automaton(expression + "[+]").isUsable());
    }

    void eachTextOfAListIsComparedSeparately_data()
    {
        QTest::addColumn<QByteArray>("expression");
        QTest::addColumn<QByteArray>("texts");
        QTest::addColumn<bool>("matches");
        const auto row = [](const char* expression, const QList<QByteArray>& texts, bool matches) {
            const QByteArray all = joined(texts);
            QTest::addRow("%s in %s", expression, all.toPercentEncoding(" ").constData())
                << QByteArray(expression) << all << matches;
        };
        row("^b$", {"ab", "ba"}, false);
        row("^b$", {"ab", "b"}, true);
        row("^b$", {"b", "ab"}, true);
        row("^b$", {"a", "b", "a"}, true);
        row("^b", {"ab", "cb"}, false);
        row("^b|^c", {"ab", "cb"}, true);
        row("b$", {"ba", "bc"}, false);
        row("b$", {"ab", "cc"}, true);
        row("a.*b", {"a", "b"}, false);
        row("a[^c]b", {"a", "b"}, false);
        row("a\\Wb", {"a", "b"}, false);
        row("a.*b", {"a", "axb"}, true);
        row("^$", {"a", "b"}, false);
        row("^$", {"a", "", "b"}, true);
        row("^$", {"a", "b", ""}, true);
        row("^$", {"", "b"}, true);
        row("^$", {""}, true);
        row("^", {"a"}, true);
        row("$", {"a"}, true);
        row("b*", {"a", "c"}, true);
        row("^.$", {"ab", "\u20ac"}, true);
        row("^..$", {"abc", "\u20ac"}, false);
    }

    void eachTextOfAListIsComparedSeparately()
    {
        QFETCH(QByteArray, expression);
        QFETCH(QByteArray, texts);
        QFETCH(bool, matches);
        QCOMPARE(Automaton(expression).compareAny(texts.constData(), texts.size()),
                 matches ? Automaton::Yes : Automaton::No);
    }

    void theResultIsUnknownOnlyIfTheTextIsNotAscii_data()
    {
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<QByteArray>("expression");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("answer");
        const auto row = [](const char* locale, const char* expression, const char* text,
                            Automaton::Answer answer) {
            QTest::addRow("%s, %s, %s", locale, expression,
                          QByteArray(text).toPercentEncoding(" ").constData())
                << QByteArray(locale) << QByteArray(expression) << QByteArray(text)
                << static_cast<int>(answer);
        };
        row("C.UTF-8", "a[bc]", "xac", Automaton::Yes);
        row("C.UTF-8", "a.$", "xa\u00e9", Automaton::Yes);
        row("C.UTF-8", "a.$", "xa\u00e9z", Automaton::No);
        row("C.UTF-8", "a.$", "xa\xff", Automaton::Unknown);
        row("C.UTF-8", "a.$", "xa\xc3", Automaton::Unknown);
        row("C.UTF-8", "a.$", "xa\xed\xa0\x80", Automaton::Unknown);
        row("C.UTF-8", "a.$", "xa\xe0\x80\x80", Automaton::Unknown);
        row("C.UTF-8", "a.$", "xa\xf0\x80\x80\x80", Automaton::Unknown);
        row("C.UTF-8", "a.$", "xa\xf4\x90\x80\x80", Automaton::Unknown);
        row("C.UTF-8", "a.$", "xa\xf5\x80\x80\x80", Automaton::Unknown);
        // RE2 does not know whether the locale's letters include these characters.
        row("C.UTF-8", "a[bc]", "xac\u00e9", Automaton::Unknown);
        row("C.UTF-8", "a[bc]", "a\u00e9", Automaton::Unknown);
        row("C.UTF-8", "a\\w", "a\u00e9", Automaton::Unknown);
        row("C.UTF-8", "a[bc]", "xade\u00e9", Automaton::No);
        row("de_DE.UTF-8", "^a[^b]c$", "al\u00b7c", Automaton::Unknown); // some locales sort "l\u00b7" as one
        row("de_DE.UTF-8", "^[^b]$", "\u0418\u0306", Automaton::Unknown);
        row("C", "a[bc]", "xac", Automaton::Yes);
        row("C", "a.$", "xa\u00e9", Automaton::Unknown);
        row("C", "\u00e9", "a", Automaton::Unknown);
        row("cs_CZ.ISO-8859-2", "a.c", "abc", Automaton::Yes);
        row("cs_CZ.ISO-8859-2", "a.c", "abc\xe9", Automaton::Unknown);
        row("ja_JP.EUC-JP", "a.c", "abc", Automaton::Unknown);
        // Czech sorts "ch" as one character, so brackets match both letters at once.
        row("cs_CZ.UTF-8", "^[^x]$", "ch", Automaton::Unknown);
        row("cs_CZ.UTF-8", "^.$", "ch", Automaton::No);
        row("cs_CZ.ISO-8859-2", "^[^a-c]$", "ch", Automaton::Unknown);
    }

    void theResultIsUnknownOnlyIfTheTextIsNotAscii()
    {
        QFETCH(QByteArray, locale);
        QFETCH(QByteArray, expression);
        QFETCH(QByteArray, text);
        QVERIFY(setlocale(LC_ALL, locale.constData()) != nullptr);
        const Automaton automaton(expression);
        QTEST(static_cast<int>(automaton.compare(text.constData(), text.size())), "answer");
        QTEST(static_cast<int>(automaton.compareAny(text.constData(), text.size())), "answer");
    }

    void anInvalidByteIsFoundAtAnyPositionOfALongText()
    {
        const Automaton automaton("zz");
        for (int position = 0; position < 100; ++position) {
            QByteArray text(100, 'a');
            QCOMPARE(automaton.compare(text.constData(), text.size()), Automaton::No);
            QVERIFY(Automaton::isUtf8(text.constData(), text.size()));
            text[position] = '\xe9';
            QCOMPARE(automaton.compare(text.constData(), text.size()), Automaton::Unknown);
            QVERIFY(!Automaton::isUtf8(text.constData(), text.size()));
        }
    }

    void anAutomatonGivesUpIfTheExpressionNeedsTooManyStates()
    {
        const QByteArray expression("[a-z].{400}[0-9].{400}q");
        const Automaton automaton(expression);
        const PlainExpression plain(expression);
        std::mt19937 random(1);
        Automaton::Answer answer = Automaton::No;
        for (int i = 0; i < 1000 && answer != Automaton::Unknown; ++i) {
            QByteArray text;
            for (int j = 0; j < 2000; ++j) {
                text += "abcdefgq0123456 "[random() % 16];
            }
            answer = automaton.compare(text.constData(), static_cast<size_t>(text.size()));
            QVERIFY(answer == Automaton::Unknown || (answer == Automaton::Yes) == plain.matches(text));
        }
        QCOMPARE(answer, Automaton::Unknown);
        QCOMPARE(automaton.compare("a", 1), Automaton::Unknown);
    }

    void anAutomatonWithoutExpressionKnowsNoResult()
    {
        QVERIFY(!Automaton().isUsable());
        QCOMPARE(Automaton().compare("a", 1), Automaton::Unknown);
    }

    void theBracketsOfAnExpressionEndAtTheFirstClosingBracketThatIsNoMember()
    {
        QCOMPARE(Automaton::afterBrackets("a[b]c", 1), 4);
        QCOMPARE(Automaton::afterBrackets("[]b]c", 0), 4);
        QCOMPARE(Automaton::afterBrackets("[^]b]c", 0), 5);
        QCOMPARE(Automaton::afterBrackets("[[:alpha:]]c", 0), 11);
        QCOMPARE(Automaton::afterBrackets("[[.].]]c", 0), 7);
        QCOMPARE(Automaton::afterBrackets("[a", 0), -1);
        QCOMPARE(Automaton::afterBrackets("[[:alpha]", 0), -1);
    }

private:
    QTemporaryDir directory;
};

QTEST_GUILESS_MAIN(AutomatonTest)
#include "AutomatonTest.moc"
