// The built-in extension module yumIOC, through which the script python/YumIO.py reports progress, output and
// questions back to the program. Each of its functions calls the member of the same name of the back end.
//
// The module's functions run on the thread that runs the script, with the interpreter lock held. The module
// belongs to the interpreter; the back end is not owned here.

#ifndef PYTHON_YUMIOC_H
#define PYTHON_YUMIOC_H

#ifndef PY_SSIZE_T_CLEAN
#define PY_SSIZE_T_CLEAN
#endif
#include <Python.h>

class YumIOCTarget;

PyMODINIT_FUNC PyInit_yumIOC();

namespace YumIOC {

// Routes the module's functions to this back end and registers the module for import; to be called before the
// interpreter is started. Once the module is registered it may be called at any time, to change the back end.
// Returns the registration's result: 0, or -1 when it failed.
int initialize(YumIOCTarget* yumIO);

} // namespace YumIOC

#endif
