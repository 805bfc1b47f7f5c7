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
