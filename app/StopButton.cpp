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

} // namespace

// Returns the text about the effect of a press.
QString StopButton::effect() const
{
    switch (result) {
    case Result::FirstTable:
        return tr(
            "Stops the current operation (Esc).\n"
            "VYRE then lists the installed packages, and the packages whose metadata are in the cache.");
    case Result::Remains:
        return tr("Stops the current operation (Esc).\n"
                  "VYRE has deleted the metadata. After a stop, it lists the installed packages, and only\n"
                  "the packages of repositories whose metadata it has already read again.\n"
                  "The marks of all other packages are lost.");
    case Result::SameTable:
        break;
    }
    return tr("Stops the current operation (Esc).\n"
              "VYRE keeps the listed packages and all marks, unless a repository has changed.");
}

// Returns the text about the effect of a press, or the reason why a press has no effect.
QString StopButton::reason(StopRequest::State state) const
{
    switch (state) {
    case StopRequest::State::Possible:
        return effect();
    case StopRequest::State::Useless:
        return tr("The current step cannot be stopped. It ends by itself.");
    case StopRequest::State::Requested:
        return tr("The operation stops as soon as the current step allows it.");
    case StopRequest::State::Refused:
        return tr("Packages are being installed, updated or removed now.\n"
                  "After a stop, the system would have only some of these changes.");
    case StopRequest::State::Idle:
        break;
    }
    return tr("Stops VYRE while it reads repositories or downloads packages.\n"
              "No operation is running now.");
}

StopButton::StopButton(QWidget* parent) : QPushButton(parent), result(Result::FirstTable)
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
