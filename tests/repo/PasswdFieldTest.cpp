// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/PasswdField.h"

#include <QtTest>
#include <QtWidgets>

#include "tests/repo/Assistive.h"

class PasswdFieldTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFieldShowsDotsInsteadOfTheTypedText();
    void lineBreaksInPastedTextAreDropped();
    void aLongPasswordIsStoredCompletely();
    void theCopyAndCutKeysDoNotChangeTheClipboard();
    void assistiveProgramsDoNotGetThePassword();
};

void PasswdFieldTest::theFieldShowsDotsInsteadOfTheTypedText()
{
    PasswdField field;
    QTest::keyClicks(&field, QStringLiteral("secret"));
    QCOMPARE(field.text(), QStringLiteral("secret"));
    QCOMPARE(field.displayText(), QString(6, QChar(0x25cf)));
}

void PasswdFieldTest::lineBreaksInPastedTextAreDropped()
{
    PasswdField field;
    QGuiApplication::clipboard()->setText(QStringLiteral("secret\n"));
    QTest::keySequence(&field, QKeySequence(QKeySequence::Paste));
    QCOMPARE(field.text(), QStringLiteral("secret"));
}

void PasswdFieldTest::aLongPasswordIsStoredCompletely()
{
    PasswdField field;
    field.setText(QString(40000, QLatin1Char('x')));
    QCOMPARE(field.text().size(), 40000);
}

void PasswdFieldTest::theCopyAndCutKeysDoNotChangeTheClipboard()
{
    PasswdField field;
    field.show();
    QVERIFY(QTest::qWaitForWindowActive(&field));
    for (const QKeySequence::StandardKey key :
         {QKeySequence::Copy, QKeySequence::Cut, QKeySequence::DeleteEndOfLine,
          QKeySequence::DeleteCompleteLine}) {
        QGuiApplication::clipboard()->setText(QStringLiteral("before"));
        QGuiApplication::clipboard()->setText(QStringLiteral("before"), QClipboard::Selection);
        field.setText(QStringLiteral("secret"));
        QTest::mouseDClick(&field, Qt::LeftButton, Qt::NoModifier, QPoint(10, field.height() / 2));
        QCOMPARE(field.selectedText().size(), 6);
        QTest::keySequence(&field, QKeySequence(key));
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("before"));
        QCOMPARE(QGuiApplication::clipboard()->text(QClipboard::Selection), QStringLiteral("before"));
    }
}

void PasswdFieldTest::assistiveProgramsDoNotGetThePassword()
{
    QWidget window;
    auto* field = new PasswdField(&window);
    auto* plain = new QLineEdit(&window);
    field->setAccessibleName(QStringLiteral("Key"));
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    reportedTexts.clear();
    QAccessible::installUpdateHandler(recordReport);
    field->setText(QStringLiteral("secret"));
    QTest::keyClicks(field, QStringLiteral("789"));
    QTest::keyClicks(plain, QStringLiteral("abc"));
    QAccessible::installUpdateHandler(nullptr);
    QVERIFY(reportsAsExpected());
    QStringList texts = reportedTexts;
    collectTexts(QAccessible::queryAccessibleInterface(&window), texts);
    for (const QString& text : qAsConst(texts)) {
        QVERIFY2(!text.contains(QRegExp(QStringLiteral("secret|7|8|9"))), qPrintable(text));
    }
    // Qt marks the field as a password field for assistive programs.
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(field);
    QCOMPARE(interface->role(), QAccessible::EditableText);
    QCOMPARE(interface->text(QAccessible::Name), QStringLiteral("Key"));
    QVERIFY(interface->state().passwordEdit);
    QVERIFY(interface->state().editable);
    QVERIFY(interface->state().focusable);
}

QTEST_MAIN(PasswdFieldTest)
#include "PasswdFieldTest.moc"
