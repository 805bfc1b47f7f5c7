// Opens the place of a repository in the user's web browser.
//
// Graphical thread; no state.

#ifndef REPO_REPOBROWSE_H
#define REPO_REPOBROWSE_H

#include <QCoreApplication>
#include <QString>

class QWidget;
class YumConfIO;
class YumIO;

namespace Repo {
struct Entry;
}

class RepoBrowse
{
    Q_DECLARE_TR_FUNCTIONS(RepoBrowse)

public:
    // The first of the repository's URLs, or else its mirror list URL, with the package manager's variables
    // replaced by their values, and without credentials. A repository without any URL is reported over
    // `parent`.
    static void browse(QWidget* parent, const Repo::Entry& entry, YumIO* yumIO);
    // The first repository that has the identifier; that there is none is reported over `parent`.
    static void browse(QWidget* parent, QString id, YumIO* yumIO, YumConfIO* yumConfIO);

    // The first repository that has the identifier; null when there is none, also for a null list. It stays
    // where it is until the list changes.
    static const Repo::Entry* find(const QString& id, const YumConfIO* yumConfIO);
    // Reports over `parent` that no repository has the identifier: it has been taken out of the configuration
    // since the packages were collected.
    static void reportUnknown(QWidget* parent, const QString& id);
};

#endif
