#include "repo/PasswdLineEdit.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>
#include <random>

#include "app/base/Fonts.h"
#include "repo/RepoVantor.h"
#include "tests/repo/Assistive.h"

namespace {

const QString url = QStringLiteral("http://h/vantor?u=bob&p=secret&path=/x");
const QString maskedUrl = QString::fromUtf8("http://h/vantor?u=bob&p=●●●●●●&path=/x");
const int passwordBegin = 24;

} // namespace

class PasswdLineEditTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void thePasswordIsMasked();
    void aTextThatDoesNotMatchIsShown();
    void theHiddenEditIsLikeTheShownOne();
    void theHiddenEditFollowsToAnotherParent();
    void theHiddenEditIsDeletedToo();
    void itAcceptsNoDropsAndHasNoMenu();
    void changesAreTold();
    void aChangeThatDoesNotShowIsToldToo();
    void aLongTextIsKept();

    void typingIntoThePassword();
    void typingOverASelectedPartOfThePassword();
    void backspaceAndDelete();
    void wordsAreDeletedAsTheyAreShown();
    void theRestOfTheLineIsDeletedAndCopiedMasked();
    void everythingIsDeletedAndCopiedMasked();
    void theCursorGoesThroughThePasswordCharacterByCharacter();
    void theSelectionStaysWhereTheUserMadeIt();
    void undoAndRedo();
    void aClickSetsTheCursor();
    void draggingSelects();
    void aDoubleClickSelectsWhatItShows();
    void clicksAreRightInAScrolledText();
    void surrogatePairsAreNotTornApart();
    void randomEditingKeepsTheRealText();
    void randomEditingCanBeUndone();

    void pastingGoesIntoTheRealText();
    void pastedLineBreaksAreDropped();
    void whatIsCopiedIsMaskedForOthers();
    void cutAndPasteKeepThePassword();
    void theMouseSelectionIsMaskedForOthers();
    void theMiddleButtonPastesTheSelection();

    void composedTextGoesIntoTheRealText();
    void composingReplacesTheSelection();
    void composingWithinThePasswordIsMasked();
    void composingOutsideThePasswordShows();
    void theInputMethodMayReplaceText();
    void theInputMethodIsNotToldThePassword();

    void assistiveProgramsAreNotToldThePassword();
    void assistiveProgramsMayEdit();
    void settingTheShownTextSetsTheRealText();
    void escapeReachesTheWindowOnce();
    void returnReachesTheWindow();

private:
    QLineEdit* hidden() const
    {
        for (QLineEdit* each : window->findChildren<QLineEdit*>()) {
            if (each != edit) {
                return each;
            }
        }
        qFatal("there is no hidden edit");
    }
    QPoint placeOf(int position) const
    {
        const int saved = edit->cursorPosition();
        edit->setCursorPosition(position);
        QCoreApplication::processEvents();
        const QPoint place = edit->inputMethodQuery(Qt::ImCursorRectangle).toRect().center();
        edit->setCursorPosition(saved);
        return place;
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, int times = 1) const
    {
        for (int i = 0; i < times; ++i) {
            QTest::keyClick(edit, key, modifiers);
        }
    }
    void goTo(int position) const
    {
        press(Qt::Key_Home);
        press(Qt::Key_Right, Qt::NoModifier, position);
    }
    void compareReal(const QString& password) const
    {
        QCOMPARE(edit->realText(), QStringLiteral("http://h/vantor?u=bob&p=%1&path=/x").arg(password));
        QCOMPARE(edit->text(), QStringLiteral("http://h/vantor?u=bob&p=%1&path=/x")
                                   .arg(QString(password.size(), QChar(0x25cf))));
    }

    std::unique_ptr<QWidget> window;
    PasswdLineEdit* edit = nullptr;
    std::unique_ptr<QSignalSpy> changes;
};

void PasswdLineEditTest::init()
{
    window = std::make_unique<QDialog>();
    auto* layout = new QVBoxLayout(window.get());
    edit = new PasswdLineEdit(Repo::Vantor::oneUrlRegExp(), window.get());
    layout->addWidget(edit);
    window->resize(600, 80);
    window->show();
    QApplication::setActiveWindow(window.get());
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    edit->setFocus();
    edit->setRealText(url);
    changes = std::make_unique<QSignalSpy>(edit, SIGNAL(realTextChanged(const QString&)));
    QGuiApplication::clipboard()->clear();
    QGuiApplication::clipboard()->clear(QClipboard::Selection);
}

