// SPDX-License-Identifier: GPL-2.0-or-later

// The rows of a table that an expression matches, in the order of a column. It has its own map between its
// rows and those of the table: a change of the expression only makes a new map, also with ten thousand rows.
//
// The expression is compared with the texts of all columns of a row, as if they were separated by spaces. The
// model can offer a further text, which follows them.
//
// Graphical thread; owned by its Qt parent. The source model is not owned.

#ifndef WIDGETS_FILTEREDROWS_H
#define WIDGETS_FILTEREDROWS_H

#include <QAbstractProxyModel>
#include <QString>

#include <vector>

#include "widgets/Expression.h"

class FilteredRows : public QAbstractProxyModel
{
    Q_OBJECT

public:
    // A source model can offer the value by which a cell is sorted: a number, a time or a text. Otherwise
    // cells are sorted by their display values.
    static constexpr int SortRole = Qt::UserRole + 1;
    // The further text of a row, in its column 0.
    static constexpr int SearchRole = Qt::UserRole + 2;

    explicit FilteredRows(QObject* parent = nullptr);

    void setSourceModel(QAbstractItemModel* model) override;

    // An extended POSIX expression, case-sensitive; ".*" at either end is removed. An empty expression
    // matches every row, an invalid one no row.
    void setExpression(const QString& text);
    bool isValidExpression() const { return expression.isEmpty() || pattern.isValid(); }
    // The error in an invalid expression; otherwise empty.
    QString expressionFault() const { return isValidExpression() ? QString() : pattern.fault(); }

    // Column -1 is the order of the source model. Equal rows keep that order.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    QModelIndex sibling(int row, int column, const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    QModelIndex mapToSource(const QModelIndex& listed) const override;
    QModelIndex mapFromSource(const QModelIndex& sourceIndex) const override;

private Q_SLOTS:
    void sourceAboutToChange();
    void sourceHasChanged();
    void sourceDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                           const QVector<int>& roles);

private:
    bool matches(int sourceRow) const;
    void map();

    QString expression;
    Expression pattern;
    int sortedBy;
    Qt::SortOrder sortedIn;
    std::vector<int> sourceRows; // by own row
    std::vector<int> ownRows;    // by row of the source; -1: not listed
};

#endif
