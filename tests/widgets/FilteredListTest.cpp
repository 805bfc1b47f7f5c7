// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/FilteredList.h"

#include <memory>

#include <QtTest>
#include <QtWidgets>

#include "tests/widgets/FixedTable.h"
#include "widgets/Colors.h"
#include "widgets/HTableView.h"

namespace {

class Records : public FixedTable
{
public:
    using FixedTable::FixedTable;

    void reset(const QVector<Row>& values)
    {
        beginResetModel();
        rows = values;
        endResetModel();
    }
};

const QVector<FixedTable::Row> usual = {{3, "update kernel"}, {2, "install shell"}, {1, "install kernel"}};

// The C library needs minutes to compare this expression with letters(300). If a text has no letter "b", the
// comparison is short.
const QString difficult = QStringLiteral("(a*)*\\1b");

QString letters(int count)
{
    return QString(count, 'a') + "xb";
}

const QString comparing = QStringLiteral("Comparing the rows (Esc stops)");

} // namespace

class FilteredListTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void theFirstRowIsCurrentAfterTheListIsFilled();
    void typingAnExpressionFiltersTheRowsAndShowsTheirNumber();
    void theCurrentRowStaysCurrentAsLongAsItIsListed();
    void anInvalidExpressionHasTheErrorColourAndAnExplanation();
    void theListShowsTheReasonIfNoRowIsListed();
    void setCurrentRowSelectsTheRowEvenIfTheUserHoldsAModifierKey();
    void aSignalReportsTheCurrentRowWhenTheRecordsAreReplaced();
    void theSelectedRowsAreReturnedInTheOrderOfTheList();
    void aClickOnAHeaderSortsTheRowsByThisColumn();
    void theKeyboardReachesAllPartsOfTheList();
    void theListGetsTheFocusWhenTheWindowOpens();
    void theEnterKeyAndADoubleClickActivateTheRow();
    void aTooNarrowCellShowsItsTextAsToolTip();
    void columnsFitTheirTextsIfTheListIsWideEnough();
    void columnsWithLongTextsShareTheWidthOfTheList();
    void theDetailsPaneIsBelowTheList();
    void tenThousandRowsAreFiltered();
    void theListRespondsWhileADifficultExpressionIsCompared();
    void theRowsAreListedWhenTheComparisonWithADifficultExpressionEnds();
    void aNewerExpressionReplacesADifficultExpression();
    void stoppingAComparisonRestoresTheExpressionOfTheListedRows();
    void stoppingAComparisonListsAllRowsIfThePreviousExpressionIsInvalid();
    void aDifficultExpressionCanBeTyped();
    void hidingTheListStopsTheComparison();
    void newRowsDuringAComparisonAreFilteredAndTheRequestedRowBecomesCurrent();
    void allRowsAreListedIfAComparisonWithNewRowsIsStopped();
    void theListCanBeDeletedDuringAComparison();

private:
    QLineEdit* edit() const { return list->findChild<QLineEdit*>(); }
    QString count() const;
    QString emptyText() const { return list->tableView()->accessibleDescription(); }
    void show();
    // Adds a row to the model and pastes the difficult expression into the edit. The C library needs minutes
    // to compare this row with the expression.
    void pasteDifficultExpression();

    std::unique_ptr<Records> records;
    std::unique_ptr<FilteredList> list;
};

void FilteredListTest::init()
{
    records = std::make_unique<Records>(usual);
    list = std::make_unique<FilteredList>(records.get(), QStringLiteral("Records"));
    list->setEmptyText("No records.");
}

void FilteredListTest::cleanup()
{
    list.reset();
    records.reset();
}

QString FilteredListTest::count() const
{
    for (const QLabel* label : list->findChildren<QLabel*>()) {
        if (label->buddy() == nullptr && (label->text().contains("listed") || label->text() == comparing)) {
            return label->text();
        }
    }
    return QString();
}

void FilteredListTest::show()
{
    list->show();
    list->tableView()->setFocus();
    QVERIFY(QTest::qWaitForWindowActive(list.get(), 30000));
}

void FilteredListTest::theFirstRowIsCurrentAfterTheListIsFilled()
{
    QCOMPARE(list->currentRow(), 0);
    QCOMPARE(list->selectedRows(), QList<int>({0}));
    QCOMPARE(list->tableView()->accessibleName(), QString("Records"));
    QCOMPARE(edit()->accessibleName(), QString("Regular expression"));
}

