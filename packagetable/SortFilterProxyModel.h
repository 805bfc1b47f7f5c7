// SPDX-License-Identifier: GPL-2.0-or-later

// Selects the package records in the table and their order: by state, duplicates, groups and a regular
// expression.
//
// Graphical thread; the main window owns it. It has its own map between table rows and records, instead of
// the map of the base class. Filtering does not sort, and sorting does not filter, so a table of a whole
// distribution responds at once. It reads the records directly from the back end, without variants.

#ifndef PACKAGETABLE_SORTFILTERPROXYMODEL_H
#define PACKAGETABLE_SORTFILTERPROXYMODEL_H

#include <QByteArray>
#include <QPointer>
#include <QRegExp>
#include <QString>
#include <QTimer>

#include <vector>

#include "packagetable/Expression.h"
#include "packagetable/PackageTable.h"
#include "widgets/HSortFilterProxyModel.h"
#include "yumio/Package.h"

class HAbstractTableModel;
class YumIO;

namespace PackageTable {

class SortFilterProxyModel : public HSortFilterProxyModel
{
    Q_OBJECT

public:
    // The back end is not owned. The rows of the source model must be the records of the back end.
    SortFilterProxyModel(StateFilter state, bool withDups, bool withGroups, YumIO* backEnd,
                         QObject* parent = nullptr);

    using HSortFilterProxyModel::setSourceModel;
    void setSourceModel(HAbstractTableModel* model);

    void setMode(Mode newMode);
    void setStateFilter(StateFilter state);
    void setDupsFilter(bool withDups);
    void setGroupsFilter(bool withGroups);
    // If off, the table lists every row.
    void setFilter(bool on);
    bool getFilter() const { return filtering; }
    // An extended POSIX expression, case-sensitive; ".*" at either end is removed. An empty expression lists
    // everything, an invalid one nothing.
    void setFilterRegExp(const QString& text);
    // The current expression without ".*" at its ends. The own expression of the base class stays empty.
    QRegExp filterRegExp() const { return expression; }
    // False for an invalid expression, which lists nothing.
    bool isValidExpression() const { return expression.isEmpty() || pattern.isValid(); }
    // The error in an invalid expression.
    QString expressionFault() const { return pattern.fault(); }
    // The records that a search with these filters examines.
    QVector<Package::Entry*> searched(StateFilter state, bool withDups, bool withGroups) const;
    // Marks every listed, outdated record for Update.
    void setUpdateListed();
    // Filters and sorts again.
    void clear();

    // The sorted column; -1 for the order of the back end. The base class must not know it, because it would
    // build its own map.
    int sortColumn() const { return sortedBy; }
    Qt::SortOrder sortOrder() const { return sortedIn; }

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    QModelIndex sibling(int row, int column, const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
    // Adds texts for users who cannot see the icons.
    QVariant data(const QModelIndex& listed, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    QModelIndex mapToSource(const QModelIndex& listed) const override;
    QModelIndexList mapToSource(const QModelIndexList& listed) const;
    QModelIndex mapFromSource(const QModelIndex& sourceIndex) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    // While an object exists, a table sorted by action is not sorted again after each change of an action.
    // With changes in all rows, this would take minutes.
    class SortPause
    {
    public:
        explicit SortPause(SortFilterProxyModel& paused);
        ~SortPause();
        SortPause(const SortPause&) = delete;
        SortPause& operator=(const SortPause&) = delete;

    private:
        SortFilterProxyModel& proxy;
    };

public Q_SLOTS:
    void clearCache();

private Q_SLOTS:
    void sourceChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles);
    void sourceAboutToBeReset();
    void sourceReset();
    void sourceDestroyed();
    void prepareTexts();

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override;
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    enum Verdict : char { Unknown, Accepted, Rejected };

    bool acceptRow(Package::Entry* entry, int row, const QModelIndex& parent) const;
    static bool passes(const Package::Entry& entry, StateFilter state, bool withDups, bool withGroups);
    bool matchesAnyField(const Package::Entry& entry) const;
    bool matches(const QString& text) const;
    void makeTexts() const;
    void dropMap();
    int sourceRows() const;
    void refilter();
    void map() const;
    const std::vector<qint64>& sortKeys(int column) const;
    std::vector<int> ranksOf(int column) const;

    Mode mode;
    bool filtering;
    StateFilter stateFilter;
    bool dups;
    bool groups;
    QPointer<YumIO> yumIO;
    HAbstractTableModel* source;
    mutable std::vector<Verdict> verdicts; // by row of the source
    QRegExp expression;
    Expression pattern;

    int sortedBy;
    Qt::SortOrder sortedIn;
    QTimer idle; // fires shortly after new records: prepares the texts
    int sortPauses;
    bool sortWanted; // an action has changed during a SortPause

    // All these members are computed on first use, and dropped together with the records.
    mutable bool mapped;
    mutable bool mapping;
    mutable std::vector<int> order;      // the rows of the source, sorted
    mutable std::vector<int> listedRows; // by row of the proxy, the row of the source
    mutable std::vector<int> proxyRows;  // by row of the source, the row of the proxy; -1: not listed
    mutable std::vector<qint64> keys[ColumnCount];
    mutable std::vector<int> nameRanks;
    mutable QByteArray visible;           // the visible texts of all rows; a zero byte ends each
    mutable std::vector<int> visibleFrom; // by row, the start of its texts
};

} // namespace PackageTable

#endif
