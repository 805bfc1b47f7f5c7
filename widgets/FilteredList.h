// SPDX-License-Identifier: GPL-2.0-or-later

// A widget with a filtered list of records: the edit for the filter expression, the number of listed records,
// the list, and an area below the list for the details of the current record. A window that uses this widget
// adds only its own buttons.
//
// The list is filtered while the user types. If the comparison of the rows with an expression takes long, a
// text shows that the comparison runs, and the list keeps its rows until the comparison ends. The user can
// stop the comparison with Escape or by closing the window. Then the edit shows the expression of the listed
// rows again. The window must call stopComparing() when the user presses Escape.
//
// The model provides the rows and columns. It may also provide tool tips, and values for SortRole and
// SearchRole of FilteredRows. If a cell without a tool tip has a text that is too long for its column, the
// list shows this text as the tool tip. If the list is not empty, one row is current. This row stays current
// as long as the list contains it.
//
// The object lives on the graphical thread; its Qt parent owns it. The surrounding window owns the model.

#ifndef WIDGETS_FILTEREDLIST_H
#define WIDGETS_FILTEREDLIST_H

#include <QList>
#include <QPersistentModelIndex>
#include <QString>
#include <QWidget>

#include <vector>

class ExpressionEdit;
class FilteredRows;
class HAbstractTableModel;
class HTableView;
class PlainLabel;
class QModelIndex;
class QSplitter;

class FilteredList : public QWidget
{
    Q_OBJECT

public:
    // Assistive programs read `name` as the name of the list.
    FilteredList(HAbstractTableModel* model, const QString& name, QWidget* parent = nullptr);

    // Sets the plain text that the list shows if the model has no rows.
    void setEmptyText(const QString& text);
    // Sets the widget below the list. This widget becomes a child of the FilteredList. The user can move the
    // border between the list and this widget.
    void setDetails(QWidget* details);

    // Makes each column as wide as its longest texts. If the list is too narrow for this, columns with long
    // texts share the width that the other columns leave. The widths follow the width of the list until the
    // user changes a width.
    void fitColumns();

    QString expression() const;
    void setExpression(const QString& text);
    // Stops a running comparison. The edit then has the previous expression again. But if the previous
    // expression is invalid, the edit becomes empty. If no comparison runs, returns false.
    bool stopComparing();

    // currentRow() and setCurrentRow() use rows of the model. -1 means that no row is current, because no row
    // is listed.
    int currentRow() const;
    void setCurrentRow(int row);
    // Returns rows of the model, in the order of the list.
    QList<int> selectedRows() const;

    HTableView* tableView() const { return table; }

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    // Gives the focus to the list, each time the window opens. The widget has no focus proxy: with a proxy,
    // the Tab key would go from the last button of the window to the list, and never to the edit.
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

Q_SIGNALS:
    // Emitted when another row becomes current. The argument is a row of the model, or -1.
    void currentChanged(int row);
    void selectionChanged();
    // Emitted when the user presses Enter or double-clicks on a row. The argument is a row of the model.
    void activated(int row);

private Q_SLOTS:
    void applyExpression();
    void handleLongComparison(bool running);
    void aboutToList();
    void listed();
    void handleSelection();
    void handleHeader(int column);
    void handleActivated(const QModelIndex& index);
    void columnResized(int column);

private:
    void updateTexts();
    // Returns the width of the column's longest texts.
    int widthOfTexts(int column) const;
    void shareWidth();
    void selectCurrent(int row);
    void reportCurrent();

    HAbstractTableModel* model;
    FilteredRows* rows;
    ExpressionEdit* edit;
    PlainLabel* countLabel;
    QSplitter* splitter;
    HTableView* table;
    QString emptyText;
    QPersistentModelIndex kept;   // the row that was current before the list changed
    QPersistentModelIndex wanted; // the row that becomes current when the comparison ends
    bool comparingLong;           // whether a text shows that the rows are being compared
    int reported;                 // the row that the last currentChanged() reported
    bool listing;                 // true while the list changes; selection signals are then ignored
    std::vector<int>
        textWidths; // the widths of the columns' longest texts; while empty, shareWidth() does nothing
    bool sharing;   // true while shareWidth() changes the widths
};

#endif
