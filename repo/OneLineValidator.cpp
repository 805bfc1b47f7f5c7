// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/OneLineValidator.h"

namespace {

bool isLineBreak(QChar character)
{
    return character == QLatin1Char('\n') || character == QLatin1Char('\r') ||
           character == QChar(QChar::LineSeparator) || character == QChar(QChar::ParagraphSeparator);
}

} // namespace

QString OneLineValidator::oneLine(QString text)
{
    while (!text.isEmpty() && isLineBreak(text.at(text.size() - 1))) {
        text.chop(1);
    }
    for (int i = 0; i + 1 < text.size(); ++i) {
        const QChar next = text.at(i + 1);
        if (isLineBreak(text.at(i)) && next != QLatin1Char(' ') && next != QLatin1Char('\t')) {
            text[i] = QLatin1Char(' ');
        }
    }
    return text;
}

QValidator::State OneLineValidator::validate(QString& input, int& position) const
{
    input = oneLine(input);
    position = qMin(position, input.size());
    return Acceptable;
}
