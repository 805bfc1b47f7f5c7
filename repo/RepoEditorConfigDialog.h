// The window in which the user edits one repository.
//
// Graphical thread; owned by its Qt parent, and used again for every repository. The repository itself is
// changed only when the user accepts.

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
    // The configuration is not owned and must outlive the dialog.
    explicit ConfigDialog(YumConfIO* conf, QWidget* parent = nullptr);

    // The repository to be edited by the next exec(); not owned, it must outlive that. OK without a change is
    // Cancel, except for a copy, which is new as it is.
    void setEntry(Repo::Entry* edited, bool isCopy = false);

    void updateStatusLabel();
    void setHasChanged(bool has);
    void setVisible(bool visible) override;

public Q_SLOTS:
    void changed();
    void reset();
    void cancel();
    void ok();

private:
    Config* config;
    YumConfIO* yumConfIO;
    Repo::Entry* entry; // null before the first setEntry()
    HFrameLabel* statusLabel;
    QPushButton* resetButton;
    QPushButton* okButton; // disabled while the repository could not be written
    bool hasChanged;
    bool copied; // the repository is a copy that the editor does not have yet
};

} // namespace RepoEditor

#endif
