"""The package manager as the program sees it.

The program runs this file in its embedded interpreter, makes one YumIO object and calls its methods, always from
one thread at a time: the graphical one at the start, a worker thread for every long operation. Everything that
the package manager has to say goes back through the built-in module yumIOC.

Runs on Python 3.6 and later with dnf 4.
"""

import bz2
import codecs
import contextlib
import copy
import ctypes
import datetime
import errno
import fcntl
import fnmatch
import functools
import gc
import gettext
import glob
import gzip
import importlib
import importlib.util
import logging
import lzma
import os
import re
import stat
import subprocess
import sys
import tempfile
import time
import zlib
import urllib.parse
import weakref

import libcomps
import rpm

try:
    import sqlite3
except ImportError:  # a module of its own in some distributions
    sqlite3 = None

# The package manager's own commands and plug-ins may look at the name of the program.
import bdb  # noqa: F401  (the program looks its exceptions up by name)
import dnf
import dnf.base
import dnf.callback
import dnf.comps
import dnf.conf
import dnf.conf.config
import dnf.conf.read
import dnf.const
import dnf.drpm
import dnf.exceptions
import dnf.i18n
import dnf.lock
import dnf.logging
import dnf.package
import dnf.plugin
import dnf.repo
import dnf.rpm
import dnf.rpm.miscutils
import dnf.sack
import dnf.selector
import dnf.transaction
import dnf.util
import dnf.yum.rpmtrans
import hawkey
import libdnf.conf
import libdnf.error
import libdnf.module
import libdnf.repo
import libdnf.transaction
import libdnf.utils

import yumIOC


# The rest of the script ---------------------------------------------------------------------------------------

@contextlib.contextmanager
def ownPackage():
    """Lets the package beside this file be imported, as it is now, within a scope.

    The program runs as root. Therefore the package is not searched for: a directory of the same name elsewhere is
    never imported. Root also leaves no compiled files behind: the share directory has only what was installed, and
    compiling takes less time than the start of the package manager needs by far.
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
    """Undoes an earlier run of this file: the modules are read again, and find dnf's own classes."""
    earlier = sys.modules.get('vyre.program')
    if earlier is not None:
        earlier.restore()
    for name in list(sys.modules):
        if name == 'vyre' or name.startswith('vyre.'):
            del sys.modules[name]


with ownPackage():
    from vyre import program
    from vyre.paths import (canWrite, inRoot, managedRoot, namedDirectory, namedDirectoryOfFiles)
    from vyre.program import tr, withoutSecrets


# What is the package manager's own -------------------------------------------------------------------------

# All that the script uses of the package manager although it is not meant for others: where it is, its name, and what
# to say of a version that lacks it. The start looks for all of it: a transaction must not end half way for that.
PRIVATE_NAMES = tuple((place, name, text) for text, found in (
    (tr('Version {} of dnf is not supported. VYRE cannot read the configuration with it, because it lacks {}.'), (
        (dnf.conf.config.BaseConfig, ('_has_option', '_populate', '_set_value')),
    )),
    (tr('Version {} of dnf is not supported. VYRE cannot read repositories and packages with it, '
        'because it lacks {}.'), (
        (dnf.Base, ('_activate_persistor', '_add_repo_to_sack', '_comps', '_get_installonly_query',
                    '_repo_persistor', '_repos')),
        (dnf.callback.KeyImport, ('_confirm',)),
        (dnf.conf.read.RepoReader, ('_get_repos',)),
        (dnf.lock.ProcessLock, ('_lock_thread', '_try_lock', '_unlock_thread')),
        (dnf.package.Package, ('_from_system',)),
        (dnf.repo.Repo, ('_repo', '_set_key_import')),
        (dnf.sack, ('_build_sack',)),
    )),
    (tr('Version {} of dnf is not supported. VYRE cannot use plug-ins with it, because it lacks {}.'), (
        (dnf.plugin.Plugins, ('_caller', '_load', '_run_init')),
    )),
    (tr('Version {} of dnf is not supported. VYRE cannot carry out transactions with it, because it lacks {}.'), (
        (dnf.Base, ('_download_remote_payloads', '_finalize_base', '_goal2transaction', '_moduleContainer',
                    '_repo_set_imported_gpg_keys',
                    '_run_transaction', '_trans_install_set', '_trans_success', '_trans_tempfiles', '_ts',
                    '_verify_transaction')),
        (dnf.yum.rpmtrans.RPMTransaction, ('_cpioError', '_extract_cbkey', '_scriptError', '_scriptOutput',
                                           '_shutdownOutputLogging', '_unpackError')),
        (rpm, ('_RPMVSF_NODIGESTS', '_RPMVSF_NOSIGNATURES')),
    )),
) for place, names in found for name in names)

# What newer versions have.
NEW_NAMES = ('_persistence',)

# What there may be: without it signatures are checked as the package manager does it.
RPMKEYS_NAMES = ('_find_rpmkeys_binary', '_process_rpm_output', '_verifyPackageUsingRpmkeys')


def requirePrivateNames(*objects):
    """End the start when the package manager lacks one of these names: in its classes and modules or, when there are
    some already, in objects of these classes.
    """
    for place, name, text in PRIVATE_NAMES:
        made = [each for each in objects if isinstance(place, type) and isinstance(each, place)]
        if hasattr(place, name) or not made and name in NAMES_OF_OBJECTS:
            continue
        if not any(name in vars(each) for each in made):
            fault = text.format(dnf.const.VERSION, place.__name__ + '.' + name)
            # The program shows what was logged.
            logging.getLogger('dnf').error('%s', fault)
            raise SystemExit(fault)


# Those of them that an object has, and not its class.
NAMES_OF_OBJECTS = ('_comps', '_repo', '_repo_persistor', '_repo_set_imported_gpg_keys', '_repos',
                    '_trans_install_set', '_trans_success', '_trans_tempfiles')


# The configuration files ----------------------------------------------------------------------

# The file that dnf itself reads.
OWN_CONFIGURATION = '/etc/dnf/dnf.conf'


def configurationFile():
    """The package manager's main configuration file; the editor of repositories looks in the same places."""
    for path in ('/etc/yum/yum.conf', '/etc/yum.conf', OWN_CONFIGURATION):
        if os.path.exists(inRoot(path)):
            return inRoot(path)
    return None


def repositoryDirectories(known):
    """Where files of repositories are, unless the main configuration file says so, with those that the package manager
    knows where they exist; the editor looks there too.
    """
    usual = ['/etc/yum.repos.d', '/etc/yum/repos.d']
    return [inRoot(path) for path in usual] + [
        inRoot(path) for path in known if path not in usual and os.path.isdir(inRoot(path))]


def tooLarge(limit):
    """What to say of a file of more than so many bytes."""
    return tr('it has more than {} MB').format(limit >> 20)


def mainFileFault(path):
    """Why the package manager cannot have the main configuration file; empty if it can.

    It would wait for a pipe for ever, and for the end of a file that has none. All else is its own to judge: without
    the options of that file it would check less.
    """
    try:
        # Opening a device may already have an effect.
        found = os.stat(path)
        if not stat.S_ISREG(found.st_mode):
            return tr('it is not a regular file')
        if found.st_size > yumIOC.repositoryFileLimit:
            return tooLarge(yumIOC.repositoryFileLimit)
        with open(path, 'rb'):
            return ''
    except OSError as e:
        return e.strerror


# Files of repositories --------------------------------------------------------------------------------------

# What a file that the program leaves alone begins with: it holds letters of two bytes.
TWO_BYTE_MARKS = (b'\xff\xfe', b'\xfe\xff')


def isUsable(path):
    """Whether the program, too, reads the repositories of a file: it names those that it leaves alone.

    The package manager would wait for a pipe for ever, and for the end of what has none.
    """
    try:
        # Opening a device may already have an effect.
        if not stat.S_ISREG(os.stat(path).st_mode):
            return False
        descriptor = os.open(path, os.O_RDONLY | os.O_CLOEXEC | os.O_NOCTTY | os.O_NONBLOCK)
    except FileNotFoundError:
        return False
    except OSError:
        return True  # the package manager says what is wrong with it
    try:
        if not stat.S_ISREG(os.fstat(descriptor).st_mode):
            return False
        content = b''
        while len(content) <= yumIOC.repositoryFileLimit:
            block = os.read(descriptor, 1 << 20)
            if not block:
                return isText(content)
            content += block
        return False
    except BlockingIOError:
        return False
    except OSError:
        return True
    finally:
        os.close(descriptor)


def isText(content):
    """Whether the program takes the content of a configuration file for text; it does so by the same rules."""
    if b'\0' in content or content.startswith(TWO_BYTE_MARKS):
        return False
    if content.startswith(codecs.BOM_UTF8):
        content = content[len(codecs.BOM_UTF8):]
    lines = [line.rstrip(b'\r') for line in content.split(b'\n')]
    if len(lines) == 1 and b'\r' in lines[0]:
        return False
    return largestSection(b'\n'.join(lines)) <= yumIOC.repositorySectionLimit


def largestSection(content):
    """How many bytes the longest of the repositories takes; the main section is none."""
    starts = [found.start() for found in re.finditer(b'^\\[', content, re.M)]
    first = 0
    while first < len(starts) and re.match(b'\\[main\\](\n|$)', content[starts[first]:starts[first] + 7]):
        first += 1
    ends = starts[first + 1:] + [len(content)]
    return max((end - start for start, end in zip(starts[first:], ends)), default=0)


class RepositoryReader(dnf.conf.read.RepoReader):
    """Reads what the program reads."""

    def _get_repos(self, path):
        return super(RepositoryReader, self)._get_repos(path) if isUsable(path) else iter(())


# Where distributions keep rpm's database in the managed system.
DATABASES = ('/var/lib/rpm', '/usr/lib/sysimage/rpm')


def useDatabaseOfRoot():
    """Some distributions compile rpm so that the database is in the home directory of the user who calls it.

    The package manager checks signatures with a program of rpm's, which needs the directory as well.
    """
    if rpm.expandMacro('%{?_dbpath}') in DATABASES:
        return
    rpm.addMacro('_dbpath', DATABASES[0])
    if all(hasattr(dnf.rpm.miscutils, name) for name in RPMKEYS_NAMES):
        dnf.rpm.miscutils._verifyPackageUsingRpmkeys = verifyWithDatabaseOfRoot


def verifyWithDatabaseOfRoot(package, root):
    """What the signatures of a package, an open file, are worth, in the package manager's numbers; 0 is good."""
    program = dnf.rpm.miscutils._find_rpmkeys_binary()
    if program is None:
        logging.getLogger('dnf').critical(tr('Signatures cannot be checked: there is no program rpmkeys.'))
        return 2
    command = [program, '--checksig', '--verbose', '--root', root, '--dbpath', DATABASES[0],
               '--define=_pkgverify_level signature', '--define=_pkgverify_flags 0x0', '-']
    checked = subprocess.run(command, stdin=package, stdout=subprocess.PIPE, cwd='/',
                             env=dict(os.environ, LC_ALL='C'))
    if checked.returncode not in (0, 1):
        return 2
    return dnf.rpm.miscutils._process_rpm_output(checked.stdout.split(b'\n')) or 2 * checked.returncode


# Output -----------------------------------------------------------------------------------------------------

def passable(text):
    """The text with what a C string in UTF-8 cannot carry, such as lone surrogates of file names, escaped."""
    return text.encode('utf-8', 'backslashreplace').decode('utf-8').replace('\0', '\\0')


class Writer:
    """Stands in for sys.stdout or sys.stderr and hands each text to the program."""

    encoding = 'utf-8'
    errors = 'replace'
    closed = False

    def __init__(self, write, descriptor):
        self._write = write
        self._descriptor = descriptor

    def write(self, text):
        if text:
            self._write(passable(text))
        return len(text)

    def writelines(self, lines):
        for line in lines:
            self.write(line)

    def flush(self):
        pass

    def fileno(self):
        return self._descriptor

    def isatty(self):
        return False

    def writable(self):
        return True


def programListens():
    """Whether the program can be called: before it goes, it puts the interpreter's own streams back."""
    return isinstance(sys.stdout, Writer)


class LogHandler(logging.Handler):
    """Passes the package manager's log records on to the program's log.

    Detail levels are those of the package manager's debuglevel option, of which 2 is the default.
    """

    LEVELS = ((logging.CRITICAL, 0), (logging.ERROR, 1), (logging.WARNING, 2), (logging.INFO, 2),
              (logging.DEBUG, 3), (dnf.logging.DDEBUG, 7), (dnf.logging.SUBDEBUG, 8), (dnf.logging.TRACE, 9))

    def emit(self, record):
        if record.name == 'dnf.rpm':
            return  # TransactionProgress reports these itself
        if not programListens():
            return
        try:
            text = self.format(record)
        except Exception:  # a record that cannot be formatted must not end the operation that wrote it
            text = str(record.msg)
        if record.msg == dnf.i18n._("You can remove cached packages by executing '%s'."):
            # The command is for a terminal, and its cache may be another directory.
            text = tr('You can remove them with Clean Packages in the menu Cache.')
        text = passable(text)
        level = next((level for number, level in self.LEVELS if record.levelno >= number), 10)
        if record.levelno >= logging.WARNING:
            yumIOC.errorlog(level, text)
        else:
            yumIOC.log(level, text)


