// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/CaselessPattern.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "widgets/Expression.h"

namespace {

// Copies a text. Changes the capital letters of ASCII to small letters, and zero bytes to line feeds.
void fold(const char* __restrict text, size_t size, char* __restrict folded)
{
    const auto each = [](char c) {
        const bool isCapital = c >= 'A' && c <= 'Z';
        return static_cast<char>(c == '\0' ? '\n' : isCapital ? c + ('a' - 'A') : c);
    };
    // Compilers turn a loop with a constant number of steps into a few operations on many bytes at once.
    constexpr size_t atOnce = 16;
    size_t i = 0;
    for (; i + atOnce <= size; i += atOnce) {
        for (size_t j = 0; j < atOnce; ++j) {
            folded[i + j] = each(text[i + j]);
        }
    }
    for (; i < size; ++i) {
        folded[i] = each(text[i]);
    }
}

} // namespace

CaselessPattern::CaselessPattern(const QString& expression)
{
    const QByteArray encoded(expression.toUtf8().constData()); // only up to a null byte, like Expression
    required = Expression::requiredText(encoded, fixed);
    repeats = !fixed && std::any_of(encoded.cbegin(), encoded.cend(),
                                    [](char c) { return c == '*' || c == '+' || c == '{'; });
    const bool isAscii =
        std::all_of(required.cbegin(), required.cend(), [](char c) { return (c & 0x80) == 0; });
    if (!fixed && !isAscii) {
        required.clear(); // fold() changes only ASCII letters
    }
    const QByteArray unfolded = required;
    fold(unfolded.constData(), static_cast<size_t>(unfolded.size()), required.data());
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

// Returns whether the texts contain the required text. strcasestr() could do the same for each single text,
// but is slower.
bool CaselessPattern::mayMatch(const char* texts, size_t size) const
{
    if (required.isEmpty()) {
        return true;
    }
    thread_local std::vector<char> folded; // keeps its memory for the next text
    if (folded.size() <= size) {
        folded.resize(size + 1);
    }
    fold(texts, size, folded.data());
    folded[size] = '\0';
    return std::strstr(folded.data(), required.constData()) != nullptr;
}

bool CaselessPattern::matches(const char* text) const
{
    return mayMatch(text, std::strlen(text)) && (fixed || regexec(&regex, text, 0, nullptr, 0) == 0);
}

bool CaselessPattern::matchesAny(const QByteArray& texts) const
{
    if (!mayMatch(texts.constData(), static_cast<size_t>(texts.size()))) {
        return false;
    }
    for (int from = 0; from < texts.size();
         from += static_cast<int>(std::strlen(texts.constData() + from)) + 1) {
        if (matches(texts.constData() + from)) {
            return true;
        }
    }
    return false;
}
