# SPDX-License-Identifier: GPL-2.0-or-later
"""Converts paths of the managed system to paths of the running system. Only this module reads VYREROOT.

Every thread may call this module; it has no state.
"""

import os


def managedRoot():
    """The managed root: the value of VYREROOT without a final "/", or "/" if the variable is not set."""
    given = os.environ.get('VYREROOT', '')
    if not given:
        return '/'
    return os.path.abspath(given)


def inRoot(path):
    """Convert an absolute path of the managed system to a path of the running system."""
    root = managedRoot()
    return path if root == '/' else root + path


def isElsewhere(path):
    """Whether a path is absolute and leads outside the managed root. The absolute paths in the files of the managed
    system are examples, because they do not begin with the managed root.
    """
    root = managedRoot()
    return path.startswith('/') and root != '/' and path != root and not path.startswith(root + '/')


def namedDirectory(path):
    """The path of a directory that the script writes to. path: the path in a file of the managed system."""
    return inRoot(path) if isElsewhere(path) else path


def namedDirectoryOfFiles(path):
    """The path of a directory that the script only reads. path: the path in a file of the managed system. If the
    directory is missing below the managed root, the result is the directory of the running system.
    """
    return inRoot(path) if isElsewhere(path) and os.path.isdir(inRoot(path)) else path


def nearestExisting(path):
    """This path, or its nearest parent directory that exists."""
    while not os.path.lexists(path):
        path = os.path.dirname(path)
    return path


def canWrite(path):
    """Whether this user can create files in a directory. The directory need not exist yet."""
    return os.access(nearestExisting(path), os.W_OK | os.X_OK)


def isReadOnly(path):
    """Whether the file system of a directory is read-only, so that nobody can create files in the directory. The
    directory need not exist yet.
    """
    return bool(os.statvfs(nearestExisting(path)).f_flag & os.ST_RDONLY)
