// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HTableView.h"

#include <QtTest>
#include <QtWidgets>

#include "tests/widgets/FixedTable.h"
#include "widgets/HItemDelegate.h"
#include "widgets/HSortFilterProxyModel.h"

namespace {

const int anyNumber = std::numeric_limits<int>::max();

class View : public HTableView
{
public:
    explicit View(int fewest = 1, int most = anyNumber, QWidget* parent = nullptr)
        : HTableView(QStyleOptionViewItem::Right, fewest, most, parent)
    {
    }
    using HTableView::viewOptions;
};

// A view with its own computation of the column widths.
class QuickView : public View
{
protected:
    int contentsWidthForColumn(int column) const override { return 100 + column; }
};

// A style that draws the frame only around the contents of a scroll area.
class FrameStyle : public QProxyStyle
{
public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override
    {
        return hint == SH_ScrollView_FrameOnlyAroundContents
                   ? 1
                   : QProxyStyle::styleHint(hint, option, widget, data);
    }
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override
    {
        return metric == PM_DefaultFrameWidth ? 3 : QProxyStyle::pixelMetric(metric, option, widget);
    }
};

QVector<FixedTable::Row> numbers(int count)
{
    QVector<FixedTable::Row> rows;
    for (int i = 0; i < count; ++i) {
        rows << FixedTable::Row{i, QStringLiteral("row %1").arg(i)};
    }
    return rows;
}

// The number of rows for which the size hint has space, or -1 if this is not a whole number.
int rowsIn(const HTableView& view)
{
    const int rows =
        view.sizeHint().height() - 2 * view.frameWidth() - view.horizontalHeader()->sizeHint().height();
    return rows % view.rowHeight(0) == 0 ? rows / view.rowHeight(0) : -1;
}

QList<int> rowsOf(const QModelIndexList& indexes)
{
    QList<int> rows;
    for (const QModelIndex& index : indexes) {
        rows << index.row();
    }
    return rows;
}

QVariantList column(const QAbstractItemModel* model, int number)
{
    QVariantList values;
    for (int row = 0; row < model->rowCount(); ++row) {
        values << model->index(row, number).data();
    }
    return values;
}

QSize largest()
{
    const QSize screen = QGuiApplication::primaryScreen()->size();
    return QSize(screen.width() * 9 / 10, screen.height() * 9 / 10);
}

} // namespace

class HTableViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theHeightOfRowsWithOneLineDependsOnTheFont();
    void shiftF10RequestsTheMenuOfTheCurrentCell();
    void controlHomeSelectsTheFirstRowAndControlEndTheLastRow();
    void anHItemDelegateDrawsTheCells();
    void theConstructorDeterminesTheSideOfTheIconInACell();
    void theSizeHintHasSpaceForTheMinimumNumberOfRowsIfTheTableHasFewRows();
    void theSizeHintHasSpaceForTheMaximumNumberOfRowsIfTheTableHasManyRows();
    void theSizeHintHasSpaceForAllRowsIfTheirNumberIsBetweenTheLimits();
    void addingRowsDoesNotChangeAComputedSizeHint();
    void removingRowsDoesNotChangeAComputedSizeHint();
    void theSizeHintHasSpaceForTheMinimumNumberOfRowsIfTheTableIsEmpty();
    void theSizeHintIsTheSumOfAllPartsOfTheView();
    void hiddenHeadersNeedNoSpace();
    void theSizeHintIncludesAFrameAroundTheContents();
    void aViewWithoutAModelHasASizeHintButNoColumnWidth();
    void aFittedColumnIsAsWideAsItsWidestCell();
    void theColumnHintIsOnePixelWiderIfTheGridIsShown();
    void aDerivedViewCanComputeColumnWidthsOfItsOwn();
    void fittingTheColumnsEnlargesTheWindow();
    void fittingTheColumnsKeepsTheWindowOnTheScreen();
    void fittingTheColumnsNeverShrinksTheWindow();
    void fittingTheColumnsUpdatesTheLayoutsOfAllParentWidgets();
    void theHeaderIndicatesTheSortedColumn();
    void sortingByAColumnKeepsTheOrderOfTheHeaderIfNoOrderIsGiven();
    void clickingAHeaderTwiceReversesTheOrder();
    void sortingDoesNothingIfTheViewHasNoModel();
    void theSelectedRowsAreReturnedInTheOrderOfTheirSelection();
    void unselectableRowsAreNotReturned();
    void eachSelectedRowIsReturnedAsItsLeftmostSelectedCell();
    void noRowIsReturnedIfTheViewHasNoModelOrNoSelection();
};

