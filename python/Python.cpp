// SPDX-License-Identifier: GPL-2.0-or-later

#include "python/Python.h"

#include <cassert>
#include <cstdio>
#include <cstring>
#include <string>

#include "python/CPython.h"

bool Python::initialized = false;
PyObject* Python::main_dict = nullptr;

namespace {

constexpr size_t errorSize = 1024;
constexpr size_t scriptSize = 10240;

// Returns a new reference, or NULL with a pending exception.
PyObject* callObject(PyObject* callable, const char* format, va_list args)
{
    const PyRef arguments(Py_VaBuildValue(format, args));
    // Do not call PyObject_CallObject() with NULL: it would call the object without arguments.
    return arguments ? PyObject_CallObject(callable, arguments.get()) : nullptr;
}

// Takes the pending exception from the interpreter, normalises the exception and adds its traceback.
// restore() makes the exception pending again.
class TakenException
{
public:
    TakenException()
    {
#if PY_VERSION_HEX >= 0x030C0000
        value = PyErr_GetRaisedException();
#else
        PyErr_Fetch(&type, &value, &traceback);
        PyErr_NormalizeException(&type, &value, &traceback);
        if (value != nullptr && traceback != nullptr) {
            PyException_SetTraceback(value, traceback);
        }
#endif
    }
    ~TakenException()
    {
#if PY_VERSION_HEX < 0x030C0000
        Py_XDECREF(type);
        Py_XDECREF(traceback);
#endif
        Py_XDECREF(value);
    }
    TakenException(const TakenException&) = delete;
    TakenException& operator=(const TakenException&) = delete;

    // Returns a borrowed reference, or NULL if no exception was pending.
    PyObject* get() const
    {
        return value;
    }

    // Prints the exception and its traceback to sys.stderr.
    void display() const
    {
#if PY_VERSION_HEX >= 0x030C0000
        PyErr_DisplayException(value);
#else
        PyErr_Display(type, value, traceback);
#endif
    }

    // Returns the text that display() prints, as a bytes object in UTF-8. On failure, returns an empty
    // reference.
    PyRef text() const
    {
        const PyRef module(PyImport_ImportModule("traceback"));
        const PyRef frames(PyException_GetTraceback(value));
        const PyRef lines(module ? PyObject_CallMethod(module.get(), "format_exception", "OOO",
                                                       reinterpret_cast<PyObject*>(Py_TYPE(value)), value,
                                                       frames ? frames.get() : Py_None)
                                 : nullptr);
        const PyRef separator(PyUnicode_FromString(""));
        const PyRef joined(lines && separator ? PyUnicode_Join(separator.get(), lines.get()) : nullptr);
        PyRef bytes(joined ? PyUnicode_AsEncodedString(joined.get(), "utf-8", "backslashreplace") : nullptr);
        PyErr_Clear();
        return bytes;
    }

    // Makes the taken exception pending again, instead of any exception that is pending now.
    void restore()
    {
#if PY_VERSION_HEX >= 0x030C0000
        PyErr_SetRaisedException(value);
#else
        PyErr_Restore(type, value, traceback);
        type = nullptr;
        traceback = nullptr;
#endif
        value = nullptr;
    }

private:
#if PY_VERSION_HEX < 0x030C0000
    PyObject* type = nullptr;
    PyObject* traceback = nullptr;
#endif
    PyObject* value = nullptr;
};

// Starts the distribution's interpreter, because its site-packages directory contains the package manager.
// PYTHONHOME, PYTHONPATH, the user's own site-packages and another python in PATH have no effect. Texts and
// file names are UTF-8 in every locale, because packages use UTF-8. If the start fails, this function ends
// the process, as Py_Initialize() does.
void startInterpreter()
{
#if PY_VERSION_HEX >= 0x03080000
    PyPreConfig before;
    PyPreConfig_InitIsolatedConfig(&before);
    before.utf8_mode = 1;
#ifdef __SANITIZE_ADDRESS__
    // Use malloc(): the sanitizer cannot see memory errors inside the interpreter's own allocator.
    before.allocator = PYMEM_ALLOCATOR_MALLOC;
#endif
    PyStatus status = Py_PreInitialize(&before);
    PyConfig config;
    PyConfig_InitIsolatedConfig(&config);
    config.install_signal_handlers = 1;
    if (!PyStatus_Exception(status)) {
        status = PyConfig_SetString(&config, &config.program_name, L"" VYRE_PYTHON_PROGRAM);
    }
    if (!PyStatus_Exception(status)) {
        status = Py_InitializeFromConfig(&config);
    }
    PyConfig_Clear(&config);
    if (PyStatus_Exception(status)) {
        Py_ExitStatusException(status);
    }
#else
    static wchar_t interpreter[] = L"" VYRE_PYTHON_PROGRAM;
    static wchar_t noArgument[] = L"";
    static wchar_t* arguments[] = {noArgument};
    Py_IsolatedFlag = 1;
    Py_IgnoreEnvironmentFlag = 1;
    Py_NoUserSiteDirectory = 1;
    Py_SetProgramName(interpreter);
    Py_Initialize();
    PySys_SetArgvEx(1, arguments, 0);
#if PY_VERSION_HEX < 0x03070000
    PyEval_InitThreads();
#endif
#endif
}

// Returns a borrowed reference to an item of a dictionary. If the item is missing, returns NULL without an
// exception. If the object is not a dictionary or the name is invalid UTF-8, returns NULL and sets an
// exception.
PyObject* itemOf(PyObject* dict, const char* name)
{
    const PyRef key(PyUnicode_FromString(name));
    return key ? PyDict_GetItemWithError(dict, key.get()) : nullptr;
}

} // namespace

