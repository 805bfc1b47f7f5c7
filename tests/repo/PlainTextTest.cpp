// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/PlainText.h"

#include <QTextDocument>
#include <QtTest>

class PlainTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theExactFunctionReturnsTheTextOfADocumentUnchanged();
    void theExactFunctionReturnsLineSeparatorsAsLineFeeds();
    void charactersHaveTheSamePositionsInTheTextAndInTheDocument();
};

void PlainTextTest::theExactFunctionReturnsTheTextOfADocumentUnchanged()
{
    QTextDocument document;
    // The last text ends in a letter whose UTF-8 was read as Latin-1. In Latin-1, the second byte of this
    // letter is a no-break space.
    for (const QString& text : {QString(), QStringLiteral("a\nb\n"), QStringLiteral("\n\n"),
                                QStringLiteral(" a\t b "), QString::fromLatin1("vuel\xc3\xa0\n")}) {
        document.setPlainText(text);
        QCOMPARE(PlainText::exact(&document), text);
    }
}

void PlainTextTest::theExactFunctionReturnsLineSeparatorsAsLineFeeds()
{
    QTextDocument document;
    document.setPlainText(QStringLiteral("a") + QChar(QChar::LineSeparator) + QStringLiteral("b"));
    QCOMPARE(PlainText::exact(&document), QStringLiteral("a\nb"));
}

void PlainTextTest::charactersHaveTheSamePositionsInTheTextAndInTheDocument()
{
    QTextDocument document;
    document.setPlainText(QStringLiteral("one\n\ntwo"));
    const QString text = PlainText::exact(&document);
    QCOMPARE(text.size(), document.characterCount() - 1);
    QCOMPARE(text.at(5), document.characterAt(5));
}

QTEST_MAIN(PlainTextTest)
#include "PlainTextTest.moc"
