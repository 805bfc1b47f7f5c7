// SPDX-License-Identifier: GPL-2.0-or-later

// A share directory whose script answers without a package manager. The tests set its answers.
//
// The script reads these answers at each collection, and records the calls of its methods.
//
// One object for each test program. It must exist before any code looks for the share directory, and it sets
// the environment variables VYRESHARE and VYREROOT.

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

    // The attributes of a package object. The script sets the missing attributes.
    static QJsonObject package(const QString& name, const QJsonObject& attributes = QJsonObject());
    static QJsonObject group(const QString& name, const QJsonObject& attributes = QJsonObject());

    // Sets the packages for the next collection. The installed version of an update must be in the list of
    // installed packages too.
    void setPackages(const QJsonArray& updates, const QJsonArray& installed, const QJsonArray& available,
                     const QJsonArray& groups = QJsonArray());

    // While this flag is set, collections, the loading of file lists and changes of the system wait.
    void setHeld(bool held);
    // Whether the constructor of the script's class fails.
    void setRefusing(bool refuse);
    // Whether an apply fails: before the first change, or half way.
    void setFailing(bool fail);
    void setBreaking(bool doBreak);
    // Whether an apply reports that another program has changed the system.
    void setOutdated(bool outdated);
    // Whether the next collections fail.
    void setUnreadable(bool unreadable);
    // Whether both repositories fail in the next collections, which ask whether to go on without them.
    void setLacking(bool lacking);
    // Whether the next collections log an error and continue.
    void setComplaining(bool complaining);
    // The history: whether it can be read, has 5,000 transactions, and can be undone.
    void setHistoryBroken(bool broken);
    void setHistoryLong(bool many);
    void setReplayRefused(bool refused);
    // Before this call, the change log of a package with the attribute "waiting" is not available.
    void letChangeLogsBeRead();
    // Sets the text of the repository file. The script knows two repositories: "base" and "extras".
    void setRepos(const QByteArray& text);

    // An advisory, and a package "NAME-2-1.x86_64" of it. The obstacle is a number of Advisory::Obstacle.
    static QJsonArray advisory(const QString& id, bool security, const QList<QJsonArray>& packages);
    static QJsonArray advised(const QString& name, int obstacle);
    void setAdvisories(const QList<QJsonArray>& advisories);

    // Offers version locks from the next collection on. lines: the keys are the names of the locked packages.
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