Python::~Python()
{
    if (initialized) {
        PyGILState_Ensure();
        Py_Finalize();
        initialized = false;
        main_dict = nullptr;
    }
}

bool Python::initialize()
{
    if (initialized) {
        return true;
    }
    initialized = true;
    startInterpreter();

    PyGILStateWrapper lock(true);
    py("import signal\ndefaultSigIntSigaction = signal.getsignal(signal.SIGINT)");
    const PyRef main(PyImport_ImportModule("__main__"));
    if (!main) {
        PyErr_Clear();
        error("Internal error: cannot find python __main__ module\n");
        return false;
    }
    // The borrowed reference to the dictionary stays valid, because the interpreter's table of modules owns
    // the module.
    main_dict = PyModule_GetDict(main.get());
    if (main_dict == nullptr) {
        PyErr_Clear();
        error("Internal error: cannot find python __main__ dict\n");
        return false;
    }
    return true;
}

void Python::pyExceptStart()
{
    expected.emplace();
}

void Python::pyExceptExpect(PyObject* type)
{
    assert(!expected.empty());
    if (type == nullptr) {
        error("Internal error: pyExceptExpect called with NULL\n");
    }
    expected.top().push_back(type);
}

void Python::pyExceptClear()
{
    assert(!expected.empty());
    expected.pop();
    PyErr_Clear();
}

bool Python::pyExceptMatches(PyObject* result, PyObject* type)
{
    return result == nullptr && PyErr_Occurred() != nullptr && PyErr_ExceptionMatches(type) != 0;
}

void Python::handleException()
{
    if (exceptionIsExpected()) {
        exceptionExpected();
    } else {
        exceptionError();
    }
}

bool Python::exceptionIsExpected() const
{
    if (!expected.empty()) {
        for (PyObject* type : expected.top()) {
            if (PyErr_ExceptionMatches(type) != 0) {
                return true;
            }
        }
    }
    return false;
}

void Python::exceptionExpected() {}

void Python::tracebackOnTerminal(const char*) {}

bool Python::displayException()
{
    bool displayed = false;
    {
        const TakenException exception;
        if (exception.get() != nullptr) {
            exception.display();
            displayed = true;
            const PyObject* stream = PySys_GetObject("stderr");
            if (stream != nullptr && stream == PySys_GetObject("__stderr__")) {
                const PyRef text = exception.text();
                if (text) {
                    tracebackOnTerminal(PyBytes_AsString(text.get()));
                }
            }
        }
    }
    PyErr_Clear();
    return displayed;
}

void Python::exceptionError()
{
    if (displayException()) {
        error("Internal error: python exception occurred from C code.\n"
              "When reporting this issue, please include the contents of the\n"
              "Log window, which should contain a walkback.");
    } else {
        error("Internal error: python exception occurred, but exception information was empty.");
    }
}

int Python::py(const char* text)
{
    const int status = PyRun_SimpleString(text);
    if (status == -1 && PyErr_Occurred() != nullptr) {
        handleException();
    }
    return status;
}

PyObject* Python::pyr(const char* text)
{
    PyObject* result = PyRun_String(text, Py_eval_input, main_dict, main_dict);
    if (result == nullptr && PyErr_Occurred() != nullptr) {
        handleException();
    }
    return result;
}

