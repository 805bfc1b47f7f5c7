// SPDX-License-Identifier: GPL-2.0-or-later

#include <algorithm>
#include <random>

#include "tests/packagetable/ShownView.h"

using namespace PackageTable;

// Tests of the columns: sorting, moving, and fitting their widths.
class ViewColumnsTest : public ShownView
{
    Q_OBJECT

private Q_SLOTS:
    void theTableIsSortedByKindAtFirst();
    void aSecondClickOnAHeaderReversesTheSortOrder();
    void aClickOnTheHeaderOfTheSortedColumnReversesTheOrder();
    void theUserCanMoveColumns();
    void fittedColumnsAreAlsoWideEnoughForUnlistedRecords();
    void fittingTheColumnsKeepsTheFilterAndTheSelection();
    void fittedColumnsAreAsWideAsTheirWidestCell_data();
    void fittedColumnsAreAsWideAsTheirWidestCell();
    void theWidthOfAFittedColumnIncludesKerning();
    void theWidthOfAFittedColumnIncludesTheWholeLastLetter();
    void theWidthOfAFittedColumnTakesLigaturesIntoAccount_data();
    void theWidthOfAFittedColumnTakesLigaturesIntoAccount();
    void theWidthOfAFittedColumnIncludesControlCharacters();
    void theWidthHintOfEachColumnIsZeroIfTheTableIsEmpty();

private:
    void compareWithEveryCellMeasured();
};

void ViewColumnsTest::theTableIsSortedByKindAtFirst()
{
    View fresh(&shown->model, &shown->proxy);
    QCOMPARE(fresh.horizontalHeader()->sortIndicatorSection(), int(KindColumn));
    QCOMPARE(fresh.horizontalHeader()->sortIndicatorOrder(), Qt::AscendingOrder);
    QVERIFY(fresh.horizontalHeader()->isSortIndicatorShown());
    QCOMPARE(shown->proxy.filterKeyColumn(), int(KindColumn));
    QCOMPARE(names(shown->proxy), (QStringList{"office", "Editors", "Games", "Tools", "editor", "kernel",
                                               "lib", "lib", "many", "shell", "tool"}));
}

void ViewColumnsTest::aSecondClickOnAHeaderReversesTheSortOrder()
{
    QHeaderView* header = view->horizontalHeader();
    for (const int column : {SizeColumn, VersionColumn, StateColumn, ActionColumn}) {
        const QPoint place(header->sectionViewportPosition(column) + header->sectionSize(column) / 2,
                           header->height() / 2);
        shown->click(header->viewport(), place);
        QCOMPARE(header->sortIndicatorSection(), column);
        QCOMPARE(shown->proxy.sortColumn(), column);
        QCOMPARE(shown->proxy.sortOrder(), Qt::AscendingOrder);
        QCOMPARE(shown->proxy.filterKeyColumn(), column);
        const QStringList ascending = names(shown->proxy);
        shown->click(header->viewport(), place);
        QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
        QCOMPARE(shown->proxy.sortOrder(), Qt::DescendingOrder);
        QStringList reversed = names(shown->proxy);
        std::reverse(reversed.begin(), reversed.end());
        QCOMPARE(reversed, ascending);
        shown->click(header->viewport(), place);
        QCOMPARE(names(shown->proxy), ascending);
    }
}

void ViewColumnsTest::aClickOnTheHeaderOfTheSortedColumnReversesTheOrder()
{
    view->HTableView::sortByColumn(KindColumn, Qt::AscendingOrder);
    QHeaderView* header = view->horizontalHeader();
    shown->click(header->viewport(), QPoint(header->sectionViewportPosition(KindColumn) + 20, 5));
    QCOMPARE(shown->proxy.sortColumn(), int(KindColumn));
    QCOMPARE(shown->proxy.sortOrder(), Qt::DescendingOrder);
}

void ViewColumnsTest::theUserCanMoveColumns()
{
    QHeaderView* header = view->horizontalHeader();
    const int y = header->height() / 2;
    const auto at = [header, y](int column) {
        return QPoint(header->sectionViewportPosition(column) + header->sectionSize(column) / 2, y);
    };
    QWindow* window = shown->window.windowHandle();
    const auto inWindow = [this, header](const QPoint& place) {
        return header->viewport()->mapTo(&shown->window, place);
    };
    QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, inWindow(at(NameColumn)));
    QTest::mouseMove(window, inWindow(at(NameColumn) - QPoint(40, 0)));
    QTest::mouseMove(window, inWindow(at(StateColumn)));
    QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, inWindow(at(StateColumn)));
    QVERIFY(header->visualIndex(NameColumn) < header->visualIndex(KindColumn));
}

