// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoEditorView.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>

#include "repo/RepoEditorContextMenu.h"
#include "repo/RepoEditorModel.h"
#include "repo/RepoEditorSortFilterProxyModel.h"
#include "repo/RepoEntry.h"
#include "tests/repo/Editor.h"
#include "tests/support/Menus.h"

using namespace RepoEditor;

namespace {

class OpenView : public View
{
public:
    using View::View;
    using View::viewOptions;
};

} // namespace

class RepoEditorViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void theTableHasTheExpectedProperties();
    void theTabKeyMovesTheFocusOutOfTheTable();
    void gettingTheFocusDoesNotChangeTheCurrentRow();
    void arrowKeysMakeARowCurrent();
    void aClickOnAHeaderSortsTheRowsByThisColumn();
    void theUserCanMoveColumns();
    void aSignalReportsAChangeOfTheCurrentRow();
    void noSignalIsEmittedIfOnlyTheCurrentColumnChanges();
    void aResetOfTheModelEmitsASignalThatNoRowIsCurrent();
    void theCurrentRowCanBeSet();
    void theSelectedRowsAreRowsOfTheSourceModel();
    void oneClickTogglesTheSessionState();
    void oneClickTogglesThePermanentState();
    void clicksOnTextCellsToggleNoBox();
    void aClickWithTheRightButtonTogglesNoBox();
    void aClickTogglesTheBoxEvenIfItsColumnWasMoved();
    void aDoubleClickEmitsASignalWithTheRowOfTheSourceModel();
    void aRightClickOnATextCellOpensAMenu();
    void aRightClickOnABoxOpensNoMenu();
    void aRightClickBelowTheRowsOpensAMenuWithDisabledEntries();
    void aRightClickOnTheHeaderOpensNoMenu();
    void theContextMenuIsCreatedOnlyOnce();

private:
    int listedRow(const QString& id) const
    {
        for (int row = 0; row < proxy->rowCount(); ++row) {
            if (proxy->index(row, IdentifierColumn).data().toString() == id) {
                return row;
            }
        }
        qFatal("the repository %s is missing", qPrintable(id));
    }
    QPoint place(const QString& id, int column) const
    {
        const QRect cell = view->visualRect(proxy->index(listedRow(id), column));
        return QPoint(cell.left() + 10, cell.center().y());
    }
    // Sends the click to the window, as the window system does. Qt chooses the widget that receives it.
    void click(QWidget* widget, const QPoint& where, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::mouseClick(window->windowHandle(), button, modifiers, widget->mapTo(window.get(), where));
    }
    void click(const QString& id, int column, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        click(view->viewport(), place(id, column), button, modifiers);
    }
    QStringList listed() const
    {
        QStringList ids;
        for (int row = 0; row < proxy->rowCount(); ++row) {
            ids << proxy->index(row, IdentifierColumn).data().toString();
        }
        return ids;
    }

    QList<YumRepoEnabled> requests;
    QHash<QString, bool> session;
    std::unique_ptr<YumConfIO> conf;
    std::unique_ptr<Model> model;
    std::unique_ptr<SortFilterProxyModel> proxy;
    std::unique_ptr<QWidget> window;
    View* view = nullptr;
};

void RepoEditorViewTest::init()
{
    session.clear();
    conf = std::make_unique<YumConfIO>(requests, session);
    conf->enabled = true;
    for (const char* id : {"updates", "base", "extras"}) {
        Repo::Entry entry;
        entry.id = QLatin1String(id);
        entry.name = entry.id.toUpper();
        conf->entries.append(entry);
    }
    model = std::make_unique<Model>(nullptr, conf.get());
    proxy = std::make_unique<SortFilterProxyModel>();
    proxy->setSourceModel(model.get());
    window = std::make_unique<QWidget>();
    auto* layout = new QVBoxLayout(window.get());
    view = new View(model.get(), proxy.get(), window.get());
    layout->addWidget(view);
    layout->addWidget(new QPushButton(window.get()));
    window->resize(500, 300);
    window->show();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    view->HTableView::sortByColumn(IdentifierColumn);
    view->setFocus();
}

