#include "repo/PasswdTextEdit.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>
#include <random>

#include "app/base/Fonts.h"
#include "repo/RepoVantor.h"
#include "tests/repo/Assistive.h"

namespace {

QString urls(const QString& first, const QString& second)
{
    return QStringLiteral(
               "http://a/vantor?u=bob&p=%1&path=x\nhttp://b/plain\nhttp://c/vantor?u=bob&p=%2&path=y")
        .arg(first, second);
}

const QString text = urls(QStringLiteral("secret"), QStringLiteral("word"));
const QString maskedText = urls(QString(6, QChar(0x25cf)), QString(4, QChar(0x25cf)));
const int firstPassword = 24;
const int secondPassword = 77;

} // namespace

class PasswdTextEditTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void everyPasswordIsMasked();
    void aFurtherExpressionMasksMore();
    void whatDoesNotMatchIsShown();
    void theTextIsKeptExactly();
    void theSizeIsThatOfColumnsAndRows();
    void theHiddenEditIsLikeTheShownOne();
    void theHiddenEditFollowsToAnotherParent();
    void theHiddenEditIsDeletedToo();
    void itAcceptsNoDropsAndHasNoMenu();
    void changesAreTold();
    void aChangeThatDoesNotShowIsToldToo();

    void typingIntoThePassword();
    void typingOverASelectedPartOfThePassword();
    void backspaceAndDelete();
    void linesAreJoinedAndSplit();
    void aSelectionMayGoOverLines();
    void wordsAreDeletedAsTheyAreShown();
    void theCursorGoesThroughThePasswordCharacterByCharacter();
    void theSelectionStaysWhereTheUserMadeIt();
    void undoAndRedo();
    void aClickSetsTheCursor();
    void draggingSelects();
    void aSelectionCannotBeDraggedAway();
    void aDoubleClickSelectsWhatItShows();
    void clicksAreRightInAScrolledText();
    void typingKeepsTheViewWhereItIs();
    void surrogatePairsAreNotTornApart();
    void randomEditingKeepsTheRealText();
    void randomEditingCanBeUndone();

    void pastingGoesIntoTheRealText();
    void richTextIsPastedPlain();
    void whatIsCopiedIsMaskedForOthers();
    void cutAndPasteKeepThePassword();
    void theSelectionIsMaskedForOthers();
    void theMiddleButtonPastesTheSelection();

    void composedTextGoesIntoTheRealText();
    void composingReplacesTheSelection();
    void composingWithinThePasswordIsMasked();
    void theInputMethodMayReplaceText();
    void theInputMethodIsNotToldThePassword();

    void assistiveProgramsAreNotToldThePassword();
    void settingTheShownTextSetsTheRealText();
    void escapeReachesTheWindowOnce();
    void tabMovesTheFocusWhenAskedTo();

private:
    QTextEdit* hidden() const
    {
        for (QTextEdit* each : window->findChildren<QTextEdit*>()) {
            if (each != edit) {
                return each;
            }
        }
        qFatal("there is no hidden edit");
    }
    // In the viewport.
    QPoint placeOf(int position) const
    {
        QTextCursor cursor(edit->document());
        cursor.setPosition(position);
        return edit->cursorRect(cursor).center();
    }
    void drag(int from, int to) const
    {
        const QPoint begin = placeOf(from);
        const QPoint end = placeOf(to);
        QTest::mousePress(edit->viewport(), Qt::LeftButton, Qt::NoModifier, begin);
        for (const QPoint& place : {(begin + end) / 2, end}) {
            QMouseEvent move(QEvent::MouseMove, place, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(edit->viewport(), &move);
        }
        QTest::mouseRelease(edit->viewport(), Qt::LeftButton, Qt::NoModifier, end);
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, int times = 1) const
    {
        for (int i = 0; i < times; ++i) {
            QTest::keyClick(edit, key, modifiers);
        }
    }
    void sequence(QKeySequence::StandardKey key) const { QTest::keySequence(edit, QKeySequence(key)); }
    void goTo(int position) const
    {
        press(Qt::Key_Home, Qt::ControlModifier);
        press(Qt::Key_Right, Qt::NoModifier, position);
    }
    void compareReal(const QString& first, const QString& second = QStringLiteral("word")) const
    {
        QCOMPARE(edit->realPlainText(), urls(first, second));
        QCOMPARE(edit->toPlainText(),
                 urls(QString(first.size(), QChar(0x25cf)), QString(second.size(), QChar(0x25cf))));
    }

    std::unique_ptr<QWidget> window;
    PasswdTextEdit* edit = nullptr;
    std::unique_ptr<QSignalSpy> changes;
};

