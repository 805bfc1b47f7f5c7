// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/PasswdField.h"

#include <limits>

#include "repo/OneLineValidator.h"
#include "repo/PasswdAccessible.h"

PasswdField::PasswdField(QWidget* parent) : QLineEdit(parent)
{
    PasswdAccessible::install();
    setEchoMode(QLineEdit::Password);
    setMaxLength(std::numeric_limits<int>::max());
    setValidator(new OneLineValidator(this));
}
