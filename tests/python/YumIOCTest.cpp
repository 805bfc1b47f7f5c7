// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <memory>
#include <optional>

#include "app/base/RepositoryFileLimit.h"
#include "python/YumIOC.h"
#include "python/YumIOCTarget.h"
#include "tests/python/RecordingPython.h"

namespace {

// Records the function and the arguments of each call. Parses the arguments in the same way as the back end.
class RecordingTarget : public YumIOCTarget
{
public:
    PyObject* stdoutWrite(PyObject* module, PyObject* args) override
    {
        return text("stdoutWrite", module, args);
    }
    PyObject* stderrWrite(PyObject* module, PyObject* args) override
    {
        return text("stderrWrite", module, args);
    }
    PyObject* log(PyObject* module, PyObject* args) override { return levelAndText("log", module, args); }
    PyObject* errorlog(PyObject* module, PyObject* args) override
    {
        return levelAndText("errorlog", module, args);
    }
    PyObject* downloadStart(PyObject* module, PyObject* args) override
    {
        long long a = 0;
        long long b = 0;
        long long c = 0;
        return PyArg_ParseTuple(args, "LLL", &a, &b, &c)
                   ? called("downloadStart", module, QStringLiteral("%1 %2 %3").arg(a).arg(b).arg(c))
                   : nullptr;
    }
    PyObject* downloadProgress(PyObject* module, PyObject* args) override
    {
        PyObject* payload = nullptr;
        double fraction = 0;
        return PyArg_ParseTuple(args, "Od", &payload, &fraction)
                   ? called("downloadProgress", module, shown(payload) + ' ' + QString::number(fraction))
                   : nullptr;
    }
    PyObject* downloadMessage(PyObject* module, PyObject* args) override
    {
        return objects<1>("downloadMessage", module, args);
    }
    PyObject* downloadEnd(PyObject* module, PyObject* args) override
    {
        return objects<3>("downloadEnd", module, args);
    }
    PyObject* userconfirm(PyObject* module, PyObject* args) override
    {
        return noArguments("userconfirm", module, args, PyLong_FromLong(1));
    }
    PyObject* reportDownloadSize(PyObject* module, PyObject* args) override
    {
        return objects<1>("reportDownloadSize", module, args);
    }
    PyObject* reportRemoveSize(PyObject* module, PyObject* args) override
    {
        return objects<1>("reportRemoveSize", module, args);
    }
    PyObject* listTransaction(PyObject* module, PyObject* args) override
    {
        return objects<2>("listTransaction", module, args);
    }
    PyObject* downloadRemotePayloads(PyObject* module, PyObject* args) override
    {
        return objects<1>("downloadRemotePayloads", module, args);
    }
    PyObject* rpmtransInit(PyObject* module, PyObject* args) override
    {
        const PyRef answer(objects<1>("rpmtransInit", module, args));
        return answer ? PyRef::borrow(Py_False).release() : nullptr;
    }
    PyObject* rpmtransDel(PyObject* module, PyObject* args) override
    {
        return noArguments("rpmtransDel", module, args, PyRef::borrow(Py_None).release());
    }
    PyObject* rpmtransProgress(PyObject* module, PyObject* args) override
    {
        PyObject* package = nullptr;
        long action = 0;
        PyObject* rest[4] = {};
        if (!PyArg_ParseTuple(args, "OlOOOO", &package, &action, &rest[0], &rest[1], &rest[2], &rest[3])) {
            return nullptr;
        }
        return called("rpmtransProgress", module,
                      QStringLiteral("%1 %2 %3 %4 %5 %6")
                          .arg(shown(package))
                          .arg(action)
                          .arg(shown(rest[0]), shown(rest[1]), shown(rest[2]), shown(rest[3])));
    }
    PyObject* rpmtransScriptout(PyObject* module, PyObject* args) override
    {
        return objects<1>("rpmtransScriptout", module, args);
    }
    PyObject* postTransactionOutput(PyObject* module, PyObject* args) override
    {
        return called("postTransactionOutput", module, shown(args));
    }
    PyObject* gpgsigcheck(PyObject* module, PyObject* args) override
    {
        return called("gpgsigcheck", module, shown(args));
    }

