// SPDX-License-Identifier: GPL-2.0-or-later

// The view of the package table. A click on the Action column or a context menu sets actions. Signals report
// the current row and changed actions.
//
// Graphical thread; a child of the table area of the main window. Owns its two context menus.

#ifndef PACKAGETABLE_VIEW_H
#define PACKAGETABLE_VIEW_H

#include <memory>

#include <QList>
#include <QString>
#include <QVector>

#include "widgets/HTableView.h"

namespace PackageTable {

class ActionContextMenu;
class Model;
class OtherContextMenu;
class SortFilterProxyModel;

class View : public HTableView
{
    Q_OBJECT

public:
    // Neither model is owned; the proxy's source is the model.
    View(Model* packages, SortFilterProxyModel* sortedRows, QWidget* parent = nullptr);
    ~View() override;

    // Source indexes.
    QModelIndexList selectedRows() const;

    // The text in place of rows if no row is listed; plain text.
    void setEmptyText(const QString& text);

    // The changes of the user to the columns since the last fit: for each column its width in pixels, or 0
    // for the fitted width, and its position from the left. A layout with another number of columns is not
    // restored.
    struct Layout
    {
        QList<int> widths;
        QList<int> places;
    };
    Layout layoutByHand() const;
    void restoreLayout(const Layout& layout);

public Q_SLOTS:
    void reset() override;
    // Describes the package of the current row, if any.
    void describe();
    // Fits the columns to all records, including those not listed, so that another filter cuts no text off.
    void resizeColumnsToContents();
    void handleHorizontalHeaderClicked(int column);
    void handleActivated(const QModelIndex& index);
    void handleCustomContextMenuRequested(const QPoint& pos);

Q_SIGNALS:
    // Source rows; -1 for none.
    void currentChanged(int current, int previous);
    // The source row whose action has changed; -1 for possibly many.
    void stateChanged(int row);
    // The user has requested another action for a row that permits none; plain text.
    void actionRefused(const QString& reason);

protected:
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    // Enter describes the package of the current row. The space key switches to the next action of the
    // current row.
    void keyPressEvent(QKeyEvent* event) override;
    int contentsWidthForColumn(int column) const override;

private Q_SLOTS:
    // Reports the text of the empty table to screen readers.
    void tellWhetherEmpty();

private:
    class WidthEstimate;

    void adaptColors();

    Model* model;
    SortFilterProxyModel* proxy;
    int currentRow;                // from the last signal
    bool fittingRecords;           // true while columns are fitted to all records, not only to listed ones
    ActionContextMenu* actionMenu; // null until first needed
    OtherContextMenu* otherMenu;   // null until first needed
    QString emptyText;
    QVector<int> fittedWidths;                            // by column, in pixels; empty before the first fit
    mutable std::unique_ptr<WidthEstimate> widthEstimate; // for the font of the last fit
};

} // namespace PackageTable

#endif
