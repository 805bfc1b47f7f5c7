// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HFrameLabel.h"

#include <QtTest>
#include <QtWidgets>

#include "widgets/Colors.h"

namespace {

QColor background(const HFrameLabel& label)
{
    return label.palette().color(QPalette::Window);
}

const QColor errorColor(0xff, 0x60, 0x60);

} // namespace

class HFrameLabelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aLabelWithTextHasAFrameAndCentredText();
    void aLabelWithoutTextHasNoFrame();
    void anEmptyLabelShowsNothingEvenWithAnErrorPalette();
    void theBackgroundColourIsVisibleOnlyIfTheLabelHasAText();
    void aNewPaletteOfALabelWithTextIsShownAtOnce();
    void theTextHasTheNormalColourIfNoPaletteIsSet();
    void theSizeHintHasSpaceForTheText();
    void markupIsShownAsPlainText();
};

void HFrameLabelTest::aLabelWithTextHasAFrameAndCentredText()
{
    HFrameLabel label(QStringLiteral("Identifier is missing"));
    QCOMPARE(label.text(), QStringLiteral("Identifier is missing"));
    QCOMPARE(label.frameShape(), QFrame::StyledPanel);
    QCOMPARE(label.frameShadow(), QFrame::Plain);
    QVERIFY(label.autoFillBackground());
    QVERIFY(qobject_cast<QHBoxLayout*>(label.layout()) != nullptr);
    QCOMPARE(label.layout()->contentsMargins(), QMargins(2, 2, 2, 2));
    QLabel* inner = label.findChild<QLabel*>();
    QCOMPARE(inner->text(), label.text());
    QCOMPARE(inner->alignment(), Qt::AlignCenter);
}

void HFrameLabelTest::aLabelWithoutTextHasNoFrame()
{
    HFrameLabel label;
    QCOMPARE(label.frameShape(), QFrame::NoFrame);
    label.setText(QStringLiteral("x"));
    QCOMPARE(label.frameShape(), QFrame::StyledPanel);
    label.setText(QString());
    QCOMPARE(label.frameShape(), QFrame::NoFrame);
    QCOMPARE(label.text(), QString());
}

void HFrameLabelTest::anEmptyLabelShowsNothingEvenWithAnErrorPalette()
{
    QWidget window;
    QVBoxLayout* column = new QVBoxLayout(&window);
    HFrameLabel* label = new HFrameLabel;
    column->addWidget(label);
    label->setMinimumSize(100, 30);
    label->setPalette(Colors::makeError(label->palette()));
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));

    QCOMPARE(label->frameShape(), QFrame::NoFrame);
    const QColor surroundings = window.palette().color(QPalette::Window);
    QCOMPARE(background(*label), surroundings);
    // No pixel of the label differs from the window's background.
    const QImage empty = window.grab(label->geometry()).toImage();
    for (int y = 0; y < empty.height(); ++y) {
        for (int x = 0; x < empty.width(); ++x) {
            QCOMPARE(empty.pixelColor(x, y), surroundings);
        }
    }

    label->setText(QStringLiteral("x"));
    const QImage full = window.grab(label->geometry()).toImage();
    QCOMPARE(full.pixelColor(5, full.height() / 2), errorColor);
}

void HFrameLabelTest::theBackgroundColourIsVisibleOnlyIfTheLabelHasAText()
{
    HFrameLabel label;
    const QColor normal = background(label);
    label.setPalette(Colors::makeError(label.palette()));
    QCOMPARE(background(label), normal);
    label.setText(QStringLiteral("x"));
    QCOMPARE(background(label), errorColor);
    label.setText(QString());
    QCOMPARE(background(label), normal);
    label.setText(QStringLiteral("y"));
    QCOMPARE(background(label), errorColor);
}

void HFrameLabelTest::aNewPaletteOfALabelWithTextIsShownAtOnce()
{
    HFrameLabel label(QStringLiteral("x"));
    label.setPalette(Colors::makeError(label.palette()));
    QCOMPARE(background(label), errorColor);
    label.setPalette(Colors::makeWarning(label.palette()));
    QCOMPARE(background(label), QColor(Qt::yellow));
}

void HFrameLabelTest::theTextHasTheNormalColourIfNoPaletteIsSet()
{
    HFrameLabel label;
    const QColor normal = background(label);
    label.setText(QStringLiteral("x"));
    QCOMPARE(background(label), normal);
}

void HFrameLabelTest::theSizeHintHasSpaceForTheText()
{
    HFrameLabel label(QStringLiteral("Unlisted Actions"));
    const QSize text = label.findChild<QLabel*>()->sizeHint();
    const QSize frame(2 * (2 + label.frameWidth()), 2 * (2 + label.frameWidth()));
    QCOMPARE(label.sizeHint(), text + frame);
}

void HFrameLabelTest::markupIsShownAsPlainText()
{
    const QString text = QStringLiteral("<b>id</b>");
    HFrameLabel label(text);
    QVERIFY(label.sizeHint().width() > label.fontMetrics().horizontalAdvance(text));
}

QTEST_MAIN(HFrameLabelTest)
#include "HFrameLabelTest.moc"
