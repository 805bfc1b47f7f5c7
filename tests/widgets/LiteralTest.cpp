// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/Literal.h"

#include <QtTest>
#include <QtWidgets>

class LiteralTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aToolTipShowsTheTextLiterally_data();
    void aToolTipShowsTheTextLiterally();
    void aTextThatQtShowsAsPlainTextIsNotChanged();
    void aWindowTitleShowsTheTextLiterally_data();
    void aWindowTitleShowsTheTextLiterally();
};

void LiteralTest::aToolTipShowsTheTextLiterally_data()
{
    QTest::addColumn<QString>("text");
    const auto row = [](const char* text) { QTest::newRow(text) << QString::fromUtf8(text); };
    row("1.0-1");
    row("Available: 2-1\nInstalled: 1-1");
    row("<h1>x</h1>");
    row("<b>a</b>  two blanks\n\tand a second line");
    row("a < b & c > d");
    row("&lt;b&gt; &amp; <");
    row("<!-- comment --> <img src=\"/dev/zero\">");
    row("<?xml version=\"1.0\"?><p>x</p>");
    row("Available: 1<br>\n<h1>");
    row("%1 %2 <b>%3</b>");
}

void LiteralTest::aToolTipShowsTheTextLiterally()
{
    QFETCH(QString, text);
    // Interpret the tool tip as Qt does: as rich text if it looks like rich text.
    const QString toolTip = Literal::toolTip(text);
    QString shown = toolTip;
    if (Qt::mightBeRichText(toolTip)) {
        QTextDocument document;
        document.setHtml(toolTip);
        shown = document.toPlainText();
    }
    QCOMPARE(shown, text);
}

void LiteralTest::aTextThatQtShowsAsPlainTextIsNotChanged()
{
    for (const char* text : {"", "Update package", "Available: 2-1\nInstalled: 1-1", "a < b & c"}) {
        QCOMPARE(Literal::toolTip(QString::fromLatin1(text)), QString::fromLatin1(text));
        QCOMPARE(Literal::title(QString::fromLatin1(text)), QString::fromLatin1(text));
    }
}

void LiteralTest::aWindowTitleShowsTheTextLiterally_data()
{
    QTest::addColumn<QString>("text");
    for (const char* text :
         {"tool 1-1 File List", "[*]", "tool[*] [*][*]", "[[*]]", "[*", "<b>tool</b> & more"}) {
        QTest::newRow(text) << QString::fromLatin1(text);
    }
}

void LiteralTest::aWindowTitleShowsTheTextLiterally()
{
    QFETCH(QString, text);
    QWidget window;
    for (const bool modified : {false, true}) {
        window.setWindowModified(modified);
        window.setWindowTitle(Literal::title(text));
        window.show();
        QCOMPARE(window.windowHandle()->title(), text);
    }
}

QTEST_MAIN(LiteralTest)
#include "LiteralTest.moc"
