#include "tests/packagetable/StandIn.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>

namespace {

void write(const QString& path, const QByteArray& text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size()) {
        qFatal("%s cannot be written", qPrintable(path));
    }
}

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
    write(path("python/YumIO.py"), read(QStringLiteral(STANDIN_SCRIPT)));
    QDir(root()).mkpath(QStringLiteral("etc/yum.repos.d"));
    write(root() + QStringLiteral("/etc/yum.conf"), "[main]\ncachedir=/var/cache/standin\n");
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
    write(path("packages.json"), QJsonDocument(QJsonObject{{QStringLiteral("updates"), updates},
                                                           {QStringLiteral("installed"), installed},
                                                           {QStringLiteral("available"), available},
                                                           {QStringLiteral("groups"), groups}})
                                     .toJson(QJsonDocument::Compact));
}

void StandIn::setFlag(const char* name, bool on)
{
    if (on) {
        write(path(name), QByteArray());
    } else {
        QFile::remove(path(name));
    }
}

void StandIn::setHeld(bool held)
{
    setFlag("held", held);
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

void StandIn::setOutdated(bool outdated)
{
    setFlag("outdated", outdated);
}

void StandIn::setComplaining(bool complaining)
{
    setFlag("complaining", complaining);
}

void StandIn::letChangeLogsBeRead()
{
    setFlag("readable", true);
}

void StandIn::setUnreadable(bool unreadable)
{
    setFlag("unreadable", unreadable);
}

void StandIn::setRepos(const QByteArray& text)
{
    write(root() + QStringLiteral("/etc/yum.repos.d/standin.repo"), text);
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
    write(path("calls"), QByteArray());
}

QString StandIn::root() const
{
    return path("root");
}

QString StandIn::path(const char* relative) const
{
    return directory.filePath(QLatin1String(relative));
}