void FilteredListTest::typingAnExpressionFiltersTheRowsAndShowsTheirNumber()
{
    show();
    QCOMPARE(count(), QString("3 of 3 listed"));
    QTest::keyClicks(edit(), "install");
    QCOMPARE(count(), QString("2 of 3 listed"));
    QCOMPARE(list->tableView()->model()->rowCount(), 2);
    QTest::keyClicks(edit(), " k");
    QCOMPARE(count(), QString("1 of 3 listed"));
    edit()->clear();
    QCOMPARE(count(), QString("3 of 3 listed"));
}

void FilteredListTest::theCurrentRowStaysCurrentAsLongAsItIsListed()
{
    QSignalSpy spy(list.get(), SIGNAL(currentChanged(int)));
    list->setCurrentRow(2);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.takeFirst().at(0).toInt(), 2);
    list->setExpression("kernel");
    QCOMPARE(list->currentRow(), 2);
    QCOMPARE(list->selectedRows(), QList<int>({2}));
    list->tableView()->sortByColumn(0, Qt::AscendingOrder);
    QCOMPARE(list->currentRow(), 2);
    QCOMPARE(spy.count(), 0);
    list->setExpression("update");
    QCOMPARE(list->currentRow(), 0);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.takeFirst().at(0).toInt(), 0);
    list->setExpression("nothing like this");
    QCOMPARE(list->currentRow(), -1);
    QCOMPARE(spy.takeFirst().at(0).toInt(), -1);
}

void FilteredListTest::anInvalidExpressionHasTheErrorColourAndAnExplanation()
{
    show();
    QTest::keyClicks(edit(), "(");
    QCOMPARE(count(), QString("0 of 3 listed"));
    QVERIFY2(emptyText().startsWith("This is not a valid regular expression:\n"), qPrintable(emptyText()));
    QCOMPARE(edit()->palette().color(QPalette::Base), QColor(Colors::errorBg()));
    QTest::keyClicks(edit(), "kernel)");
    QCOMPARE(count(), QString("2 of 3 listed"));
    QVERIFY(edit()->palette().color(QPalette::Base) != QColor(Colors::errorBg()));
    QCOMPARE(emptyText(), QString());
}

void FilteredListTest::theListShowsTheReasonIfNoRowIsListed()
{
    list->setExpression("nothing like this");
    QCOMPARE(emptyText(), QString("Nothing matches."));
    records->reset({});
    QCOMPARE(emptyText(), QString("No records."));
    QCOMPARE(count(), QString("0 of 0 listed"));
}

void FilteredListTest::setCurrentRowSelectsTheRowEvenIfTheUserHoldsAModifierKey()
{
    // For example, the user still holds the Ctrl key of the shortcut that opens the window.
    for (const Qt::KeyboardModifier modifier : {Qt::ControlModifier, Qt::ShiftModifier}) {
        QTest::keyPress(list->tableView(), Qt::Key_F2, modifier);
        QVERIFY(QGuiApplication::keyboardModifiers().testFlag(modifier));
        list->setCurrentRow(0);
        QCOMPARE(list->selectedRows(), QList<int>{0});
        list->setCurrentRow(0);
        QCOMPARE(list->selectedRows(), QList<int>{0});
        list->setCurrentRow(1);
        QCOMPARE(list->selectedRows(), QList<int>{1});
        QTest::keyRelease(list->tableView(), Qt::Key_F2, Qt::NoModifier);
    }
}

void FilteredListTest::aSignalReportsTheCurrentRowWhenTheRecordsAreReplaced()
{
    QSignalSpy spy(list.get(), SIGNAL(currentChanged(int)));
    records->reset({{9, "remove shell"}});
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.takeFirst().at(0).toInt(), 0);
    records->reset({});
    QCOMPARE(spy.takeFirst().at(0).toInt(), -1);
}

void FilteredListTest::theSelectedRowsAreReturnedInTheOrderOfTheList()
{
    list->tableView()->sortByColumn(0, Qt::AscendingOrder);
    list->tableView()->selectAll();
    QCOMPARE(list->selectedRows(), QList<int>({2, 1, 0}));
    QSignalSpy spy(list.get(), SIGNAL(selectionChanged()));
    list->tableView()->clearSelection();
    QVERIFY(spy.count() > 0);
    QCOMPARE(list->selectedRows(), QList<int>());
}