void PasswdLineEditTest::cleanup()
{
    changes.reset();
    window.reset();
}

void PasswdLineEditTest::thePasswordIsMasked()
{
    QCOMPARE(edit->text(), maskedUrl);
    QCOMPARE(edit->displayText(), maskedUrl);
    QCOMPARE(edit->realText(), url);
    QCOMPARE(edit->text().at(passwordBegin),
             QChar(edit->style()->styleHint(QStyle::SH_LineEdit_PasswordCharacter, nullptr, edit)));
}

void PasswdLineEditTest::aTextThatDoesNotMatchIsShown()
{
    edit->setRealText(QStringLiteral("http://h/vantor?u=bob&p=secret"));
    QCOMPARE(edit->text(), QStringLiteral("http://h/vantor?u=bob&p=secret"));
    edit->setRealText(url + QStringLiteral("\n") + url);
    edit->maskEverywhere(Repo::Vantor::passwordRegExp());
    QCOMPARE(edit->text(), maskedUrl + QStringLiteral("\n") + maskedUrl);
    QCOMPARE(edit->realText(), url + QStringLiteral("\n") + url);
}

void PasswdLineEditTest::theHiddenEditIsLikeTheShownOne()
{
    QCOMPARE(hidden()->text(), url);
    QVERIFY(!hidden()->isVisible());
    QCOMPARE(hidden()->parentWidget(), edit->parentWidget());
    QCOMPARE(hidden()->geometry(), edit->geometry());
    QCOMPARE(hidden()->font(), edit->font());
    QCOMPARE(edit->font().family(), Fonts::makeFixed(QApplication::font(edit)).family());
    QVERIFY(edit->font().fixedPitch());
    window->resize(300, 120);
    QTRY_COMPARE(window->size(), QSize(300, 120));
    QTRY_COMPARE(hidden()->geometry(), edit->geometry());
    edit->move(5, 7);
    QCOMPARE(hidden()->geometry(), edit->geometry());
}

void PasswdLineEditTest::theHiddenEditFollowsToAnotherParent()
{
    PasswdLineEdit moved(Repo::Vantor::oneUrlRegExp());
    moved.setRealText(url);
    moved.setParent(window.get());
    QCOMPARE(window->findChildren<QLineEdit*>().size(), 4);
    for (QLineEdit* each : window->findChildren<QLineEdit*>()) {
        QCOMPARE(each->isVisible(), each == edit);
    }
    QTest::keyClicks(&moved, QStringLiteral("y"));
    QCOMPARE(moved.realText(), url + QStringLiteral("y"));
    moved.setParent(nullptr);
    QCOMPARE(window->findChildren<QLineEdit*>().size(), 2);
}

void PasswdLineEditTest::theHiddenEditIsDeletedToo()
{
    const QPointer<QLineEdit> inner = hidden();
    delete edit;
    QVERIFY(inner.isNull());
    edit = new PasswdLineEdit(Repo::Vantor::oneUrlRegExp(), window.get());
    const QPointer<QLineEdit> other = hidden();
    window.reset();
    QVERIFY(other.isNull());
}

void PasswdLineEditTest::itAcceptsNoDropsAndHasNoMenu()
{
    QVERIFY(!edit->acceptDrops());
    QCOMPARE(edit->contextMenuPolicy(), Qt::NoContextMenu);
    QTest::mouseClick(edit, Qt::RightButton);
    QContextMenuEvent asked(QContextMenuEvent::Mouse, QPoint(5, 5), edit->mapToGlobal(QPoint(5, 5)));
    QCoreApplication::sendEvent(edit, &asked);
    QVERIFY(QApplication::activePopupWidget() == nullptr);
}

void PasswdLineEditTest::changesAreTold()
{
    edit->setRealText(QStringLiteral("x"));
    QCOMPARE(changes->size(), 1);
    QCOMPARE(changes->at(0).at(0).toString(), QStringLiteral("x"));
    QTest::keyClicks(edit, QStringLiteral("yz"));
    QCOMPARE(changes->size(), 3);
    QCOMPARE(changes->at(2).at(0).toString(), QStringLiteral("xyz"));
    edit->setRealText(QStringLiteral("xyz"));
    press(Qt::Key_Left);
    QCOMPARE(changes->size(), 3);
}

