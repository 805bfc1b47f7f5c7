// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoEditorModel.h"

#include "yumio/YumIO.h"

#include "repo/RepoBrowse.h"
#include "repo/RepoEntry.h"
#include "repo/YumConfIO.h"
#include "widgets/Icons.h"

namespace RepoEditor {

namespace {

QString headerText(int column)
{
    switch (column) {
    case SessionColumn:
        return Model::tr("Sess");
    case PermanentColumn:
        return Model::tr("Perm");
    case IdentifierColumn:
        return Model::tr("Identifier");
    default:
        return Model::tr("Name");
    }
}

QString headerToolTip(int column)
{
    switch (column) {
    case SessionColumn:
        return Model::tr("Whether or not the repository is used during this session.\n"
                         "It overrides the persistent Enabled flag in the repository configuration.");
    case PermanentColumn:
        return Model::tr("Whether or not the repository is configured to be enabled by default.\n"
                         "It can be overridden for a particular session.");
    case IdentifierColumn:
        return Model::tr("Unique identifier for the repository");
    default:
        return Model::tr("Description of the repository");
    }
}

// A cell shows at most this number of characters, because a view would need too long to measure a longer
// text.
constexpr int shownLetters = 1000;

QString shown(const QString& text)
{
    return text.size() <= shownLetters ? text : text.left(shownLetters) + QChar(0x2026);
}

} // namespace

Model::Model(YumIO* backEnd, YumConfIO* conf, QObject* parent)
    : HAbstractTableModel(parent), yumIO(backEnd), yumConfIO(conf),
      offIcon(Icons::shared(QStringLiteral("noneBox"))), onIcon(Icons::shared(QStringLiteral("checkBox")))
{
    setViewFont(QFont());
}

int Model::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : yumConfIO->entries.size();
}

int Model::columnCount(const QModelIndex&) const
{
    return ColumnCount;
}

bool Model::hasEntry(const QModelIndex& index) const
{
    return index.isValid() && index.row() < yumConfIO->entries.size();
}

bool Model::isUsed(const Repo::Entry& entry) const
{
    return yumConfIO->sessionEnabled[entry.id];
}

bool Model::isEnabled(const Repo::Entry& entry) const
{
    return entry.enabled == Qt::Checked || (entry.enabled == Qt::PartiallyChecked && yumConfIO->enabled);
}

bool Model::isTicked(const QModelIndex& index) const
{
    if (!hasEntry(index)) {
        return false;
    }
    const Repo::Entry& entry = yumConfIO->entries.at(index.row());
    return index.column() == SessionColumn ? isUsed(entry) : isEnabled(entry);
}

QVariant Model::data(const QModelIndex& index, int role) const
{
    if (!hasEntry(index)) {
        return QVariant();
    }
    const Repo::Entry& entry = yumConfIO->entries.at(index.row());
    switch (index.column()) {
    case SessionColumn:
        if (role == Qt::DecorationRole) {
            return isUsed(entry) ? onIcon : offIcon;
        }
        if (role == Qt::ToolTipRole) {
            return isUsed(entry) ? tr("Repository is enabled for this session")
                                 : tr("Repository is not enabled for this session");
        }
        break;
    case PermanentColumn:
        if (role == Qt::DecorationRole) {
            return isEnabled(entry) ? onIcon : offIcon;
        }
        if (role == Qt::ToolTipRole) {
            return isUsed(entry) ? tr("Repository is configured to be enabled")
                                 : tr("Repository is not configured to be enabled");
        }
        break;
    case IdentifierColumn:
        if (role == Qt::DisplayRole) {
            return entry.id.isEmpty() ? QStringLiteral("(new)") : shown(entry.id);
        }
        if (role == Qt::FontRole && entry.id.isEmpty()) {
            return italicFont;
        }
        break;
    case NameColumn:
        if (role == Qt::DisplayRole) {
            return shown(entry.name);
        }
        break;
    default:
        break;
    }
    return QVariant();
}

QVariant Model::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount) {
        return QVariant();
    }
    switch (role) {
    case Qt::DisplayRole:
        return headerText(section);
    case Qt::ToolTipRole:
        return headerToolTip(section);
    default:
        return QVariant();
    }
}

void Model::setViewFont(const QFont& font)
{
    italicFont = font;
    italicFont.setItalic(true);
}

int Model::addRow(const Repo::Entry& entry)
{
    const int row = yumConfIO->entries.size();
    beginInsertRows(QModelIndex(), row, row);
    yumConfIO->entries.append(entry);
    endInsertRows();
    return row;
}

bool Model::removeRow(int row, const QModelIndex& parent)
{
    if (row < 0 || row >= rowCount(parent)) {
        return false;
    }
    beginRemoveRows(parent, row, row);
    yumConfIO->entries.removeAt(row);
    endRemoveRows();
    return true;
}

void Model::reset()
{
    beginResetModel();
    endResetModel();
}

QModelIndex Model::createIndex(int row) const
{
    return createIndex(row, SessionColumn);
}

void Model::dataChanged(int row)
{
    Q_EMIT dataChanged(createIndex(row, SessionColumn), createIndex(row, NameColumn));
}

void Model::toggleUse(const QModelIndex& index)
{
    if (!hasEntry(index)) {
        return;
    }
    bool& used = yumConfIO->sessionEnabled[yumConfIO->entries.at(index.row()).id];
    used = !used;
    const QModelIndex cell = createIndex(index.row(), SessionColumn);
    Q_EMIT dataChanged(cell, cell);
    Q_EMIT useChanged();
}

void Model::toggleEnabled(const QModelIndex& index)
{
    if (!hasEntry(index)) {
        return;
    }
    Repo::Entry& entry = yumConfIO->entries[index.row()];
    entry.enabled = isEnabled(entry) ? Qt::Unchecked : Qt::Checked;
    const QModelIndex cell = createIndex(index.row(), PermanentColumn);
    Q_EMIT dataChanged(cell, cell);
    Q_EMIT configChanged();
}

void Model::browse(const QModelIndex& index, QWidget* window)
{
    // YumIO::count() is the number of packages, not of repositories. If the row number reaches this number,
    // the function does nothing.
    if (hasEntry(index) && yumIO && index.row() < yumIO->count()) {
        RepoBrowse::browse(window, yumConfIO->entries.at(index.row()), yumIO);
    }
}

} // namespace RepoEditor
