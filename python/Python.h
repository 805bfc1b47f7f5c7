// SPDX-License-Identifier: GPL-2.0-or-later

// The embedded Python 3 interpreter. This class starts the interpreter, runs statements, looks up dotted
// names, calls functions and methods, converts strings, and handles the exceptions of these calls.
//
// The back end derives from this class, and the program has only one back end. Any thread may call the
// functions while that thread holds the interpreter lock. The graphical thread holds the lock from
// initialize() on, except while it waits for a worker thread. No function throws: a function that fails calls
// error() and returns NULL, false or 0.
//
// Results are PyObject*. The caller must release a "new" reference (PyRef does this), but must not release a
// "borrowed" reference.

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
    // Ends the interpreter if it was started. The destructor of a derived class must release the references
    // of that class first.
    virtual ~Python();

    // Expectation scopes. pyExceptStart() begins a scope, and pyExceptClear() ends it and clears any pending
    // exception. pyExceptExpect() adds an expected type (borrowed). If a call raises an exception of an
    // expected type, the exception stays pending, and the caller tests for it with pyExceptMatches(). Scopes
    // can be nested; only the innermost scope is used. The class ExceptScope ends its scope on every path.
    virtual void pyExceptStart();
    virtual void pyExceptExpect(PyObject* type);
    virtual void pyExceptClear();
    // Returns whether a call has failed with a pending exception of this type. `result` is the result of the
    // call, which is NULL after a failure.
    virtual bool pyExceptMatches(PyObject* result, PyObject* type);

    // Reports an internal error to the user.
    virtual void error(const char* text) = 0;
    // Reports a warning to the user.
    virtual void warning(const char* text) = 0;

    // Called while an exception is pending. If the innermost scope expects the exception, the exception stays
    // pending. Otherwise this function reports the exception and clears it.
    virtual void handleException();
    // Called by handleException() for an expected exception. This implementation does nothing.
    virtual void exceptionExpected();
    // Called by handleException() for an exception that is not expected. Prints its traceback to sys.stderr
    // and calls error().
    virtual void exceptionError();
    // If the script has not replaced sys.stderr, a printed traceback goes to the process's standard error.
    // This function is called after that, with the traceback in UTF-8.
    virtual void tracebackOnTerminal(const char* text);
    // Returns whether the innermost scope expects the pending exception.
    bool exceptionIsExpected() const;
    // Clears the pending exception and prints its traceback to sys.stderr. Returns false if no exception was
    // pending.
    bool displayException();

    // Starts the interpreter. From then on, the calling thread holds the interpreter lock. Returns whether
    // the interpreter is ready. If an earlier call has already started the interpreter, with or without
    // success, does nothing and returns true. Built-in modules must be registered before this call.
    bool initialize();

    // Runs Python statements in __main__. Returns 0, or -1 on failure.
    int py(const char* text);
    // Evaluates an expression in __main__. Returns a new reference or NULL.
    PyObject* pyr(const char* text);
    // pyf() and pyrf() do the same as py() and pyr(), with a printf format. The text may have at most 10239
    // bytes. A longer text is reported and does not run.
    int pyf(const char* format, ...) __attribute__((format(printf, 2, 3)));
    PyObject* pyrf(const char* format, ...) __attribute__((format(printf, 2, 3)));

    // pyCall() and pyVCall() call a callable that pyLookup() finds. pyMethodCall() and pyVMethodCall() call a
    // method of an object. The format is a format of Py_BuildValue() for a tuple, such as "(s)", "(O,O)" or
    // "()". Each function returns a new reference or NULL.
    PyObject* pyCall(const char* name, const char* format, ...);
    PyObject* pyVCall(const char* name, const char* format, va_list args);
    PyObject* pyMethodCall(PyObject* self, const char* method, const char* format, ...);
    PyObject* pyVMethodCall(PyObject* self, const char* method, const char* format, va_list args);
    // Like pyMethodCall(), but every exception of the method stays pending. The caller must then call
    // handleException().
    PyObject* pyMethodTry(PyObject* self, const char* method, const char* format, ...);

    // Finds the object with a dotted name. The first part is a global of __main__. If this global is missing,
    // the first part is a module, which is imported. The other parts are module attributes and dictionary
    // keys; attributes of other objects are not found. Returns a borrowed reference or NULL. If "quiet" is
    // true, a failure is not reported.
    PyObject* pyLookup(const char* dotted, bool quiet = false);
    // Returns an item of a module or dictionary that pyLookup() finds: a borrowed reference or NULL.
    PyObject* pyValue(const char* module, const char* name);
    // Sets an item of a module or dictionary that pyLookup() finds. Adds its own reference to the value.
    void pyAssign(const char* module, const char* name, PyObject* value);
    // Sets a global of __main__. Adds its own reference to the value.
    void pyAssignGlobal(const char* name, PyObject* value);

    // Returns the interpreter's version in the form of sys.hexversion, or 0 on failure. Part of the interface
    // of the interpreter; the program does not need the version now.
    long pyVersion();

    // Returns the text of a str object in UTF-8. The caller must release it with free(). Returns NULL for
    // None, for NULL, and for a text that UTF-8 cannot represent.
    char* pyString(PyObject* object);
    // Returns whether a str object has this text (UTF-8). Returns false for None and NULL.
    bool pyStringEqual(PyObject* object, const char* text);

    // pyExceptValue() returns the pending exception object. pyExceptValuef() returns a value for a message:
    // the attribute "value" of the exception or, if it is missing, the exception's text. Both return a new
    // reference, or NULL if no exception is pending. The exception stays pending.
    PyObject* pyExceptValue();
    PyObject* pyExceptValuef();

    // For developers: sets the global "dbg" to the object, and stops in Python's debugger on the terminal.
    void pyDebug(PyObject* object);

    // If "enable" is true, SIGINT raises KeyboardInterrupt in the interpreter. Otherwise SIGINT ends the
    // process.
    void setEnablePythonSIGINTHandler(bool enable);

    static bool initialized;    // true from the start of the interpreter until its end
    static PyObject* main_dict; // the dictionary of __main__, borrowed

