// SPDX-License-Identifier: GPL-2.0-or-later

// Filters and sorts the package records in the table. The proxy filters by state, duplicates, groups and a
// regular expression.
//
// The proxy lives on the graphical thread; the main window owns it. The proxy has its own map between table
// rows and records, instead of the base class's map. Filtering does not sort again, and sorting does not
// filter again. The proxy reads the records directly from the back end, without QVariants. Therefore a table
// of a whole distribution responds immediately.

#ifndef PACKAGETABLE_SORTFILTERPROXYMODEL_H
#define PACKAGETABLE_SORTFILTERPROXYMODEL_H

#include <QByteArray>
#include <QPointer>
#include <QRegExp>
#include <QString>
#include <QTimer>

#include <functional>
#include <memory>
#include <vector>

#include "packagetable/PackageTable.h"
#include "packagetable/Preparation.h"
#include "packagetable/SearchedTexts.h"
#include "widgets/Expression.h"
#include "widgets/HSortFilterProxyModel.h"
#include "yumio/Package.h"

class CaselessPattern;
class HAbstractTableModel;
class YumIO;

namespace PackageTable {

class SortFilterProxyModel : public HSortFilterProxyModel
{
    Q_OBJECT

public:
    // The main window owns the back end. The rows of the source model must be the back end's records.
    SortFilterProxyModel(StateFilter state, bool withDups, bool withGroups, YumIO* backEnd,
                         QObject* parent = nullptr);

    // If the table has at most this number of rows, the graphical thread itself goes through all records.
    // Tests change this number.
    static int fewRows;

    using HSortFilterProxyModel::setSourceModel;
    void setSourceModel(HAbstractTableModel* model);

    void setMode(Mode newMode);
    void setStateFilter(StateFilter state);
    void setDupsFilter(bool withDups);
    void setGroupsFilter(bool withGroups);
    // Enables or disables all filters. If all filters are disabled, the table lists every row.
    void setFilter(bool on);
    // Returns the value of setFilter(). Part of the interface; only tests read it now.
    bool getFilter() const { return filtering; }
    // Sets the extended POSIX expression, which is case-sensitive. ".*" is removed from both ends. An empty
    // expression lists everything; an invalid expression lists nothing.
    void setFilterRegExp(const QString& text);
    // Returns the current expression without ".*" at its ends. The expression of the base class stays empty.
    QRegExp filterRegExp() const { return expression; }
    // Returns whether the expression is valid. An invalid expression lists nothing.
    bool isValidExpression() const { return expression.isEmpty() || pattern.isValid(); }
    // Returns the description of the error in an invalid expression.
    QString expressionFault() const { return pattern.fault(); }
    // The settings that decide which records are listed.
    struct Settings
    {
        Mode mode;
        StateFilter state;
        bool dups;
        bool groups;
        QString expression;

        bool operator==(const Settings& other) const
        {
            return mode == other.mode && state == other.state && dups == other.dups &&
                   groups == other.groups && expression == other.expression;
        }
    };
    Settings settings() const { return {mode, stateFilter, dups, groups, expression.pattern()}; }
    // Returns the records that a search with these filters examines. If the table has many rows, a worker
    // finds these records, and this function serves events.
    QVector<Package::Entry*> searched(StateFilter state, bool withDups, bool withGroups) const;
    // Compares the expression of these settings with all records that the other settings permit, and stores
    // the results. This function may start workers and serve events. When the settings are applied later,
    // the proxy lists the records immediately. Without an earlier prepare(), the proxy lists the same
    // records, but compares them on the graphical thread and serves no events. Returns false if the user has
    // stopped the worker. In this case, the results for the current settings remain.
    bool prepare(const Settings& wanted);
    // Does the same as prepare() in Filter mode, but on the graphical thread. If the comparison takes more
    // than some milliseconds, gives up and returns false. In a long table, also returns false if no record
    // matches.
    bool prepareQuickly(const Settings& wanted);
    // Returns whether the expression would list at least one record if it were not case-sensitive. The result
    // may be known already: if no record matches, prepare() has also compared without regard to the letter
    // case. Otherwise, this function compares the visible texts. After some
    // milliseconds, it gives up and returns false.
    bool matchesIgnoringCase() const;
    // Gives the proxy the result of a Preparation for the present records. The proxy uses this result at the
    // next reset of the source model. The caller must reset the source model before the records change.
    void setPrepared(PreparedRows rows);
    // Marks the listed updatable records for Update. Skips records for which YumIO::isLeftToUser() returns
    // true.
    void setUpdateListed();
    // Forgets the results of all comparisons, and then filters and sorts again.
    void clear();