void PasswdLineEditTest::aChangeThatDoesNotShowIsToldToo()
{
    goTo(passwordBegin);
    press(Qt::Key_Right, Qt::ShiftModifier);
    QTest::keyClicks(edit, QStringLiteral("S"));
    compareReal(QStringLiteral("Secret"));
    QCOMPARE(edit->text(), maskedUrl);
    QCOMPARE(changes->size(), 1);
}

void PasswdLineEditTest::aLongTextIsKept()
{
    const QString text = QString(40000, QLatin1Char('a'));
    edit->setRealText(text);
    QCOMPARE(edit->realText(), text);
    press(Qt::Key_Backspace);
    QCOMPARE(edit->realText().size(), 39999);
    QCOMPARE(edit->text().size(), 39999);
}

void PasswdLineEditTest::typingIntoThePassword()
{
    goTo(passwordBegin + 3);
    QTest::keyClicks(edit, QStringLiteral("XY"));
    compareReal(QStringLiteral("secXYret"));
    QCOMPARE(edit->cursorPosition(), passwordBegin + 5);
    press(Qt::Key_Left);
    QTest::keyClicks(edit, QStringLiteral("-"));
    compareReal(QStringLiteral("secX-Yret"));
    QCOMPARE(hidden()->cursorPosition(), edit->cursorPosition());
}

void PasswdLineEditTest::typingOverASelectedPartOfThePassword()
{
    goTo(passwordBegin + 1);
    press(Qt::Key_Right, Qt::ShiftModifier, 4);
    QTest::keyClicks(edit, QStringLiteral("0"));
    compareReal(QStringLiteral("s0t"));
    // Selected backwards.
    press(Qt::Key_Left, Qt::ShiftModifier, 2);
    QTest::keyClicks(edit, QStringLiteral("ab"));
    compareReal(QStringLiteral("abt"));
}

void PasswdLineEditTest::backspaceAndDelete()
{
    goTo(passwordBegin + 2);
    press(Qt::Key_Backspace);
    compareReal(QStringLiteral("scret"));
    press(Qt::Key_Delete);
    compareReal(QStringLiteral("sret"));
    press(Qt::Key_Backspace);
    press(Qt::Key_Delete, Qt::NoModifier, 3);
    compareReal(QString());
}

void PasswdLineEditTest::wordsAreDeletedAsTheyAreShown()
{
    edit->setRealText(QStringLiteral("http://h/vantor?u=bob&p=ab-cd+ef&path=/x"));
    press(Qt::Key_Home);
    for (int i = 0; edit->cursorPosition() < passwordBegin; ++i) {
        QVERIFY(i < 50);
        press(Qt::Key_Right, Qt::ControlModifier);
    }
    const int begin = edit->cursorPosition();
    press(Qt::Key_Right, Qt::ControlModifier);
    const int end = edit->cursorPosition();
    press(Qt::Key_Left, Qt::ControlModifier);
    QCOMPARE(edit->cursorPosition(), begin);
    const QString before = edit->realText();
    press(Qt::Key_Delete, Qt::ControlModifier);
    QString after = before;
    after.remove(begin, end - begin);
    QCOMPARE(edit->realText(), after);
    QCOMPARE(edit->text().size(), after.size());

    press(Qt::Key_End);
    press(Qt::Key_Backspace, Qt::ControlModifier);
    after.chop(1);
    QCOMPARE(edit->realText(), after);
    // A selection is what is deleted then.
    goTo(0);
    press(Qt::Key_Right, Qt::ShiftModifier, 2);
    press(Qt::Key_Delete, Qt::ControlModifier);
    QCOMPARE(edit->realText(), after.mid(2));
}

void PasswdLineEditTest::theRestOfTheLineIsDeletedAndCopiedMasked()
{
    goTo(passwordBegin + 3);
    QTest::keySequence(edit, QKeySequence(QKeySequence::DeleteEndOfLine));
    QCOMPARE(edit->realText(), QStringLiteral("http://h/vantor?u=bob&p=sec"));
    QCOMPARE(QGuiApplication::clipboard()->text(), QString::fromUtf8("●●●&path=/x"));
}

