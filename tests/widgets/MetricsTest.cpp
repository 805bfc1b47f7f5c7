// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/Metrics.h"

#include <QtTest>
#include <QtWidgets>

class MetricsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aWindowMayUseNineTenthsOfTheScreen();
    void aColumnIsAsWideAsTheLetterN();
};

// The test runs on a platform without an X screen.
void MetricsTest::aWindowMayUseNineTenthsOfTheScreen()
{
    QCOMPARE(QGuiApplication::platformName(), QStringLiteral("offscreen"));
    const QSize screen = QGuiApplication::primaryScreen()->size();
    QVERIFY(screen.width() > 0);
    QCOMPARE(Metrics::maxWindowSize(), QSize(screen.width() * 9 / 10, screen.height() * 9 / 10));
}

void MetricsTest::aColumnIsAsWideAsTheLetterN()
{
    QFont font;
    font.setPixelSize(40);
    QTextLayout line(QString(50, QLatin1Char('n')), font);
    line.beginLayout();
    line.createLine();
    line.endLayout();
    // The width of the real line has fractions of pixels.
    QVERIFY(qAbs(line.lineAt(0).naturalTextWidth() - 50 * Metrics::columnWidth(QFontMetrics(font))) <= 25);
}

QTEST_MAIN(MetricsTest)
#include "MetricsTest.moc"
