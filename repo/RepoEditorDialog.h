// SPDX-License-Identifier: GPL-2.0-or-later

// The window that shows every configured repository. The user enables and disables repositories, edits their
// configuration, and writes the configuration to the files.
//
// The object lives on the graphical thread. The main window creates it on first use and owns it. The dialog
// edits the main window's configuration, and reads the files again each time it opens.

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
    // The main window owns the back end and the configuration. The configuration must outlive the dialog. If
    // the configuration cannot be read, the error message appears over `parent`.
    Dialog(YumIO* backEnd, YumConfIO* conf, QWidget* parent);

    // The caller sets this member before each exec(). If the member is true, the dialog emits reposChanged()
    // when it closes, even if nothing has changed.
    bool reposChangedForced;

    // Does not open the window if the configuration cannot be read.
    int exec() override;
    void setVisible(bool visible) override;

Q_SIGNALS:
    // Emitted when the dialog closes, if the user has changed the use of a repository or applied changes.
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
    // Discards all changes that are not applied, but keeps the changes to the use of repositories in this
    // session. The Escape key and the window's close button also call this slot.
    void reject() override;

private:
    QBoxLayout* createEntryButtons();
    QBoxLayout* createDialogButtons();
    QPushButton* addButton(QBoxLayout* row, const QString& text, const QString& toolTip, const char* slot);

    bool prepare();
    void editRow(int row);
    void addEntry(Repo::Entry entry, bool isCopy = false);
    bool hasEmptyId() const;
    // Returns the first identifier that more than one repository has, or an empty string.
    QString getDuplicateId() const;
    void updateStatusLabel();
    // Selects the last repository with this identifier, if it exists.
    void setEntryToOldId(QString id);
    void setEntryHasChanged(bool has);
    void setConfigHasChanged(bool has);
    bool userDropsChanges();
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

    QHash<QString, bool> sessionBackup; // a copy of `sessionEnabled`, made when the dialog was shown
    bool readWhole;        // the list contains the repositories of all files, because the last read succeeded
    bool sessionChanged;   // the user has changed the use of a repository since the dialog was shown
    bool entryHasChanged;  // the user has made changes that are not applied
    bool configHasChanged; // the user has made changes to the configuration that are not applied
    bool applied;          // the user has applied changes since the dialog was shown
};

} // namespace RepoEditor

#endif
