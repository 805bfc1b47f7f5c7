// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/View.h"

#include <QLineEdit>
#include <QtTest>
#include <QtWidgets>

#include <memory>
#include <random>

#include "packagetable/ActionContextMenu.h"
#include "packagetable/OtherContextMenu.h"
#include "tests/packagetable/Described.h"
#include "tests/packagetable/ShownTable.h"
#include "tests/support/Menus.h"
#include "widgets/Colors.h"

using namespace PackageTable;

namespace {

class OpenView : public View
{
public:
    using View::View;
    using View::viewOptions;
};

} // namespace

class ViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void theViewSelectsWholeRowsAndShowsNoGrid();
    void theTextColoursAreReadableInADarkPalette();
    void theSizeHintHasSpaceForAtLeastTenRows();
    void theSizeHintHasSpaceForElevenRowsIfTheTableHasElevenRows();
    void theTableIsSortedByKindAtFirst();
    void aSecondClickOnAHeaderReversesTheSortOrder();
    void aClickOnTheHeaderOfTheSortedColumnReversesTheOrder();
    void theUserCanMoveColumns();
    void clickingAnActionCellSelectsTheNextAction();
    void clickingTheActionCellOfAnExcludedPackageShowsTheReason();
    void aClickOutsideTheActionColumnSetsNoAction();
    void aClickWithTheRightButtonSetsNoAction();
    void clicksSetActionsEvenIfTheActionColumnWasMoved();
    void aSignalReportsAChangeOfTheCurrentRow();
    void noSignalIsEmittedIfOnlyTheCurrentColumnChanges();
    void aSignalReportsMinusOneIfTheCurrentRowIsFilteredOut();
    void theSelectedRowsAreIndexesOfTheSourceModel();
    void theSpaceKeySelectsTheNextActionOfTheCurrentRow();
    void aHeldSpaceKeyChangesTheActionOnlyOnce();
    void theTabKeyMovesTheFocusOutOfTheTable();
    void textsInADisabledViewHaveTheColoursOfDisabledText();
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
    void aRightClickInTheActionColumnOpensTheActionMenu();
    void aRightClickOutsideTheActionColumnOpensTheMenuWithoutActions();
    void aRightClickBelowTheRowsOpensTheMenuWithoutActions();
    void aRightClickOnTheHeaderOpensNoMenu();
    void theMenuKeyOpensTheMenuOfTheCurrentCell();
    void theViewDescribesTheCurrentRow();
    void theEnterKeyDescribesTheCurrentRow();
    void aDoubleClickDescribesTheRow();
    void eachOfSeveralQuickClicksOnAnActionCellChangesTheAction_data();
    void eachOfSeveralQuickClicksOnAnActionCellChangesTheAction();
    void severalQuickClicksChangeOnlyTheRowOfTheFirstClick();
    void twoQuickClicksOnNeighbouringRowsChangeBothRows();
    void controlHomeAndControlEndReachTheFirstAndTheLastRow();
    void gettingTheFocusDoesNotMakeARowCurrent();
    void eachContextMenuIsCreatedOnlyOnce();

private:
    void compareWithEveryCellMeasured();
    void rightClick(QWidget* widget, const QPoint& place) { shown->click(widget, place, Qt::RightButton); }

    std::unique_ptr<Table> table;
    std::unique_ptr<ShownTable> shown;
    View* view = nullptr;
};

void ViewTest::initTestCase()
{
    table = std::make_unique<Table>();
}

void ViewTest::init()
{
    table->collectUsual();
    shown = std::make_unique<ShownTable>(*table);
    view = shown->view;
}

void ViewTest::cleanup()
{
    shown.reset();
}

void ViewTest::cleanupTestCase()
{
    table.reset();
}