    // Returns the sorted column, or -1 if the rows are in the back end's order. The base class must not know
    // the sorted column, because it would then build its own map.
    int sortColumn() const { return sortedBy; }
    Qt::SortOrder sortOrder() const { return sortedIn; }

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    QModelIndex sibling(int row, int column, const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
    // Adds texts to the icons for users who cannot see them.
    QVariant data(const QModelIndex& listed, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    QModelIndex mapToSource(const QModelIndex& listed) const override;
    QModelIndexList mapToSource(const QModelIndexList& listed) const;
    QModelIndex mapFromSource(const QModelIndex& sourceIndex) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    // While a SortPause object exists, a changed action does not sort the table again. If the table is sorted
    // by action and all actions change, repeated sorting would take minutes.
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
    // Runs a computation that goes through all records. If the table has many rows, a worker runs it, and the
    // graphical thread serves events. Meanwhile, the worker may use this proxy, because the graphical thread
    // only paints the listed rows.
    void computeForAllRows(const std::function<void()>& computation) const;
    bool compare(const Settings& wanted);
    void searchIgnoringCase(const Settings& wanted, const std::shared_ptr<SearchedTexts>& texts);
    QVector<int> unknownRows(const Settings& wanted, bool& again) const;
    QVector<int> passingRows(const Settings& wanted) const;
    std::vector<Verdict> verdictsFor(const Settings& wanted, bool& isComplete) const;
    bool isVisibleIgnoringCase(const Settings& wanted, const CaselessPattern& caseless, int longest) const;
    void discardPrepared();
    void noteComparison(const Settings& wanted, bool again);
    void keep(const QVector<int>& rows, const std::function<bool(int)>& isFound) const;
    bool matchesAnyText(const Package::Entry& entry) const;
    bool matchesAnyField(const Package::Entry& entry) const;
    bool matches(const QString& text) const;
    void makeTexts() const;
    void dropMap();
    int sourceRows() const;
    void filterAgain();
    void refilter();
    void map() const;
    const std::vector<qint64>& sortKeys(int column) const;
    void adoptPrepared();

    Mode mode;
    bool filtering;
    StateFilter stateFilter;
    bool dups;
    bool groups;
    QPointer<YumIO> yumIO;
    HAbstractTableModel* source;
    mutable std::vector<Verdict> verdicts; // the result of the filter, by source row
    // The verdicts for settings that the proxy does not have yet. If it gets these settings, map() uses the
    // verdicts.
    mutable std::vector<Verdict> comingVerdicts;
    Settings comingSettings;
    QRegExp expression;
    Expression pattern;
    // These three members describe the last comparison of all records. Package::Entry::match has its results.
    Mode comparedMode;
    QString comparedExpression;
    qint32 comparison; // the number of the comparison; 0 before the first comparison
    // Whether the last search has found no record, but would have found one if it were not case-sensitive.
    bool foundIgnoringCase;
    // Whether `foundIgnoringCase` is the result of a prepared filter for `comingSettings`.
    bool hintIsKnown;

    int sortedBy;
    Qt::SortOrder sortedIn;
    PreparedRows prepared; // for the next reset of the source model
    QTimer idle;           // fires shortly after new records arrive, to prepare the texts
    int sortPauses;
    bool sortWanted; // an action changed while a SortPause object existed

    // The following members are calculated at their first use, and cleared when the records change.
    mutable bool mapped;
    mutable bool mapping;
    mutable std::vector<int> order;      // the sorted source rows
    mutable std::vector<int> listedRows; // source rows, indexed by proxy row
    mutable std::vector<int> proxyRows;  // proxy rows, indexed by source row; -1 for an unlisted row
    mutable std::vector<qint64> keys[ColumnCount];
    mutable std::vector<int> nameRanks;
    mutable QByteArray visible;           // the visible texts of all rows; a zero byte ends each row
    mutable std::vector<int> visibleFrom; // the start of each row in `visible`
    mutable TextUnpacker unpackers[SearchedTexts::KindCount];
};

} // namespace PackageTable

#endif