void PasswdTextEditTest::init()
{
    QCOMPARE(text.mid(firstPassword, 6), QStringLiteral("secret"));
    QCOMPARE(text.mid(secondPassword, 4), QStringLiteral("word"));
    window = std::make_unique<QDialog>();
    auto* layout = new QVBoxLayout(window.get());
    edit = new PasswdTextEdit(Repo::Vantor::urlsRegExp(), window.get());
    layout->addWidget(edit);
    window->resize(600, 160);
    window->show();
    QApplication::setActiveWindow(window.get());
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    edit->setFocus();
    edit->setRealPlainText(text);
    changes = std::make_unique<QSignalSpy>(edit, SIGNAL(realTextChanged()));
    QGuiApplication::clipboard()->clear();
    QGuiApplication::clipboard()->clear(QClipboard::Selection);
}

void PasswdTextEditTest::cleanup()
{
    changes.reset();
    window.reset();
}

void PasswdTextEditTest::everyPasswordIsMasked()
{
    QCOMPARE(edit->toPlainText(), maskedText);
    QCOMPARE(edit->realPlainText(), text);
}

void PasswdTextEditTest::aFurtherExpressionMasksMore()
{
    const QString slash = QStringLiteral("http://a/vantor?u=bob&p=secret&path=/x");
    edit->setRealPlainText(slash);
    QCOMPARE(edit->toPlainText(), slash);
    edit->maskEverywhere(Repo::Vantor::passwordRegExp());
    QCOMPARE(edit->toPlainText(), QString::fromUtf8("http://a/vantor?u=bob&p=●●●●●●&path=/x"));
    QCOMPARE(edit->realPlainText(), slash);
}

void PasswdTextEditTest::whatDoesNotMatchIsShown()
{
    const QString unfinished = QStringLiteral("http://a/vantor?u=bob&p=secret&pat");
    edit->setRealPlainText(unfinished);
    QCOMPARE(edit->toPlainText(), unfinished);
    press(Qt::Key_End);
    QTest::keyClicks(edit, QStringLiteral("h=x"));
    QCOMPARE(edit->toPlainText(), QString::fromUtf8("http://a/vantor?u=bob&p=●●●●●●&path=x"));
    QCOMPARE(edit->realPlainText(), unfinished + QStringLiteral("h=x"));
}

void PasswdTextEditTest::theTextIsKeptExactly()
{
    for (const QString& each : {QString(), QStringLiteral("\n"), QStringLiteral(" a\n\nb\n"),
                                QString::fromLatin1("caf\xc3\xa0 \xa0")}) {
        edit->setRealPlainText(each);
        QCOMPARE(edit->realPlainText(), each);
    }
}

void PasswdTextEditTest::theSizeIsThatOfColumnsAndRows()
{
    PasswdTextEdit sized(Repo::Vantor::urlsRegExp(), 50, 4);
    HTextEdit plain(50, 4);
    plain.setFont(sized.font());
    QCOMPARE(sized.sizeHint(), plain.sizeHint());
}

void PasswdTextEditTest::theHiddenEditIsLikeTheShownOne()
{
    QCOMPARE(hidden()->toPlainText(), text);
    QVERIFY(!hidden()->isVisible());
    QCOMPARE(hidden()->parentWidget(), edit->parentWidget());
    QCOMPARE(hidden()->geometry(), edit->geometry());
    QCOMPARE(hidden()->font(), edit->font());
    QCOMPARE(edit->font().family(), Fonts::makeFixed(QApplication::font(edit)).family());
    window->resize(300, 220);
    QTRY_COMPARE(window->size(), QSize(300, 220));
    QTRY_COMPARE(hidden()->geometry(), edit->geometry());
}

void PasswdTextEditTest::theHiddenEditFollowsToAnotherParent()
{
    PasswdTextEdit moved(Repo::Vantor::urlsRegExp());
    moved.setRealPlainText(text);
    moved.setParent(window.get());
    QCOMPARE(window->findChildren<QTextEdit*>().size(), 4);
    QTest::keyClicks(&moved, QStringLiteral("y"));
    QCOMPARE(moved.realPlainText(), QStringLiteral("y") + text);
    moved.setParent(nullptr);
    QCOMPARE(window->findChildren<QTextEdit*>().size(), 2);
}