void ViewTest::theTextColoursAreReadableInADarkPalette()
{
    const auto colour = [this] {
        const QModelIndex cell = shown->proxy.index(shown->listedRow("editor"), NameColumn);
        return cell.data(Qt::ForegroundRole).value<QColor>();
    };
    QCOMPARE(colour(), QColor("#8b5a2b"));
    QPalette dark(QColor(53, 53, 53), QColor(42, 42, 42));
    dark.setColor(QPalette::Base, QColor(35, 35, 35));
    dark.setColor(QPalette::AlternateBase, QColor(50, 50, 50));
    shown->window.setPalette(dark);
    QCOMPARE(colour(), QColor(Colors::readable("#8b5a2b", QColor(50, 50, 50))));
    shown->window.setPalette(QPalette());
    QCOMPARE(colour(), QColor("#8b5a2b"));
}

void ViewTest::theViewSelectsWholeRowsAndShowsNoGrid()
{
    OpenView fresh(&shown->model, &shown->proxy);
    QCOMPARE(static_cast<QTableView&>(fresh).model(), &shown->proxy);
    QVERIFY(!fresh.showGrid());
    QCOMPARE(fresh.gridStyle(), Qt::NoPen);
    QCOMPARE(fresh.selectionBehavior(), QAbstractItemView::SelectRows);
    QVERIFY(fresh.alternatingRowColors());
    QCOMPARE(fresh.contextMenuPolicy(), Qt::CustomContextMenu);
    QVERIFY(fresh.verticalHeader()->isHidden());
    QVERIFY(fresh.horizontalHeader()->sectionsMovable());
    QVERIFY(fresh.horizontalHeader()->sectionsClickable());
    QCOMPARE(fresh.viewOptions().decorationPosition, QStyleOptionViewItem::Left);
}

void ViewTest::theSizeHintHasSpaceForAtLeastTenRows()
{
    table->collect({}, {}, {StandIn::package("one")});
    shown->model.reset();
    View fresh(&shown->model, &shown->proxy);
    const int header = fresh.horizontalHeader()->sizeHint().height();
    QCOMPARE(fresh.sizeHint().height(), 2 * fresh.frameWidth() + header + 10 * fresh.rowHeight(0));
}

void ViewTest::theSizeHintHasSpaceForElevenRowsIfTheTableHasElevenRows()
{
    QCOMPARE(shown->proxy.rowCount(), 11);
    View fresh(&shown->model, &shown->proxy);
    const int header = fresh.horizontalHeader()->sizeHint().height();
    QCOMPARE(fresh.sizeHint().height(), 2 * fresh.frameWidth() + header + 11 * fresh.rowHeight(0));
}

void ViewTest::theTableIsSortedByKindAtFirst()
{
    View fresh(&shown->model, &shown->proxy);
    QCOMPARE(fresh.horizontalHeader()->sortIndicatorSection(), int(KindColumn));
    QCOMPARE(fresh.horizontalHeader()->sortIndicatorOrder(), Qt::AscendingOrder);
    QVERIFY(fresh.horizontalHeader()->isSortIndicatorShown());
    QCOMPARE(shown->proxy.filterKeyColumn(), int(KindColumn));
    QCOMPARE(names(shown->proxy), (QStringList{"office", "Editors", "Games", "Tools", "editor", "kernel",
                                               "lib", "lib", "many", "shell", "tool"}));
}

void ViewTest::aSecondClickOnAHeaderReversesTheSortOrder()
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

void ViewTest::aClickOnTheHeaderOfTheSortedColumnReversesTheOrder()
{
    view->HTableView::sortByColumn(KindColumn, Qt::AscendingOrder);
    QHeaderView* header = view->horizontalHeader();
    shown->click(header->viewport(), QPoint(header->sectionViewportPosition(KindColumn) + 20, 5));
    QCOMPARE(shown->proxy.sortColumn(), int(KindColumn));
    QCOMPARE(shown->proxy.sortOrder(), Qt::DescendingOrder);
}

void ViewTest::theUserCanMoveColumns()
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

void ViewTest::clickingAnActionCellSelectsTheNextAction()
{
    QSignalSpy spy(view, SIGNAL(stateChanged(int)));
    const auto& action = table->entry("tool").action;
    shown->click("tool", ActionColumn);
    QCOMPARE(action, Package::Update);
    shown->click("tool", ActionColumn);
    QCOMPARE(action, Package::Remove);
    shown->click("tool", ActionColumn);
    QCOMPARE(action, Package::None);
    QCOMPARE(spy.count(), 3);
    for (const auto& signal : qAsConst(spy)) {
        QCOMPARE(signal.at(0).toInt(), table->row("tool"));
    }
    shown->click("shell", ActionColumn);
    QCOMPARE(table->entry("shell").action, Package::Remove);
    shown->click("shell", ActionColumn);
    QCOMPARE(table->entry("shell").action, Package::None);
    shown->click("editor", ActionColumn);
    QCOMPARE(table->entry("editor").action, Package::Install);
}

