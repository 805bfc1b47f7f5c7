// SPDX-License-Identifier: GPL-2.0-or-later

// Starts external programs that keep running independently of this program.
//
// Graphical thread. The saved descriptors live as long as the process.

#ifndef REPO_EXECUTE_H
#define REPO_EXECUTE_H

#include <QCoreApplication>

class QWidget;

class Execute
{
    Q_DECLARE_TR_FUNCTIONS(Execute)

public:
    // Saves the current standard output and standard error; programs that execute() starts later get these.
    // Later the two may be pipes that close at the end of an operation. A program that still writes to such a
    // pipe would be killed.
    static void keepOutput();

    // Runs argv[0], a path, with the given arguments; a null pointer ends the list. The function returns at
    // once, and the arguments need to live only until then. The program is no child of this process and has
    // its own session. It inherits only the three standard descriptors, and all its signals are in their
    // default state. If no process can be created, a window of `parent` reports the failure. Nothing waits
    // for that window, because an operation that ends meanwhile must continue. Standard error alone reports
    // any later failure.
    static void execute(QWidget* parent, char* const* argv);
};

#endif
