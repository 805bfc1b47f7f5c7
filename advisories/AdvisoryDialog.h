// SPDX-License-Identifier: GPL-2.0-or-later

// The advisory window. It lists the repositories' advisories about installed packages, shows the details of
// the current advisory, and has buttons for marking the updates that the advisories request.
//
// The window is modal, so the records and the advisories do not change while the window is open. The window
// itself marks no record: the signal updatesWanted() reports the records to mark.
//
// The object lives on the graphical thread. The main window creates it on the first request and owns it.

#ifndef ADVISORIES_ADVISORYDIALOG_H
#define ADVISORIES_ADVISORYDIALOG_H

#include <QDialog>
#include <QVector>

#include "yumio/Advisory.h"

class AdvisoryModel;
class FilteredList;
class HTextEdit;
class PlainLabel;
class QPushButton;
class YumIO;
namespace Package {
class Entry;
}

class AdvisoryDialog : public QDialog
{
    Q_OBJECT

public:
    // The main window owns the back end.
    AdvisoryDialog(YumIO* backEnd, QWidget* parent);

    // Lists the advisories that the back end has read. If the list still contains the current advisory, this
    // advisory stays current.
    void load();

Q_SIGNALS:
    // Emitted when the user wants to mark these records for Update.
    void updatesWanted(const QVector<Package::Entry*>& entries);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private Q_SLOTS:
    void showCurrent();
    void updateButtons();
    void markSelected();
    void markSecurity();

private:
    QVector<Advisory> selected() const;
    QVector<Advisory> security() const;
    void mark(const QVector<Advisory>& advisories);

    YumIO* yumIO;
    AdvisoryModel* model;
    FilteredList* list;
    HTextEdit* details;
    PlainLabel* resultLabel; // the message about the effect of the last pressed button
    QPushButton* markButton;
    QPushButton* securityButton;
};

#endif
