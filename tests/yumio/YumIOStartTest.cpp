// SPDX-License-Identifier: GPL-2.0-or-later

// Each test starts the back end in a process of its own, because dnf's modules change the interpreter
// permanently.

#include <QtTest>

namespace {

const char* const generic =
    "VYRE Yum Error: Internal error: python exception occurred from C code.|When reporting "
    "this issue, please include the contents of the|Log window, which should contain a "
    "walkback.";

} // namespace

class YumIOStartTest : public QObject
{
    Q_OBJECT

private:
    // Starts the helper with a share directory that contains this script, and returns the helper's output. If
    // `script` is null, the directory contains no script.
    QStringList start(const QByteArray& script, const QStringList& arguments = {})
    {
        const QTemporaryDir share;
        return startIn(share.path(), script, arguments);
    }

    // Starts the helper with this share directory, and returns the helper's output. The path may be relative
    // to the working directory.
    QStringList startIn(const QString& path, const QByteArray& script, const QStringList& arguments = {})
    {
        const QDir share(QDir(workingDirectory).absoluteFilePath(path));
        if (!script.isNull()) {
            share.mkpath("python");
            QFile file(share.filePath("python/YumIO.py"));
            if (!file.open(QIODevice::WriteOnly) || file.write(script) != script.size()) {
                return QStringList("no script");
            }
        }
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("VYRESHARE", path);
        environment.insert(variables);
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(workingDirectory);
        process.start(BACK_END_START, arguments);
        if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit ||
            process.exitCode() != 0) {
            return {"the helper did not end well", process.readAllStandardOutput(),
                    process.readAllStandardError()};
        }
        standardError = QString::fromUtf8(process.readAllStandardError());
        standardOutput = QString::fromUtf8(process.readAllStandardOutput());
        QStringList lines = standardOutput.split('\n');
        lines.removeLast();
        return lines;
    }

    static QByteArray contentOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    static void write(const QString& path, const QByteArray& content)
    {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }

    // Copies the modules of the installed script to this share directory.
    static void copyModules(const QString& share)
    {
        const QDir modules(installedScripts() + "/vyre");
        for (const QString& name : modules.entryList({"*.py"}, QDir::Files)) {
            write(share + "/python/vyre/" + name, contentOf(modules.filePath(name)));
        }
    }

    static QString installedScripts() { return qEnvironmentVariable("VYRESHARE") + "/python"; }

    QString workingDirectory;
    QProcessEnvironment variables; // for the helper, in addition to the environment of the test
    QString standardError;
    QString standardOutput;

