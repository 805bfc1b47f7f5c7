#include <QtTest>

#include <memory>
#include <unistd.h>

#include "app/base/XdgRuntimeDirEnsurer.h"

namespace {

// Sets a variable of the environment for a scope; a null value unsets it.
class Variable
{
public:
    Variable(const char* variable, const QByteArray& value)
        : name(variable), wasSet(qEnvironmentVariableIsSet(variable)), before(qgetenv(variable))
    {
        put(!value.isNull(), value);
    }
    ~Variable() { put(wasSet, before); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    void put(bool set, const QByteArray& value)
    {
        if (set) {
            qputenv(name, value);
        } else {
            qunsetenv(name);
        }
    }

    const char* name;
    bool wasSet;
    QByteArray before;
};

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

    void existingSettingIsLeftAlone()
    {
        const QByteArray mine = QFile::encodeName(temporary->filePath("mine"));
        QVERIFY(QDir().mkdir(temporary->filePath("mine")));
        const Variable setting("XDG_RUNTIME_DIR", mine);
        const Variable base("TMPDIR", QFile::encodeName(temporary->path()));
        {
            const XdgRuntimeDirEnsurer ensurer;
            QCOMPARE(qgetenv("XDG_RUNTIME_DIR"), mine);
            QVERIFY(!QFileInfo::exists(runtimeDirectory()));
        }
        QVERIFY(QFileInfo::exists(temporary->filePath("mine")));
    }

    void directoryIsMadeBelowTMPDIR_data()
    {
        QTest::addColumn<QByteArray>("setting");
        QTest::newRow("unset") << QByteArray();
        QTest::newRow("empty") << QByteArray("");
    }

    void directoryIsMadeBelowTMPDIR()
    {
        QFETCH(QByteArray, setting);
        const Variable variable("XDG_RUNTIME_DIR", setting);
        const Variable base("TMPDIR", QFile::encodeName(temporary->path()));
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

    void directoryIsMadeBelowTmpByDefault_data()
    {
        QTest::addColumn<QByteArray>("tmpdir");
        QTest::newRow("TMPDIR unset") << QByteArray();
        QTest::newRow("TMPDIR empty") << QByteArray("");
    }

    void directoryIsMadeBelowTmpByDefault()
    {
        QFETCH(QByteArray, tmpdir);
        const QString expected = "/tmp/" + nameFor(geteuid());
        const Variable variable("XDG_RUNTIME_DIR", QByteArray());
        const Variable base("TMPDIR", tmpdir);
        {
            const XdgRuntimeDirEnsurer ensurer;
            QCOMPARE(QFile::decodeName(qgetenv("XDG_RUNTIME_DIR")), expected);
            QVERIFY(QFileInfo(expected).isDir());
        }
        QVERIFY(!QFileInfo::exists(expected));
    }

    void everythingInsideIsRemoved()
    {
        const Variable variable("XDG_RUNTIME_DIR", QByteArray());
        const Variable base("TMPDIR", QFile::encodeName(temporary->path()));
        {
            const XdgRuntimeDirEnsurer ensurer;
            QVERIFY(QDir().mkpath(runtimeDirectory() + "/a/b/c"));
            writeFile(runtimeDirectory() + "/file");
            writeFile(runtimeDirectory() + "/a/b/.hidden");
            QCOMPARE(mkfifo(QFile::encodeName(runtimeDirectory() + "/a/fifo"), 0600), 0);
        }
        QVERIFY(!QFileInfo::exists(runtimeDirectory()));
    }

    void linksAreRemovedAndNotFollowed()
    {
        const QString outside = temporary->filePath("outside");
        QVERIFY(QDir().mkdir(outside));
        writeFile(outside + "/kept");
        const Variable variable("XDG_RUNTIME_DIR", QByteArray());
        const Variable base("TMPDIR", QFile::encodeName(temporary->path()));
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

    void existingDirectoryIsUsedAndRemoved()
    {
        QVERIFY(QDir().mkdir(runtimeDirectory()));
        writeFile(runtimeDirectory() + "/left-over");
        const Variable variable("XDG_RUNTIME_DIR", QByteArray());
        const Variable base("TMPDIR", QFile::encodeName(temporary->path()));
        {
            const XdgRuntimeDirEnsurer ensurer;
            QCOMPARE(QFile::decodeName(qgetenv("XDG_RUNTIME_DIR")), runtimeDirectory());
            QVERIFY(QFileInfo::exists(runtimeDirectory() + "/left-over"));
        }
        QVERIFY(!QFileInfo::exists(runtimeDirectory()));
    }

    void directoryThatCannotBeMadeIsSetAllTheSame()
    {
        const QString missing = temporary->filePath("missing");
        const Variable variable("XDG_RUNTIME_DIR", QByteArray());
        const Variable base("TMPDIR", QFile::encodeName(missing));
        {
            const XdgRuntimeDirEnsurer ensurer;
            QCOMPARE(QFile::decodeName(qgetenv("XDG_RUNTIME_DIR")), missing + "/" + nameFor(geteuid()));
        }
        QVERIFY(!QFileInfo::exists(missing));
    }

    void longestPathFits_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<bool>("fits");
        QTest::newRow("fits") << 1023 << true;
        QTest::newRow("one byte more") << 1024 << false;
    }

    void longestPathFits()
    {
        QFETCH(int, length);
        QFETCH(bool, fits);
        // A shortened path would be that of another directory, which the end would then remove.
        const QString name = nameFor(geteuid());
        QString directory = temporary->path();
        const int wanted = length - 1 - name.size();
        while (directory.size() < wanted) {
            const int rest = wanted - directory.size() - 1;
            directory += '/' + QString(rest > 200 ? 100 : rest, 'd');
        }
        QCOMPARE(directory.size() + 1 + name.size(), length);
        QVERIFY(QDir().mkpath(directory));
        const Variable variable("XDG_RUNTIME_DIR", QByteArray());
        const Variable base("TMPDIR", QFile::encodeName(directory));
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
