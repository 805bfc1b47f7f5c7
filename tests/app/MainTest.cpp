// SPDX-License-Identifier: GPL-2.0-or-later

// Tests of the program from its start to its end. A stand-in script replaces the package manager.

#include <QtTest>
#include <QtWidgets>

#include <functional>
#include <memory>
#include <unistd.h>

#include "tests/support/StandIn.h"

class MainTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<StandIn> standIn;
    std::unique_ptr<QTemporaryDir> temporary;
    qint64 processId = 0; // of the program that startAndQuit() runs

    QString runtimeName() const { return QStringLiteral("xdg_runtime.%1").arg(geteuid()); }

    // Starts the program without XDG_RUNTIME_DIR, and waits until it has collected the packages. Then calls
    // meanwhile(), and quits the program as a user does. If tmpdir is null, TMPDIR is not set. redirections:
    // shell redirections for the program. Returns -1 if a step fails.
    int startAndQuit(const QByteArray& tmpdir, const QStringList& arguments,
                     const std::function<void()>& meanwhile, const QString& redirections = QString())
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove("XDG_RUNTIME_DIR");
        environment.remove("TMPDIR");
        environment.insert("XDG_CONFIG_HOME", temporary->path());
        if (!tmpdir.isNull()) {
            environment.insert("TMPDIR", QFile::decodeName(tmpdir));
        }
        standIn->forgetCalls();
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedChannels);
        process.setProcessEnvironment(environment);
        process.start("/bin/sh", QStringList{"-c", "exec \"$0\" \"$@\" " + redirections, VYRE} + arguments);
        processId = process.processId();
        if (!QTest::qWaitFor([this] { return standIn->calls("collectDone") == 1; }, 30000)) {
            process.kill();
            process.waitForFinished();
            return -1;
        }
        meanwhile();
        // While the program works, it ignores Ctrl+Q. Therefore the test presses Ctrl+Q until the program
        // ends.
        for (int i = 0; i < 100 && process.state() == QProcess::Running; ++i) {
            // Activate the window and press the keys in two commands: if the window closed in the middle of a
            // joint command, xdotool would never release the keys.
            if (QProcess::execute("xdotool", {"search", "--onlyvisible", "--name", "^VYRE - ",
                                              "windowactivate", "--sync"}) == 0) {
                QProcess::execute("xdotool", {"key", "ctrl+q"});
            }
            process.waitForFinished(200);
        }
        if (process.state() != QProcess::NotRunning || process.exitStatus() != QProcess::NormalExit) {
            process.kill();
            process.waitForFinished();
            return -1;
        }
        return process.exitCode();
    }