class DiscreetFormatter(logging.Formatter):
    """Formats as another one does, for a log file, which is read by others too."""

    def __init__(self, formatter):
        super(DiscreetFormatter, self).__init__()
        self._formatter = formatter

    def format(self, record):
        return withoutSecrets(self._formatter.format(record))


# What packages and groups answer beyond what the package manager gives them ---------------------------------

class HeaderMemo:
    """The header of the installed package that was asked last: a search asks each for several of its values in a
    row, and each time rpm would look it up in its database.
    """

    def __init__(self):
        self.clear()

    def clear(self):
        self._package = None
        self._header = None

    def header(self, package):
        if self._package is not package:
            self._header = package.get_header()
            self._package = package
        return self._header


def _packageHeader(package):
    """The header of an installed package; other packages have no such attribute."""
    if not package._from_system:
        raise AttributeError('hdr')
    return package.base.headers.header(package)


def _packageChangelogs(package):
    """The change log, newest first: dictionaries of timestamp (datetime.datetime), author and text."""
    if package._from_system:
        header = package.base.headers.header(package)
        entries = zip(header[rpm.RPMTAG_CHANGELOGTIME], header[rpm.RPMTAG_CHANGELOGNAME],
                      header[rpm.RPMTAG_CHANGELOGTEXT])
        return [{'timestamp': _dateTime(time), 'author': _text(author), 'text': _text(text)}
                for time, author, text in entries]
    return package.base.otherData.changelogs(package)


def _dateTime(seconds):
    return datetime.datetime.fromtimestamp(seconds, datetime.timezone.utc).replace(tzinfo=None)


def _universalDay(day):
    """The day of a change log's entry, of which the package manager gives the local day only.

    Entries are of noon in universal time, which far in the east is the next day already.
    """
    noon = datetime.datetime.combine(day, datetime.time(12, tzinfo=datetime.timezone.utc))
    ahead = datetime.date.fromtimestamp(noon.timestamp()) - day
    return datetime.datetime.combine(day - ahead, datetime.time())


def _packageBuildHost(package):
    """The host that an installed package was built on; repositories do not let us read it."""
    if not package._from_system:
        return None
    return _text(package.base.headers.header(package)[rpm.RPMTAG_BUILDHOST])


def _text(value):
    return value.decode('utf-8', 'replace') if isinstance(value, bytes) else value


program.replace(dnf.package.Package, 'hdr', property(_packageHeader))
program.replace(dnf.package.Package, 'changelogs', property(_packageChangelogs))
program.replace(dnf.package.Package, 'buildhost', property(_packageBuildHost))


class OtherData:
    """The change logs of available packages: fetched with the other metadata, read into memory on first use."""

    def __init__(self):
        self._packages = {}

    def clear(self):
        self._packages = {}

    def changelogs(self, package):
        try:
            packages = self._load(package.base, package.repo)
        except (dnf.exceptions.Error, hawkey.Exception, OSError) as e:
            # The cache may have been cleaned since the repository was read. A search asks every package: this is
            # tried and reported once, unless it may be over soon.
            logging.getLogger('dnf').warning(tr('The change logs of %s cannot be read: %s'), package.reponame, e)
            if not isinstance(e, dnf.exceptions.LockError):
                self._packages[package.reponame] = {}
            return []
        twin = packages.get(str(package))
        if twin is None:
            return []
        return [dict(entry, timestamp=_universalDay(entry['timestamp']))
                for entry in super(dnf.package.Package, twin).changelogs]

    def loadAll(self, base):
        for repo in base.repos.iter_enabled():
            self._load(base, repo)

    def _load(self, base, repo):
        """The packages of one repository by name, version and architecture, in a sack of their own.

        Equal packages of several repositories may have different change logs. A search reads the change log of
        every package: finding each with a query, which looks at all packages, would take time in the square.
        """
        if repo.id not in self._packages:
            sack = dnf.sack._build_sack(base)
            # As the package manager does where it loads them itself: what is read is written into the cache too.
            with dnf.lock.build_metadata_lock(base.conf.cachedir, False):
                sack.load_repo(repo._repo, build_cache=True, load_other=True)
            self._packages[repo.id] = {str(package): package for package in sack.query().available()}
        return self._packages[repo.id]


class GroupPackage:
    """A package named by a group."""

    def __init__(self, name):
        self.name = name

    def __str__(self):
        return self.name


class Group:
    """A group of packages: comps makes each list again on every access, and its members no text."""

    def __init__(self, group):
        self.id = group.id
        self.name = group.name
        self.uservisible = group.uservisible
        self.mandatory_packages = self._members(group.mandatory_packages)
        self.default_packages = self._members(group.default_packages)
        self.optional_packages = self._members(group.optional_packages)
        self.conditional_packages = self._members(group.conditional_packages)

    def __str__(self):
        return self.name

    def names(self, *types):
        """The names of its packages of these types; conditional ones are not looked at."""
        return [package.name for type in types if type in ('mandatory', 'default', 'optional')
                for package in getattr(self, type + '_packages')]

    @staticmethod
    def _members(packages):
        return [GroupPackage(package.name) for package in packages]


class GeneratorProbe:
    """Counts how often a generator asks what it goes through for an iterator."""

    asked = 0

    def __iter__(self):
        self.asked += 1
        return self

    def __next__(self):
        raise StopIteration


@functools.lru_cache(maxsize=None)
def groupsCanBeRead():
    """Whether the package manager can go through lists of groups.

    It does so with generators. Some versions of Python ask the iterator of a generator for an iterator again, and some
    versions of libcomps, that of Debian 13 among them, take the iterator for a list then: what they make of it has no
    groups, or ends the process. With one group in the list, asking is harmless; what comes of it is not to be used.
    """
    probe = GeneratorProbe()
    list(each for each in probe)
    if probe.asked == 1:
        return True
    group = libcomps.Group()
    group.id = 'probe'
    comps = libcomps.Comps()
    comps.groups.append(group)
    iterator = iter(comps.groups)
    try:
        return iter(iterator) is iterator
    except TypeError:
        return False


class WithoutGroups(dnf.comps.Comps):
    """The groups of a system where they cannot be read, for all that asks the package manager for them."""

    def __len__(self):
        return 0

    def categories_iter(self):
        return iter(())

    def environments_iter(self):
        return iter(())

    def groups_iter(self):
        return iter(())


class All:
    """What collectAll() returns; excluded: the installed packages that the configuration excludes."""

    def __init__(self, installed, available, excluded):
        self.installed = installed
        self.available = available
        self.excluded = excluded


# Locking ----------------------------------------------------------------------------------------------------

_buildLock = dnf.lock.build_rpmdb_lock
_buildMetadataLock = dnf.lock.build_metadata_lock
_buildDownloadLock = dnf.lock.build_download_lock


class SessionLock(dnf.lock.ProcessLock):
    """The package manager's lock, held by the program for its whole life.

    The package manager takes the same lock around each transaction. It then must find the one that we hold
    already, on whichever of our threads it runs; only one of them works at a time.
    """

    def _lock_thread(self):
        self.count += 1

    def _unlock_thread(self):
        self.count -= 1


def databaseCookie():
    """What is another after every change of the installed packages; empty when rpm does not know."""
    transaction = rpm.TransactionSet(managedRoot())
    try:
        return transaction.dbCookie() if transaction.openDB() == 0 else ''
    except (AttributeError, rpm.error):  # a version without it
        return ''
    finally:
        transaction.closeDB()


# So many letters of what was done are written into the history of transactions.
COMMAND_LENGTH = 1000


def commandLine(*lists):
    """What the history of transactions has in place of a command: pairs of a verb and what it is done to.

    Anyone who reads the history with dnf sees it on a terminal: names of repositories' packages may be made to harm it.
    """
    parts = []
    for verb, objects in lists:
        names = sorted(set(''.join(letter if letter.isprintable() else '?' for letter in name) for name in objects))
        if names:
            parts.append('{} {}'.format(verb, ' '.join(names)))
    text = 'vyre: ' + '; '.join(parts)
    return text if len(text) <= COMMAND_LENGTH else text[:COMMAND_LENGTH - 3] + '...'


class DatabaseLock:
    """Holds rpm's own lock for a scope, so that no other program changes the packages meanwhile.

    rpm waits for it without a word, or does not wait at all. This one says what it waits for, and asks whether to go
    on. The lock belongs to the process: rpm can take it once more, and when rpm gives it back it is free.
    """

    # Seconds: between two attempts, before the first question, and from each question to the next.
    ATTEMPTS = 0.2
    FIRST_QUESTION = 5
    NEXT_QUESTION = 60

    def __enter__(self):
        path = rpm.expandMacro('%{?_rpmlock_path}')
        self._path = inRoot(path) if path.startswith('/') else inRoot('/var/lib/rpm/.rpm.lock')
        self._database = inRoot(rpm.expandMacro('%{_dbpath}')) + '/rpmdb.sqlite'
        self._descriptor = None
        try:
            self._descriptor = os.open(self._path, os.O_RDWR | os.O_CREAT | os.O_CLOEXEC, 0o644)
        except OSError as e:  # rpm will say so itself if that keeps it from working
            logging.getLogger('dnf').debug('%s', e)
        try:
            self._wait()
        except BaseException:
            self.__exit__()
            raise

    def __exit__(self, *unused):
        if self._descriptor is not None:
            os.close(self._descriptor)

    def _wait(self):
        question = time.monotonic() + self.FIRST_QUESTION
        while not self._taken():
            holder = self._holder()
            # Each time, even if it says the same: the program raises an exception there to end the wait.
            if holder:
                showActivity(tr('Waiting for {}, which uses the package database').format(holder))
            else:
                showActivity(tr('Waiting for another program, which uses the package database'))
            if time.monotonic() >= question:
                self._ask(holder)
                question = time.monotonic() + self.NEXT_QUESTION
            time.sleep(self.ATTEMPTS)

    def _taken(self):
        if self._descriptor is not None:
            try:
                fcntl.lockf(self._descriptor, fcntl.LOCK_EX | fcntl.LOCK_NB)
            except OSError as e:
                if e.errno in (errno.EACCES, errno.EAGAIN):
                    return False
        return not self._databaseIsLocked()

    def _databaseIsLocked(self):
        """Whether somebody keeps rpm from writing its database although rpm's lock is free, as a backup may do. rpm
        would give up after a while, in the middle of the transaction.
        """
        if sqlite3 is None or not os.path.exists(self._database):
            return False
        try:
            connection = sqlite3.connect('file:{}?mode=rw'.format(urllib.parse.quote(self._database)), uri=True,
                                         timeout=0, isolation_level=None)
            try:
                connection.execute('BEGIN IMMEDIATE')
                connection.execute('ROLLBACK')
            finally:
                connection.close()
        except sqlite3.Error as e:
            return 'locked' in str(e)
        return False

    def _holder(self):
        """Name and process number of the program that has one of the locks; empty when that is not known."""
        files = set()
        for path in (self._path, self._database, self._database + '-shm'):
            try:
                files.add(nameInLocks(path))
            except (OSError, StopIteration):
                pass
        try:
            with open('/proc/locks') as locks:
                for line in locks:
                    fields = line.split()
                    if fields[1] == '->' or fields[3] != 'WRITE' or fields[5] not in files:
                        continue
                    if int(fields[4]) > 0 and int(fields[4]) != os.getpid():
                        return '{} ({})'.format(nameOfProcess(fields[4]), fields[4])
        except (OSError, ValueError, IndexError):
            pass
        return ''

    @staticmethod
    def _ask(holder):
        yumIOC.gpgsigcheck()
        if holder:
            sys.stdout.write(tr('Another program is using the package database: {}\nKeep waiting?\n').format(holder))
        else:
            sys.stdout.write(tr('Another program is using the package database.\nKeep waiting?\n'))
        if yumIOC.userconfirm() != 1:
            raise dnf.exceptions.Error(tr('The package database is in use by another program. Nothing was changed.'))


def nameInLocks(path):
    """How /proc/locks names a file: by the device of its file system, of which stat() may know another, and its number
    there.
    """
    # To close a file that was opened to be read would give up every lock that this process has on it.
    descriptor = os.open(path, os.O_PATH | os.O_CLOEXEC)
    try:
        with open('/proc/self/fdinfo/{}'.format(descriptor)) as facts:
            mount = next(line.split()[1] for line in facts if line.startswith('mnt_id:'))
        with open('/proc/self/mountinfo', errors='replace') as mounts:
            device = next(line.split()[2] for line in mounts if line.split()[0] == mount)
        major, minor = device.split(':')
        return '{:02x}:{:02x}:{}'.format(int(major), int(minor), os.fstat(descriptor).st_ino)
    finally:
        os.close(descriptor)


def nameOfProcess(number):
    try:
        with open('/proc/{}/comm'.format(number), errors='replace') as name:
            return name.read().strip()
    except OSError:
        return '?'


def startOfProcess(number):
    """When a process started, in seconds since 1970; None when that is not known. Exact to two seconds."""
    try:
        with open('/proc/{}/stat'.format(number), 'rb') as stat, open('/proc/stat', 'rb') as system:
            # The name of the program, in parentheses, may hold anything.
            ticks = int(stat.read().rpartition(b')')[2].split()[19])
            booted = next(int(line.split()[1]) for line in system if line.startswith(b'btime '))
    except (OSError, ValueError, IndexError, StopIteration):
        return None
    return booted + ticks / os.sysconf('SC_CLK_TCK')


