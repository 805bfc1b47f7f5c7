// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/LongLabel.h"

#include <QtTest>
#include <QtWidgets>

namespace {

QString longText(int lines)
{
    QString text;
    for (int i = 0; i < lines; ++i) {
        text += QString(i % 3, '\t') +
                QString("  line %1 Wij\u00e4 %2 f%3\n").arg(i).arg(QString(i % 70, 'x'), QString(i % 3, ' '));
    }
    return text;
}

// Returns a label of the base class that shows the same text with the same font.
std::unique_ptr<PlainLabel> usualLabel(const QString& text)
{
    auto label = std::make_unique<PlainLabel>(text);
    QFont unshaped;
    unshaped.setStyleStrategy(QFont::PreferNoShaping);
    label->setFont(unshaped);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

} // namespace

class LongLabelTest : public QObject
{
    Q_OBJECT

private:
    // Shows both labels below each other, each in a scroll area of the same size.
    void show(const QString& text)
    {
        window = std::make_unique<QWidget>();
        auto* column = new QVBoxLayout(window.get());
        label = new LongLabel(text);
        usual = usualLabel(text).release();
        for (QLabel* each : {static_cast<QLabel*>(label), static_cast<QLabel*>(usual)}) {
            auto* area = new QScrollArea;
            area->setFixedSize(400, 300);
            area->setWidget(each);
            column->addWidget(area);
        }
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window.get(), 30000));
    }
    static QImage visible(const QWidget* label) { return label->parentWidget()->grab().toImage(); }
    static void scrollTo(QWidget* label, int y)
    {
        auto* area = qobject_cast<QScrollArea*>(label->parentWidget()->parentWidget());
        area->verticalScrollBar()->setValue(y);
    }

    std::unique_ptr<QWidget> window;
    LongLabel* label = nullptr;
    PlainLabel* usual = nullptr;

