// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/DescribeDialog.h"

#include <QtTest>
#include <QtWidgets>

#include <algorithm>

#include "app/base/Fonts.h"
#include "tests/packagetable/ShownDescription.h"
#include "tests/support/Buttons.h"
#include "widgets/Metrics.h"

class DescribeDialogTest : public ShownDescription
{
    Q_OBJECT

private Q_SLOTS:
    void theDialogIsModalAndHasTheExpectedTitle();
    void theHeaderShowsThePackageName();
    void longTextsAreWrappedAndCanBeScrolled();
    void aTooLongWordDoesNotWidenOtherValues();
    void linesAreNotWrappedIfTheScreenIsWideEnough();
    void theDescriptionOfAPackageWithManyVersionsFitsTheScreen();
    void theDescriptionShowsThousandsOfDependencies();
    void navigationKeysScrollALongDescription();
    void theHomeAndEndKeysScrollTheInnerAndTheOuterAreaToTheirEnds();
    void resizingAnOpenDescriptionDoesNotCallTheScript();
    void theCloseButtonClosesTheDialog();
    void escapeClosesTheDialog();
    void closingTheDialogDeletesItsContents();
    void aSecondDescriptionReplacesTheFirst();
    void theDialogIsAsLargeAsItsContents();
};

void DescribeDialogTest::theDialogIsModalAndHasTheExpectedTitle()
{
    available({});
    describe("it", [this](Dialog& shown) {
        QCOMPARE(shown.windowTitle(), QString("VYRE Package Description"));
        QVERIFY(shown.isModal());
        QCOMPARE(shown.parentWidget(), window.get());
    });
}

void DescribeDialogTest::theHeaderShowsThePackageName()
{
    available({});
    describe("it", [](Dialog& shown) {
        const QList<HScrollArea*> areas = areasOf(shown);
        QCOMPARE(areas.count(), 1);
        QList<QLabel*> above;
        for (QLabel* label : shown.findChildren<QLabel*>()) {
            if (!areas.first()->isAncestorOf(label)) {
                above.append(label);
            }
        }
        QCOMPARE(above.count(), 1);
        QCOMPARE(above.first()->text(), QString("it"));
        QCOMPARE(above.first()->font(), Fonts::makeHeader(QApplication::font("QLabel")));
        QVERIFY(above.first()->mapTo(&shown, QPoint()).y() < areas.first()->mapTo(&shown, QPoint()).y());
    });
}

void DescribeDialogTest::longTextsAreWrappedAndCanBeScrolled()
{
    const QString text = QStringLiteral("word and word ").repeated(2000).trimmed();
    available({{"description", text}, {"summary", "short"}});
    describe("it", [text](Dialog& shown) {
        const HScrollArea* area = areasOf(shown).first();
        const QLabel* value = valueOf(area, "Description");
        QCOMPARE(value->text(), text);
        QVERIFY(!area->horizontalScrollBar()->isVisible());
        QVERIFY(area->verticalScrollBar()->isVisible());
        QVERIFY(value->height() >= value->heightForWidth(value->width()));
        QVERIFY(value->mapTo(area->widget(), QPoint(value->width(), 0)).x() <= area->viewport()->width());
        QCOMPARE(area->sizeHint().height(), 24 * area->fontMetrics().height());
        QVERIFY(area->sizeHint().width() <= 80 * Metrics::columnWidth(area->fontMetrics()));
    });
}

void DescribeDialogTest::aTooLongWordDoesNotWidenOtherValues()
{
    const QString word = QStringLiteral("abcdefghij").repeated(200);
    available({{"description", QStringLiteral("word and word ").repeated(50)},
               {"url", word},
               {"provides", QJsonArray{word, "short"}}});
    describe("it", [word](Dialog& shown) {
        const HScrollArea* area = areasOf(shown).first();
        const QLabel* value = valueOf(area, "Description");
        QVERIFY(value->mapTo(area->widget(), QPoint(value->width(), 0)).x() <= area->viewport()->width());
        QVERIFY(value->width() > area->viewport()->width() / 2);
        QVERIFY(value->height() >= value->heightForWidth(value->width()));
        // The label is wide enough for the whole word, so the user can scroll to its end.
        QVERIFY(area->horizontalScrollBar()->isVisible());
        QCOMPARE(valueOf(area, "URL")->text(), word);
        QVERIFY(valueOf(area, "URL")->width() >= area->fontMetrics().horizontalAdvance(word));
        QVERIFY(valueOf(area, "Provides")->width() >= area->fontMetrics().horizontalAdvance(word));
        QVERIFY(shown.width() <= Metrics::maxWindowSize().width());
    });
}

