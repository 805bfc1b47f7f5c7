// The directory that stands for "/" of the managed system: VYRE can keep the packages of a container or image
// tree instead of those of the system it runs on.
//
// Any thread; no state.

#ifndef APP_BASE_MANAGEDROOT_H
#define APP_BASE_MANAGEDROOT_H

#include <QString>

namespace ManagedRoot {

// The environment variable VYREROOT, made absolute and without a "/" at its end; empty when it is unset,
// empty or "/", that is, when the running system itself is managed.
QString path();

// The place, on this system, of an absolute path of the managed system. With no managed root it is the path
// itself, unchanged.
QString absolute(const QString& pathInRoot);

// The place, on this system, of a directory that a file of the managed system names for what is written:
// below the root, unless it leads there by itself.
QString namedDirectory(const QString& directory);

// The same for what is read: a directory that there is not below the root may be shared with this system.
QString namedDirectoryOfFiles(const QString& directory);

} // namespace ManagedRoot

#endif
