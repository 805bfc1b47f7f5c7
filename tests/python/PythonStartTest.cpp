// SPDX-License-Identifier: GPL-2.0-or-later

// Tests of the start and the end of the interpreter. No interpreter runs when a test function begins.

#include <QtTest>

#include <csignal>
#include <memory>

#include "python/YumIOC.h"
#include "tests/python/RecordingPython.h"

namespace {

void writeFile(const QString& path, const QByteArray& contents)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(contents), qint64(contents.size()));
}

QString handlerOfSIGINT()
{
    struct sigaction action;
    sigaction(SIGINT, nullptr, &action);
    return action.sa_handler == SIG_DFL ? QStringLiteral("default") : QStringLiteral("other");
}

} // namespace

class PythonStartTest : public QObject
{
    Q_OBJECT

private:
    // Starts an interpreter. When initialize() then imports __main__, this interpreter runs the given
    // statement.
    void startWithHookOnImportOfMain(const char* statement)
    {
        Py_Initialize();
        const QByteArray hook = QByteArray("import builtins, sys\n"
                                           "genuine_import = builtins.__import__\n"
                                           "def hooked_import(name, *rest, **more):\n"
                                           "    if name == '__main__':\n"
                                           "        ") +
                                statement +
                                "\n"
                                "    return genuine_import(name, *rest, **more)\n"
                                "builtins.__import__ = hooked_import\n";
        QCOMPARE(PyRun_SimpleString(hook.constData()), 0);
    }

    // The lines that interpreter-report prints in this environment; no lines if interpreter-report fails.
    QStringList report(const QProcessEnvironment& environment)
    {
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(INTERPRETER_REPORT), QStringList());
        if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit ||
            process.exitCode() != 0) {
            qWarning() << process.readAllStandardError();
            return QStringList();
        }
        return QString::fromUtf8(process.readAllStandardOutput()).split('\n');
    }

    QProcessEnvironment plainEnvironment()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(QStringLiteral("PYTHONHOME"));
        environment.remove(QStringLiteral("PYTHONPATH"));
        environment.insert(QStringLiteral("PATH"), QStringLiteral("/usr/bin:/bin"));
        return environment;
    }