    QStringList calls;
    PyObject* lastModule = nullptr; // borrowed reference to the module whose function was called last

private:
    static QString shown(PyObject* object)
    {
        const PyRef text(PyObject_Str(object));
        return text ? QString::fromUtf8(PyUnicode_AsUTF8(text.get())) : QString();
    }

    // Records the call. Returns a new reference to None.
    PyObject* called(const char* name, PyObject* from, const QString& arguments)
    {
        lastModule = from;
        calls.append(name + (arguments.isEmpty() ? QString() : ' ' + arguments));
        return PyRef::borrow(Py_None).release();
    }

    PyObject* noArguments(const char* name, PyObject* from, PyObject* args, PyObject* answer)
    {
        const PyRef none(called(name, from, args == nullptr ? QString() : QStringLiteral("given something")));
        return answer;
    }

    PyObject* text(const char* name, PyObject* from, PyObject* args)
    {
        const char* written = nullptr;
        return PyArg_ParseTuple(args, "s", &written) ? called(name, from, QString::fromUtf8(written))
                                                     : nullptr;
    }

    PyObject* levelAndText(const char* name, PyObject* from, PyObject* args)
    {
        long level = 0;
        const char* written = nullptr;
        return PyArg_ParseTuple(args, "ls", &level, &written)
                   ? called(name, from, QStringLiteral("%1 %2").arg(level).arg(QString::fromUtf8(written)))
                   : nullptr;
    }

    template <int count> PyObject* objects(const char* name, PyObject* from, PyObject* args)
    {
        PyObject* given[3] = {};
        const char* const formats[] = {"O", "OO", "OOO"};
        if (!PyArg_ParseTuple(args, formats[count - 1], &given[0], &given[1], &given[2])) {
            return nullptr;
        }
        QStringList list;
        for (int i = 0; i < count; ++i) {
            list.append(shown(given[i]));
        }
        return called(name, from, list.join(' '));
    }
};

} // namespace

class YumIOCTest : public QObject
{
    Q_OBJECT

private:
    std::optional<RecordingTarget> target;
    std::unique_ptr<RecordingPython> python;

    // The type and the message of the exception that the expression raises; empty if it raises none.
    QString raised(const QByteArray& expression)
    {
        const Python::ExceptScope scope(*python, {PyExc_Exception});
        const PyRef result(python->pyr(expression.constData()));
        if (result) {
            return QString();
        }
        const PyRef value(python->pyExceptValue());
        const PyRef text(PyObject_Str(value.get()));
        return QStringLiteral("%1: %2").arg(QString::fromUtf8(Py_TYPE(value.get())->tp_name),
                                            QString::fromUtf8(PyUnicode_AsUTF8(text.get())));
    }

private Q_SLOTS:
    void init()
    {
        target.emplace();
        python = std::make_unique<RecordingPython>();
        QCOMPARE(YumIOC::initialize(&*target), 0);
        QVERIFY(python->initialize());
        QCOMPARE(python->py("import sys, yumIOC"), 0);
    }

    void cleanup()
    {
        if (python) {
            QVERIFY(PyErr_Occurred() == nullptr);
            QCOMPARE(python->errors, QStringList());
        }
        python.reset();
        target.reset();
    }

    void yumIOCHasNineteenFunctionsTwoLimitsAndNoDocstring()
    {
        QCOMPARE(python->text("yumIOC.__name__"), QStringLiteral("yumIOC"));
        QCOMPARE(python->text("yumIOC.__doc__"), QStringLiteral("None"));
        QCOMPARE(python->text("'yumIOC' in sys.builtin_module_names"), QStringLiteral("True"));
        QCOMPARE(python->text("' '.join(n for n in vars(yumIOC) if not n.startswith('_'))"),
                 QStringLiteral("stdoutWrite stderrWrite log errorlog downloadStart downloadProgress "
                                "downloadMessage downloadEnd userconfirm reportDownloadSize reportRemoveSize "
                                "listTransaction downloadRemotePayloads rpmtransInit rpmtransDel "
                                "rpmtransProgress rpmtransScriptout postTransactionOutput gpgsigcheck "
                                "repositoryFileLimit repositorySectionLimit"));
    }

