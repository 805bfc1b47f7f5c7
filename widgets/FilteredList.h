// SPDX-License-Identifier: GPL-2.0-or-later

// A list of records with an edit for the expression that filters it, the number of listed records, and an
// area below for the details of the current one. Windows with such a list consist of it and their own
// buttons.
//
// The list is filtered while the user types. Its rows and columns are those of the model. The model can offer
// the roles of FilteredRows, and tool tips; a cell without a tool tip shows its text there if it is too long
// for its column. If there are rows, one of them is current, and it stays current while it is listed.
//
// Graphical thread; owned by its Qt parent. The model is not owned.

#ifndef WIDGETS_FILTEREDLIST_H
#define WIDGETS_FILTEREDLIST_H

#include <QList>
#include <QPersistentModelIndex>
#include <QString>
#include <QWidget>

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
    // The name of the list is for assistive programs.
    FilteredList(HAbstractTableModel* model, const QString& name, QWidget* parent = nullptr);

    // The text in place of rows if the model has no rows; plain text.
    void setEmptyText(const QString& text);
    // The widget below the list becomes a child. The user can move the border between the two.
    void setDetails(QWidget* details);

    // Makes each column as wide as its longest texts, up to a limit.
    void fitColumns();
    void sortBy(int column, Qt::SortOrder order);

    QString expression() const;
    void setExpression(const QString& text);

    // Rows of the model. -1: no row is current, because none is listed.
    int currentRow() const;
    void setCurrentRow(int row);
    // In the order of the list.
    QList<int> selectedRows() const;

    HTableView* tableView() const { return table; }

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    // A row of the model; -1 for none.
    void currentChanged(int row);
    void selectionChanged();
    // Enter or a double click on a row of the model.
    void activated(int row);

private Q_SLOTS:
    void applyExpression();
    void aboutToList();
    void listed();
    void handleSelection();
    void handleHeader(int column);
    void handleActivated(const QModelIndex& index);

private:
    void updateTexts();
    void selectCurrent(int row);
    void reportCurrent();

    HAbstractTableModel* model;
    FilteredRows* rows;
    ExpressionEdit* edit;
    PlainLabel* countLabel;
    QSplitter* splitter;
    HTableView* table;
    QString emptyText;
    QPersistentModelIndex kept; // the current row while the list changes
    int reported;               // the row of the last currentChanged()
    bool listing;               // the list changes; the selection is set again afterwards
};

#endif
