// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/Metrics.h"

#include <QtTest>
#include <QtWidgets>

class MetricsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theMaximumWindowSizeIsNineTenthsOfTheScreen();
    void theWidthOfATextColumnIsTheWidthOfTheLetterN();
};

// The sizes come from Qt, so they also exist on a platform without an X server.
void MetricsTest::theMaximumWindowSizeIsNineTenthsOfTheScreen()
{
    QCOMPARE(QGuiApplication::platformName(), QStringLiteral("offscreen"));
    const QSize screen = QGuiApplication::primaryScreen()->size();
    QVERIFY(screen.width() > 0);
    QCOMPARE(Metrics::maxWindowSize(), QSize(screen.width() * 9 / 10, screen.height() * 9 / 10));
}

void MetricsTest::theWidthOfATextColumnIsTheWidthOfTheLetterN()
{
    QFont font;
    font.setPixelSize(40);
    QTextLayout line(QString(50, QLatin1Char('n')), font);
    line.beginLayout();
    line.createLine();
    line.endLayout();
    // The real line has a fractional width, whereas columnWidth() is rounded to whole pixels: 50 columns may
    // differ by up to 25 pixels.
    QVERIFY(qAbs(line.lineAt(0).naturalTextWidth() - 50 * Metrics::columnWidth(QFontMetrics(font))) <= 25);
}

QTEST_MAIN(MetricsTest)
#include "MetricsTest.moc"
