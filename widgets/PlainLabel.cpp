// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/PlainLabel.h"

PlainLabel::PlainLabel(QWidget* parent) : PlainLabel(QString(), parent) {}

PlainLabel::PlainLabel(const QString& text, QWidget* parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setText(text);
}
