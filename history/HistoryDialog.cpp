// SPDX-License-Identifier: GPL-2.0-or-later

#include "history/HistoryDialog.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QVBoxLayout>

#include "history/HistoryModel.h"
#include "widgets/FilteredList.h"
#include "widgets/HTableView.h"
#include "widgets/HTextEdit.h"
#include "widgets/Literal.h"
#include "widgets/Metrics.h"
#include "widgets/PlainLabel.h"
#include "yumio/YumIO.h"

namespace {

// When a different row becomes current, the dialog waits for this time before it reads the details. So the
// dialog reads no details of the rows over which the user moves with an arrow key.
constexpr int describeDelay = 120; // in milliseconds

} // namespace

HistoryDialog::HistoryDialog(YumIO* backEnd, QWidget* parent)
    : QDialog(parent), yumIO(backEnd), model(new HistoryModel(this)),
      list(new FilteredList(model, tr("Transactions"), this)), details(new HTextEdit(90, 14, this)),
      faultLabel(new PlainLabel(this)), wanted(Replay::UndoThis), number(0), working(false), closeResult(-1),
      columnsFitted(false), keptNumber(0)
{
    setWindowTitle(tr("VYRE History"));
    details->setReadOnly(true);
    details->setAcceptRichText(false);
    details->setTabChangesFocus(true);
    // Set the tab stop behind the longest word for an action, so that the texts after the words are aligned.
    const int tabStop = 18 * Metrics::columnWidth(details->fontMetrics());
#if QT_VERSION >= QT_VERSION_CHECK(5, 10, 0)
    details->setTabStopDistance(tabStop);
#else
    details->setTabStopWidth(tabStop);
#endif
    details->setAccessibleName(tr("Details of the transaction"));
    list->setDetails(details);
    // The buttons act only on the current row. If several rows were selected, the user would expect an action
    // on all of them.
    list->tableView()->setSelectionMode(QAbstractItemView::SingleSelection);
    model->setBackground(list->tableView()->palette().color(QPalette::Base));
    connect(list, SIGNAL(currentChanged(int)), this, SLOT(currentChanged()));
    describeTimer.setSingleShot(true);
    describeTimer.setInterval(describeDelay);
    connect(&describeTimer, SIGNAL(timeout()), this, SLOT(describe()));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(list, 1);
    faultLabel->setWordWrap(true);
    layout->addWidget(faultLabel);
    auto* row = new QHBoxLayout;
    layout->addLayout(row);
    const auto addButton = [this, row](const QString& text, const char* slot) {
        auto* button = new QPushButton(text, this);
        button->setAutoDefault(false); // Enter must not press this button
        connect(button, SIGNAL(clicked()), this, slot);
        row->addWidget(button);
        return button;
    };
    undoButton = addButton(tr("&Undo This"), SLOT(undoThis()));
    sinceButton = addButton(tr("Undo All &Since"), SLOT(undoAllSince()));
    redoButton = addButton(tr("&Redo"), SLOT(redo()));
    row->addStretch(1);
    addButton(tr("&Close"), SLOT(reject()))->setToolTip(tr("Close the window without changing anything"));
    updateButtons();
    // Set the size explicitly, because Qt limits the first size of a dialog to two thirds of the screen.
    resize(sizeHint().boundedTo(Metrics::maxWindowSize()));
}

void HistoryDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (!event->spontaneous()) {
        // Row 0 is the newest transaction. If row 0 was current, the newest transaction becomes current after
        // the next reading. Otherwise the transaction of the current row becomes current again.
        if (model->rowCount() > 0) {
            const int row = list->currentRow();
            keptNumber = row > 0 ? model->record(row).number : 0;
        }
        // The transactions of the previous opening may be out of date. Until load() has read the history, the
        // list is empty, so all command buttons are disabled.
        list->setEmptyText(tr("Reading the history..."));
        model->setRecords(HistoryRecords());
        // Read the history only after the window has been painted.
        QTimer::singleShot(0, this, SLOT(load()));
    }
}

