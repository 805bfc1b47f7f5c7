# SPDX-License-Identifier: GPL-2.0-or-later
"""The output of the script: standard streams, the log, the log files, the text on the bar, additions to the listing.

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
    """Returns the text in a form that the program accepts: characters that UTF-8 cannot encode are escaped. File names
    can contain such characters.
    """
    return text.encode('utf-8', 'backslashreplace').decode('utf-8').replace('\0', '\\0')


class Writer:
    """Replaces sys.stdout or sys.stderr and passes each text to the program."""

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
    """Whether the script can call the program. When the program ends, it restores the interpreter's own streams."""
    return isinstance(sys.stdout, Writer)


class LogHandler(logging.Handler):
    """Passes dnf's log records on to the program's log, with the levels of dnf's debuglevel option (default 2)."""

    LEVELS = ((logging.CRITICAL, 0), (logging.ERROR, 1), (logging.WARNING, 2), (logging.INFO, 2),
              (logging.DEBUG, 3), (dnf.logging.DDEBUG, 7), (dnf.logging.SUBDEBUG, 8), (dnf.logging.TRACE, 9))

    def emit(self, record):
        if record.name == 'dnf.rpm':
            return  # TransactionProgress reports these records
        if not programListens():
            return
        try:
            text = self.format(record)
        except Exception:  # a faulty record must not end the operation that logs it
            text = str(record.msg)
        if record.msg == dnf.i18n._("You can remove cached packages by executing '%s'."):
            # The user would have to type the command in this text in a terminal, and it may clean another cache
            # directory.
            text = tr('You can remove the downloaded packages with Clean Packages in the Cache menu.')
        text = passable(text)
        level = next((level for number, level in self.LEVELS if record.levelno >= number), 10)
        if isStopped():
            # If the user has interrupted a download, its failure is no fault.
            yumIOC.log(max(level, 3), text)
        elif record.levelno >= logging.WARNING:
            yumIOC.errorlog(level, text)
        else:
            yumIOC.log(level, text)


def startLog():
    """Pass dnf's log on to the program. The handler of an earlier run of the script is removed."""
    logger = logging.getLogger('dnf')
    logger.setLevel(dnf.logging.TRACE)
    for handler in list(logger.handlers):
        if type(handler).__module__ == __name__:
            logger.removeHandler(handler)
    logger.addHandler(LogHandler())


class Overheard(logging.Handler):
    """Keeps the warnings that dnf logs during a scope, because dnf's exceptions lack these details."""

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
        """The lines below the headings of the warnings."""
        return [line for text in self.texts for line in text.split('\n')[1:]]


class DiscreetFormatter(logging.Formatter):
    """Formats the records of a log file with the given formatter, and hides passwords, because other users can read the
    file.
    """

    def __init__(self, formatter):
        super(DiscreetFormatter, self).__init__()
        self._formatter = formatter

    def format(self, record):
        return withoutSecrets(self._formatter.format(record))


def showActivity(text):
    """Show the present activity on the bar of the current step."""
    if program.changeActivity is not None and programListens():
        program.changeActivity(passable(text))


def showReading(repo, text):
    """Show on the bar what happens with a repository. The text has a placeholder for the repository's name."""
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
    """Open dnf's log files, and hide passwords in them."""
    directory = base.conf.logdir
    try:
        base.setup_loggers()
    except OSError as e:
        # Some of the log files may be open now.
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
        # In this version of dnf, librepo itself writes its log file, and would write passwords too. So this function
        # switches the log file off.
        libdnf.repo.LibrepoLog.removeAllHandlers()