void PasswdTextEditTest::theHiddenEditIsDeletedToo()
{
    const QPointer<QTextEdit> inner = hidden();
    delete edit;
    QVERIFY(inner.isNull());
    edit = new PasswdTextEdit(Repo::Vantor::urlsRegExp(), window.get());
    const QPointer<QTextEdit> other = hidden();
    window.reset();
    QVERIFY(other.isNull());
}

void PasswdTextEditTest::itAcceptsNoDropsAndHasNoMenu()
{
    QVERIFY(!edit->acceptDrops());
    QVERIFY(!edit->viewport()->acceptDrops());
    QCOMPARE(edit->contextMenuPolicy(), Qt::NoContextMenu);
    QTest::mouseClick(edit->viewport(), Qt::RightButton);
    QContextMenuEvent asked(QContextMenuEvent::Mouse, QPoint(5, 5), edit->mapToGlobal(QPoint(5, 5)));
    QCoreApplication::sendEvent(edit->viewport(), &asked);
    QVERIFY(QApplication::activePopupWidget() == nullptr);
}

void PasswdTextEditTest::changesAreTold()
{
    edit->setRealPlainText(QStringLiteral("x"));
    QCOMPARE(changes->size(), 1);
    QTest::keyClicks(edit, QStringLiteral("yz"));
    QCOMPARE(changes->size(), 3);
    QCOMPARE(edit->realPlainText(), QStringLiteral("yzx"));
    press(Qt::Key_Right);
    QCOMPARE(changes->size(), 3);
}

void PasswdTextEditTest::aChangeThatDoesNotShowIsToldToo()
{
    goTo(firstPassword);
    press(Qt::Key_Right, Qt::ShiftModifier);
    QTest::keyClicks(edit, QStringLiteral("S"));
    compareReal(QStringLiteral("Secret"));
    QCOMPARE(edit->toPlainText(), maskedText);
    QCOMPARE(changes->size(), 1);
}

void PasswdTextEditTest::typingIntoThePassword()
{
    goTo(firstPassword + 3);
    QTest::keyClicks(edit, QStringLiteral("XY"));
    compareReal(QStringLiteral("secXYret"));
    QCOMPARE(edit->textCursor().position(), firstPassword + 5);
    press(Qt::Key_Left);
    QTest::keyClicks(edit, QStringLiteral("-"));
    compareReal(QStringLiteral("secX-Yret"));
    press(Qt::Key_End, Qt::ControlModifier);
    press(Qt::Key_Left, Qt::NoModifier, 8);
    QTest::keyClicks(edit, QStringLiteral("0"));
    compareReal(QStringLiteral("secX-Yret"), QStringLiteral("wor0d"));
}

void PasswdTextEditTest::typingOverASelectedPartOfThePassword()
{
    goTo(firstPassword + 1);
    press(Qt::Key_Right, Qt::ShiftModifier, 4);
    QTest::keyClicks(edit, QStringLiteral("0"));
    compareReal(QStringLiteral("s0t"));
    // Selected backwards.
    press(Qt::Key_Left, Qt::ShiftModifier, 2);
    QTest::keyClicks(edit, QStringLiteral("ab"));
    compareReal(QStringLiteral("abt"));
}

void PasswdTextEditTest::backspaceAndDelete()
{
    goTo(firstPassword + 2);
    press(Qt::Key_Backspace);
    compareReal(QStringLiteral("scret"));
    press(Qt::Key_Delete);
    compareReal(QStringLiteral("sret"));
    press(Qt::Key_Backspace);
    press(Qt::Key_Delete, Qt::NoModifier, 3);
    compareReal(QString());
}

void PasswdTextEditTest::linesAreJoinedAndSplit()
{
    goTo(firstPassword + 3);
    press(Qt::Key_Return);
    QString split = text;
    split.insert(firstPassword + 3, QLatin1Char('\n'));
    QCOMPARE(edit->realPlainText(), split);
    QCOMPARE(edit->toPlainText().size(), split.size());
    press(Qt::Key_Backspace);
    compareReal(QStringLiteral("secret"));
    press(Qt::Key_End);
    press(Qt::Key_Return, Qt::ShiftModifier);
    QCOMPARE(edit->realPlainText().count(QLatin1Char('\n')), 3);
    press(Qt::Key_Delete, Qt::NoModifier, 1);
    QCOMPARE(edit->realPlainText(), text);
}