private Q_SLOTS:
    void init()
    {
        variables = QProcessEnvironment();
        workingDirectory = QDir::currentPath();
    }

    void theBackEndRunsTheScriptOfTheShareDirectory()
    {
        QCOMPARE(start("import sys\n"
                       "print('argv', sys.argv[1:], __name__, flush=True)\n"
                       "class YumIO:\n    base = 1\n"),
                 QStringList({"argv ['info'] __main__", "started", "again: started"}));
    }

    void theWindowRespondsWhileTheScriptIsImported()
    {
        variables.insert("PRINT_EVENTS", "1");
        QCOMPARE(start("import time\n"
                       "time.sleep(0.5)\n"
                       "class YumIO:\n    base = 1\n"),
                 QStringList({"started", "events were served", "again: started"}));
    }

    // A worker imports the script. If the worker also were the first thread that imports "threading", Python
    // would regard the worker as the main thread, and would report errors at exit.
    void theGraphicalThreadIsTheMainThreadOfPython()
    {
        QCOMPARE(start("import threading as t\n"
                       "print('main thread', t.main_thread() is t.current_thread(), flush=True)\n"
                       "class YumIO:\n    base = 1\n"),
                 QStringList({"main thread False", "started", "again: started"}));
    }

    // Root may start the program in a directory to which other users can write, so the script must not import
    // modules from this directory.
    void theScriptImportsItsModulesOnlyFromItsShareDirectory()
    {
        const QByteArray foreign = "import os\nos.write(1, b'foreign\\n')\n";
        const QTemporaryDir place;
        workingDirectory = place.path();
        for (const char* name : {"vyre/__init__.py", "vyre/paths.py", "vyre/program.py", "vyre.py", "bdb.py",
                                 "share/vyre/__init__.py", "share/python/bdb.py"}) {
            write(place.filePath(name), foreign);
        }
        copyModules(place.filePath("share"));
        QVERIFY(QDir(place.path()).mkdir("root"));
        variables.insert("PYTHONPATH", place.path());
        variables.insert("VYREROOT", place.filePath("root"));
        const QByteArray script = contentOf(installedScripts() + "/YumIO.py");
        for (const QString& share : {QString("share"), place.filePath("share")}) {
            QCOMPARE(startIn(share, script), QStringList({"started", "again: started"}));
            QVERIFY2(!standardError.contains("Traceback"), qPrintable(standardError));
        }
        // Python must not leave compiled files in the share directory.
        QDirIterator found(place.filePath("share"), {"__pycache__", "*.pyc"}, QDir::AllEntries,
                           QDirIterator::Subdirectories);
        QVERIFY2(!found.hasNext(), qPrintable(found.next()));
    }

    void anErrorIsReportedIfAModuleOfTheScriptIsMissing()
    {
        const QTemporaryDir share;
        QCOMPARE(startIn(share.path(), contentOf(installedScripts() + "/YumIO.py")),
                 QStringList({"failed", generic, "VYRE Yum Error: Internal error: unable to execute YumIO.py",
                              "again: failed"}));
        QVERIFY2(standardError.contains("FileNotFoundError"), qPrintable(standardError));
    }

    void theScriptCanHidePasswordsWithAFunctionOfVyre()
    {
        QCOMPARE(
            start(
                "import sys\n"
                "sys.stdout.reconfigure(encoding='utf-8')\n"
                "plain = 'a \\udce9 \\0 \xc3\xa4'\n"
                "for text in (plain, 'ftp://me:secret@h/ \\udce9\\n\xc3\xa4 /vantor?u=me&p=secret&path='):\n"
                "    print(ascii(hideSecrets(text)), hideSecrets(text) is text, flush=True)\n"
                "try:\n"
                "    hideSecrets(b'')\n"
                "except TypeError:\n"
                "    print('TypeError', flush=True)\n"
                "class YumIO:\n    base = 1\n"),
            QStringList({"'a \\udce9 \\x00 \\xe4' True",
                         "'ftp://me:\\u25cf\\u25cf\\u25cf@h/ \\\\udce9\\n\\xe4 "
                         "/vantor?u=me&p=\\u25cf\\u25cf\\u25cf&path=' False",
                         "TypeError", "started", "again: started"}));
    }

    void aSecondCallOfInitializeDoesNotCreateTheScriptsObjectAgain()
    {
        QCOMPARE(start("class YumIO:\n"
                       "    base = 1\n"
                       "    def __init__(self):\n"
                       "        print('made', flush=True)\n"),
                 QStringList({"made", "started", "again: started"}));
    }

    void anErrorIsReportedIfTheScriptIsMissing()
    {
        QCOMPARE(start(QByteArray()),
                 QStringList(
                     {"failed", "VYRE Yum Error: Internal error: unable to open YumIO.py", "again: failed"}));
    }

    void anErrorIsReportedIfTheRpmModuleIsMissing()
    {
        QCOMPARE(
            start("class YumIO:\n    base = 1\n", {"import sys; sys.modules['rpm'] = None"}),
            QStringList({"failed", generic, "VYRE Yum Error: Internal error: cannot find python rpm module",
                         "again: failed"}));
    }

    void anErrorIsReportedIfAnotherObjectReplacesTheRpmModule()
    {
        QCOMPARE(
            start("class YumIO:\n    base = 1\n", {"import sys; sys.modules['rpm'] = object()"}),
            QStringList({"failed", generic, "VYRE Yum Error: Internal error: cannot find python rpm dict",
                         "again: failed"}));
    }

    void anErrorIsReportedIfTheDatetimeModuleIsMissing()
    {
        QCOMPARE(
            start("class YumIO:\n    base = 1\n", {"import sys; sys.modules['datetime'] = None"}),
            QStringList({"failed", generic, "VYRE Yum Error: Internal error: cannot import python datetime",
                         "again: failed"}));
    }

    void anExceptionOfTheScriptIsReported()
    {
        QCOMPARE(start("raise ValueError('wrong')\n"),
                 QStringList({"failed", generic, "VYRE Yum Error: Internal error: unable to execute YumIO.py",
                              "again: failed"}));
        QVERIFY2(standardError.contains("File \"YumIO.py\", line 1"), qPrintable(standardError));
        QVERIFY2(standardError.contains("ValueError: wrong"), qPrintable(standardError));
    }

    void theLogContainsTheTracebackIfTheImportOfTheScriptFails()
    {
        variables.insert("PRINT_LOG", "1");
        QStringList log =
            start("\n\nraise ValueError('wr\xc3\xb6ng <b>')\n").filter(QRegularExpression("^log: "));
        QVERIFY(log.count() > 3);
        QCOMPARE(log.takeFirst(), QString("log: 3 0 Traceback (most recent call last):"));
        QCOMPARE(log.takeFirst(), QString("log: 3 0   File \"YumIO.py\", line 3, in <module>"));
        QVERIFY2(log.contains(QString::fromUtf8("log: 3 0 ValueError: wr\xc3\xb6ng <b>")),
                 qPrintable(log.join('\n')));
        // If the script has replaced sys.stderr, the log still gets the traceback exactly once.
        log = start("import sys, yumIOC\n"
                    "class Writer:\n"
                    "    def write(self, text): yumIOC.stderrWrite(text)\n"
                    "    def flush(self): pass\n"
                    "sys.stderr = Writer()\n"
                    "raise ValueError('wrong')\n")
                  .filter("Traceback");
        QCOMPARE(log, QStringList("log: 3 0 Traceback (most recent call last):"));
    }

    void aMissingManagedRootIsReportedAndNotCreated()
    {
        QTemporaryDir directory;
        const QString root = directory.filePath("mistyped");
        variables.insert("VYREROOT", root + "/");
        QCOMPARE(start("class YumIO:\n    base = 1\n"),
                 QStringList({"failed", "VYRE Yum Error: The root directory " + root + " does not exist",
                              "again: failed"}));
        QVERIFY(!QFileInfo::exists(root));
        // The root must be a directory, not a file.
        QFile file(root);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(start("class YumIO:\n    base = 1\n").first(), QString("failed"));
        file.remove();
        QVERIFY(QDir().mkdir(root));
        QCOMPARE(start("class YumIO:\n    base = 1\n"), QStringList({"started", "again: started"}));
    }

    void theProgramContinuesIfTheScriptCallsSysExit()
    {
        QCOMPARE(start("raise SystemExit(3)\n"),
                 QStringList({"failed", generic, "VYRE Yum Error: Internal error: unable to execute YumIO.py",
                              "again: failed"}));
    }

    void anErrorIsReportedIfTheScriptHasNoClassYumIO()
    {
        QCOMPARE(start("class Other:\n    pass\n"),
                 QStringList({"failed", "VYRE Yum Error: Internal error: cannot find python YumIO",
                              "again: failed"}));
    }

    void theLoggedReasonIsShownIfTheConstructorCallsSysExit()
    {
        QCOMPARE(start("import sys, yumIOC\n"
                       "class YumIO:\n"
                       "    def __init__(self):\n"
                       "        yumIOC.errorlog(1, 'no such distribution')\n"
                       "        yumIOC.log(0, 'not an error')\n"
                       "        sys.exit('no')\n"),
                 QStringList({"failed", "VYRE Yum Error: no such distribution|Unable to initialize",
                              "again: failed"}));
    }

    void theBackEndDoesNotStartIfDnfLacksANameThatTheScriptNeeds_data()
    {
        QTest::addColumn<QByteArray>("removal"); // statements, which run twice
        QTest::addColumn<QString>("use");
        QTest::addColumn<QString>("name");
        const auto remove = [](const QByteArray& module, const QByteArray& place, const QByteArray& name) {
            return QByteArray("import " + module + "\nif hasattr(" + place + ", '" + name + "'):\n    del " +
                              place + '.' + name + '\n');
        };
        QTest::newRow("configuration") << remove("dnf.conf.config", "dnf.conf.config.BaseConfig", "_populate")
                                       << "read the configuration"
                                       << "BaseConfig._populate";
        QTest::newRow("repositories")
            << remove("dnf.lock", "dnf.lock.ProcessLock", "_try_lock") << "read repositories and packages"
            << "ProcessLock._try_lock";
        QTest::newRow("plug-ins") << remove("dnf.plugin", "dnf.plugin.Plugins", "_caller") << "use plug-ins"
                                  << "Plugins._caller";
        QTest::newRow("transactions")
            << remove("dnf", "dnf.Base", "_run_transaction") << "carry out transactions"
            << "Base._run_transaction";
        // Only an object of dnf.Base has this attribute. So this __init__() creates the object and then
        // deletes the attribute.
        QTest::newRow("attribute of an object")
            << QByteArray("import dnf\n"
                          "def without(self, *arguments, made=dnf.Base.__init__):\n"
                          "    made(self, *arguments)\n"
                          "    vars(self).pop('_trans_tempfiles', None)\n"
                          "dnf.Base.__init__ = without\n")
            << "carry out transactions"
            << "Base._trans_tempfiles";
    }

    // Runs the installed script with the real dnf: the back end must show one message, and must not start.
    void theBackEndDoesNotStartIfDnfLacksANameThatTheScriptNeeds()
    {
        QFETCH(QByteArray, removal);
        QFETCH(QString, use);
        QFETCH(QString, name);
        const QTemporaryDir share;
        copyModules(share.path());
        const QTemporaryDir root;
        variables.insert("VYREROOT", root.path());
        QStringList lines = startIn(share.path(), removal + contentOf(installedScripts() + "/YumIO.py"));
        lines.replaceInStrings(QRegularExpression("version [0-9.]+ of"), "version X of");
        QCOMPARE(lines,
                 QStringList({"failed",
                              QString("VYRE Yum Error: VYRE does not support version X of dnf. It cannot "
                                      "%1, because dnf lacks %2.|Unable to initialize")
                                  .arg(use, name),
                              "again: failed"}));
        QVERIFY2(!standardError.contains("Traceback"), qPrintable(standardError));
    }

    void anErrorIsReportedIfTheConstructorOfTheScriptFails()
    {
        QCOMPARE(start("class YumIO:\n    def __init__(self):\n        raise KeyError('x')\n"),
                 QStringList({"failed", generic, "VYRE Yum Error: Internal error: cannot create python yumIO",
                              "again: failed"}));
    }

    void anErrorIsReportedIfTheObjectOfTheScriptHasNoBaseAttribute()
    {
        QCOMPARE(start("class YumIO:\n    pass\n"),
                 QStringList({"failed", generic, "VYRE Yum Error: Internal error: yumIO.base not evaluable",
                              "again: failed"}));
    }

    void theLockIsReleasedWhenTheBackEndEnds()
    {
        const QByteArray script = "import sys\n"
                                  "import dnf.exceptions\n"
                                  "class Silent:\n"
                                  "    def write(self, text): pass\n"
                                  "    def flush(self): pass\n"
                                  "class Base:\n"
                                  "    repos = {}\n"
                                  "class YumIO:\n"
                                  "    base = Base()\n"
                                  "    def __init__(self): sys.stdout = Silent()\n"
                                  "    def lock(self): pass\n"
                                  "    def unlock(self):\n"
                                  "        print('unlocked', flush=True)\n";
        const QString noRepositories =
            "VYRE Yum Error: No repositories are configured.|Under the Repositories menu, "
            "Edit Configuration can be used to configure repositories.";
        QCOMPARE(start(script, {"pass", "collect"}),
                 QStringList({"started", "again: started", noRepositories, "unlocked"}));
        QCOMPARE(start(script), QStringList({"started", "again: started"}));
        QCOMPARE(start(script + "        raise dnf.exceptions.LockError('lost')\n", {"pass", "collect"}),
                 QStringList({"started", "again: started", noRepositories, "unlocked",
                              "end: VYRE Yum Error: Unable to release yum lock"}));
    }
};

QTEST_GUILESS_MAIN(YumIOStartTest)
#include "YumIOStartTest.moc"
