// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/Automaton.h"

#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include <langinfo.h>
#include <re2/re2.h>
#include <re2/stringpiece.h>
#include <regex.h>

#include <QHash>
#include <QMutex>

namespace {

// A translated expression has at most this many nested groups, and this many different brackets.
constexpr int mostGroups = 100;
constexpr int mostSets = 50;

// The memory of one automaton in bytes. RE2 keeps the states of the automaton in a third of it. Most
// expressions need a few kilobytes. If an expression needs too many states, RE2 discards all of them and
// makes new ones. If it has to do this too often, it continues without states, and is slower than the C
// library. Each thread of a search has its own automaton.
constexpr int64_t mostMemory = 32 << 20;

// With enough states, an automaton needs 2 ns for each byte, and the C library 6 to 50 ns. Without states,
// both need 50 to 10,000 ns. If an automaton needs more than this time for each byte, it gives up. It may
// need 50 ms more for its first states.
constexpr double mostTime = 100; // in nanoseconds
constexpr double firstTime = 5e7;

double threadTime()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

enum class Encoding { SingleByte, Utf8, Other };

Encoding encoding()
{
    if (MB_CUR_MAX == 1) {
        return Encoding::SingleByte;
    }
    return std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0 ? Encoding::Utf8 : Encoding::Other;
}

enum class Content { Ascii, Utf8, Other };

// Returns whether a text consists of ASCII characters or of valid UTF-8. The text may contain zero bytes.
Content contentOf(const char* text, size_t size)
{
    const auto* at = reinterpret_cast<const unsigned char*>(text);
    const auto* const end = at + size;
    const auto continues = [](unsigned char byte) { return (byte & 0xc0) == 0x80; };
    Content content = Content::Ascii;
    while (at != end) {
        constexpr int atOnce = 32;
        while (end - at >= atOnce) {
            uint64_t bytes[atOnce / 8];
            std::memcpy(bytes, at, atOnce);
            if (((bytes[0] | bytes[1] | bytes[2] | bytes[3]) & 0x8080808080808080U) != 0) {
                break;
            }
            at += atOnce;
        }
        while (at != end && *at < 0x80) {
            ++at;
        }
        if (at == end) {
            break;
        }
        content = Content::Utf8;
        if (*at >= 0xc2 && *at < 0xe0 && end - at >= 2 && continues(at[1])) {
            at += 2;
        } else if ((*at & 0xf0) == 0xe0 && end - at >= 3 && continues(at[1]) && continues(at[2]) &&
                   (*at != 0xe0 || at[1] >= 0xa0) && (*at != 0xed || at[1] < 0xa0)) {
            at += 3;
        } else if (*at >= 0xf0 && *at < 0xf5 && end - at >= 4 && continues(at[1]) && continues(at[2]) &&
                   continues(at[3]) && (*at != 0xf0 || at[1] >= 0x90) && (*at != 0xf4 || at[1] < 0x90)) {
            at += 4;
        } else {
            return Content::Other;
        }
    }
    return content;
}

// A compiled POSIX expression.
class Posix
{
public:
    explicit Posix(const QByteArray& expression)
        : valid(regcomp(&regex, expression.constData(), REG_EXTENDED | REG_NOSUB) == 0)
    {
    }
    ~Posix()
    {
        if (valid) {
            regfree(&regex);
        }
    }
    Posix(const Posix&) = delete;
    Posix& operator=(const Posix&) = delete;

    bool isValid() const { return valid; }
    bool matches(const char* text) const { return regexec(&regex, text, 0, nullptr, 0) == 0; }

private:
    regex_t regex = {};
    bool valid;
};

// Returns whether the locale sorts some pairs of ASCII letters as one character, and brackets match them.
bool findPairs()
{
    static const char characters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ'-";
    QByteArray pairs("\n");
    for (const char* first = characters; *first != 0; ++first) {
        for (const char* second = characters; *second != 0; ++second) {
            pairs += *first;
            pairs += *second;
            pairs += '\n';
        }
    }
    // In an encoding with one byte for each character, only brackets with a range match a pair.
    const Posix posix("\n[^0-9\n]\n");
    return !posix.isValid() || posix.matches(pairs.constData());
}

bool localeHasPairs()
{
    static QMutex mutex;
    static QHash<QByteArray, bool> known;
    const QMutexLocker locker(&mutex);
    const QByteArray locale(setlocale(LC_ALL, nullptr));
    const auto found = known.constFind(locale);
    if (found != known.constEnd()) {
        return *found;
    }
    return *known.insert(locale, findPairs());
}

QByteArray escaped(int character)
{
    return "\\x{" + QByteArray::number(character, 16) + '}';
}

// Translates one expression. After each function, `at` is the position after the translated part.
class Translator
{
public:
    explicit Translator(const QByteArray& givenExpression) : expression(givenExpression), code(encoding()) {}

