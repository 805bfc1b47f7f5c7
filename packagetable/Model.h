// The back end's package records as a table, one row for each top-level record, and the one
// place where the user's chosen actions are written into the records.
//
// Graphical thread; the main window owns it. It copies nothing: every call reads the back end's list, so
// whoever has the list rebuilt calls reset() before a view reads again.

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
    // The back end is not owned; once it is gone the table is empty.
    explicit Model(YumIO* backEnd, QObject* parent = nullptr);

    // Not owned; must outlive the model.
    void setYumConfIO(YumConfIO* reader);
    // Whether texts have the colours of the normal or of the disabled look. The caller has the view redrawn.
    void setEnabled(bool isEnabled);
    // The darkest or lightest colour that rows are drawn on; on a dark one the texts' colours are lightened.
    // The caller has the view redrawn.
    void setBackground(const QColor& background);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // The record of a row that exists.
    Package::Entry* entry(int row) const;

    Package::State getState(int row) const;
    // Does not check whether the record's state permits the action.
    void setAction(const QModelIndex& index, Package::Action action);
    // Whether the record permits any action.
    static bool canBeMarked(const Package::Entry& entry);
    // Goes on to the next action that the record's state permits.
    void toggleAction(const QModelIndex& index);
    void reset();

    // While it exists there are no rows, whatever the back end has: the records are being changed, and what
    // is shown of them would be wrong.
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

    // Tells everything about the record of the row in a modal dialog; a row that does not exist is ignored.
    // The dialog is made on first use, and owned by the parent that is given then.
    void describe(const QModelIndex& index, QWidget* parent);
    // Opens the repository of the row's record in the user's web browser.
    void browse(const QModelIndex& index, QWidget* parent);

public Q_SLOTS:
    // Installs what is not installed and updates what is out of date; other records stay as they are, and so
    // do those that replace others or are replaced.
    void setSelected(QModelIndexList indices);
    void clearActions();

private:
    Package::Entry* entryAt(const QModelIndex& index) const; // null when there is none
    void changeAction(int row, Package::Action action);
    QVariant toolTipData(const Package::Entry& entry, const Columns::Row& column) const;

    QPointer<YumIO> yumIO;
    YumConfIO* yumConfIO; // null until it has been read
    bool enabled;
    int hidings;
    QVariant pictures[ColumnCount][Columns::mostPictures]; // icons by sort key; invalid ones for none
    QVariant colors[3]; // by Package::State; an invalid one is the view's own
    QVariant disabledColors[3];
    QPointer<Describe::Dialog> describeDialog; // null until first needed
};

} // namespace PackageTable

#endif