    void yumIOCHasTheSizeLimitsOfRepositoryFiles()
    {
        QCOMPARE(python->text("yumIOC.repositoryFileLimit"), QString::number(repositoryFileLimit));
        QCOMPARE(python->text("yumIOC.repositorySectionLimit"), QString::number(repositorySectionLimit));
    }

    void eachFunctionCallsTheBackEndFunctionOfTheSameName_data()
    {
        QTest::addColumn<QByteArray>("call");
        QTest::addColumn<QString>("recorded");
        QTest::addColumn<QString>("answer");
        const auto row = [](const char* call, const char* recorded, const char* answer = "None") {
            QTest::newRow(call) << QByteArray(call) << QString::fromUtf8(recorded) << QString(answer);
        };
        row("stdoutWrite('a \\u20ac')", "stdoutWrite a \xe2\x82\xac");
        row("stderrWrite('b')", "stderrWrite b");
        row("log(3, 'c')", "log 3 c");
        row("errorlog(-1, 'd')", "errorlog -1 d");
        row("downloadStart(1, 2, 1 << 40)", "downloadStart 1 2 1099511627776");
        row("downloadProgress('p', 0.5)", "downloadProgress p 0.5");
        row("downloadMessage(7)", "downloadMessage 7");
        row("downloadEnd('p', None, 'e')", "downloadEnd p None e");
        row("userconfirm()", "userconfirm", "1");
        row("reportDownloadSize([1])", "reportDownloadSize [1]");
        row("reportRemoveSize((1, 2))", "reportRemoveSize (1, 2)");
        row("listTransaction('t', 8)", "listTransaction t 8");
        row("downloadRemotePayloads(['x'])", "downloadRemotePayloads ['x']");
        row("rpmtransInit({})", "rpmtransInit {}", "False");
        row("rpmtransDel()", "rpmtransDel");
        row("rpmtransProgress('p', 4, 1, 2, 3, 'z')", "rpmtransProgress p 4 1 2 3 z");
        row("rpmtransScriptout('o')", "rpmtransScriptout o");
        row("postTransactionOutput()", "postTransactionOutput ()");
        row("postTransactionOutput(1, 'x')", "postTransactionOutput (1, 'x')");
        row("gpgsigcheck()", "gpgsigcheck ()");
        row("gpgsigcheck('k')", "gpgsigcheck ('k',)");
    }

    void eachFunctionCallsTheBackEndFunctionOfTheSameName()
    {
        QFETCH(QByteArray, call);
        QFETCH(QString, recorded);
        QFETCH(QString, answer);
        QCOMPARE(python->text("yumIOC." + call), answer);
        QCOMPARE(target->calls, QStringList(recorded));
        QVERIFY2(target->lastModule == python->pyLookup("yumIOC"),
                 "the back end's function did not receive the module");
    }

    void wrongArgumentsRaiseTypeErrorInTheScript_data()
    {
        QTest::addColumn<QByteArray>("call");
        const char* const calls[] = {
            "stdoutWrite()",
            "stdoutWrite(1)",
            "stderrWrite(b'x')",
            "log('text')",
            "log('1', 'text')",
            "errorlog(1, 2)",
            "downloadStart('1', 2, 3)",
            "downloadStart(1, 2)",
            "downloadProgress('p', 'half')",
            "downloadMessage()",
            "downloadEnd(1, 2)",
            "userconfirm(1)",
            "userconfirm(None)",
            "reportDownloadSize()",
            "reportRemoveSize(1, 2)",
            "listTransaction(1)",
            "downloadRemotePayloads()",
            "rpmtransInit()",
            "rpmtransDel('x')",
            "rpmtransProgress(1, 'x', 3, 4, 5, 6)",
            "rpmtransProgress(1, 2, 3, 4, 5)",
            "rpmtransScriptout()",
            "postTransactionOutput(keyword=1)",
            "gpgsigcheck(keyword=1)",
        };
        for (const char* call : calls) {
            QTest::newRow(call) << QByteArray(call);
        }
    }

