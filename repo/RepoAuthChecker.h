// SPDX-License-Identifier: GPL-2.0-or-later

// Finds the repositories in use whose URLs have empty credentials, and asks the user for these credentials.
//
// A Checker lives on the graphical thread. Each Checker runs one check, in its constructor.

#ifndef REPO_REPOAUTHCHECKER_H
#define REPO_REPOAUTHCHECKER_H

#include <QHash>
#include <QPointer>
#include <QString>

class QWidget;
class YumConfIO;

namespace Repo {
struct Entry;
}

namespace RepoAuth {

class Dialog;

class Checker
{
public:
    struct Auth
    {
        QString name;
        QString password;
    };

    // Reads the configuration, asks the user in windows over `parent`, and writes the configuration if the
    // user has entered credentials.
    Checker(QWidget* parent, YumConfIO* yumConfIO);
    ~Checker();
    Checker(const Checker&) = delete;
    Checker& operator=(const Checker&) = delete;

    bool quit;    // the user wants the program to end
    bool changed; // the user has entered credentials

private:
    static QString hostOf(const Repo::Entry& entry);
    static void write(QWidget* parent, YumConfIO* yumConfIO, const QHash<QString, Auth>& given);
    static void replace(Repo::Entry& entry, const Auth& auth);

    QPointer<Dialog> dialog; // null before the first question
};

} // namespace RepoAuth

#endif
