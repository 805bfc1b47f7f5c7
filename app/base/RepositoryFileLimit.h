// SPDX-License-Identifier: GPL-2.0-or-later

// The maximum sizes of a package manager's configuration file, and of one repository in this file. If the
// file or one of its repositories is larger than its limit, VYRE does not read the file.
//
// Any thread may use these constants. The program and the script use the same limits, so that both know the
// same repositories.

#ifndef APP_BASE_REPOSITORYFILELIMIT_H
#define APP_BASE_REPOSITORYFILELIMIT_H

// The limit for a file, in bytes. A file of this size can contain about ten thousand repositories, and the
// program can read it in a moment.
constexpr int repositoryFileLimit = 8 << 20;

// The limit for one repository, in bytes. The form for a repository can show a text of this size in a moment.
// The limit does not apply to the options of the main section, because no form shows them.
constexpr int repositorySectionLimit = 256 << 10;

#endif