void ViewTest::clickingTheActionCellOfAnExcludedPackageShowsTheReason()
{
    QSignalSpy refused(view, SIGNAL(actionRefused(const QString&)));
    shown->click("tool", ActionColumn);
    QCOMPARE(refused.count(), 0);
    table->entry("shell").excluded = true;
    shown->click("shell", ActionColumn);
    QCOMPARE(refused.count(), 1);
    QCOMPARE(refused.at(0).at(0).toString(),
             QString("shell cannot be marked: the configuration excludes it from updates and removals"));
    shown->click("shell", NameColumn);
    QCOMPARE(refused.count(), 1);
    QTest::keyClick(view, Qt::Key_Space);
    QCOMPARE(refused.count(), 2);
    QCOMPARE(table->entry("shell").action, Package::None);
}

void ViewTest::aClickOutsideTheActionColumnSetsNoAction()
{
    QSignalSpy spy(view, SIGNAL(stateChanged(int)));
    for (int column = StateColumn; column < ColumnCount; ++column) {
        shown->click("tool", column);
    }
    QCOMPARE(table->entry("tool").action, Package::None);
    QCOMPARE(spy.count(), 0);
}

void ViewTest::aClickWithTheRightButtonSetsNoAction()
{
    QVERIFY(withMenu([this] { shown->click("tool", ActionColumn, Qt::RightButton); }, [](QMenu&) {}));
    QCOMPARE(table->entry("tool").action, Package::None);
}

void ViewTest::clicksSetActionsEvenIfTheActionColumnWasMoved()
{
    view->horizontalHeader()->moveSection(0, 3);
    shown->click("tool", StateColumn);
    QCOMPARE(table->entry("tool").action, Package::None);
    shown->click("tool", ActionColumn);
    QCOMPARE(table->entry("tool").action, Package::Update);
}

void ViewTest::aSignalReportsAChangeOfTheCurrentRow()
{
    QSignalSpy spy(view, SIGNAL(currentChanged(int, int)));
    shown->click("office", NameColumn);
    QCOMPARE(spy.value(0), (QList<QVariant>{table->row("office"), -1}));
    QTest::keyClick(view, Qt::Key_Down);
    QCOMPARE(spy.value(1), (QList<QVariant>{table->row("shell"), table->row("office")}));
    view->setCurrentIndex(QModelIndex());
    QCOMPARE(spy.value(2), (QList<QVariant>{-1, table->row("shell")}));
    QCOMPARE(spy.count(), 3);
}

void ViewTest::noSignalIsEmittedIfOnlyTheCurrentColumnChanges()
{
    shown->click("office", NameColumn);
    QSignalSpy spy(view, SIGNAL(currentChanged(int, int)));
    QTest::keyClick(view, Qt::Key_Right);
    QCOMPARE(view->currentIndex().column(), int(VersionColumn));
    QCOMPARE(spy.count(), 0);
}

void ViewTest::aSignalReportsMinusOneIfTheCurrentRowIsFilteredOut()
{
    shown->click("office", NameColumn);
    QSignalSpy spy(view, SIGNAL(currentChanged(int, int)));
    shown->proxy.setFilterRegExp("tool");
    QVERIFY(!view->currentIndex().isValid());
    // When the view removes the current row, a neighbouring row may become current for a moment. So the view
    // may emit several signals.
    QCOMPARE(spy.value(0).value(1).toInt(), table->row("office"));
    for (int i = 1; i < spy.count(); ++i) {
        QCOMPARE(spy.at(i).at(1), spy.at(i - 1).at(0));
    }
    QCOMPARE(spy.last().at(0).toInt(), -1);
    spy.clear();
    shown->model.reset();
    QCOMPARE(spy.count(), 0);
    shown->click("tool", NameColumn);
    QCOMPARE(spy.value(0), (QList<QVariant>{table->row("tool"), -1}));
}

