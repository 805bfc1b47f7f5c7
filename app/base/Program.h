// SPDX-License-Identifier: GPL-2.0-or-later

// The name of the process and its application object.
//
// main() sets both before any other thread exists. Later they are only read.

#ifndef APP_BASE_PROGRAM_H
#define APP_BASE_PROGRAM_H

class QApplication;

// The base name of argv[0]. Every message to standard error at start-up begins with it. Not owned.
extern const char* program;

// The only application object. main() owns it; before and after its life this pointer is null.
extern QApplication* application;

#endif
