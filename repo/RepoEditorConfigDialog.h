// SPDX-License-Identifier: GPL-2.0-or-later

// The window in which the user edits one repository.
//
// The object lives on the graphical thread. The Qt parent owns the dialog and uses it for every repository.
// The repository changes only if the user accepts.

#ifndef REPO_REPOEDITORCONFIGDIALOG_H
#define REPO_REPOEDITORCONFIGDIALOG_H

#include "widgets/HDialog.h"

class HFrameLabel;
class QPushButton;
class YumConfIO;

namespace Repo {
struct Entry;
}

namespace RepoEditor {

class Config;

class ConfigDialog : public HDialog
{
    Q_OBJECT

public:
    // The main window owns the configuration, which must outlive the dialog.
    explicit ConfigDialog(YumConfIO* conf, QWidget* parent = nullptr);

    // Sets the repository for the next exec(). The caller owns the repository, which must outlive that call.
    // If the user changes nothing, OK acts like Cancel. But if `isCopy` is true, OK accepts the repository
    // even without a change, because the editor's list does not contain this copy yet.
    void setEntry(Repo::Entry* edited, bool isCopy = false);

    void updateStatusLabel();
    void setHasChanged(bool has);
    void setVisible(bool visible) override;

public Q_SLOTS:
    void changed();
    void reset();
    // Closes the window, and drops the user's changes without a question.
    void cancel();
    void ok();
    // Called for the Escape key and for the window's close button. If the user has made changes, asks before
    // it drops them.
    void reject() override;

private:
    bool userDropsChanges();

    Config* config;
    YumConfIO* yumConfIO;
    Repo::Entry* entry; // null before the first setEntry()
    HFrameLabel* statusLabel;
    QPushButton* resetButton;
    QPushButton* okButton; // disabled if the changed repository cannot be written
    bool hasChanged;
    bool copied; // the repository is a copy that the editor's list does not contain yet
};

} // namespace RepoEditor

#endif