void ViewTest::theSelectedRowsAreIndexesOfTheSourceModel()
{
    QCOMPARE(view->selectedRows(), QModelIndexList());
    shown->select({"tool", "editor"});
    QModelIndexList rows = view->selectedRows();
    QCOMPARE(rows.count(), 2);
    QStringList chosen;
    for (const QModelIndex& row : qAsConst(rows)) {
        QCOMPARE(row.model(), &shown->model);
        chosen << table->yumIO[row.row()]->name;
    }
    QCOMPARE(chosen, (QStringList{"tool", "editor"}));
}

void ViewTest::theSpaceKeySelectsTheNextActionOfTheCurrentRow()
{
    QSignalSpy spy(view, SIGNAL(stateChanged(int)));
    shown->click("tool", NameColumn);
    view->setFocus();
    QTest::keyClick(view, Qt::Key_Space);
    QCOMPARE(table->entry("tool").action, Package::Update);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toInt(), table->row("tool"));
    QTest::keyClick(view, Qt::Key_Space, Qt::ControlModifier);
    QCOMPARE(table->entry("tool").action, Package::Update);
}

void ViewTest::aHeldSpaceKeyChangesTheActionOnlyOnce()
{
    shown->click("tool", NameColumn);
    QSignalSpy changed(view, SIGNAL(stateChanged(int)));
    const auto send = [this](QEvent::Type type, bool repeats) {
        QKeyEvent event(type, Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "), repeats);
        QApplication::sendEvent(shown->window.windowHandle(), &event);
    };
    send(QEvent::KeyPress, false);
    for (int i = 0; i < 4; ++i) {
        send(QEvent::KeyRelease, true);
        send(QEvent::KeyPress, true);
    }
    send(QEvent::KeyRelease, false);
    QCOMPARE(table->entry("tool").action, Package::Update);
    QCOMPARE(changed.count(), 1);
    // After the release, the next key press changes the action again.
    send(QEvent::KeyPress, false);
    send(QEvent::KeyRelease, false);
    QCOMPARE(table->entry("tool").action, Package::Remove);
}

void ViewTest::theTabKeyMovesTheFocusOutOfTheTable()
{
    QLineEdit next(&shown->window);
    next.show();
    QWidget::setTabOrder(view, &next);
    view->setFocus();
    shown->click("tool", NameColumn);
    QTest::keyClick(view, Qt::Key_Tab);
    QVERIFY(!view->hasFocus());
}

void ViewTest::textsInADisabledViewHaveTheColoursOfDisabledText()
{
    const QModelIndex cell = shown->proxy.index(shown->listedRow("tool"), NameColumn);
    QCOMPARE(cell.data(Qt::ForegroundRole).value<QColor>(), QColor(Colors::error()));
    shown->window.setEnabled(false);
    QCOMPARE(cell.data(Qt::ForegroundRole).value<QColor>(), QColor(Colors::errorDisabled()));
    shown->window.setEnabled(true);
    QCOMPARE(cell.data(Qt::ForegroundRole).value<QColor>(), QColor(Colors::error()));
}

void ViewTest::fittedColumnsAreAlsoWideEnoughForUnlistedRecords()
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

void ViewTest::fittingTheColumnsKeepsTheFilterAndTheSelection()
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
void ViewTest::compareWithEveryCellMeasured()
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

void ViewTest::fittedColumnsAreAsWideAsTheirWidestCell_data()
{
    QTest::addColumn<QFont>("font");
    QTest::newRow("default font") << QApplication::font();
    for (const char* family : {"DejaVu Sans", "DejaVu Serif", "Noto Sans", "DejaVu Sans Mono"}) {
        for (const int size : {7, 9, 14}) {
            QTest::addRow("%s %d", family, size) << QFont(QString::fromLatin1(family), size);
        }
    }
}

void ViewTest::fittedColumnsAreAsWideAsTheirWidestCell()
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

void ViewTest::theWidthOfAFittedColumnIncludesKerning()
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

void ViewTest::theWidthOfAFittedColumnIncludesTheWholeLastLetter()
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

void ViewTest::theWidthOfAFittedColumnTakesLigaturesIntoAccount_data()
{
    QTest::addColumn<QFont>("font");
    for (const char* family : {"DejaVu Sans", "DejaVu Serif", "Noto Sans", "Noto Serif"}) {
        QTest::newRow(family) << QFont(QString::fromLatin1(family), 8);
    }
}

void ViewTest::theWidthOfAFittedColumnTakesLigaturesIntoAccount()
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

void ViewTest::theWidthOfAFittedColumnIncludesControlCharacters()
{
    table->collect(
        {}, {},
        {StandIn::package("tab\tin\tthe\tname"), StandIn::package("HHHHHHHHHHHHHHHHHHHH"),
         StandIn::package(QStringLiteral("line") + QChar(QChar::LineFeed) + "feed in a name of it")});
    shown->model.reset();
    compareWithEveryCellMeasured();
}

void ViewTest::theWidthHintOfEachColumnIsZeroIfTheTableIsEmpty()
{
    table->collect({}, {}, {});
    shown->model.reset();
    for (int column = 0; column < ColumnCount; ++column) {
        QCOMPARE(view->sizeHintForColumn(column), 0);
    }
}

void ViewTest::aRightClickInTheActionColumnOpensTheActionMenu()
{
    QSignalSpy spy(view, SIGNAL(stateChanged(int)));
    bool right = false;
    QPoint place;
    QVERIFY(withMenu([this] { rightClick(view->viewport(), shown->place("tool", ActionColumn)); },
                     [&right, &place, &spy](QMenu& menu) {
                         right = qobject_cast<ActionContextMenu*>(&menu) != nullptr && spy.isEmpty();
                         place = menu.pos();
                     }));
    QVERIFY(right);
    QCOMPARE(place, view->viewport()->mapToGlobal(shown->place("tool", ActionColumn)));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.first().first().toInt(), -1);
}

