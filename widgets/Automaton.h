// SPDX-License-Identifier: GPL-2.0-or-later

// A finite automaton that compares long texts with an extended POSIX expression. The time is proportional to
// the length of the text, for any expression. For most expressions, the C library is much slower. But its
// results are the reference: the automaton never contradicts them. If the automaton does not know the C
// library's result, the caller must ask the C library.
//
// The class translates the expression for the library RE2. It translates only the forms that have the same
// meaning in both libraries:
// - characters, ".", escaped punctuation, "\w", "\W", "\s", "\S", and brackets without "[." and "[=";
// - groups and alternatives that are not empty;
// - "*", "+", "?", "{2}", "{2,}" and "{2,3}" after a character, brackets or a group; but not two of them in a
//   row, and no bound of zero repetitions;
// - "^" at the beginning of the expression or of an alternative, and "$" at the end, but not inside a group.
//
// The locale decides the meaning of brackets and of "\w", so the class asks the C library about each ASCII
// character. In the automaton, brackets match each character beyond ASCII. In some locales, brackets also
// match two characters that the locale sorts as one, for example "ch" in Czech. If the locale has such pairs
// of ASCII letters, the class does not translate brackets. If only characters beyond ASCII can be the second
// part of a pair, brackets in the automaton match all these pairs.
//
// The automaton makes its states when it needs them, and keeps them. If an expression needs too many states,
// the automaton is slower than the C library, and gives up: from then on, it knows no result.
//
// Any thread may use an Automaton, but only one thread at a time.

#ifndef WIDGETS_AUTOMATON_H
#define WIDGETS_AUTOMATON_H

#include <cstddef>
#include <memory>

#include <QByteArray>

namespace re2 {
class RE2;
}

class Automaton
{
public:
    enum Answer { No, Yes, Unknown };

    // Creates an Automaton without an expression. It knows no result.
    Automaton();
    // If the class cannot translate the expression, the automaton knows no result. The C library must accept
    // the expression. The locale must not change while the Automaton exists.
    explicit Automaton(const QByteArray& expression);
    ~Automaton();
    Automaton(Automaton&& other) noexcept;
    Automaton& operator=(Automaton&& other) noexcept;

    bool isUsable() const { return automaton != nullptr; }
    // Returns whether the expression matches a UTF-8 text without zero bytes.
    Answer compare(const char* text, size_t size) const;
    // Returns whether the expression matches at least one of several UTF-8 texts. A zero byte ends each text,
    // except the last text, which ends after `size` bytes.
    Answer compareAny(const char* texts, size_t size) const;

    // Returns whether a text is valid UTF-8. It may contain zero bytes.
    static bool isUtf8(const char* text, size_t size);
    // Returns the position after the brackets that begin at `begin`, or -1 if the closing bracket is missing.
    static int afterBrackets(const QByteArray& text, int begin);

private:
    Answer compare(const re2::RE2* with, const char* text, size_t size) const;
    bool find(const re2::RE2* with, const char* text, size_t size) const;

    std::unique_ptr<re2::RE2> automaton;
    std::unique_ptr<re2::RE2> anyAutomaton; // for several texts, if the expression contains "^" or "$"
    // Some of the comparisons are measured.
    mutable unsigned int comparisons = 0;
    mutable double measuredTime = 0; // in nanoseconds of CPU time
    mutable double measuredBytes = 0;
    mutable bool hasGivenUp = false;
    bool hasSets = false;   // brackets in the automaton match too many characters beyond ASCII
    bool asciiOnly = false; // the automaton knows the results only for ASCII texts
};

#endif
