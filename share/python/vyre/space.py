# SPDX-License-Identifier: GPL-2.0-or-later
"""The free disk space: hints in messages about a full disk, and the space for package scripts. Workers run this module.
"""

import os
import sys

import dnf.exceptions
import dnf.transaction
import rpm

from .database import DATABASES
from .paths import inRoot
from .program import tr, yumIOC

# If a directory has less free space than this number of bytes, a full disk is the probable cause of a failure to write
# a file there.
LITTLE_SPACE = 1 << 20


def spaceHint(directory, needed=LITTLE_SPACE):
    """Returns a line for an error message if the directory has fewer free bytes than `needed`, otherwise an empty text.
    The line is useful because librepo and rpm report damaged files, or no error, if the disk is full.
    """
    try:
        found = os.statvfs(directory)
    except OSError:
        return ''
    free = found.f_bavail * found.f_frsize
    return '' if free >= needed else tr('\nOnly {} kB are free in {}').format(free // 1024, directory)


class ScriptSpace:
    """The free space in the directory to which rpm writes each package script before rpm runs the script."""

    # The largest size of a package script, in bytes.
    NEEDED = 1 << 16

    def __init__(self):
        directory = rpm.expandMacro('%{?_tmppath}')
        self._directory = inRoot(directory if directory.startswith('/') else '/var/tmp')
        try:
            # Keep a descriptor: while rpm works, the root directory of the process may be the managed root, so that
            # this path no longer leads to the directory.
            self._descriptor = os.open(self._directory, os.O_RDONLY | os.O_DIRECTORY | os.O_CLOEXEC)
        except OSError:  # the directory is missing; rpm creates it
            self._descriptor = None

    def __del__(self):
        if self._descriptor is not None:
            os.close(self._descriptor)

    def isEnough(self):
        if self._descriptor is None:
            return True
        found = os.fstatvfs(self._descriptor)
        return found.f_bavail * found.f_frsize >= self.NEEDED and (found.f_favail > 0 or found.f_files == 0)

    def hint(self):
        return spaceHint(self._directory)


def checkScriptSpace(space):
    """If the disk is too full for package scripts, ask the user whether to go on. On a full disk, rpm writes only the
    beginning of a script, does not notice the error, and runs the incomplete script. The user may go on, because a
    removal may free space.
    """
    hint = space.hint()
    if not hint:
        return
    yumIOC.gpgsigcheck()
    sys.stdout.write(tr('The disk has too little space for package scripts. They may not run.{}\n'
                        'Apply anyway?\n').format(hint))
    if yumIOC.userconfirm() != 1:
        raise dnf.exceptions.Error(
            tr('The disk has too little space for package scripts. Nothing was changed.'))


def spaceHints(failed):
    """A line for each file system that has too little free space for one of the failed packages. failed: the items of
    the transaction that have failed.
    """
    needed = {inRoot(path): LITTLE_SPACE for path in DATABASES}
    for item in failed:
        if item.action in dnf.transaction.FORWARD_ACTIONS:
            for directory in set(os.path.dirname(path) for path in item.pkg.files):
                path = inRoot(directory)
                while not os.path.isdir(path):
                    path = os.path.dirname(path)
                needed[path] = max(needed.get(path, LITTLE_SPACE), item.pkg.installsize)
    hints = {}
    for path, size in sorted(needed.items()):
        # Several directories may be on the same file system (st_dev).
        if os.path.isdir(path):
            hints.setdefault(os.stat(path).st_dev, []).append(spaceHint(path, size))
    return ''.join(next(filter(None, found), '') for found in hints.values())
