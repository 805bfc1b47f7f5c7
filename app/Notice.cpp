// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/Notice.h"

#include "widgets/Colors.h"

Notice::Notice(QWidget* parent) : PlainLabel(parent)
{
    setPalette(Colors::makeWarning(palette()));
    setAutoFillBackground(true);
    setMargin(2);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred); // the whole text, even in a narrow window
    end.setSingleShot(true);
    connect(&end, SIGNAL(timeout()), this, SLOT(hide()));
    hide();
}

void Notice::showText(const QString& text)
{
    setText(text);
    show();
    end.start(15000);
}
