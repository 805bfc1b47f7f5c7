// SPDX-License-Identifier: GPL-2.0-or-later

#include "advisories/AdvisoryDialog.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

#include "advisories/AdvisoryMarker.h"
#include "advisories/AdvisoryModel.h"
#include "widgets/FilteredList.h"
#include "widgets/HTableView.h"
#include "widgets/HTextEdit.h"
#include "widgets/Literal.h"
#include "widgets/PlainLabel.h"
#include "widgets/TextDialog.h"
#include "yumio/YumIO.h"

AdvisoryDialog::AdvisoryDialog(YumIO* backEnd, QWidget* parent)
    : QDialog(parent), yumIO(backEnd), model(new AdvisoryModel(this)),
      list(new FilteredList(model, tr("Advisories"), this)), details(new HTextEdit(90, 12, this)),
      resultLabel(new PlainLabel(this))
{
    setWindowTitle(tr("VYRE Advisories"));
    list->setEmptyText(tr("No repository has an advisory about an installed package."));
    details->setReadOnly(true);
    details->setAcceptRichText(false);
    details->setTabChangesFocus(true);
    details->setAccessibleName(tr("Details of the advisory"));
    list->setDetails(details);
    model->setBackground(list->tableView()->palette().color(QPalette::Base));
    connect(list, SIGNAL(currentChanged(int)), this, SLOT(showCurrent()));
    connect(list, SIGNAL(selectionChanged()), this, SLOT(updateButtons()));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(list, 1);
    resultLabel->setWordWrap(true);
    layout->addWidget(resultLabel);
    auto* row = new QHBoxLayout;
    layout->addLayout(row);
    const auto addButton = [this, row](const QString& text, const QString& toolTip, const char* slot) {
        auto* button = new QPushButton(text, this);
        button->setAutoDefault(false); // Enter must not press this button
        button->setToolTip(Literal::toolTip(toolTip));
        connect(button, SIGNAL(clicked()), this, slot);
        row->addWidget(button);
        return button;
    };
    markButton = addButton(tr("&Mark Updates"),
                           tr("Sets the Action to Update for the packages of the selected advisories.\n"
                              "Does not Apply Actions automatically."),
                           SLOT(markSelected()));
    securityButton = addButton(tr("Mark All &Security Updates"),
                               tr("Sets the Action to Update for the packages of all security advisories.\n"
                                  "Does not Apply Actions automatically."),
                               SLOT(markSecurity()));
    row->addStretch(1);
    addButton(tr("&Close"), tr("Close the window and keep the marks"), SLOT(reject()));
    updateButtons();
}

void AdvisoryDialog::load()
{
    const int row = list->currentRow();
    const QString before = row >= 0 ? model->advisory(row).id : QString();
    const bool first = model->rowCount() == 0;
    model->setAdvisories(yumIO->advisories());
    if (first) {
        list->fitColumns();
    }
    list->setCurrentRow(qMax(0, model->rowOf(before)));
    resultLabel->clear();
    showCurrent();
    updateButtons();
}

void AdvisoryDialog::showCurrent()
{
    const int row = list->currentRow();
    const QString text = row >= 0 ? model->details(row) : QString();
    if (details->toPlainText() != text) {
        details->setPlainText(text);
    }
}

QVector<Advisory> AdvisoryDialog::selected() const
{
    QVector<Advisory> found;
    for (const int row : list->selectedRows()) {
        found.append(model->advisory(row));
    }
    return found;
}

QVector<Advisory> AdvisoryDialog::security() const
{
    QVector<Advisory> found;
    std::copy_if(model->all().cbegin(), model->all().cend(), std::back_inserter(found),
                 [](const Advisory& advisory) { return advisory.security; });
    return found;
}

void AdvisoryDialog::updateButtons()
{
    const auto anyMissing = [](const QVector<Advisory>& advisories) {
        return std::any_of(advisories.cbegin(), advisories.cend(),
                           [](const Advisory& advisory) { return !advisory.isInstalled(); });
    };
    markButton->setEnabled(anyMissing(selected()));
    securityButton->setEnabled(anyMissing(security()));
}

void AdvisoryDialog::markSelected()
{
    mark(selected());
}

void AdvisoryDialog::markSecurity()
{
    mark(security());
}

void AdvisoryDialog::mark(const QVector<Advisory>& advisories)
{
    const AdvisoryMarker::Found found = AdvisoryMarker::find(*yumIO, advisories);
    Q_EMIT updatesWanted(found.entries);
    const QString marked = tr("Packages marked for an update: %1").arg(found.entries.size());
    resultLabel->setText(marked);
    if (!found.refusals.isEmpty()) {
        const QString refused =
            tr("These packages could not be marked:\n%1").arg(found.refusals.join(QLatin1Char('\n')));
        yumIO->log(Log::Warning, 0, refused);
        TextDialog dialog(this);
        dialog.setWindowTitle(tr("Mark Updates"));
        dialog.setText(marked + QStringLiteral("\n\n") + refused);
        dialog.exec();
    }
}

void AdvisoryDialog::keyPressEvent(QKeyEvent* event)
{
    // Enter has no effect on the buttons, because the user may press this key in the expression field.
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        event->accept();
        return;
    }
    if (event->matches(QKeySequence::Cancel) && list->stopComparing()) {
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}
