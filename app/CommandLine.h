// Reads the command line into settings of the main window.
//
// Graphical thread, before the window is shown. Every error ends the process with status 1.

#ifndef APP_COMMANDLINE_H
#define APP_COMMANDLINE_H

class MainWindow;

// The usage text, to standard output.
void printUsage();

// Prints the usage text and ends the process with status 1.
[[noreturn]] void usage();

namespace CommandLine {

// Applies each option at once, so the last of two that set the same wins. Qt has taken its own options away.
void apply(int argc, char** argv, MainWindow& window);

} // namespace CommandLine

#endif
