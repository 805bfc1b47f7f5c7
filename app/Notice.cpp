// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/Notice.h"

#include "widgets/Colors.h"

Notice::Notice(QWidget* parent, int duration) : PlainLabel(parent)
{
    setPalette(Colors::makeWarning(palette()));
    setAutoFillBackground(true);
    setMargin(2);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred); // show the whole text, even in a narrow window
    end.setSingleShot(true);
    end.setInterval(duration);
    connect(&end, SIGNAL(timeout()), this, SLOT(showNext()));
    hide();
}

void Notice::showText(const QString& text)
{
    if (!isHidden()) {
        waiting.append(this->text());
    }
    waiting.removeAll(text);
    present(text);
}

void Notice::beginOperation()
{
    showNext();
}

void Notice::showNext()
{
    if (waiting.isEmpty()) {
        hide();
    } else {
        present(waiting.takeLast());
    }
}

void Notice::present(const QString& text)
{
    setText(text);
    show();
    end.start();
}