void ViewTest::aRightClickOutsideTheActionColumnOpensTheMenuWithoutActions()
{
    QSignalSpy spy(view, SIGNAL(stateChanged(int)));
    for (int column = StateColumn; column < ColumnCount; ++column) {
        bool right = false;
        QVERIFY(
            withMenu([this, column] { rightClick(view->viewport(), shown->place("tool", column)); },
                     [&right](QMenu& menu) { right = qobject_cast<OtherContextMenu*>(&menu) != nullptr; }));
        QVERIFY(right);
    }
    QCOMPARE(spy.count(), 0);
}

void ViewTest::aRightClickBelowTheRowsOpensTheMenuWithoutActions()
{
    bool right = false;
    const QPoint below(20, view->viewport()->height() - 10);
    QVERIFY(!view->indexAt(below).isValid());
    QVERIFY(withMenu([this, below] { rightClick(view->viewport(), below); },
                     [&right](QMenu& menu) { right = qobject_cast<OtherContextMenu*>(&menu) != nullptr; }));
    QVERIFY(right);
}

void ViewTest::aRightClickOnTheHeaderOpensNoMenu()
{
    QHeaderView* header = view->horizontalHeader();
    QVERIFY(!withMenu([this, header] { rightClick(header->viewport(), QPoint(20, header->height() / 2)); },
                      [](QMenu&) {}));
    QCOMPARE(shown->proxy.sortColumn(), int(NameColumn));
}

void ViewTest::theMenuKeyOpensTheMenuOfTheCurrentCell()
{
    shown->click("shell", ActionColumn);
    QCOMPARE(table->entry("shell").action, Package::Remove);
    QStringList offered;
    bool opened = false;
    // The window system turns the Menu key into a request for a menu, so the test sends the key through the
    // window system.
    withMenu(
        [&opened] {
            QCOMPARE(QProcess::execute("xdotool", {"key", "Menu"}), 0);
            QTRY_VERIFY(opened);
        },
        [&offered, &opened](QMenu& menu) {
            opened = true;
            offered = offeredIn(menu);
            QTest::keyClick(&menu, Qt::Key_N);
        });
    QVERIFY(opened);
    QCOMPARE(offered, (QStringList{"&Remove", "&No Action"}));
    QCOMPARE(table->entry("shell").action, Package::None);
}

