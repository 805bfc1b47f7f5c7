// SPDX-License-Identifier: GPL-2.0-or-later

// The user name and the password in the URLs of a repository of the vantor scheme.
//
// Any thread; no state. A URL of the scheme has the form
// <anything>/vantor?<name key>=<name>&<password key>=<password>&path=<anything>, the four percent-encoded.

#ifndef REPO_REPOVANTOR_H
#define REPO_REPOVANTOR_H

#include <QRegExp>
#include <QString>

namespace Repo {

struct Entry;

namespace Vantor {

// Finds the first such URL in a text, which may be a list of URLs, and returns its four decoded parts.
// Returns false and four empty texts if the text contains no such URL.
bool getAuth(const QString& url, QString& nameKey, QString& name, QString& passwordKey, QString& password);
// Searches the URLs of a repository and, if none of them is of this scheme, its mirror list URL.
bool getAuth(const Repo::Entry& entry, QString& nameKey, QString& name, QString& passwordKey,
             QString& password);

// The text after these parts have replaced those of every such URL.
QString replaceAuth(const QString& url, const QString& nameKey, const QString& name,
                    const QString& passwordKey, const QString& password);
// The same, with the keys from getAuth().
QString replaceAuth(const QString& url, const QString& name, const QString& password);
// The same, with the keys and the name from getAuth().
QString replaceAuth(const QString& url, const QString& password);

// The scheme as expressions, for the masking edits and for comparisons. To find credentials in texts of any
// length, use Credentials. The first capture is the password: of a text that is one URL, and of each URL in a
// list.
QRegExp oneUrlRegExp();
QRegExp urlsRegExp();
// Matches the parts that replaceAuth() replaces, at every position.
QRegExp credentialsRegExp();

} // namespace Vantor
} // namespace Repo

#endif