private Q_SLOTS:
    void init()
    {
        // The test framework handles these signals, and the interpreter keeps existing handlers. The default
        // actions let the interpreter set handlers of its own.
        std::signal(SIGINT, SIG_DFL);
        std::signal(SIGPIPE, SIG_DFL);
        QVERIFY(!Python::initialized);
        QVERIFY(Python::main_dict == nullptr);
        QVERIFY(!Py_IsInitialized());
    }

    void theInterpreterLockIsHeldAfterACallOfInitialize()
    {
        RecordingPython python;
        QVERIFY(python.initialize());
        QVERIFY(Python::initialized);
        QCOMPARE(PyGILState_Check(), 1);
        QCOMPARE(python.text("__name__"), QStringLiteral("__main__"));
        QVERIFY(Python::main_dict == PyModule_GetDict(PyImport_AddModule("__main__")));
        QVERIFY(python.takeErrors().isEmpty());
    }

    void theInterruptHandlerOfTheInterpreterCanBeDisabledAndEnabled()
    {
        RecordingPython python;
        QVERIFY(python.initialize());
        QCOMPARE(handlerOfSIGINT(), QStringLiteral("other"));
        QCOMPARE(python.text("defaultSigIntSigaction is signal.default_int_handler"), QStringLiteral("True"));
        python.setEnablePythonSIGINTHandler(false);
        QCOMPARE(handlerOfSIGINT(), QStringLiteral("default"));
        python.setEnablePythonSIGINTHandler(true);
        QCOMPARE(handlerOfSIGINT(), QStringLiteral("other"));
        QCOMPARE(python.text("signal.getsignal(signal.SIGINT) is defaultSigIntSigaction"),
                 QStringLiteral("True"));
    }

    void theProgramContinuesIfPythonCodeWritesToABrokenPipe()
    {
        RecordingPython python;
        QVERIFY(python.initialize());
        QCOMPARE(python.py("import os\n"
                           "reading, writing = os.pipe()\n"
                           "os.close(reading)\n"
                           "try:\n"
                           "    os.write(writing, b'x')\n"
                           "except BrokenPipeError:\n"
                           "    broken = True\n"
                           "os.close(writing)\n"),
                 0);
        QCOMPARE(python.text("broken"), QStringLiteral("True"));
    }

    void aSecondCallOfInitializeDoesNotChangeTheRunningInterpreter()
    {
        RecordingPython python;
        QVERIFY(python.initialize());
        QCOMPARE(python.py("defaultSigIntSigaction = 'mine'"), 0);
        PyObject* const dict = Python::main_dict;
        QVERIFY(python.initialize());
        QCOMPARE(python.text("defaultSigIntSigaction"), QStringLiteral("mine"));
        QVERIFY(Python::main_dict == dict);

        RecordingPython* const another = new RecordingPython;
        QVERIFY(another->initialize());
        QCOMPARE(another->text("defaultSigIntSigaction"), QStringLiteral("mine"));
        delete another;
        QVERIFY2(!Py_IsInitialized(), "the interpreter runs after the end of an object of the class Python");
    }

    void theDestructorEndsTheInterpreter()
    {
        {
            RecordingPython python;
            QVERIFY(python.initialize());
            QVERIFY(Py_IsInitialized());
        }
        QVERIFY(!Py_IsInitialized());
        QVERIFY(!Python::initialized);
        QVERIFY(Python::main_dict == nullptr);
    }

    void theDestructorDoesNothingIfTheInterpreterWasNotStarted()
    {
        {
            RecordingPython python;
        }
        QVERIFY(!Py_IsInitialized());
    }

    void theInterpreterCanBeStartedAgainAfterItsEnd()
    {
        {
            RecordingPython python;
            QVERIFY(python.initialize());
            QCOMPARE(python.py("left = 1"), 0);
        }
        RecordingPython python;
        QVERIFY(python.initialize());
        QCOMPARE(python.text("'left' in globals()"), QStringLiteral("False"));
    }

    void aMissingMainModuleIsReportedOnlyOnce()
    {
        startWithHookOnImportOfMain("raise ImportError('no such thing')");
        RecordingPython python;
        QVERIFY(!python.initialize());
        QCOMPARE(python.takeErrors(), QStringList("Internal error: cannot find python __main__ module\n"));
        QVERIFY(PyErr_Occurred() == nullptr);
        QVERIFY(python.initialize());
        QVERIFY(python.takeErrors().isEmpty());
    }

    void aMainModuleWithoutADictionaryIsReported()
    {
        startWithHookOnImportOfMain("sys.modules[name] = 42; return 42");
        RecordingPython python;
        QVERIFY(!python.initialize());
        QCOMPARE(python.takeErrors(), QStringList("Internal error: cannot find python __main__ dict\n"));
        QVERIFY(PyErr_Occurred() == nullptr);
    }

    void noModuleCanBeRegisteredWhileTheInterpreterRuns()
    {
        RecordingPython python;
        QVERIFY(python.initialize());
        QCOMPARE(YumIOC::initialize(nullptr), -1);
        QCOMPARE(python.py("try:\n    import yumIOC\nexcept ImportError:\n    missing = True\n"), 0);
        QCOMPARE(python.text("missing"), QStringLiteral("True"));
    }

    void theModulesOfThePackageManagerCanBeImported()
    {
        const QStringList lines = report(plainEnvironment());
        QVERIFY(lines.size() > 4);
        QVERIFY2(lines[1].contains("/rpm/"), qPrintable(lines[1]));
        QVERIFY2(lines[2].contains("/dnf/"), qPrintable(lines[2]));
        QCOMPARE(lines[4], QStringLiteral("['']"));
    }

    void pythonUsesUtf8InEveryLocale()
    {
        for (const char* locale : {"C", "POSIX", "C.UTF-8"}) {
            QProcessEnvironment environment = plainEnvironment();
            environment.insert(QStringLiteral("LC_ALL"), QLatin1String(locale));
            const QStringList lines = report(environment);
            QVERIFY(lines.size() > 5);
            QCOMPARE(lines[5].toLower(), QStringLiteral("1 utf-8 utf-8"));
        }
    }

    void environmentVariablesDoNotSelectAnotherPythonInstallation_data()
    {
        QTest::addColumn<QString>("variable");
        QTest::addColumn<QString>("subdirectory");
        QTest::newRow("another python first in PATH") << "PATH"
                                                      << "bin";
        QTest::newRow("PYTHONHOME") << "PYTHONHOME"
                                    << "";
        QTest::newRow("PYTHONPATH") << "PYTHONPATH"
                                    << "lib/modules";
    }

    void environmentVariablesDoNotSelectAnotherPythonInstallation()
    {
        QFETCH(QString, variable);
        QFETCH(QString, subdirectory);

        // A directory that looks like another Python installation: it has an executable, a standard library,
        // and modules of its own that would hide the real modules.
        QTemporaryDir other;
        QVERIFY(other.isValid());
        const QString version = QStringLiteral("python%1.%2").arg(PY_MAJOR_VERSION).arg(PY_MINOR_VERSION);
        const QString executable = other.filePath("bin/python3");
        writeFile(executable, "#!/bin/sh\n");
        QVERIFY(QFile::setPermissions(executable, QFile::ReadOwner | QFile::ExeOwner));
        writeFile(other.filePath("lib/" + version + "/os.py"), "raise ImportError('the wrong os')\n");
        QVERIFY(QDir().mkpath(other.filePath("lib/" + version + "/lib-dynload")));
        writeFile(other.filePath("lib/modules/rpm.py"), "raise ImportError('the wrong rpm')\n");

        QProcessEnvironment environment = plainEnvironment();
        const QStringList plain = report(environment);
        QVERIFY(!plain.isEmpty());
        QString value = other.filePath(subdirectory);
        if (variable == QLatin1String("PATH")) {
            value += ":" + environment.value(variable);
        }
        environment.insert(variable, value);
        QCOMPARE(report(environment), plain);
    }
};

QTEST_GUILESS_MAIN(PythonStartTest)
#include "PythonStartTest.moc"