void ViewTest::theViewDescribesTheCurrentRow()
{
    view->describe(); // no row is current, so no dialog opens, and the function returns at once
    QVERIFY(view->findChildren<QDialog*>().isEmpty());
    shown->click("shell", NameColumn);
    QString described;
    QVERIFY(withDialog<Describe::Dialog>(
        [this] { view->describe(); },
        [&described](Describe::Dialog& dialog) { described = dialog.findChild<QLabel*>()->text(); }));
    QCOMPARE(described, QString("shell"));
}

void ViewTest::theEnterKeyDescribesTheCurrentRow()
{
    shown->click("shell", NameColumn);
    QString described;
    QVERIFY(withDialog<Describe::Dialog>(
        [this] { QTest::keyClick(shown->window.windowHandle(), Qt::Key_Return); },
        [&described](Describe::Dialog& dialog) { described = dialog.findChild<QLabel*>()->text(); }));
    QCOMPARE(described, QString("shell"));
}

void ViewTest::aDoubleClickDescribesTheRow()
{
    QString described;
    QVERIFY(withDialog<Describe::Dialog>(
        [this] {
            const QPoint place = view->viewport()->mapTo(&shown->window, shown->place("tool", SizeColumn));
            shown->click("tool", SizeColumn);
            QTest::mouseDClick(shown->window.windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
        },
        [&described](Describe::Dialog& dialog) { described = dialog.findChild<QLabel*>()->text(); }));
    QCOMPARE(described, QString("tool"));
    QCOMPARE(table->entry("tool").action, Package::None);
}

void ViewTest::eachOfSeveralQuickClicksOnAnActionCellChangesTheAction_data()
{
    QTest::addColumn<int>("clicks");
    QTest::addColumn<int>("action");
    QTest::newRow("one click") << 1 << int(Package::Update);
    QTest::newRow("two clicks") << 2 << int(Package::Remove);
    QTest::newRow("three clicks") << 3 << int(Package::None);
    QTest::newRow("four clicks") << 4 << int(Package::Update);
    QTest::newRow("five clicks") << 5 << int(Package::Remove);
}

void ViewTest::eachOfSeveralQuickClicksOnAnActionCellChangesTheAction()
{
    QFETCH(int, clicks);
    QFETCH(int, action);
    const QPoint place = view->viewport()->mapTo(&shown->window, shown->place("tool", ActionColumn));
    QSignalSpy changed(view, SIGNAL(stateChanged(int)));
    for (int i = 0; i < clicks; ++i) {
        // Qt may take such quick clicks for double clicks. QTest::mouseClick() would add delays, so Qt would
        // see single clicks.
        QTest::mousePress(shown->window.windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
        QTest::mouseRelease(shown->window.windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
    }
    QTest::qWait(50);
    QVERIFY(view->findChildren<Describe::Dialog*>().isEmpty());
    QCOMPARE(int(table->entry("tool").action), action);
    QCOMPARE(changed.count(), clicks);
}

void ViewTest::severalQuickClicksChangeOnlyTheRowOfTheFirstClick()
{
    // The table is sorted by action, so the first click moves another row under the pointer.
    shown->proxy.sort(ActionColumn);
    QTest::qWait(50); // wait until the view shows the new order
    const QPoint inView = shown->place("tool", ActionColumn);
    const QPoint place = view->viewport()->mapTo(&shown->window, inView);
    QSignalSpy changed(view, SIGNAL(stateChanged(int)));
    for (const Package::Action action : {Package::Update, Package::Remove, Package::None, Package::Update}) {
        QTest::mousePress(shown->window.windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
        QTest::mouseRelease(shown->window.windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
        QCOMPARE(table->entry("tool").action, action);
    }
    QCOMPARE(changed.count(), 4); // no click has changed another row
    const QModelIndex under = view->indexAt(inView);
    QVERIFY(under.sibling(under.row(), NameColumn).data().toString() != "tool");
}

void ViewTest::twoQuickClicksOnNeighbouringRowsChangeBothRows()
{
    // The table is sorted by name, so no click moves a row. The clicks are close to the common border of both
    // rows, so their distance is small enough for a double click.
    const int first = shown->listedRow("editor");
    const int height = view->rowHeight(first);
    QVERIFY(4 < QApplication::startDragDistance() && 4 < height);
    const QString next = shown->proxy.index(first + 1, NameColumn).data().toString();
    const QPoint above = shown->place("editor", ActionColumn) + QPoint(0, height / 2 - 2);
    const QPoint below = above + QPoint(0, 4);
    QCOMPARE(view->indexAt(above).row(), first);
    QCOMPARE(view->indexAt(below).row(), first + 1);
    QSignalSpy changed(view, SIGNAL(stateChanged(int)));
    for (const QPoint& each : {above, below}) {
        // QTest::mouseClick() would add delays between the clicks.
        const QPoint place = view->viewport()->mapTo(&shown->window, each);
        QTest::mousePress(shown->window.windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
        QTest::mouseRelease(shown->window.windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
    }
    QCOMPARE(table->entry("editor").action, Package::Install);
    QCOMPARE(changed.count(), 2);
    QCOMPARE(changed.at(0).at(0).toInt(), table->row("editor"));
    QCOMPARE(changed.at(1).at(0).toInt(), table->row(next));
    QVERIFY(table->entry(next).action != Package::None);
}

void ViewTest::controlHomeAndControlEndReachTheFirstAndTheLastRow()
{
    const int last = shown->proxy.rowCount() - 1;
    const auto selected = [this] {
        QList<int> rows;
        for (const QModelIndex& index : view->selectionModel()->selectedRows()) {
            rows << index.row();
        }
        return rows;
    };
    // "" means that no row is current. The keys also work in this case.
    for (const char* start : {"", "shell", "tool"}) {
        if (*start != '\0') {
            shown->click(start, NameColumn);
        }
        QTest::keyClick(shown->window.windowHandle(), Qt::Key_End, Qt::ControlModifier);
        QCOMPARE(view->currentIndex().row(), last);
        QCOMPARE(selected(), QList<int>{last});
        QTest::keyClick(shown->window.windowHandle(), Qt::Key_Home, Qt::ControlModifier);
        QCOMPARE(view->currentIndex().row(), 0);
        QCOMPARE(selected(), QList<int>{0});
    }
}

void ViewTest::gettingTheFocusDoesNotMakeARowCurrent()
{
    view->clearFocus();
    QSignalSpy current(view, SIGNAL(currentChanged(int, int)));
    for (const Qt::FocusReason reason : {Qt::TabFocusReason, Qt::OtherFocusReason}) {
        view->setFocus(reason);
        QVERIFY(view->hasFocus());
        QVERIFY(!view->currentIndex().isValid());
        view->clearFocus();
    }
    QTest::keyClick(shown->window.windowHandle(), Qt::Key_Space);
    QVERIFY(current.isEmpty() || current.last().at(0).toInt() == -1);
    // An arrow key makes a row current.
    view->setFocus();
    QTest::keyClick(shown->window.windowHandle(), Qt::Key_Down);
    QCOMPARE(view->selectionModel()->selectedRows().count(), 1);
    QVERIFY(view->currentIndex().isValid());
    const QModelIndex chosen = view->currentIndex();
    view->clearFocus();
    view->setFocus();
    QCOMPARE(view->currentIndex(), chosen);
}

void ViewTest::eachContextMenuIsCreatedOnlyOnce()
{
    QCOMPARE(view->findChildren<QMenu*>().count(), 0);
    for (const char* name : {"tool", "shell"}) {
        for (const int column : {ActionColumn, NameColumn}) {
            QVERIFY(withMenu(
                [this, name, column] {
                    rightClick(view->viewport(), shown->place(QLatin1String(name), column));
                },
                [](QMenu&) {}));
        }
    }
    QCOMPARE(view->findChildren<ActionContextMenu*>().count(), 1);
    QCOMPARE(view->findChildren<OtherContextMenu*>().count(), 1);
}

QTEST_MAIN(ViewTest)
#include "ViewTest.moc"
