// SPDX-License-Identifier: GPL-2.0-or-later

// A menu that can be torn off and shows the tool tips of its actions.
//
// The object lives on the graphical thread; its Qt parent owns it.

#ifndef WIDGETS_HMENU_H
#define WIDGETS_HMENU_H

#include <QMenu>

class QMenuBar;

class HMenu : public QMenu
{
    Q_OBJECT

public:
    // `parent` becomes the Qt parent, but does not show the menu. The caller must also call
    // QMenuBar::addMenu().
    explicit HMenu(QString title, QMenuBar* parent = nullptr);

protected:
    bool event(QEvent* event) override;
};

#endif
