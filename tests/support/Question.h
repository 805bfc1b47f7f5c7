// SPDX-License-Identifier: GPL-2.0-or-later

// Whether a dialog takes input. A worker's question ignores input for the first moment; see QuestionGuard.

#ifndef TESTS_SUPPORT_QUESTION_H
#define TESTS_SUPPORT_QUESTION_H

#include <QVariant>
#include <QWidget>

#include "services/QuestionGuard.h"

// A dialog without a QuestionGuard takes input at once.
inline bool takesInput(const QWidget* dialog)
{
    const QVariant value = dialog->property(QuestionGuard::takesInput);
    return !value.isValid() || value.toBool();
}

#endif
