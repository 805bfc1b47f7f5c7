// SPDX-License-Identifier: GPL-2.0-or-later

// CMake needs a source file to compile the headers for the tests.