    bool translate() { return code != Encoding::Other && alternatives(0) && at == expression.size(); }
    const QByteArray& result() const { return translation; }
    bool hasSets() const { return !sets.isEmpty(); }

private:
    bool isAtEnd() const { return at == expression.size(); }
    // Returns the current character, or 0 at the end.
    char current() const { return isAtEnd() ? '\0' : expression.at(at); }
    bool alternatives(int depth);
    bool alternative(int depth);
    bool atom(int depth);
    bool escapeSequence();
    bool character();
    bool brackets();
    bool set(const QByteArray& source);
    bool repetition();
    bool number(int& value);

    const QByteArray& expression;
    const Encoding code;
    int at = 0;
    QByteArray translation;
    QHash<QByteArray, QByteArray> sets; // brackets -> translation
};

bool Translator::alternatives(int depth)
{
    while (alternative(depth)) {
        if (current() != '|') {
            return true;
        }
        translation += '|';
        ++at;
    }
    return false;
}

bool Translator::alternative(int depth)
{
    // The C library also accepts "^" after a line end, and "$" before a line end, if other parts of the
    // expression match the line end. At the two ends of the whole expression, other parts cannot do this.
    const bool begins = depth == 0 && current() == '^';
    if (begins) {
        translation += "\\A";
        ++at;
    }
    bool isEmpty = !begins;
    while (!isAtEnd() && current() != '|' && current() != ')') {
        if (current() == '$') {
            ++at;
            translation += "\\z";
            return depth == 0 && (isAtEnd() || current() == '|');
        }
        if (!atom(depth) || !repetition()) {
            return false;
        }
        isEmpty = false;
    }
    return !isEmpty;
}

bool Translator::atom(int depth)
{
    switch (current()) {
    case '(':
        ++at;
        translation += "(?:";
        if (depth == mostGroups || !alternatives(depth + 1) || current() != ')') {
            return false;
        }
        ++at;
        translation += ')';
        return true;
    case '[':
        return brackets();
    case '.':
        ++at;
        translation += "[^\\x{0}]";
        return true;
    case '\\':
        return escapeSequence();
    case '*': // a repetition of nothing, or of a repetition
    case '+':
    case '?':
    case '{':
    case '}':
    case ']':
    case '^':
        return false;
    default:
        return character();
    }
}

bool Translator::escapeSequence()
{
    ++at;
    const char next = current();
    if (next == '\0') {
        return false;
    }
    if (std::strchr("wWsS", next) != nullptr) {
        ++at;
        return set(QByteArray("\\") + next);
    }
    if (std::strchr("!\"#$%&()*+,-./:;=?@[\\]^_{|}~", next) != nullptr) {
        ++at;
        translation += escaped(next);
        return true;
    }
    return false;
}

bool Translator::character()
{
    const char first = current();
    if ((first & 0x80) == 0) {
        ++at;
        translation += escaped(first);
        return true;
    }
    // In a locale with one byte for each character, a repetition repeats only the last byte.
    if (code != Encoding::Utf8) {
        return false;
    }
    do {
        translation += current();
        ++at;
    } while ((current() & 0xc0) == 0x80);
    return true;
}

bool Translator::brackets()
{
    const int begin = at;
    at = Automaton::afterBrackets(expression, begin);
    return at > 0 && set(expression.mid(begin, at - begin));
}

// Adds the characters that brackets, or sequences such as "\w", match.
bool Translator::set(const QByteArray& source)
{
    const auto known = sets.constFind(source);
    if (known != sets.constEnd()) {
        translation += *known;
        return true;
    }
    if (source.contains("[.") || source.contains("[=") || sets.size() == mostSets || localeHasPairs()) {
        return false;
    }
    const Posix posix('^' + source + '$');
    if (!posix.isValid()) {
        return false;
    }
    QByteArray found;
    for (int each = 1; each < 0x80; ++each) {
        const char text[] = {static_cast<char>(each), '\0'};
        if (posix.matches(text)) {
            found += escaped(each);
        }
    }
    // No locale sorts more than one ASCII character and some characters beyond ASCII as one character, unless
    // it also sorts pairs of ASCII letters so.
    const QByteArray set = (found.isEmpty() ? QByteArray("(?:") : "(?:[" + found + "]|") +
                           "[\\x{1}-\\x{7f}]?[^\\x{0}-\\x{7f}]+)";
    sets.insert(source, set);
    translation += set;
    return true;
}

bool Translator::repetition()
{
    const char first = current();
    if (first == '*' || first == '+' || first == '?') {
        translation += first;
        ++at;
    } else if (first == '{') {
        ++at;
        int least = 0;
        if (!number(least)) {
            return false;
        }
        int most = least;
        translation += '{' + QByteArray::number(least);
        if (current() == ',') {
            ++at;
            translation += ',';
            if (current() != '}') {
                if (!number(most)) {
                    return false;
                }
                translation += QByteArray::number(most);
            } else {
                most = -1; // without limit
            }
        }
        if (current() != '}' || most == 0) {
            return false;
        }
        translation += '}';
        ++at;
    }
    return true;
}

bool Translator::number(int& value)
{
    const int begin = at;
    value = 0;
    while (current() >= '0' && current() <= '9' && at - begin < 5) {
        value = value * 10 + current() - '0';
        ++at;
    }
    return at > begin;
}

std::unique_ptr<re2::RE2> compiled(const QByteArray& translation)
{
    re2::RE2::Options options;
    options.set_log_errors(false);
    options.set_never_capture(true);
    options.set_longest_match(true); // with this option, RE2 needs fewer states
    options.set_max_mem(mostMemory);
    auto result = std::make_unique<re2::RE2>(translation.toStdString(), options);
    // RE2 accepts at most 1000 repetitions, and limits the memory.
    if (!result->ok()) {
        result.reset();
    }
    return result;
}

} // namespace