private Q_SLOTS:
    void cleanup() { window.reset(); }

    void theLabelHasTheSizeOfAUsualLabel_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("family");
        QStringList families{QString()};
        families += QFontDatabase().families().mid(0, 12);
        for (const QString& family : qAsConst(families)) {
            const QByteArray name = family.toUtf8();
            QTest::newRow(("many lines " + name).constData()) << longText(300) << family;
            QTest::newRow(("one line " + name).constData()) << QString("f") << family;
            QTest::newRow(("blanks " + name).constData()) << QString("ab      \nabc\n\n") << family;
            QTest::newRow(("a wide last letter " + name).constData())
                << QString("xxif\nxxiii\nxxxi\n") << family;
        }
    }

    void theLabelHasTheSizeOfAUsualLabel()
    {
        QFETCH(QString, text);
        QFETCH(QString, family);
        const QFont before = QApplication::font();
        if (!family.isEmpty()) {
            QApplication::setFont(QFont(family, 13));
        }
        const bool isSuitable = LongLabel::isSuitable(text, QFont());
        const QSize size = LongLabel(text).sizeHint();
        const QSize expected = usualLabel(text)->sizeHint();
        QApplication::setFont(before);
        if (isSuitable) {
            QCOMPARE(size, expected);
        }
    }

    void theLabelLooksLikeAUsualLabel()
    {
        show(longText(2000));
        QCOMPARE(label->size(), usual->size());
        for (const int y : {0, 777, 20000, label->height()}) {
            scrollTo(label, y);
            scrollTo(usual, y);
            QCOMPARE(visible(label), visible(usual));
        }
        for (const int y : {0, 1500}) {
            label->setSelection(12, 3000);
            usual->setSelection(12, 3000);
            scrollTo(label, y);
            scrollTo(usual, y);
            QCOMPARE(visible(label), visible(usual));
        }
    }

    void keysSelectTheSameTextAsInAUsualLabel()
    {
        show(longText(400));
        QStringList lines;
        QStringList all;
        for (QLabel* each : {static_cast<QLabel*>(label), static_cast<QLabel*>(usual)}) {
            each->setFocus();
            each->setSelection(30, 4);
            for (int i = 0; i < 40; ++i) {
                QTest::keyClick(each, Qt::Key_Down, Qt::ShiftModifier);
            }
            QTest::keyClick(each, Qt::Key_End, Qt::ShiftModifier);
            lines.append(each->selectedText());
            QTest::keyClick(each, Qt::Key_A, Qt::ControlModifier);
            all.append(each->selectedText());
        }
        QCOMPARE(lines.at(0).count(QChar::ParagraphSeparator), 40);
        QCOMPARE(lines.at(0), lines.at(1));
        QCOMPARE(all.at(0).length(), label->text().length());
        QCOMPARE(all.at(0), all.at(1));
    }

    void theMouseSelectsTheSameTextAsInAUsualLabel()
    {
        show(longText(400));
        const int bottom = label->height();
        const QPair<QPoint, QPoint> drags[] = {{{5, 5}, {90, 200}},
                                               {{120, 100}, {33, 101}},
                                               {{50, 290}, {label->width() - 1, 10}},
                                               {{50, 60}, {20, -30}},
                                               {{50, 60}, {20, bottom + 50}}};
        for (const auto& drag : drags) {
            QStringList selected;
            for (QLabel* each : {static_cast<QLabel*>(label), static_cast<QLabel*>(usual)}) {
                QTest::mousePress(each, Qt::LeftButton, Qt::NoModifier, drag.first);
                QMouseEvent move(QEvent::MouseMove, drag.second, Qt::NoButton, Qt::LeftButton,
                                 Qt::NoModifier);
                QApplication::sendEvent(each, &move);
                QTest::mouseRelease(each, Qt::LeftButton, Qt::NoModifier, drag.second);
                selected.append(each->selectedText());
            }
            QVERIFY(!selected.at(0).isEmpty());
            QCOMPARE(selected.at(0), selected.at(1));
        }
    }

    void onlyVisibleLinesAreLaidOut()
    {
        show(longText(5000));
        const int lines = label->parentWidget()->height() / label->fontMetrics().lineSpacing() + 3;
        QVERIFY(label->layoutCount() > 5);
        QVERIFY2(label->layoutCount() <= lines, qPrintable(QString::number(label->layoutCount())));
        // A second paint event needs no further layout, and a scrolled label needs only the new lines.
        label->repaint();
        QVERIFY(label->layoutCount() <= lines);
        scrollTo(label, label->height());
        label->repaint();
        QVERIFY(label->layoutCount() <= 2 * lines);
        // Neither do the pointer and the keys need the other lines.
        QTest::mouseMove(label, QPoint(10, label->height() - 10));
        label->setSelection(label->text().indexOf("line 2500"), 9);
        QTest::keyClick(label, Qt::Key_Down, Qt::ShiftModifier);
        QVERIFY(label->layoutCount() <= 3 * lines);
        QCOMPARE(label->selectedText().count(QChar::ParagraphSeparator), 1);
    }

    void aChangedFontChangesTheSize()
    {
        show(longText(300));
        const QSize before = label->sizeHint();
        for (QLabel* each : {static_cast<QLabel*>(label), static_cast<QLabel*>(usual)}) {
            QFont font = each->font();
            font.setPointSize(20);
            each->setFont(font);
            each->resize(each->sizeHint());
        }
        QVERIFY(label->sizeHint().width() > before.width());
        QCOMPARE(label->sizeHint(), usual->sizeHint());
        QCOMPARE(visible(label), visible(usual));
    }

    void textsThatNeedShapingAreNotSuitable()
    {
        const QFont font;
        QVERIFY(LongLabel::isSuitable("ASCII ~\n", font));
        QVERIFY(LongLabel::isSuitable("\t\tASCII\n\tmore\n\t\n\t", font));
        QVERIFY(LongLabel::isSuitable(QString::fromUtf8("f\u00fcr \u00c4pfel\n"), font));
        for (const char* text :
             {"a\tb", "\n \t", "a\rb", "\x01", "\u00a0", "\u00ad", "\u062a\u062d", "a\u0308", "\u2028"}) {
            QVERIFY2(!LongLabel::isSuitable(QString::fromUtf8(text), font), text);
        }
    }
};

QTEST_MAIN(LongLabelTest)
#include "LongLabelTest.moc"
