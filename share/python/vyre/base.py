# SPDX-License-Identifier: GPL-2.0-or-later
"""The package manager itself: dnf's class Base with the additions of the script.

The graphical thread makes, renews and closes the object; workers use it in between.
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
from .metadata import documentPath, metadataFault, modulesFault
from .output import Overheard, passable, showActivity, showReading
from .packages import HeaderMemo, OtherData
from .paths import namedDirectory
from .plugins import forgetPlugIns, stampOfPlugIns
from .program import tr, yumIOC
from .progress import DownloadProgress
from .reasons import clearest
from .signatures import KeyImport
from .space import spaceHint
from .stopping import endIfStopped


class Base(dnf.Base):
    """dnf's class with additions. It reports the packages of a download before the download begins. It also finds
    metadata errors that dnf does not report, or that would crash dnf.
    """

    def __init__(self, conf):
        super(Base, self).__init__(conf)
        self.scriptSpace = None  # the ScriptSpace of the running transaction
        self.otherData = OtherData()
        self.advisories = AdvisoryIndex()
        self.headers = HeaderMemo()
        self.changed = False  # whether rpm has begun to change the system
        self.historyFault = None  # why the history lacks the end of the last transaction
        self.unsolved = None  # the goal of the last resolution, if it has failed
        self.judge = None  # a function that may refuse a solution before it becomes the transaction
        self.withoutSpace = []  # packages whose scripts may have had no space
        # The program shows these messages after a successful operation, and then removes them. A repeated message is
        # only logged.
        self.remarks = []
        self._remarked = set()
        self.onlyCache = False  # without the network
        self.failed = []  # the repositories that cannot be read, with the reasons
        self.leftOut = []  # the repositories without metadata in the cache
        self.plugInFault = ''  # why the plug-ins cannot be used; every operation fails unless this is empty
        self._plugInStamp = None

    def renew(self, conf):
        """Begin again with another configuration, but keep the object, because the program refers to it."""
        kept = self.remarks, self._remarked
        self.end()
        forgetPlugIns()
        self.__init__(conf)
        self.remarks, self._remarked = kept

    def end(self):
        """Close everything, and save the state for the next run, as the dnf command does when it ends."""
        # close() uses the repositories. If they are still unread, close() must not read them now.
        self._reposUnread = False
        try:
            self.close()
        except (dnf.exceptions.Error, hawkey.Exception, libdnf.error.Error, RuntimeError, OSError, ValueError) as e:
            logging.getLogger('dnf').warning('%s', e)

    def endTransaction(self):
        """Remove the downloaded packages of a transaction, or keep them for the next transaction, as the dnf command
        does when it ends.
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
        """Load the plug-ins and read the repository files when the repositories are first needed, on a worker.

        dnf needs seconds to read ten thousand repositories. The graphical thread must not wait for so long.
        """
        self._reposUnread = True

    def plugInsHaveChanged(self):
        return self._plugInStamp is not None and self._plugInStamp != stampOfPlugIns(self.conf)

    @property
    def repos(self):
        if self._reposUnread:
            self._reposUnread = False  # plug-ins also read this property
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
        # An interrupted attempt may have left some repositories behind.
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
        """Mark metadata as expired if an earlier run has recorded them as expired."""
        self._activate_persistor()
        expired = self._repo_persistor.get_expired_repos()
        for repo in self._repos.values():
            if expired is None or repo.id in expired:
                repo._repo.expire()

    def _demandSignatures(self):
        """Check all signatures if rpm's configuration demands that each package is signed."""
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
        """Run these steps of the plug-ins up to the first failure. setupRepos() reports the failure later."""
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
        """If dnf cannot read a repository, this method notes the failure and reads the other repositories first. So the
        user waits only once before the questions. If no user can answer, the first failure ends the operation, as in
        dnf.
        """
        del self.leftOut[:], self.failed[:]
        showActivity(tr('Reading the installed packages'))
        sack = super(Base, self).fill_sack(*args, **kwargs)
        endIfStopped()
        hint = spaceHint(self.conf.cachedir) if self.failed else ''
        for number, (repo, reason) in enumerate(self.failed):
            if not program.goOnWithout(repo.id, passable(reason + hint), len(self.failed) - number - 1):
                endIfStopped()
                raise dnf.exceptions.RepoError(reason)
        return sack

    def fillSackFromCache(self):
        """Read the installed packages and the metadata in the cache, without the network and without a question.
        Repositories whose metadata are missing in the cache are left out.
        """
        strategies = [(repo, repo._repo.getSyncStrategy()) for repo in self.repos.iter_enabled()]
        self.onlyCache = True
        try:
            for repo, _ in strategies:
                repo._repo.setSyncStrategy(dnf.repo.SYNC_ONLY_CACHE)
            # The user may have stopped a wait for this lock, and must not have to stop the same wait again.
            with withoutWaitForMetadata():
                self.fill_sack()
        finally:
            self.onlyCache = False
            for repo, strategy in strategies:
                repo._repo.setSyncStrategy(strategy)
        if self.leftOut:
            text = tr('These repositories have no metadata in the cache, and are left out until the next Refresh: {}.')
            logging.getLogger('dnf').info('%s', text.format(', '.join(repo.id for repo in self.leftOut)))

    def _add_repo_to_sack(self, repo):
        endIfStopped()
        showReading(repo, tr('Reading repository metadata for {}'))
        overheard = Overheard()
        try:
            with overheard:
                self._readRepo(repo)
        except dnf.exceptions.RepoError as e:
            endIfStopped()
            if self.onlyCache:
                self.leftOut.append(repo)
            elif program.goOnWithout is None or repo.skip_if_unavailable:
                raise
            else:
                repo._repo.expire()
                self.failed.append((repo, '\n'.join([str(e)] + overheard.details())))
            repo.disable()

    def _readRepo(self, repo):
        # dnf downloads change logs with the other metadata. This function does not load the change logs, because most
        # runs do not need them.
        repo.load_metadata_other = True
        try:
            repo.load()
        finally:
            repo.load_metadata_other = False
        endIfStopped()
        showReading(repo, tr('Reading the packages of {}'))
        path = documentPath(repo, 'modules')
        fault = modulesFault(self, path) if path is not None else ''
        if fault:
            self.remark(tr('The modules metadata of the repository {} are damaged: {}\n'
                           'VYRE does not use this repository.')
                        .format(repo.id, fault))
            repo.disable()
            return
        before = self._cacheStamp(repo)
        # The check comes first: even if a repository is disabled later, its packages are still in the sack.
        if self._isNewerThanCache(repo):
            self._checkPackages(repo)
        try:
            super(Base, self)._add_repo_to_sack(repo)
        except dnf.exceptions.RepoError as e:
            # dnf logs the reason only as a detail.
            if isinstance(e.__context__, hawkey.Exception):
                raise dnf.exceptions.RepoError('{}: {}'.format(e, e.__context__))
            raise
        if before is None or self._cacheStamp(repo) != before:
            showReading(repo, tr('Checking the metadata of {}'))
            self._checkDocuments(repo)

    def _caches(self, repo):
        """The files in which dnf stores the metadata of a repository in a form that dnf reads faster."""
        return [os.path.join(self.conf.cachedir, repo.id + ending)
                for ending in ('-filenames.solvx', '-other.solvx', '.solv')]

    def _isNewerThanCache(self, repo):
        """Whether dnf will read the package list itself, because the list is newer than dnf's cache. True if this is
        unknown.
        """
        path = documentPath(repo, 'primary')
        try:
            return path is None or os.stat(path).st_ctime_ns >= os.stat(self._caches(repo)[-1]).st_ctime_ns
        except OSError:
            return True

    def _cacheStamp(self, repo):
        """A value that changes if dnf reads the metadata again; None if dnf has not read the metadata yet."""
        try:
            found = os.stat(self._caches(repo)[0])
        except OSError:
            return None
        return found.st_ino, found.st_mtime_ns, found.st_size

    def _checkPackages(self, repo):
        """Refuse a damaged list of packages. dnf accepts a damaged list that has no packages, or too few."""
        fault = self._documentFault(repo, 'primary', 'metadata')
        if fault:
            raise dnf.exceptions.RepoError(
                tr('The {} metadata of the repository {} are damaged: {}').format('primary', repo.id, fault))

    def _checkDocuments(self, repo):
        """Report a damaged list of files or changes. dnf would accept an incomplete list, or even another document."""
        for kind, element in (('filelists', 'filelists'), ('other', 'otherdata')):
            fault = self._documentFault(repo, kind, element)
            if fault:
                self.remark(tr('The {} metadata of the repository {} are damaged: {}\n'
                               'Searches and descriptions lack some file lists or change logs of its packages.')
                            .format(kind, repo.id, fault))

    def _documentFault(self, repo, kind, element):
        """Returns the error in a repository's document; empty if the document has no error. The function removes dnf's
        cache of a damaged document, so that the next run checks the document again.
        """
        path = documentPath(repo, kind)
        fault = metadataFault(path, element) if path is not None else ''
        if fault:
            for cache in self._caches(repo):
                if os.path.exists(cache):
                    os.unlink(cache)
        return fault

    def _run_transaction(self, cb):
        """Run the transaction. Ignore a failed scriptlet if rpm has changed its package nevertheless.

        After such a scriptlet, newer versions of rpm report a failed transaction, although no package has failed. The
        packages have changed, as with older versions, and the history needs the end of the transaction.
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
        """Resolve the goal. The judge may raise an exception to prevent the transaction."""
        self.judge = judge
        try:
            self.resolve(allow_erasing=allowErasing)
        finally:
            self.judge = None

    def resolve(self, allow_erasing=False):
        self.unsolved = None
        try:
            return super(Base, self).resolve(allow_erasing)
        except dnf.exceptions.DepsolveError:
            self.unsolved = self.goal
            raise

    def problems(self):
        """The reasons why the last resolution has failed: a list of lines for each reason."""
        # If the goal was not run, this call crashes the process.
        return [clearest(lines) for lines in self.unsolved.problem_rules()] if self.unsolved is not None else []

    def _goal2transaction(self, goal):
        # The judge runs before the history and the plug-ins get the solution.
        if self.judge is not None:
            self.judge(goal)
        return super(Base, self)._goal2transaction(goal)

    def _verify_transaction(self, *args, **kwargs):
        """If dnf cannot write the history, store the error. rpm's changes to the packages are valid nevertheless."""
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
    """Allow downloads again after an interruption. Otherwise librepo cancels all later downloads."""
    try:
        ctypes.c_int.in_dll(ctypes.CDLL('librepo.so.0'), 'lr_interrupt').value = 0
    except (OSError, ValueError):  # another version of librepo
        pass
