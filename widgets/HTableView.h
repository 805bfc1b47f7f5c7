// SPDX-License-Identifier: GPL-2.0-or-later

// A table view whose size hint fits its columns and a certain number of rows. The view can fit its columns
// and its window to the contents. If the model has no rows, the view can show a text instead.
//
// The object lives on the graphical thread; its Qt parent owns it. The caller of setModel() owns the model.

#ifndef WIDGETS_HTABLEVIEW_H
#define WIDGETS_HTABLEVIEW_H

#include <QTableView>

class HTableView : public QTableView
{
    Q_OBJECT

public:
    // The size hint has space for at least minRows and at most maxRows rows.
    HTableView(QStyleOptionViewItem::Position decorationPosition, int minRows, int maxRows,
               QWidget* parent = nullptr);

    // Returns a size with space for all rows of the model, but for at least minRows and at most maxRows rows.
    // Later calls return a size for the same number of rows as the first call.
    QSize sizeHint() const override;
    // Returns a size that has space for the text of an empty table.
    QSize minimumSizeHint() const override;

    // Returns the width of the column in pixels, or -1 if the view has no model. Considers all rows, not only
    // the visible rows.
    int sizeHintForColumn(int column) const override;

    // Returns the selected rows in selection order, without rows that are not selectable. Each index is in
    // the leftmost selected column of its row.
    QModelIndexList selectedRows() const;

    // Some styles draw the frame around the contents, but not around the scroll bars. Returns the additional
    // pixels that this frame needs, or 0 for other styles.
    int frameOnlyAroundContentsPixels() const;

    // Sets the height of all rows to one line of text, with icons of a matching size. Adjusts the rows when
    // the font changes. The view then does not calculate the height of each row, because this would be slow
    // with very many rows.
    void setOneLineRows();

    // Sets the plain text that the view shows if the model has no rows. Assistive programs read this text as
    // the description of the view.
    void setEmptyText(const QString& text);

    void setModel(QAbstractItemModel* model) override;

public Q_SLOTS:
    // Fits the columns to their contents. Then enlarges the window to the size hint of the window, but not
    // beyond the screen.
    void resizeColumnsToContents();

    // Sorts in the order that the header shows for the column, or in ascending order if the header shows no
    // order. If the view has no model, does nothing.
    void sortByColumn(int column);
    void sortByColumn(int column, Qt::SortOrder order);

protected:
    QStyleOptionViewItem viewOptions() const override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    // Shift+F10 opens the menu of the current cell, like the menu key. Ctrl+Home and Ctrl+End select the
    // first and the last row.
    void keyPressEvent(QKeyEvent* event) override;

    // Returns the width of the column's widest cell in pixels, without the grid. Called only if the view has
    // a model. This implementation asks the delegate about every row. A view with very many rows can override
    // this function with a faster implementation.
    virtual int contentsWidthForColumn(int column) const;

private Q_SLOTS:
    void describeEmptiness();

private:
    void fitRowsToFont();
    bool isEmpty() const;

    QStyleOptionViewItem::Position decorationPosition;
    // The size hint has space for at least minRows and at most maxRows rows. After the first call of
    // sizeHint(), both numbers are equal.
    mutable int minRows;
    mutable int maxRows;
    bool oneLineRows;
    QString emptyText;
};

#endif
