// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/Notice.h"

#include <QMenuBar>

#include "widgets/Colors.h"

Notice::Notice(QMenuBar* menuBar) : PlainLabel(menuBar)
{
    setPalette(Colors::makeWarning(palette()));
    setBackgroundRole(QPalette::Window); // the menu bar may have another role
    setForegroundRole(QPalette::WindowText);
    setAutoFillBackground(true);
    setMargin(2);
    end.setSingleShot(true);
    connect(&end, SIGNAL(timeout()), this, SLOT(hide()));
    menuBar->setCornerWidget(this);
}

void Notice::showText(const QString& text)
{
    // The menu bar makes room for the text only when the notice appears.
    hide();
    setText(text);
    show();
    end.start(15000);
}