void FilteredListTest::aClickOnAHeaderSortsTheRowsByThisColumn()
{
    show();
    QHeaderView* header = list->tableView()->horizontalHeader();
    const auto click = [header](int column) {
        QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier,
                          QPoint(header->sectionViewportPosition(column) + 5, header->height() / 2));
    };
    const auto first = [this] { return list->tableView()->model()->index(0, 0).data().toInt(); };
    click(0);
    QCOMPARE(first(), 1);
    click(0);
    QCOMPARE(first(), 3);
    click(1);
    QCOMPARE(first(), 1); // the row with the text "install kernel"
}

void FilteredListTest::theKeyboardReachesAllPartsOfTheList()
{
    show();
    QVERIFY(list->tableView()->hasFocus());
    QTest::keyClick(list.get(), Qt::Key_F, Qt::AltModifier);
    QTRY_VERIFY(edit()->hasFocus());
    QTest::keyClick(edit(), Qt::Key_Down);
    QTRY_VERIFY(list->tableView()->hasFocus());
    QTest::keyClick(list->tableView(), Qt::Key_Down);
    QCOMPARE(list->currentRow(), 1);
    QTest::keyClick(list->tableView(), Qt::Key_Backtab);
    QTRY_VERIFY(edit()->hasFocus());
    QTest::keyClick(edit(), Qt::Key_Tab);
    QTRY_VERIFY(list->tableView()->hasFocus());
}

void FilteredListTest::theListGetsTheFocusWhenTheWindowOpens()
{
    QWidget window;
    QVBoxLayout layout(&window);
    QPushButton before("Before");
    auto* shown = new FilteredList(records.get(), QStringLiteral("Records"));
    QPushButton after("After");
    for (QWidget* widget : QList<QWidget*>{&before, shown, &after}) {
        layout.addWidget(widget);
    }
    QWidget* const shownEdit = shown->findChild<QLineEdit*>();
    QWidget* const shownTable = shown->tableView();
    for (QWidget* focused : QList<QWidget*>{&after, shownEdit, &before}) {
        window.show();
        QCOMPARE(window.focusWidget(), shownTable);
        focused->setFocus();
        QCOMPARE(window.focusWidget(), focused);
        window.hide();
    }
    window.show();
    // Tab moves the focus from top to bottom, through the parts of the list and the widgets around it.
    before.setFocus();
    for (QWidget* next : QList<QWidget*>{shownEdit, shownTable, &after, &before}) {
        QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
        QTRY_COMPARE(window.focusWidget(), next);
    }
}

void FilteredListTest::theEnterKeyAndADoubleClickActivateTheRow()
{
    show();
    QSignalSpy spy(list.get(), SIGNAL(activated(int)));
    list->setExpression("install");
    QTest::keyClick(list->tableView(), Qt::Key_Return);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.takeFirst().at(0).toInt(), 1);
    HTableView* table = list->tableView();
    const QPoint place = table->visualRect(table->model()->index(1, 0)).center();
    QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    QTest::mouseDClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.takeFirst().at(0).toInt(), 2);
}

void FilteredListTest::aTooNarrowCellShowsItsTextAsToolTip()
{
    show();
    HTableView* table = list->tableView();
    table->horizontalHeader()->setStretchLastSection(false);
    const auto tip = [table](int column) {
        QToolTip::hideText();
        const QRect cell = table->visualRect(table->model()->index(0, column));
        QHelpEvent event(QEvent::ToolTip, cell.center(), table->viewport()->mapToGlobal(cell.center()));
        QCoreApplication::sendEvent(table->viewport(), &event);
        return QToolTip::text();
    };
    table->setColumnWidth(1, 300);
    QCOMPARE(tip(1), QString());
    table->setColumnWidth(1, 30);
    QVERIFY2(tip(1).contains("update kernel"), qPrintable(tip(1)));
    QToolTip::hideText();
}

void FilteredListTest::columnsFitTheirTextsIfTheListIsWideEnough()
{
    const QString text("a text of some length that is longer than thirty letters");
    records->reset({{text, 1}, {"short", 2}});
    list->resize(1000, 400);
    show();
    list->fitColumns();
    QVERIFY(list->tableView()->columnWidth(0) >= list->fontMetrics().horizontalAdvance(text));
    records->reset({{"short", 1}});
    list->fitColumns();
    QVERIFY(list->tableView()->columnWidth(0) < list->fontMetrics().horizontalAdvance(text));
}

