// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/Notice.h"

#include <algorithm>

#include "widgets/Colors.h"

Notice::Notice(QWidget* parent, int duration) : ElidedLabel(parent)
{
    setPalette(Colors::makeWarning(palette()));
    setAutoFillBackground(true);
    setMargin(2);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred); // only the text has the background colour
    end.setSingleShot(true);
    end.setInterval(duration);
    connect(&end, SIGNAL(timeout()), this, SLOT(showNext()));
    hide();
}

void Notice::showText(const QString& text)
{
    showMessage({text, false});
}

void Notice::showTextAboutLog(const QString& text)
{
    showMessage({text, true});
}

void Notice::showMessage(const Message& message)
{
    if (!isHidden()) {
        waiting.append(current);
    }
    forget(message.text);
    present(message);
}

void Notice::forget(const QString& text)
{
    waiting.erase(std::remove_if(waiting.begin(), waiting.end(),
                                 [&text](const Message& each) { return each.text == text; }),
                  waiting.end());
}

void Notice::withdraw(const QString& text)
{
    forget(text);
    if (!isHidden() && current.text == text) {
        showNext();
    }
}

void Notice::logOpened()
{
    waiting.erase(
        std::remove_if(waiting.begin(), waiting.end(), [](const Message& each) { return each.isAboutLog; }),
        waiting.end());
    if (!isHidden() && current.isAboutLog) {
        showNext();
    }
}

void Notice::beginOperation()
{
    showNext();
}

void Notice::showNext()
{
    end.stop();
    if (waiting.isEmpty()) {
        hide();
    } else {
        present(waiting.takeLast());
    }
}

void Notice::present(const Message& message)
{
    current = message;
    ElidedLabel::showText(message.text);
    show();
    if (message.isAboutLog) {
        end.stop();
    } else {
        end.start();
    }
}
