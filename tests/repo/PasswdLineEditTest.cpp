// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/PasswdLineEdit.h"

#include "repo/RepoVantor.h"
#include "tests/repo/PasswdEditTest.h"

class PasswdLineEditTest : public PasswdEditTest
{
    Q_OBJECT

private Q_SLOTS:
    void aSignalReportsTheTypedTextWithItsPassword();
    void aLongTextIsStoredCompletely();
    void deletingToTheEndOfTheLinePutsTheMaskedRestOnTheClipboard();
    void deletingTheWholeLinePutsTheMaskedTextOnTheClipboard();
    void lineBreaksInInsertedTextAreDropped();
    void unfinishedInputMethodTextWithinThePasswordIsMasked();
    void unfinishedInputMethodTextOutsideThePasswordIsVisible();
    void theReturnKeyPressesTheDefaultButtonOfTheWindow();

protected:
    QString textWith(const QString& insertedPassword) const override
    {
        return QStringLiteral("http://h/vantor?u=bob&p=%1&path=/x").arg(insertedPassword);
    }
    QString longText() const override
    {
        return QStringLiteral("http://h/") + QString(200, QLatin1Char('d')) +
               QStringLiteral("/vantor?u=bob&p=secret&path=/x");
    }
    QWidget* makeEdit(QWidget* parent) const override
    {
        return new PasswdLineEdit(Repo::Vantor::oneUrlRegExp(), parent);
    }
    QWidget* makeOrdinaryEdit(QWidget* parent) const override { return new QLineEdit(parent); }
    QString realTextOf(const QWidget* of) const override
    {
        return static_cast<const PasswdLineEdit*>(of)->realText();
    }
    using PasswdEditTest::setRealText;
    void setRealText(QWidget* of, const QString& real) const override
    {
        static_cast<PasswdLineEdit*>(of)->setRealText(real);
    }
    const char* changeSignal() const override { return SIGNAL(realTextChanged(const QString&)); }

    QList<QWidget*> editsIn(const QWidget* parent) const override
    {
        QList<QWidget*> found;
        for (QLineEdit* each : parent->findChildren<QLineEdit*>()) {
            found << each;
        }
        return found;
    }
    QString textOf(const QWidget* of) const override { return static_cast<const QLineEdit*>(of)->text(); }
    void setText(QWidget* of, const QString& shown) const override
    {
        static_cast<QLineEdit*>(of)->setText(shown);
    }
    int positionOf(const QWidget* of) const override
    {
        return static_cast<const QLineEdit*>(of)->cursorPosition();
    }
    int anchorOf(const QWidget* of) const override
    {
        const auto* lineEdit = static_cast<const QLineEdit*>(of);
        const int cursor = lineEdit->cursorPosition();
        const int begin = lineEdit->selectionStart();
        return begin == cursor ? lineEdit->selectionEnd() : begin < 0 ? cursor : begin;
    }
    bool hasLines() const override { return false; }

    QWidget* mouseTarget() const override { return edit; }
    QPoint placeOf(int place) const override
    {
        const int saved = line()->cursorPosition();
        line()->setCursorPosition(place);
        QCoreApplication::processEvents();
        const QPoint found = line()->inputMethodQuery(Qt::ImCursorRectangle).toRect().center();
        line()->setCursorPosition(saved);
        return found;
    }

private:
    PasswdLineEdit* line() const { return static_cast<PasswdLineEdit*>(edit); }
};

void PasswdLineEditTest::aSignalReportsTheTypedTextWithItsPassword()
{
    type(QStringLiteral("yz"));
    QCOMPARE(changes->size(), 2);
    QCOMPARE(changes->at(1).at(0).toString(), text() + QStringLiteral("yz"));
    setRealText(text() + QStringLiteral("yz"));
    QCOMPARE(changes->size(), 2);
}

void PasswdLineEditTest::aLongTextIsStoredCompletely()
{
    const QString longOne = QString(40000, QLatin1Char('a'));
    setRealText(longOne);
    QCOMPARE(realText(), longOne);
    press(Qt::Key_Backspace);
    QCOMPARE(realText().size(), 39999);
    QCOMPARE(shownText().size(), 39999);
}

void PasswdLineEditTest::deletingToTheEndOfTheLinePutsTheMaskedRestOnTheClipboard()
{
    goTo(passwordBegin + 3);
    press(QKeySequence::DeleteEndOfLine);
    QCOMPARE(realText(), QStringLiteral("http://h/vantor?u=bob&p=sec"));
    QCOMPARE(QGuiApplication::clipboard()->text(), QString::fromUtf8("●●●&path=/x"));
}

void PasswdLineEditTest::deletingTheWholeLinePutsTheMaskedTextOnTheClipboard()
{
    goTo(passwordBegin + 3);
    press(QKeySequence::DeleteCompleteLine);
    QCOMPARE(realText(), QString());
    QCOMPARE(shownText(), QString());
    QCOMPARE(QGuiApplication::clipboard()->text(), maskedText());
}

void PasswdLineEditTest::lineBreaksInInsertedTextAreDropped()
{
    press(QKeySequence::SelectAll);
    QGuiApplication::clipboard()->setText(text() + QStringLiteral("\n"));
    press(QKeySequence::Paste);
    compareReal(password);
    // setText() stands for an assistive program, which cannot insert line breaks either.
    setText(edit, QStringLiteral("one\ntwo\n"));
    QCOMPARE(realText(), QStringLiteral("one two"));
    QCOMPARE(shownText(), QStringLiteral("one two"));
}

void PasswdLineEditTest::unfinishedInputMethodTextWithinThePasswordIsMasked()
{
    goTo(passwordBegin + 3);
    compose(QStringLiteral("kan"));
    compareReal(password);
    const QImage composed = edit->grab().toImage();
    compose(QString(3, QChar(0x25cf)));
    QCOMPARE(edit->grab().toImage(), composed);
    compose(QString());
    compareReal(password);
    type(QStringLiteral("-"));
    compareReal(QStringLiteral("sec-ret"));
}

void PasswdLineEditTest::unfinishedInputMethodTextOutsideThePasswordIsVisible()
{
    goTo(3);
    compose(QStringLiteral("kan"));
    const QImage composed = edit->grab().toImage();
    compose(QStringLiteral("www"));
    QVERIFY(edit->grab().toImage() != composed);
    QCOMPARE(realText(), text());
}

void PasswdLineEditTest::theReturnKeyPressesTheDefaultButtonOfTheWindow()
{
    auto* button = new QPushButton(window.get());
    button->setDefault(true);
    QSignalSpy clicked(button, SIGNAL(clicked()));
    button->show();
    press(Qt::Key_Return);
    QCOMPARE(clicked.size(), 1);
    QCOMPARE(realText(), text());
}

QTEST_MAIN(PasswdLineEditTest)
#include "PasswdLineEditTest.moc"
