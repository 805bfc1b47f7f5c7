// SPDX-License-Identifier: GPL-2.0-or-later

// A regular expression that ignores the letter case: an extended POSIX expression that matches anywhere in a
// text. The class Expression is the case-sensitive counterpart.
//
// An expression that refers to its groups, for example with "\1", cannot be used: the comparison of such an
// expression with one text may take hours.
//
// Several threads may use one CaselessPattern at the same time. Any thread may create and delete it.

#ifndef WIDGETS_CASELESSPATTERN_H
#define WIDGETS_CASELESSPATTERN_H

#include <QByteArray>
#include <QString>

#include <cstddef>

#include <regex.h>

class CaselessPattern
{
public:
    explicit CaselessPattern(const QString& expression);
    ~CaselessPattern();
    CaselessPattern(const CaselessPattern&) = delete;
    CaselessPattern& operator=(const CaselessPattern&) = delete;

    // Returns false if the expression is invalid or refers to its groups. In this case, the caller must not
    // call any other function.
    bool isUsable() const { return fixed || compiled; }
    // Returns whether the expression is only a fixed text without blanks.
    bool isWord() const { return fixed && !required.contains(' '); }
    // Returns whether comparing the expression with a long text takes little time: each match contains a
    // certain fixed text, and the expression has no repetitions. With a repetition, the time grows with the
    // square of the text's length.
    bool isQuick() const { return isUsable() && !required.isEmpty() && !repeats; }

    // If this function returns false, the expression matches none of these texts, with or without regard to
    // the letter case. The texts may contain zero bytes and bytes that are not UTF-8. Takes little time.
    bool mayMatch(const char* texts, size_t size) const;
    // The text is UTF-8.
    bool matches(const char* text) const;
    // Returns whether the expression matches at least one of several texts. A zero byte ends each text.
    bool matchesAny(const QByteArray& texts) const;

private:
    bool fixed = false;   // the expression is only a fixed text
    QByteArray required;  // in small letters; each match contains this text, in any letter case
    bool repeats = false; // the expression may have repetitions
    bool compiled = false;
    regex_t regex = {};
};

#endif
