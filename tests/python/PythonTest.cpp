// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <atomic>
#include <cstdlib>
#include <future>
#include <memory>
#include <thread>

#include "tests/python/RecordingPython.h"

namespace {

// Creates a module without a dictionary. While the interpreter ends, modules are in this state.
PyObject* hollowModule(const char* name)
{
    PyObject* module = PyModule_New(name);
    Py_TYPE(module)->tp_clear(module);
    return module;
}

QString walkbackText()
{
    return QStringLiteral("Internal error: python exception occurred from C code.\n"
                          "When reporting this issue, please include the contents of the\n"
                          "Log window, which should contain a walkback.");
}

} // namespace

class PythonTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<RecordingPython> python;

    // The contents of a string from pyString(), which this function frees.
    QString taken(char* text)
    {
        const QString result = QString::fromUtf8(text);
        std::free(text);
        return result;
    }

    QString printed() { return python->text("sys.stderr.getvalue()"); }

    // Leaves an ExceptScope by `return` while an exception is pending. Returns whether the exception has the
    // expected type.
    bool failsAsExpected(PyObject* type)
    {
        Python::ExceptScope scope(*python, {type});
        const PyRef result(python->pyCall("fail", "(O)", type));
        return python->pyExceptMatches(result.get(), type);
    }

