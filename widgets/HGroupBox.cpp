// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HGroupBox.h"

#include <QStyleOptionGroupBox>
#include <QStylePainter>

HGroupBox::HGroupBox(const QString& title, QWidget* parent) : QGroupBox(title, parent) {}

void HGroupBox::paintEvent(QPaintEvent*)
{
    QStylePainter painter(this);
    QStyleOptionGroupBox option;
    initStyleOption(&option);
    // Add blanks to the title, because some styles reserve too little space for a title.
    option.text += QString(1 + option.text.size() / 8, QChar(QChar::Nbsp));
    painter.drawComplexControl(QStyle::CC_GroupBox, option);
}