private:
    void internalError(const char* format, ...) __attribute__((format(printf, 2, 3)));
    PyRef methodOf(PyObject* self, const char* method);
    PyObject* call(PyObject* callable, const char* format, va_list args);
    PyObject* namespaceOf(const char* module);
    PyRef encode(PyObject* object);

    std::stack<std::list<PyObject*>> expected; // the types are borrowed
};

// While a PyGILStateWrapper exists, its thread holds the interpreter lock. The thread may already hold the
// lock before the construction. If "reallyLock" is false, the PyGILStateWrapper does nothing.
class Python::PyGILStateWrapper
{
public:
    explicit PyGILStateWrapper(bool reallyLock) : really(reallyLock) { ensure(); }
    ~PyGILStateWrapper() { release(); }
    PyGILStateWrapper(const PyGILStateWrapper&) = delete;
    PyGILStateWrapper& operator=(const PyGILStateWrapper&) = delete;

    // Between construction and destruction, release() unlocks and ensure() locks again. An ensure() must
    // follow each release().
    void ensure();
    void release();

private:
    bool really;
    int state = 0; // a PyGILState_STATE
};

// While a PyThreadStateWrapper exists, its thread does not hold the interpreter lock, so that another thread
// can acquire the lock.
class Python::PyThreadStateWrapper
{
public:
    PyThreadStateWrapper() { save(); }
    ~PyThreadStateWrapper() { restore(); }
    PyThreadStateWrapper(const PyThreadStateWrapper&) = delete;
    PyThreadStateWrapper& operator=(const PyThreadStateWrapper&) = delete;

    // Between construction and destruction, restore() locks and save() unlocks again. A save() must follow
    // each restore().
    void save();
    void restore();

private:
    PyThreadState* saved;
};

// While an ExceptScope exists, an expectation scope is active. The destructor ends the scope on every path
// out of the code.
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
