// SPDX-License-Identifier: GPL-2.0-or-later

#include <cerrno>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

#include <QtTest>

#include "tests/yumio/BackEnd.h"
#include "yumio/ChildSignal.h"

class YumIOMessagesTest : public QObject
{
    Q_OBJECT

private:
    QStringList warnings() { return backEnd->answers.takeTexts("VYRE Yum Warning"); }
    QStringList errors() { return backEnd->answers.takeTexts("VYRE Yum Error"); }
    YumIOProbe& yumIO() { return backEnd->yumIO; }
    int logLength() { return backEnd->log().count(); }

    // Calls a Python function that raises this exception. Then lets the back end show a message about the
    // exception, as after a failed function of the script.
    bool explain(const QString& exception, const QString& what = "do something")
    {
        backEnd->run("def failing():\n    raise " + exception + "\n");
        Python::ExceptScope scope(yumIO().python());
        yumIO().commExceptSetup();
        const PyRef result(yumIO().python().pyCall("failing", "()"));
        return yumIO().commExceptRaised(result.get(), what);
    }

    QScopedPointer<BackEnd> backEnd;

private Q_SLOTS:
    void initTestCase()
    {
        backEnd.reset(new BackEnd);
        QVERIFY(backEnd->start());
        QCOMPARE(backEnd->answers.take().count(), 0);
    }

    void cleanupTestCase() { backEnd.reset(); }

    void cleanup()
    {
        QVERIFY(PyErr_Occurred() == nullptr);
        for (const ShownDialog& each : backEnd->answers.take()) {
            QTest::qFail(qPrintable("not expected: " + each.text), __FILE__, __LINE__);
        }
    }

    // --- Messages

    void messagesHidePasswords()
    {
        const QString text = "404 for http://h/vantor?u=joe&p=secret&path=/x and ftp://joe:secret@h/ %1";
        const QString hidden =
            QString::fromUtf8("404 for http://h/vantor?u=joe&p=●●●&path=/x and ftp://joe:●●●@h/ %1");
        const int before = backEnd->log().count();
        yumIO().error(text);
        QCOMPARE(errors(), QStringList(hidden));
        yumIO().error(text.toUtf8().constData());
        QCOMPARE(errors(), QStringList(hidden));
        yumIO().warning(text);
        QCOMPARE(warnings(), QStringList(hidden));
        yumIO().warning(text.toUtf8().constData());
        QCOMPARE(warnings(), QStringList(hidden));
        yumIO().pythonException(text);
        QCOMPARE(errors(), QStringList(hidden));
        QCOMPARE(backEnd->log(before), QStringList({"3 0 " + hidden, "3 0 " + hidden, "2 0 " + hidden,
                                                    "2 0 " + hidden, "3 0 " + hidden}));
    }

    void anErrorIsLoggedAndShown()
    {
        const int before = logLength();
        yumIO().error(QString("this failed: [Errno 2] No such file\nand <b>that</b>"));
        const QList<ShownDialog> shown = backEnd->answers.take();
        QCOMPARE(shown.count(), 1);
        QCOMPARE(shown[0].title, QString("VYRE Yum Error"));
        QCOMPARE(shown[0].text, QString("this failed: [Errno 2] No such file\nand <b>that</b>"));
        QCOMPARE(shown[0].icon, QMessageBox::Critical);
        QCOMPARE(shown[0].buttons, QStringList("OK"));
        QCOMPARE(backEnd->log(before),
                 QStringList({"3 0 this failed:", "3 0 [Errno 2] No such file", "3 0 and <b>that</b>"}));
    }

    void aWarningIsLoggedAndShown()
    {
        const int before = logLength();
        yumIO().warning("careful");
        const QList<ShownDialog> shown = backEnd->answers.take();
        QCOMPARE(shown.count(), 1);
        QCOMPARE(shown[0].title, QString("VYRE Yum Warning"));
        QCOMPARE(shown[0].text, QString("careful"));
        QCOMPARE(shown[0].icon, QMessageBox::Warning);
        QCOMPARE(backEnd->log(before), QStringList("2 0 careful"));
    }

    void anInternalErrorOfTheInterpreterIsShown()
    {
        QVERIFY(yumIO().python().pyLookup("dnf.nothing", false) == nullptr);
        QCOMPARE(errors(), QStringList("Internal error: pyLookup nothing: nothing not found\n"));
    }