void RepoEditorViewTest::cleanup()
{
    window.reset();
    proxy.reset();
    model.reset();
    conf.reset();
}

void RepoEditorViewTest::theTableHasTheExpectedProperties()
{
    OpenView fresh(model.get(), proxy.get());
    QCOMPARE(fresh.model(), proxy.get());
    QVERIFY(!fresh.showGrid());
    QVERIFY(fresh.alternatingRowColors());
    QCOMPARE(fresh.contextMenuPolicy(), Qt::CustomContextMenu);
    QVERIFY(!fresh.tabKeyNavigation());
    QVERIFY(fresh.verticalHeader()->isHidden());
    QVERIFY(fresh.horizontalHeader()->sectionsMovable());
    QVERIFY(fresh.horizontalHeader()->sectionsClickable());
    QVERIFY(fresh.horizontalHeader()->stretchLastSection());
    QCOMPARE(fresh.selectionBehavior(), QAbstractItemView::SelectRows);
    QCOMPARE(fresh.viewOptions().decorationPosition, QStyleOptionViewItem::Left);
}

void RepoEditorViewTest::theTabKeyMovesTheFocusOutOfTheTable()
{
    QTest::keyClick(view, Qt::Key_Tab);
    QVERIFY(qobject_cast<QPushButton*>(QApplication::focusWidget()) != nullptr);
}

void RepoEditorViewTest::gettingTheFocusDoesNotChangeTheCurrentRow()
{
    QCOMPARE(view->currentRow(), -1);
    QTest::keyClick(view, Qt::Key_Tab);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
    QCOMPARE(QApplication::focusWidget(), view);
    QCOMPARE(view->currentRow(), -1);
    // If a row is current, a new focus does not change the current row.
    click(QStringLiteral("base"), IdentifierColumn);
    QTest::keyClick(view, Qt::Key_Tab);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
    QCOMPARE(view->currentRow(), 1);
}

void RepoEditorViewTest::arrowKeysMakeARowCurrent()
{
    QTest::keyClick(view, Qt::Key_Down);
    QCOMPARE(view->currentRow(), 1);
    QCOMPARE(view->selectedRows().size(), 1);
    QTest::keyClick(view, Qt::Key_Down);
    QCOMPARE(view->currentRow(), 2);
}

void RepoEditorViewTest::aClickOnAHeaderSortsTheRowsByThisColumn()
{
    QHeaderView* header = view->horizontalHeader();
    const QPoint name(header->sectionViewportPosition(NameColumn) + 5, header->height() / 2);
    QCOMPARE(listed(), (QStringList{"base", "extras", "updates"}));
    click(header->viewport(), name);
    QCOMPARE(header->sortIndicatorSection(), int(NameColumn));
    QCOMPARE(listed(), (QStringList{"base", "extras", "updates"}));
    click(header->viewport(), name);
    QCOMPARE(listed(), (QStringList{"updates", "extras", "base"}));
    const QPoint identifier(header->sectionViewportPosition(IdentifierColumn) + 15, header->height() / 2);
    click(header->viewport(), identifier);
    QCOMPARE(listed(), (QStringList{"base", "extras", "updates"}));
}

void RepoEditorViewTest::theUserCanMoveColumns()
{
    view->horizontalHeader()->moveSection(NameColumn, 0);
    QCOMPARE(view->horizontalHeader()->visualIndex(NameColumn), 0);
    QCOMPARE(listed(), (QStringList{"base", "extras", "updates"}));
}

void RepoEditorViewTest::aSignalReportsAChangeOfTheCurrentRow()
{
    QSignalSpy spy(view, SIGNAL(currentChanged(int, int)));
    click(QStringLiteral("updates"), IdentifierColumn);
    click(QStringLiteral("base"), IdentifierColumn);
    view->setCurrentIndex(QModelIndex());
    QList<QPair<int, int>> rows;
    for (const QList<QVariant>& each : spy) {
        rows << qMakePair(each.at(0).toInt(), each.at(1).toInt());
    }
    QCOMPARE(rows, (QList<QPair<int, int>>{{0, -1}, {1, 0}, {-1, 1}}));
}