int Python::pyf(const char* format, ...)
{
    char text[scriptSize];
    va_list args;
    va_start(args, format);
    const int length = std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    if (length < 0 || static_cast<size_t>(length) >= sizeof text) {
        internalError("Internal error: pyf text too long: %.40s\n", format);
        return -1;
    }
    return py(text);
}

PyObject* Python::pyrf(const char* format, ...)
{
    char text[scriptSize];
    va_list args;
    va_start(args, format);
    const int length = std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    if (length < 0 || static_cast<size_t>(length) >= sizeof text) {
        internalError("Internal error: pyrf text too long: %.40s\n", format);
        return nullptr;
    }
    return pyr(text);
}

PyObject* Python::pyCall(const char* name, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    PyObject* result = pyVCall(name, format, args);
    va_end(args);
    return result;
}

PyObject* Python::pyVCall(const char* name, const char* format, va_list args)
{
    // Keep a reference during the call, because the called code may bind the name to another object.
    const PyRef callable = PyRef::borrow(pyLookup(name, false));
    if (!callable) {
        internalError("Internal error: %s not found\n", name);
        return nullptr;
    }
    if (!PyCallable_Check(callable.get())) {
        internalError("Internal error: %s not callable\n", name);
        return nullptr;
    }
    return call(callable.get(), format, args);
}

PyObject* Python::pyMethodCall(PyObject* self, const char* method, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    PyObject* result = pyVMethodCall(self, method, format, args);
    va_end(args);
    return result;
}

PyObject* Python::pyVMethodCall(PyObject* self, const char* method, const char* format, va_list args)
{
    const PyRef callable = methodOf(self, method);
    return callable ? call(callable.get(), format, args) : nullptr;
}

PyObject* Python::pyMethodTry(PyObject* self, const char* method, const char* format, ...)
{
    const PyRef callable = methodOf(self, method);
    if (!callable) {
        PyErr_Clear(); // methodOf() has reported the failure
        return nullptr;
    }
    va_list args;
    va_start(args, format);
    PyObject* result = callObject(callable.get(), format, args);
    va_end(args);
    return result;
}

// If the object lacks the method, reports this and returns a null reference.
PyRef Python::methodOf(PyObject* self, const char* method)
{
    if (self == nullptr) {
        internalError("Internal error: method %s call attemped with NULL self\n", method);
        return PyRef();
    }
    PyRef callable(PyObject_GetAttrString(self, method));
    if (!callable) {
        internalError("Internal error: method %s not found\n", method);
        return PyRef();
    }
    if (!PyCallable_Check(callable.get())) {
        internalError("Internal error: method %s not callable\n", method);
        return PyRef();
    }
    return callable;
}

// Returns a new reference or NULL.
PyObject* Python::call(PyObject* callable, const char* format, va_list args)
{
    PyObject* result = callObject(callable, format, args);
    if (result == nullptr && PyErr_Occurred() != nullptr) {
        handleException();
    }
    return result;
}

PyObject* Python::pyLookup(const char* dotted, bool quiet)
{
    PyObject* current = nullptr;
    std::string previous;
    for (const char* rest = dotted; rest != nullptr;) {
        const char* dot = std::strchr(rest, '.');
        const std::string piece = dot != nullptr ? std::string(rest, dot) : std::string(rest);
        PyObject* found = nullptr;
        if (current == nullptr) {
            found = itemOf(main_dict, piece.c_str());
            if (found == nullptr) {
                PyErr_Clear();
                // The borrowed pointer stays valid, because the interpreter's table of modules owns the
                // module.
                found = PyRef(PyImport_ImportModule(piece.c_str())).get();
            }
        } else {
            PyObject* dict = current;
            if (PyModule_Check(current)) {
                dict = PyModule_GetDict(current);
                if (dict == nullptr) {
                    PyErr_Clear();
                    if (!quiet) {
                        internalError("Internal error: pyLookup %s: module %s lacks dictionary\n", rest,
                                      previous.c_str());
                    }
                    return nullptr;
                }
            }
            found = itemOf(dict, piece.c_str());
        }
        if (found == nullptr) {
            PyErr_Clear();
            if (!quiet) {
                internalError("Internal error: pyLookup %s: %s not found\n", rest, piece.c_str());
            }
            return nullptr;
        }
        current = found;
        previous = piece;
        rest = dot != nullptr ? dot + 1 : nullptr;
    }
    return current;
}

