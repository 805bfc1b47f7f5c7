// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/CaselessPattern.h"

#include <algorithm>
#include <cstring>

#include <string.h>

#include "widgets/Expression.h"

CaselessPattern::CaselessPattern(const QString& expression)
{
    const QByteArray encoded = expression.toUtf8();
    required = Expression::requiredText(encoded, fixed);
    repeats = !fixed && std::any_of(encoded.cbegin(), encoded.cend(),
                                    [](char c) { return c == '*' || c == '+' || c == '{'; });
    const bool isAscii =
        std::all_of(required.cbegin(), required.cend(), [](char c) { return (c & 0x80) == 0; });
    if (!fixed && !isAscii) {
        required.clear(); // strcasestr() ignores only the case of ASCII letters
    }
    if (!fixed && !Expression::refersToGroups(expression) && !Expression::isTooLarge(encoded)) {
        compiled = regcomp(&regex, encoded.constData(), REG_EXTENDED | REG_NOSUB | REG_ICASE) == 0;
    }
}

CaselessPattern::~CaselessPattern()
{
    if (compiled) {
        regfree(&regex);
    }
}

bool CaselessPattern::matches(const char* text) const
{
    return strcasestr(text, required.constData()) != nullptr &&
           (fixed || regexec(&regex, text, 0, nullptr, 0) == 0);
}

bool CaselessPattern::matchesAny(const QByteArray& texts) const
{
    for (int from = 0; from < texts.size();
         from += static_cast<int>(std::strlen(texts.constData() + from)) + 1) {
        if (matches(texts.constData() + from)) {
            return true;
        }
    }
    return false;
}