void RepoEditorViewTest::noSignalIsEmittedIfOnlyTheCurrentColumnChanges()
{
    click(QStringLiteral("updates"), IdentifierColumn);
    QSignalSpy spy(view, SIGNAL(currentChanged(int, int)));
    click(QStringLiteral("updates"), NameColumn);
    QTest::keyClick(view, Qt::Key_Left);
    QCOMPARE(spy.size(), 0);
}

void RepoEditorViewTest::aResetOfTheModelEmitsASignalThatNoRowIsCurrent()
{
    click(QStringLiteral("extras"), IdentifierColumn);
    QSignalSpy spy(view, SIGNAL(currentChanged(int, int)));
    model->reset();
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy.at(0).at(0).toInt(), -1);
    QCOMPARE(spy.at(0).at(1).toInt(), 2);
    QCOMPARE(view->currentRow(), -1);
    model->reset();
    QCOMPARE(spy.size(), 1);
}

void RepoEditorViewTest::theCurrentRowCanBeSet()
{
    view->setCurrentRow(0);
    QCOMPARE(view->currentRow(), 0);
    QCOMPARE(view->currentIndex(), proxy->index(2, 0));
    QCOMPARE(view->selectedRows().size(), 1);
    view->setCurrentRow(7);
    QCOMPARE(view->currentRow(), -1);
}

void RepoEditorViewTest::theSelectedRowsAreRowsOfTheSourceModel()
{
    click(QStringLiteral("updates"), IdentifierColumn);
    click(QStringLiteral("base"), IdentifierColumn, Qt::LeftButton, Qt::ControlModifier);
    QList<int> rows;
    for (const QModelIndex& index : view->selectedRows()) {
        QCOMPARE(index.model(), model.get());
        rows << index.row();
    }
    std::sort(rows.begin(), rows.end());
    QCOMPARE(rows, (QList<int>{0, 1}));
}

void RepoEditorViewTest::oneClickTogglesTheSessionState()
{
    QSignalSpy uses(model.get(), SIGNAL(useChanged()));
    click(QStringLiteral("updates"), SessionColumn);
    QCOMPARE(uses.size(), 1);
    QCOMPARE(session.value(QStringLiteral("updates")), true);
    QCOMPARE(session.value(QStringLiteral("base")), false);
    QTest::qWait(QApplication::doubleClickInterval() + 50);
    click(QStringLiteral("updates"), SessionColumn);
    QCOMPARE(uses.size(), 2);
    QCOMPARE(session.value(QStringLiteral("updates")), false);
}

void RepoEditorViewTest::oneClickTogglesThePermanentState()
{
    QSignalSpy configs(model.get(), SIGNAL(configChanged()));
    click(QStringLiteral("base"), PermanentColumn);
    QCOMPARE(configs.size(), 1);
    QCOMPARE(conf->entries.at(1).enabled, 0);
    QCOMPARE(conf->entries.at(0).enabled, 1);
}

void RepoEditorViewTest::clicksOnTextCellsToggleNoBox()
{
    QSignalSpy uses(model.get(), SIGNAL(useChanged()));
    QSignalSpy configs(model.get(), SIGNAL(configChanged()));
    click(QStringLiteral("base"), IdentifierColumn);
    click(QStringLiteral("updates"), NameColumn);
    click(view->viewport(), QPoint(5, view->viewport()->height() - 3));
    QCOMPARE(uses.size() + configs.size(), 0);
}

void RepoEditorViewTest::aClickWithTheRightButtonTogglesNoBox()
{
    QSignalSpy uses(model.get(), SIGNAL(useChanged()));
    click(QStringLiteral("base"), SessionColumn, Qt::RightButton);
    click(QStringLiteral("base"), SessionColumn, Qt::MiddleButton);
    QCOMPARE(uses.size(), 0);
}

