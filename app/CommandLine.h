// SPDX-License-Identifier: GPL-2.0-or-later

// Reads the command line and sets the options of the main window.
//
// The graphical thread calls these functions before the window is shown. Every error ends the process with
// status 1.

#ifndef APP_COMMANDLINE_H
#define APP_COMMANDLINE_H

class MainWindow;

// Prints the usage text to standard output.
void printUsage();

// Prints the usage text and ends the process with status 1.
[[noreturn]] void usage();

namespace CommandLine {

// Applies the options in the order of the command line. If two options set the same value, the last one wins.
// Qt has already removed its own options.
void apply(int argc, char** argv, MainWindow& window);

} // namespace CommandLine

#endif
