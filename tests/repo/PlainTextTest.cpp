// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/PlainText.h"

#include <QTextDocument>
#include <QtTest>

class PlainTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theTextOfADocumentIsReadUnchanged();
    void lineSeparatorsAreReadAsLineFeeds();
    void charactersHaveTheSamePositionsInTheTextAndInTheDocument();
};

void PlainTextTest::theTextOfADocumentIsReadUnchanged()
{
    QTextDocument document;
    // The last text ends in "à", whose two bytes in UTF-8 were read as Latin-1. In Latin-1, the second byte
    // is a no-break space.
    for (const QString& text : {QString(), QStringLiteral("a\nb\n"), QStringLiteral("\n\n"),
                                QStringLiteral(" a\t b "), QString::fromLatin1("vuel\xc3\xa0\n")}) {
        document.setPlainText(text);
        QCOMPARE(PlainText::exact(&document), text);
    }
}

void PlainTextTest::lineSeparatorsAreReadAsLineFeeds()
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
