// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HTextEdit.h"

#include <QtTest>
#include <QtWidgets>

namespace {

QSize largest()
{
    const QSize screen = QGuiApplication::primaryScreen()->size();
    return QSize(screen.width() * 9 / 10, screen.height() * 9 / 10);
}

} // namespace

class HTextEditTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theSizeHintHasSpaceForTheGivenColumnsAndRows_data();
    void theSizeHintHasSpaceForTheGivenColumnsAndRows();
    void theSizeHintComesFromTheBaseClassIfNoColumnsAndRowsAreSet();
    void theScreenLimitsTheSizeHint();
    void theSizeHintDependsOnTheFont();
    void movingTheFocusOutOfTheEditEmitsEditingFinished();
    void deactivatingTheWindowEmitsEditingFinished();
    void openingAMenuOfTheWindowDoesNotEmitEditingFinished();
    void openingAMenuOfTheEditDoesNotEmitEditingFinished();
    void deactivatingTheWindowEmitsEditingFinishedDespiteAnOpenMenu();
    void openingTheContextMenuDoesNotEmitEditingFinished();
    void editingFinishedIsEmittedBeforeTheFocusChanges();
    void appendedParagraphsHaveNoMargins();
    void eachAppendedTextIsOneParagraph();
    void theHomeAndEndKeysScrollToTheEndsOfAReadOnlyText();
};

void HTextEditTest::theSizeHintHasSpaceForTheGivenColumnsAndRows_data()
{
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("rows");
    QTest::newRow("both") << 40 << 10;
    QTest::newRow("columns only") << 40 << -1;
    QTest::newRow("rows only") << -1 << 10;
    QTest::newRow("zero columns and rows") << 0 << 0;
}

void HTextEditTest::theSizeHintHasSpaceForTheGivenColumnsAndRows()
{
    QFETCH(int, columns);
    QFETCH(int, rows);
    HTextEdit edit(columns, rows);
    const QSize base = QTextEdit().sizeHint();
    const QFontMetrics metrics(edit.font());
    const int frame = 2 * edit.frameWidth();
    QVERIFY(frame > 0);
    const QSize expected(columns == -1 ? base.width()
                                       : frame + columns * metrics.horizontalAdvance(QLatin1Char('n')),
                         rows == -1 ? base.height() : frame + rows * metrics.lineSpacing());
    QCOMPARE(edit.sizeHint(), expected);
}

void HTextEditTest::theSizeHintComesFromTheBaseClassIfNoColumnsAndRowsAreSet()
{
    HTextEdit edit;
    QCOMPARE(edit.sizeHint(), QTextEdit().sizeHint());
    QVERIFY(edit.sizeHint().isValid());
}

void HTextEditTest::theScreenLimitsTheSizeHint()
{
    QCOMPARE(HTextEdit(5000, 5000).sizeHint(), largest());
    QCOMPARE(HTextEdit(5000, 2).sizeHint().width(), largest().width());
    QVERIFY(HTextEdit(5000, 2).sizeHint().height() < largest().height());
}

void HTextEditTest::theSizeHintDependsOnTheFont()
{
    HTextEdit edit(10, 2);
    QFont font = edit.font();
    font.setPixelSize(30);
    edit.setFont(font);
    const QFontMetrics metrics(font);
    const int frame = 2 * edit.frameWidth();
    QCOMPARE(edit.sizeHint(), QSize(frame + 10 * metrics.horizontalAdvance(QLatin1Char('n')),
                                    frame + 2 * metrics.lineSpacing()));
}

void HTextEditTest::movingTheFocusOutOfTheEditEmitsEditingFinished()
{
    QWidget window;
    QVBoxLayout* column = new QVBoxLayout(&window);
    HTextEdit* edit = new HTextEdit;
    QLineEdit* other = new QLineEdit;
    column->addWidget(edit);
    column->addWidget(other);
    edit->setTabChangesFocus(true);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    edit->setFocus();
    QSignalSpy ends(edit, &HTextEdit::editingFinished);

    QTest::keyClicks(edit, QStringLiteral("text"));
    QCOMPARE(ends.count(), 0);
    QTest::keyClick(edit, Qt::Key_Tab);
    QVERIFY(other->hasFocus());
    QCOMPARE(ends.count(), 1);

    edit->setFocus();
    QTest::mouseClick(other, Qt::LeftButton);
    QVERIFY(other->hasFocus());
    QCOMPARE(ends.count(), 2);
}

