// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HMessageBox.h"

#include <QEvent>
#include <QLayout>

#include "widgets/Metrics.h"

HMessageBox::HMessageBox(Icon icon, const QString& title, const QString& text, StandardButtons buttons,
                         QWidget* parent)
    : QMessageBox(icon, title, QString(), buttons, parent)
{
    setTextFormat(Qt::PlainText);
    setText(text);
}

bool HMessageBox::event(QEvent* event)
{
    const bool handled = QMessageBox::event(event);
    if (event->type() == QEvent::LayoutRequest) {
        widen();
    }
    return handled;
}

void HMessageBox::showEvent(QShowEvent* event)
{
    QMessageBox::showEvent(event);
    widen();
}

// Widens the box up to the width of the screen. QMessageBox itself limits the width, and truncates long words
// such as file names.
void HMessageBox::widen()
{
    const int width = qMin(layout()->totalMinimumSize().width(), Metrics::maxWindowSize().width());
    if (width > this->width()) {
        const int height = layout()->hasHeightForWidth() ? layout()->totalHeightForWidth(width)
                                                         : layout()->totalMinimumSize().height();
        setFixedSize(width, height);
    }
}
