// The embedded Python 3 interpreter: starts it, runs snippets, looks up dotted names, calls functions and
// methods, converts strings, and decides what becomes of the exceptions that calls leave behind.
//
// The back end derives from it and is the one object of this class. Any thread may call, but only while it
// holds the interpreter lock; the graphical thread holds it from initialize() on, except while it waits for a
// worker thread. Nothing here throws: a failure is reported through error() and shows as NULL, false or 0.
//
// Results are PyObject*: a "new" reference is the caller's to drop (PyRef does it), a "borrowed" one is not.

#ifndef PYTHON_PYTHON_H
#define PYTHON_PYTHON_H

#ifndef PY_SSIZE_T_CLEAN
#define PY_SSIZE_T_CLEAN
#endif
#include <Python.h>

#include <cstdarg>
#include <initializer_list>
#include <list>
#include <stack>

#include "python/PyRef.h"

class Python
{
public:
    class PyGILStateWrapper;
    class PyThreadStateWrapper;
    class ExceptScope;

    Python() = default;
    Python(const Python&) = delete;
    Python& operator=(const Python&) = delete;
    // Ends the interpreter, if it was started. The references that a derived class holds must be gone by
    // then.
    virtual ~Python();

    // Expectation scopes: between pyExceptStart() and pyExceptClear() an exception of one of the types named
    // with pyExceptExpect() (borrowed) is left pending for the caller, who tests for it with
    // pyExceptMatches(). Scopes nest; only the innermost counts. pyExceptClear() clears any pending
    // exception. ExceptScope pairs the two on every path.
    virtual void pyExceptStart();
    virtual void pyExceptExpect(PyObject* type);
    virtual void pyExceptClear();
    // Whether a call failed (its result is NULL) with a pending exception of this type.
    virtual bool pyExceptMatches(PyObject* result, PyObject* type);

    // Report an internal error or a warning to the user.
    virtual void error(const char* text) = 0;
    virtual void warning(const char* text) = 0;

    // Called with an exception pending: leaves it pending when the innermost scope expects it, else reports
    // and clears it.
    virtual void handleException();
    // What handleException() does with an exception that is expected: nothing, here.
    virtual void exceptionExpected();
    // What handleException() does with any other: its traceback goes to sys.stderr, and error() is called.
    virtual void exceptionError();
    // A traceback (UTF-8) went to the process's standard error, because the script has not put anything else
    // in the place of sys.stderr.
    virtual void tracebackOnTerminal(const char* text);
    // Whether the innermost scope expects the pending exception.
    bool exceptionIsExpected() const;
    // Takes the pending exception away and prints its traceback to sys.stderr; false when none was pending.
    bool displayException();

    // Starts the interpreter, once per process; the calling thread holds the interpreter lock from then on. A
    // failed start is not retried. Returns whether it is ready. Built-in modules must be registered before.
    bool initialize();

    // Runs statements in __main__; 0, or -1 when they failed.
    int py(const char* text);
    // Evaluates an expression in __main__. New reference or NULL.
    PyObject* pyr(const char* text);
    // The same with a printf format. The text may have at most 10239 bytes; a longer one is reported, not
    // run.
    int pyf(const char* format, ...) __attribute__((format(printf, 2, 3)));
    PyObject* pyrf(const char* format, ...) __attribute__((format(printf, 2, 3)));

    // Call a callable found by pyLookup(), or a method of an object. The format is one of Py_BuildValue() and
    // always a tuple in parentheses, such as "(s)", "(O,O)" or "()". New reference or NULL.
    PyObject* pyCall(const char* name, const char* format, ...);
    PyObject* pyVCall(const char* name, const char* format, va_list args);
    PyObject* pyMethodCall(PyObject* self, const char* method, const char* format, ...);
    PyObject* pyVMethodCall(PyObject* self, const char* method, const char* format, va_list args);

