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

    static QString manyLines()
    {
        QStringList lines;
        for (int i = 0; i < 300; ++i) {
            lines.append(QString("<i>%1</i> package scripts have failed").arg(i));
        }
        return lines.join('\n');
    }

    // Returns whether the last line of the text is inside the visible part of the edit.
    static bool showsEnd(const QTextEdit* edit)
    {
        QTextCursor cursor = edit->textCursor();
        cursor.movePosition(QTextCursor::End);
        return edit->viewport()->rect().intersects(edit->cursorRect(cursor));
    }

    void aTextThatIsHigherThanTheScreenScrolls_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("many lines") << manyLines();
        QTest::newRow("one long paragraph")
            << QString("<b>some</b> words of a message ").repeated(1000).trimmed();
    }

    void aTextThatIsHigherThanTheScreenScrolls()
    {
        QFETCH(QString, text);
        HMessageBox box(QMessageBox::Critical, "Title", text, QMessageBox::Yes | QMessageBox::No, nullptr);
        box.setDefaultButton(QMessageBox::No);
        box.setEscapeButton(QMessageBox::No);
        box.show();
        QVERIFY(QTest::qWaitForWindowActive(&box));
        const QSize most = Metrics::maxWindowSize();
        QVERIFY(box.width() <= most.width());
        QVERIFY(box.height() <= most.height());
        QVERIFY(box.height() > most.height() / 2);
        const auto* edit = box.findChild<QTextEdit*>();
        QVERIFY(edit != nullptr && edit->isVisible());
        QCOMPARE(edit->toPlainText(), text);
        QVERIFY(edit->isReadOnly());
        QCOMPARE(box.text(), text);
        for (const QLabel* label : box.findChildren<QLabel*>()) {
            QVERIFY2(!label->isVisible() || label->text() != text, "the text is visible twice");
        }
        // The focus is on the default button, so the scroll keys come from there.
        QCOMPARE(QApplication::focusWidget(), static_cast<QWidget*>(box.button(QMessageBox::No)));
        QVERIFY(!showsEnd(edit));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_End);
        QVERIFY(showsEnd(edit));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Home);
        QVERIFY(!showsEnd(edit));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_PageDown);
        QVERIFY(edit->verticalScrollBar()->value() > 0);
        for (QAbstractButton* button : box.buttons()) {
            QVERIFY(box.rect().contains(QRect(button->mapTo(&box, QPoint()), button->size())));
        }
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        QCOMPARE(box.result(), static_cast<int>(QMessageBox::No));
    }

    void theFindBarSelectsAMatchInATextThatScrolls()
    {
        HMessageBox box(QMessageBox::Warning, "Title", manyLines(), QMessageBox::Ok, nullptr);
        box.show();
        QVERIFY(QTest::qWaitForWindowActive(&box));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_F, Qt::ControlModifier);
        auto* field = qobject_cast<QLineEdit*>(QApplication::focusWidget());
        QVERIFY(field != nullptr);
        QTest::keyClicks(field, "299");
        const auto* edit = box.findChild<QTextEdit*>();
        QTRY_COMPARE(edit->textCursor().selectedText(), QString("299"));
        QVERIFY(showsEnd(edit));
        QTest::qWait(100); // long enough for the window manager to resize the box
        QVERIFY(box.height() <= Metrics::maxWindowSize().height());
        QVERIFY(box.height() > Metrics::maxWindowSize().height() / 2);
    }

    void aTextThatFitsOnTheScreenDoesNotScroll()
    {
        HMessageBox box(QMessageBox::Warning, "Title", QString("a line\n").repeated(20), QMessageBox::Ok,
                        nullptr);
        show(box);
        QVERIFY(box.findChild<QTextEdit*>() == nullptr);
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
