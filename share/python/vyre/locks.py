# SPDX-License-Identifier: GPL-2.0-or-later
"""The locks: dnf's lock on its own files, dnf's locks on its cache, and rpm's lock on its database.

Workers take the locks. The program holds the lock on dnf's own files until the program ends; the graphical thread
releases this lock.
"""

import contextlib
import errno
import fcntl
import logging
import os
import sys
import time
import urllib.parse

import dnf.exceptions
import dnf.lock
import dnf.util
import rpm

from . import program
from .output import passable, programListens, showActivity
from .paths import inRoot
from .program import tr, yumIOC
from .stopping import endIfStopped

try:
    import sqlite3
except ImportError:  # some distributions have this module in a separate package
    sqlite3 = None


# dnf's functions that make its locks. The last lines of this file replace these functions in dnf.
buildDatabaseLock = dnf.lock.build_rpmdb_lock
buildMetadataLock = dnf.lock.build_metadata_lock
buildDownloadLock = dnf.lock.build_download_lock


class SessionLock(dnf.lock.ProcessLock):
    """dnf's lock on its own files. The program holds this lock until the program ends. For each transaction, dnf takes
    the same lock once more, on another thread of this process. dnf's own class would refuse this second holder; this
    class only counts the holders. Only one thread at a time uses dnf.
    """

    def _lock_thread(self):
        self.count += 1

    def _unlock_thread(self):
        self.count -= 1


class DatabaseLock:
    """Holds rpm's own lock for a scope, so that no other program changes the packages within the scope.

    Without this class, rpm would wait for the lock without a message, or not wait at all. This class shows which
    process holds the lock, and asks the user whether to continue to wait. The lock belongs to the whole process: rpm in
    this process can take the lock too, and releases it at the end of its transaction.
    """

    # The time between two attempts, in seconds.
    ATTEMPTS = 0.2
    # The time before the first question, in seconds.
    FIRST_QUESTION = 5
    # The time between two questions, in seconds.
    NEXT_QUESTION = 60

    def __init__(self, step):
        """step: the name of the current step, which the progress bar shows again after a wait."""
        self._step = step

    def __enter__(self):
        path = rpm.expandMacro('%{?_rpmlock_path}')
        self._path = inRoot(path) if path.startswith('/') else inRoot('/var/lib/rpm/.rpm.lock')
        self._database = inRoot(rpm.expandMacro('%{_dbpath}')) + '/rpmdb.sqlite'
        self._descriptor = None
        try:
            self._descriptor = os.open(self._path, os.O_RDWR | os.O_CREAT | os.O_CLOEXEC, 0o644)
        except OSError as e:  # if rpm needs the file, rpm reports this error
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
        waited = False
        while not self._taken():
            waited = True
            holder = self._holder()
            # Call showActivity() in each round, even with the same text: when VYRE ends, this call raises an exception,
            # which ends the wait.
            if holder:
                showActivity(tr('Waiting for {}, which uses the package database').format(holder))
            else:
                showActivity(tr('Waiting for another program, which uses the package database'))
            endIfStopped()
            if time.monotonic() >= question:
                self._ask(holder)
                question = time.monotonic() + self.NEXT_QUESTION
            time.sleep(self.ATTEMPTS)
        if waited:
            showActivity(self._step)

    def _taken(self):
        if self._descriptor is not None:
            try:
                fcntl.lockf(self._descriptor, fcntl.LOCK_EX | fcntl.LOCK_NB)
            except OSError as e:
                if e.errno in (errno.EACCES, errno.EAGAIN):
                    return False
        return not self._databaseIsLocked()

    def _databaseIsLocked(self):
        """Whether another program, such as a backup, has locked rpm's SQLite database, although rpm's own lock is free.
        With a locked database, rpm would give up after some time, in the middle of the transaction.
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
        """The name and number of the process that holds rpm's lock or has locked rpm's database; empty if no process is
        found.
        """
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
            raise dnf.exceptions.Error(tr('Another program is using the package database. Nothing was changed.'))


def nameInLocks(path):
    """The identifier of a file in /proc/locks: the device of its file system, and its inode number. The device in
    /proc/locks may differ from st_dev of os.stat(), so this function reads the device from /proc/self/mountinfo.
    """
    # O_PATH is necessary: when a process closes a descriptor that it opened for reading, the kernel releases all locks
    # of the process on this file.
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
    """The start time of a process in seconds since 1970, exact to two seconds; None if the time is unknown."""
    try:
        with open('/proc/{}/stat'.format(number), 'rb') as stat, open('/proc/stat', 'rb') as system:
            # Search for the last ")": the second field is the program's name in parentheses, which may contain ")".
            ticks = int(stat.read().rpartition(b')')[2].split()[19])
            booted = next(int(line.split()[1]) for line in system if line.startswith(b'btime '))
    except (OSError, ValueError, IndexError, StopIteration):
        return None
    return booted + ticks / os.sysconf('SC_CLK_TCK')


def hasEnded(number):
    """Whether no process has this number; False if /proc is not available."""
    return os.path.exists('/proc/self') and not os.path.lexists('/proc/{}'.format(number))


def usesPackages(number):
    """Whether a process has loaded rpm's library. Every process that holds one of dnf's locks has loaded this library.
    True if the process cannot be examined.
    """
    try:
        with open('/proc/{}/maps'.format(number), 'rb') as maps:
            return any(b'/librpm' in line for line in maps)
    except OSError:
        return True


def abandonedBy(target):
    """The number of the process that has written this lock file, if this process has ended without removing the file.
    None if the process still holds the lock, or if the file is missing. A running process with the number in the file
    need not be the process that has written the file: after a crash or a restart of the machine, the system uses the
    numbers again.
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
    # If the process began after the file was written, it is not the owner, unless somebody has changed the clock.
    # Therefore also check that the process does not use rpm.
    if started is not None and started > written + 2 and not usesPackages(number):
        return number
    return None


