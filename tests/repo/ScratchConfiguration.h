// SPDX-License-Identifier: GPL-2.0-or-later

// The base class for tests of YumConfIO. Each test function gets a new configuration in its own managed root.
// A simulated user answers the message boxes; by default, the user presses Return.

#ifndef TESTS_REPO_SCRATCHCONFIGURATION_H
#define TESTS_REPO_SCRATCHCONFIGURATION_H

#include <QObject>
#include <QTemporaryDir>

#include <sys/types.h>

#include <memory>

#include "repo/YumConfIO.h"
#include "tests/support/AnsweringUser.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/Files.h"

class ScratchConfiguration : public QObject
{
    Q_OBJECT

protected:
    QString path(const QString& relative) const { return root->path() + QLatin1Char('/') + relative; }
    QString repoPath(const QString& name) const { return path(QStringLiteral("etc/yum.repos.d/")) + name; }
    QString mainPath() const { return path(QStringLiteral("etc/yum.conf")); }
    static void put(const QString& path, const QByteArray& contents) { Files::put(path, contents); }
    void putMain(const QByteArray& contents) const { put(mainPath(), contents); }
    void putRepo(const QString& name, const QByteArray& contents) const { put(repoPath(name), contents); }
    static QByteArray get(const QString& path) { return Files::get(path); }
    QByteArray getRepo(const QString& name) const { return get(repoPath(name)); }
    QStringList ids() const;
    Repo::Entry& entry(const QString& id);
    static Repo::Entry made(const QString& id);
    // The paths of all files below the managed root, with their contents.
    QMap<QString, QByteArray> snapshot() const;
    static mode_t modeOf(const QString& absolute);
    static void linkTo(const QString& target, const QString& link);
    static QString withErrno(const QString& message, int code);
    // Checks that the program has shown exactly one box, an error with this text. Then removes the box from
    // `user->seen`.
    void compareError(const QString& text);
    // Checks that the program has shown exactly one box, which asks whether to read these files again because
    // they have changed. Then removes the box from `user->seen`.
    void compareNothingIsWritten(const QStringList& paths);

    std::unique_ptr<QTemporaryDir> root;
    EnvironmentVariable managedRoot{"VYREROOT"};
    std::unique_ptr<AnsweringUser> user;
    std::unique_ptr<QWidget> window;
    QList<YumRepoEnabled> requests;
    QHash<QString, bool> session;
    std::unique_ptr<YumConfIO> conf;

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
};

// While an OrdinaryUser exists, the process has no root privileges, so that file permissions restrict the
// process.
class OrdinaryUser
{
public:
    OrdinaryUser();
    ~OrdinaryUser();
    Q_DISABLE_COPY(OrdinaryUser)

private:
    uid_t saved;
};

#endif