private Q_SLOTS:
    void init()
    {
        temporary = std::make_unique<QTemporaryDir>();
        QVERIFY(temporary->isValid());
        if (standIn == nullptr) {
            standIn = std::make_unique<StandIn>();
        }
    }

    void theRuntimeDirectoryExistsOnlyWhileTheProgramRuns()
    {
        const QString directory = "/tmp/" + runtimeName();
        bool wasThere = false;
        QCOMPARE(startAndQuit(QByteArray(), {}, [&] { wasThere = QFileInfo(directory).isDir(); }), 0);
        QVERIFY(wasThere);
        QVERIFY(!QFileInfo::exists(directory));
    }

    void theProgramCreatesItsRuntimeDirectoryInTMPDIR()
    {
        const QString directory = temporary->filePath(runtimeName());
        bool wasThere = false;
        QCOMPARE(startAndQuit(QFile::encodeName(temporary->path()), {},
                              [&] { wasThere = QFileInfo(directory).isDir(); }),
                 0);
        QVERIFY(wasThere);
        QVERIFY(!QFileInfo::exists(directory));
    }

    void theRuntimeDirectoryIsNotRemovedIfTheHelpOptionEndsTheProgram()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove("XDG_RUNTIME_DIR");
        environment.insert("TMPDIR", temporary->path());
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(VYRE), {"--help"});
        QVERIFY(process.waitForFinished(60000));
        QCOMPARE(process.exitCode(), 1);
        QVERIFY(QFileInfo(temporary->filePath(runtimeName())).isDir());
    }

    void theProgramStartsEvenIfTheStandardDescriptorsAreClosed_data()
    {
        QTest::addColumn<QString>("closed");
        for (const char* closed : {"0", "1", "2", "01", "02", "12", "012"}) {
            QTest::newRow(closed) << closed;
        }
    }

    void theProgramStartsEvenIfTheStandardDescriptorsAreClosed()
    {
        QFETCH(QString, closed);
        QString redirections;
        for (const QChar& fd : closed) {
            redirections += QStringLiteral("%1>&- ").arg(fd);
        }
        QStringList leadTo;
        QCOMPARE(startAndQuit(
                     QFile::encodeName(temporary->path()), {},
                     [&] {
                         for (int fd = 0; fd <= 2; ++fd) {
                             leadTo << QFile::symLinkTarget(
                                 QStringLiteral("/proc/%1/fd/%2").arg(processId).arg(fd));
                         }
                     },
                     redirections),
                 0);
        for (const QChar& fd : closed) {
            QCOMPARE(leadTo[fd.digitValue()], QStringLiteral("/dev/null"));
        }
    }

    void theProgramPrintsOneMessageIfNoDisplayCanBeOpened_data()
    {
        QTest::addColumn<QString>("display");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("message");
        const QByteArray unset("vyre: there is no X display: DISPLAY is not set\n");
        const QByteArray missing(
            "vyre: the X display :987654 cannot be opened: no server answers there, or it "
            "does not let this user in\n");
        QTest::newRow("DISPLAY is not set") << QString() << QStringList() << unset;
        QTest::newRow("no server at DISPLAY") << ":987654" << QStringList() << missing;
        QTest::newRow("no server at the -display option")
            << qEnvironmentVariable("DISPLAY") << QStringList{"-display", ":987654"} << missing;
        QTest::newRow("--help, DISPLAY is not set") << QString() << QStringList{"-g", "--help"} << unset;
        QTest::newRow("-h, no server at DISPLAY") << ":987654" << QStringList{"-h"} << missing;
    }

    void theProgramPrintsOneMessageIfNoDisplayCanBeOpened()
    {
        QFETCH(QString, display);
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, message);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove("DISPLAY");
        if (!display.isEmpty()) {
            environment.insert("DISPLAY", display);
        }
        const bool help = !arguments.filter(QRegExp("^-(h|-help)$")).isEmpty();
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(VYRE), arguments);
        QVERIFY(process.waitForFinished(60000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 1);
        QCOMPARE(process.readAllStandardError(), message);
        const QByteArray output = process.readAllStandardOutput();
        QCOMPARE(output.startsWith("usage: vyre [options...]\n"), help);
        QCOMPARE(output.contains("           --enablerepo=r   enable the specified repository, r\n"), help);
        QCOMPARE(output.isEmpty(), !help);
    }

    void anUnknownPlatformEndsTheProgramWithTheMessageOfQt()
    {
        QProcess process;
        process.start(QStringLiteral(VYRE), {"-platform", "nosuch"});
        QVERIFY(process.waitForFinished(60000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 1);
        const QByteArray message = process.readAllStandardError();
        QVERIFY2(message.startsWith("vyre: "), message);
        QVERIFY2(message.contains("\"nosuch\""), message);
        QVERIFY2(!message.contains("display"), message);
    }

    void theProgramWritesTheWarningsOfQtToStandardErrorAfterASuccessfulStart()
    {
        // No session manager exists at this address.
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("SESSION_MANAGER", "local/nowhere:/tmp/no-session-manager");
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(VYRE), {"--help"});
        QVERIFY(process.waitForFinished(60000));
        QCOMPARE(process.exitCode(), 1);
        const QByteArray message = process.readAllStandardError();
        QVERIFY2(message.contains("vyre: Qt: Session management error"), message);
        QVERIFY(process.readAllStandardOutput().startsWith("usage: vyre "));
    }

    void theMainWindowHasATitleAndAnIcon()
    {
        QByteArray properties;
        QCOMPARE(startAndQuit(
                     QFile::encodeName(temporary->path()), {},
                     [&] {
                         // The window manager decides when the window appears, so look for it repeatedly.
                         for (int i = 0; i < 100 && !properties.contains("VYRE - "); ++i) {
                             QTest::qWait(100);
                             QProcess tool;
                             tool.start("sh",
                                        {"-c", "xprop -id $(xdotool search --onlyvisible --name '^VYRE - ') "
                                               "WM_NAME _NET_WM_ICON | cut -c 1-200"});
                             tool.waitForFinished();
                             properties = tool.readAll();
                         }
                     }),
                 0);
        QVERIFY2(properties.contains("WM_NAME"), properties);
        QVERIFY2(properties.contains("\"VYRE - "), properties);
        const QSize size = QIcon(QFile::decodeName(qgetenv("VYRESHARE")) + "/pixmaps/vyre.icon.png")
                               .availableSizes()
                               .value(0);
        QVERIFY(!size.isEmpty());
        QVERIFY2(properties.contains("_NET_WM_ICON(CARDINAL)"), properties);
    }

    void optionsOfQtCanBeCombinedWithOptionsOfVyre()
    {
        QCOMPARE(startAndQuit(QFile::encodeName(temporary->path()), {"-style=windows", "-l", "-g"}, [] {}),
                 0);
    }
};

QTEST_MAIN(MainTest)
#include "MainTest.moc"
