// SPDX-License-Identifier: GPL-2.0-or-later

// The surroundings of the repository editor: a stand-in for the back end, a system root with repositories,
// and a stand-in for the browser.

#ifndef TESTS_REPO_EDITOR_H
#define TESTS_REPO_EDITOR_H

#include "yumio/YumIO.h"

#include <QDir>
#include <QFile>
#include <QtTest>

#include "app/base/Share.h"
#include "repo/YumConfIO.h"
#include "services/HProgressBar.h"
#include "tests/support/Files.h"
#include "tests/support/StandIn.h"

// A process has only one Python interpreter, so a test program can have only one BackEnd.
class BackEnd
{
public:
    BackEnd()
    {
        yumIO.setup(&window, &totalBar, &itemBar);
        if (!yumIO.initialize()) {
            qFatal("the stand-in does not start");
        }
    }
    ~BackEnd() { yumIO.clearEntriesBeforeQuit(); }

    void collect(int packages)
    {
        QJsonArray available;
        for (int i = 0; i < packages; ++i) {
            available.append(StandIn::package(QStringLiteral("package%1").arg(i)));
        }
        standIn.setPackages({}, {}, available);
        yumIO.clearEntries();
        if (!yumIO.collect({}) || yumIO.count() != packages) {
            qFatal("the stand-in does not collect");
        }
    }

    // Installs a stand-in for the browser in the share directory. This stand-in records its arguments, one in
    // each line.
    void installBrowser()
    {
        Files::put(Share::absolute(QStringLiteral("webbrowser")),
                   "#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$0.part\" && mv \"$0.part\" \"$0.called\"\n");
        QFile::setPermissions(Share::absolute(QStringLiteral("webbrowser")),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QFile::remove(Share::absolute(QStringLiteral("webbrowser.called")));
    }
    // Waits until the browser has recorded its arguments, and returns these arguments.
    static QStringList browsed()
    {
        QFile called(Share::absolute(QStringLiteral("webbrowser.called")));
        if (!QTest::qWaitFor([&called] { return called.exists(); }) || !called.open(QIODevice::ReadOnly)) {
            return {QStringLiteral("(not started)")};
        }
        QStringList lines = QString::fromUtf8(called.readAll()).split(QLatin1Char('\n'));
        lines.removeLast();
        called.remove();
        return lines;
    }
    static bool wasBrowsed() { return QFile::exists(Share::absolute(QStringLiteral("webbrowser.called"))); }

    QString path(const QString& inRoot) const { return standIn.root() + inRoot; }
    void putMain(const QByteArray& contents) const
    {
        Files::put(path(QStringLiteral("/etc/yum.conf")), contents);
    }
    QString repoPath(const char* name) const
    {
        return path(QStringLiteral("/etc/yum.repos.d/")) + QLatin1String(name);
    }
    void putRepo(const char* name, const QByteArray& contents) const { Files::put(repoPath(name), contents); }
    QByteArray getRepo(const char* name) const { return Files::get(repoPath(name)); }
    void removeRepos() const
    {
        QDir directory(path(QStringLiteral("/etc/yum.repos.d")));
        for (const QString& name :
             directory.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System)) {
            QFile::remove(directory.filePath(name));
            directory.rmdir(name);
        }
    }

    StandIn standIn;
    QWidget window;
    HProgressBar totalBar;
    HProgressBar itemBar;
    YumIO yumIO;
};

#endif