void ViewColumnsTest::fittedColumnsAreAlsoWideEnoughForUnlistedRecords()
{
    table->collect({}, {},
                   {StandIn::package("short"), StandIn::package("a-name-much-longer-than-the-other-one")});
    shown->model.reset();
    view->resizeColumnsToContents();
    const int width = view->columnWidth(NameColumn);
    shown->proxy.setFilterRegExp("short");
    QCOMPARE(shown->proxy.rowCount(), 1);
    view->setColumnWidth(NameColumn, 10);
    view->resizeColumnsToContents();
    QCOMPARE(view->columnWidth(NameColumn), width);
    QVERIFY(width > view->sizeHintForColumn(NameColumn) + 50);
}

void ViewColumnsTest::fittingTheColumnsKeepsTheFilterAndTheSelection()
{
    shown->proxy.setFilterRegExp("tool|many");
    shown->select({"tool"});
    view->resizeColumnsToContents();
    QVERIFY(shown->proxy.getFilter());
    QCOMPARE(sortedNames(shown->proxy), (QStringList{"many", "tool"}));
    QCOMPARE(view->selectedRows().count(), 1);
    shown->proxy.setFilter(false);
    view->resizeColumnsToContents();
    QVERIFY(!shown->proxy.getFilter());
}

// Compares the widths of the columns with the widths in a plain table, which measures every cell.
void ViewColumnsTest::compareWithEveryCellMeasured()
{
    HTableView plain(QStyleOptionViewItem::Left, 1, 1);
    plain.setModel(&shown->model);
    plain.setShowGrid(false);
    plain.setFont(view->font());
    plain.setIconSize(view->iconSize());
    // The view must find the widest cell in every sort order.
    for (const Qt::SortOrder order : {Qt::AscendingOrder, Qt::DescendingOrder}) {
        shown->proxy.sort(NameColumn, order);
        for (int column = 0; column < ColumnCount; ++column) {
            QCOMPARE(view->sizeHintForColumn(column), plain.sizeHintForColumn(column));
        }
    }
    QVERIFY(plain.sizeHintForColumn(ActionColumn) > 0);
    QVERIFY(plain.sizeHintForColumn(NameColumn) > 0);
}

void ViewColumnsTest::fittedColumnsAreAsWideAsTheirWidestCell_data()
{
    QTest::addColumn<QFont>("font");
    QTest::newRow("default font") << QApplication::font();
    for (const char* family : {"DejaVu Sans", "DejaVu Serif", "Noto Sans", "DejaVu Sans Mono"}) {
        for (const int size : {7, 9, 14}) {
            QTest::addRow("%s %d", family, size) << QFont(QString::fromLatin1(family), size);
        }
    }
}

void ViewColumnsTest::fittedColumnsAreAsWideAsTheirWidestCell()
{
    QFETCH(QFont, font);
    view->setFont(font);
    std::mt19937 random(1);
    for (int round = 0; round < 5; ++round) {
        QJsonArray packages;
        for (int i = 0; i < 60; ++i) {
            QString name;
            for (unsigned int letters = 1 + random() % 60; letters > 0; --letters) {
                // The font has kerning for some pairs of these letters. One name in ten also has letters
                // beyond ASCII.
                const char kerned[] = "AVTiljWy.,-rfoLTo1479_JQ";
                name += i % 10 == 0 && random() % 4 == 0
                            ? QChar(0xe4 + static_cast<int>(random() % 20))
                            : QLatin1Char(kerned[random() % (sizeof kerned - 1)]);
            }
            packages.append(StandIn::package(name, {{"version", QString::number(random() % 100000)},
                                                    {"size", int(random() % 100000000)},
                                                    {"buildtime", int(random() % 2000000000)},
                                                    {"arch", i % 3 == 0 ? "noarch" : "x86_64"}}));
        }
        table->collect({}, {packages.at(0), packages.at(1)}, packages, {StandIn::group("Group")});
        shown->model.reset();
        compareWithEveryCellMeasured();
    }
}