void FilteredListTest::columnsWithLongTextsShareTheWidthOfTheList()
{
    FixedTable wide({{QString(300, 'w'), "short", QString(300, 'x'), "last"}}, 4);
    FilteredList shared(&wide, QStringLiteral("Records"));
    shared.resize(900, 400);
    shared.show();
    QVERIFY(QTest::qWaitForWindowExposed(&shared));
    const HTableView* table = shared.tableView();
    const auto checkShares = [table] {
        QCOMPARE(table->horizontalHeader()->length(), table->viewport()->width());
        QVERIFY(!table->horizontalScrollBar()->isVisible());
        QVERIFY(qAbs(table->columnWidth(0) - table->columnWidth(2)) <= 1);
        QVERIFY(table->columnWidth(1) < table->columnWidth(0));
    };
    shared.fitColumns();
    checkShares();
    const int before = table->columnWidth(0);
    shared.resize(700, 400);
    QTRY_VERIFY(table->columnWidth(0) < before);
    checkShares();
    // After the user has changed a width, the list does not change it.
    table->horizontalHeader()->resizeSection(0, 77);
    shared.resize(900, 400);
    QTRY_VERIFY(table->viewport()->width() > 800);
    QCOMPARE(table->columnWidth(0), 77);
}

void FilteredListTest::theDetailsPaneIsBelowTheList()
{
    auto* details = new QTextEdit;
    list->setDetails(details);
    list->resize(600, 600);
    show();
    QVERIFY(list->isAncestorOf(details));
    QTRY_VERIFY(details->mapTo(list.get(), QPoint()).y() >=
                list->tableView()->mapTo(list.get(), QPoint(0, list->tableView()->height())).y());
    QVERIFY(details->height() > 50);
}

void FilteredListTest::tenThousandRowsAreFiltered()
{
    QVector<FixedTable::Row> many;
    for (int i = 0; i < 10000; ++i) {
        many.append({i, i % 2 == 0 ? QStringLiteral("install") : QStringLiteral("remove")});
    }
    records->reset(many);
    list->tableView()->sortByColumn(0, Qt::DescendingOrder);
    list->setExpression("remove");
    QTRY_COMPARE(count(), QString("5000 of 10000 listed"));
    QCOMPARE(list->tableView()->model()->index(0, 0).data().toInt(), 9999);
}