def hasEnded(number):
    """Whether there is no process of that number; False when in doubt."""
    return os.path.exists('/proc/self') and not os.path.lexists('/proc/{}'.format(number))


def usesPackages(number):
    """Whether a process has rpm's library loaded, as everything has that may hold the locks; True when in doubt."""
    try:
        with open('/proc/{}/maps'.format(number), 'rb') as maps:
            return any(b'/librpm' in line for line in maps)
    except OSError:
        return True


def abandonedBy(target):
    """The number of the process that has left this lock file behind; None when it holds it still or there is no such
    file.

    The number alone does not say that: after a crash or a restart of the machine it may be that of any other process,
    which has started since.
    """
    try:
        with open(target, 'rb') as stream:
            number = int(stream.read(20))
            written = os.fstat(stream.fileno()).st_mtime
    except (OSError, ValueError):
        return None
    if number == os.getpid():
        return None
    if hasEnded(number):
        return number
    started = startOfProcess(number)
    # The clock may have been set since: the time alone would not be enough to take a lock away.
    if started is not None and started > written + 2 and not usesPackages(number):
        return number
    return None


def removeAbandonedLock(lock):
    """Remove the file of a lock whose owner has ended: anyone who waits for that owner would wait for ever."""
    number = abandonedBy(lock.target)
    if number is None:
        return
    try:
        with open(lock.target, 'r+b') as stream:
            fcntl.flock(stream, fcntl.LOCK_EX | fcntl.LOCK_NB)
            if abandonedBy(lock.target) != number:
                return
            stream.truncate()
        with lock:
            pass
    except (OSError, dnf.exceptions.LockError) as e:
        logging.getLogger('dnf').debug('%s', e)
        return
    text = tr('Process {} has ended without removing its lock file {}. The file is removed.')
    logging.getLogger('dnf').info('%s', text.format(number, lock.target))


class WaitingLock(dnf.lock.ProcessLock):
    """A lock on the cache: waits for another process that holds it, and says for which one.

    The package manager itself would wait without an end, and for the process of a number that was given away again.
    """

    # Seconds between two attempts.
    ATTEMPTS = 0.2

    def __enter__(self):
        dnf.util.ensure_dir(os.path.dirname(self.target))
        self._lock_thread()
        try:
            self._wait()
        except BaseException:
            self._unlock_thread()
            raise

    def _wait(self):
        number = os.getpid()
        holder = self._try_lock(number)
        if holder == number:
            return
        logged = None
        try:
            while holder != number:
                # Without a number another process is just taking the lock or giving it back.
                first = holder != logged and holder > 0
                if first:
                    logged = holder
                if not awaitLock(tr('Waiting for {}, which uses the cache of the package manager').format(
                        self._describe(holder)), first):
                    self._end(holder)
                time.sleep(self.ATTEMPTS)
                removeAbandonedLock(dnf.lock.ProcessLock(self.target, self.description))
                holder = self._try_lock(number)
        except BaseException:
            awaitLock(None)
            raise
        if not awaitLock(None):
            # It was to be ended just when there was nothing to wait for any more.
            os.unlink(self.target)
            self._end(0)

    def _end(self, holder):
        raise dnf.exceptions.LockError(tr('The wait for {} was ended. Nothing was changed.').format(
            self._describe(holder)))

    @staticmethod
    def _describe(number):
        if number <= 0:
            return tr('another program')
        name = nameOfProcess(number)
        return tr('process {}').format(number) if name == '?' else '{} ({})'.format(name, number)


def awaitLock(text, first=False):
    """Shows what is waited for, the first time in the log too; or, with None, that the wait is over. False: the wait is
    to be ended.
    """
    if first:
        logging.getLogger('dnf').info('%s', text)
    if program.waitForLock is not None and programListens():
        return program.waitForLock(None if text is None else passable(text))
    if text is not None:
        showActivity(text)
    return True


# The database of packages is not waited for: the program says at once that another one uses it.
program.replace(dnf.lock, 'build_rpmdb_lock', lambda persistdir, exit_on_lock: _buildLock(persistdir, True))


def waitingLock(build):
    def buildWaiting(cachedir, exit_on_lock):
        plain = build(cachedir, exit_on_lock)
        return plain if exit_on_lock else WaitingLock(plain.target, plain.description)
    return buildWaiting


program.replace(dnf.lock, 'build_metadata_lock', waitingLock(_buildMetadataLock))
program.replace(dnf.lock, 'build_download_lock', waitingLock(_buildDownloadLock))


# Progress ---------------------------------------------------------------------------------------------------

def showActivity(text):
    """Says on the bar of the current step what is being done."""
    if program.changeActivity is not None and programListens():
        program.changeActivity(passable(text))


def extendListing(text):
    """Adds lines to the listing that the user is going to confirm."""
    if program.addToListing is not None:
        program.addToListing(passable(text))


def introduceListing(text):
    """Adds lines before the listing that the user is going to confirm."""
    if program.addBeforeListing is not None:
        program.addBeforeListing(passable(text))


class DownloadProgress(dnf.callback.DownloadProgress):
    """Passes the progress of downloads, of metadata and of packages, on to the program."""

    def __init__(self):
        super(DownloadProgress, self).__init__()
        self._reported = set()

    def start(self, total_files, total_size, total_drpms=0):
        self._reported.clear()
        yumIOC.downloadStart(total_files, int(total_size), total_drpms)

    def progress(self, payload, done):
        yumIOC.downloadProgress(payload, float(done))

    def message(self, msg):
        yumIOC.downloadMessage(msg)

    def end(self, payload, status, msg):
        if status == dnf.callback.STATUS_MIRROR:
            # The download goes on with the next mirror, which may be the same one once more.
            text = '{}: {}'.format(payload, msg)
            failure = re.sub(r' after [0-9]+ ms', '', text)
            logging.getLogger('dnf').log(logging.DEBUG if failure in self._reported else logging.WARNING, '%s', text)
            self._reported.add(failure)
        else:
            yumIOC.downloadEnd(payload, status, msg)


class TransactionProgress(dnf.yum.rpmtrans.TransactionDisplay):
    """Passes the progress of a transaction on to the program, as far as the program understands it.

    Phases of the whole transaction have no package and no totals, and there is a phase in which the package of
    a scriptlet is not known: neither is passed on.
    """

    def progress(self, package, action, ti_done, ti_total, ts_done, ts_total):
        if isinstance(package, hawkey.Package) and action not in (dnf.transaction.TRANS_PREPARATION,
                                                                  dnf.transaction.TRANS_POST):
            yumIOC.rpmtransProgress(package, action, ti_done, ti_total, ts_done, ts_total)

    def scriptout(self, msgs):
        if isinstance(msgs, bytes):
            msgs = msgs.decode('utf-8', 'replace')
        if msgs and msgs.endswith('\n'):
            msgs = msgs[:-1]  # the program logs whole lines
        yumIOC.rpmtransScriptout(passable(msgs) if msgs else None)

    def error(self, message):
        yumIOC.errorlog(0, passable(str(message)))


# So much of what was printed before a failure is shown with it.
REASON_LINES = 10


class RPMTransaction(dnf.yum.rpmtrans.RPMTransaction):
    """Shows the program when the test of a transaction, and when the transaction itself, begins and ends."""

    _last = None

    def __init__(self, base, test=False, displays=()):
        self._ended = True  # it has not begun: the program may refuse it
        self._heard = None
        self.scriptFailed = False
        self._space = base.scriptSpace
        yumIOC.rpmtransInit(test)
        super(RPMTransaction, self).__init__(base, test=test, displays=displays or [TransactionProgress()])
        self._ended = False
        RPMTransaction._last = weakref.ref(self)

    def __del__(self):
        self.end()

    # rpm changes nothing before it reports one of these.
    CHANGES = (rpm.RPMCALLBACK_ELEM_PROGRESS, rpm.RPMCALLBACK_INST_START, rpm.RPMCALLBACK_UNINST_START,
               rpm.RPMCALLBACK_SCRIPT_START)

    def callback(self, what, amount, total, key, data):
        if what in self.CHANGES and not self.test:
            self.base.changed = True
            if what == rpm.RPMCALLBACK_SCRIPT_START and self._space and not self._space.isEnough():
                self.base.withoutSpace.append(self._nameOf(key))
        return super(RPMTransaction, self).callback(what, amount, total, key, data)

    def _nameOf(self, key):
        try:
            return str(self._extract_cbkey(key)[0].pkg)
        except (AttributeError, IndexError, KeyError, RuntimeError):  # before rpm has said what it works on
            return tr('another package')

    def _scriptOutput(self):
        self._heard = super(RPMTransaction, self)._scriptOutput()
        return self._heard

    # What rpm itself says of the next two failures is not passed on, or as output of scriptlets only.

    def _cpioError(self, key):
        self._heard = None
        super(RPMTransaction, self)._cpioError(key)
        self._tellReason(self._heard or self._scriptOutput())

    def _unpackError(self, key):
        self._heard = None
        super(RPMTransaction, self)._unpackError(key)
        self._tellReason(self._heard or self._scriptOutput())

    def _scriptError(self, amount, total, key):
        """What the scriptlet has printed was passed on before. When it has prevented something, the end is shown
        with the failure as well; total is 0 when it has not.
        """
        self.scriptFailed = True
        super(RPMTransaction, self)._scriptError(amount, total, key)
        if total:
            self._tellReason(self._heard)

    @staticmethod
    def _tellReason(output):
        if output:
            lines = output.decode('utf-8', 'replace').rstrip('\n').split('\n')
            yumIOC.errorlog(0, passable('\n'.join(lines[-REASON_LINES:])))

    def end(self):
        if not self._ended and programListens():
            self._ended = True
            self._shutdownOutputLogging()
            yumIOC.rpmtransDel()

    @classmethod
    def endLast(cls):
        """The traceback of a failure may keep the transaction, and with it rpm's log, alive much too long."""
        last = cls._last() if cls._last is not None else None
        if last is not None:
            last.end()


program.replace(dnf.yum.rpmtrans, 'RPMTransaction', RPMTransaction)


class KeyImport(dnf.callback.KeyImport):
    """Asks the user before a key that signs a repository's metadata is trusted."""

    def _confirm(self, id, userid, fingerprint, url, timestamp):
        return askForKey(id, userid, fingerprint, url)


def askForKey(keyId, userid, fingerprint, url):
    """Show what there is to know about a signing key; return whether the user wants it imported."""
    yumIOC.gpgsigcheck()
    sys.stdout.write(tr('Import the signing key 0x{}?\n\n'
                        'User id:\t{}\n'
                        'Fingerprint:\t{}\n'
                        'From:\t{}\n').format(keyId, userid, fingerprint, url.replace('file://', '')))
    return yumIOC.userconfirm() == 1


def documentPath(repo, kind):
    """Where the metadata of a kind of a repository lie in the cache; None: there are none."""
    try:
        return repo._repo.getMetadataPath(kind) or None
    except (RuntimeError, libdnf.error.Error):
        return None


# Endings of documents of metadata that the program can read. What has another one, such as .zck, is left to the
# package manager.
PLAIN = ('', '.xml', '.yaml', '.yml')
COMPRESSED = {'.gz': gzip.open, '.bz2': bz2.open, '.xz': lzma.open}


def canUnpack(path):
    ending = os.path.splitext(path)[1]
    return ending in PLAIN or ending in COMPRESSED or ending == '.zst'


def metadataFault(path, element):
    """What is wrong with a document of metadata, whose outermost element should be that one; empty if nothing is, or if
    that is not known.
    """
    find = program.faultOfMetadata
    return find(path, element) if find is not None and canUnpack(path) else ''


# A document may unpack to much more than there is memory: it is read in blocks of so many bytes.
BLOCK = 1 << 20
# So many bytes at most a document about modules may have, which is needed as a whole.
MODULES_LIMIT = 64 << 20


def unpacked(path):
    """The content of a document of metadata, block by block."""
    ending = os.path.splitext(path)[1]
    if ending == '.zst':
        with tempfile.NamedTemporaryFile() as plain:
            libdnf.utils.decompress(path, plain.name, 0o600)
            with open(plain.name, 'rb') as stream:
                yield from iter(lambda: stream.read(BLOCK), b'')
    else:
        with COMPRESSED.get(ending, open)(path, 'rb') as stream:
            yield from iter(lambda: stream.read(BLOCK), b'')


# What unpacking a damaged document raises.
UNPACKING_ERRORS = (RuntimeError, libdnf.error.Error, OSError, EOFError, lzma.LZMAError, zlib.error)


def modulesFault(base, path):
    """What is wrong with a document about modules; empty if nothing is, or if that is not known. Where the package
    manager itself reads such a document in the repositories or on the system, a fault ends the program.
    """
    if not canUnpack(path):
        return ''
    try:
        content = bytearray()
        for block in unpacked(path):
            content += block
            if len(content) > MODULES_LIMIT:
                return tooLarge(MODULES_LIMIT)
        text = content.decode('utf-8')
        container = libdnf.module.ModulePackageContainer(False, base.conf.installroot, base.conf.substitutions['arch'],
                                                         base.conf.persistdir)
        container.add(text, 'tried')
    except UNPACKING_ERRORS + (ValueError,) as e:
        return str(e) or type(e).__name__
    return ''


# Plug-ins ---------------------------------------------------------------------------------------------------

