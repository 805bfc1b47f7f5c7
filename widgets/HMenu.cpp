// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HMenu.h"

#include <QAction>
#include <QHelpEvent>
#include <QMenuBar>
#include <QToolTip>

#include "widgets/Literal.h"

namespace {

// Returns the active action of the innermost open sub-menu, or null if no action is active.
const QAction* lastActiveAction(const QMenu* menu)
{
    const QAction* last = nullptr;
    while (menu != nullptr && menu->activeAction() != nullptr) {
        last = menu->activeAction();
        menu = last->menu();
    }
    return last;
}

// Returns whether the tool tip says more than the menu entry. By default, Qt uses the action's text as its
// tool tip.
bool addsToText(const QAction& action)
{
    QString text = action.text();
    text.remove(QStringLiteral("...")).remove(QLatin1Char('&'));
    return !action.toolTip().isEmpty() && action.toolTip() != text;
}

} // namespace

HMenu::HMenu(QString title, QMenuBar* parent) : QMenu(title, parent)
{
    setTearOffEnabled(true);
}

bool HMenu::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        const QAction* action = lastActiveAction(this);
        if (action != nullptr && addsToText(*action)) {
            QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
                               Literal::toolTip(action->toolTip()));
        }
    }
    return QMenu::event(event);
}
