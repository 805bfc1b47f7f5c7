// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/GeneralTip.h"

#include <QtTest>
#include <QtWidgets>

namespace {

const QSize contents(200, 100);

// Fills a tip with one widget. `data` points to the size of this widget.
void fillWith(GeneralTip* tip, void* data)
{
    QVBoxLayout* column = new QVBoxLayout(tip);
    column->setContentsMargins(4, 4, 4, 4);
    QWidget* inner = new QWidget;
    inner->setFixedSize(*static_cast<const QSize*>(data));
    column->addWidget(inner);
}

GeneralTip* currentTip()
{
    GeneralTip* found = nullptr;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (GeneralTip* tip = qobject_cast<GeneralTip*>(widget)) {
            Q_ASSERT(found == nullptr);
            found = tip;
        }
    }
    return found;
}

// The running timers of an object. The keys are the intervals, the values are the timers' identifiers.
QMap<int, int> timers(QObject* object)
{
    QMap<int, int> found;
    for (const auto& timer : QAbstractEventDispatcher::instance()->registeredTimers(object)) {
        found.insert(timer.interval, timer.timerId);
    }
    return found;
}

QRect screenRect()
{
    return QGuiApplication::primaryScreen()->geometry();
}

// Shows a general tip instead of a tool tip, as the progress bar does.
class TipOwner : public QLabel
{
public:
    using QLabel::QLabel;

protected:
    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::ToolTip) {
            return QLabel::event(event);
        }
        QSize size = contents;
        GeneralTip::showTip(static_cast<QHelpEvent*>(event)->globalPos(), fillWith, &size, this, true);
        event->accept();
        return true;
    }
};

} // namespace

class GeneralTipTest : public QObject
{
    Q_OBJECT

private:
    GeneralTip* show(const QPoint& pos, bool sticky = true, QSize size = contents)
    {
        GeneralTip::showTip(pos, fillWith, &size, &window, sticky);
        return currentTip();
    }

    QWidget window;
    QLineEdit* edit = nullptr;
    QLineEdit* other = nullptr;
    TipOwner* owner = nullptr;

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void theFunctionOfTheCallerFillsTheTipBeforeTheTipIsVisible();
    void theTipIsAsLargeAsItsContents();
    void aTipWithoutLayoutKeepsTheSizeThatItsCallerHasSet();
    void theTipIsAWindowWithTheFrameAndTheColoursOfAToolTip();
    void theTipIsPlacedNearThePointer_data();
    void theTipIsPlacedNearThePointer();
    void aSecondTipReplacesTheFirst();
    void hoveringOverAWidgetShowsItsTip();
    void aTipDisappearsAfterSomeTimeIfItIsNotSticky();
    void aStickyTipDoesNotDisappearAfterSomeTime();
    void aTipIsDeletedAfterItWasHidden();
    void aTipCanBeShownAfterThePreviousTipWasDeleted();
    void movingThePointerIntoTheTipHidesTheTip();
    void movingTheMouseInTheWidgetDoesNotHideTheTip();
    void pressingAMouseButtonHidesTheTip_data();
    void pressingAMouseButtonHidesTheTip();
    void turningTheMouseWheelHidesTheTip();
    void aChangeOfTheFocusHidesTheTip();
    void activatingOrDeactivatingAWindowHidesTheTip_data();
    void activatingOrDeactivatingAWindowHidesTheTip();
    void movingThePointerOutOfTheWidgetHidesTheTip();
    void aKeyHidesTheTipUnlessAModifierIsPressed_data();
    void aKeyHidesTheTipUnlessAModifierIsPressed();
    void theWidgetReceivesTheInputThatHidesItsTip();
};

void GeneralTipTest::initTestCase()
{
    // The pointer begins outside all windows and tips.
    QCursor::setPos(screenRect().center() + QPoint(0, 200));
    QVBoxLayout* column = new QVBoxLayout(&window);
    column->addWidget(edit = new QLineEdit);
    column->addWidget(other = new QLineEdit);
    column->addWidget(owner = new TipOwner(QStringLiteral("progress")));
    window.move(50, 50);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
}

void GeneralTipTest::init()
{
    QCursor::setPos(screenRect().center() + QPoint(0, 200));
    edit->clear();
    edit->setFocus();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    // Wait for late pointer and focus events, because they would hide the tip that the test shows.
    QTest::qWait(50);
    QVERIFY(currentTip() == nullptr);
}

void GeneralTipTest::cleanup()
{
    delete currentTip();
}