// If `module` names a module, returns the dictionary of this module. If `module` names any other object,
// returns this object. The reference is borrowed. On failure, reports the error and returns NULL.
PyObject* Python::namespaceOf(const char* module)
{
    PyObject* found = pyLookup(module, true);
    if (found == nullptr) {
        internalError("Internal error: %s not found\n", module);
        return nullptr;
    }
    if (!PyModule_Check(found)) {
        return found;
    }
    PyObject* dict = PyModule_GetDict(found);
    if (dict == nullptr) {
        PyErr_Clear();
        internalError("Internal error: module %s lacks dictionary\n", module);
    }
    return dict;
}

PyObject* Python::pyValue(const char* module, const char* name)
{
    PyObject* dict = namespaceOf(module);
    if (dict == nullptr) {
        return nullptr;
    }
    PyObject* value = itemOf(dict, name);
    if (value == nullptr && PyErr_Occurred() != nullptr) {
        handleException();
    }
    return value;
}

void Python::pyAssign(const char* module, const char* name, PyObject* value)
{
    PyObject* dict = namespaceOf(module);
    if (dict == nullptr) {
        return;
    }
    if (value != nullptr && PyDict_SetItemString(dict, name, value) == 0) {
        return;
    }
    if (PyErr_Occurred() != nullptr) {
        handleException();
    } else {
        internalError("Internal error: cannot assign %s.%s\n", module, name);
    }
}

void Python::pyAssignGlobal(const char* name, PyObject* value)
{
    pyAssign("__main__", name, value);
}

long Python::pyVersion()
{
    PyObject* version = pyValue("sys", "hexversion");
    if (version == nullptr) {
        return 0;
    }
    const long number = PyLong_AsLong(version);
    if (number == -1 && PyErr_Occurred() != nullptr) {
        handleException();
        return 0;
    }
    return number;
}

// Encodes a Python string in UTF-8 as a bytes object. If this fails, handles the exception and returns an
// empty reference.
PyRef Python::encode(PyObject* object)
{
    PyRef bytes(PyUnicode_AsEncodedString(object, "utf-8", "strict"));
    if (!bytes && PyErr_Occurred() != nullptr) {
        handleException();
    }
    assert(!bytes || PyBytes_Check(bytes.get()));
    return bytes;
}

char* Python::pyString(PyObject* object)
{
    if (object == nullptr) {
        error("Internal error: pyString passed NULL python object\n");
        return nullptr;
    }
    if (object == Py_None) {
        return nullptr;
    }
    const PyRef bytes = encode(object);
    return bytes ? strdup(PyBytes_AsString(bytes.get())) : nullptr;
}

bool Python::pyStringEqual(PyObject* object, const char* text)
{
    if (object == nullptr) {
        error("Internal error: pyStringEqual passed NULL python object\n");
        return false;
    }
    if (object == Py_None) {
        return false;
    }
    const PyRef bytes = encode(object);
    return bytes && std::strcmp(PyBytes_AsString(bytes.get()), text) == 0;
}

PyObject* Python::pyExceptValue()
{
    TakenException exception;
    PyRef value = PyRef::borrow(exception.get());
    exception.restore();
    return value.release();
}

PyObject* Python::pyExceptValuef()
{
    TakenException exception;
    if (exception.get() == nullptr) {
        return nullptr;
    }
    PyRef value(PyObject_GetAttrString(exception.get(), "value"));
    if (!value) {
        PyErr_Clear();
        value = PyRef(pyCall("__builtins__.str", "(O)", exception.get()));
    }
    exception.restore();
    return value.release();
}

void Python::pyDebug(PyObject* object)
{
    PyErr_Clear();
    pyAssignGlobal("dbg", object);
    py("import sys\nsys.stdout = sys.__stdout__\nsys.stderr = sys.__stderr__\nimport pdb\npdb.set_trace()");
    PyErr_Clear();
}

void Python::setEnablePythonSIGINTHandler(bool enable)
{
    py(enable ? "signal.signal(signal.SIGINT, defaultSigIntSigaction)"
              : "signal.signal(signal.SIGINT, signal.SIG_DFL)");
}

// Formats the message, truncates it to the size of the buffer, and calls error() with it.
void Python::internalError(const char* format, ...)
{
    char text[errorSize];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    error(text);
}

void Python::PyGILStateWrapper::ensure()
{
    if (really) {
        state = PyGILState_Ensure();
    }
}

void Python::PyGILStateWrapper::release()
{
    if (really) {
        PyGILState_Release(static_cast<PyGILState_STATE>(state));
    }
}

void Python::PyThreadStateWrapper::save()
{
    saved = PyEval_SaveThread();
}

void Python::PyThreadStateWrapper::restore()
{
    PyEval_RestoreThread(saved);
}
