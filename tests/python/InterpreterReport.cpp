// SPDX-License-Identifier: GPL-2.0-or-later

// Prints the paths of the embedded interpreter's standard library and of the package manager's modules, one
// path on each line. Then prints the import path, the arguments and the encodings of the interpreter.

#include <cstdio>

#include "python/Python.h"

namespace {

class PrintingPython : public Python
{
public:
    void error(const char* text) override { std::fprintf(stderr, "error: %s\n", text); }
    void warning(const char* text) override { std::fprintf(stderr, "warning: %s\n", text); }
};

} // namespace

int main()
{
    PrintingPython python;
    if (!python.initialize()) {
        return 2;
    }
    return python.py(
               "import sys, os, rpm, dnf, dnf.exceptions\n"
               "print(os.__file__)\n"
               "print(rpm.__file__)\n"
               "print(dnf.__file__)\n"
               "print(sys.path)\n"
               "print(sys.argv)\n"
               "print(sys.flags.utf8_mode, sys.getfilesystemencoding(), open(os.devnull).encoding)\n") == 0
               ? 0
               : 1;
}
