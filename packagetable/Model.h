// SPDX-License-Identifier: GPL-2.0-or-later

// The package records of the back end as a table, with one row for each top-level record. Only this class
// writes the chosen actions into the records.
//
// Graphical thread; the main window owns it. It has no copy of the list: after each change of the list of the
// back end, call reset() before a view reads again.

#ifndef PACKAGETABLE_MODEL_H
#define PACKAGETABLE_MODEL_H

#include <QColor>
#include <QModelIndexList>
#include <QPointer>

#include "packagetable/Columns.h"
#include "packagetable/PackageTable.h"
#include "widgets/HAbstractTableModel.h"
#include "yumio/Package.h"

class YumConfIO;
class YumIO;

namespace PackageTable {

namespace Describe {
class Dialog;
}

class Model : public HAbstractTableModel
{
    Q_OBJECT

public:
    // The back end is not owned. After its deletion the table is empty.
    explicit Model(YumIO* backEnd, QObject* parent = nullptr);

    // Not owned; must outlive the model.
    void setYumConfIO(YumConfIO* reader);
    // Selects the normal or the disabled colours of texts. The caller must redraw the view.
    void setEnabled(bool isEnabled);
    // The darkest or lightest background of rows. For a dark one, the model lightens the colours of texts.
    // The caller must redraw the view.
    void setBackground(const QColor& background);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // The record of an existing row.
    Package::Entry* entry(int row) const;

    Package::State getState(int row) const;
    // Does not check whether the record's state permits the action.
    void setAction(const QModelIndex& index, Package::Action action);
    // True if the record permits any action.
    static bool canBeMarked(const Package::Entry& entry);
    // Switches to the next action that the state of the record permits.
    void toggleAction(const QModelIndex& index);
    void reset();

    // While an object exists, the model has no rows. The records are changing, so their cells would be wrong.
    class Hiding
    {
    public:
        explicit Hiding(Model& hidden);
        ~Hiding();
        Hiding(const Hiding&) = delete;
        Hiding& operator=(const Hiding&) = delete;

    private:
        Model& model;
    };

    // Shows all data of the record in a modal dialog; ignores a missing row. The first call creates the
    // dialog; its parent owns it.
    void describe(const QModelIndex& index, QWidget* parent);
    // Opens the repository of the record in the web browser of the user.
    void browse(const QModelIndex& index, QWidget* parent);

public Q_SLOTS:
    // Marks missing packages for Install and outdated ones for Update. Other records stay unchanged, and so
    // do records that replace others or are replaced.
    void setSelected(QModelIndexList indices);
    void clearActions();

private:
    Package::Entry* entryAt(const QModelIndex& index) const; // null for an invalid index
    void changeAction(int row, Package::Action action);
    QVariant toolTipData(const Package::Entry& entry, const Columns::Row& column) const;

    QPointer<YumIO> yumIO;
    YumConfIO* yumConfIO; // null until the configuration has been read
    bool enabled;
    int hidings;
    QVariant pictures[ColumnCount][Columns::mostPictures]; // icons by sort key; invalid if missing
    QVariant colors[3]; // by Package::State; if invalid, the colour of the view
    QVariant disabledColors[3];
    QPointer<Describe::Dialog> describeDialog; // null until first needed
};

} // namespace PackageTable

#endif
