// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/ScrollableDialogs.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "widgets/Colors.h"
#include "widgets/FindBar.h"
#include "widgets/HScrollArea.h"
#include "widgets/HSeparator.h"
#include "widgets/LongLabel.h"
#include "widgets/Metrics.h"
#include "widgets/PlainLabel.h"

namespace {

// Shaping chooses the forms of joined letters, and takes a tenth of a second for 2,000 lines. Therefore the
// dialogs show a text with more than this number of lines in a LongLabel, which does no shaping.
const int shapedLines = 200;

QLabel* textLabel(const QString& text)
{
    if (text.count(QLatin1Char('\n')) > shapedLines && LongLabel::isSuitable(text, QFont())) {
        return new LongLabel(text);
    }
    auto* label = new PlainLabel(text);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

} // namespace

ScrollableDialog::ScrollableDialog(QStyle::StandardPixmap icon, const QString& text,
                                   const QStringList& buttonTexts, QWidget* parent)
    : QDialog(parent), scrollArea(new HScrollArea(this)), column(new QVBoxLayout)
{
    setAttribute(Qt::WA_ShowModal);

    QLabel* iconLabel = new PlainLabel(this);
    iconLabel->setPixmap(style()->standardPixmap(icon, nullptr, this));
    scrollArea->setFrameStyle(QFrame::NoFrame | QFrame::Plain);
    QLabel* label = textLabel(text);
    scrollArea->setWidget(label);

    QVBoxLayout* layout = new QVBoxLayout(this);
    QHBoxLayout* topRow = new QHBoxLayout();
    layout->addLayout(topRow);
    topRow->addWidget(iconLabel, 0, Qt::AlignTop); // level with the first line of the text
    topRow->addLayout(column);
    column->addWidget(scrollArea, 1);

    QHBoxLayout* buttonRow = new QHBoxLayout();
    layout->addLayout(buttonRow);
    buttonRow->addStretch(1);
    for (const QString& buttonText : buttonTexts) {
        QPushButton* button = new QPushButton(buttonText, this);
        buttonRow->addWidget(button);
        buttons.append(button);
    }
    buttonRow->addStretch(1);
    layout->insertWidget(1, new FindBar(label, scrollArea, this));
}

void ScrollableDialog::addAbove(QWidget* widget)
{
    column->insertWidget(0, widget);
}

void ScrollableDialog::addBelow(QWidget* widget)
{
    column->addWidget(widget);
}

void ScrollableDialog::fit()
{
    // By default, Qt limits a window to two thirds of the screen, and the dialog could truncate lines that
    // would fit on the screen. Therefore set the size explicitly.
    ensurePolished();
    resize(sizeHint().boundedTo(Metrics::maxWindowSize()));
}

void ScrollableDialog::keyPressEvent(QKeyEvent* event)
{
    if (!HScrollArea::scrollByKey(scrollArea, event)) {
        QDialog::keyPressEvent(event);
    }
}

ScrollableConfirmDialog::ScrollableConfirmDialog(QString text, QString acceptText, QString rejectText,
                                                 QWidget* parent, bool rejectIsDefault, const QString& notice,
                                                 const QString& summary)
    : ScrollableDialog(QStyle::SP_MessageBoxQuestion, text, {acceptText, rejectText}, parent)
{
    if (!notice.isEmpty()) {
        QLabel* label = textLabel(notice);
        label->setObjectName(QStringLiteral("notice"));
        label->setPalette(Colors::makeWarning(label->palette()));
        label->setAutoFillBackground(true);
        label->setMargin(4);
        addAbove(label);
    }
    if (!summary.isEmpty()) {
        QLabel* label = textLabel(summary);
        label->setObjectName(QStringLiteral("summary"));
        addBelow(new HSeparator(this));
        addBelow(label);
    }
    if (rejectIsDefault) {
        button(1)->setDefault(true);
        button(1)->setFocus();
    }
    connect(button(0), SIGNAL(clicked()), this, SLOT(accept()));
    connect(button(1), SIGNAL(clicked()), this, SLOT(reject()));
    fit();
}

ScrollableErrorDialog::ScrollableErrorDialog(QString text, QWidget* parent)
    : ScrollableDialog(QStyle::SP_MessageBoxCritical, text, {tr("Close")}, parent)
{
    connect(button(0), SIGNAL(clicked()), this, SLOT(accept()));
    fit();
}
