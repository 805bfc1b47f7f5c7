// Decides which package records the table lists, and in which order: by state, duplicates, groups and a
// regular expression.
//
// Graphical thread; the main window owns it. It reads the records straight from the back end: the values of
// all rows go through a sort and a filter, and one variant for each of them is too many.

#ifndef PACKAGETABLE_SORTFILTERPROXYMODEL_H
#define PACKAGETABLE_SORTFILTERPROXYMODEL_H

#include <QHash>
#include <QPointer>
#include <QString>

#include <regex.h>

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
    ~SortFilterProxyModel() override;

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
    // Marks every listed record that is out of date for Update.
    void setUpdateListed();
    void clear();

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
        bool pausing;
    };

public Q_SLOTS:
    void clearCache();

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override;
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    bool acceptRow(const Package::Entry* entry) const;
    bool matchesVisible(const Package::Entry& entry) const;
    bool matchesAnyField(const Package::Entry& entry) const;
    bool matches(const QString& text) const;

    Mode mode;
    bool filtering;
    StateFilter stateFilter;
    bool dups;
    bool groups;
    QPointer<YumIO> yumIO;
    HAbstractTableModel* source;
    mutable QHash<const Package::Entry*, bool> verdicts;
    bool refiltering; // the source model is reset only to have its rows sorted: the verdicts stay right
    int regStatus;    // 0: the pattern is compiled
    regex_t pattern;
};

} // namespace PackageTable

#endif
