// SPDX-License-Identifier: GPL-2.0-or-later

// The built-in extension module yumIOC. Through this module, the script YumIO.py sends progress, output and
// questions to the program. Each function of the module calls the back end's member function of the same
// name.
//
// The module's functions run on the thread that runs the script, with the interpreter lock held. The
// interpreter owns the module. The main window owns the back end.

#ifndef PYTHON_YUMIOC_H
#define PYTHON_YUMIOC_H

#include "python/CPython.h"

class YumIOCTarget;

PyMODINIT_FUNC PyInit_yumIOC();

namespace YumIOC {

// Connects the module's functions to the back end `yumIO`, and registers the module for import. The first
// call must come before the interpreter starts. Later calls may connect another back end at any time. Returns
// 0, or -1 if the registration failed.
int initialize(YumIOCTarget* yumIO);

} // namespace YumIOC

#endif
