// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HScrollArea.h"

#include <QtTest>
#include <QtWidgets>

#include "widgets/PlainLabel.h"

namespace {

// A widget for the area. The test decides its size hint.
class Contents : public QWidget
{
public:
    explicit Contents(QSize size) : hint(size) {}
    QSize sizeHint() const override { return hint; }

    QSize hint;
};

// A style that draws a frame. The test decides whether the frame is around the contents only, or around the
// whole area.
class FrameStyle : public QProxyStyle
{
public:
    explicit FrameStyle(bool onlyAroundContents) : aroundContents(onlyAroundContents) {}
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override
    {
        return hint == SH_ScrollView_FrameOnlyAroundContents
                   ? int(aroundContents)
                   : QProxyStyle::styleHint(hint, option, widget, data);
    }
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override
    {
        return metric == PM_DefaultFrameWidth ? 3 : QProxyStyle::pixelMetric(metric, option, widget);
    }

private:
    bool aroundContents;
};

// The space that the area needs in addition to its inner widget: the frame and both scroll bars.
QSize surroundings(const HScrollArea& area)
{
    return QSize(2 * area.frameWidth() + area.verticalScrollBar()->sizeHint().width(),
                 2 * area.frameWidth() + area.horizontalScrollBar()->sizeHint().height());
}

QSize largest()
{
    const QSize screen = QGuiApplication::primaryScreen()->size();
    return QSize(screen.width() * 9 / 10, screen.height() * 9 / 10);
}

} // namespace

class HScrollAreaTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theHomeAndEndKeysScrollToBothEnds_data()
    {
        QTest::addColumn<bool>("inLabel");
        QTest::newRow("the area has the focus") << false;
        QTest::newRow("a text has the focus") << true;
    }

    void theHomeAndEndKeysScrollToBothEnds()
    {
        QFETCH(bool, inLabel);
        HScrollArea area;
        auto* label = new PlainLabel(QString("a line of text\n").repeated(200));
        label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        area.setWidget(label);
        area.resize(60, 200);
        area.show();
        QVERIFY(QTest::qWaitForWindowActive(&area, 30000));
        QWidget* const focused = inLabel ? static_cast<QWidget*>(label) : &area;
        focused->setFocus();
        QVERIFY(focused->hasFocus());
        const QScrollBar* vertical = area.verticalScrollBar();
        const QScrollBar* horizontal = area.horizontalScrollBar();
        const auto press = [&area](Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
            QTest::keyClick(area.windowHandle(), key, modifiers);
        };
        for (const Qt::KeyboardModifiers modifiers :
             {Qt::KeyboardModifiers(Qt::NoModifier), Qt::KeyboardModifiers(Qt::ControlModifier),
              Qt::KeyboardModifiers(Qt::KeypadModifier)}) {
            press(Qt::Key_End, modifiers);
            QCOMPARE(vertical->value(), vertical->maximum());
            QCOMPARE(horizontal->value(), 0);
            area.horizontalScrollBar()->setValue(20);
            press(Qt::Key_Home, modifiers);
            QCOMPARE(vertical->value(), 0);
            QCOMPARE(horizontal->value(), 0);
        }
        press(Qt::Key_PageDown);
        QCOMPARE(vertical->value(), vertical->pageStep());
        press(Qt::Key_Down);
        QCOMPARE(vertical->value(), vertical->pageStep() + vertical->singleStep());
        press(Qt::Key_Up);
        press(Qt::Key_PageUp);
        QCOMPARE(vertical->value(), 0);
        // If Shift is pressed, these keys select text instead of scrolling.
        press(Qt::Key_End, Qt::ShiftModifier);
        QCOMPARE(vertical->value(), 0);
    }

    void theSizeHintComesFromTheBaseClassIfNoInnerWidgetIsSet();
    void theSizeHintHasSpaceForTheInnerWidgetAndBothScrollBars();
    void theSizeHintIncludesAFrameAroundTheContents();
    void theMaximumSizeLimitsTheSizeHint();
    void theMaximumSizeCanBeGivenInColumnsAndRows_data();
    void theMaximumSizeCanBeGivenInColumnsAndRows();
    void theScreenLimitsTheSizeHint_data();
    void theScreenLimitsTheSizeHint();
    void forceResizeAdaptsTheInnerWidgetAndTheAreaToANewSizeHint();
    void forceResizeDoesNothingIfNoInnerWidgetIsSet();
    void aLongLabelScrollsInsideItsWindow();
};

void HScrollAreaTest::theSizeHintComesFromTheBaseClassIfNoInnerWidgetIsSet()
{
    HScrollArea area(QSize(1, 1));
    QCOMPARE(area.sizeHint(), QScrollArea().sizeHint());
    QVERIFY(area.sizeHint() != QSize(1, 1));
}

