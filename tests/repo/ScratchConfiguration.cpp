// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/repo/ScratchConfiguration.h"

#include <QDirIterator>
#include <QWidget>
#include <QtTest>

#include <cerrno>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

QStringList ScratchConfiguration::ids() const
{
    QStringList result;
    for (const Repo::Entry& each : qAsConst(conf->entries)) {
        result += each.id;
    }
    return result;
}

Repo::Entry& ScratchConfiguration::entry(const QString& id)
{
    for (Repo::Entry& each : conf->entries) {
        if (each.id == id) {
            return each;
        }
    }
    qFatal("the repository %s is missing", qPrintable(id));
}

Repo::Entry ScratchConfiguration::made(const QString& id)
{
    Repo::Entry result;
    result.id = id;
    return result;
}

QMap<QString, QByteArray> ScratchConfiguration::snapshot() const
{
    QMap<QString, QByteArray> result;
    QDirIterator files(root->path(), QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString file = files.next();
        result.insert(file, get(file));
    }
    return result;
}

mode_t ScratchConfiguration::modeOf(const QString& absolute)
{
    struct stat status;
    if (lstat(QFile::encodeName(absolute).constData(), &status) != 0) {
        qFatal("the file %s is missing", qPrintable(absolute));
    }
    return status.st_mode & 07777;
}

void ScratchConfiguration::linkTo(const QString& target, const QString& link)
{
    if (!QFile::link(target, link)) {
        qFatal("cannot link %s", qPrintable(link));
    }
}

QString ScratchConfiguration::withErrno(const QString& message, int code)
{
    return message + QStringLiteral("; errno = %1 (%2).")
                         .arg(QString::number(code), QString::fromLocal8Bit(std::strerror(code)));
}

void ScratchConfiguration::compareError(const QString& text)
{
    QCOMPARE(user->seen.size(), 1);
    const ShownBox box = user->seen.takeFirst();
    QCOMPARE(box.title, QStringLiteral("VYRE Repository Editor Error"));
    QCOMPARE(box.text, text);
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(box.labelFormat, Qt::PlainText);
    QCOMPARE(box.parent, window.get());
}

void ScratchConfiguration::compareNothingIsWritten(const QStringList& paths)
{
    QCOMPARE(user->seen.size(), 1);
    const ShownBox box = user->seen.takeFirst();
    QCOMPARE(box.title, QStringLiteral("Repository Editor"));
    QCOMPARE(box.text,
             QStringLiteral("VYRE has written nothing: other programs have created or changed these files "
                            "since VYRE last read the configuration, or VYRE cannot edit them.\n") +
                 paths.join(QLatin1Char('\n')) +
                 QStringLiteral("\nRead all files again, and lose your changes?"));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.buttons, QMessageBox::Yes | QMessageBox::No);
    QCOMPARE(box.defaultButton, QMessageBox::No);
    QCOMPARE(box.escapeButton, QMessageBox::No);
    QCOMPARE(box.labelFormat, Qt::PlainText);
    QCOMPARE(box.parent, window.get());
}

void ScratchConfiguration::initTestCase()
{
    umask(022);
}

void ScratchConfiguration::init()
{
    root = std::make_unique<QTemporaryDir>(Files::scratchTemplate());
    QVERIFY(root->isValid());
    managedRoot.set(QFile::encodeName(root->path()));
    QVERIFY(QDir(root->path()).mkpath(QStringLiteral("etc/yum.repos.d")));
    putMain("[main]\n");
    user = std::make_unique<AnsweringUser>();
    window = std::make_unique<QWidget>();
    window->show();
    requests.clear();
    session.clear();
    conf = std::make_unique<YumConfIO>(requests, session);
}

void ScratchConfiguration::cleanup()
{
    // Each test removes the message boxes that it has checked from the list, so a remaining box is
    // unexpected.
    QCOMPARE(user->seen.size(), 0);
}

OrdinaryUser::OrdinaryUser() : saved(geteuid())
{
    if (saved == 0 && seteuid(65534) != 0) {
        qFatal("seteuid: %s", std::strerror(errno));
    }
}

OrdinaryUser::~OrdinaryUser()
{
    if (seteuid(saved) != 0) {
        qFatal("seteuid: %s", std::strerror(errno));
    }
}
