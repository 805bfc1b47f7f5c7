// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/QuestionGuard.h"

#include <QAccessible>
#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QWindow>

#include <memory>

#include "services/ScrollableDialogs.h"
#include "tests/support/Buttons.h"
#include "tests/support/Question.h"
#include "widgets/HMessageBox.h"

namespace {

// Presses a button as a screen reader does.
void pressByAccessibility(QPushButton* pressed)
{
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(pressed);
    interface->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
}

// Sends a key event as the window system does. The time is in milliseconds; 0 stands for an event without a
// time.
void sendKey(QWindow* window, QEvent::Type type, int key, bool repeats, ulong time = 0)
{
    QKeyEvent event(type, key, Qt::NoModifier, QString(), repeats);
    event.setTimestamp(time);
    QApplication::sendEvent(window, &event);
}

} // namespace

class QuestionGuardTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void inputInTheFirstMomentOfAQuestionIsIgnored_data();
    void inputInTheFirstMomentOfAQuestionIsIgnored();
    void inputAfterTheFirstMomentOfAQuestionHasItsUsualEffect_data();
    void inputAfterTheFirstMomentOfAQuestionHasItsUsualEffect();
    void theQuestionIgnoresRepetitionsOfAKeyThatWasHeldWhenItOpened();
    void theQuestionAlsoIgnoresKeyRepetitionsThatQtDoesNotRecognise();
    void theQuestionIgnoresAKeyThatIsHeldFromTheFirstMomentOn();
    void aKeyThatIsPressedAfterTheFirstMomentCanRepeat();
    void theButtonsAreDisabledInTheFirstMoment();
    void noButtonIsPressedIfAMouseClickBeginsInTheFirstMoment();
    void theDefaultButtonGetsTheFocusAfterTheFirstMoment_data();
    void theDefaultButtonGetsTheFocusAfterTheFirstMoment();
    void theQuestionIgnoresInputForAMomentWhenItsWindowBecomesActiveForTheFirstTime();
    void theGuardDoesNotAffectInputInOtherWindows();
    void theWindowOfAQuestionCanBeClosedInTheFirstMoment();

private:
    static void addInput();
    // Shows a question with a guard, and waits until its window is active. The question still ignores input.
    void show();
    void waitForInput();

    std::unique_ptr<QDialog> dialog;
    std::unique_ptr<QuestionGuard> guard;
};

void QuestionGuardTest::initTestCase()
{
    QCOMPARE(QuestionGuard::pause, 500);
}

void QuestionGuardTest::init()
{
    dialog = std::make_unique<ScrollableConfirmDialog>("Install?", "&OK", "Cancel", nullptr);
    dialog->setResult(-1);
    guard = std::make_unique<QuestionGuard>(dialog.get());
}

void QuestionGuardTest::cleanup()
{
    guard.reset();
    dialog.reset();
}

void QuestionGuardTest::show()
{
    // Even on a busy machine, the test must send its input before the first moment ends.
    QuestionGuard::pause = 1000000;
    dialog->show();
    QVERIFY(QTest::qWaitForWindowActive(dialog.get(), 30000));
    QTRY_VERIFY(dialog->isActiveWindow());
    QCoreApplication::processEvents();
    QVERIFY(!takesInput(dialog.get()));
}

void QuestionGuardTest::waitForInput()
{
    QuestionGuard::pause = 20;
    QMetaObject::invokeMethod(guard.get(), "beginPause");
    QTRY_VERIFY(takesInput(dialog.get()));
}

void QuestionGuardTest::inputInTheFirstMomentOfAQuestionIsIgnored_data()
{
    addInput();
    QTest::newRow("double click") << 7;
}

void QuestionGuardTest::addInput()
{
    QTest::addColumn<int>("input");
    QTest::newRow("Enter") << 0;
    QTest::newRow("Escape") << 1;
    QTest::newRow("Space on the button") << 2;
    QTest::newRow("mnemonic") << 3;
    QTest::newRow("click") << 4;
    QTest::newRow("click on the window") << 5;
    QTest::newRow("press by a screen reader") << 6;
}

void QuestionGuardTest::inputAfterTheFirstMomentOfAQuestionHasItsUsualEffect_data()
{
    addInput();
}

