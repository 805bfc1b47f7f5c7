// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/HProgressBar.h"

#include <QElapsedTimer>
#include <QHelpEvent>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

namespace {

class CountingBar : public HProgressBar
{
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        ++paints;
        HProgressBar::paintEvent(event);
    }
};

bool sendToolTipEvent(QWidget* widget, const QPoint& pos)
{
    QHelpEvent event(QEvent::ToolTip, pos, widget->mapToGlobal(pos));
    return QCoreApplication::sendEvent(widget, &event) && event.isAccepted();
}

} // namespace

class HProgressBarTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theTextOfTheBarConsistsOfTheActivityAndThePercentage();
    void placeMarkersInAnActivityAreShownUnchanged();
    void aResetRemovesTheActivityAndTheValue();
    void theBarIsPaintedAgainIfItsActivityChanges();
    void anAnimationFrameIsNotPaintedTooSoonAfterThePreviousFrame();
    void hoveringOverTheBarInAnActiveWindowRequestsATip();
    void theRequestForATipContainsThePosition();
    void hoveringOverTheBarInAnInactiveWindowRequestsNoTip();
    void anInactiveWindowAlsoRequestsTipsIfItHasTheAttributeAlwaysShowToolTips();
};

void HProgressBarTest::theTextOfTheBarConsistsOfTheActivityAndThePercentage()
{
    HProgressBar bar;
    bar.setRange(0, 100);
    bar.setValue(40);
    QCOMPARE(bar.text(), QString("40%"));
    bar.setActivity("Reading");
    QCOMPARE(bar.text(), QString("Reading (40%)"));

    HProgressBar idle;
    QCOMPARE(idle.text(), QString());
    idle.setActivity("Reading");
    QCOMPARE(idle.text(), QString("Reading"));
    HProgressBar noRange;
    noRange.setRange(0, 0);
    noRange.setActivity("Reading");
    QCOMPARE(noRange.text(), QString("Reading"));
}

void HProgressBarTest::placeMarkersInAnActivityAreShownUnchanged()
{
    HProgressBar bar;
    bar.setRange(0, 100);
    bar.setValue(40);
    bar.setActivity("Reading %1 and %2");
    QCOMPARE(bar.text(), QString("Reading %1 and %2 (40%)"));
}

void HProgressBarTest::aResetRemovesTheActivityAndTheValue()
{
    HProgressBar bar;
    bar.setRange(0, 100);
    bar.setValue(40);
    bar.setActivity("Reading");
    bar.reset();
    QCOMPARE(bar.text(), QString());
    QCOMPARE(bar.value(), -1);
}

void HProgressBarTest::theBarIsPaintedAgainIfItsActivityChanges()
{
    CountingBar bar;
    bar.setRange(0, 100);
    bar.setValue(40);
    bar.show();
    QTRY_VERIFY_WITH_TIMEOUT(bar.paints > 0, 30000);
    QTest::qWait(50);
    const int before = bar.paints;
    bar.setActivity("Reading");
    QTRY_VERIFY(bar.paints > before);
}

void HProgressBarTest::anAnimationFrameIsNotPaintedTooSoonAfterThePreviousFrame()
{
    CountingBar bar;
    bar.setRange(0, 100);
    bar.show();
    QVERIFY(QTest::qWaitForWindowExposed(&bar));
    const auto paintsOfAFrame = [&bar] {
        QEvent frame(QEvent::StyleAnimationUpdate);
        frame.ignore();
        bar.paints = 0;
        QCoreApplication::sendEvent(&bar, &frame);
        QCoreApplication::processEvents();
        return frame.isAccepted() ? bar.paints : -1; // if the event is ignored, the style stops the animation
    };
    QElapsedTimer sinceFirst;
    do {
        QTest::qWait(150); // longer than the interval between two painted frames
        sinceFirst.start();
        QCOMPARE(paintsOfAFrame(), 1);
        const int second = paintsOfAFrame();
        if (sinceFirst.elapsed() < 90) { // if the second frame comes later, try again
            QCOMPARE(second, 0);
            break;
        }
    } while (true);
}

void HProgressBarTest::hoveringOverTheBarInAnActiveWindowRequestsATip()
{
    QWidget window;
    QVBoxLayout layout(&window);
    HProgressBar bar(&window);
    layout.addWidget(&bar);
    window.resize(300, 100);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window, 30000));
    QSignalSpy spy(&bar, SIGNAL(toolTip(const QPoint&)));
    QTest::mouseMove(&bar, bar.rect().center());
    QTRY_COMPARE(spy.count(), 1);
}

void HProgressBarTest::theRequestForATipContainsThePosition()
{
    HProgressBar bar;
    bar.show();
    QVERIFY(QTest::qWaitForWindowActive(&bar, 30000));
    QSignalSpy spy(&bar, SIGNAL(toolTip(const QPoint&)));
    QVERIFY(sendToolTipEvent(&bar, QPoint(7, 3)));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toPoint(), QPoint(7, 3));
}

void HProgressBarTest::hoveringOverTheBarInAnInactiveWindowRequestsNoTip()
{
    HProgressBar bar;
    bar.show();
    QVERIFY(QTest::qWaitForWindowActive(&bar, 30000));
    QWidget other;
    other.show();
    QVERIFY(QTest::qWaitForWindowActive(&other, 30000));
    QTRY_VERIFY(!bar.isActiveWindow());
    QSignalSpy spy(&bar, SIGNAL(toolTip(const QPoint&)));
    QVERIFY(!sendToolTipEvent(&bar, QPoint(7, 3)));
    QCOMPARE(spy.count(), 0);
}

void HProgressBarTest::anInactiveWindowAlsoRequestsTipsIfItHasTheAttributeAlwaysShowToolTips()
{
    QWidget window;
    window.setAttribute(Qt::WA_AlwaysShowToolTips);
    HProgressBar bar(&window);
    QVERIFY(!bar.isActiveWindow());
    QSignalSpy spy(&bar, SIGNAL(toolTip(const QPoint&)));
    QVERIFY(sendToolTipEvent(&bar, QPoint(1, 1)));
    QCOMPARE(spy.count(), 1);
}

QTEST_MAIN(HProgressBarTest)
#include "HProgressBarTest.moc"