void GeneralTipTest::theFunctionOfTheCallerFillsTheTipBeforeTheTipIsVisible()
{
    struct Call
    {
        GeneralTip* tip = nullptr;
        bool wasVisible = true;
    } call;
    GeneralTip::showTip(
        QPoint(500, 300),
        [](GeneralTip* tip, void* data) {
            static_cast<Call*>(data)->tip = tip;
            static_cast<Call*>(data)->wasVisible = tip->isVisible();
        },
        &call, &window, true);
    QCOMPARE(call.tip, currentTip());
    QVERIFY(!call.wasVisible);
    QVERIFY(call.tip->isVisible());
}

void GeneralTipTest::theTipIsAsLargeAsItsContents()
{
    GeneralTip* tip = show(QPoint(500, 300));
    const int frame = 2 * (tip->frameWidth() + 4);
    QCOMPARE(tip->size(), contents + QSize(frame + 1, frame));
    QCOMPARE(tip->sizeHint(), contents + QSize(frame, frame));
}

void GeneralTipTest::aTipWithoutLayoutKeepsTheSizeThatItsCallerHasSet()
{
    const int right = screenRect().width();
    GeneralTip::showTip(
        QPoint(right - 10, 300), [](GeneralTip* tip, void*) { tip->resize(150, 40); }, nullptr, &window,
        true);
    QCOMPARE(currentTip()->geometry(), QRect(right - 10 + 2 - 154, 316, 150, 40));
}

void GeneralTipTest::theTipIsAWindowWithTheFrameAndTheColoursOfAToolTip()
{
    GeneralTip* tip = show(QPoint(500, 300));
    QVERIFY(tip->isWindow());
    QCOMPARE(tip->windowType(), Qt::ToolTip);
    QCOMPARE(tip->frameStyle(), int(QFrame::Box));
    const QPalette palette = tip->palette();
    QCOMPARE(palette.color(QPalette::WindowText), QColor(Qt::black));
    QCOMPARE(palette.color(QPalette::Window), QColor(255, 255, 220));
    QCOMPARE(palette.color(QPalette::Light), QColor(96, 96, 96));
    QCOMPARE(palette.color(QPalette::Dark), QColor(Qt::black));
    QCOMPARE(palette.color(QPalette::Mid), QColor(Qt::black));
    QCOMPARE(palette.color(QPalette::Text), QColor(Qt::black));
    QCOMPARE(palette.color(QPalette::Base), QColor(255, 255, 220));
    const int opacity = tip->style()->styleHint(QStyle::SH_ToolTipLabel_Opacity, nullptr, tip);
    QVERIFY(qAbs(tip->windowOpacity() - opacity / 255.0) < 0.01);
    QVERIFY(QTest::qWaitForWindowExposed(tip));
    QCOMPARE(tip->grab().toImage().pixelColor(tip->rect().center()), QColor(255, 255, 220));
}

void GeneralTipTest::theTipIsPlacedNearThePointer_data()
{
    QTest::addColumn<QSize>("size"); // the size of the contents, without margin and frame
    QTest::addColumn<QPoint>("pos");
    QTest::addColumn<QPoint>("expected");
    const int w = screenRect().width();
    const int h = screenRect().height();
    // The size of the whole tip: the contents, a margin of 4 and a frame of 1 on each side, and one extra
    // pixel of width.
    const int tw = contents.width() + 11;
    const int th = contents.height() + 10;

    QTest::newRow("below and right of the pointer") << contents << QPoint(300, 200) << QPoint(302, 216);
    QTest::newRow("top left corner") << contents << QPoint(0, 0) << QPoint(2, 16);
    QTest::newRow("top right corner, tip on the left")
        << contents << QPoint(w - 1, 0) << QPoint(w - 1 + 2 - (tw + 4), 16);
    QTest::newRow("bottom left corner, tip above")
        << contents << QPoint(0, h - 1) << QPoint(2, h - 1 + 16 - (th + 24));
    QTest::newRow("bottom right corner, tip above and on the left")
        << contents << QPoint(w - 1, h - 1) << QPoint(w - 1 + 2 - (tw + 4), h - 1 + 16 - (th + 24));
    QTest::newRow("just fits at the right and bottom")
        << contents << QPoint(w - tw - 2, h - th - 16) << QPoint(w - tw, h - th);
    QTest::newRow("one pixel too far right")
        << contents << QPoint(w - tw - 1, 0) << QPoint(w - tw - 1 + 2 - (tw + 4), 16);
    QTest::newRow("one pixel too far down")
        << contents << QPoint(0, h - th - 15) << QPoint(2, h - th - 15 + 16 - (th + 24));
    QTest::newRow("far right of the screen") << contents << QPoint(w + 900, 100) << QPoint(w - tw, 116);
    QTest::newRow("far below the screen") << contents << QPoint(100, h + 900) << QPoint(102, h - th);
    QTest::newRow("left of the screen") << contents << QPoint(-900, 100) << QPoint(0, 116);
    QTest::newRow("above the screen") << contents << QPoint(100, -900) << QPoint(102, 0);
    QTest::newRow("wider than the screen") << QSize(w, 100) << QPoint(300, 200) << QPoint(0, 216);
    QTest::newRow("taller than the screen") << QSize(200, h) << QPoint(300, 200) << QPoint(302, h - (h + 10));
}