namespace {

void give(int input, QDialog* dialog)
{
    QPushButton* ok = buttonOf(dialog, "&OK");
    QWindow* const window = dialog->windowHandle();
    const QPoint place = ok->mapTo(dialog, ok->rect().center());
    switch (input) {
    case 0:
        QTest::keyClick(window, Qt::Key_Return);
        break;
    case 1:
        QTest::keyClick(window, Qt::Key_Escape);
        break;
    case 2:
        ok->setFocus();
        QTest::keyClick(window, Qt::Key_Space);
        break;
    case 3:
        QTest::keyClick(window, Qt::Key_O, Qt::AltModifier);
        break;
    case 4:
        QTest::mouseClick(ok, Qt::LeftButton);
        break;
    case 5:
        QTest::mouseClick(window, Qt::LeftButton, Qt::NoModifier, place);
        break;
    case 6:
        pressByAccessibility(ok);
        break;
    default:
        QTest::mouseDClick(ok, Qt::LeftButton);
        QTest::mouseRelease(ok, Qt::LeftButton);
        break;
    }
}

} // namespace

void QuestionGuardTest::inputInTheFirstMomentOfAQuestionIsIgnored()
{
    QFETCH(int, input);
    show();
    give(input, dialog.get());
    QTest::qWait(200); // an animated click needs 100 ms
    QVERIFY(dialog->isVisible());
    QCOMPARE(dialog->result(), -1);
    waitForInput();
    QTest::qWait(200);
    QVERIFY(dialog->isVisible());
}

void QuestionGuardTest::inputAfterTheFirstMomentOfAQuestionHasItsUsualEffect()
{
    QFETCH(int, input);
    show();
    waitForInput();
    give(input, dialog.get());
    QTRY_VERIFY(!dialog->isVisible());
    QCOMPARE(dialog->result(), input == 1 ? 0 : 1);
}

void QuestionGuardTest::theQuestionIgnoresRepetitionsOfAKeyThatWasHeldWhenItOpened()
{
    show();
    waitForInput();
    for (int i = 0; i < 5; ++i) {
        sendKey(dialog->windowHandle(), QEvent::KeyPress, Qt::Key_Return, true);
        sendKey(dialog->windowHandle(), QEvent::KeyRelease, Qt::Key_Return, true);
    }
    sendKey(dialog->windowHandle(), QEvent::KeyRelease, Qt::Key_Return, false);
    QVERIFY(dialog->isVisible());
    QTest::keyClick(dialog->windowHandle(), Qt::Key_Return);
    QVERIFY(!dialog->isVisible());
}

void QuestionGuardTest::theQuestionAlsoIgnoresKeyRepetitionsThatQtDoesNotRecognise()
{
    show();
    waitForInput();
    for (ulong time = 1000; time < 1200; time += 40) {
        sendKey(dialog->windowHandle(), QEvent::KeyRelease, Qt::Key_Return, false, time);
        sendKey(dialog->windowHandle(), QEvent::KeyPress, Qt::Key_Return, false, time);
    }
    sendKey(dialog->windowHandle(), QEvent::KeyRelease, Qt::Key_Return, false, 1210);
    QVERIFY(dialog->isVisible());
    sendKey(dialog->windowHandle(), QEvent::KeyPress, Qt::Key_Return, false, 1300);
    QVERIFY(!dialog->isVisible());
}

void QuestionGuardTest::theQuestionIgnoresAKeyThatIsHeldFromTheFirstMomentOn()
{
    show();
    sendKey(dialog->windowHandle(), QEvent::KeyPress, Qt::Key_Return, false);
    waitForInput();
    sendKey(dialog->windowHandle(), QEvent::KeyPress, Qt::Key_Return, true);
    QVERIFY(dialog->isVisible());
}

void QuestionGuardTest::aKeyThatIsPressedAfterTheFirstMomentCanRepeat()
{
    show();
    waitForInput();
    QPushButton* const ok = buttonOf(dialog.get(), "&OK");
    QPushButton* const cancel = buttonOf(dialog.get(), "Cancel");
    cancel->setFocus();
    sendKey(dialog->windowHandle(), QEvent::KeyPress, Qt::Key_Tab, false);
    QVERIFY(!cancel->hasFocus());
    for (int i = 0; i < 5 && !ok->hasFocus(); ++i) {
        sendKey(dialog->windowHandle(), QEvent::KeyPress, Qt::Key_Tab, true);
    }
    QVERIFY(ok->hasFocus());
}

