// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/WidthEstimate.h"

#include <QApplication>
#include <QFontMetrics>
#include <QRandomGenerator>
#include <QStringList>
#include <QtTest>

#include <algorithm>

using namespace PackageTable;

namespace {

int widthOf(const QString& text)
{
    const QFontMetrics metrics(QApplication::font());
#if QT_VERSION >= QT_VERSION_CHECK(5, 11, 0)
    return metrics.horizontalAdvance(text);
#else
    return metrics.width(text);
#endif
}

std::vector<int> widestOf(const QStringList& texts)
{
    WidthEstimate estimate(QApplication::font());
    WidestRows widest(estimate);
    for (int row = 0; row < texts.count(); ++row) {
        widest.add(row, texts.at(row));
    }
    return widest.rows();
}

} // namespace

class WidthEstimateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theEstimateFindsTheRowWithTheWidestText();
    void theEstimateFindsOnlyOneOfSeveralEqualTexts();
    void theEstimateFindsAllTextsWithLettersBeyondAscii();
    void afterTheEndOfMeasuringATextWithOtherPairsOfCharactersHasNoEstimate();
    void anEmptyTextHasNoWidth();
};

void WidthEstimateTest::theEstimateFindsTheRowWithTheWidestText()
{
    QRandomGenerator random(7); // always the same texts
    for (int round = 0; round < 50; ++round) {
        QStringList texts;
        int widest = 0;
        for (int i = 0; i < 40; ++i) {
            QString text;
            for (int length = random.bounded(10, 20); length > 0; --length) {
                text += QChar(random.bounded(' ', '~' + 1));
            }
            texts << text;
            widest = qMax(widest, widthOf(text));
        }
        int found = 0;
        for (const int row : widestOf(texts)) {
            found = qMax(found, widthOf(texts.at(row)));
        }
        QCOMPARE(found, widest);
    }
}

void WidthEstimateTest::theEstimateFindsOnlyOneOfSeveralEqualTexts()
{
    QCOMPARE(widestOf({"kernel", "i", "kernel", "kernel"}), std::vector<int>{0});
    const QString arabic = QString::fromUtf8("\u0643\u062a\u0627\u0628");
    QCOMPARE(widestOf({arabic, arabic}), std::vector<int>{0});
}

void WidthEstimateTest::theEstimateFindsAllTextsWithLettersBeyondAscii()
{
    const QString arabic = QString::fromUtf8("\u0643\u062a");
    const QString umlaut = QString::fromUtf8("\u00fc");
    QCOMPARE(widestOf({"kernel", arabic, "i", umlaut}), (std::vector<int>{0, 1, 3}));
}

void WidthEstimateTest::afterTheEndOfMeasuringATextWithOtherPairsOfCharactersHasNoEstimate()
{
    WidthEstimate estimate(QApplication::font());
    WidestRows widest(estimate);
    widest.add(0, "kernel");
    const qreal kernel = estimate("kernel");
    const qreal margin = estimate.margin();
    estimate.endMeasuring();
    QCOMPARE(estimate("kernel"), kernel);
    QCOMPARE(estimate.margin(), margin);
    QVERIFY(estimate("kern") < kernel);
    QCOMPARE(estimate("lenrek"), WidthEstimate::unknown);
    QCOMPARE(estimate("i"), WidthEstimate::unknown);
    widest.add(1, "kern");
    widest.add(2, "lenrek");
    QCOMPARE(widest.rows(), (std::vector<int>{0, 2}));
}

void WidthEstimateTest::anEmptyTextHasNoWidth()
{
    WidthEstimate estimate(QApplication::font());
    QCOMPARE(estimate(QString()), 0.0);
    QVERIFY(widestOf({}).empty());
}

QTEST_MAIN(WidthEstimateTest)
#include "WidthEstimateTest.moc"
