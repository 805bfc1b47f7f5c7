// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoEditorConfigDialog.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include "repo/RepoEditorConfig.h"
#include "repo/YumConfIO.h"
#include "widgets/HFrameLabel.h"
#include "widgets/HMessageBox.h"

namespace RepoEditor {

ConfigDialog::ConfigDialog(YumConfIO* conf, QWidget* parent)
    : HDialog(parent), yumConfIO(conf), entry(nullptr), hasChanged(false), copied(false)
{
    setWindowTitle(tr("VYRE Repository Configuration"));
    auto* layout = new QVBoxLayout(this);
    auto* form = new QWidget(this);
    auto* grid = new QGridLayout(form);
    grid->setContentsMargins(0, 0, 0, 0);
    config = new Config(grid);
    connect(config, SIGNAL(changed()), this, SLOT(changed()));
    layout->addWidget(form, 1);

    auto* row = new QHBoxLayout;
    statusLabel = new HFrameLabel(this);
    row->addWidget(statusLabel);
    row->addStretch(1);
    resetButton = new QPushButton(tr("Reset"), this);
    resetButton->setToolTip(tr("Undo changes to this repository configuration"));
    connect(resetButton, SIGNAL(clicked()), this, SLOT(reset()));
    row->addWidget(resetButton);
    auto* cancelButton = new QPushButton(tr("Cancel"), this);
    cancelButton->setToolTip(tr("Undo changes to this repository configuration and close the window"));
    connect(cancelButton, SIGNAL(clicked()), this, SLOT(cancel()));
    row->addWidget(cancelButton);
    okButton = new QPushButton(tr("OK"), this);
    okButton->setToolTip(tr("Apply changes to all repository configurations, and close the window"));
    okButton->setDefault(true);
    connect(okButton, SIGNAL(clicked()), this, SLOT(ok()));
    row->addWidget(okButton);
    layout->addLayout(row);

    config->disable();
    setHasChanged(false);
}

void ConfigDialog::setEntry(Repo::Entry* edited, bool isCopy)
{
    entry = edited;
    copied = isCopy;
    config->setEntry(*entry);
    updateStatusLabel();
}

void ConfigDialog::setVisible(bool visible)
{
    if (visible && !isVisible()) {
        config->setDefaults(yumConfIO->enabled, yumConfIO->gpgcheck);
        setHasChanged(false);
        config->focusIdentifier();
    }
    HDialog::setVisible(visible);
}

void ConfigDialog::changed()
{
    setHasChanged(true);
}

void ConfigDialog::setHasChanged(bool has)
{
    hasChanged = has;
    resetButton->setEnabled(has);
    updateStatusLabel();
}

void ConfigDialog::updateStatusLabel()
{
    if (!config->setStatus(yumConfIO, statusLabel)) {
        statusLabel->setText(QString());
    }
    okButton->setEnabled(!hasChanged || config->canBeWritten());
}

void ConfigDialog::reset()
{
    if (entry != nullptr) {
        config->setEntry(*entry);
    }
    setHasChanged(false);
}

void ConfigDialog::cancel()
{
    HDialog::reject();
}

bool ConfigDialog::userDropsChanges()
{
    HMessageBox box(
        QMessageBox::Question, tr("Repository Editor"),
        tr("The changes to the repository are not applied. Close the window and drop the changes?"),
        QMessageBox::Yes | QMessageBox::No, this);
    box.setDefaultButton(QMessageBox::No);
    box.setEscapeButton(QMessageBox::No);
    return box.exec() == QMessageBox::Yes;
}

void ConfigDialog::reject()
{
    // Ask before discarding changes, because a user may press Escape or the window's close button by mistake.
    // The "Cancel" button does not call this function, because a click on this button is hardly a mistake.
    const bool isAsked = hasChanged;
    if (isAsked && !userDropsChanges()) {
        return;
    }
    HDialog::reject();
    // The question and this window close at the same time. Some window managers then focus no window, so the
    // parent window is activated explicitly.
    if (isAsked && parentWidget() != nullptr) {
        parentWidget()->activateWindow();
    }
}

void ConfigDialog::ok()
{
    if ((!hasChanged && !copied) || entry == nullptr) {
        HDialog::reject();
        return;
    }
    if (!config->canBeWritten()) {
        return;
    }
    const Repo::Entry edited = config->toEntry();
    yumConfIO->sessionEnabled.insert(edited.id,
                                     edited.enabled == Qt::Checked ||
                                         (edited.enabled == Qt::PartiallyChecked && yumConfIO->enabled));
    *entry = edited;
    accept();
}

} // namespace RepoEditor
