// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/TextDialog.h"

#include <QtTest>
#include <QtWidgets>

#include "widgets/HTextEdit.h"

class TextDialogTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theTextIsPlain();
    void theTextIsReadOnlyAndNotWrapped();
    void tabMovesToTheButton();
    void closeAccepts();
    void theDialogIsModal();
    void theTextHasSpaceFor24RowsOf80Columns();
    void aNewTextReplacesTheOld();
};

void TextDialogTest::theTextIsPlain()
{
    TextDialog dialog;
    const QString text = QStringLiteral("<b>bold</b> &amp; \n/usr/bin/x");
    dialog.setText(text);
    QCOMPARE(dialog.findChild<HTextEdit*>()->toPlainText(), text);
}

void TextDialogTest::theTextIsReadOnlyAndNotWrapped()
{
    TextDialog dialog;
    dialog.setText(QStringLiteral("word ").repeated(200));
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    HTextEdit* edit = dialog.findChild<HTextEdit*>();
    const QString before = edit->toPlainText();
    QTest::keyClicks(edit, QStringLiteral("typed"));
    QCOMPARE(edit->toPlainText(), before);
    QCOMPARE(edit->document()->begin().layout()->lineCount(), 1);
    QVERIFY(edit->horizontalScrollBar()->isVisible());
    QCOMPARE(edit->lineWrapMode(), QTextEdit::NoWrap);
    QCOMPARE(edit->wordWrapMode(), QTextOption::NoWrap);
}

void TextDialogTest::tabMovesToTheButton()
{
    TextDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    HTextEdit* edit = dialog.findChild<HTextEdit*>();
    edit->setFocus();
    QTest::keyClick(edit, Qt::Key_Tab);
    QVERIFY(dialog.findChild<QPushButton*>()->hasFocus());
}

void TextDialogTest::closeAccepts()
{
    TextDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    const QList<QPushButton*> buttons = dialog.findChildren<QPushButton*>();
    QCOMPARE(buttons.size(), 1);
    QCOMPARE(buttons.first()->text(), QStringLiteral("Close"));
    // The button is below the text on the right side, after a stretch.
    HTextEdit* edit = dialog.findChild<HTextEdit*>();
    QVERIFY(buttons.first()->geometry().top() > edit->geometry().bottom());
    QVERIFY(buttons.first()->geometry().left() > edit->geometry().center().x());
    QTest::mouseClick(buttons.first(), Qt::LeftButton);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
}

void TextDialogTest::theDialogIsModal()
{
    QWidget window;
    TextDialog dialog(&window);
    QVERIFY(dialog.isModal());
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QCOMPARE(QApplication::activeModalWidget(), &dialog);
}

void TextDialogTest::theTextHasSpaceFor24RowsOf80Columns()
{
    TextDialog dialog;
    const HTextEdit* edit = dialog.findChild<HTextEdit*>();
    const QFontMetrics metrics(edit->font());
    const int frame = 2 * edit->frameWidth();
    QCOMPARE(edit->sizeHint(), QSize(frame + 80 * metrics.horizontalAdvance(QLatin1Char('n')),
                                     frame + 24 * metrics.lineSpacing()));
}

void TextDialogTest::aNewTextReplacesTheOld()
{
    TextDialog dialog;
    dialog.setText(QStringLiteral("one"));
    dialog.setText(QStringLiteral("two"));
    QCOMPARE(dialog.findChild<HTextEdit*>()->toPlainText(), QStringLiteral("two"));
}

QTEST_MAIN(TextDialogTest)
#include "TextDialogTest.moc"
