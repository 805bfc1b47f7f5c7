// A back end for the repository editor, a system root with repositories, and the user's hands.

#ifndef TESTS_REPO_EDITOR_H
#define TESTS_REPO_EDITOR_H

#include "yumio/YumIO.h"

#include <QDir>
#include <QFile>
#include <QMenu>
#include <QTimer>
#include <QtTest>

#include "app/base/Share.h"
#include "repo/YumConfIO.h"
#include "services/HProgressBar.h"
#include "tests/packagetable/StandIn.h"

// One for each test program: there is one interpreter in a process.
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

    // Puts a program into the share directory that writes its arguments down, one a line.
    void installBrowser()
    {
        put(Share::absolute(QStringLiteral("webbrowser")),
            "#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$0.part\" && mv \"$0.part\" \"$0.called\"\n");
        QFile::setPermissions(Share::absolute(QStringLiteral("webbrowser")),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QFile::remove(Share::absolute(QStringLiteral("webbrowser.called")));
    }
    // Waits for it; what it was started with.
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
    static void put(const QString& absolute, const QByteArray& contents)
    {
        QFile file(absolute);
        if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size()) {
            qFatal("cannot write %s", qPrintable(absolute));
        }
    }
    static QByteArray get(const QString& absolute)
    {
        QFile file(absolute);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(cannot be read)");
    }
    void putMain(const QByteArray& contents) const { put(path(QStringLiteral("/etc/yum.conf")), contents); }
    QString repoPath(const char* name) const
    {
        return path(QStringLiteral("/etc/yum.repos.d/")) + QLatin1String(name);
    }
    void putRepo(const char* name, const QByteArray& contents) const { put(repoPath(name), contents); }
    QByteArray getRepo(const char* name) const { return get(repoPath(name)); }
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

// Opens a menu and uses it; a menu that is still open then is closed. Returns whether one opened at all.
template <typename Open, typename Use> bool withMenu(Open open, Use use)
{
    bool opened = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&timer, &opened, &use] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (menu != nullptr) {
            timer.stop();
            opened = true;
            use(*menu);
            menu->close();
        }
    });
    timer.start(10);
    open(); // returns when the menu has been closed
    QTest::qWait(50);
    return opened;
}

inline QAction* actionOf(const QMenu& menu, const QString& text)
{
    for (QAction* action : menu.actions()) {
        if (action->text() == text) {
            return action;
        }
    }
    return nullptr;
}

// Chooses an entry of an open menu by the mouse.
inline void choose(QMenu& menu, const QString& text)
{
    QTest::mouseClick(&menu, Qt::LeftButton, Qt::NoModifier,
                      menu.actionGeometry(actionOf(menu, text)).center());
}

#endif
