// SPDX-License-Identifier: GPL-2.0-or-later

// A message next to the menus that disappears after a while. A message box would interrupt the user.
//
// It lives on the graphical thread; its Qt parent owns it.

#ifndef APP_NOTICE_H
#define APP_NOTICE_H

#include <QTimer>

#include "widgets/PlainLabel.h"

class Notice : public PlainLabel
{
    Q_OBJECT

public:
    explicit Notice(QWidget* parent);

    void showText(const QString& text);

private:
    QTimer end;
};

#endif