void HTableViewTest::controlHomeSelectsTheFirstRowAndControlEndTheLastRow()
{
    QStandardItemModel model(300, 3);
    View view;
    QTest::keyClick(&view, Qt::Key_End,
                    Qt::ControlModifier); // if the view has no model, the key does nothing
    view.setModel(&model);
    view.setSelectionBehavior(QAbstractItemView::SelectRows);
    view.resize(300, 200);
    view.show();
    QVERIFY(QTest::qWaitForWindowActive(&view, 30000));
    view.setCurrentIndex(model.index(5, 2));
    QTest::keyClick(&view, Qt::Key_End, Qt::ControlModifier);
    QCOMPARE(view.currentIndex(), model.index(299, 2));
    QCOMPARE(view.selectionModel()->selectedRows(), QModelIndexList{model.index(299, 0)});
    QVERIFY(view.viewport()->rect().intersects(view.visualRect(model.index(299, 0))));
    QTest::keyClick(&view, Qt::Key_Home, Qt::ControlModifier);
    QCOMPARE(view.currentIndex(), model.index(0, 2));
    QCOMPARE(view.selectionModel()->selectedRows(), QModelIndexList{model.index(0, 0)});
    QVERIFY(view.viewport()->rect().intersects(view.visualRect(model.index(0, 0))));
    // If Control is not pressed, Home and End move within the row.
    QTest::keyClick(&view, Qt::Key_Home);
    QCOMPARE(view.currentIndex(), model.index(0, 0));
    model.setRowCount(0);
    QTest::keyClick(&view, Qt::Key_End, Qt::ControlModifier);
    QVERIFY(!view.currentIndex().isValid());
}

void HTableViewTest::anHItemDelegateDrawsTheCells()
{
    View view;
    QVERIFY(qobject_cast<HItemDelegate*>(view.itemDelegate()) != nullptr);
    QCOMPARE(view.itemDelegate()->parent(), &view);
}

void HTableViewTest::theConstructorDeterminesTheSideOfTheIconInACell()
{
    View view;
    QCOMPARE(view.viewOptions().decorationPosition, QStyleOptionViewItem::Right);
    QVERIFY(!view.viewOptions().showDecorationSelected);
    QCOMPARE(view.viewOptions().font, view.font());
}

void HTableViewTest::theSizeHintHasSpaceForTheMinimumNumberOfRowsIfTheTableHasFewRows()
{
    FixedTable model(numbers(3));
    View view(10, 20);
    view.setModel(&model);
    QCOMPARE(rowsIn(view), 10);
}

void HTableViewTest::theSizeHintHasSpaceForTheMaximumNumberOfRowsIfTheTableHasManyRows()
{
    FixedTable model(numbers(30));
    View view(10, 20);
    view.setModel(&model);
    QCOMPARE(rowsIn(view), 20);
}

void HTableViewTest::theSizeHintHasSpaceForAllRowsIfTheirNumberIsBetweenTheLimits()
{
    FixedTable model(numbers(15));
    View view(10, anyNumber);
    view.setModel(&model);
    QCOMPARE(rowsIn(view), 15);
}

void HTableViewTest::addingRowsDoesNotChangeAComputedSizeHint()
{
    FixedTable model(numbers(3));
    View view(10, anyNumber);
    view.verticalHeader()->hide();
    view.setModel(&model);
    const QSize hint = view.sizeHint();
    for (const FixedTable::Row& row : numbers(50)) {
        model.append(row);
    }
    QCOMPARE(view.sizeHint(), hint);
    QCOMPARE(rowsIn(view), 10);
}

void HTableViewTest::removingRowsDoesNotChangeAComputedSizeHint()
{
    FixedTable model(numbers(15));
    View view(10, anyNumber);
    view.setModel(&model);
    QCOMPARE(rowsIn(view), 15);
    model.rows.resize(2);
    model.forceSortColumnRediscovery();
    QCOMPARE(rowsIn(view), 15);
}

void HTableViewTest::theSizeHintHasSpaceForTheMinimumNumberOfRowsIfTheTableIsEmpty()
{
    FixedTable model;
    View view(10, anyNumber);
    view.setModel(&model);
    const int height = view.sizeHint().height();
    QCOMPARE(height, 2 * view.frameWidth() + view.horizontalHeader()->sizeHint().height() +
                         10 * view.verticalHeader()->defaultSectionSize());
    model.append({1, 2});
    QCOMPARE(view.sizeHint().height(), height);
}

