// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HFrameLabel.h"

#include <QHBoxLayout>

#include "widgets/PlainLabel.h"

HFrameLabel::HFrameLabel(QWidget* parent, Qt::WindowFlags flags) : HFrameLabel(QString(), parent, flags) {}

HFrameLabel::HFrameLabel(const QString& text, QWidget* parent, Qt::WindowFlags flags)
    : QFrame(parent, flags), box(new QHBoxLayout(this)), label(new PlainLabel), normal(palette()),
      shown(normal)
{
    setFrameStyle(QFrame::StyledPanel | QFrame::Plain);
    setAutoFillBackground(true);
    box->setContentsMargins(2, 2, 2, 2);
    label->setAlignment(Qt::AlignCenter);
    box->addWidget(label);
    HFrameLabel::setText(text);
}

QString HFrameLabel::text() const
{
    return label->text();
}

void HFrameLabel::setText(const QString& text)
{
    label->setText(text);
    setFrameShape(text.isEmpty() ? QFrame::NoFrame : QFrame::StyledPanel);
    QFrame::setPalette(text.isEmpty() ? normal : shown);
}

void HFrameLabel::setPalette(const QPalette& palette)
{
    shown = palette;
    if (!label->text().isEmpty()) {
        QFrame::setPalette(shown);
    }
}