    void theExceptionClassesOfDnfAreFound()
    {
        const QHash<int, QString> expected{{YumIOProbe::BdbQuit, "bdb.BdbQuit"},
                                           {YumIOProbe::DnfError, "dnf.exceptions.Error"},
                                           {YumIOProbe::MiscError, "dnf.exceptions.MiscError"},
                                           {YumIOProbe::RepoError, "dnf.exceptions.RepoError"},
                                           {YumIOProbe::LockError, "dnf.exceptions.LockError"},
                                           {YumIOProbe::DeltaPayload, "dnf.drpm.DeltaPayload"},
                                           {YumIOProbe::MDPayload, "dnf.repo.MDPayload"},
                                           {YumIOProbe::RPMPayload, "dnf.repo.RPMPayload"}};
        QCOMPARE(int(YumIOProbe::ClassCount), 10);
        for (int slot = 0; slot < YumIOProbe::ClassCount; ++slot) {
            if (expected.contains(slot)) {
                QVERIFY2(yumIO().classes[slot] == backEnd->value(expected[slot]).get(),
                         qPrintable(expected[slot]));
            } else {
                QVERIFY(yumIO().classes[slot] == nullptr);
            }
        }
        QVERIFY(yumIO().classes[4] == nullptr);
        QVERIFY(yumIO().classes[6] == nullptr);
    }

    void aMessageShowsTheErrorsThatWereLoggedInTheExceptScope()
    {
        yumIO().error(QString("long ago"));
        errors();
        Python::ExceptScope scope(yumIO().python());
        yumIO().commExceptSetup();
        backEnd->run("yumIOC.errorlog(0, 'first')\n"
                     "yumIOC.errorlog(2, 'second')\n"
                     "yumIOC.errorlog(3, 'a detail')\n"
                     "yumIOC.log(0, 'no error')\n");
        yumIO().pythonException("It failed");
        const QList<ShownDialog> shown = backEnd->answers.take();
        QCOMPARE(shown.count(), 1);
        QCOMPARE(shown[0].title, QString("VYRE Yum Error"));
        QCOMPARE(shown[0].text, QString("first\nsecond\nIt failed"));
        QCOMPARE(shown[0].buttons, QStringList("Close"));
        QVERIFY(yumIO().logEntries().tryLock());
        yumIO().logEntries().unlock();
    }

    void aMessageOmitsErrorsThatWereLoggedOutsideAnExceptScope()
    {
        QCOMPARE(int(yumIO().exceptLogStart), -1);
        backEnd->run("yumIOC.errorlog(0, 'before')");
        yumIO().pythonException("It failed");
        QCOMPARE(errors(), QStringList("It failed"));
    }

    void aMessageShowsTheValueOfThePendingException()
    {
        PyErr_SetString(PyExc_ValueError, "the value");
        yumIO().pythonExceptionV("It failed");
        QVERIFY(PyErr_Occurred() != nullptr);
        PyErr_Clear();
        QCOMPARE(errors(), QStringList("the value\nIt failed"));
    }

    void pyExceptExpectStoresTheNumberOfLogEntries()
    {
        Python::ExceptScope scope(yumIO().python());
        yumIO().python().pyExceptExpect(PyExc_ValueError);
        QCOMPARE(int(yumIO().exceptLogStart), logLength());
        backEnd->run("yumIOC.log(0, 'one more')");
        yumIO().python().pyExceptExpect(PyExc_KeyError);
        QCOMPARE(int(yumIO().exceptLogStart), logLength());
    }

    // --- The common exceptions

    void anInputOutputErrorIsExplained()
    {
        const int before = logLength();
        QVERIFY(explain("IOError(2, 'No such file')"));
        QCOMPARE(errors(),
                 QStringList("Unable to do something: I/O Error: [Errno 2] No such file\n\nEmitting a "
                             "walkback to the Log window."));
        const QStringList log = backEnd->log(before);
        QVERIFY2(log.contains("3 0 Traceback (most recent call last):"), qPrintable(log.join('\n')));
        QVERIFY2(log.join('\n').contains("in failing"), qPrintable(log.join('\n')));
    }

    void anInterruptIsExplained()
    {
        const int before = logLength();
        QVERIFY(explain("KeyboardInterrupt()"));
        QCOMPARE(errors(),
                 QStringList(
                     "Unable to do something: KeyboardInterrupt\n\nThis usually means VYRE was sent signal "
                     "SIGINT, SIGTERM, or similar.\n\nBut urlgrabber also can raise this error for several "
                     "situations where it is just guessing.\nSo, emitting a walkback to the Log window."));
        QVERIFY(backEnd->log(before).contains("3 0 KeyboardInterrupt"));
    }

