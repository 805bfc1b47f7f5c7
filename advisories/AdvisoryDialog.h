// SPDX-License-Identifier: GPL-2.0-or-later

// The window of the advisories: those of the repositories that concern installed packages, the details of the
// current one, and the buttons that mark the updates which advisories ask for.
//
// It is modal, so the records and advisories do not change while it is open. It changes no record itself: it
// reports the records to mark.
//
// Graphical thread; the main window makes it on the first request and keeps it.

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
    // The back end is not owned.
    AdvisoryDialog(YumIO* backEnd, QWidget* parent);

    // Shows the advisories that the back end has read. The same advisory stays the current one.
    void load();

Q_SIGNALS:
    // The user wants to update these records.
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
    PlainLabel* resultLabel; // what the last button has done
    QPushButton* markButton;
    QPushButton* securityButton;
};

#endif