void ViewColumnsTest::theWidthOfAFittedColumnIncludesKerning()
{
    // The test looks for the pair of letters that kerning moves apart the most. A text that repeats this pair
    // is wider than all its letters together.
    const QFontMetricsF metrics(view->font());
    QString apart;
    qreal most = 0;
    for (char first = '!'; first <= '~'; ++first) {
        for (char second = '!'; second <= '~'; ++second) {
            const QString pair = QString(QLatin1Char(first)) + QLatin1Char(second);
            const qreal more = metrics.horizontalAdvance(pair) - metrics.horizontalAdvance(pair.at(0)) -
                               metrics.horizontalAdvance(pair.at(1));
            if (more > most) {
                most = more;
                apart = pair;
            }
        }
    }
    QVERIFY2(most > 0, "this font moves no letters apart");
    for (int pairs = 20; pairs <= 200; pairs += 20) {
        const QString kerned = apart.repeated(pairs);
        const qreal single =
            pairs * (metrics.horizontalAdvance(apart.at(0)) + metrics.horizontalAdvance(apart.at(1)));
        // These texts have no kerning. Some of them are narrower than the kerned text, and some are wider.
        QJsonArray packages{StandIn::package(kerned)};
        const QString unit = QStringLiteral("H");
        const qreal narrowest = single - 40;
        const qreal widest = single + pairs * most + 40;
        for (int step = 0; narrowest + 10 * step < widest; ++step) {
            const qreal width = narrowest + 10 * step;
            packages.append(
                StandIn::package(unit.repeated(static_cast<int>(width / metrics.horizontalAdvance(unit)))));
        }
        while (packages.count() > 1) {
            table->collect({}, {}, packages);
            shown->model.reset();
            compareWithEveryCellMeasured();
            packages.removeLast();
        }
    }
}

void ViewColumnsTest::theWidthOfAFittedColumnIncludesTheWholeLastLetter()
{
    // The drawing of a letter may be wider than the distance to the next letter. This makes a text wider only
    // if the letter is the last letter of the text.
    for (char letter = '!'; letter <= '~'; ++letter) {
        for (const char* others : {"HHHH", "0000"}) {
            const QString first = QLatin1Char(letter) + QString(others);
            table->collect(
                {}, {}, {StandIn::package(first), StandIn::package(others + QString(QLatin1Char(letter)))});
            shown->model.reset();
            compareWithEveryCellMeasured();
        }
    }
}

void ViewColumnsTest::theWidthOfAFittedColumnTakesLigaturesIntoAccount_data()
{
    QTest::addColumn<QFont>("font");
    for (const char* family : {"DejaVu Sans", "DejaVu Serif", "Noto Sans", "Noto Serif"}) {
        QTest::newRow(family) << QFont(QString::fromLatin1(family), 8);
    }
}

void ViewColumnsTest::theWidthOfAFittedColumnTakesLigaturesIntoAccount()
{
    QFETCH(QFont, font);
    view->setFont(font);
    const QFontMetricsF metrics(view->font());
    std::mt19937 random(2);
    for (int round = 0; round < 3; ++round) {
        QString joined;
        for (int letters = 60; letters > 0; --letters) {
            joined += QLatin1Char("ffil"[random() % 4]);
        }
        QJsonArray packages;
        const qreal unit = metrics.horizontalAdvance(QLatin1Char('i'));
        for (qreal width = metrics.horizontalAdvance(joined) - 12; packages.count() < 24; width += 1) {
            // Some of these texts are narrower than `joined`, and some are wider. They have no ligatures, and
            // are at most `width` wide.
            packages.append(StandIn::package(QString("i").repeated(static_cast<int>(width / unit))));
        }
        packages.append(StandIn::package(joined));
        while (packages.count() > 1) {
            table->collect({}, {}, packages);
            shown->model.reset();
            compareWithEveryCellMeasured();
            packages.removeFirst();
            if (packages.count() > 2) {
                packages.removeAt(packages.count() - 2);
            }
        }
    }
}

void ViewColumnsTest::theWidthOfAFittedColumnIncludesControlCharacters()
{
    table->collect(
        {}, {},
        {StandIn::package("tab\tin\tthe\tname"), StandIn::package("HHHHHHHHHHHHHHHHHHHH"),
         StandIn::package(QStringLiteral("line") + QChar(QChar::LineFeed) + "feed in a name of it")});
    shown->model.reset();
    compareWithEveryCellMeasured();
}

void ViewColumnsTest::theWidthHintOfEachColumnIsZeroIfTheTableIsEmpty()
{
    table->collect({}, {}, {});
    shown->model.reset();
    for (int column = 0; column < ColumnCount; ++column) {
        QCOMPARE(view->sizeHintForColumn(column), 0);
    }
}

QTEST_MAIN(ViewColumnsTest)
#include "ViewColumnsTest.moc"
