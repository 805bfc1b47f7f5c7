// SPDX-License-Identifier: GPL-2.0-or-later

// Handles the managed root, the directory that is "/" of the managed system. VYRE can manage the packages in
// the directory tree of a container or image, instead of the running system's packages.
//
// Any thread may call these functions. They have no state.

#ifndef APP_BASE_MANAGEDROOT_H
#define APP_BASE_MANAGEDROOT_H

#include <QString>

namespace ManagedRoot {

// Returns the absolute path of the managed root, without a "/" at its end. The environment variable VYREROOT
// names the managed root. The result is empty if the variable is unset, empty or "/", because then the
// running system itself is managed.
QString path();

// Converts an absolute path of the managed system to a path on the running system. If no managed root is set,
// the path does not change.
QString absolute(const QString& pathInRoot);

// A file of the managed system may name a directory to which VYRE writes. This function converts the path of
// such a directory. A relative path does not change. A path that already begins with the root does not change
// either.
QString namedDirectory(const QString& directory);

// Converts the path of a directory from which VYRE only reads, in the same way as namedDirectory(). But if
// this directory does not exist below the root, the path does not change: the managed system may share the
// running system's directory.
QString namedDirectoryOfFiles(const QString& directory);

} // namespace ManagedRoot

#endif
