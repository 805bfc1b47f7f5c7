// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/repo/PasswdEditTest.h"

#include <random>

#include "app/base/Fonts.h"
#include "repo/RepoVantor.h"
#include "tests/repo/Assistive.h"

const QString PasswdEditTest::password = QStringLiteral("secret");

namespace {

// A random generator with a fixed seed: each run gets the same numbers.
class Random
{
public:
    // A number from 0 to count - 1.
    int pick(int count) { return static_cast<int>(generator() % static_cast<unsigned>(count)); }
    QString letter()
    {
        const QString letters = QStringLiteral("ab&=?/ %s");
        return letters.at(pick(letters.size()));
    }

private:
    std::mt19937 generator{20240607};
};

} // namespace

// --- Functions for the tests.

QString PasswdEditTest::maskedWith(int passwordLength) const
{
    // If the text has a second password, this password is "word", which has four characters.
    QString masked = textWith(QString(passwordLength, QChar(0x25cf)));
    return masked.replace(QStringLiteral("=word&"), QString::fromUtf8("=●●●●&"));
}

QString PasswdEditTest::selectedText() const
{
    const int anchor = anchorOf(edit);
    return shownText().mid(qMin(anchor, position()), qAbs(anchor - position()));
}

QWidget* PasswdEditTest::hiddenEdit() const
{
    for (QWidget* each : editsIn(window.get())) {
        if (each != edit) {
            return each;
        }
    }
    qFatal("the hidden edit is missing");
}

void PasswdEditTest::compareReal(const QString& insertedPassword) const
{
    QCOMPARE(realText(), textWith(insertedPassword));
    QCOMPARE(shownText(), maskedWith(insertedPassword.size()));
}

void PasswdEditTest::press(Qt::Key key, Qt::KeyboardModifiers modifiers, int times) const
{
    for (int i = 0; i < times; ++i) {
        QTest::keyClick(edit, key, modifiers);
    }
}

void PasswdEditTest::press(QKeySequence::StandardKey key, int times) const
{
    for (int i = 0; i < times; ++i) {
        QTest::keySequence(edit, QKeySequence(key));
    }
}

void PasswdEditTest::goTo(int position) const
{
    press(Qt::Key_Home, wholeText());
    press(Qt::Key_Right, Qt::NoModifier, position);
}

void PasswdEditTest::click(int position, Qt::MouseButton button, Qt::KeyboardModifiers modifiers) const
{
    QTest::mouseClick(mouseTarget(), button, modifiers, placeOf(position));
}