void HScrollAreaTest::theSizeHintHasSpaceForTheInnerWidgetAndBothScrollBars()
{
    FrameStyle style(false);
    HScrollArea area;
    area.setStyle(&style);
    area.setWidget(new Contents(QSize(300, 200)));
    QCOMPARE(area.frameOnlyAroundContentsPixels(), 0);
    QCOMPARE(area.sizeHint(), QSize(300, 200) + surroundings(area));
    area.setFrameStyle(QFrame::Plain);
    QCOMPARE(area.frameWidth(), 0);
    QCOMPARE(area.sizeHint(), QSize(300, 200) + surroundings(area));
}

void HScrollAreaTest::theSizeHintIncludesAFrameAroundTheContents()
{
    FrameStyle style(true);
    HScrollArea area;
    area.setStyle(&style);
    area.setWidget(new Contents(QSize(300, 200)));
    QCOMPARE(area.frameOnlyAroundContentsPixels(), 6);
    QCOMPARE(area.sizeHint(), QSize(306, 206) + surroundings(area));
}

void HScrollAreaTest::theMaximumSizeLimitsTheSizeHint()
{
    HScrollArea area(QSize(250, 1000));
    area.setWidget(new Contents(QSize(300, 200)));
    QCOMPARE(area.sizeHint().width(), 250);
    QCOMPARE(area.sizeHint().height(),
             200 + area.frameOnlyAroundContentsPixels() + surroundings(area).height());
}

void HScrollAreaTest::theMaximumSizeCanBeGivenInColumnsAndRows_data()
{
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("rows");
    QTest::newRow("both") << 40 << 10;
    QTest::newRow("columns only") << 40 << -1;
    QTest::newRow("rows only") << -1 << 10;
    QTest::newRow("neither") << -1 << -1;
}

void HScrollAreaTest::theMaximumSizeCanBeGivenInColumnsAndRows()
{
    QFETCH(int, columns);
    QFETCH(int, rows);
    HScrollArea area(columns, rows);
    area.setWidget(new Contents(QSize(100000, 100000)));
    const QFontMetrics metrics(area.font());
    const QSize expected(columns == -1 ? largest().width() : 40 * metrics.horizontalAdvance(QLatin1Char('n')),
                         rows == -1 ? largest().height() : 10 * metrics.height());
    QCOMPARE(area.sizeHint(), expected);
}

void HScrollAreaTest::theScreenLimitsTheSizeHint_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("wide");
    QTest::addColumn<bool>("high");
    QTest::newRow("wide") << QSize(5000, 100) << true << false;
    QTest::newRow("high") << QSize(100, 5000) << false << true;
    QTest::newRow("large") << QSize(5000, 5000) << true << true;
}

void HScrollAreaTest::theScreenLimitsTheSizeHint()
{
    QFETCH(QSize, size);
    QFETCH(bool, wide);
    QFETCH(bool, high);
    HScrollArea unbounded;
    HScrollArea larger(QSize(4000, 4000));
    for (HScrollArea* area : {&unbounded, &larger}) {
        area->setWidget(new Contents(size));
        QCOMPARE(area->sizeHint().width() == largest().width(), wide);
        QCOMPARE(area->sizeHint().height() == largest().height(), high);
        QVERIFY(area->sizeHint().width() <= largest().width() &&
                area->sizeHint().height() <= largest().height());
    }
}

void HScrollAreaTest::forceResizeAdaptsTheInnerWidgetAndTheAreaToANewSizeHint()
{
    QWidget window;
    QVBoxLayout* column = new QVBoxLayout(&window);
    HScrollArea* area = new HScrollArea;
    column->addWidget(area);
    Contents* inner = new Contents(QSize(100, 80));
    area->setWidget(inner);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(inner->size(), QSize(100, 80));
    const QSize before = window.sizeHint();
    inner->hint = QSize(400, 300);
    QCOMPARE(inner->size(), QSize(100, 80));
    area->forceResize();
    QCOMPARE(inner->size(), QSize(400, 300));
    QCOMPARE(window.sizeHint(), before + QSize(300, 220));
}

void HScrollAreaTest::forceResizeDoesNothingIfNoInnerWidgetIsSet()
{
    HScrollArea area;
    area.forceResize();
    QVERIFY(area.widget() == nullptr);
}

void HScrollAreaTest::aLongLabelScrollsInsideItsWindow()
{
    QWidget window;
    QVBoxLayout* column = new QVBoxLayout(&window);
    HScrollArea* area = new HScrollArea;
    column->addWidget(area);
    area->setWidget(new QLabel(QStringLiteral("a line of text\n").repeated(300)));
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY(window.height() < QGuiApplication::primaryScreen()->size().height());
    QVERIFY(area->verticalScrollBar()->isVisible());
    QVERIFY(!area->horizontalScrollBar()->isVisible());
    QTest::keyClick(area, Qt::Key_PageDown);
    QVERIFY(area->verticalScrollBar()->value() > 0);
}

QTEST_MAIN(HScrollAreaTest)
#include "HScrollAreaTest.moc"