    void aFailedAssertionIsExplained()
    {
        const int before = logLength();
        QVERIFY(explain("AssertionError('no')"));
        QCOMPARE(errors(),
                 QStringList("Internal error: python assertion failed\nWhen reporting this issue, please "
                             "include the contents of the\nLog window, which should contain a walkback."));
        QVERIFY(backEnd->log(before).contains("3 0 AssertionError: no"));
    }

    void aRuntimeErrorIsExplained()
    {
        const int before = logLength();
        QVERIFY(explain("RuntimeError('out of %1')"));
        QCOMPARE(errors(), QStringList("Unable to do something: Runtime Error:\n\nout of %1"));
        QVERIFY(!backEnd->log(before).join('\n').contains("Traceback"));
    }

    void aLockedDatabaseOfARepositoryIsExplained()
    {
        const int before = logLength();
        backEnd->run("def failing():\n"
                     "    yumIOC.errorlog(1, 'what the package manager said')\n"
                     "    yumIOC.errorlog(3, 'a detail')\n"
                     "    raise dnf.exceptions.RepoError('sorry, database is locked by x')\n");
        Python::ExceptScope scope(yumIO().python());
        yumIO().commExceptSetup();
        const PyRef result(yumIO().python().pyCall("failing", "()"));
        QVERIFY(yumIO().commExceptRaised(result.get(), "do something"));
        QCOMPARE(errors(),
                 QStringList("what the package manager said\nUnable to do something: a repository's sqlite "
                             "database was locked unexpectedly\nOn some distributions, PackageKit has been "
                             "known to cause this."));
        QVERIFY(!backEnd->log(before).join('\n').contains("Traceback"));
    }

    void aRepositoryErrorOtherThanALockedDatabaseIsReportedAsUnexpected()
    {
        for (const char* text : {"no mirrors", "Database is locked"}) {
            const int before = logLength();
            QVERIFY(explain(QString("dnf.exceptions.RepoError('%1')").arg(text)));
            QCOMPARE(errors(),
                     QStringList(
                         "Internal error: python exception occurred from C code.\nWhen reporting this issue, "
                         "please include the contents of the\nLog window, which should contain a walkback."));
            QVERIFY(backEnd->log(before).contains("3 0 dnf.exceptions.RepoError: " + QString(text)));
        }
    }

    void anErrorOfDnfIsExplained()
    {
        QVERIFY(explain("dnf.exceptions.DepsolveError('nothing provides x')"));
        QCOMPARE(errors(), QStringList("nothing provides x\nUnable to do something"));
        QVERIFY(explain("dnf.exceptions.LockError('held')"));
        QCOMPARE(errors(), QStringList("held\nUnable to do something"));
        QVERIFY(explain("bdb.BdbQuit('enough')"));
        QCOMPARE(errors(), QStringList("enough\nUnable to do something"));
    }

    void theFirstMatchingExceptionClassDeterminesTheMessage()
    {
        backEnd->run("class OfBoth(dnf.exceptions.RepoError, IOError): pass\n"
                     "class Odd(dnf.exceptions.Error, RuntimeError): pass\n"
                     "class Failed(AssertionError, RuntimeError): pass\n"
                     "class Stopped(KeyboardInterrupt, AssertionError): pass\n");
        const QList<QPair<QString, QString>> expected{
            {"OfBoth", "Unable to do something: I/O Error: "},
            {"Odd", "Unable to do something: Runtime Error:\n\n"},
            {"Failed", "Internal error: python assertion failed\n"},
            {"Stopped", "Unable to do something: KeyboardInterrupt\n\n"}};
        for (const auto& each : expected) {
            QVERIFY(explain(each.first + "('x')"));
            const QStringList shown = errors();
            QCOMPARE(shown.count(), 1);
            QVERIFY2(shown[0].startsWith(each.second), qPrintable(shown[0]));
        }
    }

    void theMessagePrefersTheValueAttributeOfAnExceptionToItsText()
    {
        backEnd->run("class Valued(bdb.BdbQuit):\n    value = ['a', 'b']\n");
        QVERIFY(explain("Valued('text')"));
        QCOMPARE(errors(), QStringList("(a,\n b)\nUnable to do something"));
    }