void PasswdTextEditTest::aSelectionMayGoOverLines()
{
    goTo(firstPassword + 2);
    press(Qt::Key_Right, Qt::ShiftModifier, secondPassword + 2 - firstPassword - 2);
    QTest::keyClicks(edit, QStringLiteral("+"));
    QCOMPARE(edit->realPlainText(), QStringLiteral("http://a/vantor?u=bob&p=se+rd&path=y"));
    QCOMPARE(edit->toPlainText(), QString::fromUtf8("http://a/vantor?u=bob&p=●●●●●&path=y"));
}

void PasswdTextEditTest::wordsAreDeletedAsTheyAreShown()
{
    edit->setRealPlainText(urls(QStringLiteral("ab-cd+ef"), QStringLiteral("word")));
    goTo(firstPassword);
    press(Qt::Key_Right, Qt::ControlModifier);
    const int end = edit->textCursor().position();
    press(Qt::Key_Left, Qt::ControlModifier);
    const int begin = edit->textCursor().position();
    QVERIFY(begin < end);
    QString left = edit->realPlainText();
    press(Qt::Key_Delete, Qt::ControlModifier);
    left.remove(begin, end - begin);
    QCOMPARE(edit->realPlainText(), left);

    press(Qt::Key_End, Qt::ControlModifier);
    press(Qt::Key_Backspace, Qt::ControlModifier);
    left.chop(1);
    QCOMPARE(edit->realPlainText(), left);
    // A selection is what is deleted then.
    goTo(0);
    press(Qt::Key_Right, Qt::ShiftModifier, 2);
    press(Qt::Key_Delete, Qt::ControlModifier);
    QCOMPARE(edit->realPlainText(), left.mid(2));
}

void PasswdTextEditTest::theCursorGoesThroughThePasswordCharacterByCharacter()
{
    goTo(0);
    for (int i = 0; i <= text.size(); ++i) {
        QCOMPARE(edit->textCursor().position(), i);
        press(Qt::Key_Right);
    }
    goTo(firstPassword + 4);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    QCOMPARE(edit->textCursor().blockNumber(), 2);
    press(Qt::Key_Up);
    press(Qt::Key_Up);
    QCOMPARE(edit->textCursor().position(), firstPassword + 4);
    press(Qt::Key_PageDown);
    QCOMPARE(edit->textCursor().blockNumber(), 2);
    QCOMPARE(changes->size(), 0);
}

void PasswdTextEditTest::theSelectionStaysWhereTheUserMadeIt()
{
    goTo(firstPassword + 4);
    press(Qt::Key_Left, Qt::ShiftModifier, 3);
    press(Qt::Key_F5);
    QCOMPARE(edit->textCursor().anchor(), firstPassword + 4);
    QCOMPARE(edit->textCursor().position(), firstPassword + 1);
    QCOMPARE(edit->textCursor().selectedText(), QString::fromUtf8("●●●"));
    sequence(QKeySequence::SelectAll);
    press(Qt::Key_Delete);
    QCOMPARE(edit->realPlainText(), QString());
}

void PasswdTextEditTest::undoAndRedo()
{
    goTo(firstPassword + 6);
    press(Qt::Key_Backspace, Qt::NoModifier, 2);
    goTo(firstPassword);
    QTest::keyClicks(edit, QStringLiteral("new"));
    compareReal(QStringLiteral("newsecr"));
    sequence(QKeySequence::Undo);
    compareReal(QStringLiteral("secr"));
    QCOMPARE(edit->textCursor().position(), firstPassword);
    sequence(QKeySequence::Undo);
    sequence(QKeySequence::Undo);
    compareReal(QStringLiteral("secret"));
    for (int i = 0; i < 3; ++i) {
        sequence(QKeySequence::Redo);
    }
    compareReal(QStringLiteral("newsecr"));
    // What was shown before another text was set does not come back.
    edit->setRealPlainText(QStringLiteral("other"));
    sequence(QKeySequence::Undo);
    QCOMPARE(edit->realPlainText(), QStringLiteral("other"));
}

