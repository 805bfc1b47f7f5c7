#include "widgets/HItemDelegate.h"

HItemDelegate::HItemDelegate(QObject* parent) : QItemDelegate(parent) {}

void HItemDelegate::drawDisplay(QPainter* painter, const QStyleOptionViewItem& option, const QRect& rect,
                                const QString& text) const
{
    // The unwrapped copy is not what is drawn: cells look exactly as those of any other view.
    QStyleOptionViewItem unwrapped(option);
    unwrapped.features &= ~QStyleOptionViewItem::WrapText;
    QItemDelegate::drawDisplay(painter, option, rect, text);
}