void GeneralTipTest::theTipIsPlacedNearThePointer()
{
    QFETCH(QSize, size);
    QFETCH(QPoint, pos);
    QFETCH(QPoint, expected);
    GeneralTip* tip = show(pos, true, size);
    QVERIFY(tip->isVisible());
    QCOMPARE(tip->pos(), expected);
    QCOMPARE(tip->size(), size + QSize(11, 10));
}

void GeneralTipTest::aSecondTipReplacesTheFirst()
{
    const QPointer<GeneralTip> first = show(QPoint(300, 200));
    QVERIFY(first);
    const QPointer<GeneralTip> second = show(QPoint(400, 200));
    QVERIFY(first.isNull());
    QVERIFY(second);
    QVERIFY(second->isVisible());
    QCOMPARE(second->pos(), QPoint(402, 216));
}

void GeneralTipTest::hoveringOverAWidgetShowsItsTip()
{
    const QPoint target = owner->mapToGlobal(owner->rect().center());
    QCursor::setPos(target - QPoint(1, 0));
    QTRY_VERIFY(owner->underMouse());
    QCursor::setPos(target);
    QTRY_VERIFY(currentTip() != nullptr && currentTip()->isVisible());
    QCOMPARE(currentTip()->pos(), target + QPoint(2, 16));
    // If the pointer moves inside the widget, the tip stays. If the pointer leaves the widget, the tip
    // disappears.
    QCursor::setPos(target + QPoint(1, 0));
    QTest::qWait(100);
    QVERIFY(currentTip() != nullptr && currentTip()->isVisible());
    QCursor::setPos(screenRect().center() + QPoint(0, 200));
    QTRY_VERIFY(currentTip() == nullptr);
}

