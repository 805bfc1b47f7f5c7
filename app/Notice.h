// SPDX-License-Identifier: GPL-2.0-or-later

// A message beside the menus that disappears after a while. A window would interrupt the user.
//
// Graphical thread; owned by the menu bar.

#ifndef APP_NOTICE_H
#define APP_NOTICE_H

#include <QTimer>

#include "widgets/PlainLabel.h"

class QMenuBar;

class Notice : public PlainLabel
{
    Q_OBJECT

public:
    explicit Notice(QMenuBar* menuBar);

    void showText(const QString& text);

private:
    QTimer end;
};

#endif