void PasswdEditTest::drag(int from, int to) const
{
    const QPoint begin = placeOf(from);
    const QPoint end = placeOf(to);
    QTest::mousePress(mouseTarget(), Qt::LeftButton, Qt::NoModifier, begin);
    for (const QPoint& place : {(begin + end) / 2, end}) {
        QMouseEvent move(QEvent::MouseMove, place, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(mouseTarget(), &move);
    }
    QTest::mouseRelease(mouseTarget(), Qt::LeftButton, Qt::NoModifier, end);
}

void PasswdEditTest::compose(const QString& preedit) const
{
    QInputMethodEvent event(preedit, {});
    QCoreApplication::sendEvent(edit, &event);
}

void PasswdEditTest::commit(const QString& committed, int replaceFrom, int replaceLength) const
{
    QInputMethodEvent event;
    event.setCommitString(committed, replaceFrom, replaceLength);
    QCoreApplication::sendEvent(edit, &event);
}

void PasswdEditTest::init()
{
    QCOMPARE(text().mid(passwordBegin, password.size()), password);
    window = std::make_unique<QDialog>();
    auto* layout = new QVBoxLayout(window.get());
    edit = makeEdit(window.get());
    layout->addWidget(edit);
    window->resize(600, 160);
    window->show();
    QApplication::setActiveWindow(window.get());
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    edit->setFocus();
    setRealText(text());
    changes = std::make_unique<QSignalSpy>(edit, changeSignal());
    QGuiApplication::clipboard()->clear();
    QGuiApplication::clipboard()->clear(QClipboard::Selection);
}

void PasswdEditTest::cleanup()
{
    changes.reset();
    window.reset();
}

// --- The shown text.

void PasswdEditTest::thePasswordIsMasked()
{
    QCOMPARE(shownText(), maskedText());
    QCOMPARE(realText(), text());
    QCOMPARE(shownText().at(passwordBegin),
             QChar(edit->style()->styleHint(QStyle::SH_LineEdit_PasswordCharacter, nullptr, edit)));
}

void PasswdEditTest::aTextWithoutAPasswordIsShownUnmasked()
{
    const QString unfinished = QStringLiteral("http://a/vantor?u=bob&p=secret&pat");
    setRealText(unfinished);
    QCOMPARE(shownText(), unfinished);
    press(Qt::Key_End);
    type(QStringLiteral("h=x"));
    QCOMPARE(shownText(), QString::fromUtf8("http://a/vantor?u=bob&p=●●●●●●&path=x"));
    QCOMPARE(realText(), unfinished + QStringLiteral("h=x"));
}

void PasswdEditTest::everyPasswordOfAUrlIsMasked()
{
    // The edit's own expression matches none of these URLs. The edit still masks their passwords, because the
    // class Credentials finds the passwords.
    const QString urls = QStringLiteral("http://bob:secret@a/ http://a/?password=secret&x=y "
                                        "http://a/vantor?u=bob&p=sec ret&path=/x");
    setRealText(urls);
    QCOMPARE(shownText(), QString::fromUtf8("http://bob:●●●●●●@a/ http://a/?password=●●●●●●&x=y "
                                            "http://a/vantor?u=bob&p=●●●●●●●&path=/x"));
    QCOMPARE(realText(), urls);
    press(Qt::Key_Home, wholeText());
    press(Qt::Key_Right, Qt::NoModifier, QStringLiteral("http://bob:se").size());
    type(QStringLiteral("XY"));
    QCOMPARE(realText(), QString(urls).replace(QStringLiteral("bob:se"), QStringLiteral("bob:seXY")));
    QVERIFY(shownText().startsWith(QString::fromUtf8("http://bob:●●●●●●●●@a/")));
}

void PasswdEditTest::theHiddenEditHasTheGeometryAndTheFontAndTheParentOfTheShownEdit()
{
    QCOMPARE(textOf(hiddenEdit()), text());
    QVERIFY(!hiddenEdit()->isVisible());
    QCOMPARE(hiddenEdit()->parentWidget(), edit->parentWidget());
    QCOMPARE(hiddenEdit()->geometry(), edit->geometry());
    QCOMPARE(hiddenEdit()->font(), edit->font());
    QCOMPARE(edit->font().family(), Fonts::makeFixed(QApplication::font(edit)).family());
    QVERIFY(edit->font().fixedPitch());
    window->resize(300, 220);
    QTRY_COMPARE(window->size(), QSize(300, 220));
    QTRY_COMPARE(hiddenEdit()->geometry(), edit->geometry());
    edit->move(5, 7);
    QCOMPARE(hiddenEdit()->geometry(), edit->geometry());
}

void PasswdEditTest::theHiddenEditFollowsTheShownEditToANewParent()
{
    const std::unique_ptr<QWidget> moved(makeEdit(nullptr));
    setRealText(moved.get(), text());
    moved->setParent(window.get());
    QCOMPARE(editsIn(window.get()).size(), 4);
    for (const QWidget* each : editsIn(window.get())) {
        QCOMPARE(each->isVisible(), each == edit);
    }
    QTest::keyClick(moved.get(), Qt::Key_End, wholeText());
    QTest::keyClicks(moved.get(), QStringLiteral("y"));
    QCOMPARE(realTextOf(moved.get()), text() + QStringLiteral("y"));
    moved->setParent(nullptr);
    QCOMPARE(editsIn(window.get()).size(), 2);
}

void PasswdEditTest::theHiddenEditIsDeletedWithTheShownEdit()
{
    const QPointer<QWidget> inner = hiddenEdit();
    delete edit;
    QVERIFY(inner.isNull());
    edit = makeEdit(window.get());
    const QPointer<QWidget> other = hiddenEdit();
    window.reset();
    QVERIFY(other.isNull());
}

void PasswdEditTest::theShownEditAcceptsNoDropsAndHasNoContextMenu()
{
    QVERIFY(!edit->acceptDrops());
    QVERIFY(!mouseTarget()->acceptDrops());
    QCOMPARE(edit->contextMenuPolicy(), Qt::NoContextMenu);
    QTest::mouseClick(mouseTarget(), Qt::RightButton);
    QContextMenuEvent asked(QContextMenuEvent::Mouse, QPoint(5, 5), edit->mapToGlobal(QPoint(5, 5)));
    QCoreApplication::sendEvent(mouseTarget(), &asked);
    QVERIFY(QApplication::activePopupWidget() == nullptr);
}

void PasswdEditTest::aSignalReportsEachChangeOfTheText()
{
    setRealText(QStringLiteral("x"));
    QCOMPARE(changes->size(), 1);
    press(Qt::Key_End);
    type(QStringLiteral("yz"));
    QCOMPARE(changes->size(), 3);
    QCOMPARE(realText(), QStringLiteral("xyz"));
    press(Qt::Key_Left);
    QCOMPARE(changes->size(), 3);
}

void PasswdEditTest::aChangeIsSignalledEvenIfTheShownTextIsUnchanged()
{
    goTo(passwordBegin);
    press(Qt::Key_Right, Qt::ShiftModifier);
    type(QStringLiteral("S"));
    compareReal(QStringLiteral("Secret"));
    QCOMPARE(shownText(), maskedText());
    QCOMPARE(changes->size(), 1);
}

// --- Keys and the mouse.

void PasswdEditTest::typedTextIsInsertedIntoThePassword()
{
    goTo(passwordBegin + 3);
    type(QStringLiteral("XY"));
    compareReal(QStringLiteral("secXYret"));
    QCOMPARE(position(), passwordBegin + 5);
    press(Qt::Key_Left);
    type(QStringLiteral("-"));
    compareReal(QStringLiteral("secX-Yret"));
    QCOMPARE(positionOf(hiddenEdit()), position());
}

void PasswdEditTest::typedTextReplacesASelectedPartOfThePassword()
{
    goTo(passwordBegin + 1);
    press(Qt::Key_Right, Qt::ShiftModifier, 4);
    type(QStringLiteral("0"));
    compareReal(QStringLiteral("s0t"));
    // In this selection, the cursor is before the anchor.
    press(Qt::Key_Left, Qt::ShiftModifier, 2);
    type(QStringLiteral("ab"));
    compareReal(QStringLiteral("abt"));
}

void PasswdEditTest::theBackspaceAndDeleteKeysChangeThePassword()
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

void PasswdEditTest::controlDeleteRemovesOneWordOfTheMaskedText()
{
    setRealText(textWith(QStringLiteral("ab-cd+ef")));
    goTo(passwordBegin);
    press(Qt::Key_Right, Qt::ControlModifier);
    const int end = position();
    press(Qt::Key_Left, Qt::ControlModifier);
    const int begin = position();
    QVERIFY(begin < end);
    QString left = realText();
    press(Qt::Key_Delete, Qt::ControlModifier);
    left.remove(begin, end - begin);
    QCOMPARE(realText(), left);
    QCOMPARE(shownText().size(), left.size());

    press(Qt::Key_End, wholeText());
    press(Qt::Key_Backspace, Qt::ControlModifier);
    left.chop(1);
    QCOMPARE(realText(), left);
    // If text is selected, Ctrl+Delete deletes the selection instead of a word.
    goTo(0);
    press(Qt::Key_Right, Qt::ShiftModifier, 2);
    press(Qt::Key_Delete, Qt::ControlModifier);
    QCOMPARE(realText(), left.mid(2));
}

void PasswdEditTest::theCursorGoesThroughThePasswordCharacterByCharacter()
{
    goTo(0);
    for (int i = 0; i <= text().size(); ++i) {
        QCOMPARE(position(), i);
        press(Qt::Key_Right);
    }
    press(Qt::Key_Home, wholeText());
    QCOMPARE(position(), 0);
    press(Qt::Key_End, wholeText());
    QCOMPARE(position(), text().size());
    QCOMPARE(changes->size(), 0);
}

void PasswdEditTest::pressingAFunctionKeyKeepsTheSelection()
{
    goTo(passwordBegin + 4);
    press(Qt::Key_Left, Qt::ShiftModifier, 3);
    // The second round checks that F5, which has no effect, has kept the selection.
    for (int time = 0; time < 2; ++time) {
        QCOMPARE(anchorOf(edit), passwordBegin + 4);
        QCOMPARE(position(), passwordBegin + 1);
        QCOMPARE(selectedText(), QString::fromUtf8("●●●"));
        press(Qt::Key_F5);
    }
    press(QKeySequence::SelectAll);
    QCOMPARE(selectedText(), maskedText());
    press(Qt::Key_Delete);
    QCOMPARE(realText(), QString());
}

void PasswdEditTest::undoAndRedoRestoreThePassword()
{
    goTo(passwordBegin + 6);
    press(Qt::Key_Backspace, Qt::NoModifier, 2);
    compareReal(QStringLiteral("secr"));
    goTo(passwordBegin);
    type(QStringLiteral("new"));
    compareReal(QStringLiteral("newsecr"));
    press(QKeySequence::Undo);
    compareReal(QStringLiteral("secr"));
    QCOMPARE(position(), passwordBegin);
    press(QKeySequence::Undo, 3);
    compareReal(QStringLiteral("secret"));
    press(QKeySequence::Redo, 4);
    compareReal(QStringLiteral("newsecr"));
    // Setting a new text clears the undo history.
    setRealText(QStringLiteral("other"));
    press(QKeySequence::Undo);
    QCOMPARE(realText(), QStringLiteral("other"));
}

void PasswdEditTest::undoMasksTheRestoredPassword()
{
    press(QKeySequence::SelectAll);
    press(Qt::Key_Delete);
    QCOMPARE(shownText(), QString());
    press(QKeySequence::Undo);
    compareReal(password);
    // If the "&" behind the password is deleted, the text has no password, so the edit masks nothing. Undo
    // restores the "&", and masks the password again.
    press(Qt::Key_End, wholeText());
    goTo(passwordBegin + password.size());
    press(Qt::Key_Delete);
    QCOMPARE(realText(), textWith(QStringLiteral("secret&")).replace(QStringLiteral("&&"), QString()));
    press(QKeySequence::Undo);
    compareReal(password);
}

void PasswdEditTest::aClickMovesTheCursorToTheClickedCharacter()
{
    for (const int clicked :
         {3, passwordBegin, passwordBegin + 2, passwordBegin + 6, text().size() - 2, text().size()}) {
        click(clicked);
        QCOMPARE(position(), clicked);
        type(QStringLiteral("Q"));
        QCOMPARE(realText(), text().insert(clicked, QLatin1Char('Q')));
        setRealText(text());
    }
}

void PasswdEditTest::draggingTheMouseSelectsText()
{
    drag(passwordBegin + 5, passwordBegin + 1);
    QCOMPARE(selectedText(), QString::fromUtf8("●●●●"));
    type(QStringLiteral("_"));
    compareReal(QStringLiteral("s_t"));
}

void PasswdEditTest::aDoubleClickSelectsTheVisibleWord()
{
    QTest::mouseDClick(mouseTarget(), Qt::LeftButton, Qt::NoModifier, placeOf(passwordBegin + 3));
    const int begin = qMin(position(), anchorOf(edit));
    const int length = selectedText().size();
    QVERIFY(length > 0);
    press(Qt::Key_Delete);
    QCOMPARE(realText(), text().remove(begin, length));
}

void PasswdEditTest::aClickInAScrolledTextMovesTheCursorToTheClickedCharacter()
{
    setRealText(longText());
    press(Qt::Key_End, wholeText());
    QCoreApplication::processEvents();
    const int clicked = longText().lastIndexOf(password) + 2;
    click(clicked);
    QCOMPARE(position(), clicked);
    type(QStringLiteral("Q"));
    QCOMPARE(realText(), longText().insert(clicked, QLatin1Char('Q')));
}

void PasswdEditTest::typingAndDeletingNeverSplitASurrogatePair()
{
    const QString key = QString::fromUtf8("\xf0\x9f\x94\x91");
    const QString keys = textWith(key + key);
    // The masked text shows two password characters for each surrogate pair, so the cursor can be inside a
    // pair.
    for (int place = passwordBegin; place <= passwordBegin + 4; ++place) {
        setRealText(keys);
        goTo(place);
        type(QStringLiteral("-"));
        QCOMPARE(realText().remove(QLatin1Char('-')), keys);
        QCOMPARE(realText().count(key), 2);
        press(Qt::Key_Backspace, Qt::NoModifier, 2);
        QVERIFY(realText().count(key) >= 1);
        for (const uint code : realText().toUcs4()) {
            QVERIFY(!QChar::isSurrogate(code));
        }
    }
}

// An ordinary edit gets the same keys, and supplies the expected text.
void PasswdEditTest::randomEditingHasTheSameResultAsInAnOrdinaryEdit()
{
    QWidget* ordinary = makeOrdinaryEdit(window.get());
    ordinary->setFont(edit->font());
    ordinary->resize(edit->size());
    setText(ordinary, text());
    Random random;
    const Qt::Key moves[] = {Qt::Key_Left,  Qt::Key_Right, Qt::Key_Left,
                             Qt::Key_Right, Qt::Key_Home,  Qt::Key_End};
    goTo(0);
    QTest::keyClick(ordinary, Qt::Key_Home, wholeText());
    for (int step = 0; step < 2500; ++step) {
        const int action = random.pick(15);
        const int times = 1 + random.pick(8);
        const Qt::Key move = moves[random.pick(6)];
        const Qt::KeyboardModifiers modifiers = random.pick(3) == 0 ? Qt::ShiftModifier : Qt::NoModifier;
        const QString letter = random.letter();
        QGuiApplication::clipboard()->setText(text().mid(random.pick(60), random.pick(40)));
        for (QWidget* each : {edit, ordinary}) {
            if (action < 6) {
                for (int i = 0; i < times; ++i) {
                    QTest::keyClick(each, move, modifiers);
                }
            } else if (action < 10 || (action == 10 && !hasLines())) {
                QTest::keyClicks(each, letter);
            } else if (action == 10) {
                QTest::keyClick(each, Qt::Key_Return);
            } else if (action == 11) {
                QTest::keyClick(each, Qt::Key_Backspace);
            } else if (action == 12) {
                QTest::keyClick(each, Qt::Key_Delete);
            } else {
                QTest::keySequence(each, QKeySequence(QKeySequence::Paste));
            }
        }
        QVERIFY2(realText() == textOf(ordinary) && position() == positionOf(ordinary) &&
                     anchorOf(edit) == anchorOf(ordinary),
                 qPrintable(QStringLiteral("step %1, action %2:\n%3 (%4) instead of\n%5 (%6)")
                                .arg(QString::number(step), QString::number(action), realText(),
                                     QString::number(position()), textOf(ordinary),
                                     QString::number(positionOf(ordinary)))));
        QCOMPARE(shownText().size(), realText().size());
        if (realText().size() > 250 || !realText().contains(QStringLiteral("&p="))) {
            setRealText(text());
            setText(ordinary, text());
        }
    }
}

void PasswdEditTest::undoRestoresTheTextBeforeRandomEditing()
{
    Random random;
    for (int round = 0; round < 40; ++round) {
        setRealText(text());
        goTo(random.pick(text().size()));
        for (int step = 0; step < 40; ++step) {
            const Qt::KeyboardModifiers modifiers = random.pick(3) == 0 ? Qt::ShiftModifier : Qt::NoModifier;
            switch (random.pick(6)) {
            case 0:
                press(Qt::Key_Left, modifiers, 1 + random.pick(9));
                break;
            case 1:
                press(Qt::Key_Right, modifiers, 1 + random.pick(9));
                break;
            case 2:
                press(random.pick(2) == 0 ? Qt::Key_Backspace : Qt::Key_Delete);
                break;
            case 3:
                if (hasLines() && random.pick(2) == 0) {
                    press(Qt::Key_Return);
                } else {
                    press(Qt::Key_Backspace, Qt::ControlModifier);
                }
                break;
            default:
                type(random.letter());
                break;
            }
        }
        const QString edited = realText();
        QVERIFY(edited != text());
        for (int i = 0; i < 100; ++i) {
            press(QKeySequence::Undo);
            QCOMPARE(shownText().size(), realText().size());
        }
        compareReal(password);
        press(QKeySequence::Redo, 100);
        QCOMPARE(realText(), edited);
    }
}

// --- The clipboard.

void PasswdEditTest::pastedTextIsInsertedIntoThePassword()
{
    QGuiApplication::clipboard()->setText(QStringLiteral("12"));
    goTo(passwordBegin + 3);
    press(QKeySequence::Paste);
    compareReal(QStringLiteral("sec12ret"));
    press(Qt::Key_Left, Qt::ShiftModifier, 4);
    press(QKeySequence::Paste);
    compareReal(QStringLiteral("s12ret"));
    QGuiApplication::clipboard()->clear();
    press(QKeySequence::Paste);
    compareReal(QStringLiteral("s12ret"));
}

void PasswdEditTest::copiedPasswordsAreMaskedOnTheClipboard()
{
    press(QKeySequence::SelectAll);
    press(QKeySequence::Copy);
    const QMimeData* copied = QGuiApplication::clipboard()->mimeData();
    QCOMPARE(copied->text(), maskedText());
    for (const QString& format : copied->formats()) {
        QVERIFY2(!copied->data(format).contains("secret") && !copied->data(format).contains("word"),
                 qPrintable(format));
    }
    QCOMPARE(realText(), text());
    QCOMPARE(selectedText(), maskedText());

    const std::unique_ptr<QWidget> other(makeOrdinaryEdit(nullptr));
    QTest::keySequence(other.get(), QKeySequence(QKeySequence::Paste));
    QCOMPARE(textOf(other.get()), maskedText());
}

void PasswdEditTest::cuttingAndPastingWithinOneEditKeepsThePassword()
{
    press(QKeySequence::SelectAll);
    press(QKeySequence::Cut);
    QCOMPARE(realText(), QString());
    QCOMPARE(QGuiApplication::clipboard()->text(), maskedText());
    press(QKeySequence::Paste);
    compareReal(password);
}

void PasswdEditTest::selectedPasswordsAreMaskedInThePrimarySelection()
{
    QVERIFY(QGuiApplication::clipboard()->supportsSelection());
    drag(0, text().size());
    QCOMPARE(QGuiApplication::clipboard()->text(QClipboard::Selection), maskedText());
    // Text that is selected with the keyboard is masked too.
    QGuiApplication::clipboard()->clear(QClipboard::Selection);
    press(Qt::Key_Home, wholeText() | Qt::ShiftModifier);
    press(Qt::Key_F5);
    press(QKeySequence::SelectAll);
    press(Qt::Key_F5);
    const QString selected = QGuiApplication::clipboard()->text(QClipboard::Selection);
    QVERIFY2(!selected.contains(password), qPrintable(selected));
}

void PasswdEditTest::theMiddleButtonPastesTheSelection()
{
    QGuiApplication::clipboard()->setText(QStringLiteral("12"), QClipboard::Selection);
    click(passwordBegin + 3, Qt::MiddleButton);
    compareReal(QStringLiteral("sec12ret"));
    QCOMPARE(position(), passwordBegin + 5);
    QCOMPARE(changes->size(), 1);
}

// --- Input methods.

void PasswdEditTest::textFromAnInputMethodIsInsertedIntoThePassword()
{
    goTo(passwordBegin + 3);
    commit(QString::fromUtf8("\xc3\xa4\xe6\xbc\xa2"));
    compareReal(QString::fromUtf8("sec\xc3\xa4\xe6\xbc\xa2ret"));
    QCOMPARE(position(), passwordBegin + 5);
}

void PasswdEditTest::textFromAnInputMethodReplacesTheSelectedText()
{
    goTo(passwordBegin + 1);
    press(Qt::Key_Right, Qt::ShiftModifier, 4);
    compose(QStringLiteral("ka"));
    compareReal(QStringLiteral("st"));
    commit(QString::fromUtf8("\xe3\x81\x8b"));
    compareReal(QString::fromUtf8("s\xe3\x81\x8bt"));
}

void PasswdEditTest::anInputMethodCanReplaceTextNextToTheCursor()
{
    goTo(passwordBegin + 3);
    commit(QStringLiteral("C"), -1, 1);
    compareReal(QStringLiteral("seCret"));
    commit(QString(), -2, 2);
    compareReal(QStringLiteral("sret"));
}

void PasswdEditTest::theInputMethodDoesNotGetThePassword()
{
    press(QKeySequence::SelectAll);
    for (const Qt::InputMethodQuery query :
         {Qt::ImSurroundingText, Qt::ImCurrentSelection, Qt::ImTextBeforeCursor, Qt::ImTextAfterCursor}) {
        const QString answer = edit->inputMethodQuery(query).toString();
        QVERIFY2(!answer.contains(password) && !answer.contains(QStringLiteral("word")), qPrintable(answer));
    }
    QCOMPARE(edit->inputMethodQuery(Qt::ImCurrentSelection).toString().size(), text().size());
    QVERIFY(edit->inputMethodHints() & Qt::ImhSensitiveData);
    QCOMPARE(bool(edit->inputMethodHints() & Qt::ImhMultiLine), hasLines());
}

// --- Assistive programs and the window.

void PasswdEditTest::assistiveProgramsDoNotGetThePassword()
{
    reportedTexts.clear();
    QAccessible::installUpdateHandler(recordReport);
    goTo(passwordBegin + 3);
    type(QStringLiteral("XYZ"));
    press(Qt::Key_Backspace);
    setRealText(textWith(QStringLiteral("other")));
    QAccessible::installUpdateHandler(nullptr);
    QVERIFY(reportsAsExpected());
    for (const QString& each : qAsConst(reportedTexts)) {
        QVERIFY2(!each.contains(QRegExp(QStringLiteral("sec|X|Y|Z|other|word"))), qPrintable(each));
    }
    QStringList texts;
    collectTexts(QAccessible::queryAccessibleInterface(window.get()), texts);
    QVERIFY(texts.contains(shownText()));
    for (const QString& each : qAsConst(texts)) {
        QVERIFY2(!each.contains(QRegExp(QStringLiteral("other|word"))), qPrintable(each));
    }
    QVERIFY(QAccessible::queryAccessibleInterface(hiddenEdit())->textInterface() == nullptr);
}

void PasswdEditTest::assistiveProgramsCanEditTheText()
{
    QAccessibleEditableTextInterface* editable =
        QAccessible::queryAccessibleInterface(edit)->editableTextInterface();
    QVERIFY(editable != nullptr);
    editable->insertText(passwordBegin + 3, QStringLiteral("12"));
    compareReal(QStringLiteral("sec12ret"));
    editable->deleteText(0, 4);
    QCOMPARE(realText(), textWith(QStringLiteral("sec12ret")).mid(4));
    editable->replaceText(0, 4, QStringLiteral("ftp://k"));
    QCOMPARE(realText(), QStringLiteral("ftp://k") + textWith(QStringLiteral("sec12ret")).mid(8));
    QVERIFY(!shownText().contains(QStringLiteral("12")));
}

void PasswdEditTest::settingTheTextOfTheShownEditAlsoSetsTheRealText()
{
    setText(edit, textWith(QStringLiteral("new")));
    compareReal(QStringLiteral("new"));
    setText(edit, QString());
    QCOMPARE(realText(), QString());
    QCOMPARE(shownText(), QString());
}

void PasswdEditTest::oneEscapeKeyPressFinishesTheDialogOnlyOnce()
{
    QSignalSpy finished(window.get(), SIGNAL(finished(int)));
    press(Qt::Key_Escape);
    QCOMPARE(finished.size(), 1);
}
