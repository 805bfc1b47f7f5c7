// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/Model.h"

#include "packagetable/Columns.h"
#include "packagetable/DescribeDialog.h"
#include "repo/RepoBrowse.h"
#include "widgets/Colors.h"
#include "widgets/Icons.h"
#include "yumio/YumIO.h"

namespace PackageTable {

Model::Model(YumIO* backEnd, QObject* parent)
    : HAbstractTableModel(parent), yumIO(backEnd), yumConfIO(nullptr), enabled(true), hidings(0)
{
    for (int column = 0; column < ColumnCount; ++column) {
        const char* const* names = Columns::row(column).pictures;
        for (int key = 0; names != nullptr && key < Columns::mostPictures; ++key) {
            if (names[key] != nullptr) {
                pictures[column][key] = Icons::shared(QLatin1String(names[key]));
            }
        }
    }
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
    const YumIO* backEnd = hidings == 0 ? yumIO.data() : nullptr;
    return backEnd != nullptr && index.isValid() && index.row() < backEnd->count() &&
                   index.column() < ColumnCount
               ? (*backEnd)[index.row()]
               : nullptr;
}

QVariant Model::data(const QModelIndex& index, int role) const
{
    Package::Entry* e = entryAt(index);
    if (e == nullptr) {
        return QVariant();
    }
    const Columns::Row& column = Columns::row(index.column());
    switch (role) {
    case Qt::DisplayRole:
        return column.showsPictures() ? QVariant() : column.text(*e);
    case Qt::DecorationRole:
        return column.showsPictures() ? pictures[index.column()][column.sortKey(*e)] : QVariant();
    case Qt::ToolTipRole:
        return toolTipData(*e, column);
    case Qt::ForegroundRole:
        return column.coloured ? (enabled ? colors : disabledColors)[e->state] : QVariant();
    case Qt::UserRole:
        return column.value != nullptr ? column.value(*e) : QVariant::fromValue(e);
    default:
        return QVariant();
    }
}

QVariant Model::toolTipData(const Package::Entry& e, const Columns::Row& column) const
{
    const QString text = column.cellToolTip != nullptr ? column.cellToolTip(e, *yumIO) : QString();
    return text.isEmpty() ? QVariant() : text;
}

QVariant Model::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount) {
        return QVariant();
    }
    switch (role) {
    case Qt::DisplayRole:
        return Columns::title(section);
    case Qt::ToolTipRole:
        return Columns::toolTip(section);
    default:
        return QVariant();
    }
}

Package::State Model::getState(int row) const
{
    return entry(row)->state;
}

const VersionLocks& Model::versionLocks() const
{
    static const VersionLocks none;
    return yumIO.isNull() ? none : yumIO->versionLocks();
}

bool Model::isLocal(const Package::Entry& entry) const
{
    return !yumIO.isNull() && yumIO->isLocalRepo(entry.repo);
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

bool Model::canBeMarked(const Package::Entry& entry)
{
    return entry.permits(Package::Update) || entry.permits(Package::Install) ||
           entry.permits(Package::Remove);
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

void Model::setUpdates(const QVector<Package::Entry*>& entries)
{
    QSet<const Package::Entry*> wanted;
    for (const Package::Entry* each : entries) {
        wanted.insert(each);
    }
    const int count = rowCount();
    for (int row = 0; row < count; ++row) {
        if (wanted.contains(entry(row)) && entry(row)->permits(Package::Update)) {
            changeAction(row, Package::Update);
        }
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
