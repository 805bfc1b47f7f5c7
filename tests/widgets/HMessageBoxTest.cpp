// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HMessageBox.h"

#include <QtTest>
#include <QtWidgets>

#include "widgets/Metrics.h"

class HMessageBoxTest : public QObject
{
    Q_OBJECT

private:
    static QLabel* show(HMessageBox& box)
    {
        box.show();
        if (!QTest::qWaitForWindowExposed(&box)) {
            qFatal("the box does not appear");
        }
        for (QLabel* label : box.findChildren<QLabel*>()) {
            if (label->text() == box.text()) {
                return label;
            }
        }
        qFatal("the text is not shown");
        return nullptr;
    }

private Q_SLOTS:
    void aMessageBoxShowsItsTextAsPlainText()
    {
        HMessageBox box(QMessageBox::Critical, "Title", "<b>bold</b> &amp;", QMessageBox::Ok, nullptr);
        QCOMPARE(box.textFormat(), Qt::PlainText);
        QCOMPARE(box.text(), QString("<b>bold</b> &amp;"));
        QCOMPARE(box.windowTitle(), QString("Title"));
        QVERIFY(box.button(QMessageBox::Ok) != nullptr);
    }

    void aWordThatFitsOnTheScreenIsNotCut()
    {
        QString word = "short";
        const int most = Metrics::maxWindowSize().width() - 150;
        QFontMetrics metrics{QApplication::font("QLabel")};
        while (metrics.horizontalAdvance(word + 'x') < most) {
            word += 'x';
        }
        HMessageBox box(QMessageBox::Critical, "Title", "Cannot read " + word, QMessageBox::Ok, nullptr);
        const QLabel* label = show(box);
        QTRY_VERIFY(label->width() >= metrics.horizontalAdvance(word));
        QVERIFY(label->height() >= label->heightForWidth(label->width()));

        // The same text is too wide for a QMessageBox, which cuts it off.
        QMessageBox plain(QMessageBox::Critical, "Title", "Cannot read " + word, QMessageBox::Ok);
        plain.show();
        QVERIFY(QTest::qWaitForWindowExposed(&plain));
        QVERIFY(plain.width() < metrics.horizontalAdvance(word));
    }

    void noBoxIsWiderThanTheScreen()
    {
        HMessageBox box(QMessageBox::Critical, "Title", QString(2000, 'x'), QMessageBox::Ok, nullptr);
        show(box);
        QVERIFY(box.width() <= Metrics::maxWindowSize().width());
    }

    void aBoxWithAnOrdinaryTextHasTheSizeOfAQMessageBox()
    {
        const QString text = QString("some words of a message ").repeated(12).trimmed();
        HMessageBox box(QMessageBox::Warning, "Title", text, QMessageBox::Ok, nullptr);
        show(box);
        QMessageBox plain(QMessageBox::Warning, "Title", text, QMessageBox::Ok);
        plain.show();
        QVERIFY(QTest::qWaitForWindowExposed(&plain));
        QCOMPARE(box.size(), plain.size());
    }
};

QTEST_MAIN(HMessageBoxTest)
#include "HMessageBoxTest.moc"
