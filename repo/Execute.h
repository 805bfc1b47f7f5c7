// SPDX-License-Identifier: GPL-2.0-or-later

// Starts external programs that run independently of VYRE, and continue to run after VYRE has ended.
//
// Only the graphical thread calls these functions. The descriptors that keepOutput() saves stay open until
// the process ends.

#ifndef REPO_EXECUTE_H
#define REPO_EXECUTE_H

#include <QCoreApplication>

class QWidget;

class Execute
{
    Q_DECLARE_TR_FUNCTIONS(Execute)

public:
    // Saves the current standard output and standard error, and gives them to all programs that execute()
    // starts after this call. During an operation, descriptors 1 and 2 are pipes that close when the
    // operation ends. If a program wrote to such a closed pipe, the program would be killed.
    static void keepOutput();

    // Runs a program. argv[0] is the path of the program, and the following elements are its arguments. A
    // null pointer marks the end of the array. The function returns immediately. After that, the caller may
    // destroy the array. The program is not a child of this process and has its own session. It inherits only
    // the three standard descriptors, and all its signals have their default actions. If no process can be
    // created, a message box over `parent` reports the failure. The function does not wait for this box,
    // because a running operation must continue. Failures of the new process are reported only on standard
    // error.
    static void execute(QWidget* parent, char* const* argv);
};

#endif
