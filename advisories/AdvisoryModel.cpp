// SPDX-License-Identifier: GPL-2.0-or-later

#include "advisories/AdvisoryModel.h"

#include "advisories/AdvisoryMarker.h"
#include "widgets/Colors.h"
#include "widgets/FilteredRows.h"
#include "yumio/Words.h"

AdvisoryModel::AdvisoryModel(QObject* parent) : HAbstractTableModel(parent), background(Qt::white) {}

void AdvisoryModel::setAdvisories(const QVector<Advisory>& newAdvisories)
{
    beginResetModel();
    advisories = newAdvisories;
    endResetModel();
}

void AdvisoryModel::setBackground(const QColor& color)
{
    background = color;
}

int AdvisoryModel::rowOf(const QString& id) const
{
    for (int row = 0; row < advisories.size(); ++row) {
        if (advisories.at(row).id == id) {
            return row;
        }
    }
    return -1;
}

int AdvisoryModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : advisories.size();
}

int AdvisoryModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QString AdvisoryModel::stateWord(const Advisory& advisory)
{
    return advisory.isInstalled() ? Words::described(Package::Installed) : Words::of(Package::Available);
}

QString AdvisoryModel::text(const Advisory& advisory, int column)
{
    switch (column) {
    case Id:
        return advisory.id;
    case Kind:
        return advisory.kind;
    case Severity:
        return advisory.severity;
    case Date:
        return advisory.date;
    case State:
        return stateWord(advisory);
    case Title:
        return advisory.title;
    default:
        return QString();
    }
}

QVariant AdvisoryModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= advisories.size()) {
        return QVariant();
    }
    const Advisory& advisory = advisories.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return text(advisory, index.column());
    case Qt::ForegroundRole:
        // The package table uses the same colour for outdated packages.
        return advisory.security && !advisory.isInstalled()
                   ? QVariant(QColor(Colors::readable(Colors::error(), background)))
                   : QVariant();
    case FilteredRows::SortRole:
        return index.column() == Severity ? QVariant(advisory.rank) : QVariant();
    case FilteredRows::SearchRole: {
        QStringList texts = advisory.cves + advisory.bugs;
        for (const Advisory::Package& package : advisory.packages) {
            texts.append(package.text());
        }
        texts.append(advisory.description);
        return texts.join(QLatin1Char(' '));
    }
    default:
        return QVariant();
    }
}

QVariant AdvisoryModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || (role != Qt::DisplayRole && role != Qt::ToolTipRole)) {
        return QVariant();
    }
    const bool tip = role == Qt::ToolTipRole;
    switch (section) {
    case Id:
        return tip ? tr("The identifier of the advisory") : tr("Advisory");
    case Kind:
        return tip ? tr("Security, bug fix, enhancement or new package") : tr("Kind");
    case Severity:
        return tip ? tr("The severity of a security fault") : tr("Severity");
    case Date:
        return tip ? tr("The day on which the advisory was issued or changed") : tr("Date");
    case State:
        return tip ? tr("Whether all packages of the advisory are installed in its version or a newer "
                        "version")
                   : tr("State");
    case Title:
        return tip ? tr("The title of the advisory") : tr("Title");
    default:
        return QVariant();
    }
}

QString AdvisoryModel::details(int row) const
{
    const Advisory& advisory = advisories.at(row);
    QStringList packages;
    for (const Advisory::Package& package : advisory.packages) {
        packages.append(AdvisoryMarker::described(package));
    }
    QStringList lines{tr("%1: %2").arg(advisory.id, advisory.title)};
    const auto add = [&lines](const QString& label, const QStringList& values) {
        if (!values.isEmpty()) {
            lines.append(QString());
            lines.append(label + QLatin1Char(':'));
            for (const QString& value : values) {
                lines.append(QStringLiteral("  ") + value);
            }
        }
    };
    add(tr("Packages"), packages);
    add(tr("CVE"), advisory.cves);
    add(tr("Bugs"), advisory.bugs);
    if (!advisory.description.isEmpty()) {
        lines.append(QString());
        lines.append(advisory.description);
    }
    return lines.join(QLatin1Char('\n'));
}
