// SPDX-License-Identifier: GPL-2.0-or-later

// A regular expression for filtering the table: extended POSIX, case-sensitive, matching anywhere in a text.
//
// Most expressions require some fixed text in every match. A search for that text is much faster than
// matching, so only texts with it are matched. The results are the same as without this search.
//
// A value of the graphical thread.

#ifndef PACKAGETABLE_EXPRESSION_H
#define PACKAGETABLE_EXPRESSION_H

#include <QByteArray>
#include <QString>

#include <regex.h>

namespace PackageTable {

class Expression
{
public:
    // An object without an expression: nothing matches.
    Expression() = default;
    ~Expression() { clear(); }
    Expression(const Expression&) = delete;
    Expression& operator=(const Expression&) = delete;

    // An invalid expression matches nothing.
    void compile(const QString& text);

    // True if the object has an expression and could compile it.
    bool isValid() const { return regStatus == 0; }
    // The error in an invalid expression, as the C library describes it in the language of the user;
    // otherwise empty.
    QString fault() const;
    // The text is UTF-8.
    bool matches(const char* text) const;
    // True if the expression matches at least one of several texts. A zero byte ends each text.
    bool matchesAny(const QByteArray& texts) const;

    // A fixed text that occurs in every match of the extended expression; empty if none is known. `whole`
    // becomes true if the expression consists of this text only.
    static QByteArray requiredText(const QByteArray& expression, bool& whole);

private:
    void clear();

    int regStatus = -1; // 0: the pattern is compiled
    regex_t pattern = {};
    QByteArray required;
    bool literal = false; // the expression is just the required text
};

} // namespace PackageTable

#endif
