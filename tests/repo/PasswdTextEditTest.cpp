// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/PasswdTextEdit.h"

#include "repo/RepoVantor.h"
#include "tests/repo/PasswdEditTest.h"

namespace {

const int secondPassword = 77;

} // namespace

class PasswdTextEditTest : public PasswdEditTest
{
    Q_OBJECT

private Q_SLOTS:
    void everyPasswordIsMasked();
    void allKindsOfWhiteSpaceAreStoredUnchanged();
    void theSizeHintHasSpaceForTheRequestedColumnsAndRows();
    void typedTextIsInsertedIntoTheSecondPassword();
    void theReturnKeySplitsALineAndTheBackspaceKeyJoinsTwoLines();
    void aSelectionMayContainSeveralLines();
    void arrowKeysMoveTheCursorFromLineToLine();
    void aSelectionCannotBeDraggedAway();
    void typingDoesNotScrollTheView();
    void richTextIsPastedAsPlainText();
    void unfinishedInputMethodTextWithinThePasswordIsMasked();
    void theTabKeyEitherMovesTheFocusOrInsertsATab();

protected:
    QString textWith(const QString& insertedPassword) const override
    {
        return QStringLiteral(
                   "http://a/vantor?u=bob&p=%1&path=x\nhttp://b/plain\nhttp://c/vantor?u=bob&p=word&path=y")
            .arg(insertedPassword);
    }
    QString longText() const override
    {
        QString many;
        for (int i = 0; i < 60; ++i) {
            many += QStringLiteral("http://mirror%1.example/vantor?u=bob&p=secret&path=x\n").arg(i);
        }
        return many;
    }
    QWidget* makeEdit(QWidget* parent) const override
    {
        auto* made = new PasswdTextEdit(Repo::Vantor::urlsRegExp(), parent);
        made->setLineWrapMode(QTextEdit::NoWrap);
        return made;
    }
    QWidget* makeOrdinaryEdit(QWidget* parent) const override
    {
        auto* made = new QTextEdit(parent);
        made->setLineWrapMode(QTextEdit::NoWrap);
        return made;
    }
    QString realTextOf(const QWidget* of) const override
    {
        return static_cast<const PasswdTextEdit*>(of)->realPlainText();
    }
    using PasswdEditTest::setRealText;
    void setRealText(QWidget* of, const QString& real) const override
    {
        static_cast<PasswdTextEdit*>(of)->setRealPlainText(real);
    }
    const char* changeSignal() const override { return SIGNAL(realTextChanged()); }

    QList<QWidget*> editsIn(const QWidget* parent) const override
    {
        QList<QWidget*> found;
        for (QTextEdit* each : parent->findChildren<QTextEdit*>()) {
            found << each;
        }
        return found;
    }
    QString textOf(const QWidget* of) const override
    {
        return static_cast<const QTextEdit*>(of)->toPlainText();
    }
    void setText(QWidget* of, const QString& shown) const override
    {
        static_cast<QTextEdit*>(of)->setPlainText(shown);
    }
    int positionOf(const QWidget* of) const override
    {
        return static_cast<const QTextEdit*>(of)->textCursor().position();
    }
    int anchorOf(const QWidget* of) const override
    {
        return static_cast<const QTextEdit*>(of)->textCursor().anchor();
    }
    bool hasLines() const override { return true; }

    QWidget* mouseTarget() const override { return textEdit()->viewport(); }
    QPoint placeOf(int place) const override
    {
        QTextCursor cursor(textEdit()->document());
        cursor.setPosition(place);
        return textEdit()->cursorRect(cursor).center();
    }

private:
    PasswdTextEdit* textEdit() const { return static_cast<PasswdTextEdit*>(edit); }
};

void PasswdTextEditTest::everyPasswordIsMasked()
{
    QCOMPARE(text().mid(secondPassword, 4), QStringLiteral("word"));
    QVERIFY(shownText().endsWith(QString::fromUtf8("http://c/vantor?u=bob&p=●●●●&path=y")));
}

void PasswdTextEditTest::allKindsOfWhiteSpaceAreStoredUnchanged()
{
    for (const QString& each : {QString(), QStringLiteral("\n"), QStringLiteral(" a\n\nb\n"),
                                QString::fromLatin1("caf\xc3\xa0 \xa0")}) {
        setRealText(each);
        QCOMPARE(realText(), each);
    }
}

void PasswdTextEditTest::theSizeHintHasSpaceForTheRequestedColumnsAndRows()
{
    PasswdTextEdit sized(Repo::Vantor::urlsRegExp(), 50, 4);
    HTextEdit plain(50, 4);
    plain.setFont(sized.font());
    QCOMPARE(sized.sizeHint(), plain.sizeHint());
}

void PasswdTextEditTest::typedTextIsInsertedIntoTheSecondPassword()
{
    click(secondPassword + 1);
    QCOMPARE(position(), secondPassword + 1);
    press(Qt::Key_Right, Qt::NoModifier, 2);
    type(QStringLiteral("0"));
    QCOMPARE(realText(), text().insert(secondPassword + 3, QLatin1Char('0')));
    QVERIFY(shownText().endsWith(QString::fromUtf8("http://c/vantor?u=bob&p=●●●●●&path=y")));
}

