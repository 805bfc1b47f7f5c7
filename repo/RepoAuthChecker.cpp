// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoAuthChecker.h"

#include <QHash>

#include "repo/RepoAuthDialog.h"
#include "repo/RepoVantor.h"
#include "repo/Url.h"
#include "repo/YumConfIO.h"

namespace RepoAuth {

namespace {

// Finds the user name and password of a repository. Returns false if its URLs have no place for them.
bool findAuth(const Repo::Entry& entry, Checker::Auth& auth)
{
    QString nameKey;
    QString passwordKey;
    return Repo::Vantor::getAuth(entry, nameKey, auth.name, passwordKey, auth.password);
}

} // namespace

Checker::Checker(QWidget* parent, YumConfIO* yumConfIO) : quit(false), changed(false)
{
    if (!yumConfIO->read(parent)) {
        // Stop here: read() has shown an error, and the list does not contain all repositories.
        return;
    }
    bool hasAuthForAll = false;
    Auth forAll;
    QHash<QString, Auth> byHost;
    QHash<QString, Auth> given;
    bool goOn = true;
    for (int i = 0; goOn && i < yumConfIO->entries.size(); ++i) {
        Repo::Entry& entry = yumConfIO->entries[i];
        Auth found;
        if (!yumConfIO->sessionEnabled.value(entry.id) || !findAuth(entry, found) || !found.name.isEmpty() ||
            !found.password.isEmpty()) {
            continue;
        }
        if (dialog == nullptr) {
            dialog = new Dialog(parent);
        }
        const QString host = hostOf(entry);
        if (hasAuthForAll || byHost.contains(host)) {
            given.insert(entry.id, hasAuthForAll ? forAll : byHost.value(host));
            replace(entry, given.value(entry.id));
            continue;
        }
        const int result = dialog->exec(&entry);
        switch (result) {
        case Dialog::OK:
        case Dialog::ApplyAll:
        case Dialog::ApplyHost:
            findAuth(entry, found);
            changed = changed || !found.name.isEmpty() || !found.password.isEmpty();
            given.insert(entry.id, found);
            if (result == Dialog::ApplyAll) {
                hasAuthForAll = true;
                forAll = found;
            } else if (result == Dialog::ApplyHost) {
                byHost.insert(host, found);
            }
            break;
        case Dialog::Disable:
            yumConfIO->sessionEnabled.insert(entry.id, false);
            break;
        case Dialog::Quit:
            quit = true;
            goOn = false;
            break;
        default:
            goOn = false;
            break;
        }
    }
    if (dialog != nullptr) {
        dialog->hide();
    }
    if (changed) {
        write(parent, yumConfIO, given);
    }
}

// Writes the credentials to the configuration files. If another program has changed the files and the user
// agrees, reads the files again and repeats the write.
void Checker::write(QWidget* parent, YumConfIO* yumConfIO, const QHash<QString, Auth>& given)
{
    while (!yumConfIO->write(parent) && yumConfIO->readAgainWanted && yumConfIO->read(parent)) {
        for (Repo::Entry& entry : yumConfIO->entries) {
            Auth found;
            if (given.contains(entry.id) && findAuth(entry, found) && found.name.isEmpty() &&
                found.password.isEmpty()) {
                replace(entry, given.value(entry.id));
            }
        }
    }
}

Checker::~Checker()
{
    // If the dialog's parent was deleted, it has deleted the dialog too, and `dialog` is null.
    delete dialog;
}

// Returns the host in the repository's URLs. If the URLs have no host, returns the host in its mirror list
// URL.
QString Checker::hostOf(const Repo::Entry& entry)
{
    const QString host = URL::getHost(entry.baseurl);
    return host.isEmpty() ? URL::getHost(entry.mirrorlist) : host;
}

void Checker::replace(Repo::Entry& entry, const Auth& auth)
{
    entry.baseurl = Repo::Vantor::replaceAuth(entry.baseurl, auth.name, auth.password);
    entry.mirrorlist = Repo::Vantor::replaceAuth(entry.mirrorlist, auth.name, auth.password);
}

} // namespace RepoAuth
