// SPDX-License-Identifier: GPL-2.0-or-later

// Defines which parts of a text are secret. With these functions, the program hides passwords in messages,
// masks them in edits, and removes them from URLs for other programs. Two other files also search for
// passwords: repo/RepoVantor reads the credentials of a vantor URL, and share/webbrowser, a separate Python
// program, removes passwords from the URL of a page.
//
// Any thread may call these functions. They have no state. The run time is proportional to the length of the
// text.

#ifndef APP_BASE_CREDENTIALS_H
#define APP_BASE_CREDENTIALS_H

#include <QChar>
#include <QString>
#include <QVector>

namespace Credentials {

enum class Text {
    // A message, a URL or a list of URLs. Three kinds of passwords are secret. The first kind is in a vantor
    // URL: /vantor?NAMEKEY=NAME&PASSWORDKEY=PASSWORD&path=. A path may precede the "?". The second kind is
    // before a host: ://NAME:PASSWORD@. The third kind is the value of a parameter whose name ends in
    // "password": ?password=PASSWORD.
    Urls,
    // A configuration file or a part of it. If the name of an option ends in "password", the whole value of
    // this option is also a secret, including continuation lines.
    Options
};

// The position of a password in a text. For an empty password, as in /vantor?u=&p=&path=, the length is 0.
struct Place
{
    int end() const { return begin + length; }

    int begin;
    int length;
};

// Returns the places of all passwords, in ascending order. Places neither overlap nor touch each other. A
// password with several lines has one place for each line.
QVector<Place> places(const QString& text, Text kind);

// Returns whether the text has a place for a password, even if the password is empty.
bool holds(const QString& text, Text kind);

// Returns whether the text contains a password that is not empty. A file with such a password must not be
// readable for all users.
bool holdsPassword(const QString& text, Text kind);

// Returns the message with three dots instead of each password. Three dots also hide the length of the
// password. The function searches each line separately.
QString hidden(const QString& message, Text kind = Text::Urls);

// Returns the parts of vantor URLs that new credentials replace, in ascending order. Each part reaches from
// "/vantor?" to the end of "&path=". A part is skipped if its keys, name or password contain "&" or white
// space.
QVector<Place> vantorParts(const QString& text);

// Returns the URL without credentials, for use in other programs. Removes the user name and password before
// the host, and the values of password parameters. In a vantor URL, removes the credentials, and keeps
// "?path=" and everything after it.
QString removed(const QString& url);

} // namespace Credentials

#endif
