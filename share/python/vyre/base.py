# SPDX-License-Identifier: GPL-2.0-or-later
"""dnf's class Base with the script's additions.

Workers make, renew and use the only Base object. When VYRE ends, the graphical thread closes this object.
"""

import ctypes
import logging
import os

import dnf
import dnf.exceptions
import dnf.i18n
import dnf.lock
import dnf.repo
import dnf.util
import hawkey
import libdnf.error
import libdnf.transaction
import rpm

from . import groups, program
from .advisories import AdvisoryIndex
from .configfiles import RepositoryReader
from .locks import withoutWaitForMetadata
from .metadata import DocumentChecks, documentPath, modulesFault
from .output import LogHandler, Overheard, passable, showActivity, showReading
from .packages import HeaderMemo, OtherData
from .paths import namedDirectory
from .plugins import forgetPlugIns, stampOfPlugIns
from .program import tr, yumIOC
from .progress import DownloadProgress
from .reasons import clearest
from .signatures import KeyImport
from .space import spaceHint
from .stopping import endIfStopped
from .streams import StreamIndex


class DamagedMetadata(dnf.exceptions.RepoError):
    """Raised when the script refuses to read metadata of a repository because dnf would read damaged metadata without
    an error, or would crash.
    """


def refuseDamaged(repo, kind, fault):
    raise DamagedMetadata(tr('The {} metadata of the repository {} are damaged: {}').format(kind, repo.id, fault))


