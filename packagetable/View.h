// SPDX-License-Identifier: GPL-2.0-or-later

// The view of the package table. A click on the Action column or a context menu sets actions. Signals report
// the current row and changed actions.
//
// The object lives on the graphical thread; the table area of the main window is its Qt parent. The view owns
// its two context menus.

#ifndef PACKAGETABLE_VIEW_H
#define PACKAGETABLE_VIEW_H

#include <memory>
#include <vector>

#include <QElapsedTimer>
#include <QList>
#include <QPersistentModelIndex>
#include <QPoint>
#include <QString>
#include <QVector>

#include "widgets/HTableView.h"

namespace PackageTable {

class ActionContextMenu;
class Model;
class OtherContextMenu;
class SortFilterProxyModel;
class WidthEstimate;

class View : public HTableView
{
    Q_OBJECT

public:
    // The main window owns both models. `packages` is the source of `sortedRows`.
    View(Model* packages, SortFilterProxyModel* sortedRows, QWidget* parent = nullptr);
    ~View() override;

    // Returns source indexes.
    QModelIndexList selectedRows() const;

    // The user's changes to the columns since they were last fitted. Each column has a width in pixels, or 0
    // for the fitted width, and a position from the left. A layout whose number of columns differs from the
    // table's is not restored.
    struct Layout
    {
        QList<int> widths;
        QList<int> places;
    };
    // Does the same as resizeColumnsToContents(). If `widest` is not null, it points to one list of source
    // rows for each column. In this case, the view measures only the rows in these lists.
    void fitColumns(const std::vector<int>* widest);
    Layout layoutByHand() const;
    void restoreLayout(const Layout& layout);

public Q_SLOTS:
    void reset() override;
    // Opens the description of the package in the current row. If no row is current, does nothing.
    void describe();
    // Fits the columns to all records, including unlisted records, so that no text is truncated after a
    // change to the filter.
    void resizeColumnsToContents();
    void handleHorizontalHeaderClicked(int column);
    void handleActivated(const QModelIndex& index);
    void handleCustomContextMenuRequested(const QPoint& pos);

Q_SIGNALS:
    // Emitted when another row becomes current. The arguments are source rows; -1 means no row.
    void currentChanged(int current, int previous);
    // Emitted when an action has changed. The argument is the source row, or -1 if several actions may have
    // changed.
    void stateChanged(int row);
    // Emitted when the user tries to change the action of a row that permits no action. The reason is plain
    // text.
    void actionRefused(const QString& reason);
    // Emitted when the user wants to lock or unlock the versions of these source rows.
    void versionLocksChosen(const QList<int>& rows, bool locked);

protected:
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void changeEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    // The Enter key opens the description of the package in the current row. The space key changes the action
    // of the current row to the next permitted action; repetitions of a held space key are ignored.
    void keyPressEvent(QKeyEvent* event) override;
    int contentsWidthForColumn(int column) const override;

private:
    void adaptColors();

    Model* model;
    SortFilterProxyModel* proxy;
    int currentRow;                                  // the row that the last currentChanged() reported
    const std::vector<int>* widestRecords = nullptr; // the argument of fitColumns() while it runs
    bool fittingRecords; // true while the columns are fitted to all records, not only to the listed ones
    // The following four members describe the last click on a cell of the Action column.
    QPersistentModelIndex pressedRecord; // an index of the source model
    int pressedRow = -1;                 // the row of the proxy that contained the record at the click
    QPoint pressedAt;
    QElapsedTimer sincePress;
    bool pressIsHandled = false;   // the current press has already changed an action
    ActionContextMenu* actionMenu; // null until the user first opens it
    OtherContextMenu* otherMenu;   // null until the user first opens it
    QVector<int> fittedWidths;     // widths by column, in pixels; empty before the first fit
    mutable std::unique_ptr<WidthEstimate> widthEstimate; // uses the font of the last fit
};

} // namespace PackageTable

#endif
