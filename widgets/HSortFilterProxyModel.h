// Sorts a table by the values of a column, and rows that are equal there by a second column.
//
// Graphical thread; owned by its Qt parent. The source model is not owned.

#ifndef WIDGETS_HSORTFILTERPROXYMODEL_H
#define WIDGETS_HSORTFILTERPROXYMODEL_H

#include <QPointer>
#include <QSortFilterProxyModel>

class HAbstractTableModel;

class HSortFilterProxyModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    explicit HSortFilterProxyModel(int secondarySortColumn, QObject* parent = nullptr);

    void setSourceModel(HAbstractTableModel* model);
    // A model of another kind than HAbstractTableModel is filtered and sorted like any, but has no second
    // column and is not made to sort from scratch.
    void setSourceModel(QAbstractItemModel* model) override;

    // Each does what the base class does, and then sorts from scratch.
    void filterChanged();
    void clear();
    void setFilterRegExp(const QString& pattern);
    void setFilterRegExp(const QRegExp& regExp);

protected:
    // Indexes of the source model. Compares by the type of the left display value: numbers, characters, dates
    // and times by value, everything else as text, by UTF-16 code units.
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

    // The cell of the second column in the row of a source index; invalid without such a cell.
    QModelIndex createSecondarySortIndex(const QModelIndex& index) const;

private:
    void sortFromScratch();

    int secondarySortColumn;
    QPointer<HAbstractTableModel> source;
};

#endif