int Automaton::afterBrackets(const QByteArray& text, int begin)
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

bool Automaton::isUtf8(const char* text, size_t size)
{
    return contentOf(text, size) != Content::Other;
}

Automaton::Automaton() = default;
Automaton::~Automaton() = default;
Automaton::Automaton(Automaton&& other) noexcept = default;
Automaton& Automaton::operator=(Automaton&& other) noexcept = default;

Automaton::Automaton(const QByteArray& expression) : asciiOnly(encoding() != Encoding::Utf8)
{
    Translator translator(expression);
    if (!translator.translate()) {
        return;
    }
    hasSets = translator.hasSets();
    automaton = compiled(translator.result());
    QByteArray any = translator.result();
    any.replace("\\A", "(?:\\A|\\x{0})").replace("\\z", "(?:\\z|\\x{0})");
    if (automaton && any != translator.result()) {
        anyAutomaton = compiled(any);
        if (!anyAutomaton) {
            automaton.reset();
        }
    }
}

Automaton::Answer Automaton::compare(const char* text, size_t size) const
{
    return compare(automaton.get(), text, size);
}

Automaton::Answer Automaton::compareAny(const char* texts, size_t size) const
{
    return compare(anyAutomaton ? anyAutomaton.get() : automaton.get(), texts, size);
}

Automaton::Answer Automaton::compare(const re2::RE2* with, const char* text, size_t size) const
{
    if (with == nullptr || hasGivenUp) {
        return Unknown;
    }
    const Content content = contentOf(text, size);
    if (content == Content::Other || (content == Content::Utf8 && asciiOnly)) {
        return Unknown;
    }
    if (!find(with, text, size)) {
        return No;
    }
    return content == Content::Utf8 && hasSets ? Unknown : Yes;
}

bool Automaton::find(const re2::RE2* with, const char* text, size_t size) const
{
    const auto match = [with, text, size] {
        return with->Match(re2::StringPiece(text, size), 0, size, re2::RE2::UNANCHORED, nullptr, 0);
    };
    // The system needs a fraction of a microsecond to return the time, as long as the comparison of a short
    // text.
    if (comparisons++ % 8 != 0) {
        return match();
    }
    const double begun = threadTime();
    const bool found = match();
    measuredTime += threadTime() - begun;
    measuredBytes += static_cast<double>(size);
    hasGivenUp = measuredTime > mostTime * measuredBytes + firstTime;
    return found;
}
