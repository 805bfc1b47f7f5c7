// SPDX-License-Identifier: GPL-2.0-or-later

// Opens the location of a repository in the user's web browser.
//
// Only the graphical thread calls these functions. They have no state.

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
    // Opens the first URL of the repository, or the mirror list URL if the repository has only this URL.
    // Replaces the package manager's variables by their values, and removes credentials. If the repository
    // has no URL at all, a message over `parent` reports this.
    static void browse(QWidget* parent, const Repo::Entry& entry, YumIO* yumIO);
    // Opens the first repository with this identifier. If no repository has this identifier, a message over
    // `parent` reports this.
    static void browse(QWidget* parent, QString id, YumIO* yumIO, YumConfIO* yumConfIO);

    // Returns the first repository with this identifier, or null if no repository has this identifier. The
    // result is also null if `yumConfIO` is null. The pointer is valid until the list changes.
    static const Repo::Entry* find(const QString& id, const YumConfIO* yumConfIO);
    // Reports over `parent` that the configuration no longer contains a repository with this identifier.
    static void reportUnknown(QWidget* parent, const QString& id);
};

#endif
