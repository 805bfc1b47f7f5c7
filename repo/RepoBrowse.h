// SPDX-License-Identifier: GPL-2.0-or-later

// Opens the location of a repository in the web browser of the user.
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
    // Opens the first URL of the repository, or its mirror list URL if it has no other. Variables of the
    // package manager are replaced by their values, and credentials are removed. If the repository has no URL
    // at all, a message over `parent` reports this.
    static void browse(QWidget* parent, const Repo::Entry& entry, YumIO* yumIO);
    // Opens the first repository with the identifier. If no repository has it, a message over `parent`
    // reports this.
    static void browse(QWidget* parent, QString id, YumIO* yumIO, YumConfIO* yumConfIO);

    // The first repository with the identifier; null if no repository has it or the list is null. The pointer
    // is valid until the list changes.
    static const Repo::Entry* find(const QString& id, const YumConfIO* yumConfIO);
    // Reports over `parent` that no repository has the identifier: the configuration has lost it since the
    // program collected the packages.
    static void reportUnknown(QWidget* parent, const QString& id);
};

#endif
