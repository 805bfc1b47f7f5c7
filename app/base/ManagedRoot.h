// SPDX-License-Identifier: GPL-2.0-or-later

// The directory that is "/" of the managed system. VYRE can manage the packages in the tree of a container or
// image instead of those of the running system.
//
// Any thread; no state.

#ifndef APP_BASE_MANAGEDROOT_H
#define APP_BASE_MANAGEDROOT_H

#include <QString>

namespace ManagedRoot {

// The environment variable VYREROOT, made absolute and without a "/" at its end. The path is empty if the
// variable is unset, empty or "/", because then the running system itself is managed.
QString path();

// Converts an absolute path of the managed system into a path on the running system. Without a managed root,
// the path is unchanged.
QString absolute(const QString& pathInRoot);

// The same for a directory to write into, named by a file of the managed system. A path that is relative or
// already begins with the root is unchanged.
QString namedDirectory(const QString& directory);

// The same for a directory to read from. If it is missing below the root, the path is unchanged: the managed
// system may share this directory with the running one.
QString namedDirectoryOfFiles(const QString& directory);

} // namespace ManagedRoot

#endif
