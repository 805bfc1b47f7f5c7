// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/OneLineValidator.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>
#include <QtTest>

class OneLineValidatorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lineBreaksAreRemovedAtTheEndAndReplacedByBlanksBetweenWords_data();
    void lineBreaksAreRemovedAtTheEndAndReplacedByBlanksBetweenWords();
    void pastedTextBecomesOneLine();
    void theCursorStaysWithinTheTextWhenTheTextIsShortened();
};

void OneLineValidatorTest::lineBreaksAreRemovedAtTheEndAndReplacedByBlanksBetweenWords_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("oneLine");
    QTest::newRow("no line break") << "a b"
                                   << "a b";
    QTest::newRow("a line break at the end") << "updates\n"
                                             << "updates";
    QTest::newRow("several line breaks at the end") << "updates\r\n\n"
                                                    << "updates";
    QTest::newRow("only a line break") << "\n"
                                       << "";
    QTest::newRow("line breaks between words") << "a\nb\rc"
                                               << "a b c";
    QTest::newRow("Unicode line and paragraph separators")
        << QStringLiteral("a") + QChar(0x2028) + QStringLiteral("b") + QChar(0x2029) << "a b";
    QTest::newRow("a line break before a blank") << "a\n  b"
                                                 << "a\n  b";
    QTest::newRow("a line break before a tab") << "a\n\tb"
                                               << "a\n\tb";
    QTest::newRow("blanks at the end") << "a  "
                                       << "a  ";
}

void OneLineValidatorTest::lineBreaksAreRemovedAtTheEndAndReplacedByBlanksBetweenWords()
{
    QFETCH(QString, text);
    QTEST(OneLineValidator::oneLine(text), "oneLine");
}

void OneLineValidatorTest::pastedTextBecomesOneLine()
{
    QLineEdit edit(QStringLiteral("main-"));
    edit.setValidator(new OneLineValidator(&edit));
    QGuiApplication::clipboard()->setText(QStringLiteral("updates\n"));
    edit.end(false);
    QTest::keySequence(&edit, QKeySequence::Paste);
    QCOMPARE(edit.text(), QStringLiteral("main-updates"));
    QTest::keyClicks(&edit, QStringLiteral("2"));
    QCOMPARE(edit.text(), QStringLiteral("main-updates2"));
}

void OneLineValidatorTest::theCursorStaysWithinTheTextWhenTheTextIsShortened()
{
    const OneLineValidator validator;
    QString text = QStringLiteral("updates\n\n");
    int position = text.size();
    QCOMPARE(validator.validate(text, position), QValidator::Acceptable);
    QCOMPARE(text, QStringLiteral("updates"));
    QCOMPARE(position, text.size());
}

QTEST_MAIN(OneLineValidatorTest)
#include "OneLineValidatorTest.moc"
