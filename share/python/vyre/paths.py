# SPDX-License-Identifier: GPL-2.0-or-later
"""Where the paths of the managed system are on the running system. Only this module reads VYREROOT.

Every thread may call it; it has no state.
"""

import os


def managedRoot():
    """The directory that stands for "/" of the managed system: VYREROOT if it is set, without a final "/"."""
    given = os.environ.get('VYREROOT', '')
    if not given:
        return '/'
    return os.path.abspath(given)


def inRoot(path):
    """Where an absolute path of the managed system is on the running system."""
    root = managedRoot()
    return path if root == '/' else root + path


def isElsewhere(path):
    """Whether an absolute path is outside the root. The files of the managed system name such paths."""
    root = managedRoot()
    return path.startswith('/') and root != '/' and path != root and not path.startswith(root + '/')


def namedDirectory(path):
    """Where a directory is that the script writes to, and that a file of the managed system names."""
    return inRoot(path) if isElsewhere(path) else path


def namedDirectoryOfFiles(path):
    """The same for a directory that the script only reads. If it is missing below the root, it is that of the running
    system.
    """
    return inRoot(path) if isElsewhere(path) and os.path.isdir(inRoot(path)) else path


def canWrite(path):
    """Whether this user can make files in a directory. The directory need not exist yet."""
    while not os.path.lexists(path):
        path = os.path.dirname(path)
    return os.access(path, os.W_OK | os.X_OK)
