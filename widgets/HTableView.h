// SPDX-License-Identifier: GPL-2.0-or-later

// A table view whose size hint fits its columns and a given number of rows. It can fit its columns and its
// window to the contents.
//
// Graphical thread; owned by its Qt parent. The model is not owned.

#ifndef WIDGETS_HTABLEVIEW_H
#define WIDGETS_HTABLEVIEW_H

#include <QTableView>

class HTableView : public QTableView
{
    Q_OBJECT

public:
    // The size hint has room for at least minRows and at most maxRows rows.
    HTableView(QStyleOptionViewItem::Position decorationPosition, int minRows, int maxRows,
               QWidget* parent = nullptr);

    // The first call fixes the number of rows in the size hint, from the number of rows in the model at that
    // time. Later changes of that number do not resize the view.
    QSize sizeHint() const override;

    // In pixels; considers all rows, not only the visible ones; -1 without a model.
    int sizeHintForColumn(int column) const override;

    // The selectable rows of the selection, in selection order. Each index is in the leftmost selected column
    // of its row.
    QModelIndexList selectedRows() const;

    // The pixels that the frame needs in addition, if the style draws it around the contents but not around
    // the scroll bars; otherwise 0.
    int frameOnlyAroundContentsPixels() const;

    // Makes all rows one line of text high, with icons of a matching size, and adjusts them when the font
    // changes. The view then does not ask each row for its height, which would be slow with very many rows.
    void setOneLineRows();

public Q_SLOTS:
    // Fits the columns to their contents. Then enlarges the window to its size hint, as far as the screen
    // permits.
    void resizeColumnsToContents();

    // Sorts in the order that the header shows for the column; ascending if it shows none. Does nothing
    // without a model.
    void sortByColumn(int column);
    void sortByColumn(int column, Qt::SortOrder order);

protected:
    QStyleOptionViewItem viewOptions() const override;
    void changeEvent(QEvent* event) override;
    // Shift+F10 opens the menu of the current cell, as the menu key does.
    void keyPressEvent(QKeyEvent* event) override;

    // The width in pixels of the widest cell of the column, without the grid. It is called only with a model.
    // This implementation asks the delegate about every row. A view of very many rows can override it with a
    // faster one.
    virtual int contentsWidthForColumn(int column) const;

private:
    void fitRowsToFont();

    QStyleOptionViewItem::Position decorationPosition;
    // Both are equal once the number of rows is fixed.
    mutable int minRows;
    mutable int maxRows;
    bool oneLineRows;
};

#endif
