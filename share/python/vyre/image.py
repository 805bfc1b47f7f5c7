# SPDX-License-Identifier: GPL-2.0-or-later
"""Finds out whether this user can change the packages of this system, and whether such changes last. Refuses changes
that are impossible on a system whose programs are in a read-only image.

The graphical thread calls restriction(). The worker that applies the marks calls the other functions.
"""

import fnmatch
import os

import dnf.exceptions
import dnf.i18n
import libdnf.transaction
import rpm

from .paths import canWrite, inRoot, isReadOnly, managedRoot
from .program import tr


def isImage():
    """Whether the programs of the managed system are in an image."""
    return managedRoot() == '/' and os.path.isfile('/run/ostree-booted')


def persistenceOf(base):
    """The value of dnf's option, which versions before 4.24 lack."""
    return getattr(base.conf, 'persistence', 'auto') or 'auto'


def isImageReadOnly(base):
    """Whether VYRE cannot change the image of an image-based system. VYRE lacks dnf's command-line options for such
    systems: with --transient, dnf can change the packages until the next start of the system.
    """
    return persistenceOf(base) == 'persist' or not os.access('/usr', os.W_OK)


def restriction(base):
    """A sentence about changes that are impossible now, or that may not last; empty if no such restriction is known.

    Not every user with the number 0 has the right to change packages: inside a user namespace, each user can have this
    number.
    """
    database = inRoot(rpm.expandMacro('%{_dbpath}'))
    programs = inRoot('/usr')
    parts = []
    if not canWrite(database) and not isReadOnly(database):
        parts.append(tr('VYRE cannot change packages, because it has no right to change {}').format(database))
    elif isImage() and isImageReadOnly(base):
        parts.append(tr('VYRE cannot change packages, because the programs of this system are in a read-only image'))
    elif isReadOnly(database):
        parts.append(tr('VYRE cannot change packages while the file system of {} is read-only').format(database))
    elif isReadOnly(programs):
        # In this case, rpm can still change packages without files below /usr.
        parts.append(tr('VYRE cannot change files below {} while their file system is read-only').format(programs))
    elif isImage():
        parts.append(tr('The programs of this system are in an image: the next start of the system may discard changes '
                        'to packages'))
    return ''.join(parts)


def checkPersistence(base):
    """Refuse changes on a system whose programs are in a read-only image. On such a system, changes may be impossible,
    or the next start of the system may discard them.
    """
    image = isImage()
    if image and isImageReadOnly(base):
        raise dnf.exceptions.Error(
            tr('The programs of this system are in a read-only image. VYRE cannot change the image. Nothing was '
               'changed.'))
    if not image and persistenceOf(base) == 'transient':
        raise dnf.exceptions.Error(dnf.i18n._('Transient transactions are only supported on bootc systems.'))
    kinds = libdnf.transaction
    if hasattr(kinds, 'TransactionPersistence_PERSIST'):
        # dnf stores this value in the history.
        base._persistence = (kinds.TransactionPersistence_TRANSIENT if image else
                             kinds.TransactionPersistence_PERSIST)
    if image:
        checkDrift(base)


def checkDrift(base):
    """Refuse to change files that must match the image, such as the boot loader's files. The next start of the system
    discards changes below /usr, but keeps changes to the files that usr_drift_protected_paths names. dnf checks these
    files only from version 4.24 on.
    """
    patterns = getattr(base.conf, 'usr_drift_protected_paths', ())
    found = {}
    for item in base.items() if patterns else ():
        if item.action == libdnf.transaction.TransactionItemAction_REASON_CHANGE:
            continue  # this item has no package, and changes no files
        paths = [path for path in sorted(item.files)
                 if any(fnmatch.fnmatch(path, pattern) for pattern in patterns)]
        if paths:
            found[str(item)] = paths
    if found:
        raise dnf.exceptions.Error('\n'.join([dnf.i18n._(
            'This operation would modify the following paths, possibly introducing inconsistencies when the '
            'transient overlay on /usr is discarded. See the usr_drift_protected_paths configuration option for '
            'more information.')] + [line for name, paths in found.items()
                                     for line in [name] + ['  ' + path for path in paths]]))
