// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/HProgressBar.h"

#include <QHelpEvent>

HProgressBar::HProgressBar(QWidget* parent) : QProgressBar(parent) {}

void HProgressBar::setActivity(QString text)
{
    if (activity != text) {
        activity = text;
        setAccessibleDescription(activity); // the accessible value is only a number
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
    // One call sets both arguments, because an activity may itself contain a place marker such as "%2".
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
    // This call skips the base class, because its tool tip is not wanted.
    // NOLINTNEXTLINE(bugprone-parent-virtual-call)
    return QWidget::event(event);
}
