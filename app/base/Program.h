// SPDX-License-Identifier: GPL-2.0-or-later

// The global variables for the name of the program and the application object.
//
// main() sets both variables before any other thread exists. After that, they are only read.

#ifndef APP_BASE_PROGRAM_H
#define APP_BASE_PROGRAM_H

class QApplication;

// The base name of argv[0]. Every message to standard error while VYRE starts begins with this name.
extern const char* program;

// The only application object. main() owns it. Before its construction and after its destruction, this
// pointer is null.
extern QApplication* application;

#endif
