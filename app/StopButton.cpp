// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/StopButton.h"

#include <QShortcut>
#include <QStyle>
#include <QStyleOptionButton>

#include "widgets/Literal.h"

namespace {

QString buttonText(StopRequest::State state)
{
    if (state == StopRequest::State::Requested) {
        return StopButton::tr("Stopping...");
    }
    QString text = StopButton::tr("&Stop");
    // A disabled "Stop" button has no shortcut, because another button then uses the same Alt shortcut.
    return state == StopRequest::State::Possible ? text : text.remove(QLatin1Char('&'));
}

QString reason(StopRequest::State state)
{
    switch (state) {
    case StopRequest::State::Possible:
        return StopButton::tr("Stops the current operation (Esc).\n"
                              "VYRE keeps the listed packages and all marks.");
    case StopRequest::State::Useless:
        return StopButton::tr("The current step cannot be stopped. It ends by itself.");
    case StopRequest::State::Requested:
        return StopButton::tr("The operation stops as soon as the current step allows it.");
    case StopRequest::State::Refused:
        return StopButton::tr("Packages are being installed, updated or removed now.\n"
                              "A stop would leave the system half changed.");
    case StopRequest::State::Idle:
        break;
    }
    return StopButton::tr("Stops VYRE while it reads repositories or downloads packages.\n"
                          "No operation is running now.");
}

} // namespace

StopButton::StopButton(QWidget* parent) : QPushButton(parent)
{
    setAutoDefault(false);
    new QShortcut(Qt::Key_Escape, this, SLOT(click()));
    showState(StopRequest::State::Idle);
}

void StopButton::showState(StopRequest::State state)
{
    setText(buttonText(state));
    const QString text = reason(state);
    setToolTip(Literal::toolTip(text));
    setAccessibleDescription(text);
    setEnabled(state == StopRequest::State::Possible);
}

QSize StopButton::sizeHint() const
{
    ensurePolished();
    QStyleOptionButton option;
    initStyleOption(&option);
    QSize size;
    for (const StopRequest::State state : {StopRequest::State::Idle, StopRequest::State::Requested}) {
        option.text = buttonText(state);
        const QSize contents = fontMetrics().size(Qt::TextShowMnemonic, option.text);
        size = size.expandedTo(style()->sizeFromContents(QStyle::CT_PushButton, &option, contents, this));
    }
    return size;
}