void HTableViewTest::theSizeHintIsTheSumOfAllPartsOfTheView()
{
    FixedTable model(numbers(4));
    View view(2, 9);
    view.setModel(&model);
    view.setColumnWidth(0, 70);
    view.setColumnWidth(1, 50);
    view.setRowHeight(0, 33);
    QVERIFY(view.frameWidth() > 0);
    QCOMPARE(view.frameOnlyAroundContentsPixels(), 0);
    const int width = 2 * view.frameWidth() + view.verticalHeader()->sizeHint().width() + 70 + 50 +
                      view.verticalScrollBar()->sizeHint().width();
    const int height = 2 * view.frameWidth() + view.horizontalHeader()->sizeHint().height() + 4 * 33;
    QCOMPARE(view.sizeHint(), QSize(width, height));
}

void HTableViewTest::hiddenHeadersNeedNoSpace()
{
    FixedTable model(numbers(4));
    View view(2, 9);
    view.setModel(&model);
    const QSize hint = view.sizeHint();
    const int side = view.verticalHeader()->sizeHint().width();
    const int top = view.horizontalHeader()->sizeHint().height();
    QVERIFY(side > 0 && top > 0);
    view.verticalHeader()->hide();
    QCOMPARE(view.sizeHint(), hint - QSize(side, 0));
    view.horizontalHeader()->hide();
    QCOMPARE(view.sizeHint(), hint - QSize(side, top));
}

void HTableViewTest::theSizeHintIncludesAFrameAroundTheContents()
{
    FixedTable model(numbers(4));
    View view(2, 9);
    view.setModel(&model);
    FrameStyle style;
    view.setStyle(&style);
    QCOMPARE(view.frameOnlyAroundContentsPixels(), 6);
    const int width = 2 * view.frameWidth() + view.verticalHeader()->sizeHint().width() +
                      view.columnWidth(0) + view.columnWidth(1) + 6 +
                      view.verticalScrollBar()->sizeHint().width();
    QCOMPARE(view.sizeHint().width(), width);
}

void HTableViewTest::aViewWithoutAModelHasASizeHintButNoColumnWidth()
{
    View view(10, 20);
    QCOMPARE(view.sizeHintForColumn(0), -1);
    QCOMPARE(view.sizeHint().height(), 2 * view.frameWidth() + view.horizontalHeader()->sizeHint().height() +
                                           10 * view.verticalHeader()->defaultSectionSize());
}

void HTableViewTest::aFittedColumnIsAsWideAsItsWidestCell()
{
    FixedTable model(numbers(500));
    const QString longest = QStringLiteral("a text far below what can be seen");
    model.rows.last()[1] = longest;
    View view;
    view.setShowGrid(false);
    view.setModel(&model);
    view.resize(300, 200);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QVERIFY(view.rowAt(view.viewport()->height() - 1) < 100);
    const QModelIndex last = model.index(499, 1);
    QCOMPARE(view.sizeHintForColumn(1), view.itemDelegate()->sizeHint(view.viewOptions(), last).width());
    QVERIFY(view.sizeHintForColumn(1) >= view.fontMetrics().horizontalAdvance(longest));
    QVERIFY(view.sizeHintForColumn(0) < view.sizeHintForColumn(1));
    view.resizeColumnToContents(1);
    QCOMPARE(view.columnWidth(1), view.sizeHintForColumn(1));
}

void HTableViewTest::theColumnHintIsOnePixelWiderIfTheGridIsShown()
{
    FixedTable model(numbers(5));
    View view;
    view.setModel(&model);
    view.setShowGrid(false);
    const int width = view.sizeHintForColumn(1);
    view.setShowGrid(true);
    QCOMPARE(view.sizeHintForColumn(1), width + 1);
}

void HTableViewTest::aDerivedViewCanComputeColumnWidthsOfItsOwn()
{
    FixedTable model(numbers(5));
    QuickView view;
    QCOMPARE(view.sizeHintForColumn(1), -1);
    view.setModel(&model);
    QCOMPARE(view.sizeHintForColumn(1), 102);
    view.setShowGrid(false);
    QCOMPARE(view.sizeHintForColumn(1), 101);
}

void HTableViewTest::fittingTheColumnsEnlargesTheWindow()
{
    QMainWindow window;
    QWidget* central = new QWidget;
    QVBoxLayout* rows = new QVBoxLayout(central);
    FixedTable model(numbers(3));
    View* view = new View(3, 3);
    rows->addWidget(view);
    view->setModel(&model);
    window.setCentralWidget(central);
    window.move(100, 80);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QPoint position = window.pos();
    const QSize size = window.size();

    model.rows[1][1] = QStringLiteral("wide ").repeated(20);
    view->resizeColumnsToContents();
    QCOMPARE(view->columnWidth(1), view->sizeHintForColumn(1));
    QCOMPARE(window.size().width(), window.sizeHint().width());
    QVERIFY(window.width() > size.width());
    QCOMPARE(window.pos(), position);
    QTRY_VERIFY(!view->horizontalScrollBar()->isVisible());
    QCOMPARE(window.pos(), position);
}

