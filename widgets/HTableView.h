// A table view that asks for the room its columns and a given number of rows need, and can fit its columns
// and its window to the contents.
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

    // The first call decides, by the rows that the model then has, for how many rows the view asks room; the
    // view does not grow or shrink as rows come and go later.
    QSize sizeHint() const override;

    // In pixels, over all rows, not only the visible ones; -1 without a model.
    int sizeHintForColumn(int column) const override;

    // The rows of the selection that can be selected, in selection order, each by its leftmost selected
    // column.
    QModelIndexList selectedRows() const;

    // The pixels that a style takes which draws the frame around the contents but not around the scroll bars.
    int frameOnlyAroundContentsPixels() const;

    // Makes all rows one line of text high, with icons that go with it, and keeps them so when the font
    // changes. No row is asked for its height, which would take its time with very many of them.
    void setOneLineRows();

public Q_SLOTS:
    // Fits the columns to their contents, and then enlarges the window to its size hint, as far as the screen
    // allows.
    void resizeColumnsToContents();

    // In the order that the header shows for the column; ascending when it shows none. Does nothing without a
    // model.
    void sortByColumn(int column);
    void sortByColumn(int column, Qt::SortOrder order);

protected:
    QStyleOptionViewItem viewOptions() const override;
    void changeEvent(QEvent* event) override;
    // Shift+F10 opens the menu of the current cell, as the menu key does.
    void keyPressEvent(QKeyEvent* event) override;

    // The width in pixels of the widest cell of the column, without the grid; called with a model only. Asks
    // the delegate about every row: a view of very many rows that knows its texts can answer faster.
    virtual int contentsWidthForColumn(int column) const;

private:
    void fitRowsToFont();

    QStyleOptionViewItem::Position decorationPosition;
    // Equal once the number of rows is decided.
    mutable int minRows;
    mutable int maxRows;
    bool oneLineRows;
};

#endif
