// SPDX-License-Identifier: GPL-2.0-or-later

// The window that shows every configured repository. The user switches repositories on and off, edits their
// configuration and writes it to the files.
//
// Graphical thread. The main window creates it on first use and owns it. It works on the one configuration of
// the main window, and reads that again each time it opens.

#ifndef REPO_REPOEDITORDIALOG_H
#define REPO_REPOEDITORDIALOG_H

#include <QHash>

#include "widgets/HDialog.h"

class HFrameLabel;
class QBoxLayout;
class QModelIndex;
class QPushButton;
class YumConfIO;
class YumIO;

namespace Repo {
struct Entry;
}

namespace RepoEditor {

class ConfigDialog;
class Model;
class View;

class Dialog : public HDialog
{
    Q_OBJECT

public:
    // The back end and the configuration are not owned; the configuration must outlive the dialog. If the
    // configuration cannot be read, the error message appears over `parent`.
    Dialog(YumIO* backEnd, YumConfIO* conf, QWidget* parent);

    // Must be set before each exec(): if true, closing emits reposChanged() even without a change.
    bool reposChangedForced;

    // Does not open the window if the configuration cannot be read.
    int exec() override;
    void setVisible(bool visible) override;

Q_SIGNALS:
    // The dialog has closed, and the use or the configuration of some repository has changed.
    void reposChanged();

public Q_SLOTS:
    void useChanged();
    void configChanged();
    void currentChanged(int current, int previous);
    void browse();
    void edit();
    void edit(const QModelIndex& sourceIndex);
    void add();
    void copy();
    void remove();
    void reset();
    void resetAll();
    void cancel();
    bool apply();
    void ok();
    // Drops all changes that are not applied; Escape and the window frame do this too. Changes of the use in
    // the session stay.
    void reject() override;

private:
    QBoxLayout* createEntryButtons();
    QBoxLayout* createDialogButtons();
    QPushButton* addButton(QBoxLayout* row, const QString& text, const QString& toolTip, const char* slot);

    bool prepare();
    void editRow(int row);
    void addEntry(Repo::Entry entry, bool isCopy = false);
    bool hasEmptyId() const;
    // The first identifier that occurs again later; empty if all are different.
    QString getDuplicateId() const;
    void updateStatusLabel();
    // Selects the last repository with the identifier, if any.
    void setEntryToOldId(QString id);
    void setEntryHasChanged(bool has);
    void setConfigHasChanged(bool has);
    bool hasChanges() const { return entryHasChanged || configHasChanged; }
    void showChanges();

    QWidget* parentWindow;
    Model* model;
    View* view;
    QPushButton* browseButton;
    QPushButton* editButton;
    QPushButton* copyButton;
    QPushButton* removeButton;
    HFrameLabel* statusLabel;
    QPushButton* resetAllButton;
    QPushButton* applyButton;
    ConfigDialog* configDialog;
    YumIO* yumIO;
    YumConfIO* yumConfIO;

    QHash<QString, bool> sessionBackup; // the session enable table as it was when the dialog was shown
    bool readWhole;                     // the list contains the repositories of all files
    bool sessionChanged;                // since the dialog was shown
    bool entryHasChanged;               // some changes are not applied
    bool configHasChanged;              // some changes of the configuration are not applied
    bool applied;                       // since the dialog was shown
};

} // namespace RepoEditor

#endif