void HistoryDialog::load()
{
    if (working || !isVisible() || yumIO == nullptr) {
        return;
    }
    known.clear();
    HistoryRecords records;
    bool read = false;
    {
        const QScopedValueRollback<bool> guard(working, true);
        read = yumIO->readHistory(records);
    }
    fault = yumIO->replayFault();
    if (fault.isEmpty()) {
        fault = refusal;
    }
    faultLabel->setText(fault);
    faultLabel->setVisible(!fault.isEmpty());
    // Ask the user to close this window first: while this modal window is open, Ctrl+L has no effect.
    list->setEmptyText(read ? tr("The history has no transactions.")
                            : tr("The history could not be read.\n"
                                 "To see the reason, close this window and open the Log window (Ctrl+L)."));
    model->setRecords(records);
    if (!columnsFitted) {
        list->fitColumns();
        columnsFitted = !records.isEmpty();
    }
    list->setCurrentRow(qMax(0, model->rowOf(keptNumber)));
    currentChanged();
    if (closeResult >= 0) {
        done(closeResult);
    }
}

void HistoryDialog::currentChanged()
{
    const int row = list->currentRow();
    const auto found = row >= 0 ? known.constFind(model->record(row).number) : known.constEnd();
    if (found != known.constEnd()) {
        describeTimer.stop();
        showDetails(*found);
    } else {
        showDetails(QString());
        describeTimer.start();
    }
    updateButtons();
}

void HistoryDialog::describe()
{
    const int row = list->currentRow();
    if (row < 0 || !isVisible() || yumIO == nullptr) {
        return;
    }
    if (working) {
        describeTimer.start();
        return;
    }
    const qint64 described = model->record(row).number;
    QString text;
    {
        const QScopedValueRollback<bool> guard(working, true);
        text = yumIO->describeTransaction(described);
    }
    known.insert(described, text);
    const int now = list->currentRow();
    if (now >= 0 && model->record(now).number == described) {
        showDetails(text);
    }
    if (closeResult >= 0) {
        done(closeResult);
    }
}

void HistoryDialog::showDetails(const QString& text)
{
    if (details->toPlainText() != text) {
        details->setPlainText(text);
    }
}

void HistoryDialog::updateButtons()
{
    const int row = list->currentRow();
    const bool any = row >= 0 && fault.isEmpty();
    // Record 0 is the newest transaction, regardless of how the user sorts the list.
    const bool newest = row == 0;
    const QString tip = fault.isEmpty() ? QString() : fault;
    undoButton->setEnabled(any);
    sinceButton->setEnabled(any && !newest);
    redoButton->setEnabled(any);
    undoButton->setToolTip(Literal::toolTip(
        tip.isEmpty() ? tr("Reverses this transaction. VYRE shows the changes first.") : tip));
    sinceButton->setToolTip(
        Literal::toolTip(!tip.isEmpty() ? tip
                         : newest       ? tr("No transaction is newer than this transaction.")
                                  : tr("Reverses all newer transactions. VYRE shows the changes first.")));
    redoButton->setToolTip(Literal::toolTip(
        tip.isEmpty() ? tr("Repeats or completes this transaction. VYRE shows the changes first.") : tip));
}

void HistoryDialog::undoThis()
{
    choose(Replay::UndoThis);
}

void HistoryDialog::undoAllSince()
{
    choose(Replay::UndoAllSince);
}

void HistoryDialog::redo()
{
    choose(Replay::Redo);
}

void HistoryDialog::choose(Replay kind)
{
    const int row = list->currentRow();
    if (row >= 0) {
        wanted = kind;
        number = model->record(row).number;
        accept();
    }
}

void HistoryDialog::done(int result)
{
    if (working) {
        // The worker still runs. When it ends, the window closes with this result. If the worker waits for
        // another process that uses the history, the wait ends now.
        closeResult = result;
        if (yumIO != nullptr) {
            yumIO->stop();
        }
        return;
    }
    closeResult = -1;
    describeTimer.stop();
    QDialog::done(result);
}

void HistoryDialog::keyPressEvent(QKeyEvent* event)
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
