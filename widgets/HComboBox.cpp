// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HComboBox.h"

#include <QStyleOptionComboBox>

HComboBox::HComboBox(QWidget* parent) : QComboBox(parent) {}

QSize HComboBox::sizeHint() const
{
    return widened(QComboBox::sizeHint());
}

QSize HComboBox::minimumSizeHint() const
{
    return widened(QComboBox::minimumSizeHint());
}

// Adds the width that the longest item lacks in a box of this size.
QSize HComboBox::widened(QSize size) const
{
    int needed = 0;
    for (int i = 0; i < count(); ++i) {
        needed = qMax(needed, fontMetrics().horizontalAdvance(itemText(i)));
    }
    QStyleOptionComboBox option;
    initStyleOption(&option);
    option.rect = QRect(QPoint(), size);
    const QRect field =
        style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    constexpr int margins = 4; // styles leave a few pixels of the field free
    return {size.width() + qMax(0, needed + margins - field.width()), size.height()};
}