void DescribeDialogTest::linesAreNotWrappedIfTheScreenIsWideEnough()
{
    available({{"summary", "It has a summary of sixty letters, or not many more than that."}});
    describe("it", [](Dialog& shown) {
        const QLabel* value = valueOf(areasOf(shown).first(), "Summary");
        QVERIFY(value->height() < 2 * value->fontMetrics().lineSpacing());
    });
}

void DescribeDialogTest::theDescriptionOfAPackageWithManyVersionsFitsTheScreen()
{
    QJsonArray versions;
    for (int i = 0; i < 30; ++i) {
        versions.append(S::package("it", {{"repoid", "@System"}, {"version", QString::number(i + 1)}}));
    }
    table->collect({}, versions, {});
    describe("it", [](Dialog& shown) {
        const QList<HScrollArea*> areas = areasOf(shown);
        QCOMPARE(areas.count(), 30);
        QVERIFY(shown.height() <= Metrics::maxWindowSize().height());
        const QPushButton* close = buttonOf(&shown, "Close");
        QVERIFY(shown.rect().contains(QRect(close->mapTo(&shown, QPoint()), close->size())));
        // The user can scroll to the last area. The first area shows at least 12 lines, and each of the other
        // areas shows all its lines.
        QScrollArea* outer = nullptr;
        for (QScrollArea* area : shown.findChildren<QScrollArea*>()) {
            outer = area->widget()->isAncestorOf(areas.first()) ? area : outer;
        }
        QVERIFY(outer != nullptr && outer->verticalScrollBar()->isVisible());
        const auto endIsVisible = [outer, &areas, &shown] {
            outer->verticalScrollBar()->setValue(outer->verticalScrollBar()->maximum());
            const QPoint end = areas.last()->mapTo(&shown, QPoint(0, areas.last()->height() - 1));
            return outer->rect().contains(outer->mapFrom(&shown, end));
        };
        QTRY_VERIFY(endIsVisible());
        QVERIFY(areas.first()->height() >= 12 * areas.first()->fontMetrics().height());
        for (const HScrollArea* area : areas.mid(1)) {
            QVERIFY(!area->verticalScrollBar()->isVisible());
        }
    });
}

void DescribeDialogTest::theDescriptionShowsThousandsOfDependencies()
{
    QJsonArray names;
    for (int i = 0; i < 20000; ++i) {
        names.append(QStringLiteral("symbol(number_%1) = 0x%1").arg(i, 8, 16, QLatin1Char('0')));
    }
    available({{"provides", names}});
    describe("it", [](Dialog& shown) {
        const HScrollArea* area = areasOf(shown).first();
        const QLabel* value = valueOf(area, "Provides");
        QCOMPARE(value->text().count('\n'), 19999);
        QVERIFY(value->height() >= 20000 * value->fontMetrics().height());
    });
}

void DescribeDialogTest::navigationKeysScrollALongDescription()
{
    QJsonArray names;
    for (int i = 0; i < 500; ++i) {
        names.append(QStringLiteral("symbol_%1").arg(i));
    }
    available({{"provides", names}});
    describe("it", [](Dialog& shown) {
        const QScrollBar* bar = areasOf(shown).first()->verticalScrollBar();
        QTRY_VERIFY(bar->maximum() > 0);
        QTRY_VERIFY(buttonOf(&shown, "Close")->hasFocus());
        QTest::keyClick(shown.windowHandle(), Qt::Key_End);
        QCOMPARE(bar->value(), bar->maximum());
        QTest::keyClick(shown.windowHandle(), Qt::Key_Home, Qt::ControlModifier);
        QCOMPARE(bar->value(), 0);
        QTest::keyClick(shown.windowHandle(), Qt::Key_PageDown);
        QCOMPARE(bar->value(), bar->pageStep());
        QVERIFY(shown.isVisible());
    });
}

