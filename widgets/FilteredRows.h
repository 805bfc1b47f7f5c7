// SPDX-License-Identifier: GPL-2.0-or-later

// A proxy model with the rows of a table that match an expression, sorted by a column. The proxy has its own
// map between its rows and the rows of the table. If the expression changes, the proxy only creates a new
// map, so that it stays fast for a table of ten thousand rows.
//
// The expression is matched against a text that joins the texts of all columns of a row, with blanks between
// them. The source model may provide an additional text for each row; this text is appended to the joined
// texts.
//
// The proxy compares the rows with most expressions immediately. Other threads compare the rows (see
// ParallelMatching) if this takes more than some milliseconds, or if the expression refers to its groups, for
// example with "\1". During this time, the proxy serves events and lists the same rows as before the
// comparison. If the rows of the source model change during this time, the proxy lists no row until the new
// rows are compared.
//
// The object lives on the graphical thread; its Qt parent owns it. The caller of setSourceModel() owns the
// source model.

#ifndef WIDGETS_FILTEREDROWS_H
#define WIDGETS_FILTEREDROWS_H

#include <QAbstractProxyModel>
#include <QByteArray>
#include <QElapsedTimer>
#include <QString>
#include <QTimer>

#include <memory>
#include <vector>

#include "widgets/Expression.h"

class ParallelMatching;

class FilteredRows : public QAbstractProxyModel
{
    Q_OBJECT

public:
    // For this role, the source model may return the value by which a cell is sorted: a number, a time or a
    // text. If it returns no value, cells are sorted by their display values.
    static constexpr int SortRole = Qt::UserRole + 1;
    // For this role, the source model may return the additional text of a row, in column 0.
    static constexpr int SearchRole = Qt::UserRole + 2;

    explicit FilteredRows(QObject* parent = nullptr);
    ~FilteredRows() override;

    void setSourceModel(QAbstractItemModel* model) override;

    // Sets the extended POSIX expression, which is case-sensitive. ".*" is removed from both ends. An empty
    // expression matches every row; an invalid expression matches no row. A running comparison with another
    // expression ends without a result.
    void setExpression(const QString& newText);
    // Returns the argument of the setExpression() call whose matches are listed. While new rows of the source
    // model are compared, the text is empty.
    QString listedExpression() const { return listedText; }
    // Returns whether other threads compare the last expression. Until they have finished, the listed rows do
    // not match this expression.
    bool isComparing() const { return comparing; }
    bool isValidExpression() const { return expression.isEmpty() || pattern.isValid(); }
    // Returns the description of the error in an invalid expression, or an empty string if the expression is
    // valid.
    QString expressionFault() const { return isValidExpression() ? QString() : pattern.fault(); }

    // If the column is -1, the rows are in the order of the source model. Rows with equal values always keep
    // that order.
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

Q_SIGNALS:
    // Emitted with true when a comparison takes so long that the window should show that a comparison runs.
    // Emitted with false when this comparison has ended.
    void longComparison(bool running);

private Q_SLOTS:
    void checkMatching();
    void sourceAboutToChange();
    void sourceHasChanged();
    void sourceDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                           const QVector<int>& roles);

private:
    // The texts with which an expression is compared, in UTF-8, indexed by source row.
    using Texts = std::vector<QByteArray>;

    int rowsOfSource() const;
    void joinTexts();
    bool compare(std::vector<char>& found);
    bool compareQuickly(std::vector<char>& found) const;
    void filter(bool soon);
    void startMatching();
    void stopMatching();
    void reportLong(bool now);
    void setListed(std::vector<char> found);
    void map();

    QString expression; // without ".*" at its ends
    QString wantedText; // the argument of the last setExpression() call
    QString listedText;
    Expression pattern;
    std::shared_ptr<const Texts> texts; // null until an expression is compared with the present rows
    std::vector<char> accepted;         // whether each source row matches the listed expression
    bool isListed;                      // false while new rows of the source model are compared
    bool comparing;
    std::unique_ptr<ParallelMatching> matching; // null while no thread runs
    QTimer checkTimer;                          // runs while `comparing` is true
    QElapsedTimer running;                      // the time since the comparison began
    bool isLong;                                // the argument of the last longComparison()
    int sortedBy;
    Qt::SortOrder sortedIn;
    std::vector<int> sourceRows; // source rows, indexed by the rows of this model
    std::vector<int> ownRows;    // rows of this model, indexed by source row; -1 if the filter hides the row
};

#endif
