// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <atomic>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "app/base/XdgRuntimeDirEnsurer.h"
#include "tests/support/EnvironmentVariable.h"

namespace {

void writeFile(const QString& path)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write("contents"), qint64(8));
}

QString nameFor(uid_t user)
{
    return QStringLiteral("xdg_runtime.%1").arg(user);
}

} // namespace

class XdgRuntimeDirEnsurerTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> temporary;

    QString runtimeDirectory() const { return temporary->filePath(nameFor(geteuid())); }

private Q_SLOTS:
    void init()
    {
        temporary = std::make_unique<QTemporaryDir>();
        QVERIFY(temporary->isValid());
    }

    void aGivenValueOfXdgRuntimeDirIsNotChanged()
    {
        const QByteArray mine = QFile::encodeName(temporary->filePath("mine"));
        QVERIFY(QDir().mkdir(temporary->filePath("mine")));
        const EnvironmentVariable setting("XDG_RUNTIME_DIR", mine);
        const EnvironmentVariable base("TMPDIR", QFile::encodeName(temporary->path()));
        {
            const XdgRuntimeDirEnsurer ensurer;
            QCOMPARE(qgetenv("XDG_RUNTIME_DIR"), mine);
            QVERIFY(!QFileInfo::exists(runtimeDirectory()));
        }
        QVERIFY(QFileInfo::exists(temporary->filePath("mine")));
    }

    void theRuntimeDirectoryIsCreatedInTMPDIR_data()
    {
        QTest::addColumn<QByteArray>("setting");
        QTest::newRow("XDG_RUNTIME_DIR unset") << QByteArray();
        QTest::newRow("XDG_RUNTIME_DIR empty") << QByteArray("");
    }

    void theRuntimeDirectoryIsCreatedInTMPDIR()
    {
        QFETCH(QByteArray, setting);
        const EnvironmentVariable variable("XDG_RUNTIME_DIR", setting);
        const EnvironmentVariable base("TMPDIR", QFile::encodeName(temporary->path()));
        {
            const XdgRuntimeDirEnsurer ensurer;
            QCOMPARE(QFile::decodeName(qgetenv("XDG_RUNTIME_DIR")), runtimeDirectory());
            struct stat status;
            QCOMPARE(stat(QFile::encodeName(runtimeDirectory()), &status), 0);
            QVERIFY(S_ISDIR(status.st_mode));
            QCOMPARE(int(status.st_mode & 07777), 0700);
        }
        QVERIFY(!QFileInfo::exists(runtimeDirectory()));
    }

    void theRuntimeDirectoryIsCreatedInTmpIfTMPDIRIsNotSet_data()
    {
        QTest::addColumn<QByteArray>("tmpdir");
        QTest::newRow("TMPDIR unset") << QByteArray();
        QTest::newRow("TMPDIR empty") << QByteArray("");
    }

    void theRuntimeDirectoryIsCreatedInTmpIfTMPDIRIsNotSet()
    {
        QFETCH(QByteArray, tmpdir);
        const QString expected = "/tmp/" + nameFor(geteuid());
        const EnvironmentVariable variable("XDG_RUNTIME_DIR", QByteArray());
        const EnvironmentVariable base("TMPDIR", tmpdir);
        {
            const XdgRuntimeDirEnsurer ensurer;
            QCOMPARE(QFile::decodeName(qgetenv("XDG_RUNTIME_DIR")), expected);
            QVERIFY(QFileInfo(expected).isDir());
        }
        QVERIFY(!QFileInfo::exists(expected));
    }

    void theDestructorRemovesTheDirectoryWithItsContents()
    {
        const EnvironmentVariable variable("XDG_RUNTIME_DIR", QByteArray());
        const EnvironmentVariable base("TMPDIR", QFile::encodeName(temporary->path()));
        {
            const XdgRuntimeDirEnsurer ensurer;
            QVERIFY(QDir().mkpath(runtimeDirectory() + "/a/b/c"));
            writeFile(runtimeDirectory() + "/file");
            writeFile(runtimeDirectory() + "/a/b/.hidden");
            QCOMPARE(mkfifo(QFile::encodeName(runtimeDirectory() + "/a/fifo"), 0600), 0);
        }
        QVERIFY(!QFileInfo::exists(runtimeDirectory()));
    }

    void theRemovalDeletesLinksButNotTheirTargets()
    {
        const QString outside = temporary->filePath("outside");
        QVERIFY(QDir().mkdir(outside));
        writeFile(outside + "/kept");
        const EnvironmentVariable variable("XDG_RUNTIME_DIR", QByteArray());
        const EnvironmentVariable base("TMPDIR", QFile::encodeName(temporary->path()));
        {
            const XdgRuntimeDirEnsurer ensurer;
            QVERIFY(QFile::link(outside, runtimeDirectory() + "/to-directory"));
            QVERIFY(QFile::link(outside + "/kept", runtimeDirectory() + "/to-file"));
            QVERIFY(QFile::link(temporary->filePath("nowhere"), runtimeDirectory() + "/dangling"));
            QVERIFY(QFile::link(runtimeDirectory(), runtimeDirectory() + "/cycle"));
        }
        QVERIFY(!QFileInfo::exists(runtimeDirectory()));
        QFile kept(outside + "/kept");
        QVERIFY(kept.open(QIODevice::ReadOnly));
        QCOMPARE(kept.readAll(), QByteArray("contents"));
    }

    void anExistingPrivateDirectoryIsUsedAndThenRemoved()
    {
        QCOMPARE(mkdir(QFile::encodeName(runtimeDirectory()), 0700), 0);
        writeFile(runtimeDirectory() + "/left-over");
        const EnvironmentVariable variable("XDG_RUNTIME_DIR", QByteArray());
        const EnvironmentVariable base("TMPDIR", QFile::encodeName(temporary->path()));
        {
            const XdgRuntimeDirEnsurer ensurer;
            QCOMPARE(QFile::decodeName(qgetenv("XDG_RUNTIME_DIR")), runtimeDirectory());
            QVERIFY(QFileInfo::exists(runtimeDirectory() + "/left-over"));
        }
        QVERIFY(!QFileInfo::exists(runtimeDirectory()));
    }

    void anExistingFileOrUnsafeDirectoryIsNotUsed_data()
    {
        QTest::addColumn<QString>("what");
        for (const char* what :
             {"other mode", "other user", "link to a directory", "dangling link", "file", "fifo"}) {
            QTest::newRow(what) << what;
        }
    }

    void anExistingFileOrUnsafeDirectoryIsNotUsed()
    {
        QFETCH(QString, what);
        const QByteArray path = QFile::encodeName(runtimeDirectory());
        const QString outside = temporary->filePath("outside");
        QCOMPARE(mkdir(QFile::encodeName(outside), 0700), 0);
        if (what == "link to a directory") {
            QVERIFY(QFile::link(outside, runtimeDirectory()));
        } else if (what == "dangling link") {
            QVERIFY(QFile::link(temporary->filePath("nowhere"), runtimeDirectory()));
        } else if (what == "file") {
            writeFile(runtimeDirectory());
        } else if (what == "fifo") {
            QCOMPARE(mkfifo(path, 0600), 0);
        } else {
            QCOMPARE(mkdir(path, what == "other mode" ? 0750 : 0700), 0);
            writeFile(runtimeDirectory() + "/kept");
            if (what == "other user") {
                if (chown(path, 65534, 65534) != 0) {
                    QSKIP("only root can change the owner of a directory");
                }
            }
        }
        writeFile(outside + "/kept");
        const EnvironmentVariable variable("XDG_RUNTIME_DIR", QByteArray());
        const EnvironmentVariable base("TMPDIR", QFile::encodeName(temporary->path()));
        QString used;
        {
            const XdgRuntimeDirEnsurer ensurer;
            used = QFile::decodeName(qgetenv("XDG_RUNTIME_DIR"));
            QVERIFY2(QRegExp(QRegExp::escape(runtimeDirectory()) + "\\.[A-Za-z0-9]{6}").exactMatch(used),
                     qPrintable(used));
            struct stat status;
            QCOMPARE(lstat(QFile::encodeName(used), &status), 0);
            QVERIFY(S_ISDIR(status.st_mode));
            QCOMPARE(int(status.st_mode & 07777), 0700);
            QCOMPARE(status.st_uid, geteuid());
            writeFile(used + "/file");
        }
        QVERIFY(!QFileInfo::exists(used));
        struct stat status;
        QCOMPARE(lstat(path, &status), 0);
        QVERIFY(QFileInfo::exists(outside + "/kept"));
        if (S_ISDIR(status.st_mode)) {
            QVERIFY(QFileInfo::exists(runtimeDirectory() + "/kept"));
        }
    }

    void theDestructorClosesTheDescriptorsOfTheDirectory()
    {
        QCOMPARE(mkdir(QFile::encodeName(runtimeDirectory()), 0750), 0);
        const EnvironmentVariable variable("XDG_RUNTIME_DIR", QByteArray());
        const EnvironmentVariable base("TMPDIR", QFile::encodeName(temporary->path()));
        const QDir descriptors("/proc/self/fd");
        const QDir::Filters all = QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot;
        const int before = descriptors.entryList(all).size();
        {
            const XdgRuntimeDirEnsurer ensurer;
            // The object holds two descriptors: for the directory, and for its parent directory.
            QCOMPARE(descriptors.entryList(all).size(), before + 2);
        }
        QCOMPARE(descriptors.entryList(all).size(), before);
    }

    void theModeOfTheDirectoryDoesNotDependOnTheUmask()
    {
        const EnvironmentVariable variable("XDG_RUNTIME_DIR", QByteArray());
        const EnvironmentVariable base("TMPDIR", QFile::encodeName(temporary->path()));
        const mode_t before = umask(0777);
        {
            const XdgRuntimeDirEnsurer ensurer;
            struct stat status;
            QCOMPARE(stat(QFile::encodeName(runtimeDirectory()), &status), 0);
            QCOMPARE(int(status.st_mode & 07777), 0700);
        }
        QCOMPARE(umask(before), mode_t(0777));
    }

    void aLinkThatIsCreatedDuringTheRemovalIsNotFollowed()
    {
        const QString outside = temporary->filePath("outside");
        const QByteArray link = QFile::encodeName(temporary->filePath("link"));
        const QByteArray inside = QFile::encodeName(runtimeDirectory() + "/inside");
        QVERIFY(QDir().mkdir(outside));
        QVERIFY(QFile::link(outside, temporary->filePath("link")));
        const int count = 300;
        for (int i = 0; i < count; ++i) {
            writeFile(outside + QStringLiteral("/%1").arg(i));
        }
        const EnvironmentVariable base("TMPDIR", QFile::encodeName(temporary->path()));
        for (int round = 0; round < 20; ++round) {
            const EnvironmentVariable variable("XDG_RUNTIME_DIR", QByteArray());
            std::atomic<bool> ended(false);
            std::thread other;
            {
                const XdgRuntimeDirEnsurer ensurer;
                QVERIFY(QDir().mkdir(QFile::decodeName(inside)));
                for (int i = 0; i < count; ++i) {
                    writeFile(QFile::decodeName(inside) + QStringLiteral("/%1").arg(i));
                }
                other = std::thread([&] {
                    while (!ended) {
                        renameat2(AT_FDCWD, inside, AT_FDCWD, link, RENAME_EXCHANGE);
                    }
                });
            }
            ended = true;
            other.join();
            QCOMPARE(QDir(outside).entryList(QDir::Files).size(), count);
            // Clean up the files and directories that the test has exchanged.
            QProcess::execute("rm", {"-rf", QFile::decodeName(link), runtimeDirectory()});
            QVERIFY(QFile::link(outside, temporary->filePath("link")));
        }
    }

    void theRemovalKeepsTheContentsOfMountedFileSystems()
    {
        if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
            QSKIP("only root can mount, and only where \"/\" is a mount point");
        }
        const QString outside = temporary->filePath("outside");
        QVERIFY(QDir().mkdir(outside));
        writeFile(outside + "/kept");
        const EnvironmentVariable variable("XDG_RUNTIME_DIR", QByteArray());
        const EnvironmentVariable base("TMPDIR", QFile::encodeName(temporary->path()));
        const QByteArray once = QFile::encodeName(runtimeDirectory() + "/once");
        const QByteArray again = QFile::encodeName(runtimeDirectory() + "/again");
        {
            const XdgRuntimeDirEnsurer ensurer;
            QVERIFY(QDir().mkdir(QFile::decodeName(once)));
            QVERIFY(QDir().mkdir(QFile::decodeName(again)));
            QVERIFY(QDir().mkpath(runtimeDirectory() + "/removed/deep"));
            QCOMPARE(mount("none", once, "tmpfs", 0, nullptr), 0);
            writeFile(QFile::decodeName(once) + "/kept");
            QCOMPARE(mount(QFile::encodeName(outside), again, nullptr, MS_BIND, nullptr), 0);
        }
        QVERIFY(QFileInfo::exists(QFile::decodeName(once) + "/kept"));
        QVERIFY(QFileInfo::exists(outside + "/kept"));
        QVERIFY(!QFileInfo::exists(runtimeDirectory() + "/removed"));
        QCOMPARE(umount(once), 0);
        QCOMPARE(umount(again), 0);
    }

    void theEnvironmentVariableIsSetEvenIfTheDirectoryCannotBeCreated()
    {
        const QString missing = temporary->filePath("missing");
        const EnvironmentVariable variable("XDG_RUNTIME_DIR", QByteArray());
        const EnvironmentVariable base("TMPDIR", QFile::encodeName(missing));
        {
            const XdgRuntimeDirEnsurer ensurer;
            QCOMPARE(QFile::decodeName(qgetenv("XDG_RUNTIME_DIR")), missing + "/" + nameFor(geteuid()));
        }
        QVERIFY(!QFileInfo::exists(missing));
    }

    void onlyAPathWithinTheLengthLimitIsUsed_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<bool>("fits");
        QTest::newRow("fits") << 1023 << true;
        QTest::newRow("one byte more") << 1024 << false;
    }

    void onlyAPathWithinTheLengthLimitIsUsed()
    {
        QFETCH(int, length);
        QFETCH(bool, fits);
        // A truncated path would name another directory, which the destructor would then remove.
        const QString name = nameFor(geteuid());
        QString directory = temporary->path();
        const int wanted = length - 1 - name.size();
        while (directory.size() < wanted) {
            const int rest = wanted - directory.size() - 1;
            directory += '/' + QString(rest > 200 ? 100 : rest, 'd');
        }
        QCOMPARE(directory.size() + 1 + name.size(), length);
        QVERIFY(QDir().mkpath(directory));
        const EnvironmentVariable variable("XDG_RUNTIME_DIR", QByteArray());
        const EnvironmentVariable base("TMPDIR", QFile::encodeName(directory));
        {
            const XdgRuntimeDirEnsurer ensurer;
            QCOMPARE(QFile::decodeName(qgetenv("XDG_RUNTIME_DIR")),
                     fits ? directory + '/' + name : QString());
            QCOMPARE(QFileInfo::exists(directory + '/' + name), fits);
        }
        QCOMPARE(QDir(directory).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
    }
};

QTEST_GUILESS_MAIN(XdgRuntimeDirEnsurerTest)
#include "XdgRuntimeDirEnsurerTest.moc"
