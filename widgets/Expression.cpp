// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/Expression.h"

#include <QRegularExpression>
#include <QVector>

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <langinfo.h>

namespace {

// The C library copies the repeated part of an expression for each repetition, and crashes if an expression
// has too many of these copies. Each character, escape sequence and bracket expression is one part. If an
// expression with all copies has more parts than this number, it is treated as invalid.
constexpr qint64 mostParts = 5000;

// Returns the greatest number of repetitions of the bound that begins at `at`, for example 5 for "{2,5}".
// Sets `at` to the position after the bound, or after the brace if no bound begins there.
qint64 repetitionsOfBound(const QByteArray& text, int& at)
{
    static const QRegularExpression bound(QStringLiteral("\\{([0-9]*)(,?)([0-9]*)\\}"));
    const QRegularExpressionMatch found =
        bound.match(QString::fromLatin1(text), at, QRegularExpression::NormalMatch,
                    QRegularExpression::AnchoredMatchOption);
    if (!found.hasMatch()) {
        ++at;
        return 1;
    }
    at = found.capturedEnd();
    const qint64 least = found.captured(1).left(6).toLongLong();
    const qint64 most = found.captured(3).left(6).toLongLong();
    const bool unlimited = !found.captured(2).isEmpty() && found.captured(3).isEmpty();
    return qMax<qint64>(1, unlimited ? least + 1 : qMax(least, most));
}

// Returns the position after the group that begins at `begin`, or -1 if the closing parenthesis is missing.
int afterGroup(const QByteArray& text, int begin)
{
    int depth = 0;
    int at = begin;
    while (at >= 0 && at < text.size()) {
        switch (text.at(at)) {
        case '\\':
            at += 2;
            break;
        case '[':
            at = Automaton::afterBrackets(text, at);
            break;
        case '(':
            ++depth;
            ++at;
            break;
        case ')':
            ++at;
            if (--depth == 0) {
                return at;
            }
            break;
        default:
            ++at;
        }
    }
    return -1;
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
        case ')':
        case '|':
            // The alternatives need not have any text in common.
            whole = false;
            return QByteArray();
        case '(':
            // The group may be optional, and its alternatives need not have any text in common.
            endRun();
            at = afterGroup(expression, at);
            if (at < 0) {
                return QByteArray();
            }
            break;
        case '{':
            chopCharacter(run); // the character may occur zero times
            endRun();
            at = expression.indexOf('}', at) + 1;
            if (at == 0) {
                return QByteArray();
            }
            break;
        case '*':
        case '?':
            chopCharacter(run);
            endRun();
            ++at;
            break;
        case '[':
            endRun();
            at = Automaton::afterBrackets(expression, at);
            if (at < 0) {
                return QByteArray();
            }
            break;
        case '+': {
            int next = at + 1;
            while (next < expression.size() && expression.at(next) == '+') {
                ++next;
            }
            if (next < expression.size() && std::strchr("*?{", expression.at(next)) != nullptr) {
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

QByteArray Expression::inOnePass(const QByteArray& expression)
{
    bool repeats = false; // a part of the expression may match texts of any length
    for (int at = 0; at < expression.size();) {
        switch (expression.at(at)) {
        case '\\':
            if (at + 1 < expression.size() && expression.at(at + 1) >= '0' && expression.at(at + 1) <= '9') {
                return QByteArray(); // parentheses around the expression would change the numbers of its
                                     // groups
            }
            at += 2;
            break;
        case '[':
            at = Automaton::afterBrackets(expression, at);
            if (at < 0) {
                return QByteArray();
            }
            break;
        case '{': {
            const int end = expression.indexOf('}', at);
            repeats = repeats || (end > 0 && expression.at(end - 1) == ',');
            ++at;
            break;
        }
        case '*':
        case '+':
            repeats = true;
            ++at;
            break;
        case '^':
            // The C library also accepts "^" after a line end, but only if another part of the expression has
            // matched the line end. In the form "^.*(...)", the added ".*" would match the line end.
            return QByteArray();
        default:
            ++at;
        }
    }
    // In `expression`, a parenthesis that closes no group is an ordinary character. In the form "^.*(...)",
    // this parenthesis would close the added group.
    const QByteArray grouped = '(' + expression + ')';
    return repeats && afterGroup(grouped, 0) == grouped.size() ? "^.*" + grouped : QByteArray();
}

void Expression::clear()
{
    if (regStatus == 0) {
        regfree(&pattern);
    }
    if (hasOnePass) {
        regfree(&onePass);
    }
    regStatus = -1;
    hasOnePass = false;
    automaton = Automaton();
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

bool Expression::refersToGroups(const QString& text)
{
    static const QRegularExpression reference(QStringLiteral("\\\\[1-9]"));
    return text.contains(reference);
}

bool Expression::isTooLarge(const QByteArray& text)
{
    QVector<qint64> outer; // for each open group, the number of parts before it
    qint64 sum = 0;        // the number of parts in the current group
    qint64 last = 0;       // the number of parts that a following repetition repeats
    const auto repeat = [&sum, &last](qint64 times) {
        sum += last * (times - 1);
        last *= times;
    };
    int at = 0;
    while (at >= 0 && at < text.size()) {
        switch (text.at(at)) {
        case '\\':
            at += 2;
            last = 1;
            ++sum;
            break;
        case '[':
            at = Automaton::afterBrackets(text, at);
            last = 1;
            ++sum;
            break;
        case '(':
            ++at;
            outer.append(sum);
            sum = 0;
            last = 0;
            break;
        case ')':
            ++at;
            last = sum;
            sum += outer.isEmpty() ? 0 : outer.takeLast();
            break;
        case '{':
            repeat(repetitionsOfBound(text, at));
            break;
        case '+':
            ++at;
            repeat(2); // "E+" becomes "EE*"
            break;
        case '*':
        case '?':
            ++at;
            break;
        default:
            ++at;
            last = 1;
            ++sum;
        }
        if (last > mostParts || sum > mostParts) {
            return true;
        }
    }
    return false;
}

void Expression::compile(const QString& text)
{
    clear();
    const QByteArray expression(text.toUtf8().constData()); // regcomp() reads only up to a null byte
    if (isTooLarge(expression)) {
        regStatus = REG_ESIZE;
        return;
    }
    regStatus = regcomp(&pattern, expression.constData(), REG_EXTENDED | REG_NOSUB);
    required = requiredText(expression, literal);
    literal = literal && !required.isEmpty();
    if (regStatus != 0 || literal) {
        return;
    }
    automaton = Automaton(expression);
    // If the C library uses a multi-byte encoding other than UTF-8, "." does not match every part of a UTF-8
    // text.
    const bool everyByteMatches = MB_CUR_MAX == 1 || std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
    const QByteArray faster = everyByteMatches ? inOnePass(expression) : QByteArray();
    hasOnePass = !faster.isEmpty() && regcomp(&onePass, faster.constData(), REG_EXTENDED | REG_NOSUB) == 0;
}

bool Expression::execute(const char* text, size_t size) const
{
    switch (automaton.compare(text, size)) {
    case Automaton::No:
        return false;
    case Automaton::Yes:
        return true;
    case Automaton::Unknown:
        break;
    }
    if (hasOnePass) {
        if (regexec(&onePass, text, 0, nullptr, 0) == 0) {
            return true;
        }
        if (Automaton::isUtf8(text, size)) {
            return false;
        }
    }
    return regexec(&pattern, text, 0, nullptr, 0) == 0;
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
    return literal || execute(text, std::strlen(text));
}

bool Expression::matchesAny(const QByteArray& texts) const
{
    if (regStatus != 0) {
        return false;
    }
    const char* const end = texts.constData() + texts.size();
    const char* text = texts.constData();
    bool asked = false; // the automaton has compared the texts
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
        if (!asked) {
            // Compare all remaining texts at once, because they are short.
            asked = true;
            const auto size = static_cast<size_t>(end - text) - (end[-1] == '\0' ? 1 : 0);
            const Automaton::Answer answer = automaton.compareAny(text, size);
            if (answer != Automaton::Unknown) {
                return answer == Automaton::Yes;
            }
        }
        const size_t length = std::strlen(text);
        if (execute(text, length)) {
            return true;
        }
        text += length + 1;
    }
    return false;
}
