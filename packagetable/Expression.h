// A regular expression as the table filters by it: extended POSIX, case-sensitive, found anywhere in a text.
//
// Most expressions hold some text that every match must hold too, and looking for that is many times quicker
// than matching: only what has it is matched. The results are those of matching alone.
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
    // Holds none: nothing matches.
    Expression() = default;
    ~Expression() { clear(); }
    Expression(const Expression&) = delete;
    Expression& operator=(const Expression&) = delete;

    // One that cannot be compiled matches nothing.
    void compile(const QString& text);

    // Whether an expression is held that could be compiled.
    bool isValid() const { return regStatus == 0; }
    // What is wrong with the one that could not be compiled, in the words of the C library and the user's
    // language; empty if nothing is.
    QString fault() const;
    // The text is UTF-8.
    bool matches(const char* text) const;
    // Whether any of several texts matches, each for itself; each is ended by a zero.
    bool matchesAny(const QByteArray& texts) const;

    // A part of an extended expression that stands in all that it matches; empty when none is known.
    // whole: set when the expression is nothing else.
    static QByteArray requiredText(const QByteArray& expression, bool& whole);

private:
    void clear();

    int regStatus = -1; // 0: the pattern is compiled
    regex_t pattern = {};
    QByteArray required;
    bool literal = false; // the required text is all there is
};

} // namespace PackageTable

#endif
