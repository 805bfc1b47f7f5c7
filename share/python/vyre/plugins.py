# SPDX-License-Identifier: GPL-2.0-or-later
"""dnf's plug-ins. The script loads the plug-ins again with each new configuration. If a plug-in fails, a message names
this plug-in.

The hooks of the plug-ins run on workers.
"""

import dis
import gc
import glob
import importlib
import logging
import os
import sys

import dnf.exceptions
import dnf.plugin

from . import program
from .output import HARMLESS, passable
from .program import tr


def isOfPlugIn(module):
    """Whether a module belongs to a plug-in. module: the full name of the module."""
    return module.startswith(dnf.plugin.DYNAMIC_PACKAGE + '.')


def forgetPlugIns():
    """Make Python forget the modules of all plug-ins. Otherwise the next import would return the modules of the
    previous configuration.
    """
    for name in list(sys.modules):
        if name == dnf.plugin.DYNAMIC_PACKAGE or isOfPlugIn(name):
            del sys.modules[name]


def nameOfPlugIn(plugIn):
    """The name of a plug-in for messages. plugIn: an object of a plug-in's class, or this class."""
    name = getattr(plugIn, 'name', None)
    if isinstance(name, str) and name and name != dnf.plugin.Plugin.name:
        return passable(name)
    return passable(plugIn.__module__.rpartition('.')[2])


def plugInInTraceback(error):
    """The name of the plug-in whose code is in the traceback of an exception; empty if no plug-in's code is in it."""
    place = error.__traceback__
    while place is not None:
        module = place.tb_frame.f_globals.get('__name__') or ''
        if isOfPlugIn(module):
            return passable(module.rpartition('.')[2])
        place = place.tb_next
    return ''


def usesCommand(plugIn, error):
    """Whether a plug-in has failed because it uses its attribute "cli". In VYRE, this attribute is None; in the dnf
    command, it is the command's object.
    """
    place = error.__traceback__
    while place.tb_next is not None:
        place = place.tb_next
    if not isinstance(error, AttributeError) or not str(error).startswith("'NoneType' object has no attribute") or \
            place.tb_frame.f_globals.get('__name__') != type(plugIn).__module__:
        return False
    # The failed instruction reads an attribute of None. Find out whether the previous instruction has loaded "cli".
    earlier = [step.argval for step in dis.get_instructions(place.tb_frame.f_code)
               if step.offset < place.tb_lasti and step.opname not in ('CACHE', 'EXTENDED_ARG')]
    read = earlier[-1] if earlier else None
    return (read[-1] if isinstance(read, tuple) and read else read) == 'cli'


def reasonOf(error):
    """The text of an exception. Exceptions such as SystemExit and KeyboardInterrupt usually have no text; then the
    result is the name of the class.
    """
    return passable(str(error)) or type(error).__name__


def isInterruptOfProgram(error):
    """Whether a function of yumIOC has raised the exception because the program ends. These C++ functions have no
    Python frame, so the last frame of such a traceback is the calling function of the script.
    """
    place = error.__traceback__
    if not isinstance(error, KeyboardInterrupt) or place is None:
        return False
    while place.tb_next is not None:
        place = place.tb_next
    return (place.tb_frame.f_globals.get('__name__') or '').partition('.')[0] == __package__


class PlugIns(dnf.plugin.Plugins):
    """dnf's class with additions. If a plug-in fails, a message names this plug-in. If the failure would end the dnf
    command, as SystemExit does, it ends only the running operation of VYRE.
    """

    # The texts of failures that happened after rpm had changed the packages, when a failure could not stop the
    # operation any more.
    faults = []
    # Pairs of a plug-in's name and a hook that needs the dnf command. The log gets only one line for each pair.
    _withoutCommand = set()

    def _load(self, conf, skips, enable_plugins):
        forgetPlugIns()
        importlib.invalidate_caches()
        self.plugins = []
        gc.collect()
        # The plug-in classes that were loaded before this call, and that Python still keeps because something refers to
        # them.
        old = [found for found in dnf.plugin.Plugin.__subclasses__() if isOfPlugIn(found.__module__)]
        try:
            super(PlugIns, self)._load(conf, skips, enable_plugins)
        except BaseException as e:
            if isInterruptOfProgram(e):
                raise
            self._refuse(plugInInTraceback(e), e)
        finally:
            self.plugin_cls = [found for found in self.plugin_cls if found not in old]

    def _run_init(self, base, cli=None):
        for found in self.plugin_cls:
            try:
                self.plugins.append(found(base, cli))
            except BaseException as e:
                if isInterruptOfProgram(e):
                    raise
                logging.getLogger('dnf').debug('%s', e, exc_info=True)
                self._refuse(nameOfPlugIn(found), e)

    @staticmethod
    def _refuse(name, error):
        if name:
            raise dnf.exceptions.Error(tr('The plug-in {} cannot be loaded: {}').format(name, reasonOf(error)))
        raise dnf.exceptions.Error(tr('The plug-ins cannot be loaded: {}').format(reasonOf(error)))

    def _caller(self, method):
        for plugIn in self.plugins:
            try:
                getattr(plugIn, method)()
            except BaseException as e:
                if isInterruptOfProgram(e):
                    raise
                if not isinstance(e, Exception) or isinstance(e, dnf.exceptions.Error):
                    logging.getLogger('dnf').debug('%s', e, exc_info=True)
                    raise dnf.exceptions.Error(
                        tr('The plug-in {} has ended the operation: {}').format(nameOfPlugIn(plugIn), reasonOf(e)))
                # Continue after all other exceptions, as the dnf command does.
                if usesCommand(plugIn, e):
                    self._reportWithoutCommand(nameOfPlugIn(plugIn), method)
                    continue
                logging.getLogger('dnf').critical(tr('The plug-in %s has failed (%s):'), nameOfPlugIn(plugIn), method,
                                                  exc_info=True)

    def _reportWithoutCommand(self, name, method):
        if (name, method) not in self._withoutCommand:
            self._withoutCommand.add((name, method))
            logging.getLogger('dnf').warning(
                tr('The plug-in %s needs the dnf command and does not work in VYRE (%s).'), name, method,
                extra={HARMLESS: True})

    skipsSack = False  # whether the sack will be filled again, so that it is too early for the hook "sack"

    def run_sack(self):
        if not self.skipsSack:
            super(PlugIns, self).run_sack()

    # Whether a plug-in has ended the operation in run_pre_transaction(). dnf calls this hook just before rpm's work; if
    # the transaction changes no packages, dnf calls it after changing groups and module streams.
    ended = False

    def run_pre_transaction(self):
        try:
            super(PlugIns, self).run_pre_transaction()
        except dnf.exceptions.Error:
            PlugIns.ended = True
            raise

    def run_transaction(self):
        try:
            super(PlugIns, self).run_transaction()
        except dnf.exceptions.Error as e:
            self.faults.append(str(e))


def stampOfPlugIns(conf):
    """A value that changes when a plug-in or its configuration is installed, replaced or removed."""
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


program.replace(dnf.plugin, 'Plugins', PlugIns)
