// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <QLabel>
#include <QStyle>
#include <QStyleFactory>

#include <memory>

#include "widgets/HGroupBox.h"

namespace {

// The width of the dark area, in pixels, within the uppermost `rows` rows of pixels.
int inkWidth(QWidget& widget, int rows)
{
    const QImage image = widget.grab().toImage();
    int first = image.width();
    int last = -1;
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qGray(image.pixel(x, y)) < 128) {
                first = qMin(first, x);
                last = qMax(last, x);
            }
        }
    }
    return last - first + 1;
}

} // namespace

class HGroupBoxTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theBoxShowsTheWholeTitle_data();
    void theBoxShowsTheWholeTitle();
    void theBoxReturnsTheGivenTitle();
};

void HGroupBoxTest::theBoxShowsTheWholeTitle_data()
{
    QTest::addColumn<QString>("title");
    for (const char* title :
         {"Configuration File (expert)", "Datei (für Fachleute)", "Für Fachleute: Konfigurationsdatei",
          "iiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiii)"}) {
        QTest::newRow(title) << QString::fromUtf8(title);
    }
}

void HGroupBoxTest::theBoxShowsTheWholeTitle()
{
    QFETCH(QString, title);
    const std::unique_ptr<QStyle> style(QStyleFactory::create("Fusion"));
    QLabel label(title);
    HGroupBox box(title);
    for (QWidget* widget : {static_cast<QWidget*>(&label), static_cast<QWidget*>(&box)}) {
        widget->setStyle(style.get());
        widget->resize(600, 100);
    }
    label.setAlignment(Qt::AlignTop);
    const int rows = label.fontMetrics().height();
    QCOMPARE(inkWidth(box, rows), inkWidth(label, rows));
}

void HGroupBoxTest::theBoxReturnsTheGivenTitle()
{
    const HGroupBox box("Title");
    QCOMPARE(box.title(), QString("Title"));
}

QTEST_MAIN(HGroupBoxTest)
#include "HGroupBoxTest.moc"