def isOfPlugIn(module):
    """Whether a module, given by its name, is that of a plug-in; each run of the package manager imports them once."""
    return module.startswith(dnf.plugin.DYNAMIC_PACKAGE + '.')


def forgetPlugIns():
    """Let the modules of the plug-ins go: they would be taken for the new ones when these are to be imported."""
    for name in list(sys.modules):
        if name == dnf.plugin.DYNAMIC_PACKAGE or isOfPlugIn(name):
            del sys.modules[name]


def nameOfPlugIn(plugIn):
    """What to call a plug-in, or the class of one."""
    name = getattr(plugIn, 'name', None)
    if isinstance(name, str) and name and name != dnf.plugin.Plugin.name:
        return passable(name)
    return passable(plugIn.__module__.rpartition('.')[2])


def plugInInTraceback(error):
    """The name of the plug-in that an exception comes from; empty when it comes from none."""
    place = error.__traceback__
    while place is not None:
        module = place.tb_frame.f_globals.get('__name__') or ''
        if isOfPlugIn(module):
            return passable(module.rpartition('.')[2])
        place = place.tb_next
    return ''


def saidBy(error):
    """What an exception says; those that end a program say a number, or nothing."""
    return passable(str(error)) or type(error).__name__


class PlugIns(dnf.plugin.Plugins):
    """The package manager's plug-ins. Each that fails is named, and stops at most the operation, as a failure of the
    package manager's own command does that it would end. That includes what is no Exception, such as SystemExit and
    KeyboardInterrupt.
    """

    # What failed after the packages were changed, which nothing can stop any more.
    faults = []

    def _load(self, conf, skips, enable_plugins):
        forgetPlugIns()
        importlib.invalidate_caches()
        self.plugins = []
        gc.collect()
        # The classes of earlier plug-ins that something still holds.
        old = [found for found in dnf.plugin.Plugin.__subclasses__() if isOfPlugIn(found.__module__)]
        try:
            super(PlugIns, self)._load(conf, skips, enable_plugins)
        except BaseException as e:
            self._refuse(plugInInTraceback(e), e)
        finally:
            self.plugin_cls = [found for found in self.plugin_cls if found not in old]

    def _run_init(self, base, cli=None):
        for found in self.plugin_cls:
            try:
                self.plugins.append(found(base, cli))
            except BaseException as e:
                logging.getLogger('dnf').debug('%s', e, exc_info=True)
                self._refuse(nameOfPlugIn(found), e)

    @staticmethod
    def _refuse(name, error):
        if name:
            raise dnf.exceptions.Error(tr('The plug-in {} cannot be loaded: {}').format(name, saidBy(error)))
        raise dnf.exceptions.Error(tr('The plug-ins cannot be loaded: {}').format(saidBy(error)))

    def _caller(self, method):
        for plugIn in self.plugins:
            try:
                getattr(plugIn, method)()
            except BaseException as e:
                if not isinstance(e, Exception) or isinstance(e, dnf.exceptions.Error):
                    logging.getLogger('dnf').debug('%s', e, exc_info=True)
                    raise dnf.exceptions.Error(
                        tr('The plug-in {} has ended the operation: {}').format(nameOfPlugIn(plugIn), saidBy(e)))
                # The package manager, too, goes on.
                logging.getLogger('dnf').critical(tr('The plug-in %s has failed (%s):'), nameOfPlugIn(plugIn), method,
                                                  exc_info=True)

    def run_transaction(self):
        try:
            super(PlugIns, self).run_transaction()
        except dnf.exceptions.Error as e:
            self.faults.append(str(e))


program.replace(dnf.plugin, 'Plugins', PlugIns)


def stampOfPlugIns(conf):
    """What is another when a plug-in, or the configuration of one, was installed, replaced or removed."""
    stamp = []
    for pattern in [directory + '/*.py' for directory in conf.pluginpath] + [
            directory + '/*.conf' for directory in conf.pluginconfpath]:
        for path in sorted(glob.glob(pattern)):
            try:
                found = os.stat(path)
            except OSError:
                continue
            stamp.append((path, found.st_ino, found.st_mtime_ns, found.st_size))
    return stamp


class Base(dnf.Base):
    """The package manager, with the number of packages that really are downloaded made known beforehand, and faults of
    metadata that it keeps quiet about, or does not survive, found.
    """

    def __init__(self, conf):
        super(Base, self).__init__(conf)
        self.scriptSpace = None  # of the transaction that is run
        self.otherData = OtherData()
        self.headers = HeaderMemo()
        self.changed = False  # rpm has begun to change the system
        self.historyFault = None  # why the history does not have the end of the last transaction
        self.unsolved = None  # the goal of the last resolution, if that has failed
        self.judge = None  # is asked about each solution before it becomes the transaction
        self.withoutSpace = []  # packages for whose scripts there may have been no space
        # What the program is to show of an operation that has not failed; it takes them out. What was shown once is
        # only logged later.
        self.remarks = []
        self._remarked = set()
        self.plugInFault = ''  # why the plug-ins cannot be used; without them nothing is done
        self._plugInStamp = None

    def renew(self, conf):
        """End what this object stands for, and begin again as a new one: the program keeps the object."""
        kept = self.remarks, self._remarked
        self.end()
        forgetPlugIns()
        self.__init__(conf)
        self.remarks, self._remarked = kept

    def end(self):
        """Give up what is open, and write down what the next run has to know, as the package manager's command does at
        its end.
        """
        # Closing looks at the repositories: it must not read them, and load the plug-ins for that.
        self._reposUnread = False
        try:
            self.close()
        except (dnf.exceptions.Error, hawkey.Exception, libdnf.error.Error, RuntimeError, OSError, ValueError) as e:
            logging.getLogger('dnf').warning('%s', e)

    def endTransaction(self):
        """Remove what was downloaded for a transaction, or remember it for the next one, as the package manager's
        command does at its end.
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
        """Load the plug-ins and read the files of repositories when these are first asked for. A worker does that: the
        package manager takes seconds for ten thousand of them, which the graphical thread does not have.
        """
        self._reposUnread = True

    def plugInsHaveChanged(self):
        return self._plugInStamp is not None and self._plugInStamp != stampOfPlugIns(self.conf)

    @property
    def repos(self):
        if self._reposUnread:
            self._reposUnread = False  # plug-ins ask for them as well
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
        if groupsCanBeRead():
            return super(Base, self).read_comps(arch_filter)
        self._comps = WithoutGroups()
        return self._comps

    def _readRepos(self):
        # What an attempt that was cut off has left.
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
            repo._set_key_import(KeyImport())
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
        """Have the metadata fetched again of which an earlier run has found that they are out of date."""
        self._activate_persistor()
        expired = self._repo_persistor.get_expired_repos()
        for repo in self._repos.values():
            if expired is None or repo.id in expired:
                repo._repo.expire()

    def _demandSignatures(self):
        """rpm can be configured to want a signature of each package."""
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
        """The program asks for the repositories first; what there is to report of the plug-ins comes after that."""
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

    def _add_repo_to_sack(self, repo):
        # Change logs are fetched together with everything else, but not kept in memory: most runs need none.
        repo.load_metadata_other = True
        try:
            repo.load()
        finally:
            repo.load_metadata_other = False
        path = documentPath(repo, 'modules')
        fault = modulesFault(self, path) if path is not None else ''
        if fault:
            self.remark(tr('The modules metadata of the repository {} are damaged: {}\nThe repository is left out.')
                        .format(repo.id, fault))
            repo.disable()
            return
        before = self._cacheStamp(repo)
        # What is in the sack stays there, even if the repository is disabled.
        if self._isNewerThanCache(repo):
            self._checkPackages(repo)
        try:
            super(Base, self)._add_repo_to_sack(repo)
        except dnf.exceptions.RepoError as e:
            # The package manager logs the reason as a detail.
            if isinstance(e.__context__, hawkey.Exception):
                raise dnf.exceptions.RepoError('{}: {}'.format(e, e.__context__))
            raise
        if before is None or self._cacheStamp(repo) != before:
            self._checkDocuments(repo)

    def _caches(self, repo):
        """What the package manager makes of the metadata of a repository, to read them faster the next time."""
        return [os.path.join(self.conf.cachedir, repo.id + ending)
                for ending in ('-filenames.solvx', '-other.solvx', '.solv')]

    def _isNewerThanCache(self, repo):
        """Whether the package manager is going to read the list of packages itself. True when in doubt."""
        path = documentPath(repo, 'primary')
        try:
            return path is None or os.stat(path).st_ctime_ns >= os.stat(self._caches(repo)[-1]).st_ctime_ns
        except OSError:
            return True

    def _cacheStamp(self, repo):
        """Identifies the file that the package manager has made of the metadata; None without such a file.

        The stamp changes when the package manager reads the metadata again.
        """
        try:
            found = os.stat(self._caches(repo)[0])
        except OSError:
            return None
        return found.st_ino, found.st_mtime_ns, found.st_size

    def _checkPackages(self, repo):
        """The package manager takes no notice of it when it finds no packages, or too few, in a document that should
        list them.
        """
        fault = self._documentFault(repo, 'primary', 'metadata')
        if fault:
            raise dnf.exceptions.RepoError(
                tr('The {} metadata of the repository {} are damaged: {}').format('primary', repo.id, fault))

    def _checkDocuments(self, repo):
        """Nor does it when a list of files or changes ends too early or is something else."""
        for kind, element in (('filelists', 'filelists'), ('other', 'otherdata')):
            fault = self._documentFault(repo, kind, element)
            if fault:
                self.remark(tr('The {} metadata of the repository {} are damaged: {}\nFiles or changes of its packages '
                               'are missing in searches and descriptions.').format(kind, repo.id, fault))

    def _documentFault(self, repo, kind, element):
        """What is wrong with a document of a repository; empty if nothing is. A damaged one is checked again the next
        time.
        """
        path = documentPath(repo, kind)
        fault = metadataFault(path, element) if path is not None else ''
        if fault:
            for cache in self._caches(repo):
                if os.path.exists(cache):
                    os.unlink(cache)
        return fault

    def _run_transaction(self, cb):
        """Newer versions of rpm report a failed transaction, without a failed package, when a scriptlet has failed that
        prevents nothing. The packages were changed as in older versions, and the history needs the end of it.
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
        """Resolves; the judge may raise an exception to have nothing come of it."""
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
        """Why the last resolution has failed: a list of lines for each reason."""
        # A goal that was not run ends the process when it is asked.
        return [clearest(lines) for lines in self.unsolved.problem_rules()] if self.unsolved is not None else []

    def _goal2transaction(self, goal):
        # Before the history or a plug-in hears of it.
        if self.judge is not None:
            self.judge(goal)
        return super(Base, self)._goal2transaction(goal)

    def _verify_transaction(self, *args, **kwargs):
        """rpm is done: that this cannot be written down does not undo it."""
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


def forgetInterrupt():
    """The library that downloads keeps it in mind for ever that it was interrupted once, and gives all further
    downloads up.
    """
    try:
        ctypes.c_int.in_dll(ctypes.CDLL('librepo.so.0'), 'lr_interrupt').value = 0
    except (OSError, ValueError):  # a version without it
        pass


