// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/support/StandIn.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>

#include "tests/support/Files.h"

namespace {

QByteArray read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

StandIn::StandIn()
{
    const QString share = QFile::decodeName(qgetenv("VYRESHARE"));
    for (const char* name : {"icons", "pixmaps"}) {
        if (!QFile::link(share + QLatin1Char('/') + QLatin1String(name), path(name))) {
            qFatal("%s cannot be linked", name);
        }
    }
    QDir(directory.path()).mkpath(QStringLiteral("python"));
    Files::put(path("python/YumIO.py"), read(QStringLiteral(STANDIN_SCRIPT)));
    QDir(root()).mkpath(QStringLiteral("etc/yum.repos.d"));
    Files::put(root() + QStringLiteral("/etc/yum.conf"), "[main]\ncachedir=/var/cache/standin\n");
    setPackages({}, {}, {});
    qputenv("VYRESHARE", QFile::encodeName(directory.path()));
    qputenv("VYREROOT", QFile::encodeName(root()));
}

QJsonObject StandIn::package(const QString& name, const QJsonObject& attributes)
{
    QJsonObject object = attributes;
    object.insert(QStringLiteral("name"), name);
    return object;
}

QJsonObject StandIn::group(const QString& name, const QJsonObject& attributes)
{
    return package(name, attributes);
}

void StandIn::setPackages(const QJsonArray& updates, const QJsonArray& installed, const QJsonArray& available,
                          const QJsonArray& groups)
{
    Files::put(path("packages.json"), QJsonDocument(QJsonObject{{QStringLiteral("updates"), updates},
                                                                {QStringLiteral("installed"), installed},
                                                                {QStringLiteral("available"), available},
                                                                {QStringLiteral("groups"), groups}})
                                          .toJson(QJsonDocument::Compact));
}

void StandIn::setFlag(const char* name, bool on)
{
    if (on) {
        Files::put(path(name), QByteArray());
    } else {
        QFile::remove(path(name));
    }
}

void StandIn::setHeld(bool held)
{
    setFlag("held", held);
}

void StandIn::setRestricted(bool restricted)
{
    setFlag("restricted", restricted);
}

void StandIn::setRefusing(bool refuse)
{
    setFlag("refusing", refuse);
}

void StandIn::setFailing(bool fail)
{
    setFlag("failing", fail);
}

void StandIn::setBreaking(bool doBreak)
{
    setFlag("breaking", doBreak);
}

void StandIn::setDownloading(bool downloading)
{
    setFlag("downloading", downloading);
}

void StandIn::setOutdated(bool outdated)
{
    setFlag("outdated", outdated);
}

void StandIn::setLacking(bool lacking)
{
    setFlag("lacking", lacking);
}

void StandIn::setComplaining(bool complaining)
{
    setFlag("complaining", complaining);
}

void StandIn::setSkipped(const QStringList& repositories)
{
    Files::put(path("skipping"), repositories.join(QLatin1Char(' ')).toUtf8());
}

void StandIn::setHistoryBroken(bool broken)
{
    setFlag("nohistory", broken);
}

void StandIn::setHistoryLong(bool many)
{
    setFlag("long", many);
}

void StandIn::setReplayRefused(bool refused)
{
    setFlag("noreplay", refused);
}

void StandIn::letChangeLogsBeRead(bool readable)
{
    setFlag("readable", readable);
}

void StandIn::setUnreadable(bool unreadable)
{
    setFlag("unreadable", unreadable);
}

void StandIn::setRepos(const QByteArray& text)
{
    Files::put(root() + QStringLiteral("/etc/yum.repos.d/standin.repo"), text);
}

QJsonArray StandIn::advisory(const QString& id, bool security, const QList<QJsonArray>& packages)
{
    QJsonArray listed;
    for (const QJsonArray& package : packages) {
        listed.append(package);
    }
    const QString kind = security ? QStringLiteral("security") : QStringLiteral("bugfix");
    const QString severity = security ? QStringLiteral("Important/Sec.") : QString();
    return {id,
            kind,
            security,
            severity,
            security ? 4 : 0,
            QStringLiteral("2024-02-20"),
            QStringLiteral("About ") + id,
            QStringLiteral("A long text"),
            QJsonArray(),
            QJsonArray(),
            listed};
}

QJsonArray StandIn::advised(const QString& name, int obstacle)
{
    return {name, QStringLiteral("x86_64"), QStringLiteral("2-1"), obstacle,
            obstacle == 0 ? QStringLiteral("2-1") : QString()};
}

void StandIn::setAdvisories(const QList<QJsonArray>& advisories)
{
    QJsonArray listed;
    for (const QJsonArray& advisory : advisories) {
        listed.append(advisory);
    }
    Files::put(path("advisories.json"), QJsonDocument(listed).toJson(QJsonDocument::Compact));
}

void StandIn::setOutcome(const QJsonObject& outcome)
{
    Files::put(path("outcome.json"), QJsonDocument(outcome).toJson(QJsonDocument::Compact));
}

void StandIn::setVersionLocks(const QJsonObject& lines, const QString& fault)
{
    Files::put(path("locks.json"), QJsonDocument(QJsonArray{fault, lines}).toJson(QJsonDocument::Compact));
}

void StandIn::removeVersionLocks()
{
    QFile::remove(path("locks.json"));
}

QStringList StandIn::calls() const
{
    QStringList lines = QString::fromUtf8(read(path("calls"))).split(QLatin1Char('\n'));
    lines.removeAll(QString());
    return lines;
}

int StandIn::calls(const QString& method) const
{
    return calls().count(method);
}

void StandIn::forgetCalls()
{
    Files::put(path("calls"), QByteArray());
}

QString StandIn::root() const
{
    return path("root");
}

QString StandIn::path(const char* relative) const
{
    return directory.filePath(QLatin1String(relative));
}
