// SPDX-License-Identifier: GPL-2.0-or-later

// The embedded Python 3 interpreter. Starts it, runs snippets, looks up dotted names, calls functions and
// methods, converts strings, and handles the exceptions of these calls.
//
// The back end derives from it and is the only object of this class. Any thread may call it while it holds
// the interpreter lock. The graphical thread holds the lock from initialize() on, except while it waits for a
// worker thread. No function throws: it reports a failure through error() and returns NULL, false or 0.
//
// Results are PyObject*: the caller must drop a "new" reference (PyRef does it), but not a "borrowed" one.

#ifndef PYTHON_PYTHON_H
#define PYTHON_PYTHON_H

#include <cstdarg>
#include <initializer_list>
#include <list>
#include <stack>

#include "python/PyObject.h"
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
    // Ends the interpreter, if it was started. By then a derived class must have dropped its references.
    virtual ~Python();

    // Expectation scopes. Between pyExceptStart() and pyExceptClear(), an exception of a type that
    // pyExceptExpect() names (borrowed) stays pending. The caller tests for it with pyExceptMatches(). Scopes
    // nest; only the innermost counts. pyExceptClear() clears any pending exception. ExceptScope ends its
    // scope on every path.
    virtual void pyExceptStart();
    virtual void pyExceptExpect(PyObject* type);
    virtual void pyExceptClear();
    // Returns whether a call failed (its result is NULL) with a pending exception of this type.
    virtual bool pyExceptMatches(PyObject* result, PyObject* type);

    // Report an internal error or a warning to the user.
    virtual void error(const char* text) = 0;
    virtual void warning(const char* text) = 0;

    // Called with an exception pending. Leaves it pending if the innermost scope expects it, else reports and
    // clears it.
    virtual void handleException();
    // Called by handleException() for an expected exception. Does nothing here.
    virtual void exceptionExpected();
    // Called by handleException() for any other exception. Prints its traceback to sys.stderr and calls
    // error().
    virtual void exceptionError();
    // Called after a traceback (UTF-8) went to the process's standard error. This happens if the script has
    // not replaced sys.stderr.
    virtual void tracebackOnTerminal(const char* text);
    // Returns whether the innermost scope expects the pending exception.
    bool exceptionIsExpected() const;
    // Clears the pending exception and prints its traceback to sys.stderr. False if no exception was pending.
    bool displayException();

    // Starts the interpreter, once per process. From then on the calling thread holds the interpreter lock. A
    // failed start is not tried again. Returns whether the interpreter is ready. Register built-in modules
    // before.
    bool initialize();

    // Runs statements in __main__. Returns 0, or -1 on failure.
    int py(const char* text);
    // Evaluates an expression in __main__. New reference or NULL.
    PyObject* pyr(const char* text);
    // The same with a printf format. The text may have at most 10239 bytes; a longer text is reported and not
    // run.
    int pyf(const char* format, ...) __attribute__((format(printf, 2, 3)));
    PyObject* pyrf(const char* format, ...) __attribute__((format(printf, 2, 3)));

    // Calls a callable found by pyLookup(), or a method of an object. The format is a format of
    // Py_BuildValue() and always a tuple in parentheses, such as "(s)", "(O,O)" or "()". New reference or
    // NULL.
    PyObject* pyCall(const char* name, const char* format, ...);
    PyObject* pyVCall(const char* name, const char* format, va_list args);
    PyObject* pyMethodCall(PyObject* self, const char* method, const char* format, ...);
    PyObject* pyVMethodCall(PyObject* self, const char* method, const char* format, va_list args);

    // Resolves a dotted name. The first part is a global of __main__, or else a module, which is imported.
    // The other parts are module attributes and dictionary keys; attributes of other objects are not found.
    // Borrowed reference or NULL. With quiet, a failure is not reported.
    PyObject* pyLookup(const char* dotted, bool quiet = false);
    // An item of a module or dictionary that pyLookup() finds. Borrowed reference or NULL.
    PyObject* pyValue(const char* module, const char* name);
    // Sets such an item; takes its own reference to the value.
    void pyAssign(const char* module, const char* name, PyObject* value);
    // Sets a global of __main__; takes its own reference to the value.
    void pyAssignGlobal(const char* name, PyObject* value);

    // The interpreter's version, as sys.hexversion; 0 on failure.
    long pyVersion();

    // The text of a str object in UTF-8; the caller frees it with free(). NULL for None, NULL and unencodable
    // text.
    char* pyString(PyObject* object);
    // Returns whether a str object has this text (UTF-8); false for None and NULL.
    bool pyStringEqual(PyObject* object, const char* text);

    // The pending exception, which stays pending. The first function returns the exception object, the second
    // one a value to display: its attribute "value", else its text. New reference, or NULL if no exception is
    // pending.
    PyObject* pyExceptValue();
    PyObject* pyExceptValuef();

    // For the debugger: binds the object to the global "dbg" and stops in pdb on the terminal.
    void pyDebug(PyObject* object);

    // With true, an interrupt raises KeyboardInterrupt in the interpreter; with false, it ends the process.
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

// Holds the interpreter lock for a scope if "really" is true, otherwise does nothing. A thread that holds the
// lock may lock it again.
class Python::PyGILStateWrapper
{
public:
    explicit PyGILStateWrapper(bool reallyLock) : really(reallyLock) { ensure(); }
    ~PyGILStateWrapper() { release(); }
    PyGILStateWrapper(const PyGILStateWrapper&) = delete;
    PyGILStateWrapper& operator=(const PyGILStateWrapper&) = delete;

    // For use in the middle of the scope: an ensure() must follow each release().
    void ensure();
    void release();

private:
    bool really;
    int state = 0; // a PyGILState_STATE
};

// Releases the calling thread's interpreter lock for a scope, so that another thread can take it.
class Python::PyThreadStateWrapper
{
public:
    PyThreadStateWrapper() { save(); }
    ~PyThreadStateWrapper() { restore(); }
    PyThreadStateWrapper(const PyThreadStateWrapper&) = delete;
    PyThreadStateWrapper& operator=(const PyThreadStateWrapper&) = delete;

    // For use in the middle of the scope: a save() must follow each restore().
    void save();
    void restore();

private:
    PyThreadState* saved;
};

// One expectation scope; it ends on every path.
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
