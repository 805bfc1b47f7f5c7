// SPDX-License-Identifier: GPL-2.0-or-later

// The table of advisories. Each row is one advisory; the newest advisory comes first. A filter expression
// finds the visible texts of a row, and also the CVE numbers, the bug numbers, the packages and the
// description of the advisory.
//
// The object lives on the graphical thread; its Qt parent owns it. The object owns a copy of the advisories.

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
    // Returns the advisory of a row, which must exist.
    const Advisory& advisory(int row) const { return advisories.at(row); }
    // Returns the row of the advisory with this identifier, or -1 if no advisory has this identifier.
    int rowOf(const QString& id) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // Returns all details of an advisory as plain text.
    QString details(int row) const;
    // Sets the background colour of the rows. If the update of a security advisory is not installed, the
    // model shows the row in an error colour that is readable on this background.
    void setBackground(const QColor& color);

private:
    static QString text(const Advisory& advisory, int column);
    static QString stateWord(const Advisory& advisory);

    QVector<Advisory> advisories;
    QColor background;
};

#endif
