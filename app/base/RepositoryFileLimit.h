// How large a file of the package manager's configuration, and a repository in it, may be for the program and
// for its script to read it.
//
// Any thread; constants. Both readers take them from here, so that neither has repositories that the other
// does not know.

#ifndef APP_BASE_REPOSITORYFILELIMIT_H
#define APP_BASE_REPOSITORYFILELIMIT_H

// In bytes: room for some ten thousand repositories, and read in a moment.
constexpr int repositoryFileLimit = 8 << 20;

// In bytes: the form that edits one repository shows so much in a moment. The options of the main section are
// not shown, and have no such limit.
constexpr int repositorySectionLimit = 256 << 10;

#endif
