// The window in which the user sees every configured repository, switches repositories on and off, edits
// their configuration and has it written.
//
// Graphical thread; the main window makes it on first use and owns it. It works on the main window's one
// configuration, which is read afresh every time it is shown.

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
    // The back end and the configuration are not owned; the configuration must outlive the dialog. The parent
    // is the window that a failure to read the configuration is shown over.
    Dialog(YumIO* backEnd, YumConfIO* conf, QWidget* parent);

    // To be set before each exec(): whether closing tells reposChanged() even if nothing has changed.
    bool reposChangedForced;

    // Shows nothing when the configuration cannot be read.
    int exec() override;
    void setVisible(bool visible) override;

Q_SIGNALS:
    // The dialog was closed, and repositories are used, or configured, otherwise than before.
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
    // Also by Escape and by the window's frame: drops what has not been applied. What was switched on or off
    // for the session stays so.
    void reject() override;

private:
    QBoxLayout* createEntryButtons();
    QBoxLayout* createDialogButtons();
    QPushButton* addButton(QBoxLayout* row, const QString& text, const QString& toolTip, const char* slot);

    bool prepare();
    void editRow(int row);
    void addEntry(Repo::Entry entry, bool isCopy = false);
    bool hasEmptyId() const;
    // The first identifier that occurs again later; empty if there is none.
    QString getDuplicateId() const;
    void updateStatusLabel();
    // Makes the last repository with the identifier current, if there is one.
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
    bool readWhole;                     // the configuration's list is that of all files
    bool sessionChanged;                // since the dialog was shown
    bool entryHasChanged;               // there are changes that are not applied
    bool configHasChanged;              // the same
    bool applied;                       // since the dialog was shown
};

} // namespace RepoEditor

#endif
