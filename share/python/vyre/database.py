# SPDX-License-Identifier: GPL-2.0-or-later
"""rpm's database: its location, and a check for changes. The graphical thread and workers run this module."""

import logging
import os
import subprocess

import dnf.rpm.miscutils
import rpm

from .packages import decoded
from .paths import managedRoot
from .privatenames import RPMKEYS_NAMES
from .program import tr

# The directories of rpm's database in the distributions.
DATABASES = ('/var/lib/rpm', '/usr/lib/sysimage/rpm')


def useDatabaseOfRoot():
    """Use the database of the managed system. In some distributions, rpm uses a database in the user's home directory.

    dnf checks signatures with the rpmkeys program, which also needs this directory. If the script runs again in the
    same interpreter, rpm's macro already has its value, and this function changes nothing. Therefore the replacement of
    dnf's function is permanent.
    """
    if rpm.expandMacro('%{?_dbpath}') in DATABASES:
        return
    rpm.addMacro('_dbpath', DATABASES[0])
    if all(hasattr(dnf.rpm.miscutils, name) for name in RPMKEYS_NAMES):
        dnf.rpm.miscutils._verifyPackageUsingRpmkeys = verifyWithDatabaseOfRoot


def verifyWithDatabaseOfRoot(package, root):
    """Check the signatures of a package. package: an open file. Returns dnf's number for the result; 0 means correct.
    """
    program = dnf.rpm.miscutils._find_rpmkeys_binary()
    if program is None:
        logging.getLogger('dnf').critical(tr('VYRE cannot check signatures, because the rpmkeys program is missing.'))
        return 2
    command = [program, '--checksig', '--verbose', '--root', root, '--dbpath', DATABASES[0],
               '--define=_pkgverify_level signature', '--define=_pkgverify_flags 0x0', '-']
    checked = subprocess.run(command, stdin=package, stdout=subprocess.PIPE, cwd='/',
                             env=dict(os.environ, LC_ALL='C'))
    if checked.returncode not in (0, 1):
        return 2
    return dnf.rpm.miscutils._process_rpm_output(checked.stdout.split(b'\n')) or 2 * checked.returncode


def databaseCookie():
    """A text that changes with every change to the installed packages; empty if rpm cannot compute the text."""
    transaction = rpm.TransactionSet(managedRoot())
    try:
        return transaction.dbCookie() if transaction.openDB() == 0 else ''
    except (AttributeError, rpm.error):  # an older version of rpm
        return ''
    finally:
        transaction.closeDB()


def installedNumbers():
    """A set of pairs: the number in the database and the name of each installed package. Signing keys are left out."""
    transaction = rpm.TransactionSet(managedRoot())
    # The signatures were checked when the packages were installed.
    transaction.setVSFlags(rpm._RPMVSF_NOSIGNATURES | rpm._RPMVSF_NODIGESTS)
    try:
        found = set((header[rpm.RPMTAG_DBINSTANCE], decoded(header[rpm.RPMTAG_NAME]))
                    for header in transaction.dbMatch())
    finally:
        transaction.closeDB()
    return set(each for each in found if each[1] != 'gpg-pubkey')
