// SPDX-License-Identifier: GPL-2.0-or-later

// Reads and replaces the user names and passwords in URLs of the vantor scheme.
//
// Any thread may call these functions. They have no state. A URL of this scheme has the form
//     <anything>/vantor?<name key>=<name>&<password key>=<password>&path=<anything>
// The two keys, the name and the password are percent-encoded.

#ifndef REPO_REPOVANTOR_H
#define REPO_REPOVANTOR_H

#include <QRegExp>
#include <QString>

namespace Repo {

struct Entry;

namespace Vantor {

// Finds the first vantor URL in a text, and sets the last four arguments to its decoded parts. The text may
// be a list of URLs. If the text contains no vantor URL, returns false and sets these arguments to empty
// strings.
bool getAuth(const QString& url, QString& nameKey, QString& name, QString& passwordKey, QString& password);
// Finds the first vantor URL of a repository, and sets the last four arguments to its decoded parts. If the
// URLs of the repository contain no vantor URL, searches its mirror list URL.
bool getAuth(const Repo::Entry& entry, QString& nameKey, QString& name, QString& passwordKey,
             QString& password);

// Replaces the two keys, the user name and the password in every vantor URL of a text, and returns the new
// text.
QString replaceAuth(const QString& url, const QString& nameKey, const QString& name,
                    const QString& passwordKey, const QString& password);
// Replaces the user name and the password. Uses the keys that getAuth() finds in the text.
QString replaceAuth(const QString& url, const QString& name, const QString& password);
// Replaces only the password. Uses the keys and the user name that getAuth() finds in the text. This function
// completes the interface; no window needs it now.
QString replaceAuth(const QString& url, const QString& password);

// The expressions of vantor URLs. The first capture is the password. oneUrlRegExp() matches a text that is a
// single URL; urlsRegExp() matches each URL in a list. The repository editor creates its password edits with
// these expressions. But these edits do not compare the expressions with a text: they use Credentials, which
// finds the same passwords and more, also in long texts.
QRegExp oneUrlRegExp();
QRegExp urlsRegExp();

} // namespace Vantor
} // namespace Repo

#endif