void PasswdTextEditTest::aClickSetsTheCursor()
{
    for (int position : {3, firstPassword, firstPassword + 2, secondPassword + 1, text.size()}) {
        QTest::mouseClick(edit->viewport(), Qt::LeftButton, Qt::NoModifier, placeOf(position));
        QCOMPARE(edit->textCursor().position(), position);
        QTest::keyClicks(edit, QStringLiteral("Q"));
        QCOMPARE(edit->realPlainText(), QString(text).insert(position, QLatin1Char('Q')));
        edit->setRealPlainText(text);
    }
}

void PasswdTextEditTest::draggingSelects()
{
    drag(firstPassword + 5, firstPassword + 1);
    QCOMPARE(edit->textCursor().selectedText(), QString::fromUtf8("●●●●"));
    QTest::keyClicks(edit, QStringLiteral("_"));
    compareReal(QStringLiteral("s_t"));
}

void PasswdTextEditTest::aSelectionCannotBeDraggedAway()
{
    drag(firstPassword + 5, firstPassword + 1);
    drag(firstPassword + 3, secondPassword + 2);
    QCOMPARE(edit->textCursor().selectionStart(), firstPassword + 3);
    QCOMPARE(edit->textCursor().selectionEnd(), secondPassword + 2);
    compareReal(QStringLiteral("secret"));
    // With Shift held a press on the selection changes it.
    goTo(0);
    press(Qt::Key_Right, Qt::ShiftModifier, 10);
    QTest::mouseClick(edit->viewport(), Qt::LeftButton, Qt::ShiftModifier, placeOf(5));
    QCOMPARE(edit->textCursor().selectionEnd(), 5);
    QCOMPARE(edit->textCursor().selectionStart(), 0);
}

void PasswdTextEditTest::aDoubleClickSelectsWhatItShows()
{
    QTest::mouseDClick(edit->viewport(), Qt::LeftButton, Qt::NoModifier, placeOf(firstPassword + 3));
    QVERIFY(edit->textCursor().hasSelection());
    const int begin = edit->textCursor().selectionStart();
    const int length = edit->textCursor().selectionEnd() - begin;
    press(Qt::Key_Delete);
    QCOMPARE(edit->realPlainText(), QString(text).remove(begin, length));
}

void PasswdTextEditTest::clicksAreRightInAScrolledText()
{
    QString many;
    for (int i = 0; i < 60; ++i) {
        many += QStringLiteral("http://mirror%1.example/vantor?u=bob&p=secret&path=x\n").arg(i);
    }
    edit->setRealPlainText(many);
    press(Qt::Key_End, Qt::ControlModifier);
    QVERIFY(edit->verticalScrollBar()->value() > 0);
    const int position = many.lastIndexOf(QStringLiteral("secret")) + 2;
    QTest::mouseClick(edit->viewport(), Qt::LeftButton, Qt::NoModifier, placeOf(position));
    QTest::keyClicks(edit, QStringLiteral("Q"));
    QCOMPARE(edit->realPlainText(), QString(many).insert(position, QLatin1Char('Q')));
}

void PasswdTextEditTest::typingKeepsTheViewWhereItIs()
{
    QString many;
    for (int i = 0; i < 60; ++i) {
        many += QStringLiteral("http://mirror%1.example/vantor?u=bob&p=secret&path=x\n").arg(i);
    }
    edit->setRealPlainText(many);
    press(Qt::Key_End, Qt::ControlModifier);
    press(Qt::Key_Up, Qt::NoModifier, 4);
    const int scrolled = edit->verticalScrollBar()->value();
    QVERIFY(scrolled > 0);
    QTest::keyClicks(edit, QStringLiteral("Q"));
    QCOMPARE(edit->verticalScrollBar()->value(), scrolled);
}

void PasswdTextEditTest::surrogatePairsAreNotTornApart()
{
    const QString key = QString::fromUtf8("\xf0\x9f\x94\x91");
    // Two password characters stand for each.
    for (int position = firstPassword; position <= firstPassword + 4; ++position) {
        edit->setRealPlainText(urls(key + key, QString()));
        goTo(position);
        QTest::keyClicks(edit, QStringLiteral("-"));
        QCOMPARE(edit->realPlainText().remove(QLatin1Char('-')), urls(key + key, QString()));
        QCOMPARE(edit->realPlainText().count(key), 2);
        press(Qt::Key_Backspace, Qt::NoModifier, 2);
        for (const uint code : edit->realPlainText().toUcs4()) {
            QVERIFY(!QChar::isSurrogate(code));
        }
    }
}

