// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/Expression.h"

#include <cstring>

namespace {

// Returns the position after the bracket expression that begins at the given position, or -1 if the closing
// bracket is missing.
int afterBrackets(const QByteArray& text, int begin)
{
    int at = begin + 1;
    if (at < text.size() && text.at(at) == '^') {
        ++at;
    }
    if (at < text.size() && text.at(at) == ']') {
        ++at;
    }
    while (at < text.size() && text.at(at) != ']') {
        if (text.at(at) == '[' && at + 1 < text.size() && std::strchr(":=.", text.at(at + 1)) != nullptr) {
            const int end = text.indexOf(QByteArray(1, text.at(at + 1)) + ']', at + 2);
            if (end < 0) {
                return -1;
            }
            at = end + 2;
        } else {
            ++at;
        }
    }
    return at < text.size() ? at + 1 : -1;
}

// Removes the last UTF-8 character, which may have several bytes.
void chopCharacter(QByteArray& text)
{
    while (!text.isEmpty()) {
        const bool inside = (static_cast<unsigned char>(text.at(text.size() - 1)) & 0xc0) == 0x80;
        text.chop(1);
        if (!inside) {
            break;
        }
    }
}

} // namespace

QByteArray Expression::requiredText(const QByteArray& expression, bool& whole)
{
    QByteArray longest;
    QByteArray run;
    whole = true;
    const auto endRun = [&longest, &run, &whole] {
        whole = false;
        if (run.size() > longest.size()) {
            longest = run;
        }
        run.clear();
    };
    for (int at = 0; at < expression.size();) {
        const char character = expression.at(at);
        switch (character) {
        case '(':
        case ')':
        case '|':
        case '{':
            // The matches of an expression with groups, alternatives or repetition counts may have no text in
            // common.
            whole = false;
            return QByteArray();
        case '*':
        case '?':
            chopCharacter(run);
            endRun();
            ++at;
            break;
        case '[':
            endRun();
            at = afterBrackets(expression, at);
            if (at < 0) {
                return QByteArray();
            }
            break;
        case '+': {
            int next = at + 1;
            while (next < expression.size() && expression.at(next) == '+') {
                ++next;
            }
            if (next < expression.size() && (expression.at(next) == '*' || expression.at(next) == '?')) {
                // The character may occur zero times, so it is not a part of the fixed text.
                chopCharacter(run);
            }
            endRun();
            ++at;
            break;
        }
        case '.':
        case '^':
        case '$':
        case ']':
        case '}':
            endRun();
            ++at;
            break;
        case '\\':
            if (at + 1 < expression.size() &&
                std::strchr(".[]()*+?{}|^$\\/", expression.at(at + 1)) != nullptr) {
                run += expression.at(at + 1);
            } else {
                endRun(); // a backslash and a letter, such as \w or \b, match no fixed text
            }
            at += 2;
            break;
        default:
            run += character;
            ++at;
        }
    }
    if (whole) {
        return run;
    }
    endRun();
    return longest;
}

void Expression::clear()
{
    if (regStatus == 0) {
        regfree(&pattern);
    }
    regStatus = -1;
}

QString Expression::withoutOuterAny(QString text)
{
    const QString any = QStringLiteral(".*");
    while (text.startsWith(any)) {
        text.remove(0, any.length());
    }
    while (text.endsWith(any)) {
        text.chop(any.length());
    }
    return text;
}

void Expression::compile(const QString& text)
{
    clear();
    const QByteArray expression(text.toUtf8().constData()); // regcomp() reads only up to a null byte
    regStatus = regcomp(&pattern, expression.constData(), REG_EXTENDED | REG_NOSUB);
    required = requiredText(expression, literal);
    literal = literal && !required.isEmpty();
}

QString Expression::fault() const
{
    if (regStatus <= 0) {
        return QString();
    }
    QByteArray words(static_cast<int>(regerror(regStatus, &pattern, nullptr, 0)), '\0');
    regerror(regStatus, &pattern, words.data(), static_cast<size_t>(words.size()));
    return QString::fromLocal8Bit(words.constData());
}

bool Expression::matches(const char* text) const
{
    if (regStatus != 0) {
        return false;
    }
    if (!required.isEmpty() && std::strstr(text, required.constData()) == nullptr) {
        return false;
    }
    return literal || regexec(&pattern, text, 0, nullptr, 0) == 0;
}

bool Expression::matchesAny(const QByteArray& texts) const
{
    if (regStatus != 0) {
        return false;
    }
    const char* const end = texts.constData() + texts.size();
    const char* text = texts.constData();
    while (text < end) {
        if (!required.isEmpty()) {
            const void* found = memmem(text, static_cast<size_t>(end - text), required.constData(),
                                       static_cast<size_t>(required.size()));
            if (found == nullptr) {
                return false;
            }
            if (literal) {
                return true;
            }
            // Find the text that contains this position: it begins after the preceding zero byte.
            const auto* place = static_cast<const char*>(found);
            const void* before = memrchr(text, '\0', static_cast<size_t>(place - text));
            if (before != nullptr) {
                text = static_cast<const char*>(before) + 1;
            }
        }
        if (regexec(&pattern, text, 0, nullptr, 0) == 0) {
            return true;
        }
        text += std::strlen(text) + 1;
    }
    return false;
}