void FilteredListTest::pasteDifficultExpression()
{
    show();
    records->append({4, letters(300)});
    QTest::keyClick(list.get(), Qt::Key_F, Qt::AltModifier); // selects the present expression
    QTRY_VERIFY(edit()->hasFocus());
    QApplication::clipboard()->setText(difficult);
    QTest::keyClick(edit(), Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(edit()->text(), difficult);
    QTRY_COMPARE(count(), comparing);
}

void FilteredListTest::theListRespondsWhileADifficultExpressionIsCompared()
{
    pasteDifficultExpression();
    bool answered = false;
    QTimer::singleShot(0, [&answered] { answered = true; });
    QTRY_VERIFY(answered);
    // The list still has the rows of the previous expression. The user can sort these rows and move to
    // another row.
    const QAbstractItemModel* listed = list->tableView()->model();
    QCOMPARE(listed->rowCount(), 4);
    QTest::keyClick(edit(), Qt::Key_Down);
    QTRY_VERIFY(list->tableView()->hasFocus());
    list->setCurrentRow(0);
    QTest::keyClick(list->tableView(), Qt::Key_Down);
    QCOMPARE(list->currentRow(), 1);
    list->tableView()->sortByColumn(0, Qt::AscendingOrder);
    QCOMPARE(listed->index(0, 0).data().toInt(), 1);
    QCOMPARE(list->currentRow(), 1);
    QCOMPARE(count(), comparing);
    QCOMPARE(emptyText(), QString());
}

void FilteredListTest::theRowsAreListedWhenTheComparisonWithADifficultExpressionEnds()
{
    show();
    records->append({4, letters(100)});
    records->append({5, "aab"});
    records->append({6, "aaa"});
    QTest::keyClicks(edit(), difficult);
    QTRY_COMPARE_WITH_TIMEOUT(count(), QString("2 of 6 listed"), 300000);
    QCOMPARE(list->tableView()->model()->index(0, 0).data().toInt(), 4);
    QCOMPARE(list->tableView()->model()->index(1, 0).data().toInt(), 5);
    QCOMPARE(edit()->text(), difficult);
}

void FilteredListTest::aNewerExpressionReplacesADifficultExpression()
{
    pasteDifficultExpression();
    edit()->selectAll();
    QTest::keyClicks(edit(), "install");
    QCOMPARE(count(), QString("2 of 4 listed"));
    edit()->selectAll();
    QTest::keyClicks(edit(), difficult);
    QTRY_COMPARE(count(), comparing);
    edit()->selectAll();
    QTest::keyClicks(edit(), "k(e).n\\1l$"); // also has a back reference
    QTRY_COMPARE(count(), QString("2 of 4 listed"));
    QCOMPARE(list->tableView()->model()->index(0, 0).data().toInt(), 3);
    QTest::qWait(500); // an older comparison must not change the list
    QCOMPARE(count(), QString("2 of 4 listed"));
    QCOMPARE(list->tableView()->model()->index(0, 0).data().toInt(), 3);
}

void FilteredListTest::stoppingAComparisonRestoresTheExpressionOfTheListedRows()
{
    QVERIFY(!list->stopComparing());
    list->setExpression("kernel");
    pasteDifficultExpression();
    QVERIFY(list->stopComparing());
    QCOMPARE(edit()->text(), QString("kernel"));
    QCOMPARE(count(), QString("2 of 4 listed"));
    QVERIFY(!list->stopComparing());
    QTest::keyClick(edit(), Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(edit()->text(), difficult);
    QTRY_COMPARE(count(), comparing);
}

void FilteredListTest::stoppingAComparisonListsAllRowsIfThePreviousExpressionIsInvalid()
{
    list->setExpression("(");
    pasteDifficultExpression();
    QVERIFY(list->stopComparing());
    QCOMPARE(edit()->text(), QString());
    QCOMPARE(count(), QString("4 of 4 listed"));
}

void FilteredListTest::aDifficultExpressionCanBeTyped()
{
    show();
    records->append({4, letters(300)});
    QTest::keyClicks(edit(), difficult);
    QTRY_COMPARE(count(), comparing);
    QCOMPARE(edit()->text(), difficult);
    QVERIFY(edit()->palette().color(QPalette::Base) != QColor(Colors::errorBg()));
}

void FilteredListTest::hidingTheListStopsTheComparison()
{
    pasteDifficultExpression();
    list->hide();
    QVERIFY(!list->stopComparing());
    QCOMPARE(edit()->text(), QString());
    QCOMPARE(count(), QString("4 of 4 listed"));
}

void FilteredListTest::newRowsDuringAComparisonAreFilteredAndTheRequestedRowBecomesCurrent()
{
    pasteDifficultExpression();
    QSignalSpy spy(list.get(), SIGNAL(currentChanged(int)));
    records->reset({{1, "aab"}, {2, letters(100)}, {3, "aaa"}, {4, "b"}});
    list->setCurrentRow(3);
    QTRY_COMPARE_WITH_TIMEOUT(count(), QString("3 of 4 listed"), 300000);
    QCOMPARE(list->tableView()->model()->index(1, 0).data().toInt(), 2);
    QCOMPARE(list->currentRow(), 3);
    QCOMPARE(spy.last().at(0).toInt(), 3);
    QCOMPARE(edit()->text(), difficult);
}

void FilteredListTest::allRowsAreListedIfAComparisonWithNewRowsIsStopped()
{
    pasteDifficultExpression();
    records->reset({{1, "kernel"}, {2, letters(300)}});
    QCOMPARE(list->tableView()->model()->rowCount(), 0); // the comparison has found no matching row so far
    QCOMPARE(list->currentRow(), -1);
    QCOMPARE(emptyText(), QString("Comparing the rows with the expression..."));
    QTRY_COMPARE(count(), comparing);
    QVERIFY(list->stopComparing());
    QCOMPARE(edit()->text(), QString());
    QCOMPARE(count(), QString("2 of 2 listed"));
    QCOMPARE(list->currentRow(), 0);
}

void FilteredListTest::theListCanBeDeletedDuringAComparison()
{
    pasteDifficultExpression();
    list.reset();
    records.reset();
    QTest::qWait(100);
}

QTEST_MAIN(FilteredListTest)
#include "FilteredListTest.moc"