void QuestionGuardTest::theButtonsAreDisabledInTheFirstMoment()
{
    show();
    for (const QPushButton* each : dialog->findChildren<QPushButton*>()) {
        QVERIFY(!each->isEnabled());
    }
    waitForInput();
    for (const QPushButton* each : dialog->findChildren<QPushButton*>()) {
        QVERIFY(each->isEnabled());
    }
}

void QuestionGuardTest::noButtonIsPressedIfAMouseClickBeginsInTheFirstMoment()
{
    show();
    QPushButton* const ok = buttonOf(dialog.get(), "&OK");
    const QPoint place = ok->mapTo(dialog.get(), ok->rect().center());
    QTest::mousePress(dialog->windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
    waitForInput();
    QTest::mouseRelease(dialog->windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
    QVERIFY(dialog->isVisible());
    QTest::mouseClick(dialog->windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
    QVERIFY(!dialog->isVisible());
}

void QuestionGuardTest::theDefaultButtonGetsTheFocusAfterTheFirstMoment_data()
{
    QTest::addColumn<bool>("isBox");
    QTest::newRow("message box") << true;
    QTest::newRow("listing") << false;
}

void QuestionGuardTest::theDefaultButtonGetsTheFocusAfterTheFirstMoment()
{
    QFETCH(bool, isBox);
    guard.reset();
    if (isBox) {
        auto box = std::make_unique<HMessageBox>(QMessageBox::Critical, "Apply", "Proceed?",
                                                 QMessageBox::Yes | QMessageBox::No, nullptr);
        box->setDefaultButton(QMessageBox::No);
        dialog = std::move(box);
    } else {
        dialog = std::make_unique<ScrollableConfirmDialog>("Remove?", "&Yes", "&No", nullptr, true);
    }
    guard = std::make_unique<QuestionGuard>(dialog.get());
    show();
    QVERIFY(!buttonOf(dialog.get(), "&No")->hasFocus());
    waitForInput();
    QVERIFY(buttonOf(dialog.get(), "&No")->hasFocus());
}

void QuestionGuardTest::theQuestionIgnoresInputForAMomentWhenItsWindowBecomesActiveForTheFirstTime()
{
    QWidget other;
    other.show();
    QVERIFY(QTest::qWaitForWindowActive(&other, 30000));
    // Neither Qt nor the window manager activates a window with these settings.
    dialog->setModal(false);
    dialog->setAttribute(Qt::WA_ShowWithoutActivating);
    dialog->setWindowFlag(Qt::X11BypassWindowManagerHint);
    QuestionGuard::pause = 20;
    dialog->show();
    QTRY_VERIFY(takesInput(dialog.get()));
    QVERIFY(!dialog->isActiveWindow());
    QuestionGuard::pause = 1000000;
    QApplication::setActiveWindow(dialog.get());
    QVERIFY(dialog->isActiveWindow());
    QVERIFY(!takesInput(dialog.get()));
    waitForInput();
    // When the window becomes active for the second time, the question still takes input.
    QApplication::setActiveWindow(&other);
    QVERIFY(!dialog->isActiveWindow());
    QApplication::setActiveWindow(dialog.get());
    QVERIFY(dialog->isActiveWindow());
    QVERIFY(takesInput(dialog.get()));
}

void QuestionGuardTest::theGuardDoesNotAffectInputInOtherWindows()
{
    show();
    QPushButton other("Other");
    int clicks = 0;
    connect(&other, &QPushButton::clicked, this, [&clicks] { ++clicks; });
    other.show();
    QVERIFY(QTest::qWaitForWindowExposed(&other));
    QTest::mouseClick(&other, Qt::LeftButton);
    QTest::keyClick(&other, Qt::Key_Space);
    QCOMPARE(clicks, 2);
}

void QuestionGuardTest::theWindowOfAQuestionCanBeClosedInTheFirstMoment()
{
    show();
    dialog->close();
    QVERIFY(!dialog->isVisible());
    QCOMPARE(dialog->result(), static_cast<int>(QDialog::Rejected));
}

QTEST_MAIN(QuestionGuardTest)
#include "QuestionGuardTest.moc"