class Base(dnf.Base):
    """dnf's class with additions. This class reports the packages of a download to the program before the download
    begins. It also finds metadata errors that dnf does not report, or that would crash dnf.
    """

    def __init__(self, conf):
        super(Base, self).__init__(conf)
        self.scriptSpace = None  # the ScriptSpace of the running transaction
        self.otherData = OtherData()
        self.advisories = AdvisoryIndex()
        self.streams = StreamIndex()
        self.headers = HeaderMemo()
        self.changed = False  # whether rpm has begun to change the system
        self.historyFault = None  # the error if the history lacks the end of the last transaction
        self.unsolved = None  # the goal of the last resolution, if it has failed
        self.judge = None  # the function that resolveIf() calls with the solution
        self.withoutSpace = []  # packages whose scripts may not have run because the disk was full
        self.outcome = None  # the Outcome of the confirmed transaction
        self.introduction = []  # the lines above the listing of the next transaction
        self._items = None  # the result of items(); None if the items are not known yet
        # The messages that the program shows after a successful operation, and then removes from this list.
        self.remarks = []
        self._remarked = set()  # all messages so far: if remark() gets a message twice, it only logs the second
        self.onlyCache = False  # whether to read only the metadata in the cache, without the network
        self.failed = []  # the repositories that cannot be read, with the reasons
        self.leftOut = []  # the repositories without usable metadata in the cache
        self.skipped = []  # the identifiers of the failed repositories that have skip_if_unavailable
        # The repositories that fill_sack() has disabled. When the user agrees to go on without a repository in this
        # session, fill_sack() removes this repository from the list.
        self.disabled = []
        # Whether the sack contains packages of a repository whose package list is damaged.
        self._hasRefusedPackages = False
        self.plugInFault = ''  # why dnf cannot use the plug-ins; if not empty, every operation fails
        self._plugInStamp = None  # the result of stampOfPlugIns() when the plug-ins were loaded

    def renew(self, conf):
        """Initialise this Base object again, with another configuration. A new object is impossible, because the
        program keeps a reference to this one.
        """
        kept = self.remarks, self._remarked
        self.end()
        forgetPlugIns()
        self.__init__(conf)
        self.remarks, self._remarked = kept

    def end(self):
        """Close dnf's files, and save dnf's state for the next run. The dnf command does the same when it ends."""
        # close() uses the repos property, which would read repositories that are still unread.
        self._reposUnread = False
        try:
            self.close()
        except (dnf.exceptions.Error, hawkey.Exception, libdnf.error.Error, RuntimeError, OSError, ValueError) as e:
            logging.getLogger('dnf').warning('%s', e)

    def endTransaction(self):
        """Remove the downloaded packages of a transaction, or keep them for the next transaction. The dnf command does
        the same when it ends.
        """
        done = self._trans_success
        try:
            self._finalize_base()
        except (dnf.exceptions.Error, hawkey.Exception, libdnf.error.Error, RuntimeError, OSError, ValueError) as e:
            logging.getLogger('dnf').warning('%s', e)
        if done:
            self._trans_tempfiles = set()

    def remark(self, text):
        if text in self._remarked:
            logging.getLogger('dnf').warning('%s', text)
        else:
            self._remarked.add(text)
            self.remarks.append(text)

    _reposUnread = False

    def readReposLater(self):
        """Make the repos property load the plug-ins and read the repository files on its next use, on a worker.

        dnf needs seconds to read ten thousand repositories. The graphical thread must not wait for this.
        """
        self._reposUnread = True

    def plugInsHaveChanged(self):
        return self._plugInStamp is not None and self._plugInStamp != stampOfPlugIns(self.conf)

    def _getHistory(self):
        if self._history is None:
            self._history = groups.History(self.conf.persistdir, releasever=self.conf.releasever)
        return self._history

    @property
    def repos(self):
        if self._reposUnread:
            self._reposUnread = False  # the plug-ins that _readRepos() loads also use this property
            try:
                self._readRepos()
            except BaseException:
                self._reposUnread = True
                raise
        return self._repos

    @repos.deleter
    def repos(self):
        self._repos = None

    def read_comps(self, arch_filter=False):
        if groups.groupsCanBeRead():
            return super(Base, self).read_comps(arch_filter)
        self._comps = groups.WithoutGroups()
        return self._comps

    def _readRepos(self):
        # If an earlier call was interrupted, it may have added some repositories.
        self._repos.clear()
        self._plugInStamp = stampOfPlugIns(self.conf)
        self.plugInFault = ''
        self._usePlugIns(self.init_plugins, self.pre_configure_plugins)
        try:
            self.read_all_repos()
        except (dnf.exceptions.Error, OSError) as e:
            logging.getLogger('dnf').error(tr('Unable to read the repository configuration: %s'), e)
        self._expireRepos()
        for repo in self._repos.values():
            repo.set_progress_bar(DownloadProgress())
            repo._set_key_import(KeyImport(repo.id))
        self._usePlugIns(self.configure_plugins)
        self._demandSignatures()
        if self.conf.destdir:
            self.conf.destdir = namedDirectory(self.conf.destdir)
            try:
                dnf.util.ensure_dir(self.conf.destdir)
            except OSError as e:
                logging.getLogger('dnf').error('%s', e)
            self._repos.all().pkgdir = self.conf.destdir
        if self.conf.cacheonly:
            for repo in self._repos.values():
                repo._repo.setSyncStrategy(dnf.repo.SYNC_ONLY_CACHE)

    def _expireRepos(self):
        """Read expired_repos.json, which an earlier run has written, and mark the metadata of all repositories in this
        file as expired. If the file cannot be read, mark the metadata of every repository.
        """
        self._activate_persistor()
        expired = self._repo_persistor.get_expired_repos()
        for repo in self._repos.values():
            if expired is None or repo.id in expired:
                repo._repo.expire()

    def _demandSignatures(self):
        """If rpm's configuration demands signed packages, enable the signature check for all repositories."""
        if rpm.expandMacro('%_pkgverify_level') not in ('signature', 'all'):
            return
        unchecked = [repo for repo in self._repos.values() if not repo.gpgcheck]
        for repo in unchecked:
            repo.gpgcheck = True
        if unchecked or not self.conf.localpkg_gpgcheck:
            self.conf.localpkg_gpgcheck = True
            logging.getLogger('dnf').warning(dnf.i18n._(
                "Warning: Enforcing GPG signature check globally as per active RPM security policy (see 'gpgcheck' in "
                'dnf.conf(5) for how to squelch this message)'))

    def _usePlugIns(self, *steps):
        """Call these functions, which run the plug-ins, in their order. After the first failure, call no further
        function. setupRepos() reports the failure later.
        """
        try:
            for step in steps:
                if not self.plugInFault:
                    step()
        except dnf.exceptions.Error as e:
            self.plugInFault = str(e)

    def read_all_repos(self, opts=None):
        for repo in RepositoryReader(self.conf, opts):
            try:
                self._repos.add(repo)
            except dnf.exceptions.ConfigError as e:
                logging.getLogger('dnf').warning('%s', e)

    def fill_sack(self, *args, **kwargs):
        """Fill the sack. If dnf cannot read some repositories, first read all other repositories, then ask about each
        failed repository. So the user waits only once, before the first question. If no user can answer, the first
        failure ends the operation, as in dnf.
        """
        del self.leftOut[:], self.failed[:], self.skipped[:], self.disabled[:]
        self._hasRefusedPackages = True
        # Disabled repositories keep their packages in the sack. So if it contains refused packages, fill another sack,
        # without the repositories that are disabled then.
        while self._hasRefusedPackages:
            self._plugins.skipsSack = self._hasRefusedPackages = False
            showActivity(tr('Reading the installed packages'))
            super(Base, self).fill_sack(*args, **kwargs)
            endIfStopped()
        hint = spaceHint(self.conf.cachedir) if self.failed else ''
        for number, (repo, reason) in enumerate(self.failed):
            if not program.goOnWithout(repo.id, passable(reason + hint), len(self.failed) - number - 1):
                endIfStopped()
                raise dnf.exceptions.RepoError(reason)
            self.disabled.remove(repo)
        return self.sack

    def fillSackFromCache(self):
        """Read the installed packages and the metadata in the cache, without the network and without questions. Leave
        out each repository whose metadata are missing from the cache or damaged.
        """
        # Enable the repositories that failed before the user stopped fill_sack(), because the cache may contain their
        # metadata.
        for repo in self.disabled:
            repo.enable()
        strategies = [(repo, repo._repo.getSyncStrategy()) for repo in self.repos.iter_enabled()]
        self.onlyCache = True
        try:
            for repo, _ in strategies:
                repo._repo.setSyncStrategy(dnf.repo.SYNC_ONLY_CACHE)
            # If the user has just stopped a wait for the metadata lock, VYRE must not wait for this lock again.
            with withoutWaitForMetadata():
                self.fill_sack()
        finally:
            self.onlyCache = False
            for repo, strategy in strategies:
                repo._repo.setSyncStrategy(strategy)
        if self.leftOut:
            text = tr('These repositories have no usable metadata in the cache, and are left out until the next '
                      'Refresh: {}.')
            logging.getLogger('dnf').info('%s', text.format(', '.join(repo.id for repo in self.leftOut)))

    def _add_repo_to_sack(self, repo):
        endIfStopped()
        showReading(repo, tr('Reading repository metadata for {}'))
        overheard = Overheard()
        LogHandler.mayBeSkipped = bool(repo.skip_if_unavailable)
        try:
            with overheard:
                self._readRepo(repo)
        except dnf.exceptions.RepoError as e:
            endIfStopped()
            if self.onlyCache:
                if isinstance(e, DamagedMetadata):
                    logging.getLogger('dnf').warning('%s', e)
                self.leftOut.append(repo)
            elif program.goOnWithout is None or repo.skip_if_unavailable:
                self.skipped.append(repo.id)
                self.disabled.append(repo)
                raise
            else:
                repo._repo.expire()
                self.failed.append((repo, '\n'.join([str(e)] + overheard.details())))
            repo.disable()
            self.disabled.append(repo)
        finally:
            LogHandler.mayBeSkipped = False

    def _readRepo(self, repo):
        # While this option is true, load() downloads the change logs together with the package list. The option is
        # false again when dnf fills the sack, because most runs do not need the change logs.
        repo.load_metadata_other = True
        try:
            isNew = repo.load()
        finally:
            repo.load_metadata_other = False
        endIfStopped()
        showReading(repo, tr('Reading the packages of {}'))
        path = documentPath(repo, 'modules')
        fault = modulesFault(self, path) if path is not None else ''
        if fault:
            refuseDamaged(repo, 'modules', fault)
        before = self._cacheStamp(repo)
        isNewer = self._isNewerThanCache(repo)
        # dnf reads these documents if the metadata are new. Check them while dnf reads them.
        documents = ['filelists', 'other']
        kinds = (['primary'] if isNewer else []) + (documents if isNew or before is None else [])
        checks = DocumentChecks(repo, kinds)
        if isNewer and not self._noteUnchecked(repo):
            self._refusePackages(repo, checks)  # without this note, do not let dnf write a cache of an unchecked list
        try:
            super(Base, self)._add_repo_to_sack(repo)
        except dnf.exceptions.RepoError as e:
            self._refusePackages(repo, checks)
            # The text of this RepoError lacks the reason of the failure, which dnf logs only as a detail.
            if isinstance(e.__context__, hawkey.Exception):
                raise dnf.exceptions.RepoError('{}: {}'.format(e, e.__context__))
            raise
        finally:
            checks.wait()
        self._refusePackages(repo, checks)
        self._removeFile(self._uncheckedNote(repo))
        if before is None or self._cacheStamp(repo) != before:
            showReading(repo, tr('Checking the metadata of {}'))
            self._checkDocuments(repo, checks if documents[0] in kinds else DocumentChecks(repo, documents))
        elif isNewer:
            self._renewTime(self._caches(repo)[-1])

    def _caches(self, repo):
        """The cache files of a repository: dnf's copies of the metadata, in a form that dnf reads faster."""
        return [os.path.join(self.conf.cachedir, repo.id + ending)
                for ending in ('-filenames.solvx', '-other.solvx', '.solv')]

    def _isNewerThanCache(self, repo):
        """Whether dnf will read the original package list, because this list is newer than dnf's cache of this list.
        True if the times are unknown, or if the process has ended before it has checked the list.
        """
        if os.path.exists(self._uncheckedNote(repo)):
            return True
        path = documentPath(repo, 'primary')
        try:
            return path is None or os.stat(path).st_ctime_ns >= os.stat(self._caches(repo)[-1]).st_ctime_ns
        except OSError:
            return True

    def _uncheckedNote(self, repo):
        """A file that exists as long as dnf's cache may contain a package list that the script has not yet checked."""
        return os.path.join(self.conf.cachedir, repo.id + '.unchecked')

    def _noteUnchecked(self, repo):
        """Create this file. If this is impossible, return False."""
        try:
            with open(self._uncheckedNote(repo), 'w'):
                return True
        except OSError:
            return False

    @staticmethod
    def _renewTime(cache):
        """Set the change time of a cache file, and none of its other times. dnf has just accepted this cache file,
        although the package list is newer: for example, somebody may have copied both files. With the new change time,
        the next run does not check the package list again.
        """
        try:
            found = os.stat(cache)
            os.utime(cache, ns=(found.st_atime_ns, found.st_mtime_ns))
        except OSError:
            pass

    def _cacheStamp(self, repo):
        """A value that changes when dnf writes its cache of the metadata again; None if no cache exists."""
        try:
            found = os.stat(self._caches(repo)[0])
        except OSError:
            return None
        return found.st_ino, found.st_mtime_ns, found.st_size

    def _refusePackages(self, repo, checks):
        """Refuse a damaged package list. dnf has read no packages or only some of them, and has reported no error."""
        fault = checks.wait().get('primary')
        if fault:
            self._removeCaches(repo)
            self._removeFile(self._uncheckedNote(repo))
            self._plugins.skipsSack = self._hasRefusedPackages = True
            refuseDamaged(repo, 'primary', fault)

    def _checkDocuments(self, repo, checks):
        """Report damaged file lists or change logs. dnf would accept incomplete metadata, or even another document."""
        for kind, fault in checks.wait().items():
            if fault:
                self._removeCaches(repo)
                self.remark(tr('The {} metadata of the repository {} are damaged: {}\n'
                               'Searches and descriptions lack some file lists or change logs of its packages.')
                            .format(kind, repo.id, fault))

    def _removeCaches(self, repo):
        """Remove dnf's cache of damaged metadata, so that the next run checks the documents again."""
        for cache in self._caches(repo):
            self._removeFile(cache)

    @staticmethod
    def _removeFile(path):
        if os.path.exists(path):
            os.unlink(path)

    def _run_transaction(self, cb):
        """Run the transaction. If a scriptlet has failed, but rpm has still changed the package of this scriptlet,
        ignore the failure. After such a scriptlet, some versions of rpm report a failed transaction, although no
        package has failed. These versions are newer than the version in Debian 12. The packages have changed, so the
        history must record the end of the transaction.
        """
        try:
            return super(Base, self)._run_transaction(cb)
        except dnf.exceptions.Error:
            if not self.changed or not cb.scriptFailed or any(
                    item.state == libdnf.transaction.TransactionItemState_ERROR for item in self.transaction):
                raise
        self._trans_install_set = bool(self.transaction.install_set)
        self._verify_transaction()
        return None

    def resolveIf(self, judge, allowErasing):
        """Resolve the goal, and call judge(goal) before dnf makes the transaction from the solution. If the judge
        raises an exception, dnf makes no transaction.
        """
        self.judge = judge
        try:
            self.resolve(allow_erasing=allowErasing)
        finally:
            self.judge = None

    def items(self):
        """The items of the resolved transaction: packages, but no groups. Empty without a transaction.

        Each time that the script reads dnf's transaction, dnf makes new objects for all items. So this function keeps
        the objects until the next resolve() or reset().
        """
        if self._items is None:
            self._items = list(self.transaction or [])
        return self._items

    def reset(self, *args, **kwargs):
        self._items = None
        super(Base, self).reset(*args, **kwargs)

    def resolve(self, allow_erasing=False):
        # The search for impossible marks needs many resolutions. A stop must not wait for all of them.
        endIfStopped()
        self.unsolved = None
        try:
            return super(Base, self).resolve(allow_erasing)
        except dnf.exceptions.DepsolveError:
            self.unsolved = self.goal
            raise
        finally:
            self._items = None

    def problems(self):
        """The reasons why the last resolution has failed: a list of lines for each reason; empty if it succeeded."""
        # problem_rules() crashes the process for a goal that has not been resolved.
        return [clearest(lines) for lines in self.unsolved.problem_rules()] if self.unsolved is not None else []

    def _goal2transaction(self, goal):
        # Call the judge before dnf passes the solution to the history and to the plug-ins.
        if self.judge is not None:
            self.judge(goal)
        return super(Base, self)._goal2transaction(goal)

    def _verify_transaction(self, *args, **kwargs):
        """Complete the history. If dnf cannot write the history, store the error, and raise no exception, because rpm
        has already changed the packages.
        """
        try:
            super(Base, self)._verify_transaction(*args, **kwargs)
        except (dnf.exceptions.Error, hawkey.Exception, libdnf.error.Error, RuntimeError, OSError) as e:
            self.historyFault = str(e)

    def _download_remote_payloads(self, payloads, *args, **kwargs):
        missing = [payload for payload in payloads if not isInCache(payload.pkg)]
        self.announced = True
        yumIOC.downloadRemotePayloads(missing)
        if missing:
            super(Base, self)._download_remote_payloads(missing, *args, **kwargs)

    def download_packages(self, *args, **kwargs):
        self.announced = False
        super(Base, self).download_packages(*args, **kwargs)
        if not self.announced:
            yumIOC.downloadRemotePayloads([])


def isInCache(package):
    try:
        return package.verifyLocalPkg()
    except (OSError, ValueError, dnf.exceptions.MiscError):
        return False


def forgetInterrupt():
    """Clear librepo's flag lr_interrupt. Otherwise, after an interrupted download, librepo would cancel all later
    downloads.
    """
    try:
        ctypes.c_int.in_dll(ctypes.CDLL('librepo.so.0'), 'lr_interrupt').value = 0
    except (OSError, ValueError):  # another version of librepo
        pass
