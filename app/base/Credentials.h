// SPDX-License-Identifier: GPL-2.0-or-later

// The only definition of the secrets in a text. It finds the passwords of URLs and of configuration options,
// hides them in messages, masks them in edits and removes them from URLs for other programs.
//
// Any thread; no state. The time is proportional to the length of the text.

#ifndef APP_BASE_CREDENTIALS_H
#define APP_BASE_CREDENTIALS_H

#include <QChar>
#include <QString>
#include <QVector>

namespace Credentials {

enum class Text {
    // A message, a URL or a list of URLs. These passwords are secrets:
    // - of a vantor URL: /vantor?NAMEKEY=NAME&PASSWORDKEY=PASSWORD&path=, also with a path before the "?";
    // - before a host: ://NAME:PASSWORD@;
    // - of a parameter whose name ends in "password": ?password=PASSWORD.
    Urls,
    // A configuration file or a part of it. The whole value of an option whose name ends in "password" is a
    // secret too, with its continuation lines.
    Options
};

// The place of a password in a text. The place of an empty password is empty, as in /vantor?u=&p=&path=.
struct Place
{
    int end() const { return begin + length; }

    int begin;
    int length;
};

// In the order of the text; no two of them overlap or touch. A password of several lines has one place for
// each line.
QVector<Place> places(const QString& text, Text kind);

// Returns whether the text has a place for a password, even an empty one.
bool holds(const QString& text, Text kind);

// Returns whether the text contains a password. Only the owner may read a file with such a text.
bool holdsPassword(const QString& text, Text kind);

// The message with three dots in place of each password. The number of dots is always the same, because even
// the length of a password is secret. Each line is searched by itself.
QString hidden(const QString& message, Text kind = Text::Urls);

// The credential parts of vantor URLs, in their order, from "/vantor?" to the end of "&path=". Only parts
// without "&" and white space in the keys, the name and the password count. New credentials replace these
// parts.
QVector<Place> vantorParts(const QString& text);

// The URL for another program. It has no name and password before the host, and no value of a password
// parameter. A vantor URL loses its credentials, and keeps "?path=" and the text behind it.
QString removed(const QString& url);

} // namespace Credentials

#endif
