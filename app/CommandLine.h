// SPDX-License-Identifier: GPL-2.0-or-later

// Reads the command line into settings of the main window.
//
// Graphical thread, before the window is shown. Every error ends the process with status 1.

#ifndef APP_COMMANDLINE_H
#define APP_COMMANDLINE_H

class MainWindow;

// Prints the usage text to standard output.
void printUsage();

// Prints the usage text and ends the process with status 1.
[[noreturn]] void usage();

namespace CommandLine {

// Applies the options in their order, so the last of two options for the same setting wins. Qt has removed
// its own options already.
void apply(int argc, char** argv, MainWindow& window);

} // namespace CommandLine

#endif