void HTextEditTest::deactivatingTheWindowEmitsEditingFinished()
{
    HTextEdit edit;
    edit.show();
    QVERIFY(QTest::qWaitForWindowActive(&edit));
    edit.setFocus();
    QSignalSpy ends(&edit, &HTextEdit::editingFinished);
    QWidget other;
    other.show();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    QTRY_COMPARE(ends.count(), 1);
}

void HTextEditTest::openingAMenuOfTheWindowDoesNotEmitEditingFinished()
{
    QWidget window;
    QVBoxLayout* column = new QVBoxLayout(&window);
    HTextEdit* edit = new HTextEdit;
    column->addWidget(edit);
    QMenu menu(&window);
    menu.addAction(QStringLiteral("entry"));
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    edit->setFocus();
    QSignalSpy ends(edit, &HTextEdit::editingFinished);
    menu.popup(window.mapToGlobal(QPoint(10, 10)));
    QTRY_COMPARE(QApplication::activePopupWidget(), &menu);
    QTest::qWait(50);
    QTest::keyClick(&menu, Qt::Key_Escape);
    QTRY_VERIFY(QApplication::activePopupWidget() == nullptr);
    QTest::qWait(50);
    QCOMPARE(ends.count(), 0);
}

void HTextEditTest::openingAMenuOfTheEditDoesNotEmitEditingFinished()
{
    HTextEdit edit;
    edit.show();
    QVERIFY(QTest::qWaitForWindowActive(&edit));
    edit.setFocus();
    QMenu menu(&edit);
    menu.addAction(QStringLiteral("entry"));
    QSignalSpy ends(&edit, &HTextEdit::editingFinished);
    menu.popup(edit.mapToGlobal(QPoint(10, 10)));
    QTRY_COMPARE(QApplication::activePopupWidget(), &menu);
    QFocusEvent focusOut(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    QApplication::sendEvent(&edit, &focusOut);
    QCOMPARE(ends.count(), 0);
    menu.hide();
    QApplication::sendEvent(&edit, &focusOut);
    QCOMPARE(ends.count(), 1);
}

void HTextEditTest::deactivatingTheWindowEmitsEditingFinishedDespiteAnOpenMenu()
{
    QWidget window;
    QVBoxLayout* column = new QVBoxLayout(&window);
    HTextEdit* edit = new HTextEdit;
    column->addWidget(edit);
    QMenu menu(&window);
    menu.addAction(QStringLiteral("entry"));
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    edit->setFocus();
    menu.popup(window.mapToGlobal(QPoint(10, 10)));
    QTRY_COMPARE(QApplication::activePopupWidget(), &menu);
    QSignalSpy ends(edit, &HTextEdit::editingFinished);
    QFocusEvent focusOut(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    QApplication::sendEvent(edit, &focusOut);
    QCOMPARE(ends.count(), 1);
}

void HTextEditTest::openingTheContextMenuDoesNotEmitEditingFinished()
{
    HTextEdit edit;
    edit.resize(300, 200);
    edit.show();
    QVERIFY(QTest::qWaitForWindowActive(&edit));
    edit.setFocus();
    QSignalSpy ends(&edit, &HTextEdit::editingFinished);
    const QPoint pos = edit.viewport()->rect().center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, pos, edit.viewport()->mapToGlobal(pos));
    QApplication::sendEvent(edit.viewport(), &event);
    QTRY_VERIFY(qobject_cast<QMenu*>(QApplication::activePopupWidget()) != nullptr);
    QWidget* menu = QApplication::activePopupWidget();
    QTest::qWait(50);
    QTest::keyClick(menu, Qt::Key_Escape);
    QTRY_VERIFY(QApplication::activePopupWidget() == nullptr);
    QTest::qWait(50);
    QCOMPARE(ends.count(), 0);
}

void HTextEditTest::editingFinishedIsEmittedBeforeTheFocusChanges()
{
    QWidget window;
    QVBoxLayout* column = new QVBoxLayout(&window);
    HTextEdit* edit = new HTextEdit;
    QLineEdit* other = new QLineEdit;
    column->addWidget(edit);
    column->addWidget(other);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    edit->setFocus();
    edit->setPlainText(QStringLiteral("text"));
    // The slots of editingFinished() may rewrite the text, as the masked fields do. After that, QTextEdit
    // handles the focus event with the new text.
    connect(edit, &HTextEdit::editingFinished, [edit] { edit->setPlainText(QStringLiteral("changed")); });
    other->setFocus();
    QCOMPARE(edit->toPlainText(), QStringLiteral("changed"));
    QVERIFY(!edit->hasFocus());
}

void HTextEditTest::appendedParagraphsHaveNoMargins()
{
    HTextEdit edit;
    edit.appendCompact(QStringLiteral("<p style=\"margin-top:12px; margin-bottom:12px\">one</p>"));
    edit.appendCompact(QStringLiteral("<p>two</p>"));
    edit.appendCompact(QStringLiteral("three"));
    QCOMPARE(edit.document()->blockCount(), 3);
    for (QTextBlock block = edit.document()->begin(); block.isValid(); block = block.next()) {
        QCOMPARE(block.blockFormat().topMargin(), 0.0);
        QCOMPARE(block.blockFormat().bottomMargin(), 0.0);
    }

    QTextEdit plain;
    plain.append(QStringLiteral("<p style=\"margin-top:12px; margin-bottom:12px\">one</p>"));
    QCOMPARE(plain.document()->begin().blockFormat().topMargin(), 12.0);
}

void HTextEditTest::eachAppendedTextIsOneParagraph()
{
    HTextEdit edit;
    edit.appendCompact(QStringLiteral("<font color=\"red\">one</font>"));
    edit.appendCompact(QStringLiteral("two"));
    QCOMPARE(edit.toPlainText(), QStringLiteral("one\ntwo"));
    QTextCursor cursor(edit.document());
    cursor.movePosition(QTextCursor::NextCharacter);
    QCOMPARE(cursor.charFormat().foreground().color(), QColor(Qt::red));
}

void HTextEditTest::theHomeAndEndKeysScrollToTheEndsOfAReadOnlyText()
{
    HTextEdit edit(20, 5);
    edit.setReadOnly(true);
    edit.setPlainText(QStringLiteral("line\n").repeated(100));
    edit.show();
    QVERIFY(QTest::qWaitForWindowExposed(&edit));
    const QScrollBar* bar = edit.verticalScrollBar();
    QVERIFY(bar->maximum() > 0);
    const auto press = [&edit](Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&edit, key, modifiers);
    };
    press(Qt::Key_End, Qt::ControlModifier);
    QCOMPARE(bar->value(), bar->maximum());
    press(Qt::Key_Home, Qt::ControlModifier);
    QCOMPARE(bar->value(), 0);
    press(Qt::Key_End);
    QCOMPARE(bar->value(), bar->maximum());
    press(Qt::Key_PageUp);
    QVERIFY(bar->value() < bar->maximum());
    press(Qt::Key_Home);
    QCOMPARE(bar->value(), 0);
    press(Qt::Key_PageDown);
    QVERIFY(bar->value() > 0);

    // An editable text has a cursor. These keys move the cursor instead of scrolling.
    edit.setReadOnly(false);
    press(Qt::Key_End, Qt::ControlModifier);
    QCOMPARE(edit.textCursor().position(), edit.document()->characterCount() - 1);
}

QTEST_MAIN(HTextEditTest)
#include "HTextEditTest.moc"