def removeAbandonedLock(lock):
    """Remove a lock file if its owner has ended. If the file stayed, every other process would wait for ever."""
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
    text = tr('Process {} has ended without removing its lock file {}. VYRE removes this file.')
    logging.getLogger('dnf').info('%s', text.format(number, lock.target))


class WaitingLock(dnf.lock.ProcessLock):
    """A lock on dnf's cache. If another process holds the lock, a WaitingLock waits, and shows the name of that
    process.

    dnf's own class waits for ever, even if the owner in the lock file has ended and an unrelated process now has its
    number.
    """

    # Seconds between two attempts.
    ATTEMPTS = 0.2

    # Whether VYRE has changed packages since it read them.
    changed = False

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
                # If the lock file has no number (holder is not positive), another process is writing or removing the
                # file at this moment.
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
            # The lock became free at the moment when the user ended the wait. Release the lock.
            os.unlink(self.target)
            self._end(0)

    def _end(self, holder):
        text = tr('VYRE no longer waits for {}.') if WaitingLock.changed else tr(
            'VYRE no longer waits for {}. Nothing was changed.')
        raise dnf.exceptions.LockError(text.format(self._describe(holder)))

    @staticmethod
    def _describe(number):
        if number <= 0:
            return tr('another program')
        name = nameOfProcess(number)
        return tr('process {}').format(number) if name == '?' else '{} ({})'.format(name, number)


class OptionalLock(WaitingLock):
    """A lock on dnf's cache for a process that only reads. If another process holds the lock, the reader goes on
    without the lock.
    """

    def __enter__(self):
        self._held = False
        dnf.util.ensure_dir(os.path.dirname(self.target))
        self._lock_thread()
        try:
            self._held = self._try_lock(os.getpid()) == os.getpid()
        except BaseException:
            self._unlock_thread()
            raise

    def __exit__(self, *unused):
        if self._held:
            super(OptionalLock, self).__exit__(*unused)
        else:
            self._unlock_thread()


@contextlib.contextmanager
def withoutWaitForMetadata():
    """Within this scope, dnf reads the metadata in the cache even if another process holds the metadata lock. This is
    safe, because that process only replaces whole files.
    """
    build = dnf.lock.build_metadata_lock
    dnf.lock.build_metadata_lock = lambda cachedir, exit_on_lock: OptionalLock(
        buildMetadataLock(cachedir, exit_on_lock).target, 'metadata')
    try:
        yield
    finally:
        dnf.lock.build_metadata_lock = build


def awaitLock(text, first=False):
    """Show that the script waits for a lock, or that the wait is over. Return False if the user has ended the wait.
    text: the description of the wait; None after the wait. first: whether to write the text to the log, too.
    """
    if first:
        logging.getLogger('dnf').info('%s', text)
    if program.waitForLock is not None and programListens():
        return program.waitForLock(None if text is None else passable(text))
    if text is not None:
        showActivity(text)
    return True


def waitingLock(build):
    """Returns a function that makes a WaitingLock. The new function replaces `build`, a function of dnf."""
    def buildWaiting(cachedir, exit_on_lock):
        plain = build(cachedir, exit_on_lock)
        return plain if exit_on_lock else WaitingLock(plain.target, plain.description)
    return buildWaiting


def useDatabaseLock(lock=None):
    """Make dnf use this lock for its own files. If lock is None, dnf makes a new lock each time. If another process
    then holds the lock, dnf does not wait, but raises an exception.
    """
    dnf.lock.build_rpmdb_lock = lambda persistdir, exit_on_lock: lock or buildDatabaseLock(persistdir, True)


def takeSessionLock(conf):
    """Remove the lock files of processes that have ended. Then take dnf's lock on its own files until the program ends,
    and return this lock.
    """
    for left in (buildDatabaseLock(conf.persistdir, True), buildMetadataLock(conf.cachedir, True),
                 buildDownloadLock(conf.cachedir, True)):
        removeAbandonedLock(left)
    lock = SessionLock(buildDatabaseLock(conf.persistdir, True).target, 'The rpm database', False)
    try:
        lock.__enter__()
    except dnf.exceptions.LockError as e:
        logging.getLogger('dnf').error('%s', e)
        raise
    except OSError as e:
        logging.getLogger('dnf').error('%s', e)
        raise dnf.exceptions.LockError(str(e))
    useDatabaseLock(lock)
    return lock


def releaseSessionLock(lock):
    """Release the lock that takeSessionLock() has returned."""
    useDatabaseLock()
    try:
        lock.__exit__()
    except OSError as e:
        raise dnf.exceptions.LockError(str(e))


# If another process holds the lock on dnf's own files, the program does not wait, but reports the lock at once.
program.replace(dnf.lock, 'build_rpmdb_lock', lambda persistdir, exit_on_lock: buildDatabaseLock(persistdir, True))
program.replace(dnf.lock, 'build_metadata_lock', waitingLock(buildMetadataLock))
program.replace(dnf.lock, 'build_download_lock', waitingLock(buildDownloadLock))
