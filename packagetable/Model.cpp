#include "packagetable/Model.h"

#include "packagetable/DescribeDialog.h"
#include "repo/RepoBrowse.h"
#include "widgets/Colors.h"
#include "widgets/Icons.h"
#include "yumio/Words.h"
#include "yumio/YumIO.h"

namespace PackageTable {

namespace {

struct HeaderText
{
    const char* title;
    const char* toolTip;
};

const HeaderText headers[] = {
    {QT_TRANSLATE_NOOP("PackageTable::Model", "Action"),
     QT_TRANSLATE_NOOP("PackageTable::Model",
                       "Action to be performed on the package, if any: Update, Install, Remove")},
    {QT_TRANSLATE_NOOP("PackageTable::Model", "State"),
     QT_TRANSLATE_NOOP("PackageTable::Model", "Indicates whether the package is Installed or not and, if "
                                              "installed, whether it is Up-to-date or not")},
    {QT_TRANSLATE_NOOP("PackageTable::Model", "Kind"),
     QT_TRANSLATE_NOOP(
         "PackageTable::Model",
         "Whether the package is an ordinary package, a suite of packages, or a group of packages")},
    {QT_TRANSLATE_NOOP("PackageTable::Model", "Name"),
     QT_TRANSLATE_NOOP("PackageTable::Model", "Name of the package")},
    {QT_TRANSLATE_NOOP("PackageTable::Model", "Version"),
     QT_TRANSLATE_NOOP("PackageTable::Model",
                       "Version and release of the package as version-release;\n"
                       "If the Epoch is non-zero, includes it as epoch:version-release")},
    {QT_TRANSLATE_NOOP("PackageTable::Model", "Repository"),
     QT_TRANSLATE_NOOP("PackageTable::Model",
                       "Repository from which the most recent version of the package is available")},
    {QT_TRANSLATE_NOOP("PackageTable::Model", "Architecture"),
     QT_TRANSLATE_NOOP(
         "PackageTable::Model",
         "Architecture for which the package is applicable, or \"noarch\" for general-purpose packages")},
    {QT_TRANSLATE_NOOP("PackageTable::Model", "Size"),
     QT_TRANSLATE_NOOP("PackageTable::Model", "Size of the package")},
    {QT_TRANSLATE_NOOP("PackageTable::Model", "Build Time"),
     QT_TRANSLATE_NOOP("PackageTable::Model", "Date and time at which the package was created")},
};
static_assert(sizeof headers / sizeof *headers == ColumnCount, "each column has its heading");

} // namespace

Model::Model(YumIO* backEnd, QObject* parent)
    : HAbstractTableModel(parent), yumIO(backEnd), yumConfIO(nullptr), enabled(true), hidings(0)
{
    stateIcons[Package::Updatable] = Icons::shared(QStringLiteral("out-of-date"));
    stateIcons[Package::Installed] = Icons::shared(QStringLiteral("up-to-date"));
    actionIcons[Package::None] = Icons::shared(QStringLiteral("noneBox"));
    actionIcons[Package::Update] = Icons::shared(QStringLiteral("updateBox"));
    actionIcons[Package::Install] = Icons::shared(QStringLiteral("installBox"));
    actionIcons[Package::Remove] = Icons::shared(QStringLiteral("removeBox"));
    kindIcons[Package::Suite] = Icons::shared(QStringLiteral("suite"));
    kindIcons[Package::Group] = Icons::shared(QStringLiteral("group"));
    kindIcons[Package::Ordinary] = Icons::shared(QStringLiteral("package"));
    setBackground(Qt::white);
}

void Model::setYumConfIO(YumConfIO* reader)
{
    yumConfIO = reader;
}

void Model::setEnabled(bool isEnabled)
{
    enabled = isEnabled;
}

void Model::setBackground(const QColor& background)
{
    const auto set = [this, &background](Package::State state, const QString& color,
                                         const QString& disabledColor) {
        colors[state] = QColor(Colors::readable(color, background));
        disabledColors[state] = QColor(Colors::readableDisabled(disabledColor, color, background));
    };
    set(Package::Updatable, Colors::error(), Colors::errorDisabled());
    set(Package::Available, Colors::minor(), Colors::minorDisabled());
}

int Model::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() || yumIO.isNull() || hidings > 0 ? 0 : yumIO->count();
}

int Model::columnCount(const QModelIndex&) const
{
    return ColumnCount;
}

Package::Entry* Model::entry(int row) const
{
    return (*yumIO)[row];
}

Package::Entry* Model::entryAt(const QModelIndex& index) const
{
    return index.isValid() && index.row() < rowCount() && index.column() < ColumnCount ? entry(index.row())
                                                                                       : nullptr;
}

QVariant Model::data(const QModelIndex& index, int role) const
{
    Package::Entry* e = entryAt(index);
    if (e == nullptr) {
        return QVariant();
    }
    switch (role) {
    case Qt::DisplayRole:
        return index.column() >= NameColumn ? text(*e, index.column()) : QVariant();
    case Qt::DecorationRole:
        return decorationData(*e, index.column());
    case Qt::ToolTipRole:
        return toolTipData(*e, index.column());
    case Qt::ForegroundRole:
        return foregroundData(*e, index.column());
    case Qt::UserRole:
        return userData(e, index.column());
    default:
        return QVariant();
    }
}

