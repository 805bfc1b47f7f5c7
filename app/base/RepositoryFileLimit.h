// SPDX-License-Identifier: GPL-2.0-or-later

// The maximum size of a configuration file of the package manager, and of one repository in it. Larger ones
// are not read.
//
// Any thread; constants. The program and the script use the same limits, so that both know the same
// repositories.

#ifndef APP_BASE_REPOSITORYFILELIMIT_H
#define APP_BASE_REPOSITORYFILELIMIT_H

// In bytes. Enough for about ten thousand repositories, and still read in a moment.
constexpr int repositoryFileLimit = 8 << 20;

// In bytes. The form that edits one repository can still show as much in a moment. This limit does not apply
// to the options of the main section, because no form shows them.
constexpr int repositorySectionLimit = 256 << 10;

#endif
