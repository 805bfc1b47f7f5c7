// SPDX-License-Identifier: GPL-2.0-or-later

// The table of advisories: one row each, the newest first. The rows match an expression also by CVE and bug
// numbers, packages and description.
//
// Graphical thread; owned by its Qt parent. It owns a copy of the advisories.

#ifndef ADVISORIES_ADVISORYMODEL_H
#define ADVISORIES_ADVISORYMODEL_H

#include <QColor>
#include <QVector>

#include "widgets/HAbstractTableModel.h"
#include "yumio/Advisory.h"

class AdvisoryModel : public HAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Id, Kind, Severity, Date, State, Title, ColumnCount };

    explicit AdvisoryModel(QObject* parent = nullptr);

    void setAdvisories(const QVector<Advisory>& newAdvisories);
    const QVector<Advisory>& all() const { return advisories; }
    // The row must exist.
    const Advisory& advisory(int row) const { return advisories.at(row); }
    // The row of an identifier; -1 without it.
    int rowOf(const QString& id) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // Everything about an advisory, as plain text.
    QString details(int row) const;
    // The background of the rows, on which the colour of missing security updates must be readable.
    void setBackground(const QColor& color);

private:
    static QString text(const Advisory& advisory, int column);
    static QString stateWord(const Advisory& advisory);

    QVector<Advisory> advisories;
    QColor background;
};

#endif
