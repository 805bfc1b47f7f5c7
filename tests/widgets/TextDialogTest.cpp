// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/TextDialog.h"

#include <QtTest>
#include <QtWidgets>

#include "widgets/FindBar.h"
#include "widgets/HTextEdit.h"

class TextDialogTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theDialogShowsItsTextAsPlainText();
    void theTextIsReadOnlyAndNotWrapped();
    void tabMovesTheFocusToTheButton();
    void theCloseButtonClosesTheDialog();
    void theDialogIsModal();
    void theTextHasSpaceFor24RowsOf80Columns();
    void aNewTextReplacesTheOldText();
    void theFindBarFindsTextInTheDialog();
};

void TextDialogTest::theDialogShowsItsTextAsPlainText()
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

void TextDialogTest::tabMovesTheFocusToTheButton()
{
    TextDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    HTextEdit* edit = dialog.findChild<HTextEdit*>();
    edit->setFocus();
    QTest::keyClick(edit, Qt::Key_Tab);
    QCOMPARE(qobject_cast<QPushButton*>(dialog.focusWidget())->text(), QString("&Find..."));
}

void TextDialogTest::theCloseButtonClosesTheDialog()
{
    TextDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    const QList<QPushButton*> buttons =
        dialog.findChildren<QPushButton*>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(buttons.size(), 2);
    QCOMPARE(buttons.last()->text(), QStringLiteral("Close"));
    // The Close button is at the bottom right, below the text.
    HTextEdit* edit = dialog.findChild<HTextEdit*>();
    QVERIFY(buttons.last()->geometry().top() > edit->geometry().bottom());
    QVERIFY(buttons.last()->geometry().left() > edit->geometry().center().x());
    QTest::mouseClick(buttons.last(), Qt::LeftButton);
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

void TextDialogTest::aNewTextReplacesTheOldText()
{
    TextDialog dialog;
    dialog.setText(QStringLiteral("one"));
    dialog.setText(QStringLiteral("two"));
    QCOMPARE(dialog.findChild<HTextEdit*>()->toPlainText(), QStringLiteral("two"));
}

void TextDialogTest::theFindBarFindsTextInTheDialog()
{
    TextDialog dialog;
    dialog.setText("/usr/bin/editor\n/usr/bin/viewer\n");
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QTest::keyClick(&dialog, Qt::Key_F, Qt::ControlModifier);
    auto* bar = dialog.findChild<FindBar*>();
    QTRY_VERIFY(bar->isVisible());
    auto* field = bar->findChild<QLineEdit*>();
    QTest::keyClicks(field, "viewer");
    QCOMPARE(dialog.findChild<HTextEdit*>()->textCursor().selectedText(), QString("viewer"));
    // While the focus is in the bar, neither Return nor Escape closes the dialog.
    QTest::keyClick(field, Qt::Key_Return);
    QVERIFY(dialog.isVisible());
    QTest::keyClick(field, Qt::Key_Escape);
    QVERIFY(dialog.isVisible());
    QVERIFY(!bar->isVisible());
}

QTEST_MAIN(TextDialogTest)
#include "TextDialogTest.moc"
