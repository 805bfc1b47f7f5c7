// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HSeparator.h"

HSeparator::HSeparator(QWidget* parent) : QFrame(parent)
{
    setFrameStyle(QFrame::HLine | QFrame::Sunken);
}
