// SPDX-License-Identifier: GPL-2.0-or-later

// The line below the package table: the numbers of listed and selected rows, the number of marks of each
// action, the size of the marked packages that dnf would download, and the number of locked packages. Screen
// readers present it as a status bar.
//
// The object lives on the graphical thread; its Qt parent owns it. After a change to the marks or to the
// records, the object counts the marks of all records. If many changes come in quick succession, it counts
// only once. After a change to the selection or the filter, it does not count the marks.

#ifndef PACKAGETABLE_TABLESTATUS_H
#define PACKAGETABLE_TABLESTATUS_H

#include <QModelIndex>
#include <QStatusBar>
#include <QTimer>
#include <QVector>

class ElidedLabel;

namespace PackageTable {

class Model;
class SortFilterProxyModel;
class View;

class TableStatus : public QStatusBar
{
    Q_OBJECT

public:
    // The main window owns the three arguments, which must outlive this TableStatus. The view must show the
    // rows of the proxy. The proxy must show the rows of the model.
    TableStatus(Model* packages, SortFilterProxyModel* listedRows, View* table, QWidget* parent = nullptr);

private Q_SLOTS:
    void recordsChanged();
    void cellsChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight);
    void updateLater();
    void updateText();

private:
    void countMarks();
    QString text() const;
    // The part of the text about version locks; empty if no package is locked.
    QString textOfLocks() const;

    Model* model;
    SortFilterProxyModel* proxy;
    View* view;
    ElidedLabel* label;
    QTimer later;            // fires when the current changes are complete
    bool marksChanged;       // true if the following numbers are out of date
    int marks[4];            // the number of marks, by Package::Action
    quint64 bytes;           // the size of the marked packages that dnf would download
    bool groupsToDownload;   // whether a group is marked for Install or Update
    QVector<int> lockedRows; // the model's rows of the packages that are locked at their version
};

} // namespace PackageTable

#endif
