// SPDX-License-Identifier: GPL-2.0-or-later

// A share directory with a script that answers without a package manager. The tests set the answers.
//
// The script reads these answers at each collection, and records the calls of its methods.
//
// A test program has only one object of this class. The object sets the environment variables VYRESHARE and
// VYREROOT, so it must exist before any code looks for the share directory.

#ifndef TESTS_SUPPORT_STANDIN_H
#define TESTS_SUPPORT_STANDIN_H

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QStringList>
#include <QTemporaryDir>

class StandIn
{
public:
    // Uses the icons of the share directory that the environment names at the time of this call.
    StandIn();

    // The attributes of a package object. The script adds the missing attributes.
    static QJsonObject package(const QString& name, const QJsonObject& attributes = QJsonObject());
    static QJsonObject group(const QString& name, const QJsonObject& attributes = QJsonObject());

    // Sets the packages for the next collection. The list of installed packages must also contain the
    // installed versions of the updates.
    void setPackages(const QJsonArray& updates, const QJsonArray& installed, const QJsonArray& available,
                     const QJsonArray& groups = QJsonArray());

    // While this flag is set, the script waits when it collects packages, loads file lists or changes the
    // system.
    void setHeld(bool held);
    // Whether the constructor of the script's class fails.
    void setRefusing(bool refuse);
    // Whether an apply fails: before the first change, or half way.
    void setFailing(bool fail);
    void setBreaking(bool doBreak);
    // Whether an apply reports that another program has changed the system.
    void setOutdated(bool outdated);
    // The outcome that an apply reports once it has begun its change.
    void setOutcome(const QJsonObject& outcome);
    // Whether the next collections fail.
    void setUnreadable(bool unreadable);
    // Whether both repositories fail in the next collections. The collections ask whether to go on without
    // them.
    void setLacking(bool lacking);
    // Whether the next collections log an error but succeed.
    void setComplaining(bool complaining);
    // The history: whether it can be read, has 5,000 transactions, and can be undone.
    void setHistoryBroken(bool broken);
    void setHistoryLong(bool many);
    void setReplayRefused(bool refused);
    // Makes the change logs of packages with the "waiting" attribute available.
    void letChangeLogsBeRead(bool readable = true);
    // Sets the text of the repository file. The script knows two repositories: "base" and "extras".
    void setRepos(const QByteArray& text);

    // An advisory, and a package "NAME-2-1.x86_64" for an advisory. obstacle: a value of Advisory::Obstacle.
    static QJsonArray advisory(const QString& id, bool security, const QList<QJsonArray>& packages);
    static QJsonArray advised(const QString& name, int obstacle);
    void setAdvisories(const QList<QJsonArray>& advisories);

    // From the next collection on, the script offers version locks. lines: from the names of locked packages
    // to their lines.
    void setVersionLocks(const QJsonObject& lines, const QString& fault = QString());
    void removeVersionLocks();

    // The methods called since the last forgetCalls(), in order. Some methods add a second entry with their
    // arguments, for example "enableRepo base". The second entry of "apply" has the names of the packages to
    // install, update and remove.
    QStringList calls() const;
    int calls(const QString& method) const;
    void forgetCalls();

    // The directory that is "/" of the managed system.
    QString root() const;

private:
    QString path(const char* relative) const;
    void setFlag(const char* name, bool on);

    QTemporaryDir directory;
};

#endif