private Q_SLOTS:
    void initTestCase()
    {
        python = std::make_unique<RecordingPython>();
        QVERIFY(python->initialize());
    }

    void cleanupTestCase() { python.reset(); }

    void init()
    {
        QCOMPARE(python->py("import io, sys\n"
                            "sys.stderr = io.StringIO()\n"
                            "called = []\n"
                            "def fail(kind, *args):\n"
                            "    raise kind(*args)\n"
                            "def record(*args):\n"
                            "    called.append(args)\n"
                            "    return len(args)\n"
                            "class Thing:\n"
                            "    number = 42\n"
                            "    def twice(self, n):\n"
                            "        return 2 * n\n"
                            "    def fail(self, text):\n"
                            "        raise ValueError(text)\n"
                            "thing = Thing()\n"
                            "table = {'inner': {'deep': 'found'}, 'module': sys}\n"),
                 0);
        python->expectedCount = 0;
    }

    void cleanup()
    {
        // The test must leave no pending exception, no unread message, and no open ExceptScope. If a scope
        // were open, the last call below would not report its exception.
        QVERIFY(PyErr_Occurred() == nullptr);
        QCOMPARE(python->takeErrors(), QStringList());
        QCOMPARE(python->warnings, QStringList());
        python->pyCall("fail", "(O)", PyExc_KeyError);
        QCOMPARE(python->takeErrors(), QStringList(walkbackText()));
    }

    // ---- running statements and expressions

    void pyRunsStatements()
    {
        QCOMPARE(python->py("x = 6 * 7"), 0);
        QCOMPARE(python->text("x"), QStringLiteral("42"));
    }

    void failedStatementsPrintTheirTracebackAndReturnMinusOne()
    {
        QCOMPARE(python->py("1 / 0"), -1);
        QVERIFY(printed().contains("ZeroDivisionError"));
    }

    void tracebacksAreReportedIfTheScriptUsesTheOriginalStandardError()
    {
        python->tracebacks.clear();
        QVERIFY(python->pyr("nothing_of_this_name") == nullptr);
        QCOMPARE(python->tracebacks, QStringList());
        QCOMPARE(python->py("mine, sys.stderr = sys.stderr, sys.__stderr__"), 0);
        QVERIFY(python->pyr("'\\udce9' + nothing_of_this_name") == nullptr);
        QVERIFY(python->pyr("int('\\ud800')") == nullptr);
        QCOMPARE(python->py("sys.stderr = mine"), 0);
        QCOMPARE(python->takeErrors(), QStringList({walkbackText(), walkbackText(), walkbackText()}));
        QCOMPARE(python->tracebacks.count(), 2);
        QVERIFY(python->tracebacks[0].startsWith("Traceback (most recent call last):\n"));
        QVERIFY(python->tracebacks[0].endsWith("NameError: name 'nothing_of_this_name' is not defined\n"));
        QVERIFY(python->tracebacks[1].contains("ValueError: "));
    }

    void pyrReturnsTheValueOfAnExpression()
    {
        const PyRef value(python->pyr("'a' + 'b'"));
        QCOMPARE(taken(python->pyString(value.get())), QStringLiteral("ab"));
    }

    void theExceptionOfAFailedExpressionIsReportedOnceAndCleared()
    {
        QVERIFY(python->pyr("nothing_of_this_name") == nullptr);
        QVERIFY(PyErr_Occurred() == nullptr);
        QCOMPARE(python->takeErrors(), QStringList(walkbackText()));
        QVERIFY(printed().contains("NameError"));
    }

    void pyfAndPyrfFormatTheirTextBeforeTheyRunIt()
    {
        QCOMPARE(python->pyf("x = %d; y = '%s'", 7, "seven"), 0);
        QCOMPARE(python->text("(x, y)"), QStringLiteral("(7, 'seven')"));
        const PyRef value(python->pyrf("x + %d", 35));
        QCOMPARE(PyLong_AsLong(value.get()), 42L);
    }

    void aStatementOfTheLargestSizeRunsCompletely()
    {
        const QByteArray comment(10239 - 7, '#');
        QCOMPARE(python->pyf("x = 99 %s", comment.constData()), 0);
        QCOMPARE(python->text("x"), QStringLiteral("99"));
        const PyRef value(python->pyrf("x + 1 \t%s", comment.constData()));
        QCOMPARE(PyLong_AsLong(value.get()), 100L);
    }

    void aTooLongStatementIsReportedAndNotRun()
    {
        const QByteArray comment(10239 - 6, '#');
        QCOMPARE(python->py("x = 1"), 0);
        QCOMPARE(python->pyf("x = 99 %s", comment.constData()), -1);
        QCOMPARE(python->takeErrors(), QStringList("Internal error: pyf text too long: x = 99 %s\n"));
        QCOMPARE(python->text("x"), QStringLiteral("1"));
        QVERIFY(python->pyrf("x + 1 \t%s", comment.constData()) == nullptr);
        QCOMPARE(python->takeErrors(), QStringList("Internal error: pyrf text too long: x + 1 \t%s\n"));
    }

    // ---- looking up names

    void pyLookupFindsGlobalsModulesAndDictionaryKeys_data()
    {
        QTest::addColumn<QByteArray>("dotted");
        QTest::addColumn<QByteArray>("expression");
        QTest::newRow("global") << QByteArray("thing") << QByteArray("thing");
        QTest::newRow("attribute of a global module") << QByteArray("sys.path") << QByteArray("sys.path");
        QTest::newRow("module to import")
            << QByteArray("fractions.Fraction") << QByteArray("__import__('fractions').Fraction");
        QTest::newRow("name of a module") << QByteArray("colorsys") << QByteArray("__import__('colorsys')");
        QTest::newRow("submodule") << QByteArray("os.path.join") << QByteArray("__import__('os').path.join");
        QTest::newRow("builtin") << QByteArray("__builtins__.str") << QByteArray("str");
        QTest::newRow("key") << QByteArray("table.inner.deep") << QByteArray("table['inner']['deep']");
        QTest::newRow("module under a key") << QByteArray("table.module.path") << QByteArray("sys.path");
    }

    void pyLookupFindsGlobalsModulesAndDictionaryKeys()
    {
        QFETCH(QByteArray, dotted);
        QFETCH(QByteArray, expression);
        PyObject* found = python->pyLookup(dotted.constData(), false);
        const PyRef wanted(python->pyr(expression.constData()));
        QVERIFY(wanted);
        QVERIFY(found == wanted.get());
    }

    void pyLookupReturnsABorrowedReference()
    {
        const PyRef wanted(python->pyr("thing"));
        const Py_ssize_t before = Py_REFCNT(wanted.get());
        QVERIFY(python->pyLookup("thing", false) == wanted.get());
        QCOMPARE(Py_REFCNT(wanted.get()), before);
    }

    void pyLookupReportsAMissingName_data()
    {
        QTest::addColumn<QByteArray>("dotted");
        QTest::addColumn<QString>("text");
        QTest::newRow("first piece")
            << QByteArray("no_such_module.a.b")
            << "Internal error: pyLookup no_such_module.a.b: no_such_module not found\n";
        QTest::newRow("middle piece")
            << QByteArray("sys.nonesuch.b") << "Internal error: pyLookup nonesuch.b: nonesuch not found\n";
        QTest::newRow("last piece") << QByteArray("sys.nonesuch")
                                    << "Internal error: pyLookup nonesuch: nonesuch not found\n";
        QTest::newRow("key") << QByteArray("table.inner.nonesuch")
                             << "Internal error: pyLookup nonesuch: nonesuch not found\n";
        QTest::newRow("attribute of an ordinary object")
            << QByteArray("thing.number") << "Internal error: pyLookup number: number not found\n";
        QTest::newRow("empty") << QByteArray("") << "Internal error: pyLookup :  not found\n";
        QTest::newRow("empty piece") << QByteArray("sys..path")
                                     << "Internal error: pyLookup .path:  not found\n";
    }

    void pyLookupReportsAMissingName()
    {
        QFETCH(QByteArray, dotted);
        QFETCH(QString, text);

        QVERIFY(python->pyLookup(dotted.constData(), true) == nullptr);
        QCOMPARE(python->takeErrors(), QStringList());
        QVERIFY(PyErr_Occurred() == nullptr);

        QVERIFY(python->pyLookup(dotted.constData(), false) == nullptr);
        QCOMPARE(python->takeErrors(), QStringList(text));
        QVERIFY(PyErr_Occurred() == nullptr);
    }

    void pyLookupImportsAModuleAndClearsAPendingException()
    {
        PyErr_SetString(PyExc_ValueError, "from before");
        PyObject* found = python->pyLookup("no_such_module", true);
        QVERIFY(found == nullptr);
        QVERIFY(PyErr_Occurred() == nullptr);
        PyErr_SetString(PyExc_ValueError, "from before");
        found = python->pyLookup("stringprep", true);
        QVERIFY(found != nullptr);
        QVERIFY(PyErr_Occurred() == nullptr);
    }

    void pyLookupFindsNothingForANameThatIsNotUtf8()
    {
        QVERIFY(python->pyLookup("sys.\xff", true) == nullptr);
        QVERIFY(python->pyLookup("\xff", true) == nullptr);
        QVERIFY(PyErr_Occurred() == nullptr);
    }

    void pyLookupReportsAModuleWithoutADictionary()
    {
        const PyRef hollow(hollowModule("hollow"));
        python->pyAssignGlobal("hollow", hollow.get());

        QVERIFY(python->pyLookup("hollow.a.b", true) == nullptr);
        QCOMPARE(python->takeErrors(), QStringList());
        QVERIFY(python->pyLookup("hollow.a.b", false) == nullptr);
        QCOMPARE(python->takeErrors(),
                 QStringList("Internal error: pyLookup a.b: module hollow lacks dictionary\n"));

        QVERIFY(python->pyValue("hollow", "a") == nullptr);
        QCOMPARE(python->takeErrors(), QStringList("Internal error: module hollow lacks dictionary\n"));
        python->pyAssign("hollow", "a", Py_None);
        QCOMPARE(python->takeErrors(), QStringList("Internal error: module hollow lacks dictionary\n"));

        QCOMPARE(python->py("del hollow"), 0);
    }

    void internalErrorsAreTruncatedTo1023Bytes()
    {
        const QByteArray name(3000, 'x');
        QVERIFY(python->pyLookup(name.constData(), false) == nullptr);
        const QStringList errors = python->takeErrors();
        QCOMPARE(errors.size(), 1);
        QCOMPARE(errors[0], QString("Internal error: pyLookup " + name).left(1023));
    }

    // ---- values and assignment

    void pyValueReturnsTheValueOfANameInAModuleOrDictionary()
    {
        PyObject* version = python->pyValue("sys", "hexversion");
        QVERIFY(version != nullptr);
        QCOMPARE(PyLong_AsLong(version), long(PY_VERSION_HEX));
        PyObject* deep = python->pyValue("table.inner", "deep");
        QVERIFY(python->pyStringEqual(deep, "found"));
    }

    void pyValueReturnsNullWithoutAReportForAMissingName()
    {
        QVERIFY(python->pyValue("sys", "nonesuch") == nullptr);
    }

    void pyValueReportsAMissingModule()
    {
        QVERIFY(python->pyValue("no_such_module", "a") == nullptr);
        QCOMPARE(python->takeErrors(), QStringList("Internal error: no_such_module not found\n"));
    }

    void pyValueReportsAnExceptionIfTheContainerIsNoDictionary()
    {
        QVERIFY(python->pyValue("thing", "number") == nullptr);
        QCOMPARE(python->takeErrors(), QStringList(walkbackText()));
    }

    void pyAssignSetsValuesInModulesAndDictionaries()
    {
        const PyRef value(python->pyr("object()"));
        const Py_ssize_t before = Py_REFCNT(value.get());
        python->pyAssign("sys", "vyre_assigned", value.get());
        python->pyAssign("table.inner", "deep", value.get());
        python->pyAssignGlobal("vyre_global", value.get());
        QCOMPARE(Py_REFCNT(value.get()), before + 3);
        QCOMPARE(python->text("sys.vyre_assigned is table['inner']['deep'] is vyre_global"),
                 QStringLiteral("True"));
        QCOMPARE(python->py("del sys.vyre_assigned, vyre_global"), 0);
    }

    void pyAssignReportsAMissingModule()
    {
        python->pyAssign("no_such_module", "a", Py_None);
        QCOMPARE(python->takeErrors(), QStringList("Internal error: no_such_module not found\n"));
    }

    void anExceptionDuringAnAssignmentIsReported()
    {
        python->pyAssign("thing", "number", Py_None);
        QCOMPARE(python->takeErrors(), QStringList(walkbackText()));
        QCOMPARE(python->text("thing.number"), QStringLiteral("42"));
    }

    void pyAssignReportsANullValue()
    {
        python->pyAssign("sys", "vyre_nothing", nullptr);
        python->pyAssignGlobal("vyre_nothing", nullptr);
        QCOMPARE(python->takeErrors(),
                 QStringList({"Internal error: cannot assign sys.vyre_nothing\n",
                              "Internal error: cannot assign __main__.vyre_nothing\n"}));
    }

    void pyVersionReturnsTheVersionOfTheRunningInterpreter()
    {
        QCOMPARE(python->pyVersion(), long(PY_VERSION_HEX));
        QCOMPARE(QString::number(python->pyVersion()), python->text("sys.hexversion"));
    }

    // ---- calls

    void pyCallPassesItsArguments()
    {
        const PyRef result(python->pyCall("record", "(s,i,O)", "text", 5, Py_None));
        QCOMPARE(PyLong_AsLong(result.get()), 3L);
        QCOMPARE(python->text("called"), QStringLiteral("[('text', 5, None)]"));
        const PyRef none(python->pyCall("record", "()"));
        QCOMPARE(PyLong_AsLong(none.get()), 0L);
    }

    void pyCallReleasesTheReferencesToItsArguments()
    {
        const PyRef argument(PyList_New(0));
        const PyRef callable(python->pyr("fail"));
        const Py_ssize_t before = Py_REFCNT(argument.get());
        const Py_ssize_t beforeCallable = Py_REFCNT(callable.get());
        const PyRef result(python->pyCall("__builtins__.len", "(O)", argument.get()));
        QVERIFY(result);
        QVERIFY(python->pyCall("fail", "(O)", argument.get()) == nullptr);
        python->takeErrors();
        QCOMPARE(Py_REFCNT(argument.get()), before);
        QCOMPARE(Py_REFCNT(callable.get()), beforeCallable);
    }

    void aFunctionReturnsItsValueEvenIfItDeletesItsOwnName()
    {
        QCOMPARE(python->py("def suicidal():\n    global suicidal\n    del suicidal\n    return 'alive'"), 0);
        const PyRef result(python->pyCall("suicidal", "()"));
        QVERIFY(python->pyStringEqual(result.get(), "alive"));
    }

    void pyCallReportsAMissingName()
    {
        QVERIFY(python->pyCall("no_such_name", "()") == nullptr);
        QCOMPARE(python->takeErrors(),
                 QStringList({"Internal error: pyLookup no_such_name: no_such_name not found\n",
                              "Internal error: no_such_name not found\n"}));
    }

    void pyCallReportsAnObjectThatIsNotCallable()
    {
        QVERIFY(python->pyCall("table.inner", "()") == nullptr);
        QCOMPARE(python->takeErrors(), QStringList("Internal error: table.inner not callable\n"));
    }

    void pyCallReportsAnExceptionIfItsArgumentsCannotBeBuilt()
    {
        PyObject* nothing = nullptr;
        QVERIFY(python->pyCall("record", "(O)", nothing) == nullptr);
        QCOMPARE(python->takeErrors(), QStringList(walkbackText()));
        QVERIFY(python->pyCall("record", "s", "no tuple") == nullptr);
        QCOMPARE(python->takeErrors(), QStringList(walkbackText()));
        QCOMPARE(python->text("called"), QStringLiteral("[]"));
    }

    void pyMethodCallPassesItsArguments()
    {
        const PyRef thing(python->pyr("thing"));
        const PyRef result(python->pyMethodCall(thing.get(), "twice", "(i)", 21));
        QCOMPARE(PyLong_AsLong(result.get()), 42L);
    }

    void aMethodCallOnNullIsReported()
    {
        QVERIFY(python->pyMethodCall(nullptr, "twice", "(i)", 21) == nullptr);
        QCOMPARE(python->takeErrors(),
                 QStringList("Internal error: method twice call attemped with NULL self\n"));
    }

    void aMissingMethodIsReportedAndItsExceptionStaysPending()
    {
        const PyRef thing(python->pyr("thing"));
        QVERIFY(python->pyMethodCall(thing.get(), "nonesuch", "()") == nullptr);
        QCOMPARE(python->takeErrors(), QStringList("Internal error: method nonesuch not found\n"));
        QVERIFY(PyErr_ExceptionMatches(PyExc_AttributeError));
        PyErr_Clear();
    }

    void anErrorIsReportedIfAMethodIsNotCallable()
    {
        const PyRef thing(python->pyr("thing"));
        QVERIFY(python->pyMethodCall(thing.get(), "number", "()") == nullptr);
        QCOMPARE(python->takeErrors(), QStringList("Internal error: method number not callable\n"));
    }

    void theTracebackOfAFailedMethodIsReported()
    {
        const PyRef thing(python->pyr("thing"));
        QVERIFY(python->pyMethodCall(thing.get(), "fail", "(s)", "for a reason") == nullptr);
        QVERIFY(PyErr_Occurred() == nullptr);
        QCOMPARE(python->takeErrors(), QStringList(walkbackText()));
        QVERIFY2(printed().startsWith("Traceback (most recent call last):\n"), qPrintable(printed()));
        QVERIFY2(printed().endsWith(", in fail\nValueError: for a reason\n"), qPrintable(printed()));
    }

    void pyMethodTryPassesItsArguments()
    {
        const PyRef thing(python->pyr("thing"));
        const PyRef result(python->pyMethodTry(thing.get(), "twice", "(i)", 21));
        QCOMPARE(PyLong_AsLong(result.get()), 42L);
    }

    void pyMethodTryLeavesAnUnexpectedExceptionPending()
    {
        const PyRef thing(python->pyr("thing"));
        QVERIFY(python->pyMethodTry(thing.get(), "fail", "(s)", "for a reason") == nullptr);
        QVERIFY(PyErr_ExceptionMatches(PyExc_ValueError));
        QCOMPARE(python->takeErrors(), QStringList());
        python->handleException();
        QVERIFY(PyErr_Occurred() == nullptr);
        QCOMPARE(python->takeErrors(), QStringList(walkbackText()));
    }

    void pyMethodTryReportsAMissingMethodAndLeavesNoExceptionPending()
    {
        const PyRef thing(python->pyr("thing"));
        QVERIFY(python->pyMethodTry(thing.get(), "nonesuch", "()") == nullptr);
        QCOMPARE(python->takeErrors(), QStringList("Internal error: method nonesuch not found\n"));
        QVERIFY(PyErr_Occurred() == nullptr);
        QVERIFY(python->pyMethodTry(thing.get(), "number", "()") == nullptr);
        QCOMPARE(python->takeErrors(), QStringList("Internal error: method number not callable\n"));
        QVERIFY(python->pyMethodTry(nullptr, "twice", "(i)", 21) == nullptr);
        QCOMPARE(python->takeErrors(),
                 QStringList("Internal error: method twice call attemped with NULL self\n"));
    }

    // ---- strings

    void pyStringReturnsUtf8()
    {
        const PyRef text(python->pyr("'gr\\u00fcn \\u20ac'"));
        char* copy = python->pyString(text.get());
        QCOMPARE(QByteArray(copy), QByteArray("gr\xc3\xbcn \xe2\x82\xac"));
        std::free(copy);
        QVERIFY(python->pyStringEqual(text.get(), "gr\xc3\xbcn \xe2\x82\xac"));
        QVERIFY(!python->pyStringEqual(text.get(), "gr\xc3\xbcn"));
    }

    void pyStringReturnsNullWithoutAReportForNone()
    {
        QVERIFY(python->pyString(Py_None) == nullptr);
        QVERIFY(!python->pyStringEqual(Py_None, "None"));
        QVERIFY(!python->pyStringEqual(Py_None, ""));
    }

    void pyStringReportsAnErrorForNull()
    {
        QVERIFY(python->pyString(nullptr) == nullptr);
        QCOMPARE(python->takeErrors(), QStringList("Internal error: pyString passed NULL python object\n"));
        QVERIFY(!python->pyStringEqual(nullptr, ""));
        QCOMPARE(python->takeErrors(),
                 QStringList("Internal error: pyStringEqual passed NULL python object\n"));
    }

    void pyStringReportsAnExceptionIfTheStringCannotBeEncoded_data()
    {
        QTest::addColumn<QByteArray>("expression");
        QTest::newRow("lone surrogate") << QByteArray("'\\ud800'");
        QTest::newRow("no string") << QByteArray("42");
        QTest::newRow("bytes") << QByteArray("b'abc'");
    }

    void pyStringReportsAnExceptionIfTheStringCannotBeEncoded()
    {
        QFETCH(QByteArray, expression);
        const PyRef object(python->pyr(expression.constData()));
        QVERIFY(object);
        QVERIFY(python->pyString(object.get()) == nullptr);
        QCOMPARE(python->takeErrors(), QStringList(walkbackText()));
        QVERIFY(!python->pyStringEqual(object.get(), "abc"));
        QCOMPARE(python->takeErrors(), QStringList(walkbackText()));

        const Python::ExceptScope scope(*python, {PyExc_UnicodeEncodeError, PyExc_TypeError});
        QVERIFY(python->pyString(object.get()) == nullptr);
        QVERIFY(PyErr_Occurred() != nullptr);
    }

    // ---- exceptions

    void anExpectedExceptionIsNotReportedAndStaysPending()
    {
        python->pyExceptStart();
        python->pyExceptExpect(PyExc_ValueError);
        python->pyExceptExpect(PyExc_LookupError);
        const PyRef result(python->pyCall("fail", "(O,s)", PyExc_KeyError, "k"));
        QVERIFY(!result);
        QVERIFY(python->pyExceptMatches(result.get(), PyExc_LookupError));
        QVERIFY(python->pyExceptMatches(result.get(), PyExc_KeyError));
        QVERIFY(!python->pyExceptMatches(result.get(), PyExc_ValueError));
        QVERIFY2(!python->pyExceptMatches(Py_None, PyExc_KeyError),
                 "a call that returned a value is taken for a failed call");
        QCOMPARE(python->expectedCount, 1);
        QCOMPARE(printed(), QString());
        python->pyExceptClear();
        QVERIFY(PyErr_Occurred() == nullptr);
        QVERIFY(!python->pyExceptMatches(nullptr, PyExc_KeyError));
    }

    void anUnexpectedExceptionIsReportedOnceAndCleared()
    {
        const Python::ExceptScope scope(*python, {PyExc_ValueError});
        QVERIFY(python->pyCall("fail", "(O,s)", PyExc_KeyError, "k") == nullptr);
        QVERIFY(PyErr_Occurred() == nullptr);
        QVERIFY(!python->pyExceptMatches(nullptr, PyExc_KeyError));
        QCOMPARE(python->takeErrors(), QStringList(walkbackText()));
        QCOMPARE(python->expectedCount, 0);
        QCOMPARE(printed().count("KeyError"), 1);
    }

    void onlyTheInnermostExceptScopeDecidesWhichExceptionsAreExpected()
    {
        const Python::ExceptScope outer(*python, {PyExc_KeyError});
        {
            const Python::ExceptScope inner(*python, {PyExc_ValueError});
            QVERIFY(python->pyCall("fail", "(O)", PyExc_KeyError) == nullptr);
            QCOMPARE(python->takeErrors(), QStringList(walkbackText()));
        }
        QVERIFY(python->pyCall("fail", "(O)", PyExc_KeyError) == nullptr);
        QVERIFY(python->pyExceptMatches(nullptr, PyExc_KeyError));
    }

    void theExceptionTypesOfAnExceptScopeCanBeSetAfterItsConstruction()
    {
        Python::ExceptScope scope(*python);
        scope.expect(PyExc_KeyError);
        QVERIFY(python->pyCall("fail", "(O)", PyExc_KeyError) == nullptr);
        QVERIFY(python->pyExceptMatches(nullptr, PyExc_KeyError));
    }

    void anExceptScopeEndsEvenIfTheFunctionReturnsEarly()
    {
        // cleanup() fails if the ExceptScope in this function is still open.
        QVERIFY(failsAsExpected(PyExc_KeyError));
        QVERIFY(PyErr_Occurred() == nullptr);
        QVERIFY(python->pyCall("fail", "(O)", PyExc_KeyError) == nullptr);
        QCOMPARE(python->takeErrors(), QStringList(walkbackText()));
    }

    void aNullExceptionTypeIsReportedAndMatchesNoException()
    {
        Python::ExceptScope scope(*python, {nullptr, PyExc_KeyError});
        QCOMPARE(python->takeErrors(), QStringList("Internal error: pyExceptExpect called with NULL\n"));
        QVERIFY(python->pyCall("fail", "(O)", PyExc_ValueError) == nullptr);
        QCOMPARE(python->takeErrors(), QStringList(walkbackText()));
        QVERIFY(python->pyCall("fail", "(O)", PyExc_KeyError) == nullptr);
        QVERIFY(python->pyExceptMatches(nullptr, PyExc_KeyError));
        QVERIFY(!python->pyExceptMatches(nullptr, nullptr));
    }

    void anErrorIsReportedIfTheExceptionToHandleIsMissing()
    {
        python->handleException();
        QCOMPARE(
            python->takeErrors(),
            QStringList("Internal error: python exception occurred, but exception information was empty."));
    }

    void theProgramContinuesIfACalledFunctionCallsSysExit()
    {
        QVERIFY(python->pyCall("sys.exit", "(i)", 3) == nullptr);
        QCOMPARE(python->takeErrors(), QStringList(walkbackText()));
    }

    void pyExceptValueLeavesTheExceptionPending()
    {
        const Python::ExceptScope scope(*python, {PyExc_ValueError});
        QVERIFY(python->pyCall("fail", "(O,s)", PyExc_ValueError, "the text") == nullptr);
        const PyRef value(python->pyExceptValue());
        QVERIFY(PyObject_TypeCheck(value.get(), reinterpret_cast<PyTypeObject*>(PyExc_ValueError)));
        const PyRef text(PyObject_Str(value.get()));
        QVERIFY(python->pyStringEqual(text.get(), "the text"));
        QVERIFY(python->pyExceptMatches(nullptr, PyExc_ValueError));
        const PyRef again(python->pyExceptValue());
        QVERIFY(again.get() == value.get());
        const PyRef traceback(PyException_GetTraceback(value.get()));
        QVERIFY(traceback);
    }

    void pyExceptValueReturnsAnInstanceOfTheExceptionClass()
    {
        const Python::ExceptScope scope(*python, {PyExc_ValueError});
        PyErr_SetString(PyExc_ValueError, "set from C");
        const PyRef value(python->pyExceptValue());
        QVERIFY(PyObject_TypeCheck(value.get(), reinterpret_cast<PyTypeObject*>(PyExc_ValueError)));
    }

    void pyExceptValueReturnsNullIfNoExceptionIsPending()
    {
        QVERIFY(python->pyExceptValue() == nullptr);
        QVERIFY(python->pyExceptValuef() == nullptr);
    }

    void pyExceptValuefReturnsTheValueAttributeOfTheException()
    {
        QCOMPARE(python->py("class Valued(Exception):\n    value = 'what to show'"), 0);
        const PyRef type(python->pyr("Valued"));
        const Python::ExceptScope scope(*python, {type.get()});
        QVERIFY(python->pyCall("fail", "(O,s)", type.get(), "not shown") == nullptr);
        const PyRef value(python->pyExceptValuef());
        QVERIFY(python->pyStringEqual(value.get(), "what to show"));
        QVERIFY(python->pyExceptMatches(nullptr, type.get()));
    }

    void pyExceptValuefReturnsTheTextIfTheValueAttributeIsMissing()
    {
        const Python::ExceptScope scope(*python, {PyExc_ValueError});
        QVERIFY(python->pyCall("fail", "(O,s)", PyExc_ValueError, "shown") == nullptr);
        const PyRef value(python->pyExceptValuef());
        QVERIFY(python->pyStringEqual(value.get(), "shown"));
        QVERIFY(python->pyExceptMatches(nullptr, PyExc_ValueError));
    }

    void theFirstExceptionStaysPendingIfPyExceptValuefFails()
    {
        QCOMPARE(
            python->py("class Mute(Exception):\n    def __str__(self):\n        raise TypeError('mute')"), 0);
        const PyRef type(python->pyr("Mute"));
        const Python::ExceptScope scope(*python, {type.get()});
        QVERIFY(python->pyCall("fail", "(O)", type.get()) == nullptr);
        QVERIFY(python->pyExceptValuef() == nullptr);
        QCOMPARE(python->takeErrors(), QStringList(walkbackText()));
        QVERIFY(python->pyExceptMatches(nullptr, type.get()));
    }

    // ---- debugger

    void pyDebugSetsDbgAndStartsTheDebuggerOnTheTerminal()
    {
        QCOMPARE(
            python->py(
                "class pdb:\n"
                "    @staticmethod\n"
                "    def set_trace():\n"
                "        called.append((dbg, sys.stdout is sys.__stdout__, sys.stderr is sys.__stderr__))\n"
                "sys.modules['pdb'] = pdb\n"
                "sys.stdout = io.StringIO()\n"),
            0);
        const PyRef object(python->pyr("'looked at'"));
        PyErr_SetString(PyExc_ValueError, "pending");
        python->pyDebug(object.get());
        QVERIFY(PyErr_Occurred() == nullptr);
        QCOMPARE(python->text("called"), QStringLiteral("[('looked at', True, True)]"));
        QCOMPARE(python->py("del sys.modules['pdb'], pdb, dbg"), 0);
    }

    // ---- the interpreter lock

    void pyGILStateWrappersCanBeNested()
    {
        QCOMPARE(PyGILState_Check(), 1);
        {
            const Python::PyGILStateWrapper outer(true);
            {
                const Python::PyGILStateWrapper inner(true);
                QCOMPARE(PyGILState_Check(), 1);
            }
            QCOMPARE(PyGILState_Check(), 1);
        }
        QCOMPARE(PyGILState_Check(), 1);
    }

    void aPyGILStateWrapperTakesTheLockOnlyIfRequested()
    {
        const Python::PyThreadStateWrapper away;
        QCOMPARE(PyGILState_Check(), 0);
        {
            Python::PyGILStateWrapper idle(false);
            QCOMPARE(PyGILState_Check(), 0);
            idle.ensure();
            QCOMPARE(PyGILState_Check(), 0);
            idle.release();
        }
        {
            Python::PyGILStateWrapper lock(true);
            QCOMPARE(PyGILState_Check(), 1);
            {
                const Python::PyGILStateWrapper inner(true);
            }
            QCOMPARE(PyGILState_Check(), 1);
            lock.release();
            QCOMPARE(PyGILState_Check(), 0);
            lock.ensure();
            QCOMPARE(PyGILState_Check(), 1);
        }
        QCOMPARE(PyGILState_Check(), 0);
    }

    void aPyThreadStateWrapperLetsAnotherThreadTakeTheLock()
    {
        std::future<QString> worker = std::async(std::launch::async, [this] {
            const Python::PyGILStateWrapper lock(true);
            return python->text("'from a thread: %d' % record('from a thread')");
        });
        {
            Python::PyThreadStateWrapper away;
            QVERIFY2(worker.wait_for(std::chrono::seconds(60)) == std::future_status::ready,
                     "the other thread did not get the lock");
            away.restore();
            QCOMPARE(PyGILState_Check(), 1);
            away.save();
        }
        QCOMPARE(PyGILState_Check(), 1);
        QCOMPARE(worker.get(), QStringLiteral("from a thread: 1"));
        QCOMPARE(python->text("called"), QStringLiteral("[('from a thread',)]"));
    }

    void anotherThreadWaitsWhileThisThreadHoldsTheInterpreterLock()
    {
        std::atomic<bool> entered(false);
        std::thread worker([&entered] {
            const Python::PyGILStateWrapper lock(true);
            entered = true;
        });
        // An interpreter hands its lock to other threads only while it runs Python code. No Python code runs
        // during this sleep, so the worker must wait.
        QThread::msleep(50);
        const bool enteredTooEarly = entered;
        {
            const Python::PyThreadStateWrapper away;
            worker.join();
        }
        QVERIFY(!enteredTooEarly);
        QVERIFY(entered);
    }

    void theInterpreterCanImportTheModulesOfDnfAndRpm()
    {
        QCOMPARE(python->py("import rpm"), 0);
        QVERIFY(python->pyLookup("rpm.RPMTAG_NAME", false) != nullptr);
        QVERIFY(python->pyLookup("dnf.exceptions.Error", false) != nullptr);
    }
};

QTEST_GUILESS_MAIN(PythonTest)
#include "PythonTest.moc"
