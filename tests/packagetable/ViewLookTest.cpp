// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/packagetable/ShownView.h"
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

// Tests of the look of the view.
class ViewLookTest : public ShownView
{
    Q_OBJECT

private Q_SLOTS:
    void theViewSelectsWholeRowsAndShowsNoGrid();
    void theTextColoursAreReadableInADarkPalette();
    void theSizeHintHasSpaceForAtLeastTenRows();
    void theSizeHintHasSpaceForElevenRowsIfTheTableHasElevenRows();
    void textsInADisabledViewHaveTheColoursOfDisabledText();
};

void ViewLookTest::theTextColoursAreReadableInADarkPalette()
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

void ViewLookTest::theViewSelectsWholeRowsAndShowsNoGrid()
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

void ViewLookTest::theSizeHintHasSpaceForAtLeastTenRows()
{
    table->collect({}, {}, {StandIn::package("one")});
    shown->model.reset();
    View fresh(&shown->model, &shown->proxy);
    const int header = fresh.horizontalHeader()->sizeHint().height();
    QCOMPARE(fresh.sizeHint().height(), 2 * fresh.frameWidth() + header + 10 * fresh.rowHeight(0));
}

void ViewLookTest::theSizeHintHasSpaceForElevenRowsIfTheTableHasElevenRows()
{
    QCOMPARE(shown->proxy.rowCount(), 11);
    View fresh(&shown->model, &shown->proxy);
    const int header = fresh.horizontalHeader()->sizeHint().height();
    QCOMPARE(fresh.sizeHint().height(), 2 * fresh.frameWidth() + header + 11 * fresh.rowHeight(0));
}

void ViewLookTest::textsInADisabledViewHaveTheColoursOfDisabledText()
{
    const QModelIndex cell = shown->proxy.index(shown->listedRow("tool"), NameColumn);
    QCOMPARE(cell.data(Qt::ForegroundRole).value<QColor>(), QColor(Colors::error()));
    shown->window.setEnabled(false);
    QCOMPARE(cell.data(Qt::ForegroundRole).value<QColor>(), QColor(Colors::errorDisabled()));
    shown->window.setEnabled(true);
    QCOMPARE(cell.data(Qt::ForegroundRole).value<QColor>(), QColor(Colors::error()));
}

QTEST_MAIN(ViewLookTest)
#include "ViewLookTest.moc"