// An ordinary text edit that gets the same keys says what is right.
void PasswdTextEditTest::randomEditingKeepsTheRealText()
{
    auto* plain = new QTextEdit(window.get());
    plain->setLineWrapMode(QTextEdit::NoWrap);
    plain->setFont(edit->font());
    plain->resize(edit->size());
    edit->setLineWrapMode(QTextEdit::NoWrap);
    plain->setPlainText(text);
    std::mt19937 random(20240607);
    const auto pick = [&random](int count) {
        return static_cast<int>(random() % static_cast<unsigned>(count));
    };
    const Qt::Key moves[] = {Qt::Key_Left,  Qt::Key_Right, Qt::Key_Left,
                             Qt::Key_Right, Qt::Key_Home,  Qt::Key_End};
    const QString letters = QStringLiteral("ab&=?/ %s");
    for (int step = 0; step < 2000; ++step) {
        const int action = pick(15);
        const int times = 1 + pick(8);
        const Qt::Key key = moves[pick(6)];
        const Qt::KeyboardModifiers modifiers = pick(3) == 0 ? Qt::ShiftModifier : Qt::NoModifier;
        const QString letter = letters.at(pick(letters.size()));
        QGuiApplication::clipboard()->setText(text.mid(pick(60), pick(40)));
        for (QTextEdit* each : {static_cast<QTextEdit*>(edit), plain}) {
            if (action < 6) {
                for (int i = 0; i < times; ++i) {
                    QTest::keyClick(each, key, modifiers);
                }
            } else if (action < 10) {
                QTest::keyClicks(each, letter);
            } else if (action < 11) {
                QTest::keyClick(each, Qt::Key_Return);
            } else if (action < 12) {
                QTest::keyClick(each, Qt::Key_Backspace);
            } else if (action < 13) {
                QTest::keyClick(each, Qt::Key_Delete);
            } else {
                QTest::keySequence(each, QKeySequence(QKeySequence::Paste));
            }
        }
        QCOMPARE(edit->realPlainText(), plain->toPlainText());
        QCOMPARE(edit->toPlainText().size(), plain->toPlainText().size());
        QCOMPARE(edit->textCursor().position(), plain->textCursor().position());
        QCOMPARE(edit->textCursor().anchor(), plain->textCursor().anchor());
        if (plain->toPlainText().size() > 250 || !plain->toPlainText().contains(QStringLiteral("&p="))) {
            edit->setRealPlainText(text);
            plain->setPlainText(text);
        }
    }
}

void PasswdTextEditTest::randomEditingCanBeUndone()
{
    std::mt19937 random(20240607);
    const auto pick = [&random](int count) {
        return static_cast<int>(random() % static_cast<unsigned>(count));
    };
    const QString letters = QStringLiteral("ab&=?/ %s");
    for (int round = 0; round < 30; ++round) {
        edit->setRealPlainText(text);
        goTo(pick(text.size()));
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
                press(Qt::Key_Return);
                break;
            default:
                QTest::keyClicks(edit, QString(letters.at(pick(letters.size()))));
                break;
            }
        }
        const QString edited = edit->realPlainText();
        for (int i = 0; i < 100; ++i) {
            sequence(QKeySequence::Undo);
        }
        QCOMPARE(edit->realPlainText(), text);
        QCOMPARE(edit->toPlainText(), maskedText);
        for (int i = 0; i < 100; ++i) {
            sequence(QKeySequence::Redo);
        }
        QCOMPARE(edit->realPlainText(), edited);
    }
}

void PasswdTextEditTest::pastingGoesIntoTheRealText()
{
    QGuiApplication::clipboard()->setText(QStringLiteral("12"));
    goTo(firstPassword + 3);
    sequence(QKeySequence::Paste);
    compareReal(QStringLiteral("sec12ret"));
    press(Qt::Key_Left, Qt::ShiftModifier, 4);
    sequence(QKeySequence::Paste);
    compareReal(QStringLiteral("s12ret"));
    QGuiApplication::clipboard()->clear();
    sequence(QKeySequence::Paste);
    compareReal(QStringLiteral("s12ret"));
}