    void anExceptionOfAnUnknownClassIsNotExplained()
    {
        const int before = logLength();
        QVERIFY(!explain("KeyError('odd')"));
        // pyCall() has already reported the failure.
        QCOMPARE(errors().count(), 1);
        QVERIFY(backEnd->log(before).contains("3 0 KeyError: 'odd'"));
    }

    void commExceptRaisedReturnsFalseIfNoExceptionIsPending()
    {
        Python::ExceptScope scope(yumIO().python());
        yumIO().commExceptSetup();
        QVERIFY(!yumIO().commExceptRaised(Py_None, "do something"));
        QVERIFY(!yumIO().commExceptRaised(nullptr, "do something"));
    }

    void noExceptionMatchesAnExceptionClassThatDnfLacks()
    {
        backEnd->run("class Meta(Exception): pass\n");
        PyObject*& metadata = yumIO().classes[YumIOProbe::MetadataError];
        QVERIFY(!explain("Meta('gone')"));
        errors();
        metadata = backEnd->value("Meta").get(); // the module keeps a reference
        const bool explained = explain("Meta('gone')");
        metadata = nullptr;
        QVERIFY(explained);
        QCOMPARE(errors(),
                 QStringList("Unable to do something: metadata unavailable from all repo mirrors:\ngone"));

        PyObject*& repository = yumIO().classes[YumIOProbe::OtherRepoError];
        repository = backEnd->value("Meta").get();
        const bool locked = explain("Meta('database is locked')");
        repository = nullptr;
        QVERIFY(locked);
        QCOMPARE(errors(),
                 QStringList("Unable to do something: a repository's sqlite database was locked "
                             "unexpectedly\nOn some distributions, PackageKit has been known to cause "
                             "this."));
    }

    void theObjectsOfAFailedCallAreReleasedAfterTheExplanation()
    {
        backEnd->run("import weakref\n"
                     "class Witness: pass\n"
                     "def failing():\n"
                     "    global witness\n"
                     "    local = Witness()\n"
                     "    witness = weakref.ref(local)\n"
                     "    raise IOError('x')\n");
        {
            Python::ExceptScope scope(yumIO().python());
            yumIO().commExceptSetup();
            const PyRef result(yumIO().python().pyCall("failing", "()"));
            QVERIFY(yumIO().commExceptRaised(result.get(), "do something"));
        }
        errors();
        QCOMPARE(backEnd->text("witness() is None"), QString("True"));
    }

    // --- Child processes

    void disablingTheChildSignalSetsTheDefaultHandlerUntilTheScopeEnds()
    {
        struct sigaction mine = {};
        mine.sa_handler = SIG_IGN;
        struct sigaction original;
        sigaction(SIGCHLD, &mine, &original);
        struct sigaction now;
        {
            YumIOProbe::ChildSignal guard(yumIO());
            sigaction(SIGCHLD, nullptr, &now);
            QVERIFY(now.sa_handler == SIG_IGN);
            guard.disable();
            sigaction(SIGCHLD, nullptr, &now);
            QVERIFY(now.sa_handler == SIG_DFL);
            QCOMPARE(now.sa_flags & (SA_SIGINFO | SA_NOCLDWAIT | SA_NOCLDSTOP), 0);
        }
        sigaction(SIGCHLD, nullptr, &now);
        QVERIFY(now.sa_handler == SIG_IGN);
        sigaction(SIGCHLD, &original, nullptr);
    }

    void endedChildrenAreReaped()
    {
        const int before = logLength();
        const pid_t child = fork();
        if (child == 0) {
            _exit(0);
        }
        siginfo_t info;
        QCOMPARE(waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT), 0);
        QVERIFY(yumIO().reapChildren());
        QVERIFY(backEnd->log(before).contains(QString("2 0 Reaped zombie child %1").arg(child)));
        errno = 0;
        QCOMPARE(waitpid(child, nullptr, WNOHANG), -1);
        QCOMPARE(errno, ECHILD);
    }

    void runningChildrenAreNotReaped()
    {
        const int before = logLength();
        const pid_t child = fork();
        if (child == 0) {
            pause();
            _exit(0);
        }
        QVERIFY(yumIO().reapChildren());
        QCOMPARE(backEnd->log(before), QStringList());
        QCOMPARE(kill(child, SIGKILL), 0);
        QCOMPARE(waitpid(child, nullptr, 0), child);
        QVERIFY(yumIO().reapChildren());
    }
};

QTEST_MAIN(YumIOMessagesTest)
#include "YumIOMessagesTest.moc"