QString Model::text(const Package::Entry& entry, int column)
{
    switch (column) {
    case NameColumn:
        return entry.name;
    case VersionColumn: {
        // A mark when there are further installed versions; the first one below an update is being updated.
        const Package::Entry* last = entry.state == Package::Updatable ? entry.next : &entry;
        return last != nullptr && last->next != nullptr ? entry.verRel + QLatin1String(" *") : entry.verRel;
    }
    case RepositoryColumn:
        return entry.repo;
    case ArchitectureColumn:
        return entry.arch;
    case SizeColumn:
        return entry.sizeText;
    case BuildTimeColumn:
        return entry.buildTimeText;
    default:
        return QString();
    }
}

QVariant Model::decorationData(const Package::Entry& e, int column) const
{
    switch (column) {
    case ActionColumn:
        return actionIcons[e.action];
    case StateColumn:
        return stateIcons[e.state].isNull() ? QVariant() : stateIcons[e.state];
    case KindColumn:
        return kindIcons[e.kind];
    default:
        return QVariant();
    }
}

QVariant Model::toolTipData(const Package::Entry& e, int column) const
{
    switch (column) {
    case ActionColumn:
        return e.action == Package::None ? QVariant() : Words::explained(e.action);
    case StateColumn: {
        QStringList lines{e.isExcluded()
                              ? tr("Package is installed; the configuration excludes it from updates "
                                   "and removals")
                              : Words::explained(e.state)};
        const YumIO::Replacement replacement = yumIO->replacement(e);
        if (!replacement.by.isEmpty()) {
            lines.append(tr("Replaced by %1").arg(replacement.by.join(QStringLiteral(", "))));
        }
        if (!replacement.of.isEmpty()) {
            lines.append(tr("Replaces %1").arg(replacement.of.join(QStringLiteral(", "))));
        }
        return lines.join(QLatin1Char('\n'));
    }
    case KindColumn:
        return Words::described(e.kind);
    case VersionColumn: {
        QString text;
        for (const Package::Entry* version = &e; version != nullptr; version = version->next) {
            text += (version->state == Package::Installed ? tr("Installed: %1\n") : tr("Available: %1\n"))
                        .arg(version->verRel);
        }
        return text.trimmed();
    }
    default:
        return QVariant();
    }
}

QVariant Model::foregroundData(const Package::Entry& e, int column) const
{
    if (column < KindColumn) {
        return QVariant();
    }
    const QColor& color = enabled ? colors[e.state] : disabledColors[e.state];
    return color.isValid() ? QVariant(color) : QVariant();
}

QVariant Model::userData(Package::Entry* e, int column)
{
    switch (column) {
    case ActionColumn:
        return static_cast<int>(e->action);
    case StateColumn:
        return static_cast<int>(e->state);
    case KindColumn:
        return static_cast<int>(e->kind);
    case SizeColumn:
        return static_cast<qint64>(e->size);
    case BuildTimeColumn:
        return e->buildTime;
    default:
        return QVariant::fromValue(e);
    }
}

QVariant Model::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount) {
        return QVariant();
    }
    switch (role) {
    case Qt::DisplayRole:
        return tr(headers[section].title);
    case Qt::ToolTipRole:
        return tr(headers[section].toolTip);
    default:
        return QVariant();
    }
}

Package::State Model::getState(int row) const
{
    return entry(row)->state;
}

void Model::changeAction(int row, Package::Action action)
{
    entry(row)->action = action;
    const QModelIndex changed = index(row, ActionColumn);
    Q_EMIT dataChanged(changed, changed);
}

void Model::setAction(const QModelIndex& index, Package::Action action)
{
    if (entryAt(index) != nullptr) {
        changeAction(index.row(), action);
    }
}

void Model::toggleAction(const QModelIndex& index)
{
    const Package::Entry* e = entryAt(index);
    if (e == nullptr) {
        return;
    }
    Package::Action next = Package::None;
    switch (e->state) {
    case Package::Updatable:
        next = e->action == Package::None     ? Package::Update
               : e->action == Package::Update ? Package::Remove
                                              : Package::None;
        break;
    case Package::Available:
        next = e->action == Package::None ? Package::Install : Package::None;
        break;
    case Package::Installed:
        next = e->action == Package::None ? Package::Remove : Package::None;
        break;
    }
    changeAction(index.row(), e->permits(next) ? next : Package::None);
}

void Model::reset()
{
    beginResetModel();
    endResetModel();
}

Model::Hiding::Hiding(Model& hidden) : model(hidden)
{
    model.beginResetModel();
    ++model.hidings;
    model.endResetModel();
}

Model::Hiding::~Hiding()
{
    model.beginResetModel();
    --model.hidings;
    model.endResetModel();
}

void Model::setSelected(QModelIndexList indices)
{
    for (const QModelIndex& selected : indices) {
        const Package::Entry* e = entryAt(selected);
        if (e == nullptr || e->state == Package::Installed || yumIO->isLeftToUser(*e)) {
            continue;
        }
        changeAction(selected.row(), e->state == Package::Available ? Package::Install : Package::Update);
    }
}

void Model::clearActions()
{
    const int count = rowCount();
    for (int row = 0; row < count; ++row) {
        if (entry(row)->action != Package::None) {
            changeAction(row, Package::None);
        }
    }
}

void Model::describe(const QModelIndex& index, QWidget* parent)
{
    const Package::Entry* e = entryAt(index);
    if (e == nullptr) {
        return;
    }
    if (describeDialog.isNull()) {
        describeDialog = new Describe::Dialog(parent);
    }
    describeDialog->config(yumIO, *e, yumConfIO);
    describeDialog->exec();
}

void Model::browse(const QModelIndex& index, QWidget* parent)
{
    const Package::Entry* e = entryAt(index);
    if (e != nullptr) {
        RepoBrowse::browse(parent, e->repo, yumIO, yumConfIO);
    }
}

} // namespace PackageTable