void HTableViewTest::fittingTheColumnsKeepsTheWindowOnTheScreen()
{
    FixedTable model(numbers(300));
    model.rows[1][1] = QStringLiteral("wide ").repeated(2000);
    View view(1, anyNumber);
    view.setModel(&model);
    view.resize(300, 200);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.resizeColumnsToContents();
    QCOMPARE(view.size(), largest());
}

void HTableViewTest::fittingTheColumnsNeverShrinksTheWindow()
{
    FixedTable model(numbers(3));
    View view(3, 3);
    view.setModel(&model);
    view.resize(800, 150);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.setColumnWidth(1, 600);
    view.resizeColumnsToContents();
    QCOMPARE(view.columnWidth(1),
             qMax(view.sizeHintForColumn(1), view.horizontalHeader()->sectionSizeHint(1)));
    QCOMPARE(view.size(), QSize(800, 150));
    QVERIFY(view.sizeHint().width() < 800);
}

void HTableViewTest::fittingTheColumnsUpdatesTheLayoutsOfAllParentWidgets()
{
    // A layout caches the size hints of its contents. Here one layout is inside another, and both caches must
    // be updated.
    QWidget window;
    QVBoxLayout* outer = new QVBoxLayout(&window);
    QWidget* inside = new QWidget;
    outer->addWidget(inside);
    QVBoxLayout* inner = new QVBoxLayout(inside);
    FixedTable model(numbers(3));
    View* view = new View(3, 3);
    view->setModel(&model);
    inner->addWidget(view);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const int before = window.sizeHint().width();
    const int width = view->sizeHint().width();
    model.rows[1][1] = QStringLiteral("wide ").repeated(20);
    view->resizeColumnsToContents();
    QCOMPARE(window.sizeHint().width() - before, view->sizeHint().width() - width);
    QCOMPARE(window.width(), window.sizeHint().width());
}

void HTableViewTest::theHeaderIndicatesTheSortedColumn()
{
    FixedTable model({{2, "a"}, {10, "b"}, {9, "c"}});
    HSortFilterProxyModel proxy(1);
    proxy.setSourceModel(&model);
    View view;
    view.setModel(&proxy);
    view.sortByColumn(0, Qt::DescendingOrder);
    QCOMPARE(column(&proxy, 0), (QVariantList{10, 9, 2}));
    QCOMPARE(view.horizontalHeader()->sortIndicatorSection(), 0);
    QCOMPARE(view.horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
    view.sortByColumn(1);
    QCOMPARE(column(&proxy, 1), (QVariantList{"a", "b", "c"}));
    QCOMPARE(view.horizontalHeader()->sortIndicatorSection(), 1);
    QCOMPARE(view.horizontalHeader()->sortIndicatorOrder(), Qt::AscendingOrder);
}

void HTableViewTest::sortingByAColumnKeepsTheOrderOfTheHeaderIfNoOrderIsGiven()
{
    FixedTable model({{2, "a"}, {10, "b"}, {9, "c"}});
    HSortFilterProxyModel proxy(1);
    proxy.setSourceModel(&model);
    View view;
    view.setModel(&proxy);
    view.sortByColumn(0, Qt::DescendingOrder);
    view.sortByColumn(0);
    QCOMPARE(column(&proxy, 0), (QVariantList{10, 9, 2}));
    view.sortByColumn(0, Qt::AscendingOrder);
    view.sortByColumn(0);
    QCOMPARE(column(&proxy, 0), (QVariantList{2, 9, 10}));
}

void HTableViewTest::clickingAHeaderTwiceReversesTheOrder()
{
    FixedTable model({{2, "a"}, {10, "b"}, {9, "c"}});
    HSortFilterProxyModel proxy(1);
    proxy.setSourceModel(&model);
    View view;
    view.setModel(&proxy);
    QHeaderView* header = view.horizontalHeader();
    header->setSectionsClickable(true);
    view.connect(header, SIGNAL(sectionClicked(int)), &view, SLOT(sortByColumn(int)));
    view.sortByColumn(1, Qt::AscendingOrder);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    const QPoint first(header->sectionViewportPosition(0) + 20, header->height() / 2);

    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, first);
    QCOMPARE(column(&proxy, 0), (QVariantList{2, 9, 10}));
    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, first);
    QCOMPARE(column(&proxy, 0), (QVariantList{10, 9, 2}));
    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, first);
    QCOMPARE(column(&proxy, 0), (QVariantList{2, 9, 10}));
}

