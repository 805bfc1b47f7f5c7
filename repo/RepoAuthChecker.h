// Looks for repositories in use whose URLs have places for credentials, but none in them, and asks the user
// for these.
//
// Graphical thread; lives for one check, which its constructor runs.

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

    // Reads the configuration, asks over `parent`, and writes the configuration if it has changed.
    Checker(QWidget* parent, YumConfIO* yumConfIO);
    ~Checker();
    Checker(const Checker&) = delete;
    Checker& operator=(const Checker&) = delete;

    bool quit;    // the user wants the program to end
    bool changed; // credentials were entered

private:
    static QString hostOf(const Repo::Entry& entry);
    static void write(QWidget* parent, YumConfIO* yumConfIO, const QHash<QString, Auth>& given);
    static void replace(Repo::Entry& entry, const Auth& auth);

    QPointer<Dialog> dialog; // null until first needed
};

} // namespace RepoAuth

#endif
