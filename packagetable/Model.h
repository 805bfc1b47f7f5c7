// SPDX-License-Identifier: GPL-2.0-or-later

// The back end's package records as a table, with one row for each record in the back end's list. When the
// user marks records, this class writes the actions into the records.
//
// The object lives on the graphical thread; the main window owns it. The object has no copy of the back end's
// list. After each change to that list, call reset() before a view reads data from the model.

#ifndef PACKAGETABLE_MODEL_H
#define PACKAGETABLE_MODEL_H

#include <QColor>
#include <QModelIndexList>
#include <QPointer>
#include <QVector>

#include "packagetable/Columns.h"
#include "packagetable/PackageTable.h"
#include "widgets/HAbstractTableModel.h"
#include "yumio/Package.h"

class YumConfIO;
class VersionLocks;
class YumIO;

namespace PackageTable {

namespace Describe {
class Dialog;
}

class Model : public HAbstractTableModel
{
    Q_OBJECT

public:
    // The main window owns the back end. After the deletion of the back end, the table is empty.
    explicit Model(YumIO* backEnd, QObject* parent = nullptr);

    // Sets the configuration. The main window owns the configuration, which must outlive the model.
    void setYumConfIO(YumConfIO* reader);
    // Selects the text colours for an enabled or a disabled view. The caller must then repaint the view.
    void setEnabled(bool isEnabled);
    // Sets the background colour of the rows. On a dark background, the model uses lighter text colours. The
    // caller must then repaint the view.
    void setBackground(const QColor& background);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // Returns the record of a row. The row must exist.
    Package::Entry* entry(int row) const;

    Package::State getState(int row) const;
    const VersionLocks& versionLocks() const;
    // Returns whether the package of the record is in a local directory, so that dnf does not download the
    // package.
    bool isLocal(const Package::Entry& entry) const;
    // Sets the action without checking whether the record's state permits it.
    void setAction(const QModelIndex& index, Package::Action action);
    // Returns true if the record permits at least one action.
    static bool canBeMarked(const Package::Entry& entry);
    // Changes the action of the record to the next action that its state permits.
    void toggleAction(const QModelIndex& index);
    void reset();

    // While a Hiding object exists, the model has no rows. Create a Hiding object before the records change.
    // Without this object, views would show cells of records that are only partly changed.
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

    // Shows all data of the record in a modal dialog. Ignores a missing row. The first call creates the
    // dialog. `parent` owns this dialog.
    void describe(const QModelIndex& index, QWidget* parent);
    // Opens the repository of the record in the user's web browser.
    void browse(const QModelIndex& index, QWidget* parent);

public Q_SLOTS:
    // Marks available packages for Install and updatable packages for Update. Skips all other records. Also
    // skips a record if a package with another name replaces the record's package, or if the record's package
    // replaces a package with another name.
    void setSelected(QModelIndexList indices);
    // Marks each of these records for Update, if the record permits this action.
    void setUpdates(const QVector<Package::Entry*>& entries);
    void clearActions();

private:
    Package::Entry* entryAt(const QModelIndex& index) const; // null for an invalid index
    void changeAction(int row, Package::Action action);
    QVariant toolTipData(const Package::Entry& entry, const Columns::Row& column) const;

    QPointer<YumIO> yumIO;
    YumConfIO* yumConfIO; // null before setYumConfIO()
    bool enabled;
    int hidings;
    QVariant pictures[ColumnCount][Columns::mostPictures]; // icons of each picture column, by sort key;
                                                           // invalid if no icon exists
    QVariant colors[3]; // text colours by Package::State; if invalid, the view's text colour is used
    QVariant disabledColors[3];
    QPointer<Describe::Dialog> describeDialog; // null until the user first opens it
};

} // namespace PackageTable

#endif
