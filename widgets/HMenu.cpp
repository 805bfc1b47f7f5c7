// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HMenu.h"

#include <QAction>
#include <QHelpEvent>
#include <QMenuBar>
#include <QToolTip>

#include "widgets/Literal.h"

namespace {

// Returns the innermost active action in the menu and its open sub-menus, or null.
const QAction* lastActiveAction(const QMenu* menu)
{
    const QAction* last = nullptr;
    while (menu != nullptr && menu->activeAction() != nullptr) {
        last = menu->activeAction();
        menu = last->menu();
    }
    return last;
}

// Returns whether the tool tip differs from the text in the menu. By default, the tool tip of an action is
// its text.
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
