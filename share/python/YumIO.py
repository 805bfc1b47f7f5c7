# SPDX-License-Identifier: GPL-2.0-or-later
"""The program's interface to the package manager.

The program runs this file in its embedded interpreter, makes one object of the YumIO class and calls its methods. Only
one thread at a time calls these methods. During a long operation, such as the start, this is a worker. Between long
operations, it is the graphical thread. The script passes all messages of the package manager to the program through the
built-in yumIOC module.

The vyre package next to this file does the work. This file contains the import of this package, the YumIO class, and
two helpers of this class. The file and the package need Python 3.6 or later, and dnf 4.
"""

import contextlib
import functools
import importlib
import importlib.util
import logging
import os
import sys

# The program looks up classes of these modules by their names, such as dnf.exceptions.Error.
import bdb  # noqa: F401
import dnf
import dnf.drpm
import dnf.exceptions
import dnf.i18n
import dnf.repo
import hawkey
import libdnf.conf
import libdnf.error
import rpm

import yumIOC


@contextlib.contextmanager
def ownPackage():
    """Within this scope, Python can import modules of the vyre package next to this file.

    Because the program runs as root, Python must never import a vyre package from another directory. So this function
    loads the package by its path. The share directory must keep its installed contents, so Python writes no compiled
    files there. The installation compiles the modules. Without compiled modules, for example in the source tree,
    Python compiles the modules each time VYRE starts, in less than a tenth of a second.
    """
    forgetOwnPackage()
    directory = os.path.join(os.path.dirname(os.path.abspath(__file__)), 'vyre')
    before = sys.dont_write_bytecode
    sys.dont_write_bytecode = True
    try:
        found = importlib.util.spec_from_file_location('vyre', os.path.join(directory, '__init__.py'),
                                                       submodule_search_locations=[directory])
        package = importlib.util.module_from_spec(found)
        sys.modules['vyre'] = package
        found.loader.exec_module(package)
        importlib.import_module('vyre.program').receive(globals())
        yield
    finally:
        sys.dont_write_bytecode = before


def forgetOwnPackage():
    """If this file has run before, restore dnf's own classes, and make Python forget the modules of the vyre package.
    The next import then reads them again.
    """
    earlier = sys.modules.get('vyre.program')
    if earlier is not None:
        earlier.restore()
    for name in list(sys.modules):
        if name == 'vyre' or name.startswith('vyre.'):
            del sys.modules[name]


with ownPackage():
    # Import this module first, because it needs dnf's own classes. The other modules replace some of these classes.
    from vyre.privatenames import lacksReplay, requirePrivateNames

    from vyre import advisories, groups, signatures, versionlock
    from vyre.applying import addRemarks, confirmTransaction, download, installSet, runTransaction
    from vyre.base import Base, forgetInterrupt
    from vyre.cache import cleanCache
    from vyre.configuration import readConfiguration
    from vyre.database import databaseCookie, installedNumbers, useDatabaseOfRoot
    from vyre.groups import Group
    from vyre.history import commandLine, refuseHistory, reportLeftovers
    from vyre.image import checkPersistence, restriction
    from vyre.listing import otherSections, remarksAboutUpdates
    from vyre.locks import DatabaseLock, WaitingLock, releaseSessionLock, takeSessionLock
    from vyre.marks import Marks
    from vyre.metadata import checkModuleFiles, documentPath
    from vyre.outcome import Outcome
    from vyre.output import Writer, setUpLogFiles, startLog
    from vyre.program import tr
    from vyre.progress import RPMTransaction
    from vyre.replaying import resolveReplay
    from vyre.resolving import resolveMarks, stepOfResolution
    from vyre.space import spaceHint
    from vyre.stopping import endIfStopped
    from vyre.transactions import describeTransaction, readTransactions
    from vyre.updates import biArchOf, excludedPackages, findReplacements, findUpdates


class All:
    """The lists of packages that collectAll() returns. excluded: installed packages that the configuration excludes."""

    def __init__(self, installed, available, excluded):
        self.installed = installed
        self.available = available
        self.excluded = excluded


def withReason(method):
    """A decorator that makes the "value" attribute of dnf's exceptions complete, because the program shows this
    attribute. In some of dnf's exceptions, "value" is missing or contains only a part of the text.
    """
    @functools.wraps(method)
    def explained(*args):
        try:
            return method(*args)
        except dnf.exceptions.Error as e:
            text = str(e)
            if getattr(e, 'value', None) == text:
                raise
            raise dnf.exceptions.Error(text if text not in ('', 'None') else type(e).__name__)
    return explained


