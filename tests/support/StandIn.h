// SPDX-License-Identifier: GPL-2.0-or-later

// A share directory with a script that needs no package manager. The tests set the script's answers.
//
// The script reads an answer when the program asks for it, and records the calls of its methods.
//
// A test program has only one StandIn. Its constructor sets the environment variables VYRESHARE and VYREROOT,
// so the test must create the StandIn before any code looks for the share directory.

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
    // Links the icons of the real share directory, which VYRESHARE names before this call.
    StandIn();

    // An object with the attributes of a package or group. The script adds default values for missing
    // attributes.
    static QJsonObject package(const QString& name, const QJsonObject& attributes = QJsonObject());
    static QJsonObject group(const QString& name, const QJsonObject& attributes = QJsonObject());

    // Sets the packages for the next collection. The list of installed packages must also contain the
    // installed versions of the updates.
    void setPackages(const QJsonArray& updates, const QJsonArray& installed, const QJsonArray& available,
                     const QJsonArray& groups = QJsonArray());

    // Whether the script waits when it collects packages or advisories, loads file lists, reads the history,
    // locks versions or changes the system.
    void setHeld(bool held);
    // Whether the constructor of the script's class fails.
    void setRefusing(bool refuse);
    // Whether the script reports a restriction of this system: see restriction() of the stand-in.
    void setRestricted(bool restricted);
    // Whether apply() of the script fails before it changes the system.
    void setFailing(bool fail);
    // Whether apply() fails after it has begun to change the system.
    void setBreaking(bool doBreak);
    // Whether apply() waits until the user stops the operation. It waits before it changes the system.
    void setDownloading(bool downloading);
    // Whether apply() reports that another program has changed the system.
    void setOutdated(bool outdated);
    // The outcome that apply() and replay() report after they have begun to change the system. If the user
    // stops apply(), it reports this outcome too.
    void setOutcome(const QJsonObject& outcome);
    // Whether collections fail from now on.
    void setUnreadable(bool unreadable);
    // Whether the two repositories, "base" and "extras", fail in collections from now on. Each collection
    // then asks whether to continue without these repositories.
    void setLacking(bool lacking);
    // Whether collections from now on log an error, but succeed.
    void setComplaining(bool complaining);
    // The next collections leave out these repositories without a question.
    void setSkipped(const QStringList& repositories);
    // Whether the history cannot be read.
    void setHistoryBroken(bool broken);
    // Whether the history has 5,000 transactions.
    void setHistoryLong(bool many);
    // Whether the script refuses to undo and to repeat transactions.
    void setReplayRefused(bool refused);
    // If a package has the "waiting" attribute, the script returns its change log only while `readable` is
    // true.
    void letChangeLogsBeRead(bool readable = true);
    // Sets the contents of the repository file. The file does not change the repositories of the stand-in
    // script, which are always "base" and "extras".
    void setRepos(const QByteArray& text);

    // Returns an advisory for setAdvisories(). packages: results of advised().
    static QJsonArray advisory(const QString& id, bool security, const QList<QJsonArray>& packages);
    // Returns the package "NAME-2-1.x86_64" as an advisory names it. obstacle: a value of Advisory::Obstacle.
    static QJsonArray advised(const QString& name, int obstacle);
    // Sets the advisories that the script returns.
    void setAdvisories(const QList<QJsonArray>& advisories);

    // From the next collection on, the script offers version locks. lines: the names of the locked packages,
    // each with the lines of the lock list that lock this package. fault: the reason why the user cannot
    // change the locks, or an empty text.
    void setVersionLocks(const QJsonObject& lines, const QString& fault = QString());
    void removeVersionLocks();

    // The methods that have been called since the last forgetCalls(), in order. Some methods add a second
    // entry with their arguments, for example "enableRepo base". The second entry of "apply" names the
    // packages to install, update and remove.
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
