// SPDX-License-Identifier: GPL-2.0-or-later

#include "advisories/AdvisoryMarker.h"

#include <QSet>

#include "yumio/YumIO.h"

QString AdvisoryMarker::described(const Advisory::Package& package)
{
    switch (package.obstacle) {
    case Advisory::IsInstalled:
        return tr("%1: installed").arg(package.text());
    case Advisory::NotOffered:
        return tr("%1: no repository offers an update").arg(package.text());
    case Advisory::Older:
        return tr("%1: the offered update %2 is older").arg(package.text(), package.offered);
    case Advisory::Locked:
        return tr("%1: the version is locked").arg(package.text());
    case Advisory::Excluded:
        return tr("%1: the configuration excludes the update").arg(package.text());
    case Advisory::Possible:
        break;
    }
    return tr("%1: not installed; the update %2 is available").arg(package.text(), package.offered);
}

QString AdvisoryMarker::refusal(const YumIO& yumIO, const Package::Entry* entry)
{
    if (entry == nullptr || !entry->permits(Package::Update)) {
        return tr("%1: the table lists no update");
    }
    if (yumIO.isLeftToUser(*entry)) {
        return tr("%1: a package of another name replaces it; mark that package in the table if you want it");
    }
    // The user has marked this package for removal. A button that marks many packages must not silently
    // replace this mark.
    return entry->action == Package::Remove ? tr("%1: it is marked for removal") : QString();
}

AdvisoryMarker::Found AdvisoryMarker::find(YumIO& yumIO, const QVector<Advisory>& advisories)
{
    Found found;
    QSet<QString> known;
    for (const Advisory& advisory : advisories) {
        for (const Advisory::Package& package : advisory.packages) {
            QString line;
            if (package.obstacle == Advisory::Possible) {
                Package::Entry* entry = yumIO.recordOf(package.name, package.arch);
                const QString reason = refusal(yumIO, entry);
                if (reason.isEmpty() && !found.entries.contains(entry)) {
                    found.entries.append(entry);
                }
                line = reason.isEmpty() ? QString() : reason.arg(package.text());
            } else if (package.obstacle != Advisory::IsInstalled) {
                line = described(package);
            }
            if (!line.isEmpty() && !known.contains(line)) {
                known.insert(line);
                found.refusals.append(line);
            }
        }
    }
    return found;
}
