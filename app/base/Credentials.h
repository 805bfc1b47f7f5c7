// What a secret in a text is: the one place that knows it. It finds the passwords of URLs and of
// configuration options, hides them in messages, masks them in edits and takes them out of URLs that other
// programs get.
//
// Any thread; no state. Whatever the text is, the time taken is proportional to its length.

#ifndef APP_BASE_CREDENTIALS_H
#define APP_BASE_CREDENTIALS_H

#include <QChar>
#include <QString>
#include <QVector>

namespace Credentials {

enum class Text {
    // A message, a URL or a list of URLs. Secrets in it are the password
    // - of a vantor URL: /vantor?NAMEKEY=NAME&PASSWORDKEY=PASSWORD&path=, also when a path stands before the
    // "?";
    // - before a host: ://NAME:PASSWORD@;
    // - of a parameter whose name ends in "password": ?password=PASSWORD.
    Urls,
    // A configuration file or a part of it. There the whole value of an option whose name ends in "password"
    // is a secret as well, with its continuation lines.
    Options
};

// The place of a password in a text. It is empty when there is a place for one only, as in
// /vantor?u=&p=&path=.
struct Place
{
    int end() const { return begin + length; }

    int begin;
    int length;
};

// In their order; no two of them overlap or touch. A password of several lines is one place for each line.
QVector<Place> places(const QString& text, Text kind);

// Whether the text has a place for a password, be it empty or not.
bool holds(const QString& text, Text kind);

// Whether a password stands in the text: a file of such a text is nobody else's business.
bool holdsPassword(const QString& text, Text kind);

// The message with three dots in place of each password: of any password the same, since not even its length
// is anyone's business. Each line is looked at by itself.
QString hidden(const QString& message, Text kind = Text::Urls);

// The credential parts of vantor URLs, in their order, from "/vantor?" to the end of "&path=", where keys,
// name and password have neither "&" nor white space: what is replaced when credentials are written.
QVector<Place> vantorParts(const QString& text);

// The URL for another program: without the name and the password before the host, without the credentials of
// a vantor URL, of which "?path=" and what follows stay, and without the value of any password parameter.
QString removed(const QString& url);

} // namespace Credentials

#endif
