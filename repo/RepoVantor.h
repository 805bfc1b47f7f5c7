// The user name and the password that a repository of the vantor scheme carries inside its URLs.
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

// Finds the first such URL in a text, which may be a list of URLs, and gives its four pieces, decoded. False,
// with all four empty, when there is none.
bool getAuth(const QString& url, QString& nameKey, QString& name, QString& passwordKey, QString& password);
// Looks into the URLs of a repository and, if they are of another kind, into its mirror list URL.
bool getAuth(const Repo::Entry& entry, QString& nameKey, QString& name, QString& passwordKey,
             QString& password);

// The text with the given pieces put into every such URL in it.
QString replaceAuth(const QString& url, const QString& nameKey, const QString& name,
                    const QString& passwordKey, const QString& password);
// The same with the keys that getAuth() finds.
QString replaceAuth(const QString& url, const QString& name, const QString& password);
// The same with the keys and the name that getAuth() finds.
QString replaceAuth(const QString& url, const QString& password);

// The scheme as expressions, for the masking edits and for anyone who compares; what finds credentials in
// texts of any length is Credentials. Both of these have the password as the first capture: of a text that is
// one URL, and of each URL in a list.
QRegExp oneUrlRegExp();
QRegExp urlsRegExp();
// What replaceAuth() replaces, in every place.
QRegExp credentialsRegExp();

} // namespace Vantor
} // namespace Repo

#endif
