# SPDX-License-Identifier: GPL-2.0-or-later
"""Reads and changes the version locks of dnf's versionlock plug-in. A worker runs this module.

The script runs the plug-in's own command to change the list of locks. So VYRE writes the same lines as the dnf command.
"""

import contextlib
import functools
import os
import sys
import types

import dnf.exceptions
import dnf.sack
import dnf.subject
import hawkey

from .privatenames import VERSIONLOCK_NAMES
from .program import tr

# The forms of package names that the plug-in accepts in its list.
FORMS = (hawkey.FORM_NEVRA, hawkey.FORM_NEVR, hawkey.FORM_NEV, hawkey.FORM_NA, hawkey.FORM_NAME)


def loadedPlugIn(base):
    """The Python module of the plug-in; None if dnf has not loaded the module, or if the module lacks a name that the
    script needs.
    """
    plugIns = base._plugins.plugins if base._plugins is not None else ()
    for plugIn in plugIns:
        if plugIn.name == 'versionlock':
            module = sys.modules.get(type(plugIn).__module__)
            if all(hasattr(module, name) for name in VERSIONLOCK_NAMES):
                return module
    return None


def versionLocks(base):
    """If dnf has not loaded the plug-in, returns None. Otherwise returns a pair. Its first value is the reason why the
    list of locks cannot be read or changed; empty without such a reason. Its second value is a dictionary from the name
    of each locked package to the lines that lock it.
    """
    module = loadedPlugIn(base)
    if module is None:
        return None
    found = {}
    try:
        lines = namesByLine(base, module)
    except (dnf.exceptions.Error, UnicodeError) as e:  # the plug-in does not handle unreadable characters
        return str(e), {}
    for line, names in lines.items():
        for name in names:
            found.setdefault(name, []).append(line)
    locked = {name: ', '.join(lines) for name, lines in found.items()}
    try:
        requireWritable(module.locklist_fn)
    except dnf.exceptions.Error as e:
        return str(e), locked
    return '', locked


def requireWritable(path):
    """Raise an exception if the user cannot change the list of locks.

    The file and its directory must be writable: the plug-in adds lines to the file, but to remove lines, it replaces
    the file.
    """
    directory = os.path.dirname(path)
    if not all(os.access(each, os.W_OK) for each in ([path, directory] if os.path.exists(path) else [directory])):
        raise dnf.exceptions.Error(tr('You are not allowed to change the list of locks {}').format(path))


def namesByLine(base, module):
    """A dictionary from each line of the list of locks to the names of the packages that the line locks. For each of
    these packages, the plug-in excludes the versions that the line does not name.
    """
    found = {}
    for line in module._read_locklist():
        if line.startswith('!'):  # a line with "!" excludes the version that it names, and locks no version
            continue
        names = found.setdefault(line, set())
        for nevra in dnf.subject.Subject(line).get_nevra_possibilities(forms=list(FORMS)):
            known = base.sack.query(flags=hawkey.IGNORE_EXCLUDES).filterm(name__glob=nevra.name)
            names.update(package.name for package in known)
            if nevra.to_query(base.sack):
                break
    return found


def lockVersions(base, packages):
    """Lock the installed versions of these packages. If a package is not installed, lock the version of the package
    object.
    """
    module = requireList(base)
    locked = set().union(*namesByLine(base, module).values())
    specs = set()
    for package in packages:
        if package.name not in locked:
            installed = base.sack.query(flags=hawkey.IGNORE_EXCLUDES).installed().filterm(name=package.name).run()
            specs.update('{}-{}:{}-{}'.format(each.name, each.epoch, each.version, each.release)
                         for each in installed or [package])
    if specs:
        with oneDatabaseSack():
            runCommand(base, module, 'add', sorted(specs))


def unlockVersions(base, packages):
    """Remove the lines that lock only these packages. If a line also locks other packages, keep the line, and raise an
    exception at the end.
    """
    module = requireList(base)
    wanted = set(package.name for package in packages)
    lines = {line: names for line, names in namesByLine(base, module).items() if names & wanted}
    removed = sorted(line for line, names in lines.items() if names <= wanted)
    kept = sorted(set(lines) - set(removed))
    if removed:
        with onlyWholeLines(module):
            runCommand(base, module, 'delete', removed)
    if kept:
        raise dnf.exceptions.Error(
            tr('These packages are still locked: {}\n'
               'VYRE keeps these lines of {}, because they lock other packages too:\n'
               '{}')
            .format(
                ', '.join(sorted(wanted & set().union(*(lines[line] for line in kept)))),
                module.locklist_fn, '\n'.join(kept)))


def requireList(base):
    """The plug-in's module. Raise an exception if the plug-in is not loaded, or if the user cannot change its list. In
    the second case, the plug-in itself would wrongly report that it cannot read the list.
    """
    module = loadedPlugIn(base)
    if module is None:
        raise dnf.exceptions.Error(tr('The versionlock plug-in is not loaded.'))
    requireWritable(module.locklist_fn)
    return module


def runCommand(base, module, subcommand, specs):
    """Run the plug-in's own command, which prints the lines that it adds or removes."""
    command = module.VersionLockCommand(types.SimpleNamespace(base=base))
    command.opts = types.SimpleNamespace(subcommand=subcommand, package=specs, raw=False)
    try:
        command.run()
    except OSError as e:
        raise dnf.exceptions.Error(str(e))


@contextlib.contextmanager
def onlyWholeLines(module):
    """Within this scope, the plug-in's command removes only the lines that are equal to its arguments. Without this
    scope, an argument that is a package name would also remove the lines that exclude versions of this package.
    """
    match = module._match
    module._match = lambda line, specs: line in specs
    try:
        yield
    finally:
        module._match = match


@contextlib.contextmanager
def oneDatabaseSack():
    """Within this scope, the plug-in's command reads rpm's database only once, instead of once for each package."""
    read = dnf.sack._rpmdb_sack
    dnf.sack._rpmdb_sack = functools.lru_cache(maxsize=1)(read)
    try:
        yield
    finally:
        dnf.sack._rpmdb_sack = read