void PasswdTextEditTest::richTextIsPastedPlain()
{
    auto* rich = new QMimeData;
    rich->setHtml(QStringLiteral("<b>12</b>"));
    rich->setText(QStringLiteral("12"));
    QGuiApplication::clipboard()->setMimeData(rich);
    goTo(firstPassword + 3);
    sequence(QKeySequence::Paste);
    compareReal(QStringLiteral("sec12ret"));
    QCOMPARE(edit->textCursor().charFormat().fontWeight(), int(QFont::Normal));
}

void PasswdTextEditTest::whatIsCopiedIsMaskedForOthers()
{
    sequence(QKeySequence::SelectAll);
    sequence(QKeySequence::Copy);
    const QMimeData* copied = QGuiApplication::clipboard()->mimeData();
    QCOMPARE(copied->text(), maskedText);
    for (const QString& format : copied->formats()) {
        const QByteArray data = copied->data(format);
        QVERIFY2(!data.contains("secret") && !data.contains("word"), qPrintable(format));
    }
    QCOMPARE(edit->realPlainText(), text);
    QTextEdit other;
    other.paste();
    QCOMPARE(other.toPlainText(), maskedText);
}

void PasswdTextEditTest::cutAndPasteKeepThePassword()
{
    sequence(QKeySequence::SelectAll);
    sequence(QKeySequence::Cut);
    QCOMPARE(edit->realPlainText(), QString());
    QCOMPARE(QGuiApplication::clipboard()->text(), maskedText);
    sequence(QKeySequence::Paste);
    QCOMPARE(edit->realPlainText(), text);
    QCOMPARE(edit->toPlainText(), maskedText);
}

void PasswdTextEditTest::theSelectionIsMaskedForOthers()
{
    drag(0, text.size());
    QCOMPARE(QGuiApplication::clipboard()->text(QClipboard::Selection), maskedText);
    // By keys.
    QGuiApplication::clipboard()->clear(QClipboard::Selection);
    press(Qt::Key_Home, Qt::ControlModifier | Qt::ShiftModifier);
    press(Qt::Key_F5);
    sequence(QKeySequence::SelectAll);
    press(Qt::Key_F5);
    const QString selected = QGuiApplication::clipboard()->text(QClipboard::Selection);
    QVERIFY2(!selected.contains(QStringLiteral("secret")), qPrintable(selected));
}

void PasswdTextEditTest::theMiddleButtonPastesTheSelection()
{
    QGuiApplication::clipboard()->setText(QStringLiteral("12"), QClipboard::Selection);
    QTest::mouseClick(edit->viewport(), Qt::MiddleButton, Qt::NoModifier, placeOf(firstPassword + 3));
    compareReal(QStringLiteral("sec12ret"));
    QCOMPARE(edit->textCursor().position(), firstPassword + 5);
}

void PasswdTextEditTest::composedTextGoesIntoTheRealText()
{
    goTo(firstPassword + 3);
    QInputMethodEvent commit;
    commit.setCommitString(QString::fromUtf8("\xc3\xa4\xe6\xbc\xa2"));
    QCoreApplication::sendEvent(edit, &commit);
    compareReal(QString::fromUtf8("sec\xc3\xa4\xe6\xbc\xa2ret"));
    QCOMPARE(edit->textCursor().position(), firstPassword + 5);
}

void PasswdTextEditTest::composingReplacesTheSelection()
{
    goTo(firstPassword + 1);
    press(Qt::Key_Right, Qt::ShiftModifier, 4);
    QInputMethodEvent preedit(QStringLiteral("ka"), {});
    QCoreApplication::sendEvent(edit, &preedit);
    compareReal(QStringLiteral("st"));
    QInputMethodEvent commit;
    commit.setCommitString(QString::fromUtf8("\xe3\x81\x8b"));
    QCoreApplication::sendEvent(edit, &commit);
    compareReal(QString::fromUtf8("s\xe3\x81\x8bt"));
}

