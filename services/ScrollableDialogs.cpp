// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/ScrollableDialogs.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "widgets/HScrollArea.h"
#include "widgets/Metrics.h"
#include "widgets/PlainLabel.h"

namespace {

// Fills a dialog with the icon, the text and, below the text, a row of buttons.
QList<QPushButton*> fill(QDialog* dialog, QStyle::StandardPixmap icon, const QString& text,
                         const QStringList& buttonTexts)
{
    dialog->setAttribute(Qt::WA_ShowModal);

    QLabel* iconLabel = new PlainLabel(dialog);
    iconLabel->setPixmap(dialog->style()->standardPixmap(icon, nullptr, dialog));

    QLabel* label = new PlainLabel(text);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    HScrollArea* scrollArea = new HScrollArea(dialog);
    scrollArea->setFrameStyle(QFrame::NoFrame | QFrame::Plain);
    scrollArea->setWidget(label);

    QVBoxLayout* layout = new QVBoxLayout(dialog);
    QHBoxLayout* topRow = new QHBoxLayout();
    layout->addLayout(topRow);
    topRow->addWidget(iconLabel, 0, Qt::AlignTop); // beside the first line of the text
    topRow->addWidget(scrollArea);

    QHBoxLayout* buttonRow = new QHBoxLayout();
    layout->addLayout(buttonRow);
    buttonRow->addStretch(1);
    QList<QPushButton*> buttons;
    for (const QString& buttonText : buttonTexts) {
        QPushButton* button = new QPushButton(buttonText, dialog);
        buttonRow->addWidget(button);
        buttons.append(button);
    }
    buttonRow->addStretch(1);

    // By default, a window has at most two thirds of the screen's size. Lines that fit on the screen would
    // then be cut.
    dialog->ensurePolished();
    dialog->resize(dialog->sizeHint().boundedTo(Metrics::maxWindowSize()));
    return buttons;
}

} // namespace

ScrollableConfirmDialog::ScrollableConfirmDialog(QString text, QString acceptText, QString rejectText,
                                                 QWidget* parent, bool rejectIsDefault)
    : QDialog(parent)
{
    const QList<QPushButton*> buttons =
        fill(this, QStyle::SP_MessageBoxQuestion, text, {acceptText, rejectText});
    if (rejectIsDefault) {
        buttons.at(1)->setDefault(true);
    }
    connect(buttons.at(0), SIGNAL(clicked()), this, SLOT(accept()));
    connect(buttons.at(1), SIGNAL(clicked()), this, SLOT(reject()));
}

ScrollableErrorDialog::ScrollableErrorDialog(QString text, QWidget* parent) : QDialog(parent)
{
    const QList<QPushButton*> buttons = fill(this, QStyle::SP_MessageBoxCritical, text, {tr("Close")});
    connect(buttons.at(0), SIGNAL(clicked()), this, SLOT(accept()));
}
