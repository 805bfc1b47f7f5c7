// Decides which package records the table lists, and in which order: by state, duplicates, groups and a
// regular expression.
//
// Graphical thread; the main window owns it. It keeps its own map between the listed rows and the records in
// place of the base class's: filtering does not sort and sorting does not filter, which a table of a whole
// distribution needs to answer at once. The records are read straight from the back end, not through
// variants.

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
    // The back end is not owned. The source model's rows must be the back end's records.
    SortFilterProxyModel(StateFilter state, bool withDups, bool withGroups, YumIO* backEnd,
                         QObject* parent = nullptr);

    using HSortFilterProxyModel::setSourceModel;
    void setSourceModel(HAbstractTableModel* model);

    void setMode(Mode newMode);
    void setStateFilter(StateFilter state);
    void setDupsFilter(bool withDups);
    void setGroupsFilter(bool withGroups);
    // While off, every row is listed.
    void setFilter(bool on);
    bool getFilter() const { return filtering; }
    // An extended POSIX expression, case-sensitive; ".*" at either end is taken off. The empty one lists
    // everything, one that cannot be compiled nothing.
    void setFilterRegExp(const QString& text);
    // What the rows are filtered by, stripped; the base class's own expression stays empty.
    QRegExp filterRegExp() const { return expression; }
    // Whether the expression can be compiled; one that cannot lists nothing.
    bool isValidExpression() const { return expression.isEmpty() || pattern.isValid(); }
    // What is wrong with one that cannot.
    QString expressionFault() const { return pattern.fault(); }
    // The records that a search with these filters looks into.
    QVector<Package::Entry*> searched(StateFilter state, bool withDups, bool withGroups) const;
    // Marks every listed record that is out of date for Update.
    void setUpdateListed();
    // Filters and sorts anew.
    void clear();

    // -1: in the back end's order. The base class does not know, and must not: it would make its own map.
    int sortColumn() const { return sortedBy; }
    Qt::SortOrder sortOrder() const { return sortedIn; }

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    QModelIndex sibling(int row, int column, const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
    // And texts for those who cannot see the icons.
    QVariant data(const QModelIndex& listed, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    QModelIndex mapToSource(const QModelIndex& listed) const override;
    QModelIndexList mapToSource(const QModelIndexList& listed) const;
    QModelIndex mapFromSource(const QModelIndex& sourceIndex) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    // While it exists, a table sorted by action is not sorted anew with every action that changes: it would
    // take minutes when all rows change.
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
    QTimer idle; // runs out when the records are new and nothing else is to be done
    int sortPauses;
    bool sortWanted; // an action has changed meanwhile

    // All of these are made when they are needed first, and dropped when the records are.
    mutable bool mapped;
    mutable bool mapping;
    mutable std::vector<int> order;      // the rows of the source, sorted
    mutable std::vector<int> listedRows; // by row of the proxy, the row of the source
    mutable std::vector<int> proxyRows;  // by row of the source, the row of the proxy; -1: not listed
    mutable std::vector<qint64> keys[ColumnCount];
    mutable std::vector<int> nameRanks;
    mutable QByteArray visible;           // the visible texts of all rows, each ended by a zero
    mutable std::vector<int> visibleFrom; // by row, where its texts begin
};

} // namespace PackageTable

#endif