void PasswdLineEditTest::everythingIsDeletedAndCopiedMasked()
{
    goTo(passwordBegin + 3);
    QTest::keySequence(edit, QKeySequence(QKeySequence::DeleteCompleteLine));
    QCOMPARE(edit->realText(), QString());
    QCOMPARE(edit->text(), QString());
    QCOMPARE(QGuiApplication::clipboard()->text(), maskedUrl);
}

void PasswdLineEditTest::theCursorGoesThroughThePasswordCharacterByCharacter()
{
    goTo(0);
    for (int i = 0; i <= url.size(); ++i) {
        QCOMPARE(edit->cursorPosition(), i);
        press(Qt::Key_Right);
    }
    press(Qt::Key_Home);
    QCOMPARE(edit->cursorPosition(), 0);
    press(Qt::Key_End);
    QCOMPARE(edit->cursorPosition(), url.size());
    QCOMPARE(changes->size(), 0);
}

void PasswdLineEditTest::theSelectionStaysWhereTheUserMadeIt()
{
    goTo(passwordBegin + 4);
    press(Qt::Key_Left, Qt::ShiftModifier, 3);
    QCOMPARE(edit->selectionStart(), passwordBegin + 1);
    QCOMPARE(edit->cursorPosition(), passwordBegin + 1);
    QCOMPARE(edit->selectedText(), QString::fromUtf8("●●●"));
    // A key that changes nothing.
    press(Qt::Key_F5);
    QCOMPARE(edit->selectionStart(), passwordBegin + 1);
    QCOMPARE(edit->cursorPosition(), passwordBegin + 1);
    QCOMPARE(edit->selectedText(), QString::fromUtf8("●●●"));
    QTest::keySequence(edit, QKeySequence(QKeySequence::SelectAll));
    QCOMPARE(edit->selectedText(), maskedUrl);
    press(Qt::Key_Delete);
    QCOMPARE(edit->realText(), QString());
}

void PasswdLineEditTest::undoAndRedo()
{
    goTo(passwordBegin + 6);
    press(Qt::Key_Backspace, Qt::NoModifier, 2);
    compareReal(QStringLiteral("secr"));
    goTo(passwordBegin);
    QTest::keyClicks(edit, QStringLiteral("new"));
    compareReal(QStringLiteral("newsecr"));
    QTest::keySequence(edit, QKeySequence(QKeySequence::Undo));
    compareReal(QStringLiteral("secr"));
    for (int i = 0; i < 3; ++i) {
        QTest::keySequence(edit, QKeySequence(QKeySequence::Undo));
    }
    compareReal(QStringLiteral("secret"));
    for (int i = 0; i < 4; ++i) {
        QTest::keySequence(edit, QKeySequence(QKeySequence::Redo));
    }
    compareReal(QStringLiteral("newsecr"));
    // What was shown before another text was set does not come back.
    edit->setRealText(QStringLiteral("other"));
    QTest::keySequence(edit, QKeySequence(QKeySequence::Undo));
    QCOMPARE(edit->realText(), QStringLiteral("other"));
}

void PasswdLineEditTest::aClickSetsTheCursor()
{
    for (int position : {3, passwordBegin, passwordBegin + 2, passwordBegin + 6, url.size() - 2}) {
        QTest::mouseClick(edit, Qt::LeftButton, Qt::NoModifier, placeOf(position));
        QCOMPARE(edit->cursorPosition(), position);
        QTest::keyClicks(edit, QStringLiteral("Q"));
        QString changed = url;
        changed.insert(position, QLatin1Char('Q'));
        QCOMPARE(edit->realText(), changed);
        edit->setRealText(url);
    }
}