void DescribeDialogTest::theHomeAndEndKeysScrollTheInnerAndTheOuterAreaToTheirEnds()
{
    QJsonArray names;
    for (int i = 0; i < 500; ++i) {
        names.append(QStringLiteral("symbol_%1").arg(i));
    }
    available({{"provides", names}});
    describe("it", [](Dialog& shown) {
        shown.resize(300, 200); // lower than the smallest height of the first area
        const auto bars = [&shown] {
            QList<QScrollBar*> found;
            for (const HScrollArea* area : shown.findChildren<HScrollArea*>()) {
                if (area->verticalScrollBar()->maximum() > 0) {
                    found << area->verticalScrollBar();
                }
            }
            return found;
        };
        QTRY_COMPARE(bars().size(), 2);
        // The layout of the small window may need several rounds of the event loop, so press the key again.
        const auto press = [&shown, &bars](Qt::Key key, Qt::KeyboardModifiers modifiers) {
            QTest::keyClick(shown.windowHandle(), key, modifiers);
            const QList<QScrollBar*> found = bars();
            return std::all_of(found.begin(), found.end(), [key](const QScrollBar* bar) {
                return bar->value() == (key == Qt::Key_End ? bar->maximum() : 0);
            });
        };
        for (const Qt::KeyboardModifier modifier : {Qt::NoModifier, Qt::ControlModifier}) {
            QTRY_VERIFY(press(Qt::Key_End, modifier));
            QTRY_VERIFY(press(Qt::Key_Home, modifier));
        }
        QTest::keyClick(shown.windowHandle(), Qt::Key_PageDown);
        QVERIFY(bars().at(0)->value() > 0);
        QCOMPARE(bars().at(1)->value(), 0);
    });
}

void DescribeDialogTest::resizingAnOpenDescriptionDoesNotCallTheScript()
{
    table->collect({}, {}, {S::package("it", {{"watched", true}})});
    dialog->config(&table->yumIO, table->entry("it"), conf.get());
    table->standIn.forgetCalls();
    QTimer::singleShot(0, this, [this] {
        QVERIFY(QTest::qWaitForWindowExposed(dialog.get()));
        dialog->resize(dialog->size() + QSize(100, 100));
        dialog->repaint();
        QTest::qWait(100);
        dialog->close();
    });
    dialog->exec();
    QCOMPARE(table->standIn.calls(), QStringList());
}

void DescribeDialogTest::theCloseButtonClosesTheDialog()
{
    available({});
    describe("it", [](Dialog& shown) {
        press(buttonOf(&shown, "Close"));
        QVERIFY(!shown.isVisible());
    });
    QCOMPARE(dialog->result(), int(QDialog::Accepted));
}

void DescribeDialogTest::escapeClosesTheDialog()
{
    available({});
    describe("it", [](Dialog& shown) {
        QTest::keyClick(shown.windowHandle(), Qt::Key_Escape);
        QVERIFY(!shown.isVisible());
    });
    QCOMPARE(dialog->result(), int(QDialog::Rejected));
}

void DescribeDialogTest::closingTheDialogDeletesItsContents()
{
    table->collectUsual();
    repo("updates", "", "http://h", "");
    describe("many", [](Dialog& shown) {
        textBehind(buttonBeside(shown, "Files"));
        withDialog<RepoDialog>([&shown] { press(buttonBeside(shown, "Repository")); }, [](RepoDialog&) {});
        QVERIFY(!shown.findChildren<TextDialog*>().isEmpty());
        QVERIFY(!shown.findChildren<RepoDialog*>().isEmpty());
    });
    QCOMPARE(dialog->findChildren<QLabel*>().count(), 0);
    QCOMPARE(dialog->findChildren<QScrollArea*>().count(), 0);
    QCOMPARE(dialog->findChildren<QDialog*>().count(), 0);
    QCOMPARE(dialog->findChildren<QPushButton*>().count(), 1);
}

void DescribeDialogTest::aSecondDescriptionReplacesTheFirst()
{
    table->collectUsual();
    describe("many", [](Dialog& shown) { QCOMPARE(areasOf(shown).count(), 3); });
    // If config() is called a second time before the first description is shown, only the second description
    // appears.
    dialog->config(&table->yumIO, table->entry("many"), conf.get());
    describe("shell", [](Dialog& shown) {
        QCOMPARE(areasOf(shown).count(), 1);
        QStringList texts;
        for (const QLabel* label : shown.findChildren<QLabel*>()) {
            texts << label->text();
        }
        QVERIFY(texts.contains("shell"));
        QVERIFY(!texts.contains("many"));
    });
}

void DescribeDialogTest::theDialogIsAsLargeAsItsContents()
{
    table->collect({}, {}, {S::package("it", {{"description", QStringLiteral("word ").repeated(500)}})},
                   {S::group("Void")});
    QSize large;
    describe("it", [&large](Dialog& shown) { large = shown.size(); });
    describe("Void", [large](Dialog& shown) {
        QVERIFY(shown.width() < large.width());
        QVERIFY(shown.height() < large.height() / 2);
    });
}

QTEST_MAIN(DescribeDialogTest)
#include "DescribeDialogTest.moc"
