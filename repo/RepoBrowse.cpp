// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoBrowse.h"

#include "yumio/YumIO.h"

#include <QFile>
#include <QMessageBox>
#include <QRegularExpression>

#include "app/base/Credentials.h"
#include "app/base/Share.h"
#include "python/Python.h"
#include "repo/Execute.h"
#include "repo/RepoEntry.h"
#include "repo/YumConfIO.h"
#include "widgets/HMessageBox.h"

void RepoBrowse::browse(QWidget* parent, const Repo::Entry& entry, YumIO* yumIO)
{
    static const QRegularExpression whiteSpace(QStringLiteral("\\s+"));
    QStringList urls = entry.baseurl.split(whiteSpace);
    urls.removeAll(QString());
    const QString url = urls.isEmpty() ? entry.mirrorlist : urls.first();
    if (url.isEmpty()) {
        QMessageBox::critical(parent, tr("Error"), tr("Repository configuration has no URL"));
        return;
    }
    QByteArray program = QFile::encodeName(Share::absolute(QStringLiteral("webbrowser")));
    // Remove the credentials: all users can read a program's arguments, and the browser would store the
    // credentials in its history. Without credentials in the URL, the browser asks the user for them.
    QByteArray argument = Credentials::removed(yumIO->expandVariables(url)).toUtf8();
    char* const argv[] = {program.data(), argument.data(), nullptr};
    Execute::execute(parent, argv);
}

void RepoBrowse::browse(QWidget* parent, QString id, YumIO* yumIO, YumConfIO* yumConfIO)
{
    const Repo::Entry* entry = find(id, yumConfIO);
    if (entry != nullptr) {
        browse(parent, *entry, yumIO);
    } else {
        reportUnknown(parent, id);
    }
}

const Repo::Entry* RepoBrowse::find(const QString& id, const YumConfIO* yumConfIO)
{
    if (yumConfIO != nullptr) {
        for (const Repo::Entry& entry : yumConfIO->entries) {
            if (entry.id == id) {
                return &entry;
            }
        }
    }
    return nullptr;
}

void RepoBrowse::reportUnknown(QWidget* parent, const QString& id)
{
    HMessageBox box(QMessageBox::Critical, tr("Error"),
                    tr("There is no configured repository \"%1\"").arg(id), QMessageBox::Ok, parent);
    box.exec();
}
