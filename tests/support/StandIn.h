// A share directory whose script answers without a package manager: the tests say what it is to answer.
//
// The script reads what it has been told at each collection, and writes down which of its methods were
// called. One for each test program, made before anything that looks for the share directory; the environment
// keeps pointing to it.

#ifndef TESTS_SUPPORT_STANDIN_H
#define TESTS_SUPPORT_STANDIN_H

#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>
#include <QTemporaryDir>

class StandIn
{
public:
    // Takes the icons of the share directory that the environment names.
    StandIn();

    // The attributes of a package object; whatever is not given is the script's to fill in.
    static QJsonObject package(const QString& name, const QJsonObject& attributes = QJsonObject());
    static QJsonObject group(const QString& name, const QJsonObject& attributes = QJsonObject());

    // What the next collection finds. An update needs its installed version among the installed ones too.
    void setPackages(const QJsonArray& updates, const QJsonArray& installed, const QJsonArray& available,
                     const QJsonArray& groups = QJsonArray());

    // While held, neither a collection nor the loading of file lists gets on.
    void setHeld(bool held);
    // Whether the script refuses to be made into an object.
    void setRefusing(bool refuse);
    // Whether applying fails, before anything has been changed or half way through.
    void setFailing(bool fail);
    void setBreaking(bool doBreak);
    // Whether applying finds that another program has changed the system.
    void setOutdated(bool outdated);
    // Whether the next collections fail.
    void setUnreadable(bool unreadable);
    // Whether an error is logged by the next collections, which go on.
    void setComplaining(bool complaining);
    // Packages with the attribute "waiting" have no change log before.
    void letChangeLogsBeRead();
    // The text of the file of repositories, which the script knows two of: "base" and "extras".
    void setRepos(const QByteArray& text);

    // The methods called since the last forgetCalls(), in order; some tell of their arguments in an entry of
    // their own: "enableRepo base", "apply" with the names of those to install, update and remove.
    QStringList calls() const;
    int calls(const QString& method) const;
    void forgetCalls();

    // The directory that stands for "/" of the managed system.
    QString root() const;

private:
    QString path(const char* relative) const;
    void setFlag(const char* name, bool on);

    QTemporaryDir directory;
};

#endif