void HTableViewTest::sortingDoesNothingIfTheViewHasNoModel()
{
    View view;
    const int section = view.horizontalHeader()->sortIndicatorSection();
    view.sortByColumn(1);
    QCOMPARE(view.horizontalHeader()->sortIndicatorSection(), section);
}

void HTableViewTest::theSelectedRowsAreReturnedInTheOrderOfTheirSelection()
{
    FixedTable model(numbers(9));
    View view;
    view.setModel(&model);
    view.setSelectionBehavior(QAbstractItemView::SelectRows);
    view.show();
    QVERIFY(QTest::qWaitForWindowActive(&view));
    const auto click = [&view, &model](int row, Qt::KeyboardModifiers held) {
        QTest::mouseClick(view.viewport(), Qt::LeftButton, held,
                          view.visualRect(model.index(row, 1)).center());
    };
    click(4, Qt::NoModifier);
    QCOMPARE(rowsOf(view.selectedRows()), QList<int>{4});
    click(1, Qt::ControlModifier);
    click(3, Qt::ControlModifier | Qt::ShiftModifier);
    const QModelIndexList rows = view.selectedRows();
    QCOMPARE(rows.first(), model.index(4, 0));
    QCOMPARE(rowsOf(rows), (QList<int>{4, 1, 2, 3}));
}

void HTableViewTest::unselectableRowsAreNotReturned()
{
    FixedTable model(numbers(5));
    View view;
    view.setModel(&model);
    view.setSelectionBehavior(QAbstractItemView::SelectRows);
    view.selectionModel()->select(QItemSelection(model.index(0, 0), model.index(4, 1)),
                                  QItemSelectionModel::Select);
    QCOMPARE(rowsOf(view.selectedRows()), (QList<int>{0, 1, 2, 3, 4}));
    model.unselectable = {1, 4};
    QCOMPARE(rowsOf(view.selectedRows()), (QList<int>{0, 2, 3}));
}

void HTableViewTest::eachSelectedRowIsReturnedAsItsLeftmostSelectedCell()
{
    FixedTable model(numbers(5));
    View view;
    view.setModel(&model);
    view.selectionModel()->select(model.index(2, 1), QItemSelectionModel::Select);
    QCOMPARE(view.selectedRows(), QModelIndexList{model.index(2, 1)});
}

void HTableViewTest::noRowIsReturnedIfTheViewHasNoModelOrNoSelection()
{
    View view;
    QVERIFY(view.selectedRows().isEmpty());
    FixedTable model(numbers(5));
    view.setModel(&model);
    QVERIFY(view.selectedRows().isEmpty());
}

void HTableViewTest::theHeightOfRowsWithOneLineDependsOnTheFont()
{
    FixedTable model(numbers(3));
    View view;
    view.setModel(&model);
    view.setOneLineRows();
    const QFontMetrics usual = view.fontMetrics();
    QCOMPARE(view.rowHeight(0), usual.height() + 6);
    QCOMPARE(view.iconSize(), QSize(16, 16));
    for (int points : {14, 24, 40}) {
        QFont font = view.font();
        font.setPointSize(points);
        view.setFont(font);
        const int height = view.fontMetrics().height();
        QVERIFY(height > usual.height());
        QVERIFY(view.rowHeight(0) >= height + 6);
        QVERIFY(view.iconSize().height() <= height);
        QVERIFY(view.iconSize().height() > height - 8);
    }
}

void HTableViewTest::shiftF10RequestsTheMenuOfTheCurrentCell()
{
    FixedTable model(numbers(3));
    View view;
    view.setModel(&model);
    view.setContextMenuPolicy(Qt::CustomContextMenu);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.setCurrentIndex(model.index(1, 1));
    QSignalSpy asked(&view, SIGNAL(customContextMenuRequested(const QPoint&)));
    QTest::keyClick(&view, Qt::Key_F10, Qt::ShiftModifier);
    QCOMPARE(asked.count(), 1);
    QCOMPARE(view.indexAt(asked.first().first().toPoint()), view.currentIndex());
    QTest::keyClick(&view, Qt::Key_F10);
    QCOMPARE(asked.count(), 1);
}

QTEST_MAIN(HTableViewTest)
#include "HTableViewTest.moc"
