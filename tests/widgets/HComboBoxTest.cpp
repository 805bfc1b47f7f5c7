// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <QApplication>
#include <QStyleFactory>

#include <memory>

#include "widgets/HComboBox.h"

namespace {

// For each column of pixels between the frame and `end`, whether the text has a dark pixel there.
QVector<bool> inkOf(QWidget& widget, int end)
{
    const QImage image = widget.grab().toImage();
    const int half = widget.fontMetrics().height() / 2;
    constexpr int frame = 5;
    QVector<bool> found;
    for (int x = frame; x < end; ++x) {
        bool dark = false;
        for (int y = image.height() / 2 - half; y < image.height() / 2 + half; ++y) {
            dark = dark || qGray(image.pixel(x, y)) < 128;
        }
        found << dark;
    }
    return found;
}

} // namespace

class HComboBoxTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theBoxShowsTheWholeTextOfItsLongestItem_data();
    void theBoxShowsTheWholeTextOfItsLongestItem();
};

void HComboBoxTest::theBoxShowsTheWholeTextOfItsLongestItem_data()
{
    QTest::addColumn<QString>("text");
    for (const char* text : {"Suchen", "Mm", "View Updatable", "Aktualisierbare anzeigen"}) {
        QTest::newRow(text) << QString::fromUtf8(text);
    }
}

void HComboBoxTest::theBoxShowsTheWholeTextOfItsLongestItem()
{
    QFETCH(QString, text);
    const std::unique_ptr<QStyle> style(QStyleFactory::create("Fusion"));
    HComboBox box;
    box.setStyle(style.get());
    box.addItems({"x", text});
    box.setCurrentIndex(1);
    for (const QSize& size : {box.sizeHint(), box.minimumSizeHint()}) {
        box.resize(size + QSize(300, 0));
        const int room = size.width() + 200; // the arrow of the wide box is farther right
        const int end = 5 + inkOf(box, room).lastIndexOf(true) + 1;
        const QVector<bool> whole = inkOf(box, end);
        QVERIFY(whole.count(true) > 5);
        box.resize(size);
        QCOMPARE(inkOf(box, end), whole);
    }
}

int main(int argc, char** argv)
{
    qputenv("QT_FONT_DPI", "192"); // at 96 dots per inch, Qt's own box is wide enough
    QApplication app(argc, argv);
    HComboBoxTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "HComboBoxTest.moc"
