// SPDX-License-Identifier: GPL-2.0-or-later

// Opens and uses menus as a user does, and reads their texts.

#ifndef TESTS_SUPPORT_MENUS_H
#define TESTS_SUPPORT_MENUS_H

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QStringList>
#include <QTimer>
#include <QtTest>

// Calls open(), which opens a menu, and passes the menu to use(). Closes the menu if it is still open.
// Returns whether a menu opened.
template <typename Open, typename Use> bool withMenu(Open open, Use use)
{
    bool opened = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&timer, &opened, &use] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (menu != nullptr) {
            timer.stop();
            opened = true;
            use(*menu);
            menu->close();
        }
    });
    timer.start(10);
    open(); // returns when the menu is closed
    QTest::qWait(50);
    return opened;
}

inline QAction* actionOf(const QMenu& menu, const QString& text)
{
    for (QAction* action : menu.actions()) {
        if (action->text() == text) {
            return action;
        }
    }
    return nullptr;
}

// Chooses an entry of an open menu with the mouse.
inline void choose(QMenu& menu, const QString& text)
{
    QTest::mouseClick(&menu, Qt::LeftButton, Qt::NoModifier,
                      menu.actionGeometry(actionOf(menu, text)).center());
}

// shownIn() returns the texts of all visible actions of a menu; offeredIn() leaves out the disabled actions.
inline QStringList shownIn(const QMenu& menu)
{
    QStringList texts;
    for (const QAction* action : menu.actions()) {
        if (action->isVisible()) {
            texts << action->text();
        }
    }
    return texts;
}

inline QStringList offeredIn(const QMenu& menu)
{
    QStringList texts;
    for (const QAction* action : menu.actions()) {
        if (action->isVisible() && action->isEnabled()) {
            texts << action->text();
        }
    }
    return texts;
}

#endif
