// SPDX-License-Identifier: GPL-2.0-or-later

// Matches an expression with regcomp() and regexec() alone. Tests compare its results with the results of our
// own classes.

#ifndef TESTS_WIDGETS_PLAINEXPRESSION_H
#define TESTS_WIDGETS_PLAINEXPRESSION_H

#include <QByteArray>

#include <regex.h>

class PlainExpression
{
public:
    explicit PlainExpression(const QByteArray& text)
        : status(regcomp(&pattern, text.constData(), REG_EXTENDED | REG_NOSUB))
    {
    }
    ~PlainExpression()
    {
        if (status == 0) {
            regfree(&pattern);
        }
    }
    PlainExpression(const PlainExpression&) = delete;
    PlainExpression& operator=(const PlainExpression&) = delete;

    bool compiled() const { return status == 0; }
    // Returns false if the expression is invalid.
    bool matches(const QByteArray& text) const
    {
        return status == 0 && regexec(&pattern, text.constData(), 0, nullptr, 0) == 0;
    }

private:
    regex_t pattern = {};
    int status;
};

#endif
