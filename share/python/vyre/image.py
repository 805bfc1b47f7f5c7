# SPDX-License-Identifier: GPL-2.0-or-later
"""Refuses changes that are impossible on a system with a read-only image.

The worker that applies the marks runs this module.
"""

import fnmatch
import os

import dnf.exceptions
import dnf.i18n
import libdnf.transaction

from .paths import managedRoot
from .program import tr


def checkPersistence(base):
    """Refuse changes on a system whose programs are in a read-only image. On such a system, changes may be impossible,
    or the next start of the system may discard them. VYRE lacks dnf's command-line options for such systems.
    """
    image = managedRoot() == '/' and os.path.isfile('/run/ostree-booted')
    persistence = getattr(base.conf, 'persistence', 'auto') or 'auto'
    if image and (persistence == 'persist' or not os.access('/usr', os.W_OK)):
        raise dnf.exceptions.Error(
            tr('The programs of this system are in a read-only image. VYRE cannot change the image. Nothing was '
               'changed.'))
    if not image and persistence == 'transient':
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