void GeneralTipTest::aTipDisappearsAfterSomeTimeIfItIsNotSticky()
{
    const QPointer<GeneralTip> tip = show(QPoint(500, 300), false);
    QCOMPARE(timers(tip).keys(), QList<int>{10000});
    QVERIFY(tip->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(tip.isNull(), 60000);
}

void GeneralTipTest::aStickyTipDoesNotDisappearAfterSomeTime()
{
    const QPointer<GeneralTip> tip = show(QPoint(500, 300), true);
    QVERIFY(timers(tip).isEmpty());
    QTest::qWait(400);
    QVERIFY(tip);
    QVERIFY(tip->isVisible());
}

void GeneralTipTest::aTipIsDeletedAfterItWasHidden()
{
    const QPointer<GeneralTip> tip = show(QPoint(500, 300));
    tip->hideTip();
    QVERIFY(tip);
    QVERIFY(!tip->isVisible());
    QCOMPARE(timers(tip).keys(), QList<int>{250});
    QTRY_VERIFY(tip.isNull());
}

void GeneralTipTest::aTipCanBeShownAfterThePreviousTipWasDeleted()
{
    const QPointer<GeneralTip> tip = show(QPoint(500, 300));
    tip->hideTip();
    QTRY_VERIFY(tip.isNull());
    QVERIFY(show(QPoint(500, 300))->isVisible());
}

void GeneralTipTest::movingThePointerIntoTheTipHidesTheTip()
{
    const QPointer<GeneralTip> tip = show(QPoint(500, 300));
    QVERIFY(QTest::qWaitForWindowExposed(tip));
    QCursor::setPos(tip->geometry().center());
    QTRY_VERIFY(tip.isNull() || !tip->isVisible());
    QTRY_VERIFY(tip.isNull());
}

void GeneralTipTest::movingTheMouseInTheWidgetDoesNotHideTheTip()
{
    GeneralTip* tip = show(QPoint(500, 300));
    edit->setMouseTracking(true);
    QTest::mouseMove(edit, QPoint(3, 3));
    QTest::mouseMove(edit, QPoint(6, 3));
    QTest::qWait(50);
    QVERIFY(tip->isVisible());
}

void GeneralTipTest::pressingAMouseButtonHidesTheTip_data()
{
    QTest::addColumn<QEvent::Type>("type");
    QTest::newRow("press") << QEvent::MouseButtonPress;
    QTest::newRow("release") << QEvent::MouseButtonRelease;
    QTest::newRow("double click") << QEvent::MouseButtonDblClick;
}

void GeneralTipTest::pressingAMouseButtonHidesTheTip()
{
    QFETCH(QEvent::Type, type);
    GeneralTip* tip = show(QPoint(500, 300));
    QVERIFY(tip->isVisible());
    QMouseEvent event(type, QPointF(2, 2), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(owner, &event);
    QVERIFY(!tip->isVisible());
}

void GeneralTipTest::turningTheMouseWheelHidesTheTip()
{
    GeneralTip* tip = show(QPoint(500, 300));
    QWheelEvent event(QPointF(2, 2), owner->mapToGlobal(QPoint(2, 2)), QPoint(), QPoint(0, 120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(owner, &event);
    QVERIFY(!tip->isVisible());
}

void GeneralTipTest::aChangeOfTheFocusHidesTheTip()
{
    QPointer<GeneralTip> tip = show(QPoint(500, 300));
    QVERIFY(edit->hasFocus());
    edit->clearFocus();
    QVERIFY(!tip->isVisible());

    tip = show(QPoint(500, 300));
    other->setFocus();
    QVERIFY(other->hasFocus());
    QVERIFY(!tip->isVisible());
}

void GeneralTipTest::activatingOrDeactivatingAWindowHidesTheTip_data()
{
    QTest::addColumn<QEvent::Type>("type");
    QTest::newRow("activate") << QEvent::WindowActivate;
    QTest::newRow("deactivate") << QEvent::WindowDeactivate;
}

void GeneralTipTest::activatingOrDeactivatingAWindowHidesTheTip()
{
    QFETCH(QEvent::Type, type);
    GeneralTip* tip = show(QPoint(500, 300));
    QEvent event(type);
    QApplication::sendEvent(&window, &event);
    QVERIFY(!tip->isVisible());
}

void GeneralTipTest::movingThePointerOutOfTheWidgetHidesTheTip()
{
    GeneralTip* tip = show(QPoint(500, 300));
    QEvent enter(QEvent::Enter);
    QApplication::sendEvent(edit, &enter);
    QVERIFY(tip->isVisible());
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(edit, &leave);
    QVERIFY(!tip->isVisible());
}

void GeneralTipTest::aKeyHidesTheTipUnlessAModifierIsPressed_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("held");
    QTest::addColumn<bool>("hides");
    const auto row = [](const char* name, int key, Qt::KeyboardModifiers held, bool hides) {
        QTest::newRow(name) << key << held << hides;
    };
    row("letter", Qt::Key_A, Qt::NoModifier, true);
    row("arrow", Qt::Key_Down, Qt::NoModifier, true);
    row("Escape", Qt::Key_Escape, Qt::NoModifier, true);
    row("number pad", Qt::Key_5, Qt::KeypadModifier, true);
    row("Shift", Qt::Key_Shift, Qt::NoModifier, false);
    row("Control", Qt::Key_Control, Qt::NoModifier, false);
    row("Meta", Qt::Key_Meta, Qt::NoModifier, false);
    row("Alt", Qt::Key_Alt, Qt::NoModifier, false);
    // The first event of a modifier key does not include this modifier. The events that follow while the key
    // is held include it.
    row("Shift while it is held", Qt::Key_Shift, Qt::ShiftModifier, false);
    row("Control while it is held", Qt::Key_Control, Qt::ControlModifier, false);
    row("Meta while it is held", Qt::Key_Meta, Qt::MetaModifier, false);
    row("Alt while it is held", Qt::Key_Alt, Qt::AltModifier, false);
    row("letter with Shift", Qt::Key_A, Qt::ShiftModifier, false);
    row("letter with Control", Qt::Key_C, Qt::ControlModifier, false);
    row("letter with Meta", Qt::Key_A, Qt::MetaModifier, false);
    row("letter with Alt", Qt::Key_Q, Qt::AltModifier, false);
    row("number pad with Control", Qt::Key_5, Qt::KeypadModifier | Qt::ControlModifier, false);
}

void GeneralTipTest::aKeyHidesTheTipUnlessAModifierIsPressed()
{
    QFETCH(int, key);
    QFETCH(Qt::KeyboardModifiers, held);
    QFETCH(bool, hides);
    for (QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        GeneralTip* tip = show(QPoint(500, 300));
        QVERIFY(tip->isVisible());
        QKeyEvent event(type, key, held);
        QApplication::sendEvent(owner, &event);
        QCOMPARE(tip->isVisible(), !hides);
    }
}

void GeneralTipTest::theWidgetReceivesTheInputThatHidesItsTip()
{
    GeneralTip* tip = show(QPoint(500, 300));
    QTest::keyClicks(edit, QStringLiteral("ab"));
    QCOMPARE(edit->text(), QStringLiteral("ab"));
    QVERIFY(!tip->isVisible());

    tip = show(QPoint(500, 300));
    QTest::mouseClick(other, Qt::LeftButton);
    QVERIFY(other->hasFocus());
    QVERIFY(!tip->isVisible());
}

QTEST_MAIN(GeneralTipTest)
#include "GeneralTipTest.moc"
