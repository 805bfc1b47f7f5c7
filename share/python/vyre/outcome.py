# SPDX-License-Identifier: GPL-2.0-or-later
"""The outcome of a confirmed transaction, for the line that the program shows after the transaction. The worker that
applies the marks runs this module.
"""

import glob
import logging
import os
import re
import sys

import dnf.exceptions
import dnf.plugin
import dnf.transaction
import hawkey
import libdnf.error
import libdnf.transaction
import rpm

from .history import unrecorded
from .listing import otherSections, repeatsReason

# For each of dnf's actions, the name under which Outcome.values() returns the number of these actions. If a package
# replaces a package of another name, this counts as a removal of the replaced package.
COUNTED = {
    libdnf.transaction.TransactionItemAction_INSTALL: 'installed',
    libdnf.transaction.TransactionItemAction_UPGRADE: 'updated',
    libdnf.transaction.TransactionItemAction_DOWNGRADE: 'downgraded',
    libdnf.transaction.TransactionItemAction_REINSTALL: 'reinstalled',
    libdnf.transaction.TransactionItemAction_REMOVE: 'removed',
    libdnf.transaction.TransactionItemAction_OBSOLETED: 'removed',
}

# The packages that need a restart of the system, as in dnf's needs-restarting plug-in. The script uses this list if dnf
# has not loaded the plug-in.
NEED_REBOOT = ('kernel', 'kernel-core', 'kernel-rt', 'glibc', 'linux-firmware', 'systemd', 'dbus', 'dbus-broker',
               'dbus-daemon', 'microcode_ctl')


class Outcome:
    """Collects the outcome of a transaction that the user has confirmed."""

    def __init__(self, base):
        self._base = base
        self._groups = {name: sum(len(getattr(persistor, found)) for persistor in (base.history.group,
                                                                                   base.history.env))
                        for name, found in (('groupsInstalled', '_installed'), ('groupsUpdated', '_upgraded'),
                                            ('groupsRemoved', '_removed'))}
        self._modules = len(set(re.split('[/ ]', line)[0] for heading, lines in otherSections(base, withGroups=False)
                                for line in lines))
        self._newReasons = packagesWithNewReason(base)
        self.complete = False  # whether dnf has carried out the transaction, perhaps without some packages
        self.missing = None  # the items that rpm's database does not record; None if not known yet
        self.failedScriptlets = []  # the full names of packages
        self.keysImported = False  # whether the user has accepted keys that sign packages

    def values(self):
        """A dictionary with the numbers of changes, the failures, whether a restart is needed, and whether signing keys
        were imported.
        """
        base = self._base
        items = list(base.transaction or [])
        counts = dict.fromkeys(COUNTED.values(), 0)
        counts.update(failed=0, groupsInstalled=0, groupsUpdated=0, groupsRemoved=0, modules=0,
                      reasonsChanged=self._changedReasons(items))
        done = []
        if items and base.changed:
            failed = [item for item in items if item.action in COUNTED and self._hasFailed(item)]
            names = set((item.name, item.arch) for item in failed)
            counts['failed'] = len(names)
            done = [item for item in items if item.action in COUNTED and item not in failed and (
                item.action in (libdnf.transaction.TransactionItemAction_INSTALL,
                                libdnf.transaction.TransactionItemAction_REMOVE) or
                (item.name, item.arch) not in names)]
        for item in done:
            counts[COUNTED[item.action]] += 1
        # dnf saves streams before rpm's work, and groups after it.
        if self.complete or base.changed:
            counts['modules'] = self._modules
        if self.complete or base.changed and not items:
            counts.update(self._groups)
        names = [nameOf(package) for package in self.failedScriptlets]
        return dict(counts, failedScriptlets=sorted(set(names), key=names.index), keysImported=self.keysImported,
                    restartNeeded=restartNeeded(base, [item.pkg for item in done
                                                       if item.action in dnf.transaction.FORWARD_ACTIONS]))

    def _changedReasons(self, items):
        """The number of packages of which the transaction has changed only the installation reason. dnf reads the
        reasons from the history, but only from transactions without failures.
        """
        base = self._base
        recorded = self.complete and base.conf.history_record and base.historyFault is None
        if not recorded or any(item.state == libdnf.transaction.TransactionItemState_ERROR for item in items):
            return 0
        return len(self._newReasons)

    def _hasFailed(self, item):
        if item.state == libdnf.transaction.TransactionItemState_ERROR:
            return True
        if self.missing is None:
            self.missing = self._unrecorded()
        return item in self.missing

    def _unrecorded(self):
        try:
            return unrecorded(self._base, list(self._base.transaction))
        except (dnf.exceptions.Error, hawkey.Exception, libdnf.error.Error, RuntimeError, OSError, rpm.error) as e:
            logging.getLogger('dnf').debug('It is not known what the transaction has changed: %s', e)
            return []


def packagesWithNewReason(base):
    """The names and architectures of the packages of which the resolved transaction changes only the installation
    reason.
    """
    change = libdnf.transaction.TransactionItemAction_REASON_CHANGE
    items = base.items()
    found = set((item.name, item.arch) for item in items
                if item.action == change and not repeatsReason(base, item))
    return found.difference((item.name, item.arch) for item in items if item.action != change)


def nameOf(package):
    """The name in a full name: NAME-VERSION-RELEASE.ARCHITECTURE."""
    return package.rsplit('-', 2)[0] if package.count('-') > 1 else package


def restartNeeded(base, packages):
    """Whether the system needs a restart after the installation of these packages, by the rules of dnf's
    needs-restarting plug-in.
    """
    plugIn = sys.modules.get(dnf.plugin.DYNAMIC_PACKAGE + '.needs_restarting')
    names = set(getattr(plugIn, 'NEED_REBOOT', NEED_REBOOT))
    names.update(namesOfFiles(os.path.join(base.conf.installroot, 'etc/dnf/plugins/needs-restarting.d')))
    if any(package.name in names for package in packages):
        return True
    try:
        # Some versions of the plug-in also accept packages that provide these names.
        return bool(packages and names and base.sack.query(flags=hawkey.IGNORE_EXCLUDES).filterm(
            pkg=packages).filterm(provides=sorted(names)))
    except (ValueError, hawkey.Exception):  # a line in a file is not a name
        return False


def namesOfFiles(directory):
    """The lines of the files in the plug-in's directory. Each line is the name of a package."""
    names = []
    for path in glob.glob(os.path.join(glob.escape(directory), '*.conf')):
        try:
            with open(path, encoding='utf-8', errors='replace') as stream:
                names += [line.strip() for line in stream]
        except OSError as e:
            logging.getLogger('dnf').warning('%s', e)
    return [name for name in names if name]
