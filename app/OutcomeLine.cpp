// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/OutcomeLine.h"

#include <QHBoxLayout>
#include <QPushButton>

#include "widgets/Colors.h"
#include "widgets/ElidedLabel.h"
#include "yumio/TransactionOutcome.h"

OutcomeLine::OutcomeLine(QWidget* parent) : QWidget(parent), label(new ElidedLabel(this)), firstEntry(0)
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 4, 0);
    label->setMargin(2);
    layout->addWidget(label, 1);
    auto* button = new QPushButton(tr("Show in &Log"), this);
    button->setToolTip(tr("Open the Log window at the beginning of this transaction"));
    // The row keeps the height of the menus, so that the table does not move when the line appears.
    button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Ignored);
    connect(button, SIGNAL(clicked()), this, SLOT(requestLog()));
    layout->addWidget(button);
    hide();
}

void OutcomeLine::showOutcome(const TransactionOutcome& outcome, int logEntry)
{
    firstEntry = logEntry;
    const bool failed = outcome.hasFailures();
    label->setPalette(failed ? Colors::makeError(palette()) : palette());
    label->setAutoFillBackground(failed);
    label->showText(outcome.text(), outcome.details());
    show();
}

void OutcomeLine::clear()
{
    hide();
}

void OutcomeLine::requestLog()
{
    Q_EMIT logWanted(firstEntry);
}
