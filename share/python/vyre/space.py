# SPDX-License-Identifier: GPL-2.0-or-later
"""The free disk space: hints for messages, and the space for rpm's scripts. Workers run this module."""

import os
import sys

import dnf.exceptions
import dnf.transaction
import rpm

from .database import DATABASES
from .paths import inRoot
from .program import tr, yumIOC

# If fewer bytes are free, a full disk is the probable reason why a file cannot be written.
LITTLE_SPACE = 1 << 20


def spaceHint(directory, needed=LITTLE_SPACE):
    """The last line of a message if a directory has too little free space; otherwise an empty text. needed: the bytes.

    librepo and rpm report a full disk as damaged files, or not at all.
    """
    try:
        found = os.statvfs(directory)
    except OSError:
        return ''
    free = found.f_bavail * found.f_frsize
    return '' if free >= needed else tr('\nOnly {} kB are free in {}').format(free // 1024, directory)


class ScriptSpace:
    """The free space of the directory where rpm writes each script of a package before running it."""

    # In bytes. No script is larger.
    NEEDED = 1 << 16

    def __init__(self):
        directory = rpm.expandMacro('%{?_tmppath}')
        self._directory = inRoot(directory if directory.startswith('/') else '/var/tmp')
        try:
            # While rpm works, the root of the process may be the managed system.
            self._descriptor = os.open(self._directory, os.O_RDONLY | os.O_DIRECTORY | os.O_CLOEXEC)
        except OSError:  # rpm makes the directory
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
    """If the space is too little for scripts, ask whether to go on. On a full disk, rpm writes only a part of a script,
    does not notice this, and runs the part. The user can go on, because a removal may free space.
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
    """A line for each directory with less space than one of the failed packages needs."""
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
        # Each file system gets only one line.
        if os.path.isdir(path):
            hints.setdefault(os.stat(path).st_dev, []).append(spaceHint(path, size))
    return ''.join(next(filter(None, found), '') for found in hints.values())