    // Resolves a dotted name, from a global of __main__ or else a module (which is imported) through module
    // attributes and dictionary keys; attributes of other objects are not reached. Borrowed reference or
    // NULL; with quiet, a failure is not reported.
    PyObject* pyLookup(const char* dotted, bool quiet = false);
    // An item of a module or dictionary that pyLookup() finds. Borrowed reference or NULL.
    PyObject* pyValue(const char* module, const char* name);
    // Sets such an item; takes a reference of its own to the value.
    void pyAssign(const char* module, const char* name, PyObject* value);
    // Sets a global of __main__; takes a reference of its own to the value.
    void pyAssignGlobal(const char* name, PyObject* value);

    // The interpreter's version, as sys.hexversion; 0 when it cannot be had.
    long pyVersion();

    // The text of a str object in UTF-8, to be freed with free(); NULL for None, NULL and unencodable text.
    char* pyString(PyObject* object);
    // Whether a str object has this text (UTF-8); false for None and NULL.
    bool pyStringEqual(PyObject* object, const char* text);

    // The pending exception, which stays pending: the exception object itself, or something to display (its
    // attribute "value", else its text). New reference, or NULL when none is pending.
    PyObject* pyExceptValue();
    PyObject* pyExceptValuef();

    // For the debugger: binds the object to the global "dbg" and stops in pdb on the terminal.
    void pyDebug(PyObject* object);

    // Whether an interrupt raises KeyboardInterrupt in the interpreter or ends the process.
    void setEnablePythonSIGINTHandler(bool enable);

    static bool initialized;    // this process has started the interpreter
    static PyObject* main_dict; // the dictionary of __main__, borrowed

private:
    void internalError(const char* format, ...) __attribute__((format(printf, 2, 3)));
    PyObject* call(PyObject* callable, const char* format, va_list args);
    PyObject* namespaceOf(const char* module);
    PyRef encode(PyObject* object);

    std::stack<std::list<PyObject*>> expected; // the types are borrowed
};

// Holds the interpreter lock for a scope when "really" is true, and does nothing at all otherwise. A thread
// that holds the lock may take it again.
class Python::PyGILStateWrapper
{
public:
    explicit PyGILStateWrapper(bool reallyLock) : really(reallyLock) { ensure(); }
    ~PyGILStateWrapper() { release(); }
    PyGILStateWrapper(const PyGILStateWrapper&) = delete;
    PyGILStateWrapper& operator=(const PyGILStateWrapper&) = delete;

    // By hand, in the middle of the scope: each release() must be followed by an ensure().
    void ensure()
    {
        if (really) {
            state = PyGILState_Ensure();
        }
    }
    void release()
    {
        if (really) {
            PyGILState_Release(state);
        }
    }

private:
    bool really;
    PyGILState_STATE state = PyGILState_UNLOCKED;
};

// Gives the calling thread's interpreter lock away for a scope, so that another thread can take it.
class Python::PyThreadStateWrapper
{
public:
    PyThreadStateWrapper() { save(); }
    ~PyThreadStateWrapper() { restore(); }
    PyThreadStateWrapper(const PyThreadStateWrapper&) = delete;
    PyThreadStateWrapper& operator=(const PyThreadStateWrapper&) = delete;

    // By hand, in the middle of the scope: each restore() must be followed by a save().
    void save() { saved = PyEval_SaveThread(); }
    void restore() { PyEval_RestoreThread(saved); }

private:
    PyThreadState* saved;
};

// One expectation scope, closed on every path.
class Python::ExceptScope
{
public:
    // The types are borrowed.
    explicit ExceptScope(Python& owner, std::initializer_list<PyObject*> types = {}) : python(owner)
    {
        python.pyExceptStart();
        for (PyObject* type : types) {
            python.pyExceptExpect(type);
        }
    }
    ~ExceptScope() { python.pyExceptClear(); }
    ExceptScope(const ExceptScope&) = delete;
    ExceptScope& operator=(const ExceptScope&) = delete;

    void expect(PyObject* type) { python.pyExceptExpect(type); }

private:
    Python& python;
};

#endif
