# SPDX-License-Identifier: GPL-2.0-or-later
"""rpm's database: its location, its cookie and the numbers of its packages. The graphical thread and workers run this
module.
"""

import logging
import os
import subprocess

import dnf.rpm.miscutils
import rpm

from .packages import decoded
from .paths import managedRoot
from .privatenames import RPMKEYS_NAMES
from .program import tr

# The directories that distributions use for rpm's database.
DATABASES = ('/var/lib/rpm', '/usr/lib/sysimage/rpm')


def useDatabaseOfRoot():
    """Make rpm use the database of the managed system. In some distributions, rpm by default uses a database in the
    user's home directory.

    dnf checks signatures with the rpmkeys program, which must use the same database. So this function also replaces
    dnf's function that runs rpmkeys. This replacement must be permanent: if the script runs again in the same
    interpreter, rpm's macro still has the value that the first run has set, so useDatabaseOfRoot() returns at once.
    Therefore this function does not use program.replace().
    """
    if rpm.expandMacro('%{?_dbpath}') in DATABASES:
        return
    rpm.addMacro('_dbpath', DATABASES[0])
    if all(hasattr(dnf.rpm.miscutils, name) for name in RPMKEYS_NAMES):
        dnf.rpm.miscutils._verifyPackageUsingRpmkeys = verifyWithDatabaseOfRoot


def verifyWithDatabaseOfRoot(package, root):
    """Check the signatures of a package in the same way as dnf's function, but with the database in DATABASES[0].
    package: the open package file. Returns dnf's number for the result; 0 means that the signatures are correct.
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
    """A text that differs after each change to the installed packages; empty if rpm cannot compute it."""
    transaction = rpm.TransactionSet(managedRoot())
    try:
        return transaction.dbCookie() if transaction.openDB() == 0 else ''
    except (AttributeError, rpm.error):  # an old version of rpm, which lacks dbCookie()
        return ''
    finally:
        transaction.closeDB()


def installedNumbers():
    """A set of pairs for the installed packages: the package's number in rpm's database, and its name. The set leaves
    out signing keys, which the database stores as packages.
    """
    transaction = rpm.TransactionSet(managedRoot())
    # To save time, do not check the signatures of packages that are already installed.
    transaction.setVSFlags(rpm._RPMVSF_NOSIGNATURES | rpm._RPMVSF_NODIGESTS)
    try:
        found = set((header[rpm.RPMTAG_DBINSTANCE], decoded(header[rpm.RPMTAG_NAME]))
                    for header in transaction.dbMatch())
    finally:
        transaction.closeDB()
    return set(each for each in found if each[1] != 'gpg-pubkey')
