// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/HProgressBar.h"

#include <QHelpEvent>

namespace {

// While the length of an activity is unknown, the style animates the bar. The bar is painted at most once in
// this number of milliseconds. The style itself would paint the bars 60 times a second, which would need a
// twentieth of the processor time of the program's start.
constexpr qint64 animationInterval = 100;

} // namespace

HProgressBar::HProgressBar(QWidget* parent) : QProgressBar(parent) {}

void HProgressBar::setActivity(QString text)
{
    if (activity != text) {
        activity = text;
        setAccessibleDescription(activity); // otherwise, assistive programs read only the percentage
        update();
    }
}

QString HProgressBar::text() const
{
    const QString base = QProgressBar::text();
    if (activity.isEmpty()) {
        return base;
    }
    if (base.isEmpty()) {
        return activity;
    }
    // Use one call of arg() for both values: with two calls, the second would also replace a "%2" inside the
    // activity.
    return tr("%1 (%2)").arg(activity, base);
}

void HProgressBar::reset()
{
    setActivity(QString());
    QProgressBar::reset();
}

bool HProgressBar::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip &&
        (window()->testAttribute(Qt::WA_AlwaysShowToolTips) || isActiveWindow())) {
        Q_EMIT toolTip(static_cast<QHelpEvent*>(event)->pos());
        event->accept();
        return true;
    }
    if (event->type() == QEvent::StyleAnimationUpdate) {
        event->accept(); // otherwise the style would end the animation
        if (sinceAnimation.isValid() && sinceAnimation.elapsed() < animationInterval) {
            return true;
        }
        sinceAnimation.start();
    }
    // Do not call QProgressBar::event(), which would show a tool tip of its own.
    // NOLINTNEXTLINE(bugprone-parent-virtual-call)
    return QWidget::event(event);
}