    void wrongArgumentsRaiseTypeErrorInTheScript()
    {
        QFETCH(QByteArray, call);
        const QString exception = raised("yumIOC." + call);
        QVERIFY2(exception.startsWith("TypeError: "), qPrintable(exception));
        QCOMPARE(target->calls, QStringList());
    }

    void theScriptCanCatchTheExceptionAboutWrongArguments()
    {
        QCOMPARE(python->py("try:\n"
                            "    yumIOC.downloadStart('many', 2, 3)\n"
                            "except TypeError as e:\n"
                            "    caught = type(e).__name__\n"),
                 0);
        QCOMPARE(python->text("caught"), QStringLiteral("TypeError"));
    }

    void importingYumIOCTwiceReturnsTheSameModule()
    {
        QCOMPARE(python->py("import importlib\n"
                            "first = yumIOC\n"
                            "second = importlib.import_module('yumIOC')\n"
                            "del sys.modules['yumIOC']\n"
                            "import yumIOC as third\n"
                            "fourth = importlib.reload(third)\n"),
                 0);
        QCOMPARE(python->text("first is second is third is fourth"), QStringLiteral("True"));
        QCOMPARE(python->py("fourth.stdoutWrite('still there')"), 0);
        QCOMPARE(target->calls, QStringList("stdoutWrite still there"));
    }

    void yumIOCCallsTheSecondBackEndAfterASecondCallOfInitialize()
    {
        RecordingTarget other;
        QCOMPARE(YumIOC::initialize(&other), 0);
        QCOMPARE(python->py("import yumIOC as again; again.log(1, 'to the other')"), 0);
        QCOMPARE(target->calls, QStringList());
        QCOMPARE(other.calls, QStringList("log 1 to the other"));
        QCOMPARE(python->py("del sys.modules['yumIOC']\nimport yumIOC as anew; anew.log(2, 'too')"), 0);
        QCOMPARE(other.calls.size(), 2);
    }

    void aCallRaisesAnExceptionIfTheBackEndHasEnded()
    {
        target.reset();
        QCOMPARE(raised("yumIOC.rpmtransDel()"),
                 QStringLiteral("RuntimeError: yumIOC: the back end is gone"));
    }

    void deletingAFormerBackEndKeepsTheConnectionToTheCurrentBackEnd()
    {
        {
            RecordingTarget former;
            QCOMPARE(YumIOC::initialize(&former), 0);
            QCOMPARE(YumIOC::initialize(&*target), 0);
        }
        QCOMPARE(python->py("yumIOC.stdoutWrite('x')"), 0);
        QCOMPARE(target->calls, QStringList("stdoutWrite x"));
    }

    void yumIOCCallsTheBackEndAgainAfterARestartOfTheInterpreter()
    {
        python.reset();
        target.reset();
        for (int i = 0; i < 3; ++i) {
            RecordingTarget fresh;
            RecordingPython again;
            QCOMPARE(YumIOC::initialize(&fresh), 0);
            QVERIFY(again.initialize());
            QCOMPARE(again.py("import yumIOC; yumIOC.stdoutWrite('hello')"), 0);
            QCOMPARE(fresh.calls, QStringList("stdoutWrite hello"));
            QCOMPARE(again.text("__import__('sys').builtin_module_names.count('yumIOC')"),
                     QStringLiteral("1"));
        }
    }
};

QTEST_GUILESS_MAIN(YumIOCTest)
#include "YumIOCTest.moc"
