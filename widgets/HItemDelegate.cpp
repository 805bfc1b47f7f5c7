// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HItemDelegate.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QToolTip>

#include "widgets/Literal.h"

HItemDelegate::HItemDelegate(QObject* parent) : QItemDelegate(parent) {}

bool HItemDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                              const QModelIndex& index)
{
    if (event == nullptr || view == nullptr || event->type() != QEvent::ToolTip) {
        return QItemDelegate::helpEvent(event, view, option, index);
    }
    const QString text = index.data(Qt::ToolTipRole).toString();
    QToolTip::showText(event->globalPos(), Literal::toolTip(text), view->viewport(), view->visualRect(index));
    event->setAccepted(!text.isEmpty());
    return event->isAccepted();
}
