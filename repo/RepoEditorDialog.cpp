// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoEditorDialog.h"

#include "yumio/YumIO.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QSet>
#include <QVBoxLayout>

#include <algorithm>
#include <functional>

#include "repo/RepoBrowse.h"
#include "repo/RepoEditorConfigDialog.h"
#include "repo/RepoEditorContextMenu.h"
#include "repo/RepoEditorModel.h"
#include "repo/RepoEditorSortFilterProxyModel.h"
#include "repo/RepoEditorView.h"
#include "repo/YumConfIO.h"
#include "widgets/Colors.h"
#include "widgets/HFrameLabel.h"
#include "widgets/HMessageBox.h"
#include "widgets/HSeparator.h"
#include "widgets/Literal.h"
#include "widgets/Metrics.h"

namespace RepoEditor {

Dialog::Dialog(YumIO* backEnd, YumConfIO* conf, QWidget* parent)
    : HDialog(parent), reposChangedForced(false), parentWindow(parent), yumIO(backEnd), yumConfIO(conf),
      readWhole(false), sessionChanged(false), entryHasChanged(false), configHasChanged(false), applied(false)
{
    setWindowTitle(tr("VYRE Repository Configuration Editor"));
    auto* layout = new QVBoxLayout(this);
    model = new Model(yumIO, yumConfIO, this);
    auto* proxy = new SortFilterProxyModel(this);
    proxy->setSourceModel(model);
    view = new View(model, proxy, this);
    model->setViewFont(view->font());
    layout->addWidget(view, 1);

    connect(model, SIGNAL(useChanged()), this, SLOT(useChanged()));
    connect(model, SIGNAL(configChanged()), this, SLOT(configChanged()));
    connect(view, SIGNAL(currentChanged(int, int)), this, SLOT(currentChanged(int, int)));
    connect(view, SIGNAL(activated(const QModelIndex&)), this, SLOT(edit(const QModelIndex&)));
    connect(view->getContextMenu(), SIGNAL(edit(QModelIndex)), this, SLOT(edit(QModelIndex)));

    layout->addLayout(createEntryButtons());
    layout->addWidget(new HSeparator(this));
    configDialog = new ConfigDialog(yumConfIO, this);
    layout->addLayout(createDialogButtons());
}

QPushButton* Dialog::addButton(QBoxLayout* row, const QString& text, const QString& toolTip, const char* slot)
{
    auto* button = new QPushButton(text, this);
    button->setToolTip(Literal::toolTip(toolTip));
    connect(button, SIGNAL(clicked()), this, slot);
    row->addWidget(button);
    return button;
}

QBoxLayout* Dialog::createEntryButtons()
{
    auto* row = new QHBoxLayout;
    browseButton = addButton(
        row, tr("Browse Repository"),
        tr("Browse the first URL specified for the selected repository using an external web browser"),
        SLOT(browse()));
    // Widen the button, because some styles leave no space between a long label and the border.
    browseButton->setMinimumWidth(browseButton->sizeHint().width() +
                                  2 * Metrics::columnWidth(browseButton->fontMetrics()));
    row->addStretch(1);
    editButton = addButton(row, tr("Edit"), tr("Edit the selected repository configuration"), SLOT(edit()));
    QPushButton* add =
        addButton(row, tr("Add"), tr("Create a new repository configuration from scratch"), SLOT(add()));
    add->setAutoDefault(false);
    add->setDefault(false);
    copyButton =
        addButton(row, tr("Copy"),
                  tr("Create a new repository configuration based on the selected repository"), SLOT(copy()));
    removeButton =
        addButton(row, tr("Remove"), tr("Remove the selected repository configuration"), SLOT(remove()));
    for (QPushButton* button : {browseButton, editButton, copyButton, removeButton}) {
        button->setEnabled(false);
    }
    return row;
}

QBoxLayout* Dialog::createDialogButtons()
{
    auto* row = new QHBoxLayout;
    statusLabel = new HFrameLabel(this);
    // The label has space for the longest message with a 16-letter identifier. Longer identifiers do not
    // widen the window.
    statusLabel->setText(
        tr("Two or more repositories have the Identifier, %1").arg(QString(16, QLatin1Char('n'))));
    statusLabel->setMinimumWidth(statusLabel->sizeHint().width());
    statusLabel->setText(QString());
    row->addWidget(statusLabel);
    row->addStretch(1);
    resetAllButton = addButton(row, tr("Reset All"),
                               tr("Undo changes to all repository configurations since the last Apply or "
                                  "opening of the dialog"),
                               SLOT(resetAll()));
    addButton(row, tr("Cancel"),
              tr("Undo changes to all repository configurations since the last Apply or opening of the "
                 "dialog, and close the window"),
              SLOT(cancel()));
    applyButton = addButton(row, tr("Apply"),
                            tr("Apply changes to all repository configurations, but do not close the window"),
                            SLOT(apply()));
    applyButton->setDefault(true);
    addButton(row, tr("OK"), tr("Apply changes to all repository configurations, and close the window"),
              SLOT(ok()));
    resetAllButton->setEnabled(false);
    applyButton->setEnabled(false);
    return row;
}

int Dialog::exec()
{
    setModal(true);
    show();
    // HDialog::exec() would wait for ever for a window that did not open.
    return isVisible() ? HDialog::exec() : static_cast<int>(Rejected);
}

void Dialog::setVisible(bool visible)
{
    const bool wasVisible = isVisible();
    if (visible && !wasVisible && !prepare()) {
        return;
    }
    HDialog::setVisible(visible);
    if (!visible && wasVisible && (applied || sessionChanged || reposChangedForced)) {
        Q_EMIT reposChanged();
    }
}

bool Dialog::prepare()
{
    sessionBackup = yumConfIO->sessionEnabled;
    readWhole = yumConfIO->read(parentWindow);
    model->reset();
    if (!readWhole) {
        return false;
    }
    view->horizontalHeader()->setSortIndicator(NameColumn, Qt::DescendingOrder);
    view->HTableView::sortByColumn(IdentifierColumn);
    view->resizeColumnsToContents();
    sessionChanged = false;
    setEntryHasChanged(false);
    setConfigHasChanged(false);
    applied = false;
    currentChanged(-1, -1);
    view->setFocus();
    return true;
}

void Dialog::useChanged()
{
    sessionChanged = true;
}

void Dialog::configChanged()
{
    setConfigHasChanged(true);
}

void Dialog::currentChanged(int current, int)
{
    for (QPushButton* button : {browseButton, editButton, copyButton, removeButton}) {
        button->setEnabled(current != -1);
    }
    updateStatusLabel();
}

void Dialog::browse()
{
    const int row = view->currentRow();
    if (row != -1) {
        RepoBrowse::browse(this, yumConfIO->entries.at(row), yumIO);
    }
}

void Dialog::editRow(int row)
{
    if (row < 0 || row >= yumConfIO->entries.size()) {
        return;
    }
    configDialog->setEntry(&yumConfIO->entries[row]);
    if (configDialog->exec() == Accepted) {
        model->dataChanged(row);
        setConfigHasChanged(true);
    }
}

void Dialog::edit()
{
    editRow(view->currentRow());
}

void Dialog::edit(const QModelIndex& sourceIndex)
{
    editRow(sourceIndex.row());
}

void Dialog::addEntry(Repo::Entry entry, bool isCopy)
{
    configDialog->setEntry(&entry, isCopy);
    if (configDialog->exec() == Accepted) {
        view->setCurrentIndex(QModelIndex());
        view->setFocus();
        const int row = model->addRow(entry);
        view->setCurrentRow(row);
        model->dataChanged(row);
        setConfigHasChanged(true);
    }
}

void Dialog::add()
{
    addEntry(Repo::Entry());
}

void Dialog::copy()
{
    const int row = view->currentRow();
    if (row != -1) {
        addEntry(yumConfIO->entries.at(row), true);
    }
}

void Dialog::remove()
{
    QSet<int> selected;
    const QModelIndexList indexes = view->selectedRows();
    for (const QModelIndex& index : indexes) {
        selected.insert(index.row());
    }
    if (selected.isEmpty()) {
        return;
    }
    // Move the focus to the table. Otherwise Qt would focus the next button as soon as the remove button is
    // disabled, and Enter would press that button.
    view->setFocus();
    view->setCurrentIndex(QModelIndex());
    QList<int> rows = selected.values();
    // Remove the last row first, so that the numbers of the remaining rows stay valid.
    std::sort(rows.begin(), rows.end(), std::greater<int>());
    for (const int row : qAsConst(rows)) {
        model->removeRow(row);
    }
    setConfigHasChanged(true);
}

void Dialog::reset() {}

void Dialog::resetAll()
{
    const int row = view->currentRow();
    const QString id = row != -1 ? yumConfIO->entries.at(row).id : QString();
    yumConfIO->sessionEnabled = sessionBackup;
    // If read() fails, it has already shown a message. The list then contains the repositories that were read
    // before the error.
    readWhole = yumConfIO->read(this);
    model->reset();
    if (row != -1) {
        setEntryToOldId(id);
    }
    sessionChanged = false;
    setEntryHasChanged(false);
    setConfigHasChanged(false);
}

void Dialog::cancel()
{
    resetAll();
    reject();
}

bool Dialog::apply()
{
    if (!readWhole) {
        // The files were not read completely, so the list lacks repositories. resetAll() reads the files
        // again and shows the error.
        resetAll();
        return false;
    }
    const int rows = yumConfIO->entries.size();
    if (!yumConfIO->write(this)) {
        if (yumConfIO->entries.size() != rows) {
            // write() removed repositories with the user's consent before it failed.
            model->reset();
            updateStatusLabel();
        }
        if (yumConfIO->readAgainWanted) {
            resetAll();
        }
        return false;
    }
    if (yumConfIO->outdated) {
        readWhole = yumConfIO->read(this);
    }
    model->reset();
    // This call selects nothing, because no repository has an empty identifier.
    setEntryToOldId(QString());
    setEntryHasChanged(false);
    setConfigHasChanged(false);
    applied = true;
    return true;
}

bool Dialog::userDropsChanges()
{
    HMessageBox box(QMessageBox::Question, tr("Repository Editor"),
                    tr("The changes to the repositories are not applied. Close the window and drop the "
                       "changes?"),
                    QMessageBox::Yes | QMessageBox::No, this);
    box.setDefaultButton(QMessageBox::No);
    box.setEscapeButton(QMessageBox::No);
    return box.exec() == QMessageBox::Yes;
}

void Dialog::reject()
{
    // Ask before discarding changes, because a user may press Escape or the window's close button by mistake.
    // "Cancel" has already discarded the changes, so it leads to no question.
    const bool isAsked = hasChanges();
    if (isAsked && !userDropsChanges()) {
        return;
    }
    if (isAsked) {
        if (!sessionChanged && !applied) {
            // Restore sessionEnabled: a repository form may have added its repository to sessionEnabled
            // without a signal.
            yumConfIO->sessionEnabled = sessionBackup;
        }
        readWhole = yumConfIO->read(this);
        model->reset();
    }
    HDialog::reject();
    // The question and this window close at the same time. Some window managers then focus no window, so the
    // parent window is activated explicitly.
    if (isAsked && parentWidget() != nullptr) {
        parentWidget()->activateWindow();
    }
}

void Dialog::ok()
{
    if (!hasChanges() || apply()) {
        accept();
    }
}

bool Dialog::hasEmptyId() const
{
    return std::any_of(yumConfIO->entries.cbegin(), yumConfIO->entries.cend(),
                       [](const Repo::Entry& entry) { return entry.id.isEmpty(); });
}

QString Dialog::getDuplicateId() const
{
    QHash<QString, int> count;
    for (const Repo::Entry& entry : qAsConst(yumConfIO->entries)) {
        ++count[entry.id];
    }
    for (const Repo::Entry& entry : qAsConst(yumConfIO->entries)) {
        if (count.value(entry.id) > 1) {
            return entry.id;
        }
    }
    return QString();
}

void Dialog::updateStatusLabel()
{
    if (hasEmptyId()) {
        statusLabel->setPalette(Colors::makeError(statusLabel->palette()));
        statusLabel->setText(tr("A repository has no Identifier"));
        return;
    }
    const QString duplicate = getDuplicateId();
    if (!duplicate.isEmpty()) {
        statusLabel->setPalette(Colors::makeError(statusLabel->palette()));
        statusLabel->setText(tr("Two or more repositories have the Identifier, %1").arg(duplicate));
    } else if (hasChanges()) {
        statusLabel->setPalette(Colors::makeOK(statusLabel->palette()));
        statusLabel->setText(tr("Unapplied Configuration Changes"));
    } else {
        statusLabel->setText(QString());
    }
}

void Dialog::setEntryToOldId(QString id)
{
    for (int row = yumConfIO->entries.size() - 1; row >= 0; --row) {
        if (yumConfIO->entries.at(row).id == id) {
            view->setCurrentRow(row);
            return;
        }
    }
}

void Dialog::showChanges()
{
    resetAllButton->setEnabled(hasChanges());
    applyButton->setEnabled(hasChanges());
    updateStatusLabel();
}

void Dialog::setEntryHasChanged(bool has)
{
    entryHasChanged = has;
    showChanges();
}

void Dialog::setConfigHasChanged(bool has)
{
    configHasChanged = has;
    showChanges();
}

} // namespace RepoEditor
