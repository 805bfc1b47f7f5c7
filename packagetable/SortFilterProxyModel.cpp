#include "packagetable/SortFilterProxyModel.h"

#include <QScopedValueRollback>

#include "packagetable/Model.h"
#include "widgets/HAbstractTableModel.h"
#include "yumio/YumIO.h"

namespace PackageTable {

SortFilterProxyModel::SortFilterProxyModel(StateFilter state, bool withDups, bool withGroups, YumIO* backEnd,
                                           QObject* parent)
    : HSortFilterProxyModel(NameColumn, parent), mode(Filter), filtering(true), stateFilter(state),
      dups(withDups), groups(withGroups), yumIO(backEnd), source(nullptr), refiltering(false), regStatus(-1),
      pattern()
{
}

SortFilterProxyModel::~SortFilterProxyModel()
{
    if (regStatus == 0) {
        regfree(&pattern);
    }
}

void SortFilterProxyModel::setSourceModel(HAbstractTableModel* model)
{
    if (source != nullptr) {
        disconnect(source, SIGNAL(modelAboutToBeReset()), this, SLOT(clearCache()));
    }
    HSortFilterProxyModel::setSourceModel(model);
    source = model;
    connect(source, SIGNAL(modelAboutToBeReset()), this, SLOT(clearCache()));
}

void SortFilterProxyModel::setMode(Mode newMode)
{
    if (mode != newMode) {
        mode = newMode;
        clear();
    }
}

void SortFilterProxyModel::setStateFilter(StateFilter state)
{
    if (stateFilter != state) {
        stateFilter = state;
        clear();
    }
}

void SortFilterProxyModel::setDupsFilter(bool withDups)
{
    if (dups != withDups) {
        dups = withDups;
        clear();
    }
}

void SortFilterProxyModel::setGroupsFilter(bool withGroups)
{
    if (groups != withGroups) {
        groups = withGroups;
        clear();
    }
}

void SortFilterProxyModel::setFilter(bool on)
{
    if (filtering != on) {
        filtering = on;
        clear();
    }
}

void SortFilterProxyModel::setFilterRegExp(const QString& text)
{
    const QString any = QStringLiteral(".*");
    QString stripped = text;
    while (stripped.startsWith(any)) {
        stripped.remove(0, any.length());
    }
    while (stripped.endsWith(any)) {
        stripped.chop(any.length());
    }
    if (regStatus == 0) {
        regfree(&pattern);
    }
    regStatus = regcomp(&pattern, stripped.toUtf8().constData(), REG_EXTENDED | REG_NOSUB);

    const QRegExp expression(stripped, Qt::CaseSensitive, QRegExp::RegExp);
    if (expression != filterRegExp()) {
        clearCache();
    }
    {
        const QScopedValueRollback<bool> keepVerdicts(refiltering, true);
        HSortFilterProxyModel::setFilterRegExp(expression);
    }
    const int rows = source != nullptr ? source->rowCount() : 0;
    for (int row = 0; row < rows; ++row) {
        filterAcceptsRow(row, QModelIndex());
    }
}

void SortFilterProxyModel::setUpdateListed()
{
    const int rows = rowCount();
    for (int row = 0; row < rows; ++row) {
        const QModelIndex listed = index(row, ActionColumn);
        Package::Entry* entry = (*yumIO)[mapToSource(listed).row()];
        if (entry->state == Package::Updatable) {
            entry->action = Package::Update;
            Q_EMIT dataChanged(listed, listed);
        }
    }
}

void SortFilterProxyModel::clear()
{
    clearCache();
    const QScopedValueRollback<bool> keepVerdicts(refiltering, true);
    HSortFilterProxyModel::clear();
}

void SortFilterProxyModel::clearCache()
{
    if (!refiltering) {
        verdicts.clear();
    }
}

SortFilterProxyModel::SortPause::SortPause(SortFilterProxyModel& paused)
    : proxy(paused), pausing(paused.sortColumn() == ActionColumn && paused.dynamicSortFilter())
{
    if (pausing) {
        proxy.setDynamicSortFilter(false);
    }
}

SortFilterProxyModel::SortPause::~SortPause()
{
    if (pausing) {
        proxy.setDynamicSortFilter(true);
    }
}

bool SortFilterProxyModel::filterAcceptsRow(int row, const QModelIndex&) const
{
    if (!filtering) {
        return true;
    }
    if (yumIO.isNull() || row >= yumIO->count()) {
        return false;
    }
    const Package::Entry* entry = (*yumIO)[row];
    const auto known = verdicts.constFind(entry);
    if (known != verdicts.constEnd()) {
        return known.value();
    }
    const bool accepted = acceptRow(entry);
    verdicts.insert(entry, accepted);
    return accepted;
}

bool SortFilterProxyModel::acceptRow(const Package::Entry* entry) const
{
    switch (stateFilter) {
    case ViewUpdatable:
        if (entry->state != Package::Updatable) {
            return false;
        }
        break;
    case ViewInstallable:
        if (entry->state != Package::Available) {
            return false;
        }
        break;
    case ViewRemovable:
        if (entry->state == Package::Available) {
            return false;
        }
        break;
    case ViewAll:
        break;
    }
    if ((!dups && entry->duplicate) || (!groups && entry->kind == Package::Group)) {
        return false;
    }
    if (filterRegExp().isEmpty()) {
        return true;
    }
    return mode == Filter ? matchesVisible(*entry) : matchesAnyField(*entry);
}

bool SortFilterProxyModel::matchesVisible(const Package::Entry& entry) const
{
    QString joined;
    for (const QString& text : {entry.name, Model::versionText(entry), entry.repo, entry.arch, entry.sizeText,
                                entry.buildTimeText}) {
        if (!text.isEmpty()) {
            if (!joined.isEmpty()) {
                joined += QLatin1Char(' ');
            }
            joined += text;
        }
    }
    return matches(joined);
}

bool SortFilterProxyModel::matchesAnyField(const Package::Entry& entry) const
{
    YumIO* io = yumIO.data();
    if (entry.kind == Package::Group) {
        return matches(io->getName(entry)) || matches(io->getMandatoryPkgs(entry)) ||
               matches(io->getDefaultPkgs(entry)) || matches(io->getOptionalPkgs(entry)) ||
               matches(io->getConditionalPkgs(entry));
    }
    return matches(io->getName(entry)) || matches(io->getVerRel(entry)) || matches(io->getRepo(entry)) ||
           matches(io->getArch(entry)) || matches(io->getSize(entry)) || matches(io->getSummary(entry)) ||
           matches(io->getDescription(entry)) || matches(io->getGroup(entry)) ||
           matches(io->getVendor(entry)) || matches(io->getBuildTime(entry)) ||
           matches(io->getBuildHost(entry)) || matches(io->getInstallTime(entry)) ||
           matches(io->getBinaryRpm(entry)) || matches(io->getSourceRpm(entry)) ||
           matches(io->getLicense(entry)) || matches(io->getPackager(entry)) || matches(io->getUrl(entry)) ||
           matches(io->getRelocations(entry)) || matches(io->getProvides(entry)) ||
           matches(io->getRequiresPre(entry)) || matches(io->getRequires(entry)) ||
           matches(io->getConflicts(entry)) || matches(io->getObsoletes(entry)) ||
           matches(io->getRecommends(entry)) || matches(io->getSuggests(entry)) ||
           matches(io->getSupplements(entry)) || matches(io->getEnhances(entry)) ||
           matches(io->getFiles(entry)) || matches(io->getChangeLog(entry));
}

bool SortFilterProxyModel::matches(const QString& text) const
{
    return regStatus == 0 && regexec(&pattern, text.toUtf8().constData(), 0, nullptr, 0) == 0;
}

bool SortFilterProxyModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    if (!left.isValid() || !right.isValid() || yumIO.isNull()) {
        return HSortFilterProxyModel::lessThan(left, right);
    }
    const Package::Entry& l = *(*yumIO)[left.row()];
    const Package::Entry& r = *(*yumIO)[right.row()];
    const auto byNumber = [&l, &r](qint64 leftValue, qint64 rightValue) {
        // Both are compared as numbers of 32 bits, whatever they are stored as.
        const int leftNumber = static_cast<int>(leftValue);
        const int rightNumber = static_cast<int>(rightValue);
        return leftNumber != rightNumber ? leftNumber < rightNumber : l.name < r.name;
    };
    const auto byText = [&l, &r](const QString& leftText, const QString& rightText) {
        const int order = leftText.compare(rightText);
        return order != 0 ? order < 0 : l.name < r.name;
    };
    switch (left.column()) {
    case ActionColumn:
        return byNumber(l.action, r.action);
    case StateColumn:
        return byNumber(l.state, r.state);
    case KindColumn:
        return byNumber(l.kind, r.kind);
    case NameColumn:
        return l.name < r.name;
    case VersionColumn:
        return byText(Model::versionText(l), Model::versionText(r));
    case RepositoryColumn:
        return byText(l.repo, r.repo);
    case ArchitectureColumn:
        return byText(l.arch, r.arch);
    case SizeColumn:
        return byNumber(static_cast<qint64>(l.size), static_cast<qint64>(r.size));
    case BuildTimeColumn:
        return byNumber(static_cast<qint64>(l.buildTime), static_cast<qint64>(r.buildTime));
    default:
        return HSortFilterProxyModel::lessThan(left, right);
    }
}

} // namespace PackageTable
