// SPDX-License-Identifier: GPL-2.0-or-later

// Sorts a table by the values in a column. Rows with equal values are sorted by a second column.
//
// An HSortFilterProxyModel lives on the graphical thread; its Qt parent owns it. The caller of
// setSourceModel() owns the source model.

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
    // If the model is not an HAbstractTableModel, the proxy ignores the second column, and filterChanged(),
    // clear() and setFilterRegExp() do not sort.
    void setSourceModel(QAbstractItemModel* model) override;

    // filterChanged(), clear() and setFilterRegExp() call the corresponding function of the base class, and
    // then sort all rows. filterChanged() completes this interface; no model needs it now.
    void filterChanged();
    void clear();
    void setFilterRegExp(const QString& pattern);
    void setFilterRegExp(const QRegExp& regExp);

protected:
    // Compares source indexes. The type of the left display value determines the comparison: numbers,
    // characters, dates and times are compared by value. All other types are compared as texts, by UTF-16
    // code units.
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

    // Returns the cell of the second column in the row of a source index, or an invalid index if that cell
    // does not exist.
    QModelIndex createSecondarySortIndex(const QModelIndex& index) const;

private:
    void sortFromScratch();

    int secondarySortColumn;
    QPointer<HAbstractTableModel> source;
};

#endif
