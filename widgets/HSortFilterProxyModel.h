// SPDX-License-Identifier: GPL-2.0-or-later

// Sorts a table by the values of a column, and equal rows by a second column.
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
    // The model can also be of another class than HAbstractTableModel. It then has no second column and is
    // not sorted from scratch.
    void setSourceModel(QAbstractItemModel* model) override;

    // Each of these calls the base class, and then sorts from scratch.
    void filterChanged();
    void clear();
    void setFilterRegExp(const QString& pattern);
    void setFilterRegExp(const QRegExp& regExp);

protected:
    // Compares indexes of the source model by the type of the left display value. Numbers, characters, dates
    // and times are compared by value, everything else as text, by UTF-16 code units.
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

    // The cell of the second column in the row of a source index; invalid if that cell does not exist.
    QModelIndex createSecondarySortIndex(const QModelIndex& index) const;

private:
    void sortFromScratch();

    int secondarySortColumn;
    QPointer<HAbstractTableModel> source;
};

#endif
