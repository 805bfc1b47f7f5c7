// SPDX-License-Identifier: GPL-2.0-or-later

// A regular expression that filters a table. The expression is an extended POSIX expression, is
// case-sensitive, and matches anywhere in a text.
//
// For most expressions, every match contains a certain fixed text. Searching for a fixed text is much faster
// than matching a regular expression. Therefore the regular expression is tried only on texts that contain
// the fixed text. The results are the same.
//
// An automaton compares the texts much faster than the C library. The C library compares a text only if the
// automaton does not know the result: it cannot translate every expression, and knows little about texts that
// are not ASCII.
//
// At each position of a text, the C library tries the whole expression again. If the expression contains a
// repetition without limit, the time grows with the square of the length of the text. Such an expression E is
// compiled a second time, as "^.*(E)". This expression can match only at the first position, so one pass over
// the text is enough. The results are the same if the text is valid UTF-8.
//
// Any thread may use an Expression, but only one thread at a time: regexec() takes a lock for each
// expression.

#ifndef WIDGETS_EXPRESSION_H
#define WIDGETS_EXPRESSION_H

#include <QByteArray>
#include <QString>

#include <cstddef>

#include <regex.h>

#include "widgets/Automaton.h"

class Expression
{
public:
    // Creates an Expression that has no text and matches nothing.
    Expression() = default;
    ~Expression() { clear(); }
    Expression(const Expression&) = delete;
    Expression& operator=(const Expression&) = delete;

    // An invalid expression matches nothing.
    void compile(const QString& text);

    // Returns the expression without any ".*" at its ends. If nothing remains, every text matches.
    static QString withoutOuterAny(QString text);

    // Returns whether the expression refers to the text that one of its groups has matched, for example with
    // "\1". The C library may need hours to compare such an expression with a single text.
    static bool refersToGroups(const QString& text);

    // Returns whether the C library would need too much memory for the copies of the repeated parts of this
    // expression, and might crash. Such an expression is invalid.
    static bool isTooLarge(const QByteArray& text);

    // Returns true if compile() was called with a valid expression.
    bool isValid() const { return regStatus == 0; }
    // Returns the C library's description of the error in an invalid expression, in the user's language. If
    // the expression is valid or missing, the text is empty.
    QString fault() const;
    // The text is UTF-8.
    bool matches(const char* text) const;
    // Returns true if the expression matches at least one of the texts. A zero byte ends each text.
    bool matchesAny(const QByteArray& texts) const;

    // Returns a fixed text that every match of the expression contains, or an empty string if no such text is
    // known. Sets `whole` to true if the expression consists only of this text.
    static QByteArray requiredText(const QByteArray& expression, bool& whole);
    // Returns an expression that finds the same texts as `expression` in one pass. Returns an empty string if
    // `expression` has no such form, or needs no such form. `expression` must be valid.
    static QByteArray inOnePass(const QByteArray& expression);

private:
    void clear();
    bool execute(const char* text, size_t size) const;

    int regStatus = -1; // the result of regcomp(); 0 if the expression is valid
    regex_t pattern = {};
    bool hasOnePass = false;
    regex_t onePass = {}; // valid if hasOnePass is true
    Automaton automaton;
    QByteArray required;
    bool literal = false; // true if the expression consists only of the required text
};

#endif