void PasswdTextEditTest::composingWithinThePasswordIsMasked()
{
    goTo(firstPassword + 3);
    const auto composed = [this](const QString& preeditText) {
        QInputMethodEvent preedit(preeditText, {});
        QCoreApplication::sendEvent(edit, &preedit);
        return edit->textCursor().block().layout()->preeditAreaText();
    };
    QCOMPARE(composed(QStringLiteral("kan")), QString(3, QChar(0x25cf)));
    compareReal(QStringLiteral("secret"));
    QCOMPARE(composed(QString()), QString());
    goTo(3);
    QCOMPARE(composed(QStringLiteral("kan")), QStringLiteral("kan"));
    QCOMPARE(composed(QString()), QString());
    compareReal(QStringLiteral("secret"));
    goTo(firstPassword + 3);
    QTest::keyClicks(edit, QStringLiteral("-"));
    compareReal(QStringLiteral("sec-ret"));
}

void PasswdTextEditTest::theInputMethodMayReplaceText()
{
    goTo(firstPassword + 3);
    QInputMethodEvent commit;
    commit.setCommitString(QStringLiteral("C"), -1, 1);
    QCoreApplication::sendEvent(edit, &commit);
    compareReal(QStringLiteral("seCret"));
    QInputMethodEvent removal;
    removal.setCommitString(QString(), -2, 2);
    QCoreApplication::sendEvent(edit, &removal);
    compareReal(QStringLiteral("sret"));
}

void PasswdTextEditTest::theInputMethodIsNotToldThePassword()
{
    sequence(QKeySequence::SelectAll);
    for (Qt::InputMethodQuery query :
         {Qt::ImSurroundingText, Qt::ImCurrentSelection, Qt::ImTextBeforeCursor, Qt::ImTextAfterCursor}) {
        const QString answer = edit->inputMethodQuery(query).toString();
        QVERIFY2(!answer.contains(QStringLiteral("secret")) && !answer.contains(QStringLiteral("word")),
                 qPrintable(answer));
    }
    QVERIFY(edit->inputMethodHints() & Qt::ImhSensitiveData);
    QVERIFY(edit->inputMethodHints() & Qt::ImhMultiLine);
}

void PasswdTextEditTest::assistiveProgramsAreNotToldThePassword()
{
    told.clear();
    QAccessible::installUpdateHandler(noteTold);
    goTo(firstPassword + 3);
    QTest::keyClicks(edit, QStringLiteral("XYZ"));
    press(Qt::Key_Backspace);
    edit->setRealPlainText(urls(QStringLiteral("other"), QStringLiteral("else")));
    QAccessible::installUpdateHandler(nullptr);
    QVERIFY(toldAsExpected());
    for (const QString& each : qAsConst(told)) {
        QVERIFY2(!each.contains(QRegExp(QStringLiteral("sec|X|Y|Z|other|word|else"))), qPrintable(each));
    }
    QStringList texts;
    collectTexts(QAccessible::queryAccessibleInterface(window.get()), texts);
    QVERIFY(texts.contains(edit->toPlainText()));
    for (const QString& each : qAsConst(texts)) {
        QVERIFY2(!each.contains(QRegExp(QStringLiteral("other|else"))), qPrintable(each));
    }
    QVERIFY(QAccessible::queryAccessibleInterface(hidden())->textInterface() == nullptr);
}

void PasswdTextEditTest::settingTheShownTextSetsTheRealText()
{
    edit->setPlainText(urls(QStringLiteral("new"), QStringLiteral("old")));
    compareReal(QStringLiteral("new"), QStringLiteral("old"));
    edit->clear();
    QCOMPARE(edit->realPlainText(), QString());
    QCOMPARE(edit->toPlainText(), QString());
}

void PasswdTextEditTest::escapeReachesTheWindowOnce()
{
    QSignalSpy finished(window.get(), SIGNAL(finished(int)));
    press(Qt::Key_Escape);
    QCOMPARE(finished.size(), 1);
}

void PasswdTextEditTest::tabMovesTheFocusWhenAskedTo()
{
    auto* next = new QLineEdit(window.get());
    next->show();
    edit->setTabChangesFocus(true);
    press(Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), next);
    QCOMPARE(edit->realPlainText(), text);
    press(Qt::Key_Backtab);
    edit->setFocus();
    edit->setTabChangesFocus(false);
    goTo(0);
    press(Qt::Key_Tab);
    QCOMPARE(edit->realPlainText(), QStringLiteral("\t") + text);
}

QTEST_MAIN(PasswdTextEditTest)
#include "PasswdTextEditTest.moc"
