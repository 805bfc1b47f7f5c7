// SPDX-License-Identifier: GPL-2.0-or-later

// The built-in extension module yumIOC. Through it the script python/YumIO.py reports progress, output and
// questions to the program. Each of its functions calls the member function of the same name of the back end.
//
// The module's functions run on the thread that runs the script, with the interpreter lock held. The
// interpreter owns the module; the back end is not owned here.

#ifndef PYTHON_YUMIOC_H
#define PYTHON_YUMIOC_H

#include "python/CPython.h"

class YumIOCTarget;

PyMODINIT_FUNC PyInit_yumIOC();

namespace YumIOC {

// Connects the module's functions to this back end and registers the module for import. Call it before the
// interpreter starts. Later calls may change the back end at any time. Returns the registration's result: 0,
// or -1 on failure.
int initialize(YumIOCTarget* yumIO);

} // namespace YumIOC

#endif