void PasswdTextEditTest::theReturnKeySplitsALineAndTheBackspaceKeyJoinsTwoLines()
{
    goTo(passwordBegin + 3);
    press(Qt::Key_Return);
    QCOMPARE(realText(), text().insert(passwordBegin + 3, QLatin1Char('\n')));
    QCOMPARE(shownText().size(), realText().size());
    press(Qt::Key_Backspace);
    compareReal(password);
    press(Qt::Key_End);
    press(Qt::Key_Return, Qt::ShiftModifier);
    QCOMPARE(realText().count(QLatin1Char('\n')), 3);
    press(Qt::Key_Delete, Qt::NoModifier, 1);
    QCOMPARE(realText(), text());
}

void PasswdTextEditTest::aSelectionMayContainSeveralLines()
{
    goTo(passwordBegin + 2);
    press(Qt::Key_Right, Qt::ShiftModifier, secondPassword + 2 - passwordBegin - 2);
    type(QStringLiteral("+"));
    QCOMPARE(realText(), QStringLiteral("http://a/vantor?u=bob&p=se+rd&path=y"));
    QCOMPARE(shownText(), QString::fromUtf8("http://a/vantor?u=bob&p=●●●●●&path=y"));
}

void PasswdTextEditTest::arrowKeysMoveTheCursorFromLineToLine()
{
    const auto line = [this] { return textEdit()->textCursor().blockNumber(); };
    goTo(passwordBegin + 4);
    press(Qt::Key_Down, Qt::NoModifier, 2);
    QCOMPARE(line(), 2);
    press(Qt::Key_Up, Qt::NoModifier, 2);
    QCOMPARE(position(), passwordBegin + 4);
    press(Qt::Key_PageDown);
    QCOMPARE(line(), 2);
    QCOMPARE(changes->size(), 0);
}

void PasswdTextEditTest::aSelectionCannotBeDraggedAway()
{
    drag(passwordBegin + 5, passwordBegin + 1);
    drag(passwordBegin + 3, secondPassword + 2);
    QCOMPARE(anchorOf(edit), passwordBegin + 3);
    QCOMPARE(position(), secondPassword + 2);
    compareReal(password);
    // A click with Shift moves the end of the selection, even if the click is inside the selection.
    goTo(0);
    press(Qt::Key_Right, Qt::ShiftModifier, 10);
    click(5, Qt::LeftButton, Qt::ShiftModifier);
    QCOMPARE(position(), 5);
    QCOMPARE(anchorOf(edit), 0);
}

void PasswdTextEditTest::typingDoesNotScrollTheView()
{
    setRealText(longText());
    press(Qt::Key_End, Qt::ControlModifier);
    press(Qt::Key_Up, Qt::NoModifier, 4);
    const int scrolled = textEdit()->verticalScrollBar()->value();
    QVERIFY(scrolled > 0);
    type(QStringLiteral("Q"));
    QCOMPARE(textEdit()->verticalScrollBar()->value(), scrolled);
}

void PasswdTextEditTest::richTextIsPastedAsPlainText()
{
    auto* rich = new QMimeData;
    rich->setHtml(QStringLiteral("<b>12</b>"));
    rich->setText(QStringLiteral("12"));
    QGuiApplication::clipboard()->setMimeData(rich);
    goTo(passwordBegin + 3);
    press(QKeySequence::Paste);
    compareReal(QStringLiteral("sec12ret"));
    QCOMPARE(textEdit()->textCursor().charFormat().fontWeight(), int(QFont::Normal));
}

void PasswdTextEditTest::unfinishedInputMethodTextWithinThePasswordIsMasked()
{
    const auto composed = [this](const QString& preedit) {
        compose(preedit);
        return textEdit()->textCursor().block().layout()->preeditAreaText();
    };
    goTo(passwordBegin + 3);
    QCOMPARE(composed(QStringLiteral("kan")), QString(3, QChar(0x25cf)));
    compareReal(password);
    QCOMPARE(composed(QString()), QString());
    goTo(3);
    QCOMPARE(composed(QStringLiteral("kan")), QStringLiteral("kan"));
    QCOMPARE(composed(QString()), QString());
    compareReal(password);
    goTo(passwordBegin + 3);
    type(QStringLiteral("-"));
    compareReal(QStringLiteral("sec-ret"));
}

void PasswdTextEditTest::theTabKeyEitherMovesTheFocusOrInsertsATab()
{
    auto* next = new QLineEdit(window.get());
    next->show();
    textEdit()->setTabChangesFocus(true);
    press(Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), next);
    QCOMPARE(realText(), text());
    press(Qt::Key_Backtab);
    edit->setFocus();
    textEdit()->setTabChangesFocus(false);
    goTo(0);
    press(Qt::Key_Tab);
    QCOMPARE(realText(), QStringLiteral("\t") + text());
}

QTEST_MAIN(PasswdTextEditTest)
#include "PasswdTextEditTest.moc"