void RepoEditorViewTest::aClickTogglesTheBoxEvenIfItsColumnWasMoved()
{
    view->horizontalHeader()->moveSection(SessionColumn, 2);
    QSignalSpy uses(model.get(), SIGNAL(useChanged()));
    click(QStringLiteral("base"), SessionColumn);
    QCOMPARE(uses.size(), 1);
}

void RepoEditorViewTest::aDoubleClickEmitsASignalWithTheRowOfTheSourceModel()
{
    QSignalSpy activated(view, SIGNAL(activated(const QModelIndex&)));
    const QPoint where = view->viewport()->mapTo(window.get(), place(QStringLiteral("updates"), NameColumn));
    QTest::mouseDClick(window->windowHandle(), Qt::LeftButton, Qt::NoModifier, where);
    QCOMPARE(activated.size(), 1);
    const QModelIndex index = activated.at(0).at(0).toModelIndex();
    QCOMPARE(index.model(), model.get());
    QCOMPARE(index.row(), 0);
}

void RepoEditorViewTest::aRightClickOnATextCellOpensAMenu()
{
    QSignalSpy edits(view->getContextMenu(), SIGNAL(edit(QModelIndex)));
    for (int column : {int(IdentifierColumn), int(NameColumn)}) {
        QVERIFY(withMenu([this, column] { click(QStringLiteral("updates"), column, Qt::RightButton); },
                         [](QMenu& menu) {
                             QStringList texts;
                             for (const QAction* action : menu.actions()) {
                                 texts << action->text();
                                 QVERIFY(action->isEnabled());
                             }
                             QCOMPARE(texts, (QStringList{"Edit", "Browse Repository"}));
                             choose(menu, QStringLiteral("Edit"));
                         }));
    }
    QCOMPARE(edits.size(), 2);
    QCOMPARE(edits.at(0).at(0).toModelIndex().row(), 0);
    QCOMPARE(edits.at(0).at(0).toModelIndex().model(), model.get());
}

void RepoEditorViewTest::aRightClickOnABoxOpensNoMenu()
{
    for (int column : {int(SessionColumn), int(PermanentColumn)}) {
        QVERIFY(!withMenu([this, column] { click(QStringLiteral("updates"), column, Qt::RightButton); },
                          [](QMenu&) {}));
    }
}

void RepoEditorViewTest::aRightClickBelowTheRowsOpensAMenuWithDisabledEntries()
{
    QSignalSpy edits(view->getContextMenu(), SIGNAL(edit(QModelIndex)));
    const QPoint empty(60, view->viewport()->height() - 5);
    QVERIFY(!view->indexAt(empty).isValid());
    for (const char* text : {"Edit", "Browse Repository"}) {
        QVERIFY(withMenu([this, empty] { click(view->viewport(), empty, Qt::RightButton); },
                         [text](QMenu& menu) {
                             QVERIFY(!actionOf(menu, QLatin1String(text))->isEnabled());
                             choose(menu, QLatin1String(text));
                         }));
    }
    QCOMPARE(edits.size(), 0);
}

void RepoEditorViewTest::aRightClickOnTheHeaderOpensNoMenu()
{
    QHeaderView* header = view->horizontalHeader();
    QVERIFY(!withMenu(
        [this, header] {
            click(header->viewport(), QPoint(header->sectionViewportPosition(NameColumn) + 5, 5),
                  Qt::RightButton);
        },
        [](QMenu&) {}));
}

void RepoEditorViewTest::theContextMenuIsCreatedOnlyOnce()
{
    const QList<QMenu*> before = view->findChildren<QMenu*>();
    const ContextMenu* menu = view->getContextMenu();
    QCOMPARE(view->getContextMenu(), menu);
    QCOMPARE(view->findChildren<QMenu*>().size(), before.size() + 1);
}

QTEST_MAIN(RepoEditorViewTest)
#include "RepoEditorViewTest.moc"