def withReason(method):
    """The program shows what an exception has as its value: some of the package manager's have only a part of their
    text there, or nothing.
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


# Below this many bytes, what went wrong in writing files is likely to be the space.
LITTLE_SPACE = 1 << 20


def spaceHint(directory, needed=LITTLE_SPACE):
    """A line to end a message with when there are less bytes left than that for a directory, or nothing.

    What fetches files reports a full disk as damaged files, or not at all; so does rpm.
    """
    try:
        found = os.statvfs(directory)
    except OSError:
        return ''
    free = found.f_bavail * found.f_frsize
    return '' if free >= needed else tr('\nThere are only {} kB left for {}').format(free // 1024, directory)


class ScriptSpace:
    """The space of the directory where rpm writes each script of a package before it runs it."""

    # More than any script has.
    NEEDED = 1 << 16

    def __init__(self):
        directory = rpm.expandMacro('%{?_tmppath}')
        self._directory = inRoot(directory if directory.startswith('/') else '/var/tmp')
        try:
            # While rpm works the process may see the managed system only.
            self._descriptor = os.open(self._directory, os.O_RDONLY | os.O_DIRECTORY | os.O_CLOEXEC)
        except OSError:  # rpm makes it
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


def isInCache(package):
    try:
        return package.verifyLocalPkg()
    except (OSError, ValueError, dnf.exceptions.MiscError):
        return False


# Modules and groups of a transaction ------------------------------------------------------------------------

# What the package manager's own command does with them around its library. The texts are that command's, and it
# translates them.

def otherSections(base):
    """What a resolved transaction changes beside packages, as the package manager's own listing has it: pairs of a
    heading and its lines, without those that are empty.
    """
    sections = []
    dnfText = dnf.i18n._
    container = base._moduleContainer
    for heading, found in ((dnfText('Installing module profiles'), container.getInstalledProfiles()),
                           (dnfText('Disabling module profiles'), container.getRemovedProfiles())):
        sections.append((heading, ['%s/%s' % (name, profile) for name, profiles in sorted(dict(found).items())
                                   for profile in profiles]))
    sections.append((dnfText('Enabling module streams'),
                     ['%s %s' % pair for pair in sorted(dict(container.getEnabledStreams()).items())]))
    sections.append((dnfText('Switching module streams'),
                     ['%s %s -> %s' % (name, streams[0], streams[1])
                      for name, streams in sorted(dict(container.getSwitchedStreams()).items())]))
    sections.append((dnfText('Disabling modules'), sorted(container.getDisabledModules())))
    sections.append((dnfText('Resetting modules'), sorted(container.getResetModules())))
    for persistor, headings in (
            (base.history.env, (dnfText('Installing Environment Groups'), dnfText('Upgrading Environment Groups'),
                                dnfText('Removing Environment Groups'))),
            (base.history.group, (dnfText('Installing Groups'), dnfText('Upgrading Groups'),
                                  dnfText('Removing Groups')))):
        for heading, name in zip(headings, ('_installed', '_upgraded', '_removed')):
            groups = getattr(persistor, name, {})  # a version without them lists no groups
            sections.append((heading, [group.getName() or identifier for identifier, group in groups.items()]))
    return [(heading, list(lines)) for heading, lines in sections if lines]


def refuseModuleSwitch(base):
    """The library would switch enabled streams of modules; only the command asks whether that is allowed."""
    conf = base.conf
    if not conf._has_option('module_stream_switch') or conf.module_stream_switch:
        return
    switched = sorted(dict(base._moduleContainer.getSwitchedStreams()).items())
    if not switched:
        return
    dnfText = dnf.i18n._
    lines = [dnfText("The operation would result in switching of module '{0}' stream '{1}' to stream '{2}'").format(
        name, streams[0], streams[1]) for name, streams in switched]
    lines.append(dnfText(
        "It is not possible to switch enabled streams of a module unless explicitly enabled via configuration option "
        "module_stream_switch.\nIt is recommended to rather remove all installed content from the module, and reset "
        "the module using '{prog} module reset <module_name>' command. After you reset the module, you can install "
        "the other stream.").format(prog=getattr(dnf.util, 'MAIN_PROG', 'dnf')))
    raise dnf.exceptions.Error('\n'.join(lines))


class Judged(Exception):
    """Ends a resolution that was only a trial."""


class Marks:
    """What the user wants; groups and packages are those that the program was given."""

    def __init__(self, installs=(), updates=(), removes=(), groupInstalls=(), groupUpdates=(), groupRemoves=()):
        self.installs = list(installs)
        self.updates = list(updates)
        self.removes = list(removes)
        self.groupInstalls = list(groupInstalls)
        self.groupUpdates = list(groupUpdates)
        self.groupRemoves = list(groupRemoves)

    def newVersions(self):
        """The packages to update to, each once."""
        seen = {}
        for new, _ in self.updates:
            seen.setdefault(new, new)
        return list(seen.values())

    def isChanging(self):
        return bool(self.installs or self.updates or self.groupInstalls or self.groupUpdates)

    def isRemoving(self):
        return bool(self.removes or self.groupRemoves)

    def hasGroups(self):
        return bool(self.groupInstalls or self.groupUpdates)

    def isEmpty(self):
        return not self.isChanging() and not self.isRemoving()

    # The largest number of names in one line of a question.
    SHOWN = 6

    def inShort(self):
        """The names of the marked packages and groups in one line; of many names only the first ones and a number."""
        objects = self.newVersions() + self.installs + self.removes
        names = sorted(set(package.name for package in objects))
        names += sorted(str(group) for group in self.groupInstalls + self.groupUpdates + self.groupRemoves)
        names = [' '.join(name.split()) for name in names]
        if len(names) <= self.SHOWN:
            return ', '.join(names)
        return tr('{} and {} more').format(', '.join(names[:self.SHOWN - 1]), len(names) - self.SHOWN + 1)

    def removals(self):
        return Marks(removes=self.removes, groupRemoves=self.groupRemoves)

    def without(self, objects):
        unwanted = set(id(each) for each in objects)

        def wanted(each):
            return id(each) not in unwanted

        return Marks(filter(wanted, self.installs), [pair for pair in self.updates if wanted(pair[0])],
                     *(filter(wanted, each) for each in (self.removes, self.groupInstalls, self.groupUpdates,
                                                         self.groupRemoves)))


# Name, version, release and architecture of a package.
PACKAGE = re.compile(r'[^\s-]\S*-[^\s-]+-[^\s-]+\.\w')


def clearest(lines):
    """The lines of a problem, those that name packages first. If another line says what the problem is, the line that
    says only that there is one is left out.
    """
    text = 'conflicting requests'
    empty = (text, gettext.translation('libdnf', fallback=True).gettext(text))
    lines = list(lines)
    told = [line for line in lines if line not in empty] or lines
    return sorted(told, key=lambda line: PACKAGE.search(line) is None)


def refusal(failure, objects, problems):
    """The exception that says why none of the marks can be applied. Without known problems it is the failure itself."""
    if failure is not None and not problems:
        return failure
    return dnf.exceptions.Error(tr('The marks cannot be applied:\n{}\nNothing was changed. All marks stay.').format(
        reasonsOf(objects, problems)))


def reasonsOf(objects, problems):
    """A text that names each of the packages and groups once, with the lines of the problems that name it, and has the
    other problems at its end.
    """
    byWord = {}
    for number, lines in enumerate(problems):
        for word in set(word for line in lines for word in line.split()):
            byWord.setdefault(word.rstrip(',;:'), set()).add(number)
    parts, reported = [], set()
    for name, words in sorted({str(each): wordsFor(each) for each in objects}.items()):
        numbers = sorted(set().union(*(byWord.get(word, ()) for word in words)))
        reported.update(numbers)
        parts.append(name + ''.join('\n    ' + line for number in numbers for line in problems[number]))
    rest = [line for number, lines in enumerate(problems) if number not in reported for line in lines]
    return '\n'.join(parts + rest)


def wordsFor(each):
    """How the package manager names a package in its reasons."""
    if not isinstance(each, hawkey.Package):
        return [str(each)]
    return [str(each), each.name]


# The object that the program drives -------------------------------------------------------------------------

class YumIO:

    def __init__(self):
        sys.stdout = Writer(yumIOC.stdoutWrite, 1)
        sys.stderr = Writer(yumIOC.stderrWrite, 2)
        # Nobody answers what a plug-in asks there.
        sys.stdin = open(os.devnull)
        logger = logging.getLogger('dnf')
        logger.setLevel(dnf.logging.TRACE)
        logger.addHandler(LogHandler())

        requirePrivateNames()
        self._lock = None
        self._cookie = ''  # of the database of which the packages were read
        # Of the last transaction: whether it changed the system, and whether it was refused because another program
        # has done so since the packages were read.
        self.systemChanged = False
        self.outdated = False
        # Of the last collection: pairs of an installed package and the one that replaces it.
        self.replacements = []
        # The marked objects that the last transaction has left out because they are impossible. If the user has
        # confirmed that transaction, the text names the left out packages with the reasons.
        self.leftOut = []
        self.leftOutReasons = ''
        self._questioned = ''
        # Pairs of an update and the installed package of another class of architectures that it takes the place of.
        self.counterparts = []
        # What else there is to say of the last operation, although it has not failed, is in the remarks.
        self.base = Base(self._configuration())
        requirePrivateNames(self.base, dnf.repo.Repo('none', self.base.conf))
        self.remarks = self.base.remarks
        self._setupLogFiles()
        self.base.readReposLater()

    # Configuration

    def _configuration(self):
        """A configuration as the files have it now; what cannot be read is logged and left at its default."""
        conf = dnf.conf.Conf()
        # Not before: to find the architecture out, it makes rpm read its own configuration again.
        useDatabaseOfRoot()
        conf._set_value('installroot', managedRoot(), dnf.conf.PRIO_COMMANDLINE)
        # Locks on the cache are waited for, in a way that can be ended; see WaitingLock.
        conf._set_value('exit_on_lock', False, dnf.conf.PRIO_COMMANDLINE)
        # Every question is the user's to answer.
        conf._set_value('assumeyes', False, dnf.conf.PRIO_COMMANDLINE)
        conf._set_value('assumeno', False, dnf.conf.PRIO_COMMANDLINE)
        # The program's editor of repositories looks into the same ones.
        self.knownDirectories = list(conf.reposdir)
        conf._set_value('reposdir', repositoryDirectories(self.knownDirectories), dnf.conf.PRIO_DEFAULT)
        conf._set_value('persistdir', inRoot('/var/lib/dnf'), dnf.conf.PRIO_DEFAULT)
        conf._set_value('varsdir', [inRoot(path) for path in ('/etc/yum/vars', '/etc/dnf/vars')],
                        dnf.conf.PRIO_DEFAULT)
        for option, path in (('cachedir', '/var/cache/yum'), ('logdir', '/var/log')):
            # For an ordinary user the package manager has chosen private directories already.
            if dnf.util.am_i_root() or (managedRoot() != '/' and canWrite(inRoot(path))):
                conf._set_value(option, inRoot(path), dnf.conf.PRIO_DEFAULT)
        preset = {option: getattr(conf, option) for option in ('cachedir', 'logdir', 'persistdir')}

        # Repositories are looked for in the same file, and it must not be the package manager's usual one.
        conf._set_value('config_file_path', self._readMainFile(conf), dnf.conf.PRIO_COMMANDLINE)
        # An image's files name its own directories: nothing of this system may be changed in their place.
        for option in ('reposdir', 'varsdir'):
            conf._set_value(option, [namedDirectoryOfFiles(directory) for directory in getattr(conf, option)],
                            dnf.conf.PRIO_COMMANDLINE)
        conf.substitutions.update_from_etc('/', varsdir=conf.varsdir)
        self._setReleasever(conf)
        for option in preset:
            directory = getattr(conf, option)
            if directory != preset[option]:
                directory = namedDirectory(directory)
            conf._set_value(option, libdnf.conf.ConfigParser.substitute(directory, conf.substitutions),
                            dnf.conf.PRIO_COMMANDLINE)
        try:
            # No packages can be read without it.
            dnf.util.ensure_dir(conf.logdir)
        except OSError as e:
            logging.getLogger('dnf').error('%s', e)
        if conf._has_option('optional_metadata_types') and 'filelists' not in conf.optional_metadata_types:
            conf.optional_metadata_types = list(conf.optional_metadata_types) + ['filelists']
        return conf

    @staticmethod
    def _readMainFile(conf):
        """Reads the options of the main configuration file; returns the file to look for repositories in.

        By itself the package manager checks no signatures. Where the file's word on that is missing, they are checked.
        """
        path = configurationFile()
        if path is None:
            logging.getLogger('dnf').info('%s', tr('There is no main configuration file. Signatures of packages are '
                                                   'checked, unless a repository says otherwise.'))
        else:
            fault = mainFileFault(path)
            if not fault:
                try:
                    conf.read(path)
                    YumIO._keepChecks(conf, path)
                    return path
                except (dnf.exceptions.Error, OSError, ValueError) as e:
                    fault = str(e)
            YumIO._reportUnused(path, fault)
            logging.getLogger('dnf').error(tr('Its options, such as the packages that it excludes, do not count. '
                                              'Signatures of packages are checked, unless a repository says '
                                              'otherwise.'))
        conf._set_value('gpgcheck', True, dnf.conf.PRIO_COMMANDLINE)
        if path is not None:
            YumIO._keepChecks(conf, path)
        return os.devnull

    @staticmethod
    def _reportUnused(path, fault):
        logging.getLogger('dnf').error(tr('Unable to use the configuration file %s: %s'), path, fault)

    # What keeps a package or metadata from being used.
    CHECKS = ('gpgcheck', 'repo_gpgcheck', 'localpkg_gpgcheck', 'gpgkey_dns_verification', 'sslverify',
              'sslverifystatus', 'proxy_sslverify')

    @staticmethod
    def _keepChecks(conf, path):
        """dnf itself reads no other file than its own. With another one, nothing is to be installed here that dnf
        would refuse.
        """
        own = inRoot(OWN_CONFIGURATION)
        if path == own or not os.path.exists(own):
            return
        demanded = dnf.conf.config.BaseConfig(libdnf.conf.ConfigMain())
        fault = mainFileFault(own)
        if not fault:
            try:
                parser = libdnf.conf.ConfigParser()
                parser.read(own)
                demanded._populate(parser, 'main', own, dnf.conf.PRIO_MAINCONFIG)
            except (dnf.exceptions.Error, libdnf.error.Error, RuntimeError, OSError, ValueError) as e:
                fault = str(e)
        if fault:
            YumIO._reportUnused(own, fault)
            demanded._set_value('gpgcheck', True, dnf.conf.PRIO_COMMANDLINE)
        added = [check for check in YumIO.CHECKS
                 if conf._has_option(check) and getattr(demanded, check) and not getattr(conf, check)]
        for check in added:
            conf._set_value(check, True, dnf.conf.PRIO_COMMANDLINE)
        if added:
            logging.getLogger('dnf').warning(tr('dnf with its file %s makes checks that %s does not demand. They are '
                                                'made: %s'), own, path, ', '.join(added))

    def _setupLogFiles(self):
        directory = self.base.conf.logdir
        try:
            self.base.setup_loggers()
        except OSError as e:
            # Some of them may be there.
            self._makeLogFilesDiscreet()
            logging.getLogger('dnf').error(tr('No log files can be written in %s: %s'), directory, e)
            return
        self._makeLogFilesDiscreet()
        for name in ('dnf', 'dnf.rpm', 'librepo'):
            for handler in logging.getLogger(name).handlers:
                if hasattr(handler, 'rotate_lock'):
                    handler.rotate_lock = dnf.lock.build_log_lock(directory, True)

    @staticmethod
    def _makeLogFilesDiscreet():
        for name in ('dnf', 'dnf.rpm', 'librepo'):
            for handler in logging.getLogger(name).handlers:
                if isinstance(handler, logging.FileHandler):
                    handler.setFormatter(DiscreetFormatter(handler.formatter or logging.Formatter()))
        if not logging.getLogger('librepo').handlers:
            # A version whose library writes the file by itself, with the passwords: rather none.
            libdnf.repo.LibrepoLog.removeAllHandlers()

    @staticmethod
    def _setReleasever(conf):
        """Newer versions of the package manager know $releasever_major and $releasever_minor. They come from the
        release package if it provides them, and otherwise from the release. From 4.24 on, those of the environment or
        of a file of variables count more than the latter.
        """
        given = conf.releasever is not None
        parts = {part: getattr(conf, part, None) for part in ('releasever_major', 'releasever_minor')}
        # A release of the environment or of a file of variables counts more. To set it sets its parts too.
        conf.releasever = conf.releasever if given else YumIO._releasever()
        if not hasattr(dnf.rpm, 'detect_releasevers'):
            return
        provided = {}
        if not given:
            try:
                provided = dict(zip(parts, dnf.rpm.detect_releasevers(managedRoot())[1:]))
            except dnf.exceptions.Error as e:
                logging.getLogger('dnf').debug('The parts of the release are not known: %s', e)
        keepsParts = [int(number) for number in re.findall('[0-9]+', dnf.const.VERSION)[:2]] >= [4, 24]
        for part, value in parts.items():
            if provided.get(part) is not None:
                setattr(conf, part, provided[part])
            elif keepsParts and value is not None:
                setattr(conf, part, value)

    @staticmethod
    def _releasever():
        """The release of the managed system; a system without a release package still gets a usable value."""
        try:
            detected = dnf.rpm.detect_releasever(managedRoot())
        except dnf.exceptions.Error as e:
            logging.getLogger('dnf').debug('The release is not known: %s', e)
            detected = None
        if detected:
            return detected
        try:
            with open(inRoot('/etc/os-release'), encoding='utf-8', errors='replace') as release:
                found = re.search(r'^VERSION_ID="?([^"\n]+)"?$', release.read(), re.M)
        except OSError:
            found = None
        return found.group(1) if found else '1'

    def reset(self):
        """Forget all packages and repositories, and read the configuration again."""
        self.base.otherData.clear()
        self.base.headers.clear()
        # They keep all packages of the last collection in memory.
        self.replacements, self.counterparts = [], []
        self.base.renew(self._configuration())
        self.base.readReposLater()

    # Locking

    def lock(self):
        """Take the package manager's lock for the rest of the run; return the path of its file."""
        cache = self.base.conf.cachedir
        for left in (_buildLock(self.base.conf.persistdir, True), _buildMetadataLock(cache, True),
                     _buildDownloadLock(cache, True)):
            removeAbandonedLock(left)
        lock = SessionLock(_buildLock(self.base.conf.persistdir, True).target, 'The rpm database', False)
        try:
            lock.__enter__()
        except dnf.exceptions.LockError as e:
            logging.getLogger('dnf').error('%s', e)
            raise
        except OSError as e:
            logging.getLogger('dnf').error('%s', e)
            raise dnf.exceptions.LockError(str(e))
        self._lock = lock
        dnf.lock.build_rpmdb_lock = lambda persistdir, exit_on_lock: lock
        return lock.target

    def unlock(self):
        """The program calls this at its end."""
        self.base.end()
        if self._lock is None:
            return
        lock, self._lock = self._lock, None
        dnf.lock.build_rpmdb_lock = lambda persistdir, exit_on_lock: _buildLock(persistdir, True)
        try:
            lock.__exit__()
        except OSError as e:
            raise dnf.exceptions.LockError(str(e))

    # Repositories

    def enableRepo(self, id):
        self._repo(id).enable()

    def disableRepo(self, id):
        self._repo(id).disable()

    def _repo(self, id):
        try:
            return self.base.repos[id]
        except KeyError:
            raise dnf.exceptions.RepoError(tr('There is no repository {}').format(id))

    def setupRepos(self):
        """Read the metadata of all enabled repositories, from the cache where it is fresh, and the rpm database."""
        # Each of these packages would keep all others of the last collection in memory.
        self.replacements = []
        del self.leftOut[:]
        useDatabaseOfRoot()
        forgetInterrupt()
        try:
            self.base.otherData.clear()
            self.base.headers.clear()
            del self.remarks[:]
            if self.base.repos is not None and self.base.plugInFault:
                raise dnf.exceptions.Error(self.base.plugInFault)
            self._checkModuleFiles()
            self._cookie = databaseCookie()
            self.base.fill_sack()
        except (dnf.exceptions.Error, hawkey.Exception, libdnf.error.Error, RuntimeError, OSError) as e:
            raise dnf.exceptions.RepoError(str(e) + spaceHint(self.base.conf.cachedir))

    def _checkModuleFiles(self):
        """The package manager does not say which of the system's own files about modules it cannot read, or does not
        survive it.
        """
        faults = {path: modulesFault(self.base, path)
                  for path in sorted(glob.glob(inRoot('/etc/dnf/modules.defaults.d') + '/*.yaml'))}
        for path in sorted(glob.glob(inRoot('/etc/dnf/modules.d') + '/*.module')):
            try:
                libdnf.conf.ConfigParser().read(path)
            except (RuntimeError, libdnf.error.Error) as e:
                faults[path] = str(e)
        for path, fault in faults.items():
            if fault:
                raise dnf.exceptions.RepoError(tr('The file {} is damaged: {}').format(path, fault))

    # Collection

    @withReason
    def collectUpdates(self):
        query = self.base.sack.query()
        try:
            query.filterm(upgrades_by_priority=True)
        except (ValueError, hawkey.Exception):  # older than priorities
            query = query.upgrades()
        query.filterm(arch__neq=['src', 'nosrc'])
        return self._replacing(self._withoutExcluded(query.latest().run()))

    def _withoutExcluded(self, updates):
        """The package manager does not update an installed version that the configuration excludes."""
        excluded = set(package.name for package in self._excluded())
        if not excluded:
            return updates
        seen = self.base.sack.query().installed().filterm(name=sorted(excluded)).run()
        names = set(package.name for package in seen)
        exact = set((package.name, package.arch) for package in seen)
        return [package for package in updates if package.name not in excluded or
                (package.name, package.arch) in exact or (package.name, 'noarch') in exact or
                (package.arch == 'noarch' and package.name in names)]

    def _excluded(self):
        """What is installed although the configuration excludes it."""
        everything = self.base.sack.query(flags=hawkey.IGNORE_EXCLUDES).installed()
        return everything.difference(self.base.sack.query().installed())

    def _replacing(self, updates):
        """The updates that an upgrade of their names would choose. The query also gives a package for each architecture
        as the update of one without an architecture, but only one of them takes its place.
        """
        self.counterparts = []
        candidates = {}
        for package in updates:
            candidates.setdefault(package.name, []).append(package)
        if not candidates:
            return updates
        installed = {}
        for package in self.base.sack.query().installed().filterm(name=list(candidates)):
            installed.setdefault(package.name, []).append(package)
        chosen = []
        for name, news in candidates.items():
            olds = installed.get(name, [])
            archs = set(package.arch for package in news + olds)
            # Only where a package gets, or loses, an architecture there is a choice.
            if 'noarch' in archs and len(archs) > 1:
                pairs = self._pairs(news, olds)
                news = [new for new in news if any(new is each for each, old in pairs)]
                self.counterparts += [(new, old) for new, old in pairs
                                      if self.getBiArch(new.arch) != self.getBiArch(old.arch)]
            chosen += news
        return chosen

    def _pairs(self, news, olds):
        """Which of the new packages takes the place of which installed one of the same name, as the resolver decides:
        by the class of architectures first, by the version then.
        """
        pairs = []
        for old in olds:
            new = self._newest([new for new in news if new.evr_cmp(old) > 0 and
                                (new.arch == old.arch or 'noarch' in (new.arch, old.arch))])
            if new is not None:
                pairs.append((new, old))
        if len(set(new.arch == 'noarch' for new, old in pairs)) > 1:
            # A package without an architecture and one with cannot be installed side by side.
            others = [(self._newest([new for new in news if new.arch == old.arch and new.evr_cmp(best) == 0]), old)
                      for best, old in pairs]
            if all(new is not None for new, old in others):
                return others
            pairs = [(new, old) for new, old in pairs if new.arch == 'noarch']
        if any(new.arch == 'noarch' for new, old in pairs):
            # It takes the place of all.
            return [(pairs[0][0], old) for old in olds]
        return pairs

    def _newest(self, packages):
        classes = set(self.getBiArch(package.arch) for package in packages if package.arch != 'noarch')
        native = self.base.conf.basearch
        best = None
        for package in packages:
            if package.arch != 'noarch' and native in classes and self.getBiArch(package.arch) != native:
                continue
            # Of equal ones the resolver takes the first.
            if best is None or package.evr_cmp(best) > 0:
                best = package
        return best

    @withReason
    def collectAll(self):
        query = self.base.sack.query()
        available = query.available().filterm(arch__neq=['src', 'nosrc'])
        try:
            available.filterm(latest_per_arch_by_priority=True)
        except (ValueError, hawkey.Exception):  # older than priorities
            available.filterm(latest_per_arch=True)
        # Of several installed versions the program shows the first.
        return All(sorted(query.installed(), reverse=True), available.run(), sorted(self._excluded(), reverse=True))

    @withReason
    def collectGroups(self):
        if groupsCanBeRead():
            for repo in self.base.repos.iter_enabled():
                self._checkComps(repo)
        else:
            self._tellWithoutGroups()
        self.base.read_comps(arch_filter=True)
        return [Group(group) for group in self.base.comps.groups_iter()]

    _reportedWithoutGroups = False

    def _tellWithoutGroups(self):
        """Says once that groups are left out, if there are any."""
        if not self._reportedWithoutGroups and any(repo.enablegroups and repo.metadata and repo._repo.getCompsFn()
                                                   for repo in self.base.repos.iter_enabled()):
            self._reportedWithoutGroups = True
            logging.getLogger('dnf').warning('%s', tr(
                'Groups of packages cannot be read on this system: its libcomps does not work with its version of '
                'Python. The groups of the repositories are left out. All else works.'))

    def _checkComps(self, repo):
        """One list of groups that cannot be unpacked would keep all others from being read."""
        path = repo._repo.getCompsFn() if repo.enablegroups and repo.metadata else ''
        if not path or not canUnpack(path):
            return
        try:
            for _ in unpacked(path):
                pass
        except UNPACKING_ERRORS as e:
            self.base.remark(tr('The group metadata of the repository {} are damaged: {}\nIts groups are left out.')
                             .format(repo.id, e))
            repo.enablegroups = False

    def collectDone(self):
        logging.getLogger('dnf').debug('Packages and groups are collected.')
        self._tellLeftovers()
        try:
            self.replacements = self._findReplacements()
        except (dnf.exceptions.Error, hawkey.Exception, libdnf.error.Error, RuntimeError) as e:
            logging.getLogger('dnf').debug('It is not known which packages are replaced: %s', e)

    def _findReplacements(self):
        """Pairs of an installed package and the one of another name that an update of everything would put in its
        place. Only where there is any candidate, the resolver is asked.
        """
        base = self.base
        self.replacements = []
        query = base.sack.query()
        if not base.conf.obsoletes or not query.available().filterm(obsoletes=query.installed()):
            return []
        base.reset(goal=True)
        try:
            base.upgrade_all()
            goal = base.goal
            goal.add_protected(base.sack.query().filterm(name=base.conf.protected_packages))
            if not any(goal.run(force_best=best, ignore_weak=not base.conf.install_weak_deps)
                       for best in sorted({bool(base.conf.best), False}, reverse=True)):
                return []
            replaced = set(goal.list_obsoleted())
            return sorted((old, new) for new in goal.list_installs() + goal.list_upgrades()
                          for old in goal.obsoleted_by_package(new) if old in replaced and old.name != new.name)
        finally:
            base.reset(goal=True)

    def _tellLeftovers(self):
        """Report what a transaction has left behind that a crash or a failure of the power cut off: the package
        manager itself keeps quiet about it.
        """
        parts = []
        try:
            self._tellInterrupted(parts)
            several = self._severalVersions()
            if several:
                parts.append(tr('Of these packages several versions are installed, as a transaction leaves them that '
                                'is cut off:\n{}\n"dnf remove --duplicates" removes the older ones.').format(
                                    '\n'.join('  ' + ', '.join(str(package) for package in packages)
                                              for packages in several)))
        except (dnf.exceptions.Error, hawkey.Exception, libdnf.error.Error, RuntimeError, OSError) as e:
            # The packages can be used without knowing.
            logging.getLogger('dnf').debug('It is not known how the last transaction ended: %s', e)
        if parts:
            logging.getLogger('dnf').warning('%s', '\n'.join(parts))

    def _tellInterrupted(self, parts):
        """Adds what there is to say of the last transaction if the history does not have its end."""
        history = self.base.history
        # To open it would make a new one where it is missing. A user who cannot write it applies nothing either.
        if not os.access(history.dbpath, os.R_OK | os.W_OK):
            return
        try:
            last = history.last()
            if last is None or last.end_timestamp:
                return
            begin = time.ctime(last.beg_timestamp)
            # Groups have no names there.
            if not self._unrecorded([item for item in last.packages() if item.name]):
                parts.append(tr('The history of transactions does not have the end of the last one, begun on {}.\n'
                                'All its packages are as it was to leave them.').format(begin))
            else:
                parts.append(tr('The last transaction, begun on {}, did not come to its end.\nWhat it has left undone '
                                'has to be marked and applied again.').format(begin))
        finally:
            history.close()
            del self.base._ts  # other programs may want to work with the database

    def _severalVersions(self):
        """Lists of the installed packages, oldest first, that have name and architecture in common although only
        one of them should be installed.
        """
        installed = self.base.sack.query(flags=hawkey.IGNORE_EXCLUDES).installed()
        duplicated = installed.duplicated().difference(self.base._get_installonly_query(installed))
        found = {}
        for package in duplicated:
            found.setdefault((package.name, package.arch), []).append(package)
        return [sorted(found[key]) for key in sorted(found)]

    @withReason
    def collectFileLists(self):
        """File lists are read together with the packages."""
        return True

    @withReason
    def collectOtherData(self):
        self.base.otherData.loadAll(self.base)
        return True

    # Packages

    def getBiArch(self, arch):
        """The class of architectures that can stand in for each other: one is installed at a time.

        Packages without an architecture belong to that of the system.
        """
        try:
            base = dnf.rpm.basearch(arch)
        except KeyError:  # newer than the package manager
            return arch
        return self.base.conf.basearch if base == 'noarch' else base

    def isBetterThan(self, a, b):
        """Whether a is closer to the system's architecture than b, or as close and not older."""
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

    def expandVariables(self, text):
        """The text with its variables replaced as in the files of repositories; this version knows which."""
        return libdnf.conf.ConfigParser.substitute(text, self.base.conf.substitutions)

    def metadataPath(self, repoid, kind):
        """Where the metadata of a kind, "filelists" or "other", of a repository lie in the cache; None: nowhere."""
        repo = self.base.repos.get(repoid)
        return documentPath(repo, kind) if repo is not None and repo.enabled else None

    # Transactions

    @withReason
    def apply(self, installs, updates, removes, groupInstalls, groupUpdates, groupRemoves):
        """Resolve, show, confirm, download, check and run one transaction. Returns whether it was to change anything:
        the package manager may be configured to test only.

        The user's No is no failure. Whatever stops the transaction is raised, before anything was changed unless
        the text of the exception names packages.
        """
        base = self.base
        base.headers.clear()
        forgetInterrupt()
        self.systemChanged = base.changed = False
        self.outdated = False
        del self.remarks[:]
        del self.leftOut[:]
        self.leftOutReasons = self._questioned = ''
        base.historyFault = None
        base.withoutSpace = []
        try:
            del base._ts
            base.reset(goal=True)
            # Not only at the end: nobody should read a list, or wait for downloads, that are of no use.
            with DatabaseLock():
                self._checkCurrent()
            marks = self._resolve(Marks(installs, updates, removes, groupInstalls, groupUpdates, groupRemoves))
            if marks is None:
                return True
            base.args = [commandLine(
                ('install', [package.name for package in marks.installs]),
                ('upgrade', [new.name for new in marks.newVersions()]),
                ('remove', [package.name for package in marks.removes]),
                ('group install', [group.id for group in marks.groupInstalls]),
                ('group upgrade', [group.id for group in marks.groupUpdates]),
                ('group remove', [group.id for group in marks.groupRemoves]))]
            self._checkPersistence()
            if not self._confirmed(otherSections(base)):
                return True
            self.leftOutReasons = self._questioned
            try:
                self._download()
                self._checkSignatures()
                return self._run()
            finally:
                base.endTransaction()
        except (hawkey.Exception, libdnf.error.Error, rpm.error) as e:
            if base.history.dbpath in str(e):
                self._refuseHistory(str(e))
            raise dnf.exceptions.Error(str(e))
        finally:
            self.systemChanged = base.changed
            self._remark()
            RPMTransaction.endLast()
            base.headers.clear()
            base.reset(goal=True)
            del base._ts
            if base.changed and base.plugInsHaveChanged():
                # The packages are read again now.
                base.readReposLater()

    def _checkPersistence(self):
        """On a system whose programs are an image, changes may not be possible, or be gone with the next start: what
        the package manager's command offers for that, VYRE does not.
        """
        base = self.base
        image = managedRoot() == '/' and os.path.isfile('/run/ostree-booted')
        persistence = getattr(base.conf, 'persistence', 'auto') or 'auto'
        if image and (persistence == 'persist' or not os.access('/usr', os.W_OK)):
            raise dnf.exceptions.Error(
                tr('The programs of this system are an image, which VYRE cannot change. Nothing was changed.'))
        if not image and persistence == 'transient':
            raise dnf.exceptions.Error(dnf.i18n._('Transient transactions are only supported on bootc systems.'))
        kinds = libdnf.transaction
        if hasattr(kinds, 'TransactionPersistence_PERSIST'):
            # For the history.
            base._persistence = (kinds.TransactionPersistence_TRANSIENT if image else
                                 kinds.TransactionPersistence_PERSIST)
        if image:
            self._checkDrift()

    def _checkDrift(self):
        """Refuse to change files, such as those of the boot loader, that must fit to the image: what is changed below
        /usr is gone with the next start, and these files are not. Versions before 4.24 do not look at it.
        """
        patterns = getattr(self.base.conf, 'usr_drift_protected_paths', ())
        found = {}
        for item in self.base.transaction if patterns else ():
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

    def _refuseHistory(self, text):
        """Raises what was said of the history's file, with what can be done."""
        if any(damage in text for damage in ('not a database', 'malformed', 'no such table')):
            raise dnf.exceptions.Error(tr('The history of transactions is damaged: {}\nMove the file away: the package '
                                          'manager makes a new one.').format(text))
        raise dnf.exceptions.Error(text + spaceHint(self.base.conf.persistdir))

    def _remark(self):
        base = self.base
        parts = self.remarks
        if base.historyFault is not None:
            parts.append(tr('The packages were changed. Only the history of transactions could not be written:\n{}')
                         .format(base.historyFault + spaceHint(base.conf.persistdir)))
        while PlugIns.faults:
            parts.append(tr('The packages were changed.\n{}').format(PlugIns.faults.pop(0)))
        if base.withoutSpace:
            packages = '\n'.join(sorted(set(base.withoutSpace)))
            parts.append(tr('There was no space for the scripts of these packages, which may not have run:\n{}')
                         .format(packages + base.scriptSpace.hint()))

    def _checkCurrent(self):
        """Refuse to work with packages that are not the installed ones any more: rpm is given numbers of what it has to
        remove, which may be those of other packages now.
        """
        cookie = databaseCookie()
        if not cookie or not self._cookie or cookie == self._cookie:
            return
        if self._installedNumbers() != set((package.rpmdbid, package.name) for package in self.base.sack.query(
                flags=hawkey.IGNORE_EXCLUDES).installed()):
            self.outdated = True
            raise dnf.exceptions.Error(tr('The system was changed by another program since the packages were read. '
                                          'Nothing was applied.\nThe packages are read again now. What is marked stays '
                                          'marked, as far as it is still possible.'))
        self._cookie = cookie

    @staticmethod
    def _installedNumbers():
        """Number and name of each installed package. Signing keys, which are kept with them, do not count."""
        transaction = rpm.TransactionSet(managedRoot())
        # They were checked when they came in.
        transaction.setVSFlags(rpm._RPMVSF_NOSIGNATURES | rpm._RPMVSF_NODIGESTS)
        try:
            found = set((header[rpm.RPMTAG_DBINSTANCE], _text(header[rpm.RPMTAG_NAME]))
                        for header in transaction.dbMatch())
        finally:
            transaction.closeDB()
        return set(each for each in found if each[1] != 'gpg-pubkey')

    def _mark(self, marks, strict=True):
        """Puts the marks into the goal; strict: one that is impossible makes the others impossible."""
        base = self.base
        for package in marks.removes:
            base.goal.erase(package, clean_deps=base.conf.clean_requirements_on_remove)
        versions = self._installedVersions() if marks.installs or marks.updates else {}
        for package in marks.installs:
            self._markInstallation(package, versions, strict)
        for package in marks.newVersions():
            self._markUpdate(package, versions, strict)
        strict = strict and base.conf.strict
        for group in marks.groupInstalls:
            base.group_install(group.id, list(base.conf.group_package_types), strict=strict)
        for group in marks.groupUpdates:
            if base.history.group.get(group.id) is not None:
                base.group_upgrade(group.id)
            else:
                self._upgradeMembers(group)
        for group in marks.groupRemoves:
            base.group_remove(group.id)

    # For each mark the package manager's own functions go through all packages: it takes seconds to mark some hundred.
    # They are asked where they would say something.

    def _installedVersions(self):
        """The installed packages by name."""
        found = {}
        for package in self.base.sack.query().installed():
            found.setdefault(package.name, []).append(package)
        return found

    def _markInstallation(self, package, versions, strict):
        if any(str(version) == str(package) for version in versions.get(package.name, [])):
            self.base.package_install(package, strict=strict)
        else:
            self._demand(package, strict)

    def _markUpdate(self, package, versions, strict):
        """The user has marked this very version: what stands against it must be reported, not left out in silence."""
        replaced = [version for version in versions.get(package.name, [])
                    if package.arch == 'noarch' or version.arch in (package.arch, 'noarch')]
        if not replaced or max(replaced) >= package:
            if not self.base.package_upgrade(package):
                raise dnf.exceptions.MarkingError(tr('{} is not newer than what is installed.').format(package))
        self._demand(package, strict)

    def _demand(self, package, strict):
        selector = dnf.selector.Selector(self.base.sack)
        selector.set(pkg=[package])
        self.base.goal.install(select=selector, optional=not strict)

    def _upgradeMembers(self, group):
        """Upgrade the installed members of a group that is not itself installed."""
        names = [package.name for package in group.mandatory_packages + group.default_packages]
        installed = self.base.sack.query().installed().filter(name=names)
        for name in sorted(set(package.name for package in installed)):
            self.base.upgrade(name)

    # What can be done of what is marked

    def _resolve(self, marks):
        """Finds the transaction for the marks. Asks the user about what of them has to be left out; returns those that
        it has, and None after a No.
        """
        base = self.base
        rest, impossible, failure, problems = marks, [], None, []
        try:
            try:
                self._resolveAll(marks)
            except dnf.exceptions.MarkingError as e:
                failure = e
                impossible, problems = self._unmarkable(marks)
                rest = marks.without(impossible)
                if not impossible or rest.isEmpty():
                    raise refusal(e, impossible, problems)
                self._resolveAll(rest)
        except dnf.exceptions.DepsolveError as e:
            failure = failure or e
            problems += base.problems()
            showActivity(tr('Looking for what can be applied'))
            impossible += self._impossible(rest)
            rest = marks.without(impossible)
            if not impossible and not marks.hasGroups() or rest.isEmpty():
                raise refusal(failure, impossible, problems)
            self._resolveAll(rest, strict=False)
        refuseModuleSwitch(base)
        lacking = self._lackingMembers(rest)
        if lacking:
            problems += [lines for lines in self._problemsOfTheBest(rest) if lines not in problems]
        left = impossible + [package for group, package in lacking]
        if not base.transaction and not (otherSections(base) or base.history.group or base.history.env):
            if left or failure is not None:
                raise refusal(failure, left, problems)
            raise dnf.exceptions.Error(tr('There is nothing to do.'))
        if not left:
            return rest
        text = reasonsOf(left, problems)
        yumIOC.gpgsigcheck()
        sys.stdout.write(tr('Go on without these packages?\n\n'
                            '"Yes" goes on with the remaining marks: {}. The marks that are left out stay.\n'
                            '"No" changes nothing. All marks stay.\n\n{}\n').format(rest.inShort(), text))
        if yumIOC.userconfirm() != 1:
            return None
        self.leftOut.extend(impossible + [group for group, package in lacking])
        self._questioned = text
        return rest

    def _resolveAll(self, marks, strict=True):
        """Finds the transaction for all marks; without strict, members of groups may be lacking."""
        base = self.base
        best = base.conf.best
        base.reset(goal=True)
        try:
            if not strict and marks.hasGroups():
                base.conf.best = False
            if not marks.isRemoving():
                self._mark(marks, strict or not marks.hasGroups())
                base.resolve()
            elif not marks.isChanging():
                with self._availableHidden():
                    self._mark(marks)
                    base.resolve(allow_erasing=True)
            else:
                self._resolveWithRemovals(marks, strict)
        finally:
            base.conf.best = best

    def _resolveWithRemovals(self, marks, strict):
        """The removal of a package takes along what needs it, an installation or an update takes nothing along."""
        base = self.base
        dependents = set()

        def judge(goal):
            dependents.update(package for package in goal.list_erasures()
                              if goal.get_reason(package) == libdnf.transaction.TransactionItemReason_DEPENDENCY)
            if dependents:
                raise Judged()

        try:
            self._mark(marks, strict)
            base.resolveIf(judge, True)
            return
        except Judged:
            pass
        # What may go is what goes when the user removes only what is marked for that.
        allowed = self._removedAlone(marks)
        unwanted = dependents - allowed
        base.reset(goal=True)
        self._mark(marks, strict)
        if not unwanted:
            base.resolve(allow_erasing=True)
            return
        for package in dependents & allowed:
            base.goal.erase(package)
        base.resolve()
        for item in base.transaction:
            if item.action in dnf.transaction.BACKWARD_ACTIONS and item.pkg in dependents:
                item.reason = libdnf.transaction.TransactionItemReason_DEPENDENCY

    def _removedAlone(self, marks):
        """All packages that go when nothing is changed but what is marked for removal."""
        base = self.base
        found = set()

        def judge(goal):
            found.update(goal.list_erasures())
            raise Judged()

        base.reset(goal=True)
        with self._availableHidden():
            self._mark(marks.removals())
            try:
                base.resolveIf(judge, True)
            except Judged:
                pass
        return found

    @contextlib.contextmanager
    def _availableHidden(self):
        """What is available takes the place of nothing that is removed, as with the package manager's command."""
        names = [repo.id for repo in self.base.repos.iter_enabled()]
        hidden = []
        try:
            for name in names:
                try:
                    self.base.sack.disable_repo(name)
                    hidden.append(name)
                except (ValueError, hawkey.Exception):  # it could not be read
                    pass
            yield
        finally:
            for name in hidden:
                self.base.sack.enable_repo(name)

    # So many attempts at most to find removals that are impossible.
    ATTEMPTS = 40

    def _impossible(self, marks):
        """Those of the marks that cannot be carried out with the others; empty also if they are not found.

        The number of resolutions does not grow with that of the marks, except for impossible removals.
        """
        base = self.base
        impossible = self._impossibleRemovals(marks)
        marks = marks.without(impossible)
        if not marks.isChanging():
            return impossible
        removed = self._removedAlone(marks) if marks.isRemoving() else set()
        found = set()

        def judge(goal):
            for list in (goal.list_installs, goal.list_upgrades, goal.list_downgrades, goal.list_reinstalls):
                found.update(str(package) for package in list())
            raise Judged()

        base.reset(goal=True)
        best = base.conf.best
        try:
            base.conf.best = False
            self._mark(marks, strict=False)
            for package in removed:
                base.goal.erase(package)
            base.resolveIf(judge, False)
        except Judged:
            pass
        except dnf.exceptions.DepsolveError:
            return []
        finally:
            base.conf.best = best
        return impossible + [package for package in marks.installs + marks.newVersions()
                             if str(package) not in found]

    def _unmarkable(self, marks):
        """Those that the package manager does not even take, and why not: a list of lines for each."""
        found, reasons = [], []
        self.base.reset(goal=True)
        versions = self._installedVersions()
        for method, packages in ((self._markInstallation, marks.installs), (self._markUpdate, marks.newVersions())):
            for package in packages:
                try:
                    method(package, versions, True)
                except dnf.exceptions.MarkingError as e:
                    found.append(package)
                    reasons.append([str(e) if str(package) in str(e) else '{}: {}'.format(package, e)])
        return found, reasons

    def _impossibleRemovals(self, marks):
        """Those that protected or excluded packages prevent: each by itself."""
        attempts = iter(range(self.ATTEMPTS))

        def search(packages, groups):
            """An exception when there are too many of them."""
            next(attempts)
            if self._canBeRemoved(Marks(removes=packages, groupRemoves=groups)):
                return []
            names = sorted(set(package.name for package in packages))
            if len(names) + len(groups) == 1:
                return packages + groups
            if groups and names:
                return search(packages, []) + search([], groups)
            if groups:
                middle = len(groups) // 2
                return search([], groups[:middle]) + search([], groups[middle:])
            first = set(names[:len(names) // 2])
            return (search([package for package in packages if package.name in first], []) +
                    search([package for package in packages if package.name not in first], []))

        if not marks.isRemoving():
            return []
        with self._availableHidden():
            try:
                return search(list(marks.removes), list(marks.groupRemoves))
            except StopIteration:
                return []

    def _canBeRemoved(self, marks):
        def judge(goal):
            raise Judged()

        self.base.reset(goal=True)
        self._mark(marks)
        try:
            self.base.resolveIf(judge, True)
        except Judged:
            return True
        except dnf.exceptions.DepsolveError:
            return False
        return True

    def _lackingMembers(self, marks):
        """Pairs of a marked group and a package of it that the transaction should have and has not."""
        if not marks.groupInstalls and not marks.groupUpdates:
            return []
        base = self.base
        transaction = list(base.transaction or [])
        there = set((package.name, package.arch) for package in base.sack.query().installed())
        coming = set((item.name, item.arch) for item in transaction
                     if item.action in dnf.transaction.FORWARD_ACTIONS)
        going = set(item.name for item in transaction if item.action in dnf.transaction.BACKWARD_ACTIONS)
        names = set(name for name, arch in there | coming)
        updates = {}
        if marks.groupUpdates:
            for package in self.collectUpdates():
                updates.setdefault(package.name, []).append(package)
        found = []
        for group in marks.groupUpdates:
            for name in group.names('mandatory', 'default'):
                found += [(group, package) for package in updates.get(name, [])
                          if (package.name, package.arch) not in coming and name not in going]
            known = base.history.group.get(group.id)
            if known is not None:
                old = set(package.getName() for package in known.getPackages())
                found += self._lacking(group, set(group.names('mandatory', 'default')) - old - names - going)
        for group in marks.groupInstalls:
            found += self._lacking(group, set(group.names(*base.conf.group_package_types)) - names - going)
        return found

    def _lacking(self, group, names):
        found = []
        for name in sorted(names):
            available = self.base.sack.query().available().filter(name=name)
            # What takes its place counts for it.
            others = self.base.sack.query().filter(obsoletes=available) if available else []
            coming = set(str(item) for item in self.base.transaction or []
                         if item.action in dnf.transaction.FORWARD_ACTIONS)
            if available and not any(other._from_system or str(other) in coming for other in others):
                found.append((group, sorted(available)[-1]))
        return found

    def _problemsOfTheBest(self, marks):
        """Why a transaction that was found does not have all that it could have."""
        goal = copy.deepcopy(self.base.goal)
        if goal.run(allow_uninstall=marks.isRemoving(), force_best=True, ignore_weak_deps=True):
            return []
        return [clearest(lines) for lines in goal.problem_rules()]

    @staticmethod
    def words(text):
        """A text of the package manager's own in the user's language."""
        return dnf.i18n._(text)

    def _confirmed(self, sections):
        transaction = self.base.transaction or []
        yumIOC.listTransaction(transaction, sorted(transaction, key=lambda item: (item.name, item.arch, item.action)))
        if 'test' in self.base.conf.tsflags:
            introduceListing(tr('This is only a test because tsflags has test. dnf downloads and checks the packages;\n'
                                'it installs, updates and removes nothing.\n\n'))
        for heading, lines in sections:
            extendListing(heading + ':\n' + ''.join('\t%s\n' % ' '.join(line.split()) for line in lines))
        installed = self._installSet()
        if installed:
            yumIOC.reportDownloadSize(installed)
        elif transaction:
            yumIOC.reportRemoveSize(transaction)
        if 'test' in self.base.conf.tsflags:
            text = dnf.i18n._('{prog} will only download packages, install gpg keys, and check the transaction.')
            logging.getLogger('dnf').info('%s', text.format(prog=dnf.util.MAIN_PROG_UPPER))
        return yumIOC.userconfirm() == 1

    def _installSet(self):
        return list(self.base.transaction.install_set) if self.base.transaction else []

    def _download(self):
        installed = self._installSet()
        if not installed:
            yumIOC.downloadRemotePayloads([])
            return
        try:
            self.base.download_packages(installed, DownloadProgress())
        except (dnf.exceptions.DownloadError, OSError) as e:
            raise dnf.exceptions.Error(str(e) + spaceHint(self.base.conf.cachedir))

    def _checkSignatures(self):
        """Refuse every package whose signature is wrong or missing where its repository demands one."""
        for package in sorted(self._installSet()):
            yumIOC.gpgsigcheck()
            result, text = self.base.package_signature_check(package)
            if result == 1:
                # The keys are none of the downloads that were announced.
                package.repo.set_progress_bar(dnf.callback.NullDownloadProgress())
                try:
                    self.base.package_import_key(package, fullaskcb=self._askForKey)
                except (ValueError, OSError) as e:
                    raise dnf.exceptions.Error(str(e))
                finally:
                    package.repo.set_progress_bar(DownloadProgress())
                    # Asked again the next time: the answer may be another then.
                    self.base._repo_set_imported_gpg_keys.discard(package.repoid)
            elif result != 0:
                raise dnf.exceptions.Error(text)

    @staticmethod
    def _askForKey(key):
        return askForKey(key['hexkeyid'], key['userid'], key['fingerprint'], key['keyurl'])

    def _run(self):
        base = self.base
        with DatabaseLock():
            self._checkCurrent()
            base.scriptSpace = ScriptSpace()
            self._checkScriptSpace()
            try:
                base.do_transaction(TransactionProgress())
            except Exception:
                if not base.changed:
                    self._endHistory()
                raise
        if base.transaction and 'test' in base.conf.tsflags:
            self.remarks.append(
                tr('The transaction was only tested, because tsflags has test. Nothing was changed.'))
            return False
        yumIOC.postTransactionOutput()
        items = list(base.transaction or [])
        failed = [item for item in items if item.state == libdnf.transaction.TransactionItemState_ERROR]
        unrecorded = [item for item in self._unrecorded(items) if item not in failed]
        parts = [head + '\n' + '\n'.join(sorted(set(str(item) for item in found))) for head, found in (
            (tr('The transaction failed for:'), failed),
            (tr('The database of packages does not have what was done to:'), unrecorded)) if found]
        if parts:
            raise dnf.exceptions.Error('\n'.join(parts) + self._spaceHints(failed))
        return True

    def _checkScriptSpace(self):
        """rpm takes no notice when it cannot write a script, and runs what there is of it. A removal that makes space
        should be possible all the same.
        """
        hint = self.base.scriptSpace.hint()
        if not hint:
            return
        yumIOC.gpgsigcheck()
        sys.stdout.write(tr('There is too little space for the scripts of packages. They may not run.{}\nApply all the '
                            'same?\n').format(hint))
        if yumIOC.userconfirm() != 1:
            raise dnf.exceptions.Error(
                tr('There is too little space for the scripts of packages. Nothing was changed.'))

    def _endHistory(self):
        """A transaction that rpm has not begun must not look like one that was cut off."""
        try:
            for item in self.base.transaction or []:
                item.state = libdnf.transaction.TransactionItemState_ERROR
            self.base.history.end(return_code=libdnf.transaction.TransactionState_ERROR)
        except (dnf.exceptions.Error, libdnf.error.Error, RuntimeError, OSError) as e:
            logging.getLogger('dnf').debug('The history does not have the end of the transaction: %s', e)

    def _unrecorded(self, items):
        """Those of the transaction's elements of which rpm's database, read again, does not have what was done: rpm
        itself takes no notice when it cannot write it.
        """
        del self.base._ts
        wanted = {}
        for item in items:
            key = (item.name, item.epoch, item.version, item.release, item.arch)
            # A package that is installed again counts as removed as well.
            if item.action in dnf.transaction.FORWARD_ACTIONS:
                wanted[key] = (item, True)
            elif item.action in dnf.transaction.BACKWARD_ACTIONS:
                wanted.setdefault(key, (item, False))
        headers = {name: list(self.base._ts.dbMatch('name', name)) for name in set(key[0] for key in wanted)}
        present = set(tuple([name, header[rpm.RPMTAG_EPOCH] or 0] +
                            [_text(header[tag]) for tag in (rpm.RPMTAG_VERSION, rpm.RPMTAG_RELEASE, rpm.RPMTAG_ARCH)])
                      for name, found in headers.items() for header in found)
        return [item for key, (item, installed) in wanted.items() if (key in present) != installed]

    def _spaceHints(self, failed):
        """A line for every directory with less space than it takes to write one of the packages that failed."""
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
            # One for each file system.
            if os.path.isdir(path):
                hints.setdefault(os.stat(path).st_dev, []).append(spaceHint(path, size))
        return ''.join(next(filter(None, found), '') for found in hints.values())

    # Cleaning

    def cleanDbcache(self):
        return self._clean('dbcache')

    def cleanPackages(self):
        return self._clean('packages')

    def cleanMetadata(self):
        return self._clean('metadata', 'dbcache')

    def cleanAll(self):
        return self._clean('metadata', 'packages', 'dbcache')

    def _clean(self, *types):
        cache = self.base.conf.cachedir
        patterns = [re.compile(dnf.repo.CACHE_FILES[type]) for type in types]
        count = 0
        # Another process that changes packages may be about to install what is in the cache.
        with dnf.lock.build_rpmdb_lock(self.base.conf.persistdir, True), \
                dnf.lock.build_metadata_lock(cache, False), dnf.lock.build_download_lock(cache, False):
            for directory, _, names in os.walk(cache):
                for name in names:
                    path = os.path.join(directory, name)
                    if any(pattern.match(os.path.relpath(path, cache)) for pattern in patterns):
                        os.unlink(path)
                        count += 1
        logging.getLogger('dnf').info('%d files removed', count)
        return True
