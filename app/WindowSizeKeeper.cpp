// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/WindowSizeKeeper.h"

#include <QEvent>
#include <QWidget>

#include "app/Settings.h"
#include "widgets/Metrics.h"

WindowSizeKeeper::WindowSizeKeeper(const QString& name, QWidget* keptFor)
    : QObject(keptFor), window(keptFor), key(name + QLatin1String("/size"))
{
    window->installEventFilter(this);
}

bool WindowSizeKeeper::eventFilter(QObject* object, QEvent* event)
{
    if (object != window || event->spontaneous()) {
        return false; // the window system caused this event, for example by minimizing the window
    }
    if (event->type() == QEvent::Show) {
        const QSize remembered = Settings().value(key).toSize();
        if (!remembered.isEmpty()) {
            window->resize(remembered.boundedTo(Metrics::maxWindowSize()));
        }
        sizeWhenShown = window->size();
    } else if (event->type() == QEvent::Hide && window->size() != sizeWhenShown && !window->isMaximized() &&
               !window->isFullScreen()) {
        Settings().setValue(key, window->size());
    }
    return false;
}
