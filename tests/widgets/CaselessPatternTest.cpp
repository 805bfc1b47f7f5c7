// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/CaselessPattern.h"

#include <QtTest>

class CaselessPatternTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theLetterCaseIsIgnored_data()
    {
        QTest::addColumn<QString>("expression");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("matches");
        QTest::newRow("text") << "FireFox"
                              << "the firefox browser" << true;
        QTest::newRow("other text") << "FireFox"
                                    << "the browser" << false;
        QTest::newRow("escaped characters") << "C\\+\\+"
                                            << "c++" << true;
        QTest::newRow("anchor") << "^Fire"
                                << "firefox" << true;
        QTest::newRow("anchor, but no match at the beginning") << "^Fox"
                                                               << "firefox" << false;
        QTest::newRow("brackets") << "[A-C]x+Y"
                                  << "bXXy" << true;
        QTest::newRow("alternatives") << "One|TWO"
                                      << "two" << true;
        QTest::newRow("a text between long texts")
            << "Needle" << QString(100, 'X') + "nEEDLE" + QString(33, 'Y') << true;
        QTest::newRow("characters beside the letters") << "@\\[`\\{"
                                                       << "@[`{" << true;
        QTest::newRow("a character beside the small letters is no capital letter") << "`"
                                                                                   << "@" << false;
        QTest::newRow("a character beside the capital letters is no small letter") << "\\["
                                                                                   << "{" << false;
        QTest::newRow("text with letters beyond ASCII")
            << QString::fromUtf8("pr\u00fcF") << QString::fromUtf8("Pr\u00fcf") << true;
        QTest::newRow("expression with letters beyond ASCII")
            << QString::fromUtf8("pr\u00fcF.n") << QString::fromUtf8("Pr\u00fcfen") << true;
    }

    void theLetterCaseIsIgnored()
    {
        QFETCH(QString, expression);
        QFETCH(QString, text);
        const CaselessPattern pattern(expression);
        QVERIFY(pattern.isUsable());
        QTEST(pattern.matches(text.toUtf8().constData()), "matches");
        QTEST(pattern.matchesAny(QByteArray("one\0", 4) + text.toUtf8() + '\0'), "matches");
    }

    void aMatchDoesNotCrossTheEndOfAText()
    {
        const CaselessPattern pattern("One.Two");
        QVERIFY(pattern.matchesAny(QByteArray("one two\0", 8)));
        QVERIFY(!pattern.matchesAny(QByteArray("one\0two\0", 8)));
        QVERIFY(!CaselessPattern("OneTwo").matchesAny(QByteArray("one\0two\0", 8)));
        QVERIFY(!CaselessPattern("one").matchesAny(QByteArray()));
    }

    void textsWithoutTheRequiredTextInAnyLetterCaseCannotMatch_data()
    {
        QTest::addColumn<QString>("expression");
        QTest::addColumn<bool>("mayMatch");
        QTest::newRow("text") << "nEEDLE" << true;
        QTest::newRow("text after zero bytes and bytes beyond ASCII") << "HAY" << true;
        QTest::newRow("other text") << "straw" << false;
        QTest::newRow("the required text, but no match") << "^needle.x" << true;
        QTest::newRow("without the required text") << "^straw." << false;
        QTest::newRow("no required text") << "[x]" << true;
        // The case-sensitive expression also ends before the zero byte.
        QTest::newRow("expression with a zero byte") << QString::fromLatin1("needle\0straw", 12) << true;
    }

    void textsWithoutTheRequiredTextInAnyLetterCaseCannotMatch()
    {
        QFETCH(QString, expression);
        const QByteArray texts("one Needle\0\x07\0\xff\0\xc3Hay\0", 20);
        QTEST(CaselessPattern(expression).mayMatch(texts.constData(), static_cast<size_t>(texts.size())),
              "mayMatch");
    }

    void anInvalidExpressionOrABackReferenceCannotBeUsed()
    {
        QVERIFY(!CaselessPattern("(a").isUsable());
        QVERIFY(!CaselessPattern("(a*)*\\1b").isUsable());
        QVERIFY(!CaselessPattern("(a*)*\\1b").isQuick());
    }

    void aPatternIsQuickOnlyIfEachMatchContainsAFixedTextAndTheExpressionHasNoRepetition()
    {
        QVERIFY(CaselessPattern("firefox").isQuick());
        QVERIFY(CaselessPattern("fire.fox").isQuick());
        QVERIFY(!CaselessPattern("[a-z]").isQuick());
        for (const char* repetition : {"fire.*fox", "fire.+fox", "fire.{2}fox"}) {
            QVERIFY2(!CaselessPattern(repetition).isQuick(), repetition);
        }
        // The C library finds a text without regard to its case only if the text is ASCII.
        QVERIFY(!CaselessPattern(QString::fromUtf8("\u00fc.")).isQuick());
    }

    void aWordIsAFixedTextWithoutBlanks()
    {
        QVERIFY(CaselessPattern("firefox").isWord());
        QVERIFY(!CaselessPattern("fire fox").isWord());
        QVERIFY(!CaselessPattern("fire.*fox").isWord());
    }
};

QTEST_MAIN(CaselessPatternTest)
#include "CaselessPatternTest.moc"
