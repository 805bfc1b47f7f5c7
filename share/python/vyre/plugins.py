# SPDX-License-Identifier: GPL-2.0-or-later
"""dnf's plug-ins. Each new configuration loads them again. If a plug-in fails, the message names it.

The hooks of plug-ins run on workers.
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
from .output import passable
from .program import tr


def isOfPlugIn(module):
    """Whether the module of this name belongs to a plug-in."""
    return module.startswith(dnf.plugin.DYNAMIC_PACKAGE + '.')


def forgetPlugIns():
    """Forget the modules of all plug-ins. Otherwise a new import would return the old modules."""
    for name in list(sys.modules):
        if name == dnf.plugin.DYNAMIC_PACKAGE or isOfPlugIn(name):
            del sys.modules[name]


def nameOfPlugIn(plugIn):
    """The name of a plug-in, or of its class, for messages."""
    name = getattr(plugIn, 'name', None)
    if isinstance(name, str) and name and name != dnf.plugin.Plugin.name:
        return passable(name)
    return passable(plugIn.__module__.rpartition('.')[2])


def plugInInTraceback(error):
    """The name of the plug-in whose code is in the traceback of an exception; empty without such code."""
    place = error.__traceback__
    while place is not None:
        module = place.tb_frame.f_globals.get('__name__') or ''
        if isOfPlugIn(module):
            return passable(module.rpartition('.')[2])
        place = place.tb_next
    return ''


def usesCommand(plugIn, error):
    """Whether a plug-in has failed because it uses the object of the dnf command, which is None here."""
    place = error.__traceback__
    while place.tb_next is not None:
        place = place.tb_next
    if not isinstance(error, AttributeError) or not str(error).startswith("'NoneType' object has no attribute") or \
            place.tb_frame.f_globals.get('__name__') != type(plugIn).__module__:
        return False
    # The failing instruction reads an attribute of the value that the previous instruction has loaded.
    earlier = [step.argval for step in dis.get_instructions(place.tb_frame.f_code)
               if step.offset < place.tb_lasti and step.opname not in ('CACHE', 'EXTENDED_ARG')]
    read = earlier[-1] if earlier else None
    return (read[-1] if isinstance(read, tuple) and read else read) == 'cli'


def reasonOf(error):
    """The text of an exception, or the name of its class. Some exceptions that end a program have no text."""
    return passable(str(error)) or type(error).__name__


def isInterruptOfProgram(error):
    """Whether one of the program's functions has raised the exception because the program ends. The program's functions
    have no Python frame, so the last frame of the traceback is in the script.
    """
    place = error.__traceback__
    if not isinstance(error, KeyboardInterrupt) or place is None:
        return False
    while place.tb_next is not None:
        place = place.tb_next
    return (place.tb_frame.f_globals.get('__name__') or '').partition('.')[0] == __package__


class PlugIns(dnf.plugin.Plugins):
    """dnf's plug-ins. If a plug-in fails, a message names it. If a failure would end the dnf command, it ends only the
    operation here. Examples are exceptions like SystemExit and KeyboardInterrupt.
    """

    # The plug-in failures after the change to the packages. They cannot stop the operation any more.
    faults = []
    # Pairs of a plug-in and its hook that needs the object of the dnf command. The log has one line for each pair.
    _withoutCommand = set()

    def _load(self, conf, skips, enable_plugins):
        forgetPlugIns()
        importlib.invalidate_caches()
        self.plugins = []
        gc.collect()
        # Classes of earlier plug-ins that are still referenced.
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
                # The dnf command also continues after these exceptions.
                if usesCommand(plugIn, e):
                    self._reportWithoutCommand(nameOfPlugIn(plugIn), method)
                    continue
                logging.getLogger('dnf').critical(tr('The plug-in %s has failed (%s):'), nameOfPlugIn(plugIn), method,
                                                  exc_info=True)

    def _reportWithoutCommand(self, name, method):
        if (name, method) not in self._withoutCommand:
            self._withoutCommand.add((name, method))
            logging.getLogger('dnf').warning(
                tr('The plug-in %s needs the dnf command and does not work in VYRE (%s).'), name, method)

    # Whether a plug-in has ended the operation in run_pre_transaction(). dnf calls this hook just before rpm's work. If
    # no packages change, dnf calls the hook after the changes to groups and streams.
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