class YumIO:
    """The object whose methods the program calls."""

    def __init__(self):
        sys.stdout = Writer(yumIOC.stdoutWrite, 1)
        sys.stderr = Writer(yumIOC.stderrWrite, 2)
        # If a plug-in reads standard input, it must get the end of the input at once, because no user can answer.
        sys.stdin = open(os.devnull)
        startLog()
        requirePrivateNames()
        self._lock = None
        self._cookie = ''  # the result of databaseCookie() when the script read the packages
        self._reportedWithoutGroups = False
        # Whether the last transaction has changed the system.
        self.systemChanged = False
        # Whether the script has refused the last transaction, because another program had changed the system after the
        # script read the packages.
        self.outdated = False
        # The outcome of the last transaction: a dictionary, or None if the user has not confirmed a transaction.
        self.outcome = None
        # Pairs from the last collection: an installed package, and the package that replaces it.
        self.replacements = []
        # The marked packages and groups that the last transaction has left out, because dnf could not apply the marks.
        self.leftOut = []
        # The names of the objects in leftOut, with the reasons; empty until the user confirms the transaction.
        self.leftOutReasons = ''
        # Pairs from the last collection: an update, and an installed package of another bi-arch class that the update
        # replaces.
        self.counterparts = []
        # Pairs from the last collection: an update, and the identifiers of its advisories.
        self.updateAdvisories = []
        conf, self.knownDirectories = readConfiguration()
        self.base = Base(conf)
        history = groups.History(self.base.conf.persistdir)
        requirePrivateNames(self.base, dnf.repo.Repo('none', self.base.conf), history,
                            groups.GroupRecords(history))
        # The messages that the program shows after a successful operation.
        self.remarks = self.base.remarks
        setUpLogFiles(self.base)
        self.base.readReposLater()

    @property
    def skippedRepos(self):
        """The identifiers of the failed repositories that dnf has left out because of skip_if_unavailable.
        """
        return self.base.skipped

    # Configuration

    def reset(self):
        """Forget all packages and repositories, and read the configuration again."""
        self.base.otherData.clear()
        self.base.headers.clear()
        # A single package in one of these lists would keep all packages of the last collection in memory.
        self.replacements, self.counterparts, self.updateAdvisories = [], [], []
        conf, self.knownDirectories = readConfiguration()
        self.base.renew(conf)
        self.base.readReposLater()

    # Locking

    def lock(self):
        """Take dnf's lock on its own files until the program ends; return the path of the lock file."""
        self._lock = takeSessionLock(self.base.conf)
        return self._lock.target

    def unlock(self):
        """Close dnf's files and release the lock. The program calls this method when it ends."""
        self.base.end()
        if self._lock is None:
            return
        lock, self._lock = self._lock, None
        releaseSessionLock(lock)

    # Repositories

    def enableRepo(self, id):
        self._repo(id).enable()

    def disableRepo(self, id):
        self._repo(id).disable()

    def _repo(self, id):
        try:
            return self.base.repos[id]
        except KeyError:
            raise dnf.exceptions.RepoError(tr('The repository {} does not exist').format(id))

    def setupRepos(self):
        """Read rpm's database and the metadata of all enabled repositories, from the cache or from the network."""
        self._readPackages(self.base.fill_sack)

    def setupCachedRepos(self):
        """Read rpm's database and the metadata in the cache, without the network."""
        self._readPackages(self.base.fillSackFromCache)

    def _readPackages(self, fillSack):
        # A single package in one of these lists would keep all packages of the last collection in memory.
        self.replacements, self.updateAdvisories = [], []
        del self.leftOut[:]
        useDatabaseOfRoot()
        forgetInterrupt()
        try:
            self.base.otherData.clear()
            self.base.headers.clear()
            self.base.advisories.clear()
            self.base.streams.clear()
            del self.remarks[:]
            if self.base.repos is not None and self.base.plugInFault:
                raise dnf.exceptions.Error(self.base.plugInFault)
            checkModuleFiles(self.base)
            self._cookie = databaseCookie()
            fillSack()
            WaitingLock.changed = False
        except (dnf.exceptions.Error, hawkey.Exception, libdnf.error.Error, RuntimeError, OSError) as e:
            raise dnf.exceptions.RepoError(str(e) + spaceHint(self.base.conf.cachedir))

    # Collection

    @withReason
    def collectUpdates(self):
        updates, self.counterparts = findUpdates(self.base)
        try:
            self.updateAdvisories = advisories.advisoriesOfUpdates(self.base, updates)
        except (dnf.exceptions.Error, hawkey.Exception, libdnf.error.Error, RuntimeError) as e:
            logging.getLogger('dnf').debug('It is not known which advisories the updates have: %s', e)
        return updates

    @withReason
    def collectAll(self):
        query = self.base.sack.query()
        available = query.available().filterm(arch__neq=['src', 'nosrc'])
        try:
            available.filterm(latest_per_arch_by_priority=True)
        except (ValueError, hawkey.Exception):  # this version of dnf has no priorities
            available.filterm(latest_per_arch=True)
        # If several versions of a package are installed, the program shows the first of them: the newest.
        return All(sorted(query.installed(), reverse=True), available.run(),
                   sorted(excludedPackages(self.base), reverse=True))

    @withReason
    def collectGroups(self):
        if groups.groupsCanBeRead():
            for repo in self.base.repos.iter_enabled():
                groups.checkGroups(self.base, repo)
        elif not self._reportedWithoutGroups:
            self._reportedWithoutGroups = groups.reportUnreadable(self.base)
        self.base.read_comps(arch_filter=True)
        return [Group(group) for group in self.base.comps.groups_iter()]

    def collectDone(self):
        logging.getLogger('dnf').debug('Packages and groups are collected.')
        reportLeftovers(self.base)
        try:
            self.base.streams.load(self.base)
        except (hawkey.Exception, libdnf.error.Error, RuntimeError) as e:
            logging.getLogger('dnf').debug('It is not known which module streams exist: %s', e)
        try:
            self.replacements = []
            self.replacements = findReplacements(self.base)
        except (dnf.exceptions.Error, hawkey.Exception, libdnf.error.Error, RuntimeError) as e:
            logging.getLogger('dnf').debug('It is not known which packages are replaced: %s', e)

    @withReason
    def collectFileLists(self):
        """Do nothing: dnf has read the file lists together with the packages."""
        return True

    @withReason
    def collectOtherData(self):
        self.base.otherData.loadAll(self.base)
        return True

    # Advisories

    @withReason
    def collectAdvisories(self):
        """The advisories about installed packages; see advisories.collectAdvisories()."""
        return advisories.collectAdvisories(self.base)

    def loadAdvisories(self):
        """Read all advisories at once, before a search reads the advisories about each package."""
        self.base.advisories.load(self.base)

    def forgetAdvisories(self):
        self.base.advisories.clear()

    # Version locks

    def versionLocks(self):
        """The version locks; see versionlock.versionLocks()."""
        return versionlock.versionLocks(self.base)

    @withReason
    def lockVersions(self, packages):
        versionlock.lockVersions(self.base, packages)
        return True

    @withReason
    def unlockVersions(self, packages):
        versionlock.unlockVersions(self.base, packages)
        return True

    # Packages

    def getBiArch(self, arch):
        """The bi-arch class of an architecture; see biArchOf()."""
        return biArchOf(self.base, arch)

    def isBetterThan(self, a, b):
        """Whether package a is better than package b. If only one of the two packages has the system's bi-arch class,
        this package is better. Otherwise a is better if a is not older than b.
        """
        native = self.base.conf.basearch
        aNative = self.getBiArch(a.arch) == native
        bNative = self.getBiArch(b.arch) == native
        if aNative != bNative:
            return aNative
        return a.evr_cmp(b) >= 0

    def verifyLocalPkg(self, package):
        if package._from_system:
            return False
        return package.verifyLocalPkg()

    def isLocal(self, package):
        """Whether dnf uses the package's file in a local repository instead of downloading the package."""
        return package._is_local_pkg()

    def expandVariables(self, text):
        """Replace the variables in a text, as dnf replaces the variables in repository files."""
        return libdnf.conf.ConfigParser.substitute(text, self.base.conf.substitutions)

    def metadataPath(self, repoid, kind):
        """The path of a metadata document in the cache, or None. kind: "filelists" or "other"."""
        repo = self.base.repos.get(repoid)
        return documentPath(repo, kind) if repo is not None and repo.enabled else None

    # Transactions

    @withReason
    def apply(self, installs, updates, removes, groupInstalls, groupUpdates, groupRemoves):
        """Find the transaction for the marks, ask the user to confirm it, download its packages, check their signatures
        and run the transaction. Return True. But if "tsflags" contains "test", change nothing and return False. Each
        failure raises an exception. If the text of the exception does not name packages, nothing was changed. A
        transaction that the user refuses is not a failure.
        """
        def resolve():
            marks, leftOut, reasons = resolveMarks(
                self.base, Marks(installs, updates, removes, groupInstalls, groupUpdates, groupRemoves))
            self.leftOut.extend(leftOut)
            if marks is not None:
                self.base.introduction += remarksAboutUpdates(self.base, marks.groupUpdates)
            return None if marks is None else (commandLine(
                ('install', [package.name for package in marks.installs]),
                ('upgrade', [new.name for new in marks.newVersions()]),
                ('remove', [package.name for package in marks.removes]),
                ('group install', [group.id for group in marks.groupInstalls]),
                ('group upgrade', [group.id for group in marks.groupUpdates]),
                ('group remove', [group.id for group in marks.groupRemoves])), reasons)

        return self._carryOut(resolve)

    @withReason
    def replay(self, kind, number):
        """Undo the recorded transaction ("undo"), undo all transactions after it ("rollback"), or repeat it ("redo").
        The steps after resolving, the result and the exceptions are the same as for apply().
        """
        def resolve():
            goesOn = resolveReplay(self.base, kind, number)
            return (commandLine(('history ' + kind, [str(number)])), '') if goesOn else None

        return self._carryOut(resolve)

    def _carryOut(self, resolve):
        """Carry out the transaction that resolve() finds. resolve() returns a pair: the command line for the history,
        and a text about the marks that are left out. If the user refuses to go on, resolve() returns None.
        """
        base = self.base
        base.headers.clear()
        forgetInterrupt()
        self.systemChanged = base.changed = False
        self.outdated = False
        del self.remarks[:]
        del self.leftOut[:], base.introduction[:]
        self.leftOutReasons = ''
        self.outcome = base.outcome = None
        base.historyFault = None
        base.withoutSpace = []
        try:
            del base._ts
            base.reset(goal=True)
            # runTransaction() repeats this check before rpm's work. This first check prevents a useless listing and
            # download.
            with DatabaseLock(stepOfResolution()):
                self._checkCurrent()
            resolved = resolve()
            endIfStopped()
            if resolved is None:
                return True
            line, reasons = resolved
            base.args = [line]
            checkPersistence(base)
            if not confirmTransaction(base, otherSections(base)):
                return True
            self.leftOutReasons = reasons
            base.outcome = Outcome(base)
            try:
                download(base)
                signatures.checkSignatures(base, installSet(base))
                return runTransaction(base, self._checkCurrent)
            finally:
                # Read the values before endTransaction(), which closes the history and so forgets the transaction.
                try:
                    self.outcome = base.outcome.values()
                finally:
                    base.outcome = None
                    base.endTransaction()
        except (hawkey.Exception, libdnf.error.Error, rpm.error) as e:
            if base.history.dbpath in str(e):
                refuseHistory(base, str(e))
            raise dnf.exceptions.Error(str(e))
        finally:
            self.systemChanged = base.changed
            WaitingLock.changed = WaitingLock.changed or base.changed
            addRemarks(base)
            RPMTransaction.endLast()
            base.headers.clear()
            base.reset(goal=True)
            del base._ts
            if base.changed and base.plugInsHaveChanged():
                # The program is going to read the packages again. Before this, the script must load the changed
                # plug-ins.
                base.readReposLater()

    def _checkCurrent(self):
        """Raise an exception if the installed packages have changed since the script read them. rpm removes packages by
        their numbers in its database. After a change, these may be the numbers of other packages.
        """
        cookie = databaseCookie()
        if not cookie or not self._cookie or cookie == self._cookie:
            return
        if installedNumbers() != set((package.rpmdbid, package.name) for package in self.base.sack.query(
                flags=hawkey.IGNORE_EXCLUDES).installed()):
            self.outdated = True
            raise dnf.exceptions.Error(tr('Another program has changed the system since VYRE read the packages. '
                                          'Nothing was applied.\n'
                                          'VYRE now reads the packages again, and keeps the marks that are still '
                                          'possible.'))
        self._cookie = cookie

    @staticmethod
    def words(text):
        """The translation of one of dnf's texts."""
        return dnf.i18n._(text)

    # History

    @withReason
    def transactions(self):
        """All recorded transactions; see readTransactions()."""
        return readTransactions(self.base)

    @withReason
    def describeTransaction(self, number):
        """All details of a recorded transaction as text; see transactions.describeTransaction()."""
        return describeTransaction(self.base, number)

    @staticmethod
    def lacksReplay():
        """The reason why the script cannot undo or repeat recorded transactions; empty if the script can do both."""
        return lacksReplay()

    def restriction(self):
        """The notice for the start of the program; see image.restriction()."""
        return restriction(self.base)

    # Cleaning

    def cleanDbcache(self):
        return cleanCache(self.base.conf, 'dbcache')

    def cleanPackages(self):
        return cleanCache(self.base.conf, 'packages')

    def cleanMetadata(self):
        return cleanCache(self.base.conf, 'metadata', 'dbcache')

    def cleanAll(self):
        return cleanCache(self.base.conf, 'metadata', 'packages', 'dbcache')
