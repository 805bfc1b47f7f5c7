// The package table as the user sees it: sets actions by a click on the Action column or from a context menu,
// and tells which row is current and when actions have changed.
//
// Graphical thread; a child of the main window's table area. Owns its two context menus.

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

    // What is drawn in place of rows when none is listed; plain text.
    void setEmptyText(const QString& text);

    // What the user has made of the columns since they were fitted: for each column its width in pixels, 0
    // where it is the fitted one, and its place from the left. Of another number of columns, nothing is
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
    // Describes the package of the current row, if there is one.
    void describe();
    // Fits the columns to all records, also those not listed: another filter then cuts nothing off.
    void resizeColumnsToContents();
    void handleHorizontalHeaderClicked(int column);
    void handleActivated(const QModelIndex& index);
    void handleCustomContextMenuRequested(const QPoint& pos);

Q_SIGNALS:
    // Source rows; -1 for none.
    void currentChanged(int current, int previous);
    // The source row whose action has changed; -1 for possibly many.
    void stateChanged(int row);
    // The user wants another action for a row that permits none; plain text.
    void actionRefused(const QString& reason);

protected:
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    // Enter describes the package of the current row. The space key goes on to the current row's next action.
    void keyPressEvent(QKeyEvent* event) override;
    int contentsWidthForColumn(int column) const override;

private Q_SLOTS:
    // For those who do not see that nothing is drawn in place of rows.
    void tellWhetherEmpty();

private:
    class WidthEstimate;

    void adaptColors();

    Model* model;
    SortFilterProxyModel* proxy;
    int currentRow;                // as announced last
    bool fittingRecords;           // columns are fitted to all records, not to the listed ones
    ActionContextMenu* actionMenu; // null until first needed
    OtherContextMenu* otherMenu;   // null until first needed
    QString emptyText;
    QVector<int> fittedWidths;                            // by column, in pixels; empty before the first fit
    mutable std::unique_ptr<WidthEstimate> widthEstimate; // for the font of the last fit
};

} // namespace PackageTable

#endif