void PasswdLineEditTest::draggingSelects()
{
    const QPoint from = placeOf(passwordBegin + 5);
    const QPoint to = placeOf(passwordBegin + 1);
    QTest::mousePress(edit, Qt::LeftButton, Qt::NoModifier, from);
    QMouseEvent move(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(edit, &move);
    QTest::mouseRelease(edit, Qt::LeftButton, Qt::NoModifier, to);
    QCOMPARE(edit->selectedText(), QString::fromUtf8("●●●●"));
    QTest::keyClicks(edit, QStringLiteral("_"));
    compareReal(QStringLiteral("s_t"));
}

void PasswdLineEditTest::aDoubleClickSelectsWhatItShows()
{
    QTest::mouseDClick(edit, Qt::LeftButton, Qt::NoModifier, placeOf(passwordBegin + 3));
    QVERIFY(edit->hasSelectedText());
    const int begin = edit->selectionStart();
    const int length = edit->selectedText().size();
    press(Qt::Key_Delete);
    QString left = url;
    left.remove(begin, length);
    QCOMPARE(edit->realText(), left);
}

void PasswdLineEditTest::clicksAreRightInAScrolledText()
{
    const QString text = QStringLiteral("http://h/") + QString(200, QLatin1Char('d')) +
                         QStringLiteral("/vantor?u=bob&p=secret&path=/x");
    edit->setRealText(text);
    press(Qt::Key_End);
    QCoreApplication::processEvents();
    const int position = text.indexOf(QStringLiteral("secret")) + 2;
    QTest::mouseClick(edit, Qt::LeftButton, Qt::NoModifier, placeOf(position));
    QCOMPARE(edit->cursorPosition(), position);
    QTest::keyClicks(edit, QStringLiteral("Q"));
    QCOMPARE(edit->realText(), QString(text).insert(position, QLatin1Char('Q')));
}

void PasswdLineEditTest::surrogatePairsAreNotTornApart()
{
    const QString key = QString::fromUtf8("\xf0\x9f\x94\x91");
    edit->setRealText(QStringLiteral("http://h/vantor?u=bob&p=%1%1&path=/x").arg(key));
    // Two password characters stand for each.
    for (int position = passwordBegin; position <= passwordBegin + 4; ++position) {
        edit->setRealText(QStringLiteral("http://h/vantor?u=bob&p=%1%1&path=/x").arg(key));
        edit->setCursorPosition(position);
        QTest::keyClicks(edit, QStringLiteral("-"));
        QString left = edit->realText();
        left.remove(QLatin1Char('-'));
        QCOMPARE(left, QStringLiteral("http://h/vantor?u=bob&p=%1%1&path=/x").arg(key));
        QCOMPARE(edit->realText().count(key), 2);
        press(Qt::Key_Backspace, Qt::NoModifier, 2);
        QVERIFY(edit->realText().count(key) >= 1);
        for (const uint code : edit->realText().toUcs4()) {
            QVERIFY(!QChar::isSurrogate(code));
        }
    }
}

// An ordinary line edit that gets the same keys says what is right.
void PasswdLineEditTest::randomEditingKeepsTheRealText()
{
    auto* plain = new QLineEdit(window.get());
    plain->setText(url);
    std::mt19937 random(20240607);
    const auto pick = [&random](int count) {
        return static_cast<int>(random() % static_cast<unsigned>(count));
    };
    const Qt::Key moves[] = {Qt::Key_Left,  Qt::Key_Right, Qt::Key_Left,
                             Qt::Key_Right, Qt::Key_Home,  Qt::Key_End};
    const QString letters = QStringLiteral("ab&=?/ %s");
    for (int step = 0; step < 3000; ++step) {
        const int action = pick(14);
        for (QLineEdit* each : {static_cast<QLineEdit*>(edit), plain}) {
            std::mt19937 same = random;
            const auto pickSame = [&same](int count) {
                return static_cast<int>(same() % static_cast<unsigned>(count));
            };
            if (action < 6) {
                const int times = 1 + pickSame(8);
                const Qt::Key key = moves[pickSame(6)];
                const bool selecting = pickSame(3) == 0;
                for (int i = 0; i < times; ++i) {
                    QTest::keyClick(each, key, selecting ? Qt::ShiftModifier : Qt::NoModifier);
                }
            } else if (action < 11) {
                QTest::keyClicks(each, QString(letters.at(pickSame(letters.size()))));
            } else if (action < 12) {
                QTest::keyClick(each, Qt::Key_Backspace);
            } else if (action < 13) {
                QTest::keyClick(each, Qt::Key_Delete);
            } else {
                QGuiApplication::clipboard()->setText(url.mid(10 + pickSame(10), pickSame(20)));
                QTest::keySequence(each, QKeySequence(QKeySequence::Paste));
            }
        }
        random.discard(3);
        if (edit->realText() != plain->text() || edit->cursorPosition() != plain->cursorPosition()) {
            QFAIL(qPrintable(QStringLiteral("step %1, action %2:\n%3 (%4) instead of\n%5 (%6)")
                                 .arg(step)
                                 .arg(action)
                                 .arg(edit->realText())
                                 .arg(edit->cursorPosition())
                                 .arg(plain->text())
                                 .arg(plain->cursorPosition())));
        }
        QCOMPARE(edit->text().size(), plain->text().size());
        QCOMPARE(edit->selectionStart(), plain->selectionStart());
        QCOMPARE(edit->selectedText().size(), plain->selectedText().size());
        if (plain->text().size() > 120 || !plain->text().contains(QStringLiteral("&p="))) {
            edit->setRealText(url);
            plain->setText(url);
        }
    }
}

void PasswdLineEditTest::randomEditingCanBeUndone()
{
    std::mt19937 random(20240607);
    const auto pick = [&random](int count) {
        return static_cast<int>(random() % static_cast<unsigned>(count));
    };
    const QString letters = QStringLiteral("ab&=?/ %s");
    for (int round = 0; round < 60; ++round) {
        edit->setRealText(url);
        for (int step = 0; step < 40; ++step) {
            const Qt::KeyboardModifiers modifiers = pick(3) == 0 ? Qt::ShiftModifier : Qt::NoModifier;
            switch (pick(6)) {
            case 0:
                press(Qt::Key_Left, modifiers, 1 + pick(9));
                break;
            case 1:
                press(Qt::Key_Right, modifiers, 1 + pick(9));
                break;
            case 2:
                press(pick(2) == 0 ? Qt::Key_Backspace : Qt::Key_Delete);
                break;
            case 3:
                press(Qt::Key_Backspace, Qt::ControlModifier);
                break;
            default:
                QTest::keyClicks(edit, QString(letters.at(pick(letters.size()))));
                break;
            }
        }
        const QString edited = edit->realText();
        QVERIFY(edited != url);
        for (int i = 0; i < 100; ++i) {
            QTest::keySequence(edit, QKeySequence(QKeySequence::Undo));
            QCOMPARE(edit->text().size(), edit->realText().size());
        }
        QCOMPARE(edit->realText(), url);
        QCOMPARE(edit->text(), maskedUrl);
        for (int i = 0; i < 100; ++i) {
            QTest::keySequence(edit, QKeySequence(QKeySequence::Redo));
        }
        QCOMPARE(edit->realText(), edited);
    }
}

void PasswdLineEditTest::pastingGoesIntoTheRealText()
{
    QGuiApplication::clipboard()->setText(QStringLiteral("12"));
    goTo(passwordBegin + 3);
    QTest::keySequence(edit, QKeySequence(QKeySequence::Paste));
    compareReal(QStringLiteral("sec12ret"));
    press(Qt::Key_Left, Qt::ShiftModifier, 4);
    QTest::keySequence(edit, QKeySequence(QKeySequence::Paste));
    compareReal(QStringLiteral("s12ret"));
    QGuiApplication::clipboard()->clear();
    QTest::keySequence(edit, QKeySequence(QKeySequence::Paste));
    compareReal(QStringLiteral("s12ret"));
}

void PasswdLineEditTest::pastedLineBreaksAreDropped()
{
    QTest::keySequence(edit, QKeySequence(QKeySequence::SelectAll));
    QGuiApplication::clipboard()->setText(url + QStringLiteral("\n"));
    QTest::keySequence(edit, QKeySequence(QKeySequence::Paste));
    QCOMPARE(edit->realText(), url);
}

void PasswdLineEditTest::whatIsCopiedIsMaskedForOthers()
{
    QTest::keySequence(edit, QKeySequence(QKeySequence::SelectAll));
    QTest::keySequence(edit, QKeySequence(QKeySequence::Copy));
    const QMimeData* copied = QGuiApplication::clipboard()->mimeData();
    QCOMPARE(copied->text(), maskedUrl);
    for (const QString& format : copied->formats()) {
        QVERIFY2(!copied->data(format).contains("secret"), qPrintable(format));
    }
    QCOMPARE(edit->realText(), url);
    QCOMPARE(edit->selectedText(), maskedUrl);

    QLineEdit other;
    other.paste();
    QCOMPARE(other.text(), maskedUrl);
}

void PasswdLineEditTest::cutAndPasteKeepThePassword()
{
    QTest::keySequence(edit, QKeySequence(QKeySequence::SelectAll));
    QTest::keySequence(edit, QKeySequence(QKeySequence::Cut));
    QCOMPARE(edit->realText(), QString());
    QCOMPARE(QGuiApplication::clipboard()->text(), maskedUrl);
    QTest::keySequence(edit, QKeySequence(QKeySequence::Paste));
    QCOMPARE(edit->realText(), url);
    QCOMPARE(edit->text(), maskedUrl);
}

void PasswdLineEditTest::theMouseSelectionIsMaskedForOthers()
{
    QVERIFY(QGuiApplication::clipboard()->supportsSelection());
    const QPoint from = placeOf(0);
    const QPoint to = placeOf(url.size());
    QTest::mousePress(edit, Qt::LeftButton, Qt::NoModifier, from);
    QMouseEvent move(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(edit, &move);
    QTest::mouseRelease(edit, Qt::LeftButton, Qt::NoModifier, to);
    QCOMPARE(QGuiApplication::clipboard()->text(QClipboard::Selection), maskedUrl);
    // By keys.
    QGuiApplication::clipboard()->clear(QClipboard::Selection);
    press(Qt::Key_Home, Qt::ShiftModifier);
    QTest::keySequence(edit, QKeySequence(QKeySequence::SelectAll));
    QVERIFY(!QGuiApplication::clipboard()->text(QClipboard::Selection).contains(QStringLiteral("secret")));
}

void PasswdLineEditTest::theMiddleButtonPastesTheSelection()
{
    QGuiApplication::clipboard()->setText(QStringLiteral("12"), QClipboard::Selection);
    QTest::mouseClick(edit, Qt::MiddleButton, Qt::NoModifier, placeOf(passwordBegin + 3));
    compareReal(QStringLiteral("sec12ret"));
    QCOMPARE(edit->cursorPosition(), passwordBegin + 5);
    QCOMPARE(changes->size(), 1);
}

void PasswdLineEditTest::composedTextGoesIntoTheRealText()
{
    goTo(passwordBegin + 3);
    QInputMethodEvent commit;
    commit.setCommitString(QString::fromUtf8("\xc3\xa4\xe6\xbc\xa2"));
    QCoreApplication::sendEvent(edit, &commit);
    compareReal(QString::fromUtf8("sec\xc3\xa4\xe6\xbc\xa2ret"));
    QCOMPARE(edit->cursorPosition(), passwordBegin + 5);
}

void PasswdLineEditTest::composingReplacesTheSelection()
{
    goTo(passwordBegin + 1);
    press(Qt::Key_Right, Qt::ShiftModifier, 4);
    QInputMethodEvent preedit(QStringLiteral("ka"), {});
    QCoreApplication::sendEvent(edit, &preedit);
    compareReal(QStringLiteral("st"));
    QInputMethodEvent commit;
    commit.setCommitString(QString::fromUtf8("\xe3\x81\x8b"));
    QCoreApplication::sendEvent(edit, &commit);
    compareReal(QString::fromUtf8("s\xe3\x81\x8bt"));
    QCOMPARE(edit->displayText(), edit->text());
}

void PasswdLineEditTest::composingWithinThePasswordIsMasked()
{
    goTo(passwordBegin + 3);
    QInputMethodEvent preedit(QStringLiteral("kan"), {});
    QCoreApplication::sendEvent(edit, &preedit);
    compareReal(QStringLiteral("secret"));
    const QImage composed = edit->grab().toImage();
    QInputMethodEvent bullets(QString(3, QChar(0x25cf)), {});
    QCoreApplication::sendEvent(edit, &bullets);
    QCOMPARE(edit->grab().toImage(), composed);
    QInputMethodEvent end;
    QCoreApplication::sendEvent(edit, &end);
    compareReal(QStringLiteral("secret"));
    QTest::keyClicks(edit, QStringLiteral("-"));
    compareReal(QStringLiteral("sec-ret"));
}

void PasswdLineEditTest::composingOutsideThePasswordShows()
{
    goTo(3);
    QInputMethodEvent preedit(QStringLiteral("kan"), {});
    QCoreApplication::sendEvent(edit, &preedit);
    const QImage composed = edit->grab().toImage();
    QInputMethodEvent other(QStringLiteral("www"), {});
    QCoreApplication::sendEvent(edit, &other);
    QVERIFY(edit->grab().toImage() != composed);
    QCOMPARE(edit->realText(), url);
}

void PasswdLineEditTest::theInputMethodMayReplaceText()
{
    goTo(passwordBegin + 3);
    QInputMethodEvent commit;
    commit.setCommitString(QStringLiteral("C"), -1, 1);
    QCoreApplication::sendEvent(edit, &commit);
    compareReal(QStringLiteral("seCret"));
    QInputMethodEvent removal;
    removal.setCommitString(QString(), -2, 2);
    QCoreApplication::sendEvent(edit, &removal);
    compareReal(QStringLiteral("sret"));
}

void PasswdLineEditTest::theInputMethodIsNotToldThePassword()
{
    press(Qt::Key_Home);
    QTest::keySequence(edit, QKeySequence(QKeySequence::SelectAll));
    for (Qt::InputMethodQuery query :
         {Qt::ImSurroundingText, Qt::ImCurrentSelection, Qt::ImTextBeforeCursor, Qt::ImTextAfterCursor}) {
        QVERIFY(!edit->inputMethodQuery(query).toString().contains(QStringLiteral("secret")));
    }
    QCOMPARE(edit->inputMethodQuery(Qt::ImSurroundingText).toString(), maskedUrl);
    QVERIFY(edit->inputMethodHints() & Qt::ImhSensitiveData);
}

void PasswdLineEditTest::assistiveProgramsAreNotToldThePassword()
{
    told.clear();
    QAccessible::installUpdateHandler(noteTold);
    goTo(passwordBegin + 3);
    QTest::keyClicks(edit, QStringLiteral("XYZ"));
    press(Qt::Key_Backspace);
    edit->setRealText(QStringLiteral("http://h/vantor?u=bob&p=other&path=/x"));
    QAccessible::installUpdateHandler(nullptr);
    QVERIFY(toldAsExpected());
    for (const QString& text : qAsConst(told)) {
        QVERIFY2(!text.contains(QRegExp(QStringLiteral("sec|X|Y|Z|other"))), qPrintable(text));
    }
    QStringList texts;
    collectTexts(QAccessible::queryAccessibleInterface(window.get()), texts);
    QVERIFY(texts.contains(edit->text()));
    for (const QString& text : qAsConst(texts)) {
        QVERIFY2(!text.contains(QStringLiteral("other")), qPrintable(text));
    }
    QVERIFY(QAccessible::queryAccessibleInterface(hidden())->textInterface() == nullptr);
}

void PasswdLineEditTest::assistiveProgramsMayEdit()
{
    QAccessibleEditableTextInterface* editable =
        QAccessible::queryAccessibleInterface(edit)->editableTextInterface();
    QVERIFY(editable != nullptr);
    editable->insertText(passwordBegin + 3, QStringLiteral("12"));
    compareReal(QStringLiteral("sec12ret"));
    editable->deleteText(0, 4);
    QCOMPARE(edit->realText(), QStringLiteral("://h/vantor?u=bob&p=sec12ret&path=/x"));
    editable->replaceText(0, 4, QStringLiteral("ftp://k"));
    QCOMPARE(edit->realText(), QStringLiteral("ftp://k/vantor?u=bob&p=sec12ret&path=/x"));
}

void PasswdLineEditTest::settingTheShownTextSetsTheRealText()
{
    edit->setText(QStringLiteral("http://h/vantor?u=eve&p=new&path=/x"));
    QCOMPARE(edit->realText(), QStringLiteral("http://h/vantor?u=eve&p=new&path=/x"));
    QCOMPARE(edit->text(), QString::fromUtf8("http://h/vantor?u=eve&p=●●●&path=/x"));
    edit->clear();
    QCOMPARE(edit->realText(), QString());
}

void PasswdLineEditTest::escapeReachesTheWindowOnce()
{
    QSignalSpy finished(window.get(), SIGNAL(finished(int)));
    press(Qt::Key_Escape);
    QCOMPARE(finished.size(), 1);
}

void PasswdLineEditTest::returnReachesTheWindow()
{
    auto* button = new QPushButton(window.get());
    button->setDefault(true);
    QSignalSpy clicked(button, SIGNAL(clicked()));
    button->show();
    press(Qt::Key_Return);
    QCOMPARE(clicked.size(), 1);
    QCOMPARE(edit->realText(), url);
}

QTEST_MAIN(PasswdLineEditTest)
#include "PasswdLineEditTest.moc"
