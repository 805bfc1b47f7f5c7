# SPDX-License-Identifier: GPL-2.0-or-later
"""The script's output: standard streams, the log, dnf's log files, the text on the progress bar, additions to the
listing.

Every thread that holds the interpreter's lock may use this module.
"""

import logging
import sys

import dnf.i18n
import dnf.lock
import dnf.logging
import libdnf.repo

from . import program
from .program import tr, withoutSecrets, yumIOC
from .stopping import isStopped


def passable(text):
    """The text in a form that the program accepts. Characters that UTF-8 cannot encode are escaped; a file name, for
    example, can contain such characters.
    """
    return text.encode('utf-8', 'backslashreplace').decode('utf-8').replace('\0', '\\0')


class Writer:
    """A replacement for sys.stdout or sys.stderr that passes each text to the program."""

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
    """Whether the script can call the program. When the program begins to end, it restores the interpreter's streams;
    from then on, the result is False.
    """
    return isinstance(sys.stdout, Writer)


# The script sets this attribute of a log record if the program's log must show a warning instead of an error:
# logging.warning(..., extra={HARMLESS: True})
HARMLESS = 'vyreHarmless'


class LogHandler(logging.Handler):
    """Passes dnf's log records on to the program's log.

    LEVELS: pairs of a level of Python's logging module and the corresponding value of dnf's debuglevel option.
    """

    LEVELS = ((logging.CRITICAL, 0), (logging.ERROR, 1), (logging.WARNING, 2), (logging.INFO, 2),
              (logging.DEBUG, 3), (dnf.logging.DDEBUG, 7), (dnf.logging.SUBDEBUG, 8), (dnf.logging.TRACE, 9))

    # Whether dnf is reading a repository that it leaves out if a failure occurs, because of skip_if_unavailable.
    mayBeSkipped = False

    @classmethod
    def isOnlyWarning(cls, record):
        """Whether a record of dnf is only a warning: no operation has failed because of it."""
        return getattr(record, HARMLESS, False) or cls.isAboutSkipped(record)

    @classmethod
    def isAboutSkipped(cls, record):
        """Whether a record of dnf is about a failed repository that dnf leaves out because of skip_if_unavailable."""
        return cls.mayBeSkipped or record.msg in ('Error: %s', dnf.i18n._('Error: %s'),
                                                  dnf.i18n._('Ignoring repositories: %s'))

    def emit(self, record):
        if record.name == 'dnf.rpm':
            return  # TransactionProgress reports the same events to the program
        if not programListens():
            return
        try:
            text = self.format(record)
        except Exception:  # an operation must not fail because one of its log records cannot be formatted
            text = str(record.msg)
        if record.msg == dnf.i18n._("You can remove cached packages by executing '%s'."):
            # The text of this record names a dnf command. This command may clean a cache directory that VYRE does not
            # use.
            text = tr('You can remove the downloaded packages with Clean Packages in the Cache menu.')
        text = passable(text)
        level = next((level for number, level in self.LEVELS if record.levelno >= number), 10)
        if isStopped():
            # If the user stops a download, the download fails. Log this failure only as a detail.
            yumIOC.log(max(level, 3), text)
        elif record.levelno == logging.WARNING and program.logWarning is not None and self.isOnlyWarning(record):
            # A notice about a skipped repository refers to the log, so each detail level of the log must show the
            # reason.
            program.logWarning(level if getattr(record, HARMLESS, False) else 0, text)
        elif record.levelno >= logging.WARNING:
            yumIOC.errorlog(level, text)
        else:
            yumIOC.log(level, text)


def startLog():
    """Pass dnf's log on to the program. Remove the LogHandler that an earlier run of the script has added."""
    logger = logging.getLogger('dnf')
    logger.setLevel(dnf.logging.TRACE)
    for handler in list(logger.handlers):
        if type(handler).__module__ == __name__:
            logger.removeHandler(handler)
    logger.addHandler(LogHandler())


class Overheard(logging.Handler):
    """Collects the warnings that dnf logs within a scope. These warnings contain details that dnf's exceptions lack."""

    def __init__(self):
        super(Overheard, self).__init__(logging.WARNING)
        self.texts = []

    def emit(self, record):
        self.texts.append(record.getMessage())

    def __enter__(self):
        logging.getLogger('dnf').addHandler(self)
        return self

    def __exit__(self, *unused):
        logging.getLogger('dnf').removeHandler(self)

    def details(self):
        """The lines of all warnings, without the first line of each warning, which is only a heading."""
        return [line for text in self.texts for line in text.split('\n')[1:]]


class DiscreetFormatter(logging.Formatter):
    """Formats log records with another formatter, and hides the passwords in the records, because every user may be
    allowed to read dnf's log files.
    """

    def __init__(self, formatter):
        super(DiscreetFormatter, self).__init__()
        self._formatter = formatter

    def format(self, record):
        return withoutSecrets(self._formatter.format(record))


def showActivity(text):
    """Show this text about the present activity on the progress bar of the current step."""
    if program.changeActivity is not None and programListens():
        program.changeActivity(passable(text))


def showReading(repo, text):
    """Show the present activity for a repository on the progress bar. text: a format with a placeholder for the
    repository's name.
    """
    if program.showReading is not None and programListens():
        program.showReading(repo.id, passable(text.format(repo.name or repo.id)))


def extendListing(text):
    """Add lines to the end of the listing that the user is going to confirm."""
    if program.addToListing is not None:
        program.addToListing(passable(text))


def introduceListing(text):
    """Add lines before the listing that the user is going to confirm."""
    if program.addBeforeListing is not None:
        program.addBeforeListing(passable(text))


def setUpLogFiles(base):
    """Open dnf's log files, and hide the passwords in all new log records."""
    directory = base.conf.logdir
    try:
        base.setup_loggers()
    except OSError as e:
        # setup_loggers() may have opened some log files before it failed.
        hidePasswordsInLogFiles()
        logging.getLogger('dnf').error(tr('VYRE cannot write log files in %s: %s'), directory, e)
        return
    hidePasswordsInLogFiles()
    for name in ('dnf', 'dnf.rpm', 'librepo'):
        for handler in logging.getLogger(name).handlers:
            if hasattr(handler, 'rotate_lock'):
                handler.rotate_lock = dnf.lock.build_log_lock(directory, True)


def hidePasswordsInLogFiles():
    for name in ('dnf', 'dnf.rpm', 'librepo'):
        for handler in logging.getLogger(name).handlers:
            if isinstance(handler, logging.FileHandler):
                handler.setFormatter(DiscreetFormatter(handler.formatter or logging.Formatter()))
    if not logging.getLogger('librepo').handlers:
        # If librepo has no handler here, it writes its log file without Python's logging module, and would write
        # passwords to this file. So make librepo write no log file.
        libdnf.repo.LibrepoLog.removeAllHandlers()
